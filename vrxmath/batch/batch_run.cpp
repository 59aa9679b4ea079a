#include <vrxmath/batch/batch_run.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace vrx {
namespace {

// Blocks that are handed out to whoever is free.
struct Blocks {
  Blocks(std::size_t allRows, std::size_t rowsOfBlock) : rows(allRows), blockRows(rowsOfBlock) {}

  std::size_t rows, blockRows;
  std::atomic<std::size_t> next{0}, done{0};
  std::atomic<bool> stopped{false};
  std::mutex failing;
  std::exception_ptr failure =
      nullptr;  // of the first block that failed: those before it were handed out before it
  std::size_t failedAt = 0;

  // Works on the next block; false when none is left.
  template <class WORK>
  bool WorkOnNext(const WORK& work) {
    if (stopped.load(std::memory_order_relaxed)) return false;
    const std::size_t from = next.fetch_add(1, std::memory_order_relaxed) * blockRows;
    if (from >= rows) return false;
    const std::size_t count = std::min(blockRows, rows - from);
    try {
      work(from, count);
    } catch (...) {
      Fail(from);
      return false;
    }
    done.fetch_add(count, std::memory_order_relaxed);
    return true;
  }

  // Keeps the exception that is being handled.
  void Fail(std::size_t from) {
    const std::scoped_lock lock(failing);
    if (failure != nullptr && failedAt < from) return;
    failure = std::current_exception();
    failedAt = from;
    stopped = true;
  }
};

// Threads that are stopped and joined whatever happens.
class Helpers {
 public:
  explicit Helpers(Blocks& blocks) : blocks_(blocks) {}
  ~Helpers() {
    if (std::uncaught_exceptions() > exceptionsBefore_) blocks_.stopped = true;
    for (std::thread& thread : threads_) thread.join();
  }
  // Starts as many as there is room for.
  template <class WORK>
  void Start(std::size_t count, const WORK& work) {
    try {
      threads_.reserve(count);
      for (std::size_t i = 0; i < count; ++i) {
        threads_.emplace_back([this, &work] {
          while (blocks_.WorkOnNext(work)) {
          }
        });
      }
    } catch (const std::system_error&) {
    } catch (const std::bad_alloc&) {
    }
  }

 private:
  Blocks& blocks_;
  int exceptionsBefore_ = std::uncaught_exceptions();
  std::vector<std::thread> threads_;
};

}  // namespace

unsigned CoreCount() noexcept {
  return std::max(1U, std::thread::hardware_concurrency());
}

bool ForEachBlock(const BatchRun& run, std::size_t rows, std::size_t blockRows,
                  const std::function<void(std::size_t, std::size_t)>& work) {
  if (rows == 0) return true;
  Blocks blocks(rows, std::max<std::size_t>(1, blockRows));
  const std::size_t wanted = run.threads == 0 ? CoreCount() : run.threads;
  const std::size_t useful = (rows - 1) / blocks.blockRows + 1;
  {
    Helpers helpers(blocks);
    helpers.Start(std::min(wanted, useful) - 1, work);
    bool more = true;
    while (more && !blocks.stopped) {
      more = blocks.WorkOnNext(work);
      if (run.progress && !run.progress(blocks.done.load(std::memory_order_relaxed))) blocks.stopped = true;
    }
  }
  if (blocks.failure != nullptr) std::rethrow_exception(blocks.failure);
  return !blocks.stopped || blocks.done == rows;
}

}  // namespace vrx
