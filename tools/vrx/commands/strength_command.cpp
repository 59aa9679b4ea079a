// vrx strength: how strong trials are compared with a standard.

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorant/strength.h>

#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/report/result_report.h"

namespace vrx::tool {
namespace {

struct StrengthOptions {
  ComparisonOptions comparison;
  std::string band;  // empty for the usual one
  std::string wavelength;
  SurfaceOptions surface;
  ViewingOptions viewing;
  Format format = Format::kTable;
  ReportOptions report;
};

constexpr std::string_view kUsualBand = "400-700";

// The options that a run compares by, checked.
struct StrengthSettings {
  int32_t first = 0;
  int32_t last = 0;
  int32_t chosen = -1;  // sample that the user chose; -1 for none
  SurfaceOptions surface;
  JudgeSettings viewing;  // only its illuminants and observer count
};

// The sample at a wavelength in nm.
int32_t ParseSample(std::string_view text, const char* option) {
  int32_t nm = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), nm);
  const bool whole = end.ec == std::errc() && end.ptr == text.data() + text.size();
  const int32_t i = whole && nm > 0 ? (nm - kFirstWavelength) / kWavelengthStep : -1;
  if (i < 0 || i >= kWavelengths || WavelengthAt(i) != nm) {
    throw InputError(std::string(option) + ": \"" + std::string(text) +
                     "\" is not one of 360, 370 ... 750 (nm)");
  }
  return i;
}

StrengthSettings SettingsOf(const StrengthOptions& options) {
  StrengthSettings settings;
  const std::string_view band = options.band.empty() ? kUsualBand : std::string_view(options.band);
  const std::size_t dash = band.find('-');
  if (dash == std::string_view::npos) throw InputError("--band: must be two wavelengths, such as 400-700");
  settings.first = ParseSample(band.substr(0, dash), "--band");
  settings.last = ParseSample(band.substr(dash + 1), "--band");
  if (settings.first > settings.last) throw InputError("--band: the shorter wavelength must come first");
  if (!options.wavelength.empty()) settings.chosen = ParseSample(options.wavelength, "--wavelength");
  settings.surface = options.surface;
  settings.viewing.illuminants = options.viewing.Illuminants();
  settings.viewing.observer = options.viewing.Observer();
  return settings;
}

// What was measured of a curve has to reach as far as the options name wavelengths: beyond, the library's grid goes on with the last
// value. The usual band is only what a file is warned of.
void RequireMeasured(const CurveReader& curves, const StrengthOptions& options,
                     const StrengthSettings& settings) {
  const WavelengthGrid& grid = curves.Grid();
  const auto isBeyond = [&](int32_t i) {
    constexpr double kUnevenness = 0.5;  // nm
    return WavelengthAt(i) < grid.FirstWavelength() - kUnevenness ||
           WavelengthAt(i) > grid.LastWavelength() + kUnevenness;
  };
  const char* option = nullptr;
  if (!options.band.empty() && (isBeyond(settings.first) || isBeyond(settings.last))) option = "--band";
  if (settings.chosen >= 0 && isBeyond(settings.chosen)) option = "--wavelength";
  if (option == nullptr) return;
  throw InputError(curves.Source().Name() + ": " + option +
                   " names wavelengths that were not measured: the curves go from " +
                   io::ShortestText(grid.FirstWavelength()) + " to " +
                   io::ShortestText(grid.LastWavelength()) + " nm");
}

// Refuses a standard whose file says that its gloss was measured the other way.
void RequireSpecular(const CurveReader& standards, const Standard& standard, const TakenSpecular& taken) {
  MeasuringConditions conditions;
  conditions.specular = standard.gloss.specular;
  conditions.geometry = standard.gloss.geometry;
  const std::string other = OtherSpecularText(conditions, standard.geometry, taken);
  if (!other.empty())
    throw InputError(standards.Source().Name() + ": standard \"" + standard.id + "\": " + other);
}

// Which trials had samples, in themselves or in their standard, that lie below the surface reflection, and where.
class FloorReport {
 public:
  explicit FloorReport(const StrengthSettings& settings) : settings_(settings), surface_(settings.surface) {}

  // True when the sample `i` of either curve lies at the floor.
  bool IsAt(int32_t i, const CReflData& standard, const CReflData& trial) const {
    return CountOf(standard, i, i) + CountOf(trial, i, i) > 0;
  }

