#include <vrxmath/foundation/sort_double.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {

void CSortDouble::Serialize(CArchive& archive) {
  SerializeFields(archive, value, index);
}

void SortByValue(CSortDoubleArray& values) {
  std::stable_sort(values.begin(), values.end(), [](const CSortDouble& a, const CSortDouble& b) {
    return a.value < b.value || (std::isnan(b.value) && !std::isnan(a.value));
  });
}

}  // namespace vrx
