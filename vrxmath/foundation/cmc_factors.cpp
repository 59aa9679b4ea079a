#include <vrxmath/foundation/cmc_factors.h>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {

void CCmcFactorData::Serialize(CArchive& archive) {
  SerializeFields(archive, lightness, chroma, hue, limit);
}

}  // namespace vrx
