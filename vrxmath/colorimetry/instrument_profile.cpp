#include <vrxmath/colorimetry/instrument_profile.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/units.h>

namespace vrx {
namespace {

using Factors = InstrumentProfile::Factors;

// What stands beside the factors at a wavelength, in percent; 0 for a term that is not asked for.
Factors TermsAt(const CReflData& curve, std::int32_t i, std::uint32_t terms) {
  constexpr double kStep = 10.0;  // nm
  // At the ends the slope and the curvature of the nearest three samples.
  const std::int32_t middle = std::clamp(i, 1, kWavelengths - 2);
  const double below = curve[middle - 1], at = curve[middle], above = curve[middle + 1];
  const double curvature = (above - 2.0 * at + below) / (kStep * kStep);
  const double slope = (above - below) / (2.0 * kStep) + curvature * kStep * static_cast<double>(i - middle);
  Factors all = {1.0, curve[i], curve[i] * (1.0 - curve[i] / 100.0), slope, curvature};
  for (std::size_t k = 0; k < all.size(); ++k) {
    if ((terms >> k & 1U) == 0) all[k] = 0.0;
  }
  return all;
}

// The normal equations of a fit, solved by elimination on the diagonal. An unknown whose column depends on the ones before it is 0.
class NormalEquations {
 public:
  void Add(const Factors& x, double y) {
    for (std::size_t r = 0; r < x.size(); ++r) {
      for (std::size_t c = 0; c < x.size(); ++c) matrix_[r][c] += x[r] * x[c];
      right_[r] += x[r] * y;
    }
  }

  Factors Solve() {
    constexpr double kDependent = 1e-9;
    std::array<bool, kInstrumentTerms> isFree{};
    const auto original = matrix_;
    for (std::size_t k = 0; k < kInstrumentTerms; ++k) {
      isFree[k] = matrix_[k][k] > kDependent * original[k][k];
      if (!isFree[k]) continue;
      for (std::size_t r = k + 1; r < kInstrumentTerms; ++r) {
        const double factor = matrix_[r][k] / matrix_[k][k];
        for (std::size_t c = k; c < kInstrumentTerms; ++c) matrix_[r][c] -= factor * matrix_[k][c];
        right_[r] -= factor * right_[k];
      }
    }
    Factors solution{};
    for (std::size_t k = kInstrumentTerms; k-- > 0;) {
      if (!isFree[k]) continue;
      double rest = right_[k];
      for (std::size_t c = k + 1; c < kInstrumentTerms; ++c) rest -= matrix_[k][c] * solution[c];
      solution[k] = rest / matrix_[k][k];
    }
    return solution;
  }

