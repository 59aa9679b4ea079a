// vrx fit-whiteness: an instrument's own parameters of Ganz-Griesser whiteness and tint.

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/ganz_griesser.h>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/sample_color.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct WhitenessOptions {
  std::string standards;
  std::string samples;
  std::string withoutUv;  // the same samples without ultraviolet light
  bool parameters = false;
  CurveInputOptions input;
  Format format = Format::kTable;
};

bool IsNominalHeading(std::string_view heading) {
  return heading == "whiteness" || heading == "tint";
}

struct NamedStandard : WhitenessStandard {
  std::string id;
};

// The number in a column of nominal values; unset without the column and where the field is empty.
double NominalFrom(const CurveReader& reader, const CurveRow& row, std::string_view heading) {
  const std::vector<std::string> headings = reader.Source().ExtraHeadings();
  const auto found = std::ranges::find(headings, heading);
  if (found == headings.end()) return kUnset;
  const std::string& text = row.extras[static_cast<std::size_t>(found - headings.begin())];
  if (text.empty()) return kUnset;
  double value = 0;
  if (!ParseDecimal(text, '.', value)) reader.Source().FailRow("\"" + text + "\" is no whiteness or tint");
  return value;
}

std::vector<NamedStandard> ReadWhites(const WhitenessOptions& options) {
  constexpr std::size_t kMost = 10'000;
  CurveReader reader =
      OpenCurves(options.standards, options.input, Content::kCurvesOrColors, &IsNominalHeading);
  reader.RequireLight(vrxIllumD65, kObserver10);
  std::vector<NamedStandard> standards;
  CurveRow row;
  while (reader.Next(row)) {
    if (standards.size() == kMost) reader.Source().FailRow("more than 10000 standards");
    NamedStandard& one = standards.emplace_back();
    one.id = row.id;
    one.xyz = XyzOf(row, vrxIllumD65, kObserver10);
    one.whiteness = NominalFrom(reader, row, "whiteness");
    one.tint = NominalFrom(reader, row, "tint");
  }
  WarnAboutInput(reader);
  return standards;
}

void WriteParameters(const GanzGriesser& p, const Format& format, OutputStream& output) {
  const auto rows = MakeRowWriter(
      format, output,
      {{"P", "P", 3}, {"Q", "Q", 3}, {"C", "C", 3}, {"m", "m", 3}, {"n", "n", 3}, {"k", "k", 3}});
  for (const double number : {p.P, p.Q, p.C, p.m, p.n, p.k}) rows->Known(number);
  rows->EndRow();
  rows->Finish();
}

void WriteResiduals(const std::vector<NamedStandard>& standards, const GanzGriesserFit& fit,
                    const Format& format, OutputStream& output) {
  const auto rows = MakeRowWriter(format, output,
                                  {{"id"},
                                   {"whiteness", "whiteness", 2},
                                   {"fitted_whiteness", "fitted", 2},
                                   {"whiteness_residual", "residual", 2},
                                   {"tint", "tint", 2},
                                   {"fitted_tint", "fitted", 2},
                                   {"tint_residual", "residual", 2}});
  for (std::size_t i = 0; i < standards.size(); ++i) {
    const NamedStandard& one = standards[i];
    rows->Text(one.id);
    rows->Number(one.whiteness);
    rows->Number(fit.parameters.Whiteness(one.xyz));
    rows->Number(fit.whitenessResiduals[i]);
    rows->Number(one.tint);
    rows->Number(fit.hasTint ? fit.parameters.Tint(one.xyz) : kUnset);
    rows->Number(fit.tintResiduals[i]);
    rows->EndRow();
  }
  rows->Finish();
}

// Whiteness by id, as the parameters have it of a file.
std::map<std::string, double> WhitenessById(const WhitenessOptions& options, const GanzGriesser& parameters) {
  constexpr std::size_t kMost = 200'000;
  CurveReader reader = OpenCurves(options.withoutUv, options.input, Content::kCurvesOrColors);
  reader.RequireLight(vrxIllumD65, kObserver10);
  std::map<std::string, double> whiteness;
  CurveRow row;
  while (reader.Next(row)) {
    if (whiteness.size() == kMost) reader.Source().FailRow("more than 200000 samples");
    const bool isNew =
        whiteness.emplace(row.id, parameters.Whiteness(XyzOf(row, vrxIllumD65, kObserver10))).second;
    if (!isNew) reader.Source().FailRow("there are two samples \"" + std::string(row.id) + "\"");
  }
  return whiteness;
}

// What the brightener adds to the whiteness, and its share of it in percent.
void WriteBrightener(double whiteness, double withoutUv, RowWriter& rows) {
  const bool isKnown = !IsUnset(whiteness) && !IsUnset(withoutUv);
  rows.Number(withoutUv);
  rows.Number(isKnown ? whiteness - withoutUv : kUnset);
  rows.Number(isKnown && whiteness > 0 ? 100 * (whiteness - withoutUv) / whiteness : kUnset);
}

