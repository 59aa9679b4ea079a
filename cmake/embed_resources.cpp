// Turns the reviewable texts under resources/ into what the module carries them in: a C++ source, or for OUTPUT.rc a
// resource script of Windows with a file of doubles for each table beside it.
//
//   vrx_embed OUTPUT strings.tsv observers.txt illuminants.txt ILL00_02.txt ...
//
//   strings.tsv    number, tab, text, one a line
//   observers.txt  the colour-matching functions: become the resource "CMF" "OBSERVERS", the seven columns wavelength
//                  by wavelength
//   illuminants.txt  spectra of lamps, a column each, "-" where there is no value: column "LED-B1" becomes the resource
//                  "SPD" "LED_B1", its first wavelength, the step in nm, and the values
//   ILLnn_nn.txt   one weighting table: becomes a resource "PWD" of 123 doubles, 40 weights each for X, Y and Z,
//                  then the white point
//
// In all of them a line that begins with '#' is a comment. Stands alone: it is built before the library is.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

std::vector<std::string> ReadLines(const std::filesystem::path& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') lines.push_back(line);
  }
  return lines;
}

// The words of every line of a table; the first line names the columns.
std::vector<std::vector<std::string>> ReadCells(const std::filesystem::path& path) {
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : ReadLines(path)) {
    std::istringstream cells(line);
    rows.emplace_back();
    for (std::string cell; cells >> cell;) rows.back().push_back(cell);
  }
  return rows;
}

// The code points of a UTF-8 text in which "\n" spells a line end.
std::u32string CodePoints(const std::string& utf8) {
  std::u32string points;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    if (utf8.compare(i, 2, "\\n") == 0) {
      points += U'\n';
      i += 2;
      continue;
    }
    const std::size_t extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0x80 ? 1 : 0;
    char32_t code = extra == 0 ? lead : lead & (0x3FU >> extra);
    for (std::size_t k = 1; k <= extra; ++k)
      code = code << 6 | (static_cast<unsigned char>(utf8.at(i + k)) & 0x3FU);
    points += code;
    i += extra + 1;
  }
  return points;
}

// A text as the inside of a literal: ASCII, everything else as an escape: \u0394 or \x0394. Beyond the basic plane
// there is no text, so that one escape is one unit.
std::string Escaped(const std::string& utf8, char letter) {
  std::string out;
  for (const char32_t code : CodePoints(utf8)) {
    if (code > 0xFFFF) throw std::runtime_error("beyond the basic plane: " + utf8);
    if (code >= 0x20 && code < 0x7F) {
      if (code == U'"' || code == U'\\') out += '\\';
      out += static_cast<char>(code);
      continue;
    }
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\%c%04x", letter, static_cast<unsigned>(code));
    out += code == U'\n' ? "\\n" : escape;
  }
  return out;
}

std::map<uint32_t, std::string> ReadStrings(const std::filesystem::path& path) {
  std::map<uint32_t, std::string> strings;
  for (const std::string& line : ReadLines(path)) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    if (error != std::errc() || end == line.data() + line.size() || *end != '\t') {
      throw std::runtime_error(path.string() + ": not a number, a tab and a text: " + line);
    }
    if (!strings.emplace(number, std::string(end + 1, line.data() + line.size())).second) {
      throw std::runtime_error(path.string() + ": number used twice: " + line);
    }
  }
  return strings;
}

// The 123 numbers of a weighting table in resource order: block by block, then the white point.
std::vector<std::string> ReadWeightingTable(const std::filesystem::path& path) {
  constexpr std::size_t kSamples = 40;
  const auto rows = ReadCells(path);
  if (rows.size() != kSamples + 2 || rows.back().size() != 4)
    throw std::runtime_error(path.string() + ": bad shape");
  std::vector<std::string> numbers;
  for (std::size_t column = 1; column <= 3; ++column) {
    for (std::size_t i = 1; i <= kSamples; ++i) numbers.push_back(rows[i].at(column));
  }
  numbers.insert(numbers.end(), rows.back().begin() + 1, rows.back().end());
  return numbers;
}

std::vector<std::string> ReadObservers(const std::filesystem::path& path) {
  auto rows = ReadCells(path);
  std::vector<std::string> numbers;
  for (std::size_t i = 1; i < rows.size(); ++i) numbers.insert(numbers.end(), rows[i].begin(), rows[i].end());
  return numbers;
}

// A binary resource: its type, its name and its doubles as text.
struct Table {
  std::string type, name;
  std::vector<std::string> numbers;
};

