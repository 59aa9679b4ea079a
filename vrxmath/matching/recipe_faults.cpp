#include <vrxmath/matching/recipe_faults.h>

#include <algorithm>
#include <array>

namespace vrx {
namespace {

struct FaultText {
  RecipeFault fault;
  /// {system}, {limits}, {target}, {batch}, {formula}, {cheapest}, {costs}, {backings}, {surface}, {component}, {subsets} and {most} stand
  /// for what they say; {-name} for a setting, {-name=value} for a setting with its value.
  std::string_view text;
};

constexpr std::array<FaultText, 23> kTexts = {{
    {RecipeFault::kNoMixingLaw, "{system}: \"model\": colours of this optical model cannot be matched"},
    {RecipeFault::kNoSubstrate,
     "{system}: \"components\": there is no substrate, neither a calibration "
     "white nor a resin with levels"},
    {RecipeFault::kTargetNotMeasured, "{target} is not measured throughout"},
    {RecipeFault::kTargetBelowSurface, "{target} is darker than the surface alone; {surface}"},
    {RecipeFault::kNeedsCurve, "{target}: this {-objective} needs a curve, not L, a, b"},
    {RecipeFault::kUnknownComponent, "{system}: {component} cannot be in a recipe: it has no levels"},
    {RecipeFault::kContradiction, "{-require}, {-exclude}: {component} is both required and excluded"},
    {RecipeFault::kTooFewAllowed,
     "{system}: no subset is left: {-exclude} leaves fewer components with "
     "levels than {-require} asks for, "
     "or that is more than {-max-colorants}"},
    {RecipeFault::kLimits,
     "{limits}: {component}: its least share is above "
     "its largest, {-min-amount} included"},
    {RecipeFault::kLimitsTogether,
     "{limits}: no recipe makes up 100 percent "
     "between its least and largest shares"},
    {RecipeFault::kEverythingForbidden, "{system}: \"rules\" forbid every subset"},
    {RecipeFault::kTooManySubsets,
     "{-max-subsets}: there are {subsets} subsets, more than {most}: exclude "
     "components, lower "
     "{-max-colorants}, or raise {-max-subsets}"},
    {RecipeFault::kNoClear,
     "{-load}: {system} has no clear component, a resin without absorption and "
     "scattering, that would make up "
     "the rest"},
    {RecipeFault::kLoad, "{-load}: no recipe has such a load between the least and largest shares"},
    {RecipeFault::kTargetChangesWithAngle,
     "{target} changes with the geometry as effect pigments do; only solid "
     "colours can be matched, whose colour "
     "is the same at every angle"},
    {RecipeFault::kSettings, "settings that cannot be used"},
    {RecipeFault::kStopped, "the search was stopped"},
    {RecipeFault::kBatchFormula, "{formula}: the formula of the batch is empty or cannot be predicted"},
    {RecipeFault::kBatchNotMeasured, "{batch} is not measured throughout"},
    {RecipeFault::kBatchBelowSurface, "{batch} is darker than the surface alone; {surface}"},
    {RecipeFault::kBackings, "{backings}: the black backing is not darker than the white one"},
    {RecipeFault::kNoCosts, "{cheapest}: no component has a cost; give costs in {costs}"},
    {RecipeFault::kNone, ""},
}};

// What can be done about a curve that was measured without the surface that it is taken for.
std::string SurfaceText(const RecipeNames& names) {
  if (names.isSurfaceOfSystem) {
    return "the colour system is of curves with the specular component, which this one lacks: measure it "
           "with that, or calibrate the "
           "system on curves without it";
  }
  std::string text = "use ";
  return text.append(names.setting("specular", "excluded"))
      .append(" for a curve without the specular component, ")
      .append(names.setting("specular", "none"))
      .append(" for an uncorrected one");
}

std::string ComponentText(const CColorantSystemData& system, uint32_t id) {
  std::string text = "component " + std::to_string(id);
  const auto addName = [&](const auto& components) {
    for (const CComponent& component : components) {
      if (component.GetId() == id) text += " \"" + component.GetName().ToUtf8() + "\"";
    }
  };
  addName(system.colorants);
  addName(system.resins);
  return text;
}

}  // namespace

const char* LoadBasisText(LoadBasis basis) {
  switch (basis) {
    case LoadBasis::kGiven:
      return "given";
    case LoadBasis::kOpacity:
      return "opacity";
    case LoadBasis::kRange:
      return "calibrated range";
    case LoadBasis::kUndetermined:
      return "undetermined";
    default:
      return "target";
  }
}

std::string RecipeFaultText(const RecipeOutcome& outcome, const CColorantSystemData& system,
                            const CRecipeSettings& settings, const RecipeNames& names) {
  const auto meaningOf = [&](std::string_view key) -> std::string {
    if (key.starts_with('-')) {
      const std::size_t end = std::min(key.find('='), key.size());
      return names.setting(key.substr(1, end - 1), key.substr(std::min(end + 1, key.size())));
    }
    if (key == "system") return names.system;
    if (key == "limits" && !names.limits.empty()) return names.limits;
    if (key == "limits") return names.setting(settings.isWithinRange ? "within-range" : "min-amount", "");
    if (key == "target") return names.target;
    if (key == "batch") return names.batch;
    if (key == "formula") return names.formula;
    if (key == "cheapest") return names.cheapest;
    if (key == "costs") return names.costs;
    if (key == "backings") return names.backings;
    if (key == "surface") return SurfaceText(names);
    if (key == "component") return ComponentText(system, outcome.component);
    return std::to_string(key == "subsets" ? outcome.subsets : settings.mostSubsets);
  };
  const auto row = std::find_if(kTexts.begin(), kTexts.end(),
                                [&](const FaultText& text) { return text.fault == outcome.fault; });
  std::string_view rest = row->text;
  std::string text;
  while (!rest.empty()) {
    const std::size_t open = std::min(rest.find('{'), rest.size());
    text += rest.substr(0, open);
    if (open == rest.size()) break;
    const std::size_t close = rest.find('}', open);
    text += meaningOf(rest.substr(open + 1, close - open - 1));
    rest.remove_prefix(close + 1);
  }
  return text;
}

}  // namespace vrx