  // Notes a trial; returns true when some sample of the band lies at the floor.
  bool Note(const CReflData& standard, const CReflData& trial) {
    ++trials_;
    const int32_t count =
        CountOf(standard, settings_.first, settings_.last) + CountOf(trial, settings_.first, settings_.last);
    if (count == 0) return false;
    ++trialsAtFloor_;
    for (int32_t i = settings_.first; i <= settings_.last; ++i) {
      if (IsAt(i, standard, trial)) isAtFloor_[static_cast<std::size_t>(i)] = true;
    }
    return true;
  }

  void Warn() const {
    if (trialsAtFloor_ == 0) return;
    std::fprintf(
        stderr,
        "vrx: %lld of %lld trials are darker than the surface alone (themselves or their standard, at %s "
        "nm): strengths that need these samples are left empty; use --specular excluded for curves without "
        "the specular component, --specular none for uncorrected ones\n",
        static_cast<long long>(trialsAtFloor_), static_cast<long long>(trials_), Wavelengths().c_str());
  }

 private:
  int32_t CountOf(const CReflData& curve, int32_t first, int32_t last) const {
    return CountAtFloor(curve, first, last, surface_.k1, surface_.k2, surface_.Specular());
  }

  // Runs of wavelengths, as "400-430, 690".
  std::string Wavelengths() const {
    std::string text;
    for (std::size_t i = 0; i < isAtFloor_.size(); ++i) {
      if (!isAtFloor_[i] || (i > 0 && isAtFloor_[i - 1])) continue;
      std::size_t last = i;
      while (last + 1 < isAtFloor_.size() && isAtFloor_[last + 1]) ++last;
      if (!text.empty()) text += ", ";
      text += std::to_string(WavelengthAt(static_cast<int32_t>(i)));
      if (last > i) text += "-" + std::to_string(WavelengthAt(static_cast<int32_t>(last)));
    }
    return text;
  }

  const StrengthSettings& settings_;
  const SurfaceOptions& surface_;
  std::array<bool, kWavelengths> isAtFloor_{};
  int64_t trials_ = 0;
  int64_t trialsAtFloor_ = 0;
};

// Trials with their strengths, one row each. A form that a reading at the floor enters is unset.
class StrengthRows {
 public:
  StrengthRows(const Format& format, OutputStream& output, const StrengthSettings& settings,
               bool hasGeometries, ResultReport& report)
      : hasGeometries_(hasGeometries),
        settings_(settings),
        surface_(settings.surface),
        floor_(settings),
        rows_(report.Rows(format, output, Columns(settings, hasGeometries))) {}

  void Add(const Standard& own, const CurveRow& row) {
    const CReflData &standard = own.sample.curve, &trial = row.curve;
    rows_->Text(own.id);
    rows_->Text(row.id);
    if (hasGeometries_) rows_->Text(GeometryName(row.geometry));
    AddSums(standard, trial);
    bool isFirst = true;
    for (const vrxIlluminant illuminant : settings_.viewing.illuminants) {
      standard.Tristimulus(illuminant, settings_.viewing.observer, standardXyz_);
      trial.Tristimulus(illuminant, settings_.viewing.observer, trialXyz_);
      AddUnless(HaveFloor(standardXyz_, trialXyz_),
                TristimulusStrength(standardXyz_, trialXyz_, surface_.k1, surface_.k2, surface_.Specular()));
      if (isFirst) AddSingleWavelengths(standard, trial);
      isFirst = false;
      AddFurther();
    }
    rows_->EndRow();
  }
  void Finish() { rows_->Finish(); }
  void Warn() const {
    floor_.Warn();
    if (bounded_ == 0) return;
    PrintMessage("warning: " + std::to_string(bounded_) +
                 " strengths are 0.01 or less, or 999.99, where they end: the true ones are beyond; is the "
                 "standard the right one?");
  }

