#include <vrxmath/matching/subset_kernels.h>

#include <vrxmath/foundation/ks_data.h>
#include <vrxmath/numeric/lane_kernels.h>
#include <vrxmath/numeric/lanes.h>
#if defined(__GNUC__)
#include <vrxmath/numeric/pack.h>
#endif

namespace vrx {
namespace {

#if VRX_LANES > 1
struct Unit;
using Lanes = Pack<VRX_LANES, Unit>;
#else
using Lanes = double;
#endif

constexpr std::size_t kLaneCount = VRX_LANES;
constexpr std::size_t kMostRows = std::size_t{3} * 32;
constexpr std::size_t kSamples = kWavelengths;

// The lanes of a pack one by one, through memory.
struct LaneValues {
  double v[kLaneCount];
  VRX_LANE_INLINE Lanes Get() const { return Load<Lanes>(v); }
  VRX_LANE_INLINE void Set(Lanes x) { Store(x, v); }
};

// Solves A x = b for positive definite A, of which the lower triangle is given and overwritten (Cholesky).
template <std::size_t N>
VRX_LANE_INLINE void SolvePositive(Lanes (&A)[N][N], Lanes (&b)[N]) {
  for (std::size_t j = 0; j < N; ++j) {
    for (std::size_t k = 0; k < j; ++k) A[j][j] -= A[j][k] * A[j][k];
    A[j][j] = 1.0 / Sqrt(A[j][j]);  // the inverse of the factor's diagonal
    for (std::size_t i = j + 1; i < N; ++i) {
      for (std::size_t k = 0; k < j; ++k) A[i][j] -= A[i][k] * A[j][k];
      A[i][j] *= A[j][j];
    }
  }
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t k = 0; k < i; ++k) b[i] -= A[i][k] * b[k];
    b[i] *= A[i][i];
  }
  for (std::size_t i = N; i-- > 0;) {
    for (std::size_t k = i + 1; k < N; ++k) b[i] -= A[k][i] * b[k];
    b[i] *= A[i][i];
  }
}

// A pivot that rounding has left of two colorants that act alike still has a root.
constexpr double kRidge = 1e-11;

// ----------------------------------------------------------------------------------------------------------
// The start

template <std::size_t N>
void StartPack(const MatchProblem& problem, const uint16_t* const* subset, SubsetSolution* const* solutions) {
  const bool hasBase = problem.baseK != nullptr;
  const auto columns = static_cast<std::size_t>(problem.colorants) + (hasBase ? 1u : 0u);
  Lanes A[N][N], b[N], linear[N], form[N][N];
  for (std::size_t i = 0; i < N; ++i) {
    LaneValues value;
    for (std::size_t j = 0; j <= i; ++j) {
      for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
        value.v[lane] = problem.gram[subset[lane][i] * columns + subset[lane][j]];
      }
      form[i][j] = A[i][j] = value.Get();
    }
    A[i][i] = A[i][i] + A[i][i] * kRidge;
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      value.v[lane] =
          hasBase ? -problem.gram[subset[lane][i] * columns + columns - 1] : problem.scale[subset[lane][i]];
    }
    linear[i] = b[i] = value.Get();
  }
  SolvePositive<N>(A, b);
  // With a substrate the minimum itself; else a direction, scaled to a mixture that scatters 1, for the objective, and
  // to shares that make up 1.
  Lanes scatter = 0.0, total = 0.0, objective = 0.0;
  for (std::size_t i = 0; i < N; ++i) scatter += b[i] * linear[i];
  for (std::size_t i = 0; i < N; ++i) {
    Lanes sum = form[i][i] * b[i];
    for (std::size_t j = 0; j < i; ++j) sum += 2.0 * form[i][j] * b[j];
    objective += sum * b[i];
  }
  if (hasBase) {
    objective = objective - 2.0 * scatter + problem.gram[columns * columns - 1];
  } else {
    objective = objective / (scatter * scatter);
  }
  const double least = hasBase ? 1e-5 : 5e-4;
  for (std::size_t i = 0; i < N; ++i) total += b[i];
  const Lanes unit = hasBase ? Lanes(1.0) : 1.0 / total;
  total = 0.0;
  for (std::size_t i = 0; i < N; ++i) {
    b[i] = Max(Lanes(least), b[i] * unit);  // a NaN becomes the least share
    total += b[i];
  }
  const Lanes whole = hasBase ? Lanes(1.0) : 1.0 / total;
  LaneValues shares[N], value;
  for (std::size_t i = 0; i < N; ++i) shares[i].Set(b[i] * whole);
  value.Set(objective);
  for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
    for (std::size_t i = 0; i < N; ++i) solutions[lane]->shares[i] = shares[i].v[lane];
    solutions[lane]->objective = value.v[lane];
  }
}

