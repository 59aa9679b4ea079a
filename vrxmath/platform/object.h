// The object base: run-time class information, and the virtual operations that every container and record
// shares.

#ifndef VRXMATH_PLATFORM_OBJECT_H_
#define VRXMATH_PLATFORM_OBJECT_H_

#include <vrxmath/export.h>

namespace vrx {

class CArchive;

/// Run-time information about a class: its name and its base.
struct CRuntimeClass {
  const char* name;           ///< the class name, ASCII, such as "CColorant"
  const CRuntimeClass* base;  ///< the base's information; null for CObject

  /// True when this class is `other` or derives from it.
  [[nodiscard]] VRX_API bool IsDerivedFrom(const CRuntimeClass& other) const;
};

/// Root of the library's containers and of the records that can be asked for their class.
///
/// The virtual operations stand in a fixed order, which a binary host relies on: class query, destructor,
/// `Serialize`, `AssertValid`, `Dump`. The last two do nothing here.
class VRX_API CObject {
 public:
  static const CRuntimeClass kClass;

  [[nodiscard]] virtual const CRuntimeClass& GetRuntimeClass() const;
  virtual ~CObject();

  /// Writes the object to a storing archive or reads it from a loading one. The base has nothing to write.
  virtual void Serialize(CArchive& archive);
  virtual void AssertValid() const;
  virtual void Dump() const;

  /// True when the object's class is `other` or derives from it.
  [[nodiscard]] bool IsKindOf(const CRuntimeClass& other) const {
    return GetRuntimeClass().IsDerivedFrom(other);
  }

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

}  // namespace vrx

/// In a class body: gives the class run-time class information of its own, `kClass`.
#define VRX_DECLARE_DYNAMIC()               \
 public:                                    \
  static const ::vrx::CRuntimeClass kClass; \
  const ::vrx::CRuntimeClass& GetRuntimeClass() const override

/// In a source file: defines what VRX_DECLARE_DYNAMIC declares.
#define VRX_IMPLEMENT_DYNAMIC(Class, Base)                            \
  const ::vrx::CRuntimeClass Class::kClass = {#Class, &Base::kClass}; \
  const ::vrx::CRuntimeClass& Class::GetRuntimeClass() const {        \
    return kClass;                                                    \
  }

#endif  // VRXMATH_PLATFORM_OBJECT_H_
