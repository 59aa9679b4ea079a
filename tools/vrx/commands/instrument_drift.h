// The drift of an instrument: the same tiles, read on several dates.

#ifndef TOOLS_VRX_COMMANDS_INSTRUMENT_DRIFT_H_
#define TOOLS_VRX_COMMANDS_INSTRUMENT_DRIFT_H_

#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// The difference of a reading from the reference under the first illuminant of the judge.
double DifferenceFrom(const CReflData& reference, const CReflData& reading, Judge& judge);

/// Writes a row for each later date: the differences of its tiles from the first date, and the trend of their mean up to there,
/// by a straight line through three dates or more. Readings of a tile on one date are averaged. Throws InputError for a row
/// without a date, for more than kMostReadings rows, and where there is only one date or a date without tiles of the first.
void WriteDrift(CurveReader series, const JudgeSettings& settings, const Format& format,
                OutputStream& output);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_COMMANDS_INSTRUMENT_DRIFT_H_
