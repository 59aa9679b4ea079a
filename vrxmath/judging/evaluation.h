// The evaluation context: a trial against a standard, under every geometry and illuminant, as differences,
// words and verdicts.
//
//   CVarexCalc calc;
//   calc.Normalize();                                            // D65, A and CWF with the 10 degree observer
//   calc.method = vrxSystemCmc;
//   calc.methodSettings = DefaultSettings(vrxSystemCmc);
//   calc.SetStandard(standardCurves);                            // one curve per geometry
//   CEvaluationArray results;
//   calc.Evaluate(trialCurves, results);                         // one result per geometry and illuminant

#ifndef VRXMATH_JUDGING_EVALUATION_H_
#define VRXMATH_JUDGING_EVALUATION_H_

#include <cstdint>

#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/export.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/tolerance/box_tolerance.h>
#include <vrxmath/tolerance/ellipse_tolerance.h>

namespace vrx {

/// Observer code of a context whose observer was not chosen yet.
inline constexpr int32_t kObserverNotSet = 2;
/// A geometry index that is read as 0 wherever a tolerance is looked up.
inline constexpr int32_t kAnyGeometry = 65535;

/// The answer for one geometry and illuminant. Without a difference (`available` false: a colour is unset)
/// there are no words and every verdict is a fail.
struct CEvaluation {
  int32_t geometry = 0;    ///< index into the geometries
  int32_t illuminant = 0;  ///< index into the illuminants
  bool available = false;
  ShadeWords shade;
  Verdict box = kFail;      ///< the three components against the box
  Verdict ellipse = kFail;  ///< the same against the ellipsoid, where the context judges by ellipsoids
  Verdict total = kFail;    ///< the total difference against its limit, the box's or the ellipsoid's
  Verdict overall = kFail;  ///< the worse of the total and of the one that the context judges by
  bool operator==(const CEvaluation&) const = default;
};
using CEvaluationArray = CArrayVarex<CEvaluation>;

/// Everything that a judgement needs and gives. The fields are the host's to set; the operations keep them
/// consistent. `A` is the trial, `B` the standard. One thread at a time.
class VRX_API CVarexCalc {
 public:
  CVarexCalc();

  CIllumArray illuminants;             ///< of the evaluation; empty when new
  int32_t observer = kObserverNotSet;  ///< 0 or 1; 2 while not set
  CAngles angles;                      ///< measuring geometries
  /// Difference system, 0 to 12. Under 10 (DIN99) the differences are dE*ab, which the dispatch by number keeps for it,
  /// unless `methodSettings.ownFormula` asks for the figures of DIN 6176. Under a number that no system has
  /// they are dE*ab, too, as stored results of such numbers are.
  int32_t method = vrxSystemLab;
  CDifferenceSettings methodSettings;  ///< parameters of the method; its `system` follows `method`
  CReflDataArray reflectanceA;         ///< the trial's curves, per geometry
  CReflDataArray reflectanceB;         ///< the standard's
  CColorValuesIllDataArray valuesA;    ///< XYZ and L*a*b* per geometry and illuminant
  CColorValuesIllDataArray valuesB;
  CDeltaValuesIllDataArray differences;  ///< in the method's system, per geometry and illuminant
  CDeltaValuesIllDataArray
      labDifferences;              ///< in L*a*b*, whatever the method: what the shade words come from
  CBoxTolStd4 boxTolerances;       ///< per standard, geometry and illuminant; one standard when new
  CEllipseStd4 ellipseTolerances;  ///< the same; new entries take the settings of an ellipse-based method
  bool judgeByEllipse = false;     ///< whether ellipsoids decide, or boxes
  int32_t flag = 0;
  double warningFactor = 0.75;  ///< fraction of the tolerance that counts as a clear pass

  /// Gives a context whose observer is not set the usual conditions: D65, A and CWF, 10 degrees, dE*ab. Values follow as
  /// in SetConditions.
  void Normalize();

  /// Sets the viewing conditions. False when they are what they were; otherwise true, and `*primaryChanged`
  /// (when given) tells whether the first illuminant or the observer changed. The values of trial and standard follow:
  /// they are computed from the curves where there are curves; values without curves stay with their illuminant while
  /// the observer is the same, and are unset otherwise. Differences that were computed are computed again.
  bool SetConditions(const CIllumArray& newIlluminants, int32_t newObserver, bool* primaryChanged = nullptr);

  /// Gives the tolerances `count` standards. New entries get one default table per geometry. Throws
  /// CInvalidArgException for a negative count.
  void ResizeTolerances(int32_t count);

