// Repeated readings of samples: means and scatter.

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/tolerance/repeated_readings.h>

#include "python/src/arrays.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// How the numbers of a reading become a colour.
struct ReadingSpace {
  enum { kCurves, kXyz, kLab } kind;
  vrxIlluminant illuminant;
  std::int32_t observer;

  std::array<double, 3> ColorOf(const double* numbers) const {
    if (kind == kLab) return {numbers[0], numbers[1], numbers[2]};
    CTrisValues xyz;
    CLabValues lab;
    if (kind == kXyz) {
      std::copy_n(numbers, 3, xyz.begin());
    } else {
      CReflData curve;
      std::copy_n(numbers, kSamples, curve.begin());
      curve.Tristimulus(illuminant, observer, xyz);
    }
    XyzToLab(illuminant, observer, xyz, lab);
    return {lab[CLabValues::kL], lab[CLabValues::kA], lab[CLabValues::kB]};
  }
};

// What is said of each sample, as arrays.
struct ScatterArrays {
  py::array_t<double> means, deviations, ranges, meanDifferences, largestDifferences, uncertainties;
  py::array_t<std::int64_t> counts, needed;
  py::list outliers;

  ScatterArrays(py::ssize_t samples, py::ssize_t width)
      : means({samples, width}),
        deviations({samples, py::ssize_t{3}}),
        ranges({samples, py::ssize_t{3}}),
        meanDifferences(samples),
        largestDifferences(samples),
        uncertainties(samples),
        counts(samples),
        needed(samples) {}
};

void RequireNumbers(const double* row, std::size_t width, std::size_t place) {
  for (std::size_t k = 0; k < width; ++k) {
    if (!std::isfinite(row[k]) || IsUnset(row[k]))
      throw py::value_error("readings: row " + std::to_string(place) + " is no measurement");
  }
}

// The mean of some rows, added up in their order.
void FillMean(const Rows& rows, const std::vector<std::size_t>& places, double* mean) {
  std::fill_n(mean, rows.width, 0.0);
  for (const std::size_t place : places) {
    const double* const row = rows.Doubles() + place * rows.stride;
    RequireNumbers(row, rows.width, place);
    for (std::size_t k = 0; k < rows.width; ++k) mean[k] += row[k];
  }
  for (std::size_t k = 0; k < rows.width; ++k) mean[k] /= static_cast<double>(places.size());
}

void FillScatter(const Rows& rows, const std::vector<std::size_t>& places, const ReadingSpace& space,
                 std::size_t sample, double within, double certainty, ScatterArrays& target) {
  double* const mean = target.means.mutable_data() + sample * rows.width;
  FillMean(rows, places, mean);
  std::vector<std::array<double, 3>> colors;
  for (const std::size_t place : places)
    colors.push_back(space.ColorOf(rows.Doubles() + place * rows.stride));
  const ReadingStatistics found = StatisticsOfReadings(colors, space.ColorOf(mean));
  for (std::int32_t k = 0; k < 3; ++k) {
    target.deviations.mutable_data()[3 * sample + static_cast<std::size_t>(k)] = found.stats.First(k);
    target.ranges.mutable_data()[3 * sample + static_cast<std::size_t>(k)] = found.stats.Second(k);
  }
  const auto known = static_cast<std::int64_t>(places.size());
  const double uncertainty = UncertaintyOfMean(found.Deviation(), known, known, certainty);
  target.counts.mutable_data()[sample] = known;
  target.meanDifferences.mutable_data()[sample] = found.meanDifference;
  target.largestDifferences.mutable_data()[sample] = found.largestDifference;
  target.uncertainties.mutable_data()[sample] = IsUnset(uncertainty) ? std::nan("") : uncertainty;
  target.needed.mutable_data()[sample] = ReadingsNeeded(found.Deviation(), known, within, certainty);
  py::list outliers;
  for (const std::size_t i : found.outliers) outliers.append(places[i]);
  target.outliers.append(outliers);
}

py::dict Average(const py::object& readings, const std::vector<std::vector<std::size_t>>& samples,
                 const std::string& colors, const py::object& illuminant, int degrees, double within,
                 double certainty) {
  const Rows rows = CurvesOf(readings, "readings", false, 3);
  if (rows.lead.size() != 1) throw py::value_error("readings: expected shape (n, 40) or (n, 3)");
  if (!(certainty > 0 && certainty < 1)) throw py::value_error("certainty: above 0 and below 1 is expected");
  if (colors != "lab" && colors != "xyz") throw py::value_error("space: \"lab\" or \"xyz\" is expected");
  const ReadingSpace space{rows.width == kSamples ? ReadingSpace::kCurves
                           : colors == "xyz"      ? ReadingSpace::kXyz
                                                  : ReadingSpace::kLab,
                           IlluminantOf(illuminant), ObserverOf(degrees)};
  ScatterArrays target(static_cast<py::ssize_t>(samples.size()), static_cast<py::ssize_t>(rows.width));
  for (std::size_t i = 0; i < samples.size(); ++i)
    FillScatter(rows, samples[i], space, i, within, certainty, target);
  py::dict result;
  result["means"] = target.means;
  result["counts"] = target.counts;
  result["deviations"] = target.deviations;
  result["ranges"] = target.ranges;
  result["mean_differences"] = target.meanDifferences;
  result["largest_differences"] = target.largestDifferences;
  result["outliers"] = target.outliers;
  result["uncertainties"] = target.uncertainties;
  result["needed"] = target.needed;
  return result;
}

}  // namespace

void DefineReadings(py::module_& module) {
  module.def("average", &Average, py::arg("readings"), py::arg("samples"), py::arg("space"),
             py::arg("illuminant"), py::arg("observer"), py::arg("within"), py::arg("certainty"));
}

}  // namespace vrx::python