 private:
  std::array<std::array<double, kInstrumentTerms>, kInstrumentTerms> matrix_{};
  Factors right_{};
};

bool AreSet(std::span<const CReflData> curves) {
  return std::ranges::all_of(curves, [](const CReflData& curve) {
    return !IsUnset(curve[0]) && std::ranges::all_of(curve, [](double r) { return std::isfinite(r); });
  });
}

double RmsBetween(const CReflData& a, const CReflData& b) {
  double sum = 0.0;
  for (std::int32_t i = 0; i < kWavelengths; ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return std::sqrt(sum / kWavelengths);
}

// How a reading stands between its own reference and the nearest one of all.
MisplacedTile PlaceOf(std::span<const CReflData> reference, const CReflData& reading, std::size_t tile) {
  MisplacedTile place{tile, tile, RmsBetween(reference[tile], reading), 0.0};
  place.fromTheOther = place.fromItself;
  for (std::size_t r = 0; r < reference.size(); ++r) {
    const double distance = RmsBetween(reference[r], reading);
    if (distance < place.fromTheOther) place.looksLike = r, place.fromTheOther = distance;
  }
  return place;
}

}  // namespace

std::string MisplacedTile::Describe(const MisplacedTile& place, std::string_view tile,
                                    std::string_view looksLike) {
  const auto percent = [](double value) { return DecimalText(value, 2, u".").ToUtf8(); };
  std::string text("the reading of tile ");
  text.append(tile).append(" looks like tile ").append(looksLike).append(": corrected it is ");
  text.append(percent(place.fromItself)).append(" % of reflectance from the reference of ").append(tile);
  text.append(" and ").append(percent(place.fromTheOther)).append(" from that of ").append(looksLike);
  return text.append(": were tiles exchanged, or one read twice?");
}

std::vector<MisplacedTile> InstrumentProfile::FindMisplaced(std::span<const CReflData> reference,
                                                            std::span<const CReflData> other,
                                                            std::uint32_t terms) {
  constexpr std::size_t kMost = 2000;
  constexpr double kApart = 0.5, kNearer = 3.0;
  auto profile = Fit(reference, other, terms);
  if (!profile || reference.size() > kMost) return {};
  std::vector<std::size_t> suspects;
  std::vector<CReflData> rightReference, rightOther;
  for (std::size_t t = 0; t < other.size(); ++t) {
    if (PlaceOf(reference, other[t], t).looksLike != t) {
      suspects.push_back(t);
    } else {
      rightReference.push_back(reference[t]);
      rightOther.push_back(other[t]);
    }
  }
  // An offset can make every tile look like its neighbour: the instrument's own faults are taken out before anything is said.
  if (const auto right = Fit(rightReference, rightOther, terms)) profile = right;
  std::vector<MisplacedTile> misplaced;
  for (const std::size_t t : suspects) {
    const MisplacedTile place = PlaceOf(reference, profile->Corrected(other[t]), t);
    if (place.fromItself >= kApart && place.fromTheOther * kNearer < place.fromItself)
      misplaced.push_back(place);
  }
  return misplaced;
}

std::optional<InstrumentProfile> InstrumentProfile::Fit(std::span<const CReflData> reference,
                                                        std::span<const CReflData> other,
                                                        std::uint32_t terms) {
  const bool isKnown = terms != 0 && terms < 1U << kInstrumentTerms;
  const auto fewest = static_cast<std::size_t>(std::popcount(terms)) + 1;
  if (!isKnown || reference.size() != other.size() || reference.size() < fewest) return std::nullopt;
  if (!AreSet(reference) || !AreSet(other)) return std::nullopt;
  InstrumentProfile profile;
  profile.terms_ = terms;
  for (std::int32_t i = 0; i < kWavelengths; ++i) {
    NormalEquations equations;
    for (std::size_t t = 0; t < other.size(); ++t)
      equations.Add(TermsAt(other[t], i, terms), reference[t][i] - other[t][i]);
    profile.factors_.push_back(equations.Solve());
  }
  return profile;
}

std::optional<InstrumentProfile> InstrumentProfile::FromFactors(std::span<const Factors> factors) {
  if (factors.size() != static_cast<std::size_t>(kWavelengths)) return std::nullopt;
  InstrumentProfile profile;
  for (const Factors& at : factors) {
    for (std::size_t k = 0; k < at.size(); ++k) {
      if (!std::isfinite(at[k])) return std::nullopt;
      if (at[k] != 0.0) profile.terms_ |= 1U << k;
    }
  }
  profile.factors_.assign(factors.begin(), factors.end());
  return profile;
}

CReflData InstrumentProfile::Corrected(const CReflData& reading) const {
  if (IsUnset(reading[0])) return reading;
  CReflData corrected;
  for (std::int32_t i = 0; i < kWavelengths; ++i) {
    const Factors terms = TermsAt(reading, i, terms_);
    double sum = reading[i];
    for (std::size_t k = 0; k < terms.size(); ++k) sum += factors_[static_cast<std::size_t>(i)][k] * terms[k];
    corrected[i] = sum;
  }
  return corrected;
}

}  // namespace vrx
