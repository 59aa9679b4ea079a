// The batch functions as a C++ host calls them, for bench/python/ratios.py, which measures the Python module beside them over the
// same arrays.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/tristimulus_batch.h>

using namespace vrx;

namespace {

void TotalsOf(const double* standards, const double* samples, double* totals, std::size_t rows) {
  const auto view = [rows](const double* lab) {
    return ColorBatch{{}, BatchView<const double, 5>(std::span(lab, 5 * rows))};
  };
  TotalDifferenceBatch(DefaultSettings(vrxSystemCie2000), 45.0, view(standards), view(samples),
                       std::span(totals, rows));
}

// L*, a*, b* with the chroma and hue that the differences are computed from.
void Complete(const double* lab, double* complete, std::size_t rows) {
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t k = 0; k < 3; ++k) complete[5 * i + k] = lab[3 * i + k];
  }
  ChromaHueBatch(BatchView<double, 5>(std::span(complete, 5 * rows)));
}

}  // namespace

extern "C" {

/// Curves of 40 to X, Y, Z under D65 and the 10 degree observer.
void PeerTristimulus(const double* curves, double* xyz, std::size_t rows) {
  const vrxIlluminant illuminants[] = {vrxIllumD65};
  const BatchView<double, 3> targets[] = {BatchView<double, 3>(std::span(xyz, 3 * rows))};
  TristimulusBatch(illuminants, kObserver10, CurveBatch{std::span(curves, 40 * rows), 40},
                   std::span<const BatchView<double, 3>>(targets));
}

/// CIEDE2000 of pairs of five coordinates.
void PeerDelta5(const double* standards, const double* samples, double* totals, std::size_t rows) {
  TotalsOf(standards, samples, totals, rows);
}

/// CIEDE2000 of pairs of L*, a*, b*, in blocks that stay in the cache.
void PeerDelta3(const double* standards, const double* samples, double* totals, std::size_t rows) {
  constexpr std::size_t kBlock = 2048;
  static double complete[2][5 * kBlock];
  for (std::size_t from = 0; from < rows; from += kBlock) {
    const std::size_t count = rows - from < kBlock ? rows - from : kBlock;
    Complete(standards + 3 * from, complete[0], count);
    Complete(samples + 3 * from, complete[1], count);
    TotalsOf(complete[0], complete[1], totals + from, count);
  }
}

/// Curves judged by CMC (2:1), total 1.5, against one of 40 percent under D65, A and CWF: rows of three illuminants.
void PeerJudge(const double* curves, double* differences, std::int32_t* verdicts, std::size_t rows) {
  const JudgeConditions conditions;
  const std::vector<double> standard(40, 40.0);
  const JudgeStandards standards(conditions, CurveBatch{standard}, {TotalLimit(JudgeDefaults::kTolerance)});
  std::vector<std::int32_t> words(9 * rows), broken(3 * rows);
  std::vector<double> breaches(6 * rows);
  std::vector<JudgeColumns> columns(3);
  for (std::size_t j = 0; j < 3; ++j) {
    columns[j].differences = BatchView<double, 7>(std::span(differences, 21 * rows).subspan(7 * j), 21);
    columns[j].verdicts = BatchView<std::int32_t, 1>(std::span(verdicts, 3 * rows).subspan(j), 3);
    columns[j].words = BatchView<std::int32_t, 3>(std::span(words).subspan(3 * j), 9);
    columns[j].brokenLimits = BatchView<std::int32_t, 1>(std::span(broken).subspan(j), 3);
    columns[j].breaches = BatchView<double, 2>(std::span(breaches).subspan(2 * j), 6);
  }
  JudgeBatch(conditions, standards, {}, CurveBatch{std::span(curves, 40 * rows)}, columns);
}

}  // extern "C"
