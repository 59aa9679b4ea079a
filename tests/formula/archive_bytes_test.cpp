// The seeds of the archive forms are files of fixed bytes. A platform that reads one and stores other bytes has a form of
// its own.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>

#include "fuzz/archive_forms.h"

namespace {

TEST(ArchiveBytes, EveryFormIsStoredInTheBytesOfItsSeed) {
  std::set<unsigned> forms;
  for (const auto& entry : std::filesystem::directory_iterator(VRX_SOURCE_DIR "/fuzz/corpus/archive")) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with("_count") || name == "empty")
      continue;  // what is refused, and a count longer than it need be
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string seed{std::istreambuf_iterator<char>(file), {}};
    const auto form = static_cast<unsigned char>(seed[0]);
    ASSERT_LT(form, std::size(vrx_archive_forms::kReaders)) << entry.path();
    const auto bytes = std::as_bytes(std::span(seed)).subspan(1);
    const auto stored = vrx_archive_forms::StoreAgain(vrx_archive_forms::kReaders[form], bytes);
    EXPECT_TRUE(std::ranges::equal(stored, bytes)) << entry.path();
    forms.insert(form);
  }
  EXPECT_GE(forms.size(), 20u);
}

}  // namespace
