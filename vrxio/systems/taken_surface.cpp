#include <vrxio/systems/taken_surface.h>

namespace vrx::io {
namespace {

const char* WordOf(Specular specular) {
  return specular == Specular::kIncluded ? "included" : "excluded";
}

// What is taken: the geometry of the system's own curves knows it better than the way in which their surface was corrected.
Specular SpecularOf(const TakenSpecular& taken) {
  const Specular own = SpecularOfGeometry(taken.geometry);
  if (own != Specular::kUnknown) return own;
  return taken.mode == SaundersonMode::kIncluded ? Specular::kIncluded : Specular::kExcluded;
}

// What is there instead, and what can be done. `beside`: the curve lies beside the gloss by its geometry.
std::string TakenText(const TakenSpecular& taken, bool beside, const SurfaceNames& names) {
  const std::string included = names.setting("included"), excluded = names.setting("excluded");
  const Specular other = SpecularOf(taken);
  if (taken.isOfSystem) {
    std::string text = "the colour system is of curves with it ";
    text.append(WordOf(other));
    if (IsBesideGloss(taken.geometry)) text.append(", at ").append(GeometryName(taken.geometry));
    if (!beside) return text;
    return text.append("; ").append(included).append(
        " takes the curve all the same, as is right if those were measured so, too, or the surface is matt");
  }
  std::string text = names.setting("");
  text.append(" is ").append(WordOf(other)).append("; use ");
  if (!beside) return text.append(other == Specular::kIncluded ? excluded : included);
  return text.append(excluded).append(", or ").append(included).append(" for a matt surface");
}

}  // namespace

TakenSpecular TakenBy(const ColorSystem& system, std::optional<SaundersonMode> given) {
  const bool isOpen = !system.specular && !given && system.data.k1 == 0.0;
  std::string complaint;
  return {isOpen ? SaundersonMode::kNone : SpecularOf(system, given, complaint), system.specular.has_value(),
          given.has_value(), system.specular ? system.geometry : kNoGeometry};
}

TakenSpecular TakenAlone(std::optional<SaundersonMode> given) {
  return {given.value_or(SaundersonMode::kIncluded), false, given.has_value(), kNoGeometry};
}

std::string OtherSpecularText(MeasuringConditions conditions, int32_t geometry, const TakenSpecular& taken,
                              const SurfaceNames& names) {
  TakeGeometry(geometry, conditions);
  const bool isOpen = conditions.specular == Specular::kUnknown;
  const bool beside = IsBesideGloss(isOpen ? conditions.geometry : geometry);
  const Specular stated = beside ? Specular::kExcluded : conditions.specular;
  if (taken.mode == SaundersonMode::kNone || stated == Specular::kUnknown || stated == SpecularOf(taken))
    return "";
  if (beside && taken.isGiven) return "";
  std::string text(names.source);
  if (beside) {
    text.append(" says ").append(GeometryName(conditions.geometry));
    text.append(", which leaves out the specular component, but ");
  } else {
    text.append(" says that the specular component is ").append(WordOf(stated)).append(", but ");
  }
  return text.append(TakenText(taken, beside, names));
}

void CommonGeometry::Add(MeasuringConditions conditions, int32_t geometry) {
  TakeGeometry(geometry, conditions);
  common_ = isFirst_ || conditions.geometry == common_ ? conditions.geometry : kNoGeometry;
  isFirst_ = false;
}

}  // namespace vrx::io
