// How a kernel walks over rows in packs. For the lane sources alone (numeric/lane_kernels.h).
//
// A kernel sees packs: one number of several rows. From columns they come as they lie; rows are loaded whole and turned
// over in registers. Everything else, and the rest that does not fill a pack, passes through a few columns on the stack,
// so that one loop per kernel is enough.

#ifndef VRXMATH_BATCH_LANE_ROWS_H_
#define VRXMATH_BATCH_LANE_ROWS_H_

#include <cstddef>
#include <limits>
#include <tuple>
#include <type_traits>

#include <vrxmath/batch/batch_table.h>
#include <vrxmath/numeric/lanes.h>
#if defined(__GNUC__)
#include <vrxmath/numeric/pack.h>
#endif

// The lanes of a pack; a source whose packs are better narrower than the instruction set defines them first.
#ifndef VRX_PACK_LANES
#define VRX_PACK_LANES VRX_LANES
#endif

namespace vrx {
namespace {

#if VRX_PACK_LANES > 1
struct Unit;
using Lanes = Pack<VRX_PACK_LANES, Unit>;
#else
using Lanes = double;
#endif

inline constexpr std::size_t kLaneCount = VRX_PACK_LANES;

// Rows that pass through the stack at a time. With 14 columns it stays within the first-level cache.
inline constexpr std::size_t kChunkRows = 128;

// A NaN is the quiet one of numeric_limits, since processors differ in the sign of theirs.
inline constexpr double kQuietNaN = std::numeric_limits<double>::quiet_NaN();
VRX_LANE_INLINE Lanes CanonicalNaN(Lanes x) {
  return Select(x == x, x, Lanes(kQuietNaN));
}

// Whether all three numbers of a row are unset.
VRX_LANE_INLINE auto AreUnset(const Lanes* three) {
  const decltype(three[0] < three[1]) all = IsUnset(three[0]) & IsUnset(three[1]) & IsUnset(three[2]);
  return all;
}

// Sets the numbers of unset rows to the unset value.
template <std::size_t kOut, class MASK>
VRX_LANE_INLINE void MarkUnset(MASK unset, Lanes* y) {
  if (!Any(unset)) return;
  for (std::size_t k = 0; k < kOut; ++k) y[k] = Select(unset, Lanes(kUnset), y[k]);
}
// The same with `maybe`, a test that costs less than `isUnset()` and holds wherever that may.
template <std::size_t kOut, class MASK, class F>
VRX_LANE_INLINE void MarkUnset(MASK maybe, const F& isUnset, Lanes* y) {
  if (Any(maybe)) MarkUnset<kOut>(isUnset(), y);
}

// Rows to columns and back, number by number. The columns are kChunkRows apart; up to `padded` they are filled with a
// harmless number.
template <std::size_t kWidth>
void RowsToColumns(const Column<const double>* table, std::size_t from, std::size_t count, std::size_t padded,
                   double* columns) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    const std::ptrdiff_t stride = table[k].stride;
    const double* source = table[k].first + static_cast<std::ptrdiff_t>(from) * stride;
    double* column = columns + k * kChunkRows;
    for (std::size_t i = 0; i < count; ++i) column[i] = source[static_cast<std::ptrdiff_t>(i) * stride];
    for (std::size_t i = count; i < padded; ++i) column[i] = 1.0;
  }
}
template <std::size_t kWidth, class NUMBER>
void ColumnsToRows(const NUMBER* columns, const Column<NUMBER>* table, std::size_t from, std::size_t count) {
  for (std::size_t k = 0; k < kWidth; ++k) {
    const std::ptrdiff_t stride = table[k].stride;
    NUMBER* target = table[k].first + static_cast<std::ptrdiff_t>(from) * stride;
    const NUMBER* column = columns + k * kChunkRows;
    for (std::size_t i = 0; i < count; ++i) target[static_cast<std::ptrdiff_t>(i) * stride] = column[i];
  }
}

// How the numbers that a kernel reads, or writes, are grouped: one width for each view that they come from.
template <std::size_t... kWidths>
struct Widths {
  static constexpr std::size_t kTotal = (kWidths + ... + 0);

  // True when the numbers of each group lie side by side at every row.
  template <class NUMBER>
  static bool AreRows(const Column<NUMBER>* columns) {
    std::size_t at = 0;
    const auto isRow = [&](std::size_t width) {
      for (std::size_t k = 1; k < width; ++k) {
        if (columns[at + k].stride != columns[at].stride) return false;
        if (columns[at + k].first != columns[at].first + k) return false;
      }
      at += width;
      return true;
    };
    return (isRow(kWidths) && ...);
  }
  template <class NUMBER>
  static bool AreColumns(const Column<NUMBER>* columns) {
    for (std::size_t k = 0; k < kTotal; ++k) {
      if (columns[k].stride != 1) return false;
    }
    return true;
  }

