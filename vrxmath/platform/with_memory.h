// The standard containers' memory failures as the library's exception.

#ifndef VRXMATH_PLATFORM_WITH_MEMORY_H_
#define VRXMATH_PLATFORM_WITH_MEMORY_H_

#include <new>
#include <stdexcept>

#include <vrxmath/platform/exceptions.h>

namespace vrx::platform_internal {

/// The result of `function`. Throws CMemoryException where it runs out of memory.
template <class Function>
auto WithMemory(Function function) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    throw CMemoryException();
  } catch (const std::length_error&) {
    throw CMemoryException();
  }
}

}  // namespace vrx::platform_internal

#endif  // VRXMATH_PLATFORM_WITH_MEMORY_H_