void WriteSamples(const WhitenessOptions& options, const GanzGriesserFit& fit, OutputStream& output) {
  CurveReader reader = OpenCurves(options.samples, options.input, Content::kCurvesOrColors);
  reader.RequireLight(vrxIllumD65, kObserver10);
  std::vector<Column> columns{{"id"}, {"whiteness", "whiteness", 2}, {"tint", "tint", 2}};
  std::map<std::string, double> withoutUv;
  const bool hasPairs = !options.withoutUv.empty();
  if (hasPairs) {
    withoutUv = WhitenessById(options, fit.parameters);
    columns.push_back({"without_uv", "without UV", 2});
    columns.push_back({"brightener", "by brightener", 2});
    columns.push_back({"brightener_percent", "share, %", 1});
  }
  const auto rows = MakeRowWriter(options.format, output, std::move(columns));
  CurveRow row;
  while (reader.Next(row)) {
    const Xyz xyz = XyzOf(row, vrxIllumD65, kObserver10);
    const double whiteness = fit.parameters.Whiteness(xyz);
    rows->Text(row.id);
    rows->Number(whiteness);
    rows->Number(fit.hasTint ? fit.parameters.Tint(xyz) : kUnset);
    if (hasPairs) {
      const auto found = withoutUv.find(std::string(row.id));
      if (found == withoutUv.end())
        reader.Source().FailRow("there is no sample \"" + std::string(row.id) + "\" in " + options.withoutUv);
      WriteBrightener(whiteness, found->second, *rows);
    }
    rows->EndRow();
  }
  rows->Finish();
  WarnAboutInput(reader);
}

// Residuals that an eye can see are told with samples, too, whose table does not show them.
void WarnOfFit(const std::vector<NamedStandard>& named, const GanzGriesserFit& fit, const std::string& file) {
  if (const std::string doubt = fit.Doubt(); !doubt.empty()) PrintMessage(file + ": warning: " + doubt);
  const auto shown = [](double residual) { return IsUnset(residual) ? "-" : FixedDecimals(residual, 2); };
  for (const std::size_t i : fit.Outlying()) {
    PrintMessage(
        file + ": warning: standard \"" + named[i].id + "\" is " + shown(fit.whitenessResiduals[i]) +
        " of whiteness and " + shown(fit.tintResiduals[i]) +
        " of tint from its certificate, more than an eye tells apart (5 and 0.5): is it soiled, faded "
        "or exchanged?");
  }
}

void RunFitWhiteness(const WhitenessOptions& options) {
  if (options.samples.empty() && !options.withoutUv.empty()) throw InputError("--without-uv needs SAMPLES");
  const std::vector<NamedStandard> named = ReadWhites(options);
  const GanzGriesserFit fit = FitGanzGriesser(std::vector<WhitenessStandard>(named.begin(), named.end()));
  if (!fit.hasWhiteness) {
    throw InputError(options.standards +
                     ": the fit needs three standards or more with whiteness, and of different saturations");
  }
  if (const std::string why = fit.Contradiction(); !why.empty())
    throw InputError(options.standards + ": " + why);
  WarnOfFit(named, fit, options.standards);
  OutputStream output;
  output.SetFormat(options.format);
  if (!options.samples.empty()) {
    WriteSamples(options, fit, output);
  } else {
    if (options.parameters || options.format == Format::kTable)
      WriteParameters(fit.parameters, options.format, output);
    if (options.format == Format::kTable) output.Append('\n');
    if (!options.parameters) WriteResiduals(named, fit, options.format, output);
  }
  output.Finish();
  if (!fit.hasTint)
    PrintMessage(options.standards + ": fewer than three standards have a tint; that of samples is left out");
}

}  // namespace

void AddFitWhiteness(Command& tool) {
  const auto options = std::make_shared<WhitenessOptions>();
  Command command = tool.AddCommand("fit-whiteness", "Fit Ganz-Griesser whiteness and tint to standards");
  command
      .AddOption(
          "STANDARDS", options->standards,
          "Curves, or colours under D65 and 10 degrees, with columns whiteness and tint of their certificate")
      .ReadsFile()
      .Required();
  command
      .AddOption("SAMPLES", options->samples, "Compute whiteness and tint of these by the fitted parameters")
      .ReadsFile();
  command
      .AddOption("--without-uv", options->withoutUv,
                 "SAMPLES as they were measured without ultraviolet light (M2), by their ids: what the "
                 "brightener adds")
      .ReadsFile()
      .Shows("FILE");
  command.AddFlag("--parameters", options->parameters,
                  "Write the parameters, not what is left at the standards");
  AddCurveInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "W = Y + P x + Q y + C and T = m x + n y + k under D65 and 10 degrees. The directions of the nominal\n"
      "parameters are kept; fitted are the factors and the constants. A large residual is a soiled or faded\n"
      "standard, or one with another certificate.\n\n"
      "Examples:\n"
      "  vrx fit-whiteness whites.csv\n"
      "  vrx fit-whiteness whites.csv paper.csv --format csv\n");
  command.SetAction([options] {
    RunFitWhiteness(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
