#include "tools/vrx/commands.h"

#include <array>

namespace vrx::tool {

std::span<const CommandEntry> AllCommands() {
  static constexpr std::array kCommands{
      CommandEntry{"tables", AddTables},
      CommandEntry{"xml", AddXml},
  };
  return kCommands;
}

}  // namespace vrx::tool
