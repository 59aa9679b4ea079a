// Differences of many pairs, and the nearest standards of many colours.

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/color_differences.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// The space that the colours of a call have in common.
struct Space {
  bool isXyz;
  std::int32_t system;
  vrxIlluminant illuminant;
  std::int32_t observer;
};

// Coordinates with chroma and hue of rows, in the space of the system.
void FillLab(const Space& space, const RowBlock& rows, const BatchView<double, 5>& lab) {
  if (space.isXyz) {
    CoordinatesBatch(space.system, space.illuminant, space.observer, ViewOf<3>(rows), lab);
    return;
  }
  for (std::size_t i = 0; i < rows.count; ++i) {
    const double* const row = rows.data + i * rows.stride;
    for (std::size_t k = 0; k < rows.width; ++k) lab.at(i, k) = row[k];
  }
  if (rows.width == 3) ChromaHueBatch(lab);
}

// The same rows in the form that a system reads; `scratch` keeps coordinates that the argument does not hold.
ColorBatch ColorsOfBlock(const Space& space, const RowBlock& rows, std::vector<double>& scratch) {
  if (!space.isXyz && rows.width == 5) return {{}, ViewOf<5>(rows)};
  scratch.resize(5 * rows.count);
  const BatchView<double, 5> lab{std::span<double>(scratch)};
  FillLab(space, rows, lab);
  return {space.isXyz ? ViewOf<3>(rows) : BatchView<const double, 3>(), lab};
}

Space SpaceOf(const py::object& space, const CDifferenceSettings& settings, const py::object& illuminant,
              int observer) {
  const bool needsXyz = FindDifferenceSystem(settings.system)->readsXyz;
  bool isXyz = needsXyz;
  // Nobody has coordinates of the uniform spaces at hand, and L*, a*, b* would be taken for them without a word.
  const CoordinateSpace judgedIn = FindDifferenceSystem(settings.system)->space;
  if (space.is_none() && judgedIn > CoordinateSpace::kHunter) {
    throw py::value_error(
        "space: this system has a space of its own: \"xyz\" for tristimulus values, \"lab\" for its "
        "coordinates");
  }
  if (!space.is_none()) {
    const auto name = space.cast<std::string>();
    if (name != "lab" && name != "xyz") throw py::value_error("space: \"lab\" or \"xyz\" is expected");
    isXyz = name == "xyz";
  }
  if (needsXyz && !isXyz)
    throw py::value_error("space: this system compares tristimulus values: \"xyz\" is needed");
  return {isXyz, settings.system, IlluminantOf(illuminant), ObserverOf(observer)};
}

// Brings `width` elements a row into Python's form: all are NaN where a colour is unset, and those that the system leaves out
// everywhere.
void MarkUnset(const CDifferenceSettings& settings, const RowBlock& standards, const RowBlock& samples,
               std::size_t width, double* target, std::size_t count) {
  const std::array<bool, 7> filled = FilledElements(settings);
  for (std::size_t i = 0; i < count; ++i) {
    const bool unset = IsUnsetRow<3>(standards.Row(i)) || IsUnsetRow<3>(samples.Row(i));
    for (std::size_t k = 0; k < width; ++k) {
      if (unset || !filled[7 - width + k]) FillNaN(target + width * i + k, 1);
    }
  }
}

void FillDifferences(const CDifferenceSettings& settings, double angle, const Space& space,
                     const RowPairs& pairs, bool components, double* target, std::size_t from,
                     std::size_t count) {
  std::vector<double> standardRows, sampleRows, standardLab, sampleLab;
  const RowBlock standards = pairs.First(from, count, standardRows);
  const RowBlock samples = pairs.Second(from, count, sampleRows);
  const ColorBatch s = ColorsOfBlock(space, standards, standardLab);
  const ColorBatch t = ColorsOfBlock(space, samples, sampleLab);
  if (components && samples.count == 1 && count > 1) {  // one sample: standard by standard
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t row = standards.count == 1 ? 0 : i;
      const ColorBatch one{s.xyz.empty() ? s.xyz : s.xyz.Rows(row, 1), s.lab.Rows(row, 1)};
      DifferenceBatch(settings, angle, one, t, TargetOf<7>(target, from + i, 1));
    }
  } else if (components) {
    DifferenceBatch(settings, angle, s, t, TargetOf<7>(target, from, count));
  } else {
    TotalDifferenceBatch(settings, angle, s, t, std::span(target + from, count));
  }
  const std::size_t width = components ? 7 : 1;
  MarkUnset(settings, standards, samples, width, target + width * from, count);
}

