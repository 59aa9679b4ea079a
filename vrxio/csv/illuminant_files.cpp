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

// A file of illuminants: the wavelengths and, for each illuminant, its power at them.
struct PowerTable {
  int32_t first = 0;  // nm
  int32_t step = 0;
  std::vector<std::vector<double>> powers;
};

int32_t ReadWavelength(CsvReader& csv) {
  const double value = csv.Number();
  if (!(value >= 1.0 && value <= 10'000.0) || value != std::floor(value)) {
    csv.Fail("a wavelength must be a whole number of nm");
  }
  return static_cast<int32_t>(value);
}

PowerTable ReadPowerTable(CsvReader& csv) {
  const std::size_t illuminants = csv.Header().size() - 1;
  if (!EqualsIgnoringCase(csv.Header()[0], "nm") || illuminants == 0 || illuminants > kMaxIlluminants) {
    csv.FailRow("the header must be nm and the codes of one or more illuminants");
  }
  PowerTable table;
  table.powers.resize(illuminants);
  int32_t last = 0;
  for (std::size_t row = 0; csv.Next(); ++row) {
    const int32_t wavelength = ReadWavelength(csv);
    if (row == 0) table.first = wavelength;
    if (row == 1) table.step = wavelength - table.first;
    if (row > 0 && wavelength - last != table.step) csv.FailRow("the wavelengths are not evenly spaced");
    if (row == kMaxRows) csv.FailRow("there are more than 10000 wavelengths");
    last = wavelength;
    for (std::vector<double>& power : table.powers) power.push_back(csv.Number());
    csv.EndRecord();
  }
  return table;
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

void RegisterIlluminantFiles(std::span<const std::string> files, SpectralInterpolation interpolation) {
  int32_t nextNumber = kFirstUserIlluminant;
  std::set<int32_t> numbers;
  for (const std::string& file : files) {
    CsvReader csv(file);
    const PowerTable table = ReadPowerTable(csv);
    for (std::size_t i = 0; i < table.powers.size(); ++i) {
      const NumberedName heading = TakeApart(csv.Header()[i + 1], nextNumber);
      const IlluminantError error =
          RegisterUserIlluminant(static_cast<vrxUserIllum>(heading.number), CString::FromUtf8(heading.name),
                                 table.powers[i], table.first, table.step, interpolation);
      std::string reason = IlluminantErrorText(error).ToUtf8();
      if (!numbers.insert(heading.number).second) reason = "another illuminant has this number";
      if (!reason.empty()) {
        std::string message = file;
        message.append(": illuminant \"").append(csv.Header()[i + 1]).append("\": ").append(reason);
        throw InputError(message);
      }
      nextNumber = heading.number + 1;
    }
  }
}

}  // namespace vrx::io