template <std::size_t N>
void StartAll(const MatchProblem& problem, const uint16_t* subsets, std::size_t count,
              SubsetSolution* solutions) {
  SubsetSolution unused;
  for (std::size_t from = 0; from < count; from += kLaneCount) {
    const uint16_t* subset[kLaneCount];
    SubsetSolution* solution[kLaneCount];
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      const bool isLane = from + lane < count;
      subset[lane] = subsets + (isLane ? from + lane : from) * N;
      solution[lane] = isLane ? solutions + from + lane : &unused;
    }
    StartPack<N>(problem, subset, solution);
  }
}

// ----------------------------------------------------------------------------------------------------------
// Gauss-Newton steps

// A pack of subsets at work. With a substrate there are as many unknowns as colorants; otherwise the share of the first
// colorant is what the others leave.
template <std::size_t N>
class Steps {
 public:
  Steps(const MatchProblem& problem, bool hasBase) : problem_(problem), hasBase_(hasBase) {}

  static constexpr int kMostSteps = 14;

  // Puts a subset into a lane. Only what differs from the subset that was there is copied.
  void Take(std::size_t lane, const uint16_t* subset, std::size_t colorants, SubsetSolution* solution) {
    const uint16_t* const before = subset_[lane];
    const bool isNewFirst = before == nullptr || (!hasBase_ && before[0] != subset[0]);
    const auto curve = [](const double* curves, std::size_t colorant) {
      return curves + colorant * kSamples;
    };
    const double* K0 = hasBase_ ? problem_.baseK : curve(problem_.K, subset[0]);
    const double* S0 = hasBase_ ? problem_.baseS : curve(problem_.S, subset[0]);
    if (isNewFirst) {
      for (std::size_t w = 0; w < kSamples; ++w) K0_[w].v[lane] = K0[w], S0_[w].v[lane] = S0[w];
    }
    const std::size_t shift = colorants - N;  // 1 when the first colorant is no unknown
    for (std::size_t i = 0; i < N; ++i) {
      if (!isNewFirst && before[i + shift] == subset[i + shift]) continue;
      const double* K = curve(problem_.K, subset[i + shift]);
      const double* S = curve(problem_.S, subset[i + shift]);
      for (std::size_t w = 0; w < kSamples; ++w) {
        K_[i][w].v[lane] = hasBase_ ? K[w] : K[w] - K0[w];
        S_[i][w].v[lane] = hasBase_ ? 0.0 : S[w] - S0[w];
      }
    }
    for (std::size_t i = 0; i < N; ++i) {
      x_[i].v[lane] = solution->shares[i + shift];
      step_[i].v[lane] = 0.0;
    }
    last_.v[lane] = 1e300;
    steps_[lane] = 0;
    strikes_.v[lane] = 0.0;
    subset_[lane] = subset;
    solution_[lane] = solution;
  }

  // One step of every lane. Lanes that ended have written their solution.
  void Advance(std::size_t colorants) {
    Lanes x[N];
    for (std::size_t i = 0; i < N; ++i) x[i] = x_[i].Get();
    Evaluate(x);
    Lanes A[N][N], g[N], objective, y[kMostRows], dy[kMostRows][N];
    Project(y, dy);
    Normal(y, dy, A, g, objective);
    Lanes step[N];
    for (std::size_t i = 0; i < N; ++i) step[i] = -g[i];
    SolvePositive<N>(A, step);
    Move(x, step, objective, y, dy, g, colorants);
  }

  bool HasEnded(std::size_t lane) const { return ended_[lane]; }

 private:
  std::size_t Rows() const { return static_cast<std::size_t>(problem_.rows); }

