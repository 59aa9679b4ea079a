#include <vrxmath/batch/judgement_batch.h>

#include <vrxmath/judging/shade.h>

namespace vrx {
namespace {

constexpr std::size_t kBlockRows = 8192;

template <class VIEW>
bool RowIsUnset(const VIEW& view, std::size_t row) {
  return IsUnset(view.at(row, 0)) && IsUnset(view.at(row, 1)) && IsUnset(view.at(row, 2));
}

// verdict(row) for every row, on the threads of `run`.
template <class F>
bool ForEachRow(const BatchRun& run, std::size_t rows, const F& f) {
  return ForEachBlock(run, rows, kBlockRows, [&f](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) f(i);
  });
}

}  // namespace

bool BoxVerdictBatch(const CBoxTolData& box, double warningFactor,
                     const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                     const BatchRun& run) {
  RequireSameCount(differences.size(), verdicts.size());
  Interval limits[3], warnings[3];
  for (std::int32_t k = 0; k < 3; ++k) {
    limits[k] = box.Limits(k);
    warnings[k] = ScaledAboutCentre(limits[k], warningFactor);
  }
  return ForEachRow(run, verdicts.size(), [&](std::size_t i) {
    bool inside = !RowIsUnset(differences, i), wellInside = true;
    for (std::size_t k = 0; k < 3; ++k) {
      const double d = differences.at(i, k);
      inside &= limits[k].Contains(d);
      wellInside &= warnings[k].Contains(d);
    }
    verdicts[i] = !inside ? kFail : wellInside ? kPass : kWarning;
  });
}

bool EllipseVerdictBatch(const CEllipseData& ellipse, double warningFactor,
                         const BatchView<const double, 3>& differences, std::span<Verdict> verdicts,
                         const BatchRun& run) {
  RequireSameCount(differences.size(), verdicts.size());
  return ForEachBlock(run, verdicts.size(), kBlockRows, [&](std::size_t from, std::size_t count) {
    CDeltaValues delta;
    for (std::size_t i = from; i < from + count; ++i) {
      for (std::int32_t k = 0; k < 3; ++k) delta[k] = differences.at(i, static_cast<std::size_t>(k));
      verdicts[i] = RowIsUnset(differences, i) ? kFail : ellipse.Judge(delta, warningFactor);
    }
  });
}

bool TotalVerdictBatch(double limit, double warningFactor, std::span<const double> totals,
                       std::span<Verdict> verdicts, const BatchRun& run) {
  RequireSameCount(totals.size(), verdicts.size());
  return ForEachRow(run, verdicts.size(), [&](std::size_t i) {
    verdicts[i] = IsUnset(totals[i]) ? kFail : GradeTotal(totals[i], limit, warningFactor);
  });
}

bool ShadeBatch(const BatchView<const double, 3>& trials, const BatchView<const double, 3>& differences,
                const BatchView<std::int32_t, 3>& words, const BatchRun& run) {
  RequireSameCount(trials.size(), words.size());
  RequireSameCount(differences.size(), words.size());
  return ForEachBlock(run, words.size(), kBlockRows, [&](std::size_t from, std::size_t count) {
    CLabValues trial;
    CDeltaValues delta;
    for (std::size_t i = from; i < from + count; ++i) {
      ShadeWords shade;
      for (std::int32_t k = 0; k < 3; ++k) {
        trial[k] = trials.at(i, static_cast<std::size_t>(k));
        delta[k] = differences.at(i, static_cast<std::size_t>(k));
      }
      if (!RowIsUnset(differences, i)) shade = DescribeShade(trial, delta);
      for (std::size_t k = 0; k < 3; ++k) words.at(i, k) = shade.words[k];
    }
  });
}

}  // namespace vrx
