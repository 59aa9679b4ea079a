// Colours: curves to tristimulus values, coordinates, display colours, indices.

#include <array>
#include <span>

#include <pybind11/numpy.h>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/foundation/ks_data.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

using Views3 = BatchView<const double, 3>;

// A curve is unset where its first sample is.
bool IsUnsetCurve(const Rows& curves, std::size_t row) {
  const std::size_t first = row * curves.stride;
  return IsUnset(curves.isFloat ? static_cast<double>(curves.Floats()[first]) : curves.Doubles()[first]);
}

void FillTristimulus(const Rows& curves, std::span<const vrxIlluminant> illuminants, std::int32_t observer,
                     double* target, std::size_t from, std::size_t count) {
  const std::size_t width = 3 * illuminants.size();
  std::vector<BatchView<double, 3>> xyz;
  for (std::size_t k = 0; k < illuminants.size(); ++k) {
    xyz.emplace_back(std::span(target + from * width + 3 * k, count * width - 3 * k), width);
  }
  TristimulusOf(curves, illuminants, observer, std::span<const BatchView<double, 3>>(xyz), from, count);
  for (std::size_t i = from; i < from + count; ++i) {
    if (IsUnsetCurve(curves, i)) FillNaN(target + i * width, width);
  }
}

py::object Tristimulus(const py::object& curves, const py::object& illuminant, int observer,
                       const py::object& wavelengths, int interval, const py::object& out, int threads) {
  const Rows rows = CurvesForSums(curves, "curves", wavelengths, interval);
  bool single = false;
  const std::vector<vrxIlluminant> illuminants = IlluminantsOf(illuminant, single);
  const std::int32_t code = ObserverOf(observer);
  std::vector<py::ssize_t> tail;
  if (!single) tail.push_back(static_cast<py::ssize_t>(illuminants.size()));
  tail.push_back(3);
  py::array_t<double> result = ResultApart(rows.lead, tail, out, {&rows});
  double* target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    FillTristimulus(rows, illuminants, code, target, from, count);
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::array WhitePointOf(const py::object& illuminant, int observer) {
  CTrisValues white;
  WhitePoint(IlluminantOf(illuminant), ObserverOf(observer), white);
  return py::array_t<double>(3, white.GetData());
}

// The weights of an illuminant and observer, a wavelength a row.
py::array WeightsOf(const py::object& illuminant, int observer, int interval) {
  const bool isFine = IsFineInterval(interval);
  if (!isFine && interval != kWavelengthStep) throw py::value_error("interval: 10, 5 or 1 is expected");
  const vrxIlluminant number = IlluminantOf(illuminant);
  const double* table = isFine ? FineWeightTable(number, ObserverOf(observer), interval)
                               : WeightTable(number, ObserverOf(observer));
  if (table == nullptr) throw py::value_error("illuminant: it has no weights");
  const std::size_t samples = isFine ? static_cast<std::size_t>(FineSamples(interval)) : kSamples;
  py::array_t<double> weights({static_cast<py::ssize_t>(samples), py::ssize_t{3}});
  double* target = weights.mutable_data();
  for (std::size_t i = 0; i < samples; ++i) {
    for (std::size_t k = 0; k < 3; ++k) target[3 * i + k] = table[k * samples + i];
  }
  return weights;
}

// Conversions between spaces of three numbers.
using Conversion = bool (*)(vrxIlluminant, std::int32_t, const Views3&, const BatchView<double, 3>&,
                            const BatchRun&);

// The rows of colours that are unset.
std::vector<std::size_t> UnsetRows(const Rows& rows, std::size_t from, std::size_t count) {
  std::vector<std::size_t> unset;
  for (std::size_t i = from; i < from + count; ++i) {
    if (IsUnsetRow<3>(rows.Doubles() + i * rows.stride)) unset.push_back(i);
  }
  return unset;
}

template <class WORK>
py::object Converted(const py::object& colors, const char* name, py::ssize_t width, const py::object& out,
                     int threads, const WORK& work) {
  const Rows rows = RowsOf(colors, name, 3);
  py::array_t<double> result = ResultArray(rows.lead, {width}, out);
  const bool inPlace = result.data() == rows.array.data() && width == 3 && rows.stride == 3;
  if (!inPlace && Overlap(result, rows.array))
    throw py::value_error(std::string("out: it lies over ") + name);
  double* target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    const std::vector<std::size_t> unset = UnsetRows(rows, from, count);  // before they are written over
    work(rows, target, from, count);
    for (const std::size_t row : unset) {
      FillNaN(target + row * static_cast<std::size_t>(width), static_cast<std::size_t>(width));
    }
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::object Convert(Conversion convert, const py::object& colors, const char* name,
                   const py::object& illuminant, int observer, const py::object& out, int threads) {
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  return Converted(colors, name, 3, out, threads,
                   [&](const Rows& rows, double* target, std::size_t from, std::size_t count) {
                     convert(number, code, ViewOf<3>(rows, from, count), TargetOf<3>(target, from, count),
                             {});
                   });
}

py::object ChromaticityOf(const py::object& xyz, const py::object& out, int threads) {
  return Converted(xyz, "xyz", 2, out, threads,
                   [](const Rows& rows, double* target, std::size_t from, std::size_t count) {
                     for (std::size_t i = from; i < from + count; ++i) {
                       const double* const row = rows.Doubles() + i * rows.stride;
                       const Xy found = Chromaticity(Xyz{row[0], row[1], row[2]});
                       target[2 * i] = found.x, target[2 * i + 1] = found.y;
                       if (IsUnset(found.x)) FillNaN(target + 2 * i, 2);
                     }
                   });
}

// Coordinates with chroma and hue behind them.
using PolarConversion = bool (*)(vrxIlluminant, std::int32_t, const Views3&, const BatchView<double, 5>&,
                                 const BatchRun&);

py::object ConvertPolar(PolarConversion convert, const py::object& xyz, const py::object& illuminant,
                        int observer, const py::object& out, int threads) {
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  return Converted(xyz, "xyz", 5, out, threads,
                   [&](const Rows& rows, double* target, std::size_t from, std::size_t count) {
                     convert(number, code, ViewOf<3>(rows, from, count), TargetOf<5>(target, from, count),
                             {});
                   });
}

void DefineFrom(py::module_& module, Conversion convert, const char* name, const char* argument,
                const char* doc) {
  module.def(
      name,
      [convert, argument](const py::object& colors, const py::object& illuminant, int observer,
                          const py::object& out, int threads) {
        return Convert(convert, colors, argument, illuminant, observer, out, threads);
      },
      py::arg(argument), py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
      py::arg("out") = py::none(), py::arg("threads") = 1, doc);
}

void DefineTo(py::module_& module, Conversion convert, PolarConversion convertPolar, const char* name,
              const char* doc) {
  module.def(
      name,
      [convert, convertPolar](const py::object& xyz, const py::object& illuminant, int observer, bool polar,
                              const py::object& out, int threads) {
        if (polar) return ConvertPolar(convertPolar, xyz, illuminant, observer, out, threads);
        return Convert(convert, xyz, "xyz", illuminant, observer, out, threads);
      },
      py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
      py::arg("polar") = false, py::arg("out") = py::none(), py::arg("threads") = 1, doc);
}

}  // namespace

void DefineColor(py::module_& module) {
  module.def("tristimulus", &Tristimulus, py::arg("curves"), py::arg("illuminant") = "D65",
             py::arg("observer") = 10, py::kw_only(), py::arg("wavelengths") = py::none(),
             py::arg("interval") = 10, py::arg("out") = py::none(), py::arg("threads") = 1,
             R"(Tristimulus values of reflectance curves (ASTM E308).

Parameters
----------
curves : array_like, shape (..., 40)
    Reflectance in percent at 360, 370 ... 750 nm, float64 or float32. Read in place when the last axis is contiguous and
    the leading axes are one run.
illuminant : str, int, Illuminant, or a sequence of them
    Such as ``"D65"``. Several are computed in one pass.
observer : int
    2 or 10 degrees.
wavelengths : sequence of n, optional
    Those of curves of shape (..., n), in nm, in any order: they are brought to the grid as :func:`resample` does it.
interval : int
    10, or 5 and 1 for curves that are measured at that interval in nm or finer: they are summed by weights for it, from 360 to
    780 nm, of which they may leave out the ends. Without ``wavelengths`` they have shape (..., 85) or (..., 421).
out : numpy.ndarray, optional
    Where the result goes: C-contiguous float64 of the result's shape.
threads : int
    Cores to use, 0 for all. The result does not depend on it.

Returns
-------
numpy.ndarray, shape (..., 3), or (..., m, 3) for a sequence of m illuminants
    X, Y, Z on the scale on which the perfect white has Y = 100; NaN where a curve is unset, masked where any value of it is
    masked.
)");
  module.def("white_point", &WhitePointOf, py::arg("illuminant") = "D65", py::arg("observer") = 10,
             R"(The white point Xn, Yn, Zn of an illuminant and observer, on the scale Yn = 100.

Returns
-------
numpy.ndarray, shape (3,)
)");
  module.def("weights", &WeightsOf, py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
             py::arg("interval") = 10,
             R"(The weights by which curves become tristimulus values (ASTM E308), at 360, 370 ... 750 nm.

``curves @ weights(...) / 100`` is :func:`tristimulus` but for the order of its sums.

Returns
-------
numpy.ndarray, shape (40, 3)
    For X, Y and Z; with ``interval`` 5 or 1 of shape (85, 3) or (421, 3), from 360 to 780 nm.
)");
  DefineTo(module, XyzToLabOnlyBatch, XyzToLabBatch, "lab", R"(CIE L*a*b* of tristimulus values (CIE 15).

Parameters
----------
xyz : array_like, shape (..., 3)
illuminant, observer
    The conditions under which the values were computed; they give the white.
polar : bool
    Whether C* and h (degrees) follow.
out, threads
    As for :func:`tristimulus`. Without ``polar``, ``out`` may be ``xyz`` itself.

Returns
-------
numpy.ndarray, shape (..., 3), or (..., 5) with ``polar``
)");
  DefineTo(module, XyzToLuvOnlyBatch, XyzToLuvBatch, "luv", R"(CIE L*u*v* of tristimulus values (CIE 15).

Parameters and result as for :func:`lab`; with ``polar`` C*uv and huv follow.
)");
  DefineFrom(module, XyzToHunterBatch, "hunter", "xyz", R"(Hunter L, a, b of tristimulus values.

Parameters as for :func:`lab`. For illuminant C and 2 degrees the coefficients of the original scale hold.

Returns
-------
numpy.ndarray, shape (..., 3)
)");
  module.def("chromaticity", &ChromaticityOf, py::arg("xyz"), py::kw_only(), py::arg("out") = py::none(),
             py::arg("threads") = 1, R"(Chromaticity x, y of tristimulus values (CIE 15); NaN for black.

Parameters
----------
xyz : array_like, shape (..., 3)
out, threads
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (..., 2)

Examples
--------
>>> vrx.chromaticity(vrx.white_point("D65", 2)).round(4).tolist()
[0.3127, 0.329]
)");
  DefineFrom(module, LabToXyzBatch, "xyz_from_lab", "lab", R"(Tristimulus values of CIE L*a*b*.

Parameters
----------
lab : array_like, shape (..., 3)
illuminant, observer, out, threads
    As for :func:`lab`.

Returns
-------
numpy.ndarray, shape (..., 3)
)");
  DefineFrom(module, LuvToXyzBatch, "xyz_from_luv", "luv",
             R"(Tristimulus values of CIE L*u*v*; NaN for L* = 0.

Parameters and result as for :func:`xyz_from_lab`.
)");
  DefineFrom(module, HunterToXyzBatch, "xyz_from_hunter", "lab", R"(Tristimulus values of Hunter L, a, b.

Parameters and result as for :func:`xyz_from_lab`.
)");
}

}  // namespace vrx::python
