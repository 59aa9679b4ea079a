#include <vrxio/systems/color_system_file.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxmath/foundation/numbers.h>

#include <vrxio/json/json_field.h>

namespace vrx::io {
namespace {

constexpr int64_t kLargestId = std::numeric_limits<int32_t>::max();
constexpr double kLargestAmount = 1e100;  // sums of amounts stay far from infinity

constexpr std::array<std::string_view, 9> kModelNames = {
    "coatings",    "plastics",  "transparents", "textiles",       "filter",
    "trade sales", "metallics", "multi-flux",   "continuous dye",
};

constexpr std::array<std::string_view, 5> kKindNames = {"colorant", "resin", "additive", "calibration white",
                                                        "calibration black"};
constexpr std::array<int32_t, 5> kKinds = {kKindColorant, kKindResin, kKindAdditive, kKindCalibrationWhite,
                                           kKindCalibrationBlack};

constexpr std::array<std::string_view, 3> kSpecularNames = {"included", "excluded", "none"};

bool IsOneConstant(int32_t model) {
  return model == kModelTransparents || model == kModelTextiles || model == kModelContinuousDye;
}

void ReadCurve(const JsonField& field, CKSData& curve) {
  const JsonField::List samples = field.Elements();
  if (samples.size() != kWavelengths) {
    field.Fail(std::to_string(samples.size()) + " numbers instead of " + std::to_string(kWavelengths));
  }
  int32_t i = 0;
  for (const JsonField sample : samples) curve[i++] = sample.Number(0.0, kLargestAmount);
}

CColorantLevel ReadLevel(const JsonField& field, int32_t model) {
  field.ExpectMembers({"concentration", "K", "S"});
  CColorantLevel level(1);
  level.concentration = field["concentration"].Number(0.0, 1.0);
  ReadCurve(field["K"], level.values[0].absorption);
  if (IsOneConstant(model) && !field.Find("S")) {
    level.values[0].scattering.Fill(0.0);
  } else {
    ReadCurve(field["S"], level.values[0].scattering);
  }
  return level;
}

void ReadLevels(const JsonField& field, int32_t model, CComponent& component) {
  constexpr std::size_t kMostLevels = 1000;
  const JsonField::List elements = field.Elements();
  if (elements.size() > kMostLevels) field.Fail("more than 1000 levels");
  for (const JsonField element : elements) {
    const CColorantLevel level = ReadLevel(element, model);
    const int32_t count = component.GetLevels().GetSize();
    if (count > 0 && !(level.concentration > component.GetLevel(count - 1).concentration)) {
      element["concentration"].Fail("levels must ascend");
    }
    component.AppendLevel(level);
  }
}

constexpr double kPercent = 100.0;

// Shares in percent, differences as they are; what is missing stays unset.
CComponentCalibration ReadCalibrated(const JsonField& field, uint32_t id) {
  field.ExpectMembers({"least", "most", "drawdowns", "leave_one_out", "leave_one_out_90"});
  CComponentCalibration calibrated;
  calibrated.componentId = id;
  calibrated.leastShare = field["least"].Number(0.0, kLargestAmount) / kPercent;
  calibrated.mostShare = field["most"].Number(0.0, kLargestAmount) / kPercent;
  if (calibrated.leastShare > calibrated.mostShare) field["most"].Fail("the most is less than the least");
  calibrated.drawdowns = static_cast<int32_t>(field["drawdowns"].Integer(1, kLargestId));
  if (const auto median = field.Find("leave_one_out")) {
    calibrated.leaveOneOut = median->Number(0.0, kLargestAmount);
  }
  if (const auto most = field.Find("leave_one_out_90")) {
    calibrated.leaveOneOut90 = most->Number(0.0, kLargestAmount);
  }
  return calibrated;
}

CComponent ReadComponent(const JsonField& field, int32_t model) {
  field.ExpectMembers({"id", "name", "kind", "calibrated", "levels"});
  CComponent component;
  component.SetId(static_cast<uint32_t>(field["id"].Integer(0, kLargestId)));
  component.SetName(CString::FromUtf8(field["name"].Text()));
  if (const auto kind = field.Find("kind")) component.SetKind(kKinds[kind->OneOf(kKindNames)]);
  if (const auto levels = field.Find("levels")) ReadLevels(*levels, model, component);
  return component;
}

void ReadComponents(const JsonField& field, ColorSystem& system) {
  constexpr std::size_t kMostComponents = 10'000;
  const JsonField::List elements = field.Elements();
  if (elements.size() > kMostComponents) field.Fail("more than 10000 components");
  std::unordered_set<uint32_t> ids;
  for (const JsonField element : elements) {
    const CComponent component = ReadComponent(element, system.data.opticalModel);
    if (!ids.insert(component.GetId()).second) element["id"].Fail("this id is already in use");
    if (const auto calibrated = element.Find("calibrated")) {
      system.calibrated.Add(ReadCalibrated(*calibrated, component.GetId()));
    }
    if (component.GetKind() == kKindResin) {
      system.data.resins.Add(CResin(component));
    } else {
      system.data.colorants.Add(CColorant(component));
    }
    system.data.componentsA.Add(
        {component.GetId(), component.GetKind(), system.data.componentsA.GetSize(), true});
  }
}

using ComponentIndex = std::unordered_map<uint32_t, const CComponent*>;

ComponentIndex IndexOf(const CColorantSystemData& data) {
  ComponentIndex index;
  for (const CColorant& colorant : data.colorants) index[colorant.GetId()] = &colorant;
  for (const CResin& resin : data.resins) index[resin.GetId()] = &resin;
  return index;
}

// The id of a component that the system must have.
uint32_t ReadReference(const JsonField& field, const ComponentIndex& index) {
  const auto id = static_cast<uint32_t>(field.Integer(0, kLargestId));
  if (!index.contains(id)) field.Fail("the colour system has no component " + std::to_string(id));
  return id;
}

void ReadRules(const JsonField& field, ColorSystem& system) {
  constexpr std::size_t kMost = 65'535;  // what their archive form can count
  const auto elementsOf = [](const JsonField& list, const char* objection) {
    if (list.Elements().size() > kMost) list.Fail(objection);
    return list.Elements();
  };
  const ComponentIndex index = IndexOf(system.data);
  for (const JsonField row : elementsOf(field, "more than 65535 rules")) {
    CDWordArray1 ids;
    for (const JsonField id : elementsOf(row, "more than 65535 components"))
      ids.Add(ReadReference(id, index));
    system.rules.AppendRow(ids);
  }
}

CDbFormula ReadLines(const JsonField& field, const ComponentIndex& index) {
  constexpr std::size_t kMostLines = 1000;
  const JsonField::List lines = field.Elements();
  if (lines.size() > kMostLines) field.Fail("more than 1000 lines");
  CDbFormula formula;
  double total = 0.0;
  for (const JsonField element : lines) {
    element.ExpectMembers({"component", "amount"});
    CDbFormulaElement line;
    line.componentId = static_cast<int32_t>(ReadReference(element["component"], index));
    line.amount = element["amount"].Number(0.0, kLargestAmount);
    total += line.amount;
    formula.Add(line);
  }
  if (total == 0.0) field.Fail("there is nothing in it");
  return formula;
}

std::string CurveText(const CKSData& curve) {
  std::string text;
  for (const double sample : curve) {
    text += text.empty() ? "[" : ", ";
    text += ShortestText(sample);
  }
  return text + "]";
}

std::string LevelText(const CColorantLevel& level) {
  const CColorantValues& curves = level.values[0];
  return "{\"concentration\": " + ShortestText(level.concentration) +
         ",\n        \"K\": " + CurveText(curves.absorption) +
         ",\n        \"S\": " + CurveText(curves.scattering) + "}";
}

std::string CalibratedText(const CComponentCalibration& calibrated) {
  std::string text = "{\"least\": " + ShortestText(kPercent * calibrated.leastShare) +
                     ", \"most\": " + ShortestText(kPercent * calibrated.mostShare) +
                     ", \"drawdowns\": " + std::to_string(calibrated.drawdowns);
  if (!IsUnset(calibrated.leaveOneOut))
    text += ", \"leave_one_out\": " + ShortestText(calibrated.leaveOneOut);
  if (!IsUnset(calibrated.leaveOneOut90)) {
    text += ", \"leave_one_out_90\": " + ShortestText(calibrated.leaveOneOut90);
  }
  return text + "}";
}

std::string ComponentText(const CComponent& component, const CComponentCalibrationArray& calibrations) {
  std::string text = "    {\"id\": " + std::to_string(component.GetId()) +
                     ", \"name\": " + JsonString(component.GetName().ToUtf8());
  const auto kind = std::find(kKinds.begin(), kKinds.end(), component.GetKind());
  if (kind != kKinds.begin() && kind != kKinds.end()) {
    text += ", \"kind\": " + JsonString(kKindNames[static_cast<std::size_t>(kind - kKinds.begin())]);
  }
  for (const CComponentCalibration& calibrated : calibrations) {
    if (calibrated.componentId != component.GetId()) continue;
    text += ",\n      \"calibrated\": " + CalibratedText(calibrated);
  }
  std::string levels;
  for (const CColorantLevel& level : component.GetLevels()) {
    levels += (levels.empty() ? "" : ",\n        ") + LevelText(level);
  }
  if (!levels.empty()) text += ",\n      \"levels\": [" + levels + "]";
  return text + "}";
}

std::string RulesText(const CColorantRulesData& rules) {
  std::string text;
  for (const CDWordArray1& row : rules.GetRules()) {
    std::string ids;
    for (const uint32_t id : row) ids += (ids.empty() ? "" : ", ") + std::to_string(id);
    text += (text.empty() ? "" : ", ") + ("[" + ids + "]");
  }
  return text;
}

}  // namespace

std::string_view SpecularName(SaundersonMode mode) {
  return kSpecularNames.at(static_cast<std::size_t>(mode));
}

SaundersonMode SpecularOf(const ColorSystem& system, std::optional<SaundersonMode> given,
                          std::string& complaint) {
  complaint.clear();
  if (given && system.specular && *given != *system.specular) {
    complaint = "the system was calibrated on curves with the surface " +
                std::string(SpecularName(*system.specular)) + ", not " + std::string(SpecularName(*given));
  }
  return system.specular ? *system.specular : given.value_or(SaundersonMode::kIncluded);
}

ColorSystem ReadColorSystem(const std::string& path) {
  const JsonDocument document(path);
  const JsonField root(document);
  root.ExpectMembers(
      {"name", "model", "k1", "k2", "specular", "geometry", "calibrated_on", "components", "rules"});
  ColorSystem system;
  system.data.name = CString::FromUtf8(root["name"].Text());
  if (const auto model = root.Find("model")) {
    system.data.opticalModel = static_cast<int32_t>(model->OneOf(kModelNames));
  }
  constexpr double kLargestReflection = 0.999;
  if (const auto k1 = root.Find("k1")) system.data.k1 = k1->Number(0.0, kLargestReflection);
  if (const auto k2 = root.Find("k2")) system.data.k2 = k2->Number(0.0, kLargestReflection);
  if (const auto specular = root.Find("specular")) {
    system.specular = static_cast<SaundersonMode>(specular->OneOf(kSpecularNames));
  }
  if (const auto geometry = root.Find("geometry")) {
    system.geometry = ParseGeometry(geometry->Text());
    if (system.geometry < 0) geometry->Fail("this is no geometry");
  }
  if (const auto on = root.Find("calibrated_on")) system.calibratedOn = on->Text();
  ReadComponents(root["components"], system);
  if (const auto rules = root.Find("rules")) ReadRules(*rules, system);
  return system;
}

std::vector<const CComponent*> ComponentsInOrder(const ColorSystem& system) {
  const ComponentIndex index = IndexOf(system.data);
  std::vector<const CComponent*> components;
  for (const CColorantSystemComponent& member : system.data.componentsA) {
    components.push_back(index.at(member.componentId));
  }
  return components;
}

std::vector<NamedFormula> ReadFormulas(const std::string& path, const ColorSystem& system) {
  const JsonDocument document(path);
  const JsonField root(document);
  root.ExpectMembers({"formulas"});
  const ComponentIndex index = IndexOf(system.data);
  std::vector<NamedFormula> formulas;
  for (const JsonField element : root["formulas"].Elements()) {
    element.ExpectMembers({"name", "lines"});
    formulas.push_back({element["name"].Text(), ReadLines(element["lines"], index)});
  }
  return formulas;
}

std::string ColorSystemText(const ColorSystem& system) {
  const auto model = static_cast<std::size_t>(system.data.opticalModel);
  std::string text = "{\n  \"name\": " + JsonString(system.data.name.ToUtf8()) +
                     ",\n  \"model\": " + JsonString(kModelNames.at(model)) +
                     ",\n  \"k1\": " + ShortestText(system.data.k1) +
                     ",\n  \"k2\": " + ShortestText(system.data.k2);
  if (system.specular) text += ",\n  \"specular\": " + JsonString(SpecularName(*system.specular));
  if (system.geometry >= 0) text += ",\n  \"geometry\": " + JsonString(GeometryName(system.geometry));
  if (!system.calibratedOn.empty()) text += ",\n  \"calibrated_on\": " + JsonString(system.calibratedOn);
  text += ",\n  \"components\": [\n";
  bool isFirst = true;
  for (const CComponent* component : ComponentsInOrder(system)) {
    text += (isFirst ? "" : ",\n") + ComponentText(*component, system.calibrated);
    isFirst = false;
  }
  text += "\n  ]";
  const std::string rules = RulesText(system.rules);
  if (!rules.empty()) text += ",\n  \"rules\": [" + rules + "]";
  return text + "\n}\n";
}

std::string FormulasText(const std::vector<NamedFormula>& formulas) {
  std::string text = "{\"formulas\": [";
  bool isFirst = true;
  for (const NamedFormula& formula : formulas) {
    text += (isFirst ? "\n" : ",\n") + ("  {\"name\": " + JsonString(formula.name)) + ", \"lines\": [";
    isFirst = false;
    std::string lines;
    for (const CDbFormulaElement& line : formula.formula) {
      lines += (lines.empty() ? "" : ", ") + ("{\"component\": " + std::to_string(line.componentId)) +
               ", \"amount\": " + ShortestText(line.amount) + "}";
    }
    text += lines + "]}";
  }
  return text + "\n]}\n";
}

}  // namespace vrx::io
