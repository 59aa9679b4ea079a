// Optical transforms of many reflectances, and strength sums of many curves (optical_transforms.h, strength.h).
//
// A NaN gives NaN, and so does a sum over a band with one: the functions for single numbers have fixed values for it (9999,
// 4.3), which among many numbers nobody would notice.
//
// The transforms take spans of any length, whole curves end to end as well as single values; a target may be its source.
// Errors of every function: CInvalidArgException, before anything is written, for lengths that do not fit. Each returns
// false when the progress callback stopped it.

#ifndef VRXMATH_BATCH_COLORANT_BATCH_H_
#define VRXMATH_BATCH_COLORANT_BATCH_H_

#include <cstdint>
#include <span>

#include <vrxmath/batch/batch_run.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/export.h>

namespace vrx {

/// KubelkaMunkKs and Absorbance of reflectances in percent.
VRX_API bool KubelkaMunkKsBatch(std::span<const double> reflectances, std::span<double> ks,
                                const BatchRun& run = {});
VRX_API bool AbsorbanceBatch(std::span<const double> reflectances, std::span<double> densities,
                             const BatchRun& run = {});

/// SaundersonToInternal and SaundersonToMeasured of reflectances as fractions.
VRX_API bool SaundersonToInternalBatch(std::span<const double> measured, double k1, double k2,
                                       SaundersonMode mode, std::span<double> internal,
                                       const BatchRun& run = {});
VRX_API bool SaundersonToMeasuredBatch(std::span<const double> internal, double k1, double k2,
                                       SaundersonMode mode, std::span<double> measured,
                                       const BatchRun& run = {});

/// The quantity that a strength sum adds up, over which samples, behind which surface.
struct StrengthSumSettings {
  bool useAbsorbance = false;  ///< absorbance instead of K/S
  std::int32_t first = 0;      ///< first and last sample of the band, both inclusive, 0 to 39
  std::int32_t last = 39;
  double k1 = 0.04;  ///< Saunderson's constants
  double k2 = 0.6;
  SaundersonMode mode = SaundersonMode::kIncluded;
};

/// The sum over the band of K/S or absorbance of the internal reflectance of every curve: numerator and denominator of
/// StrengthRatio, from the first sample up, with magnitudes below 1e-7 as +1e-7. CInvalidArgException for a band beyond the
/// curve.
VRX_API bool StrengthSumBatch(const StrengthSumSettings& settings, const CurveBatch& curves,
                              std::span<double> sums, const BatchRun& run = {});

}  // namespace vrx

#endif  // VRXMATH_BATCH_COLORANT_BATCH_H_
