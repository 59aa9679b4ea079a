#include "tools/vrx/output/measurement_output.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include <vrxio/files/measurement_files.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/same_file.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

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

}  // namespace

// The form of the new file by its name.
ReadOptions::Form FormOfName(const std::string& name) {
  const std::size_t dot = name.find_last_of("./");
  const std::string extension = dot == std::string::npos || name[dot] != '.' ? "" : name.substr(dot + 1);
  using Form = ReadOptions::Form;
  const std::pair<const char*, Form> kExtensions[] = {
      {"csv", Form::kCsv}, {"txt", Form::kCgats}, {"cgats", Form::kCgats}, {"it8", Form::kCgats},
      {"cxf", Form::kCxf}, {"xml", Form::kCxf},   {"json", Form::kJson}};
  for (const auto& [known, form] : kExtensions) {
    if (EqualsIgnoringCase(extension, known)) return form;
  }
  throw InputError(name +
                   ": the name does not tell the format; choose one with --to csv, cgats, cxf or json");
}

std::string CreationDate() {
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

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 12;
  std::string list;
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i) list += (i > 0 ? ", " : "") + names[i];
  return names.size() > kMost ? list + " and " + std::to_string(names.size() - kMost) + " more" : list;
}

WriteOptions WritingOf(const WritingOptions& options, const std::string& file) {
  using Form = ReadOptions::Form;
  WriteOptions writing;
  writing.form = options.form == Form::kByContent ? FormOfName(file) : options.form;
  writing.fraction = options.fraction;
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

Converted ConvertMeasurements(const std::string& in, const std::string& out, ReadOptions reading,
                              WriteOptions writing, const MeasurementSink& write) {
  InputStream input = OpenInput(in);
  const bool ontoItself = in != "-" && out != "-" && AreOneFile(in, out);
  // What has no size is read twice; Windows replaces no file that is still being read.
  if (input.size == 0 || ontoItself) HoldInput(input);
  reading.keepsOthers = true;
  const auto source = OpenMeasurements(std::move(input), reading);
  Converted converted{source->Name(), {}};
  writing.onLosses = [&](const std::vector<std::string>& lost) {
    if (ontoItself) {
      throw InputError(out + ": the file to be replaced would lose " + Listed(lost) + "; write to another");
    }
    converted.losses = lost;
  };
  write(*source, writing);
  if (source->CountUnmeasured() > 0) {
    converted.losses.push_back(std::to_string(source->CountUnmeasured()) + " rows without values");
  }
  return converted;
}

void WriteMeasurementFile(MeasurementReader& source, const WriteOptions& writing, const std::string& path) {
  std::optional<OutputFile> file;  // opened when it is known that something is written
  Pieces pieces([&](std::string_view text) {
    if (!file) file.emplace(path);
    file->Write(text);
  });
  WriteMeasurements(source, writing, [&](std::string_view text) { pieces.Add(text); });
  pieces.Send();
  file->Commit();
}

void WriteMeasurementOutput(MeasurementReader& source, const WriteOptions& writing) {
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

}  // namespace vrx::tool
