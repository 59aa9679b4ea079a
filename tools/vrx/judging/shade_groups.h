// Shade groups: trials of which any two within a group differ by no more than a limit.

#ifndef TOOLS_VRX_JUDGING_SHADE_GROUPS_H_
#define TOOLS_VRX_JUDGING_SHADE_GROUPS_H_

#include <cstddef>
#include <functional>
#include <vector>

namespace vrx::tool {

/// The group of each of `count` things, numbered from 0 in the order of their first members, by complete linkage: the two groups whose
/// farthest members are nearest to each other become one, as long as these differ by no more than `limit` (Everitt et al., Cluster
/// Analysis, ch. 4).
/// In:    `distance(a, b)` of two things, the same in both directions; asked once for each pair. NaN counts as infinite.
/// Edges: of equal distances that of the earlier things goes first, so that an order of things by their own nature makes the groups
///        independent of the order of rows.
/// Memory: 4 count^2 bytes.
std::vector<std::size_t> GroupsByCompleteLinkage(
    std::size_t count, double limit, const std::function<double(std::size_t, std::size_t)>& distance);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_SHADE_GROUPS_H_
