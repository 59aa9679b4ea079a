// Measuring geometries: the codes that name them, the list that a measurement set carries, and the texts by
// which a formula store filters on them.

#ifndef VRXMATH_FOUNDATION_ANGLES_H_
#define VRXMATH_FOUNDATION_ANGLES_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// Number of geometry codes, 0 to 48.
inline constexpr int32_t kAngleCodes = 49;
/// In the place of a position in a list: the current angle.
inline constexpr int32_t kCurrentAngle = 100;

/// The kinds of geometry that codes stand for. Only lists of kind kOther are lists of angles.
enum class AngleFamily { kSphere, kPosition, kBackground, kTransmission, kCorrection, kOther };

/// The family of a code, 0 to 255.
[[nodiscard]] VRX_API AngleFamily FamilyOfAngle(uint8_t code);

/// The angle of a code in degrees, -45 to 110; 45 for geometries without an aspecular angle and for unknown
/// codes.
[[nodiscard]] VRX_API double AngleOfCode(uint8_t code);

/// Whether a geometry has an aspecular angle of its own, as those of kOther do; any other number has none.
[[nodiscard]] VRX_API bool HasAspecularAngle(int32_t code);
/// That angle in degrees, or `usual` where there is none.
[[nodiscard]] VRX_API double AspecularAngle(int32_t code, double usual);

/// The display name of a code, such as "SCI" or "15 degrees"; empty for unknown codes.
[[nodiscard]] VRX_API CString NameOfAngle(uint8_t code);

/// The geometries of one measurement set: their codes in stored order, their order by angle, the selection of
/// those in use and the current one.
class VRX_API CAngles {
 public:
  using MovesBitwise = CAngles;

  CAngles() = default;
  CAngles(const CAngles&) = default;
  CAngles(CAngles&&) = default;
  CAngles& operator=(const CAngles&) = default;
  CAngles& operator=(CAngles&&) = default;
  virtual ~CAngles();

  /// Replaces the codes, selects every angle and makes the first stored one current.
  void SetCodes(std::span<const uint8_t> codes);
  /// The usual codes for `count` geometries: d8 for one; 15 degrees, 20 degrees and on from there for more.
  /// At most 256 codes exist, so a larger count (and a negative one) raises CInvalidArgException.
  void SetCodes(int32_t count);

  [[nodiscard]] int32_t GetCount() const { return codes_.GetSize(); }
  [[nodiscard]] uint8_t GetCode(std::ptrdiff_t index) const { return codes_[index]; }
  [[nodiscard]] uint8_t GetCodeAtPosition(std::ptrdiff_t position) const {
    return codes_[sortOrder_[position]];
  }
  /// Degrees of the code at a stored index.
  [[nodiscard]] double GetAngle(std::ptrdiff_t index) const { return AngleOfCode(codes_[index]); }

  [[nodiscard]] int32_t GetCurrent() const { return current_; }
  void SetCurrent(int32_t current) { current_ = current; }

  /// The stored index behind a position in the order by angle; position kCurrentAngle gives the current angle
  /// itself.
  [[nodiscard]] int32_t IndexAt(std::ptrdiff_t position) const;
  /// The name of a position (kCurrentAngle included); empty for a list of fewer than two codes.
  [[nodiscard]] CString NameAt(std::ptrdiff_t position) const;
  /// The stored index of the angle nearest to `degrees`, the first of equals; 0 for an empty list.
  [[nodiscard]] int32_t NearestTo(double degrees) const;
  /// The position in this list that stands for `position` of `other`: that of the nearest angle.
  /// kCurrentAngle when the position is kCurrentAngle or beyond `other`, and when this list has one code.
  [[nodiscard]] int32_t Translate(const CAngles& other, std::ptrdiff_t position) const;

  /// True when the list holds two or more codes of no special family: real aspecular angles.
  [[nodiscard]] bool IsMultiAngle() const;

