// Judgement of many curves against their standards.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <vrxio/csv/tolerance_table.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/judging/shade.h>

#include "python/src/arrays.h"
#include "python/src/blocks.h"
#include "python/src/curves.h"
#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/views.h"

namespace vrx::python {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Which sample is judged by which standard.
struct Pairing {
  std::vector<py::ssize_t> lead;        // of the results
  std::vector<std::size_t> standardOf;  // a place for each pair; empty for one standard
  std::vector<std::size_t> sampleOf;  // likewise; empty where the samples are the pairs, one after the other
  std::size_t count = 0;
  Rows standards;  // their mask as it is for the pairs
};

// The input of a judgement, and where it goes: numbers per sample and illuminant.
struct Judging {
  const JudgeConditions& conditions;
  const JudgeStandards& standards;
  const Pairing& pairing;
  const Rows& samples;
  double *differences, *excess;            // 7 and 1
  std::int8_t *verdicts, *words, *broken;  // 1, 3 and 1

  std::size_t IlluminantCount() const { return conditions.illuminants.size(); }
};

// One set of limits, one an illuminant, or standard after standard one an illuminant.
template <class LIMITS>
std::vector<JudgeLimits> LimitsOf(const py::object& array, const char* name, std::size_t width,
                                  std::size_t standards, std::size_t illuminants) {
  const Rows rows = RowsOf(array, name, width);
  if (rows.count != 1 && rows.count != illuminants && rows.count != illuminants * standards) {
    throw py::value_error(std::string(name) +
                          ": one for all, one an illuminant, or one a standard and illuminant, " +
                          "are expected");
  }
  std::vector<JudgeLimits> limits;
  for (std::size_t i = 0; i < rows.count; ++i) {
    LIMITS one;
    std::copy_n(rows.Doubles() + i * rows.stride, width, one.begin());
    limits.emplace_back(one);
  }
  return limits;
}

JudgeLimits TotalOf(double limit) {
  if (!(limit >= 0.0)) {
    throw py::value_error("tolerance: one number, or the seven of a box, none negative, are expected");
  }
  return TotalLimit(limit);
}

void CheckBoxes(const std::vector<JudgeLimits>& limits) {
  for (const JudgeLimits& one : limits) {
    const auto& box = std::get<CBoxTolData>(one);
    try {
      io::BoxFromNumbers({box.begin(), box.end()});
    } catch (const io::InputError&) {
      throw py::value_error("tolerance: one number, or the seven of a box, none negative, are expected");
    }
  }
}

std::vector<JudgeLimits> EllipsoidsOf(const py::object& ellipsoid, const CDifferenceSettings& settings,
                                      std::size_t standards, std::size_t illuminants) {
  if (!py::isinstance<py::str>(ellipsoid)) {
    return LimitsOf<CEllipseData>(ellipsoid, "ellipsoid", CEllipseData::kValues, standards, illuminants);
  }
  if (ellipsoid.cast<std::string>() != "system") {
    throw py::value_error("ellipsoid: \"system\" or nine numbers are expected");
  }
  if (!IsEllipseSystem(settings.system)) throw py::value_error("ellipsoid: this system has none");
  return {SystemEllipsoid()};
}

// Without a tolerance a grade decides alone.
std::vector<JudgeLimits> TolerancesOf(const py::object& tolerance, const JudgeConditions& conditions,
                                      std::size_t standards, std::size_t illuminants) {
  const CDifferenceSettings& settings = conditions.difference;
  if (tolerance.is_none()) {
    if (conditions.grade) return {TotalOf(std::numeric_limits<double>::infinity())};
    if (!FindDifferenceSystem(settings.system)->inDeltaE) {
      throw py::value_error("tolerance: this system's unit is no colour difference; a tolerance is needed");
    }
    return {TotalOf(JudgeDefaults::kTolerance)};
  }
  if (IsNumber(tolerance)) return {TotalOf(tolerance.cast<double>())};
  std::vector<JudgeLimits> limits =
      LimitsOf<CBoxTolData>(tolerance, "tolerance", CBoxTolData::kValues, standards, illuminants);
  CheckBoxes(limits);
  return limits;
}

double AngleOfGeometry(const py::handle& geometry) {
  const auto text = py::str(geometry).cast<std::string>();
  const std::int32_t code = io::ParseGeometry(text);
  if (code < 0) throw py::value_error("geometry: " + io::GeometryRefusal(text));
  return AngleOfCode(static_cast<std::uint8_t>(code));
}

// The measuring angles of the standards: one for all, or one each.
std::vector<double> AnglesOf(const py::object& geometry, std::size_t standards, JudgeConditions& conditions) {
  if (geometry.is_none()) return {};
  std::vector<double> angles;
  if (py::isinstance<py::str>(geometry) || IsNumber(geometry)) {
    conditions.angle = AngleOfGeometry(geometry);
    return angles;
  }
  // An empty text is a geometry that is not known.
  for (const py::handle one : geometry)
    angles.push_back(py::str(one).cast<std::string>().empty() ? conditions.angle : AngleOfGeometry(one));
  if (angles.size() != standards) throw py::value_error("geometry: one, or one a standard, is expected");
  return angles;
}

VerdictRule RuleOf(const std::string& rule) {
  if (rule == "worse" || rule == "both") return VerdictRule::kWorse;
  if (rule == "total") return VerdictRule::kTotal;
  if (rule == "box") return VerdictRule::kComponents;
  throw py::value_error("verdict: \"total\", \"box\", \"both\" or \"worse\" is expected");
}

// The limits that stand beside those of the difference.
void TakeOtherLimits(const py::object& grade, const py::object& leastGrade, const py::object& mostInconstancy,
                     JudgeConditions& conditions) {
  constexpr double kUsualGrade = 4.0;
  if (!grade.is_none()) {
    const auto scale = grade.cast<std::string>();
    if (scale != "change" && scale != "staining")
      throw py::value_error("grade: \"change\" or \"staining\" is expected");
    const double least = leastGrade.is_none() ? kUsualGrade : leastGrade.cast<double>();
    if (!IsHalfStep(least)) throw py::value_error("least_grade: a half step is expected, 1, 1.5, 2 ... 5");
    conditions.grade = {scale == "change" ? GreyScale::kChange : GreyScale::kStaining, least};
  } else if (!leastGrade.is_none()) {
    throw py::value_error("least_grade: grade=\"change\" or grade=\"staining\" says of which scale");
  }
  if (mostInconstancy.is_none()) return;
  const auto most = mostInconstancy.cast<double>();
  if (!(most > 0.0)) throw py::value_error("most_inconstancy: a number above 0 is expected");
  if (conditions.illuminants.size() < 2)
    throw py::value_error("most_inconstancy: two illuminants or more are needed");
  conditions.inconstancy = {most};
}

// Refuses the components for a rule where nothing limits them.
void NeedLimitsOfComponents(VerdictRule rule, const std::vector<JudgeLimits>& limits) {
  if (rule == VerdictRule::kComponents && !std::ranges::all_of(limits, LimitsComponents))
    throw py::value_error("verdict: \"box\" needs limits of components, a tolerance of seven numbers");
}

// The places of standards that `of` gives, one a sample.
std::vector<std::size_t> PlacesOf(const py::object& of, std::size_t standards, std::size_t samples) {
  std::vector<std::size_t> places;
  for (const py::handle one : of) {
    const auto place = one.cast<std::int64_t>();
    if (place < 0 || static_cast<std::size_t>(place) >= standards) {
      throw py::value_error("of: " + std::to_string(place) + " is the place of no standard");
    }
    places.push_back(static_cast<std::size_t>(place));
  }
  if (places.size() != samples)
    throw py::value_error("of: the place of a standard for each sample is expected");
  return places;
}

// As `of` says, else as leading axes broadcast. A single pair is a row, too.
Pairing PairingOf(const Rows& standards, const Rows& samples, const py::object& of) {
  Pairing pairing;
  pairing.standards.mask = standards.mask;
  if (!of.is_none()) {
    pairing.standardOf = PlacesOf(of, standards.count, samples.count);
    pairing.lead = samples.lead;
    pairing.count = samples.count;
    if (standards.mask) {
      const py::object all = standards.mask.attr("reshape")(-1);
      pairing.standards.mask =
          all.attr("take")(py::cast(pairing.standardOf)).attr("reshape")(py::cast(samples.lead));
    }
  } else {
    const RowPairs pairs(standards, "standard", samples, "samples");
    pairing.lead = pairs.Lead();
    pairing.count = pairs.Count();
    for (std::size_t i = 0; standards.count > 1 && i < pairing.count; ++i)
      pairing.standardOf.push_back(pairs.FirstRow(i));
    for (std::size_t i = 0; !pairs.SecondIsWhole() && i < pairing.count; ++i)
      pairing.sampleOf.push_back(pairs.SecondRow(i));
  }
  if (pairing.lead.empty()) pairing.lead = {1};
  return pairing;
}

// Rows of kWidth numbers under illuminant j of m, in an array of shape (count, m, kWidth).
template <std::size_t kWidth, class NUMBER>
BatchView<NUMBER, kWidth> UnderOf(NUMBER* data, std::size_t j, std::size_t m, std::size_t count) {
  return {std::span(data + kWidth * j, (count - 1) * kWidth * m + kWidth), kWidth * m};
}

// The whole numbers of a block, which Python holds in bytes.
struct Scratch {
  std::vector<std::uint8_t> available;
  std::vector<std::int32_t> verdicts, words, broken;
  std::vector<double> breaches;

