#include <vrxmath/colorant/components.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {
namespace {

// One concentration after a conversion.
struct ConvertedConcentration {
  double concentration;
  double ratio;  // old concentration over new
};

ConvertedConcentration ToPlain(double c, double f, double p) {
  const double converted = f * c / ((1.0 - c) * p + f * c);
  return {converted, c == 0.0 ? p / f : c / converted};
}

ConvertedConcentration ToFactor(double c, double f, double p) {
  const double converted = (c / f) / ((1.0 - c) / p + c / f);
  return {converted, c == 0.0 ? f / p : c / converted};
}

// -1 when there is none.
int32_t IndexOfAdditive(const CAdditiveArray& additives, uint32_t componentId) {
  const CAdditive* found = std::find_if(additives.begin(), additives.end(), [&](const CAdditive& additive) {
    return additive.componentId == componentId;
  });
  return found == additives.end() ? -1 : static_cast<int32_t>(found - additives.begin());
}

}  // namespace

VRX_IMPLEMENT_DYNAMIC(CComponent, CObject)
VRX_IMPLEMENT_DYNAMIC(CColorant, CComponent)
VRX_IMPLEMENT_DYNAMIC(CTopOff, CObject)
VRX_IMPLEMENT_DYNAMIC(CResin, CComponent)

CComponent::~CComponent() = default;

void CComponent::SetLevel(std::ptrdiff_t i, const CColorantLevel& level) {
  if (i < 0 || i >= std::numeric_limits<int32_t>::max()) throw CInvalidArgException();
  if (i >= levels_.GetSize()) {
    CColorantLevel copy(level);  // `level` may be one of these levels
    levels_.SetSize(static_cast<int32_t>(i) + 1);
    levels_[i] = std::move(copy);
    NoteModified();
  } else {
    Change(levels_[i], level);
  }
}

int32_t CComponent::AppendLevel(const CColorantLevel& level) {
  const int32_t i = levels_.Add(level);
  NoteModified();
  return i;
}

void CComponent::RemoveLevel(int32_t i) {
  levels_.RemoveAt(i);
  NoteModified();
  const int32_t count = levels_.GetSize();
  if (count != 0 && currentLevel_ >= count) currentLevel_ = count - 1;
}

void CComponent::SetLevelValues(std::ptrdiff_t level, std::ptrdiff_t entry, const CColorantValues& values) {
  if (!levels_.HasIndex(level) || !levels_[level].values.HasIndex(entry)) {
    return foundation_internal::ReportIndexError();
  }
  Change(levels_[level].values[entry], values);
}

void CComponent::ConvertFactor(FactorDirection direction, double p, LevelUpdate update,
                               const CColorantValues& base) {
  const bool toPlain = direction == FactorDirection::kToPlain;
  amountA_ = toPlain ? amountA_ / factor_ : amountA_ * factor_;
  amountB_ = toPlain ? amountB_ / factor_ : amountB_ * factor_;
  for (CColorantLevel& level : levels_) {
    const double c = level.concentration;
    const ConvertedConcentration converted = toPlain ? ToPlain(c, factor_, p) : ToFactor(c, factor_, p);
    level.concentration = converted.concentration;
    if (update == LevelUpdate::kRescaleUnitCurves) {
      level.RescaleUnitCurves(converted.ratio);
    } else {
      level.KeepContributionOverBase(converted.ratio, base);
    }
  }
  NoteModified();
}

void CComponent::Reset() {
  RestoreDefaults(kNewComponentId, kKindColorant);
}

void CComponent::RestoreDefaults(uint32_t id, int32_t kind) {
  *this = CComponent(id, kind);
}

bool CComponent::operator==(const CComponent& other) const {
  return description_ == other.description_ && name_ == other.name_ && id_ == other.id_ &&
         NearlyEqual(amountA_, other.amountA_) && NearlyEqual(amountB_, other.amountB_) &&
         NearlyEqual(factor_, other.factor_) && refA_ == other.refA_ && refB_ == other.refB_ &&
         refC_ == other.refC_ && kind_ == other.kind_ && flags_ == other.flags_ &&
         NearlyEqual(scaleA_, other.scaleA_) && NearlyEqual(scaleB_, other.scaleB_) &&
         NearlyEqual(scaleC_, other.scaleC_) && classCode_ == other.classCode_ && option_ == other.option_ &&
         currentLevel_ == other.currentLevel_ && levels_ == other.levels_;
}

CColorant::~CColorant() = default;

CColorant& CColorant::operator=(const CComponent& other) {
  CComponent::operator=(other);
  if (GetKind() == kKindResin) StoreKind(kKindColorant);
  return *this;
}

