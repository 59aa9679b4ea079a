// vrx instruments: how far two instruments agree on a set of tiles, and what a correction would leave.

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/instrument_profile.h>
#include <vrxmath/foundation/units.h>

#include <vrxio/csv/correction_file.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/commands/instrument_drift.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/readings.h"
#include "tools/vrx/judging/judge.h"
#include "tools/vrx/judging/judging_options.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct InstrumentOptions {
  std::string reference, other;
  std::string terms = "zero,scale,wavelength";
  bool summary = false, factors = false, drift = false;
  ViewingOptions viewing;
  SystemOptions system;
  CurveInputOptions input;
  Format format = Format::kTable;
};

std::uint32_t TermsFrom(const std::string& list) {
  std::uint32_t terms = 0;
  for (const std::string& name : SplitList(list, ',')) {
    const auto found = std::ranges::find(kCorrectionTerms, name);
    if (found == kCorrectionTerms.end())
      throw InputError("--terms: " + name + " is not one of zero, scale, nonlinear, wavelength, bandwidth");
    terms |= 1U << static_cast<std::uint32_t>(found - kCorrectionTerms.begin());
  }
  if (terms == 0) throw InputError("--terms: name one or more");
  return terms;
}

// The tiles that both instruments measured, in the order of the reference.
struct Tiles {
  std::vector<std::string> ids;
  std::vector<CReflData> reference, other;
};

// The tiles of a file by their ids. Another angle of a tile is no other reading of it, and an instrument's optics are other ones at
// each angle: a file has one geometry.
struct TileFile {
  std::vector<Readings> tiles;
  int32_t geometry = kNoGeometry;
};

TileFile ReadTiles(CurveReader& reader) {
  constexpr std::size_t kMost = 1000;
  TileFile file{ReadReadings(reader, 0)};
  if (file.tiles.size() > kMost) throw InputError(reader.Source().Name() + ": more than 1000 tiles");
  for (const Readings& tile : file.tiles) {
    if (&tile != &file.tiles.front() && tile.geometry != file.geometry) {
      throw InputError(reader.Source().Name() + ": tiles were read in geometry \"" +
                       GeometryName(file.geometry) + "\" and in \"" + GeometryName(tile.geometry) +
                       "\": instruments are compared in one geometry at a time, each in a file of its own");
    }
    file.geometry = tile.geometry;
  }
  return file;
}

// Whether two geometries contradict each other; M0 to M3 leave the angles open.
bool AreOtherGeometries(int32_t a, int32_t b) {
  return a != kNoGeometry && b != kNoGeometry && a != b &&
         IsMeasurementCondition(a) == IsMeasurementCondition(b);
}

Tiles ReadBoth(const InstrumentOptions& options) {
  CurveReader reference = OpenCurves(options.reference, options.input);
  CurveReader other = OpenCurves(options.other, options.input);
  const TileFile ofReference = ReadTiles(reference), ofOther = ReadTiles(other);
  if (AreOtherGeometries(ofReference.geometry, ofOther.geometry)) {
    throw InputError(options.other + ": its tiles were read in " + GeometryName(ofOther.geometry) +
                     ", and those of " + options.reference + " in " + GeometryName(ofReference.geometry) +
                     ": no correction makes one of the other");
  }
  std::map<std::string, CReflData> curves;
  for (const Readings& readings : ofOther.tiles) curves.emplace(readings.id, readings.Mean().curve);
  Tiles tiles;
  for (const Readings& readings : ofReference.tiles) {
    const auto found = curves.find(readings.id);
    if (found == curves.end()) continue;
    tiles.ids.push_back(readings.id);
    tiles.reference.push_back(readings.Mean().curve);
    tiles.other.push_back(found->second);
  }
  if (tiles.ids.empty())
    throw InputError(options.other + ": no tile has the id of one in " + options.reference);
  const std::size_t unmatched = ofReference.tiles.size() + ofOther.tiles.size() - 2 * tiles.ids.size();
  if (unmatched > 0)
    PrintMessage(options.other + ": warning: " + std::to_string(unmatched) +
                 " tiles are in one of the two files only and are left out");
  WarnAboutInput(reference, other);
  return tiles;
}

