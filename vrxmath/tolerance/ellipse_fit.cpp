#include <vrxmath/tolerance/ellipse_fit.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

/// A quadratic form without coupling of lightness to the a*-b* plane, about a centre:
/// LL L^2 + aa a^2 + 2 ab a b + bb b^2.
struct PlanarForm {
  LabDifference centre;
  double LL = 0.0, aa = 0.0, ab = 0.0, bb = 0.0;

  double At(const LabDifference& d) const {
    const double L = d.dL - centre.dL, a = d.da - centre.da, b = d.db - centre.db;
    return LL * L * L + aa * a * a + 2.0 * ab * a * b + bb * b * b;
  }
  double Determinant() const { return aa * bb - ab * ab; }
  bool IsEllipsoid() const {
    return std::isfinite(LL + aa + ab + bb) && LL > 0.0 && aa > 0.0 && Determinant() > 1e-12 * aa * bb;
  }
  void Scale(double factor) {
    for (double* element : {&LL, &aa, &ab, &bb}) *element *= factor;
  }
};

/// Centre, semi-axes and angle of the ellipsoid on which a form is 1.
void WriteEllipse(const PlanarForm& form, CEllipseData& ellipse) {
  CMatrix plane(2, 2), v(2, 2);
  plane[0][0] = form.aa;
  plane[0][1] = plane[1][0] = form.ab;
  plane[1][1] = form.bb;
  CDoubleArray1 w;
  w.SetSize(2);
  plane.SvdDecompose(w, v);  // symmetric and positive: the eigenvalues with their directions
  const int32_t major = w[0] <= w[1] ? 0 : 1;
  double angle = Atan2(v[1][major], v[0][major]) * kDegreesPerRadian;
  if (angle < 0.0) angle += 180.0;
  if (angle >= 180.0) angle -= 180.0;
  ellipse[CEllipseData::kCentreL] = form.centre.dL;
  ellipse[CEllipseData::kCentreA] = form.centre.da;
  ellipse[CEllipseData::kCentreB] = form.centre.db;
  ellipse[CEllipseData::kLightnessAxis] = 1.0 / std::sqrt(form.LL);
  ellipse[CEllipseData::kMajorAxis] = 1.0 / std::sqrt(w[major]);
  ellipse[CEllipseData::kMinorAxis] = 1.0 / std::sqrt(w[1 - major]);
  ellipse[CEllipseData::kAngle] = std::max(angle, 0.0);
}

/// Grows the semi-axes by the last bits that rounding may have left a difference outside.
void GrowToHold(std::span<const LabDifference> differences, CEllipseData& ellipse) {
  for (const LabDifference& d : differences) {
    const Difference difference{d.dL, d.da, d.db, kUnset, kUnset, kUnset, kUnset};
    while (ellipse.Value(difference) > 1.0) {
      const double growth = ellipse.Value(difference) * (1.0 + kDoubleEpsilon);
      for (int32_t k = 0; k < 3; ++k) ellipse[CEllipseData::kLightnessAxis + k] *= growth;
    }
  }
}

/// The size of each component, by which fits are made independent of units; false when one has none.
bool FindScale(std::span<const LabDifference> differences, LabDifference& scale) {
  for (const LabDifference& d : differences) {
    scale.dL = std::max(scale.dL, std::fabs(d.dL));
    scale.da = std::max(scale.da, std::fabs(d.da));
    scale.db = std::max(scale.db, std::fabs(d.db));
    if (!std::isfinite(d.dL + d.da + d.db)) return false;
  }
  const double product = scale.dL * scale.da * scale.db;
  return product > 0.0 && std::isfinite(product);
}

std::vector<LabDifference> Scaled(std::span<const LabDifference> differences, const LabDifference& scale) {
  std::vector<LabDifference> scaled;
  scaled.reserve(differences.size());
  for (const LabDifference& d : differences)
    scaled.push_back({d.dL / scale.dL, d.da / scale.da, d.db / scale.db});
  return scaled;
}

PlanarForm Unscaled(const PlanarForm& form, const LabDifference& scale) {
  return {{form.centre.dL * scale.dL, form.centre.da * scale.da, form.centre.db * scale.db},
          form.LL / (scale.dL * scale.dL),
          form.aa / (scale.da * scale.da),
          form.ab / (scale.da * scale.db),
          form.bb / (scale.db * scale.db)};
}

