#include <vrxmath/matching/subset_refiner.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrx {

bool MoveWithinLimits(const double* least, const double* most, std::size_t size, bool isWhole,
                      double* shares) {
  double total = 0.0, room = 0.0, excess = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    shares[i] = std::min(std::max(shares[i], least[i]), most[i]);
    total += shares[i];
    room += most[i] - shares[i];
    excess += shares[i] - least[i];
  }
  if (!isWhole) return true;
  const double missing = 1.0 - total;
  constexpr double kRounding = 1e-12;
  if (missing > room + kRounding || -missing > excess + kRounding) return false;
  for (std::size_t i = 0; i < size; ++i) {
    if (missing > 0.0 && room > 0.0) shares[i] += missing * (most[i] - shares[i]) / room;
    if (missing < 0.0 && excess > 0.0) shares[i] += missing * (shares[i] - least[i]) / excess;
  }
  return true;
}

// Adds what a colorant's share absorbs and scatters, and gives the derivatives by the share.
void SubsetRefiner::AddCurves(uint16_t colorant, double share, SpectralCurve& K, SpectralCurve& S,
                              SpectralCurve& dK, SpectralCurve& dS) const {
  const CColorantLevelArray& levels = offer_.colorants[colorant].component->GetLevels();
  const CColorantLevel* upper = levels.begin();
  const double concentration = share * offer_.mostLoad;  // of the whole
  while (upper != levels.end() && upper->concentration < concentration) ++upper;
  const bool isBetween = upper != levels.begin() && upper != levels.end();
  const CColorantLevel& high = upper == levels.end() ? *(upper - 1) : *upper;
  const CColorantLevel& low = isBetween ? *(upper - 1) : high;
  const double width = high.concentration - low.concentration;
  const double t = isBetween ? (concentration - low.concentration) / width : 0.0;
  for (int32_t w = 0; w < kWavelengths; ++w) {
    const auto i = static_cast<std::size_t>(w);
    const double K0 = low.values[0].absorption[w], K1 = high.values[0].absorption[w];
    const double S0 = low.values[0].scattering[w], S1 = high.values[0].scattering[w];
    const double unitK = K0 + t * (K1 - K0), unitS = S0 + t * (S1 - S0);
    K[i] += share * unitK;
    S[i] += share * unitS;
    dK[i] = isBetween ? unitK + concentration * (K1 - K0) / width : unitK;
    dS[i] = isBetween ? unitS + concentration * (S1 - S0) / width : unitS;
  }
  if (problem_.baseK != nullptr) {  // the substrate alone scatters
    for (std::size_t i = 0; i < kWavelengths; ++i) S[i] = problem_.baseS[i], dS[i] = 0.0;
  }
}

void SubsetRefiner::Mix(const uint16_t* subset, std::size_t size, const Vector& shares, SpectralCurve& K,
                        SpectralCurve& S, std::array<SpectralCurve, kMost>& dK,
                        std::array<SpectralCurve, kMost>& dS) const {
  if (problem_.baseK != nullptr) {
    std::copy(problem_.baseK, problem_.baseK + kWavelengths, K.begin());
    std::copy(problem_.baseS, problem_.baseS + kWavelengths, S.begin());
  }
  for (std::size_t i = 0; i < size; ++i) AddCurves(subset[i], shares[i], K, S, dK[i], dS[i]);
}

void SubsetRefiner::CurveAt(const uint16_t* subset, std::size_t size, const Vector& shares,
                            SpectralCurve& R) const {
  SpectralCurve K{}, S{};
  std::array<SpectralCurve, kMost> dK, dS;
  Mix(subset, size, shares, K, S, dK, dS);
  for (std::size_t w = 0; w < kWavelengths; ++w) {
    const double sum = std::sqrt(K[w] * (K[w] + 2.0 * S[w])) + K[w] + S[w];
    R[w] = problem_.surface * S[w] / (sum - problem_.k2 * S[w]) - problem_.target[w];
  }
}

void SubsetRefiner::SetRows(const uint16_t* subset, std::size_t size, const Vector& shares,
                            Rows& rows) const {
  SpectralCurve K{}, S{};
  std::array<SpectralCurve, kMost> dS;
  std::array<SpectralCurve, kMost>& dK = rows.dR;
  Mix(subset, size, shares, K, S, dK, dS);
  for (std::size_t w = 0; w < kWavelengths; ++w) {
    const double b = std::max(std::sqrt(K[w] * (K[w] + 2.0 * S[w])), 1e-30);
    const double sum = b + K[w] + S[w];
    const double d = sum - problem_.k2 * S[w];
    rows.R[w] = problem_.surface * S[w] / d - problem_.target[w];
    const double slope = problem_.surface * sum / (b * d * d);
    for (std::size_t i = 0; i < size; ++i) dK[i][w] = slope * (K[w] * dS[i][w] - S[w] * dK[i][w]);
  }
  for (std::size_t row = 0; row < static_cast<std::size_t>(problem_.rows); ++row) {
    const double* weights = problem_.weights + row * kWavelengths;
    double y = problem_.offset[row];
    Vector dy{};
    for (std::size_t w = 0; w < kWavelengths; ++w) {
      y += weights[w] * rows.R[w];
      for (std::size_t i = 0; i < size; ++i) dy[i] += weights[w] * dK[i][w];
    }
    rows.y[row] = y;
    rows.dy[row] = dy;
  }
}

