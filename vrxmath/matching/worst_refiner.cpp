#include <vrxmath/matching/worst_refiner.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vrx {
namespace {

using Vector = SubsetRefiner::Vector;

double SquareAfter(const LampForm& lamp, std::size_t size, const Vector& step, double way = 1.0) {
  double linear = 0.0, quadratic = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    linear += lamp.gradient[i] * step[i];
    double sum = 0.0;
    for (std::size_t j = 0; j < size; ++j) sum += lamp.form[i][j] * step[j];
    quadratic += step[i] * sum;
  }
  return std::max(lamp.square + way * (2.0 * linear + way * quadratic), 0.0);
}

double LargestAfter(const std::vector<LampForm>& lamps, std::size_t size, const Vector& step,
                    double way = 1.0) {
  double largest = 0.0;
  for (const LampForm& lamp : lamps) largest = std::max(largest, SquareAfter(lamp, size, step, way));
  return largest;
}

SubsetRefiner::Point Weighed(const std::vector<LampForm>& lamps, const std::vector<double>& weights,
                             std::size_t size) {
  SubsetRefiner::Point point{};
  for (std::size_t l = 0; l < lamps.size(); ++l) {
    for (std::size_t i = 0; i < size; ++i) {
      point.gradient[i] += weights[l] * lamps[l].gradient[i];
      for (std::size_t j = 0; j < size; ++j) point.form[i][j] += weights[l] * lamps[l].form[i][j];
    }
  }
  return point;
}

double PriceOf(const double* prices, std::size_t size, const Vector& shares) {
  double price = 0.0;
  for (std::size_t i = 0; i < size; ++i) price += prices[i] * shares[i];
  return price;
}

Vector Moved(const Vector& shares, const Vector& step, double way, const SubsetRefiner::Limits& limits,
             std::size_t size) {
  Vector moved{};
  for (std::size_t i = 0; i < size; ++i) {
    moved[i] = std::min(std::max(shares[i] + way * step[i], limits.least[i]), limits.most[i]);
  }
  return moved;
}

void Put(const Vector& shares, std::size_t size, SubsetSolution& solution) {
  solution.end = SubsetEnd::kInside;
  for (std::size_t i = 0; i < size; ++i) {
    solution.shares[i] = shares[i];
    if (!(shares[i] > 0.0)) solution.end = SubsetEnd::kAtBound;
  }
}

}  // namespace

WorstRefiner::State WorstRefiner::StateAt(const uint16_t* subset, std::size_t size,
                                          const Vector& shares) const {
  State state;
  state.shares = shares;
  SpectralCurve R;
  refiner_.LampsAt(subset, size, shares, state.lamps, R);
  std::array<double, kMostLamps> differences{};
  target_.DifferencesOf(R, differences);
  for (std::size_t l = 0; l < state.lamps.size(); ++l) {
    LampForm& lamp = state.lamps[l];
    const double square = differences[l] * differences[l];
    state.worst = differences[l] <= state.worst ? state.worst : differences[l];
    constexpr double kMostScale = 16.0, kTiny = 1e-12;
    if (!(lamp.square > kTiny) || !(square > kTiny)) continue;
    const double scale = std::min(std::max(square / lamp.square, 1.0 / kMostScale), kMostScale);
    lamp.square *= scale;
    for (std::size_t i = 0; i < size; ++i) {
      lamp.gradient[i] *= scale;
      for (double& element : lamp.form[i]) element *= scale;
    }
  }
  return state;
}

// The largest square of the minimum under weights that add up to 1 is at least what these weights make of the squares
// (duality); the steps end when the two meet.
bool WorstRefiner::LevelStep(const State& state, const Limits& limits, std::size_t size,
                             std::vector<double>& weights, Vector& step) const {
  constexpr int kMostSteps = 60;
  constexpr double kMet = 1e-3;
  double best = LargestAfter(state.lamps, size, {});
  bool isBetter = false;
  for (int taken = 0; taken < kMostSteps; ++taken) {
    Vector next{};
    if (!refiner_.Minimise(Weighed(state.lamps, weights, size), limits, size, state.shares, next)) break;
    double largest = 0.0, bound = 0.0, total = 0.0;
    for (std::size_t l = 0; l < weights.size(); ++l) {
      const double square = SquareAfter(state.lamps[l], size, next);
      largest = std::max(largest, square);
      bound += weights[l] * square;
      weights[l] *= std::sqrt(square);
      total += weights[l];
    }
    if (largest < best) best = largest, step = next, isBetter = true;
    if (!(total > 0.0) || largest - bound <= kMet * largest) break;
    for (double& weight : weights) weight /= total;
  }
  return isBetter;
}

double WorstRefiner::Level(const uint16_t* subset, int32_t count, SubsetSolution& solution) const {
  const auto size = static_cast<std::size_t>(count);
  const Limits limits = refiner_.LimitsOf(subset, size);
  Vector shares{};
  std::copy_n(solution.shares, size, shares.begin());
  State state = StateAt(subset, size, shares);
  constexpr int kMostModels = 4;
  constexpr double kExact = 1e-4, kLittle = 1e-3;
  std::vector<double> weights(state.lamps.size(), 1.0 / static_cast<double>(state.lamps.size()));
  for (int model = 0; model < kMostModels && state.worst > kExact; ++model) {
    Vector step{};
    if (!LevelStep(state, limits, size, weights, step)) break;
    const double before = state.worst;
    double way = 1.0;
    for (int halves = 0; halves < 4 && !(state.worst < before); ++halves, way *= 0.5) {
      State next = StateAt(subset, size, Moved(state.shares, step, way, limits, size));
      if (next.worst < before) state = next;
    }
    if (!(state.worst < before * (1.0 - kLittle))) break;
  }
  Put(state.shares, size, solution);
  return state.worst;
}

