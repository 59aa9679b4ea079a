// Colorants: K/S and strength of curves.

#include <algorithm>
#include <cmath>
#include <span>

#include <pybind11/numpy.h>

#include <vrxmath/batch/colorant_batch.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// The ratio of two sums in percent, within what StrengthPercent gives; NaN where a sample was.
double PercentOf(double batchSum, double standardSum) {
  const double percent = 100.0 * (batchSum / standardSum);
  return std::isnan(percent) ? percent : std::clamp(percent, 0.01, 999.99);
}

// The samples of a band of wavelengths, both ends inclusive.
std::pair<std::int32_t, std::int32_t> BandOf(std::pair<double, double> nm) {
  const auto [first, last] = nm;
  if (!(first >= 360.0 && last <= 750.0 && first <= last)) {
    throw py::value_error("band: two wavelengths within 360 to 750 nm are expected, the shorter first");
  }
  return {static_cast<std::int32_t>(std::ceil((first - 360.0) / 10.0)),
          static_cast<std::int32_t>(std::floor((last - 360.0) / 10.0))};
}

StrengthSumSettings StrengthSettingsOf(bool absorbance, std::pair<double, double> band,
                                       const std::string& specular, double k1, double k2) {
  const auto [first, last] = BandOf(band);
  return {absorbance, first, last, k1, k2, SpecularNamed(specular)};
}

py::object Strength(const py::object& standard, const py::object& batch, bool absorbance,
                    std::pair<double, double> band, const std::string& specular, double k1, double k2,
                    const py::object& wavelengths, const py::object& out, int threads) {
  const StrengthSumSettings settings = StrengthSettingsOf(absorbance, band, specular, k1, k2);
  const Rows standards = CurvesAt(standard, "standard", wavelengths);
  const Rows batches = CurvesAt(batch, "batch", wavelengths);
  const RowPairs pairs(standards, "standard", batches, "batch");
  py::array_t<double> result = ResultApart(pairs.Lead(), {}, out, {&standards, &batches});
  double* target = result.mutable_data();
  InBlocks(pairs.Count(), threads, [&](std::size_t from, std::size_t count) {
    std::vector<double> scratch;
    const auto sums = [&](const RowBlock& rows) {
      std::vector<double> values(rows.count);
      StrengthSumBatch(
          settings, {std::span(rows.data, (rows.count - 1) * rows.stride + kSamples), rows.stride}, values);
      return values;
    };
    const std::vector<double> s = sums(pairs.First(from, count, scratch));
    const std::vector<double> b = sums(pairs.Second(from, count, scratch));
    for (std::size_t i = 0; i < count; ++i) {
      target[from + i] = PercentOf(b[b.size() == 1 ? 0 : i], s[s.size() == 1 ? 0 : i]);
    }
  });
  return NumberOrArray(result, pairs.Lead(), {&standards, &batches}, out);
}

py::object Ks(const py::object& curves, const std::string& specular, double k1, double k2,
              const py::object& wavelengths, const py::object& out, int threads) {
  const SaundersonMode mode = SpecularNamed(specular);
  const Rows rows = CurvesAt(curves, "curves", wavelengths);
  py::array_t<double> result = ResultApart(rows.lead, {static_cast<py::ssize_t>(kSamples)}, out, {&rows});
  double* target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    const std::span<double> block(target + kSamples * from, kSamples * count);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t k = 0; k < kSamples; ++k) {
        block[kSamples * i + k] = rows.Doubles()[(from + i) * rows.stride + k] * 0.01;
      }
    }
    SaundersonToInternalBatch(block, k1, k2, mode, block);
    for (double& value : block) value *= 100.0;
    KubelkaMunkKsBatch(block, block);
  });
  return WithMasks(result, rows.lead, {&rows});
}

}  // namespace

void DefineColorant(py::module_& module) {
  module.def("strength", &Strength, py::arg("standard"), py::arg("batch"), py::kw_only(),
             py::arg("absorbance"), py::arg("band"), py::arg("specular"), py::arg("k1"), py::arg("k2"),
             py::arg("wavelengths"), py::arg("out"), py::arg("threads"));
  module.def("ks", &Ks, py::arg("curves"), py::kw_only(), py::arg("specular"), py::arg("k1"), py::arg("k2"),
             py::arg("wavelengths"), py::arg("out"), py::arg("threads"));
}

}  // namespace vrx::python
