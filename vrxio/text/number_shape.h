// Short numbers of one shape, read without a loop over their digits.

#ifndef VRXIO_TEXT_NUMBER_SHAPE_H_
#define VRXIO_TEXT_NUMBER_SHAPE_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <vrxio/text/decimal.h>

namespace vrx::io {

/// How many digits a number has and where its decimal separator stands among them. The numbers of a file mostly have the
/// shape of the one before: those of up to kBytes bytes, without a sign, are then read all digits at once.
class NumberShape {
 public:
  static constexpr std::size_t kBytes = 8;

  /// Of no number.
  NumberShape() = default;

  /// The shape of the number that was read from `at` to `end`; of no number when it is longer or has a sign.
  static NumberShape Of(const char* at, const char* end, const ShortDecimal& number) {
    const auto length = static_cast<std::size_t>(end - at);
    NumberShape shape;
    if (length > kBytes || !IsDigit(end[-1]) || *at == '-' || *at == '+') return shape;
    if (std::endian::native != std::endian::little) return shape;
    shape.length_ = length;
    shape.scale_ = kPowersOfTen[number.decimals];
    shape.unused_ = 8 * (kBytes - length);
    shape.separator_ = shape.separatorBits_ = shape.before_ = 0;
    if (number.decimals == 0) return shape;
    const std::size_t place = kBytes - 1 - number.decimals;
    shape.separatorBits_ = std::uint64_t{0xff} << (8 * place);
    shape.separator_ =
        std::uint64_t{static_cast<unsigned char>(end[-1 - static_cast<std::ptrdiff_t>(number.decimals)])}
        << (8 * place);
    shape.before_ = (std::uint64_t{1} << (8 * (place + 1))) - 1;
    return shape;
  }

  std::size_t Length() const { return length_; }
  /// The power of ten that the digits are to be divided by.
  double Scale() const { return scale_; }

  /// Reads the digits of a number at `at`, from where kBytes may be read, as a whole number. False when the text has another
  /// shape; a longer number may follow it all the same.
  bool Read(const char* at, double& whole) const {
    constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101, kTops = 0x80 * kOnes;
    std::uint64_t text;
    std::memcpy(&text, at, kBytes);
    text <<= unused_;  // the last digit to the highest byte
    const bool isSeparated = ((text ^ separator_) & separatorBits_) == 0;
    text ^= '0' * (kOnes << unused_);
    // The digits before the separator move up into its place.
    const std::uint64_t digits = (text & ~before_) | ((text << 8) & before_);
    const bool areDigits = ((digits | (digits + 0x76 * kOnes)) & kTops) == 0;
    std::uint64_t sums = (10 * digits + (digits >> 8)) & 0x00ff'00ff'00ff'00ff;
    sums = (100 * sums + (sums >> 16)) & 0x0000'ffff'0000'ffff;
    sums = (10'000 * sums + (sums >> 32)) & 0xffff'ffff;
    whole = static_cast<double>(static_cast<std::int64_t>(sums));
    return isSeparated & areDigits;
  }

 private:
  static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

  std::size_t length_ = kBytes;
  double scale_ = 1;
  std::size_t unused_ = 0;                                           // bits of the eight bytes
  std::uint64_t separator_ = 0, separatorBits_ = ~std::uint64_t{0};  // what stands there in its place
  std::uint64_t before_ = 0;                                         // the bytes up to the separator
};

}  // namespace vrx::io

#endif  // VRXIO_TEXT_NUMBER_SHAPE_H_