// Differences of exchanged tiles show for themselves once a warning says what they are; factors would correct every trial by them.
void ReportMisplaced(const Tiles& tiles, std::uint32_t terms, const InstrumentOptions& options) {
  for (const MisplacedTile& place : InstrumentProfile::FindMisplaced(tiles.reference, tiles.other, terms)) {
    const std::string text =
        MisplacedTile::Describe(place, tiles.ids[place.tile], tiles.ids[place.looksLike]);
    if (options.factors) throw InputError(options.other + ": " + text);
    PrintMessage(options.other + ": warning: " + text);
  }
}

std::vector<double> DifferencesOf(const Tiles& tiles, std::span<const CReflData> readings, Judge& judge) {
  std::vector<double> differences;
  for (std::size_t t = 0; t < readings.size(); ++t)
    differences.push_back(DifferenceFrom(tiles.reference[t], readings[t], judge));
  return differences;
}

InstrumentProfile ProfileOf(const Tiles& tiles, std::uint32_t terms, const std::string& file) {
  const auto profile = InstrumentProfile::Fit(tiles.reference, tiles.other, terms);
  if (!profile) throw InputError(file + ": a curve of a tile is no measurement");
  return *profile;
}

// Each tile as a profile corrects it that was fitted to the others.
std::vector<CReflData> LeftOut(const Tiles& tiles, std::uint32_t terms, const std::string& file) {
  std::vector<CReflData> corrected;
  for (std::size_t t = 0; t < tiles.ids.size(); ++t) {
    Tiles rest = tiles;
    const auto at = static_cast<std::ptrdiff_t>(t);
    rest.ids.erase(rest.ids.begin() + at);
    rest.reference.erase(rest.reference.begin() + at);
    rest.other.erase(rest.other.begin() + at);
    corrected.push_back(ProfileOf(rest, terms, file).Corrected(tiles.other[t]));
  }
  return corrected;
}

// The differences from the reference: as read, as corrected, and as corrected by the other tiles.
using Three = std::array<std::vector<double>, 3>;

double MeanOf(std::span<const double> values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

void WriteTiles(const Tiles& tiles, const Three& three, const Format& format, OutputStream& output) {
  const auto rows = MakeRowWriter(format, output,
                                  {{"id"},
                                   {"difference", "as read", 3},
                                   {"corrected", "corrected", 3},
                                   {"left_out", "by the other tiles", 3}});
  for (std::size_t t = 0; t < tiles.ids.size(); ++t) {
    rows->Text(tiles.ids[t]);
    for (const std::vector<double>& differences : three) rows->Known(differences[t]);
    rows->EndRow();
  }
  rows->Finish();
}

void WriteSummary(const Three& three, const Format& format, OutputStream& output) {
  const auto rows = MakeRowWriter(format, output,
                                  {{"readings"}, {"tiles"}, {"mean", "mean", 3}, {"largest", "largest", 3}});
  constexpr const char* kNames[] = {"as read", "corrected", "by the other tiles"};
  for (std::size_t k = 0; k < three.size(); ++k) {
    rows->Text(kNames[k]);
    rows->Integer(static_cast<int64_t>(three[k].size()));
    rows->Known(MeanOf(three[k]));
    rows->Known(*std::ranges::max_element(three[k]));
    rows->EndRow();
  }
  rows->Finish();
}

// A correction that makes tiles worse which took no part will make trials worse.
void WarnOfUselessCorrection(const Three& three, const std::string& file) {
  const double asRead = MeanOf(three[0]), byTheOthers = MeanOf(three[2]);
  if (byTheOthers <= asRead) return;
  PrintMessage(file +
               ": warning: the correction makes tiles worse that it was not fitted to: mean difference " +
               FixedDecimals(byTheOthers, 3) + " instead of " + FixedDecimals(asRead, 3) +
               " as read; use fewer terms, more tiles, or none");
}

void WriteFactors(const InstrumentProfile& profile, const Format& format, OutputStream& output) {
  std::vector<Column> columns{{"nm"}};
  for (const std::string_view name : kCorrectionTerms)
    columns.push_back({std::string(name), std::string(name), 5});
  const auto rows = MakeRowWriter(format, output, std::move(columns));
  for (int32_t i = 0; i < kWavelengths; ++i) {
    rows->Integer(static_cast<int64_t>(WavelengthAt(i)));
    for (const double factor : profile.FactorsAt(static_cast<std::size_t>(i))) rows->Known(factor);
    rows->EndRow();
  }
  rows->Finish();
}

void RunDrift(const InstrumentOptions& options, const JudgeSettings& settings) {
  if (!options.other.empty()) throw InputError("--drift: name one file, with all dates, and not OTHER");
  OutputStream output;
  output.SetFormat(options.format);
  WriteDrift(OpenCurves(options.reference, options.input), settings, options.format, output);
  output.Finish();
}

void RunInstruments(const InstrumentOptions& options) {
  const std::uint32_t terms = TermsFrom(options.terms);
  const JudgeSettings settings = SettingsUnder(options.viewing, options.system);
  options.viewing.RequireOneIlluminant();
  if (options.drift) return RunDrift(options, settings);
  if (options.other.empty()) throw InputError("OTHER is required, or --drift");
  if (options.reference == "-" && options.other == "-")
    throw InputError("REFERENCE and OTHER cannot both come from standard input: name a file");
  const Tiles tiles = ReadBoth(options);
  if (tiles.ids.size() < InstrumentProfile::FewestTiles(terms)) {
    throw InputError(options.other + ": " + std::to_string(tiles.ids.size()) +
                     " tiles are not enough for the terms: two more than terms are needed");
  }
  const InstrumentProfile profile = ProfileOf(tiles, terms, options.other);
  ReportMisplaced(tiles, terms, options);
  std::vector<CReflData> corrected;
  for (const CReflData& reading : tiles.other) corrected.push_back(profile.Corrected(reading));
  Judge judge(settings);
  const Three three = {DifferencesOf(tiles, tiles.other, judge), DifferencesOf(tiles, corrected, judge),
                       DifferencesOf(tiles, LeftOut(tiles, terms, options.other), judge)};
  WarnOfUselessCorrection(three, options.other);
  OutputStream output;
  output.SetFormat(options.format);
  if (options.factors) {
    WriteFactors(profile, options.format, output);
    return output.Finish();
  }
  if (!options.summary) WriteTiles(tiles, three, options.format, output);
  if (options.format == Format::kTable && !options.summary) output.Append('\n');
  if (options.summary || options.format == Format::kTable) WriteSummary(three, options.format, output);
  output.Finish();
}

}  // namespace