  // Reflectance less the target's, and its derivatives by the unknowns.
  void Evaluate(const Lanes (&x)[N]) {
    const Lanes surface = problem_.surface, k2 = problem_.k2;
    for (std::size_t w = 0; w < kSamples; ++w) {
      Lanes K = K0_[w].Get(), S = S0_[w].Get();
      for (std::size_t i = 0; i < N; ++i) {
        K += x[i] * K_[i][w].Get();
        S += x[i] * S_[i][w].Get();
      }
      // R = S / (K + S + b) with b = sqrt(K (K + 2 S)), measured as surface R / (1 - k2 R): one root, one quotient.
      const Lanes b = Max(Sqrt(K * (K + 2.0 * S)), Lanes(1e-30));
      const Lanes sum = b + K + S;
      const Lanes d = sum - k2 * S;
      const Lanes inverse = surface / (b * d * d);
      R_[w] = S * (b * d * inverse) - problem_.target[w];
      const Lanes slope = sum * inverse;
      const Lanes ofS = slope * K, ofK = slope * S;
      for (std::size_t i = 0; i < N; ++i) J_[i][w] = ofS * S_[i][w].Get() - ofK * K_[i][w].Get();
    }
  }

  // The rows: three sums side by side, each from the shortest wavelength up.
  void Project(Lanes* y, Lanes (*dy)[N]) const {
    for (std::size_t row = 0; row < Rows(); row += 3) {
      const double* weights = problem_.weights + row * kSamples;
      Lanes sum[3], slope[3][N];
      for (std::size_t k = 0; k < 3; ++k) {
        sum[k] = problem_.offset[row + k];
        for (std::size_t i = 0; i < N; ++i) slope[k][i] = 0.0;
      }
      for (std::size_t w = 0; w < kSamples; ++w) {
        for (std::size_t k = 0; k < 3; ++k) {
          const Lanes weight = weights[k * kSamples + w];
          sum[k] += weight * R_[w];
          for (std::size_t i = 0; i < N; ++i) slope[k][i] += weight * J_[i][w];
        }
      }
      for (std::size_t k = 0; k < 3; ++k) {
        y[row + k] = sum[k];
        for (std::size_t i = 0; i < N; ++i) dy[row + k][i] = slope[k][i];
      }
    }
  }

  // The normal equations of the objective, with a ridge, its gradient and its value.
  void Normal(const Lanes* y, const Lanes (*dy)[N], Lanes (&A)[N][N], Lanes (&g)[N], Lanes& objective) const {
    objective = 0.0;
    for (std::size_t i = 0; i < N; ++i) {
      g[i] = 0.0;
      for (std::size_t j = 0; j <= i; ++j) A[i][j] = 0.0;
    }
    for (std::size_t row = 0; row < Rows(); ++row) {
      const Lanes importance = problem_.importance[row / 3];
      objective += importance * (y[row] * y[row]);
      for (std::size_t i = 0; i < N; ++i) {
        const Lanes weighted = importance * dy[row][i];
        g[i] += weighted * y[row];
        for (std::size_t j = 0; j <= i; ++j) A[i][j] += weighted * dy[row][j];
      }
    }
    if (problem_.curveWeights != nullptr) {
      for (std::size_t w = 0; w < kSamples; ++w) {
        const Lanes weight = problem_.curveWeights[w];
        objective += weight * (R_[w] * R_[w]);
        for (std::size_t i = 0; i < N; ++i) {
          const Lanes weighted = weight * J_[i][w];
          g[i] += weighted * R_[w];
          for (std::size_t j = 0; j <= i; ++j) A[i][j] += weighted * J_[j][w];
        }
      }
    }
    Lanes trace = 0.0;
    for (std::size_t i = 0; i < N; ++i) trace += A[i][i];
    for (std::size_t i = 0; i < N; ++i) A[i][i] += kRidge * trace + 1e-300;
  }

