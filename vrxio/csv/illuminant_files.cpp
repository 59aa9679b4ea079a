#include <vrxio/csv/illuminant_files.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/colorimetry/user_illuminants.h>

namespace vrx::io {
namespace {

constexpr std::size_t kMaxRows = 10'000;
constexpr std::size_t kMaxIlluminants = kUserIlluminants;

int32_t ReadWavelength(CsvReader& csv) {
  const double value = csv.Number();
  if (!(value >= 1.0 && value <= 10'000.0) || value != std::floor(value)) {
    csv.Fail("a wavelength must be a whole number of nm");
  }
  return static_cast<int32_t>(value);
}

// A heading, "number:code|description", taken apart at its first colon if it begins with a number.
struct NumberedName {
  int32_t number;
  std::string name;
};

NumberedName TakeApart(const std::string& heading, int32_t nextNumber) {
  int32_t number = 0;
  const char* const end = heading.data() + heading.size();
  const auto [stop, error] = std::from_chars(heading.data(), end, number);
  if (error != std::errc() || stop == end || *stop != ':') return {nextNumber, heading};
  return {number, std::string(stop + 1, end)};
}

}  // namespace

std::vector<TabulatedSpectrum> ReadSpectra(const std::string& file) {
  CsvReader csv(file);
  const std::size_t illuminants = csv.Header().size() - 1;
  if (!EqualsIgnoringCase(csv.Header()[0], "nm") || illuminants == 0 || illuminants > kMaxIlluminants) {
    csv.FailRow("the header must be nm and the codes of one or more illuminants");
  }
  std::vector<TabulatedSpectrum> spectra(illuminants);
  for (std::size_t i = 0; i < illuminants; ++i) spectra[i].heading = csv.Header()[i + 1];
  int32_t first = 0, last = 0, step = 0;
  for (std::size_t row = 0; csv.Next(); ++row) {
    const int32_t wavelength = ReadWavelength(csv);
    if (row == 0) first = wavelength;
    if (row == 1) step = wavelength - first;
    if (row > 0 && wavelength - last != step) csv.FailRow("the wavelengths are not evenly spaced");
    if (row == kMaxRows) csv.FailRow("there are more than 10000 wavelengths");
    last = wavelength;
    for (TabulatedSpectrum& spectrum : spectra) spectrum.power.push_back(csv.Number());
    csv.EndRecord();
  }
  for (TabulatedSpectrum& spectrum : spectra) spectrum.firstWavelength = first, spectrum.step = step;
  return spectra;
}

void RegisterIlluminantFiles(std::span<const std::string> files, SpectralInterpolation interpolation) {
  int32_t nextNumber = kFirstUserIlluminant;
  std::set<int32_t> numbers;
  for (const std::string& file : files) {
    for (const TabulatedSpectrum& spectrum : ReadSpectra(file)) {
      const NumberedName heading = TakeApart(spectrum.heading, nextNumber);
      const IlluminantError error =
          RegisterUserIlluminant(static_cast<vrxUserIllum>(heading.number), CString::FromUtf8(heading.name),
                                 spectrum.power, spectrum.firstWavelength, spectrum.step, interpolation);
      std::string reason = IlluminantErrorText(error).ToUtf8();
      if (!numbers.insert(heading.number).second) reason = "another illuminant has this number";
      if (!reason.empty()) {
        std::string message = file;
        message.append(": illuminant \"").append(spectrum.heading).append("\": ").append(reason);
        throw InputError(message);
      }
      nextNumber = heading.number + 1;
    }
  }
}

}  // namespace vrx::io
