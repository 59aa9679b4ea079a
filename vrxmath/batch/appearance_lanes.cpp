#include <vrxmath/batch/appearance_kernels.h>

#include <vrxmath/batch/lane_rows.h>

namespace vrx {
namespace {

using Rows = AppearanceKernels::Rows;
using Target = AppearanceKernels::Target;

void AdaptRows(const Matrix3& given, Rows xyz, Target adapted, std::size_t count) {
  OverRows<Widths<3>, Widths<3>>(xyz, adapted, count,
                                 [matrix = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                   const XyzOf<Lanes> color = Adapt(XyzOf<Lanes>{x[0], x[1], x[2]}, matrix);
                                   y[0] = color.X, y[1] = color.Y, y[2] = color.Z;
                                 });
}

void AppearanceOfRows(const AppearanceTerms& given, Rows xyz, Target appearance, std::size_t count) {
  OverRows<Widths<3>, Widths<6>>(
      xyz, appearance, count, [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
        const AppearanceOf<Lanes> look = AppearanceFromXyz(terms, XyzOf<Lanes>{x[0], x[1], x[2]});
        y[0] = look.J, y[1] = look.C, y[2] = look.h, y[3] = look.Q, y[4] = look.M, y[5] = look.s;
      });
}

void XyzOfRows(const AppearanceTerms& given, Rows appearance, Target xyz, std::size_t count) {
  OverRows<Widths<3>, Widths<3>>(appearance, xyz, count,
                                 [terms = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                   const XyzOf<Lanes> color = XyzFromAppearance(terms, x[0], x[1], x[2]);
                                   y[0] = color.X, y[1] = color.Y, y[2] = color.Z;
                                   MarkUnset<3>(
                                       IsUnset(x[0]), [&] { return AreUnset(x); }, y);
                                 });
}

VRX_LANE_INLINE LabOf<Lanes> LabAt(const Lanes* x) {
  return {x[0], x[1], x[2], x[3], x[4]};
}

VRX_LANE_INLINE void Grade(GreyScale scale, const LabOf<Lanes>& standard, const Lanes* sample, bool unset,
                           Lanes* y) {
  y[0] = GreyScaleGrade(scale, standard, LabAt(sample));
  MarkUnset<1>(AreUnset(sample), y);
  if (unset) y[0] = kUnset;
}

void GradeRows(GreyScale scale, const Lab& given, Rows samples, Target grades, std::size_t count) {
  const bool unset = IsUnset(given.L) && IsUnset(given.a) && IsUnset(given.b);
  OverRows<Widths<5>, Widths<1>>(samples, grades, count,
                                 [scale, unset, s = given](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                   Grade(scale, {s.L, s.a, s.b, s.C, s.h}, x, unset, y);
                                 });
}

void GradePairs(GreyScale scale, Rows standardsAndSamples, Target grades, std::size_t count) {
  OverRows<Widths<5, 5>, Widths<1>>(standardsAndSamples, grades, count,
                                    [scale](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
                                      Grade(scale, LabAt(x), x + 5, false, y);
                                      MarkUnset<1>(AreUnset(x), y);
                                    });
}

}  // namespace

template <>
const AppearanceKernels& KernelsOf<AppearanceKernels, VRX_LANES>() {
  static constexpr AppearanceKernels kKernels = {&AdaptRows, &AppearanceOfRows, &XyzOfRows, &GradeRows,
                                                 &GradePairs};
  return kKernels;
}

}  // namespace vrx
