// The colour records: a reflectance curve, a tristimulus triple, colour coordinates, a colour difference.
//
// Each is a fixed-length array of doubles that starts unset (kUnset, "not measured or not computed"). Elements are read
// and written by index (the enumerations name them) or all at once as the values of values.h, on which the formulas work.

#ifndef VRXMATH_COLORIMETRY_COLOR_RECORDS_H_
#define VRXMATH_COLORIMETRY_COLOR_RECORDS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

namespace colorimetry_internal {

/// Writes values to the first elements of a record. One that is too short shows the index message.
template <class... VALUES>
inline void Store(CDoubleArray1& record, VALUES... values) {
  int32_t i = 0;
  if (static_cast<std::size_t>(record.GetSize()) >= sizeof...(values)) {
    double* element = record.GetData();
    ((element[i++] = values), ...);
  } else {
    ((record[i++] = values), ...);
  }
}

}  // namespace colorimetry_internal

/// Tristimulus values X, Y, Z on the scale on which the perfect white has Y = 100.
class CTrisValues : public CDoubleArray1 {
 public:
  enum Index : int32_t { kX = 0, kY = 1, kZ = 2 };
  static constexpr int32_t kValues = 3;

  CTrisValues() {
    SetSize(kValues);
    Fill(kUnset);
  }
  CTrisValues(double X, double Y, double Z) {
    SetSize(kValues);
    SetValues({X, Y, Z});
  }

  /// The values, and the same written to the record. A record that somebody made shorter shows the index message.
  [[nodiscard]] Xyz Values() const {
    if (GetSize() < kValues) return {(*this)[kX], (*this)[kY], (*this)[kZ]};
    return {data_[kX], data_[kY], data_[kZ]};
  }
  void SetValues(const Xyz& xyz) { colorimetry_internal::Store(*this, xyz.X, xyz.Y, xyz.Z); }
};

/// Coordinates of a lightness-based space: L, a, b, C, h. They hold L*, a*, b*, C*ab, hab, or L*, u*, v*,
/// C*uv, huv, or Hunter L, a, b with C and h unset. h is in degrees in [0, 360) while the hue-unit flag
/// (hue.h) is on.
class VRX_API CLabValues : public CDoubleArray1 {
 public:
  enum Index : int32_t {
    kL = 0,       ///< lightness
    kA = 1,       ///< a or u
    kB = 2,       ///< b or v
    kChroma = 3,  ///< C
    kHue = 4,     ///< h, in the unit of the flag
  };
  static constexpr int32_t kValues = 5;

  CLabValues() {
    SetSize(kValues);
    Fill(kUnset);
  }
  /// Coordinates with the chroma and the hue of a and b.
  CLabValues(double L, double a, double b);

  /// The coordinates, h in degrees. `elements`: how many of them are read, 3 to 5; the others are unset. A record that
  /// somebody made shorter shows the index message for those of them that are missing.
  [[nodiscard]] Lab Values(int32_t elements = kValues) const {
    if (GetSize() < kValues) return ShortValues(elements);
    const double h = elements < kValues ? kUnset
                     : HueInDegrees()   ? data_[kHue]
                                        : data_[kHue] * kDegreesPerRadian;
    return {data_[kL], data_[kA], data_[kB], data_[kChroma], h};
  }
  /// Writes coordinates; their h is in degrees.
  void SetValues(const Lab& lab) {
    const double h = HueInDegrees() || IsUnset(lab.h) ? lab.h : lab.h * kRadiansPerDegree;
    colorimetry_internal::Store(*this, lab.L, lab.a, lab.b, lab.C, h);
  }

 private:
  Lab ShortValues(int32_t elements) const;
};

/// A colour difference, sample minus standard.
class CDeltaValues : public CDoubleArray1 {
 public:
  enum Index : int32_t {
    kL = 0,          ///< difference of the first coordinate: dL, or dX
    kA = 1,          ///< of the second: da, du, dY
    kB = 2,          ///< of the third: db, dv, dZ
    kWeightedL = 3,  ///< lightness difference as the system weights it
    kChroma = 4,     ///< chroma difference
    kHue = 5,        ///< hue difference, negative when the sample lies clockwise from the standard
    kTotal = 6,      ///< total difference
  };
  static constexpr int32_t kValues = 7;

  CDeltaValues() {
    SetSize(kValues);
    Fill(kUnset);
  }
  explicit CDeltaValues(const Difference& difference) {
    SetSize(kValues);
    SetValues(difference);
  }

  /// The differences, and the same written to the record. A record that somebody made shorter shows the index message.
  [[nodiscard]] Difference Values() const {
    if (GetSize() < kValues) {
      const CDeltaValues& d = *this;
      return {d[kL], d[kA], d[kB], d[kWeightedL], d[kChroma], d[kHue], d[kTotal]};
    }
    return {data_[kL], data_[kA], data_[kB], data_[kWeightedL], data_[kChroma], data_[kHue], data_[kTotal]};
  }
  void SetValues(const Difference& d) {
    colorimetry_internal::Store(*this, d.dL, d.da, d.db, d.weightedL, d.dC, d.dH, d.dE);
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
  /// The same as values; false, with `result` as it was, where the record would be unset.
  bool Tristimulus(vrxIlluminant illuminant, int32_t observer, Xyz& result) const;
};

/// The hue of a record (its element kHue) in degrees or radians, whatever the flag says it is kept in.
[[nodiscard]] VRX_API double HueDegreesOf(const CLabValues& lab);
[[nodiscard]] VRX_API double HueRadiansOf(const CLabValues& lab);

/// A colour: its tristimulus values and its coordinates in the space in which it is judged.
struct CColorValues {
  using MovesBitwise = CColorValues;

  CTrisValues tristimulus;
  CLabValues lab;
  [[nodiscard]] Color Values() const { return {tristimulus.Values(), lab.Values()}; }
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
