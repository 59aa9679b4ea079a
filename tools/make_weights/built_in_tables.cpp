
#include "tools/make_weights/built_in_tables.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

#include <vrxmath/colorimetry/illuminant_spectra.h>

namespace vrx::make_weights {
namespace {

// The one white point that is neither printed in ASTM E308 nor the sum of its table's weights; kept because
// the results of existing measurements rest on it.
constexpr const char* kKeptWhiteName = "ILL17_10";
constexpr double kKeptWhite[] = {114.757, 100.005, 33.356};

using Columns = std::map<std::string, std::vector<std::string>>;

// A text table whose first line names the columns; '#' begins a comment.
Columns ReadColumns(const std::filesystem::path& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  Columns columns;
  std::vector<std::string> names;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream cells(line);
    std::vector<std::string> row{std::istream_iterator<std::string>(cells), {}};
    if (names.empty()) {
      names = row;
    } else if (row.size() != names.size()) {
      throw std::runtime_error(path.string() + ": row with " + std::to_string(row.size()) +
                               " cells: " + line);
    } else {
      for (std::size_t i = 0; i < row.size(); ++i) columns[names[i]].push_back(row[i]);
    }
  }
  return columns;
}

// Replaces the computed white point by the printed one, where there is one.
void AdoptPrintedWhite(const Columns& whites, const std::string& spectrum, int degrees,
                       WeightingTable& table) {
  const auto& names = whites.at("illuminant");
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i] != spectrum || whites.at("observer")[i] != std::to_string(degrees)) continue;
    table[kTableWhite] = std::stod(whites.at("Xn")[i]);
    table[kTableWhite + 1] = std::stod(whites.at("Yn")[i]);
    table[kTableWhite + 2] = std::stod(whites.at("Zn")[i]);
  }
}

}  // namespace

std::vector<BuiltInTable> ComputeBuiltInTables(const std::filesystem::path& published) {
  const Columns whites = ReadColumns(published / "white_points.txt");
  std::vector<BuiltInTable> tables;
  for (int number = 0; number < kBuiltInIlluminants; ++number) {
    const auto illuminant = static_cast<vrxIlluminant>(number);
    const std::string spectrum(SpectrumName(illuminant));
    SpectralPower power;
    if (!FindIlluminantSpectrum(illuminant, power))
      throw std::runtime_error("there is no spectrum " + spectrum);
    for (const int observer : {0, 1}) {
      const int degrees = observer == 1 ? 10 : 2;
      char name[16];
      std::snprintf(name, sizeof name, "ILL%02d_%02d", number, degrees);
      BuiltInTable built{name, spectrum, ComputeWeightingTable(power, observer)};
      AdoptPrintedWhite(whites, spectrum, degrees, built.table);
      if (built.name == kKeptWhiteName)
        std::copy(kKeptWhite, kKeptWhite + 3, built.table.begin() + kTableWhite);
      tables.push_back(built);
    }
  }
  return tables;
}

}  // namespace vrx::make_weights
