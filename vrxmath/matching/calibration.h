// Calibration: K and S of every colorant from weighed drawdowns.
//
// Each drawdown is a mixture of known shares with a measured K/S, which two-constant theory makes linear in what is
// sought: at every wavelength, sum of c K - K/S x sum of c S = 0. Its solution is where the least squares of reflectance
// begin. Only ratios show in opaque films, so the white's S is 1 and the unit of everything.

#ifndef VRXMATH_MATCHING_CALIBRATION_H_
#define VRXMATH_MATCHING_CALIBRATION_H_

#include <cstdint>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// A weighed drawdown with its readings, measured curves in percent.
struct CDrawdown {
  using MovesBitwise = CDrawdown;

  CString id;
  CDoubleArray1 shares;  ///< one per component, in any one unit
  bool isFilm = false;   ///< read over black and over white; otherwise opaque
  CReflData opaque;      ///< the curve of an opaque drawdown
  CReflData overBlack;   ///< the curves of a film and of its bare backings
  CReflData overWhite;
  CReflData black;
  CReflData white;
  double weight = 1.0;  ///< of the squares of its residuals; above 0
};
using CDrawdownArray = CArrayVarex<CDrawdown>;

/// How drawdowns were measured and how the fit is stated.
struct CCalibrationSettings {
  int32_t white = 0;  ///< index of the component whose S is 1, the unit; predictions do not depend on it
  CIntArray1 resins;  ///< indices of the components that are resins or bases, not colorants
  double k1 = 0.04;
  double k2 = 0.6;
  SaundersonMode mode = SaundersonMode::kIncluded;
  /// Under which residuals are stated.
  vrxIlluminant illuminant = vrxIllumD65;
  int32_t observer = kObserver10;
  bool leaveOneOut = true;  ///< costs one calibration per drawdown
};

/// How well a drawdown is described, CIEDE2000; unset where it is not known.
struct CDrawdownFit {
  double deltaE = kUnset;             ///< by the calibration; of a film the mean over its two backings
  double leaveOneOut = kUnset;        ///< by a calibration without this drawdown; unset where one cannot be
  double leaveOneOutLinear = kUnset;  ///< the same by the linear solution alone, where the refined one begins
  double thickness = kUnset;          ///< of a film, in the unit of length in which the white scatters 1
  double measuredContrast = kUnset;   ///< Y over black / Y over white, of a film
  double predictedContrast = kUnset;
};
using CDrawdownFitArray = CArrayVarex<CDrawdownFit>;

/// Why drawdowns cannot be used.
enum class CalibrationFault {
  kNone,
  kNoWhite,      ///< the white's index is none, or no drawdown has the white in it
  kShares,       ///< `drawdown`: as many shares as components are expected, none negative, not all 0
  kWeight,       ///< `drawdown`: its weight is not a number above 0
  kNotMeasured,  ///< `drawdown`: one of its curves is unset
  /// `drawdown`: from 400 to 700 nm a reading is below nine tenths of k1, although the surface is to be part of it.
  kBelowSurface,
  kFilmSwapped,   ///< `drawdown`: the film is lighter over black than over white
  kCardsSwapped,  ///< `drawdown`: its black card is not darker than the white one
  kSameReadings,  ///< `drawdown`: the film has the same numbers over black as over white
  kNeverUsed,     ///< `component` is in no drawdown
  /// `components`, none of them the white, have one share each in all their drawdowns: K and S cannot be told apart.
  kOneShareOnly,
};

/// The fault of a calibration, with the drawdown (from 0) and the first component (from 0) that it concerns, -1 for none.
struct CalibrationOutcome {
  CalibrationFault fault = CalibrationFault::kNone;
  int32_t drawdown = -1;
  int32_t component = -1;
  CIntArray1 components{};  ///< all that have the fault kNeverUsed or kOneShareOnly
  /// True for least squares of reflectance; false where the linear least squares that these start from foresee the
  /// drawdowns better, left out one at a time.
  bool isRefined = false;
};

/// Calibrates the components `names` and makes them the colorants and resins of `system`, numbered from 1 in their order,
/// each with one level (concentration 1), the white as calibration white; sets its k1 and k2.
/// In:      drawdowns of one mode of measurement; a film's thickness is not asked for: one is assumed for its two
///          readings, which give its K/S (FilmConstants), and found again to predict them.
/// Out:     the system and a fit per drawdown; with a fault, neither is changed.
/// Formula: at every wavelength over all drawdowns at once, K and S never negative: first the linear least squares of
///          E. Walowit, C. J. McCarthy and R. S. Berns (Color Res. Appl. 12, 1987, 340-343), each equation weighted by
///          dR/dQ of its measured reflectance; from there, by Gauss-Newton steps, the least squares of reflectance
///          itself, under a weak pull towards the linear solution, which holds what the drawdowns do not tell.
///          No component is treated in a way of its own: which one is the white changes the unit and no prediction.
///          With leaveOneOut the solution is taken that foresees drawdowns better which took no part.
[[nodiscard]] VRX_API CalibrationOutcome CalibrateColorants(const CStringArray1& names,
                                                            const CDrawdownArray& drawdowns,
                                                            const CCalibrationSettings& settings,
                                                            CColorantSystemData& system,
                                                            CDrawdownFitArray& fits);

/// Range and trust of every component of a calibration, in the order of the system's componentsA, which is that of the
/// shares.
[[nodiscard]] VRX_API CComponentCalibrationArray CalibratedComponents(const CColorantSystemData& system,
                                                                      const CDrawdownArray& drawdowns,
                                                                      const CDrawdownFitArray& fits);

/// How a colour system describes a drawdown: leaveOneOut stays unset. Shares follow the order of the system's
/// componentsA. Everything is unset when the system cannot predict it.
[[nodiscard]] VRX_API CDrawdownFit FitDrawdown(const CColorantSystemData& system, const CDrawdown& drawdown,
                                               const CCalibrationSettings& settings);

}  // namespace vrx

#endif  // VRXMATH_MATCHING_CALIBRATION_H_