void AddInstruments(Command& tool) {
  const auto options = std::make_shared<InstrumentOptions>();
  Command command =
      tool.AddCommand("instruments", "Compare two instruments, or the dates of one, on a set of tiles");
  command.AddOption("REFERENCE", options->reference, "Curves of the tiles by the reference instrument")
      .ReadsFile()
      .Required();
  command.AddOption("OTHER", options->other, "Curves of the same tiles by another one, with the same ids")
      .ReadsFile();
  const Option terms =
      command
          .AddOption("--terms", options->terms,
                     "Faults to correct: zero, scale, nonlinear (R times 1 - R), wavelength, bandwidth")
          .Shows("NAME,... [zero,scale,wavelength]");
  const Option summary =
      command.AddFlag("--summary", options->summary, "Write the mean and largest differences alone");
  const Option factors = command.AddFlag("--factors", options->factors,
                                         "Write the factors of the correction at each wavelength");
  command
      .AddFlag("--drift", options->drift,
               "Compare the dates of one file with its first: readings of the same tiles, with a column date")
      .Excludes(terms)
      .Excludes(summary)
      .Excludes(factors);
  AddViewingOptions(command, options->viewing, "D65");
  AddSystemOptions(command, options->system, "lab");
  AddUncorrectedInputOptions(command, options->input);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "Rows of one id are averaged. For each tile there are three differences from the reference: as read, "
      "as\n"
      "corrected, and as corrected by a fit to the other tiles. Where the third is far above the second, "
      "the\n"
      "correction follows the tiles and not the instrument: use fewer terms or more tiles. What --factors "
      "--format\n"
      "csv writes is a file for --correction, by which other commands correct the readings of OTHER.\n\n"
      "Examples:\n"
      "  vrx instruments examples/chart_ohta.csv examples/chart_average.csv\n"
      "  vrx instruments examples/chart_ohta.csv examples/chart_average.csv --terms zero,scale --summary\n"
      "  vrx instruments series.csv --drift\n");
  command.SetAction([options] {
    RunInstruments(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
