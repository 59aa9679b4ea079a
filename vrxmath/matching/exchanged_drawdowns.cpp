#include <vrxmath/matching/exchanged_drawdowns.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx {
namespace {

// How well drawdowns are described, all and each.
struct Description {
  std::vector<double> differences;  // CIEDE2000; empty where the drawdowns cannot be calibrated
  double sum = 0.0;
};

Description DescriptionOf(const CStringArray1& names, const CDrawdownArray& drawdowns,
                          CCalibrationSettings settings) {
  settings.leaveOneOut = false;
  CColorantSystemData system;
  CDrawdownFitArray fits;
  if (CalibrateColorants(names, drawdowns, settings, system, fits).fault != CalibrationFault::kNone)
    return {};
  Description description;
  for (int32_t i = 0; i < fits.GetSize(); ++i) {
    description.differences.push_back(IsUnset(fits[i].deltaE) ? 0.0 : fits[i].deltaE);
    description.sum += description.differences.back();
  }
  return description;
}

// The drawdowns that are described worst, from 0.
std::vector<int32_t> WorstOf(const Description& description) {
  constexpr std::size_t kMost = 8;
  std::vector<int32_t> order(description.differences.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
    return description.differences[static_cast<std::size_t>(a)] >
           description.differences[static_cast<std::size_t>(b)];
  });
  order.resize(std::min(order.size(), kMost));
  return order;
}

std::string WithOneDecimal(double value) {
  return DecimalText(value, 1, u".").ToUtf8();
}

}  // namespace

std::string ExchangedDrawdowns::Text(const CDrawdownArray& drawdowns) const {
  std::string text("drawdowns \"");
  text.append(drawdowns[first].id.ToUtf8()).append("\" and \"").append(drawdowns[second].id.ToUtf8());
  text.append(
      "\" look exchanged, or a share of one is wrong: with each other's shares their differences from the "
      "calibration are ");
  text.append(WithOneDecimal(exchanged)).append(" dE00 together, and ").append(WithOneDecimal(asTheyAre));
  return text.append(" as they are");
}

std::optional<ExchangedDrawdowns> FindExchangedDrawdowns(const CStringArray1& names,
                                                         const CDrawdownArray& drawdowns,
                                                         const CCalibrationSettings& settings) {
  constexpr int32_t kMost = 500;
  constexpr double kLeastGain = 5.0, kPart = 0.35;
  if (drawdowns.GetSize() > kMost) return std::nullopt;
  const Description before = DescriptionOf(names, drawdowns, settings);
  const std::vector<int32_t> worst = WorstOf(before);
  std::optional<ExchangedDrawdowns> found;
  double best = kLeastGain;
  for (std::size_t a = 0; a < worst.size(); ++a) {
    for (std::size_t b = a + 1; b < worst.size(); ++b) {
      const auto [first, second] = std::minmax(worst[a], worst[b]);
      CDrawdownArray others = drawdowns;
      others[first].shares = drawdowns[second].shares;
      others[second].shares = drawdowns[first].shares;
      const Description after = DescriptionOf(names, others, settings);
      if (after.differences.empty() || before.sum - after.sum < best) continue;
      const auto ofBoth = [first = first, second = second](const Description& all) {
        return all.differences[static_cast<std::size_t>(first)] +
               all.differences[static_cast<std::size_t>(second)];
      };
      if (ofBoth(after) > kPart * ofBoth(before)) continue;
      best = before.sum - after.sum;
      found = ExchangedDrawdowns{first, second, ofBoth(before), ofBoth(after)};
    }
  }
  return found;
}

}  // namespace vrx
