// vrx_make_weights PUBLISHED_FOLDER OUTPUT_FOLDER: writes the built-in weighting tables as reviewable text.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tools/make_weights/built_in_tables.h"

namespace {

std::string TableText(const vrx::make_weights::BuiltInTable& built) {
  const auto& t = built.table;
  std::string text =
      "# Weights for reflectance in percent, 10 nm, no bandpass correction (ASTM E2022). Spectrum: " +
      built.spectrum + ".\n   nm        X        Y        Z\n";
  char line[80];
  const auto append = [&](const char* label, std::size_t x, std::size_t y, std::size_t z) {
    std::snprintf(line, sizeof line, "%5s %8.3f %8.3f %8.3f\n", label, t[x], t[y], t[z]);
    text += line;
  };
  for (std::size_t i = 0; i < vrx::kWavelengths; ++i) {
    append(std::to_string(360 + 10 * i).c_str(), i, i + 40, i + 80);
  }
  append("white", vrx::kTableWhite, vrx::kTableWhite + 1, vrx::kTableWhite + 2);
  return text;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) throw std::runtime_error("usage: vrx_make_weights PUBLISHED_FOLDER OUTPUT_FOLDER");
  std::filesystem::create_directories(argv[2]);
  for (const auto& built : vrx::make_weights::ComputeBuiltInTables(argv[1])) {
    const std::filesystem::path path = std::filesystem::path(argv[2]) / (built.name + ".txt");
    std::ofstream file(path);
    file << TableText(built);
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "vrx_make_weights: %s\n", error.what());
  return 1;
}
