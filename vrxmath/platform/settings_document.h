// The text of a settings file: parsing, looking up, changing, writing. The format is in
// docs/settings_file.md.
//
// A document is kept line by line, so that a change touches one line and a user's comments and order survive.

#ifndef VRXMATH_PLATFORM_SETTINGS_DOCUMENT_H_
#define VRXMATH_PLATFORM_SETTINGS_DOCUMENT_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/platform/settings_store.h>

namespace vrx {

class SettingsDocument {
 public:
  SettingsDocument() = default;

  /// Reads UTF-8 text. A line that does not follow the format is left out, and with a key's line the entries
  /// below it, since nobody can say whose they are; IsDamaged then tells.
  static SettingsDocument Parse(std::string_view utf8);

  /// True when Parse left something out.
  bool IsDamaged() const { return isDamaged_; }

  /// The text as it is written: UTF-8, every line ended by LF.
  std::string Format() const;

  /// True when the key or one below it stands in the document.
  bool HasKey(const SettingsPath& key) const;
  void AddKey(const SettingsPath& key);

  /// The value, or null. Of several entries of one name the last one holds. Valid until the document changes.
  const SettingValue* Find(const SettingsPath& key, WideView name) const;
  void Set(const SettingsPath& key, WideView name, const SettingValue& value);

  /// All entries of a key and of the keys below it, in the order of the text.
  std::vector<SettingsEntry> List(const SettingsPath& key) const;

 private:
  // A line that is neither a key's nor an entry's is a comment or blank.
  struct Line {
    std::string text;
    std::optional<SettingsPath> key;
    std::optional<SettingsEntry> entry;  // its key is that of the line above it that has one
  };

  void Append(std::string_view line, std::optional<SettingsPath>& current);
  void AppendKey(const SettingsPath& key);
  std::ptrdiff_t FindEntry(const SettingsPath& key, WideView name) const;

  std::vector<Line> lines_;
  bool isDamaged_ = false;
};

}  // namespace vrx

#endif  // VRXMATH_PLATFORM_SETTINGS_DOCUMENT_H_
