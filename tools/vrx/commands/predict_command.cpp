// vrx predict: the curves and colours that formulas give.

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/text/decimal.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/formula/prediction.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/surface_options.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/output.h"

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

// Predictions on their way out, one formula at a time.
class PredictionOutput {
 public:
  virtual ~PredictionOutput() = default;
  virtual void Add(const std::string& name, const CReflData& curve) = 0;
  virtual void Finish() = 0;
};

// For people: a block per formula, ten samples in a line, then the colours.
class PredictionBlocks final : public PredictionOutput {
 public:
  PredictionBlocks(const ViewingOptions& viewing, OutputStream& output)
      : illuminants_(viewing.Illuminants()), observer_(viewing.Observer()), output_(output) {}

  void Add(const std::string& name, const CReflData& curve) override {
    output_.Append(Shortened(name, kLongestCell) + "\n");
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
    output_.Append('\n');
  }
  void Finish() override {}

 private:
  void AppendRight(const std::string& text) {
    constexpr std::size_t kWidth = 7;  // ten of them fit a terminal of 80 columns
    output_.AppendSpaces(text.size() < kWidth ? kWidth - text.size() : 1);
    output_.Append(text);
  }
  void AppendCell(double value) { AppendRight(FixedDecimals(value, 2)); }

  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
  OutputStream& output_;
};

// For programs: a row or object per formula.
class PredictionRows final : public PredictionOutput {
 public:
  PredictionRows(const PredictOptions& options, OutputStream& output)
      : illuminants_(options.viewing.Illuminants()),
        observer_(options.viewing.Observer()),
        rows_(MakeRowWriter(options.format, output, Columns())) {}

  void Add(const std::string& name, const CReflData& curve) override {
    rows_->Text(name);
    for (const double percent : curve) rows_->Number(percent);
    for (const vrxIlluminant illuminant : illuminants_) {
      for (const double coordinate : ColorOf(curve, illuminant, observer_)) rows_->Number(coordinate);
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
    return columns;
  }

  std::vector<vrxIlluminant> illuminants_;
  int32_t observer_;
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
    results = std::make_unique<PredictionBlocks>(options.viewing, output);
  } else {
    results = std::make_unique<PredictionRows>(options, output);
  }
  for (const NamedFormula& formula : formulas) {
    WarnAboutRules(formula, system.rules);
    const CReflData curve = PredictReflectance(formula.formula, system.data, mode);
    if (IsUnset(curve)) {
      throw InputError(options.formulas + ": formula \"" + formula.name + "\" cannot be predicted: " +
                       "its components do not absorb and scatter under the model \"" +
                       OpticalModelName(system.data.opticalModel).ToUtf8() + "\"");
    }
    results->Add(formula.name, curve);
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
  AddViewingOptions(command, options->viewing, "D65,A,CWF");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Curves are in percent at 360 ... 750 nm. They include the light that the surface reflects if the "
      "curves\n"
      "that the colour system was calibrated on did; if the system does not say, they do unless --specular "
      "says\n"
      "otherwise.\n\n"
      "Examples:\n"
      "  vrx predict examples/acrylic_paints.json examples/acrylic_formulas.json\n"
      "  vrx predict system.json formulas.json --illuminants D50 --observer 2 --format csv\n");
  command.SetAction([options] {
    RunPredict(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
