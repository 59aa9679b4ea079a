// The texts of a report, which stand in resources/strings.tsv for translation.

#ifndef TOOLS_VRX_REPORT_REPORT_TEXTS_H_
#define TOOLS_VRX_REPORT_REPORT_TEXTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace vrx::tool {

/// By number, from kStringReport on.
enum class ReportText : uint32_t {
  kTitle,
  kVerdicts,
  kPass,
  kWarning,
  kFail,
  kCounts,
  kOfTrials,
  kOfTrialsByWorst,
  kConditions,
  kResults,
  kStandard,
  kTrial,
  kName,
  kGeometry,
  kIlluminant,
  kColours,
  kWords,
  kStandardsFile,
  kTrialsFile,
  kInputFile,
  kNotHashed,
  kSystem,
  kObserver,
  kObserverDegrees,
  kTolerance,
  kToleranceBox,
  kToleranceOne,
  kToleranceSystem,
  kElsewhere,
  kWarningLimit,
  kWarningFrom,
  kAuthor,
  kWritten,
  kWrittenBy,
  kMean,
  kLargest,
  kTable,
  kTableHint,
  kSearch,
  kAll,
  kRows,
  kPrevious,
  kNext,
  kRowsShown,
  kNoRows,
  kFirstRows,
  kOverview,
  kTrend,
  kHistogram,
  kCurvesOnly,
  kPictures,
  kIlluminants,
  kCurves,
  kProfileAngles,
  kProfileIlluminants,
  kMetamerism,
  kMetamerismHint,
  kIndex,
  kEllipsoidValue,
  kWorstShown,
  kStandardLab,
  kOutOfGamut,
  kReflectanceAxis,
  kDifferenceAxis,
  kWavelengthAxis,
  kOrderAxis,
  kCountAxis,
  kAngleAxis,
  kIlluminantAxis,
  kWorstTrialsKey,
  kCurvesSummary,
  kPlaneSummary,
  kLargestSummary,
  kStandardsLeftOut,
  kSkip,
  kLegend,
  kSelected,
  kCoordinates,
  kStrengths,
  kIndices,
  kEllipsoids,
  kAccepted,
  kMargin,
  kBand,
  kSurface,
  kMethod,
  kLogo,
  kRecipes,
  kColorants,
  kTargets,
  kTargetsLeftOut,
  kTarget,
  kTargetAndFirst,
  kTargetCurves,
  kTargetCurvesSummary,
  kStock,
  kCurvesOnlySummary,
  kContinued,
  kFiltered,
  kReason,
  kFailReasons,
  kReasonCount,
  kToleranceTotal,
  kMeasured,
  kFromTo,
  kAttention,
  kCustomer,
  kLot,
  kApproved,
  kDate,
  kTrialLab,
  kAbsolute,
  kAmounts,
  kComponent,
  kTargetCurvesBand,
};

/// The text as UTF-8.
std::string Text(ReportText text);
/// The text with its "%s" fields filled, in order.
std::string TextOf(ReportText text, std::initializer_list<std::string_view> values);
/// How many of each verdict, in words; indices are those of Verdict.
std::string CountsText(const std::array<std::size_t, 3>& counts);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_REPORT_TEXTS_H_
