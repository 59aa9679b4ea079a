// Tolerances, verdicts and words.

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/tolerance/ellipse_fit.h>

#include "c_api/judging.h"

namespace vrx::c_api {
namespace {

using Rows7 = BatchView<const double, 7>;

constexpr int32_t kMostStandards = 4'000'000;

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

// Refuses an angle that no geometry has.
void NeedAngleOfGeometry(double angle) {
  if (angle == JudgeDefaults::kAngle) return;
  for (uint8_t code = 0; code < kAngleCodes; ++code) {
    if (FamilyOfAngle(code) == AngleFamily::kOther && AngleOfCode(code) == angle) return;
  }
  throw Refusal{VRX_OUT_OF_RANGE, "no geometry has the angle of the system"};
}

std::size_t IndexOf(const Judgement& judgement, int32_t index) {
  NeedRange(index, 0, static_cast<int32_t>(judgement.IlluminantCount()) - 1, "index");
  return static_cast<std::size_t>(index);
}

JudgeStandards& NeedStandards(Judgement& judgement) {
  if (!judgement.standards) throw Refusal{VRX_REFUSED, "the judgement has no standard yet"};
  return *judgement.standards;
}

void SetStandards(Judgement& judgement, const double* curves, std::size_t count, const int32_t* geometries) {
  std::vector<double> angles;
  for (std::size_t i = 0; geometries != nullptr && i < count; ++i) {
    NeedRange(geometries[i], 0, kAngleCodes - 1, "geometry");
    angles.push_back(AngleOfCode(static_cast<uint8_t>(geometries[i])));
  }
  const CurveBatch samples{{curves, count * kWavelengths}};
  judgement.standards.emplace(judgement.conditions, samples, std::vector<JudgeLimits>{CBoxTolData()},
                              std::move(angles), Run());
  judgement.own.clear();
}

// Gives a standard limits of its own. Whichever kind they are of, the other standards judge by that too.
void SetOwnLimits(Judgement& judgement, int32_t standard, int32_t index, JudgeLimits limits) {
  const std::size_t place = IndexOf(judgement, index);
  const std::size_t standards = NeedStandards(judgement).size();
  NeedRange(standard, 0, static_cast<int32_t>(standards) - 1, "standard");
  judgement.byEllipsoid = std::holds_alternative<CEllipseData>(limits);
  judgement.own[static_cast<std::size_t>(standard) * judgement.IlluminantCount() + place] = std::move(limits);
}

// The limits in force, as the library takes them.
std::vector<JudgeLimits> LimitsOf(const Judgement& judgement) {
  const std::vector<JudgeLimits>& common = judgement.byEllipsoid ? judgement.ellipsoids : judgement.boxes;
  if (judgement.own.empty()) return common;
  std::vector<JudgeLimits> limits;
  for (std::size_t i = 0; i < judgement.standards->size(); ++i) {
    limits.insert(limits.end(), common.begin(), common.end());
  }
  for (const auto& [place, own] : judgement.own) {
    if (std::holds_alternative<CEllipseData>(own) == judgement.byEllipsoid) limits[place] = own;
  }
  return limits;
}

// Rows of kWidth numbers under illuminant j of m; empty where there is no place for them.
template <std::size_t kWidth, class NUMBER>
BatchView<NUMBER, kWidth> UnderOf(NUMBER* place, std::size_t j, std::size_t m, std::size_t count) {
  if (place == nullptr || count == 0) return {};
  return {std::span(place + kWidth * j, (count - 1) * kWidth * m + kWidth), kWidth * m};
}

std::vector<JudgeColumns> ColumnsOf(const vrx_outcome& outcome, std::size_t m, std::size_t count) {
  std::vector<JudgeColumns> columns(m);
  for (std::size_t j = 0; j < m; ++j) {
    columns[j].verdicts = UnderOf<1>(outcome.verdicts, j, m, count);
    columns[j].components = UnderOf<1>(outcome.components, j, m, count);
    columns[j].totals = UnderOf<1>(outcome.totals, j, m, count);
    columns[j].differences = UnderOf<7>(outcome.differences, j, m, count);
    columns[j].words = UnderOf<3>(outcome.words, j, m, count);
    columns[j].ellipsoidValues = UnderOf<1>(outcome.ellipsoid_values, j, m, count);
    columns[j].brokenLimits = UnderOf<1>(outcome.broken, j, m, count);
    columns[j].breaches = UnderOf<2>(outcome.breaches, j, m, count);
  }
  return columns;
}

// Refuses trials that have no standard: there must be one for all, or one for each.
void NeedPairs(std::size_t standards, std::size_t trials) {
  if (standards != 1 && standards != trials)
    throw Refusal{VRX_BAD_COUNT, "there are neither one standard nor as many as trials"};
}

// The standards of trials by their places, checked.
std::vector<std::size_t> StandardsOf(const int32_t* standardOf, std::size_t standards, std::size_t count) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; standardOf != nullptr && i < count; ++i) {
    NeedRange(standardOf[i], 0, static_cast<int32_t>(standards) - 1, "standard_of");
    places.push_back(static_cast<std::size_t>(standardOf[i]));
  }
  if (standardOf == nullptr) NeedPairs(standards, count);
  return places;
}

