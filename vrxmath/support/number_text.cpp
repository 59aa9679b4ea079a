#include <vrxmath/support/number_text.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/foundation/units.h>
#include <vrxmath/platform/locale.h>

namespace vrx {
namespace {

constexpr WideView kBlanks = u" \t\u00A0\u202F";
constexpr WideView kDigits = u"0123456789";

WideView DecimalSeparator() {
  return CurrentLocale().Conventions().decimalSeparator;
}

// The number in a typed text, translated into what std::from_chars reads.
struct TypedNumber {
  std::string ascii;
  std::size_t begin = 0;  // its first unit
  std::size_t end = 0;    // the first unit that is not part of it
  bool hasDigits = false;
};

TypedNumber ScanNumber(WideView text) {
  TypedNumber number;
  number.begin = std::min(text.find_first_not_of(kBlanks), text.size());
  std::size_t i = number.begin;
  if (i < text.size() && WideView(u"+-\u2212").find(text[i]) != WideView::npos) {
    if (text[i++] != u'+') number.ascii += '-';
  }
  const auto takeDigits = [&] {
    for (; i < text.size() && kDigits.find(text[i]) != WideView::npos; ++i) {
      number.ascii += static_cast<char>(text[i]);
      number.hasDigits = true;
    }
  };
  takeDigits();
  const WideView separator = DecimalSeparator();
  if (!separator.empty() && text.substr(i).starts_with(separator)) {
    i += separator.size();
    number.ascii += '.';
    takeDigits();
  }
  number.end = i;
  return number;
}

// A number of any length: beyond the largest double it is infinite, below the smallest one zero.
double ValueOf(const std::string& ascii) {
  double value = 0.0;
  const auto error = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value).ec;
  if (error != std::errc::result_out_of_range) return value;
  const bool isLarge = ascii.find_first_of("123456789") < std::min(ascii.find('.'), ascii.size());
  const double magnitude = isLarge ? std::numeric_limits<double>::infinity() : 0.0;
  return ascii[0] == '-' ? -magnitude : magnitude;
}

ParsedNumber Failed(NumberError error, std::size_t position, double value = kUnset) {
  return {value, error, static_cast<int32_t>(position)};
}

// A number picture taken apart.
struct NumberPicture {
  CString before;
  CString behind;
  std::size_t integerDigits = 0;  // shown in any case
  int32_t fewestDecimals = 0;
  int32_t mostDecimals = 0;
  bool isGrouped = false;
  bool hasDigit = false;
};

// Copies literal text from `i` on and returns where it ends: at a digit place, or at the end of the picture.
std::size_t CopyLiteral(CString& out, WideView picture, std::size_t i, bool stopsAtDigits) {
  bool quoted = false;
  for (; i < picture.size(); ++i) {
    const bool atDigits = WideView(u"#0").find(picture[i]) != WideView::npos ||
                          (picture[i] == u'.' && i + 1 < picture.size() &&
                           WideView(u"#0").find(picture[i + 1]) != WideView::npos);
    if (stopsAtDigits && !quoted && atDigits) break;
    if (picture[i] == u'\'') {
      quoted = !quoted;
    } else {
      out += picture[i];
    }
  }
  return i;
}

NumberPicture ParsePicture(WideView picture) {
  NumberPicture parsed;
  std::size_t i = CopyLiteral(parsed.before, picture, 0, true);
  for (; i < picture.size() && WideView(u"#0,").find(picture[i]) != WideView::npos; ++i) {
    parsed.isGrouped = parsed.isGrouped || picture[i] == u',';
    parsed.hasDigit = parsed.hasDigit || picture[i] != u',';
    if (picture[i] == u'0') ++parsed.integerDigits;
  }
  if (i < picture.size() && picture[i] == u'.') {
    for (++i; i < picture.size() && WideView(u"#0").find(picture[i]) != WideView::npos; ++i) {
      parsed.hasDigit = true;
      ++parsed.mostDecimals;
      if (picture[i] == u'0') parsed.fewestDecimals = parsed.mostDecimals;
    }
  }
  CopyLiteral(parsed.behind, picture, i, false);
  return parsed;
}

std::u16string Grouped(std::u16string digits, const LocaleConventions& conventions) {
  const std::vector<uint8_t>& sizes = conventions.groupSizes;
  std::size_t place = digits.size();
  for (std::size_t group = 0; group < digits.size() && !sizes.empty(); ++group) {
    const std::size_t size = sizes[std::min(group, sizes.size() - 1)];
    if (size == 0 || place <= size) break;
    place -= size;
    digits.insert(place, conventions.groupSeparator.View());
  }
  return digits;
}

// A finite number by the picture's digit places.
std::u16string PictureDigits(const NumberPicture& picture, double value) {
  const CString text = DecimalText(value, picture.mostDecimals, u".");
  WideView digits = text;
  const bool isNegative = digits.starts_with(u'-');
  if (isNegative) digits.remove_prefix(1);
  const std::size_t point = std::min(digits.find(u'.'), digits.size());
  std::u16string integer(digits.substr(0, point));
  std::u16string decimals(digits.substr(std::min(point + 1, digits.size())));
  while (decimals.size() > static_cast<std::size_t>(picture.fewestDecimals) && decimals.back() == u'0') {
    decimals.pop_back();
  }
  if (integer == u"0" && picture.integerDigits == 0 && !decimals.empty()) integer.clear();
  if (!integer.empty() && integer.size() < picture.integerDigits) {
    integer.insert(0, picture.integerDigits - integer.size(), u'0');
  }
  if (picture.isGrouped) integer = Grouped(integer, CurrentLocale().Conventions());
  std::u16string out = (isNegative ? u"-" : u"") + integer;
  if (!decimals.empty()) out.append(DecimalSeparator()).append(decimals);
  return out;
}

// Decimals by unit. Units of about 4 l or 1 kg take 5, of about 250 to 500 ml 4, ounces 3.
constexpr std::array<uint8_t, kWeightUnits> kWeightDecimals = {
    4,  // Pounds
    3,  // Ounces
    5,  // Kilograms
    2,  // Grams
    1,  // Grains
    2,  // Parts
};
constexpr std::array<uint8_t, kVolumeUnits> kVolumeDecimals = {
    5, 5, 4, 4, 3, 5,     // Gallons, Quarts, Pints, Cups, Ounces, Imperial Gallons
    5, 2, 3, 2, 5, 5,     // Liters, Milliliters, Oz/Shots, Pumps, SA Gallons, SA Buckets
    3, 3, 3, 3, 3, 3,     // Ounces and Oz/Shots UK, NZ, Metric
    2, 2, 2, 2, 3, 3, 2,  // Shots, Shots UK, NZ, Metric, Ounces, Oz/Shots and Shots Aus
};
constexpr int32_t kUsualDecimals = 2;

std::span<const uint8_t> DecimalsOfKind(AmountUnit::Kind kind) {
  if (kind == AmountUnit::kVolume) return kVolumeDecimals;
  return kWeightDecimals;
}

bool IsUnit(AmountUnit unit) {
  return unit.index >= 0 && static_cast<std::size_t>(unit.index) < DecimalsOfKind(unit.kind).size();
}

}  // namespace

