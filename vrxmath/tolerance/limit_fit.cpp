#include <vrxmath/tolerance/limit_fit.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

// Between two totals, nearer to neither; doubles that are neighbours have nothing between them.
double Between(double lower, double upper) {
  const double middle = lower + (upper - lower) / 2.0;
  return middle < upper ? middle : lower;
}

std::vector<std::size_t> OrderOf(std::span<const double> totals) {
  std::vector<std::size_t> order(totals.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return totals[i]; });
  return order;
}

}  // namespace

LimitFit FitLimit(std::span<const double> totals, std::span<const std::uint8_t> accepted) {
  if (totals.size() != accepted.size()) throw CInvalidArgException();
  for (const double total : totals) {
    if (!(total >= 0.0)) throw CInvalidArgException();
  }
  if (totals.empty()) return {};
  const std::vector<std::size_t> order = OrderOf(totals);
  // From the limit that accepts nothing upwards, one total after the other.
  LimitFit now;
  for (const std::uint8_t yes : accepted) now.wronglyRejected += yes != 0 ? 1U : 0U;
  LimitFit best = now;
  std::size_t accepts = 0;                     // how many the best limit accepts
  bool hasBest = totals[order.front()] > 0.0;  // a total of 0 is within every limit
  for (std::size_t i = 0; i < order.size(); ++i) {
    accepted[order[i]] != 0 ? --now.wronglyRejected : ++now.wronglyAccepted;
    const bool isLast = i + 1 == order.size();
    if (!isLast && totals[order[i + 1]] == totals[order[i]]) continue;
    const bool isBetter = !hasBest || now.Wrong() < best.Wrong() ||
                          (now.Wrong() == best.Wrong() && now.wronglyAccepted < best.wronglyAccepted);
    if (!isBetter) continue;
    best = now;
    accepts = i + 1;
    hasBest = true;
  }
  if (accepts == order.size()) {
    best.limit = totals[order.back()];
  } else {
    best.limit = Between(accepts == 0 ? 0.0 : totals[order[accepts - 1]], totals[order[accepts]]);
  }
  return best;
}

double Stress(std::span<const double> computed, std::span<const double> visual) {
  if (computed.size() != visual.size()) throw CInvalidArgException();
  double squares = 0.0, visualSquares = 0.0, products = 0.0;
  for (std::size_t i = 0; i < computed.size(); ++i) {
    squares += computed[i] * computed[i];
    visualSquares += visual[i] * visual[i];
    products += computed[i] * visual[i];
  }
  if (!(squares > 0.0 && visualSquares > 0.0)) return kUnset;
  const double rest = 1.0 - products * products / (squares * visualSquares);
  return 100.0 * std::sqrt(rest > 0.0 ? rest : 0.0);
}

}  // namespace vrx
