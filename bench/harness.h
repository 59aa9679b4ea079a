// The common part of the benchmark programs: data that is the same in every run, times that can be compared, and the table
// that they print.
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
#include <utility>
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

/// One comparison.
struct Row {
  std::string work, peer;
  double ours, theirs;        ///< in the unit of the program, ns a row as a rule
  std::string reach;          ///< what was asked of the ratio; empty where nothing was
  bool oursOverPeer = false;  ///< the ratio is ours / theirs: smaller is better
  double Ratio() const { return oursOverPeer ? ours / theirs : theirs / ours; }
};

/// The rows of a program, printed as they come. With `--tsv` as the first argument they are parted by tabs and have no
/// head, as bench_all reads them.
class Table {
 public:
  Table(int argc, char** argv, const char* unit = "ns") : tabs_(argc > 1 && std::string(argv[1]) == "--tsv") {
    if (tabs_) return;
    const std::string ours = std::string("ours, ") + unit, theirs = std::string("peer, ") + unit;
    std::printf("%-44s %-30s %12s %12s %8s   %s\n", "work", "peer", ours.c_str(), theirs.c_str(), "ratio",
                "reach");
  }
  void Report(Row row) {
    std::printf(tabs_ ? "%s\t%s\t%.6g\t%.6g\t%.4f\t%s\t%d\n" : "%-44s %-30s %12.2f %12.2f %8.2f   %s\n",
                row.work.c_str(), row.peer.c_str(), row.ours, row.theirs, row.Ratio(), row.reach.c_str(),
                row.oursOverPeer ? 1 : 0);
    std::fflush(stdout);
    rows_.push_back(std::move(row));
  }
  /// Measures both works in turn. `times` is the unit: 1e9 / n for ns a row of n rows in a call.
  void Compare(const std::string& work, const std::string& peer, const Work& ours, const Work& theirs,
               double times, int rounds = 25) {
    const auto seconds = SecondsOf({ours, theirs}, rounds);
    Report({work, peer, seconds[0] * times, seconds[1] * times, ""});
  }
  const std::vector<Row>& rows() const { return rows_; }

 private:
  bool tabs_;
  std::vector<Row> rows_;
};

}  // namespace vrx::bench

#endif  // BENCH_HARNESS_H_
