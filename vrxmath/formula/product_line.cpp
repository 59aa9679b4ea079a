#include <vrxmath/formula/product_line.h>

#include <vrxmath/foundation/archive_frame.h>
#include <vrxmath/foundation/record_archive.h>

namespace vrx {
namespace {

constexpr ArchiveFormat kFormat = {0x50585256, 1};  // "VRXP"

void SerializeContent(CArchive& archive, CProductLineData& line) {
  CArrayVarex<CColorantSystemData>& systems = line;
  SerializeList(archive, systems, CColorantSystemData::kMinArchiveBytes,
                [](CArchive& one, CColorantSystemData& system) { system.SerializeFields(one); });
  for (CListDataArray& list : line.pickLists) list.Serialize(archive);
}

}  // namespace

bool CProductLineData::operator==(const CProductLineData& other) const {
  return CArrayVarex::operator==(other) && pickLists == other.pickLists;
}

void CProductLineData::Serialize(CArchive& archive) {
  SerializeFramed(archive, kFormat, *this, SerializeContent);
}

}  // namespace vrx
