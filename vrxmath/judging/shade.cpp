#include <vrxmath/judging/shade.h>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/judging/shade_formulas.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

constexpr uint32_t kBlack = 0x000000, kWhite = 0xFFFFFF;
constexpr uint32_t kRed = 0x0000FF, kGreen = 0x008000, kYellow = 0x00FFFF, kBlue = 0xFF0000;

// The colours of the words, by number.
constexpr uint32_t kColors[] = {kBlack, kBlack,  kWhite,  kRed,  kRed, kGreen,
                                kGreen, kYellow, kYellow, kBlue, kBlue};

}  // namespace

ShadeWords DescribeShade(const Lab& trial, const Difference& difference, bool lighterInBlack) {
  const double numbers[] = {LightnessWord(difference.dL), RedGreenWord(trial.a, difference.da),
                            YellowBlueWord(trial.b, difference.db)};
  ShadeWords shade;
  for (std::size_t k = 0; k < 3; ++k) {
    shade.words[k] = static_cast<ShadeWord>(numbers[k]);
    shade.colors[k] = kColors[shade.words[k]];
  }
  if (lighterInBlack && shade.words[0] == kLighter) shade.colors[0] = kBlack;
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
