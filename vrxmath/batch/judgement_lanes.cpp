#include <vrxmath/batch/judgement_kernels.h>

#include <vrxmath/batch/lane_rows.h>
#include <vrxmath/judging/shade_formulas.h>

namespace vrx {
namespace {

using LaneMask = decltype(Lanes{} < Lanes{});
using Rows = const Column<const double>*;
using Verdicts = const Column<Verdict>&;

// The verdict's number; an unset difference fails.
VRX_LANE_INLINE Lanes VerdictNumber(const GradeOf<LaneMask>& grade, LaneMask unset) {
  const Lanes within = Select(grade.wellInside, Lanes(kPass), Lanes(kWarning));
  return Select(grade.inside & !unset, within, Lanes(kFail));
}

VRX_LANE_INLINE LaneMask InBox(const Interval* box, const Lanes* x) {
  return box[0].Contains(x[0]) & box[1].Contains(x[1]) & box[2].Contains(x[2]);
}

void JudgeByBox(const BoxLimits& given, Rows differences, Verdicts verdicts, std::size_t count) {
  OverRows<Widths<3>, Widths<1>>(
      differences, &verdicts, count, [limits = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
        y[0] = VerdictNumber({InBox(limits.tolerance, x), InBox(limits.warning, x)}, AreUnset(x));
      });
}

void JudgeByEllipse(const EllipseTerms& given, double warning, Rows differences, Verdicts verdicts,
                    std::size_t count) {
  OverRows<Widths<3>, Widths<1>>(
      differences, &verdicts, count, [ellipse = given, warning](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
        y[0] = VerdictNumber(EllipseGrade(EllipseValue(ellipse, x[0], x[1], x[2]), warning), AreUnset(x));
      });
}

void JudgeTotal(double limit, double warningFactor, const Column<const double>& totals, Verdicts verdicts,
                std::size_t count) {
  OverRows<Widths<1>, Widths<1>>(
      &totals, &verdicts, count, [limit, warningFactor](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
        y[0] = VerdictNumber(TotalGrade(x[0], limit, warningFactor), IsUnset(x[0]));
      });
}

// Unset differences are too small to have words.
void DescribeShades(Rows colors, const Column<std::int32_t>* words, std::size_t count) {
  OverRows<Widths<3, 3>, Widths<3>>(colors, words, count, [](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
    y[0] = LightnessWord(x[3]);
    y[1] = RedGreenWord(x[1], x[4]);
    y[2] = YellowBlueWord(x[2], x[5]);
  });
}

}  // namespace

template <>
const JudgementKernels& KernelsOf<JudgementKernels, VRX_LANES>() {
  static constexpr JudgementKernels kKernels = {&JudgeByBox, &JudgeByEllipse, &JudgeTotal, &DescribeShades};
  return kKernels;
}

}  // namespace vrx
