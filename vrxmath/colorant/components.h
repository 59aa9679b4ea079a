// Components of a colorant database: the colorants that give colour, the bases or resins that carry them, what
// is put into a base, and the two calibration materials.
//
// Components are value objects in memory. A setter that changes a value sets the component's `modified` flag;
// only Reset clears it. They know their class at run time, and write nothing to an archive themselves: a whole
// colour system does (colorant_system.h).

#ifndef VRXMATH_COLORANT_COMPONENTS_H_
#define VRXMATH_COLORANT_COMPONENTS_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/attributes.h>
#include <vrxmath/foundation/mixture.h>
#include <vrxmath/platform/object.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

struct ComponentArchive;

/// The answer of a look-up that finds nothing, and the number of a new resin.
inline constexpr uint32_t kNotFound = 9999;
/// The number of any other new component.
inline constexpr uint32_t kNewComponentId = 4999;

/// The kinds of components. Other numbers are allowed and mean nothing.
enum ComponentKind : int32_t {
  kKindColorant = 0,
  kKindResin = 1,
  kKindAdditive = 2,
  kKindCalibrationWhite = 8,
  kKindCalibrationBlack = 9,
};

/// Which way a factor conversion goes.
enum class FactorDirection { kToPlain, kToFactor };

/// How a level's curves follow its concentration in a factor conversion; the algebra stands at the two
/// operations of CColorantLevel of the same names.
enum class LevelUpdate { kRescaleUnitCurves, kKeepContributionOverBase };

/// The fields and operations that all components have.
class VRX_API CComponent : public CObject {
  VRX_DECLARE_DYNAMIC();

 public:
  using MovesBitwise = CComponent;

  CComponent() = default;
  CComponent(const CComponent&) = default;
  CComponent(CComponent&&) noexcept = default;
  CComponent& operator=(const CComponent&) = default;
  CComponent& operator=(CComponent&&) noexcept = default;
  ~CComponent() override;

  [[nodiscard]] const CString& GetDescription() const { return description_; }
  [[nodiscard]] const CString& GetName() const { return name_; }
  [[nodiscard]] uint32_t GetId() const { return id_; }
  /// Two quantities that the factor scales.
  [[nodiscard]] double GetAmountA() const { return amountA_; }
  [[nodiscard]] double GetAmountB() const { return amountB_; }
  /// Paste, concentrate or dispersion factor; see FactorName.
  [[nodiscard]] double GetFactor() const { return factor_; }
  /// References to other records; -1 means none.
  [[nodiscard]] int32_t GetRefA() const { return refA_; }
  [[nodiscard]] int32_t GetRefB() const { return refB_; }
  [[nodiscard]] int32_t GetRefC() const { return refC_; }
  /// A ComponentKind, or another number.
  [[nodiscard]] int32_t GetKind() const { return kind_; }
  [[nodiscard]] uint32_t GetFlags() const { return flags_; }
  [[nodiscard]] double GetScaleA() const { return scaleA_; }
  [[nodiscard]] double GetScaleB() const { return scaleB_; }
  [[nodiscard]] double GetScaleC() const { return scaleC_; }
  [[nodiscard]] int32_t GetClassCode() const { return classCode_; }
  [[nodiscard]] int32_t GetOption() const { return option_; }
  [[nodiscard]] int32_t GetCurrentLevel() const { return currentLevel_; }
  [[nodiscard]] bool IsModified() const { return modified_ != 0; }

  // Each sets `modified` when the new value differs from the old one (doubles: by more than the near-equality).
  void SetDescription(WideView description) { Change(description_, CString(description)); }
  void SetName(WideView name) { Change(name_, CString(name)); }
  void SetId(uint32_t id) { Change(id_, id); }
  void SetAmountA(double amount) { Change(amountA_, amount); }
  void SetAmountB(double amount) { Change(amountB_, amount); }
  void SetFactor(double factor) { Change(factor_, factor); }
  void SetRefA(int32_t ref) { Change(refA_, ref); }
  void SetRefB(int32_t ref) { Change(refB_, ref); }
  void SetRefC(int32_t ref) { Change(refC_, ref); }
  void SetKind(int32_t kind) { Change(kind_, kind); }
  void SetFlags(uint32_t flags) { Change(flags_, flags); }
  void SetScaleA(double scale) { Change(scaleA_, scale); }
  void SetScaleB(double scale) { Change(scaleB_, scale); }
  void SetScaleC(double scale) { Change(scaleC_, scale); }
  void SetClassCode(int32_t code) { Change(classCode_, code); }
  void SetOption(int32_t option) { Change(option_, option); }

