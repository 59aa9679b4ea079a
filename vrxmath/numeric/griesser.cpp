#include <vrxmath/numeric/griesser.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace vrx {
namespace {

constexpr double kEvaluationsPerLevel = 1e6;

struct Cell {
  double value;
  std::vector<double> centre;
};

/// The best cells seen, in order of value; of equals the first seen stands first.
class BestCells {
 public:
  explicit BestCells(std::size_t limit) : limit_(limit) {}

  void Offer(double value, const std::vector<double>& centre) {
    if (cells_.size() == limit_ && !(value < cells_.back().value)) return;
    if (cells_.size() == limit_) cells_.pop_back();
    const auto place = std::upper_bound(cells_.begin(), cells_.end(), value,
                                        [](double v, const Cell& cell) { return v < cell.value; });
    cells_.insert(place, {value, centre});
  }
  const std::vector<Cell>& Cells() const { return cells_; }

 private:
  std::size_t limit_;
  std::vector<Cell> cells_;
};

double Evaluations(int32_t points, std::size_t axes, std::size_t boxes) {
  double count = static_cast<double>(boxes);
  for (std::size_t k = 0; k < axes; ++k) count *= points;
  return count;
}

/// As many points per axis as a level can afford, at least one.
int32_t AffordablePoints(int32_t points, std::size_t axes, std::size_t boxes) {
  points = std::clamp(points, 1, static_cast<int32_t>(kEvaluationsPerLevel));
  while (points > 1 && Evaluations(points, axes, boxes) > kEvaluationsPerLevel) --points;
  return points;
}

/// Evaluates a grid of `points` per axis over the box of half-widths `half` about a centre, kept inside the
/// outer box.
void SearchBox(PointFunction f, const std::vector<double>& centre, const std::vector<double>& half,
               int32_t points, const std::vector<double>& lower, const std::vector<double>& upper,
               BestCells& best) {
  const std::size_t axes = centre.size();
  std::vector<int32_t> index(axes, 0);
  std::vector<double> point(axes);
  for (;;) {
    for (std::size_t k = 0; k < axes; ++k) {
      const double place = (2.0 * index[k] + 1.0) / points - 1.0;  // of the cell's centre, -1 to 1
      point[k] = std::clamp(centre[k] + half[k] * place, lower[k], upper[k]);
    }
    const double value = f(point);
    best.Offer(std::isnan(value) ? std::numeric_limits<double>::infinity() : value, point);
    std::size_t axis = 0;
    while (axis < axes && ++index[axis] == points) index[axis++] = 0;
    if (axis == axes) return;
  }
}

}  // namespace

SearchResult CGriesser::Minimize(PointFunction f, std::vector<double> lower,
                                 std::vector<double> upper) const {
  const std::size_t axes = lower.size();
  for (std::size_t k = upper.size(); k < axes; ++k) upper.push_back(lower[k]);
  std::vector<double> centre(axes), half(axes);
  for (std::size_t k = 0; k < axes; ++k) {
    if (upper[k] < lower[k]) std::swap(lower[k], upper[k]);
    centre[k] = lower[k] + 0.5 * (upper[k] - lower[k]);
    half[k] = 0.5 * (upper[k] - lower[k]);
  }
  std::vector<Cell> boxes = {{0.0, centre}};
  for (int32_t level = 0; level < levels_; ++level) {
    const int32_t points = AffordablePoints(pointsPerAxis_, axes, boxes.size());
    BestCells best(static_cast<std::size_t>(std::max(keptCells_, 1)));
    for (const Cell& box : boxes) SearchBox(f, box.centre, half, points, lower, upper, best);
    boxes = best.Cells();
    // The next boxes reach to the neighbours of a cell, which may hold the minimum as well.
    for (double& h : half) h *= std::min(1.0, 2.0 / points);
  }
  CGradient refinement = refinement_;
  refinement.SetBounds(lower, upper);
  return refinement.Minimize(f, boxes.front().centre);
}

}  // namespace vrx
