// Must not compile: a std::string may point into itself, and an array moves its elements bitwise.

#include <string>

#include <vrxmath/foundation/checked_array.h>

vrx::CArrayVarex<std::string> texts;
