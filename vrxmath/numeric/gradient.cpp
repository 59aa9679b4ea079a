#include <vrxmath/numeric/gradient.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>

#include <vrxmath/numeric/line_minimum.h>

namespace vrx {
namespace {

/// Cube root of the spacing of doubles: where rounding and truncation of a central difference are in balance.
constexpr double kDifferenceStep = 6e-6;
/// A line search that ends early costs less than the digits that the next direction cannot use.
constexpr LineTolerance kAlongLine = {1e-6, 1e-12, 60};
constexpr int32_t kBracketSteps = 60;

double Product(std::span<const double> a, std::span<const double> b) {
  double sum = 0.0;
  for (std::size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

}  // namespace

/// One descent: where it is, which way it goes.
class CGradient::Descent {
 public:
  Descent(const CGradient& search, PointFunction f, const GradientFunction* gradient,
          std::vector<double> start)
      : search_(search), f_(f), gradientFunction_(gradient), point_(std::move(start)) {
    for (std::size_t k = 0; k < point_.size(); ++k) point_[k] = WithinBounds(k, point_[k]);
    trial_ = point_;
    gradient_.resize(point_.size());
    direction_.resize(point_.size());
    value_ = ValueAt(point_);
  }

  SearchResult Run() {
    bool steepest = true, converged = false;
    int32_t iterations = 0;
    for (; iterations < search_.limit_ && !converged; ++iterations) {
      steepest = ChooseDirection(steepest);
      const double before = value_;
      if (SlopeAlongDirection() < 0.0) MoveAlongDirection();
      const bool gained = before - value_ > search_.tolerance_ * (std::fabs(value_) + search_.tolerance_);
      converged = !gained && steepest && std::isfinite(value_);
      if (!gained && steepest && !converged) break;
      steepest = !gained;
    }
    return {point_, value_, iterations, converged};
  }

 private:
  double LowerBound(std::size_t k) const {
    return k < search_.lower_.size() ? search_.lower_[k] : -std::numeric_limits<double>::infinity();
  }
  double UpperBound(std::size_t k) const {
    return k < search_.upper_.size() ? search_.upper_[k] : std::numeric_limits<double>::infinity();
  }
  double WithinBounds(std::size_t k, double x) const {
    return std::max(LowerBound(k), std::min(UpperBound(k), x));
  }

  double ValueAt(std::span<const double> point) const {
    const double value = f_(point);
    return std::isnan(value) ? std::numeric_limits<double>::infinity() : value;
  }

  double DifferenceQuotient(std::size_t k) {
    const double x = point_[k], step = kDifferenceStep * std::max(1.0, std::fabs(x));
    double above = WithinBounds(k, x + step), below = WithinBounds(k, x - step);
    trial_[k] = above;
    double valueAbove = ValueAt(trial_);
    trial_[k] = below;
    double valueBelow = ValueAt(trial_);
    trial_[k] = x;
    if (!std::isfinite(valueAbove)) std::tie(above, valueAbove) = std::pair(x, value_);
    if (!std::isfinite(valueBelow)) std::tie(below, valueBelow) = std::pair(x, value_);
    return above > below ? (valueAbove - valueBelow) / (above - below) : 0.0;
  }

  void ComputeGradient() {
    if (gradientFunction_ != nullptr) {
      (*gradientFunction_)(point_, gradient_);
    } else {
      trial_ = point_;
      for (std::size_t k = 0; k < point_.size(); ++k) gradient_[k] = DifferenceQuotient(k);
    }
    for (double& g : gradient_) {
      if (!std::isfinite(g)) g = 0.0;
    }
  }

  bool LeavesBox(std::size_t k, double direction) const {
    return (direction < 0.0 && point_[k] <= LowerBound(k)) || (direction > 0.0 && point_[k] >= UpperBound(k));
  }

  // The negative gradient without what leads out of the box, and the share of the last direction that keeps
  // the two conjugate. True when there is none: at the start, and where a new side of the box was reached.
  bool ChooseDirection(bool steepest) {
    const std::vector<double> previous = gradient_;
    ComputeGradient();
    std::vector<double> downhill(point_.size());
    for (std::size_t k = 0; k < point_.size(); ++k)
      downhill[k] = LeavesBox(k, -gradient_[k]) ? 0.0 : -gradient_[k];
    double share = 0.0;
    if (!steepest) {
      const double length = Product(previous, previous);
      const double change = Product(gradient_, gradient_) - Product(gradient_, previous);
      share = length > 0.0 ? std::max(0.0, change / length) : 0.0;
    }
    for (std::size_t k = 0; k < point_.size(); ++k) {
      direction_[k] = downhill[k] + share * direction_[k];
      if (LeavesBox(k, direction_[k])) direction_[k] = 0.0;
    }
    if (share > 0.0 && SlopeAlongDirection() < 0.0) return false;
    direction_ = downhill;
    return true;
  }

  double SlopeAlongDirection() const { return Product(gradient_, direction_); }

  std::span<const double> PointAlong(double t) {
    for (std::size_t k = 0; k < point_.size(); ++k)
      trial_[k] = WithinBounds(k, point_[k] + t * direction_[k]);
    return trial_;
  }

  // The first guess at the step is one that moves the point by a hundredth of its size.
  void MoveAlongDirection() {
    const double size = std::sqrt(Product(point_, point_)),
                 length = std::sqrt(Product(direction_, direction_));
    const double firstStep = 0.01 * std::max(1.0, size) / length;
    if (!std::isfinite(firstStep) || firstStep == 0.0) return;
    const auto along = [this](double t) { return ValueAt(PointAlong(t)); };
    const LineMinimum minimum =
        BrentMinimum(along, BracketMinimum(along, 0.0, firstStep, kBracketSteps), kAlongLine);
    if (!(minimum.value < value_)) return;
    PointAlong(minimum.x);
    point_ = trial_;
    value_ = minimum.value;
  }

  const CGradient& search_;
  PointFunction f_;
  const GradientFunction* gradientFunction_;
  std::vector<double> point_, trial_, gradient_, direction_;
  double value_ = 0.0;
};

void CGradient::SetBounds(std::vector<double> lower, std::vector<double> upper) {
  lower_ = std::move(lower);
  upper_ = std::move(upper);
}

SearchResult CGradient::Minimize(PointFunction f, std::vector<double> start) const {
  return Descent(*this, f, nullptr, std::move(start)).Run();
}

SearchResult CGradient::Minimize(PointFunction f, GradientFunction gradient,
                                 std::vector<double> start) const {
  return Descent(*this, f, &gradient, std::move(start)).Run();
}

}  // namespace vrx
