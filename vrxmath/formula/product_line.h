// Product lines: the colour systems under which one line of products is made.

#ifndef VRXMATH_FORMULA_PRODUCT_LINE_H_
#define VRXMATH_FORMULA_PRODUCT_LINE_H_

#include <array>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/list_data.h>
#include <vrxmath/platform/archive.h>

namespace vrx {

/// The colour systems of one product line, with three pick lists of the host's.
class VRX_API CProductLineData : public CArrayVarex<CColorantSystemData> {
 public:
  using MovesBitwise = CProductLineData;

  std::array<CListDataArray, 3> pickLists;

  bool operator==(const CProductLineData& other) const;

  /// Archive form: a frame "VRXP" (foundation/archive_frame.h) around the fields of all systems, then the
  /// three lists. Throws as CColorantSystemData does; the product line is then unchanged.
  void Serialize(CArchive& archive) override;
};

using CProductLineDataArray = CArrayVarex<CProductLineData>;

}  // namespace vrx

#endif  // VRXMATH_FORMULA_PRODUCT_LINE_H_
