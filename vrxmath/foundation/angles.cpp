#include <vrxmath/foundation/angles.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/foundation/record_archive.h>
#include <vrxmath/foundation/string_numbers.h>

namespace vrx {
namespace {

constexpr int32_t kMaxCodes = 256;  // positions are kept in bytes

// Tenths of a degree, by code.
constexpr std::array<int16_t, kAngleCodes> kTenths = {
    450, 450, 450, 450, 150, 200, 225,  250,  450, 725, 750, 1100, 450,  450,  450, 450, 450,
    450, 450, 450, 450, 450, 450, 450,  450,  0,   450, 450, 450,  450,  450,  450, 450, 450,
    450, 450, 450, 450, 450, 450, 1050, -150, 450, 450, 450, 450,  -450, -300, 800};

struct FamilyRange {
  AngleFamily family;
  uint8_t first;
  uint8_t last;
};

constexpr FamilyRange kFamilies[] = {
    {AngleFamily::kSphere, 12, 19},       {AngleFamily::kSphere, 42, 45},
    {AngleFamily::kPosition, 20, 24},     {AngleFamily::kBackground, 26, 30},
    {AngleFamily::kTransmission, 31, 35}, {AngleFamily::kCorrection, 37, 39},
};

CString AsText(unsigned number) {
  return CString::FromUtf8(std::to_string(number));
}

// The code under which a sphere measurement may also be stored; 0 for none.
uint8_t FilterPartner(uint8_t code) {
  constexpr uint8_t kPartners[] = {14, 15, 12, 13, 12, 13, 12, 13};  // codes 12 to 19
  return code >= 12 && code <= 19 ? kPartners[code - 12] : uint8_t{0};
}

// All codes of the families that an instrument measures as a whole.
std::vector<uint8_t> WholeFamily(AngleFamily family) {
  std::vector<uint8_t> codes;
  const bool whole = family == AngleFamily::kBackground || family == AngleFamily::kTransmission ||
                     family == AngleFamily::kCorrection;
  for (const FamilyRange& range : kFamilies) {
    for (int code = range.first; whole && range.family == family && code <= range.last; ++code) {
      codes.push_back(static_cast<uint8_t>(code));
    }
  }
  return codes;
}

}  // namespace

AngleFamily FamilyOfAngle(uint8_t code) {
  for (const FamilyRange& range : kFamilies) {
    if (code >= range.first && code <= range.last) return range.family;
  }
  return AngleFamily::kOther;
}

double AngleOfCode(uint8_t code) {
  return (code < kAngleCodes ? kTenths[code] : kTenths[0]) / 10.0;
}

bool HasAspecularAngle(int32_t code) {
  return code >= 0 && code < kAngleCodes && FamilyOfAngle(static_cast<uint8_t>(code)) == AngleFamily::kOther;
}

double AspecularAngle(int32_t code, double usual) {
  return HasAspecularAngle(code) ? AngleOfCode(static_cast<uint8_t>(code)) : usual;
}

CString NameOfAngle(uint8_t code) {
  return code < kAngleCodes ? CString::Load(kStringAngle + code) : CString();
}

CAngles::~CAngles() = default;

void CAngles::SetCodes(std::span<const uint8_t> codes) {
  if (codes.size() > kMaxCodes) throw CInvalidArgException();
  codes_.SetSize(static_cast<int32_t>(codes.size()));
  std::copy(codes.begin(), codes.end(), codes_.begin());
  Rebuild();
}

void CAngles::SetCodes(int32_t count) {
  if (count < 0 || count > kMaxCodes) throw CInvalidArgException();
  codes_.SetSize(count);
  for (int32_t i = 0; i < count; ++i) codes_[i] = static_cast<uint8_t>(count == 1 ? 0 : i + 4);
  Rebuild();
}

void CAngles::Rebuild() {
  const int32_t count = codes_.GetSize();
  sortOrder_.SetSize(count);
  for (int32_t i = 0; i < count; ++i) sortOrder_[i] = static_cast<uint8_t>(i);
  std::stable_sort(sortOrder_.begin(), sortOrder_.end(),
                   [&](uint8_t a, uint8_t b) { return GetAngle(a) < GetAngle(b); });
  rank_.SetSize(count);
  for (int32_t j = 0; j < count; ++j) rank_[sortOrder_[j]] = static_cast<uint8_t>(j);
  selected_.SetSize(count);
  selected_.Fill(1);
  flags_.SetSize(count);
  flags_.Fill(1);
  current_ = 0;
}

int32_t CAngles::IndexAt(std::ptrdiff_t position) const {
  return position == kCurrentAngle ? current_ : sortOrder_[position];
}

CString CAngles::NameAt(std::ptrdiff_t position) const {
  return GetCount() < 2 ? CString() : NameOfAngle(codes_[IndexAt(position)]);
}

int32_t CAngles::NearestTo(double degrees) const {
  int32_t nearest = 0;
  double best = 10000.0;
  for (int32_t i = 0; i < GetCount(); ++i) {
    const double distance = std::fabs(GetAngle(i) - degrees);
    if (distance < best) {
      best = distance;
      nearest = i;
    }
  }
  return nearest;
}

int32_t CAngles::Translate(const CAngles& other, std::ptrdiff_t position) const {
  if (position == kCurrentAngle || GetCount() == 1 || position >= other.GetCount()) return kCurrentAngle;
  return rank_[NearestTo(other.GetAngle(other.IndexAt(position)))];
}

bool CAngles::IsMultiAngle() const {
  return GetCount() >= 2 && FamilyOfAngle(codes_[0]) == AngleFamily::kOther;
}

void CAngles::SelectFromText(WideView text) {
  current_ = 0;
  selected_.Fill(1);
  for (int32_t i = 0; i < GetCount() && !text.empty(); ++i) {
    const std::size_t comma = std::min(text.find(u','), text.size());
    selected_[i] = text.substr(0, comma).find_first_of(u"123456789") != WideView::npos;
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  const auto first = std::find(selected_.begin(), selected_.end(), uint8_t{1});
  if (first != selected_.end()) {
    current_ = static_cast<int32_t>(first - selected_.begin());
  } else if (GetCount() > 0) {
    selected_[0] = 1;
  }
}

bool CAngles::ReplaceForInstrument(std::span<const uint8_t> instrumentCodes) {
  std::vector<uint8_t> codes;
  if (GetCount() > 0) codes = WholeFamily(FamilyOfAngle(codes_[0]));
  if (codes.empty()) {
    if (instrumentCodes.size() > kMaxCodes) throw CInvalidArgException();
    codes.assign(instrumentCodes.begin(), instrumentCodes.end());
  }
  const bool bothSingle = GetCount() == 1 && codes.size() == 1;
  const bool same = std::equal(codes_.begin(), codes_.end(), codes.begin(), codes.end());
  const bool keepsAll = std::all_of(codes_.begin(), codes_.end(), [&](uint8_t code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
  });
  if (bothSingle || same || !keepsAll) return false;
  SetCodes(codes);
  return true;
}

bool CAngles::operator==(const CAngles& other) const {
  return codes_ == other.codes_ && sortOrder_ == other.sortOrder_ && rank_ == other.rank_ &&
         selected_ == other.selected_ && flags_ == other.flags_;
}

void CAngles::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive << static_cast<uint32_t>(GetCount());
    archive.Write(std::as_bytes(std::span(codes_.GetData(), static_cast<std::size_t>(GetCount()))));
    return;
  }
  uint32_t count = 0;
  archive >> count;
  if (count > kMaxCodes) throw CArchiveException(CArchiveException::kBadFormat);
  std::array<uint8_t, kMaxCodes> codes;
  const auto used = std::span(codes).first(count);
  archive.Read(std::as_writable_bytes(used));
  CAngles loaded;
  loaded.SetCodes(used);
  *this = std::move(loaded);
}

