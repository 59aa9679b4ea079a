#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include <vrxmath/platform/array.h>

// A request that no machine can meet must fail as an allocation, not end the program.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace vrx {
namespace {

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(Array, CapacityFollowsTheGrowthRule) {
  struct Step {
    int32_t size, growBy, capacity;
  };
  const std::vector<Step> sequences[] = {
      {{40, -1, 40}, {41, -1, 45}, {46, -1, 50}},  // an eighth of the size
      {{39, -1, 39}, {40, -1, 43}},                // 39 / 8 is still 4
      {{9000, -1, 9000}, {9001, -1, 10024}},       // at most 1024
      {{8191, -1, 8191}, {8192, -1, 9214}},
      {{5, 16, 16}, {17, -1, 32}, {18, 0, 32}, {33, -1, 36}},
      {{40, -1, 40}, {3, -1, 40}, {40, -1, 40}, {0, -1, 0}, {7, -1, 7}},
      {{2, 16, 16}, {0, -1, 0}, {5, -1, 16}},  // the step outlives the buffer
  };
  for (const auto& sequence : sequences) {
    CArray<double, double> array;
    for (const Step& step : sequence) {
      array.SetSize(step.size, step.growBy);
      EXPECT_EQ(array.GetCapacity(), step.capacity) << "from " << sequence[0].size << " to " << step.size;
      EXPECT_EQ(array.GetSize(), step.size);
      EXPECT_EQ(array.GetData() == nullptr, step.size == 0);
    }
  }
}

TEST(Array, SlotsThatComeBackAreZero) {
  CArray<int32_t, int32_t> array;
  array.InsertAt(0, 7, 6);
  array.SetSize(2);
  array.SetSize(6);
  EXPECT_EQ(std::vector<int32_t>(array.begin(), array.end()), (std::vector<int32_t>{7, 7, 0, 0, 0, 0}));
}

TEST(Array, BadArgumentsAreRefusedAndChangeNothing) {
  CArray<int32_t, int32_t> array;
  array.InsertAt(0, 7, 3);
  EXPECT_THROW(array.SetSize(-1), CInvalidArgException);
  EXPECT_THROW(array.SetSize(std::numeric_limits<int32_t>::min()), CInvalidArgException);
  EXPECT_THROW(array.SetSize(4, kMax), CInvalidArgException);  // 3 slots and a step beyond 31 bits
  array.SetSize(3, 0);
  struct Row {
    int32_t index, count;
  };
  for (const Row row : {Row{-1, 1}, {0, 0}, {0, -1}, {kMax, 1}, {1, kMax - 2}, {kMax - 1, 2}}) {
    EXPECT_THROW(array.InsertAt(row.index, 1, row.count), CInvalidArgException)
        << row.index << ' ' << row.count;
  }
  for (const Row row : {Row{-1, 1}, {0, -1}, {0, 4}, {3, 1}, {4, 0}, {1, kMax}}) {
    EXPECT_THROW(array.RemoveAt(row.index, row.count), CInvalidArgException) << row.index << ' ' << row.count;
  }
  EXPECT_EQ(std::vector<int32_t>(array.begin(), array.end()), (std::vector<int32_t>{7, 7, 7}));
  array.RemoveAt(3, 0);
  EXPECT_EQ(array.GetSize(), 3);
}

struct Megabyte {
  std::byte bytes[1 << 20];
};

TEST(Array, ExhaustedMemoryIsReportedAndChangesNothing) {
  CArray<Megabyte> array;
  array.SetSize(1);
  EXPECT_THROW(array.SetSize(kMax), CMemoryException);
  EXPECT_EQ(array.GetSize(), 1);
  EXPECT_EQ(array.GetCapacity(), 1);
}

// Fails in the constructor when its fuse has burnt down, and knows how many of its kind are alive.
struct Brittle {
  using MovesBitwise = Brittle;
  static inline int alive = 0;
  static inline int fuse = -1;
  int value = 0;

  Brittle() { Burn(); }
  Brittle(int v) : value(v) { Burn(); }  // NOLINT(google-explicit-constructor)
  Brittle(const Brittle& other) : value(other.value) { Burn(); }
  ~Brittle() { --alive; }

 private:
  static void Burn() {
    if (fuse-- == 0) throw CMemoryException();
    ++alive;
  }
};

struct Copyable : CArray<Brittle> {
  using CArray::AssignCopies;
};

TEST(Array, AnElementThatFailsLeavesTheOthers) {
  struct Row {
    int index, count;
  };
  for (const Row row : {Row{0, 3}, {2, 1}, {4, 2}, {7, 2}, {-1, 9}, {-2, 0}}) {  // -1: grow, -2: assign
    for (int fuse = 0;; ++fuse) {
      Copyable array, other;
      for (int v = 0; v < 4; ++v) array.Add(v);
      const Brittle value(9);
      if (row.index == -2) other.InsertAt(0, value, 3);
      const int before = Brittle::alive;
      const auto grow = [&] {
        if (row.index == -2) return array.AssignCopies(other);
        row.index < 0 ? array.SetSize(row.count) : array.InsertAt(row.index, value, row.count);
      };
      Brittle::fuse = fuse;
      try {
        grow();
        Brittle::fuse = -1;
        EXPECT_GT(fuse, 0);
        break;
      } catch (const CMemoryException&) {
        Brittle::fuse = -1;
      }
      ASSERT_EQ(array.GetSize(), 4) << row.index << ' ' << fuse;
      for (int v = 0; v < 4; ++v) EXPECT_EQ(array.GetData()[v].value, v);
      EXPECT_EQ(Brittle::alive, before) << row.index << ' ' << fuse;
    }
    EXPECT_EQ(Brittle::alive, 0) << row.index;
  }
}

}  // namespace
}  // namespace vrx
