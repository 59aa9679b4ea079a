// What Arrow arrays of other programs hold, read where it lies (vrxmath/arrow_c_data.h).

#ifndef VRXIO_ARROW_ARROW_ROWS_H_
#define VRXIO_ARROW_ARROW_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <vrxmath/arrow_c_data.h>

namespace vrx::io {

/// Rows of numbers, `width` in each, one after the other in the memory of an array, which has to outlive them.
struct ArrowRows {
  const double* doubles = nullptr;  ///< one of both is set, unless there are no rows
  const float* floats = nullptr;
  std::size_t count = 0, width = 0;
  std::vector<std::uint8_t> missing =
      {};  ///< 1 for a row that is null or holds a null; empty where none does
  std::vector<double> gathered =
      {};  ///< the numbers of lists that do not lie one after the other; `doubles` are these then
};

/// True for columns of numbers: float, double, and lists of them ("f", "g", "+w:N", "+l", "+L").
[[nodiscard]] bool IsOfNumbers(const ArrowSchema& schema);

/// Their rows, a plain column having the width 1. All lists must be of one length, but for rows that are null. Throws InputError,
/// which names the column, for lists of several lengths or with more than 100,000 numbers, another type, and structures that
/// contradict themselves. What the buffers hold cannot be checked: as with any pointer the one who made them answers for it.
[[nodiscard]] ArrowRows NumbersOf(const ArrowSchema& schema, const ArrowArray& array);

/// True for columns of texts ("u", "U", and views of them, "vu").
[[nodiscard]] bool IsOfTexts(const ArrowSchema& schema);

/// Their texts, empty for rows that are null. Throws InputError for another type and structures that contradict themselves.
[[nodiscard]] std::vector<std::string> TextsOf(const ArrowSchema& schema, const ArrowArray& array);

/// The value of a key in the metadata of a schema; empty where there is none.
[[nodiscard]] std::string MetadataOf(const ArrowSchema& schema, const std::string& key);

}  // namespace vrx::io

#endif  // VRXIO_ARROW_ARROW_ROWS_H_
