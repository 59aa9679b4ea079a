#include "tools/vrx/judging/judging_options.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/judging/verdict_texts.h"

namespace vrx::tool {
namespace {

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
    throw InputError("--ellipse: --tolerance and --parameters both set the factor");
  }
  if (inParameters) return;
  const std::vector<double> factor =
      ParseNumbers(options.tolerance.empty() ? kUsualTolerance : options.tolerance, "--tolerance");
  if (factor.size() != 1 || !(factor[0] > 0)) {
    throw InputError("--tolerance: with --ellipse it must be one number above 0");
  }
  difference.parameters[place] = factor[0];
}

// The grade that a text such as "4", "4-5" or "4.5" names: one of the nine half steps.
double GradeFrom(const std::string& text) {
  for (int32_t halves = 2; halves <= 10; ++halves) {
    const double grade = halves / 2.0;
    if (text == GradeText(grade) || text == ShortestText(grade)) return grade;
  }
  throw InputError("--least-grade: must be 1, 1-2, 2, 2-3, 3, 3-4, 4, 4-5 or 5");
}

std::optional<GradeCondition> GradeOf(const JudgingOptions& options) {
  if (options.grade.empty()) {
    if (!options.leastGrade.empty())
      throw InputError("--least-grade: --grade change or --grade staining says of which scale");
    return {};
  }
  if (options.grade != "change" && options.grade != "staining")
    throw InputError("--grade: must be change or staining");
  GradeCondition grade{options.grade == "change" ? GreyScale::kChange : GreyScale::kStaining};
  if (!options.leastGrade.empty()) grade.least = GradeFrom(options.leastGrade);
  return grade;
}

InconstancyCondition InconstancyOf(const JudgingOptions& options, std::size_t illuminants) {
  const std::vector<double> most = ParseNumbers(options.mostInconstancy, "--most-inconstancy");
  if (most.size() != 1 || !(most[0] > 0 && std::isfinite(most[0])))
    throw InputError("--most-inconstancy: must be one number above 0");
  if (illuminants < 2) throw InputError("--most-inconstancy: needs two illuminants or more");
  return {most[0]};
}

// The names of the components of a system, as --limits takes them.
std::vector<std::string> ComponentNames(int32_t system) {
  std::vector<std::string> names;
  for (const BrokenLimit component : {BrokenLimit::kFirst, BrokenLimit::kSecond, BrokenLimit::kThird}) {
    names.push_back(NameOfElement(system, ElementOf(component, system)));
  }
  return names;
}

// Takes a limit such as "dL=0.5" or "db=-0.3:0.6" into a box.
void SetComponent(const std::string& limit, int32_t system, CBoxTolData& box) {
  const std::vector<std::string> names = ComponentNames(system);
  const std::size_t equals = limit.find('=');
  const auto name = std::ranges::find(names, limit.substr(0, equals));
  if (equals == std::string::npos || name == names.end()) {
    throw InputError("--limits: " + limit + " is not one of " + names[0] + ", " + names[1] + ", " + names[2] +
                     ", as in " + names[0] + "=0.5");
  }
  std::string numbers = limit.substr(equals + 1);
  std::ranges::replace(numbers, ':', ',');
  const std::vector<double> bounds = ParseNumbers(numbers, "--limits");
  const bool isOne = bounds.size() == 1 && bounds[0] >= 0;
  if (!isOne && (bounds.size() != 2 || bounds[0] > bounds[1])) {
    throw InputError("--limits: " + limit +
                     ": must be one limit of 0 or more, or the lower and the upper one, as in " + names[0] +
                     "=-0.3:0.6");
  }
  box.SetTolerance(static_cast<int32_t>(name - names.begin()), bounds.back(), isOne ? bounds[0] : -bounds[0]);
}

void LoadEllipses(const JudgingOptions& options, JudgeSettings& settings) {
  if (!options.tolerance.empty() && !options.ellipse) {
    throw InputError("--ellipses: the file has the limits; --tolerance also needs --ellipse");
  }
  CsvReader csv(options.ellipses);
  settings.ellipses.Load(csv, {settings.difference.system, settings.observer});
}

