// The inner solver of recipe search, as the search sees it: many subsets of colorants, each brought as near to a target as
// it goes. Compiled once per instruction set; one subset a lane, so every set gives the same bits.

#ifndef VRXMATH_MATCHING_SUBSET_KERNELS_H_
#define VRXMATH_MATCHING_SUBSET_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace vrx {

inline constexpr int32_t kMostSubsetColorants = 6;

/// The data that all subsets have in common: addresses and plain numbers, owned by a MatchTarget.
struct MatchProblem {
  int32_t colorants = 0;
  const double* K = nullptr;  ///< unit curves, 40 per colorant
  const double* S = nullptr;
  /// One-constant mixing: the substrate's curves, to which colorants add without scattering; null for shares that make
  /// up a whole.
  const double* baseK = nullptr;
  const double* baseS = nullptr;

  double surface = 1.0;  ///< (1 - k1)(1 - k2) of the measured reflectance
  double k2 = 0.0;
  const double* target = nullptr;  ///< 40 reflectances, fractions, without k1

  /// Rows that make a difference in reflectance one in colour: three per illuminant, whose squares add up to the square
  /// of a small colour difference. `offset`: what they give for a perfect match of the target curve.
  int32_t rows = 0;
  const double* weights = nullptr;  ///< rows x 40
  const double* offset = nullptr;
  const double* importance =
      nullptr;  ///< per illuminant, of its square in the objective; 0 for one that only reports
  const double* curveWeights = nullptr;  ///< 40: of the square of the reflectance difference; null for none

  /// Limits of the shares, one per colorant; null when nothing limits any. A least share of 0 is none: there a smaller
  /// subset stands for the solution.
  const double* least = nullptr;
  const double* most = nullptr;

  /// The objective linearised at the target, as a quadratic form of the shares: colorants x colorants, and what the
  /// mixture scatters. With a substrate the form has a column more, its own, which stands last.
  const double* gram = nullptr;
  const double* scale = nullptr;
};

enum class SubsetEnd : int32_t {
  kInside,    ///< a minimum with every share above 0
  kAtBound,   ///< a share reached 0: a smaller subset is as good
  kUnsolved,  ///< the steps did not end, or numbers that are none
};

struct SubsetSolution {
  double shares[kMostSubsetColorants];
  double worst;      ///< largest of the colour differences over the illuminants, to first order, squared
  double objective;  ///< to first order
  SubsetEnd end;
};

/// Subsets are rows of `size` colorants. Shares follow their order, with a substrate relative to it.
struct SubsetKernels {
  /// The minimum of the linearised objective, shares moved to at least a little, and its value.
  void (*start)(const MatchProblem&, int32_t size, const uint16_t* subsets, std::size_t count,
                SubsetSolution* solutions);
  /// Gauss-Newton steps from the shares that are there, which must obey the limits where the problem has any. Ends
  /// kUnsolved where the colorant that takes what the others leave is pushed against a limit.
  void (*solve)(const MatchProblem&, int32_t size, const uint16_t* subsets, std::size_t count,
                SubsetSolution* solutions);
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_SUBSET_KERNELS_H_
