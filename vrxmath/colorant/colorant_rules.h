// Colorant rules: which colorants a colour system forbids to be used together.

#ifndef VRXMATH_COLORANT_COLORANT_RULES_H_
#define VRXMATH_COLORANT_COLORANT_RULES_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/object.h>

namespace vrx {

/// The rules of a colour system. Each row is a set of component numbers that must not all occur in one
/// formula; an empty row forbids nothing. Rows are addressed by their index.
class VRX_API CColorantRulesData : public CObject {
  VRX_DECLARE_DYNAMIC();

 public:
  CColorantRulesData() = default;
  CColorantRulesData(const CColorantRulesData&) = default;
  CColorantRulesData& operator=(const CColorantRulesData&) = default;
  ~CColorantRulesData() override;

  [[nodiscard]] const CDWordArray2& GetRules() const { return rules_; }

  /// The entry count of the longest row; 0 without rows.
  [[nodiscard]] int32_t LongestRow() const;
  /// Index in row `row` of the first entry equal to `componentId`; -1 when there is none.
  [[nodiscard]] int32_t FindInRow(std::ptrdiff_t row, uint32_t componentId) const;

  /// False when the candidates hold every member of a row that is not empty. Fewer than two candidates are
  /// always allowed.
  [[nodiscard]] bool IsAllowed(const CDWordArray1& candidates) const;
  /// Where in `candidates` the members of row `row` first occur, in row order; absent ones are skipped.
  [[nodiscard]] CWordArray1 MembersPresent(std::ptrdiff_t row, const CDWordArray1& candidates) const;

  /// Puts `row` at index `i`; at or beyond the end the list grows to i + 1 rows. Throws CInvalidArgException
  /// when `i` is negative or beyond 31 bits.
  void SetRow(std::ptrdiff_t i, const CDWordArray1& row);
  /// Appends a row and returns its index.
  int32_t AppendRow(const CDWordArray1& row);
  /// Appends a copy of every row of `other`, in order.
  void AppendAll(const CColorantRulesData& other);

  /// Same rows, with the same entries, in the same order.
  bool operator==(const CColorantRulesData& other) const { return rules_ == other.rules_; }

  /// Archive form, 16 bits throughout: row count, then for each row its entry count and its entries. Of a
  /// component number only the low 16 bits survive. Throws as CArchive does, the record then being unchanged;
  /// CInvalidArgException, with nothing written, for a row or a list of more than 65535.
  void Serialize(CArchive& archive) override;

 private:
  CDWordArray2 rules_;
};

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COLORANT_RULES_H_
