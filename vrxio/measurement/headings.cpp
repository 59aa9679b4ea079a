#include <vrxio/measurement/headings.h>

#include <algorithm>
#include <array>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr double kShortest = 100;    // nm; a number outside is no wavelength
constexpr double kLongest = 10'000;  // nm

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Texts that may stand before and behind the number of a wavelength.
bool IsWavelengthPrefix(std::string_view plain) {
  constexpr std::string_view kPrefixes[] = {"",           "nm",     "r",           "x",    "spectral",
                                            "spectralnm", "spec",   "reflectance", "refl", "wl",
                                            "wavelength", "lambda", "spectrum",    "rsci", "rsce"};
  return std::ranges::find(kPrefixes, plain) != std::end(kPrefixes);
}

struct Word {
  std::string_view plain;
  Heading heading;
};

constexpr Heading Color(uint8_t color) {
  return {ColumnRole::kColor, 0, color, 0};
}

constexpr Heading Id(IdRank rank) {
  return {ColumnRole::kId, 0, 0, rank};
}

// Headings whose capital letters matter.
constexpr Word kExactWords[] = {
    {"X", Color(kColumnX)},    {"Y", Color(kColumnY)},      {"Z", Color(kColumnZ)},
    {"L", Color(kColumnL)},    {"a", Color(kColumnA)},      {"b", Color(kColumnB)},
    {"A", Color(kColumnA)},    {"B", Color(kColumnB)},      {"C", Color(kColumnC)},
    {"h", Color(kColumnH)},    {"H", Color(kColumnH)},      {"L*", Color(kColumnL)},
    {"a*", Color(kColumnA)},   {"b*", Color(kColumnB)},     {"C*", Color(kColumnC)},
    {"h*", Color(kColumnH)},   {"hab", Color(kColumnH)},    {"Cab", Color(kColumnC)},
    {"C*ab", Color(kColumnC)}, {"x", Color(kColumnSmallX)}, {"y", Color(kColumnSmallY)}};

constexpr Word kWords[] = {{"id", {ColumnRole::kId}},
                           {"sampleid", {ColumnRole::kId}},
                           {"sample", {ColumnRole::kId}},
                           {"patch", {ColumnRole::kId}},
                           {"patchid", {ColumnRole::kId}},
                           {"dataname", Id(kIdOfMaker)},
                           {"stdname", Id(kIdOfStandard)},
                           {"nameofaffiliatedstandardsample", Id(kIdOfStandard)},
                           {"reading", Id(kIdOfReading)},
                           {"readingno", Id(kIdOfReading)},
                           {"name", {ColumnRole::kName}},
                           {"samplename", {ColumnRole::kName}},
                           {"patchname", {ColumnRole::kName}},
                           {"standard", {ColumnRole::kStandard}},
                           {"geometry", {ColumnRole::kGeometry}},
                           {"date", {ColumnRole::kDate}},
                           {"datetime", {ColumnRole::kDate}},
                           {"timestamp", {ColumnRole::kDate}},
                           {"measuredate", {ColumnRole::kDate}},
                           {"measurementdate", {ColumnRole::kDate}},
                           {"created", {ColumnRole::kDate}},
                           {"xyzx", Color(kColumnX)},
                           {"xyzy", Color(kColumnY)},
                           {"xyzz", Color(kColumnZ)},
                           {"xyyx", Color(kColumnSmallX)},
                           {"xyyy", Color(kColumnSmallY)},
                           {"xyycapy", Color(kColumnY)},
                           {"labl", Color(kColumnL)},
                           {"laba", Color(kColumnA)},
                           {"labb", Color(kColumnB)},
                           {"labc", Color(kColumnC)},
                           {"labh", Color(kColumnH)},
                           {"lchl", Color(kColumnL)},
                           {"lchc", Color(kColumnC)},
                           {"lchh", Color(kColumnH)}};

