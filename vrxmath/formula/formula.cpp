#include <vrxmath/formula/formula.h>

#include <array>
#include <cstddef>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {
namespace {

// Which lines have found a partner. Formulas of ordinary length need no allocation.
class Marks {
 public:
  explicit Marks(int32_t count) {
    if (static_cast<std::size_t>(count) > inPlace_.size()) allocated_.SetSize(count);
  }
  uint8_t& operator[](int32_t i) {
    return (allocated_.IsEmpty() ? inPlace_.data() : allocated_.GetData())[i];
  }

 private:
  std::array<uint8_t, 256> inPlace_{};
  CByteArray1 allocated_;
};

void SerializeQuantities(CArchive& archive, CDbFormulaElement& line) {
  SerializeFields(archive, line.amount, line.aux1, line.aux2, line.aux3, line.aux4, line.aux5);
}

void SerializePacked(CArchive& archive, CDbFormulaElement& line) {
  uint32_t inPlaceOfLabel = 0;
  SerializeFields(archive, line.componentId, inPlaceOfLabel);
  SerializeQuantities(archive, line);
}

void SerializeLabelled(CArchive& archive, CDbFormulaElement& line) {
  SerializeFields(archive, line.componentId, line.label);
  SerializeQuantities(archive, line);
}

}  // namespace

void CDbFormula::SetLines(const CDWordArray1& numbers, const CDoubleArray1& amounts) {
  SetSize(numbers.GetSize());
  for (int32_t i = 0; i < GetSize(); ++i) {
    data_[i].componentId = static_cast<int32_t>(numbers[i]);
    data_[i].amount = amounts[i];
  }
}

void CDbFormula::GetLines(CDWordArray1& numbers, CDoubleArray1& amounts) const {
  numbers.SetSize(GetSize());
  amounts.SetSize(GetSize());
  for (int32_t i = 0; i < GetSize(); ++i) {
    numbers[i] = static_cast<uint32_t>(data_[i].componentId);
    amounts[i] = data_[i].amount;
  }
}

bool CDbFormula::operator==(const CDbFormula& other) const {
  if (GetSize() != other.GetSize()) return false;
  Marks taken(GetSize());
  int32_t firstFree = 0;  // every line before it is taken
  for (const CDbFormulaElement& line : *this) {
    int32_t i = firstFree;
    while (i < GetSize() && (taken[i] != 0 || !(other.data_[i] == line))) ++i;
    if (i == GetSize()) return false;
    taken[i] = 1;
    while (firstFree < GetSize() && taken[firstFree] != 0) ++firstFree;
  }
  return true;
}

void CDbFormula::Serialize(CArchive& archive) {
  constexpr std::size_t kLineBytes = 56;
  SerializeList(archive, *this, kLineBytes, SerializePacked);
}

void CDbFormula::SerializeWithLabels(CArchive& archive) {
  constexpr std::size_t kMinLineBytes = 54;
  SerializeList(archive, *this, kMinLineBytes, SerializeLabelled);
}

void CDbNames::Serialize(CArchive& archive) {
  SerializeFields(archive, id, name, description);
}

}  // namespace vrx
