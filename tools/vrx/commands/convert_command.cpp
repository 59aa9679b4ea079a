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
#include "tools/vrx/output/measurement_output.h"
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
  writing.creationDate = CreationDate();
  return writing;
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
    options.out == "-" ? WriteMeasurementOutput(*source, writing)
                       : WriteMeasurementFile(*source, writing, options.out);
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
