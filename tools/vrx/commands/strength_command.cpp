// vrx strength: how strong trials are compared with a standard.

#include <charconv>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxmath/colorant/strength.h>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/comparison.h"
#include "tools/vrx/conditions.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct StrengthOptions {
  ComparisonOptions comparison;
  std::string band = "400-700";
  std::string wavelength;
  double k1 = 0.04;
  double k2 = 0.6;
  ViewingOptions viewing;
  Format format = Format::kTable;
};

// What a run compares by: options, checked.
struct StrengthSettings {
  int32_t first = 0;
  int32_t last = 0;
  int32_t chosen = -1;  // sample that the user chose; -1 for none
  double k1 = 0.0;
  double k2 = 0.0;
  JudgeSettings viewing;  // only its illuminants and observer count
};

int32_t WavelengthAt(int32_t i) {
  return kFirstWavelength + kWavelengthStep * i;
}

// The sample at a wavelength in nm.
int32_t ParseSample(std::string_view text, const char* option) {
  int32_t nm = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), nm);
  const bool whole = end.ec == std::errc() && end.ptr == text.data() + text.size();
  const int32_t i = whole && nm > 0 ? (nm - kFirstWavelength) / kWavelengthStep : -1;
  if (i < 0 || i >= kWavelengths || WavelengthAt(i) != nm) {
    throw InputError(std::string(option) + ": \"" + std::string(text) +
                     "\" is none of 360, 370 ... 750 (nm)");
  }
  return i;
}

StrengthSettings SettingsOf(const StrengthOptions& options) {
  StrengthSettings settings;
  const std::string_view band = options.band;
  const std::size_t dash = band.find('-');
  if (dash == std::string_view::npos) throw InputError("--band: two wavelengths are expected, as 400-700");
  settings.first = ParseSample(band.substr(0, dash), "--band");
  settings.last = ParseSample(band.substr(dash + 1), "--band");
  if (settings.first > settings.last) throw InputError("--band: the shorter wavelength goes first");
  if (!options.wavelength.empty()) settings.chosen = ParseSample(options.wavelength, "--wavelength");
  constexpr double kLargestReflection = 0.999;
  for (const double k : {options.k1, options.k2}) {
    if (!(k >= 0.0 && k <= kLargestReflection)) throw InputError("--k1, --k2: numbers from 0 to 0.999");
  }
  settings.k1 = options.k1;
  settings.k2 = options.k2;
  settings.viewing.illuminants = options.viewing.Illuminants();
  settings.viewing.observer = options.viewing.Observer();
  return settings;
}

// Trials with their strengths, one row each.
class StrengthRows {
 public:
  StrengthRows(Format format, OutputStream& output, const StrengthSettings& settings)
      : settings_(settings), rows_(MakeRowWriter(format, output, Columns(settings))) {}

  void Add(std::string_view standardId, const CReflData& standard, std::string_view trialId,
           const CReflData& trial) {
    rows_->Text(standardId);
    rows_->Text(trialId);
    AddSums(standard, trial);
    bool isFirst = true;
    for (const vrxIlluminant illuminant : settings_.viewing.illuminants) {
      standard.Tristimulus(illuminant, settings_.viewing.observer, standardXyz_);
      trial.Tristimulus(illuminant, settings_.viewing.observer, trialXyz_);
      rows_->Number(TristimulusStrength(standardXyz_, trialXyz_, settings_.k1, settings_.k2));
      if (isFirst) AddSingleWavelengths(standard, trial);
      isFirst = false;
      AddFurther();
    }
    rows_->EndRow();
  }
  void Finish() { rows_->Finish(); }

