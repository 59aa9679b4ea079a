// Many curves against one standard at once, by the batch functions: the same bits as one by one, for less.

#include <algorithm>
#include <array>
#include <cmath>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/ks_data.h>

#include "tools/vrx/judging/judge.h"

namespace vrx::tool {
namespace {

// Table `i` of several of as many rows: kWidth columns, one behind the other.
template <std::size_t kWidth>
BatchView<double, kWidth> TableIn(std::vector<double>& numbers, std::size_t i, std::size_t rows) {
  typename BatchView<double, kWidth>::Columns columns;
  for (std::size_t k = 0; k < kWidth; ++k) {
    columns[k] = std::span(numbers).subspan((i * kWidth + k) * rows, rows);
  }
  return columns;
}

// A colour as a batch of one row.
struct OneColor {
  std::array<double, 3> xyz;
  std::array<double, 5> lab;

  explicit OneColor(const Color& color)
      : xyz{color.xyz.X, color.xyz.Y, color.xyz.Z},
        lab{color.lab.L, color.lab.a, color.lab.b, color.lab.C, color.lab.h} {}
  ColorBatch Batch() const { return {{std::span(xyz)}, {std::span(lab)}}; }
};

std::array<double, 7> DifferenceAt(const BatchView<double, 7>& rows, std::size_t row) {
  return {rows.at(row, 0), rows.at(row, 1), rows.at(row, 2), rows.at(row, 3),
          rows.at(row, 4), rows.at(row, 5), rows.at(row, 6)};
}

Difference Named(const std::array<double, 7>& d) {
  return {d[0], d[1], d[2], d[3], d[4], d[5], d[6]};
}

Lab LabAt(const BatchView<double, 5>& rows, std::size_t row) {
  return {rows.at(row, 0), rows.at(row, 1), rows.at(row, 2), rows.at(row, 3), rows.at(row, 4)};
}

bool AreUnset(const std::array<double, 7>& difference) {
  return std::ranges::all_of(difference, [](double element) { return IsUnset(element); });
}

}  // namespace

void Judge::EvaluateCurves(std::span<const double> curves) {
  const std::size_t rows = curves.size() / kWavelengths, tables = settings_.illuminants.size();
  batch_.xyz.resize(3 * rows * tables);
  for (std::vector<double>* const coordinates : {&batch_.lab, &batch_.coordinates}) {
    coordinates->resize(5 * rows * tables);
  }
  for (std::vector<double>* const differences : {&batch_.differences, &batch_.labDifferences}) {
    differences->resize(7 * rows * tables);
  }
  std::vector<BatchView<double, 3>> xyz;
  batch_.tables.resize(tables);
  for (std::size_t i = 0; i < tables; ++i) {
    xyz.push_back(TableIn<3>(batch_.xyz, i, rows));
    batch_.tables[i] = {TableIn<5>(batch_.lab, i, rows), TableIn<7>(batch_.differences, i, rows),
                        TableIn<7>(batch_.labDifferences, i, rows), BoxLimits(Box(i), calc_.warningFactor)};
  }
  TristimulusBatch(settings_.illuminants, settings_.observer, {curves}, xyz);
  for (std::size_t i = 0; i < tables; ++i) FillDifferences(i, xyz[i]);
  calc_.reflectanceA.RemoveAll();
  calc_.valuesA.SetSize(1);
  calc_.valuesA[0].SetSize(static_cast<std::int32_t>(tables));
}

// The differences of all curves under the illuminant at index `i`, in L*a*b* and in the system.
void Judge::FillDifferences(std::size_t i, const BatchView<double, 3>& xyz) {
  const vrxIlluminant illuminant = settings_.illuminants[i];
  const std::int32_t system = settings_.difference.system;
  const auto& [lab, differences, labDifferences, box] = batch_.tables[i];
  const double angle = std::fabs(calc_.angles.GetCount() > 0 ? calc_.angles.GetAngle(0) : AngleOfCode(0));
  Color standard = StandardColor(i).Values();
  CoordinatesBatch(vrxSystemLab, illuminant, settings_.observer, xyz, lab);
  DifferenceBatch(DefaultSettings(vrxSystemLab), angle, OneColor(standard).Batch(), {xyz, lab},
                  labDifferences);
  if (FindDifferenceSystem(system)->space == CoordinateSpace::kLab) {
    DifferenceBatch(settings_.difference, angle, OneColor(standard).Batch(), {xyz, lab}, differences);
    return;
  }
  const auto coordinates = TableIn<5>(batch_.coordinates, i, xyz.size());
  CoordinatesBatch(system, illuminant, settings_.observer, xyz, coordinates);
  if (IsUnset(standard.xyz) || !FillCoordinates(system, illuminant, settings_.observer, standard)) {
    standard = CColorValues().Values();
  }
  DifferenceBatch(settings_.difference, angle, OneColor(standard).Batch(), {xyz, coordinates}, differences);
}

Judge::BoxLimits::BoxLimits(const CBoxTolData& box, double warningFactor) : total(box[CBoxTolData::kTotal]) {
  for (std::size_t k = 0; k < outer.size(); ++k) {
    outer[k] = box.Limits(static_cast<std::int32_t>(k));
    inner[k] = ScaledAboutCentre(outer[k], warningFactor);
  }
}

// Without early ends: few differences of a lot end at the same limit.
Verdict Judge::BoxLimits::Grade(const std::array<double, 7>& difference) const {
  bool inside = true, wellInside = true;
  for (std::size_t k = 0; k < outer.size(); ++k) {
    inside &= outer[k].Contains(difference[k]);
    wellInside &= inner[k].Contains(difference[k]);
  }
  return !inside ? kFail : wellInside ? kPass : kWarning;
}

// What CVarexCalc::JudgeAt gives.
IlluminantJudgement Judge::JudgementAt(std::size_t i, std::size_t row) {
  const Batch::Table& table = batch_.tables[i];
  const std::array<double, 7> labDifference = DifferenceAt(table.labDifferences, row);
  IlluminantJudgement judgement;
  judgement.difference = DifferenceAt(table.differences, row);
  judgement.available = !AreUnset(labDifference) && !AreUnset(judgement.difference);
  if (!judgement.available) return judgement;
  const Lab lab = LabAt(table.lab, row);
  const double warningFactor = calc_.warningFactor, total = judgement.difference.back();
  judgement.words = DescribeShade(lab, Named(labDifference)).words;
  if (calc_.judgeByEllipse) {
    const CEllipseData& ellipse = Ellipse(i);
    judgement.components = ellipse.Judge(Named(labDifference), warningFactor);
    judgement.total = ellipse.JudgeTotal(total, warningFactor);
    judgement.ellipseValue = ellipse.Value(Named(labDifference));
  } else {
    judgement.components = calc_.method == vrxSystemLch ? JudgeSector(i, lab, judgement.difference)
                                                        : table.box.Grade(judgement.difference);
    judgement.total = GradeTotal(total, table.box.total, warningFactor);
  }
  judgement.overall = std::min(judgement.components, judgement.total);
  return judgement;
}

// The box of L*C*h is a sector about the hue of the standard, which the evaluation context knows.
Verdict Judge::JudgeSector(std::size_t i, const Lab& trial, const std::array<double, 7>& difference) {
  const auto at = static_cast<std::int32_t>(i);
  calc_.valuesA[0][at].lab.SetValues(trial);
  return calc_.JudgeBox(0, 0, at, CDeltaValues(Named(difference)));
}

void Judge::TakeCurve(std::size_t row, Judgement& judgement) {
  TakeSettings(judgement);
  for (std::size_t i = 0; i < judgement.under.size(); ++i) judgement.under[i] = JudgementAt(i, row);
}

}  // namespace vrx::tool