// Keeps the places of an outcome apart from each other.
void NeedPlaces(Arrays& arrays, const vrx_outcome& outcome, int32_t count, std::size_t m) {
  (void)arrays.PlaceIfWanted(outcome.verdicts, count, m, "verdicts");
  (void)arrays.PlaceIfWanted(outcome.components, count, m, "components");
  (void)arrays.PlaceIfWanted(outcome.totals, count, m, "totals");
  (void)arrays.PlaceIfWanted(outcome.differences, count, 7 * m, "differences");
  (void)arrays.PlaceIfWanted(outcome.words, count, 3 * m, "words");
  (void)arrays.PlaceIfWanted(outcome.ellipsoid_values, count, m, "ellipsoid_values");
  (void)arrays.PlaceIfWanted(outcome.broken, count, m, "broken");
  (void)arrays.PlaceIfWanted(outcome.breaches, count, 2 * m, "breaches");
}

void JudgeTrialsOf(Arrays& arrays, Judgement& judgement, const double* curves, const int32_t* standardOf,
                   int32_t count, const vrx_outcome& outcome) {
  JudgeStandards& standards = NeedStandards(judgement);
  const std::size_t m = judgement.IlluminantCount();
  NeedPlaces(arrays, outcome, count, m);
  const auto samples = arrays.Numbers(curves, count, kWavelengths, "curves");
  const std::size_t rows = samples.size() / kWavelengths;
  const std::vector<std::size_t> places = StandardsOf(standardOf, standards.size(), rows);
  if (rows == 0) return;
  standards.limits = LimitsOf(judgement);
  JudgeBatch(judgement.conditions, standards, places, CurveBatch{samples}, ColumnsOf(outcome, m, rows),
             Run());
}

}  // namespace

JudgeStandards& StandardsFor(Judgement& judgement, std::size_t trials) {
  JudgeStandards& standards = NeedStandards(judgement);
  NeedPairs(standards.size(), trials);
  standards.limits = LimitsOf(judgement);
  return standards;
}

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
    vrx::JudgeConditions& conditions = object->conditions;
    conditions.illuminants.assign(list.begin(), list.end());
    api::NeedAngleOfGeometry(system->angle);
    conditions.difference = settings;
    conditions.observer = observer;
    conditions.angle = system->angle;
    object->boxes.assign(conditions.illuminants.size(), vrx::CBoxTolData());
    object->ellipsoids.assign(conditions.illuminants.size(), vrx::CEllipseData());
    *judgement = api::OpenHandle(std::move(object));
  });
}

vrx_status VRX_CALL vrx_judgement_standard(vrx_handle judgement, const double curve[40]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    api::SetStandards(*object, Numbers(curve, 1, vrx::kWavelengths, "curve").data(), 1, nullptr);
  });
}

vrx_status VRX_CALL vrx_judgement_standards(vrx_handle judgement, const double* curves,
                                            const int32_t* geometries, int32_t count) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedRange(count, 1, api::kMostStandards, "count");
    const auto samples = Numbers(curves, count, vrx::kWavelengths, "curves");
    api::SetStandards(*object, samples.data(), static_cast<std::size_t>(count), geometries);
  });
}

