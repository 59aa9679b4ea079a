
#include "tools/vrx/commands/commands.h"

#include <array>

namespace vrx::tool {

std::span<const CommandEntry> AllCommands() {
  // One a line, so that commands that are added meet no others.
  // clang-format off
  static constexpr std::array kCommands{
      CommandEntry{"judge", AddJudge},
      CommandEntry{"color", AddColor},
      CommandEntry{"delta", AddDelta},
      CommandEntry{"search", AddSearch},
      CommandEntry{"average", AddAverage},
      CommandEntry{"sort", AddSort},
      CommandEntry{"fit-tolerance", AddFitTolerance},
      CommandEntry{"strength", AddStrength},
      CommandEntry{"colorants", AddColorants},
      CommandEntry{"predict", AddPredict},
      CommandEntry{"calibrate", AddCalibrate},
      CommandEntry{"match", AddMatch},
      CommandEntry{"correct", AddCorrect},
      CommandEntry{"index", AddIndex},
      CommandEntry{"info", AddInfo},
      CommandEntry{"convert", AddConvert},
      CommandEntry{"swatch", AddSwatch},
      CommandEntry{"plot", AddPlot},
      CommandEntry{"tables", AddTables},
      CommandEntry{"condition", AddCondition},
      CommandEntry{"settings", AddSettings},
      CommandEntry{"log", AddLog},
      CommandEntry{"xml", AddXml},
      CommandEntry{"manual", AddManual},
  };
  // clang-format on
  return kCommands;
}

}  // namespace vrx::tool
