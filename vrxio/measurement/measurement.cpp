#include <vrxio/measurement/measurement.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <utility>

#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

// Angle codes of the library that files speak of.
enum Geometry : int32_t { kSphere = 0, k45To0 = 1, kDiffuse0 = 2, k0To45 = 3, kSci = 12, kSce = 13 };

// SCI and SCE by turns, of several lights.
constexpr int32_t kLastSce = 19;
bool IsOfSphere(int32_t geometry) {
  return geometry >= kSci && geometry <= kLastSce;
}

// The M condition that a text names, "M1", "m1_daylight" or "Illumination=M1"; -1 for none.
int32_t MConditionOf(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    const bool startsWord = i == 0 || !std::isalnum(static_cast<unsigned char>(text[i - 1]));
    const bool endsWord = i + 2 == text.size() || !std::isalnum(static_cast<unsigned char>(text[i + 2]));
    if ((text[i] == 'M' || text[i] == 'm') && text[i + 1] >= '0' && text[i + 1] <= '3' && startsWord &&
        endsWord) {
      return text[i + 1] - '0';
    }
  }
  return -1;
}

bool Contains(const std::string& plain, std::string_view word) {
  return plain.find(word) != std::string::npos;
}

// The specular component that a plain text names. "i" and "e" stand for it where nothing else is said.
Specular SpecularOf(const std::string& plain) {
  if (Contains(plain, "sce") || Contains(plain, "spex") || Contains(plain, "exclu"))
    return Specular::kExcluded;
  if (Contains(plain, "sci") || Contains(plain, "spin") || Contains(plain, "inclu"))
    return Specular::kIncluded;
  if (plain == "i" || plain == "yes") return Specular::kIncluded;
  if (plain == "e" || plain == "no") return Specular::kExcluded;
  return Specular::kUnknown;
}

// Whole numbers of a text such as "45:0" or "45/0", where it has two and nothing but signs and blanks beside them.
bool IsPair(std::string_view text, std::string_view first, std::string_view second) {
  std::string digits;
  for (const char c : text) {
    if (c >= '0' && c <= '9')
      digits += c;
    else if ((c == ':' || c == '/' || c == '|' || c == '_') && !digits.ends_with('/'))
      digits += '/';
    else if (std::isalpha(static_cast<unsigned char>(c)) && c != 'c' && c != 'x' && c != 'a')
      return false;
  }
  while (digits.ends_with('/')) digits.pop_back();
  return digits == std::string(first) + "/" + std::string(second);
}

void SetSpecular(Specular specular, MeasuringConditions& conditions) {
  if (specular == Specular::kUnknown) return;
  conditions.specular = specular;
  const bool isSphere = conditions.geometry == kSphere || conditions.geometry == kNoGeometry;
  if (isSphere) conditions.geometry = specular == Specular::kIncluded ? kSci : kSce;
}

void SetFilter(std::string_view text, MeasuringConditions& conditions) {
  const std::string plain = PlainText(text);
  conditions.filter = text;
  if (const int32_t m = MConditionOf(text); m >= 0) conditions.mCondition = m;
  if (Contains(plain, "420"))
    conditions.ultraviolet = 'F';
  else if (Contains(plain, "460"))
    conditions.ultraviolet = 'J';
  else if (Contains(plain, "400"))
    conditions.ultraviolet = 'G';
  else if (Contains(plain, "uvd65") || Contains(plain, "partial"))
    conditions.ultraviolet = 'P';
  else if (Contains(plain, "exclu") || Contains(plain, "uvcut") || Contains(plain, "nouv"))
    conditions.ultraviolet = 'E';
  else if (plain == "none" || plain == "no" || plain == "filternone" || Contains(plain, "inclu") ||
           Contains(plain, "100"))
    conditions.ultraviolet = 'I';
}

void SetObserver(std::string_view text, MeasuringConditions& conditions) {
  const std::string plain = PlainText(text);
  if (plain.starts_with("10") || Contains(plain, "1964"))
    conditions.observer = kObserver10;
  else if (plain.starts_with("2") || Contains(plain, "1931"))
    conditions.observer = kObserver2;
}

void SetIlluminant(std::string_view text, MeasuringConditions& conditions) {
  // "D50" as well as "ILLUMINANT, D50", and "OBSERVER, 2 degree".
  if (const std::size_t comma = text.rfind(','); comma != std::string_view::npos) {
    const bool isObserver = PlainText(text.substr(0, comma)).starts_with("observer");
    text.remove_prefix(comma + 1);
    while (text.starts_with(' ')) text.remove_prefix(1);
    if (isObserver) return SetObserver(text, conditions);
  }
  while (text.starts_with(' ')) text.remove_prefix(1);
  if (text.empty()) return;
  conditions.illuminant = -1;
  conditions.otherIlluminant.clear();
  try {
    conditions.illuminant = ParseIlluminant(text);
  } catch (const InputError&) {
    conditions.otherIlluminant = text;
  }
}

