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

// The lanes in which a comparison holds.
#if VRX_LANES > 1
template <class MASK>
VRX_LANE_INLINE unsigned Bits(MASK mask) {
  return LaneBits(mask);
}
#else
VRX_LANE_INLINE unsigned Bits(bool mask) {
  return mask ? 1 : 0;
}
#endif

// A pivot that rounding has left of two colorants that act alike still has a root.
constexpr double kRidge = 1e-11;

// ----------------------------------------------------------------------------------------------------------
// The start

// The linearised objective of a pack of subsets: a quadratic form of what is mixed, and what it scatters or, with a
// substrate, how it goes with what the substrate gives.
template <std::size_t N>
class StartForms {
 public:
  StartForms(const MatchProblem& problem, const uint16_t* const* subset)
      : problem_(problem), hasBase_(problem.baseK != nullptr) {
    const std::size_t columns = Columns();
    for (std::size_t i = 0; i < N; ++i) {
      LaneValues value;
      for (std::size_t j = 0; j <= i; ++j) {
        for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
          value.v[lane] = problem.gram[subset[lane][i] * columns + subset[lane][j]];
        }
        form_[i][j] = value.Get();
      }
      for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
        value.v[lane] = hasBase_ ? -problem.gram[subset[lane][i] * columns + columns - 1]
                                 : problem.scale[subset[lane][i]];
      }
      linear_[i] = value.Get();
    }
  }

  // The minimum: with a substrate the shares, else parts of a mixture of any size.
  void Minimum(Lanes (&b)[N]) const {
    Lanes A[N][N];
    for (std::size_t i = 0; i < N; ++i) {
      for (std::size_t j = 0; j <= i; ++j) A[i][j] = form_[i][j];
      A[i][i] = A[i][i] + A[i][i] * kRidge;
      b[i] = linear_[i];
    }
    SolvePositive<N>(A, b);
  }

  // The minimum with the shares that are `fixed` at `at`. Without a substrate a fixed share grows with the others, so that
  // each of these brings its part of it along.
  void Minimum(const Lanes (&fixed)[N], const Lanes (&at)[N], Lanes (&b)[N]) const {
    Lanes held = 0.0, part[N], along[N];
    for (std::size_t i = 0; i < N; ++i) held += fixed[i] * at[i];
    for (std::size_t i = 0; i < N; ++i) part[i] = fixed[i] * at[i] / (hasBase_ ? Lanes(1.0) : 1.0 - held);
    Lanes scatter = 0.0, square = 0.0;
    for (std::size_t i = 0; i < N; ++i) {
      along[i] = 0.0;
      for (std::size_t j = 0; j < N; ++j) along[i] += part[j] * Form(i, j);
      scatter += part[i] * linear_[i];
      square += part[i] * along[i];
    }
    Lanes A[N][N];
    for (std::size_t i = 0; i < N; ++i) {
      const auto isFixed = fixed[i] > 0.5;
      for (std::size_t j = 0; j < i; ++j) {
        const Lanes shared = hasBase_ ? form_[i][j] : form_[i][j] + along[i] + along[j] + square;
        A[i][j] = Select(isFixed | (fixed[j] > 0.5), Lanes(0.0), shared);
      }
      const Lanes own = hasBase_ ? form_[i][i] : form_[i][i] + 2.0 * along[i] + square;
      A[i][i] = Select(isFixed, Lanes(1.0), own + own * kRidge);
      b[i] = Select(isFixed, Lanes(0.0), hasBase_ ? linear_[i] - along[i] : linear_[i] + scatter);
    }
    SolvePositive<N>(A, b);
    Lanes others = 0.0;
    for (std::size_t i = 0; i < N; ++i) others += b[i];
    for (std::size_t i = 0; i < N; ++i) {
      b[i] = Select(fixed[i] > 0.5, hasBase_ ? part[i] : part[i] * others, b[i]);
    }
  }

  // Its value, for a mixture that scatters 1 or lies over the substrate.
  Lanes Objective(const Lanes (&b)[N]) const {
    Lanes scatter = 0.0, objective = 0.0;
    for (std::size_t i = 0; i < N; ++i) scatter += b[i] * linear_[i];
    for (std::size_t i = 0; i < N; ++i) {
      Lanes sum = form_[i][i] * b[i];
      for (std::size_t j = 0; j < i; ++j) sum += 2.0 * form_[i][j] * b[j];
      objective += sum * b[i];
    }
    const std::size_t columns = Columns();
    if (hasBase_) return objective - 2.0 * scatter + problem_.gram[columns * columns - 1];
    return objective / (scatter * scatter);
  }

 private:
  std::size_t Columns() const { return static_cast<std::size_t>(problem_.colorants) + (hasBase_ ? 1U : 0U); }
  VRX_LANE_INLINE Lanes Form(std::size_t i, std::size_t j) const { return i < j ? form_[j][i] : form_[i][j]; }

  const MatchProblem& problem_;
  bool hasBase_;
  Lanes form_[N][N], linear_[N];  // the lower triangle
};

