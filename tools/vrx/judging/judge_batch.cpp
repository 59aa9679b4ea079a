// Many curves against one standard at once, by the batch functions: the same bits as one by one, for less.

#include <algorithm>
#include <array>
#include <cmath>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/foundation/ks_data.h>

#include "tools/vrx/judging/judge.h"

namespace vrx::tool {
namespace {

// Table `i` of several of as many rows: kWidth columns, one behind the other.
template <std::size_t kWidth, class NUMBER>
BatchView<NUMBER, kWidth> TableIn(std::vector<NUMBER>& numbers, std::size_t i, std::size_t rows) {
  typename BatchView<NUMBER, kWidth>::Columns columns;
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

bool AreThreeUnset(const BatchView<double, 7>& rows, std::size_t row) {
  return IsUnset(rows.at(row, 0)) && IsUnset(rows.at(row, 1)) && IsUnset(rows.at(row, 2));
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
  for (std::vector<Verdict>* const verdicts : {&batch_.components, &batch_.totals}) {
    verdicts->resize(rows * tables);
  }
  batch_.words.resize(3 * rows * tables);
  std::vector<BatchView<double, 3>> xyz;
  batch_.tables.resize(tables);
  for (std::size_t i = 0; i < tables; ++i) {
    xyz.push_back(TableIn<3>(batch_.xyz, i, rows));
    batch_.tables[i] = {TableIn<5>(batch_.lab, i, rows),
                        TableIn<7>(batch_.differences, i, rows),
                        TableIn<7>(batch_.labDifferences, i, rows),
                        std::span(batch_.components).subspan(i * rows, rows),
                        std::span(batch_.totals).subspan(i * rows, rows),
                        TableIn<3>(batch_.words, i, rows)};
  }
  TristimulusBatch(settings_.illuminants, settings_.observer, {curves}, xyz);
  for (std::size_t i = 0; i < tables; ++i) {
    FillDifferences(i, xyz[i]);
    FillVerdicts(i);
  }
  calc_.reflectanceA.RemoveAll();
  calc_.valuesA.SetSize(1);
  calc_.valuesA[0].SetSize(static_cast<std::int32_t>(tables));
  calc_.labDifferences.SetSize(1);
  calc_.labDifferences[0].SetSize(static_cast<std::int32_t>(tables));
}

// The differences of all curves under the illuminant at index `i`, in L*a*b* and in the system.
void Judge::FillDifferences(std::size_t i, const BatchView<double, 3>& xyz) {
  const vrxIlluminant illuminant = settings_.illuminants[i];
  const std::int32_t system = settings_.difference.system;
  const BatchView<double, 5>& lab = batch_.tables[i].lab;
  const BatchView<double, 7>&differences = batch_.tables[i].differences,
                          &labDifferences = batch_.tables[i].labDifferences;
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

// The verdicts and words of all curves under the illuminant at index `i`.
void Judge::FillVerdicts(std::size_t i) {
  const Batch::Table& table = batch_.tables[i];
  const double warningFactor = calc_.warningFactor;
  const BatchView<const double, 3> differences = table.differences.Numbers<0, 3>();
  const BatchView<const double, 3> labDifferences = table.labDifferences.Numbers<0, 3>();
  const std::span<const double> totals(table.differences.first(CDeltaValues::kTotal), differences.size());
  if (calc_.judgeByEllipse) {
    EllipseVerdictBatch(Ellipse(i), warningFactor, labDifferences, table.components);
    TotalVerdictBatch(Ellipse(i)[CEllipseData::kTotalLimit], warningFactor, totals, table.totals);
  } else {
    BoxVerdictBatch(Box(i), warningFactor, differences, table.components);
    TotalVerdictBatch(Box(i)[CBoxTolData::kTotal], warningFactor, totals, table.totals);
  }
  ShadeBatch(table.lab.Numbers<0, 3>(), labDifferences, table.words);
}

// Whether the batch functions judge the row as the evaluation context does, to which only a difference whose seven elements
// are all unset is unset, and to which the box of L*C*h is a sector about the standard's hue.
bool Judge::IsJudged(const Batch::Table& table, std::size_t row) const {
  if (calc_.method == vrxSystemLch && !calc_.judgeByEllipse) return false;
  return !AreThreeUnset(table.differences, row) && !AreThreeUnset(table.labDifferences, row) &&
         !IsUnset(table.differences.at(row, CDeltaValues::kTotal));
}

void Judge::TakeRow(std::size_t i, std::size_t row, IlluminantJudgement& judgement) {
  const Batch::Table& table = batch_.tables[i];
  if (IsJudged(table, row)) {
    judgement.available = true;
    judgement.difference = DifferenceAt(table.differences, row);
    for (std::size_t k = 0; k < 3; ++k) judgement.words[k] = static_cast<ShadeWord>(table.words.at(row, k));
    judgement.components = table.components[row];
    judgement.total = table.totals[row];
    judgement.overall = std::min(judgement.components, judgement.total);
  } else {
    judgement = JudgeOne(i, row);
  }
  judgement.ellipseValue = calc_.judgeByEllipse && judgement.available
                               ? Ellipse(i).Value(Named(DifferenceAt(table.labDifferences, row)))
                               : kUnset;
}

// The same by the evaluation context.
IlluminantJudgement Judge::JudgeOne(std::size_t i, std::size_t row) {
  const auto at = static_cast<std::int32_t>(i);
  const CDeltaValues difference(Named(DifferenceAt(batch_.tables[i].differences, row)));
  const BatchView<double, 5>& lab = batch_.tables[i].lab;
  calc_.valuesA[0][at].lab.SetValues(
      {lab.at(row, 0), lab.at(row, 1), lab.at(row, 2), lab.at(row, 3), lab.at(row, 4)});
  calc_.labDifferences[0][at].SetValues(Named(DifferenceAt(batch_.tables[i].labDifferences, row)));
  return JudgementOf(calc_.JudgeAt(0, 0, at, difference), difference, calc_.judgeByEllipse);
}

void Judge::TakeCurve(std::size_t row, Judgement& judgement) {
  TakeSettings(judgement);
  for (std::size_t i = 0; i < judgement.under.size(); ++i) TakeRow(i, row, judgement.under[i]);
}

}  // namespace vrx::tool
