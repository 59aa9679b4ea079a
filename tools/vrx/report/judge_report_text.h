// The report of a judgement as text, for hosts that show it or write it themselves.

#ifndef TOOLS_VRX_REPORT_JUDGE_REPORT_TEXT_H_
#define TOOLS_VRX_REPORT_JUDGE_REPORT_TEXT_H_

#include <string>

#include "tools/vrx/judging/comparison.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/report/report_page.h"

namespace vrx::tool {

/// The page that `vrx judge --report` writes, of files or of samples in memory (`options.openStandards`, `openTrials`; the
/// names of such are empty). Throws InputError as the command does.
std::string JudgeReportText(const ComparisonOptions& options, JudgingOptions judging,
                            const ReportOptions& report);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_JUDGE_REPORT_TEXT_H_
