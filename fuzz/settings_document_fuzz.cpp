// Any bytes as a settings file: what is read can be written and read again, with the same values; a value that
// is set is found; nothing of the other values is lost.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <vrxmath/platform/settings_document.h>

namespace {

// Looking values up is linear in the document: longer inputs would only be slower.
constexpr std::size_t kMaxBytes = 4096;

void Require(bool holds, const char* what, const vrx::SettingsDocument& document) {
  if (holds) return;
  std::fprintf(stderr, "%s\nin: %s\n", what, document.Format().c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size > kMaxBytes) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  vrx::SettingsDocument document = vrx::SettingsDocument::Parse(text);
  const auto entries = document.List({});
  // Set every value to what it is: the lines are written anew.
  for (const vrx::SettingsEntry& entry : entries) {
    const vrx::SettingValue value = *document.Find(entry.key, entry.name);
    document.Set(entry.key, entry.name, value);
  }
  const vrx::SettingsPath added = {vrx::CString::FromUtf8(std::string(1, 'a').append(text.substr(0, 60)))};
  document.Set(added, added[0], added[0]);

  const vrx::SettingsDocument again = vrx::SettingsDocument::Parse(document.Format());
  Require(!again.IsDamaged(), "written and damaged", document);
  Require(again.Format() == document.Format(), "not the same text", document);
  Require(again.List({}).size() == document.List({}).size(), "not the same entries", document);
  for (const vrx::SettingsEntry& entry : document.List({})) {
    const vrx::SettingValue* found = again.Find(entry.key, entry.name);
    Require(found != nullptr && *found == *document.Find(entry.key, entry.name), "not the same value",
            document);
  }
  return 0;
}