void CAngleWeight::Serialize(CArchive& archive) {
  SerializeFields(archive, code, weight);
}

CIntArray1 NearestIndices(const CAngles& codes, const CAngles& previous) {
  CIntArray1 nearest;
  nearest.SetSize(codes.GetCount());
  for (int32_t i = 0; i < codes.GetCount(); ++i) nearest[i] = previous.NearestTo(codes.GetAngle(i));
  return nearest;
}

CString BaseAngleFilter() {
  // d8, 45/0, d0 and 0/45 are the codes 0 to 3; 45 degrees is 8.
  return u"(Angle BETWEEN 0 AND 3 OR Angle = 8)";
}

CString SphereAngleFilter(bool specularIncluded) {
  const unsigned first = specularIncluded ? 12 : 13;
  return FillPattern(u"(%s OR Angle = %s OR Angle = %s)",
                     {BaseAngleFilter(), AsText(first), AsText(first + 2)});
}

CString AngleFilter(uint8_t code) {
  CString filter = FillPattern(u"(%s OR Angle = %s", {BaseAngleFilter(), AsText(code)});
  if (const uint8_t partner = FilterPartner(code))
    filter += FillPattern(u" OR Angle = %s", {AsText(partner)});
  filter += u")";
  return filter;
}

}  // namespace vrx
