// A job in the tables of a database, whichever it is.

#ifndef VRXSTORE_DATABASE_DATABASE_STORE_H_
#define VRXSTORE_DATABASE_DATABASE_STORE_H_

#include <memory>
#include <string>

#include <vrxstore/database/database.h>
#include <vrxstore/store.h>

namespace vrx::store {

/// Makes a job in an empty database, or opens the one that is there and brings its tables to those of today. They throw what
/// CreateStore and OpenStore throw.
std::unique_ptr<Store> CreateStoreIn(std::unique_ptr<Database> database, const std::string& name,
                                     const Author& author);
std::unique_ptr<Store> OpenStoreIn(std::unique_ptr<Database> database);

}  // namespace vrx::store

#endif  // VRXSTORE_DATABASE_DATABASE_STORE_H_
