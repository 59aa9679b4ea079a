#include <vrxmath/matching/match_target.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/single_figures.h>
#include <vrxmath/colorimetry/uniform_space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/matching/curves.h>
#include <vrxmath/numeric/matrix.h>

namespace vrx {
namespace {

constexpr double kVisibleSamples = kLastVisible - kFirstVisible + 1;
constexpr double kPercent = 100.0;

using Grid3 = std::array<std::array<double, 3>, 3>;

// The upper triangular root U of a positive definite matrix, U^T U = G; false when it has none.
bool RootOf(const Grid3& G, Grid3& U) {
  U = {};
  for (std::size_t i = 0; i < 3; ++i) {
    double pivot = G[i][i];
    for (std::size_t k = 0; k < i; ++k) pivot -= U[k][i] * U[k][i];
    constexpr double kFlat = 1e-9;
    if (!(pivot > kFlat * G[i][i])) return false;
    U[i][i] = std::sqrt(pivot);
    for (std::size_t j = i + 1; j < 3; ++j) {
      double sum = G[i][j];
      for (std::size_t k = 0; k < i; ++k) sum -= U[k][i] * U[k][j];
      U[i][j] = sum / U[i][i];
    }
  }
  return true;
}

// The quadratic form of small changes (dX, dY, dZ) that `square` gives, by differences on both sides.
template <class SQUARE>
Grid3 QuadraticFormOf(const std::array<double, 3>& size, SQUARE square) {
  constexpr double kStep = 1e-3;
  const auto both = [&](std::array<double, 3> change) {
    const double there = square(change);
    for (double& component : change) component = -component;
    return 0.5 * (there + square(change));
  };
  std::array<double, 3> step{};
  Grid3 G{};
  for (std::size_t i = 0; i < 3; ++i) step[i] = kStep * (size[i] + kStep);
  for (std::size_t i = 0; i < 3; ++i) {
    std::array<double, 3> change{};
    change[i] = step[i];
    G[i][i] = both(change) / (step[i] * step[i]);
  }
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = i + 1; j < 3; ++j) {
      std::array<double, 3> change{};
      change[i] = step[i], change[j] = step[j];
      const double mixed = both(change) - G[i][i] * step[i] * step[i] - G[j][j] * step[j] * step[j];
      G[i][j] = G[j][i] = 0.5 * mixed / (step[i] * step[j]);
    }
  }
  return G;
}

// The smoothest curve that has a colour: least squares of its slopes under three conditions, moved into 0.01 to 1. A
// place to begin where no curve was measured.
SpectralCurve SmoothCurveOf(const double* table, const Xyz& xyz) {
  constexpr uint32_t kUnknowns = kWavelengths + 3;
  CMatrix system(kUnknowns, kUnknowns + 1);
  system.Zero();
  for (int32_t w = 0; w + 1 < kWavelengths; ++w) {
    system[w][w] += 1.0;
    system[w + 1][w + 1] += 1.0;
    system[w][w + 1] -= 1.0;
    system[w + 1][w] -= 1.0;
  }
  const double values[] = {xyz.X, xyz.Y, xyz.Z};
  for (int32_t k = 0; k < 3; ++k) {
    for (int32_t w = 0; w < kWavelengths; ++w) {
      system[w][kWavelengths + k] = system[kWavelengths + k][w] = table[k * kWavelengths + w];
    }
    system[kWavelengths + k][kUnknowns] = values[k];
  }
  CDoubleArray1 solution;
  solution.SetSize(kUnknowns);
  if (system.GaussSolve(solution) == 0) solution.Fill(0.5);
  SpectralCurve curve;
  for (std::size_t w = 0; w < kSamples; ++w) {
    curve[w] = std::clamp(solution[static_cast<std::ptrdiff_t>(w)], 0.01, 1.0);
  }
  return curve;
}

}  // namespace

MatchTarget::MatchTarget(const Offer& offer, const CColorantSystemData& system, const CRecipeTarget& target,
                         const CRecipeSettings& settings)
    : system_(system), settings_(settings), target_(target), isColorOnly_(IsUnset(target.curve)) {
  SetSurface();
  fault_ = Check(target);
  if (fault_ == RecipeFault::kNone) fault_ = SetLamps();
  if (fault_ != RecipeFault::kNone) return;
  SetCurve();
  SetRows();
  SetUnitCurves(offer);
  SetGram(offer);
}