vrx_status VRX_CALL vrx_judgement_box(vrx_handle judgement, int32_t index, const double box[7]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    const std::size_t place = api::IndexOf(*object, index);
    object->boxes[place] = api::BoxOf(box);
    object->byEllipsoid = false;
  });
}

vrx_status VRX_CALL vrx_judgement_ellipse(vrx_handle judgement, int32_t index, const double ellipse[9]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    const std::size_t place = api::IndexOf(*object, index);
    object->ellipsoids[place] = api::EllipseOf(ellipse);
    object->byEllipsoid = true;
  });
}

vrx_status VRX_CALL vrx_judgement_system_ellipses(vrx_handle judgement) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    if (!vrx::IsEllipseSystem(object->conditions.difference.system)) {
      throw Refusal{VRX_OUT_OF_RANGE, "the system has no ellipsoids"};
    }
    object->ellipsoids.assign(object->IlluminantCount(), vrx::SystemEllipsoid());
    object->byEllipsoid = true;
  });
}

vrx_status VRX_CALL vrx_judgement_standard_box(vrx_handle judgement, int32_t standard, int32_t index,
                                               const double box[7]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    api::SetOwnLimits(*object, standard, index, api::BoxOf(box));
  });
}

vrx_status VRX_CALL vrx_judgement_standard_ellipse(vrx_handle judgement, int32_t standard, int32_t index,
                                                   const double ellipse[9]) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    api::SetOwnLimits(*object, standard, index, api::EllipseOf(ellipse));
  });
}

vrx_status VRX_CALL vrx_judgement_warning(vrx_handle judgement, double factor) {
  return Call(
      [&] { api::Find<api::Judgement>(judgement)->conditions.warningFactor = api::NeedFactor(factor); });
}

vrx_status VRX_CALL vrx_judgement_rule(vrx_handle judgement, int32_t rule) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedRange(rule, VRX_VERDICT_WORSE, VRX_VERDICT_COMPONENTS, "rule");
    object->conditions.rule = static_cast<vrx::VerdictRule>(rule);
  });
}

vrx_status VRX_CALL vrx_judgement_grade(vrx_handle judgement, int32_t scale, double least) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedRange(scale, VRX_SCALE_CHANGE, VRX_SCALE_STAINING, "scale");
    api::NeedWithin(least, 0.0, 5.0, "the least grade");
    if (least != 0.0 && !vrx::IsHalfStep(least))
      throw Refusal{VRX_OUT_OF_RANGE, "the least grade is no half step from 1 to 5"};
    object->conditions.grade = {static_cast<vrx::GreyScale>(scale), least};
  });
}

vrx_status VRX_CALL vrx_judgement_inconstancy(vrx_handle judgement, double most) {
  return Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    api::NeedWithin(most, 0.0, api::kLargestReading, "the largest inconstancy");
    if (object->IlluminantCount() < 2)
      throw Refusal{VRX_REFUSED, "the inconstancy needs two illuminants or more"};
    object->conditions.inconstancy = {most};
  });
}

vrx_status VRX_CALL vrx_judgement_trials(vrx_handle judgement, const double* curves, int32_t count,
                                         int32_t* verdicts, double* differences, int32_t* words) {
  return Call([&](Arrays& arrays) {
    const auto object = api::Find<api::Judgement>(judgement);
    api::NeedStandards(*object);
    (void)api::Place(verdicts, count, object->IlluminantCount(), "verdicts");
    vrx_outcome outcome{};
    outcome.verdicts = verdicts;
    outcome.differences = differences;
    outcome.words = words;
    api::JudgeTrialsOf(arrays, *object, curves, nullptr, count, outcome);
  });
}

vrx_status VRX_CALL vrx_judgement_trials_of(vrx_handle judgement, const double* curves,
                                            const int32_t* standard_of, int32_t count,
                                            const vrx_outcome* outcome) {
  return Call([&](Arrays& arrays) {
    const auto object = api::Find<api::Judgement>(judgement);
    NeedPlace(outcome, "outcome");
    NeedRange(outcome->size, static_cast<int32_t>(sizeof(vrx_outcome)), INT32_MAX, "size");
    api::JudgeTrialsOf(arrays, *object, curves, standard_of, count, *outcome);
  });
}
