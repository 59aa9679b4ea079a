// The user under whom the process runs.

#ifndef VRXSTORE_DATABASE_SYSTEM_USER_H_
#define VRXSTORE_DATABASE_SYSTEM_USER_H_

#include <string>

namespace vrx::store {

/// The name by which the operating system knows the user; the number where there is none.
std::string SystemUser();

}  // namespace vrx::store

#endif  // VRXSTORE_DATABASE_SYSTEM_USER_H_
