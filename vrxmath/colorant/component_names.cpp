#include <vrxmath/colorant/component_names.h>

#include <vrxmath/colorant/components.h>
#include <vrxmath/foundation/string_numbers.h>

namespace vrx {
namespace {

constexpr int32_t kOpticalModels = 9;
constexpr uint32_t kShortFactorNames = 3;  // behind the long ones

// Offsets from kStringComponentKind.
struct KindName {
  int32_t kind;
  uint32_t offset;
};
constexpr uint32_t kResinName = 2;
constexpr uint32_t kUnknownName = 6;
constexpr KindName kKindNames[] = {
    {kKindColorant, 0},         {kKindResin, 1}, {kKindAdditive, 3}, {kKindCalibrationWhite, 4},
    {kKindCalibrationBlack, 5},
};

uint32_t KindNameOffset(int32_t kind, int32_t opticalModel) {
  const bool hasBases = opticalModel == kModelCoatings || opticalModel == kModelTradeSales;
  if (kind == kKindResin && !hasBases) return kResinName;
  for (const KindName& name : kKindNames) {
    if (name.kind == kind) return name.offset;
  }
  return kUnknownName;
}

}  // namespace

CString ComponentKindName(int32_t kind, int32_t opticalModel) {
  return CString::Load(kStringComponentKind + KindNameOffset(kind, opticalModel));
}

CString OpticalModelName(int32_t opticalModel) {
  if (opticalModel < 0 || opticalModel >= kOpticalModels) return {};
  return CString::Load(kStringOpticalModel + static_cast<uint32_t>(opticalModel));
}

CString FactorName(int32_t opticalModel, bool brief) {
  const uint32_t name = opticalModel == kModelTradeSales ? 0 : opticalModel == kModelPlastics ? 1 : 2;
  return CString::Load(kStringFactorName + name + (brief ? kShortFactorNames : 0));
}

}  // namespace vrx