// The beginnings of headings whose values are of no use here.
constexpr std::string_view kDeviceWords[] = {
    "rgb",   "cmyk",   "cmy",     "density",    "d_",        "xyy",   "luv",
    "stdev", "lab_de", "mean_de", "sample_loc", "sampleloc", "gray",  "string",
    "hex",   "srgb",   "ncolor",  "bytescan",   "lightness", "index", "time"};

std::string LowerText(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), LowerCase);
  return lower;
}

bool IsDevice(std::string_view heading) {
  const std::string lower = LowerText(heading);
  return std::ranges::any_of(kDeviceWords, [&](std::string_view word) { return lower.starts_with(word); });
}

// Whether a heading names a colour difference, "dE2000", "\xCE\x94L*", "DE CMC(2:1)": an export has them beside the colours.
bool IsDifference(std::string_view heading) {
  constexpr std::string_view kDelta = "\xCE\x94",
                             kNames[] = {"L", "a", "b", "C", "h", "H", "Cab", "Hab", "hab"};
  if (heading.starts_with(kDelta)) {
    heading.remove_prefix(kDelta.size());
  } else if (heading.starts_with('d') || heading.starts_with('D')) {
    heading.remove_prefix(1);
  } else {
    return false;
  }
  std::string name;
  for (const char c : heading) {
    if (c != '*' && c != ' ' && c != '_') name += c;
  }
  if (std::ranges::find(kNames, name) != std::end(kNames)) return true;
  if (!name.starts_with('E')) return false;
  constexpr std::string_view kFormulas[] = {"",      "ab",    "76",    "94",    "00",
                                            "2000",  "99",    "cmc",   "cie94", "cie2000",
                                            "cie00", "cmc21", "cmc11", "din99", "hunter"};
  return std::ranges::find(kFormulas, PlainText(name.substr(1))) != std::end(kFormulas);
}

// A heading about its number, which may have an exponent where nothing stands before it: "4.000E+02".
struct Parts {
  std::string_view before, number, after;
};

Parts PartsOf(std::string_view heading) {
  constexpr std::size_t kLongestHeading = 40;
  if (heading.size() > kLongestHeading) return {heading, {}, {}};
  const auto first = static_cast<std::size_t>(std::ranges::find_if(heading, IsDigit) - heading.begin());
  std::size_t end = first;
  while (end < heading.size() && (IsDigit(heading[end]) || heading[end] == '.' || heading[end] == ',')) ++end;
  const bool hasExponent = first == 0 && end + 2 < heading.size() && LowerCase(heading[end]) == 'e' &&
                           (heading[end + 1] == '+' || heading[end + 1] == '-') && IsDigit(heading[end + 2]);
  if (hasExponent) {
    end += 2;
    while (end < heading.size() && IsDigit(heading[end])) ++end;
  }
  return {heading.substr(0, first), heading.substr(first, end - first), heading.substr(end)};
}

bool IsLetter(char c) {
  return LowerCase(c) >= 'a' && LowerCase(c) <= 'z';
}

// Whether the "W" at `at` is that of "W/m2/nm", "uW cm-2 nm-1", "W/(sr m^2 nm)" or "mW/nm": behind no letter but a prefix, before
// signs and a unit of area, angle or wavelength.
bool IsUnitOfPower(std::string_view text, std::size_t at) {
  const auto isLetterAt = [&](std::size_t back) { return at >= back && IsLetter(text[at - back]); };
  const bool isPrefixed =
      isLetterAt(1) && std::string_view("mun").find(text[at - 1]) != std::string_view::npos;
  if (isLetterAt(1) && !(isPrefixed && !isLetterAt(2))) return false;
  std::string rest;
  for (const char c : text.substr(at + 1)) {
    if (IsLetter(c) || IsDigit(c)) rest += c;
  }
  const bool isJoined = at + 1 < text.size() && (IsLetter(text[at + 1]) || IsDigit(text[at + 1]));
  const auto begins = [&rest](std::string_view unit) { return rest.starts_with(unit); };
  return !isJoined && (begins("m2") || begins("cm2") || begins("sr") || begins("nm"));
}

