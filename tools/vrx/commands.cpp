#include "tools/vrx/commands.h"

#include <array>

namespace vrx::tool {

std::span<const CommandEntry> AllCommands() {
  static constexpr std::array kCommands{
      CommandEntry{"colorants", AddColorants},
      CommandEntry{"predict", AddPredict},
      CommandEntry{"tables", AddTables},
  };
  return kCommands;
}

}  // namespace vrx::tool