  /// Gives standard `index` the ellipsoids of the method about the colours of the standard that is set, for
  /// every geometry and illuminant. False, with nothing changed, when the method is none of the ellipse-based
  /// ones (CMC, CIE94, CIE2000). Throws CInvalidArgException for a negative index.
  bool BuildEllipses(int32_t index = 0);

  /// Takes the standard's curves, or the trial's, and computes their values under every illuminant.
  void SetStandard(const CReflDataArray& curves);
  void SetTrial(const CReflDataArray& curves);
  /// The same from tristimulus values, per geometry and illuminant, for colours without curves.
  void SetStandardValues(const CTrisValuesIllDataArray& tristimulus);
  void SetTrialValues(const CTrisValuesIllDataArray& tristimulus);

  /// Fills `differences` and `labDifferences` from the values of trial and standard. The Audi and DIN
  /// 6175-2 weights take the magnitude of the geometry's angle: the gloss lies on both sides.
  void ComputeDifferences();

  /// The whole way: takes the trial's curves, computes values and differences against the standard that was
  /// set, and judges them against the tolerances of standard `index`, which get default entries where they
  /// have none. `results` is filled geometry by geometry, within each illuminant by illuminant.
  void Evaluate(const CReflDataArray& trial, CEvaluationArray& results, int32_t index = 0);
  /// The last step of the above, from the values that are set.
  void Judge(CEvaluationArray& results, int32_t index = 0);

  /// The shade words of geometry `g` and illuminant `i`. False, with the text and the list empty, when the
  /// trial's colour or the difference is missing or unset. `codes` gets the three word codes, `colors`
  /// their display colours (0x00BBGGRR).
  bool DescribeShadeAt(int32_t g, int32_t i, bool lighterInBlack, CString& text, CIntArray1& codes,
                       uint32_t (&colors)[3]) const;

  /// Judges one difference, in the method's system, by the tolerances of standard `index` for geometry `g` (kAnyGeometry:
  /// 0) and illuminant `i`, with the shade words and, under `judgeByEllipse`, the ellipsoid from `labDifferences`.
  /// Without values, or for an unset difference, the result is not available and fails.
  [[nodiscard]] CEvaluation JudgeAt(int32_t index, int32_t g, int32_t i,
                                    const CDeltaValues& difference) const;

  /// Judges a difference by the box of standard `index`, geometry `g` (kAnyGeometry: 0) and illuminant `i`:
  /// fail outside the box, warning outside the box scaled by `warningFactor`, else pass. For L*C*h (method
  /// 5) the box holds limits of dL*, dC* and dH*; the hue limits become the angles whose chords they are on
  /// the circle of the standard's chroma, and the trial's hue has to lie in that sector of the standard's
  /// hue. Limits whose angles are equal, as those of one sign beyond the diameter are, admit the standard's hue alone.
  [[nodiscard]] Verdict JudgeBox(int32_t index, int32_t g, int32_t i, const CDeltaValues& difference) const;
  /// Judges a difference in L*a*b* by the ellipsoid of the same entry: fail outside it, warning outside it
  /// scaled by `warningFactor`, else pass.
  [[nodiscard]] Verdict JudgeEllipse(int32_t index, int32_t g, int32_t i,
                                     const CDeltaValues& labDifference) const;
  /// Grades a total difference against the limit of the same entry, the ellipsoid's under
  /// `judgeByEllipse`, the box's otherwise.
  [[nodiscard]] Verdict JudgeTotal(int32_t index, int32_t g, int32_t i, const CDeltaValues& difference) const;

 private:
  const CBoxTolData& BoxOf(int32_t index, int32_t g, int32_t i) const;
  const CEllipseData& EllipseOf(int32_t index, int32_t g, int32_t i) const;
  [[nodiscard]] CEllipseData NewEllipse() const;
  void GrowEllipses(int32_t index, int32_t geometries);
  [[nodiscard]] bool BoxAccepts(const CBoxTolData& box, int32_t g, int32_t i, const CDeltaValues& difference,
                                double factor) const;
  void FillValues(const CReflDataArray& curves, CColorValuesIllDataArray& values) const;
  void FillValues(const CTrisValuesIllDataArray& tristimulus, CColorValuesIllDataArray& values) const;
  void ChangeConditions(const CIllumArray& newIlluminants, int32_t newObserver);
  void Renew(const CReflDataArray& curves, const CIllumArray& oldIlluminants, bool sameObserver,
             CColorValuesIllDataArray& values) const;
  void DifferenceAt(int32_t g, int32_t i);
  void EnsureTolerances(int32_t index, int32_t geometries);
  const CDeltaValues* LabDifferenceAt(int32_t g, int32_t i) const;
};

}  // namespace vrx

#endif  // VRXMATH_JUDGING_EVALUATION_H_
