#include "tools/vrx/commands.h"

#include <array>

namespace vrx::tool {

std::span<const CommandEntry> AllCommands() {
  static constexpr std::array kCommands{
      CommandEntry{"tables", AddTables},
  };
  return kCommands;
}

}  // namespace vrx::tool
