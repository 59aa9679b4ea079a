// Tolerances, verdicts and words.

#include <algorithm>
#include <array>
#include <vector>

#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/tolerance/ellipse_fit.h>

#include "c_api/handles.h"

namespace vrx::c_api {
namespace {

using Rows7 = BatchView<const double, 7>;

double NeedFactor(double factor) {
  NeedWithin(factor, 0.0, 1.0, "the warning factor");
  return factor;
}

CBoxTolData BoxOf(const double* limits) {
  const auto numbers = Numbers(limits, 1, 7, "box");
  for (const double limit : numbers) NeedWithin(limit, 0.0, kLargestReading, "a limit of the box");
  CBoxTolData box;
  std::copy(numbers.begin(), numbers.end(), box.begin());
  return box;
}

CEllipseData EllipseOf(const double* values) {
  const auto numbers = Numbers(values, 1, CEllipseData::kValues, "ellipse");
  for (const int32_t i : {CEllipseData::kLightnessAxis, CEllipseData::kMajorAxis, CEllipseData::kMinorAxis})
    NeedWithin(numbers[static_cast<std::size_t>(i)], 0.0, kLargestReading, "a semi-axis of the ellipse");
  NeedWithin(numbers[CEllipseData::kTotalLimit], 0.0, kLargestReading,
             "the limit of the total of the ellipse");
  NeedWithin(numbers[CEllipseData::kCommercialFactor], 0.0, kLargestReading,
             "the commercial factor of the ellipse");
  CEllipseData ellipse;
  std::copy(numbers.begin(), numbers.end(), ellipse.begin());
  return ellipse;
}

void GiveEllipse(const CEllipseData& ellipse, double* place) {
  std::copy(ellipse.begin(), ellipse.end(), place);
}

// Judges rows of differences by either kind of tolerance: `judge` is the batch function of one of them.
template <class TOLERANCE, class JUDGE>
void JudgeRows(Arrays& arrays, const TOLERANCE& tolerance, double limit, double factor,
               const double* differences, int32_t count, int32_t* verdicts, int32_t* totals,
               const JUDGE& judge) {
  const auto place = arrays.Place(verdicts, count, 1, "verdicts");
  const auto totalPlace = arrays.PlaceIfWanted(totals, count, 1, "totals");
  const Rows7 rows(arrays.Numbers(differences, count, 7, "differences"));
  std::vector<Verdict> found(rows.size());
  judge(tolerance, factor, rows.Numbers<0, 3>(), std::span<Verdict>(found), Run());
  std::copy(found.begin(), found.end(), place.begin());
  if (totalPlace.empty()) return;
  std::vector<double> total(rows.size());
  for (std::size_t i = 0; i < total.size(); ++i) total[i] = rows.at(i, CDeltaValues::kTotal);
  TotalVerdictBatch(limit, factor, total, found, Run());
  std::copy(found.begin(), found.end(), totalPlace.begin());
}

// The geometry of a judgement: the usual one, or the first of an aspecular angle.
uint8_t GeometryOf(double angle) {
  CAngles usual;
  usual.SetCodes(1);
  if (usual.GetAngle(0) == angle) return usual.GetCode(0);
  for (uint8_t code = 0; code < kAngleCodes; ++code) {
    if (FamilyOfAngle(code) == AngleFamily::kOther && AngleOfCode(code) == angle) return code;
  }
  throw Refusal{VRX_OUT_OF_RANGE, "no geometry has the angle of the system"};
}

void SetUp(CVarexCalc& calc, const vrx_system& system, const CDifferenceSettings& settings,
           const CIllumArray& illuminants, int32_t observer) {
  calc.SetConditions(illuminants, observer);
  const uint8_t geometry = GeometryOf(system.angle);
  calc.angles.SetCodes(std::span(&geometry, 1));
  calc.method = settings.system;
  calc.methodSettings = settings;
  calc.boxTolerances.SetAngleCount(1);
  calc.boxTolerances[0][0].SetSize(illuminants.GetSize());
  calc.ellipseTolerances.SetAngleCount(1);
  calc.ellipseTolerances[0][0].SetSize(illuminants.GetSize());
}

void CopyWords(const CEvaluationArray& results, int32_t* words) {
  for (const CEvaluation& result : results) {
    words = std::copy(result.shade.words.begin(), result.shade.words.end(), words);
  }
}

void CopyDifferences(const CVarexCalc& calc, double* differences) {
  for (int32_t i = 0; i < calc.illuminants.GetSize(); ++i) {
    const CDeltaValues& delta = calc.differences[0][i];
    differences = std::copy(delta.begin(), delta.end(), differences);
  }
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::NeedPlace;
using api::NeedRange;
using api::Numbers;
using api::Refusal;

vrx_status VRX_CALL vrx_judge_boxes(const double box[7], double warning_factor, const double* differences,
                                    int32_t count, int32_t* verdicts, int32_t* totals) {
  return Call([&](Arrays& arrays) {
    const vrx::CBoxTolData tolerance = api::BoxOf(box);
    api::JudgeRows(arrays, tolerance, tolerance[vrx::CBoxTolData::kTotal], api::NeedFactor(warning_factor),
                   differences, count, verdicts, totals, vrx::BoxVerdictBatch);
  });
}

vrx_status VRX_CALL vrx_judge_ellipses(const double ellipse[9], double warning_factor,
                                       const double* differences, int32_t count, int32_t* verdicts,
                                       int32_t* totals) {
  return Call([&](Arrays& arrays) {
    const vrx::CEllipseData tolerance = api::EllipseOf(ellipse);
    api::JudgeRows(arrays, tolerance, tolerance[vrx::CEllipseData::kTotalLimit],
                   api::NeedFactor(warning_factor), differences, count, verdicts, totals,
                   vrx::EllipseVerdictBatch);
  });
}

vrx_status VRX_CALL vrx_ellipse_about(const vrx_system* system, const double lab[3], double ellipse[9]) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    if (!vrx::IsEllipseSystem(settings.system))
      throw Refusal{VRX_OUT_OF_RANGE, "the system has no ellipsoids"};
    const auto numbers = Numbers(lab, 1, 3, "lab");
    NeedPlace(ellipse, "ellipse");
    api::GiveEllipse(vrx::EllipseForStandard(vrx::CLabValues(numbers[0], numbers[1], numbers[2]), settings),
                     ellipse);
  });
}