 private:
  static std::vector<Column> Columns(const StrengthSettings& settings, bool hasGeometries) {
    std::vector<Column> columns{{"standard"}, {"trial"}};
    if (hasGeometries) columns.push_back({"geometry"});
    columns.push_back({"ks", "K/S"});
    columns.push_back({"absorbance"});
    const std::size_t sums = columns.size();
    for (const vrxIlluminant illuminant : settings.viewing.illuminants) {
      const bool isFirst = columns.size() == sums;
      const std::string suffix = isFirst ? "" : std::string("_").append(ShownIlluminant(illuminant));
      columns.push_back({.name = "tristimulus" + suffix, .room = isFirst ? Room::kNeeded : Room::kSpare});
      if (isFirst) AddSingleWavelengthColumns(settings, columns);
      columns.push_back({.name = "pseudo_tristimulus" + suffix,
                         .heading = "pseudo" + suffix,
                         .room = isFirst ? Room::kNeeded : Room::kSpare});
      columns.push_back({.name = "luminous" + suffix, .room = Room::kSpare});
      for (const char* component : {"X", "Y", "Z"}) {
        columns.push_back({.name = component + suffix, .room = Room::kSpare});
      }
    }
    return columns;
  }

  static void AddSingleWavelengthColumns(const StrengthSettings& settings, std::vector<Column>& columns) {
    columns.push_back({"chromatic"});
    columns.push_back({"chromatic_nm", "at nm"});
    if (settings.chosen < 0) return;
    const std::string nm = std::to_string(WavelengthAt(settings.chosen));
    columns.push_back({"chromatic_" + nm, nm + " nm"});
  }

  void AddUnless(bool isAtFloor, double strength) { AddStrength(isAtFloor ? kUnset : strength); }

  // Strengths end at 0.01 and 999.99: a number there is a bound, and not the strength.
  void AddStrength(double strength) {
    constexpr double kLeast = 0.01, kMost = 999.99;
    if (!IsUnset(strength) && (strength <= kLeast || strength >= kMost)) ++bounded_;
    rows_->Number(strength);
  }

  void AddSums(const CReflData& standard, const CReflData& trial) {
    const bool isAtFloor = floor_.Note(standard, trial);
    for (const bool useAbsorbance : {false, true}) {
      AddUnless(isAtFloor, StrengthPercent(standard, trial, useAbsorbance, settings_.first, settings_.last,
                                           surface_.k1, surface_.k2, surface_.Specular()));
    }
  }

  void AddSingleWavelengths(const CReflData& standard, const CReflData& trial) {
    const int32_t peak = MaximumAbsorption(standard, settings_.first, settings_.last, surface_.k1,
                                           surface_.k2, surface_.Specular());
    AddSingleWavelength(standard, trial, peak);
    rows_->Integer(WavelengthAt(peak));
    if (settings_.chosen >= 0) AddSingleWavelength(standard, trial, settings_.chosen);
  }

  void AddSingleWavelength(const CReflData& standard, const CReflData& trial, int32_t i) {
    AddUnless(floor_.IsAt(i, standard, trial),
              ChromaticStrength(standard, trial, i, surface_.k1, surface_.k2, surface_.Specular()));
  }

  bool HaveFloor(const CTrisValues& standard, const CTrisValues& trial) const {
    return CountAtFloor(standard, surface_.k1, surface_.k2, surface_.Specular()) +
               CountAtFloor(trial, surface_.k1, surface_.k2, surface_.Specular()) >
           0;
  }

  static CTrisValues FilterValues(const CTrisValues& xyz) {
    const FilterReadings readings = ToFilterReadings(xyz);
    return {readings.amber, readings.green, readings.blue};
  }

  void AddFurther() {
    AddUnless(
        HaveFloor(FilterValues(standardXyz_), FilterValues(trialXyz_)),
        PseudoTristimulusStrength(standardXyz_, trialXyz_, surface_.k1, surface_.k2, surface_.Specular()));
    const auto luminous = [](const CTrisValues& xyz) {
      const double Y = xyz[CTrisValues::kY];
      return CTrisValues(Y, Y, Y);
    };
    const bool isDark = CountAtFloor(luminous(standardXyz_), 0.04, 0.6, surface_.Specular()) +
                            CountAtFloor(luminous(trialXyz_), 0.04, 0.6, surface_.Specular()) >
                        0;
    AddUnless(isDark, LuminousStrength(standardXyz_, trialXyz_, surface_.Specular()));
    for (int32_t i = 0; i < 3; ++i) AddStrength(ComponentStrength(standardXyz_, trialXyz_, i));
  }

