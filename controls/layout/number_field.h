// Editing of numbers without a window, the speed of scrolling them, and the way through tabs of which some are disabled.

#ifndef CONTROLS_LAYOUT_NUMBER_FIELD_H_
#define CONTROLS_LAYOUT_NUMBER_FIELD_H_

#include <cstdint>
#include <optional>
#include <span>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/value_range.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx::controls {

/// True when a number may stand here once the user has typed on: a number in the user's conventions, or the beginning of
/// one, such as nothing, a sign, or digits with the decimal separator at their end. The limits take no part, since 15
/// begins with 1; a sign is refused where no negative number is allowed.
[[nodiscard]] bool MayBecomeNumber(WideView text, const CValueRange& range);

/// The number in a text from the clipboard, which may have the unit behind it and white space around it; none when it is
/// anything else, out of range included. An empty text is none too.
[[nodiscard]] std::optional<double> PastedNumber(WideView text, const CValueRange& range, WideView unit);

/// How many increments the next step takes when a key or a button has been held for `repeats` steps: 1, then 5, then 20.
[[nodiscard]] int32_t StepsWhenHeld(int32_t repeats);

/// Whole steps of a wheel that turned by `delta`, 120 for a notch. What is left stays in `rest`, for wheels that turn in
/// smaller amounts.
[[nodiscard]] int32_t WheelSteps(int32_t delta, int32_t& rest);

/// The next enabled tab from `from` in the direction of `step` (+1, -1), -1 when there is none. With `around` the ends meet.
[[nodiscard]] int32_t NextEnabledTab(std::span<const uint8_t> enabled, int32_t from, int32_t step,
                                     bool around);

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_NUMBER_FIELD_H_