void SubsetRefiner::Evaluate(const uint16_t* subset, std::size_t size, const Vector& shares,
                             const double* prices, Point& point) const {
  Rows rows;
  SetRows(subset, size, shares, rows);
  point = {};
  const auto addRow = [&](double importance, double y, const Vector& dy) {
    point.objective += importance * y * y;
    for (std::size_t i = 0; i < size; ++i) {
      point.gradient[i] += importance * dy[i] * y;
      for (std::size_t j = 0; j < size; ++j) point.form[i][j] += importance * dy[i] * dy[j];
    }
  };
  double square = 0.0;
  for (std::size_t row = 0; row < static_cast<std::size_t>(problem_.rows); ++row) {
    const double y = rows.y[row];
    addRow(problem_.importance[row / 3], y, rows.dy[row]);
    square = row % 3 == 0 ? y * y : square + y * y;
    point.worst = std::max(point.worst, square);
  }
  for (std::size_t i = 0; prices != nullptr && i < size; ++i) {
    point.objective += prices[i] * shares[i];
    point.gradient[i] += 0.5 * prices[i];  // gradients are halves, as of squares
  }
  for (std::size_t w = 0; problem_.curveWeights != nullptr && w < kWavelengths; ++w) {
    Vector dy{};
    for (std::size_t i = 0; i < size; ++i) dy[i] = rows.dR[i][w];
    addRow(problem_.curveWeights[w], rows.R[w], dy);
  }
}

void SubsetRefiner::LampsAt(const uint16_t* subset, std::size_t size, const Vector& shares,
                            std::vector<LampForm>& lamps, SpectralCurve& R) const {
  Rows rows;
  SetRows(subset, size, shares, rows);
  R = rows.R;
  lamps.assign(static_cast<std::size_t>(problem_.rows) / 3, {});
  for (std::size_t row = 0; row < static_cast<std::size_t>(problem_.rows); ++row) {
    LampForm& lamp = lamps[row / 3];
    const double y = rows.y[row];
    const Vector& dy = rows.dy[row];
    lamp.square += y * y;
    for (std::size_t i = 0; i < size; ++i) {
      lamp.gradient[i] += dy[i] * y;
      for (std::size_t j = 0; j < size; ++j) lamp.form[i][j] += dy[i] * dy[j];
    }
  }
}

SubsetRefiner::Limits SubsetRefiner::LimitsOf(const uint16_t* subset, std::size_t size) const {
  Limits limits{};
  for (std::size_t i = 0; i < size; ++i) {
    limits.least[i] = offer_.colorants[subset[i]].least;
    limits.most[i] = offer_.colorants[subset[i]].most;
    if (problem_.baseK != nullptr && limits.most[i] == 1.0) limits.most[i] = HUGE_VAL;
  }
  return limits;
}

// The step of the free shares, those fixed having moved by `fixed`: the normal equations, bordered by the condition that
// steps add up to 0 when shares make up a whole. Gaussian elimination with row pivots.
bool SubsetRefiner::SolveFree(const Point& point, const std::array<bool, kMost>& isFixed, std::size_t size,
                              const Vector& fixed, Vector& step, double& multiplier) const {
  std::array<std::size_t, kMost> free{};
  std::size_t n = 0;
  double trace = 0.0, fixedTotal = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    if (!isFixed[i]) free[n++] = i;
    if (isFixed[i]) fixedTotal += fixed[i];
    trace += point.form[i][i];
  }
  const bool isWhole = problem_.baseK == nullptr;
  const std::size_t unknowns = n + (isWhole ? 1 : 0);
  step = fixed;
  multiplier = 0.0;
  if (n == 0) return true;
  std::array<std::array<double, kMost + 2>, kMost + 1> A{};
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c < n; ++c) A[r][c] = point.form[free[r]][free[c]];
    constexpr double kRidge = 1e-13;
    A[r][r] += kRidge * trace + 1e-300;
    A[r][unknowns] = -point.gradient[free[r]];
    for (std::size_t i = 0; i < size; ++i) {
      if (isFixed[i]) A[r][unknowns] -= point.form[free[r]][i] * fixed[i];
    }
    if (isWhole) A[r][n] = A[n][r] = trace;
  }
  if (isWhole) A[n][unknowns] = -trace * fixedTotal;
  for (std::size_t k = 0; k < unknowns; ++k) {
    std::size_t pivot = k;
    for (std::size_t r = k + 1; r < unknowns; ++r) {
      if (std::fabs(A[r][k]) > std::fabs(A[pivot][k])) pivot = r;
    }
    std::swap(A[k], A[pivot]);
    if (!(std::fabs(A[k][k]) > 0.0)) return false;
    for (std::size_t r = k + 1; r < unknowns; ++r) {
      const double factor = A[r][k] / A[k][k];
      for (std::size_t c = k; c <= unknowns; ++c) A[r][c] -= factor * A[k][c];
    }
  }
  std::array<double, kMost + 1> x{};
  for (std::size_t k = unknowns; k-- > 0;) {
    double sum = A[k][unknowns];
    for (std::size_t c = k + 1; c < unknowns; ++c) sum -= A[k][c] * x[c];
    x[k] = sum / A[k][k];
  }
  for (std::size_t r = 0; r < n; ++r) step[free[r]] = x[r];
  if (isWhole) multiplier = trace * x[n];
  return true;
}

