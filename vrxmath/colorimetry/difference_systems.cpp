#include <vrxmath/colorimetry/difference_systems.h>

#include <algorithm>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_table.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

// Offsets into a system's block of texts.
enum TextOffset : uint32_t {
  kLongName = 0,
  kShortName = 1,
  kFullColumns = 2,
  kCoordinateColumns = 3,
  kDifferenceColumns = 4
};

WideView SystemText(int32_t system, uint32_t offset) {
  if (FindDifferenceSystem(system) == nullptr) return {};
  return FindString(kStringDifferenceSystem + 16 * static_cast<uint32_t>(system) + offset);
}

// Elements of the difference record by the number of headings over them.
constexpr int32_t kL = CDeltaValues::kL, kA = CDeltaValues::kA, kB = CDeltaValues::kB,
                  kChroma = CDeltaValues::kChroma, kHue = CDeltaValues::kHue, kTotal = CDeltaValues::kTotal;
constexpr int32_t kElementsOf1[] = {kTotal};
constexpr int32_t kElementsOf4[] = {kL, kA, kB, kTotal};
constexpr int32_t kElementsOf5[] = {kL, kA, kB, kChroma, kTotal};
constexpr int32_t kElementsOf6[] = {kL, kA, kB, kChroma, kHue, kTotal};
constexpr int32_t kElementsOf7[] = {kL, kA, kB, CDeltaValues::kWeightedL, kChroma, kHue, kTotal};

std::span<const int32_t> ElementsUnder(WideView headings) {
  if (headings.empty()) return {};
  switch (std::count(headings.begin(), headings.end(), u'|') + 1) {
    case 4:
      return kElementsOf4;  // no chroma and hue difference
    case 5:
      return kElementsOf5;  // no hue difference
    case 6:
      return kElementsOf6;  // no weighted lightness difference
    default:
      return kElementsOf7;
  }
}

}  // namespace

std::span<const DifferenceSystem> DifferenceSystems() {
  return difference_table_internal::kSystems;
}

const DifferenceSystem* FindDifferenceSystem(int32_t system) {
  const auto systems = DifferenceSystems();
  const auto place = static_cast<std::size_t>(system);
  return place < systems.size() ? &systems[place] : nullptr;
}

CDifferenceSettings DefaultSettings(int32_t system) {
  CDifferenceSettings settings;
  settings.system = system;
  const DifferenceSystem* row = FindDifferenceSystem(system);
  if (row == nullptr) {
    foundation_internal::ReportIndexError();
  } else {
    settings.parameters = row->defaults;
  }
  return settings;
}

int32_t ParameterCount(int32_t system) {
  const DifferenceSystem* row = FindDifferenceSystem(system);
  return row == nullptr ? 0 : row->parameterCount;
}

CString ParameterText(double value, WideChar decimalSeparator) {
  return DecimalText(value, 2, WideView(&decimalSeparator, 1));
}

CString DifferenceSystemName(int32_t system, NameLength length, std::span<const double> parameters,
                             WideChar decimalSeparator) {
  const WideView pattern = SystemText(system, length == NameLength::kLong ? kLongName : kShortName);
  if (ParameterCount(system) == 0) return CString(pattern);
  if (parameters.empty()) return CString(pattern.substr(0, pattern.find(u" (")));
  CString texts[4];
  for (std::size_t i = 0; i < std::min<std::size_t>(parameters.size(), 4); ++i) {
    texts[i] = ParameterText(parameters[i], decimalSeparator);
  }
  return FillPattern(pattern, {texts[0], texts[1], texts[2], texts[3]});
}

CString ColumnHeadings(int32_t system, ColumnList list) {
  const WideView differences = SystemText(system, kDifferenceColumns);
  switch (list) {
    case ColumnList::kFull:
      return CString(SystemText(system, kFullColumns));
    case ColumnList::kCoordinates:
      return CString(SystemText(system, kCoordinateColumns));
    case ColumnList::kDifferences:
      return CString(differences);
    case ColumnList::kComponents:
    case ColumnList::kTotal:
      break;
  }
  // The shorter lists: the first three headings of the differences and the last, or the last alone.
  if (differences.empty()) return {};
  const WideView total = differences.substr(differences.rfind(u'|') + 1);
  if (list == ColumnList::kTotal) return CString(total);
  std::size_t end = 0;
  for (int32_t k = 0; k < 3; ++k) end = differences.find(u'|', end) + 1;
  CString headings(differences.substr(0, end));
  headings += total;
  return headings;
}

std::span<const int32_t> DifferenceColumnElements(int32_t system, ColumnList list) {
  const auto elements = ElementsUnder(SystemText(system, kDifferenceColumns));
  if (elements.empty() || list == ColumnList::kCoordinates) return {};
  if (list == ColumnList::kComponents) return kElementsOf4;
  return list == ColumnList::kTotal ? kElementsOf1 : elements;
}

std::span<const CoordinateColumn> CoordinateColumnElements(int32_t system) {
  const DifferenceSystem* row = FindDifferenceSystem(system);
  return row == nullptr ? std::span<const CoordinateColumn>() : row->coordinates;
}

}  // namespace vrx
