// The style sheet and the script of a report (tools/vrx/output/report/), which the build carries into the tool.

#ifndef TOOLS_VRX_OUTPUT_REPORT_ASSETS_H_
#define TOOLS_VRX_OUTPUT_REPORT_ASSETS_H_

#include <string_view>

namespace vrx::tool {

extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_REPORT_ASSETS_H_
