// Which back end keeps a job, by how it is named.

#include <vrxstore/database/database_store.h>
#include <vrxstore/job_address.h>
#include <vrxstore/sqlite/sqlite_database.h>
#include <vrxstore/store.h>
#ifdef VRX_WITH_POSTGRES
#include <vrxstore/postgres/postgres_database.h>
#endif

namespace vrx::store {
namespace {

std::unique_ptr<Database> OpenServer(const std::string& url, [[maybe_unused]] double wait) {
#ifdef VRX_WITH_POSTGRES
  return std::make_unique<PostgresDatabase>(url, wait);
#else
  throw StoreError(ShownJob(url) + ": this vrx was built without PostgreSQL, and knows jobs in files only");
#endif
}

}  // namespace

std::unique_ptr<Store> CreateStore(const std::string& job, const std::string& name, const Author& author,
                                   double wait) {
  return CreateStoreIn(IsOnServer(job) ? OpenServer(job, wait) : CreateSqliteFile(job, wait), name, author);
}

std::unique_ptr<Store> OpenStore(const std::string& job, double wait) {
  return OpenStoreIn(IsOnServer(job) ? OpenServer(job, wait) : OpenSqliteFile(job, wait));
}

}  // namespace vrx::store
