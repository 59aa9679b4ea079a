// What a report of a fault needs to know about a build, beside its version.

#ifndef TOOLS_VRX_BASE_BUILD_FACTS_H_
#define TOOLS_VRX_BASE_BUILD_FACTS_H_

#include <string>

namespace vrx::tool {

/// Two lines, without a line end behind the second: compiler, target and C++ standard library with their versions; the
/// instruction sets that kernels were compiled for, and the one in use. The first is the same in every build of the same sources by the
/// same compiler: it has no date, folder, machine or commit.
[[nodiscard]] std::string BuildFacts();

}  // namespace vrx::tool

#endif  // TOOLS_VRX_BASE_BUILD_FACTS_H_
