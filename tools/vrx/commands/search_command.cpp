// vrx search: the nearest standards of each sample.

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/color_differences.h>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/threads_option.h"
#include "tools/vrx/job/job_options.h"
#include "tools/vrx/job/job_reader.h"
#include "tools/vrx/judging/standard_library.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct NearestOptions {
  std::string samples, standards;
  int count = 10;
  double within = 0;  // 0: any distance
  ViewingOptions viewing;
  SystemOptions system;
  CurveInputOptions input;
  JobOptions job;
  ThreadsOption threads;
  Format format = Format::kTable;
};

// The conditions that a run searches by.
struct Search : SearchConditions {
  explicit Search(const NearestOptions& given)
      : SearchConditions{given.system.Settings(), given.viewing.Illuminants(), given.viewing.Observer()},
        options(given),
        standards(*this) {
    difference.ownFormula = true;
  }

  const NearestOptions& options;
  NamedColors standards;
  bool withGeometry = false;  // a file has geometries

  /// The angle at which a sample was measured.
  double AngleOf(int32_t geometry) const { return options.system.AngleOf(geometry); }
};

void ReadStandards(CurveReader& reader, Search& search) {
  constexpr std::size_t kMost = 4'000'000;
  search.withGeometry |= reader.HasGeometries();
  ProgressBar progress(reader.Source().Size());
  CurveRow row;
  while (reader.Next(row)) {
    if (search.standards.Size() == kMost) reader.Source().FailRow("more than 4 million standards");
    search.standards.Add(row);
    progress.Update(reader.Source().Position());
  }
  search.standards.Compute();
}

// Samples without a row in the results: how many, and the first of their names.
class LeftOut {
 public:
  void Add(const std::string& name) {
    constexpr std::size_t kMost = 12;
    if (++count_ <= kMost) names_.append(names_.empty() ? "" : ", ").append(name);
    if (count_ == kMost + 1) names_ += ", ...";
  }
  void Warn(const std::string& file, const std::string& what) const {
    if (count_ == 0) return;
    PrintMessage(file + ": warning: " + std::to_string(count_) +
                 (count_ == 1 ? " sample has " : " samples have ") + what + ": " + names_);
  }

 private:
  std::size_t count_ = 0;
  std::string names_;
};

class SearchOutput {
 public:
  SearchOutput(const Search& search, OutputStream& output)
      : search_(search), rows_(MakeRowWriter(search.options.format, output, Columns(search))) {}

  void Add(const NamedColors& samples, std::size_t sample, std::span<const NearestMatch> matches) {
    const double within = search_.options.within;
    if (matches.front().index == NearestMatch::kNone) return unserved_.Add(samples.Name(sample));
    if (within > 0 && matches.front().difference > within) return farther_.Add(samples.Name(sample));
    for (std::size_t k = 0; k < matches.size() && matches[k].index != NearestMatch::kNone; ++k) {
      const NearestMatch& match = matches[k];
      if (within > 0 && match.difference > within) return;
      rows_->Text(samples.Name(sample));
      rows_->Integer(static_cast<int64_t>(k + 1));
      rows_->Text(search_.standards.Name(match.index));
      if (search_.withGeometry) rows_->Text(GeometryName(search_.standards.Geometry(match.index)));
      rows_->Known(match.difference);
      for (std::size_t j = 0; search_.illuminants.size() > 1 && j < search_.illuminants.size(); ++j) {
        rows_->Number(ComputeDifference(search_.difference, search_.standards.At(j, match.index),
                                        samples.At(j, sample), search_.AngleOf(samples.Geometry(sample)))
                          .dE);
      }
      rows_->EndRow();
    }
  }
  void Finish() { rows_->Finish(); }
  /// Says on standard error which samples of `file` have no row.
  void WarnAboutLeftOut(const std::string& file) const {
    unserved_.Warn(file, "no standard that could be near, of their geometry or without one");
    farther_.Warn(file, "no standard within " + io::ShortestText(search_.options.within));
  }

 private:
  static std::vector<Column> Columns(const Search& search) {
    std::vector<Column> columns{{"sample"}, {"rank"}, {"standard"}};
    if (search.withGeometry) columns.push_back({"geometry"});
    columns.push_back({"difference"});
    if (search.illuminants.size() == 1) return columns;
    for (const vrxIlluminant illuminant : search.illuminants)
      columns.push_back({ShownIlluminant(illuminant)});
    return columns;
  }

