#include <vrxmath/batch/difference_batch.h>

#include <vrxmath/batch/difference_kernels.h>
#include <vrxmath/platform/exceptions.h>

namespace vrx {
namespace {

constexpr std::size_t kDifferenceBlockRows = 2048;

using System = DifferenceKernels::System;

// The kernels of a system, once it is sure that both batches have what it reads, for 1 or `count` rows.
const System& Require(const CDifferenceSettings& settings, const ColorBatch& standards,
                      const ColorBatch& samples, std::size_t count) {
  if (FindDifferenceSystem(settings.system) == nullptr) throw CInvalidArgException();
  const System& system = CurrentKernels<DifferenceKernels>().Of(settings);
  const auto require = [count](std::size_t rows) {
    if (rows != count && rows != 1) throw CInvalidArgException();
  };
  for (const ColorBatch* colors : {&standards, &samples}) {
    if (system.readsXyz) require(colors->xyz.size());
    if (system.readsLab) require(colors->lab.size());
    if (system.readsXyz && system.readsLab) RequireSameCount(colors->xyz.size(), colors->lab.size());
  }
  return system;
}

bool IsOne(const System& system, const ColorBatch& colors) {
  return (system.readsXyz ? colors.xyz.size() : colors.lab.size()) == 1;
}

}  // namespace

bool DifferenceBatch(const CDifferenceSettings& settings, double angle, const ColorBatch& standards,
                     const ColorBatch& samples, const BatchView<double, 7>& differences,
                     const BatchRun& run) {
  const std::size_t count = differences.size();
  const System& system = Require(settings, standards, samples, count);
  if (count != 1 && IsOne(system, samples)) throw CInvalidArgException();
  const DifferenceKernel kernel = IsOne(system, standards) ? system.oneStandard : system.pairs;
  return ForEachBlock(run, count, kDifferenceBlockRows, [&](std::size_t from, std::size_t rows) {
    kernel({settings.parameters, angle}, ColumnsOf(standards, from, rows), ColumnsOf(samples, from, rows),
           ColumnsOf(differences, from, rows).data(), rows);
  });
}

bool TotalDifferenceBatch(const CDifferenceSettings& settings, double angle, const ColorBatch& standards,
                          const ColorBatch& samples, std::span<double> totals, const BatchRun& run) {
  const std::size_t count = totals.size();
  const System& system = Require(settings, standards, samples, count);
  DifferenceKernel kernel = system.totals;
  if (IsOne(system, samples)) kernel = system.totalsOneSample;
  if (IsOne(system, standards)) kernel = system.totalsOneStandard;
  if (count != 1 && IsOne(system, samples) && IsOne(system, standards)) throw CInvalidArgException();
  return ForEachBlock(run, count, kDifferenceBlockRows, [&](std::size_t from, std::size_t rows) {
    const Column<double> out{totals.data() + from, 1};
    kernel({settings.parameters, angle}, ColumnsOf(standards, from, rows), ColumnsOf(samples, from, rows),
           &out, rows);
  });
}

}  // namespace vrx
