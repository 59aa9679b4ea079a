// vrx convert: measurements from one form of file to another.

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include <vrxio/files/measurement_files.h>
#include <vrxio/files/measurement_writer.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

using Form = ReadOptions::Form;

struct ConvertOptions {
  std::string in;
  std::string out;
  CurveInputOptions input;
  Form outputForm = Form::kByContent;
  bool outputFraction = false;
  std::string grid;
};

// The form of the new file by its name.
Form FormOfName(const std::string& name) {
  const std::size_t dot = name.find_last_of("./");
  const std::string extension = dot == std::string::npos || name[dot] != '.' ? "" : name.substr(dot + 1);
  const std::pair<const char*, Form> kExtensions[] = {
      {"csv", Form::kCsv}, {"txt", Form::kCgats}, {"cgats", Form::kCgats}, {"it8", Form::kCgats},
      {"cxf", Form::kCxf}, {"xml", Form::kCxf},   {"json", Form::kJson}};
  for (const auto& [known, form] : kExtensions) {
    if (EqualsIgnoringCase(extension, known)) return form;
  }
  throw InputError(name + ": the name tells no form of file; --to csv, cgats, cxf or json does");
}

std::string Now() {
  const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(now - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text;
}

void WriteFile(MeasurementReader& source, const WriteOptions& writing, const std::string& path) {
  FileReplacer file;
  if (!file.Open(path)) throw InputError(path + ": " + file.GetError());
  std::string buffer;
  const auto send = [&] {
    try {
      file.Write(std::as_bytes(std::span(buffer)));
    } catch (const CArchiveException&) {
      throw OutputError(path + ": " + file.GetError());
    }
    buffer.clear();
  };
  WriteMeasurements(source, writing, [&](std::string_view text) {
    constexpr std::size_t kEnough = std::size_t{1} << 18;
    buffer += text;
    if (buffer.size() > kEnough) send();
  });
  send();
  if (!file.Commit()) throw OutputError(path + ": " + file.GetError());
}

void RunConvert(const ConvertOptions& options) {
  WriteOptions writing;
  writing.form = options.outputForm == Form::kByContent ? FormOfName(options.out) : options.outputForm;
  writing.fraction = options.outputFraction;
  if (writing.fraction && writing.form == Form::kCgats) {
    throw InputError("--to-fraction: CGATS is written in percent, as SPECTRAL_NORM says in it");
  }
  if (!options.grid.empty()) writing.grid = ParseWavelengthRange(options.grid, "--grid");
  writing.creationDate = Now();
  InputStream input = OpenInput(options.in);
  if (input.size == 0) HoldInput(input);  // it is read twice
  const auto source = OpenMeasurements(std::move(input), options.input.Reading());
  if (options.out != "-") return WriteFile(*source, writing, options.out);
  OutputStream output;
  WriteMeasurements(*source, writing, [&](std::string_view text) { output.Append(text); });
  output.Finish();
}

}  // namespace

void AddConvert(Command& tool) {
  const auto options = std::make_shared<ConvertOptions>();
  Command command = tool.AddCommand("convert", "Measurements from one form of file to another");
  command.AddOption("IN", options->in, "CSV, CGATS, CxF3 or JSON (- reads standard input)").Required();
  command
      .AddOption("OUT", options->out,
                 "The new file, by its name .csv, .txt, .cxf or .json (- writes standard output)")
      .Required();
  command.AddChoice("--to", options->outputForm, {"auto", "csv", "cgats", "cxf", "json"},
                    "The form of the new file");
  command.AddOption("--grid", options->grid, "Wavelengths of the new file in nm").Shows("FIRST-LAST/STEP");
  command.AddFlag("--to-fraction", options->outputFraction,
                  "Write CSV and JSON as fractions of 1, not percent");
  AddReadOptions(command, options->input);
  command.SetNotes(
      "Values read back to the same numbers unless --grid interpolates them. Names, geometry, M condition, "
      "filter,\n"
      "backing, instrument and aperture are kept.\n\n"
      "Examples:\n"
      "  vrx convert examples/chart_ohta.csv chart.cxf --grid 380-730/10\n"
      "  vrx convert examples/chart_ohta.csv - --to cgats\n");
  command.SetAction([options] {
    RunConvert(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