  explicit Scratch(std::size_t n) : available(n), verdicts(n), words(3 * n), broken(n), breaches(2 * n) {}
};

// NaN for what there is none of: everything without a difference, and the elements that a system has not.
void MarkUnset(const std::array<bool, 7>& filled, const Scratch& s, double* differences, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    double* const d = differences + 7 * i;
    if (s.available[i] == 0) {
      std::fill_n(d, 7, kNaN);
      continue;
    }
    for (std::size_t k = 0; k < 7; ++k) d[k] = filled[k] ? d[k] : kNaN;
  }
}

// The samples of pairs, in place or gathered.
Samples SamplesOfBlock(const Judging& judging, std::size_t from, std::size_t count,
                       std::vector<double>& scratch) {
  const std::vector<std::size_t>& sampleOf = judging.pairing.sampleOf;
  if (sampleOf.empty()) return SamplesOf(judging.samples, from, count);
  const Rows& rows = judging.samples;
  for (std::size_t i = from; i < from + count; ++i) {
    const std::size_t at = sampleOf[i] * rows.stride;
    if (rows.isFloat) {
      scratch.insert(scratch.end(), rows.Floats() + at, rows.Floats() + at + rows.width);
    } else {
      scratch.insert(scratch.end(), rows.Doubles() + at, rows.Doubles() + at + rows.width);
    }
  }
  if (AreFine(rows)) return FineBatch(rows, scratch);
  return CurveBatch{std::span<const double>(scratch), kSamples};
}