  // True when StoreRows can write such rows. Those of whole numbers must have nothing between them.
  template <class NUMBER>
  static bool CanStore(const Column<NUMBER>* columns) {
    if (!AreRows(columns)) return false;
    std::size_t at = 0;
    const auto isDense = [&](std::size_t width) {
      const bool dense = columns[at].stride == static_cast<std::ptrdiff_t>(width);
      at += width;
      return dense;
    };
    return std::is_same_v<NUMBER, double> || (isDense(kWidths) && ...);
  }

#if VRX_LANES > 1
  // Rows as packs, and back.
  static VRX_LANE_INLINE void LoadRows(const Column<const double>* columns, std::size_t row, Lanes* x) {
    std::size_t at = 0;
    ((LoadGroup<kWidths>(columns + at, row, x + at), at += kWidths), ...);
  }
  template <class NUMBER>
  static VRX_LANE_INLINE void StoreRows(const Lanes* y, const Column<NUMBER>* columns, std::size_t row) {
    std::size_t at = 0;
    ((StoreGroup<kWidths>(y + at, columns + at, row), at += kWidths), ...);
  }

 private:
  template <std::size_t kWidth>
  static VRX_LANE_INLINE void LoadGroup(const Column<const double>* column, std::size_t row, Lanes* x) {
    if constexpr (kWidth == 0) return;
    const double* first = column->first + static_cast<std::ptrdiff_t>(row) * column->stride;
    if constexpr (kWidth == 3) {
      if (column->stride == 3) return LoadTriples(first, x);
    }
    const double* places[kLaneCount];
    for (const double*& place : places) place = first, first += column->stride;
    LoadFields<static_cast<int>(kWidth)>(places, x);
  }

  template <std::size_t kWidth, class NUMBER>
  static VRX_LANE_INLINE void StoreGroup(const Lanes* y, const Column<NUMBER>* column, std::size_t row) {
    NUMBER* first = column->first + static_cast<std::ptrdiff_t>(row) * column->stride;
    if constexpr (std::is_same_v<NUMBER, double>) {
      StoreNumbers<kWidth>(y, column, first);
    } else if constexpr (kWidth == 3) {
      StoreTriples(y, first);
    } else {
      static_assert(kWidth == 1, "only what is needed");
      Store(y[0], first);
    }
  }
  template <std::size_t kWidth>
  static VRX_LANE_INLINE void StoreNumbers(const Lanes* y, const Column<double>* column, double* first) {
    if constexpr (kWidth == 0) return;
    if constexpr (kWidth == 3) {
      if (column->stride == 3) return StoreTriples(y, first);
    }
    double* places[kLaneCount];
    for (double*& place : places) place = first, first += column->stride;
    StoreFields<static_cast<int>(kWidth)>(y, places);
  }
#else
  static void LoadRows(const Column<const double>*, std::size_t, Lanes*) {}
  template <class NUMBER>
  static void StoreRows(const Lanes*, const Column<NUMBER>*, std::size_t) {}
#endif
};

// The numbers of a pack of rows that one stage of a kernel leaves to the next.
class Carried {
 public:
  VRX_LANE_INLINE explicit Carried(double* first) : first_(first) {}
  VRX_LANE_INLINE Lanes Get(std::size_t k) const { return Load<Lanes>(first_ + k * kChunkRows); }
  VRX_LANE_INLINE void Set(std::size_t k, Lanes x) const { Store(x, first_ + k * kChunkRows); }

 private:
  double* first_;
};

// A kernel in stages: first(in, carried), each of `middle`(carried), last(carried, out), one after the other for a chunk of
// rows. Where the steps of a long formula wait for each other this is faster than one loop: a processor looks some hundred
// instructions ahead, and in a short loop it finds there the next rows.
template <std::size_t kNumbers, class FIRST, class LAST, class... MIDDLE>
struct Stages {
  static constexpr std::size_t kCarried = kNumbers;
  FIRST first;
  LAST last;
  std::tuple<MIDDLE...> middle;
};
template <std::size_t kNumbers, class FIRST, class LAST, class... MIDDLE>
VRX_LANE_INLINE Stages<kNumbers, FIRST, LAST, MIDDLE...> InStages(FIRST first, LAST last, MIDDLE... middle) {
  return {first, last, {middle...}};
}

// Numbers as they are stored: a NaN is canonical, whole numbers have none.
template <class OUT, class NUMBER>
VRX_LANE_INLINE void MakeCanonical(Lanes* y) {
  if constexpr (std::is_same_v<NUMBER, double>) {
    for (std::size_t k = 0; k < OUT::kTotal; ++k) y[k] = CanonicalNaN(y[k]);
  }
}