RecipeFault MatchTarget::Check(const CRecipeTarget& target) const {
  if (isColorOnly_) {
    if (settings_.objective != RecipeObjective::kTristimulus) return RecipeFault::kNeedsCurve;
    const Lab lab = target.lab.Values(3);
    const bool isColor =
        std::isfinite(lab.L) && std::isfinite(lab.a) && std::isfinite(lab.b) && !IsUnset(lab.L);
    return isColor ? RecipeFault::kNone : RecipeFault::kTargetNotMeasured;
  }
  if (settings_.illuminants.GetSize() * (1 + target.others.GetSize()) > static_cast<int32_t>(kMostLamps)) {
    return RecipeFault::kSettings;
  }
  RecipeFault fault = CheckCurve(target.curve);
  for (const CReflData& other : target.others) {
    if (fault == RecipeFault::kNone) fault = CheckCurve(other);
  }
  return fault;
}

RecipeFault MatchTarget::CheckCurve(const CReflData& curve) const {
  if (!IsMeasured(curve)) return RecipeFault::kTargetNotMeasured;
  const int32_t below =
      CountAtFloor(curve, kFirstVisible, kLastVisible, system_.k1, system_.k2, settings_.mode);
  return below > 0 ? RecipeFault::kTargetBelowSurface : RecipeFault::kNone;
}

RecipeFault MatchTarget::SetLamps() {
  RecipeFault fault = AddLamps(target_.curve, AngleOf(0));
  for (int32_t i = 0; i < target_.others.GetSize(); ++i) {
    if (fault == RecipeFault::kNone) fault = AddLamps(target_.others[i], AngleOf(1 + i));
  }
  return fault == RecipeFault::kNone && !target_.others.IsEmpty() ? SetMean() : fault;
}

double MatchTarget::AngleOf(int32_t geometry) const {
  return geometry < target_.angles.GetSize() ? target_.angles[geometry] : settings_.angle;
}

RecipeFault MatchTarget::AddLamps(const CReflData& curve, double angle) {
  if (!std::isfinite(angle)) return RecipeFault::kSettings;
  for (std::ptrdiff_t j = 0; j < settings_.illuminants.GetSize(); ++j) {
    const vrxIlluminant illuminant = settings_.illuminants[j];
    Viewing viewing;
    const double* table = WeightTable(illuminant, settings_.observer);
    if (table == nullptr || !FindViewing(illuminant, settings_.observer, viewing))
      return RecipeFault::kSettings;
    Lamp lamp{j, illuminant, table, std::fabs(angle), {}};
    lamp.color =
        ColorOf(lamp, isColorOnly_ ? LabToXyz(target_.lab.Values(3), viewing.white) : XyzOf(lamp, curve));
    lamps_.push_back(lamp);
    if (isColorOnly_) break;
  }
  return RecipeFault::kNone;
}

// The mean of the geometries takes the place of the curve. Where a geometry is further from it than the surface of a
// solid colour explains, no curve of a recipe can be near all of them.
RecipeFault MatchTarget::SetMean() {
  const double count = 1.0 + target_.others.GetSize();
  for (int32_t w = 0; w < kWavelengths; ++w) {
    for (const CReflData& other : target_.others) target_.curve[w] += other[w];
    target_.curve[w] /= count;
  }
  constexpr double kMostOfSolid = 10.0;  // CIEDE2000
  const CDifferenceSettings system = DefaultSettings(vrxSystemCie2000);
  for (const Lamp& lamp : lamps_) {
    Viewing viewing;
    if (!FindViewing(lamp.illuminant, settings_.observer, viewing)) return RecipeFault::kSettings;
    const auto colorOf = [&](const Xyz& xyz) {
      return Color{xyz, Coordinates(SpaceTermsOf(CoordinateSpace::kLab, viewing), xyz)};
    };
    const Color mean = colorOf(XyzOf(lamp, target_.curve));
    if (!(ComputeDifference(system, mean, colorOf(lamp.color.xyz), settings_.angle).dE <= kMostOfSolid)) {
      return RecipeFault::kTargetChangesWithAngle;
    }
  }
  return RecipeFault::kNone;
}

