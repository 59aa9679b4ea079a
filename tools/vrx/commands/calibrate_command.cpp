// vrx calibrate: K and S of colorants from weighed drawdowns.

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/calibration_faults.h>
#include <vrxmath/matching/dye_ladder.h>
#include <vrxmath/matching/exchanged_drawdowns.h>
#include <vrxmath/matching/prediction_error.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/dilutions.h"
#include "tools/vrx/input/drawdown_file.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

// The models whose colorants can be calibrated, in the order of the words of --model.
enum class GivenModel { kCoatings, kPlastics, kTradeSales, kTransparents, kTextiles, kContinuousDye };
constexpr std::array<int32_t, 6> kModels = {kModelCoatings,     kModelPlastics, kModelTradeSales,
                                            kModelTransparents, kModelTextiles, kModelContinuousDye};

struct CalibrateOptions {
  std::string samples;
  std::string output;
  std::string white;
  std::string name = "Calibrated colorants";
  std::vector<std::string> holdOut;
  std::vector<std::string> without;
  std::string components;
  std::string additions;
  double weight = 1.0;
  GivenModel model = GivenModel::kCoatings;
  bool noLeaveOneOut = false;
  SurfaceOptions surface;
  ViewingOptions viewing;
  CurveInputOptions input;
  Format format;
};

CCalibrationSettings SettingsOf(const CalibrateOptions& options, const DrawdownFile& file) {
  CCalibrationSettings settings;
  const auto white = std::ranges::find_if(
      file.names, [&](const std::string& name) { return EqualsIgnoringCase(name, options.white); });
  if (white == file.names.end()) {
    throw InputError(options.samples + ": --white: there is no component \"" + options.white + "\"");
  }
  settings.white = static_cast<int32_t>(white - file.names.begin());
  for (std::size_t k = 0; k < file.names.size(); ++k) {
    if (file.isBase[k]) settings.resins.Add(static_cast<int32_t>(k));
  }
  settings.k1 = options.surface.k1;
  settings.k2 = options.surface.k2;
  settings.mode = options.surface.Specular();
  settings.illuminant = options.viewing.Illuminants().front();
  settings.observer = options.viewing.Observer();
  settings.leaveOneOut = !options.noLeaveOneOut;
  return settings;
}

// The elements of lists with commas.
std::vector<std::string> ListOf(const std::vector<std::string>& lists) {
  std::vector<std::string> elements;
  for (const std::string& list : lists) {
    for (std::size_t at = 0; at <= list.size();) {
      const std::size_t end = std::min(list.find(',', at), list.size());
      elements.push_back(list.substr(at, end - at));
      at = end + 1;
    }
  }
  return elements;
}

// Takes components out of a file, with the drawdowns that have them.
void LeaveOut(const CalibrateOptions& options, DrawdownFile& file) {
  for (const std::string& name : ListOf(options.without)) {
    const auto found = std::ranges::find_if(
        file.names, [&](const std::string& other) { return EqualsIgnoringCase(other, name); });
    if (found == file.names.end()) {
      throw InputError(options.samples + ": --without: there is no component \"" + name + "\"");
    }
    const auto column = static_cast<int32_t>(found - file.names.begin());
    CDrawdownArray kept;
    for (CDrawdown drawdown : file.drawdowns) {
      if (drawdown.shares[column] != 0.0) continue;
      drawdown.shares.RemoveAt(column);
      kept.Add(drawdown);
    }
    file.drawdowns = kept;
    file.isBase.erase(file.isBase.begin() + column);
    file.names.erase(found);
  }
}

// The drawdowns that take part, those that were held out and, behind the former, those of --add.
struct Division {
  CDrawdownArray used;
  CDrawdownArray held;
  int32_t added = 0;
};

Division Divide(const CalibrateOptions& options, const DrawdownFile& file) {
  std::vector<std::string> ids = ListOf(options.holdOut);
  Division division;
  for (const CDrawdown& drawdown : file.drawdowns) {
    const bool isHeld = std::erase(ids, drawdown.id.ToUtf8()) > 0;
    (isHeld ? division.held : division.used).Add(drawdown);
  }
  if (!ids.empty())
    throw InputError(options.samples + ": --hold-out: there is no drawdown \"" + ids[0] + "\"");
  return division;
}