// A kernel for whole packs of rows: load(row, in), then what it computes, then store(out, row). `count` is a multiple of
// the lanes.
template <class IN, class OUT, class NUMBER, class LOAD, class F, class STORE>
VRX_LANE_INLINE void ForPacks(std::size_t count, const LOAD& load, const F& f, const STORE& store) {
  for (std::size_t i = 0; i < count; i += kLaneCount) {
    Lanes x[IN::kTotal], y[OUT::kTotal];
    load(i, x);
    f(x, y);
    MakeCanonical<OUT, NUMBER>(y);
    store(y, i);
  }
}
template <class IN, class OUT, class NUMBER, class LOAD, std::size_t kNumbers, class... F, class STORE>
VRX_LANE_INLINE void ForPacks(std::size_t count, const LOAD& load, const Stages<kNumbers, F...>& stages,
                              const STORE& store) {
  alignas(64) double carried[kNumbers * kChunkRows];
  for (std::size_t from = 0; from < count; from += kChunkRows) {
    const std::size_t rows = count - from < kChunkRows ? count - from : kChunkRows;
    for (std::size_t i = 0; i < rows; i += kLaneCount) {
      Lanes x[IN::kTotal];
      load(from + i, x);
      stages.first(x, Carried(carried + i));
    }
    const auto forRows = [&](const auto& stage) VRX_LANE_LAMBDA {
      for (std::size_t i = 0; i < rows; i += kLaneCount) stage(Carried(carried + i));
    };
    std::apply([&](const auto&... stage) VRX_LANE_LAMBDA { (forRows(stage), ...); }, stages.middle);
    for (std::size_t i = 0; i < rows; i += kLaneCount) {
      Lanes y[OUT::kTotal];
      stages.last(Carried(carried + i), y);
      MakeCanonical<OUT, NUMBER>(y);
      store(y, from + i);
    }
  }
}

// Columns to columns have a loop of their own: it is what the fastest callers use, and without the code for rows in it a
// quarter faster.
template <class IN, class OUT, class NUMBER, class F>
[[gnu::noinline]] void OverColumnPacks(const Column<const double>* in, const Column<NUMBER>* out,
                                       std::size_t count, const F& f) {
  ForPacks<IN, OUT, NUMBER>(
      count,
      [in](std::size_t i, Lanes* x) VRX_LANE_LAMBDA {
        for (std::size_t k = 0; k < IN::kTotal; ++k) x[k] = Load<Lanes>(in[k].first + i);
      },
      f,
      [out](const Lanes* y, std::size_t i) VRX_LANE_LAMBDA {
        for (std::size_t k = 0; k < OUT::kTotal; ++k) Store(y[k], out[k].first + i);
      });
}
template <class IN, class OUT, class NUMBER, class F>
VRX_LANE_INLINE void OverPacks(const Column<const double>* in, const Column<NUMBER>* out, bool inRows,
                               bool outRows, std::size_t count, const F& f) {
  if (!inRows && !outRows) return OverColumnPacks<IN, OUT>(in, out, count, f);
  ForPacks<IN, OUT, NUMBER>(
      count,
      [in, inRows](std::size_t i, Lanes* x) VRX_LANE_LAMBDA {
        if (inRows) return IN::LoadRows(in, i, x);
        for (std::size_t k = 0; k < IN::kTotal; ++k) x[k] = Load<Lanes>(in[k].first + i);
      },
      f,
      [out, outRows](const Lanes* y, std::size_t i) VRX_LANE_LAMBDA {
        if (outRows) return OUT::StoreRows(y, out, i);
        for (std::size_t k = 0; k < OUT::kTotal; ++k) Store(y[k], out[k].first + i);
      });
}

// f(in, out), or a kernel in stages, for `count` rows. What is written may be whole numbers: the packs then hold them, to be rounded towards 0.
template <class IN, class OUT, class NUMBER, class F>
[[gnu::noinline]] void OverRows(const Column<const double>* in, const Column<NUMBER>* out, std::size_t count,
                                const F& f) {
  double input[IN::kTotal * kChunkRows];
  NUMBER output[OUT::kTotal * kChunkRows];
  const bool inColumns = IN::AreColumns(in), outColumns = OUT::AreColumns(out);
  const bool direct = (inColumns || (kLaneCount > 1 && IN::AreRows(in))) &&
                      (outColumns || (kLaneCount > 1 && OUT::CanStore(out)));
  for (std::size_t i = 0, rows; i < count; i += rows) {
    Column<const double> source[IN::kTotal];
    Column<NUMBER> target[OUT::kTotal];
    rows = direct ? (count - i) / kLaneCount * kLaneCount : 0;
    const bool viaStack = rows == 0;
    std::size_t padded = rows;
    if (viaStack) {
      rows = count - i < kChunkRows ? count - i : kChunkRows;
      padded = (rows + kLaneCount - 1) / kLaneCount * kLaneCount;
      RowsToColumns<IN::kTotal>(in, i, rows, padded, input);
    }
    for (std::size_t k = 0; k < IN::kTotal; ++k) {
      source[k] = viaStack ? Column<const double>{input + k * kChunkRows, 1} : in[k];
    }
    for (std::size_t k = 0; k < OUT::kTotal; ++k) {
      target[k] = viaStack ? Column<NUMBER>{output + k * kChunkRows, 1} : out[k];
    }
    OverPacks<IN, OUT>(source, target, !viaStack && !inColumns, !viaStack && !outColumns, padded, f);
    if (viaStack) ColumnsToRows<OUT::kTotal>(output, out, i, rows);
  }
}

}  // namespace
}  // namespace vrx

#endif  // VRXMATH_BATCH_LANE_ROWS_H_