void MatchTarget::SetSurface() {
  const bool isCorrected = settings_.mode != SaundersonMode::kNone;
  glare_ = settings_.mode == SaundersonMode::kIncluded ? system_.k1 : 0.0;
  problem_.surface = isCorrected ? (1.0 - system_.k1) * (1.0 - system_.k2) : 1.0;
  problem_.k2 = isCorrected ? system_.k2 : 0.0;
}

void MatchTarget::SetCurve() {
  if (isColorOnly_) {
    curve_ = SmoothCurveOf(lamps_[0].table, lamps_[0].color.xyz);
  } else {
    std::transform(target_.curve.begin(), target_.curve.end(), curve_.begin(),
                   [](double percent) { return percent * 0.01; });
  }
  for (double& reflectance : curve_) reflectance -= glare_;
  problem_.target = curve_.data();
}

Xyz MatchTarget::XyzOf(const Lamp& lamp, const CReflData& curve) const {
  double sums[3] = {};
  for (int32_t w = 0; w < kWavelengths; ++w) {
    for (int32_t k = 0; k < 3; ++k) sums[k] += lamp.table[k * kWavelengths + w] * curve[w];
  }
  return {0.01 * sums[0], 0.01 * sums[1], 0.01 * sums[2]};
}

Color MatchTarget::ColorOf(const Lamp& lamp, const Xyz& xyz) const {
  Viewing viewing;
  if (!FindViewing(lamp.illuminant, settings_.observer, viewing)) return {};
  const DifferenceSystem* system = FindDifferenceSystem(settings_.difference.system);
  const CoordinateSpace space = system != nullptr ? system->space : CoordinateSpace::kLab;
  return {xyz, Coordinates(SpaceTermsOf(space, viewing), xyz)};
}

double MatchTarget::DifferenceOf(const Lamp& lamp, const Xyz& xyz) const {
  return ComputeDifference(settings_.difference, lamp.color, ColorOf(lamp, xyz), lamp.angle).dE;
}

// Rows whose squares add up to the square of a small difference in the system of the settings; to that of dE*ab where the
// system has no such form at the target.
void MatchTarget::SetRows() {
  for (std::size_t j = 0; j < lamps_.size(); ++j) {
    const Lamp& lamp = lamps_[j];
    const Xyz& xyz = lamp.color.xyz;
    const std::array<double, 3> size = {xyz.X, xyz.Y, xyz.Z};
    const auto inSystem = [&](const std::array<double, 3>& change) {
      const double dE = DifferenceOf(lamp, {xyz.X + change[0], xyz.Y + change[1], xyz.Z + change[2]});
      return dE * dE;
    };
    const auto inLab = [&](const std::array<double, 3>& change) {
      Viewing viewing;
      if (!FindViewing(lamp.illuminant, settings_.observer, viewing)) return 0.0;
      const Lab d = LabDerivative(xyz, Xyz{change[0], change[1], change[2]}, viewing.white);
      return d.L * d.L + d.a * d.a + d.b * d.b;
    };
    Grid3 U;
    if (!RootOf(QuadraticFormOf(size, inSystem), U)) RootOf(QuadraticFormOf(size, inLab), U);
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t w = 0; w < kSamples; ++w) {
        double weight = 0.0;
        for (std::size_t k = row; k < 3; ++k) weight += U[row][k] * lamp.table[k * kSamples + w];
        weights_.push_back(weight);
      }
      // The part of the colour that the curve misses; nothing but rounding where the colour comes from the curve.
      const bool isOwn = !isColorOnly_ && target_.others.IsEmpty();
      double offset = 0.0;
      for (std::size_t w = 0; !isOwn && w < kSamples; ++w) {
        offset += weights_[weights_.size() - kSamples + w] * (curve_[w] + glare_);
      }
      for (std::size_t k = row; !isOwn && k < 3; ++k) offset -= U[row][k] * size[k];
      offset_.push_back(offset);
    }
    const double weight = settings_.weights.IsEmpty() ? 1.0 : settings_.weights[lamp.number];
    importance_.push_back(settings_.objective == RecipeObjective::kSpectral ? 0.0 : weight);
  }
  if (settings_.objective != RecipeObjective::kTristimulus) {
    curveWeights_.assign(kSamples, 0.0);
    std::fill(curveWeights_.begin() + kFirstVisible, curveWeights_.begin() + kLastVisible + 1,
              kPercent * kPercent / kVisibleSamples);
    problem_.curveWeights = curveWeights_.data();
  }
  problem_.rows = static_cast<int32_t>(offset_.size());
  problem_.weights = weights_.data();
  problem_.offset = offset_.data();
  problem_.importance = importance_.data();
}

