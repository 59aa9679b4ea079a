#include <vrxmath/matching/calibration_fit.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vrx {
namespace {

constexpr double kLeastScale = 0.02;  // of a constant near 0, for the pull
constexpr double kPull = 1e-6;        // a constant off by its own size counts as a difference of 0.1 %

}  // namespace

double CalibrationSurface::Reflectance(double ratio) const {
  return SaundersonToMeasured(KubelkaMunkReflectance(ratio), k1, k2, mode);
}

double CalibrationSurface::Slope(double ratio) const {
  constexpr double kLargest = 0.999;
  const double R = std::min(KubelkaMunkReflectance(ratio), kLargest);
  const double surface =
      mode == SaundersonMode::kNone ? 1.0 : (1.0 - k1) * (1.0 - k2) / ((1.0 - k2 * R) * (1.0 - k2 * R));
  return surface * 2.0 * R * R / (1.0 - R * R);
}

// The mixtures that take part, with what they show.
struct CalibrationFit::Readings {
  const std::vector<double>& ratios;
  std::vector<double> reflectances;
  std::size_t omitted;
};

CalibrationFit::CalibrationFit(std::size_t components, const std::vector<CalibrationMixture>& mixtures,
                               const CalibrationSurface& surface)
    : components_(components),
      unknowns_(2 * components),
      mixtures_(mixtures),
      surface_(surface),
      mean_(components, 0.0),
      order_(unknowns_),
      least_(unknowns_, 0.0),
      scale_(unknowns_, 1.0),
      H_(unknowns_ * unknowns_),
      g_(unknowns_) {
  std::vector<std::size_t> partners(components, 0);
  std::vector<char> meets(components * components, 0);
  for (const CalibrationMixture& mixture : mixtures) {
    for (const auto& [a, share] : mixture.shares) {
      mean_[a] += share / static_cast<double>(mixtures.size());
      for (const auto& other : mixture.shares) {
        char& has = meets[a * components + other.first];
        if (!has) ++partners[a];
        has = 1;
      }
    }
  }
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  std::stable_sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
    return partners[a % components] < partners[b % components];
  });
  std::fill(least_.begin() + static_cast<std::ptrdiff_t>(components), least_.end(), kLeastScattering);
}

double CalibrationFit::SumOf(std::size_t mixture, const double* constants) const {
  double sum = 0.0;
  for (const auto& [component, share] : mixtures_[mixture].shares) sum += share * constants[component];
  return sum;
}

void CalibrationFit::Clear() {
  std::fill(H_.begin(), H_.end(), 0.0);
  std::fill(g_.begin(), g_.end(), 0.0);
}

// Adds the square of ofK x (sum of c K) + ofS x (sum of c S) - value.
void CalibrationFit::AddRow(std::size_t mixture, double ofK, double ofS, double value) {
  const double weight = mixtures_[mixture].weight;
  for (const auto& [a, shareA] : mixtures_[mixture].shares) {
    double* const rowK = &H_[a * unknowns_];
    double* const rowS = &H_[(components_ + a) * unknowns_];
    for (const auto& [b, shareB] : mixtures_[mixture].shares) {
      const double product = weight * shareA * shareB;
      rowK[b] += product * ofK * ofK;
      rowK[components_ + b] += product * ofK * ofS;
      rowS[b] += product * ofK * ofS;
      rowS[components_ + b] += product * ofS * ofS;
    }
    g_[a] += weight * shareA * ofK * value;
    g_[components_ + a] += weight * shareA * ofS * value;
  }
}

void CalibrationFit::AddPull(const std::vector<double>& towards, double factor) {
  for (std::size_t j = 0; j < unknowns_; ++j) {
    const double weight = factor / (scale_[j] * scale_[j]);
    H_[j * unknowns_ + j] += weight;
    g_[j] += weight * towards[j];
  }
}

