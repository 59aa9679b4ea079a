#include <vrxmath/platform/object.h>

namespace vrx {

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass& other) const {
  for (const CRuntimeClass* c = this; c != nullptr; c = c->base) {
    if (c == &other) return true;
  }
  return false;
}

const CRuntimeClass CObject::kClass = {"CObject", nullptr};

const CRuntimeClass& CObject::GetRuntimeClass() const {
  return kClass;
}
CObject::~CObject() = default;
void CObject::Serialize(CArchive&) {}
void CObject::AssertValid() const {}
void CObject::Dump() const {}

}  // namespace vrx