void JudgeBlock(const Judging& judging, std::size_t from, std::size_t count) {
  const std::size_t m = judging.IlluminantCount(), first = m * from;
  Scratch s(m * count);
  std::vector<JudgeColumns> columns(m);
  for (std::size_t j = 0; j < m; ++j) {
    columns[j].available = UnderOf<1>(s.available.data(), j, m, count);
    columns[j].differences = UnderOf<7>(judging.differences + 7 * first, j, m, count);
    columns[j].verdicts = UnderOf<1>(s.verdicts.data(), j, m, count);
    columns[j].words = UnderOf<3>(s.words.data(), j, m, count);
    columns[j].brokenLimits = UnderOf<1>(s.broken.data(), j, m, count);
    columns[j].breaches = UnderOf<2>(s.breaches.data(), j, m, count);
  }
  std::span<const std::size_t> standardOf = judging.pairing.standardOf;
  if (!standardOf.empty()) standardOf = standardOf.subspan(from, count);
  std::vector<double> scratch;
  JudgeBatch(judging.conditions, judging.standards, standardOf, SamplesOfBlock(judging, from, count, scratch),
             columns);
  MarkUnset(FilledElements(judging.conditions.difference), s, judging.differences + 7 * first, m * count);
  const auto narrow = [](const std::vector<std::int32_t>& numbers, std::int8_t* target) {
    for (std::size_t i = 0; i < numbers.size(); ++i) target[i] = static_cast<std::int8_t>(numbers[i]);
  };
  narrow(s.verdicts, judging.verdicts + first);
  narrow(s.words, judging.words + 3 * first);
  narrow(s.broken, judging.broken + first);
  for (std::size_t i = 0; i < m * count; ++i) {
    const LimitBreach breach{static_cast<BrokenLimit>(s.broken[i]), s.breaches[2 * i], s.breaches[2 * i + 1]};
    judging.excess[first + i] = breach.HasExcess() ? breach.Excess() : kNaN;
  }
}