vrx_status VRX_CALL vrx_fit_ellipse(const double* accepted, int32_t count, int32_t surface,
                                    int32_t at_standard, double ellipse[9]) {
  return Call([&] {
    const auto numbers = Numbers(accepted, count, 3, "accepted");
    NeedRange(surface, 0, 1, "surface");
    NeedRange(at_standard, 0, 1, "at_standard");
    NeedPlace(ellipse, "ellipse");
    std::vector<vrx::LabDifference> differences(numbers.size() / 3);
    for (std::size_t i = 0; i < differences.size(); ++i)
      differences[i] = {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
    const auto centre = at_standard != 0 ? vrx::EllipseCentre::kAtStandard : vrx::EllipseCentre::kFree;
    vrx::CEllipseData fitted;
    if ((surface != 0 ? vrx::FitEllipseSurface : vrx::FitSmallestEllipse)(differences, centre, fitted) == 0)
      throw Refusal{VRX_REFUSED, "the differences leave an axis of the ellipsoid open"};
    api::GiveEllipse(fitted, ellipse);
  });
}

vrx_status VRX_CALL vrx_shade_words(const double* lab, const double* differences, int32_t count,
                                    int32_t* words) {
  return Call([&](Arrays& arrays) {
    const vrx::BatchView<int32_t, 3> out(arrays.Place(words, count, 3, "words"));
    const vrx::BatchView<const double, 3> trials(arrays.Numbers(lab, count, 3, "lab"));
    const vrx::BatchView<const double, 3> deltas(arrays.Numbers(differences, count, 3, "differences"));
    vrx::ShadeBatch(trials, deltas, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_judgement_open(const vrx_system* system, const int32_t* illuminants, int32_t count,
                                       int32_t observer, vrx_handle* judgement) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const vrx::CIllumArray list = api::IlluminantList(illuminants, count, observer);
    NeedPlace(judgement, "judgement");
    auto object = std::make_shared<api::Judgement>();
    api::SetUp(object->calc, *system, settings, list, observer);
    *judgement = api::OpenHandle(std::move(object));
  });
}

vrx_status VRX_CALL vrx_judgement_standard(vrx_handle judgement, const double curve[40]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    vrx::CReflDataArray curves;
    curves.Add(api::CurveOf(curve, "curve"));
    object->calc.SetStandard(curves);
    object->hasStandard = true;
  });
}

vrx_status VRX_CALL vrx_judgement_box(vrx_handle judgement, int32_t index, const double box[7]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedRange(index, 0, object->calc.illuminants.GetSize() - 1, "index");
    object->calc.boxTolerances[0][0][index] = api::BoxOf(box);
    object->calc.judgeByEllipse = false;
  });
}

vrx_status VRX_CALL vrx_judgement_ellipse(vrx_handle judgement, int32_t index, const double ellipse[9]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedRange(index, 0, object->calc.illuminants.GetSize() - 1, "index");
    object->calc.ellipseTolerances[0][0][index] = api::EllipseOf(ellipse);
    object->calc.judgeByEllipse = true;
  });
}

vrx_status VRX_CALL vrx_judgement_warning(vrx_handle judgement, double factor) {
  return Call([&] { api::Find<api::Judgement>(judgement)->calc.warningFactor = api::NeedFactor(factor); });
}

vrx_status VRX_CALL vrx_judgement_trials(vrx_handle judgement, const double* curves, int32_t count,
                                         int32_t* verdicts, double* differences, int32_t* words) {
  return Call([&](Arrays& arrays) {
    const auto object = api::Find<api::Judgement>(judgement);
    if (!object->hasStandard) throw Refusal{VRX_REFUSED, "the judgement has no standard yet"};
    vrx::CVarexCalc& calc = object->calc;
    const auto rows = static_cast<std::size_t>(calc.illuminants.GetSize());
    const auto place = arrays.Place(verdicts, count, rows, "verdicts");
    (void)arrays.PlaceIfWanted(differences, count, 7 * rows, "differences");
    (void)arrays.PlaceIfWanted(words, count, 3 * rows, "words");
    const auto samples = arrays.Numbers(curves, count, vrx::kWavelengths, "curves");
    vrx::CReflDataArray trial;
    trial.SetSize(1);
    vrx::CEvaluationArray results;
    for (std::size_t row = 0; row * vrx::kWavelengths < samples.size(); ++row) {
      std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(row * vrx::kWavelengths), vrx::kWavelengths,
                  trial[0].begin());
      calc.Evaluate(trial, results);
      for (std::size_t i = 0; i < rows; ++i) place[row * rows + i] = results[static_cast<int32_t>(i)].overall;
      if (differences != nullptr) api::CopyDifferences(calc, differences + row * rows * 7);
      if (words != nullptr) api::CopyWords(results, words + row * rows * 3);
    }
  });
}
