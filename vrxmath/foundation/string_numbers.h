// The numbers of the library's texts (resources/strings.tsv). Ranges are given by their first number.

#ifndef VRXMATH_FOUNDATION_STRING_NUMBERS_H_
#define VRXMATH_FOUNDATION_STRING_NUMBERS_H_

#include <cstdint>

namespace vrx {

inline constexpr uint32_t kStringIndexOutOfBounds = 256;
inline constexpr uint32_t kStringFileDeleted = 257;  ///< "%s deleted"
inline constexpr uint32_t kStringClockOutOfRange = 273;
inline constexpr uint32_t kStringConditionStandard = 288;  ///< "Std", then the text shown for it
inline constexpr uint32_t kStringConditionLetters =
    290;  ///< letters of positions 1 to 6, in the order of the table
inline constexpr uint32_t kStringIlluminant = 336;       ///< + illuminant: "code|description"
inline constexpr uint32_t kStringIlluminantOrder = 367;  ///< the order in which illuminants are offered
inline constexpr uint32_t kStringObserver =
    368;  ///< "2 degrees", "10 degrees", then the same with " - " and with "/"
inline constexpr uint32_t kStringIlluminantPrefix = 374;  ///< "Illuminant "
inline constexpr uint32_t kStringAngle = 384;             ///< + angle code
inline constexpr uint32_t kStringComponentKind = 496;
inline constexpr uint32_t kStringWeightUnit = 512;        ///< + weight unit
inline constexpr uint32_t kStringVolumeUnit = 528;        ///< + volume unit
inline constexpr uint32_t kStringOpticalModel = 560;      ///< + model: "industry|model"
inline constexpr uint32_t kStringShadeWord = 576;         ///< "Darker" ... "Bluer"
inline constexpr uint32_t kStringFactorName = 592;        ///< three long names, then three short ones
inline constexpr uint32_t kStringIndexLabel = 640;        ///< twelve labels of indices
inline constexpr uint32_t kStringIndexColumnLabel = 652;  ///< two short labels, then the same recalculated
inline constexpr uint32_t kStringFurtherIndexLabel = 656;
inline constexpr uint32_t kStringContrastRatio = 658;
inline constexpr uint32_t kStringMetamerismIndex = 659;
inline constexpr uint32_t kStringColorSpace = 672;
inline constexpr uint32_t kStringIlluminantError = 688;  ///< + reason - 1
inline constexpr uint32_t kStringControl = 704;          ///< texts of window controls: + ControlText
enum class ControlText : uint32_t {
  kStandard,
  kTrial,
  kDifference,
  kWavelength,
  kReflectance,
  kAngle,
  kLimit,
  kTimeLeft,  ///< "%s left"
  kOutOfGamut,
  kAdd,
  kRemove,
  kMoveUp,
  kMoveDown,
  kAvailable,
  kChosen,
  kReflectanceDifference,
  kSelect,
};
inline constexpr uint32_t kStringDifferenceSystem = 18752;  ///< + 16 x system
inline constexpr uint32_t kStringReport = 20480;            ///< texts of the tool's reports, by number

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_STRING_NUMBERS_H_