void MatchTarget::SetUnitCurves(const Offer& offer) {
  const auto append = [](const CComponent& component, std::vector<double>& K, std::vector<double>& S) {
    const CColorantLevelArray& levels = component.GetLevels();
    const CColorantValues& curves = levels[levels.GetSize() / 2].values[0];
    for (int32_t w = 0; w < kWavelengths; ++w) {
      K.push_back(curves.absorption[w]);
      S.push_back(curves.scattering[w]);
    }
  };
  for (const OfferedColorant& colorant : offer.colorants) append(*colorant.component, K_, S_);
  problem_.colorants = static_cast<int32_t>(offer.colorants.size());
  problem_.K = K_.data();
  problem_.S = S_.data();
  if (offer.hasLimits) SetLimits(offer);
  if (offer.substrate == nullptr) return;
  append(*offer.substrate, baseK_, baseS_);
  problem_.baseK = baseK_.data();
  problem_.baseS = baseS_.data();
}

void MatchTarget::SetLimits(const Offer& offer) {
  constexpr double kNoLimit = 1e100;  // of shares relative to a substrate
  for (const OfferedColorant& colorant : offer.colorants) {
    least_.push_back(colorant.least);
    most_.push_back(offer.substrate != nullptr && colorant.most == 1.0 ? kNoLimit : colorant.most);
  }
  problem_.least = least_.data();
  problem_.most = most_.data();
}

// The objective linearised at the target: with Q its K/S, a mixture of sums K and S differs in K/S by (K - Q S) / S, and in
// reflectance by that times dR/dQ. The mixture's S counts as 1, of a substrate as it is. A little of the curves'
// difference keeps shares apart that the colours alone leave open.
void MatchTarget::SetGram(const Offer& offer) {
  constexpr double kCurvePart = 0.01;
  const bool hasBase = offer.substrate != nullptr;
  const std::size_t columns = offer.colorants.size() + (hasBase ? 1 : 0);
  std::vector<double> difference(columns * kSamples);  // of reflectance, by column
  scale_.assign(columns, 0.0);
  for (std::size_t w = 0; w < kSamples; ++w) {
    const double measured = curve_[w] / problem_.surface;
    const double R = std::clamp(measured / (1.0 + problem_.k2 * measured), kLeastInternal, 0.999);
    const double Q = KubelkaMunkKs(kPercent * R);
    const double back = 1.0 - problem_.k2 * R;
    const double slope = problem_.surface / (back * back) * 2.0 * R * R / (1.0 - R * R);
    for (std::size_t i = 0; i < columns; ++i) {
      const bool isBase = i == offer.colorants.size();
      const double K = isBase ? baseK_[w] : K_[i * kSamples + w];
      const double S = isBase ? baseS_[w] : hasBase ? 0.0 : S_[i * kSamples + w];
      difference[i * kSamples + w] = slope * (K - Q * S) / (hasBase ? baseS_[w] : 1.0);
      scale_[i] += 0.01 * lamps_[0].table[kSamples + w] * S;
    }
  }
  gram_.assign(columns * columns, 0.0);
  const auto addRow = [&](double importance, const double* weights) {
    std::vector<double> row(columns);
    for (std::size_t i = 0; i < columns; ++i) {
      for (std::size_t w = 0; w < kSamples; ++w) row[i] += weights[w] * difference[i * kSamples + w];
    }
    for (std::size_t i = 0; i < columns; ++i) {
      for (std::size_t j = 0; j < columns; ++j) gram_[i * columns + j] += importance * row[i] * row[j];
    }
  };
  for (std::size_t row = 0; row < offset_.size(); ++row)
    addRow(importance_[row / 3], &weights_[row * kSamples]);
  const double part = settings_.objective == RecipeObjective::kTristimulus ? kCurvePart : 1.0;
  for (std::size_t w = kFirstVisible; w <= kLastVisible; ++w) {
    SpectralCurve unit{};
    unit[w] = 1.0;
    addRow(part * kPercent * kPercent / kVisibleSamples, unit.data());
  }
  problem_.gram = gram_.data();
  problem_.scale = scale_.data();
}

