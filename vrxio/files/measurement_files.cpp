#include <vrxio/files/measurement_files.h>

#include <utility>

#include <vrxio/cgats/cgats_reader.h>
#include <vrxio/csv/csv_measurements.h>
#include <vrxio/cxf/cxf_reader.h>
#include <vrxio/json/json_measurements.h>

namespace vrx::io {

using Form = ReadOptions::Form;

namespace {

// Whether the name of a file tells that it is CSV; messages say so where it does not.
bool NamesCsv(std::string_view name) {
  constexpr std::string_view kEnding = ".csv";
  return name.size() > kEnding.size() &&
         EqualsIgnoringCase(name.substr(name.size() - kEnding.size()), kEnding);
}

}  // namespace

Form FormOf(std::string_view beginning) {
  if (IsMarkup(beginning)) return Form::kCxf;
  if (IsJson(beginning)) return Form::kJson;
  return IsCgats(beginning) ? Form::kCgats : Form::kCsv;
}

std::unique_ptr<MeasurementReader> OpenMeasurements(const std::string& path, const ReadOptions& options) {
  return OpenMeasurements(OpenInput(path), options);
}

std::unique_ptr<MeasurementReader> OpenMeasurements(InputStream input, const ReadOptions& options) {
  std::string beginning = PeekInput(input, kBeginning);
  const bool isMarkup =
      options.form == Form::kCxf || (options.form == Form::kByContent && IsMarkup(beginning));
  const bool isLatin1 = options.latin1 || (isMarkup && IsMarkupInLatin1(input.name, beginning));
  const std::string decoded = DecodeInput(input, beginning, isLatin1);
  if (!decoded.empty()) beginning = PeekInput(input, kBeginning);
  switch (options.form == Form::kByContent ? FormOf(beginning) : options.form) {
    case Form::kCxf:
      return ReadCxf(std::move(input), options);
    case Form::kJson:
      return ReadJson(std::move(input), options);
    case Form::kCgats:
      return ReadCgats(std::move(input), options);
    default:
      if (!NamesCsv(input.name)) input.name += " (CSV)";
      return ReadCsv(std::move(input), beginning, options);
  }
}

}  // namespace vrx::io
