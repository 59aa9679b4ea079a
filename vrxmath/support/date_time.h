// Dates, times and countdowns as the user reads them.
//
// A time is a signed number of seconds since 1970-01-01 00:00 UTC. It is shown as local time, in the
// conventions of the user's locale. Clock, time zone and locale are the platform's (platform/clock.h,
// platform/locale.h). Where a time may be left out, the current one is meant.

#ifndef VRXMATH_SUPPORT_DATE_TIME_H_
#define VRXMATH_SUPPORT_DATE_TIME_H_

#include <cstdint>
#include <optional>

#include <vrxmath/export.h>
#include <vrxmath/platform/clock.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// The time of day, the short date and the long date in the locale's pictures. False, with an empty `out`,
/// when the time has no local form: local times run from the year 1 to the year 9999.
VRX_API bool TimeToText(CString& out, std::optional<int64_t> time = {});
VRX_API bool ShortDateText(CString& out, std::optional<int64_t> time = {});
VRX_API bool LongDateText(CString& out, std::optional<int64_t> time = {});

/// Appends the short date, " -- " and the time of day. What has no text is left out.
VRX_API void AppendDateTime(CString& out, std::optional<int64_t> time = {});

/// Appends the expansion of a pattern of date and time pictures, literals and a number:
///   h H m s t   a run of these and of spaces is a time picture
///   n           a run of these is `number`, zero-padded to the run's length
///   '...'       is copied; two apostrophes stand for nothing, four for one apostrophe
///   else        a run is a date picture, in which other characters than d M y g stand for themselves
/// For example "dd'.'MM nnn" gives "07.02 012". False at the first picture whose text has more than
/// kMaxPictureText units, at a literal without an end and at a time without a local form; what was appended
/// before it stays.
VRX_API bool FormatDateTime(CString& out, WideView pattern, uint32_t number,
                            std::optional<int64_t> time = {});

/// The longest text of one picture within a pattern, in units: with its terminator it has to leave one place
/// of a buffer of 40 free.
inline constexpr int32_t kMaxPictureText = 38;

/// The current time, if the clock stands between 1970 and 2037. Otherwise the user is told, and the result is
/// 1990-01-01 00:00 local time. Throws CInvalidArgException when the system cannot express that.
VRX_API int64_t CurrentTimeChecked();

/// A `limit` that leaves the countdown as it is.
inline constexpr uint32_t kPollCountdown = 0xFFFFFFFF;

/// Starts a countdown of `limit` seconds (0: counts up from now), or with kPollCountdown only looks at the
/// running one, and puts what it shows into `out` unless that is null: "1:05" or, from an hour on,
/// "1:01:05", with the locale's time separator. Returns 1 while it runs and 0 when it has expired; the text
/// then is "0:00". The tick count below it wraps after 49.7 days. One countdown for the whole process.
VRX_API int32_t CountdownText(CString* out, uint32_t limit);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_DATE_TIME_H_
