#include <vrxio/names.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include <vrxio/decimal.h>
#include <vrxio/input_error.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::io {

namespace {

// By number.
constexpr std::array<std::string_view, kDifferenceSystems> kSystemNames{
    "lab", "cmc",    "hunter", "fmc2",  "cie94",   "lch",    "luv",
    "xyz", "gepqs2", "audi",   "din99", "cie2000", "din6175"};

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// A whole number below `limit`; -1 for any other text.
int32_t ParseNumberBelow(int32_t limit, std::string_view text) {
  int32_t value = -1;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end && value >= 0 && value < limit ? value : -1;
}

// A name of a geometry in one spelling: lower case, without spaces, "deg" for the degree sign.
std::string PlainGeometryName(std::string_view name) {
  constexpr std::string_view kDegreeSign = "\xC2\xB0";
  std::string plain;
  for (; !name.empty(); name.remove_prefix(1)) {
    if (name.starts_with(kDegreeSign)) {
      plain += "deg";
      name.remove_prefix(1);
    } else if (name.front() != ' ') {
      plain += LowerCase(name.front());
    }
  }
  return plain;
}

}  // namespace

std::vector<std::string> SplitList(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    std::string_view part = text.substr(begin, end - begin);
    while (part.starts_with(' ')) part.remove_prefix(1);
    while (part.ends_with(' ')) part.remove_suffix(1);
    parts.emplace_back(part);
    begin = end + 1;
  }
  return parts;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, LowerCase, LowerCase);
}

vrxIlluminant ParseIlluminant(std::string_view text) {
  const int32_t number = ParseNumberBelow(kFirstUserIlluminant + kUserIlluminants, text);
  const CUserIllumArray users = RegisteredUserIlluminants();
  const bool isUser = std::ranges::find(users, static_cast<vrxUserIllum>(number)) != users.end();
  if ((number >= 0 && number < kBuiltInIlluminants) || isUser) return static_cast<vrxIlluminant>(number);
  vrxIlluminant illuminant;
  if (FindIlluminant(CString::FromUtf8(text), illuminant)) return illuminant;
  throw InputError("unknown illuminant " + Quoted(text) + "; vrx tables lists them");
}

int32_t ParseObserver(std::string_view text) {
  if (text == "2") return kObserver2;
  if (text == "10") return kObserver10;
  throw InputError("unknown observer " + Quoted(text) + "; it is 2 or 10 (degrees)");
}

int32_t ParseSystem(std::string_view text) {
  const int32_t number = ParseNumberBelow(kDifferenceSystems, text);
  if (number >= 0) return number;
  for (std::size_t i = 0; i < kSystemNames.size(); ++i) {
    if (EqualsIgnoringCase(text, kSystemNames[i])) return static_cast<int32_t>(i);
  }
  throw InputError("unknown difference system " + Quoted(text) + "; --help lists them");
}

std::string CodeOf(vrxIlluminant illuminant) {
  return IlluminantCode(illuminant).ToUtf8();
}

std::string_view ShortNameOf(int32_t system) {
  return kSystemNames[static_cast<std::size_t>(system)];
}

std::string TitleOf(const CDifferenceSettings& settings) {
  return DifferenceSystemName(settings.system, NameLength::kLong, settings.parameters).ToUtf8();
}

std::vector<DifferenceColumn> DifferenceColumnsOf(int32_t system) {
  std::vector<DifferenceColumn> columns;
  std::vector<std::string> headings = SplitList(DifferenceColumns(system).ToUtf8(), '|');
  for (const int32_t element : DifferenceColumnElements(system)) {
    columns.push_back({std::move(headings[columns.size()]), element});
  }
  return columns;
}

std::vector<double> ParseNumbers(std::string_view text, std::string_view option) {
  std::vector<double> numbers;
  for (const std::string& part : SplitList(text, ',')) {
    double& number = numbers.emplace_back();
    if (!ParseDecimal(part, '.', number)) {
      throw InputError(std::string(option) + ": " + Quoted(part) + " is not a number");
    }
  }
  return numbers;
}

int32_t ParseGeometry(std::string_view text) {
  if (text.empty()) return kNoGeometry;
  const int32_t number = ParseNumberBelow(kAngleCodes, text);
  if (number >= 0) return number;
  const std::string plain = PlainGeometryName(text);
  for (int32_t code = 0; code < kAngleCodes; ++code) {
    if (PlainGeometryName(GeometryName(code)) == plain) return code;
  }
  return kUnknownGeometry;
}

std::string GeometryName(int32_t geometry) {
  return geometry < 0 ? std::string() : NameOfAngle(static_cast<uint8_t>(geometry)).ToUtf8();
}

}  // namespace vrx::io