void WarnAboutLimitsOfJob(const std::string& job, const JudgeSettings& settings) {
  std::vector<std::string> unused = settings.boxes.UnusedRowsOfUsed();
  const std::vector<std::string> ellipses = settings.ellipses.UnusedRowsOfUsed();
  unused.insert(unused.end(), ellipses.begin(), ellipses.end());
  if (!unused.empty()) {
    PrintMessage(
        job + ": warning: nothing was judged that these limits of the job are for: " + FirstOf(unused, "; "));
  }
}

}  // namespace

VerdictRule RuleOf(const std::string& verdict) {
  if (verdict.empty() || verdict == "worse" || verdict == "both") return VerdictRule::kWorse;
  if (verdict == "total") return VerdictRule::kTotal;
  if (verdict == "box") return VerdictRule::kComponents;
  throw InputError("--verdict: must be total, box, both or worse");
}

bool LimitsNothing(const JudgeLimits& limits, VerdictRule rule) {
  if (rule == VerdictRule::kComponents) return !LimitsComponents(limits);
  if (std::holds_alternative<SystemEllipsoid>(limits) || std::isfinite(TotalLimitOf(limits))) return false;
  return rule == VerdictRule::kTotal || !LimitsComponents(limits);
}

void RequireLimitsOfComponents(const JudgeSettings& settings) {
  const bool hasOthers = settings.ByEllipse() || !settings.boxes.IsEmpty();  // looked at for each standard
  if (settings.rule != VerdictRule::kComponents || hasOthers || LimitsComponents(settings.box)) return;
  throw InputError("--verdict box: no component has a limit; use --limits, or --tolerance with seven limits");
}

void WarnAboutLimits(const JudgingOptions& options, const JudgeSettings& settings, const std::string& job) {
  if (!job.empty() && options.tolerances.empty() && options.ellipses.empty())
    return WarnAboutLimitsOfJob(job, settings);
  const bool areEllipses = !options.ellipses.empty();
  const std::vector<std::string> unused =
      areEllipses ? settings.ellipses.UnusedRows() : settings.boxes.UnusedRows();
  if (unused.empty()) return;
  const std::size_t all = areEllipses ? settings.ellipses.Size() : settings.boxes.Size();
  PrintMessage((areEllipses ? options.ellipses : options.tolerances) + ": warning: " +
               std::to_string(unused.size()) + " of " + std::to_string(all) + (all == 1 ? " row" : " rows") +
               " of limits served nothing that was judged: " + FirstOf(unused, ", "));
}

void AddToleranceOptions(Command& owner, LimitOptions& options, const std::string& usual,
                         const std::string& usualVerdict, const std::string& usualWarning) {
  Command command = owner.Group("Limits");
  command
      .AddOption("--tolerance", options.tolerance,
                 "Limit of the total difference; or seven limits: plus and minus for each of the three "
                 "components, then the total")
      .Shows("LIMITS [" + usual + "]");
  command
      .AddOption("--limits", options.limits,
                 "Limits of components by name: dL=0.5 for both sides, db=-0.3:0.6 for minus and plus")
      .Shows("NAME=LIMIT,... [none]");
  command
      .AddOption("--verdict", options.verdict,
                 "What decides the verdict: the total, the box of components, or the worse of the two")
      .Shows("total|box|both|worse [" + usualVerdict + "]");
  command.AddOption("--warning", options.warning, "Fraction of a limit above which the verdict is a warning")
      .Shows("FACTOR [" + usualWarning + "]");
}

