#include <vrxmath/colorimetry/munsell.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include <vrxmath/colorimetry/munsell_renotation.h>

namespace vrx {
namespace {

using munsell_data::kHues;
using munsell_data::kValues;

constexpr std::array<std::string_view, 10> kHueNames = {"R",  "YR", "Y",  "GY", "G",
                                                        "BG", "B",  "PB", "P",  "RP"};
constexpr double kHueStep = 2.5, kChromaStep = 2.0;
constexpr double kMostChroma = 60.0;

struct Point {
  double x = 0.0, y = 0.0;
};
// Illuminant C as the renotation has it.
constexpr Point kNeutral{0.31006, 0.31616};

Point Between(const Point& a, const Point& b, double share) {
  return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
}

// Where the chips of a value and hue begin in the table.
constexpr auto kStarts = [] {
  std::array<std::array<std::uint16_t, kHues>, kValues> starts{};
  std::uint16_t next = 0;
  for (std::size_t v = 0; v < kValues; ++v) {
    for (std::size_t h = 0; h < kHues; ++h) {
      starts[v][h] = next;
      next = static_cast<std::uint16_t>(next + munsell_data::kChromas[v][h]);
    }
  }
  return starts;
}();

// The chip of chroma 2 `c`, 0 being the neutral; beyond the last one the straight line through the last two.
Point ChipAt(std::size_t v, std::size_t h, std::size_t c) {
  if (c == 0) return kNeutral;
  const std::size_t count = munsell_data::kChromas[v][h];
  if (count == 0) return ChipAt(v + 1, h, c);  // one hue has no chip at value 0.2
  if (c > count) {
    const double steps = static_cast<double>(c - count);
    return Between(ChipAt(v, h, count - 1), ChipAt(v, h, count), 1.0 + steps);
  }
  const std::int16_t* chip = munsell_data::kChromaticities + 2 * (kStarts[v][h] + c - 1);
  return {static_cast<double>(chip[0]) / 1e4, static_cast<double>(chip[1]) / 1e4};
}

// A value between two of the table.
struct ValuePlace {
  std::size_t lower = 0, upper = 0;
  double share = 0.0;
};

ValuePlace PlaceOf(double value) {
  const auto& at = munsell_data::kValueAt;
  const double inside = std::clamp(value, at[0], at[kValues - 1]);
  ValuePlace place;
  while (place.lower + 2 < kValues && at[place.lower + 1] <= inside) ++place.lower;
  place.upper = place.lower + 1;
  place.share = (inside - at[place.lower]) / (at[place.upper] - at[place.lower]);
  return place;
}

Point ChipBetween(const ValuePlace& value, std::size_t h, std::size_t c) {
  return Between(ChipAt(value.lower, h, c), ChipAt(value.upper, h, c), value.share);
}

// What is this near to a chip, as a share of the way to the next one, lies on it.
constexpr double kOnChip = 1e-7;

// Whether a cell, of hue `h` and the next one and up to chroma 2 `c`, lies among real chips.
bool IsReal(const ValuePlace& place, double value, std::size_t h, bool isOnHue, std::size_t c) {
  if (value < 1.0 - kOnChip) return false;
  const auto isReal = [&](std::size_t v) {
    const auto& real = munsell_data::kRealChromas[v];
    return c <= real[h] && (isOnHue || c <= real[(h + 1) % kHues]);
  };
  return (place.share >= 1.0 - kOnChip || isReal(place.lower)) &&
         (place.share <= kOnChip || isReal(place.upper));
}

// The corners of a cell: chromas 2 c and 2 (c + 1) of one hue, then of the next.
struct Cell {
  Point near, far, nearNext, farNext;