  [[nodiscard]] bool IsSelected(std::ptrdiff_t index) const { return selected_[index] != 0; }
  /// A second flag of each code, which belongs to the host: set by every change of the codes, compared and copied
  /// with the list, and not archived.
  [[nodiscard]] bool HasFlag(std::ptrdiff_t index) const { return flags_[index] != 0; }
  void SetFlag(std::ptrdiff_t index, bool flag) { flags_[index] = flag ? 1 : 0; }

  /// Selects angles by a text such as "1,0,1", one value per code in stored order. Missing values count as 1;
  /// with nothing selected the first angle is. The first selected angle becomes current.
  void SelectFromText(WideView text);

  /// Takes over the geometries of an instrument: lists of a special family become the whole family, others
  /// the instrument's own codes. Nothing changes when one single code would replace another, or when an old
  /// code is missing from the new list. True when the list was replaced. More than 256 codes raise
  /// CInvalidArgException.
  bool ReplaceForInstrument(std::span<const uint8_t> instrumentCodes);

  /// Compares codes, orders and flags; the current angle takes no part.
  bool operator==(const CAngles& other) const;

  /// Archive form: the number of codes, 32 bits, then one byte per code. Throws as CArchive does, and
  /// CArchiveException (kBadFormat) for more than 256 codes; the list is then unchanged.
  void Serialize(CArchive& archive);

  [[nodiscard]] const CByteArray1& Codes() const { return codes_; }
  [[nodiscard]] const CByteArray1& SortOrder() const { return sortOrder_; }
  [[nodiscard]] const CByteArray1& Rank() const { return rank_; }
  [[nodiscard]] const CByteArray1& Flags() const { return flags_; }

 private:
  void Rebuild();

  int32_t current_ = 0;
  CByteArray1 codes_;
  CByteArray1 sortOrder_;  // indices into codes_, ascending by angle
  CByteArray1 rank_;       // inverse of sortOrder_
  CByteArray1 selected_;
  CByteArray1 flags_;
};

/// How much one measuring geometry counts in a sum over geometries.
struct VRX_API CAngleWeight {
  uint8_t code = 0;     ///< geometry
  double weight = 1.0;  ///< 1 counts in full

  bool operator==(const CAngleWeight& other) const {
    return code == other.code && NearlyEqual(weight, other.weight);
  }

  /// Archive form: code (8 bits), weight (64 bits). Throws as CArchive does; the record is
  /// then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 9;
};

using CAngleWeightArray = CArrayVarex<CAngleWeight>;

/// For each code of `codes`, the stored index of the entry of `previous` nearest in angle: how a table with
/// one entry per geometry follows a change of geometries.
[[nodiscard]] VRX_API CIntArray1 NearestIndices(const CAngles& codes, const CAngles& previous);

/// Resizes a table with one entry per geometry from the geometries `previous` to `codes`; every entry is
/// taken from the old geometry nearest in angle. An empty table gets default entries.
template <class TABLE>
void ResizeByNearestAngle(TABLE& table, const CAngles& codes, const CAngles& previous) {
  const TABLE old = table;
  const CIntArray1 nearest = NearestIndices(codes, previous);
  table.SetSize(codes.GetCount());
  for (int32_t i = 0; i < table.GetSize(); ++i) {
    if (nearest[i] < old.GetSize()) table[i] = old[nearest[i]];
  }
}

/// Query conditions on a column `Angle`.
/// The single-geometry codes: d8, 45/0, d0, 0/45 and 45 degrees.
[[nodiscard]] VRX_API CString BaseAngleFilter();
/// Those and the sphere codes with (SCI, SCI/100) or without (SCE, SCE/100) the specular component.
[[nodiscard]] VRX_API CString SphereAngleFilter(bool specularIncluded);
/// Those, one code, and the code that may stand for it.
[[nodiscard]] VRX_API CString AngleFilter(uint8_t code);

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_ANGLES_H_
