// Reads hostile bytes as archive forms. The first byte picks the form. Reading ends in a value or in an archive
// exception; a value that was read must be stored in a form that reads back to the same bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <span>

#include "fuzz/archive_forms.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const vrx_archive_forms::Reader reader =
      vrx_archive_forms::kReaders[data[0] % std::size(vrx_archive_forms::kReaders)];
  const auto stored = vrx_archive_forms::StoreAgain(reader, std::as_bytes(std::span(data, size)).subspan(1));
  if (!stored.empty() && vrx_archive_forms::StoreAgain(reader, stored) != stored) std::abort();
  return 0;
}
