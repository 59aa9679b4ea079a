// vrx predict: the curves and colours that formulas give.

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/prediction_error.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/output.h"
#include "tools/vrx/recipes/recipe_options.h"

namespace vrx::tool {
namespace {

struct PredictOptions {
  std::string system;
  std::string formulas;
  GivenSpecular specular = GivenSpecular::kNotGiven;
  ViewingOptions viewing;
  Format format = Format::kTable;
};

constexpr std::array<const char*, 8> kCoordinates = {"X", "Y", "Z", "L", "a", "b", "C", "h"};

// The coordinates of a curve under one illuminant, in the order of kCoordinates.
std::array<double, 8> ColorOf(const CReflData& curve, vrxIlluminant illuminant, int32_t observer) {
  CTrisValues xyz;
  CLabValues lab;
  curve.Tristimulus(illuminant, observer, xyz);
  XyzToLab(illuminant, observer, xyz, lab);
  std::array<double, 8> color{};
  std::ranges::copy(lab, std::ranges::copy(xyz, color.begin()).out);
  return color;
}

std::string ConditionsOf(vrxIlluminant illuminant, int32_t observer) {
  std::string text = ShownIlluminant(illuminant);
  text += '/';
  text += std::to_string(DegreesOf(observer));
  return text;
}

// What a formula gives, and how far that may be off; nothing of the latter where the system does not know how it was
// calibrated.
struct Prediction {
  std::string name;
  CReflData curve;
  std::optional<CPredictionError> error;
};

// Predictions on their way out, one formula at a time.
class PredictionOutput {
 public:
  virtual ~PredictionOutput() = default;
  virtual void Add(const Prediction& prediction) = 0;
  virtual void Finish() = 0;
};

// For people: a block per formula, ten samples in a line, then the colours, then the error.
class PredictionBlocks final : public PredictionOutput {
 public:
  PredictionBlocks(const ViewingOptions& viewing, const ColorSystem& system, OutputStream& output)
      : illuminants_(viewing.Illuminants()),
        observer_(viewing.Observer()),
        system_(system),
        output_(output) {}

  void Add(const Prediction& prediction) override {
    const CReflData& curve = prediction.curve;
    output_.Append(Shortened(prediction.name, kLongestCell) + "\n");
    constexpr int32_t kPerLine = 10;
    for (int32_t first = 0; first < kWavelengths; first += kPerLine) {
      output_.Append("  " + std::to_string(WavelengthAt(first)) + " nm ");
      for (int32_t i = first; i < first + kPerLine; ++i) AppendCell(curve[i]);
      output_.Append('\n');
    }
    output_.Append("          ");
    for (const char* coordinate : kCoordinates) AppendRight(coordinate);
    output_.Append('\n');
    for (const vrxIlluminant illuminant : illuminants_) {
      const std::string conditions = ConditionsOf(illuminant, observer_);
      output_.Append("  " + conditions);
      output_.AppendSpaces(conditions.size() < 8 ? 8 - conditions.size() : 0);
      for (const double coordinate : ColorOf(curve, illuminant, observer_)) AppendCell(coordinate);
      output_.Append('\n');
    }
    if (prediction.error) AddError(*prediction.error);
    output_.Append('\n');
  }
  void Finish() override {}

 private:
  void AddError(const CPredictionError& error) {
    const bool isKnown = !IsUnset(error.nineOfTen);
    output_.Append("  expected error: ");
    output_.Append(isKnown ? "nine of ten such predictions are at most " + FixedDecimals(error.nineOfTen, 2) +
                                 " off (CIEDE2000)\n"
                           : "not known\n");
    if (!error.outside.IsEmpty()) {
      output_.Append("  outside of the calibrated range: " + NamedComponentsText(error.outside, system_) +
                     "\n");
    }
  }
  void AppendRight(const std::string& text) {
    constexpr std::size_t kWidth = 7;  // ten of them fit a terminal of 80 columns
    output_.AppendSpaces(text.size() < kWidth ? kWidth - text.size() : 1);
    output_.Append(text);
  }
  void AppendCell(double value) { AppendRight(FixedDecimals(value, 2)); }

  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  const ColorSystem& system_;
  OutputStream& output_;
};

// For programs: a row or object per formula.
class PredictionRows final : public PredictionOutput {
 public:
  PredictionRows(const PredictOptions& options, const ColorSystem& system, OutputStream& output)
      : illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        hasErrors_(!system.calibrated.IsEmpty()),
        rows_(MakeRowWriter(options.format, output, Columns())) {}