  /// Selects a level. Selecting is no modification.
  void SetCurrentLevel(int32_t level) { currentLevel_ = level; }

  /// The calibration levels, in order.
  [[nodiscard]] const CColorantLevelArray& GetLevels() const { return levels_; }
  [[nodiscard]] const CColorantLevel& GetLevel(std::ptrdiff_t i) const { return levels_[i]; }
  void SetLevels(const CColorantLevelArray& levels) { Change(levels_, levels); }
  /// Puts `level` at index `i`; at or beyond the end the array grows to i + 1 levels. Throws
  /// CInvalidArgException when `i` is negative or beyond 31 bits.
  void SetLevel(std::ptrdiff_t i, const CColorantLevel& level);
  /// Appends a level and returns its index.
  int32_t AppendLevel(const CColorantLevel& level);
  /// Removes level `i`. A selection beyond the remaining levels moves to the last of them. Throws
  /// CInvalidArgException when there is no such level.
  void RemoveLevel(int32_t i);
  /// Replaces one values entry of a level. A bad index shows the index message, and nothing changes.
  void SetLevelValues(std::ptrdiff_t level, std::ptrdiff_t entry, const CColorantValues& values);

  /// Converts amounts, levels and curves between the plain basis and the basis that the factor applies to.
  /// In:      `p` weighs the base against the colorant as the factor weighs the colorant; `base` counts for
  ///          LevelUpdate::kKeepContributionOverBase only.
  /// Out:     to plain, with f the factor: amounts / f, and each concentration c (0 to 1) becomes
  ///          c' = f c / ((1 - c) p + f c); to factor: amounts x f, c' = (c/f) / ((1 - c)/p + c/f). The odds
  ///          c / (1 - c) are thus multiplied by f/p, or by p/f: the two directions undo each other. Every
  ///          level's curves follow with the ratio c / c', or its limit for c = 0. Sets `modified`.
  /// Errors:  silent; a factor of 0 gives infinities or NaN.
  void ConvertFactor(FactorDirection direction, double p, LevelUpdate update,
                     const CColorantValues& base = UnitBase());

  /// Restores every default, forgets the levels and clears `modified`.
  virtual void Reset();

  /// Compares everything but `modified`, doubles by near-equality.
  bool operator==(const CComponent& other) const;

 protected:
  CComponent(uint32_t id, int32_t kind) : id_(id), kind_(kind) {}

  /// Stores `value` when it differs, and notes the modification.
  template <class T>
  void Change(T& field, const T& value) {
    if (foundation_internal::ElementsEqual(field, value)) return;
    field = value;
    modified_ = 1;
  }
  void NoteModified() { modified_ = 1; }
  void RestoreDefaults(uint32_t id, int32_t kind);
  /// Puts a kind right after an assignment, which is no modification.
  void StoreKind(int32_t kind) { kind_ = kind; }

 private:
  friend struct ComponentArchive;

  CString description_;
  CString name_;
  uint32_t id_ = kNewComponentId;
  double amountA_ = 0.0;
  double amountB_ = 0.0;
  double factor_ = 1.0;
  int32_t refA_ = -1;
  int32_t refB_ = -1;
  int32_t refC_ = -1;
  int32_t kind_ = kKindColorant;
  uint32_t flags_ = 0;
  double scaleA_ = 1.0;
  double scaleB_ = 1.0;
  double scaleC_ = 1.0;
  int32_t classCode_ = 0;
  int32_t option_ = 0;
  int32_t currentLevel_ = 0;
  CColorantLevelArray levels_;
  uint32_t modified_ = 0;
};

/// A colorant: what gives colour, or a calibration white or black, which are measured the same way.
class VRX_API CColorant : public CComponent {
  VRX_DECLARE_DYNAMIC();

 public:
  using MovesBitwise = CColorant;

  CColorant() = default;
  // NOLINTNEXTLINE(bugprone-copy-constructor-init,readability-redundant-member-init): the assignment takes over the base too
  CColorant(const CColorant& other) : CComponent() { *this = other; }
  explicit CColorant(const CComponent& other) { *this = other; }
  /// Takes over a component; a resin becomes a colorant, every other kind stays what it is.
  CColorant& operator=(const CComponent& other);
  CColorant& operator=(const CColorant& other);
  CColorant& operator=(CColorant&& other) noexcept;
  ~CColorant() override;

  [[nodiscard]] double GetValueA() const { return valueA_; }
  void SetValueA(double value) { Change(valueA_, value); }
  /// A percentage; 100 when untouched.
  [[nodiscard]] double GetPercent() const { return percent_; }
  void SetPercent(double percent) { Change(percent_, percent); }
  [[nodiscard]] const CAttributeArray& GetAttributes() const { return attributes_; }
  void SetAttributes(const CAttributeArray& attributes) { Change(attributes_, attributes); }

