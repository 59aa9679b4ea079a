#include <vrxmath/foundation/units.h>

#include <vrxmath/foundation/string_numbers.h>

namespace vrx {
namespace {

CString UnitName(uint32_t firstString, int32_t units, int32_t unit) {
  return unit >= 0 && unit < units ? CString::Load(firstString + static_cast<uint32_t>(unit)) : CString();
}

}  // namespace

CString WeightUnitName(int32_t unit) {
  return UnitName(kStringWeightUnit, kWeightUnits, unit);
}

CString VolumeUnitName(int32_t unit) {
  return UnitName(kStringVolumeUnit, kVolumeUnits, unit);
}

}  // namespace vrx
