#include <vrxmath/judging/evaluation.h>

#include <algorithm>
#include <cmath>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/judging/lch_box.h>

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

}  // namespace

CVarexCalc::CVarexCalc() {
  illuminants.RemoveAll();
  boxTolerances.SetSize(1);
  ellipseTolerances.SetSize(1);
}

void CVarexCalc::Normalize() {
  if (observer != kObserverNotSet) return;
  CIllumArray usual;
  usual[0] = vrxIllumD65;
  usual[1] = vrxIllumA;
  usual[2] = vrxIllumCWF;
  method = vrxSystemLab;
  ChangeConditions(usual, kObserver10);
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
  ChangeConditions(newIlluminants, newObserver);
  return true;
}

void CVarexCalc::ChangeConditions(const CIllumArray& newIlluminants, int32_t newObserver) {
  const CIllumArray oldIlluminants = illuminants;
  const bool sameObserver = observer == newObserver;
  illuminants = newIlluminants;
  observer = newObserver;
  Renew(reflectanceA, oldIlluminants, sameObserver, valuesA);
  Renew(reflectanceB, oldIlluminants, sameObserver, valuesB);
  if (!differences.IsEmpty()) ComputeDifferences();
}

void CVarexCalc::Renew(const CReflDataArray& curves, const CIllumArray& oldIlluminants, bool sameObserver,
                       CColorValuesIllDataArray& values) const {
  if (!curves.IsEmpty()) return FillValues(curves, values);
  for (CColorValuesArray& row : values) {
    const CColorValuesArray old = row;
    row.SetSize(illuminants.GetSize());
    for (int32_t i = 0; i < illuminants.GetSize(); ++i) {
      const auto place = std::find(oldIlluminants.begin(), oldIlluminants.end(), illuminants[i]);
      const auto j = static_cast<int32_t>(place - oldIlluminants.begin());
      row[i] = sameObserver && j < oldIlluminants.GetSize() && j < old.GetSize() ? old[j] : CColorValues();
    }
  }
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
  const double angle = std::fabs(g < angles.GetCount() ? angles.GetAngle(g) : AngleOfCode(0));
  const DifferenceSystem* system = FindDifferenceSystem(method);
  if (system == nullptr || system->space == CoordinateSpace::kLab) {
    return ComputeDifference(settings, illuminants[i], observer, *standard, *trial, angle, difference);
  }
  Color standardInSpace = standard->Values(), trialInSpace = trial->Values();
  const bool converted = FillCoordinates(method, illuminants[i], observer, standardInSpace) &&
                         FillCoordinates(method, illuminants[i], observer, trialInSpace);
  difference.SetValues(converted ? ComputeDifference(settings, standardInSpace, trialInSpace, angle)
                                 : kUnsetDifference);
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
      result = JudgeAt(index, g, i, differences[g][i]);
    }
  }
}

CEvaluation CVarexCalc::JudgeAt(int32_t index, int32_t g, int32_t i, const CDeltaValues& difference) const {
  const int32_t geometry = g == kAnyGeometry ? 0 : g;
  CEvaluation result;
  result.geometry = geometry;
  result.illuminant = i;
  const CColorValues* trial = FindEntry(valuesA, geometry, i);
  const CDeltaValues* labDifference = LabDifferenceAt(geometry, i);
  if (trial == nullptr || labDifference == nullptr || IsUnset(difference)) return result;
  result.available = true;
  result.shade = DescribeShade(trial->lab, *labDifference);
  result.box = JudgeBox(index, geometry, i, difference);
  if (judgeByEllipse) result.ellipse = JudgeEllipse(index, geometry, i, *labDifference);
  result.total = JudgeTotal(index, geometry, i, difference);
  result.overall = std::min(judgeByEllipse ? result.ellipse : result.box, result.total);
  return result;
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
  return AcceptsLch(
      {ScaledAboutCentre(box.Limits(0), factor), ScaledAboutCentre(box.Limits(1), factor),
       ScaledAboutCentre(box.Limits(2), factor)},
      {difference[CDeltaValues::kL], difference[CDeltaValues::kChroma], standard->lab[CLabValues::kChroma],
       HueRadiansOf(standard->lab), HueRadiansOf(trial->lab)});
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
  const double limit = judgeByEllipse ? EllipseOf(index, g, i)[CEllipseData::kTotalLimit]
                                      : BoxOf(index, g, i)[CBoxTolData::kTotal];
  return GradeTotal(difference[CDeltaValues::kTotal], limit, warningFactor);
}

}  // namespace vrx