// The results of a judgement as arrays.
struct Outcome {
  py::array_t<double> differences, excess;
  py::array_t<std::int8_t> verdicts, words, broken;

  // Over the leading axes of pairs and m illuminants.
  Outcome(const std::vector<py::ssize_t>& lead, py::ssize_t m)
      : differences(ShapeOver(lead, {m, 7})),
        excess(ShapeOver(lead, {m})),
        verdicts(ShapeOver(lead, {m})),
        words(ShapeOver(lead, {m, 3})),
        broken(ShapeOver(lead, {m})) {}

  static std::vector<py::ssize_t> ShapeOver(std::vector<py::ssize_t> lead,
                                            const std::vector<py::ssize_t>& tail) {
    lead.insert(lead.end(), tail.begin(), tail.end());
    return lead;
  }
};

double TotalLimitOf(const JudgeStandards& standards) {
  const JudgeLimits limits = standards.LimitsOf(0, 0);
  if (const auto* ellipse = std::get_if<CEllipseData>(&limits)) return (*ellipse)[CEllipseData::kTotalLimit];
  return std::get<CBoxTolData>(limits)[CBoxTolData::kTotal];
}

// What was done to bring curves to the grid, for a person.
py::list NotesOf(const Curves& standards, const Curves& samples) {
  py::list notes;
  if (!standards.note.empty()) notes.append("standard: " + standards.note);
  if (!samples.note.empty()) notes.append("samples: " + samples.note);
  return notes;
}

py::tuple Judge(const py::object& standard, const py::object& samples, const py::object& illuminants,
                int observer, const std::string& system, const py::object& tolerance,
                const py::object& ellipsoid, const py::object& geometry, const py::object& of,
                const std::string& verdict, double warning, const py::object& grade,
                const py::object& leastGrade, const py::object& mostInconstancy,
                const py::object& wavelengths, int interval, int threads, const py::kwargs& parameters) {
  const Curves standardRows = CurvesForSums(standard, "standard", wavelengths, interval);
  if (standardRows.count == 0) throw py::value_error("standard: at least one is expected");
  const Curves trials = CurvesForSums(samples, "samples", wavelengths, interval);
  if (!(warning >= 0.0 && warning <= 1.0)) throw py::value_error("warning: a factor from 0 to 1 is expected");
  JudgeConditions conditions;
  conditions.difference = python::SettingsOf(system, parameters);
  conditions.illuminants = DistinctIlluminantsOf(illuminants);
  conditions.observer = ObserverOf(observer);
  conditions.rule = RuleOf(verdict);
  conditions.warningFactor = warning;
  TakeOtherLimits(grade, leastGrade, mostInconstancy, conditions);
  const std::size_t k = standardRows.count, m = conditions.illuminants.size();
  if (!ellipsoid.is_none() && !tolerance.is_none())
    throw py::value_error("tolerance and ellipsoid: one of them is expected");
  std::vector<JudgeLimits> limits = ellipsoid.is_none()
                                        ? TolerancesOf(tolerance, conditions, k, m)
                                        : EllipsoidsOf(ellipsoid, conditions.difference, k, m);
  NeedLimitsOfComponents(conditions.rule, limits);
  std::vector<double> angles = AnglesOf(geometry, k, conditions);
  const JudgeStandards standards(conditions, SamplesOf(standardRows, 0, k), std::move(limits),
                                 std::move(angles));
  const Pairing pairing = PairingOf(standardRows, trials, of);
  Outcome outcome(pairing.lead, static_cast<py::ssize_t>(m));
  const Judging judging{conditions,
                        standards,
                        pairing,
                        trials,
                        outcome.differences.mutable_data(),
                        outcome.excess.mutable_data(),
                        outcome.verdicts.mutable_data(),
                        outcome.words.mutable_data(),
                        outcome.broken.mutable_data()};
  InBlocks(pairing.count, threads,
           [&](std::size_t from, std::size_t count) { JudgeBlock(judging, from, count); });
  const auto masked = [&](const py::object& array) {
    return WithMasks(array, pairing.lead, {&pairing.standards, &trials});
  };
  return py::make_tuple(masked(outcome.differences), masked(outcome.verdicts), masked(outcome.words),
                        masked(outcome.broken), masked(outcome.excess), TotalLimitOf(standards),
                        NotesOf(standardRows, trials));
}

