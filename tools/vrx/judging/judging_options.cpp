#include "tools/vrx/judging/judging_options.h"

#include <vector>

#include "tools/vrx/base/command_line.h"

namespace vrx::tool {
namespace {

constexpr const char* kUsualTolerance = "1.5";

// Makes the ellipsoids of the system decide, grown by the factor that --tolerance or the parameters name.
void BuildEllipses(const JudgingOptions& options, JudgeSettings& settings) {
  CDifferenceSettings& difference = settings.difference;
  const DifferenceSystem& system = *FindDifferenceSystem(difference.system);
  if (system.ellipsoidFactor == kNoEllipsoid) {
    std::string having;
    for (const DifferenceSystem& row : DifferenceSystems()) {
      if (row.ellipsoidFactor != kNoEllipsoid) having.append(" ").append(row.shortName);
    }
    throw InputError("--ellipse: " + std::string(system.shortName) +
                     " has no ellipsoid; these have:" + having);
  }
  settings.buildEllipses = true;
  const auto place = static_cast<std::size_t>(system.ellipsoidFactor);
  const bool inParameters = options.system.Given().size() > place;
  if (inParameters && !options.tolerance.empty()) {
    throw InputError("--ellipse: --tolerance and --parameters both name the factor");
  }
  if (inParameters) return;
  const std::vector<double> factor =
      ParseNumbers(options.tolerance.empty() ? kUsualTolerance : options.tolerance, "--tolerance");
  if (factor.size() != 1 || !(factor[0] > 0)) {
    throw InputError("--tolerance: with --ellipse one number above 0 is expected");
  }
  difference.parameters[place] = factor[0];
}

void LoadEllipses(const JudgingOptions& options, JudgeSettings& settings) {
  if (!options.tolerance.empty() && !options.ellipse) {
    throw InputError("--ellipses: the file has the limits; --tolerance needs --ellipse");
  }
  CsvReader csv(options.ellipses);
  settings.ellipses.Load(csv, {settings.difference.system, settings.observer});
  if (settings.ellipses.IsEmpty()) throw InputError(csv.Name() + ": there is no row");
}

}  // namespace

void AddToleranceOptions(Command& command, std::string& tolerance, double& warning,
                         const std::string& usual) {
  command
      .AddOption("--tolerance", tolerance,
                 "One limit for everything, or seven: plus and minus of the three components, then the total")
      .Shows("LIMITS [" + usual + "]");
  command.AddOption("--warning", warning, "Fraction of a limit above which there is a warning")
      .Shows("FACTOR [0.75]");
}

void AddJudgingOptions(Command& command, JudgingOptions& options, const std::string& illuminants) {
  AddViewingOptions(command, options.viewing, illuminants);
  AddSystemOptions(command, options.system, "cmc");
  AddToleranceOptions(command, options.tolerance, options.warning, kUsualTolerance);
  Option boxes = command
                     .AddOption("--tolerances", options.tolerances,
                                "Limits per standard, geometry and illuminant, from a CSV file")
                     .ReadsFile();
  boxes.Shows("FILE");
  command
      .AddFlag("--ellipse", options.ellipse,
               "Judge by the ellipsoid of cmc, cie94 or cie2000 about the standard, times --tolerance")
      .Excludes(boxes);
  command
      .AddOption("--ellipses", options.ellipses,
                 "Judge by ellipsoids from a CSV file, as vrx fit-tolerance writes it")
      .ReadsFile()
      .Shows("FILE")
      .Excludes(boxes);
}

CBoxTolData BoxOf(const std::string& tolerance, int32_t system) {
  const DifferenceSystem& row = *FindDifferenceSystem(system);
  if (tolerance.empty() && !row.inDeltaE) {
    throw InputError("--tolerance: the usual 1.5 is a dE, which " + std::string(row.shortName) +
                     " is not; give its limits");
  }
  return BoxFromNumbers(ParseNumbers(tolerance.empty() ? kUsualTolerance : tolerance, "--tolerance"));
}

double CheckedWarning(double warning) {
  if (!(warning >= 0 && warning <= 1)) throw InputError("--warning: a factor from 0 to 1");
  return warning;
}

JudgeSettings SettingsOf(const JudgingOptions& options) {
  JudgeSettings settings;
  settings.warningFactor = CheckedWarning(options.warning);
  settings.illuminants = options.viewing.Illuminants();
  settings.observer = options.viewing.Observer();
  settings.difference = options.system.Settings();
  settings.box = BoxOf(options.tolerance, settings.difference.system);
  if (!options.tolerances.empty()) {
    CsvReader csv(options.tolerances);
    settings.boxes.Load(csv, {settings.difference.system, settings.observer});
  }
  if (options.ellipse) BuildEllipses(options, settings);
  if (!options.ellipses.empty()) LoadEllipses(options, settings);
  return settings;
}

}  // namespace vrx::tool
