// CGriesser: the least value of a function over a box, by grids from coarse to fine and a descent at the end.
// For functions with several minima, or none that a slope leads to, in a few variables.

#ifndef VRXMATH_NUMERIC_GRIESSER_H_
#define VRXMATH_NUMERIC_GRIESSER_H_

#include <cstdint>
#include <vector>

#include <vrxmath/export.h>
#include <vrxmath/numeric/gradient.h>

namespace vrx {

/// Grid search. Level by level, the best cells of a grid become the boxes of the next; the best point of the
/// last level starts a descent (CGradient) within the box. A minimum is found when a grid point falls into
/// its basin and stays among the best. A NaN counts as larger than every number.
class VRX_API CGriesser {
 public:
  /// Grid points per axis, their centres spread evenly over the box; 9 when new. Lowered where a level would
  /// take more than a million evaluations.
  void SetPointsPerAxis(int32_t points) { pointsPerAxis_ = points; }
  /// Levels of refinement; 4 when new.
  void SetLevels(int32_t levels) { levels_ = levels; }
  /// Cells of a level that go on to the next; 4 when new.
  void SetKeptCells(int32_t cells) { keptCells_ = cells; }
  /// The descent at the end; its bounds are set by the search.
  CGradient& Refinement() { return refinement_; }

  /// The least value over lower[k] <= x[k] <= upper[k], as many coordinates as `lower` has; missing upper
  /// bounds equal the lower ones. The result is the refinement's, its iterations those of the descent.
  [[nodiscard]] SearchResult Minimize(PointFunction f, std::vector<double> lower,
                                      std::vector<double> upper) const;

 private:
  int32_t pointsPerAxis_ = 9;
  int32_t levels_ = 4;
  int32_t keptCells_ = 4;
  CGradient refinement_;
};

}  // namespace vrx

#endif  // VRXMATH_NUMERIC_GRIESSER_H_
