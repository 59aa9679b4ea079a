// Single figures of colours: display colours and indices.

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/colorimetry/weight_tables.h>

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
  Rows rows;
  py::array_t<std::uint8_t> rgb;
  py::array_t<bool> inGamut;
};

DisplayColors DisplayColorsOf(const py::object& xyz, const py::object& illuminant, int observer,
                              int threads) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  DisplayColors colors{rows, py::array_t<std::uint8_t>(Extended(rows.lead, 3)), py::array_t<bool>(rows.lead)};
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
    IndexTerms terms;
    const bool defined = index.Terms(form)(number, code, terms);
    py::array_t<double> values(rows.lead);
    double* target = values.mutable_data();
    InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
      IndexBatch(function, number, code, ViewOf<3>(rows, from, count), std::span(target + from, count));
      for (std::size_t i = from; i < from + count; ++i) {
        const double* row = rows.Doubles() + i * rows.stride;
        if (!defined || !HasIndex(terms, Xyz{row[0], row[1], row[2]})) FillNaN(target + i, 1);
      }
    });
    result[py::str(IndexLabel(index, IndexForm::kDirect).ToUtf8())] = WithMasks(values, rows.lead, {&rows});
  }
  return result;
}

// Adaptation, appearance and grades.
AdaptationTransform TransformOf(const std::string& name) {
  if (name == "cat02") return AdaptationTransform::kCat02;
  if (name == "cat16") return AdaptationTransform::kCat16;
  if (name == "bradford") return AdaptationTransform::kBradford;
  throw py::value_error("transform: \"cat02\", \"cat16\" or \"bradford\" is expected");
}

AppearanceModel ModelOf(const std::string& name) {
  if (name == "ciecam02") return AppearanceModel::kCiecam02;
  if (name == "cam16") return AppearanceModel::kCam16;
  throw py::value_error("model: \"ciecam02\" or \"cam16\" is expected");
}

ViewingConditions ConditionsOf(double luminance, double background, const std::string& surround) {
  ViewingConditions conditions;
  if (!(luminance > 0.0)) throw py::value_error("luminance: a positive number is expected");
  if (!(background > 0.0)) throw py::value_error("background: a positive number is expected");
  conditions.adaptingLuminance = luminance;
  conditions.background = background;
  if (surround == "dim") {
    conditions.surround = kDimSurround;
  } else if (surround == "dark") {
    conditions.surround = kDarkSurround;
  } else if (surround != "average") {
    throw py::value_error("surround: \"average\", \"dim\" or \"dark\" is expected");
  }
  return conditions;
}

// Rows of three numbers to rows of others; those that are unset become NaN.
template <class WORK>
py::object FromTriples(const Rows& rows, py::ssize_t width, const py::object& out, int threads,
                       const WORK& work) {
  py::array_t<double> result = ResultApart(rows.lead, {width}, out, {&rows});
  double* target = result.mutable_data();
  const auto numbers = static_cast<std::size_t>(width);
  InBlocks(rows.count, threads, [&](std::size_t from, std::size_t count) {
    work(target, from, count);
    for (std::size_t i = from; i < from + count; ++i) {
      if (IsUnsetRow<3>(rows.Doubles() + i * rows.stride)) FillNaN(target + i * numbers, numbers);
    }
  });
  return WithMasks(result, rows.lead, {&rows});
}

py::object AdaptColors(const py::object& xyz, const py::object& from, const py::object& to, int observer,
                       const std::string& transform, double degree, const py::object& out, int threads) {
  const Rows rows = RowsOf(xyz, "xyz", 3);
  const AdaptationTransform kind = TransformOf(transform);
  White source, target;
  const std::int32_t code = ObserverOf(observer);
  if (!FindWhite(IlluminantOf(from), code, source) || !FindWhite(IlluminantOf(to), code, target)) {
    throw py::value_error("illuminant: it has no weights");
  }
  return FromTriples(rows, 3, out, threads, [&](double* result, std::size_t first, std::size_t count) {
    AdaptBatch(kind, source, target, degree, ViewOf<3>(rows, first, count),
               TargetOf<3>(result, first, count));
  });
}

