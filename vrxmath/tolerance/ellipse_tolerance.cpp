#include <vrxmath/tolerance/ellipse_tolerance.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/difference_table.h>
#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/foundation/record_archive.h>
#include <vrxmath/numeric/elementary.h>
#include <vrxmath/tolerance/ellipse_formulas.h>

namespace vrx {
namespace {

/// The directions of the semi-axes in (dL*, da*, db*), as the columns of a rotation.
CMatrix AxisDirections(double angleDegrees) {
  const double c = Cos(angleDegrees * kRadiansPerDegree), s = Sin(angleDegrees * kRadiansPerDegree);
  CMatrix directions(3, 3);
  directions[0][0] = 1.0;
  directions[1][1] = c;
  directions[1][2] = -s;
  directions[2][1] = s;
  directions[2][2] = c;
  return directions;
}

/// The factor of a system with an ellipsoid: CMC carries it third, after l and c, the others fourth.
double FactorOf(const DifferenceSystem& system, const CDifferenceSettings& settings) {
  return settings.parameters[static_cast<std::size_t>(system.ellipsoidFactor)];
}

/// The row of a system with an ellipsoid; null for every other.
const DifferenceSystem* EllipseSystem(int32_t system) {
  const DifferenceSystem* row = FindDifferenceSystem(system);
  return row != nullptr && row->ellipsoidFactor != kNoEllipsoid ? row : nullptr;
}

}  // namespace

CEllipseData::CEllipseData() {
  SetSize(kValues);
  for (const int32_t i : {kLightnessAxis, kMajorAxis, kMinorAxis, kTotalLimit}) (*this)[i] = 1.5;
  (*this)[kCommercialFactor] = 1.0;
}

double CEllipseData::Value(const Difference& difference) const {
  return EllipseValue(TermsOf(*this), difference.dL, difference.da, difference.db);
}

Verdict CEllipseData::Judge(const Difference& difference, double warningFactor) const {
  return ToVerdict(EllipseGrade(Value(difference), EllipseWarning(warningFactor)));
}

CMatrix CEllipseData::Form() const {
  const CMatrix directions = AxisDirections((*this)[kAngle]);
  CMatrix transposed = directions, scaled(3, 3), form(3, 3);
  transposed.Transpose(3);
  for (int32_t i = 0; i < 3; ++i) {
    const double axis = (*this)[kLightnessAxis + i];
    for (int32_t j = 0; j < 3; ++j) scaled[i][j] = transposed[i][j] / (axis * axis);
  }
  form.Multiply(directions, scaled);
  return form;
}

uint32_t CEllipseData::InverseForm(CMatrix& inverse) const {
  inverse = Form();
  CMatrix none(3, 0);
  return inverse.GaussJordan(none);
}

std::vector<PlanePoint> CEllipseData::Section(EllipsePlane plane, int32_t points) const {
  points = std::clamp(points, 3, 100000);
  const CMatrix form = Form();
  const int32_t horizontal = plane == EllipsePlane::kBL ? 2 : 1;
  const bool inPlaneOfHue = plane == EllipsePlane::kAB;
  const double turn = inPlaneOfHue ? (*this)[kAngle] * kRadiansPerDegree : 0.0;
  const double width = inPlaneOfHue ? (*this)[kMajorAxis] : 1.0 / std::sqrt(form[horizontal][horizontal]);
  const double height = inPlaneOfHue ? (*this)[kMinorAxis] : (*this)[kLightnessAxis];
  const double centreX = (*this)[horizontal], centreY = (*this)[inPlaneOfHue ? kCentreB : kCentreL];
  const double c = Cos(turn), s = Sin(turn);
  std::vector<PlanePoint> line;
  line.reserve(static_cast<std::size_t>(points) + 1);
  for (int32_t k = 0; k < points; ++k) {
    const double t = kTwoPi * k / points;
    const double u = width * Cos(t), v = height * Sin(t);
    line.push_back({centreX + u * c - v * s, centreY + u * s + v * c});
  }
  line.push_back(line.front());
  return line;
}

void CEllipseData::ApplySettings(const CDifferenceSettings& settings) {
  const DifferenceSystem* system = EllipseSystem(settings.system);
  if (system == nullptr || !(FactorOf(*system, settings) > 0.0)) return;
  const double factor = FactorOf(*system, settings);
  const double growth = factor / (*this)[kCommercialFactor];
  for (const int32_t i : {kLightnessAxis, kMajorAxis, kMinorAxis}) (*this)[i] *= growth;
  (*this)[kTotalLimit] = factor;
  (*this)[kCommercialFactor] = factor;
}

void CEllipseData::SerializeValues(CArchive& archive) {
  SerializeDoubles(archive, *this, kValues);
}

bool IsEllipseSystem(int32_t system) {
  return EllipseSystem(system) != nullptr;
}

CEllipseData EllipseForStandard(const CLabValues& standard, const CDifferenceSettings& settings) {
  CEllipseData ellipse;
  const DifferenceSystem* system = EllipseSystem(settings.system);
  if (system == nullptr || IsUnset(standard)) return ellipse;
  const Lab lab = standard.Values();
  DifferenceWeights axes{};
  VisitDifferenceFormula(settings, [&](auto formula) {
    if constexpr (kHasEllipsoid<decltype(formula)>) axes = formula.SemiAxes({settings.parameters}, lab);
  });
  const double factor = FactorOf(*system, settings);
  ellipse[CEllipseData::kLightnessAxis] = axes.SL * factor;
  ellipse[CEllipseData::kMajorAxis] = axes.SC * factor;
  ellipse[CEllipseData::kMinorAxis] = axes.SH * factor;
  ellipse[CEllipseData::kAngle] = lab.h;
  ellipse[CEllipseData::kTotalLimit] = factor;
  ellipse[CEllipseData::kCommercialFactor] = factor;
  return ellipse;
}

}  // namespace vrx