  // Takes the step, half of the last one back where the objective rose, or nine tenths of the way to the bound that it
  // would cross. Ends what has settled, left twice running, or taken too many steps.
  void Move(const Lanes (&x)[N], Lanes (&step)[N], Lanes objective, const Lanes* y, const Lanes (*dy)[N],
            const Lanes (&g)[N], std::size_t colorants) {
    constexpr double kSettled = 1e-3;
    constexpr double kRise = 1.0 + 1e-9;
    constexpr double kMostStrikes = 4.0, kVanishing = 1e-5;
    const auto rose = objective > kRise * last_.Get();
    Lanes way = 1.0, largest = 0.0, rest = 1.0, restStep = 0.0, size = hasBase_ ? 0.0 : 1.0;
    for (std::size_t i = 0; i < N; ++i) {
      step[i] = Select(rose, -0.5 * step_[i].Get(), step[i]);
      way = Select(x[i] + step[i] > 0.0, way, Min(way, 0.9 * (x[i] / (-step[i]))));
      largest = Max(largest, Abs(step[i]));
      rest -= x[i];
      restStep -= step[i];
      if (hasBase_) size += x[i];
    }
    if (!hasBase_) way = Select(rest + restStep > 0.0, way, Min(way, 0.9 * (rest / (-restStep))));
    const auto left = (!rose) & (way < 1.0);
    const Lanes strikes = Select(rose, strikes_.Get(), Select(left, strikes_.Get() + 1.0, 0.0));
    const auto settled = (!rose) & (!left) & (largest <= kSettled * size);
    LaneValues moved[N], taken[N];
    Lanes least = hasBase_ ? Lanes(1.0) : rest + way * restStep;
    for (std::size_t i = 0; i < N; ++i) {
      const Lanes next = x[i] + way * step[i];
      least = Min(least, next);
      taken[i].Set(way * step[i]);
      x_[i].Set(next);
      moved[i] = x_[i];
    }
    const auto atBound = left & ((strikes >= kMostStrikes) | (least < kVanishing * size));
    for (std::size_t i = 0; i < N; ++i) step_[i] = taken[i];
    strikes_.Set(strikes);
    last_.Set(Select(rose, last_.Get(), objective));
    const unsigned settledBits = Bits(settled), boundBits = Bits(atBound),
                   finiteBits = Bits(objective < 1e290);
    bool isAnyEnd = false;
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      ++steps_[lane];
      const bool isSettled = (settledBits >> lane & 1) != 0, isFinite = (finiteBits >> lane & 1) != 0;
      const bool isAtBound = (boundBits >> lane & 1) != 0;
      ended_[lane] = isSettled || isAtBound || steps_[lane] >= kMostSteps || !isFinite;
      if (!ended_[lane] || solution_[lane] == nullptr) continue;
      solution_[lane]->end = isSettled   ? SubsetEnd::kInside
                             : isAtBound ? SubsetEnd::kAtBound
                                         : SubsetEnd::kUnsolved;
      isAnyEnd = true;
    }
    if (isAnyEnd) Report(objective, y, dy, g, moved, taken, colorants);
  }

  static VRX_LANE_INLINE unsigned Bits(bool mask) { return mask ? 1 : 0; }
  template <class MASK>
  static VRX_LANE_INLINE unsigned Bits(MASK mask) {
    return LaneBits(mask);
  }

  // Writes the solutions of the lanes that ended, with what their last step promises to first order.
  void Report(Lanes objective, const Lanes* y, const Lanes (*dy)[N], const Lanes (&g)[N],
              const LaneValues (&moved)[N], const LaneValues (&taken)[N], std::size_t colorants) {
    Lanes worst = 0.0, gained = 0.0;
    for (std::size_t i = 0; i < N; ++i) gained += g[i] * taken[i].Get();
    for (std::size_t row = 0; row < Rows(); row += 3) {
      Lanes square = 0.0;
      for (std::size_t k = row; k < row + 3; ++k) {
        Lanes difference = y[k];
        for (std::size_t i = 0; i < N; ++i) difference += dy[k][i] * taken[i].Get();
        square += difference * difference;
      }
      worst = Max(worst, square);
    }
    LaneValues worsts, objectives;
    worsts.Set(worst);
    objectives.Set(objective + gained);
    const std::size_t shift = colorants - N;
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      SubsetSolution* solution = solution_[lane];
      if (!ended_[lane] || solution == nullptr) continue;
      double rest = 1.0;
      for (std::size_t i = 0; i < N; ++i) {
        solution->shares[i + shift] = moved[i].v[lane];
        rest -= moved[i].v[lane];
      }
      if (shift == 1) solution->shares[0] = rest;
      solution->worst = worsts.v[lane];
      solution->objective = objectives.v[lane];
    }
  }

  const MatchProblem& problem_;
  bool hasBase_;
  LaneValues K0_[kSamples], S0_[kSamples];
  LaneValues K_[N][kSamples], S_[N][kSamples];
  Lanes R_[kSamples], J_[N][kSamples];
  LaneValues x_[N], step_[N], last_, strikes_;
  int steps_[kLaneCount] = {};
  bool ended_[kLaneCount] = {};
  const uint16_t* subset_[kLaneCount] = {};
  SubsetSolution* solution_[kLaneCount] = {};
};