 private:
  static std::vector<Column> Columns(const StrengthSettings& settings) {
    constexpr std::size_t kSumColumns = 4;
    std::vector<Column> columns{{"standard"}, {"trial"}, {"ks", "K/S"}, {"absorbance"}};
    for (const vrxIlluminant illuminant : settings.viewing.illuminants) {
      const bool isFirst = columns.size() == kSumColumns;
      const std::string suffix = isFirst ? "" : "_" + CodeOf(illuminant);
      columns.push_back({"tristimulus" + suffix});
      if (isFirst) AddSingleWavelengthColumns(settings, columns);
      columns.push_back({"pseudo_tristimulus" + suffix, "pseudo" + suffix});
      columns.push_back({"luminous" + suffix});
      for (const char* component : {"X", "Y", "Z"}) columns.push_back({component + suffix});
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

  void AddSums(const CReflData& standard, const CReflData& trial) {
    for (const bool useAbsorbance : {false, true}) {
      rows_->Number(StrengthPercent(standard, trial, useAbsorbance, settings_.first, settings_.last,
                                    settings_.k1, settings_.k2));
    }
  }

  void AddSingleWavelengths(const CReflData& standard, const CReflData& trial) {
    const int32_t peak =
        MaximumAbsorption(standard, settings_.first, settings_.last, settings_.k1, settings_.k2);
    rows_->Number(ChromaticStrength(standard, trial, peak, settings_.k1, settings_.k2));
    rows_->Integer(WavelengthAt(peak));
    if (settings_.chosen >= 0) {
      rows_->Number(ChromaticStrength(standard, trial, settings_.chosen, settings_.k1, settings_.k2));
    }
  }

  void AddFurther() {
    rows_->Number(PseudoTristimulusStrength(standardXyz_, trialXyz_, settings_.k1, settings_.k2));
    rows_->Number(LuminousStrength(standardXyz_, trialXyz_));
    for (int32_t i = 0; i < 3; ++i) rows_->Number(ComponentStrength(standardXyz_, trialXyz_, i));
  }

  const StrengthSettings& settings_;
  std::unique_ptr<RowWriter> rows_;
  CTrisValues standardXyz_, trialXyz_;
};

void RunStrength(const StrengthOptions& options) {
  const StrengthSettings settings = SettingsOf(options);
  Comparison comparison(options.comparison, settings.viewing);
  OutputStream output;
  StrengthRows rows(options.format, output, settings);
  comparison.ForEachTrial([&](const CurveRow& trial, const Judge& judge) {
    rows.Add(judge.StandardId(), judge.StandardCurve(), trial.id, trial.curve);
  });
  rows.Finish();
  output.Finish();
  comparison.WarnAboutInput();
}

void AddOptions(CLI::App& command, StrengthOptions& options) {
  AddComparisonOptions(command, options.comparison);
  command.add_option("--band", options.band, "Wavelengths that are summed, in nm")
      ->option_text("FROM-TO [400-700]");
  command.add_option("--wavelength", options.wavelength, "Add the chromatic strength at this wavelength")
      ->option_text("NM");
  command.add_option("--k1", options.k1, "Surface reflection of incident light")->option_text("K1 [0.04]");
  command.add_option("--k2", options.k2, "Internal surface reflection")->option_text("K2 [0.6]");
  AddViewingOptions(command, options.viewing, "D65");
  AddFormatOption(command, options.format);
}

}  // namespace

void AddStrength(CLI::App& app, int& status) {
  const auto options = std::make_shared<StrengthOptions>();
  CLI::App* command = app.add_subcommand("strength", "Strength of trials against a standard, in percent");
  AddOptions(*command, *options);
  command->footer(
      "Strengths, 100 for the standard itself:\n"
      "  ks, absorbance       sums over the band (apparent strength)\n"
      "  chromatic            K/S where the standard absorbs most in the band, and at --wavelength\n"
      "  tristimulus          X, Y and Z, corrected for the surface\n"
      "  pseudo_tristimulus   K/S of amber, green and blue reflectances\n"
      "  luminous             K/S of Y, for k1 = 0.04 and k2 = 0.6\n"
      "  X, Y, Z              each as it is\n"
      "Further illuminants add their columns, with their codes.\n\n"
      "Examples:\n"
      "  vrx strength standard.csv batch.csv\n"
      "  vrx strength master.csv lots.csv --pairs --band 400-560 --format csv\n"
      "  vrx strength std.csv batch.csv --standard-id blue --wavelength 620 --illuminants D65,A\n");
  command->callback([options, &status] {
    RunStrength(*options);
    status = kExitPass;
  });
}

}  // namespace vrx::tool