// A geometry in the words of a file, of which the words for none say nothing.
void SetGeometry(std::string_view text, MeasuringConditions& conditions) {
  constexpr std::string_view kNone[] = {"",         "unknown", "none", "na", "unspecified", "notspecified",
                                        "undefined"};
  const int32_t geometry = ParseMeasuringGeometry(text);
  TakeGeometry(geometry, conditions);
  const std::string plain = PlainText(text);
  if (geometry == kUnknownGeometry && std::ranges::find(kNone, plain) == std::end(kNone))
    conditions.otherGeometry = text;
}

// "Illumination=M1 ObserverAngle=2 WhiteBase=Abs Filter=UVcut": pairs that some programs put into one text.
void TakePairs(std::string_view text, MeasuringConditions& conditions) {
  constexpr std::string_view kBetween = " \t;";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(kBetween), text.size());
    const std::string_view pair = text.substr(0, end);
    const std::size_t equals = pair.find('=');
    if (equals != std::string_view::npos && PlainText(pair.substr(0, equals)) != "measurementsource") {
      TakeCondition(pair.substr(0, equals), pair.substr(equals + 1), conditions);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace

bool IsBesideGloss(int32_t geometry) {
  // Those behind the first two are aspecular angles: 15 to 110 degrees, 105, -15, -45, -30 and 80.
  constexpr std::array<int32_t, 15> kBeside{k45To0, k0To45, 4, 5, 6, 7, 8, 9, 10, 11, 40, 41, 46, 47, 48};
  return std::ranges::find(kBeside, geometry) != kBeside.end();
}

Specular SpecularOfGeometry(int32_t geometry) {
  if (IsBesideGloss(geometry)) return Specular::kExcluded;
  if (!IsOfSphere(geometry)) return Specular::kUnknown;
  return (geometry - kSci) % 2 == 0 ? Specular::kIncluded : Specular::kExcluded;
}

void TakeGeometry(int32_t geometry, MeasuringConditions& conditions) {
  if (geometry < 0) return;
  if (IsMeasurementCondition(geometry)) {
    conditions.mCondition = geometry - kGeometryM0;
    return;
  }
  conditions.geometry = geometry;
  if (IsOfSphere(geometry)) conditions.specular = SpecularOfGeometry(geometry);
}

void LeaveToGeometry(int32_t geometry, MeasuringConditions& conditions) {
  conditions.geometry = kNoGeometry;
  if (IsMeasurementCondition(geometry)) conditions.mCondition = -1, conditions.ultraviolet = 0;
  if (IsOfSphere(geometry)) conditions.specular = Specular::kUnknown;
}

int32_t ParseMeasuringGeometry(std::string_view text) {
  const int32_t known = ParseGeometry(text);
  if (known != kUnknownGeometry) return known;
  if (IsPair(text, "45", "0")) return k45To0;
  if (IsPair(text, "0", "45")) return k0To45;
  if (const int32_t m = MConditionOf(text); m >= 0) return kGeometryM0 + m;
  const std::string plain = PlainText(text);
  const Specular specular = SpecularOf(plain);
  const bool isSphere = plain.starts_with("d8") || plain.starts_with("di8") || plain.starts_with("de8") ||
                        plain.starts_with("8d") || Contains(plain, "sphere") || Contains(plain, "diffuse8");
  if (plain.starts_with("di8") || specular == Specular::kIncluded) return kSci;
  if (plain.starts_with("de8") || specular == Specular::kExcluded) return kSce;
  if (isSphere) return kSphere;
  if (plain.starts_with("d0") || plain == "diffuse0") return kDiffuse0;
  // "15as", "as15", "45as-15": the aspecular angles of multi-angle instruments.
  std::string_view angle = text;
  if (plain.ends_with("as")) angle = text.substr(0, text.size() - 2);
  if (plain.starts_with("45as") && plain.size() > 4) angle = text.substr(4);
  if (plain.starts_with("as") && text.size() > 2) angle = text.substr(2);
  if (angle.size() != text.size()) return ParseGeometry(std::string(angle) + "deg");
  return kUnknownGeometry;
}

std::string UnknownGeometryWarning(const MeasuringConditions& conditions) {
  if (conditions.otherGeometry.empty() || conditions.geometry != kNoGeometry) return {};
  return GeometryRefusal(conditions.otherGeometry) +
         "; it is not used (known are SCI, SCE, d8, 45/0, 0/45 and angles such as 25deg)";
}

bool TakeCondition(std::string_view word, std::string_view text, MeasuringConditions& conditions) {
  const std::string plain = PlainText(word);
  const auto is = [&](std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, plain) != words.end();
  };
  if (is({"geometry", "measurementgeometry", "measuringgeometry", "measgeometry"})) {
    SetGeometry(text, conditions);
  } else if (is({"specular", "specularcomponent", "scisce", "mode", "measurementmode", "sphere"})) {
    SetSpecular(SpecularOf(PlainText(text)), conditions);
  } else if (is({"measurementcondition", "mcondition", "condition", "illumination", "illuminationcondition",
                 "deviceillumination"})) {
    if (const int32_t m = MConditionOf(text); m >= 0) conditions.mCondition = m;
  } else if (is({"filter", "filterstatus", "uvfilter", "uv", "ultraviolet", "devicefilter", "filtername"})) {
    if (!text.empty()) SetFilter(text, conditions);
  } else if (is({"polarization", "devicepolarization", "polarisation"})) {
    if (PlainText(text) == "yes" || PlainText(text) == "true") conditions.mCondition = 3;
  } else if (is({"backing", "samplebacking", "samplebackground", "background"})) {
    conditions.backing = text;
  } else if (is({"instrument", "instrumentation", "device", "devicename", "targetinstrument", "model",
                 "spectrometer", "spectrophotometer"})) {
    conditions.instrument = text;
  } else if (is({"aperture", "measurementaperture", "measurementarea", "lens", "lav"})) {
    conditions.aperture = text;
  } else if (is({"created", "date", "creationdate", "measurementdate", "printdate"})) {
    conditions.date = text;
  } else if (is({"observer", "observerangle", "standardobserver"})) {
    SetObserver(text, conditions);
  } else if (is({"illuminant", "weightingfunction", "illuminationname"})) {
    SetIlluminant(text, conditions);
  } else if (is({"measurementsource"})) {
    TakePairs(text, conditions);
  } else {
    return false;
  }
  return true;
}

