// The shade words: a colour difference as a user says it, such as "Darker, Redder, Less Yellow".

#ifndef VRXMATH_JUDGING_SHADE_H_
#define VRXMATH_JUDGING_SHADE_H_

#include <array>
#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// A shade word. The numbers are persistent.
enum ShadeWord : int32_t {
  kShadeNone = 0,  ///< too small to name; its text is a single blank
  kDarker = 1,
  kLighter = 2,
  kRedder = 3,
  kLessRed = 4,
  kLessGreen = 5,
  kGreener = 6,
  kYellower = 7,
  kLessYellow = 8,
  kLessBlue = 9,
  kBluer = 10,
};

/// Three words, on lightness, red-green and yellow-blue, each with the colour (0x00BBGGRR) in which it is
/// shown.
struct ShadeWords {
  std::array<ShadeWord, 3> words{};
  std::array<uint32_t, 3> colors{};
  bool operator==(const ShadeWords&) const = default;
};

/// Puts the difference of a trial from its standard into words.
/// In:    L*, a*, b* of the trial and dL*, da*, db*. The quadrant of the trial chooses the words: on the green side, less
///        green is not "Redder".
/// Edges: lightness speaks from |dL*| = 0.1 on, the two colour axes only above 0.1. `lighterInBlack` shows
///        "Lighter" in black instead of white.
[[nodiscard]] VRX_API ShadeWords DescribeShade(const Lab& trial, const Difference& difference,
                                               bool lighterInBlack = false);
[[nodiscard]] VRX_API ShadeWords DescribeShade(const CLabValues& trial, const CDeltaValues& difference,
                                               bool lighterInBlack = false);

/// The text of a word; a single blank for kShadeNone.
[[nodiscard]] VRX_API WideView ShadeWordText(ShadeWord word);

/// The three texts, separated by commas without blanks.
[[nodiscard]] VRX_API CString ShadeText(const ShadeWords& shade);

}  // namespace vrx

#endif  // VRXMATH_JUDGING_SHADE_H_