py::object Delta(const py::object& standard, const py::object& sample, const std::string& system,
                 bool components, const py::object& space, const py::object& illuminant, int observer,
                 double angle, const py::object& out, int threads, const py::kwargs& parameters) {
  const CDifferenceSettings settings = SettingsOf(system, parameters);
  const Space in = SpaceOf(space, settings, illuminant, observer);
  const std::size_t other = in.isXyz ? 0 : 5;
  const Rows standards = RowsOf(standard, "standard", 3, false, other);
  const Rows samples = RowsOf(sample, "sample", 3, false, other);
  const RowPairs pairs(standards, "standard", samples, "sample");
  std::vector<py::ssize_t> tail;
  if (components) tail.push_back(7);
  py::array_t<double> result = ResultApart(pairs.Lead(), tail, out, {&standards, &samples});
  double* target = result.mutable_data();
  InBlocks(pairs.Count(), threads, [&](std::size_t from, std::size_t count) {
    FillDifferences(settings, angle, in, pairs, components, target, from, count);
  });
  if (components) return WithMasks(result, pairs.Lead(), {&standards, &samples});
  return NumberOrArray(result, pairs.Lead(), {&standards, &samples}, out);
}

// The colours of a search, under each illuminant.
struct SearchColors {
  Rows rows;
  std::size_t count = 0;
  ColorTable colors;
};

SearchColors FromCoordinates(const Rows& rows, const Space& space, int threads) {
  SearchColors colors{rows, rows.count, {{{{}, std::vector<double>(5 * rows.count)}}}};
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    FillLab(space, {rows.Doubles() + from * rows.stride, count, rows.width, rows.stride},
            TargetOf<5>(colors.colors.under[0].lab.data(), from, count));
  });
  return colors;
}

SearchColors FromColors(const py::object& argument, const char* name, const Space& space, int threads) {
  const Rows rows = RowsOf(argument, name, 3, false, space.isXyz ? 0 : 5);
  if (!space.isXyz) return FromCoordinates(rows, space, threads);
  if (rows.count == 0) return {rows, 0, {{{}}}};
  const BatchView<const double, 3> xyz = ViewOf<3>(rows, 0, rows.count);
  SearchColors colors{rows, rows.count, {}};
  const py::gil_scoped_release unlocked;
  colors.colors = ColorsOf(XyzSamples{{&xyz, 1}}, space.system, {&space.illuminant, 1}, space.observer,
                           {static_cast<unsigned>(threads), {}});
  return colors;
}

SearchColors FromCurves(const py::object& argument, const char* name, const Space& space,
                        const std::vector<vrxIlluminant>& illuminants, const py::object& wavelengths,
                        int threads) {
  const Rows curves = CurvesAt(argument, name, wavelengths, true);
  const Samples samples = SamplesOf(curves, 0, curves.count);
  SearchColors colors{curves, curves.count, {}};
  const py::gil_scoped_release unlocked;
  colors.colors =
      ColorsOf(samples, space.system, illuminants, space.observer, {static_cast<unsigned>(threads), {}});
  return colors;
}

// Of curves the usual ones where nobody names any; a colour belongs to one.
std::vector<vrxIlluminant> SearchedUnder(const py::object& illuminant, bool areCurves) {
  if (illuminant.is_none()) {
    const auto& usual = JudgeDefaults::kIlluminants;
    return {usual.begin(), areCurves ? usual.end() : usual.begin() + 1};
  }
  const std::vector<vrxIlluminant> illuminants = DistinctIlluminantsOf(illuminant);
  if (!areCurves && illuminants.size() > 1)
    throw py::value_error("illuminant: several need curves, shape (..., 40)");
  return illuminants;
}