// Keeps all lanes busy: one that has ended takes the next subset.
template <std::size_t N>
void SolveAll(const MatchProblem& problem, std::size_t colorants, const uint16_t* subsets, std::size_t count,
              SubsetSolution* solutions) {
  if (count == 0) return;
  Steps<N> steps(problem, problem.baseK != nullptr);
  const auto take = [&](std::size_t lane, std::size_t i) {
    steps.Take(lane, subsets + i * colorants, colorants, solutions + i);
  };
  std::size_t next = 0, atWork = 0;
  bool isIdle[kLaneCount];
  SubsetSolution unused = solutions[0];
  for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
    isIdle[lane] = next >= count;
    if (isIdle[lane]) {
      steps.Take(lane, subsets, colorants, &unused);
    } else {
      take(lane, next++);
      ++atWork;
    }
  }
  while (atWork > 0) {
    steps.Advance(colorants);
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      if (!steps.HasEnded(lane)) continue;
      if (!isIdle[lane] && next < count) {
        take(lane, next++);
        continue;
      }
      if (!isIdle[lane]) --atWork;
      isIdle[lane] = true;
      steps.Take(lane, subsets, colorants, &unused);
    }
  }
}

// A single colorant without a substrate has no unknown: it is what it is.
void EvaluateSingles(const MatchProblem& problem, const uint16_t* subsets, std::size_t count,
                     SubsetSolution* solutions) {
  const auto rows = static_cast<std::size_t>(problem.rows);
  for (std::size_t n = 0; n < count; ++n) {
    SubsetSolution& solution = solutions[n];
    double R[kSamples];
    solution.shares[0] = 1.0;
    solution.objective = 0.0;
    for (std::size_t w = 0; w < kSamples; ++w) {
      const double K = problem.K[subsets[n] * kSamples + w], S = problem.S[subsets[n] * kSamples + w];
      const double b = Sqrt(K * (K + 2.0 * S));
      R[w] = problem.surface * S / (b + K + S - problem.k2 * S) - problem.target[w];
      if (problem.curveWeights != nullptr) solution.objective += problem.curveWeights[w] * (R[w] * R[w]);
    }
    solution.worst = 0.0;
    for (std::size_t row = 0; row < rows; row += 3) {
      double square = 0.0;
      for (std::size_t k = row; k < row + 3; ++k) {
        double sum = problem.offset[k];
        for (std::size_t w = 0; w < kSamples; ++w) sum += problem.weights[k * kSamples + w] * R[w];
        square += sum * sum;
      }
      solution.objective += problem.importance[row / 3] * square;
      solution.worst = Max(solution.worst, square);
    }
    solution.end = solution.objective < 1e290 ? SubsetEnd::kInside : SubsetEnd::kUnsolved;
  }
}

void Start(const MatchProblem& problem, int32_t size, const uint16_t* subsets, std::size_t count,
           SubsetSolution* solutions) {
  using StartSize = void (*)(const MatchProblem&, const uint16_t*, std::size_t, SubsetSolution*);
  constexpr StartSize kSizes[] = {&StartAll<1>, &StartAll<2>, &StartAll<3>,
                                  &StartAll<4>, &StartAll<5>, &StartAll<6>};
  kSizes[size - 1](problem, subsets, count, solutions);
}

void Solve(const MatchProblem& problem, int32_t size, const uint16_t* subsets, std::size_t count,
           SubsetSolution* solutions) {
  using SolveUnknowns =
      void (*)(const MatchProblem&, std::size_t, const uint16_t*, std::size_t, SubsetSolution*);
  constexpr SolveUnknowns kUnknowns[] = {&SolveAll<1>, &SolveAll<2>, &SolveAll<3>,
                                         &SolveAll<4>, &SolveAll<5>, &SolveAll<6>};
  const int32_t unknowns = problem.baseK != nullptr ? size : size - 1;
  if (unknowns == 0) return EvaluateSingles(problem, subsets, count, solutions);
  kUnknowns[unknowns - 1](problem, static_cast<std::size_t>(size), subsets, count, solutions);
}

}  // namespace

template <>
const SubsetKernels& KernelsOf<SubsetKernels, VRX_LANES>() {
  static constexpr SubsetKernels kKernels = {&Start, &Solve};
  return kKernels;
}

}  // namespace vrx