// An array of kOut numbers for each row of three, by a batch function of an appearance model.
template <std::size_t kOut, class BATCH>
py::object ByModel(const Rows& rows, const py::object& illuminant, int observer, const std::string& model,
                   double luminance, double background, const std::string& surround, const py::object& out,
                   int threads, const BATCH& batch) {
  const vrxIlluminant number = IlluminantOf(illuminant);
  const std::int32_t code = ObserverOf(observer);
  const AppearanceModel kind = ModelOf(model);
  const ViewingConditions conditions = ConditionsOf(luminance, background, surround);
  return FromTriples(rows, kOut, out, threads, [&](double* result, std::size_t first, std::size_t count) {
    batch(kind, number, code, conditions, ViewOf<3>(rows, first, count), TargetOf<kOut>(result, first, count),
          BatchRun());
  });
}

py::object AppearanceOfColors(const py::object& xyz, const py::object& illuminant, int observer,
                              const std::string& model, double luminance, double background,
                              const std::string& surround, const py::object& out, int threads) {
  return ByModel<6>(RowsOf(xyz, "xyz", 3), illuminant, observer, model, luminance, background, surround, out,
                    threads, AppearanceBatch);
}

py::object ColorsOfAppearance(const py::object& appearance, const py::object& illuminant, int observer,
                              const std::string& model, double luminance, double background,
                              const std::string& surround, const py::object& out, int threads) {
  return ByModel<3>(RowsOf(appearance, "jch", 3), illuminant, observer, model, luminance, background,
                    surround, out, threads, XyzFromAppearanceBatch);
}

// L*, a*, b*, C*, h of `count` rows.
std::vector<double> PolarLab(const RowBlock& rows, std::size_t count) {
  std::vector<double> lab(5 * count);
  for (std::size_t i = 0; i < count; ++i) std::copy_n(rows.Row(i), 3, &lab[5 * i]);
  ChromaHueBatch(BatchView<double, 5>(std::span<double>(lab)));
  return lab;
}

py::object Grade(const py::object& standard, const py::object& sample, const std::string& scale, bool steps,
                 const py::object& out, int threads) {
  if (scale != "change" && scale != "staining") {
    throw py::value_error("scale: \"change\" or \"staining\" is expected");
  }
  const GreyScale kind = scale == "change" ? GreyScale::kChange : GreyScale::kStaining;
  const Rows standards = RowsOf(standard, "standard", 3), samples = RowsOf(sample, "sample", 3);
  const RowPairs pairs(standards, "standard", samples, "sample");
  py::array_t<double> result = ResultApart(pairs.Lead(), {}, out, {&standards, &samples});
  double* target = result.mutable_data();
  InBlocks(pairs.Count(), threads, [&](std::size_t from, std::size_t count) {
    std::vector<double> scratch;
    const std::vector<double> s = PolarLab(pairs.First(from, count, scratch), count);
    const std::vector<double> t = PolarLab(pairs.Second(from, count, scratch), count);
    GradeBatch(kind, s, t, std::span(target + from, count));
    for (std::size_t i = 0; i < count; ++i) {
      if (IsUnsetRow<3>(&s[5 * i]) || IsUnsetRow<3>(&t[5 * i])) {
        FillNaN(target + from + i, 1);
      } else if (steps) {
        target[from + i] = HalfStepGrade(target[from + i]);
      }
    }
  });
  return NumberOrArray(result, pairs.Lead(), {&standards, &samples}, out);
}

}  // namespace

