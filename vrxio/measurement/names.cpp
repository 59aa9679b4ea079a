#include <vrxio/measurement/names.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/text.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::io {

namespace {

// Other names of illuminants and systems.
struct Alias {
  std::string_view name;
  int32_t number;
};
constexpr std::array<Alias, 15> kIlluminantAliases{{{"TL84", vrxIllumT84},
                                                    {"F11", vrxIllumT84},
                                                    {"F2", vrxIllumCWF},
                                                    {"F12", vrxIllumU30},
                                                    {"TL830", vrxIllumU30},
                                                    {"WWF", vrxIllumF4},
                                                    {"LED-B1", vrxIllumLB1},
                                                    {"LED-B2", vrxIllumLB2},
                                                    {"LED-B3", vrxIllumLB3},
                                                    {"LED-B4", vrxIllumLB4},
                                                    {"LED-B5", vrxIllumLB5},
                                                    {"LED-BH1", vrxIllumLH},
                                                    {"LED-RGB1", vrxIllumL3},
                                                    {"LED-V1", vrxIllumLV1},
                                                    {"LED-V2", vrxIllumLV2}}};
constexpr std::array<Alias, 6> kSystemAliases{{{"cielab", vrxSystemLab},
                                               {"dE76", vrxSystemLab},
                                               {"dE94", vrxSystemCie94},
                                               {"dE2000", vrxSystemCie2000},
                                               {"dE00", vrxSystemCie2000},
                                               {"ciede2000", vrxSystemCie2000}}};

// The alias of a name; null for another text.
const Alias* AliasOf(std::string_view text, std::span<const Alias> aliases) {
  const auto found =
      std::ranges::find_if(aliases, [&](const Alias& alias) { return EqualsIgnoringCase(text, alias.name); });
  return found != aliases.end() ? &*found : nullptr;
}

// The number that an alias stands for; -1 for another text.
int32_t FindAlias(std::string_view text, std::span<const Alias> aliases) {
  const Alias* alias = AliasOf(text, aliases);
  return alias != nullptr ? alias->number : -1;
}

std::vector<std::string> NamesOfIlluminants() {
  std::vector<std::string> names;
  names.reserve(kBuiltInIlluminants + kIlluminantAliases.size());
  for (int32_t i = 0; i < kBuiltInIlluminants; ++i) names.push_back(CodeOf(static_cast<vrxIlluminant>(i)));
  for (const vrxUserIllum number : RegisteredUserIlluminants()) names.push_back(CodeOf(IlluminantOf(number)));
  for (const Alias& alias : kIlluminantAliases) names.emplace_back(alias.name);
  return names;
}

// Letters to change, add, leave out or exchange with their neighbour, to make one text of the other (the restricted
// distance of Damerau and Levenshtein).
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1), above(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) above[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const auto equal = [&](std::size_t x, std::size_t y) { return LowerCase(a[x]) == LowerCase(b[y]); };
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (equal(i - 1, j - 1) ? 0U : 1U)});
      if (i > 1 && j > 1 && equal(i - 1, j - 2) && equal(i - 2, j - 1))
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(above);
    above.swap(row);
  }
  return above[b.size()];
}