std::string ConditionCode(const MeasuringConditions& conditions) {
  Specular specular = conditions.specular;
  const bool isDirectional = conditions.geometry == k45To0 || conditions.geometry == k0To45;
  if (isDirectional || conditions.mCondition >= 0) specular = Specular::kExcluded;
  if (specular == Specular::kUnknown) return {};
  std::string code = specular == Specular::kIncluded ? "CRI" : "CRE";
  // ISO 13655: M1 has the ultraviolet of daylight; M2 and M3 have none, below 400 nm.
  constexpr std::array<char, 4> kUltravioletOfM{0, 'I', 'G', 'G'};
  char ultraviolet = conditions.ultraviolet;
  if (ultraviolet == 0 && conditions.mCondition >= 0) {
    ultraviolet = kUltravioletOfM[static_cast<std::size_t>(conditions.mCondition)];
  }
  if (ultraviolet == 0) return code;
  code += ultraviolet;
  constexpr std::pair<std::string_view, char> kLenses[] = {{"lav", 'L'},  {"mav", 'M'},  {"sav", 'S'},
                                                           {"usav", 'U'}, {"vsav", 'V'}, {"xlav", 'X'}};
  const std::string aperture = PlainText(conditions.aperture);
  for (const auto& [name, letter] : kLenses) {
    if (aperture == name) code += letter;
  }
  return code;
}

std::string ConditionConflict(const MeasuringConditions& a, const MeasuringConditions& b) {
  const auto differ = [](auto first, auto second, auto unknown) {
    return first != unknown && second != unknown && first != second;
  };
  if (differ(a.geometry, b.geometry, kNoGeometry)) {
    return "geometry " + GeometryName(a.geometry) + " and " + GeometryName(b.geometry);
  }
  if (differ(a.specular, b.specular, Specular::kUnknown)) return "specular included and excluded";
  if (differ(a.mCondition, b.mCondition, -1)) {
    return "M" + std::to_string(a.mCondition) + " and M" + std::to_string(b.mCondition);
  }
  if (differ(a.ultraviolet, b.ultraviolet, char{0})) return "filter " + a.filter + " and " + b.filter;
  if (differ(PlainText(a.backing), PlainText(b.backing), std::string())) {
    return "backing " + a.backing + " and " + b.backing;
  }
  if (differ(a.illuminant, b.illuminant, -1)) {
    return "illuminant " + CodeOf(static_cast<vrxIlluminant>(a.illuminant)) + " and " +
           CodeOf(static_cast<vrxIlluminant>(b.illuminant));
  }
  if (differ(a.observer, b.observer, -1)) return "observers of 2 and 10 degrees";
  return {};
}

