// A PostgreSQL server for tests, where scripts/with_postgres.sh runs them.

#ifndef TESTS_VRXSTORE_TEST_SERVER_H_
#define TESTS_VRXSTORE_TEST_SERVER_H_

#include <cstdlib>
#include <string>
#ifdef VRX_WITH_POSTGRES
#include <vrxstore/postgres/postgres_database.h>
#endif

namespace vrx::test {

inline bool HaveServer() {
#ifdef VRX_WITH_POSTGRES
  return std::getenv("VRX_TEST_POSTGRES") != nullptr;
#else
  return false;
#endif
}

/// Runs statements as another program would.
inline void ChangeServer([[maybe_unused]] const std::string& url, [[maybe_unused]] const std::string& sql) {
#ifdef VRX_WITH_POSTGRES
  store::PostgresDatabase(url, 1).Execute(sql.c_str());
#endif
}

/// The URL of another database of the server, by another user where one is named.
inline std::string ServerUrl(const std::string& database, const std::string& user = "postgres") {
  const std::string url = std::getenv("VRX_TEST_POSTGRES");
  return "postgresql://" + user + "@/" + database + url.substr(url.find('?'));
}

/// The URL of a new and empty database.
inline std::string NewServerDatabase() {
  static int count = 0;
  const std::string name = "job" + std::to_string(++count);
  ChangeServer(ServerUrl("postgres"), "CREATE DATABASE " + name);
  return ServerUrl(name);
}

}  // namespace vrx::test

#endif  // TESTS_VRXSTORE_TEST_SERVER_H_
