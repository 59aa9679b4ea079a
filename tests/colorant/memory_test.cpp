// When memory runs out, whichever allocation meets it: CMemoryException, and what was being changed is unchanged.

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>

#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/foundation/list_data.h>

#include "tests/testing/archives.h"

namespace {
int allocationsLeft = -1;  // below 0: no end
}  // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* memory = std::malloc(size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
__attribute__((noinline)) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (allocationsLeft == 0) return nullptr;
  if (allocationsLeft > 0) --allocationsLeft;
  return std::malloc(size);
}
__attribute__((noinline)) void operator delete(void* memory) noexcept {
  std::free(memory);
}
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace vrx {
namespace {

// Runs `change` on a copy of `target` with ever more allocations, until they suffice.
template <class T>
void ExpectAllOrNothing(const char* label, const T& target, const std::function<void(T&)>& change) {
  for (int allowed = 0;; ++allowed) {
    T changed = target;
    bool failed = false;
    allocationsLeft = allowed;
    try {
      change(changed);
    } catch (const CMemoryException&) {
      failed = true;
    } catch (const std::exception&) {
      allocationsLeft = -1;
      FAIL() << label << ": another exception after " << allowed << " allocations";
    }
    allocationsLeft = -1;
    if (!failed) {
      EXPECT_GT(allowed, 0) << label;
      return;
    }
    ASSERT_TRUE(changed == target) << label << ", " << allowed << " allocations";
  }
}

TEST(Memory, ChangesAreMadeAsAWholeOrNotAtAll) {
  CColorantSystemData system;
  CColorant colorant;
  colorant.SetName(u"Ochre");
  colorant.AppendLevel(CColorantLevel(1));
  system.colorants = test::ListOf<CColorantArray>(colorant, colorant);
  system.textsA.Add(u"text");
  MemoryStore store(test::Stored(system));
  ExpectAllOrNothing<CColorantSystemData>("load", {}, [&](CColorantSystemData& target) {
    store.Rewind();
    CArchive archive(store, CArchive::kLoad);
    target.Serialize(archive);
  });
  CBlendColorantArray lines;
  lines.Add({colorant.GetId(), 0.5, 0});
  lines.Add({colorant.GetId(), 0.5, 1});
  ExpectAllOrNothing<CColorantArray>("blend", system.colorants,
                                     [&](auto& target) { return target.Blend(lines); });
  ExpectAllOrNothing<CColorantArray>("assign", {}, [&](auto& target) { target = system.colorants; });
  const auto list = test::ListOf<CListDataArray>(CListData{2, u"b"}, CListData{1, u"a"});
  ExpectAllOrNothing<CListDataArray>("sort", list, [&](auto& target) { target.SortLike(list); });
  ExpectAllOrNothing<CDWordArray1>("ids", test::ListOf<CDWordArray1>(1u, 2u),
                                   [&](auto& target) { list.SortIds(target); });
}

}  // namespace
}  // namespace vrx
