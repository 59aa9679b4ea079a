// The tables of a job in an SQLite file. docs/database.md describes them.

#ifndef VRXSTORE_SQLITE_SCHEMA_H_
#define VRXSTORE_SQLITE_SCHEMA_H_

#include <cstdint>

namespace vrx::store {

/// What marks the file as a job ("Vrx1" in ASCII), and the version of its tables.
inline constexpr std::int32_t kApplicationId = 0x56727831;
inline constexpr std::int32_t kSchemaVersion = 1;

/// The statements that make the tables, without the two numbers above.
extern const char* const kSchema;

}  // namespace vrx::store

#endif  // VRXSTORE_SQLITE_SCHEMA_H_
