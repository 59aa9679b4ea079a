// The colour records: a reflectance curve, a tristimulus triple, colour coordinates, a colour difference.
//
// Each is a fixed-length array of doubles that starts unset (kUnset, "not measured or not computed").
// Elements are read and written by index.

#ifndef VRXMATH_COLORIMETRY_COLOR_RECORDS_H_
#define VRXMATH_COLORIMETRY_COLOR_RECORDS_H_

#include <algorithm>
#include <cstdint>

#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// Tristimulus values X, Y, Z on the scale on which the perfect white has Y = 100.
class CTrisValues : public CDoubleArray1 {
 public:
  CTrisValues() {
    SetSize(3);
    Fill(kUnset);
  }
  CTrisValues(double X, double Y, double Z) {
    SetSize(3);
    data_[0] = X, data_[1] = Y, data_[2] = Z;
  }
};

/// Coordinates of a lightness-based space: L, a, b, C, h. They hold L*, a*, b*, C*ab, hab, or L*, u*, v*,
/// C*uv, huv, or Hunter L, a, b with C and h unset. h is in degrees in [0, 360) while the hue-unit flag
/// (color_spaces.h) is on.
class CLabValues : public CDoubleArray1 {
 public:
  CLabValues() {
    SetSize(5);
    Fill(kUnset);
  }
};

/// A colour difference, sample minus standard. Elements 0 to 2: differences of the first three coordinates;
/// 3: weighted lightness difference; 4: chroma difference; 5: signed hue difference; 6: total difference.
class CDeltaValues : public CDoubleArray1 {
 public:
  CDeltaValues() {
    SetSize(7);
    Fill(kUnset);
  }
};

/// A reflectance curve: percent at 360, 370 ... 750 nm. It counts as unset when its first sample is.
class VRX_API CReflData : public CKSData {
 public:
  CReflData() { Fill(kUnset); }

  /// Tristimulus values of the curve under an illuminant and observer.
  /// Out:     X, Y, Z; all unset when the curve is, or when the pair has no weighting table.
  /// Formula: ASTM E308 with the weights of WeightTable as they stand: component = 0.01 x sum of weight x
  ///          percent, summed from the shortest wavelength up. No clipping: fluorescent samples exceed 100
  ///          %.
  /// Errors:  a curve of fewer than 40 samples and a pair without a table show the index message.
  void Tristimulus(vrxIlluminant illuminant, int32_t observer, CTrisValues& result) const;
};

/// A colour: its tristimulus values and its coordinates in the space in which it is judged.
struct CColorValues {
  CTrisValues tristimulus;
  CLabValues lab;
  bool operator==(const CColorValues&) const = default;
};

/// True when a record has no elements or all of them are unset.
inline bool IsUnset(const CDoubleArray1& record) {
  return std::all_of(record.begin(), record.end(), [](double value) { return IsUnset(value); });
}
/// True when the first sample is unset, whatever the others hold, and for a curve without samples.
inline bool IsUnset(const CReflData& curve) {
  return curve.IsEmpty() || IsUnset(curve.GetData()[0]);
}
/// True when the tristimulus values are unset.
inline bool IsUnset(const CColorValues& color) {
  return IsUnset(color.tristimulus);
}

// One entry per illuminant, then per sample, then per measuring angle.
using CTrisValuesArray = CArrayVarex<CTrisValues>;
using CTrisValuesIllDataArray = CArrayVarex<CTrisValuesArray>;
using CColorValuesArray = CArrayVarex<CColorValues>;
using CColorValuesIllDataArray = CArrayVarex<CColorValuesArray>;
using CColorValuesIllumAngleArray = CArrayVarex<CColorValuesIllDataArray>;
using CDeltaValuesArray = CArrayVarex<CDeltaValues>;
using CDeltaValuesIllDataArray = CArrayVarex<CDeltaValuesArray>;
using CDeltaValuesIllumAngleArray = CArrayVarex<CDeltaValuesIllDataArray>;
// One curve per sample, then per measuring angle.
using CReflDataArray = CArrayVarex<CReflData>;
using CReflDataAngleArray = CArrayVarex<CReflDataArray>;

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_COLOR_RECORDS_H_
