// A view of rows or columns (batch_view.h) as kernels see it: addresses, without a class and without checks.

#ifndef VRXMATH_BATCH_BATCH_TABLE_H_
#define VRXMATH_BATCH_BATCH_TABLE_H_

#include <array>
#include <cstddef>

#include <vrxmath/batch/batch_view.h>

namespace vrx {

/// One number of every row: that of row i is first[i * stride].
template <class NUMBER>
struct Column {
  NUMBER* first;
  std::ptrdiff_t stride;
};

/// The columns of `count` rows of a view from `from` on.
template <class NUMBER, std::size_t kWidth>
std::array<Column<NUMBER>, kWidth> ColumnsOf(const BatchView<NUMBER, kWidth>& view, std::size_t from,
                                             std::size_t count) {
  const BatchView<NUMBER, kWidth> rows = view.Rows(from, count);
  std::array<Column<NUMBER>, kWidth> columns;
  for (std::size_t k = 0; k < kWidth; ++k) columns[k] = {rows.first(k), rows.stride()};
  return columns;
}

}  // namespace vrx

#endif  // VRXMATH_BATCH_BATCH_TABLE_H_
