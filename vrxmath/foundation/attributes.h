// Attributes: properties that a user defines for stored items, by number, holding a text or a number; and the
// labels under which they are displayed.

#ifndef VRXMATH_FOUNDATION_ATTRIBUTES_H_
#define VRXMATH_FOUNDATION_ATTRIBUTES_H_

#include <cstdint>

#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/foundation/list_box.h>
#include <vrxmath/foundation/numbers.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// One property of a stored item. The type says which of the two values counts; set it before the value,
/// because neither setter changes it.
class VRX_API CAttribute {
 public:
  using MovesBitwise = CAttribute;

  /// The type of a text. Every other type is a number.
  static constexpr uint8_t kText = 2;

  CAttribute() = default;
  CAttribute(const CAttribute& other) { *this = other; }
  /// Takes over id, type and the value that the type names; a value of the other kind stays.
  CAttribute& operator=(const CAttribute& other);
  virtual ~CAttribute();

  [[nodiscard]] int32_t GetId() const { return id_; }
  void SetId(int32_t id) { id_ = id; }
  [[nodiscard]] uint8_t GetType() const { return type_; }
  void SetType(uint8_t type) { type_ = type; }
  [[nodiscard]] bool IsText() const { return type_ == kText; }

  /// The value; empty, or unset, until one is set.
  [[nodiscard]] const CString& GetText() const { return text_; }
  void SetText(WideView text) { text_ = text; }
  [[nodiscard]] double GetNumber() const { return number_; }
  void SetNumber(double number) { number_ = number; }

  /// Same id, same type, and the same value by exact comparison: numbers have no tolerance here.
  bool operator==(const CAttribute& other) const;

  /// Archive form: id (32 bits), type (8 bits), then the text or the number. Throws as CArchive does; the
  /// attribute is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 7;

 private:
  int32_t id_ = -1;
  uint8_t type_ = kText;
  CString text_;
  double number_ = kUnset;
};

using CAttributeArray = CArrayVarex<CAttribute>;
using CAttributeArray2 = CArrayVarex<CAttributeArray>;

/// The display text of one attribute number.
struct VRX_API CAttributeLabel {
  using MovesBitwise = CAttributeLabel;

  int32_t id = 0;
  uint8_t kind = 0;  ///< the host's
  CString text;

  bool operator==(const CAttributeLabel&) const = default;

  /// Archive form: id (32 bits), kind (8 bits), text. Throws as CArchive does; the label is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 7;
};

/// The labels of a database.
class VRX_API CAttributeLabelArray : public CArrayVarex<CAttributeLabel> {
 public:
  /// The text of the first label with that id; of label 0 when there is none. An empty array shows the index
  /// message and gives an empty text.
  [[nodiscard]] const CString& TextOf(int32_t id) const;

  /// Fills `list` with the texts, ids as item data; see FillListBox.
  int32_t FillList(ListBox& list) const;
};

}  // namespace vrx

#endif  // VRXMATH_FOUNDATION_ATTRIBUTES_H_
