// Judgements of many curves: the C interface beside the library's batch, on one thread, with the same outcomes, which are
// compared first; and the batch beside the evaluation context, curve by curve.

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/c_api.h>
#include <vrxmath/judging/evaluation.h>

#include "bench/harness.h"

namespace {

constexpr std::size_t kRows = 100'000, kLamps = 3;

struct Outcome {
  std::vector<std::int32_t> verdicts = std::vector<std::int32_t>(kLamps * kRows);
  std::vector<std::int32_t> words = std::vector<std::int32_t>(3 * kLamps * kRows);
  std::vector<double> differences = std::vector<double>(7 * kLamps * kRows);
  bool operator==(const Outcome&) const = default;
};

std::vector<double> Curves() {
  vrx::bench::Random random(5);
  std::vector<double> curves(40 * kRows);
  for (double& value : curves) value = random.Between(38.0, 42.0);
  return curves;
}

template <std::size_t kWidth, class NUMBER>
vrx::BatchView<NUMBER, kWidth> UnderOf(std::vector<NUMBER>& numbers, std::size_t lamp) {
  return {std::span(numbers).subspan(kWidth * lamp), kWidth * kLamps};
}

void JudgeByBatch(std::span<const double> standard, const std::vector<double>& curves, Outcome& outcome) {
  const vrx::JudgeConditions conditions;
  const vrx::JudgeStandards standards(conditions, vrx::CurveBatch{standard});
  std::vector<vrx::JudgeColumns> columns(kLamps);
  for (std::size_t j = 0; j < kLamps; ++j) {
    columns[j].verdicts = UnderOf<1>(outcome.verdicts, j);
    columns[j].words = UnderOf<3>(outcome.words, j);
    columns[j].differences = UnderOf<7>(outcome.differences, j);
  }
  vrx::JudgeBatch(conditions, standards, {}, vrx::CurveBatch{curves}, columns);
}

void JudgeByC(std::span<const double> standard, const std::vector<double>& curves, Outcome& outcome) {
  const std::int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A, vrx::vrxIllumCWF};
  vrx_system system;
  vrx_handle judgement = 0;
  vrx_default_system(VRX_SYSTEM_CMC, &system);
  vrx_judgement_open(&system, lamps, kLamps, VRX_OBSERVER_10, &judgement);
  vrx_judgement_standard(judgement, standard.data());
  vrx_judgement_trials(judgement, curves.data(), static_cast<std::int32_t>(kRows), outcome.verdicts.data(),
                       outcome.differences.data(), outcome.words.data());
  vrx_close(judgement);
}

void JudgeByContext(std::span<const double> standard, const std::vector<double>& curves, Outcome& outcome) {
  vrx::CVarexCalc calc;
  calc.Normalize();
  calc.method = vrx::vrxSystemCmc;
  calc.methodSettings = vrx::DefaultSettings(vrx::vrxSystemCmc);
  vrx::CReflDataArray curve;
  curve.SetSize(1);
  std::copy_n(standard.begin(), 40, curve[0].begin());
  calc.SetStandard(curve);
  vrx::CEvaluationArray results;
  for (std::size_t row = 0; row < kRows; ++row) {
    std::copy_n(&curves[40 * row], 40, curve[0].begin());
    calc.Evaluate(curve, results);
    for (std::size_t j = 0; j < kLamps; ++j) {
      const auto i = static_cast<std::ptrdiff_t>(j);
      const std::size_t place = kLamps * row + j;
      outcome.verdicts[place] = results[i].overall;
      std::copy_n(calc.differences[0][i].begin(), 7, &outcome.differences[7 * place]);
      std::copy_n(results[i].shade.words.begin(), 3, &outcome.words[3 * place]);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace vrx::bench;
  const std::vector<double> curves = Curves(), standard(40, 40.0);
  Outcome batch, c, context;
  const Work works[] = {[&] { JudgeByBatch(standard, curves, batch); },
                        [&] { JudgeByC(standard, curves, c); },
                        [&] { JudgeByContext(standard, curves, context); }};
  for (const Work& work : works) work();
  Require(batch == c, "the C interface");
  Require(batch == context, "the evaluation context");
  Table table(argc, argv);
  const auto seconds = SecondsOf({works[0], works[1], works[2]}, 7);
  constexpr double kNanoseconds = 1e9 / kRows;
  const std::string judged = "100,000 curves, CMC, 3 illuminants";
  table.Report({"C interface, " + judged, "JudgeBatch", seconds[1] * kNanoseconds, seconds[0] * kNanoseconds,
                "<= 1.1", true});
  table.Report({"JudgeBatch, " + judged, "the evaluation context", seconds[0] * kNanoseconds,
                seconds[2] * kNanoseconds, "", true});
  return 0;
}
