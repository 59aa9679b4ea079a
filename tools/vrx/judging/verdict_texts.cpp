#include "tools/vrx/judging/verdict_texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

VerdictLook LookOf(Verdict verdict) {
  static constexpr Tint kTints[] = {Tint::kBad, Tint::kWarning, Tint::kGood};
  return {TextOf(verdict), kTints[static_cast<std::size_t>(verdict)]};
}

std::string ElementName(std::string_view heading) {
  constexpr std::string_view kDelta = "\xCE\x94";
  // A scale of the numbers under the heading: "*10", "*100/Y".
  const std::string_view scale = heading.substr(std::min(heading.find("*10"), heading.size()));
  heading.remove_suffix(scale.size());
  const std::string_view factor = scale.substr(0, scale.find('/'));
  std::string name(factor.substr(std::min<std::size_t>(1, factor.size())));
  if (heading.starts_with(kDelta)) {
    name += "d";
    heading.remove_prefix(kDelta.size());
  }
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  for (std::size_t i = 0; i < heading.size(); ++i) {
    const char c = heading[i];
    const bool isLast = i + 1 == heading.size();
    if (c == '\'' && isLast) name += 'p';  // primed
    if (isLetter(c) || isDigit(c)) name += c;
  }
  return name.append(scale.substr(factor.size()));
}

namespace {

// The heading of an element; empty for one that the system does not show.
std::string HeadingOfElement(int32_t system, int32_t element) {
  const std::vector<DifferenceColumn> columns = DifferenceColumnsOf(system);
  const auto found = std::ranges::find(columns, element, &DifferenceColumn::element);
  return found != columns.end() ? found->heading : "";
}

}  // namespace

std::string NameOfElement(int32_t system, int32_t element) {
  const std::string heading = HeadingOfElement(system, element);
  return heading.empty() ? "e" + std::to_string(element) : ElementName(heading);
}

Room RoomOfElement(std::size_t i, std::size_t count) {
  constexpr std::size_t kAllElements = 7, kUnweighted = 3;
  if (i + 1 == count) return Room::kNeeded;
  return count == kAllElements && i < kUnweighted ? Room::kSpare : Room::kLast;
}

std::string NameOfLimit(BrokenLimit limit, int32_t system) {
  if (limit == BrokenLimit::kNone) return "";
  if (limit == BrokenLimit::kEllipsoid) return "ellipsoid";
  if (limit == BrokenLimit::kNoDifference) return "no difference";
  if (limit == BrokenLimit::kGrade) return "grade";
  if (limit == BrokenLimit::kInconstancy) return "inconstancy";
  return NameOfElement(system, ElementOf(limit, system));
}

std::string ReasonText(const LimitBreach& breach, Verdict verdict, int32_t system) {
  const std::string heading = HeadingOfElement(system, ElementOf(breach.limit, system));
  std::string name = heading.empty() ? NameOfLimit(breach.limit, system) : heading;
  if (!breach.HasExcess() || !std::isfinite(breach.Excess())) return name;
  const double excess = breach.Excess();
  if (verdict == kWarning) return name + (excess < 0 ? " < " : " > ") + FixedDecimals(breach.bound, 2);
  return name + (excess < 0 ? " " : " +") + FixedDecimals(excess, 2);
}

void AddReason(const LimitBreach& breach, int32_t system, JsonObject& object) {
  if (breach.limit == BrokenLimit::kNone) return object.Null("reason");
  JsonObject reason;
  reason.Text("limit", NameOfLimit(breach.limit, system));
  if (breach.limit != BrokenLimit::kNoDifference) {
    reason.Number("value", breach.value);
    reason.Number("bound", breach.bound);
    reason.Number("excess", breach.Excess());
  }
  object.Object("reason", reason);
}

std::string GradeText(double halfStep) {
  if (!std::isfinite(halfStep) || IsUnset(halfStep)) return "";
  const auto whole = static_cast<int32_t>(halfStep);
  return halfStep > whole ? std::to_string(whole) + "-" + std::to_string(whole + 1) : std::to_string(whole);
}

}  // namespace vrx::tool
