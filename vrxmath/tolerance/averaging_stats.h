// Statistics of an averaged set of readings.

#ifndef VRXMATH_TOLERANCE_AVERAGING_STATS_H_
#define VRXMATH_TOLERANCE_AVERAGING_STATS_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// Two statistics of each of the three colour coordinates of an averaged set of readings, and the caller's
/// averaging setting. Elements 0 to 2 hold the first statistic, a spread, of coordinates 0 to 2; elements 3 to
/// 5 the second. All 0.0 when new.
class VRX_API CAveragingStats : public CDoubleArray1 {
 public:
  /// The largest value that a setter stores: what a display of three digits and two decimals can show.
  static constexpr double kLargest = 499.99;

  CAveragingStats() { SetSize(kValues); }
  ~CAveragingStats() override;

  /// The statistics of coordinate `k`, 0 to 2. Other indices reach the array's own check, which knows six
  /// elements: First(4) is the second statistic of coordinate 1.
  double First(int32_t k) const { return GetAt(k); }
  double Second(int32_t k) const { return GetAt(OfSecond(k)); }
  /// The variance that belongs to the spread.
  double FirstSquared(int32_t k) const { return First(k) * First(k); }

  /// Values of 499.99 or more, and NaN, are stored as 499.99; smaller ones, negative ones too, as given.
  void SetFirst(int32_t k, double value) { SetAt(k, Capped(value)); }
  void SetSecond(int32_t k, double value) { SetAt(OfSecond(k), Capped(value)); }

  /// The averaging setting; 1 when new.
  int32_t GetSetting() const { return setting_; }
  void SetSetting(int32_t setting) { setting_ = setting; }

  /// Archive form: that of an array of six doubles; the setting is not part of it and keeps its value. Throws
  /// as CArchive does, and kBadFormat for a count other than six; the record is then unchanged.
  void Serialize(CArchive& archive) override;

 private:
  static constexpr int32_t kCoordinates = 3;
  static constexpr int32_t kValues = 2 * kCoordinates;

  // An index past the largest number wraps around to one that no element has, where std::ptrdiff_t has 32 bits, too.
  static int32_t OfSecond(int32_t k) {
    return static_cast<int32_t>(static_cast<uint32_t>(k) + uint32_t{kCoordinates});
  }
  static double Capped(double value) { return value < kLargest ? value : kLargest; }

  int32_t setting_ = 1;
};

}  // namespace vrx

#endif  // VRXMATH_TOLERANCE_AVERAGING_STATS_H_
