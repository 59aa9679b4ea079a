#include <vrxmath/colorimetry/difference_systems.h>

#include <algorithm>

#include <vrxmath/colorimetry/difference_table.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/decimal_text.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

// Offsets into a system's block of texts.
enum TextOffset : uint32_t { kLongName = 0, kShortName = 1, kCoordinateColumns = 3, kDifferenceColumns = 4 };

WideView SystemText(int32_t system, uint32_t offset) {
  if (FindDifferenceSystem(system) == nullptr) return {};
  return FindString(kStringDifferenceSystem + 16 * static_cast<uint32_t>(system) + offset);
}

constexpr int32_t kElementsOf4[] = {0, 1, 2, 6};
constexpr int32_t kElementsOf5[] = {0, 1, 2, 4, 6};
constexpr int32_t kElementsOf6[] = {0, 1, 2, 4, 5, 6};
constexpr int32_t kElementsOf7[] = {0, 1, 2, 3, 4, 5, 6};

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

CString DifferenceColumns(int32_t system) {
  return CString(SystemText(system, kDifferenceColumns));
}
CString CoordinateColumns(int32_t system) {
  return CString(SystemText(system, kCoordinateColumns));
}

std::span<const int32_t> DifferenceColumnElements(int32_t system) {
  const WideView columns = SystemText(system, kDifferenceColumns);
  if (columns.empty()) return {};
  switch (std::count(columns.begin(), columns.end(), u'|') + 1) {
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

}  // namespace vrx
