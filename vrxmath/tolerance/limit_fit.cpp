#include <vrxmath/tolerance/limit_fit.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

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

std::vector<CDifferenceSettings> UsualLimitChoices() {
  std::vector<CDifferenceSettings> choices;
  for (const DifferenceSystem& system : DifferenceSystems()) {
    CDifferenceSettings settings = DefaultSettings(system.number);
    settings.ownFormula = true;
    const std::string_view first = system.parameterNames[0];
    if (first != "l" && first != "kL") {
      choices.push_back(settings);
      continue;
    }
    for (const double lightness : {1.0, 1.5, 2.0}) {
      settings.parameters[0] = lightness;
      choices.push_back(settings);
    }
  }
  return choices;
}

std::vector<SystemLimitFit> FitLimits(std::span<const CDifferenceSettings> choices,
                                      std::span<const std::vector<double>> totals,
                                      std::span<const std::uint8_t> accepted) {
  if (choices.empty() || totals.size() % choices.size() != 0) throw CInvalidArgException();
  std::vector<double> visual;
  visual.reserve(accepted.size());
  for (const std::uint8_t yes : accepted) visual.push_back(yes != 0 ? 0.0 : 1.0);
  const std::size_t illuminants = totals.size() / choices.size();
  std::vector<SystemLimitFit> fits;
  for (std::size_t i = 0; i < totals.size(); ++i) {
    SystemLimitFit& one = fits.emplace_back();
    one.difference = choices[i / illuminants];
    one.illuminant = i % illuminants;
    if (!std::ranges::all_of(totals[i], [](double total) { return total >= 0.0; })) continue;
    one.fit = FitLimit(totals[i], accepted);
    one.stress = Stress(totals[i], visual);
  }
  std::ranges::stable_sort(fits, {}, [](const SystemLimitFit& one) {
    return std::tuple(IsUnset(one.fit.limit), one.fit.Wrong(), one.stress);
  });
  return fits;
}

}  // namespace vrx