bool WorstRefiner::CheapStep(const State& state, const Limits& limits, std::size_t size, const double* prices,
                             double tolerance, Vector& step) const {
  constexpr int kMostSteps = 50;
  constexpr double kMet = 1e-4;
  const double most = tolerance * tolerance;
  double highest = 0.0;
  for (std::size_t i = 0; i < size; ++i) highest = std::max(highest, std::fabs(prices[i]));
  if (!(highest > 0.0) || !(most > 0.0)) return false;
  std::vector<double> weights(state.lamps.size(), 0.1 * highest / most);
  double least = 0.0;  // of what is gained, which is negative
  bool isFound = false;
  Vector last{};
  const auto consider = [&](const Vector& tried) {
    if (LargestAfter(state.lamps, size, tried) > most) return;
    const double gain = PriceOf(prices, size, tried);
    if (gain < least) least = gain, step = tried, isFound = true;
  };
  for (int taken = 0; taken < kMostSteps; ++taken) {
    SubsetRefiner::Point point = Weighed(state.lamps, weights, size);
    for (std::size_t i = 0; i < size; ++i) point.gradient[i] += 0.5 * prices[i];
    if (!refiner_.Minimise(point, limits, size, state.shares, last)) break;
    double largest = 0.0;
    for (std::size_t l = 0; l < weights.size(); ++l) {
      constexpr double kSlowest = 0.05;  // an illuminant that does not bind may come to do so
      const double square = SquareAfter(state.lamps[l], size, last);
      largest = std::max(largest, square);
      weights[l] *= std::max(std::sqrt(square / most), kSlowest);
    }
    consider(last);
    if (std::fabs(largest - most) <= kMet * most) break;
  }
  // From the present shares, which are within the tolerance, as far towards the last ones as it goes.
  double within = 0.0, beyond = 1.0;
  for (int halves = 0; halves < 30; ++halves) {
    const double way = 0.5 * (within + beyond);
    (LargestAfter(state.lamps, size, last, way) <= most ? within : beyond) = way;
  }
  for (double& move : last) move *= within;
  consider(last);
  return isFound;
}

double WorstRefiner::Cheapen(const uint16_t* subset, int32_t count, const double* prices, double tolerance,
                             SubsetSolution& solution) const {
  const auto size = static_cast<std::size_t>(count);
  const Limits limits = refiner_.LimitsOf(subset, size);
  Vector shares{};
  std::copy_n(solution.shares, size, shares.begin());
  State state = StateAt(subset, size, shares);
  constexpr int kMostModels = 6;
  constexpr double kLittle = 1e-5,
                   kInside = 1.0 - 1e-7;  // what rounding may add stays within the tolerance
  for (int model = 0; model < kMostModels && state.worst <= tolerance; ++model) {
    Vector step{};
    if (!CheapStep(state, limits, size, prices, kInside * tolerance, step)) break;
    double within = 0.0, beyond = 0.0, way = 1.0;
    State best = state;
    for (int halves = 0; halves < 10; ++halves) {
      State next = StateAt(subset, size, Moved(state.shares, step, way, limits, size));
      const bool isWithin = next.worst <= kInside * tolerance;
      if (isWithin) best = next;
      (isWithin ? within : beyond) = way;
      if (beyond == 0.0) break;
      way = 0.5 * (within + beyond);
    }
    const double before = PriceOf(prices, size, state.shares), after = PriceOf(prices, size, best.shares);
    if (!(after < before)) break;
    state = best;
    if (before - after <= kLittle * std::fabs(before)) break;
  }
  Put(state.shares, size, solution);
  return state.worst;
}

double WorstRefiner::LeastPrice(const uint16_t* subset, int32_t count, const double* prices, double tolerance,
                                const SubsetSolution& solution) const {
  const auto size = static_cast<std::size_t>(count);
  const Limits limits = refiner_.LimitsOf(subset, size);
  Vector shares{};
  std::copy_n(solution.shares, size, shares.begin());
  State state = StateAt(subset, size, shares);
  const double most = tolerance * tolerance;
  if (LargestAfter(state.lamps, size, {}) > most) {
    std::vector<double> weights(state.lamps.size(), 1.0 / static_cast<double>(state.lamps.size()));
    Vector step{};
    constexpr double kNear = 1.05;  // to first order
    if (!LevelStep(state, limits, size, weights, step)) return HUGE_VAL;
    const double largest = LargestAfter(state.lamps, size, step);
    if (largest > kNear * most) return HUGE_VAL;
    return PriceOf(prices, size, Moved(shares, step, 1.0, limits, size));
  }
  Vector step{};
  if (!CheapStep(state, limits, size, prices, tolerance, step)) return PriceOf(prices, size, shares);
  return PriceOf(prices, size, Moved(shares, step, 1.0, limits, size));
}

}  // namespace vrx