  Point At(double chroma, double hue) const {
    return Between(Between(near, far, chroma), Between(nearNext, farNext, chroma), hue);
  }
  bool MayHold(const Point& p) const {
    constexpr double kMargin = 1e-9;
    const auto [left, right] = std::minmax({near.x, far.x, nearNext.x, farNext.x});
    const auto [low, high] = std::minmax({near.y, far.y, nearNext.y, farNext.y});
    return p.x >= left - kMargin && p.x <= right + kMargin && p.y >= low - kMargin && p.y <= high + kMargin;
  }
};

struct CellPlace {
  double chroma = 0.0, hue = 0.0;  // shares
};

// Where a point lies in a cell, by Newton's method; none outside.
std::optional<CellPlace> Locate(const Cell& cell, const Point& p) {
  constexpr double kSlack = 1e-7;
  CellPlace at{0.5, 0.5};
  for (int step = 0; step < 30; ++step) {
    const Point now = cell.At(at.chroma, at.hue);
    const Point inner = Between(cell.near, cell.nearNext, at.hue),
                outer = Between(cell.far, cell.farNext, at.hue);
    const Point one = Between(cell.near, cell.far, at.chroma),
                next = Between(cell.nearNext, cell.farNext, at.chroma);
    const Point byChroma{outer.x - inner.x, outer.y - inner.y}, byHue{next.x - one.x, next.y - one.y};
    const double determinant = byChroma.x * byHue.y - byChroma.y * byHue.x;
    if (determinant == 0.0) return std::nullopt;
    const double dx = p.x - now.x, dy = p.y - now.y;
    const double chroma = (dx * byHue.y - dy * byHue.x) / determinant;
    const double hue = (byChroma.x * dy - byChroma.y * dx) / determinant;
    at.chroma += chroma;
    at.hue += hue;
    if (!(std::fabs(at.chroma) < 4.0 && std::fabs(at.hue) < 4.0)) return std::nullopt;
    if (std::fabs(chroma) + std::fabs(hue) < 1e-13) break;
  }
  const auto isInside = [](double share) { return share >= -kSlack && share <= 1.0 + kSlack; };
  if (!isInside(at.chroma) || !isInside(at.hue)) return std::nullopt;
  return CellPlace{std::clamp(at.chroma, 0.0, 1.0), std::clamp(at.hue, 0.0, 1.0)};
}

// Fills hue and chroma of a chromaticity at a value; false where no cell holds it.
bool FindHueAndChroma(const Point& p, MunsellColor& found) {
  const ValuePlace place = PlaceOf(found.value);
  for (std::size_t c = 0; c < static_cast<std::size_t>(kMostChroma / kChromaStep); ++c) {
    Point near = ChipBetween(place, 0, c), far = ChipBetween(place, 0, c + 1);
    for (std::size_t h = 0; h < kHues; ++h) {
      const std::size_t next = (h + 1) % kHues;
      const Cell cell{near, far, ChipBetween(place, next, c), ChipBetween(place, next, c + 1)};
      near = cell.nearNext, far = cell.farNext;
      if (!cell.MayHold(p)) continue;
      const std::optional<CellPlace> at = Locate(cell, p);
      if (!at) continue;
      found.chroma = kChromaStep * (static_cast<double>(c) + at->chroma);
      found.hue = kHueStep * (static_cast<double>(h) + 1.0 + at->hue);
      if (found.hue > 100.0) found.hue -= 100.0;
      const bool isOnNext = at->hue >= 1.0 - kOnChip, isOnHue = isOnNext || at->hue <= kOnChip;
      const std::size_t outer = c + (at->chroma > kOnChip ? 1U : 0U);
      found.isExtrapolated = !IsReal(place, found.value, isOnNext ? next : h, isOnHue, outer);
      return true;
    }
  }
  return false;
}

constexpr double kNeutralChroma = 1e-6;  // less is no hue

}  // namespace

double LuminanceOfMunsellValue(double value) {
  return value * (1.1914 + value * (-0.22533 + value * (0.23352 + value * (-0.020484 + value * 0.00081939))));
}

double MunsellValueOfLuminance(double Y) {
  constexpr double kWhite = 10.0;
  if (!(Y >= 0.0 && Y <= LuminanceOfMunsellValue(kWhite) + 1e-9)) return kUnset;
  double low = 0.0, high = kWhite;
  constexpr int kHalvings = 60;
  for (int i = 0; i < kHalvings; ++i) {
    const double middle = (low + high) / 2.0;
    (LuminanceOfMunsellValue(middle) < Y ? low : high) = middle;
  }
  return (low + high) / 2.0;
}

MunsellColor MunsellFromXyz(const Xyz& xyz) {
  const double sum = xyz.X + xyz.Y + xyz.Z;
  MunsellColor found;
  if (IsUnset(xyz) || !std::isfinite(sum)) return found;
  const double value = MunsellValueOfLuminance(xyz.Y);
  if (IsUnset(value)) return found;
  if (!(sum > 0.0)) return {0.0, 0.0, 0.0, true};
  const Point p{xyz.X / sum, xyz.Y / sum};
  found.value = value;
  if (std::fabs(p.x - kNeutral.x) + std::fabs(p.y - kNeutral.y) < 1e-9)
    return {0.0, value, 0.0, value < 1.0 - kOnChip};
  if (!FindHueAndChroma(p, found)) return {};
  if (found.chroma < kNeutralChroma) found.hue = found.chroma = 0.0;
  return found;
}

Xyz XyzFromMunsell(MunsellColor& notation) {
  const Xyz unset{kUnset, kUnset, kUnset};
  const auto& [hue, value, chroma, flag] = notation;
  if (!(value >= 0.0 && value <= 10.0 && chroma >= 0.0 && chroma <= kMostChroma)) return unset;
  if (chroma > 0.0 && !(hue > 0.0 && hue <= 100.0)) return unset;
  const ValuePlace place = PlaceOf(value);
  Point p = kNeutral;
  notation.isExtrapolated = value < 1.0 - kOnChip;
  if (chroma > 0.0) {
    const double hues = hue / kHueStep + static_cast<double>(kHues) - 1.0, chromas = chroma / kChromaStep;
    const double hueBelow = std::floor(hues), chromaBelow = std::floor(chromas);
    const std::size_t h = static_cast<std::size_t>(hueBelow) % kHues,
                      c = static_cast<std::size_t>(chromaBelow);
    const std::size_t next = (h + 1) % kHues;
    const Cell cell{ChipBetween(place, h, c), ChipBetween(place, h, c + 1), ChipBetween(place, next, c),
                    ChipBetween(place, next, c + 1)};
    p = cell.At(chromas - chromaBelow, hues - hueBelow);
    const double hueShare = hues - hueBelow, chromaShare = chromas - chromaBelow;
    const std::size_t outer = c + (chromaShare > kOnChip ? 1U : 0U);
    notation.isExtrapolated = !IsReal(place, value, h, hueShare <= kOnChip, outer);
  }
  const double Y = LuminanceOfMunsellValue(value);
  if (!(p.y > 0.0)) return unset;
  return {Y * p.x / p.y, Y, Y * (1.0 - p.x - p.y) / p.y};
}

namespace {

// A number of 0 or more in tenths, without a last 0.
std::string OneDecimal(double number) {
  const auto tenths = static_cast<std::int64_t>(std::floor(10.0 * number + 0.5));
  const std::string whole = std::to_string(tenths / 10);
  return tenths % 10 == 0 ? whole : whole + "." + std::to_string(tenths % 10);
}

// Takes digits with or without a point from the beginning of a text; none where there are none, or more than twelve.
std::optional<double> TakeNumber(std::string_view& text) {
  constexpr std::size_t kMostDigits = 12;
  double number = 0.0, scale = 1.0;
  std::size_t at = 0, digits = 0;
  bool isBehindPoint = false;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '.' && !isBehindPoint) {
      isBehindPoint = true;
    } else if (c >= '0' && c <= '9') {
      number = 10.0 * number + static_cast<double>(c - '0');
      if (isBehindPoint) scale *= 10.0;
      ++digits;
    } else {
      break;
    }
  }
  if (digits == 0 || digits > kMostDigits) return std::nullopt;
  text.remove_prefix(at);
  return number / scale;
}

