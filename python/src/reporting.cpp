// Reports of judgements.

#include <functional>
#include <string>
#include <utility>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "python/src/module.h"
#include "python/src/names.h"
#include "python/src/tables.h"
#include "tools/vrx/report/judge_report_text.h"

namespace vrx::python {
namespace {

namespace py = pybind11;

// Samples of memory by what opens them; a file is named instead.
std::function<io::CurveReader()> OpenerOf(const py::object& samples, std::string& file, const char* name) {
  if (!py::isinstance<py::dict>(samples)) {
    file = samples.cast<std::string>();
    return nullptr;
  }
  return [table = TableOf(samples), name] {
    return io::CurveReader(io::OpenMeasurementTable(table, name), io::Content::kCurvesOrColors);
  };
}

// Codes of built-in illuminants as they were given, so that results name them so; the numbers of others.
void TakeIlluminants(const py::list& illuminants, tool::ViewingOptions& viewing) {
  for (const py::handle one : illuminants) {
    const vrxIlluminant number = IlluminantOf(one);
    if (!viewing.illuminants.empty()) viewing.illuminants += ",";
    viewing.illuminants +=
        py::isinstance<py::str>(one) ? one.cast<std::string>() : std::to_string(static_cast<int>(number));
    if (!py::isinstance<Illuminant>(one)) continue;
    const std::string& name = one.cast<const Illuminant&>().name;
    viewing.names[number] = name.substr(0, name.find('|'));
  }
}

std::string Report(const py::object& standard, const py::object& samples, const py::list& illuminants,
                   const py::dict& texts, const py::dict& flags, double warning) {
  const auto text = [&](const char* name) { return texts[name].cast<std::string>(); };
  tool::ComparisonOptions comparison;
  comparison.content = io::Content::kCurvesOrColors;
  comparison.openStandards = OpenerOf(standard, comparison.standard, "standard");
  comparison.openTrials = OpenerOf(samples, comparison.trials, "samples");
  comparison.standardId = text("standard_id");
  comparison.pairs = flags["pairs"].cast<bool>();
  comparison.average = flags["average"].cast<bool>();
  comparison.input.fraction = text("scale") == "fraction";
  comparison.input.percent = text("scale") == "percent";
  tool::JudgingOptions judging;
  TakeIlluminants(illuminants, judging.viewing);
  judging.viewing.observer = text("observer");
  judging.system.system = text("system");
  judging.system.parameters = text("parameters");
  judging.tolerance = text("tolerance");
  judging.verdict = text("verdict");
  judging.ellipse = flags["ellipse"].cast<bool>();
  judging.warning = warning;
  tool::ReportOptions report;
  report.title = text("title");
  report.logo = text("logo");
  report.author = text("author");
  report.customer = text("customer");
  report.lot = text("lot");
  report.approval = text("approval");
  return tool::JudgeReportText(comparison, judging, report);
}

}  // namespace

void DefineReporting(py::module_& module) {
  module.def("report", &Report, py::arg("standard"), py::arg("samples"), py::arg("illuminants"),
             py::arg("texts"), py::arg("flags"), py::arg("warning"));
}

}  // namespace vrx::python