py::tuple Nearest(const py::object& samples, const py::object& standards, std::size_t count,
                  const std::string& system, const py::object& illuminant, int observer,
                  const py::object& space, const py::object& wavelengths, double angle,
                  const py::object& sampleGeometries, const py::object& standardGeometries, int threads,
                  const py::kwargs& parameters) {
  const CDifferenceSettings settings = SettingsOf(system, parameters);
  if (count == 0) throw py::value_error("count: at least 1 is expected");
  RequireThreads(threads);
  const bool areCurves = AreCurves(samples, wavelengths);
  if (areCurves != AreCurves(standards, wavelengths))
    throw py::value_error("samples and standards: both curves, or both colours");
  const std::vector<vrxIlluminant> illuminants = SearchedUnder(illuminant, areCurves);
  const Space in = SpaceOf(space, settings, py::int_(static_cast<int>(illuminants.front())), observer);
  const auto colorsOf = [&](const py::object& argument, const char* name) {
    return areCurves ? FromCurves(argument, name, in, illuminants, wavelengths, threads)
                     : FromColors(argument, name, in, threads);
  };
  const SearchColors trials = colorsOf(samples, "samples"), library = colorsOf(standards, "standards");
  const std::vector<std::int32_t> ofTrials = GeometryCodesOf(sampleGeometries, trials.count),
                                  ofLibrary = GeometryCodesOf(standardGeometries, library.count);
  std::vector<NearestMatch> matches(trials.count * count);
  WithoutLock([&](const auto& goesOn) {
    const BatchRun run{static_cast<unsigned>(threads), [&](std::size_t) { return goesOn(); }};
    StandardsByGeometry(library.colors, ofLibrary)
        .Find(settings, angle, trials.colors, ofTrials, count, matches, run);
  });
  std::vector<py::ssize_t> shape = trials.rows.lead;
  shape.push_back(static_cast<py::ssize_t>(count));
  py::array_t<std::int64_t> index(shape);
  py::array_t<double> distance(shape);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const bool found = matches[i].index != NearestMatch::kNone;
    index.mutable_data()[i] = found ? static_cast<std::int64_t>(matches[i].index) : -1;
    distance.mutable_data()[i] = found ? matches[i].difference : std::numeric_limits<double>::quiet_NaN();
  }
  return py::make_tuple(WithMasks(index, trials.rows.lead, {&trials.rows}),
                        WithMasks(distance, trials.rows.lead, {&trials.rows}));
}

}  // namespace

void DefineDifference(py::module_& module) {
  const std::string kUsualSystem(FindDifferenceSystem(JudgeDefaults::kSystem)->shortName);
  module.def("delta", &Delta, py::arg("standard"), py::arg("sample"), py::arg("system") = kUsualSystem,
             py::kw_only(), py::arg("components") = false, py::arg("space") = py::none(),
             py::arg("illuminant") = "D65", py::arg("observer") = 10, py::arg("angle") = 45.0,
             py::arg("out") = py::none(), py::arg("threads") = 1,
             R"(Colour differences, sample minus standard, in any of the difference systems.

Parameters
----------
standard, sample : array_like, shape (..., 3) or (..., 5)
    Coordinates in the space in which the system judges: L*, a*, b* for most, L*, u*, v* for ``"luv"``, Hunter L, a, b for
    ``"hunter"``, with C and h behind them where they are at hand. Leading axes broadcast. The uniform
    spaces (``"cam16ucs"``, ``"oklab"``, ``"itp"``, ``"din99o"`` ...) want ``space`` to be said.
system : str
    See :func:`systems`.
components : bool
    Whether all seven elements are returned: differences of the three coordinates, weighted lightness difference,
    chroma difference, hue difference, total.
space : str, optional
    ``"xyz"`` when the arguments are tristimulus values, under ``illuminant`` and ``observer``; ``"fmc2"``, ``"gepqs2"`` and
    ``"xyz"`` always take those.
angle : float
    Aspecular measuring angle in degrees, for ``"audi"`` and ``"din6175"``.
out, threads
    As for :func:`tristimulus`.
**parameters
    The system's own: ``l, c`` for ``"cmc"``; ``kL, kC, kH`` for ``"cie94"`` and ``"cie2000"``; ``kCH, kE`` for ``"din99"``;
    ``gL, gC, gH`` for ``"din6175"``.

Returns
-------
numpy.ndarray, shape (...) or (..., 7) with ``components``; float for a single pair
    NaN where a colour is unset, masked where it is masked. The leading axes broadcast as numpy's do.
)");
  module.def("nearest", &Nearest, py::arg("samples"), py::arg("standards"), py::arg("count"), py::kw_only(),
             py::arg("system"), py::arg("illuminant"), py::arg("observer"), py::arg("space"),
             py::arg("wavelengths"), py::arg("angle"), py::arg("sample_geometries"),
             py::arg("standard_geometries"), py::arg("threads"));
}

}  // namespace vrx::python
