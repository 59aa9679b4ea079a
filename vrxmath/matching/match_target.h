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

class MatchTarget {
 public:
  MatchTarget(const Offer& offer, const CColorantSystemData& system, const CRecipeTarget& target,
              const CRecipeSettings& settings);
  MatchTarget(const MatchTarget&) = delete;
  MatchTarget& operator=(const MatchTarget&) = delete;

  /// Why the target cannot be used; kNone when it can.
  RecipeFault Fault() const { return fault_; }
  const MatchProblem& Problem() const { return problem_; }

  /// Fills differences, worst, metamerism and rms of a recipe from its curve.
  void Judge(CRecipe& recipe) const;
  /// The largest colour difference of a curve.
  double WorstDifference(const CReflData& curve) const;

 private:
  struct Lamp {
    vrxIlluminant illuminant;
    const double* table;
    Color color;  // of the target
  };

  RecipeFault Check(const CRecipeTarget& target) const;
  RecipeFault SetLamps();
  void SetSurface();
  void SetCurve();
  void SetRows();
  void SetUnitCurves(const Offer& offer);
  void SetGram(const Offer& offer);
  double DifferenceOf(const Lamp& lamp, const Xyz& xyz) const;
  Color ColorOf(const Lamp& lamp, const Xyz& xyz) const;
  Xyz XyzOf(const Lamp& lamp, const CReflData& curve) const;

  const CColorantSystemData& system_;
  const CRecipeSettings& settings_;
  CRecipeTarget target_;
  bool isColorOnly_ = false;
  RecipeFault fault_ = RecipeFault::kNone;
  std::vector<Lamp> lamps_;
  double glare_ = 0.0;     // what the surface adds to a measured reflectance: k1 or nothing
  SpectralCurve curve_{};  // without glare, fractions
  std::vector<double> K_, S_, baseK_, baseS_, weights_, offset_, importance_, curveWeights_, gram_, scale_;
  MatchProblem problem_;
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_MATCH_TARGET_H_
