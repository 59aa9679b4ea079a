// Any bytes as a file of curves: they are read or refused with a reason; what is read is finite, and reading a
// row again from where it began gives the same row.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include <vrxio/files/curve_reader.h>
#include <vrxio/text/input_error.h>

namespace {

void Require(bool law) {
  if (!law) std::abort();
}

void ReadAll(const std::string& content, bool fraction) {
  std::istringstream stream(content);
  vrx::io::CurveReader reader(vrx::io::CsvReader(stream, "input"), fraction);
  vrx::io::CurveRow row;
  std::string id;
  vrx::CReflData curve;
  uint64_t offset = 0;
  bool any = false;
  while (reader.Next(row)) {
    for (const double value : row.curve) Require(std::isfinite(value));
    id = row.id;
    curve = row.curve;
    offset = reader.Source().Offset();
    any = true;
  }
  if (!any) return;
  reader.SeekTo(offset);
  Require(reader.Next(row) && row.curve == curve && (!reader.HasNames() || row.id == id || row.name.empty()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  for (const bool fraction : {false, true}) {
    try {
      ReadAll(content, fraction);
    } catch (const vrx::io::InputError& error) {
      Require(*error.what() != '\0');
    }
  }
  return 0;
}
