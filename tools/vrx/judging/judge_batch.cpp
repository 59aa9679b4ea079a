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

Difference DifferenceAt(const BatchView<double, 7>& rows, std::size_t row) {
  return {rows.at(row, 0), rows.at(row, 1), rows.at(row, 2), rows.at(row, 3),
          rows.at(row, 4), rows.at(row, 5), rows.at(row, 6)};
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
                        TableIn<7>(batch_.labDifferences, i, rows)};
  }
  TristimulusBatch(settings_.illuminants, settings_.observer, {curves}, xyz);
  for (std::size_t i = 0; i < tables; ++i) FillDifferences(i, xyz[i]);
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
  const auto& [lab, differences, labDifferences] = batch_.tables[i];
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

void Judge::TakeCurve(std::size_t row, const CurveRow& trial, Judgement& judgement) {
  TakeNames(trial, judgement);
  for (std::size_t i = 0; i < judgement.under.size(); ++i) {
    const auto at = static_cast<std::int32_t>(i);
    const auto& [lab, differences, labDifferences] = batch_.tables[i];
    calc_.valuesA[0][at].lab.SetValues(
        {lab.at(row, 0), lab.at(row, 1), lab.at(row, 2), lab.at(row, 3), lab.at(row, 4)});
    calc_.labDifferences[0][at].SetValues(DifferenceAt(labDifferences, row));
    const CDeltaValues difference(DifferenceAt(differences, row));
    IlluminantJudgement& under = judgement.under[i];
    under = JudgementOf(calc_.JudgeAt(0, 0, at, difference), difference, calc_.judgeByEllipse);
    under.ellipseValue =
        calc_.judgeByEllipse && under.available ? Ellipse(i).Value(LabDifference(i)) : kUnset;
  }
}

}  // namespace vrx::tool
