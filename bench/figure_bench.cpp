// Densities, colour inconstancy and Munsell notations of many samples: a batch beside single calls, on one thread. The answers are
// compared to the last bit first.

#include <algorithm>
#include <vector>

#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/colorimetry/munsell.h>

#include "bench/harness.h"

namespace {

constexpr std::size_t kRows = 20'000;

std::vector<vrx::CReflData> SingleCurves(const std::vector<double>& curves) {
  std::vector<vrx::CReflData> single(kRows);
  for (std::size_t i = 0; i < kRows; ++i)
    std::copy_n(curves.begin() + static_cast<std::ptrdiff_t>(40 * i), 40, single[i].begin());
  return single;
}

void CompareDensities(const std::vector<double>& curves, const std::vector<vrx::CReflData>& single,
                      vrx::bench::Table& table) {
  std::vector<double> batch(4 * kRows), called(4 * kRows);
  const auto ours = [&] { vrx::DensityBatch(vrx::DensityStatus::kT, {curves}, batch); };
  const auto theirs = [&] {
    for (std::size_t i = 0; i < kRows; ++i) {
      const vrx::Densities d = vrx::DensitiesOf(single[i], vrx::DensityStatus::kT);
      std::ranges::copy(std::array{d.red, d.green, d.blue, d.visual},
                        called.begin() + static_cast<std::ptrdiff_t>(4 * i));
    }
  };
  ours(), theirs();
  vrx::bench::Require(batch == called, "densities");
  table.Compare("densities", "single calls", ours, theirs, 1e9 / kRows);
}

void CompareInconstancies(const std::vector<double>& curves, const std::vector<vrx::CReflData>& single,
                          vrx::bench::Table& table) {
  const vrx::CDifferenceSettings settings = vrx::DefaultSettings(vrx::vrxSystemCie2000);
  std::vector<double> batch(kRows), called(kRows);
  const auto ours = [&] {
    vrx::InconstancyBatch(vrx::vrxIllumD65, vrx::vrxIllumA, vrx::kObserver10, {curves}, settings, batch);
  };
  const auto theirs = [&] {
    for (std::size_t i = 0; i < kRows; ++i) {
      called[i] =
          vrx::InconstancyIndex(vrx::vrxIllumD65, vrx::vrxIllumA, vrx::kObserver10, single[i], settings);
    }
  };
  ours(), theirs();
  vrx::bench::Require(batch == called, "inconstancy");
  table.Compare("colour inconstancy, CIEDE2000", "single calls", ours, theirs, 1e9 / kRows);
}

void CompareMunsell(vrx::bench::Table& table) {
  constexpr std::size_t kColors = 500;
  vrx::bench::Random random(7);
  std::vector<double> xyz, batch(4 * kColors), called(4 * kColors);
  for (std::size_t i = 0; i < kColors; ++i) {
    const double Y = random.Between(5.0, 80.0);
    xyz.insert(xyz.end(), {Y * random.Between(0.9, 1.05), Y, Y * random.Between(0.9, 1.3)});
  }
  const auto ours = [&] { vrx::MunsellBatch(xyz, batch); };
  const auto theirs = [&] {
    for (std::size_t i = 0; i < kColors; ++i) {
      const vrx::MunsellColor found = vrx::MunsellFromXyz({xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]});
      std::ranges::copy(std::array{found.hue, found.value, found.chroma, found.isExtrapolated ? 1.0 : 0.0},
                        called.begin() + static_cast<std::ptrdiff_t>(4 * i));
    }
  };
  ours(), theirs();
  vrx::bench::Require(batch == called, "Munsell notations");
  table.Compare("Munsell notations", "single calls", ours, theirs, 1e9 / kColors);
}

}  // namespace

int main(int argc, char** argv) {
  vrx::bench::Random random(29);
  std::vector<double> curves(40 * kRows);
  for (double& sample : curves) sample = random.Between(2.0, 95.0);
  const std::vector<vrx::CReflData> single = SingleCurves(curves);
  vrx::bench::Table table(argc, argv);
  CompareDensities(curves, single, table);
  CompareInconstancies(curves, single, table);
  CompareMunsell(table);
}
