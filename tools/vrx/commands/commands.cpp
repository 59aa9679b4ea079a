
#include "tools/vrx/commands/commands.h"

#include <array>

namespace vrx::tool {

std::span<const CommandEntry> AllCommands() {
  // One a line, so that commands that are added meet no others; by group, as the help has them.
  // clang-format off
  static constexpr std::array kCommands{
      CommandEntry{"judge", AddJudge, "Judging"},
      CommandEntry{"delta", AddDelta, "Judging"},
      CommandEntry{"search", AddSearch, "Judging"},
      CommandEntry{"sort", AddSort, "Judging"},
      CommandEntry{"fit-tolerance", AddFitTolerance, "Judging"},
      CommandEntry{"job", AddJob, "Judging"},
      CommandEntry{"watch", AddWatch, "Judging"},
      CommandEntry{"color", AddColor, "Colour"},
      CommandEntry{"index", AddIndex, "Colour"},
      CommandEntry{"munsell", AddMunsell, "Colour"},
      CommandEntry{"density", AddDensity, "Colour"},
      CommandEntry{"fit-whiteness", AddFitWhiteness, "Colour"},
      CommandEntry{"instruments", AddInstruments, "Colour"},
      CommandEntry{"lamp", AddLamp, "Colour"},
      CommandEntry{"strength", AddStrength, "Colour"},
      CommandEntry{"swatch", AddSwatch, "Colour"},
      CommandEntry{"plot", AddPlot, "Colour"},
      CommandEntry{"tables", AddTables, "Colour"},
      CommandEntry{"colorants", AddColorants, "Recipes"},
      CommandEntry{"predict", AddPredict, "Recipes"},
      CommandEntry{"calibrate", AddCalibrate, "Recipes"},
      CommandEntry{"match", AddMatch, "Recipes"},
      CommandEntry{"correct", AddCorrect, "Recipes"},
      CommandEntry{"info", AddInfo, "Files"},
      CommandEntry{"convert", AddConvert, "Files"},
      CommandEntry{"average", AddAverage, "Files"},
      CommandEntry{"xml", AddXml, "Files"},
      CommandEntry{"settings", AddSettings, "Set-up"},
      CommandEntry{"log", AddLog, "Set-up"},
      CommandEntry{"condition", AddCondition, "Set-up"},
      CommandEntry{"manual", AddManual, "Set-up", true},
  };
  // clang-format on
  return kCommands;
}

}  // namespace vrx::tool
