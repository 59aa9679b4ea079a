// Limits from what people decided: for each difference system the limit that agrees best with a file of verdicts.

#ifndef TOOLS_VRX_JUDGING_VERDICT_FIT_H_
#define TOOLS_VRX_JUDGING_VERDICT_FIT_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/tolerance/limit_fit.h>

#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/standards.h"

namespace vrx::tool {

/// True for the heading of the column that holds what people decided.
bool IsVerdictHeading(std::string_view heading);

/// The fits of a file.
struct VerdictFits {
  std::size_t accepted = 0, rejected = 0;  ///< by people
  std::vector<SystemLimitFit> fits;        ///< the best first; illuminants by their place in the conditions
};

/// Reads trials with their verdicts to the end, and fits every choice. A row that is the standard of the file itself
/// (`skipsStandard`) needs no verdict. Throws InputError for rows without a verdict or a difference, and where people accepted or
/// rejected everything.
VerdictFits FitVerdicts(CurveReader& trials, Standards& standards, const JudgeSettings& conditions,
                        const std::vector<CDifferenceSettings>& choices, bool skipsStandard);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_VERDICT_FIT_H_
