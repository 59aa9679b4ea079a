#include <vrxmath/matching/calibration_faults.h>

namespace vrx {
namespace {

std::string Quoted(const CStringArray1& names, int32_t component) {
  std::string text = "\"";
  if (component >= 0 && component < names.GetSize()) text += names[component].ToUtf8();
  return text += "\"";
}

std::string ComponentsText(const CIntArray1& components, const CStringArray1& names) {
  std::string text;
  for (int32_t i = 0; i < components.GetSize(); ++i) {
    if (i > 0) text += i + 1 == components.GetSize() ? " and " : ", ";
    text += Quoted(names, components[i]);
  }
  return text;
}

// What is wrong with one drawdown.
std::string DrawdownText(CalibrationFault fault, const CalibrationQuestion& question) {
  switch (fault) {
    case CalibrationFault::kShares:
      return question.isOnSubstrate
                 ? "expected at most one dye, no more of it than of the substrate, and no film"
                 : "shares that cannot be used";
    case CalibrationFault::kWeight:
      return "expected a weight above 0";
    case CalibrationFault::kBelowSurface:
      return "it is darker than the surface alone; use " + question.setting("specular", "excluded") +
             " for curves without the specular component, " + question.setting("specular", "none") +
             " for uncorrected ones";
    case CalibrationFault::kFilmSwapped:
      return "the film is lighter over black than over white: the rows are swapped";
    case CalibrationFault::kCardsSwapped:
      return "the black card is not darker than the white one: the rows are swapped";
    case CalibrationFault::kSameReadings:
      return "the film has the same numbers over black as over white: one reading stands for both; a film "
             "that "
             "hides its backing is an opaque drawdown";
    default:
      return "it is not measured";
  }
}

}  // namespace

std::string CalibrationFaultText(const CalibrationOutcome& outcome, const CalibrationQuestion& question) {
  const bool isOne = outcome.components.GetSize() == 1;
  const std::string components = ComponentsText(outcome.components, question.names);
  switch (outcome.fault) {
    case CalibrationFault::kNone:
      return "";
    case CalibrationFault::kNoWhite:
      return question.isOnSubstrate
                 ? "no row is the bare substrate " + Quoted(question.names, question.settings.white)
                 : "no drawdown has the white " + Quoted(question.names, question.settings.white) + " in it";
    case CalibrationFault::kNeverUsed:
      return "no drawdown has " + components + " in it";
    case CalibrationFault::kOneShareOnly:
      return components +
             (isOne ? " has the same share in all its drawdowns"
                    : " have the same share in all their drawdowns") +
             ", which is not enough to separate K from S: add a masstone or a letdown, or leave " +
             (isOne ? "it" : "them") + " out with " + question.setting("without", "");
    default:
      return "drawdown \"" + question.drawdowns[outcome.drawdown].id.ToUtf8() +
             "\": " + DrawdownText(outcome.fault, question);
  }
}

}  // namespace vrx