std::string Quoted(std::string_view text) {
  return std::string("\"").append(text).append("\"");
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

int32_t GeometryNamed(std::string_view text) {
  const std::string plain = PlainGeometryName(text);
  for (int32_t code = 0; code < kAngleCodes; ++code) {
    if (PlainGeometryName(GeometryName(code)) == plain) return code;
  }
  return kUnknownGeometry;
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

std::string NearestName(std::string_view text, std::span<const std::string> names) {
  constexpr std::size_t kLongestName = 40;  // of what is worth comparing
  std::size_t limit = text.size() > 4 ? 3 : 2;
  if (text.size() > kLongestName) return {};
  std::string nearest;
  for (const std::string& name : names) {
    const std::size_t distance = EditDistance(text, name);
    if (distance >= limit || distance >= name.size()) continue;
    limit = distance;
    nearest = name;
  }
  return nearest;
}

std::string DidYouMean(std::string_view text, std::span<const std::string> names) {
  const std::string name = NearestName(text, names);
  return name.empty() ? name : std::string("; did you mean ").append(name).append("?");
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
  if (const int32_t other = FindAlias(text, kIlluminantAliases); other >= 0) {
    return static_cast<vrxIlluminant>(other);
  }
  throw InputError("unknown illuminant " + Quoted(text) + DidYouMean(text, NamesOfIlluminants()) +
                   "; see vrx tables");
}

int32_t ParseObserver(std::string_view text) {
  if (text == "2") return kObserver2;
  if (text == "10") return kObserver10;
  throw InputError("unknown observer " + Quoted(text) + "; it must be 2 or 10 (degrees)");
}

int32_t ParseSystem(std::string_view text) {
  const int32_t number = ParseNumberBelow(kDifferenceSystems, text);
  if (number >= 0) return number;
  std::vector<std::string> names;
  for (const DifferenceSystem& system : DifferenceSystems()) {
    if (EqualsIgnoringCase(text, system.shortName)) return system.number;
    names.emplace_back(system.shortName);
  }
  if (const int32_t other = FindAlias(text, kSystemAliases); other >= 0) return other;
  throw InputError("unknown difference system " + Quoted(text) + DidYouMean(text, names) + "; see --help");
}

std::string NameOfIlluminant(std::string_view text) {
  const vrxIlluminant illuminant = ParseIlluminant(text);
  const Alias* alias = AliasOf(text, kIlluminantAliases);
  // A registered illuminant may have the name of an alias, and goes first.
  return alias != nullptr && alias->number == illuminant ? std::string(alias->name) : CodeOf(illuminant);
}

std::string CodesOf(std::span<const vrxIlluminant> illuminants) {
  std::string text;
  for (const vrxIlluminant illuminant : illuminants)
    text.append(text.empty() ? "" : ",").append(CodeOf(illuminant));
  return text;
}

std::string CodeOf(vrxIlluminant illuminant) {
  return IlluminantCode(illuminant).ToUtf8();
}

std::string_view ShortNameOf(int32_t system) {
  const DifferenceSystem* row = FindDifferenceSystem(system);
  return row != nullptr ? row->shortName : std::string_view();
}

std::string TitleOf(const CDifferenceSettings& settings) {
  return DifferenceSystemName(settings.system, NameLength::kLong, settings.parameters).ToUtf8();
}

const std::string& TextOf(ShadeWord word) {
  static constexpr std::size_t kWords = 11;
  static const auto kTexts = [] {
    std::array<std::string, kWords> texts;
    for (std::size_t i = 0; i < kWords; ++i)
      texts[i] = CString(ShadeWordText(static_cast<ShadeWord>(i))).ToUtf8();
    return texts;
  }();
  return kTexts[static_cast<std::size_t>(word)];
}

std::string JoinedWords(std::span<const ShadeWord> words) {
  std::string text;
  for (const ShadeWord word : words) {
    if (word != kShadeNone) text.append(text.empty() ? "" : ", ").append(TextOf(word));
  }
  return text;
}

const char* TextOf(Verdict verdict) {
  constexpr std::array<const char*, 3> kNames = {"fail", "warning", "pass"};
  return kNames.at(static_cast<std::size_t>(verdict));
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
  if (number < 0) return GeometryNamed(text);
  const int32_t degrees = GeometryNamed(std::string(text) + "deg");
  return degrees == kUnknownGeometry || degrees == number ? number : kUnknownGeometry;
}

std::string GeometryRefusal(std::string_view text) {
  const std::string degrees = std::string(text) + "deg", quoted = Quoted(text);
  if (GeometryNamed(degrees) == kUnknownGeometry) return "unknown geometry " + quoted;
  const int32_t number = ParseNumberBelow(kAngleCodes, text);
  if (number < 0) return "unknown geometry " + quoted + "; degrees are written " + degrees;
  return "geometry " + quoted + " may be in degrees or the code of " + GeometryName(number) + "; write " +
         degrees + " or " + GeometryName(number);
}

std::string GeometryName(int32_t geometry) {
  return geometry < 0 ? std::string() : NameOfAngle(static_cast<uint8_t>(geometry)).ToUtf8();
}

}  // namespace vrx::io