class FitRows {
 public:
  FitRows(const Format& format, OutputStream& output)
      : rows_(MakeRowWriter(format, output,
                            {{"drawdown"},
                             {"part"},
                             {"dE", "dE00"},
                             {"leave_one_out", "without it"},
                             {"contrast", "contrast", 3},
                             {"contrast_predicted", "predicted", 3},
                             {"thickness"},
                             {"leave_one_out_linear", "linear"},
                             {"expected"}})) {}

  void Add(const CDrawdownArray& drawdowns, const CDrawdownFitArray& fits, int32_t from, int32_t to,
           const char* part, const CDoubleArray1& expected = {}) {
    for (int32_t i = from; i < to; ++i) {
      const CDrawdownFit& fit = fits[i];
      rows_->Text(drawdowns[i].id.ToUtf8());
      rows_->Text(part);
      for (const double value : {fit.deltaE, fit.leaveOneOut, fit.measuredContrast, fit.predictedContrast,
                                 fit.thickness, fit.leaveOneOutLinear}) {
        rows_->Number(value);
      }
      rows_->Number(i < expected.GetSize() ? expected[i] : kUnset);
      rows_->EndRow();
    }
  }
  void Finish() { rows_->Finish(); }

 private:
  std::unique_ptr<RowWriter> rows_;
};

// What half, nine of ten and all of the known errors do not exceed, as "1.82 (median), 3.99 (90 %), 5.41 (worst)".
struct HeldOut {
  double sum = 0.0;
  std::string text;
};

HeldOut HeldOutOf(std::vector<double> errors) {
  HeldOut held;
  if (errors.empty()) return held;
  std::ranges::sort(errors);
  for (const double error : errors) held.sum += error;
  const auto notExceededBy = [&](double part) {
    return errors[static_cast<std::size_t>(std::ceil(part * static_cast<double>(errors.size()))) - 1];
  };
  held.text = FixedDecimals(notExceededBy(0.5), 2) + " (median), " + FixedDecimals(notExceededBy(0.9), 2) +
              " (90 %), " + FixedDecimals(errors.back(), 2) + " (worst)";
  return held;
}

// Says what held-out figures say of the fit: which drawdowns the least squares of reflectance foresee worse.
void TellOfRefinement(const CDrawdownArray& drawdowns, const CDrawdownFitArray& fits,
                      const CalibrationOutcome& outcome) {
  if (!outcome.isRefined) {
    PrintMessage(
        "the linear fit is kept: it predicts drawdowns that are left out one at a time better than the fit "
        "of reflectance");
    return;
  }
  constexpr double kNotable = 0.1;
  constexpr int kMostNamed = 5;
  int worse = 0, known = 0;
  std::string names;
  for (int32_t i = 0; i < drawdowns.GetSize(); ++i) {
    if (IsUnset(fits[i].leaveOneOut)) continue;
    ++known;
    if (fits[i].leaveOneOut <= fits[i].leaveOneOutLinear + kNotable || ++worse > kMostNamed) continue;
    names += (names.empty() ? "" : ", ") + drawdowns[i].id.ToUtf8() + " (" +
             FixedDecimals(fits[i].leaveOneOut, 2) + " instead of " +
             FixedDecimals(fits[i].leaveOneOutLinear, 2) + ")";
  }
  if (worse == 0) return;
  PrintMessage("left out one at a time, " + std::to_string(worse) + " of " + std::to_string(known) +
               " drawdowns are predicted worse than by the linear fit: " + names +
               (worse > kMostNamed ? ", ..." : ""));
}

// The leave-one-out errors of drawdowns that have one in both calibrations.
void ComparedErrors(const CDrawdownFitArray& before, const CDrawdownFitArray& after,
                    std::vector<double>& ofBefore, std::vector<double>& ofAfter) {
  for (int32_t i = 0; i < before.GetSize(); ++i) {
    if (IsUnset(before[i].leaveOneOut) || IsUnset(after[i].leaveOneOut)) continue;
    ofBefore.push_back(before[i].leaveOneOut);
    ofAfter.push_back(after[i].leaveOneOut);
  }
}