constexpr std::size_t kShadeWords = kBluer + 1;

// Three words as a person says them: "Darker, Less Yellow".
py::object PhraseOf(std::size_t key) {
  const std::array words{static_cast<ShadeWord>(key / kShadeWords / kShadeWords),
                         static_cast<ShadeWord>(key / kShadeWords % kShadeWords),
                         static_cast<ShadeWord>(key % kShadeWords)};
  return py::str(io::JoinedWords(words));
}

// The phrases of words by number, each text once: an array of objects of the leading axes.
py::array PhrasesOf(const py::array_t<std::int8_t, py::array::c_style | py::array::forcecast>& codes) {
  if (codes.ndim() < 1 || codes.shape(codes.ndim() - 1) != 3)
    throw py::value_error("codes: expected shape (..., 3)");
  py::array result(py::dtype("O"), std::vector<py::ssize_t>(codes.shape(), codes.shape() + codes.ndim() - 1));
  auto** const target = static_cast<PyObject**>(result.mutable_data());
  std::vector<py::object> phrases(kShadeWords * kShadeWords * kShadeWords);
  for (py::ssize_t i = 0; i < result.size(); ++i) {
    std::size_t key = 0;
    for (py::ssize_t k = 3 * i; k < 3 * i + 3; ++k) {
      const auto word = static_cast<std::uint8_t>(codes.data()[k]);
      if (word >= kShadeWords) throw py::value_error("codes: there is no such shade word");
      key = key * kShadeWords + word;
    }
    if (!phrases[key]) phrases[key] = PhraseOf(key);
    Py_XDECREF(target[i]);
    target[i] = phrases[key].inc_ref().ptr();
  }
  return result;
}

}  // namespace

void DefineJudgement(py::module_& module) {
  module.def("judge", &Judge, py::arg("standard"), py::arg("samples"), py::arg("illuminants"),
             py::arg("observer"), py::kw_only(), py::arg("system"), py::arg("tolerance"),
             py::arg("ellipsoid"), py::arg("geometry"), py::arg("of"), py::arg("verdict"), py::arg("warning"),
             py::arg("grade"), py::arg("least_grade"), py::arg("most_inconstancy"), py::arg("wavelengths"),
             py::arg("interval"), py::arg("threads"));
  module.def("shade_phrases", &PhrasesOf, py::arg("codes"));
  py::list codes;
  for (const vrxIlluminant illuminant : JudgeDefaults::kIlluminants)
    codes.append(static_cast<int>(illuminant));
  module.attr("judge_defaults") = py::make_tuple(FindDifferenceSystem(JudgeDefaults::kSystem)->shortName,
                                                 codes, JudgeDefaults::kWarningFactor);
}

}  // namespace vrx::python