// What makes shares of a minimum.
template <std::size_t N>
VRX_LANE_INLINE Lanes UnitOf(bool hasBase, const Lanes (&b)[N]) {
  Lanes total = 0.0;
  for (std::size_t i = 0; i < N; ++i) total += b[i];
  return hasBase ? Lanes(1.0) : 1.0 / total;
}

// Where shares of the minimum lie beyond limits, the minimum with these on their limits.
template <std::size_t N>
void StartWithin(const StartForms<N>& forms, bool hasBase, const Lanes (&least)[N], const Lanes (&most)[N],
                 Lanes (&b)[N]) {
  const Lanes unit = UnitOf<N>(hasBase, b);
  Lanes fixed[N], at[N], held[N], beyond = 0.0;
  for (std::size_t i = 0; i < N; ++i) {
    const Lanes share = b[i] * unit;
    const auto below = (least[i] > 0.0) & (share < least[i]);
    const auto above = (share > most[i]) & (most[i] < 1.0);
    at[i] = Select(below, least[i], most[i]);
    fixed[i] = Select(below | above, Lanes(1.0), Lanes(0.0));
    at[i] = Select(below | above, at[i], Lanes(0.0));
    beyond += fixed[i];
  }
  if (Bits(beyond > 0.0) == 0) return;
  forms.Minimum(fixed, at, held);
  // Where all are fixed, or the others would be negative together, the first minimum stays.
  Lanes total = 0.0;
  for (std::size_t i = 0; i < N; ++i) total += held[i];
  const auto isUsable = (beyond > 0.0) & (total > 0.0);
  for (std::size_t i = 0; i < N; ++i) b[i] = Select(isUsable, held[i], b[i]);
}