// The heading without blanks about it and without a remark in brackets at its end: "L*(10/D65)".
std::string_view WithoutRemark(std::string_view heading) {
  const std::size_t bracket = heading.find_first_of("([");
  if (bracket != std::string_view::npos && bracket > 0) heading = heading.substr(0, bracket);
  while (heading.ends_with(' ')) heading.remove_suffix(1);
  return heading;
}

}  // namespace

double WavelengthOf(std::string_view heading) {
  const Parts parts = PartsOf(heading);
  const std::string after = PlainText(parts.after);
  if (parts.number.empty() || !IsWavelengthPrefix(PlainText(parts.before))) return 0;
  if (parts.before.find_first_of("-+.,") != std::string_view::npos) return 0;
  if (!after.empty() && after != "nm" && after != "nmr") return 0;
  if (parts.after.find_first_of("-+.,:/") != std::string_view::npos) return 0;
  double value = 0;
  const bool isNumber = ParseDecimal(parts.number, ',', value);
  return isNumber && value >= kShortest && value <= kLongest ? value : 0;
}

std::string_view RemarkOf(std::string_view heading) {
  return heading.substr(WithoutRemark(heading).size());
}

std::string TakeLightOfHeading(std::string_view heading, MeasuringConditions& conditions) {
  MeasuringConditions own;
  TakeLightRemark(RemarkOf(heading), own);
  std::string conflict = ConditionConflict(conditions, own);
  if (own.illuminant >= 0) conditions.illuminant = own.illuminant;
  if (own.observer >= 0) conditions.observer = own.observer;
  return conflict;
}

std::string SpellingOf(std::string_view heading) {
  const Parts parts = PartsOf(heading);
  return std::string(parts.before) + '|' + std::string(parts.after);
}

bool IsRawCount(std::string_view heading) {
  constexpr std::string_view kCounts[] = {"counts", "count", "cts", "rawcounts", "adc"};
  const std::size_t bracket = heading.find_last_of("([");
  std::string_view unit =
      bracket != std::string_view::npos ? heading.substr(bracket) : PartsOf(heading).after;
  while (unit.starts_with(' ')) unit.remove_prefix(1);
  if (unit.starts_with("nm")) unit.remove_prefix(2);
  return std::ranges::find(kCounts, PlainText(unit)) != std::end(kCounts);
}

bool IsLightPower(std::string_view text) {
  const std::string plain = PlainText(text);
  for (const std::string_view word : {"irradiance", "spectralradiance", "spectralpower", "radiantflux"}) {
    if (plain.find(word) != std::string::npos) return true;
  }
  if (plain == "spd" || plain == "radiance") return true;
  for (std::size_t i = text.find('W'); i != std::string_view::npos; i = text.find('W', i + 1)) {
    if (IsUnitOfPower(text, i)) return true;
  }
  return false;
}

Heading MeaningOf(std::string_view heading) {
  if (const double wavelength = WavelengthOf(heading); wavelength > 0) {
    return {ColumnRole::kWavelength, wavelength, 0, 0};
  }
  if (IsRawCount(heading)) return {ColumnRole::kDevice};
  const std::string_view bare = WithoutRemark(heading);
  for (const Word& word : kExactWords) {
    if (bare == word.plain) return word.heading;
  }
  const std::string plain = PlainText(bare);
  for (const Word& word : kWords) {
    if (plain == word.plain) return word.heading;
  }
  if (plain == "spectralnm") return {ColumnRole::kPairWavelength};
  if (IsDevice(heading) || IsDifference(bare)) return {ColumnRole::kDevice};
  MeasuringConditions ignored;
  if (!plain.empty() && TakeCondition(plain, "", ignored)) return {ColumnRole::kCondition};
  return {};
}

}  // namespace vrx::io
