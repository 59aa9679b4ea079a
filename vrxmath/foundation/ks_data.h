// The spectral curve: 40 samples on the library's one wavelength grid.

#ifndef VRXMATH_FOUNDATION_KS_DATA_H_
#define VRXMATH_FOUNDATION_KS_DATA_H_

#include <cstdint>

#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// The grid that curves and weighting tables share: 360, 370 ... 750 nm.
inline constexpr int32_t kWavelengths = 40;
inline constexpr int32_t kFirstWavelength = 360;  ///< nm
inline constexpr int32_t kWavelengthStep = 10;    ///< nm

/// A curve of 40 doubles, shortest wavelength first: absorption K, scattering S or a ratio K/S. All 0.0 when
/// new.
class CKSData : public CDoubleArray1 {
 public:
  CKSData() { SetSize(kWavelengths); }
};

using CKSDataArray = CArrayVarex<CKSData>;

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_KS_DATA_H_