template <std::size_t N>
void StartPack(const MatchProblem& problem, const uint16_t* const* subset, SubsetSolution* const* solutions) {
  const bool hasBase = problem.baseK != nullptr;
  const StartForms<N> forms(problem, subset);
  Lanes b[N], leastShare[N];
  for (std::size_t i = 0; i < N; ++i) leastShare[i] = hasBase ? 1e-5 : 5e-4;
  forms.Minimum(b);
  if (problem.least != nullptr) {
    Lanes least[N], most[N];
    LaneValues value;
    for (std::size_t i = 0; i < N; ++i) {
      for (std::size_t lane = 0; lane < kLaneCount; ++lane) value.v[lane] = problem.least[subset[lane][i]];
      least[i] = value.Get();
      for (std::size_t lane = 0; lane < kLaneCount; ++lane) value.v[lane] = problem.most[subset[lane][i]];
      most[i] = value.Get();
      leastShare[i] = Select(least[i] > 0.0, least[i], leastShare[i]);
    }
    StartWithin<N>(forms, hasBase, least, most, b);
  }
  const Lanes unit = UnitOf<N>(hasBase, b);
  LaneValues shares[N], value;
  value.Set(forms.Objective(b));
  for (std::size_t i = 0; i < N; ++i)
    b[i] = Max(leastShare[i], b[i] * unit);  // a NaN becomes the least share
  const Lanes whole = UnitOf<N>(hasBase, b);
  for (std::size_t i = 0; i < N; ++i) shares[i].Set(b[i] * whole);
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

// The curves of a pack of subsets, and what their differences and the objective are at some shares.
template <std::size_t N>
class PackCurves {
 public:
  PackCurves(const MatchProblem& problem, bool hasBase) : problem_(problem), hasBase_(hasBase) {}

 protected:
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

  const MatchProblem& problem_;
  bool hasBase_;
  LaneValues K0_[kSamples], S0_[kSamples];
  LaneValues K_[N][kSamples], S_[N][kSamples];
  Lanes R_[kSamples], J_[N][kSamples];
};

// A pack of subsets at work. With a substrate there are as many unknowns as colorants; otherwise the share of one
// colorant, the first where nothing limits them, is what the others leave.
//
// Under limits a share whose step leads beyond one ends there and is held: the step of the others is that of the
// minimum with the held ones on their limits. What is settled is let go where the objective would gain by it (active
// sets).
template <std::size_t N, bool kLimited>
class Steps : private PackCurves<N> {
 public:
  Steps(const MatchProblem& problem, bool hasBase) : PackCurves<N>(problem, hasBase) {
    for (int& loaded : loadedRest_) loaded = -1;
  }

  static constexpr int kMostSteps = kLimited ? 24 : 14;

  // Puts a subset into a lane. Only what differs from the subset that was there is copied.
  void Take(std::size_t lane, const uint16_t* subset, std::size_t colorants, SubsetSolution* solution) {
    const std::size_t rest = hasBase_ ? colorants : kLimited ? RestOf(subset, colorants, *solution) : 0;
    const auto curve = [](const double* curves, std::size_t colorant) {
      return curves + colorant * kSamples;
    };
    const double* K0 = hasBase_ ? problem_.baseK : curve(problem_.K, subset[rest]);
    const double* S0 = hasBase_ ? problem_.baseS : curve(problem_.S, subset[rest]);
    const int loadedRest = hasBase_ ? 0 : subset[rest];
    const bool isNewRest = loadedRest_[lane] != loadedRest;
    if (isNewRest) {
      for (std::size_t w = 0; w < kSamples; ++w) K0_[w].v[lane] = K0[w], S0_[w].v[lane] = S0[w];
    }
    loadedRest_[lane] = loadedRest;
    rest_[lane] = rest;
    for (std::size_t i = 0; i < N; ++i) {
      const std::size_t place = PlaceOf(lane, i);
      x_[i].v[lane] = solution->shares[place];
      step_[i].v[lane] = 0.0;
      if constexpr (kLimited) {
        least_[i].v[lane] = problem_.least[subset[place]];
        most_[i].v[lane] = MostOf(subset[place]);
        held_[i].v[lane] = 0.0;
      }
      if (!isNewRest && loaded_[i][lane] == subset[place]) continue;
      loaded_[i][lane] = subset[place];
      const double* K = curve(problem_.K, subset[place]);
      const double* S = curve(problem_.S, subset[place]);
      for (std::size_t w = 0; w < kSamples; ++w) {
        K_[i][w].v[lane] = hasBase_ ? K[w] : K[w] - K0[w];
        S_[i][w].v[lane] = hasBase_ ? 0.0 : S[w] - S0[w];
      }
    }
    if constexpr (kLimited) {
      restLeast_.v[lane] = hasBase_ ? 0.0 : problem_.least[subset[rest]];
      restMost_.v[lane] = hasBase_ ? kNoLimit : MostOf(subset[rest]);
      freed_.v[lane] = 0.0;
    }
    last_.v[lane] = 1e300;
    steps_[lane] = 0;
    strikes_.v[lane] = 0.0;
    solution_[lane] = solution;
  }

  // One step of every lane. Lanes that ended have written their solution.
  void Advance(std::size_t colorants) {
    Lanes x[N];
    for (std::size_t i = 0; i < N; ++i) x[i] = x_[i].Get();
    this->Evaluate(x);
    Lanes A[N][N], g[N], objective, y[kMostRows], dy[kMostRows][N];
    this->Project(y, dy);
    this->Normal(y, dy, A, g, objective);
    Lanes step[N];
    if constexpr (kLimited) {
      SolveLimited(x, A, g, step);
    } else {
      for (std::size_t i = 0; i < N; ++i) step[i] = -g[i];
      SolvePositive<N>(A, step);
    }
    Move(x, step, objective, y, dy, A, g, colorants);
  }

  bool HasEnded(std::size_t lane) const { return ended_[lane]; }

 private:
  static constexpr double kNoLimit = 1e100;

  // The place in its subset of a lane's unknown.
  std::size_t PlaceOf(std::size_t lane, std::size_t i) const { return i + (i >= rest_[lane] ? 1 : 0); }

  // The largest share of a colorant. One of 1 is none: where a share exceeds it, another has run to 0.
  double MostOf(uint16_t colorant) const {
    const double most = problem_.most[colorant];
    return most < 1.0 ? most : kNoLimit;
  }

  // The colorant that takes what the others leave: the first without limits, since a subset whose share of it runs to 0 is
  // left as any other; where all have limits, the one that is furthest from them.
  std::size_t RestOf(const uint16_t* subset, std::size_t colorants, const SubsetSolution& solution) const {
    std::size_t best = 0;
    double room = -1.0;
    for (std::size_t i = 0; i < colorants; ++i) {
      const double share = solution.shares[i];
      const double least = problem_.least[subset[i]], most = problem_.most[subset[i]];
      if (least == 0.0 && most >= 1.0) return i;
      const double below = share - least, above = most < 1.0 ? most - share : below;
      if (Min(below, above) > room) room = Min(below, above), best = i;
    }
    return best;
  }

  // The step to the minimum of the quadratic model with the held shares where they are; those that it would take beyond
  // a limit go to it, and the others to the minimum that is left then.
  void SolveLimited(const Lanes (&x)[N], const Lanes (&A)[N][N], const Lanes (&g)[N],
                    Lanes (&step)[N]) const {
    Lanes fixed[N], moves[N];
    for (std::size_t i = 0; i < N; ++i) fixed[i] = held_[i].Get(), moves[i] = 0.0;
    SolveFree(A, g, fixed, moves, step);
    Lanes beyond = 0.0;
    for (std::size_t i = 0; i < N; ++i) {
      const Lanes least = least_[i].Get(), most = most_[i].Get(), next = x[i] + step[i];
      const auto below = (next < least) & (least > 0.0);
      const auto above = next > most;
      moves[i] = Select(below, least - x[i], Select(above, most - x[i], moves[i]));
      fixed[i] = Select(below | above, Lanes(1.0), fixed[i]);
      beyond = Select(below | above, Lanes(1.0), beyond);
    }
    if (Bits(beyond > 0.0) != 0) SolveFree(A, g, fixed, moves, step);
  }

  // The step of the shares that are not fixed, those having moved.
  void SolveFree(const Lanes (&A)[N][N], const Lanes (&g)[N], const Lanes (&fixed)[N],
                 const Lanes (&moves)[N], Lanes (&step)[N]) const {
    Lanes B[N][N];
    for (std::size_t i = 0; i < N; ++i) {
      step[i] = -g[i];
      for (std::size_t j = 0; j < N; ++j) {
        const Lanes element = i < j ? A[j][i] : A[i][j];
        step[i] = Select(fixed[j] > 0.5, step[i] - element * moves[j], step[i]);
        if (j < i) B[i][j] = Select((fixed[i] > 0.5) | (fixed[j] > 0.5), Lanes(0.0), element);
      }
      B[i][i] = Select(fixed[i] > 0.5, Lanes(1.0), A[i][i]);
    }
    for (std::size_t i = 0; i < N; ++i) step[i] = Select(fixed[i] > 0.5, moves[i], step[i]);
    SolvePositive<N>(B, step);
  }

  // Takes the step, half of the last one back where the objective rose, or nine tenths of the way to the bound that it
  // would cross. Ends what has settled, left twice running, or taken too many steps.
  void Move(const Lanes (&x)[N], Lanes (&step)[N], Lanes objective, const Lanes* y, const Lanes (*dy)[N],
            const Lanes (&A)[N][N], const Lanes (&g)[N], std::size_t colorants) {
    constexpr double kSettled = 1e-3;
    constexpr double kRise = 1.0 + 1e-9;
    constexpr double kMostStrikes = 4.0, kVanishing = 1e-5;
    const auto rose = objective > kRise * last_.Get();
    Lanes way = 1.0, largest = 0.0, rest = 1.0, restStep = 0.0, size = hasBase_ ? 0.0 : 1.0, limit = 2.0;
    for (std::size_t i = 0; i < N; ++i) {
      step[i] = Select(rose, -0.5 * step_[i].Get(), step[i]);
      const Lanes toZero = Select(x[i] + step[i] > 0.0, way, Min(way, 0.9 * (x[i] / (-step[i]))));
      way = Select(HasLeast(i), way, toZero);
      largest = Max(largest, Abs(step[i]));
      rest -= x[i];
      restStep -= step[i];
      if (hasBase_) size += x[i];
      if constexpr (kLimited) limit = Min(limit, WayToLimit(i, x[i], step[i]));
    }
    if (!hasBase_) way = Select(rest + restStep > 0.0, way, Min(way, 0.9 * (rest / (-restStep))));
    Lanes blocked = 0.0;  // by a limit of what is left
    if constexpr (kLimited) {
      const Lanes least = restLeast_.Get(), most = restMost_.Get(), next = rest + restStep;
      const Lanes toLeast = 0.9 * ((rest - least) / (-restStep)), toMost = 0.9 * ((most - rest) / restStep);
      const Lanes before = way;
      way = Select((least > 0.0) & (next < least), Min(way, toLeast), way);
      way = Select(next > most, Min(way, toMost), way);
      blocked = Select((way < before) & (way < limit), Lanes(1.0), blocked);
      way = Min(way, limit);
    }
    const auto left = (!rose) & (way < 1.0) & (way < limit);
    const Lanes strikes = Select(rose, strikes_.Get(), Select(left, strikes_.Get() + 1.0, 0.0));
    auto settled = (!rose) & (way >= 1.0) & (largest <= kSettled * size);
    LaneValues moved[N], taken[N];
    Lanes least = hasBase_ ? Lanes(1.0) : rest + way * restStep;
    for (std::size_t i = 0; i < N; ++i) {
      Lanes next = x[i] + way * step[i];
      if constexpr (kLimited) next = Hold(i, step[i], rose, next);
      least = Select(HasLeast(i), least, Min(least, next));
      taken[i].Set(next - x[i]);
      if constexpr (!kLimited) taken[i].Set(way * step[i]);
      x_[i].Set(next);
      moved[i] = x_[i];
    }
    if constexpr (kLimited) settled = settled & !(LetGo(A, g, taken, settled) > 0.0);
    const auto atBound = left & ((strikes >= kMostStrikes) | (least < kVanishing * size));
    for (std::size_t i = 0; i < N; ++i) step_[i] = taken[i];
    strikes_.Set(strikes);
    last_.Set(Select(rose, last_.Get(), objective));
    const unsigned settledBits = Bits(settled), boundBits = Bits(atBound),
                   finiteBits = Bits(objective < 1e290), blockedBits = Bits(blocked > 0.0);
    bool isAnyEnd = false;
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      ++steps_[lane];
      const bool isSettled = (settledBits >> lane & 1) != 0, isFinite = (finiteBits >> lane & 1) != 0;
      const bool isAtBound = (boundBits >> lane & 1) != 0, isBlocked = (blockedBits >> lane & 1) != 0;
      ended_[lane] = isSettled || isAtBound || steps_[lane] >= kMostSteps || !isFinite;
      if (!ended_[lane] || solution_[lane] == nullptr) continue;
      solution_[lane]->end = isSettled                 ? SubsetEnd::kInside
                             : isAtBound && !isBlocked ? SubsetEnd::kAtBound
                                                       : SubsetEnd::kUnsolved;
      isAnyEnd = true;
    }
    if (isAnyEnd) Report(objective, y, dy, g, moved, taken, colorants);
  }

  // True where a share has a least other than 0.
  VRX_LANE_INLINE auto HasLeast(std::size_t i) const {
    return kLimited ? least_[i].Get() > 0.0 : Lanes(0.0) > 1.0;
  }

  // How much of its step a share may take before it meets a limit other than 0; more than 1 where it meets none.
  VRX_LANE_INLINE Lanes WayToLimit(std::size_t i, Lanes x, Lanes step) const {
    const Lanes least = least_[i].Get(), most = most_[i].Get(), next = x + step;
    const Lanes toLeast = (least - x) / step, toMost = (most - x) / step;
    return Select((next < least) & (least > 0.0), toLeast, Select(next > most, toMost, Lanes(2.0)));
  }

  // Where a share ends, on its limit when it comes as far as that; there it is held. A step back lets go of what it
  // moved.
  template <class MASK>
  VRX_LANE_INLINE Lanes Hold(std::size_t i, Lanes step, MASK rose, Lanes next) {
    const Lanes least = least_[i].Get(), most = most_[i].Get();
    constexpr double kNear = 1e-12;  // a step to the limit itself
    const auto low = (least > 0.0) & (next <= least + kNear * least) & (step <= 0.0);
    const auto high = (next >= most - kNear * most) & (step >= 0.0);
    const auto isBack = rose & (step != 0.0);
    const Lanes held = Select(low | high, Lanes(1.0), held_[i].Get());
    held_[i].Set(Select(isBack, Lanes(0.0), held));
    return Select(isBack, next, Select(low, least, Select(high, most, next)));
  }

  // Lets go, in lanes that have settled, of held shares from whose limit the objective falls; at most four times a
  // subset. 1 in lanes where it did.
  template <class MASK>
  Lanes LetGo(const Lanes (&A)[N][N], const Lanes (&g)[N], const LaneValues (&taken)[N], MASK settled) {
    constexpr double kMostFreed = 4.0, kGain = 1e-6;
    const auto may = settled & (freed_.Get() < kMostFreed);
    Lanes freed = 0.0;
    for (std::size_t i = 0; i < N; ++i) {
      Lanes slope = g[i];
      for (std::size_t j = 0; j < N; ++j) slope += (i < j ? A[j][i] : A[i][j]) * taken[j].Get();
      const Lanes x = x_[i].Get(), least = least_[i].Get(), most = most_[i].Get();
      const Lanes gain = Select(x - least < most - x, -slope, slope);
      const auto leaves = may & (held_[i].Get() > 0.5) & (gain > kGain * A[i][i]);
      held_[i].Set(Select(leaves, Lanes(0.0), held_[i].Get()));
      freed = Select(leaves, Lanes(1.0), freed);
    }
    freed_.Set(freed_.Get() + freed);
    return freed;
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
    for (std::size_t lane = 0; lane < kLaneCount; ++lane) {
      SubsetSolution* solution = solution_[lane];
      if (!ended_[lane] || solution == nullptr) continue;
      double rest = 1.0;
      for (std::size_t i = 0; i < N; ++i) {
        solution->shares[PlaceOf(lane, i)] = moved[i].v[lane];
        rest -= moved[i].v[lane];
      }
      if (rest_[lane] < colorants) solution->shares[rest_[lane]] = rest;
      solution->worst = worsts.v[lane];
      solution->objective = objectives.v[lane];
    }
  }

  using Curves = PackCurves<N>;
  using Curves::hasBase_;
  using Curves::K0_;
  using Curves::K_;
  using Curves::problem_;
  using Curves::Rows;
  using Curves::S0_;
  using Curves::S_;

  LaneValues x_[N], step_[N], last_, strikes_;
  LaneValues least_[N], most_[N], held_[N], restLeast_, restMost_,
      freed_;  // of limited subsets
  int steps_[kLaneCount] = {};
  bool ended_[kLaneCount] = {};
  std::size_t rest_[kLaneCount] =
      {};  // the place of the colorant that is no unknown; behind the last with a substrate
  int loadedRest_[kLaneCount],
      loaded_[N][kLaneCount];  // whose curves are in a lane
  SubsetSolution* solution_[kLaneCount] = {};
};

