#include <vrxstore/records/stored_form.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include <vrxio/files/measurement_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

namespace vrx::store {
namespace {

constexpr std::size_t kBoxValues = 7, kEllipseValues = 9;
enum LimitKind : char { kBox = 0, kEllipse = 1, kSystemEllipsoid = 2 };
constexpr std::string_view kRules[] = {"worse", "total", "box"};

std::string JoinedNumbers(std::span<const double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ":") + io::ShortestText(number);
  return text;
}

std::string OwnIlluminants(std::span<const vrxIlluminant> illuminants) {
  for (const vrxIlluminant illuminant : illuminants) {
    if (illuminant < 0 || illuminant >= kBuiltInIlluminants) {
      throw io::InputError("illuminant " + io::CodeOf(illuminant) +
                           ": a job keeps judgements under the library's own illuminants");
    }
  }
  return io::CodesOf(illuminants);
}

std::vector<double> NumbersOf(std::string text, std::string_view name) {
  std::ranges::replace(text, ':', ',');
  return io::ParseNumbers(text, name);
}

double NumberOf(const std::string& text, std::string_view name) {
  const std::vector<double> numbers = NumbersOf(text, name);
  if (numbers.size() != 1) throw StoreError(std::string(name) + " is not one number");
  return numbers.front();
}

VerdictRule RuleFrom(std::string_view text) {
  const auto* const found = std::ranges::find(kRules, text);
  if (found == std::end(kRules)) throw StoreError("the verdict's rule \"" + std::string(text) + "\" is none");
  return static_cast<VerdictRule>(found - std::begin(kRules));
}

void TakeCondition(const std::string& name, const std::string& value, JudgeConditions& conditions) {
  if (name == "system") {
    conditions.difference.system = io::ParseSystem(value);
  } else if (name == "parameters") {
    const std::vector<double> numbers = NumbersOf(value, name);
    if (numbers.size() != conditions.difference.parameters.size())
      throw StoreError("the parameters of the system are not four");
    std::ranges::copy(numbers, conditions.difference.parameters.begin());
  } else if (name == "own") {
    conditions.difference.ownFormula = value == "1";
  } else if (name == "illuminants") {
    conditions.illuminants.clear();
    for (const std::string& code : io::SplitList(value, ','))
      conditions.illuminants.push_back(io::ParseIlluminant(code));
  } else if (name == "observer") {
    conditions.observer = io::ParseObserver(value);
  } else if (name == "angle") {
    conditions.angle = NumberOf(value, name);
  } else if (name == "rule") {
    conditions.rule = RuleFrom(value);
  } else if (name == "warning") {
    conditions.warningFactor = NumberOf(value, name);
  } else if (name == "grade") {
    const std::size_t colon = value.find(':');
    const bool isChange = value.substr(0, colon) == "change";
    conditions.grade = {isChange ? GreyScale::kChange : GreyScale::kStaining,
                        NumberOf(colon == std::string::npos ? "" : value.substr(colon + 1), name)};
  } else if (name == "inconstancy") {
    conditions.inconstancy = {NumberOf(value, name)};
  } else {
    throw StoreError("the condition \"" + name + "\" is unknown");
  }
}

bool SameBits(std::span<const double> a, std::span<const double> b) {
  return std::ranges::equal(
      a, b, {}, [](double x) { return std::bit_cast<std::uint64_t>(x); },
      [](double x) { return std::bit_cast<std::uint64_t>(x); });
}

bool AreSameOutcomes(const JudgementUnder& a, const JudgementUnder& b) {
  std::array<double, kOutcomeNumbers> x{}, y{};
  OutcomeNumbers(a, x);
  OutcomeNumbers(b, y);
  return a.available == b.available && a.words == b.words && a.components == b.components &&
         a.total == b.total && a.verdict == b.verdict && a.breach.limit == b.breach.limit && SameBits(x, y);
}

}  // namespace