void AddJudgingOptions(Command& owner, JudgingOptions& options, const std::string& illuminants) {
  AddViewingOptions(owner, options.viewing, illuminants);
  AddSystemOptions(owner, options.system, "cmc");
  AddToleranceOptions(owner, options, kUsualTolerance);
  Command command = owner.Group("Limits");
  Option boxes = command
                     .AddOption("--tolerances", options.tolerances,
                                "CSV file with limits per standard, geometry and illuminant")
                     .ReadsFile();
  boxes.Shows("FILE");
  command
      .AddFlag("--ellipse", options.ellipse,
               "Judge by the ellipsoid of cmc, cie94 or cie2000 around the standard, scaled by --tolerance")
      .Excludes(boxes);
  command
      .AddOption("--ellipses", options.ellipses,
                 "Judge by ellipsoids from a CSV file, as vrx fit-tolerance writes them")
      .ReadsFile()
      .Shows("FILE")
      .Excludes(boxes);
  command
      .AddOption("--grade", options.grade,
                 "Grade by a grey scale: change of colour (ISO 105-A05) or staining (ISO 105-A04)")
      .Shows("change|staining");
  command
      .AddOption("--least-grade", options.leastGrade,
                 "Fail trials whose grade in half steps is lower; differences then have only the limits that "
                 "are given")
      .Shows("GRADE, such as 4 or 4-5");
  command
      .AddOption("--most-inconstancy", options.mostInconstancy,
                 "Fail trials whose own colour changes by more from the first illuminant to another")
      .Shows("DIFFERENCE");
}

CBoxTolData BoxOf(const LimitOptions& options, int32_t system) {
  const DifferenceSystem& row = *FindDifferenceSystem(system);
  if (options.tolerance.empty() && !row.inDeltaE) {
    throw InputError("--tolerance: the default of 1.5 is a dE, which " + std::string(row.shortName) +
                     " is not; give the limit of its total");
  }
  const std::string& given = options.tolerance.empty() ? kUsualTolerance : options.tolerance;
  const std::vector<double> numbers = ParseNumbers(given, "--tolerance");
  CBoxTolData box = BoxFromNumbers(numbers);
  if (numbers.size() == 1) box = TotalLimit(numbers.front());
  if (options.limits.empty()) return box;
  if (numbers.size() != 1) throw InputError("--limits: --tolerance already has limits of components");
  std::vector<std::string> named;
  for (const std::string& limit : SplitList(options.limits, ',')) {
    SetComponent(limit, system, box);
    const std::string name = limit.substr(0, limit.find('='));
    if (std::ranges::find(named, name) != named.end())
      throw InputError("--limits: " + name + " is there twice");
    named.push_back(name);
  }
  return box;
}

void SetLimits(const LimitOptions& options, JudgeSettings& settings) {
  if (!(options.warning >= 0 && options.warning <= 1))
    throw InputError("--warning: must be a factor from 0 to 1");
  settings.warningFactor = options.warning;
  const bool byGrade = settings.grade && settings.grade->least > 0;
  settings.box = byGrade && options.tolerance.empty() && options.limits.empty()
                     ? TotalLimit(std::numeric_limits<double>::infinity())
                     : BoxOf(options, settings.difference.system);
  settings.rule = RuleOf(options.verdict);
}

void AddLimits(const JudgingOptions& options, JudgeSettings& settings) {
  if (!options.grade.empty() || !options.leastGrade.empty()) settings.grade = GradeOf(options);
  if (!options.mostInconstancy.empty())
    settings.inconstancy = InconstancyOf(options, settings.illuminants.size());
  if ((options.ellipse || !options.ellipses.empty()) && !options.limits.empty())
    throw InputError("--limits: ellipsoids decide in place of the components");
  SetLimits(options, settings);
  if (!options.tolerances.empty()) {
    CsvReader csv(options.tolerances);
    settings.boxes.Load(csv, {settings.difference.system, settings.observer});
  }
  if (options.ellipse) BuildEllipses(options, settings);
  if (!options.ellipses.empty()) LoadEllipses(options, settings);
}

JudgeSettings SettingsUnder(const ViewingOptions& viewing, const SystemOptions& system) {
  JudgeSettings settings;
  settings.illuminants = viewing.Illuminants();
  settings.observer = viewing.Observer();
  settings.difference = system.Settings();
  settings.angle = system.Angle();
  return settings;
}

JudgeSettings SettingsOf(const JudgingOptions& options) {
  JudgeSettings settings = SettingsUnder(options.viewing, options.system);
  AddLimits(options, settings);
  RequireLimitsOfComponents(settings);
  return settings;
}

}  // namespace vrx::tool