Xyz MatchTarget::XyzAt(const Lamp& lamp, const SpectralCurve& R) const {
  double sums[3] = {};
  for (std::size_t w = 0; w < kSamples; ++w) {
    const double reflectance = curve_[w] + glare_ + R[w];
    for (std::size_t k = 0; k < 3; ++k) sums[k] += lamp.table[k * kSamples + w] * reflectance;
  }
  return {sums[0], sums[1], sums[2]};
}

void MatchTarget::DifferencesOf(const SpectralCurve& R, std::array<double, kMostLamps>& differences) const {
  for (std::size_t j = 0; j < lamps_.size(); ++j) {
    differences[j] = DifferenceOf(lamps_[j], XyzAt(lamps_[j], R));
  }
}

bool MatchTarget::IsNear(const SpectralCurve& standard, const SpectralCurve& curve, double limit) const {
  // Far from the limit in the metric at the target it need not be computed, unless the curve is far from the target.
  constexpr double kFar = 10.0, kElsewhere = 5.0;
  for (std::size_t j = 0; j < lamps_.size(); ++j) {
    double square = 0.0, away = 0.0;
    for (std::size_t row = 3 * j; row < 3 * j + 3; ++row) {
      double change = 0.0, place = offset_[row];
      for (std::size_t w = 0; w < kSamples; ++w) {
        change += weights_[row * kSamples + w] * (curve[w] - standard[w]);
        place += weights_[row * kSamples + w] * standard[w];
      }
      square += change * change, away += place * place;
    }
    if (away < kElsewhere * kElsewhere && square > kFar * kFar * limit * limit) return false;
    Lamp own = lamps_[j];
    own.color = ColorOf(own, XyzAt(own, standard));
    if (!(DifferenceOf(own, XyzAt(own, curve)) < limit)) return false;
  }
  return true;
}

double MatchTarget::WorstDifference(const CReflData& curve) const {
  double worst = 0.0;
  for (const Lamp& lamp : lamps_) {
    const double dE = DifferenceOf(lamp, XyzOf(lamp, curve));
    worst = dE <= worst ? worst : dE;  // NaN is the worst
  }
  return worst;
}

// Of a recipe and not of its target, so that it is known beside a target without a curve, too.
double MatchTarget::WorstInconstancy(const CReflData& curve) const {
  double worst = kUnset;
  for (int32_t j = 1; j < settings_.illuminants.GetSize(); ++j) {
    const double index = InconstancyIndex(settings_.illuminants[0], settings_.illuminants[j],
                                          settings_.observer, curve, settings_.difference);
    if (IsUnset(worst) || index > worst) worst = index;
  }
  return worst;
}

void MatchTarget::Judge(CRecipe& recipe) const {
  recipe.differences.SetSize(settings_.illuminants.GetSize());
  recipe.differences.Fill(kUnset);
  for (const Lamp& lamp : lamps_) {
    double& difference = recipe.differences[lamp.number];
    const double here = DifferenceOf(lamp, XyzOf(lamp, recipe.curve));
    if (IsUnset(difference) || !(here <= difference)) difference = here;
  }
  recipe.worst = WorstDifference(recipe.curve);
  recipe.isWithinTolerance = recipe.worst <= settings_.tolerance;
  recipe.inconstancy = WorstInconstancy(recipe.curve);
  recipe.metamerism = recipe.rms = kUnset;
  if (isColorOnly_) return;
  double sum = 0.0;
  for (int32_t w = kFirstVisible; w <= kLastVisible; ++w) {
    const double difference = recipe.curve[w] - target_.curve[w];
    sum += difference * difference;
  }
  recipe.rms = std::sqrt(sum / kVisibleSamples);
  const auto illuminants = static_cast<std::size_t>(settings_.illuminants.GetSize());
  for (std::size_t j = 1; j < illuminants; ++j) {
    const double index = MetamerismIndex(lamps_[0].illuminant, lamps_[j].illuminant, settings_.observer,
                                         target_.curve, recipe.curve, settings_.difference, lamps_[0].angle);
    if (IsUnset(recipe.metamerism) || index > recipe.metamerism) recipe.metamerism = index;
  }
}

}  // namespace vrx
