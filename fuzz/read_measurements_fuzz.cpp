// Any bytes as a file of measurements, one target for each form: they are read or refused with a reason. What is read is
// finite, ascends in wavelength, and is the same when it is read again from its bookmark. Written in its own form it reads
// back to the same samples.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <vrxio/files/measurement_files.h>
#include <vrxio/files/measurement_writer.h>
#include <vrxio/text/input_error.h>

namespace {

using vrx::io::Measurement;
using vrx::io::MeasurementReader;
using vrx::io::ReadOptions;

constexpr ReadOptions::Form kForm = ReadOptions::Form::VRX_FORM;

void Require(bool law) {
  if (!law) std::abort();
}

struct Sample {
  std::string id, name;
  int32_t geometry;
  std::vector<double> wavelengths, reflectance;
  bool hasXyz, hasLab;
  std::array<double, 3> xyz, lab;
  bool operator==(const Sample&) const = default;
};

Sample Kept(const Measurement& sample) {
  const std::vector<double>& wavelengths = sample.layout->wavelengths;
  Require(sample.reflectance.empty() || sample.reflectance.size() == wavelengths.size());
  Require(std::ranges::is_sorted(wavelengths));
  for (const double value : sample.reflectance) Require(std::isfinite(value));
  return {std::string(sample.id),
          std::string(sample.name),
          sample.geometry,
          wavelengths,
          {sample.reflectance.begin(), sample.reflectance.end()},
          sample.hasXyz,
          sample.hasLab,
          sample.xyz,
          sample.lab};
}

// Reads what `content` holds and hands it to `use` with its reader and the bookmark of the last sample.
template <class Use>
void Read(const std::string& content, const ReadOptions& options, Use use) {
  std::istringstream stream(content);
  vrx::io::InputStream input = vrx::io::WrapInput(stream, "input");
  input.size = content.size();
  const auto reader = vrx::io::OpenMeasurements(std::move(input), options);
  std::vector<Sample> samples;
  Measurement sample;
  uint64_t last = 0;
  while (reader->Next(sample)) {
    samples.push_back(Kept(sample));
    last = reader->Offset();
  }
  if (!samples.empty()) use(*reader, last, samples);
}

// Whether an id is the number of the last row, which stands for a missing one: rows without a value count, too.
bool IsRowNumber(const std::string& id, std::size_t samples, int64_t unmeasured) {
  for (std::size_t row = samples; row <= samples + static_cast<std::size_t>(unmeasured); ++row) {
    if (id == std::to_string(row)) return true;
  }
  return false;
}

void CheckBookmark(MeasurementReader& reader, uint64_t offset, const std::vector<Sample>& samples) {
  const bool isNumbered = IsRowNumber(samples.back().id, samples.size(), reader.CountUnmeasured());
  reader.SeekTo(offset);
  Measurement sample;
  Require(reader.Next(sample));
  Sample again = Kept(sample);
  if (isNumbered) again.id = samples.back().id;
  Require(again == samples.back());
}

void CheckRoundTrip(MeasurementReader& reader, const std::vector<Sample>& samples) {
  vrx::io::WriteOptions options;
  options.form = kForm;
  options.creationDate = "2026-01-01T00:00:00Z";
  std::string written;
  try {
    reader.Rewind();
    vrx::io::WriteMeasurements(reader, options, [&](std::string_view text) { written += text; });
  } catch (const vrx::io::InputError&) {
    return;  // the form cannot hold them
  }
  ReadOptions back;
  back.form = kForm;
  back.force = true;
  back.lenient = true;  // columns that nothing is made of are kept
  if (kForm == ReadOptions::Form::kCsv || kForm == ReadOptions::Form::kJson)
    back.scale = ReadOptions::Scale::kPercent;
  bool isSame = false;
  try {
    Read(written, back, [&](MeasurementReader&, uint64_t, const std::vector<Sample>& read) {
      isSame = std::ranges::equal(read, samples, [](const Sample& a, const Sample& b) {
        return a.wavelengths == b.wavelengths && a.reflectance == b.reflectance && a.xyz == b.xyz &&
               a.lab == b.lab;
      });
    });
  } catch (const vrx::io::InputError& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  if (!isSame) std::fprintf(stderr, "%s\n", written.c_str());
  Require(isSame);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  for (const bool lenient : {false, true}) {
    ReadOptions options;
    options.form = lenient ? kForm : ReadOptions::Form::kByContent;
    options.lenient = options.force = options.keepsOthers = lenient;
    try {
      Read(content, options,
           [](MeasurementReader& reader, uint64_t last, const std::vector<Sample>& samples) {
             CheckBookmark(reader, last, samples);
             CheckRoundTrip(reader, samples);
           });
    } catch (const vrx::io::InputError& error) {
      Require(*error.what() != '\0');
    }
  }
  return 0;
}
