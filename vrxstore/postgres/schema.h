// The tables of a job in a PostgreSQL database. docs/database.md describes them.

#ifndef VRXSTORE_POSTGRES_SCHEMA_H_
#define VRXSTORE_POSTGRES_SCHEMA_H_

#include <cstdint>

#include <vrxstore/database/database.h>

namespace vrx::store {

/// What marks the table vrx_tables as ours ("Vrx1" in ASCII).
inline constexpr std::int64_t kServerApplication = 0x56727831;

/// The statements that make the tables of version 1, and those that bring each version to the next one.
extern const char* const kFirstServerTables;
extern const char* const kLaterServerTables[kSchemaVersion - 1];

}  // namespace vrx::store

#endif  // VRXSTORE_POSTGRES_SCHEMA_H_