std::vector<Table> ReadSpectra(const std::filesystem::path& path) {
  const auto rows = ReadCells(path);
  const int step = std::stoi(rows.at(2).at(0)) - std::stoi(rows.at(1).at(0));
  std::vector<Table> spectra;
  for (std::size_t column = 1; column < rows[0].size(); ++column) {
    Table spectrum{"SPD", rows[0][column], {}};
    std::replace(spectrum.name.begin(), spectrum.name.end(), '-', '_');
    for (std::size_t i = 1; i < rows.size(); ++i) {
      const std::string& value = rows[i].at(column);
      if (value == "-") continue;
      if (spectrum.numbers.empty()) spectrum.numbers = {rows[i][0], std::to_string(step)};
      spectrum.numbers.push_back(value);
    }
    spectra.push_back(std::move(spectrum));
  }
  return spectra;
}

void WriteNumbers(std::ostream& out, const std::string& name, const std::vector<std::string>& numbers) {
  out << "alignas(8) constexpr double " << name << "[] = {";
  for (std::size_t i = 0; i < numbers.size(); ++i) out << (i % 10 == 0 ? "\n    " : " ") << numbers[i] << ',';
  out << "\n};\n\n";
}

void WriteFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void WriteSource(const std::filesystem::path& output, const std::map<uint32_t, std::string>& strings,
                 const std::vector<Table>& tables) {
  std::ostringstream out;
  out << "// Generated from resources/ by the build. Change the texts there.\n\n"
         "#include <vrxmath/platform/resources.h>\n\n"
         "namespace vrx::platform_internal {\nnamespace {\n\n"
         "constexpr StringResource kStringTable[] = {\n";
  for (const auto& [number, text] : strings) {
    out << "    {" << number << ", u\"" << Escaped(text, 'u') << "\"},\n";
  }
  out << "};\n\n";
  std::string index;
  for (const Table& table : tables) {
    WriteNumbers(out, 'k' + table.name, table.numbers);
    index += "    {\"" + table.type + "\", \"" + table.name + "\", k" + table.name + "},\n";
  }
  out << "constexpr BinaryResource kBinaryTable[] = {\n"
      << index
      << "};\n\n"
         "}  // namespace\n\n"
         "const std::span<const StringResource> kStrings = kStringTable;\n"
         "const std::span<const BinaryResource> kBinaries = kBinaryTable;\n\n"
         "}  // namespace vrx::platform_internal\n";
  WriteFile(output, out.str());
}

// The language is the neutral one: the texts serve every user. Doubles stand in the byte order of the machine, which
// is that of Windows.
void WriteScript(const std::filesystem::path& output, const std::map<uint32_t, std::string>& strings,
                 const std::vector<Table>& tables) {
  std::ostringstream out;
  out << "// Generated from resources/ by the build. Change the texts there.\n\nLANGUAGE 0, "
         "0\n\nSTRINGTABLE\nBEGIN\n";
  for (const auto& [number, text] : strings) {
    out << "    " << number << " L\"" << Escaped(text, 'x') << "\"\n";
  }
  out << "END\n\n";
  for (const Table& table : tables) {
    std::string bytes;
    for (const std::string& number : table.numbers) {
      double value = 0;
      const char* const end = number.data() + number.size();
      if (std::from_chars(number.data(), end, value).ptr != end)
        throw std::runtime_error("not a number: " + number);
      bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    const std::string name = table.name + ".bin";
    WriteFile(output.parent_path() / name, bytes);
    out << table.name << ' ' << table.type << " \"" << name << "\"\n";
  }
  WriteFile(output, out.str());
}

void Generate(const std::filesystem::path& output, const std::vector<std::filesystem::path>& inputs) {
  const auto strings = ReadStrings(inputs.at(0));
  std::vector<Table> tables = {{"CMF", "OBSERVERS", ReadObservers(inputs.at(1))}};
  for (Table& spectrum : ReadSpectra(inputs.at(2))) tables.push_back(std::move(spectrum));
  for (std::size_t i = 3; i < inputs.size(); ++i) {
    tables.push_back({"PWD", inputs[i].stem().string(), ReadWeightingTable(inputs[i])});
  }
  (output.extension() == ".rc" ? WriteScript : WriteSource)(output, strings, tables);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 5)
    throw std::runtime_error("usage: vrx_embed OUTPUT strings.tsv observers.txt illuminants.txt TABLE...");
  Generate(argv[1], {argv + 2, argv + argc});
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "vrx_embed: %s\n", error.what());
  return 1;
}
