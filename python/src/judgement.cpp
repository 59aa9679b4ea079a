// Judgement of many curves against one standard.

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include <pybind11/numpy.h>

#include <vrxio/csv/tolerance_table.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/judging/evaluation.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

// The input of a judgement, and where it goes: per sample and illuminant 7 differences, a verdict and 3 words.
struct Judging {
  CDifferenceSettings settings;
  std::vector<vrxIlluminant> illuminants;
  std::int32_t observer;
  CBoxTolData box;
  double warningFactor;
  double* differences;
  std::int8_t* verdicts;
  std::int8_t* words;
};

CBoxTolData BoxOf(const py::object& tolerance, const CDifferenceSettings& settings) {
  std::vector<double> numbers;
  if (tolerance.is_none()) {
    if (!FindDifferenceSystem(settings.system)->inDeltaE) {
      throw py::value_error("tolerance: this system's unit is no colour difference; a tolerance is needed");
    }
    numbers = {CBoxTolData()[6]};
  } else if (py::isinstance<py::float_>(tolerance) || py::isinstance<py::int_>(tolerance)) {
    numbers = {tolerance.cast<double>()};
  } else {
    for (const py::handle number : tolerance) numbers.push_back(number.cast<double>());
  }
  try {
    return io::BoxFromNumbers(numbers);
  } catch (const io::InputError&) {
    throw py::value_error("tolerance: one number, or the seven of a box, none negative, are expected");
  }
}

// A context of the library with one standard.
CVarexCalc ContextOf(const Judging& judging, const CReflData& standard) {
  CVarexCalc calc;
  CIllumArray illuminants;
  illuminants.RemoveAll();  // a new list holds the usual one
  for (const vrxIlluminant illuminant : judging.illuminants) illuminants.Add(illuminant);
  calc.SetConditions(illuminants, judging.observer);
  calc.method = judging.settings.system;
  calc.methodSettings = judging.settings;
  calc.warningFactor = judging.warningFactor;
  calc.boxTolerances[0].SetSize(1);
  calc.boxTolerances[0][0].SetSize(illuminants.GetSize());
  for (CBoxTolData& box : calc.boxTolerances[0][0]) box = judging.box;
  CReflDataArray curves;
  curves.Add(standard);
  calc.SetStandard(curves);
  return calc;
}

// L*C*h judges by a sector of hue, which the context knows: one sample after the other.
void JudgeByContext(const Judging& judging, const CReflData& standard, const Rows& samples, std::size_t from,
                    std::size_t count) {
  CVarexCalc calc = ContextOf(judging, standard);
  const std::size_t m = judging.illuminants.size();
  CReflDataArray curve;
  curve.SetSize(1);
  CEvaluationArray results;
  for (std::size_t i = from; i < from + count; ++i) {
    for (std::size_t k = 0; k < kSamples; ++k) {
      const std::size_t at = i * samples.stride + k;
      curve[0][static_cast<std::ptrdiff_t>(k)] =
          samples.isFloat ? static_cast<double>(samples.Floats()[at]) : samples.Doubles()[at];
    }
    calc.Evaluate(curve, results);
    for (std::size_t j = 0; j < m; ++j) {
      const CEvaluation& result = results[static_cast<std::ptrdiff_t>(j)];
      std::copy_n(calc.differences[0][static_cast<std::ptrdiff_t>(j)].GetData(), 7,
                  judging.differences + 7 * (m * i + j));
      judging.verdicts[m * i + j] = static_cast<std::int8_t>(result.overall);
      for (std::size_t k = 0; k < 3; ++k) {
        judging.words[3 * (m * i + j) + k] = static_cast<std::int8_t>(result.shade.words[k]);
      }
    }
  }
  UnsetToNan(judging.differences + 7 * m * from, 7 * m * count);
}

// The memory of a block beside its results.
struct Scratch {
  std::vector<double> xyz, lab, own, eab, difference, total;
  std::vector<Verdict> components, totals;
  std::vector<std::int32_t> words;

  explicit Scratch(std::size_t n)
      : xyz(3 * n),
        lab(5 * n),
        own(5 * n),
        eab(7 * n),
        difference(7 * n),
        total(n),
        components(n),
        totals(n),
        words(3 * n) {}
};

// The standard's colours under one illuminant: values, L*a*b*, and the coordinates of the system.
struct StandardColors {
  std::vector<double> xyz = std::vector<double>(3), lab = std::vector<double>(5),
                      own = std::vector<double>(5);
};

StandardColors StandardUnder(const Judging& judging, const CReflData& standard, vrxIlluminant illuminant) {
  StandardColors colors;
  TristimulusBatch(illuminant, judging.observer, CurveBatch{std::span(standard.GetData(), kSamples)},
                   BatchView<double, 3>(std::span(colors.xyz)));
  const BatchView<const double, 3> xyz{std::span<const double>(colors.xyz)};
  CoordinatesBatch(vrxSystemLab, illuminant, judging.observer, xyz,
                   BatchView<double, 5>(std::span(colors.lab)));
  CoordinatesBatch(judging.settings.system, illuminant, judging.observer, xyz,
                   BatchView<double, 5>(std::span(colors.own)));
  return colors;
}

