
#include "tools/make_weights/built_in_tables.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

namespace vrx::make_weights {
namespace {

// Which spectrum stands behind each illuminant number. Two lamps of the trade are represented by the CIE
// illuminant of their kind: number 8 by F10, 9 by F12. Both horizon illuminants are a Planckian radiator at
// 2300 K, for want of a published spectrum of the lamp behind number 15.
constexpr const char* kSpectra[] = {
    "A",      "C",      "D65",    "F2",     "F11",     "D50",           "D55",           "D75",   "F10",
    "F12",    "F6",     "F7",     "F8",     "F10",     "Planck 2300 K", "Planck 2300 K", "F4",    "LED-B1",
    "LED-B2", "LED-B3", "LED-B4", "LED-B5", "LED-BH1", "LED-RGB1",      "LED-V1",        "LED-V2"};

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

// The tabulated part of a spectrum, at 1 nm.
SpectralPower TabulatedSpectrum(const Columns& columns, const std::string& name) {
  std::vector<double> values;
  int32_t first = 0;
  const auto& wavelengths = columns.at("nm");
  const auto& cells = columns.at(name);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (cells[i] == "-") continue;
    if (values.empty()) first = std::stoi(wavelengths[i]);
    values.push_back(std::stod(cells[i]));
  }
  const auto interpolation =
      name == "D65" ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange;
  return ResampleSpectrum(values, first, std::stoi(wavelengths[1]) - std::stoi(wavelengths[0]),
                          interpolation);
}

SpectralPower SpectrumNamed(const Columns& columns, const std::string& name) {
  if (name == "A") return PlanckianSpectrum(2848.0, 1.435e7);
  if (name == "Planck 2300 K") return PlanckianSpectrum(2300.0, 1.4388e7);
  return TabulatedSpectrum(columns, name);
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

SpectralPower PublishedSpectrum(const std::filesystem::path& published, const std::string& name) {
  return SpectrumNamed(ReadColumns(published / "illuminants.txt"), name);
}

std::vector<BuiltInTable> ComputeBuiltInTables(const std::filesystem::path& published) {
  const Columns illuminants = ReadColumns(published / "illuminants.txt");
  const Columns whites = ReadColumns(published / "white_points.txt");
  std::vector<BuiltInTable> tables;
  int number = 0;
  for (const char* spectrum : kSpectra) {
    for (const int observer : {0, 1}) {
      const int degrees = observer == 1 ? 10 : 2;
      char name[16];
      std::snprintf(name, sizeof name, "ILL%02d_%02d", number, degrees);
      BuiltInTable built{name, spectrum,
                         ComputeWeightingTable(SpectrumNamed(illuminants, spectrum), observer)};
      AdoptPrintedWhite(whites, spectrum, degrees, built.table);
      if (built.name == kKeptWhiteName)
        std::copy(kKeptWhite, kKeptWhite + 3, built.table.begin() + kTableWhite);
      tables.push_back(built);
    }
    ++number;
  }
  return tables;
}

}  // namespace vrx::make_weights
