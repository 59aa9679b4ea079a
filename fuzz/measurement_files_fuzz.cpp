// Any bytes as a file of measurements in each form: they are read or refused with a reason; what is read is finite, ascends in
// wavelength, and is the same when it is read again from its bookmark.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <vrxio/input_error.h>
#include <vrxio/measurement_files.h>

namespace {

using vrx::io::Measurement;
using vrx::io::ReadOptions;

void Require(bool law) {
  if (!law) std::abort();
}

void ReadAll(const std::string& content, const ReadOptions& options) {
  std::istringstream stream(content);
  vrx::io::InputStream input = vrx::io::WrapInput(stream, "input");
  vrx::io::HoldInput(input);
  const auto reader = vrx::io::OpenMeasurements(std::move(input), options);
  Measurement sample;
  std::vector<double> values;
  std::string name;
  uint64_t offset = 0;
  bool any = false;
  while (reader->Next(sample)) {
    any = true;
    const std::vector<double>& wavelengths = sample.layout->wavelengths;
    Require(sample.reflectance.empty() || sample.reflectance.size() == wavelengths.size());
    Require(std::ranges::is_sorted(wavelengths));
    for (const double value : sample.reflectance) Require(std::isfinite(value));
    values.assign(sample.reflectance.begin(), sample.reflectance.end());
    name = sample.name;
    offset = reader->Offset();
  }
  if (!any) return;
  reader->SeekTo(offset);
  Require(reader->Next(sample) && std::ranges::equal(sample.reflectance, values) && sample.name == name);
  reader->Rewind();
  Require(reader->Next(sample));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  using Form = ReadOptions::Form;
  for (const Form form : {Form::kByContent, Form::kCsv, Form::kCgats, Form::kCxf, Form::kJson}) {
    ReadOptions options;
    options.form = form;
    options.lenient = form != Form::kByContent;
    try {
      ReadAll(content, options);
    } catch (const vrx::io::InputError& error) {
      Require(*error.what() != '\0');
    }
  }
  return 0;
}