void TakeLightRemark(std::string_view remark, MeasuringConditions& conditions) {
  constexpr std::string_view kBetween = "()[]/,; ";
  while (!remark.empty()) {
    const std::size_t end = std::min(remark.find_first_of(kBetween), remark.size());
    const std::string_view part = remark.substr(0, end);
    remark.remove_prefix(std::min(end + 1, remark.size()));
    std::string digits;
    for (const char c : part) {
      if (c >= '0' && c <= '9') digits += c;
    }
    const bool isNumber = !part.empty() && part.front() >= '0' && part.front() <= '9';
    if (isNumber && (digits == "2" || digits == "10")) SetObserver(digits, conditions);
    if (isNumber || part.empty()) continue;
    try {
      conditions.illuminant = ParseIlluminant(part);
    } catch (const InputError&) {  // a remark of another kind
    }
  }
}

std::string LightConflict(const MeasuringConditions& stated, const MeasuringConditions& required) {
  const auto differ = [](int32_t is, int32_t wanted) { return is >= 0 && wanted >= 0 && is != wanted; };
  if (!differ(stated.illuminant, required.illuminant) && !differ(stated.observer, required.observer))
    return {};
  return "the colours were seen under " + LightText(stated) + "; under " + LightText(required) +
         " only curves could tell them";
}

std::string LightText(const MeasuringConditions& conditions) {
  std::string text = conditions.otherIlluminant;
  if (conditions.illuminant >= 0) text = CodeOf(static_cast<vrxIlluminant>(conditions.illuminant));
  if (conditions.observer < 0) return text;
  return text + (text.empty() ? "" : " at ") + std::to_string(DegreesOf(conditions.observer)) + " degrees";
}

std::string MeasurementReader::ExtraPlace(std::size_t) const {
  return RowPlace();
}

void MeasurementReader::FailRow(const std::string& reason) const {
  throw InputError(RowPlace() + ": " + reason);
}

void MeasurementReader::FailExtra(std::size_t extra, const std::string& reason) const {
  throw InputError(ExtraPlace(extra) + ": " + reason);
}

namespace {

// Adds a text that is not there yet, up to a number of them.
void AddOnce(std::string text, std::size_t most, std::vector<std::string>& texts) {
  if (texts.size() == most) texts.emplace_back("and more");
  if (texts.size() > most) return;
  if (std::ranges::find(texts, text) == texts.end()) texts.push_back(std::move(text));
}

}  // namespace

void MeasurementReader::Note(std::string text) {
  AddOnce(std::move(text), kMaxNotes, notes_);
}

void MeasurementReader::PassOver(std::string name) {
  AddOnce(std::move(name), kMaxNotes, passedOver_);
}

void MeasurementReader::AddRemark(std::string_view word, std::string_view text) {
  const Remark remark{std::string(word), std::string(text)};
  if (std::ranges::find(remarks_, remark) != remarks_.end()) return;
  if (remarks_.size() == kMaxRemarks) return PassOver(remark.word);
  remarks_.push_back(remark);
}

std::vector<double> ParseWavelengthRange(std::string_view text, std::string_view option) {
  constexpr double kMostWavelengths = 10'000;
  const std::size_t dash = text.find('-');
  const std::size_t slash = text.find('/');
  double first = 0, last = 0, step = 10;
  const bool isRange = dash != std::string_view::npos && (slash == std::string_view::npos || slash > dash) &&
                       ParseDecimal(text.substr(0, dash), '.', first) &&
                       ParseDecimal(text.substr(dash + 1, slash - dash - 1), '.', last) &&
                       (slash == std::string_view::npos || ParseDecimal(text.substr(slash + 1), '.', step));
  const double steps = (last - first) / step;
  if (!isRange || !(first >= 100 && step > 0 && steps >= 2 && steps < kMostWavelengths && last <= 10'000)) {
    throw InputError(std::string(option) + ": \"" + std::string(text.substr(0, 60)) +
                     "\" is not a range of wavelengths such as 400-700/10");
  }
  if (std::fabs(steps - std::round(steps)) > 1e-6) {
    throw InputError(std::string(option) + ": the step does not divide the range of " +
                     std::string(text.substr(0, 60)));
  }
  std::vector<double> wavelengths;
  const auto count = static_cast<std::size_t>(std::lround(steps)) + 1;
  for (std::size_t i = 0; i < count; ++i) wavelengths.push_back(first + step * static_cast<double>(i));
  return wavelengths;
}

}  // namespace vrx::io
