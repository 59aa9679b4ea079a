// The library where it was built without a database.

#include <vrxstore/job_address.h>
#include <vrxstore/store.h>
#include <vrxstore/verify.h>

namespace vrx::store {
namespace {

[[noreturn]] void RefuseWithout(const std::string& path) {
  throw StoreError(ShownJob(path) + ": this vrx was built without SQLite, and knows no jobs");
}

}  // namespace

std::unique_ptr<Store> CreateStore(const std::string& path, const std::string&, const Author&, double) {
  RefuseWithout(path);
}

std::unique_ptr<Store> OpenStore(const std::string& path, double) {
  RefuseWithout(path);
}

Verification VerifyStore(Store& store, const std::function<void(std::int64_t)>&) {
  RefuseWithout(store.Info().name);
}

}  // namespace vrx::store
