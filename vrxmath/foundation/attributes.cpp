#include <vrxmath/foundation/attributes.h>

#include <algorithm>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {

CAttribute::~CAttribute() = default;

CAttribute& CAttribute::operator=(const CAttribute& other) {
  id_ = other.id_;
  type_ = other.type_;
  if (IsText()) {
    text_ = other.text_;
  } else {
    number_ = other.number_;
  }
  return *this;
}

bool CAttribute::operator==(const CAttribute& other) const {
  return id_ == other.id_ && type_ == other.type_ &&
         (IsText() ? text_ == other.text_ : number_ == other.number_);
}

void CAttribute::Serialize(CArchive& archive) {
  int32_t id = id_;
  uint8_t type = type_;
  SerializeFields(archive, id, type);
  if (type == kText) {
    SerializeField(archive, text_);
  } else {
    SerializeField(archive, number_);
  }
  id_ = id;
  type_ = type;
}

void CAttributeLabel::Serialize(CArchive& archive) {
  SerializeFields(archive, id, kind, text);
}

const CString& CAttributeLabelArray::TextOf(int32_t id) const {
  const CAttributeLabel* label =
      std::find_if(begin(), end(), [&](const CAttributeLabel& candidate) { return candidate.id == id; });
  return label != end() ? label->text : GetAt(0).text;
}

int32_t CAttributeLabelArray::FillList(ListBox& list) const {
  return FillListBox(list, *this);
}

}  // namespace vrx
