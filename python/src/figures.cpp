// Figures of print, Munsell notation, limits from verdicts and repeated readings.

#include <algorithm>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/colorimetry/density.h>
#include <vrxmath/colorimetry/munsell.h>
#include <vrxmath/tolerance/limit_fit.h>
#include <vrxmath/tolerance/repeated_readings.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"

namespace vrx::python {
namespace {

double NumberOrNaN(double value) {
  return IsUnset(value) ? std::nan("") : value;
}

CurveBatch CurveBatchFrom(const Rows& rows, std::size_t from, std::size_t count) {
  if (count == 0) return {};
  return {std::span(rows.Doubles() + from * rows.stride, (count - 1) * rows.stride + 40), rows.stride};
}

py::object DensitiesOfCurves(const py::object& curves, const std::string& status,
                             const py::object& wavelengths, const py::object& out, int threads) {
  const std::string letters = "aemt";
  const std::size_t place = status.size() == 1 ? letters.find(status) : std::string::npos;
  if (place == std::string::npos) throw py::value_error("status: \"a\", \"e\", \"m\" or \"t\" is expected");
  const Rows rows = CurvesAt(curves, "curves", wavelengths);
  py::array_t<double> result = ResultApart(rows.lead, {4}, out, {&rows});
  double* target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    const BatchView<double, 4> four(std::span(target + 4 * from, 4 * count));
    DensityBatch(static_cast<DensityStatus>(place), CurveBatchFrom(rows, from, count), four);
    for (std::size_t i = 4 * from; i < 4 * (from + count); ++i)
      target[i] = target[i] == kUnset ? std::nan("") : target[i];
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::object MunsellOf(const py::object& xyz, int threads) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  py::array_t<double> result = ResultArray(rows.lead, {4}, py::none());
  double* target = result.mutable_data();
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    for (std::size_t i = from; i < from + count; ++i) {
      const double* row = rows.Doubles() + i * rows.stride;
      const MunsellColor found = MunsellFromXyz({row[0], row[1], row[2]});
      const double numbers[] = {found.hue, found.value, found.chroma, found.isExtrapolated ? 1.0 : 0.0};
      const bool isUnset = IsUnsetRow<3>(row) || found.value == kUnset;
      for (std::size_t k = 0; k < 4; ++k) target[4 * i + k] = isUnset ? std::nan("") : numbers[k];
    }
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::array_t<double> XyzOfMunsell(const py::object& notation) {
  MunsellColor color;
  if (py::isinstance<py::str>(notation)) {
    const std::optional<MunsellColor> parsed = ParseMunsell(notation.cast<std::string>());
    if (!parsed) throw py::value_error("notation: such as \"5R 4/10\" or \"N 5\" is expected");
    color = *parsed;
  } else {
    const Rows rows = RowsOf(notation, "notation", 3);
    if (!rows.lead.empty()) throw py::value_error("notation: a text, or hue, value and chroma, is expected");
    color = {rows.Doubles()[0], rows.Doubles()[1], rows.Doubles()[2]};
  }
  const Xyz xyz = XyzFromMunsell(color);
  py::array_t<double> result(3);
  double* target = result.mutable_data();
  target[0] = xyz.X, target[1] = xyz.Y, target[2] = xyz.Z;
  if (xyz.X == kUnset && xyz.Y == kUnset && xyz.Z == kUnset) FillNaN(target, 3);
  return result;
}

std::string MunsellTextOf(double hue, double value, double chroma) {
  return MunsellText({hue, value, chroma});
}

py::tuple LimitOf(const std::vector<double>& totals, const std::vector<bool>& accepted) {
  if (totals.size() != accepted.size()) throw py::value_error("accepted: as many as totals are expected");
  for (const double total : totals) {
    if (!(total >= 0.0)) throw py::value_error("totals: numbers of 0 or more are expected");
  }
  const std::vector<std::uint8_t> verdicts(accepted.begin(), accepted.end());
  if (!verdicts.empty() && !HasBothVerdicts(verdicts))
    throw py::value_error(
        "accepted: a limit lies between what was accepted and what was rejected: both are expected");
  const LimitFit fit = FitLimit(totals, verdicts);
  return py::make_tuple(NumberOrNaN(fit.limit), fit.wronglyAccepted, fit.wronglyRejected);
}

double StressOf(const std::vector<double>& computed, const std::vector<double>& visual) {
  if (computed.size() != visual.size()) throw py::value_error("visual: as many as computed are expected");
  return NumberOrNaN(Stress(computed, visual));
}

std::int64_t ReadingsFor(double deviation, std::int64_t known, double within, double certainty) {
  const std::int64_t needed = ReadingsNeeded(deviation, known, within, certainty);
  if (needed == 0)
    throw py::value_error(
        "deviation from 2 known readings or more, within above 0, and a certainty between 0 and 1 are "
        "expected");
  return needed;
}

}  // namespace

void DefineFigures(py::module_& module) {
  module.def("densities", &DensitiesOfCurves, py::arg("curves"), py::arg("status") = "t", py::kw_only(),
             py::arg("wavelengths") = py::none(), py::arg("out") = py::none(), py::arg("threads") = 1,
             R"(Densities of print: through red, green and blue, and visual (ISO 5-3), absolute.

Parameters
----------
curves : array_like, shape (..., 40)
    Reflectances in percent, 360 to 750 nm.
status : str
    ``"a"``, ``"e"``, ``"m"`` or ``"t"``.
wavelengths, out, threads
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (..., 4)

Examples
--------
>>> vrx.densities([10.0] * 40).round(6).tolist()
[1.0, 1.0, 1.0, 1.0]
)");
  module.def(
      "tone_value",
      [](double paper, double tint, double solid, double n) {
        return NumberOrNaN(ToneValue(paper, tint, solid, n));
      },
      py::arg("paper"), py::arg("tint"), py::arg("solid"), py::arg("n") = 1.0,
      R"(How much of the paper a tint covers, in percent, by densities of one filter.

``n`` is 1 for Murray-Davies, above 1 for Yule-Nielsen. NaN for a solid no darker than the paper, and for n below 1.

Examples
--------
>>> round(vrx.tone_value(0.1, 0.4, 1.6), 1)
51.5
)");
  module.def(
      "munsell", &MunsellOf, py::arg("xyz"), py::kw_only(), py::arg("threads") = 1,
      R"(Munsell notation of X, Y, Z under C and 2 degrees: hue, value, chroma, and 1 where it is extrapolated.

The hue counts from 0 to 100: 5 is 5R, 15 is 5YR; it is 0 for a neutral. NaN outside 0 <= Y <= 100.

Parameters
----------
xyz : array_like, shape (..., 3)

Returns
-------
numpy.ndarray, shape (..., 4)

Examples
--------
>>> vrx.munsell(vrx.xyz_from_munsell("5R 4/10")).round(6).tolist()
[5.0, 4.0, 10.0, 0.0]
)");
  module.def(
      "xyz_from_munsell", &XyzOfMunsell, py::arg("notation"),
      R"(X, Y, Z under C and 2 degrees of a Munsell notation: a text such as ``"5R 4/10"``, or hue, value and chroma.

Returns
-------
numpy.ndarray, shape (3,)
)");
  module.def("munsell_text", &MunsellTextOf, py::arg("hue"), py::arg("value"), py::arg("chroma"),
             R"(A Munsell notation as text, in tenths.

Examples
--------
>>> vrx.munsell_text(15, 6, 4)
'5YR 6/4'
)");
  module.def("fit_limit", &LimitOf, py::arg("totals"), py::arg("accepted"),
             R"(The limit of the total that agrees best with what people accepted.

Parameters
----------
totals : sequence of float
accepted : sequence of bool
    Both kinds: a limit lies between them.

Returns
-------
tuple
    The limit, how many rejected ones it accepts, and how many accepted ones it rejects.

Examples
--------
>>> vrx.fit_limit([1.5, 0.25, 1.0, 0.5], [False, True, False, True])
(0.75, 0, 0)
)");
  module.def(
      "stress", &StressOf, py::arg("computed"), py::arg("visual"),
      R"(STRESS of computed and visual differences, in percent: 0 where they are proportional (Garcia and others 2007).)");
  module.def(
      "readings_needed", &ReadingsFor, py::arg("deviation"), py::arg("known"), py::arg("within"),
      py::arg("certainty") = 0.95,
      R"(How many readings bring a mean within ``within``, where the standard deviation is known from ``known`` readings.

Examples
--------
>>> vrx.readings_needed(0.3, 5, 0.2)
18
)");
}

}  // namespace vrx::python
