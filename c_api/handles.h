// Handles: numbers that stand for objects of the library, and cannot be mistaken for one another.

#ifndef C_API_HANDLES_H_
#define C_API_HANDLES_H_

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include <vrxio/files/measurement_table.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/matching/calibration.h>
#include <vrxmath/matching/recipe_types.h>

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

/// A recipe or the additions of a correction.
struct FoundRecipe {
  CDbFormula formula;
  CDoubleArray1 differences;
  CReflData curve;
  vrx_recipe_summary summary;
};

/// A search for recipes: its conditions, and what it found last.
struct Search {
  std::shared_ptr<io::ColorSystem> system;
  CRecipeSettings settings;
  double mostAddition = RecipeDefaults::kMostAddition;
  int32_t aim = VRX_AIM_SMALLEST;
  vrx_progress progress = nullptr;
  void* context = nullptr;
  std::vector<FoundRecipe> results;
  std::optional<FoundRecipe> before;  ///< the batch as it is, after a correction
};

/// Drawdowns and how they are to be read, and how the last calibration described them.
struct Calibration {
  CCalibrationSettings settings;  ///< but for the resins
  int32_t model = 0;
  CStringArray1 names;
  std::vector<bool> isResin;  ///< by component
  CDrawdownArray drawdowns;
  CDrawdownFitArray fits;
};

using Object = std::variant<std::shared_ptr<Judgement>, std::shared_ptr<io::ColorSystem>,
                            std::shared_ptr<io::MeasurementTable>, std::shared_ptr<Search>,
                            std::shared_ptr<Calibration>>;

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

/// How the surface enters the curves beside a system: as it says itself, else as `surface`, else included. Refuses a surface that
/// contradicts what the system was calibrated on.
SaundersonMode SurfaceOf(const io::ColorSystem& system, std::optional<int32_t> surface);

}  // namespace vrx::c_api

#endif  // C_API_HANDLES_H_
