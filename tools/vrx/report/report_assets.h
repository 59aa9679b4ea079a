// The style sheet and the script of a report (tools/vrx/report/assets/), which the build carries into the tool.

#ifndef TOOLS_VRX_REPORT_REPORT_ASSETS_H_
#define TOOLS_VRX_REPORT_REPORT_ASSETS_H_

#include <string_view>

namespace vrx::tool {

extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_REPORT_ASSETS_H_