CString NumberText(double value, const CValueRange& range) {
  return IsUnset(value) ? CString() : DecimalText(value, range.decimals, DecimalSeparator());
}

ParsedNumber ParseNumber(WideView text, const CValueRange& range) {
  const TypedNumber number = ScanNumber(text);
  if (number.begin == text.size()) return {};
  const std::size_t rest = number.hasDigits ? text.find_first_not_of(kBlanks, number.end) : number.end;
  if (rest != WideView::npos) return Failed(NumberError::kNotANumber, rest);
  const double value = RoundToScale(ValueOf(number.ascii), range.scale) + 0.0;  // -0.0 becomes 0.0
  if (value < range.lower) return Failed(NumberError::kBelowRange, number.begin, value);
  if (value > range.upper) return Failed(NumberError::kAboveRange, number.begin, value);
  return {value};
}

double StepValue(double value, int32_t steps, const CValueRange& range) {
  const double start = IsUnset(value) ? 0.0 : value;
  const double moved = IsUnset(value) ? start : start + steps * range.increment;
  return std::max(range.lower, std::min(range.upper, RoundToScale(moved, range.scale) + 0.0));
}

std::optional<CString> PictureText(WideView picture, double value) {
  const NumberPicture parsed = ParsePicture(picture);
  if (!parsed.hasDigit || parsed.mostDecimals > kMaxDecimals) return std::nullopt;
  if (IsUnset(value)) return CString();
  CString text = parsed.before;
  text += std::isfinite(value) ? CString(PictureDigits(parsed, value)) : DecimalText(value, 0, {});
  text += parsed.behind;
  return text;
}

CString AmountUnitName(AmountUnit unit) {
  return unit.kind == AmountUnit::kVolume ? VolumeUnitName(unit.index) : WeightUnitName(unit.index);
}

int32_t AmountDecimals(AmountUnit unit) {
  return IsUnit(unit) ? DecimalsOfKind(unit.kind)[static_cast<std::size_t>(unit.index)] : kUsualDecimals;
}

CString AmountText(double amount, AmountUnit unit) {
  if (IsUnset(amount)) return {};
  CString text = DecimalText(amount, AmountDecimals(unit), DecimalSeparator());
  const CString name = AmountUnitName(unit);
  if (!name.IsEmpty()) text += u' ';
  text += name;
  return text;
}

}  // namespace vrx
