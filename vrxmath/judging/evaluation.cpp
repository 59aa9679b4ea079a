#include <vrxmath/judging/evaluation.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

// The entry of a per-geometry, per-illuminant table; null where the table has none.
template <class TABLE>
auto FindEntry(const TABLE& table, int32_t g, int32_t i) -> decltype(&table[0][0]) {
  if (g < 0 || g >= table.GetSize() || i < 0 || i >= table[g].GetSize()) return nullptr;
  return &table[g][i];
}

template <class TABLE>
void Resize(TABLE& table, int32_t geometries, int32_t illuminants) {
  table.SetSize(geometries);
  for (auto& row : table) row.SetSize(illuminants);
}

// Grows an array to `size`; a larger one stays as it is.
template <class ARRAY>
void GrowTo(ARRAY& array, int32_t size) {
  if (array.GetSize() < size) array.SetSize(size);
}

bool NeedsOwnCoordinates(int32_t system) {
  return system == vrxSystemHunter || system == vrxSystemLuv;
}

// The angle in radians whose chord on a circle of radius `chroma` has the length of a hue limit, with the
// limit's sign; half a circle where no chord is that long.
double ChordAngle(double limit, double chroma) {
  const double length = std::fabs(limit);
  if (length == 0.0) return 0.0;
  const double angle = length >= 2.0 * chroma ? kPi : 2.0 * Asin(length / (2.0 * chroma));
  return limit < 0.0 ? -angle : angle;
}

double WithinFullCircle(double angle) {
  if (angle < 0.0) return angle + kTwoPi;
  return angle > kTwoPi ? angle - kTwoPi : angle;
}

// The sector that hue limits leave open about a standard.
struct HueSector {
  double start, end;
  bool empty;
};

HueSector SectorAbout(const CLabValues& standard, Interval hueLimits) {
  const double h = HueRadiansOf(standard), C = standard[3];
  const double down = ChordAngle(hueLimits.lower, C), up = ChordAngle(hueLimits.upper, C);
  if (up - down >= kTwoPi - kDoubleEpsilon) return {0.0, 0.0, false};  // the full circle
  return {WithinFullCircle(h + down), WithinFullCircle(h + up), !(down <= up)};
}

}  // namespace

CVarexCalc::CVarexCalc() {
  illuminants.RemoveAll();
  boxTolerances.SetSize(1);
  ellipseTolerances.SetSize(1);
}

void CVarexCalc::Normalize() {
  if (observer != kObserverNotSet) return;
  illuminants.SetSize(3);
  illuminants[0] = vrxIllumD65;
  illuminants[1] = vrxIllumA;
  illuminants[2] = vrxIllumCWF;
  observer = kObserver10;
  method = vrxSystemLab;
}

bool CVarexCalc::SetConditions(const CIllumArray& newIlluminants, int32_t newObserver, bool* primaryChanged) {
  if (primaryChanged != nullptr) *primaryChanged = false;
  if (illuminants == newIlluminants && observer == newObserver) return false;
  if (primaryChanged != nullptr) {
    const bool bothHaveFirst = !illuminants.IsEmpty() && !newIlluminants.IsEmpty();
    const bool sameFirst = bothHaveFirst ? illuminants[0] == newIlluminants[0]
                                         : illuminants.IsEmpty() == newIlluminants.IsEmpty();
    *primaryChanged = !sameFirst || observer != newObserver;
  }
  illuminants = newIlluminants;
  observer = newObserver;
  return true;
}

void CVarexCalc::ResizeTolerances(int32_t count) {
  const int32_t old = boxTolerances.GetSize();
  boxTolerances.SetSize(count);
  for (int32_t k = old; k < count; ++k) boxTolerances[k].SetSize(angles.GetCount());
  const int32_t oldEllipses = ellipseTolerances.GetSize();
  ellipseTolerances.SetSize(count);
  for (int32_t k = oldEllipses; k < count; ++k) GrowEllipses(k, angles.GetCount());
}

CEllipseData CVarexCalc::NewEllipse() const {
  CEllipseData ellipse;
  ellipse.ApplySettings({method, methodSettings.parameters});
  return ellipse;
}

void CVarexCalc::GrowEllipses(int32_t index, int32_t geometries) {
  GrowTo(ellipseTolerances, index + 1);
  CEllipseAngle3& table = ellipseTolerances[index];
  for (int32_t g = table.GetSize(); g < geometries; ++g) {
    GrowTo(table, g + 1);
    table[g].Fill(NewEllipse());
  }
  for (CEllipseIllum2& row : table) {
    while (row.GetSize() < illuminants.GetSize()) row.Add(NewEllipse());
  }
}

