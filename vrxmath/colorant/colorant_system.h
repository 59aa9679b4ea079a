// The colour system: everything that one set of calibrated colorants needs to be mixed and matched.

#ifndef VRXMATH_COLORANT_COLORANT_SYSTEM_H_
#define VRXMATH_COLORANT_COLORANT_SYSTEM_H_

#include <cstdint>

#include <vrxmath/colorant/colorant_array.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorant/components.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/foundation/attributes.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// A component's membership of a colour system.
struct VRX_API CColorantSystemComponent {
  uint32_t componentId = kNewComponentId;
  int32_t kind = kKindColorant;
  int32_t position = -1;  ///< place in the order of display; -1 means none
  bool enabled = true;    ///< offered for new formulas

  bool operator==(const CColorantSystemComponent&) const = default;

  /// Archive form: id, kind, position (32 bits each), enabled (8 bits, 0 or 1). Throws as CArchive does,
  /// kBadFormat for another value of enabled; the record is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 13;
};

using CColorantSystemComponentArray = CArrayVarex<CColorantSystemComponent>;

/// One colour system: its optical constants and its components. Fields named by a letter belong to the host;
/// the library keeps, copies, compares and stores them.
class VRX_API CColorantSystemData {
 public:
  using MovesBitwise = CColorantSystemData;

  CColorantSystemData() { angles.SetCodes(1); }

  /// Saunderson's surface reflections: k1 of the light that enters, k2 of the diffuse light that leaves. 0.04
  /// and 0.6 belong to a film of refractive index 1.5.
  double k1 = 0.04;
  double k2 = 0.6;
  double valueA = 1.0;
  int32_t count = 3;
  double valueB = 0.0;
  uint32_t flagsA = 0;
  uint32_t flagsB = 0;
  int32_t opticalModel = kModelCoatings;
  CString name;
  CAngles angles;
  CAttributeLabelArray attributeLabels;
  CStringArray1 textsA;
  CStringArray1 textsB;
  CDWordArray1 numbersA;
  CDWordArray1 numbersB;
  CDWordArray1 numbersC;
  CColorantArray colorants;
  CResinArray resins;
  CColorantSystemComponentArray componentsA;
  CColorantSystemComponentArray componentsB;

  bool operator==(const CColorantSystemData& other) const;

  /// Archive form: a frame "VRXS" (foundation/archive_frame.h) around all fields in order. Throws as CArchive
  /// does, and CArchiveException for a form that is damaged (kBadFormat) or written by a newer library
  /// (kNewVersion); the system is then unchanged.
  void Serialize(CArchive& archive);

  /// The fields without the frame, for records that hold several systems. When reading throws, the system is
  /// left half read.
  void SerializeFields(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 78;
};

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COLORANT_SYSTEM_H_