std::vector<double> CalibrationFit::Linear(const std::vector<double>& ratios, std::size_t omitted,
                                           const std::vector<double>& guess) {
  Clear();
  for (std::size_t i = 0; i < mixtures_.size(); ++i) {
    if (i == omitted) continue;
    const double slope = surface_.Slope(ratios[i]);
    AddRow(i, slope, -slope * ratios[i], 0.0);
  }
  // Only ratios show. One more equation, that mixtures scatter 1 on average, gives a unit and bends nothing: whatever it
  // weighs, its solutions differ by a factor.
  const double* const means = mean_.data();
  for (std::size_t a = 0; a < components_; ++a) {
    for (std::size_t b = 0; b < components_; ++b) {
      H_[(components_ + a) * unknowns_ + components_ + b] += means[a] * means[b];
    }
    g_[components_ + a] += means[a];
  }
  std::vector<double> x = guess.empty() ? std::vector<double>(unknowns_, 0.0) : guess;
  Minimise(x);
  double scattering = 0.0;
  for (std::size_t a = 0; a < components_; ++a) scattering += means[a] * x[components_ + a];
  for (double& value : x) value /= scattering;
  return x;
}

double CalibrationFit::Cost(const Readings& readings, const std::vector<double>& x) const {
  double cost = 0.0;
  for (std::size_t i = 0; i < mixtures_.size(); ++i) {
    if (i == readings.omitted) continue;
    const double ratio = SumOf(i, x.data()) / SumOf(i, x.data() + components_);
    const double difference = surface_.Reflectance(ratio) - readings.reflectances[i];
    cost += mixtures_[i].weight * difference * difference;
  }
  return cost;
}

std::vector<double> CalibrationFit::Refined(const std::vector<double>& ratios, std::size_t omitted,
                                            const std::vector<double>& start,
                                            const std::vector<double>& guess) {
  Readings readings{ratios, {}, omitted};
  for (const double ratio : ratios) readings.reflectances.push_back(surface_.Reflectance(ratio));
  for (std::size_t j = 0; j < unknowns_; ++j) scale_[j] = std::max(start[j], kLeastScale);
  const auto costOf = [&](const std::vector<double>& x) {
    double cost = Cost(readings, x);
    for (std::size_t j = 0; j < unknowns_; ++j) {
      const double off = (x[j] - start[j]) / scale_[j];
      cost += kPull * off * off;
    }
    return cost;
  };
  std::vector<double> x = start;
  for (std::size_t j = 0; j < unknowns_; ++j) x[j] = std::max(x[j], least_[j]);
  // The linear equations once more, now weighted so that their residuals are those of reflectance.
  constexpr int kReweighted = 3;
  for (int step = 0; guess.empty() && step < kReweighted; ++step) {
    Clear();
    for (std::size_t i = 0; i < mixtures_.size(); ++i) {
      if (i == omitted) continue;
      const double slope = surface_.Slope(ratios[i]) / SumOf(i, x.data() + components_);
      AddRow(i, slope, -slope * ratios[i], 0.0);
    }
    AddPull(start, kPull);
    Minimise(x);
  }
  if (!guess.empty()) x = guess;
  double cost = costOf(x);
  double damping = 0.0;
  constexpr int kMostSteps = 40;
  for (int step = 0; step < kMostSteps; ++step) {
    Clear();
    for (std::size_t i = 0; i < mixtures_.size(); ++i) {
      if (i == omitted) continue;
      const double S = SumOf(i, x.data() + components_);
      const double ratio = SumOf(i, x.data()) / S;
      const double slope = surface_.Slope(ratio) / S;
      AddRow(i, slope, -slope * ratio, surface_.Reflectance(ratio) - readings.reflectances[i]);
    }
    AddPull(start, kPull);
    if (damping > 0.0) AddPull(x, damping);
    std::vector<double> next = x;
    Minimise(next);
    double largest = 0.0;
    for (std::size_t j = 0; j < unknowns_; ++j) {
      largest = std::max(largest, std::fabs(next[j] - x[j]) / std::max(x[j], kLeastScale));
    }
    const double nextCost = costOf(next);
    if (!(nextCost < cost)) {
      if (largest < 1e-6 || damping > 1e3) break;
      damping = std::max(10.0 * damping, 1e-6);
      continue;
    }
    x = next;
    cost = nextCost;
    damping *= 0.1;
    if (damping < 1e-9) damping = 0.0;
    constexpr double kSmallStep = 1e-6;
    if (largest < kSmallStep) break;
  }
  return x;
}

