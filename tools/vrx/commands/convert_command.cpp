// vrx convert: measurements from one form of file to another.

#include <memory>
#include <string>

#include <vrxio/files/measurement_writer.h>
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/output/measurement_output.h"

namespace vrx::tool {
namespace {

struct ConvertOptions {
  std::string in;
  std::string out;
  CurveInputOptions input;
  WritingOptions writing;
};

void RunConvert(const ConvertOptions& options) {
  const WriteOptions writing = WritingOf(options.writing, options.out);
  const Converted converted =
      ConvertMeasurements(options.in, options.out, options.input.Reading(), writing,
                          [&](MeasurementReader& source, const WriteOptions& given) {
                            ProgressBar progress(2 * source.Size());
                            WriteOptions shown = given;
                            shown.onProgress = [&progress](uint64_t done) { progress.Update(done); };
                            options.out == "-" ? WriteMeasurementOutput(source, shown)
                                               : WriteMeasurementFile(source, shown, options.out);
                          });
  if (!converted.losses.empty())
    PrintMessage(converted.source + ": warning: not kept: " + Listed(converted.losses));
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
  command.AddChoice("--to", options->writing.form, {"auto", "csv", "cgats", "cxf", "json"},
                    "Format of the new file; auto: by its name");
  command.AddOption("--grid", options->writing.grid, "Wavelengths of the new file, in nm")
      .Shows("FIRST-LAST/STEP");
  command.AddFlag("--to-fraction", options->writing.fraction,
                  "Write reflectances in CSV and JSON as fractions of 1, not percent");
  command.AddFlag("--csv-safe", options->writing.csvSafe,
                  "Put an apostrophe before any text in CSV that a spreadsheet would run as a formula");
  command.AddFlag("--decimal-comma", options->writing.decimalComma,
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
