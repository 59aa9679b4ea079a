// The common part of the benchmark programs: data that is the same in every run, and times that can be compared.
//
// Only ratios within one run mean anything. Ours and the peer's work run in turn, A B A B ..., each in pieces of a few
// milliseconds of processor time, and the fastest piece of either counts: what else the machine does only ever adds time.

#ifndef BENCH_HARNESS_H_
#define BENCH_HARNESS_H_

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <new>
#include <string>
#include <sys/mman.h>
#include <vector>

namespace vrx::bench {

/// SplitMix64 (Steele, Lea and Flood): the same numbers in every run, on every platform.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  double Between(double low, double high) {
    std::uint64_t z = (state_ += 0x9e3779b97f4a7c15);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return low + (high - low) * (static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53);
  }

 private:
  std::uint64_t state_;
};

/// Numbers on huge pages where the system has them: with small ones a long pass waits for the translation of addresses.
template <class T>
struct HugePages {
  using value_type = T;
  HugePages() = default;
  template <class U>
  explicit HugePages(const HugePages<U>&) {}
  T* allocate(std::size_t count) {
    constexpr std::size_t kPage = std::size_t{2} << 20;
    const std::size_t bytes = (count * sizeof(T) + kPage - 1) / kPage * kPage;
    void* memory = std::aligned_alloc(kPage, bytes);
    if (memory == nullptr) throw std::bad_alloc();
#if defined(MADV_HUGEPAGE)
    madvise(memory, bytes, MADV_HUGEPAGE);
#endif
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t) {
    std::free(memory);
  }
  bool operator==(const HugePages&) const = default;
};
using HugeVector = std::vector<double, HugePages<double>>;

/// Ends the program when an answer is wrong: a wrong one is not timed.
inline void Require(bool right, const std::string& what) {
  if (right) return;
  std::fprintf(stderr, "%s: the answers differ\n", what.c_str());
  std::exit(1);
}

/// Keeps the compiler from leaving work out whose result nobody reads.
inline void Keep(const void* result) {
  asm volatile("" : : "g"(result) : "memory");
}

using Work = std::function<void()>;

enum class Clock {
  kProcessor,  ///< time that the process was given, all threads added up: for work on one thread
  kWall,       ///< time that passed: for work on several
};

inline double Now(Clock clock) {
  if (clock == Clock::kProcessor) return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds of one call of each work, measured in turn over `rounds` rounds; a call that is short is repeated until it takes
/// `pieceSeconds`.
inline std::vector<double> SecondsOf(const std::vector<Work>& works, int rounds = 25,
                                     Clock clock = Clock::kProcessor, double pieceSeconds = 0.002) {
  const auto time = [clock](const Work& work, int repeats) {
    const double start = Now(clock);
    for (int i = 0; i < repeats; ++i) work();
    return Now(clock) - start;
  };
  std::vector<int> repeats;
  for (const Work& work : works) {
    work();  // the first call touches the pages
    int count = 1;
    while (time(work, count) < pieceSeconds) count *= 2;
    repeats.push_back(count);
  }
  std::vector<double> best(works.size(), 1e300);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t k = 0; k < works.size(); ++k)
      best[k] = std::min(best[k], time(works[k], repeats[k]) / repeats[k]);
  }
  return best;
}

}  // namespace vrx::bench

#endif  // BENCH_HARNESS_H_