CColorant& CColorant::operator=(const CColorant& other) {
  *this = static_cast<const CComponent&>(other);
  valueA_ = other.valueA_;
  percent_ = other.percent_;
  attributes_ = other.attributes_;
  return *this;
}

CColorant& CColorant::operator=(CColorant&& other) noexcept {
  CComponent::operator=(static_cast<CComponent&&>(other));
  if (GetKind() == kKindResin) StoreKind(kKindColorant);
  valueA_ = other.valueA_;
  percent_ = other.percent_;
  attributes_ = std::move(other.attributes_);
  return *this;
}

bool CColorant::IsWhite() const {
  constexpr int32_t kFirst = 8;  // 440 nm
  constexpr int32_t kLast = 34;  // 700 nm
  constexpr double kLargestRatio = 0.1;
  if (GetLevels().IsEmpty() || GetLevel(0).values.IsEmpty()) return false;
  const CColorantValues& curves = GetLevel(0).values[0];
  for (int32_t i = kFirst; i <= kLast; ++i) {
    if (!(curves.absorption[i] / curves.scattering[i] <= kLargestRatio)) return false;
  }
  return true;
}

void CColorant::Reset() {
  CComponent::Reset();
  valueA_ = 0.0;
  percent_ = 100.0;
  attributes_.RemoveAll();
}

bool CColorant::operator==(const CColorant& other) const {
  return CComponent::operator==(other) && valueA_ == other.valueA_ && percent_ == other.percent_ &&
         attributes_ == other.attributes_;
}

void CAdditive::Serialize(CArchive& archive) {
  SerializeFields(archive, componentId, amount);
}

CTopOff::~CTopOff() = default;

bool CTopOff::operator==(const CTopOff& other) const {
  return text == other.text && NearlyEqual(valueA, other.valueA) && NearlyEqual(valueB, other.valueB) &&
         NearlyEqual(valueC, other.valueC) && mode == other.mode;
}

CResin::CResin() : CComponent(kNotFound, kKindResin) {}
CResin::~CResin() = default;

CResin& CResin::operator=(const CComponent& other) {
  CComponent::operator=(other);
  StoreKind(kKindResin);
  return *this;
}

CResin& CResin::operator=(const CResin& other) {
  *this = static_cast<const CComponent&>(other);
  resinCode_ = other.resinCode_;
  resinValue_ = other.resinValue_;
  additives_ = other.additives_;
  triple_ = other.triple_;
  resinRef_ = other.resinRef_;
  topOff_ = other.topOff_;
  return *this;
}

void CResin::SetTriple(const std::array<double, 3>& triple) {
  for (std::size_t i = 0; i < triple.size(); ++i) Change(triple_[i], triple[i]);
}

double CResin::TotalAdditiveAmount() const {
  double total = 0.0;
  for (const CAdditive& additive : additives_) total += additive.amount;
  return total;
}

uint32_t CResin::FindAdditive(uint32_t componentId) const {
  const int32_t i = IndexOfAdditive(additives_, componentId);
  return i < 0 ? kNotFound : static_cast<uint32_t>(i);
}

void CResin::AddAdditive(uint32_t componentId, double amount) {
  additives_.Add({componentId, amount});
  NoteModified();
}

void CResin::RemoveAdditive(uint32_t componentId) {
  const int32_t i = IndexOfAdditive(additives_, componentId);
  if (i < 0) return;
  additives_.RemoveAt(i);
  NoteModified();
}

void CResin::SetAdditiveId(std::ptrdiff_t i, uint32_t componentId) {
  if (!additives_.HasIndex(i)) return foundation_internal::ReportIndexError();
  Change(additives_[i].componentId, componentId);
}

void CResin::SetAdditiveAmount(std::ptrdiff_t i, double amount) {
  if (!additives_.HasIndex(i)) return foundation_internal::ReportIndexError();
  Change(additives_[i].amount, amount);
}

void CResin::SetAdditiveCount(int32_t count) {
  if (count == additives_.GetSize()) return;
  additives_.SetSize(count);
  NoteModified();
}

void CResin::Reset() {
  RestoreDefaults(kNotFound, kKindResin);
  resinCode_ = 0;
  resinValue_ = 0.0;
  additives_.SetSize(0);
  triple_ = {0.0, 0.0, 1.0};
  resinRef_ = -1;
}

bool CResin::operator==(const CResin& other) const {
  return CComponent::operator==(other) && additives_ == other.additives_ &&
         std::equal(triple_.begin(), triple_.end(), other.triple_.begin(),
                    [](double a, double b) { return NearlyEqual(a, b); }) &&
         resinRef_ == other.resinRef_ && topOff_ == other.topOff_;
}

}  // namespace vrx