// Says whether the additions lowered the error of the drawdowns, each predicted without itself, and what the additions
// themselves were predicted to be before and, each without itself, are now.
void TellOfAdditions(const Division& division, const CDrawdownFitArray& before,
                     const CDrawdownFitArray& after, const std::vector<double>& foreseen) {
  std::vector<double> errorsBefore, errorsAfter, ofAdded;
  ComparedErrors(before, after, errorsBefore, errorsAfter);
  const HeldOut old = HeldOutOf(errorsBefore), now = HeldOutOf(errorsAfter);
  if (!old.text.empty()) {
    PrintMessage("with what was added the held-out error of the drawdowns " +
                 std::string(now.sum < old.sum ? "fell" : "did not fall") + ": " + now.text + " instead of " +
                 old.text);
  }
  for (int32_t i = before.GetSize(); i < division.used.GetSize(); ++i) {
    if (!IsUnset(after[i].leaveOneOut)) ofAdded.push_back(after[i].leaveOneOut);
  }
  std::string text = "what was added had been predicted with an error of " + HeldOutOf(foreseen).text;
  if (!ofAdded.empty()) text += ", and now, left out one at a time, of " + HeldOutOf(ofAdded).text;
  PrintMessage(text);
}

// One calibration, its file and its rows.
class Calibration {
 public:
  explicit Calibration(const CalibrateOptions& options) : options_(options) {}

  void Run() {
    Read();
    settings_ = SettingsOf(options_, file_);
    division_ = Divide(options_, file_);
    CDrawdownFitArray before;
    std::vector<double> foreseen;
    if (!options_.additions.empty()) Add(before, foreseen);
    const CalibrationOutcome outcome = Calibrate(division_.used, system_, fits_);
    system_.calibrated = CalibratedComponents(system_.data, division_.used, fits_);
    if (!options_.output.empty()) Write();
    WriteRows();
    if (IsOneConstant()) {
      TellOfSaturation();
    } else if (settings_.leaveOneOut) {
      TellOfRefinement(division_.used, fits_, outcome);
    }
    if (!IsOneConstant()) TellOfExchange();
    if (!options_.additions.empty()) TellOfAdditions(division_, before, fits_, foreseen);
    const auto isFilm = [](const CDrawdown& drawdown) { return drawdown.isFilm; };
    if (std::any_of(file_.drawdowns.begin(), file_.drawdowns.end(), isFilm)) {
      PrintMessage("film thicknesses are not given: the two readings of a film are assumed to have the same");
    }
  }

 private:
  void Read() {
    const std::string substrate = IsOneConstant() ? options_.white : std::string();
    const TakenSpecular taken = options_.surface.Taken();
    file_ = ReadDrawdowns(options_.samples, options_.input, taken, nullptr, substrate);
    for (const std::string& card : file_.unusedCards) {
      PrintMessage(options_.samples + ": no film uses the row " + card);
    }
    additions_ = file_;
    additions_.drawdowns.RemoveAll();
    if (!options_.additions.empty()) {
      additions_ = ReadDrawdowns(options_.additions, options_.input, taken, &file_, substrate);
    }
    if (!options_.components.empty()) {
      ExpandDilutions(options_.components, file_);
      if (!options_.additions.empty()) ExpandDilutions(options_.components, additions_);
    }
    LeaveOut(options_, file_);
    LeaveOut(options_, additions_);
  }

  // Calibrates without the additions, predicts these, and puts them behind the drawdowns.
  void Add(CDrawdownFitArray& before, std::vector<double>& foreseen) {
    ColorSystem without;
    Calibrate(division_.used, without, before);
    for (CDrawdown drawdown : additions_.drawdowns) {
      const double error = FitDrawdown(without.data, drawdown, settings_).deltaE;
      if (!IsUnset(error)) foreseen.push_back(error);
      drawdown.weight = options_.weight;
      division_.used.Add(drawdown);
    }
    division_.added = additions_.drawdowns.GetSize();
  }

  bool IsOneConstant() const { return MixingLawOf(Model()) == MixingLaw::kOneConstant; }
  int32_t Model() const { return kModels.at(static_cast<std::size_t>(options_.model)); }

