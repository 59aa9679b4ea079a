// Threads, progress, and what is refused.

#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

std::vector<double> Ramp(std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<double>(i % 9973) * 0.01;
  return values;
}

TEST(BatchRun, ResultsDoNotDependOnTheCountOfThreads) {
  const std::vector<double> curves = Ramp(40 * 30'011);
  std::vector<double> one(3 * 30'011), many(one.size());
  EXPECT_TRUE(TristimulusBatch(vrxIllumA, 0, CurveBatch{curves}, one));
  for (const unsigned threads : {0u, 2u, 3u, 16u}) {
    std::fill(many.begin(), many.end(), 0.0);
    EXPECT_TRUE(TristimulusBatch(vrxIllumA, 0, CurveBatch{curves}, many, {threads, nullptr}));
    EXPECT_EQ(many, one) << threads;
  }
}

TEST(BatchRun, ProgressStopsTheWorkAndItsExceptionsComeOut) {
  const std::vector<double> xyz = Ramp(3 * 100'000);
  std::vector<double> lab(5 * 100'000);
  std::size_t calls = 0, last = 0;
  const auto count = [&](std::size_t done) {
    EXPECT_GE(done, last);
    last = done;
    return ++calls < 3;
  };
  EXPECT_FALSE(XyzToLabBatch(vrxIllumD65, 1, xyz, lab, {1, count}));
  EXPECT_EQ(calls, 3u);
  const auto fail = [](std::size_t) -> bool { throw std::runtime_error("enough"); };
  for (const unsigned threads : {1u, 4u}) {
    EXPECT_THROW(XyzToLabBatch(vrxIllumD65, 1, xyz, lab, {threads, fail}), std::runtime_error);
  }
}

TEST(BatchRun, NothingIsDoneForNoRowsAndWhatDoesNotFitIsRefused) {
  std::vector<double> xyz = Ramp(30), lab(50, 7.0), none;
  std::vector<NearestMatch> matches(10);
  std::vector<Verdict> verdicts(3);
  const CDifferenceSettings cmc = DefaultSettings(vrxSystemCmc);
  const ColorBatch colors = {{}, BatchView<const double, 5>(lab)};
  EXPECT_TRUE(XyzToLabBatch(vrxIllumD65, 1, none, BatchView<double, 5>(none)));
  const std::function<void()> refused[] = {
      [&] { XyzToLabBatch(vrxIllumD65, 1, xyz, BatchView<double, 5>(std::span(lab).first(45))); },
      [&] {
        XyzToLabBatch(static_cast<vrxIlluminant>(kBuiltInIlluminants), 1, xyz, BatchView<double, 5>(lab));
      },
      [&] { BatchView<double, 3>(std::span(xyz).first(29)); },
      [&] { BatchView<double, 3>(xyz, 2); },
      [&] {
        BatchView<double, 3>({std::span(xyz), std::span(xyz), std::span(lab)});
      },
      [&] {
        TristimulusBatch(vrxIllumD65, 1, CurveBatch{xyz, 39}, xyz);
      },
      [&] { TristimulusBatch(vrxIllumD65, 1, CurveBatch{lab}, xyz); },
      [&] {
        DifferenceBatch({13, {}}, 0.0, colors, colors, BatchView<double, 7>(xyz));
      },
      [&] {
        DifferenceBatch(DefaultSettings(vrxSystemFmc2), 0.0, colors, colors,
                        BatchView<double, 7>(std::span(lab).first(49)));
      },
      [&] { TotalDifferenceBatch(cmc, 0.0, colors, colors, std::span(xyz).first(9)); },
      [&] { FindNearestBatch(cmc, 0.0, {}, {}, 1, matches); },
      [&] {
        FindNearestBatch(cmc, 0.0, {&colors, 1}, {&colors, 1}, 3, matches);
      },
      [&] { TotalVerdictBatch(1.5, 0.75, xyz, verdicts); },
  };
  for (std::size_t i = 0; i < std::size(refused); ++i) EXPECT_THROW(refused[i](), CInvalidArgException) << i;
  EXPECT_EQ(lab, std::vector<double>(50, 7.0));
}

}  // namespace
}  // namespace vrx
