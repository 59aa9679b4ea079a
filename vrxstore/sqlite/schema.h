// The tables of a job in an SQLite file. docs/database.md describes them.

#ifndef VRXSTORE_SQLITE_SCHEMA_H_
#define VRXSTORE_SQLITE_SCHEMA_H_

#include <cstdint>

#include <vrxstore/database/database.h>

namespace vrx::store {

/// What marks the file as a job ("Vrx1" in ASCII).
inline constexpr std::int32_t kApplicationId = 0x56727831;

/// The statements that make the tables of version 1, and those that bring each version to the next one. A new job goes through all
/// of them, so that an old one ends with the same tables.
extern const char* const kFirstTables;
extern const char* const kLaterTables[kSchemaVersion - 1];

}  // namespace vrx::store

#endif  // VRXSTORE_SQLITE_SCHEMA_H_
