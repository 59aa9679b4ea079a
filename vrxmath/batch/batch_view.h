// Many rows of a few numbers each, as the batch functions read and write them.
//
// A view owns nothing. It stands over rows, one after the other with all numbers of a row together, or over columns, one
// span a number:
//
//   std::vector<double> rows(3 * n);                   BatchView<const double, 3> xyz(rows);
//   std::vector<double> X(n), Y(n), Z(n);              BatchView<const double, 3> xyz({X, Y, Z});
//
// Columns are the faster form, since whole vectors of the processor come from one column.

#ifndef VRXMATH_BATCH_BATCH_VIEW_H_
#define VRXMATH_BATCH_BATCH_VIEW_H_

#include <array>
#include <cstddef>
#include <span>
#include <type_traits>

#include <vrxmath/platform/exceptions.h>

namespace vrx {

/// Rows of `kWidth` numbers. Number k of row i is first[k][i * stride].
template <class NUMBER, std::size_t kWidth>
class BatchView {
 public:
  static constexpr std::size_t kNumbers = kWidth;
  using Columns = std::array<std::span<NUMBER>, kWidth>;

  /// No rows.
  BatchView() = default;

  /// Rows that begin every `stride` numbers. The last row may end anywhere behind its own numbers. Throws
  /// CInvalidArgException when it ends within them, and for a stride below kWidth.
  BatchView(std::span<NUMBER> rows, std::size_t stride = kWidth)
      : stride_(stride) {  // NOLINT: a plain span will do
    if (stride < kWidth) throw CInvalidArgException();
    count_ = rows.size() / stride;
    const std::size_t rest = rows.size() % stride;
    if (rest != 0 && rest < kWidth) throw CInvalidArgException();
    if (rest != 0) ++count_;
    for (std::size_t k = 0; k < kWidth; ++k) first_[k] = count_ == 0 ? nullptr : rows.data() + k;
  }
  template <class RANGE, class = std::enable_if_t<std::is_convertible_v<RANGE&, std::span<NUMBER>>>>
  BatchView(RANGE&& rows, std::size_t stride = kWidth)  // NOLINT: a vector will do
      : BatchView(std::span<NUMBER>(rows), stride) {}

  /// Columns of the same length. Throws CInvalidArgException when they are not.
  BatchView(const Columns& columns) : stride_(1), count_(columns[0].size()) {  // NOLINT: {X, Y, Z} will do
    for (std::size_t k = 0; k < kWidth; ++k) {
      if (columns[k].size() != count_) throw CInvalidArgException();
      first_[k] = columns[k].data();
    }
  }

  /// Rows that may be written may be read.
  operator BatchView<const NUMBER, kWidth>() const {  // NOLINT: as for a span
    BatchView<const NUMBER, kWidth> view;
    for (std::size_t k = 0; k < kWidth; ++k) view.first_[k] = first_[k];
    view.stride_ = stride_;
    view.count_ = count_;
    return view;
  }

  std::size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  std::ptrdiff_t stride() const { return static_cast<std::ptrdiff_t>(stride_); }
  NUMBER* first(std::size_t k) const { return first_[k]; }
  NUMBER& at(std::size_t row, std::size_t k) const { return first_[k][row * stride_]; }

  /// `count` rows from `from` on, which must exist.
  BatchView Rows(std::size_t from, std::size_t count) const {
    BatchView part = *this;
    for (NUMBER*& first : part.first_) first += from * stride_;
    part.count_ = count;
    return part;
  }
  /// The numbers from `kFrom` on, `kPart` of them.
  template <std::size_t kFrom, std::size_t kPart>
  BatchView<NUMBER, kPart> Numbers() const {
    static_assert(kFrom + kPart <= kWidth);
    BatchView<NUMBER, kPart> view;
    for (std::size_t k = 0; k < kPart; ++k) view.first_[k] = first_[kFrom + k];
    view.stride_ = stride_;
    view.count_ = count_;
    return view;
  }

 private:
  template <class, std::size_t>
  friend class BatchView;

  std::array<NUMBER*, kWidth> first_{};
  std::size_t stride_ = kWidth;
  std::size_t count_ = 0;
};

/// Throws CInvalidArgException unless the two counts are equal.
inline void RequireSameCount(std::size_t a, std::size_t b) {
  if (a != b) throw CInvalidArgException();
}

}  // namespace vrx

#endif  // VRXMATH_BATCH_BATCH_VIEW_H_
