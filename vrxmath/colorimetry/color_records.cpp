#include <vrxmath/colorimetry/color_records.h>

#include <vrxmath/colorimetry/space_formulas.h>

namespace vrx {

double HueDegreesOf(const CLabValues& lab) {
  const double h = lab[CLabValues::kHue];
  return HueInDegrees() ? h : h * kDegreesPerRadian;
}
double HueRadiansOf(const CLabValues& lab) {
  const double h = lab[CLabValues::kHue];
  return HueInDegrees() ? h * kRadiansPerDegree : h;
}

CLabValues::CLabValues(double L, double a, double b) : CLabValues() {
  Lab lab = {L, a, b, kUnset, kUnset};
  FillChromaHue(lab);
  SetValues(lab);
  if (!HueInDegrees()) (*this)[kHue] = HueRadians(a, b);  // to the last bit
}

Lab CLabValues::ShortValues(int32_t elements) const {
  const CLabValues& lab = *this;
  const double C = elements > kChroma ? lab[kChroma] : kUnset;
  return {lab[kL], lab[kA], lab[kB], C, elements > kHue ? HueDegreesOf(lab) : kUnset};
}

}  // namespace vrx