void DefineAppearance(py::module_& module) {
  module.def(
      "display_rgb",
      [](const py::object& xyz, const py::object& illuminant, int observer, int threads) {
        const DisplayColors colors = DisplayColorsOf(xyz, illuminant, observer, threads);
        return WithMasks(colors.rgb, colors.rows.lead, {&colors.rows});
      },
      py::arg("xyz"), py::arg("illuminant") = "D65", py::arg("observer") = 10, py::kw_only(),
      py::arg("threads") = 1,
      R"(Display colours (IEC 61966-2-1), the white of the illuminant being the white of the screen.

A colour that the screen cannot show is brought to its edge, and NaN is black: in_gamut() is False for both.

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
        if (colors.inGamut.ndim() == 0 && !colors.rows.mask) return py::bool_(*colors.inGamut.data());
        return WithMasks(colors.inGamut, colors.rows.lead, {&colors.rows});
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
  module.def(
      "adapt", &AdaptColors, py::arg("xyz"), py::arg("source"), py::arg("target") = "D65",
      py::arg("observer") = 10, py::kw_only(), py::arg("transform") = "cat16", py::arg("degree") = 1.0,
      py::arg("out") = py::none(), py::arg("threads") = 1,
      R"(Corresponding colours: those that look under one illuminant as the given ones do under another.

Parameters
----------
xyz : array_like, shape (..., 3)
source, target : str, int or Illuminant
    The illuminant of the given colours, and that of the result.
transform : str
    ``"cat16"``, ``"cat02"`` or ``"bradford"``.
degree : float
    Of adaptation: 1 for a complete one, 0 for none.
out, threads
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (..., 3)
)");
  module.def("appearance", &AppearanceOfColors, py::arg("xyz"), py::arg("illuminant") = "D65",
             py::arg("observer") = 10, py::kw_only(), py::arg("model") = "cam16",
             py::arg("luminance") = ViewingConditions().adaptingLuminance, py::arg("background") = 20.0,
             py::arg("surround") = "average", py::arg("out") = py::none(), py::arg("threads") = 1,
             R"(Colour appearance by CAM16 or CIECAM02 (CIE 159).

Parameters
----------
xyz : array_like, shape (..., 3)
illuminant, observer
    The conditions under which the values were computed; they give the white.
model : str
    ``"cam16"`` or ``"ciecam02"``.
luminance : float
    Of the adapting field, in cd/m2; the default is that of a booth of 1000 lx with a background of 20 %.
background : float
    Luminance factor of the background, on the scale of the white's 100.
surround : str
    ``"average"``, ``"dim"`` or ``"dark"``.
out, threads
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (..., 6)
    Lightness J, chroma C, hue h in degrees, brightness Q, colourfulness M, saturation s.
)");
  module.def(
      "xyz_from_appearance", &ColorsOfAppearance, py::arg("jch"), py::arg("illuminant") = "D65",
      py::arg("observer") = 10, py::kw_only(), py::arg("model") = "cam16",
      py::arg("luminance") = ViewingConditions().adaptingLuminance, py::arg("background") = 20.0,
      py::arg("surround") = "average", py::arg("out") = py::none(), py::arg("threads") = 1,
      R"(Tristimulus values of lightness J, chroma C and hue h in degrees: the inverse of :func:`appearance`.

Parameters as for :func:`appearance`.

Returns
-------
numpy.ndarray, shape (..., 3)
)");
  module.def("grade", &Grade, py::arg("standard"), py::arg("sample"), py::arg("scale") = "change",
             py::kw_only(), py::arg("steps") = false, py::arg("out") = py::none(), py::arg("threads") = 1,
             R"(Fastness grades by the grey scales: 5 is the best, 1 the worst.

Parameters
----------
standard, sample : array_like, shape (..., 3)
    L*, a*, b* of the untreated and of the treated specimen. Leading axes broadcast.
scale : str
    ``"change"`` of colour (ISO 105-A05), or ``"staining"`` (ISO 105-A04).
steps : bool
    Half steps, as they are reported, instead of a continuous grade.
out, threads
    As for :func:`tristimulus`.

Returns
-------
numpy.ndarray, shape (...); float for a single pair
)");
}

}  // namespace vrx::python
