// The names of a job's standards in messages.

#ifndef VRXSTORE_STANDARD_NAMES_H_
#define VRXSTORE_STANDARD_NAMES_H_

#include <string>

#include <vrxstore/store.h>

namespace vrx::store {

/// What to say of a name that no standard in use has, with the nearest one: "there is no standard "gray"; did you mean grey?".
std::string UnknownStandardText(Store& store, const std::string& name);

}  // namespace vrx::store

#endif  // VRXSTORE_STANDARD_NAMES_H_