  const Search& search_;
  std::unique_ptr<RowWriter> rows_;
  LeftOut unserved_, farther_;
};

// The job whose standards are searched; null where a file names them.
std::unique_ptr<store::Store> OpenJobOf(const NearestOptions& options) {
  const bool isNamed = !options.job.file.empty();
  if (!options.standards.empty() && isNamed)
    throw InputError("--job: the standards come from the job; name the file of the samples alone");
  if (!options.standards.empty()) return nullptr;
  if (options.job.File().empty()) throw InputError("STANDARDS is required");
  return OpenJob(options.job);
}

void RunSearch(NearestOptions& options) {
  constexpr std::size_t kChunk = 256;
  if (options.samples == "-" && options.standards == "-") {
    throw InputError("samples and standards cannot both come from standard input");
  }
  const auto job = OpenJobOf(options);
  CurveReader standards =
      job ? CurveReader(tool::ReadStandards(*job, options.job.Shown()))
          : OpenCurves(options.standards, options.input.OfStandards(), Content::kCurvesOrColors);
  CurveReader reader = OpenCurves(options.samples, options.input, Content::kCurvesOrColors);
  options.viewing.Follow({&standards, &reader});
  Search search(options);
  ReadStandards(standards, search);
  const auto count = static_cast<std::size_t>(options.count);
  search.withGeometry |= reader.HasGeometries();
  OutputStream output;
  SearchOutput results(search, output);
  NamedColors samples(search);
  StandardsByGeometry library(search.standards.Colors(), search.standards.Geometries());
  const auto searchChunk = [&] {
    samples.Compute();
    std::vector<NearestMatch> matches(samples.Size() * count);
    library.Find(search.difference, options.system.Angle(), samples.Colors(), samples.Geometries(), count,
                 matches, {options.threads.Count(), nullptr});
    for (std::size_t i = 0; i < samples.Size(); ++i)
      results.Add(samples, i, std::span(matches).subspan(i * count, count));
    samples.Clear();
  };
  CurveRow row;
  while (reader.Next(row)) {
    samples.Add(row);
    if (samples.Size() == kChunk) searchChunk();
  }
  if (samples.Size() > 0) searchChunk();
  results.Finish();
  output.Finish();
  WarnAboutInput(standards, reader);
  results.WarnAboutLeftOut(reader.Source().Name());
  options.system.WarnAboutAngle(reader.HasGeometries());
}

}  // namespace

void AddSearch(Command& tool) {
  const auto options = std::make_shared<NearestOptions>();
  Command command = tool.AddCommand("search", "Find the nearest standards of each sample");
  command
      .AddOption("SAMPLES", options->samples,
                 "Curves or colours to find standards for (- for standard input)")
      .ReadsFile()
      .Required();
  command.AddOption("STANDARDS", options->standards, "Curves or colours of the standards, up to 4 million")
      .ReadsFile();
  command.AddOption("--count", options->count, "Number of standards to find for each sample")
      .Shows("1 to 1000 [10]")
      .Check([](const std::string& text) {
        int count = 0;
        const char* const end = text.data() + text.size();
        const bool whole = std::from_chars(text.data(), end, count).ptr == end;
        return whole && count >= 1 && count <= 1000 ? "" : "must be a whole number from 1 to 1000";
      });
  command.AddOption("--within", options->within, "Leave out standards farther away than this")
      .Shows("DIFFERENCE [any]");
  AddSystemOptions(command, options->system, "cie2000");
  AddViewingOptions(command, options->viewing, UsualIlluminants());
  AddCurveInputOptions(command, options->input);
  AddJobOptions(command, options->job);
  AddThreadsOption(command, options->threads);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The distance of a standard is its largest difference under any of the illuminants, so that a "
      "metamer,\n"
      "which matches under one lamp only, does not pass for a match. Standards at the same distance keep "
      "the\n"
      "order of the file. Differences are computed from the standard.\n\n"
      "Examples:\n"
      "  vrx search batch.csv master.csv                      # the ten nearest by CIEDE2000 under D65, A, "
      "CWF\n"
      "  vrx search batch.csv master.csv --count 1 --system cmc --format csv\n"
      "  vrx search batch.csv master.csv --within 1 --illuminants D65\n"
      "  vrx search batch.csv --job plant.vrxjob              # among the standards of a job\n");
  command.SetAction([options] {
    RunSearch(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