  bool hasGeometries_;
  const StrengthSettings& settings_;
  const SurfaceOptions& surface_;
  FloorReport floor_;
  std::unique_ptr<RowWriter> rows_;
  int64_t bounded_ = 0;  // strengths at an end of their range
  CTrisValues standardXyz_, trialXyz_;
};

// Tells the report the inputs and the conditions.
void DescribeRun(const StrengthOptions& options, const StrengthSettings& settings, const CurveReader& trials,
                 ResultReport& report) {
  report.AddFile(ReportText::kStandardsFile, options.comparison.standard);
  report.AddFile(ReportText::kTrialsFile, options.comparison.trials);
  report.AddFact(ReportText::kBand, (options.band.empty() ? std::string(kUsualBand) : options.band) + " nm");
  report.AddFact(ReportText::kSurface,
                 "k1 " + FixedText(settings.surface.k1, 3) + ", k2 " + FixedText(settings.surface.k2, 3));
  report.AddViewing(settings.viewing.illuminants, settings.viewing.observer);
  report.SetMeasured(trials);
}

void RunStrength(StrengthOptions& options) {
  const StrengthSettings settings = SettingsOf(options);
  const TakenSpecular taken = settings.surface.Taken();
  options.comparison.checkTrial = [&](const CurveReader& curves, const CurveRow& row) {
    RefuseOtherSpecular(curves, row, taken);
    RequireMeasured(curves, options, settings);
  };
  Comparison comparison(options.comparison, options.viewing);
  OutputStream output;
  ResultReport report(options.report, ReportText::kStrengths);
  StrengthRows rows(options.format, output, settings, comparison.Trials().HasGeometries(), report);
  DescribeRun(options, settings, comparison.Trials(), report);
  const bool isOneStandard = !options.comparison.pairs && !comparison.Trials().HasStandards();
  comparison.ForEachTrial([&](const CurveRow& trial, const Standard& standard) {
    RequireSpecular(comparison.StandardRows(), standard, taken);
    RequireMeasured(comparison.StandardRows(), options, settings);
    if (isOneStandard) report.SetStandard(standard.sample.curve);
    report.AddCurve(trial.curve);
    rows.Add(standard, trial);
  });
  rows.Finish();
  report.AddInput(comparison.StandardRows(), comparison.Trials());
  report.Save();
  output.Finish();
  comparison.WarnAboutInput();
  rows.Warn();
}

void AddOptions(Command& command, StrengthOptions& options) {
  AddComparisonOptions(command, options.comparison, Content::kCurves);
  command.AddOption("--band", options.band, "Wavelengths to sum over, in nm").Shows("FROM-TO [400-700]");
  command.AddOption("--wavelength", options.wavelength, "Add the chromatic strength at this wavelength")
      .Shows("NM");
  AddSurfaceOptions(command, options.surface);
  AddViewingOptions(command, options.viewing, "D65");
  AddFormatOption(command, options.format);
  AddReportOptions(command, options.report);
}

}  // namespace

void AddStrength(Command& tool) {
  const auto options = std::make_shared<StrengthOptions>();
  Command command =
      tool.AddCommand("strength", "Compute the strength of trials against a standard, in percent");
  AddOptions(command, *options);
  command.SetNotes(
      "Strengths in percent of the standard:\n"
      "  ks, absorbance       sums over the band (apparent strength)\n"
      "  chromatic            K/S where the standard absorbs most in the band, and at --wavelength\n"
      "  tristimulus          X, Y and Z, corrected for the surface\n"
      "  pseudo_tristimulus   K/S of amber, green and blue reflectances\n"
      "  luminous             K/S of Y, for k1 = 0.04 and k2 = 0.6\n"
      "  X, Y, Z              each on its own\n"
      "A strength is left empty when a reading that it needs is darker than the surface alone.\n"
      "Each further illuminant adds its own columns, named after it.\n\n"
      "Examples:\n"
      "  vrx strength standard.csv batch.csv\n"
      "  vrx strength master.csv lots.csv --pairs --band 400-560 --format csv\n"
      "  vrx strength std.csv batch.csv --standard-id blue --wavelength 620 --illuminants D65,A\n");
  command.SetAction([options] {
    RunStrength(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