std::string ConditionsText(const JudgeConditions& conditions) {
  std::string text = "system=";
  text += io::ShortNameOf(conditions.difference.system);
  text += " parameters=" + JoinedNumbers(conditions.difference.parameters);
  text += conditions.difference.ownFormula ? " own=1" : " own=0";
  text += " illuminants=" + OwnIlluminants(conditions.illuminants);
  text += " observer=" + std::to_string(io::DegreesOf(conditions.observer));
  text += " angle=" + io::ShortestText(conditions.angle) + " rule=";
  text += kRules[static_cast<std::size_t>(conditions.rule)];
  text += " warning=" + io::ShortestText(conditions.warningFactor);
  if (conditions.grade) {
    text += conditions.grade->scale == GreyScale::kChange ? " grade=change:" : " grade=staining:";
    text += io::ShortestText(conditions.grade->least);
  }
  if (conditions.inconstancy) text += " inconstancy=" + io::ShortestText(conditions.inconstancy->most);
  return text;
}

JudgeConditions ConditionsFrom(std::string_view text) {
  JudgeConditions conditions;
  for (const std::string& part : io::SplitList(text, ' ')) {
    const std::size_t equals = part.find('=');
    if (equals == std::string::npos)
      throw StoreError("conditions \"" + std::string(text) + "\" cannot be read");
    TakeCondition(part.substr(0, equals), part.substr(equals + 1), conditions);
  }
  return conditions;
}

void AppendDoubles(std::span<const double> numbers, std::string& bytes) {
  if constexpr (std::endian::native == std::endian::little) {
    const std::size_t size = bytes.size();
    bytes.resize(size + numbers.size_bytes());
    std::memcpy(bytes.data() + size, numbers.data(), numbers.size_bytes());
  } else {
    for (const double number : numbers) {
      const auto bits = std::bit_cast<std::uint64_t>(number);
      for (int k = 0; k < 64; k += 8) bytes += static_cast<char>(bits >> k & 0xFF);
    }
  }
}

void DoublesFrom(std::string_view bytes, std::span<double> out) {
  if (bytes.size() != out.size_bytes()) {
    throw StoreError(std::to_string(bytes.size()) + " bytes stand where " + std::to_string(out.size()) +
                     " numbers should");
  }
  for (std::size_t i = 0; i < out.size(); ++i) {
    std::uint64_t bits = 0;
    for (std::size_t k = 8; k-- > 0;) bits = bits << 8 | static_cast<unsigned char>(bytes[8 * i + k]);
    out[i] = std::bit_cast<double>(bits);
  }
}

std::string LimitsBytes(std::span<const JudgeLimits> limits) {
  std::string bytes;
  for (const JudgeLimits& one : limits) {
    if (const auto* box = std::get_if<CBoxTolData>(&one)) {
      bytes.push_back(kBox);
      AppendDoubles({box->begin(), kBoxValues}, bytes);
    } else if (const auto* ellipse = std::get_if<CEllipseData>(&one)) {
      bytes.push_back(kEllipse);
      AppendDoubles({ellipse->begin(), kEllipseValues}, bytes);
    } else {
      bytes.push_back(kSystemEllipsoid);
    }
  }
  return bytes;
}

std::vector<JudgeLimits> LimitsFrom(std::string_view bytes) {
  std::vector<JudgeLimits> limits;
  const auto take = [&bytes](auto record, std::size_t count) -> JudgeLimits {
    DoublesFrom(bytes.substr(0, 8 * count), {record.begin(), count});
    bytes.remove_prefix(8 * count);
    return record;
  };
  while (!bytes.empty()) {
    const char kind = bytes.front();
    bytes.remove_prefix(1);
    if (kind == kBox) {
      limits.push_back(take(CBoxTolData(), kBoxValues));
    } else if (kind == kEllipse) {
      limits.push_back(take(CEllipseData(), kEllipseValues));
    } else if (kind == kSystemEllipsoid) {
      limits.emplace_back(SystemEllipsoid());
    } else {
      throw StoreError("limits of an unknown kind");
    }
  }
  return limits;
}