// The place of a hue name at the beginning of a text, the longest first.
std::optional<std::size_t> TakeHueName(std::string_view& text) {
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < kHueNames.size(); ++i) {
    const bool isLonger = !found || kHueNames[i].size() > kHueNames[*found].size();
    if (text.starts_with(kHueNames[i]) && isLonger) found = i;
  }
  if (found) text.remove_prefix(kHueNames[*found].size());
  return found;
}

}  // namespace

std::string MunsellText(const MunsellColor& notation) {
  if (IsUnset(notation.value) || IsUnset(notation.chroma)) return "";
  if (notation.chroma < 0.05) return "N " + OneDecimal(notation.value) + "/";
  // Rounded to tenths in (0, 10] of its name.
  double tenths = std::floor(notation.hue * 10.0 + 0.5);
  if (tenths <= 0.0) tenths = 1000.0;
  const auto name = static_cast<std::size_t>((tenths - 1.0) / 100.0) % kHueNames.size();
  const double within = tenths / 10.0 - 10.0 * static_cast<double>(name);
  return OneDecimal(within) + std::string(kHueNames[name]) + " " + OneDecimal(notation.value) + "/" +
         OneDecimal(notation.chroma);
}

std::optional<MunsellColor> ParseMunsell(std::string_view given) {
  std::string letters;
  for (const char c : given) {
    if (c != ' ') letters += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  std::string_view text = letters;
  MunsellColor notation{0.0, 0.0, 0.0, false};
  const bool isNeutral = text.starts_with("N");
  if (isNeutral) {
    text.remove_prefix(1);
  } else {
    const std::optional<double> hue = TakeNumber(text);
    const std::optional<std::size_t> name = TakeHueName(text);
    if (!hue || !name || !(*hue >= 0.0 && *hue <= 10.0)) return std::nullopt;
    notation.hue = 10.0 * static_cast<double>(*name) + *hue;
    if (notation.hue == 0.0) notation.hue = 100.0;
  }
  const std::optional<double> value = TakeNumber(text);
  if (!value || !(*value >= 0.0 && *value <= 10.0)) return std::nullopt;
  notation.value = *value;
  const bool hasSlash = text.starts_with("/");
  if (hasSlash) text.remove_prefix(1);
  if (isNeutral) return text.empty() ? std::optional(notation) : std::nullopt;
  const std::optional<double> chroma = hasSlash ? TakeNumber(text) : std::nullopt;
  if (!chroma || !(*chroma >= 0.0 && *chroma <= kMostChroma) || !text.empty()) return std::nullopt;
  notation.chroma = *chroma;
  return notation;
}

}  // namespace vrx