/// A difference with its weight in the search for the smallest ellipsoid.
struct Weighted {
  LabDifference d;
  double weight;
};

/// The form that weights stand for: the inverse of three times their covariance, lightness apart from the
/// plane.
PlanarForm FormOfWeights(std::span<const Weighted> points, EllipseCentre centre) {
  LabDifference mean;
  if (centre == EllipseCentre::kFree) {
    for (const Weighted& p : points) {
      mean.dL += p.weight * p.d.dL;
      mean.da += p.weight * p.d.da;
      mean.db += p.weight * p.d.db;
    }
  }
  PlanarForm covariance;
  for (const Weighted& p : points) {
    const double L = p.d.dL - mean.dL, a = p.d.da - mean.da, b = p.d.db - mean.db;
    covariance.LL += p.weight * L * L;
    covariance.aa += p.weight * a * a;
    covariance.ab += p.weight * a * b;
    covariance.bb += p.weight * b * b;
  }
  const double determinant = 3.0 * covariance.Determinant();
  return {mean, 1.0 / (3.0 * covariance.LL), covariance.bb / determinant, -covariance.ab / determinant,
          covariance.aa / determinant};
}

/// The largest value of a form over the differences, and where it is.
struct Outermost {
  double value = 0.0;
  LabDifference d;
};

Outermost FindOutermost(const PlanarForm& form, std::span<const LabDifference> differences) {
  Outermost outermost;
  for (const LabDifference& d : differences) {
    const double value = form.At(d);
    if (value > outermost.value) outermost = {value, d};
  }
  return outermost;
}

/// The search for the weights under which no difference lies outside. Those whose weight fades are left out,
/// and come back should they lie outside after all.
class SmallestForm {
 public:
  SmallestForm(std::span<const LabDifference> differences, EllipseCentre centre)
      : differences_(differences), centre_(centre) {
    points_.reserve(differences.size());
    for (const LabDifference& d : differences)
      points_.push_back({d, 1.0 / static_cast<double>(differences.size())});
  }

  /// The form, grown to hold every difference. False when they do not span space.
  bool Find(PlanarForm& form) {
    for (int32_t round = 0; round < kRounds; ++round) {
      form = FormOfWeights(points_, centre_);
      if (!form.IsEllipsoid()) return false;
      if (Reweight(form) > kFarEnough) continue;
      const Outermost outermost = FindOutermost(form, differences_);
      if (outermost.value <= kFarEnough) break;
      points_.push_back({outermost.d, kReturningWeight});
    }
    form.Scale(1.0 / FindOutermost(form, differences_).value);
    return true;
  }

 private:
  static constexpr double kFarEnough = 1.0001;
  static constexpr double kNoWeight = 1e-12;
  static constexpr double kReturningWeight = 1e-3;
  static constexpr int32_t kRounds = 20000;

  // Multiplies every weight by the form at its difference, which is above 1 outside, and makes their sum 1
  // again. Returns the largest value of the form.
  double Reweight(const PlanarForm& form) {
    double outermost = 0.0, sum = 0.0;
    for (Weighted& p : points_) {
      const double value = form.At(p.d);
      outermost = std::max(outermost, value);
      p.weight *= value;
      sum += p.weight;
    }
    for (Weighted& p : points_) p.weight /= sum;
    std::erase_if(points_, [](const Weighted& p) { return p.weight < kNoWeight; });
    return outermost;
  }

  std::span<const LabDifference> differences_;
  EllipseCentre centre_;
  std::vector<Weighted> points_;
};

/// Unknowns of the quadric, and the differences that it is fitted to.
struct SurfaceProblem {
  std::span<const LabDifference> differences;
  static void Basis(void* context, uint32_t point, CDoubleArray1& values) {
    const LabDifference& d = static_cast<const SurfaceProblem*>(context)->differences[point];
    const double terms[] = {d.dL * d.dL, d.da * d.da, d.da * d.db, d.db * d.db, d.dL, d.da, d.db};
    std::copy_n(terms, values.GetSize(), values.begin());
  }
};

