// A target made ready for the solvers: its reflectance, and the rows that turn differences of reflectance into differences
// of colour.

#ifndef VRXMATH_MATCHING_MATCH_TARGET_H_
#define VRXMATH_MATCHING_MATCH_TARGET_H_

#include <array>
#include <vector>

#include <vrxmath/colorimetry/values.h>
#include <vrxmath/matching/offer.h>
#include <vrxmath/matching/recipe_types.h>
#include <vrxmath/matching/subset_kernels.h>

namespace vrx {

using SpectralCurve = std::array<double, kWavelengths>;

/// Most illuminants of a search, and of those times geometries.
inline constexpr std::size_t kMostLamps = 32;

class MatchTarget {
 public:
  MatchTarget(const Offer& offer, const CColorantSystemData& system, const CRecipeTarget& target,
              const CRecipeSettings& settings);
  MatchTarget(const MatchTarget&) = delete;
  MatchTarget& operator=(const MatchTarget&) = delete;

  /// Why the target cannot be used; kNone when it can.
  RecipeFault Fault() const { return fault_; }
  const MatchProblem& Problem() const { return problem_; }

  /// Fills differences, worst, metamerism, inconstancy and rms of a recipe from its curve.
  void Judge(CRecipe& recipe) const;
  /// The differences under each illuminant of a curve that is `R`, fractions, away from the target's.
  void DifferencesOf(const SpectralCurve& R, std::array<double, kMostLamps>& differences) const;
  /// True when a curve differs from another, both given as what is added to the target's, by less than `limit` under
  /// every illuminant.
  bool IsNear(const SpectralCurve& standard, const SpectralCurve& curve, double limit) const;
  /// The largest colour difference of a curve.
  double WorstDifference(const CReflData& curve) const;

 private:
  // An illuminant, once for each geometry of the target.
  struct Lamp {
    std::ptrdiff_t number;  // among the illuminants of the settings
    vrxIlluminant illuminant;
    const double* table;
    double angle;  // aspecular, degrees
    Color color;   // of the target
  };

  RecipeFault Check(const CRecipeTarget& target) const;
  RecipeFault CheckCurve(const CReflData& curve) const;
  RecipeFault SetLamps();
  RecipeFault AddLamps(const CReflData& curve, double angle);
  double AngleOf(int32_t geometry) const;
  RecipeFault SetMean();
  void SetSurface();
  void SetCurve();
  void SetRows();
  void SetUnitCurves(const Offer& offer);
  void SetLimits(const Offer& offer);
  void SetGram(const Offer& offer);
  double WorstInconstancy(const CReflData& curve) const;
  double DifferenceOf(const Lamp& lamp, const Xyz& xyz) const;
  Color ColorOf(const Lamp& lamp, const Xyz& xyz) const;
  Xyz XyzOf(const Lamp& lamp, const CReflData& curve) const;
  Xyz XyzAt(const Lamp& lamp, const SpectralCurve& R) const;

  const CColorantSystemData& system_;
  const CRecipeSettings& settings_;
  CRecipeTarget target_;
  bool isColorOnly_ = false;
  RecipeFault fault_ = RecipeFault::kNone;
  std::vector<Lamp> lamps_;
  double glare_ = 0.0;     // what the surface adds to a measured reflectance: k1 or nothing
  SpectralCurve curve_{};  // without glare, fractions
  std::vector<double> least_, most_, K_, S_, baseK_, baseS_, weights_, offset_, importance_, curveWeights_,
      gram_, scale_;
  MatchProblem problem_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_MATCH_TARGET_H_