  CStringArray1 Names() const {
    CStringArray1 names;
    for (const std::string& name : file_.names) names.Add(CString::FromUtf8(name).CStr());
    return names;
  }

  CalibrationOutcome Calibrate(const CDrawdownArray& drawdowns, ColorSystem& system,
                               CDrawdownFitArray& fits) {
    const CStringArray1 names = Names();
    system.data.opticalModel = Model();
    CalibrationOutcome outcome =
        IsOneConstant() ? CalibrateDyes(names, drawdowns, settings_, system.data, fits, buildUps_)
                        : CalibrateColorants(names, drawdowns, settings_, system.data, fits);
    const auto option = [](std::string_view name, std::string_view value) {
      return "--" + std::string(name) + (value.empty() ? "" : " " + std::string(value));
    };
    if (outcome.fault != CalibrationFault::kNone) {
      throw InputError(
          options_.samples + ": " +
          CalibrationFaultText(outcome, {names, drawdowns, settings_, file_.isOnSubstrate, option}));
    }
    return outcome;
  }

  void Write() {
    system_.data.name = CString::FromUtf8(options_.name);
    system_.specular = settings_.mode;
    system_.geometry = additions_.geometry.Get();
    system_.calibratedOn = std::filesystem::path(options_.samples).filename().string() + ", " +
                           std::to_string(division_.used.GetSize()) + " drawdowns";
    WriteColorSystem(options_.output, system_);
  }

  // Exchanged readings make the constants of all their components wrong, and only their differences show it.
  void TellOfExchange() const {
    const auto exchanged = FindExchangedDrawdowns(Names(), division_.used, settings_);
    if (exchanged) PrintMessage(options_.samples + ": warning: " + exchanged->Text(division_.used));
  }

  void TellOfSaturation() const {
    for (const CDyeBuildUp& buildUp : buildUps_) {
      if (IsUnset(buildUp.saturatesFrom)) continue;
      PrintMessage("\"" + file_.names[buildUp.componentId - 1] + "\" saturates: from " +
                   FixedDecimals(100.0 * buildUp.saturatesFrom, 2) +
                   " % on, more of it adds less than a quarter of what the first of it added");
    }
  }

  // The components of a drawdown with their shares.
  CDbFormula FormulaOf(const CDrawdown& drawdown) const {
    CDbFormula formula;
    for (int32_t k = 0; k < drawdown.shares.GetSize(); ++k) {
      CDbFormulaElement line;
      line.componentId = static_cast<int32_t>(system_.data.componentsA[k].componentId);
      line.amount = drawdown.shares[k];
      if (line.amount > 0.0) formula.Add(line);
    }
    return formula;
  }

  void WriteRows() const {
    CDrawdownFitArray heldFits;
    CDoubleArray1 expected;
    for (const CDrawdown& drawdown : division_.held) {
      heldFits.Add(FitDrawdown(system_.data, drawdown, settings_));
      expected.Add(PredictionError(FormulaOf(drawdown), system_.data, system_.calibrated).nineOfTen);
    }
    OutputStream output;
    FitRows rows(options_.format, output);
    const int32_t count = division_.used.GetSize(), own = count - division_.added;
    rows.Add(division_.used, fits_, 0, own, "used");
    rows.Add(division_.used, fits_, own, count, "added");
    rows.Add(division_.held, heldFits, 0, heldFits.GetSize(), "held out", expected);
    rows.Finish();
    output.Finish();
  }

  const CalibrateOptions& options_;
  DrawdownFile file_, additions_;
  CCalibrationSettings settings_;
  Division division_;
  ColorSystem system_;
  CDrawdownFitArray fits_;
  CDyeBuildUpArray buildUps_;
};

void RunCalibrate(const CalibrateOptions& options) {
  constexpr double kLargestWeight = 1e6;
  if (!(options.weight > 0.0 && options.weight <= kLargestWeight)) {
    throw InputError("--weight: must be a number above 0 and up to 1000000");
  }
  if (!options.additions.empty() && options.noLeaveOneOut) {
    throw InputError(
        "--add reports whether the held-out error fell, which --no-leave-one-out does not compute");
  }
  const int32_t model = kModels.at(static_cast<std::size_t>(options.model));
  if (!options.additions.empty() && MixingLawOf(model) == MixingLaw::kOneConstant) {
    throw InputError("--add: put further dyeings into the ladders themselves");
  }
  Calibration(options).Run();
}

}  // namespace