bool CVarexCalc::BuildEllipses(int32_t index) {
  if (index < 0) throw CInvalidArgException();
  if (!IsEllipseSystem(method)) return false;
  GrowEllipses(index, valuesB.GetSize());
  for (int32_t g = 0; g < valuesB.GetSize(); ++g) {
    for (int32_t i = 0; i < valuesB[g].GetSize() && i < illuminants.GetSize(); ++i) {
      ellipseTolerances[index][g][i] =
          EllipseForStandard(valuesB[g][i].lab, {method, methodSettings.parameters});
    }
  }
  return true;
}

void CVarexCalc::FillValues(const CReflDataArray& curves, CColorValuesIllDataArray& values) const {
  Resize(values, curves.GetSize(), illuminants.GetSize());
  for (int32_t g = 0; g < curves.GetSize(); ++g) {
    for (int32_t i = 0; i < illuminants.GetSize(); ++i) {
      CColorValues& color = values[g][i];
      curves[g].Tristimulus(illuminants[i], observer, color.tristimulus);
      FillCoordinates(vrxSystemLab, illuminants[i], observer, color);
    }
  }
}

void CVarexCalc::FillValues(const CTrisValuesIllDataArray& tristimulus,
                            CColorValuesIllDataArray& values) const {
  Resize(values, tristimulus.GetSize(), illuminants.GetSize());
  for (int32_t g = 0; g < tristimulus.GetSize(); ++g) {
    for (int32_t i = 0; i < illuminants.GetSize(); ++i) {
      CColorValues& color = values[g][i];
      const CTrisValues* given = FindEntry(tristimulus, g, i);
      color.tristimulus = given != nullptr ? *given : CTrisValues();
      FillCoordinates(vrxSystemLab, illuminants[i], observer, color);
    }
  }
}

void CVarexCalc::SetStandard(const CReflDataArray& curves) {
  reflectanceB = curves;
  FillValues(reflectanceB, valuesB);
}

void CVarexCalc::SetTrial(const CReflDataArray& curves) {
  reflectanceA = curves;
  FillValues(reflectanceA, valuesA);
}

void CVarexCalc::SetStandardValues(const CTrisValuesIllDataArray& tristimulus) {
  reflectanceB.RemoveAll();
  FillValues(tristimulus, valuesB);
}

void CVarexCalc::SetTrialValues(const CTrisValuesIllDataArray& tristimulus) {
  reflectanceA.RemoveAll();
  FillValues(tristimulus, valuesA);
}

void CVarexCalc::DifferenceAt(int32_t g, int32_t i) {
  CDeltaValues& difference = differences[g][i];
  CDeltaValues& labDifference = labDifferences[g][i];
  const CColorValues* trial = FindEntry(valuesA, g, i);
  const CColorValues* standard = FindEntry(valuesB, g, i);
  if (trial == nullptr || standard == nullptr || IsUnset(*trial) || IsUnset(*standard)) {
    difference.Fill(kUnset);
    labDifference.Fill(kUnset);
    return;
  }
  DeltaEab(standard->lab, trial->lab, labDifference);
  CDifferenceSettings settings = methodSettings;
  settings.system = method;
  if (NeedsOwnCoordinates(method)) {
    systemA_.tristimulus = trial->tristimulus;
    systemB_.tristimulus = standard->tristimulus;
    FillCoordinates(method, illuminants[i], observer, systemA_);
    FillCoordinates(method, illuminants[i], observer, systemB_);
    trial = &systemA_;
    standard = &systemB_;
  }
  const double angle = g < angles.GetCount() ? angles.GetAngle(g) : AngleOfCode(0);
  ComputeDifference(settings, illuminants[i], observer, *standard, *trial, angle, difference);
}

void CVarexCalc::ComputeDifferences() {
  const int32_t geometries = std::max(valuesA.GetSize(), valuesB.GetSize());
  Resize(differences, geometries, illuminants.GetSize());
  Resize(labDifferences, geometries, illuminants.GetSize());
  for (int32_t g = 0; g < geometries; ++g) {
    for (int32_t i = 0; i < illuminants.GetSize(); ++i) DifferenceAt(g, i);
  }
}

void CVarexCalc::Evaluate(const CReflDataArray& trial, CEvaluationArray& results, int32_t index) {
  SetTrial(trial);
  Judge(results, index);
}

void CVarexCalc::EnsureTolerances(int32_t index, int32_t geometries) {
  GrowTo(boxTolerances, index + 1);
  GrowTo(boxTolerances[index], geometries);
  for (CBoxTolIllum2& table : boxTolerances[index]) GrowTo(table, illuminants.GetSize());
  if (judgeByEllipse) GrowEllipses(index, geometries);
}

