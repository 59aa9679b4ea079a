#include <vrxmath/tolerance/averaging_stats.h>

#include <vrxmath/platform/exceptions.h>

namespace vrx {

CAveragingStats::~CAveragingStats() = default;

void CAveragingStats::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    CDoubleArray1::Serialize(archive);
    return;
  }
  CDoubleArray1 values;
  values.Serialize(archive);
  if (values.GetSize() != kValues) throw CArchiveException(CArchiveException::kBadFormat);
  CDoubleArray1::operator=(values);
}

}  // namespace vrx