void AddCalibrate(Command& tool) {
  const auto options = std::make_shared<CalibrateOptions>();
  Command command = tool.AddCommand("calibrate", "Compute K and S of colorants from weighed drawdowns");
  command.AddOption("SAMPLES", options->samples, "CSV file with the curves of drawdowns and their shares")
      .ReadsFile()
      .Required();
  command.AddOption("--white", options->white, "Component whose scattering is set to 1")
      .Shows("NAME")
      .Required();
  command.AddOption("--output", options->output, "Write the colour system to this file")
      .WritesFile()
      .Shows("FILE");
  command.AddChoice(
      "--model", options->model,
      {"coatings", "plastics", "trade-sales", "transparents", "textiles", "continuous-dye"},
      "Optical model; the last three have one constant, for ladders of single dyes on a substrate");
  command.AddOption("--name", options->name, "Name of the colour system").Shows("NAME");
  command.AddOption("--hold-out", options->holdOut, "Predict these drawdowns, but do not calibrate on them")
      .Shows("ID,...");
  command
      .AddOption("--without", options->without,
                 "Leave out these components, and the drawdowns that contain them")
      .Shows("NAME,...");
  command
      .AddOption("--components", options->components,
                 "CSV file of dilutions, with columns component, of and amount (of it in one part)")
      .ReadsFile()
      .Shows("FILE");
  const Option additions =
      command
          .AddOption("--add", options->additions,
                     "Calibrate on further samples with formulas too: corrections and production batches")
          .ReadsFile()
          .Shows("FILE");
  command
      .AddOption("--weight", options->weight, "How much each sample of --add counts compared to a drawdown")
      .Shows("W [1]")
      .Needs(additions);
  command.AddFlag("--no-leave-one-out", options->noLeaveOneOut,
                  "Leave the column leave_one_out empty, which saves most of the time");
  AddSurfaceOptions(command, options->surface);
  AddViewingOptions(command, options->viewing, "D65");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Each row is a curve in percent. It has a column share:NAME for each component, and a column surface:\n"
      "opaque, or black card, white card, film over black and film over white under one id (cards with\n"
      "the id \"card\" serve all films). Instead of shares there may be parts, in any unit, in columns\n"
      "amount:NAME and base:NAME. --components says what dilutions contain; with a row 1/10 "
      "carbon,carbon,0.1\n"
      "the rest is base. The file of --add has the same columns, or one of formulas such as "
      "\"white:94;blue:6\".\n\n"
      "With a one-constant --model, each row is a dyeing of one dye on the substrate --white, or the bare\n"
      "substrate; shares are percent of its weight. Each concentration becomes a level of the system.\n\n"
      "Results, one row per drawdown:\n"
      "  dE              CIEDE2000 between what was measured and what the calibration predicts; for a film\n"
      "                  the mean over black and white, at the one thickness that fits both best\n"
      "  leave_one_out   the same for a calibration without this drawdown, so that a bad one stands out;\n"
      "                  empty if there can be no such calibration\n"
      "  contrast        Y over black / Y over white, measured and predicted\n"
      "  leave_one_out_linear  the same for the linear least squares that the fit starts from\n"
      "  expected        for drawdowns held out: the error that nine of ten such predictions do not exceed, "
      "as\n"
      "                  vrx match states it\n\n"
      "Examples:\n"
      "  vrx calibrate examples/oil_drawdowns.csv --white \"zinc white\" --output /tmp/oil_paints.json \\\n"
      "    --without \"zinc white linseed,chrome yellow poppyseed\"\n"
      "  vrx calibrate examples/oil_drawdowns.csv --white \"zinc white\" --hold-out 05C,06C --format csv \\\n"
      "    --without \"zinc white linseed,chrome yellow poppyseed\"\n");
  command.SetAction([options] {
    RunCalibrate(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
