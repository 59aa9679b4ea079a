#include <vrxmath/judging/shade.h>

#include <cmath>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

constexpr double kThreshold = 0.1;

constexpr uint32_t kBlack = 0x000000;
constexpr uint32_t kWhite = 0xFFFFFF;

// One end of a colour axis: what a step away from the neutral point is called, and a step towards it.
struct AxisEnd {
  ShadeWord away, towards;
  uint32_t color;
};

constexpr AxisEnd kRed = {kRedder, kLessRed, 0x0000FF};
constexpr AxisEnd kGreen = {kGreener, kLessGreen, 0x008000};
constexpr AxisEnd kYellow = {kYellower, kLessYellow, 0x00FFFF};
constexpr AxisEnd kBlue = {kBluer, kLessBlue, 0xFF0000};

void DescribeAxis(double coordinate, double difference, const AxisEnd& positive, const AxisEnd& negative,
                  ShadeWord& word, uint32_t& color) {
  if (!(std::fabs(difference) > kThreshold)) return;
  const bool onPositiveSide = coordinate >= 0.0;
  const AxisEnd& end = onPositiveSide ? positive : negative;
  word = (difference >= 0.0) == onPositiveSide ? end.away : end.towards;
  color = end.color;
}

}  // namespace

ShadeWords DescribeShade(const Lab& trial, const Difference& difference, bool lighterInBlack) {
  ShadeWords shade;
  if (std::fabs(difference.dL) >= kThreshold) {
    const bool lighter = difference.dL > 0.0;
    shade.words[0] = lighter ? kLighter : kDarker;
    shade.colors[0] = lighter && !lighterInBlack ? kWhite : kBlack;
  }
  DescribeAxis(trial.a, difference.da, kRed, kGreen, shade.words[1], shade.colors[1]);
  DescribeAxis(trial.b, difference.db, kYellow, kBlue, shade.words[2], shade.colors[2]);
  return shade;
}

ShadeWords DescribeShade(const CLabValues& trial, const CDeltaValues& difference, bool lighterInBlack) {
  return DescribeShade(trial.Values(CLabValues::kB + 1), difference.Values(), lighterInBlack);
}

WideView ShadeWordText(ShadeWord word) {
  if (word == kShadeNone) return u" ";
  return FindString(kStringShadeWord + static_cast<uint32_t>(word) - 1);
}

CString ShadeText(const ShadeWords& shade) {
  CString text;
  for (const ShadeWord word : shade.words) {
    if (!text.IsEmpty()) text += u',';
    text += ShadeWordText(word);
  }
  return text;
}

}  // namespace vrx
