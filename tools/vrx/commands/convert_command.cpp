// vrx convert: measurements from one form of file to another.

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/files/measurement_files.h>
#include <vrxio/files/measurement_writer.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/same_file.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/file_output.h"
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
  bool csvSafe = false, decimalComma = false;
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
  throw InputError(name +
                   ": the name does not tell the format; choose one with --to csv, cgats, cxf or json");
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

// Names in a message; many are cut.
std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 12;
  std::string list;
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i) list += (i > 0 ? ", " : "") + names[i];
  return names.size() > kMost ? list + " and " + std::to_string(names.size() - kMost) + " more" : list;
}

WriteOptions WritingOf(const ConvertOptions& options) {
  WriteOptions writing;
  writing.form = options.outputForm == Form::kByContent ? FormOfName(options.out) : options.outputForm;
  writing.fraction = options.outputFraction;
  writing.csvSafe = options.csvSafe;
  writing.decimalComma = options.decimalComma;
  if (writing.fraction && writing.form == Form::kCgats) {
    throw InputError("--to-fraction: CGATS is written in percent, as its SPECTRAL_NORM says");
  }
  if ((options.csvSafe || options.decimalComma) && writing.form != Form::kCsv) {
    throw InputError(std::string(options.csvSafe ? "--csv-safe" : "--decimal-comma") + " is for CSV");
  }
  if (!options.grid.empty()) writing.grid = ParseWavelengthRange(options.grid, "--grid");
  writing.creationDate = Now();
  return writing;
}

// Collects pieces of text, which are passed on when there are many of them.
class Pieces {
 public:
  explicit Pieces(TextSink sink) : sink_(std::move(sink)) {}
  void Add(std::string_view text) {
    constexpr std::size_t kEnough = std::size_t{1} << 18;
    text_ += text;
    if (text_.size() > kEnough) Send();
  }
  void Send() {
    sink_(text_);
    text_.clear();
  }

 private:
  TextSink sink_;
  std::string text_;
};

void WriteFile(MeasurementReader& source, const WriteOptions& writing, const std::string& path) {
  std::optional<OutputFile> file;  // opened when it is known that something is written
  Pieces pieces([&](std::string_view text) {
    if (!file) file.emplace(path);
    file->Write(text);
  });
  WriteMeasurements(source, writing, [&](std::string_view text) { pieces.Add(text); });
  pieces.Send();
  file->Commit();
}

// To standard output; what a terminal would obey is not shown on one.
void WriteOutput(MeasurementReader& source, const WriteOptions& writing) {
  OutputStream output;
  Pieces pieces([&](std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      output.AppendShown(text.substr(0, end));
      if (end < text.size()) output.Append('\n');
      text.remove_prefix(std::min(end + 1, text.size()));
    }
  });
  WriteMeasurements(source, writing, [&](std::string_view text) { pieces.Add(text); });
  pieces.Send();
  output.Finish();
}

void RunConvert(const ConvertOptions& options) {
  WriteOptions writing = WritingOf(options);
  InputStream input = OpenInput(options.in);
  const bool ontoItself = options.in != "-" && options.out != "-" && AreOneFile(options.in, options.out);
  // What has no size is read twice; Windows replaces no file that is still being read.
  if (input.size == 0 || ontoItself) HoldInput(input);
  ReadOptions reading = options.input.Reading();
  reading.keepsOthers = true;
  const auto source = OpenMeasurements(std::move(input), reading);
  std::vector<std::string> losses;
  writing.onLosses = [&](const std::vector<std::string>& lost) {
    if (ontoItself) {
      throw InputError(options.out + ": the file to be replaced would lose " + Listed(lost) +
                       "; write to another");
    }
    losses = lost;
  };
  {
    ProgressBar progress(2 * source->Size());
    writing.onProgress = [&progress](uint64_t done) { progress.Update(done); };
    options.out == "-" ? WriteOutput(*source, writing) : WriteFile(*source, writing, options.out);
  }
  if (source->CountUnmeasured() > 0) {
    losses.push_back(std::to_string(source->CountUnmeasured()) + " rows without values");
  }
  if (!losses.empty()) PrintMessage(source->Name() + ": warning: not kept: " + Listed(losses));
}

}  // namespace

void AddConvert(Command& tool) {
  const auto options = std::make_shared<ConvertOptions>();
  Command command = tool.AddCommand("convert", "Convert measurements from one file format to another");
  command.AddOption("IN", options->in, "CSV, CGATS, CxF3 or JSON (- for standard input)")
      .ReadsFile()
      .Required();
  command
      .AddOption("OUT", options->out,
                 "File to write, named .csv, .txt (CGATS), .cxf or .json (- for standard output)")
      .Required();
  command.AddChoice("--to", options->outputForm, {"auto", "csv", "cgats", "cxf", "json"},
                    "Format of the new file; auto: by its name");
  command.AddOption("--grid", options->grid, "Wavelengths of the new file, in nm").Shows("FIRST-LAST/STEP");
  command.AddFlag("--to-fraction", options->outputFraction,
                  "Write reflectances in CSV and JSON as fractions of 1, not percent");
  command.AddFlag("--csv-safe", options->csvSafe,
                  "Put an apostrophe before any text in CSV that a spreadsheet would run as a formula");
  command.AddFlag("--decimal-comma", options->decimalComma,
                  "Write decimal commas in CSV, and semicolons between columns");
  AddReadOptions(command, options->input);
  command.SetNotes(
      "Values read back as the same numbers unless --grid interpolates them. Names, dates, conditions and "
      "columns\n"
      "that vrx has no use for, such as RGB or densities, are kept; a warning names whatever the new format "
      "cannot\n"
      "hold. A file can be converted in place only if nothing is lost.\n\n"
      "Examples:\n"
      "  vrx convert examples/chart_ohta.csv chart.cxf --grid 380-730/10\n"
      "  vrx convert examples/chart_ohta.csv - --to cgats\n");
  command.SetAction([options] {
    RunConvert(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
