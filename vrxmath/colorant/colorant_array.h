// The colorants of a colour system, and the blending of several into one.

#ifndef VRXMATH_COLORANT_COLORANT_ARRAY_H_
#define VRXMATH_COLORANT_COLORANT_ARRAY_H_

#include <cstddef>
#include <cstdint>

#include <vrxmath/colorant/components.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/checked_array.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// One line of a blend.
struct VRX_API CBlendColorant {
  uint32_t componentId = kNewComponentId;
  double weight = 0.0;
  int32_t index = -1;  ///< the colorant's place in its array; -1: to be found by its number

  bool operator==(const CBlendColorant& other) const {
    return componentId == other.componentId && NearlyEqual(weight, other.weight) && index == other.index;
  }

  /// Archive form: id (32 bits), weight (64 bits), index (32 bits). Throws as CArchive does; the
  /// line is then unchanged.
  void Serialize(CArchive& archive);
  static constexpr std::size_t kMinArchiveBytes = 16;
};

using CBlendColorantArray = CArrayVarex<CBlendColorant>;

/// The colorants of a colour system, in its order.
class VRX_API CColorantArray : public CArrayVarex<CColorant> {
 public:
  /// Index of the first colorant with that number; -1 when there is none.
  [[nodiscard]] int32_t IndexOfId(uint32_t id) const;

  /// Replaces colorant `a` by the blend of `a` and `b`: for each level that both have, concentration, K and S
  /// of the first values entry are wa times those of `a` plus wb times those of `b`, as quantities of
  /// two-constant theory add. The blend keeps name and class code of `a`, states the weights in its
  /// description ("%9.6f %9.6f") and is otherwise a new colorant.
  /// Errors: a bad index shows the index message, and nothing changes.
  void Blend(std::ptrdiff_t a, std::ptrdiff_t b, double wa, double wb);

  /// The blend of any number of colorants: what blending pair by pair in line order gives, with the weights
  /// of all lines in the description. It takes the place of the first line's colorant. One line scales its
  /// colorant by its weight.
  /// Errors: false, with nothing changed, when there is no line or a line's colorant does not exist.
  [[nodiscard]] bool Blend(const CBlendColorantArray& lines);

 private:
  std::ptrdiff_t IndexOf(const CBlendColorant& line) const {
    return line.index >= 0 ? line.index : IndexOfId(line.componentId);
  }
};

}  // namespace vrx

#endif  // VRXMATH_COLORANT_COLORANT_ARRAY_H_
