#include <vrxmath/batch/judgement_batch.h>

#include <algorithm>

#include <vrxmath/batch/judgement_kernels.h>

namespace vrx {
namespace {

constexpr std::size_t kJudgementBlockRows = 8192;

const JudgementKernels& JudgementsInUse() {
  return CurrentKernels<JudgementKernels>();
}

Column<Verdict> ColumnOf(std::span<Verdict> verdicts, std::size_t from) {
  return {verdicts.data() + from, 1};
}

}  // namespace

bool BoxVerdictBatch(const CBoxTolData& box, double warningFactor,
                     const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                     const BatchRun& run) {
  RequireSameCount(differences.size(), verdicts.size());
  BoxLimits limits;
  for (std::int32_t k = 0; k < 3; ++k) {
    limits.tolerance[k] = box.Limits(k);
    limits.warning[k] = ScaledAboutCentre(limits.tolerance[k], warningFactor);
  }
  return ForEachBlock(run, verdicts.size(), kJudgementBlockRows, [&](std::size_t from, std::size_t count) {
    JudgementsInUse().box(limits, ColumnsOf(differences, from, count).data(), ColumnOf(verdicts, from),
                          count);
  });
}

bool EllipseVerdictBatch(const CEllipseData& ellipse, double warningFactor,
                         const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                         const BatchRun& run) {
  RequireSameCount(differences.size(), verdicts.size());
  const EllipseTerms terms = TermsOf(ellipse);
  const double warning = EllipseWarning(warningFactor);
  return ForEachBlock(run, verdicts.size(), kJudgementBlockRows, [&](std::size_t from, std::size_t count) {
    JudgementsInUse().ellipse(terms, warning, ColumnsOf(differences, from, count).data(),
                              ColumnOf(verdicts, from), count);
  });
}

bool TotalVerdictBatch(double limit, double warningFactor, std::span<const double> totals,
                       std::span<Verdict> verdicts, const BatchRun& run) {
  RequireSameCount(totals.size(), verdicts.size());
  return ForEachBlock(run, verdicts.size(), kJudgementBlockRows, [&](std::size_t from, std::size_t count) {
    JudgementsInUse().total(limit, warningFactor, {totals.data() + from, 1}, ColumnOf(verdicts, from), count);
  });
}

bool ShadeBatch(const BatchView<const double, 3>& trials, const BatchView<const double, 3>& differences,
                const BatchView<std::int32_t, 3>& words, const BatchRun& run) {
  RequireSameCount(trials.size(), words.size());
  RequireSameCount(differences.size(), words.size());
  return ForEachBlock(run, words.size(), kJudgementBlockRows, [&](std::size_t from, std::size_t count) {
    std::array<Column<const double>, 6> colors;
    std::ranges::copy(ColumnsOf(trials, from, count), colors.begin());
    std::ranges::copy(ColumnsOf(differences, from, count), colors.begin() + 3);
    JudgementsInUse().shade(colors.data(), ColumnsOf(words, from, count).data(), count);
  });
}

}  // namespace vrx