bool SubsetRefiner::Minimise(const Point& point, const Limits& limits, std::size_t size, const Vector& shares,
                             Vector& step) const {
  std::array<bool, kMost> isFixed{};
  step = {};
  for (std::size_t tries = 0; tries < 8 * kMost; ++tries) {
    Vector wanted;
    double multiplier = 0.0;
    if (!SolveFree(point, isFixed, size, step, wanted, multiplier)) return false;
    double way = 1.0;
    std::size_t blocks = size;
    for (std::size_t i = 0; i < size; ++i) {
      const double move = wanted[i] - step[i];
      const double limit = move > 0.0 ? limits.most[i] : limits.least[i];
      const double room = (limit - shares[i]) - step[i];
      if (isFixed[i] || std::fabs(move) <= std::fabs(room) || move == 0.0) continue;
      if (room / move < way) way = std::max(room / move, 0.0), blocks = i;
    }
    for (std::size_t i = 0; i < size; ++i) {
      if (!isFixed[i]) step[i] += way * (wanted[i] - step[i]);
    }
    if (blocks < size) {
      isFixed[blocks] = true;
      continue;
    }
    // Where leaving a limit would gain, the one that gains most is left.
    std::size_t leaves = size;
    double largest = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
      if (!isFixed[i]) continue;
      double slope = point.gradient[i] + multiplier;
      for (std::size_t j = 0; j < size; ++j) slope += point.form[i][j] * step[j];
      const bool isLow = shares[i] + step[i] - limits.least[i] < limits.most[i] - shares[i] - step[i];
      const double gain = isLow ? -slope : slope;
      constexpr double kFlat = 1e-12;
      if (gain > largest && gain > kFlat * point.form[i][i]) largest = gain, leaves = i;
    }
    if (leaves == size) return true;
    isFixed[leaves] = false;
  }
  return true;
}

void SubsetRefiner::Solve(const uint16_t* subset, int32_t count, SubsetSolution& solution,
                          const double* prices) const {
  const auto size = static_cast<std::size_t>(count);
  const Limits limits = LimitsOf(subset, size);
  Vector shares{};
  std::copy_n(solution.shares, size, shares.begin());
  solution.end = SubsetEnd::kUnsolved;
  const bool isWhole = problem_.baseK == nullptr;
  if (!MoveWithinLimits(limits.least.data(), limits.most.data(), size, isWhole, shares.data())) return;
  constexpr int kMostSteps = 60;
  constexpr double kSettled = 1e-13;
  Point point;
  Evaluate(subset, size, shares, prices, point);
  for (int taken = 0; taken < kMostSteps; ++taken) {
    Vector step;
    if (!(point.objective < 1e290) || !Minimise(point, limits, size, shares, step)) return;
    double largest = 0.0;
    for (std::size_t i = 0; i < size; ++i) largest = std::max(largest, std::fabs(step[i]));
    if (largest <= kSettled) break;
    Point next;
    Vector moved{};
    double way = 1.0;
    for (int halves = 0; halves < 30; ++halves, way *= 0.5) {
      for (std::size_t i = 0; i < size; ++i) {
        moved[i] = std::min(std::max(shares[i] + way * step[i], limits.least[i]), limits.most[i]);
      }
      Evaluate(subset, size, moved, prices, next);
      if (next.objective <= point.objective) break;
    }
    if (!(next.objective < point.objective)) break;
    shares = moved;
    point = next;
  }
  solution.end = SubsetEnd::kInside;
  for (std::size_t i = 0; i < size; ++i) {
    solution.shares[i] = shares[i];
    if (!(shares[i] > 0.0)) solution.end = SubsetEnd::kAtBound;
  }
  solution.worst = point.worst;
  solution.objective = point.objective;
}

}  // namespace vrx
