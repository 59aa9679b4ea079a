// Single figures of colours: display colours and indices.

#include <span>
#include <string>

#include <pybind11/numpy.h>

#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/colorimetry/indices.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

std::vector<py::ssize_t> Extended(std::vector<py::ssize_t> lead, py::ssize_t width) {
  lead.push_back(width);
  return lead;
}

// Display colours and which of them the display can show.
struct DisplayColors {
  py::array_t<std::uint8_t> rgb;
  py::array_t<bool> inGamut;
};

DisplayColors DisplayColorsOf(const py::object& xyz, const py::object& illuminant, int observer,
                              int threads) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  DisplayColors colors{py::array_t<std::uint8_t>(Extended(rows.lead, 3)), py::array_t<bool>(rows.lead)};
  std::uint8_t* rgb = colors.rgb.mutable_data();
  auto* shown = reinterpret_cast<std::uint8_t*>(colors.inGamut.mutable_data());
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    DisplayColorBatch(number, code, ViewOf<3>(rows, from, count),
                      BatchView<std::uint8_t, 3>(std::span(rgb + 3 * from, 3 * count)),
                      std::span(shown + from, count));
  });
  return colors;
}

py::dict Indices(const py::object& xyz, const py::object& illuminant, int observer, bool recalculated,
                 int threads) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  const IndexForm form = recalculated ? IndexForm::kRecalculated : IndexForm::kDirect;
  py::dict result;
  for (const ColorIndex& index : ColorIndices()) {
    const IndexFunction function = index.Function(form);
    if (function == nullptr) continue;
    py::array_t<double> values(rows.lead);
    double* target = values.mutable_data();
    InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
      IndexBatch(function, number, code, ViewOf<3>(rows, from, count), std::span(target + from, count));
      UnsetToNan(target + from, count);
    });
    result[py::str(IndexLabel(index, IndexForm::kDirect).ToUtf8())] = values;
  }
  return result;
}

}  // namespace

void DefineAppearance(py::module_& module) {
  module.def(
      "display_rgb",
      [](const py::object& xyz, const py::object& illuminant, int observer, int threads) {
        return DisplayColorsOf(xyz, illuminant, observer, threads).rgb;
      },
      py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
      py::arg("threads") = 1,
      R"(Display colours (IEC 61966-2-1), the white of the illuminant being the white of the screen.

Parameters
----------
xyz : array_like, shape (..., 3)
illuminant, observer
    The conditions under which the values were computed.

Returns
-------
numpy.ndarray of uint8, shape (..., 3)
)");
  module.def(
      "in_gamut",
      [](const py::object& xyz, const py::object& illuminant, int observer, int threads) -> py::object {
        const DisplayColors colors = DisplayColorsOf(xyz, illuminant, observer, threads);
        if (colors.inGamut.ndim() == 0) return py::bool_(*colors.inGamut.data());
        return colors.inGamut;
      },
      py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
      py::arg("threads") = 1,
      R"(Whether a display can show the colours: no channel is clipped by more than half a step.

Parameters as for :func:`display_rgb`.

Returns
-------
bool, or numpy.ndarray of bool, shape (...)
)");
  module.def("indices", &Indices, py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10,
             py::kw_only(), py::arg("recalculated") = false, py::arg("threads") = 1,
             R"(Whiteness, tint and yellowness indices.

Parameters
----------
xyz : array_like, shape (..., 3)
illuminant, observer
    The conditions under which the values were computed.
recalculated : bool
    The form that takes any illuminant, by scaling to the white for which the formula was published. The direct form is NaN
    for other conditions than the published ones.

Returns
-------
dict of str to numpy.ndarray, shape (...)
    By label, such as ``"Whiteness: CIE"``.
)");
}

}  // namespace vrx::python