  /// True when the colorant is a white: K/S of level 0 is at most 0.1 at every wavelength from 440 to 700 nm.
  /// False without measured data.
  [[nodiscard]] bool IsWhite() const;

  void Reset() override;

  /// Equal as components, and in `valueA` and `percent` exactly, and in the attributes.
  bool operator==(const CColorant& other) const;

 private:
  friend struct ComponentArchive;

  double valueA_ = 0.0;
  double percent_ = 100.0;
  CAttributeArray attributes_;
};

/// An additive in a base.
struct VRX_API CAdditive {
  uint32_t componentId = 0;
  double amount = 0.0;

  bool operator==(const CAdditive& other) const {
    return componentId == other.componentId && NearlyEqual(amount, other.amount);
  }

  /// Archive form: id (32 bits), amount (64 bits). Throws as CArchive does; the additive is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 12;
};

/// The additives of a base.
class CAdditiveArray : public CArrayVarex<CAdditive> {};

/// How a base is topped off. What the fields mean is the host's.
class VRX_API CTopOff : public CObject {
  VRX_DECLARE_DYNAMIC();

 public:
  CTopOff() = default;
  CTopOff(const CTopOff&) = default;
  CTopOff& operator=(const CTopOff&) = default;
  ~CTopOff() override;

  CString text;
  double valueA = 0.0;
  double valueB = 0.0;
  double valueC = 1.0;
  int32_t mode = 0;

  bool operator==(const CTopOff& other) const;
};

/// A base or resin: what carries the colorants.
class VRX_API CResin : public CComponent {
  VRX_DECLARE_DYNAMIC();

 public:
  using MovesBitwise = CResin;

  CResin();
  // NOLINTNEXTLINE(bugprone-copy-constructor-init,readability-redundant-member-init): the assignment takes over the base too
  CResin(const CResin& other) : CComponent() { *this = other; }
  explicit CResin(const CComponent& other) { *this = other; }
  /// Takes over a component as a resin.
  CResin& operator=(const CComponent& other);
  CResin& operator=(const CResin& other);
  ~CResin() override;

  [[nodiscard]] int32_t GetResinCode() const { return resinCode_; }
  void SetResinCode(int32_t code) { Change(resinCode_, code); }
  [[nodiscard]] double GetResinValue() const { return resinValue_; }
  void SetResinValue(double value) { Change(resinValue_, value); }
  /// Three numbers of the host's; (0, 0, 1) when new.
  [[nodiscard]] const std::array<double, 3>& GetTriple() const { return triple_; }
  void SetTriple(const std::array<double, 3>& triple);
  /// Reference to another record; -1 means none.
  [[nodiscard]] int32_t GetResinRef() const { return resinRef_; }
  void SetResinRef(int32_t ref) { Change(resinRef_, ref); }
  [[nodiscard]] const CTopOff& GetTopOff() const { return topOff_; }
  void SetTopOff(const CTopOff& topOff) { Change(topOff_, topOff); }

  [[nodiscard]] const CAdditiveArray& GetAdditives() const { return additives_; }
  /// Sum of all amounts, in order; 0.0 for an empty list.
  [[nodiscard]] double TotalAdditiveAmount() const;
  /// Index of the first additive with that number; kNotFound when there is none.
  [[nodiscard]] uint32_t FindAdditive(uint32_t componentId) const;
  void AddAdditive(uint32_t componentId, double amount);
  /// Removes the first additive with that number; nothing happens when there is none.
  void RemoveAdditive(uint32_t componentId);
  /// A bad index shows the index message, and nothing changes.
  void SetAdditiveId(std::ptrdiff_t i, uint32_t componentId);
  void SetAdditiveAmount(std::ptrdiff_t i, double amount);
  void SetAdditiveCount(int32_t count);

  /// As for every component; only the top-off record stays as it is.
  void Reset() override;

  /// Equal as components, and in additives, triple, reference and top-off; code and value take no part.
  bool operator==(const CResin& other) const;

 private:
  friend struct ComponentArchive;

  int32_t resinCode_ = 0;
  double resinValue_ = 0.0;
  CAdditiveArray additives_;
  std::array<double, 3> triple_ = {0.0, 0.0, 1.0};
  int32_t resinRef_ = -1;
  CTopOff topOff_;
};

using CResinArray = CArrayVarex<CResin>;

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COMPONENTS_H_