  void Add(const Prediction& prediction) override {
    rows_->Text(prediction.name);
    for (const double percent : prediction.curve) rows_->Number(percent);
    for (const vrxIlluminant illuminant : illuminants_) {
      for (const double coordinate : ColorOf(prediction.curve, illuminant, observer_))
        rows_->Number(coordinate);
    }
    if (prediction.error) {
      rows_->Number(prediction.error->nineOfTen);
      rows_->Text(ComponentsText(prediction.error->outside));
    }
    rows_->EndRow();
  }
  void Finish() override { rows_->Finish(); }

 private:
  std::vector<Column> Columns() const {
    std::vector<Column> columns{{"id"}};
    for (int32_t i = 0; i < kWavelengths; ++i) columns.push_back({std::to_string(WavelengthAt(i))});
    for (const vrxIlluminant illuminant : illuminants_) {
      for (const char* coordinate : kCoordinates) {
        columns.push_back({ConditionsOf(illuminant, observer_) + " " + coordinate});
      }
    }
    if (hasErrors_) columns.insert(columns.end(), {{"expected"}, {"outside"}});
    return columns;
  }

  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  bool hasErrors_;
  std::unique_ptr<RowWriter> rows_;
};

void WarnAboutRules(const NamedFormula& formula, const CColorantRulesData& rules) {
  CDWordArray1 ids;
  CDoubleArray1 amounts;
  formula.formula.GetLines(ids, amounts);
  if (!rules.IsAllowed(ids)) {
    PrintMessage("formula \"" + formula.name + "\" has colorants that must not be used together");
  }
}

void RunPredict(const PredictOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  const SaundersonMode mode = SpecularOf(options.specular, system, options.system);
  const std::vector<NamedFormula> formulas = ReadFormulas(options.formulas, system);
  OutputStream output;
  std::unique_ptr<PredictionOutput> results;
  if (options.format == Format::kTable) {
    results = std::make_unique<PredictionBlocks>(options.viewing, system, output);
  } else {
    results = std::make_unique<PredictionRows>(options, system, output);
  }
  for (const NamedFormula& formula : formulas) {
    WarnAboutRules(formula, system.rules);
    const CReflData curve = PredictReflectance(formula.formula, system.data, mode);
    if (IsUnset(curve)) {
      throw InputError(options.formulas + ": formula \"" + formula.name + "\" cannot be predicted: " +
                       "its components do not absorb and scatter under the model \"" +
                       OpticalModelName(system.data.opticalModel).ToUtf8() + "\"");
    }
    Prediction prediction{formula.name, curve, {}};
    if (!system.calibrated.IsEmpty())
      prediction.error = PredictionError(formula.formula, system.data, system.calibrated);
    results->Add(prediction);
  }
  results->Finish();
  output.Finish();
}

}  // namespace

void AddPredict(Command& tool) {
  const auto options = std::make_shared<PredictOptions>();
  Command command = tool.AddCommand("predict", "Predict the curves and colours of formulas");
  command.AddOption("SYSTEM", options->system, "JSON file of a colour system").ReadsFile().Required();
  command.AddOption("FORMULAS", options->formulas, "JSON file of formulas").ReadsFile().Required();
  AddSpecularOption(command, options->specular);
  AddViewingOptions(command, options->viewing, UsualIlluminants());
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Curves are those of opaque films, in percent at 360 ... 750 nm. They include the light that the\n"
      "surface reflects if the curves that the colour system was calibrated on did; if the system does not\n"
      "say, they do unless --specular says otherwise. If the system knows how it was calibrated, expected "
      "is\n"
      "the error that nine out of ten predictions do not exceed, and outside names the components whose "
      "share\n"
      "is outside the range in which they were calibrated.\n\n"
      "Examples:\n"
      "  vrx predict examples/acrylic_paints.json examples/acrylic_formulas.json\n"
      "  vrx predict system.json formulas.json --illuminants D50 --observer 2 --format csv\n");
  command.SetAction([options] {
    RunPredict(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