template <std::size_t kWidth>
BatchView<double, kWidth> All(std::vector<double>& numbers, std::size_t count) {
  return {std::span(numbers.data(), kWidth * count)};
}

void StoreUnder(const Judging& judging, std::size_t j, const Scratch& s, std::size_t from,
                std::size_t count) {
  const std::size_t m = judging.illuminants.size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = m * (from + i) + j;
    std::copy_n(&s.difference[7 * i], 7, judging.differences + 7 * at);
    judging.verdicts[at] = static_cast<std::int8_t>(std::min(s.components[i], s.totals[i]));
    for (std::size_t k = 0; k < 3; ++k)
      judging.words[3 * at + k] = static_cast<std::int8_t>(s.words[3 * i + k]);
  }
}

void JudgeBlock(const Judging& judging, const std::vector<StandardColors>& standards, const Rows& samples,
                std::size_t from, std::size_t count) {
  Scratch s(count);
  constexpr double kAngle = 45.0;
  const CDifferenceSettings lab{vrxSystemLab, {1.0, 1.0, 1.0, 1.0}};
  for (std::size_t j = 0; j < judging.illuminants.size(); ++j) {
    const vrxIlluminant illuminant = judging.illuminants[j];
    const auto xyz = All<3>(s.xyz, count);
    TristimulusOf(samples, std::span(&illuminant, 1), judging.observer,
                  std::span<const BatchView<double, 3>>(&xyz, 1), from, count);
    CoordinatesBatch(vrxSystemLab, illuminant, judging.observer, xyz, All<5>(s.lab, count));
    CoordinatesBatch(judging.settings.system, illuminant, judging.observer, xyz, All<5>(s.own, count));
    const StandardColors& standard = standards[j];
    DifferenceBatch(lab, kAngle, {{}, BatchView<const double, 5>(std::span(standard.lab))},
                    {{}, All<5>(s.lab, count)}, All<7>(s.eab, count));
    DifferenceBatch(judging.settings, kAngle,
                    {BatchView<const double, 3>(std::span(standard.xyz)),
                     BatchView<const double, 5>(std::span(standard.own))},
                    {xyz, All<5>(s.own, count)}, All<7>(s.difference, count));
    ShadeBatch(BatchView<const double, 5>(All<5>(s.lab, count)).Numbers<0, 3>(),
               BatchView<const double, 7>(All<7>(s.eab, count)).Numbers<0, 3>(),
               BatchView<std::int32_t, 3>(std::span(s.words)));
    BoxVerdictBatch(judging.box, judging.warningFactor,
                    BatchView<const double, 7>(All<7>(s.difference, count)).Numbers<0, 3>(), s.components);
    for (std::size_t i = 0; i < count; ++i) s.total[i] = s.difference[7 * i + 6];
    TotalVerdictBatch(judging.box[6], judging.warningFactor, s.total, s.totals);
    StoreUnder(judging, j, s, from, count);
  }
  const std::size_t m = judging.illuminants.size();
  UnsetToNan(judging.differences + 7 * m * from, 7 * m * count);
}

py::tuple Judge(const py::object& standard, const py::object& samples, const py::object& illuminants,
                int observer, const std::string& system, const py::object& tolerance, double warning,
                int threads, const py::kwargs& parameters) {
  const Rows one = RowsOf(standard, "standard", kSamples);
  if (one.count != 1) throw py::value_error("standard: one curve is expected, shape (40,)");
  const Rows trials = RowsOf(samples, "samples", kSamples, true);
  if (trials.lead.size() > 1) throw py::value_error("samples: expected shape (n, 40) or (40,)");
  bool single = false;
  Judging judging{SettingsOf(system, parameters),
                  IlluminantsOf(illuminants, single),
                  ObserverOf(observer),
                  {},
                  warning,
                  nullptr,
                  nullptr,
                  nullptr};
  judging.box = BoxOf(tolerance, judging.settings);
  const auto n = static_cast<py::ssize_t>(trials.count),
             m = static_cast<py::ssize_t>(judging.illuminants.size());
  py::array_t<double> differences({n, m, py::ssize_t{7}});
  py::array_t<std::int8_t> verdicts({n, m}), words({n, m, py::ssize_t{3}});
  judging.differences = differences.mutable_data();
  judging.verdicts = verdicts.mutable_data();
  judging.words = words.mutable_data();

  CReflData curve;
  std::copy_n(one.Doubles(), kSamples, curve.GetData());
  std::vector<StandardColors> standards;
  for (const vrxIlluminant illuminant : judging.illuminants) {
    standards.push_back(StandardUnder(judging, curve, illuminant));
  }
  InBlocks(trials.count, threads, [&](std::size_t from, std::size_t count) {
    if (judging.settings.system == vrxSystemLch) {
      JudgeByContext(judging, curve, trials, from, count);
    } else {
      JudgeBlock(judging, standards, trials, from, count);
    }
  });
  return py::make_tuple(differences, verdicts, words, judging.box[6]);
}

}  // namespace

void DefineJudgement(py::module_& module) {
  module.def("judge", &Judge, py::arg("standard"), py::arg("samples"), py::arg("illuminants"),
             py::arg("observer"), py::kw_only(), py::arg("system"), py::arg("tolerance"), py::arg("warning"),
             py::arg("threads"));
}

}  // namespace vrx::python
