// Shade groups: trials of which any two within a group differ by no more than a limit.

#ifndef VRXMATH_JUDGING_SHADE_GROUPS_H_
#define VRXMATH_JUDGING_SHADE_GROUPS_H_

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/export.h>

namespace vrx {

/// How far two things are from each other: the same in both directions, 0 or more; NaN counts as infinite.
using PairDistance = std::function<double(std::size_t, std::size_t)>;

/// The group of each of `count` things, numbered from 0 in the order of their first members, by complete linkage: the two groups whose
/// farthest members are nearest to each other become one, as long as these differ by no more than `limit` (Everitt et al., Cluster
/// Analysis, ch. 4).
/// In:    `distance(a, b)` of two things; asked once for each pair.
/// Edges: of equal distances that of the earlier things goes first, so that an order of things by their own nature makes the groups
///        independent of the order of rows.
/// Memory: 4 count^2 bytes.
[[nodiscard]] VRX_API std::vector<std::size_t> GroupsByCompleteLinkage(std::size_t count, double limit,
                                                                       const PairDistance& distance);

/// The groups of things that stand in an order of their own nature, such as from dark to light: the largest group first, of equal ones
/// that of the earlier thing, each with its members in that order.
/// In:    `order`: each thing once; `distance(a, b)` of two things by the numbers that stand in it.
[[nodiscard]] VRX_API std::vector<std::vector<std::size_t>> ShadeGroups(std::span<const std::size_t> order,
                                                                        double limit,
                                                                        const PairDistance& distance);

/// The total difference of two colours of which neither is the standard: the larger one of both directions, for systems that are
/// not the same from either side. In: coordinates of the system's space; the measuring angle in degrees.
[[nodiscard]] VRX_API double DifferenceEitherWay(const CDifferenceSettings& settings, const Color& a,
                                                 const Color& b, double angle);

}  // namespace vrx

#endif  // VRXMATH_JUDGING_SHADE_GROUPS_H_