void CalibrationFit::Minimise(std::vector<double>& x) {
  std::vector<char> isFree(unknowns_), isBarred(unknowns_, 0);
  for (std::size_t j = 0; j < unknowns_; ++j) {
    x[j] = std::max(x[j], least_[j]);
    isFree[j] = x[j] > least_[j] ? 1 : 0;
  }
  std::vector<double> solution(unknowns_);
  // Goes towards the minimum over those that are free, holding one at a time that meets its bound.
  const auto descend = [&] {
    for (std::size_t tries = 0; tries <= unknowns_; ++tries) {
      SolveFree(isFree, solution);
      double step = 1.0;
      std::size_t blocks = unknowns_;
      for (std::size_t j = 0; j < unknowns_; ++j) {
        if (!isFree[j] || solution[j] > least_[j]) continue;
        const double above = x[j] - least_[j];
        const double part = above > 0.0 ? above / (x[j] - solution[j]) : 0.0;
        if (part < step || blocks == unknowns_) step = std::min(step, part), blocks = j;
      }
      for (std::size_t j = 0; j < unknowns_; ++j) {
        if (isFree[j]) x[j] += step * (solution[j] - x[j]);
      }
      if (blocks == unknowns_) return;
      isFree[blocks] = 0;
      x[blocks] = least_[blocks];
    }
  };
  descend();
  for (std::size_t step = 0; step < 4 * unknowns_; ++step) {
    const std::size_t enters = SteepestBound(isFree, isBarred, x);
    if (enters == unknowns_) return;
    isFree[enters] = 1;
    descend();
    if (!isFree[enters]) isBarred[enters] = 1;  // it went in and out: rounding alone
  }
}

// The held unknown along which the sum of squares falls most; the number of unknowns when there is none.
std::size_t CalibrationFit::SteepestBound(const std::vector<char>& isFree, const std::vector<char>& isBarred,
                                          const std::vector<double>& x) const {
  constexpr double kFlat = 1e-10;
  double steepest = kFlat;
  std::size_t found = unknowns_;
  for (std::size_t j = 0; j < unknowns_; ++j) {
    const double* const row = &H_[j * unknowns_];
    if (isFree[j] || isBarred[j] || !(row[j] > 0.0)) continue;
    double slope = g_[j];
    for (std::size_t i = 0; i < unknowns_; ++i) slope -= row[i] * x[i];
    slope /= std::sqrt(row[j]);
    if (slope > steepest) steepest = slope, found = j;
  }
  return found;
}

// Cholesky's factors, by columns, of the normal equations of those that are free, the others at their bounds. Most
// components meet few others, so most of a column is 0 and left out. What depends on others stays at its bound.
void CalibrationFit::SolveFree(const std::vector<char>& isFree, std::vector<double>& solution) {
  free_.clear();
  held_.clear();
  for (const std::size_t j : order_) {
    solution[j] = least_[j];
    if (isFree[j]) {
      free_.push_back(j);
    } else if (least_[j] > 0.0) {
      held_.push_back(j);
    }
  }
  const std::size_t n = free_.size();
  factor_.resize(n * n);
  right_.resize(n);
  for (std::size_t k = 0; k < n; ++k) {
    const double* const row = &H_[free_[k] * unknowns_];
    for (std::size_t i = k; i < n; ++i) factor_[k * n + i] = row[free_[i]];
    right_[k] = g_[free_[k]];
    for (const std::size_t j : held_) right_[k] -= row[j] * least_[j];
  }
  constexpr double kDependent = 1e-14;
  for (std::size_t k = 0; k < n; ++k) {
    double* const column = &factor_[k * n];
    if (!(column[k] > kDependent * H_[free_[k] * unknowns_ + free_[k]])) {
      column[k] = 0.0;
      continue;
    }
    column[k] = std::sqrt(column[k]);
    right_[k] /= column[k];
    for (std::size_t i = k + 1; i < n; ++i) {
      column[i] /= column[k];
      right_[i] -= column[i] * right_[k];
    }
    for (std::size_t j = k + 1; j < n; ++j) {
      if (column[j] == 0.0) continue;
      double* const later = &factor_[j * n];
      for (std::size_t i = j; i < n; ++i) later[i] -= column[j] * column[i];
    }
  }
  for (std::size_t k = n; k-- > 0;) {
    const double* const column = &factor_[k * n];
    if (column[k] == 0.0) continue;
    double sum = right_[k];
    for (std::size_t i = k + 1; i < n; ++i) sum -= column[i] * solution[free_[i]];
    solution[free_[k]] = sum / column[k];
  }
}

}  // namespace vrx