/// The coefficients of the quadric on which the form is 1, by least squares: four about the standard, seven
/// with a centre. False when the differences do not determine them.
bool FitQuadric(std::span<const LabDifference> differences, EllipseCentre centre,
                CDoubleArray1& coefficients) {
  const uint32_t unknowns = centre == EllipseCentre::kFree ? 7 : 4;
  CMatrix design(static_cast<uint32_t>(differences.size()), unknowns), v(unknowns, unknowns);
  CDoubleArray1 ones, w;
  ones.SetSize(static_cast<int32_t>(differences.size()));
  ones.Fill(1.0);
  w.SetSize(static_cast<int32_t>(unknowns));
  coefficients.SetSize(static_cast<int32_t>(unknowns));
  SurfaceProblem problem{differences};
  design.SvdFit(ones, ones, v, w, coefficients, &SurfaceProblem::Basis, &problem);
  return std::find(w.begin(), w.end(), 0.0) == w.end();
}

/// Moves the linear terms of a quadric into its centre; 0 when it has none.
uint32_t CompleteSquare(const CDoubleArray1& q, PlanarForm& form) {
  form = {{}, q[0], q[1], 0.5 * q[2], q[3]};
  if (q.GetSize() == 4) return 1;
  CMatrix system(2, 3);
  system[0][0] = form.aa;
  system[0][1] = system[1][0] = form.ab;
  system[1][1] = form.bb;
  system[0][2] = -0.5 * q[5];
  system[1][2] = -0.5 * q[6];
  CDoubleArray1 centre;
  centre.SetSize(2);
  if (system.GaussSolve(centre) == 0) return 0;
  form.centre = {-0.5 * q[4] / form.LL, centre[0], centre[1]};
  form.Scale(1.0 / (1.0 + PlanarForm{{}, form.LL, form.aa, form.ab, form.bb}.At(form.centre)));
  return 1;
}

}  // namespace

uint32_t FitSmallestEllipse(std::span<const LabDifference> accepted, EllipseCentre centre,
                            CEllipseData& ellipse) {
  constexpr std::size_t kFewest = 4;  // corners of a body
  LabDifference scale;
  if (accepted.size() < kFewest || !FindScale(accepted, scale)) return 0;
  const std::vector<LabDifference> scaled = Scaled(accepted, scale);
  PlanarForm form;
  if (!SmallestForm(scaled, centre).Find(form)) return 0;
  WriteEllipse(Unscaled(form, scale), ellipse);
  GrowToHold(accepted, ellipse);
  return 1;
}

uint32_t FitEllipseSurface(std::span<const LabDifference> limits, EllipseCentre centre,
                           CEllipseData& ellipse) {
  LabDifference scale;
  if (!FindScale(limits, scale)) return 0;
  const std::vector<LabDifference> scaled = Scaled(limits, scale);
  PlanarForm form;
  CDoubleArray1 quadric;
  if (!FitQuadric(scaled, centre, quadric)) return 0;
  if (CompleteSquare(quadric, form) == 0 || !form.IsEllipsoid()) return 0;
  WriteEllipse(Unscaled(form, scale), ellipse);
  return 1;
}

ToleranceFitError FitTolerance(std::span<const LabDifference> accepted, double largestTotal,
                               const ToleranceFitSettings& settings, CEllipseData& ellipse) {
  if (accepted.size() < settings.NeededDifferences()) return ToleranceFitError::kTooFew;
  CEllipseData found = ellipse;
  const bool isSurface = settings.method == ToleranceFitSettings::kSurface;
  if (isSurface && FitEllipseSurface(accepted, settings.centre, found) == 0) {
    const bool isFlat = FitSmallestEllipse(accepted, settings.centre, found) == 0;
    return isFlat ? ToleranceFitError::kFlat : ToleranceFitError::kNoSurface;
  }
  if (!isSurface && FitSmallestEllipse(accepted, settings.centre, found) == 0)
    return ToleranceFitError::kFlat;
  for (const std::int32_t axis :
       {CEllipseData::kLightnessAxis, CEllipseData::kMajorAxis, CEllipseData::kMinorAxis}) {
    found[axis] *= settings.margin;
  }
  found[CEllipseData::kTotalLimit] = largestTotal * settings.margin;
  found[CEllipseData::kCommercialFactor] = settings.margin;
  ellipse = found;
  return ToleranceFitError::kNone;
}

}  // namespace vrx