void CVarexCalc::Judge(CEvaluationArray& results, int32_t index) {
  if (index < 0) throw CInvalidArgException();
  ComputeDifferences();
  EnsureTolerances(index, differences.GetSize());
  results.SetSize(differences.GetSize() * illuminants.GetSize());
  int32_t k = 0;
  for (int32_t g = 0; g < differences.GetSize(); ++g) {
    for (int32_t i = 0; i < illuminants.GetSize(); ++i) {
      CEvaluation& result = results[k++];
      result = CEvaluation();
      result.geometry = g;
      result.illuminant = i;
      const CDeltaValues* labDifference = LabDifferenceAt(g, i);
      if (labDifference == nullptr) continue;
      result.available = true;
      result.shade = DescribeShade(valuesA[g][i].lab, *labDifference);
      result.box = JudgeBox(index, g, i, differences[g][i]);
      if (judgeByEllipse) result.ellipse = JudgeEllipse(index, g, i, *labDifference);
      result.total = JudgeTotal(index, g, i, differences[g][i]);
      result.overall = std::min(judgeByEllipse ? result.ellipse : result.box, result.total);
    }
  }
}

const CDeltaValues* CVarexCalc::LabDifferenceAt(int32_t g, int32_t i) const {
  const CDeltaValues* difference = FindEntry(labDifferences, g, i);
  if (difference == nullptr)
    difference = FindEntry(differences, g, i);  // set by a host that judges in L*a*b*
  return difference != nullptr && !IsUnset(*difference) ? difference : nullptr;
}

bool CVarexCalc::DescribeShadeAt(int32_t g, int32_t i, bool lighterInBlack, CString& text, CIntArray1& codes,
                                 uint32_t (&colors)[3]) const {
  text.Empty();
  codes.RemoveAll();
  const CColorValues* trial = FindEntry(valuesA, g, i);
  const CDeltaValues* difference = LabDifferenceAt(g, i);
  if (trial == nullptr || difference == nullptr || IsUnset(trial->lab)) return false;
  const ShadeWords shade = DescribeShade(trial->lab, *difference, lighterInBlack);
  text = ShadeText(shade);
  for (const ShadeWord word : shade.words) codes.Add(word);
  std::copy(shade.colors.begin(), shade.colors.end(), colors);
  return true;
}

const CBoxTolData& CVarexCalc::BoxOf(int32_t index, int32_t g, int32_t i) const {
  return boxTolerances[index][g == kAnyGeometry ? 0 : g][i];
}

const CEllipseData& CVarexCalc::EllipseOf(int32_t index, int32_t g, int32_t i) const {
  return ellipseTolerances[index][g == kAnyGeometry ? 0 : g][i];
}

bool CVarexCalc::BoxAccepts(const CBoxTolData& box, int32_t g, int32_t i, const CDeltaValues& difference,
                            double factor) const {
  if (method != vrxSystemLch) return box.Accepts(difference, factor);
  const int32_t geometry = g == kAnyGeometry ? 0 : g;
  const CColorValues* trial = FindEntry(valuesA, geometry, i);
  const CColorValues* standard = FindEntry(valuesB, geometry, i);
  if (trial == nullptr || standard == nullptr) return false;
  const Interval hueLimits = ScaledAboutCentre(box.Limits(2), factor);
  const HueSector sector = SectorAbout(standard->lab, hueLimits);
  const double hue = HueRadiansOf(trial->lab);
  // Limits that leave a single hue are not the full circle that equal ends stand for.
  const bool singleHue = NearlyEqual(hueLimits.lower, hueLimits.upper);
  if (sector.empty || (singleHue && !NearlyEqual(hue, sector.start))) return false;
  return box.AcceptsInSector(difference[0], difference[4], factor, sector.start, sector.end, hue);
}

Verdict CVarexCalc::JudgeBox(int32_t index, int32_t g, int32_t i, const CDeltaValues& difference) const {
  const CBoxTolData& box = BoxOf(index, g, i);
  if (!BoxAccepts(box, g, i, difference, 1.0)) return kFail;
  return BoxAccepts(box, g, i, difference, warningFactor) ? kPass : kWarning;
}

Verdict CVarexCalc::JudgeEllipse(int32_t index, int32_t g, int32_t i,
                                 const CDeltaValues& labDifference) const {
  return EllipseOf(index, g, i).Judge(labDifference, warningFactor);
}

Verdict CVarexCalc::JudgeTotal(int32_t index, int32_t g, int32_t i, const CDeltaValues& difference) const {
  if (judgeByEllipse) return EllipseOf(index, g, i).JudgeTotal(difference[6], warningFactor);
  return BoxOf(index, g, i).JudgeTotal(difference[6], warningFactor);
}

}  // namespace vrx
