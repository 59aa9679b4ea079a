#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/weight_tables.h>

namespace vrx {

bool CReflData::Tristimulus(vrxIlluminant illuminant, int32_t observer, Xyz& result) const {
  const double* table = IsUnset(*this) ? nullptr : WeightTable(illuminant, observer);
  if (table != nullptr && GetSize() < kWavelengths) {
    foundation_internal::ReportIndexError();
    table = nullptr;
  }
  if (table == nullptr) return false;
  // Three sums side by side: each keeps its own order, from the shortest wavelength up.
  double X = 0.0, Y = 0.0, Z = 0.0;
  for (int32_t i = 0; i < kWavelengths; ++i) {
    X += table[i] * data_[i];
    Y += table[kWavelengths + i] * data_[i];
    Z += table[2 * kWavelengths + i] * data_[i];
  }
  result = {X * 0.01, Y * 0.01, Z * 0.01};
  return true;
}

void CReflData::Tristimulus(vrxIlluminant illuminant, int32_t observer, CTrisValues& result) const {
  Xyz xyz;
  if (!Tristimulus(illuminant, observer, xyz)) return result.Fill(kUnset);
  result.SetValues(xyz);
}

}  // namespace vrx
