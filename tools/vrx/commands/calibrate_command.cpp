// vrx calibrate: K and S of colorants from weighed drawdowns.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/matching/calibration.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/drawdown_file.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct CalibrateOptions {
  std::string samples;
  std::string output;
  std::string white;
  std::string name = "Calibrated colorants";
  std::vector<std::string> holdOut;
  std::vector<std::string> without;
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
    throw InputError(options.samples + ": --white: there is no column \"share:" + options.white + "\"");
  }
  settings.white = static_cast<int32_t>(white - file.names.begin());
  settings.k1 = options.surface.k1;
  settings.k2 = options.surface.k2;
  settings.mode = options.surface.specular;
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
      throw InputError(options.samples + ": --without: there is no column \"share:" + name + "\"");
    }
    const auto column = static_cast<int32_t>(found - file.names.begin());
    CDrawdownArray kept;
    for (CDrawdown drawdown : file.drawdowns) {
      if (drawdown.shares[column] != 0.0) continue;
      drawdown.shares.RemoveAt(column);
      kept.Add(drawdown);
    }
    file.drawdowns = kept;
    file.names.erase(found);
  }
}

// The drawdowns that take part and those that were held out.
struct Division {
  CDrawdownArray used;
  CDrawdownArray held;
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

[[noreturn]] void Fail(const CalibrateOptions& options, const DrawdownFile& file, const CDrawdownArray& used,
                       const CalibrationOutcome& outcome) {
  const std::string component =
      outcome.component >= 0 ? "\"" + file.names[static_cast<std::size_t>(outcome.component)] + "\"" : "";
  const std::string drawdown = outcome.drawdown >= 0 ? "\"" + used[outcome.drawdown].id.ToUtf8() + "\"" : "";
  const std::string prefix = options.samples + ": ";
  switch (outcome.fault) {
    case CalibrationFault::kNoWhite:
      throw InputError(prefix + "no drawdown has the white " + component + " in it");
    case CalibrationFault::kNeverUsed:
      throw InputError(prefix + "no drawdown has " + component + " in it");
    case CalibrationFault::kOneShareOnly:
      throw InputError(
          prefix + component +
          " has one share only in all its drawdowns, from which K and S cannot be told apart: add a "
          "masstone or a letdown");
    case CalibrationFault::kShares:
      throw InputError(prefix + "drawdown " + drawdown + ": shares that cannot be used");
    default:
      throw InputError(prefix + "drawdown " + drawdown + " is not measured");
  }
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
                             {"thickness"}})) {}

  void Add(const CDrawdownArray& drawdowns, const CDrawdownFitArray& fits, const char* part) {
    for (int32_t i = 0; i < drawdowns.GetSize(); ++i) {
      const CDrawdownFit& fit = fits[i];
      rows_->Text(drawdowns[i].id.ToUtf8());
      rows_->Text(part);
      for (const double value :
           {fit.deltaE, fit.leaveOneOut, fit.measuredContrast, fit.predictedContrast, fit.thickness}) {
        rows_->Number(value);
      }
      rows_->EndRow();
    }
  }
  void Finish() { rows_->Finish(); }

 private:
  std::unique_ptr<RowWriter> rows_;
};

void RunCalibrate(const CalibrateOptions& options) {
  DrawdownFile file = ReadDrawdowns(options.samples, options.input);
  LeaveOut(options, file);
  const CCalibrationSettings settings = SettingsOf(options, file);
  const Division division = Divide(options, file);
  CStringArray1 names;
  for (const std::string& name : file.names) names.Add(CString::FromUtf8(name).CStr());
  ColorSystem system;
  system.data.name = CString::FromUtf8(options.name);
  CDrawdownFitArray fits;
  const CalibrationOutcome outcome = CalibrateColorants(names, division.used, settings, system.data, fits);
  if (outcome.fault != CalibrationFault::kNone) Fail(options, file, division.used, outcome);
  CDrawdownFitArray heldFits;
  for (const CDrawdown& drawdown : division.held) heldFits.Add(FitDrawdown(system.data, drawdown, settings));
  if (!options.output.empty()) WriteColorSystem(options.output, system);
  OutputStream output;
  FitRows rows(options.format, output);
  rows.Add(division.used, fits, "used");
  rows.Add(division.held, heldFits, "held out");
  rows.Finish();
  output.Finish();
  const auto isFilm = [](const CDrawdown& drawdown) { return drawdown.isFilm; };
  if (std::any_of(file.drawdowns.begin(), file.drawdowns.end(), isFilm)) {
    PrintMessage("film thicknesses are not given: one is assumed for the two readings of a film");
  }
}

}  // namespace

void AddCalibrate(Command& tool) {
  const auto options = std::make_shared<CalibrateOptions>();
  Command command = tool.AddCommand("calibrate", "K and S of colorants from weighed drawdowns");
  command.AddOption("SAMPLES", options->samples, "Curves of drawdowns with their shares, a CSV file")
      .ReadsFile()
      .Required();
  command.AddOption("--white", options->white, "The component whose scattering is 1")
      .Shows("NAME")
      .Required();
  command.AddOption("--output", options->output, "Write the colour system to this file")
      .WritesFile()
      .Shows("FILE");
  command.AddOption("--name", options->name, "What the colour system is called").Shows("NAME");
  command.AddOption("--hold-out", options->holdOut, "Drawdowns that take no part, but are predicted")
      .Shows("ID,...");
  command
      .AddOption("--without", options->without,
                 "Components that are left out, with the drawdowns that have them")
      .Shows("NAME,...");
  command.AddFlag("--no-leave-one-out", options->noLeaveOneOut,
                  "Leave that column empty; it takes most of the time");
  AddSurfaceOptions(command, options->surface);
  AddViewingOptions(command, options->viewing, "D65");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Each row is a curve in percent with a column share:NAME per component and a column surface:\n"
      "opaque, or black card, white card, film over black and film over white under one id (cards with\n"
      "the id \"card\" serve all films).\n\n"
      "Results, one row a drawdown:\n"
      "  dE              CIEDE2000 of what was measured and what the calibration predicts; of a film the\n"
      "                  mean over black and white, at the one thickness that fits both best\n"
      "  leave_one_out   the same by a calibration without this drawdown: a bad one stands out; empty\n"
      "                  where one is not possible\n"
      "  contrast        Y over black / Y over white, measured and predicted\n\n"
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
