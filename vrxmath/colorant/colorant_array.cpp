#include <vrxmath/colorant/colorant_array.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/foundation/record_archive.h>
#include <vrxmath/platform/with_memory.h>

namespace vrx {
namespace {

// A colorant and its share of a blend.
struct Part {
  const CColorant* colorant;
  double weight;
};

// As printf's "%9.6f", in every locale.
CString WeightText(double weight) {
  char digits[400];  // the largest double has 309 digits before the point
  const auto end = std::to_chars(std::begin(digits), std::end(digits), weight, std::chars_format::fixed, 6);
  std::string text(digits, end.ptr);
  constexpr std::size_t kWidth = 9;
  if (text.size() < kWidth) text.insert(0, kWidth - text.size(), ' ');
  return CString::FromUtf8(text);
}

// sum += weight x curve; what a curve that a host has cut short lacks adds nothing.
void AddWeighted(CKSData& sum, const CKSData& curve, double weight) {
  double* const sums = sum.GetData();
  const double* const samples = curve.GetData();
  const int32_t count = std::min(kWavelengths, curve.GetSize());
  for (int32_t i = 0; i < count; ++i) sums[i] += weight * samples[i];
}

// Level `i` of the blend: the weighted sums over the parts, in their order.
void BlendLevel(std::span<const Part> parts, int32_t i, CColorantLevel& blend) {
  blend.values.SetSize(1);
  CColorantValues& sums = blend.values[0];
  sums.absorption.Fill(0.0);
  sums.scattering.Fill(0.0);
  for (const Part& part : parts) {
    const CColorantLevel& level = part.colorant->GetLevel(i);
    const CColorantValues& curves = level.values[0];
    blend.concentration += part.weight * level.concentration;
    AddWeighted(sums.absorption, curves.absorption, part.weight);
    AddWeighted(sums.scattering, curves.scattering, part.weight);
  }
}

CColorant BlendOf(std::span<const Part> parts) {
  int32_t count = std::numeric_limits<int32_t>::max();
  for (const Part& part : parts) count = std::min(count, part.colorant->GetLevels().GetSize());
  CColorantLevelArray levels;
  levels.SetSize(count);
  for (int32_t i = 0; i < count; ++i) BlendLevel(parts, i, levels[i]);

  CColorant blend;
  blend.SetLevels(levels);
  CString description;
  for (const Part& part : parts) {
    if (!description.IsEmpty()) description += u' ';
    description += WeightText(part.weight);
  }
  blend.SetDescription(description);
  blend.SetName(parts.front().colorant->GetName());
  blend.SetClassCode(parts.front().colorant->GetClassCode());
  return blend;
}

}  // namespace

void CBlendColorant::Serialize(CArchive& archive) {
  SerializeFields(archive, componentId, weight, index);
}

int32_t CColorantArray::IndexOfId(uint32_t id) const {
  const CColorant* found =
      std::find_if(begin(), end(), [&](const CColorant& colorant) { return colorant.GetId() == id; });
  return found == end() ? -1 : static_cast<int32_t>(found - begin());
}

void CColorantArray::Blend(std::ptrdiff_t a, std::ptrdiff_t b, double wa, double wb) {
  if (!HasIndex(a) || !HasIndex(b)) {
    foundation_internal::ReportIndexError();
    return;
  }
  const Part parts[] = {{&GetAt(a), wa}, {&GetAt(b), wb}};
  ElementAt(a) = BlendOf(parts);
}

bool CColorantArray::Blend(const CBlendColorantArray& lines) {
  if (lines.IsEmpty()) return false;
  std::vector<Part> parts;
  platform_internal::WithMemory([&] { parts.reserve(static_cast<std::size_t>(lines.GetSize())); });
  for (const CBlendColorant& line : lines) {
    const std::ptrdiff_t i = IndexOf(line);
    if (!HasIndex(i)) return false;
    parts.push_back({&GetAt(i), line.weight});
  }
  ElementAt(IndexOf(lines[0])) = BlendOf(parts);
  return true;
}

}  // namespace vrx
