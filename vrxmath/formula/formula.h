// Formulas: the components of one colour with their amounts.

#ifndef VRXMATH_FORMULA_FORMULA_H_
#define VRXMATH_FORMULA_FORMULA_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// One line of a formula. A new line holds a vanishingly small amount rather than none.
struct CDbFormulaElement {
  using MovesBitwise = CDbFormulaElement;

  int32_t componentId = -1;  ///< number of the component; -1 means none
  CString label;             ///< text of the line
  double amount = kUnset;
  // Further quantities of the line; what they mean is the host's.
  double aux1 = kUnset;
  double aux2 = kUnset;
  double aux3 = kUnset;
  double aux4 = kUnset;
  double aux5 = kUnset;

  /// Same component, same label exactly, all quantities nearly equal.
  bool operator==(const CDbFormulaElement& other) const {
    return componentId == other.componentId && NearlyEqual(amount, other.amount) && label == other.label &&
           NearlyEqual(aux1, other.aux1) && NearlyEqual(aux2, other.aux2) && NearlyEqual(aux3, other.aux3) &&
           NearlyEqual(aux4, other.aux4) && NearlyEqual(aux5, other.aux5);
  }
};

/// A formula: its lines in order. As a colour it is the set of its lines, and so it compares.
class VRX_API CDbFormula : public CArrayVarex<CDbFormulaElement> {
 public:
  CDbFormula() = default;
  /// A formula of default lines. Throws CInvalidArgException when `lines` is negative.
  explicit CDbFormula(int32_t lines) { SetSize(lines); }

  /// Makes as many lines as there are numbers, each with its component number and amount. A line that was
  /// there keeps its other fields. A number without an amount shows the index message.
  void SetLines(const CDWordArray1& numbers, const CDoubleArray1& amounts);
  /// The component numbers and amounts of all lines, in order.
  void GetLines(CDWordArray1& numbers, CDoubleArray1& amounts) const;

  /// True when each line has a partner of its own in the other formula, whatever the order: for each line,
  /// in order, the first equal line of `other` that is not taken yet.
  bool operator==(const CDbFormula& other) const;

  /// Archive form: the line count, then 56 bytes for each line: component number (32 bits), four bytes that
  /// are written as zeros and ignored on reading, amount and aux1 to aux5 (64 bits each). Labels do not
  /// survive. Throws as CArchive does; the formula is then unchanged.
  void Serialize(CArchive& archive) override;

  /// The form that keeps the labels: as Serialize, with the label's text in the place of the four bytes.
  void SerializeWithLabels(CArchive& archive);
};

/// The names of a formula.
struct VRX_API CDbNames {
  using MovesBitwise = CDbNames;

  uint32_t id = 0;
  CString name;
  CString description;

  bool operator==(const CDbNames&) const = default;

  /// Archive form: id (32 bits), name, description. Throws as CArchive does; the names are then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 8;
};

using CDbNamesArray = CArrayVarex<CDbNames>;

}  // namespace vrx

#endif  // VRXMATH_FORMULA_FORMULA_H_
