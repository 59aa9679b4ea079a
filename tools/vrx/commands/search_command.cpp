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

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/input/curve_input.h"
#include "tools/vrx/input/threads_option.h"
#include "tools/vrx/judging/judge.h"
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
  ThreadsOption threads;
  Format format = Format::kTable;
};

// The conditions that colours are computed for.
struct SearchConditions {
  CDifferenceSettings difference;
  std::vector<vrxIlluminant> illuminants;
  int32_t observer = kObserver10;
};

// Colours under every illuminant, and their names.
class NamedColors {
 public:
  /// `conditions` must outlive it.
  explicit NamedColors(const SearchConditions& conditions)
      : conditions_(conditions), colors_{std::vector<ColorTable::Under>(conditions.illuminants.size())} {}

  void Add(const CurveRow& row) {
    constexpr std::size_t kTogether = 512;
    names_.emplace_back(row.id);
    waiting_.Add(row);
    if (++waitingCount_ == kTogether) Compute();
  }
  /// Computes the colours of the rows that were added.
  void Compute() {
    if (waitingCount_ == 0) return;
    const ColorTable added = ColorsOf(waiting_.View(), conditions_.difference.system, conditions_.illuminants,
                                      conditions_.observer);
    for (std::size_t j = 0; j < colors_.under.size(); ++j) {
      Append(added.under[j].xyz, colors_.under[j].xyz);
      Append(added.under[j].lab, colors_.under[j].lab);
    }
    waiting_.Clear();
    waitingCount_ = 0;
  }
  void Clear() {
    names_.clear();
    for (ColorTable::Under& under : colors_.under) under.xyz.clear(), under.lab.clear();
  }

  std::size_t Size() const { return names_.size(); }
  const std::string& Name(std::size_t i) const { return names_[i]; }
  Color At(std::size_t illuminant, std::size_t i) const { return colors_.At(illuminant, i); }
  std::vector<ColorBatch> Batches() const { return colors_.Batches(); }

 private:
  static void Append(const std::vector<double>& numbers, std::vector<double>& to) {
    to.insert(to.end(), numbers.begin(), numbers.end());
  }

  const SearchConditions& conditions_;
  std::vector<std::string> names_;
  ColorTable colors_;
  SampleBuffer waiting_;
  std::size_t waitingCount_ = 0;
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
};

// A colour is what was seen under one illuminant; which one only the user knows.
CurveReader Open(const std::string& path, const Search& search) {
  CurveReader reader = OpenCurves(path, search.options.input, Content::kCurvesOrColors);
  if (reader.Kind() != Sample::kCurve && search.illuminants.size() > 1) {
    throw InputError(reader.Source().Name() +
                     ": colours are seen under one illuminant: name it with --illuminants");
  }
  return reader;
}

void ReadStandards(Search& search) {
  constexpr std::size_t kMost = 4'000'000;
  CurveReader reader = Open(search.options.standards, search);
  ProgressBar progress(reader.Source().Size());
  CurveRow row;
  while (reader.Next(row)) {
    if (search.standards.Size() == kMost) reader.Source().FailRow("more than 4 million standards");
    search.standards.Add(row);
    progress.Update(reader.Source().Position());
  }
  search.standards.Compute();
  WarnAboutInput(reader);
}

class SearchOutput {
 public:
  SearchOutput(const Search& search, OutputStream& output)
      : search_(search), rows_(MakeRowWriter(search.options.format, output, Columns(search))) {}

  void Add(const NamedColors& samples, std::size_t sample, std::span<const NearestMatch> matches) {
    const double within = search_.options.within;
    for (std::size_t k = 0; k < matches.size() && matches[k].index != NearestMatch::kNone; ++k) {
      const NearestMatch& match = matches[k];
      if (within > 0 && match.difference > within) return;
      rows_->Text(samples.Name(sample));
      rows_->Integer(static_cast<int64_t>(k + 1));
      rows_->Text(search_.standards.Name(match.index));
      rows_->Number(match.difference);
      for (std::size_t j = 0; search_.illuminants.size() > 1 && j < search_.illuminants.size(); ++j) {
        rows_->Number(ComputeDifference(search_.difference, search_.standards.At(j, match.index),
                                        samples.At(j, sample), 0.0)
                          .dE);
      }
      rows_->EndRow();
    }
  }
  void Finish() { rows_->Finish(); }

 private:
  static std::vector<Column> Columns(const Search& search) {
    std::vector<Column> columns{{"sample"}, {"rank"}, {"standard"}, {"difference"}};
    if (search.illuminants.size() == 1) return columns;
    for (const vrxIlluminant illuminant : search.illuminants) columns.push_back({CodeOf(illuminant)});
    return columns;
  }

  const Search& search_;
  std::unique_ptr<RowWriter> rows_;
};

void RunSearch(const NearestOptions& options) {
  constexpr std::size_t kChunk = 256;
  if (options.samples == "-" && options.standards == "-") {
    throw InputError("samples and standards cannot both come from standard input");
  }
  Search search(options);
  ReadStandards(search);
  const std::vector<ColorBatch> libraries = search.standards.Batches();
  const auto count = static_cast<std::size_t>(options.count);
  OutputStream output;
  SearchOutput results(search, output);
  CurveReader reader = Open(options.samples, search);
  NamedColors samples(search);
  std::vector<NearestMatch> matches;
  const auto searchChunk = [&] {
    samples.Compute();
    matches.resize(samples.Size() * count);
    FindNearestBatch(search.difference, 0.0, samples.Batches(), libraries, count, matches,
                     {options.threads.Count(), nullptr});
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
  WarnAboutInput(reader);
}

}  // namespace

void AddSearch(Command& tool) {
  const auto options = std::make_shared<NearestOptions>();
  Command command = tool.AddCommand("search", "The nearest standards of each sample");
  command
      .AddOption("SAMPLES", options->samples,
                 "Curves or colours to find standards for (- reads standard input)")
      .ReadsFile()
      .Required();
  command.AddOption("STANDARDS", options->standards, "Curves or colours of the standards, up to 4 million")
      .ReadsFile()
      .Required();
  command.AddOption("--count", options->count, "How many standards to find for each sample")
      .Shows("1 to 1000 [10]")
      .Check([](const std::string& text) {
        int count = 0;
        const char* const end = text.data() + text.size();
        const bool whole = std::from_chars(text.data(), end, count).ptr == end;
        return whole && count >= 1 && count <= 1000 ? "" : "a whole number from 1 to 1000 is expected";
      });
  command.AddOption("--within", options->within, "Leave out standards that are farther away")
      .Shows("DIFFERENCE [any]");
  AddSystemOptions(command, options->system, "cie2000");
  AddViewingOptions(command, options->viewing, "D65,A,CWF");
  AddCurveInputOptions(command, options->input);
  AddThreadsOption(command, options->threads);
  AddFormatOption(command, options->format);
  command.SetNotes(
      "A standard is as far away as it is under the worst of the illuminants, so that a metamer, which "
      "matches\n"
      "under one lamp only, is not taken for a match. Of equally near standards the first of the file comes\n"
      "first. Standards are the reference of the differences.\n\n"
      "Examples:\n"
      "  vrx search batch.csv master.csv                      # the ten nearest by CIEDE2000 under D65, A, "
      "CWF\n"
      "  vrx search batch.csv master.csv --count 1 --system cmc --format csv\n"
      "  vrx search batch.csv master.csv --within 1 --illuminants D65\n");
  command.SetAction([options] {
    RunSearch(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