// Keeps all lanes busy: one that has ended takes the next subset.
template <std::size_t N, bool kLimited>
void SolveAll(const MatchProblem& problem, std::size_t colorants, const uint16_t* subsets, std::size_t count,
              SubsetSolution* solutions) {
  if (count == 0) return;
  Steps<N, kLimited> steps(problem, problem.baseK != nullptr);
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
  constexpr SolveUnknowns kUnknowns[] = {&SolveAll<1, false>, &SolveAll<2, false>, &SolveAll<3, false>,
                                         &SolveAll<4, false>, &SolveAll<5, false>, &SolveAll<6, false>};
  constexpr SolveUnknowns kLimited[] = {&SolveAll<1, true>, &SolveAll<2, true>, &SolveAll<3, true>,
                                        &SolveAll<4, true>, &SolveAll<5, true>, &SolveAll<6, true>};
  const int32_t unknowns = problem.baseK != nullptr ? size : size - 1;
  if (unknowns == 0) return EvaluateSingles(problem, subsets, count, solutions);
  const SolveUnknowns solve = (problem.least != nullptr ? kLimited : kUnknowns)[unknowns - 1];
  solve(problem, static_cast<std::size_t>(size), subsets, count, solutions);
}

}  // namespace

template <>
const SubsetKernels& KernelsOf<SubsetKernels, VRX_LANES>() {
  static constexpr SubsetKernels kKernels = {&Start, &Solve};
  return kKernels;
}

}  // namespace vrx
