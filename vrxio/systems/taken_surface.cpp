#include <vrxio/systems/taken_surface.h>

namespace vrx::io {

TakenSpecular TakenBy(const ColorSystem& system, std::optional<SaundersonMode> given) {
  const bool isOpen = !system.specular && !given && system.data.k1 == 0.0;
  std::string complaint;
  return {isOpen ? SaundersonMode::kNone : SpecularOf(system, given, complaint), system.specular.has_value()};
}

std::string OtherSpecularText(MeasuringConditions conditions, int32_t geometry, const TakenSpecular& taken,
                              const SurfaceNames& names) {
  TakeGeometry(geometry, conditions);
  if (taken.mode == SaundersonMode::kNone || conditions.specular == Specular::kUnknown) return "";
  const bool isIncluded = conditions.specular == Specular::kIncluded;
  if (isIncluded == (taken.mode == SaundersonMode::kIncluded)) return "";
  const std::string stated = isIncluded ? "included" : "excluded",
                    other = isIncluded ? "excluded" : "included";
  std::string text(names.source);
  text.append(" says that the specular component is ").append(stated).append(", but ");
  if (taken.isOfSystem) return text.append("the colour system is of curves with it ").append(other);
  return text.append(names.setting(""))
      .append(" is ")
      .append(other)
      .append("; use ")
      .append(names.setting(stated));
}

}  // namespace vrx::io