void OutcomeNumbers(const JudgementUnder& outcome, std::span<double, kOutcomeNumbers> numbers) {
  auto out = std::ranges::copy(outcome.difference, numbers.begin()).out;
  out = std::copy_n(outcome.labDifference.begin(), 3, out);
  const auto& lab = outcome.trial.lab;
  for (const double number : {lab.L, lab.a, lab.b, outcome.ellipsoidValue, outcome.breach.value,
                              outcome.breach.bound, outcome.grade}) {
    *out++ = number;
  }
}

void TakeOutcomeNumbers(std::span<const double, kOutcomeNumbers> numbers, JudgementUnder& outcome) {
  std::copy_n(numbers.begin(), 7, outcome.difference.begin());
  std::copy_n(numbers.begin() + 7, 3, outcome.labDifference.begin());
  outcome.trial.lab.L = numbers[10];
  outcome.trial.lab.a = numbers[11];
  outcome.trial.lab.b = numbers[12];
  outcome.ellipsoidValue = numbers[13];
  outcome.breach.value = numbers[14];
  outcome.breach.bound = numbers[15];
  outcome.grade = numbers[16];
}

bool AreSame(const Judgement& a, const Judgement& b) {
  return std::ranges::equal(a.under, b.under, [](const JudgementUnder& x, const JudgementUnder& y) {
    return AreSameOutcomes(x, y);
  });
}

std::string OptionsText(const Profile& profile) {
  std::string text;
  for (const auto& [option, value] : profile.options) {
    if ((option + value).find('\n') != std::string::npos)
      throw StoreError("profile \"" + profile.name + "\": " + option + " has a line end in it");
    text.append(option).append(value.empty() ? "" : " ").append(value).append("\n");
  }
  return text;
}

void TakeOptions(std::string_view text, Profile& profile) {
  for (const std::string& line : io::SplitList(text, '\n')) {
    if (line.empty()) continue;
    const std::size_t blank = line.find(' ');
    profile.options.emplace_back(line.substr(0, blank),
                                 blank == std::string::npos ? "" : line.substr(blank + 1));
  }
}

std::string AmountsText(const MadeRecipe& recipe) {
  std::string text;
  for (const auto& [component, amount] : recipe.amounts) {
    if (component.find_first_of("\t\n") != std::string::npos)
      throw StoreError("recipe \"" + recipe.name + "\": a component's name has a tab or a line end in it");
    text.append(component).append("\t").append(io::ShortestText(amount)).append("\n");
  }
  return text;
}

void TakeAmounts(std::string_view text, MadeRecipe& recipe) {
  for (const std::string& line : io::SplitList(text, '\n')) {
    if (line.empty()) continue;
    const std::size_t tab = std::min(line.find('\t'), line.size());
    double amount = 0.0;
    if (tab == line.size() || !io::ParseDecimal(std::string_view(line).substr(tab + 1), '.', amount))
      throw StoreError("recipe \"" + recipe.name + "\": its amounts are not amounts");
    recipe.amounts.emplace_back(line.substr(0, tab), amount);
  }
}

std::string MeasuringText(const io::MeasuringConditions& conditions) {
  std::string text;
  const auto add = [&text](const std::string& word, std::string value) {
    std::ranges::replace(value, '\n', ' ');
    if (!value.empty()) text.append(word).append("\t").append(value).append("\n");
  };
  for (const auto& [word, value] : io::ConditionTexts(conditions)) add(word, value);
  if (conditions.specular != io::Specular::kUnknown)
    add("specular component", conditions.specular == io::Specular::kIncluded ? "SCI" : "SCE");
  return text;
}

io::MeasuringConditions MeasuringFrom(std::string_view text) {
  io::MeasuringConditions conditions;
  for (const std::string& line : io::SplitList(text, '\n')) {
    const std::size_t tab = line.find('\t');
    if (tab != std::string::npos) io::TakeCondition(line.substr(0, tab), line.substr(tab + 1), conditions);
  }
  return conditions;
}

}  // namespace vrx::store
