// Handles: numbers that stand for objects of the library, and cannot be mistaken for one another.

#ifndef C_API_HANDLES_H_
#define C_API_HANDLES_H_

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/colorant/colorant_system.h>

#include "c_api/checks.h"

namespace vrx::c_api {

/// Conditions, standards and their limits.
struct Judgement {
  JudgeConditions conditions;
  std::vector<JudgeLimits> boxes, ellipsoids;  // by illuminant, where no standard has its own
  std::map<std::size_t, JudgeLimits> own;  // by standard and illuminant: standard x illuminants + illuminant
  bool byEllipsoid = false;
  std::optional<JudgeStandards> standards;

  std::size_t IlluminantCount() const { return conditions.illuminants.size(); }
};

using Object = std::variant<std::shared_ptr<Judgement>, std::shared_ptr<CColorantSystemData>>;

/// Keeps an object until `CloseHandle`. A number is not given again for as long as 16-bit counting allows.
vrx_handle OpenHandle(Object object);
/// Lets go of an object; refuses what is no handle.
void CloseHandle(vrx_handle handle);
/// The object of a handle of any kind; refuses what is no handle.
Object FindObject(vrx_handle handle);

/// The object of a handle, which stays alive for the length of the call; refuses one of another kind.
template <class T>
std::shared_ptr<T> Find(vrx_handle handle) {
  const Object object = FindObject(handle);
  if (const auto* found = std::get_if<std::shared_ptr<T>>(&object)) return *found;
  throw Refusal{VRX_BAD_HANDLE, "the handle is of another kind"};
}

}  // namespace vrx::c_api

#endif  // C_API_HANDLES_H_
