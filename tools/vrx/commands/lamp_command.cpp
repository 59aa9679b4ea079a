// vrx lamp: colour temperature and colour rendering of lamps from their spectra.

#include <memory>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_rendering.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/user_illuminants.h>

#include <vrxio/csv/illuminant_files.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct LampOptions {
  std::vector<std::string> files;
  bool straight = false;
  Format format = Format::kTable;
};

std::vector<Column> LampColumns() {
  std::vector<Column> columns{{"lamp"},          {"x", "x", 4},
                              {"y", "y", 4},     {"cct", "CCT, K", 0},
                              {"duv", "Duv", 4}, {"reference_distance", "from reference", 4},
                              {"Ra", "Ra", 1}};
  for (int i = 1; i <= 14; ++i) columns.push_back({"R" + std::to_string(i), "", 1, Room::kSpare});
  columns.push_back({"note"});
  return columns;
}

// What a reader of the indices has to know.
std::string NoteOf(const ColorRendering& rendering) {
  if (IsUnset(rendering.Ra)) return "no colour temperature";
  return rendering.referenceDistance > kFarthestReference ? "too far from its reference for CIE 13.3" : "";
}

void WriteLamp(const TabulatedSpectrum& lamp, SpectralInterpolation interpolation, RowWriter& rows) {
  const SpectralPower power = ResampleSpectrum(lamp.power, lamp.firstWavelength, lamp.step, interpolation);
  const Xy xy = Chromaticity(SpectrumToXyz(power, kObserver2));
  const ColorRendering rendering = FindColorRendering(power);
  rows.Text(lamp.heading);
  rows.Number(xy.x);
  rows.Number(xy.y);
  rows.Number(rendering.temperature.kelvin);
  rows.Number(rendering.temperature.Duv);
  rows.Number(rendering.referenceDistance);
  rows.Number(rendering.Ra);
  for (const double index : rendering.R) rows.Number(index);
  rows.Text(NoteOf(rendering));
  rows.EndRow();
}

void RunLamp(const LampOptions& options) {
  const auto interpolation =
      options.straight ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange;
  OutputStream output;
  output.SetFormat(options.format);
  const auto rows = MakeRowWriter(options.format, output, LampColumns());
  for (const std::string& file : options.files) {
    for (const TabulatedSpectrum& lamp : ReadSpectra(file)) {
      const IlluminantError error = CheckSpectrum(lamp.power, lamp.firstWavelength, lamp.step);
      if (error != IlluminantError::kNone)
        throw InputError(file + ": lamp \"" + lamp.heading + "\": " + IlluminantErrorText(error).ToUtf8());
      WriteLamp(lamp, interpolation, *rows);
    }
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddLamp(Command& tool) {
  const auto options = std::make_shared<LampOptions>();
  Command command = tool.AddCommand("lamp", "Compute colour temperature and colour rendering of lamps");
  command
      .AddOption(
          "FILE", options->files,
          "Spectral power of lamps: a column nm and one for each; 1, 5 or 10 nm apart (- for standard input)")
      .ReadsFile()
      .Required();
  command.AddFlag("--linear", options->straight, "Interpolate to 1 nm linearly, not by cubics");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Under the 2 degree observer: chromaticity, correlated colour temperature, Duv, and the general (Ra) "
      "and\n"
      "special (R1 to R14) colour rendering indices of CIE 13.3. Indices of a lamp that is farther than "
      "0.0054 in\n"
      "CIE 1960 u, v from its reference are not to be stated as such; the note says so.\n\n"
      "Example:\n"
      "  vrx lamp lamps.csv --format csv\n");
  SetAction(command, options, RunLamp);
}

}  // namespace vrx::tool
