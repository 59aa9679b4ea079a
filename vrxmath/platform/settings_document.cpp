#include <vrxmath/platform/settings_document.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include <vrxmath/platform/case_folding.h>

namespace vrx {
namespace {

constexpr const char* kOpening =
    "# Per-user settings. One value a line: Name = 12 is a number, Name = \"twelve\" a text.";

// Units that need a backslash in a key's name, a value's name and a text, besides the backslash itself.
constexpr WideView kKeySpecials = u"/]";
constexpr WideView kNameSpecials = u"=#[";
constexpr WideView kTextSpecials = u"\"";

bool IsBlank(WideChar unit) {
  return unit == u' ' || unit == u'\t';
}

bool IsControl(WideChar unit) {
  return unit < 0x20 || unit == 0x7F;
}

bool IsAsciiLetterOrDigit(WideChar unit) {
  return (unit >= u'0' && unit <= u'9') || (ToCapital(unit) >= u'A' && ToCapital(unit) <= u'Z');
}

bool IsSurrogate(WideChar unit, int half) {
  return unit >= 0xD800 + 0x400 * half && unit < 0xDC00 + 0x400 * half;
}

// A surrogate without its other half, which UTF-8 cannot hold.
bool IsLoneSurrogate(WideView text, std::size_t i) {
  if (IsSurrogate(text[i], 0)) return i + 1 == text.size() || !IsSurrogate(text[i + 1], 1);
  return IsSurrogate(text[i], 1) && (i == 0 || !IsSurrogate(text[i - 1], 0));
}

void AppendHex(CString& out, WideChar unit) {
  constexpr WideView kDigits = u"0123456789ABCDEF";
  out += u"\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[static_cast<std::size_t>(unit >> shift & 0xF)];
}

CString Escaped(WideView text, WideView specials) {
  CString out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const WideChar unit = text[i];
    const bool atEdge = (i == 0 || i + 1 == text.size()) && specials != kTextSpecials;
    if (unit == u'\n' || unit == u'\r' || unit == u'\t') {
      out += unit == u'\n' ? u"\\n" : unit == u'\r' ? u"\\r" : u"\\t";
    } else if (IsControl(unit) || IsLoneSurrogate(text, i)) {
      AppendHex(out, unit);
    } else {
      if (unit == u'\\' || specials.find(unit) != WideView::npos || (atEdge && unit == u' ')) out += u'\\';
      out += unit;
    }
  }
  return out;
}

// Reads one line of the format from left to right. Every function moves past what it takes and returns false
// (or nothing) when something else stands there.
class LineReader {
 public:
  explicit LineReader(WideView line) : line_(line) {}

  void SkipBlanks() {
    while (!AtEnd() && IsBlank(line_[i_])) ++i_;
  }
  bool AtEnd() const { return i_ == line_.size(); }
  bool Take(WideChar unit) {
    if (AtEnd() || line_[i_] != unit) return false;
    ++i_;
    return true;
  }

  /// Text with escapes up to one of `stops`, which is not taken. `trimmed` leaves out blanks at its end
  /// unless a backslash stands before them.
  std::optional<CString> TakeText(WideView stops, bool trimmed) {
    CString text;
    std::size_t length = 0;  // up to the last unit that counts
    for (; !AtEnd() && stops.find(line_[i_]) == WideView::npos; ++i_) {
      const bool escaped = line_[i_] == u'\\';
      const std::optional<WideChar> unit = escaped ? TakeEscape() : std::optional(line_[i_]);
      if (!unit || (!escaped && IsControl(*unit) && *unit != u'\t')) return std::nullopt;
      text += *unit;
      if (escaped || !trimmed || !IsBlank(*unit)) length = static_cast<std::size_t>(text.GetLength());
    }
    return CString(text.View().substr(0, length));
  }

  std::optional<int32_t> TakeInteger() {
    std::string digits;
    while (!AtEnd() && !IsBlank(line_[i_]) && line_[i_] < 0x80) digits += static_cast<char>(line_[i_++]);
    int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool fits =
        value >= std::numeric_limits<int32_t>::min() && value <= std::numeric_limits<uint32_t>::max();
    if (error != std::errc() || end != digits.data() + digits.size() || !fits) return std::nullopt;
    return static_cast<int32_t>(static_cast<uint32_t>(value));
  }

 private:
  // The unit that the escape at the backslash stands for; ends on the escape's last unit.
  std::optional<WideChar> TakeEscape() {
    if (++i_ == line_.size()) return std::nullopt;
    switch (const WideChar unit = line_[i_]) {
      case u'n':
        return u'\n';
      case u'r':
        return u'\r';
      case u't':
        return u'\t';
      case u'u':
        return TakeHex();
      default:
        return IsAsciiLetterOrDigit(unit) ? std::nullopt : std::optional(unit);
    }
  }

  std::optional<WideChar> TakeHex() {
    std::string digits;
    for (const WideChar unit : line_.substr(i_ + 1, 4)) digits += unit < 0x80 ? static_cast<char>(unit) : '?';
    uint16_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 4 || error != std::errc() || end != digits.data() + 4) return std::nullopt;
    i_ += 4;
    return static_cast<WideChar>(value);
  }

  WideView line_;
  std::size_t i_ = 0;
};

// "[software/Ostrel/Pemble]", from behind its "[".
std::optional<SettingsPath> ParseKey(LineReader reader) {
  SettingsPath path;
  do {
    std::optional<CString> name = reader.TakeText(kKeySpecials, false);
    if (!name) return std::nullopt;
    path.push_back(*std::move(name));
  } while (reader.Take(u'/'));
  if (!reader.Take(u']')) return std::nullopt;
  reader.SkipBlanks();
  if (!reader.AtEnd() || !IsValidPath(path)) return std::nullopt;
  return path;
}

std::optional<SettingsEntry> ParseEntry(LineReader reader, const SettingsPath& key) {
  std::optional<CString> name = reader.TakeText(u"=", true);
  if (!name || name->GetLength() > kMaxValueName || !reader.Take(u'=')) return std::nullopt;
  reader.SkipBlanks();
  std::optional<SettingValue> value;
  if (reader.Take(u'"')) {
    value = reader.TakeText(u"\"", false);
    if (!reader.Take(u'"')) return std::nullopt;
  } else {
    value = reader.TakeInteger();
  }
  reader.SkipBlanks();
  if (!value || !reader.AtEnd()) return std::nullopt;
  return SettingsEntry{key, *std::move(name), *std::move(value)};
}

std::string KeyLine(const SettingsPath& key) {
  CString line(u"[");
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (i > 0) line += u'/';
    line += Escaped(key[i], kKeySpecials);
  }
  line += u']';
  return line.ToUtf8();
}

std::string EntryLine(WideView name, const SettingValue& value) {
  std::string line = Escaped(name, kNameSpecials).ToUtf8() + " = ";
  if (const auto* number = std::get_if<int32_t>(&value)) return line + std::to_string(*number);
  return line + '"' + Escaped(std::get<CString>(value), kTextSpecials).ToUtf8() + '"';
}

// True when `key` is `ancestor` or lies below it.
bool IsWithin(const SettingsPath& key, const SettingsPath& ancestor) {
  return key.size() >= ancestor.size() &&
         std::equal(ancestor.begin(), ancestor.end(), key.begin(),
                    [](WideView a, WideView b) { return EqualWithoutCase(a, b); });
}

bool IsSameKey(const SettingsPath& a, const SettingsPath& b) {
  return a.size() == b.size() && IsWithin(a, b);
}

}  // namespace

SettingsDocument SettingsDocument::Parse(std::string_view utf8) {
  while (utf8.starts_with("\xEF\xBB\xBF")) utf8.remove_prefix(3);
  SettingsDocument document;
  std::optional<SettingsPath> current;
  while (!utf8.empty()) {
    const std::size_t length = std::min(utf8.find('\n'), utf8.size());
    std::string_view line = utf8.substr(0, length);
    while (line.ends_with('\r')) line.remove_suffix(1);
    document.Append(line, current);
    utf8.remove_prefix(std::min(length + 1, utf8.size()));
  }
  return document;
}

void SettingsDocument::Append(std::string_view line, std::optional<SettingsPath>& current) {
  const CString units = CString::FromUtf8(line);
  LineReader reader(units);
  reader.SkipBlanks();
  if (reader.AtEnd() || reader.Take(u'#')) {
    lines_.push_back({std::string(line), {}, {}});
    return;
  }
  const bool isText = units.ToUtf8() == line;
  const bool isKey = reader.Take(u'[');
  if (isKey) {
    current = isText ? ParseKey(reader) : std::nullopt;
    if (current) lines_.push_back({std::string(line), current, {}});
  } else if (std::optional<SettingsEntry> entry;
             isText && current && (entry = ParseEntry(reader, *current))) {
    lines_.push_back({std::string(line), {}, std::move(entry)});
    return;
  }
  isDamaged_ = isDamaged_ || !isKey || !current;
}

std::string SettingsDocument::Format() const {
  std::string text;
  for (const Line& line : lines_) text += line.text + '\n';
  return text;
}

bool SettingsDocument::HasKey(const SettingsPath& key) const {
  return std::any_of(lines_.begin(), lines_.end(),
                     [&](const Line& line) { return line.key && IsWithin(*line.key, key); });
}

void SettingsDocument::AddKey(const SettingsPath& key) {
  if (!HasKey(key)) AppendKey(key);
}

void SettingsDocument::AppendKey(const SettingsPath& key) {
  // The line of an empty key above it says no more than the new one.
  const bool replacesLast = !lines_.empty() && lines_.back().key && IsWithin(key, *lines_.back().key);
  if (replacesLast) {
    lines_.pop_back();
  } else {
    if (lines_.empty()) lines_.push_back({kOpening, {}, {}});
    lines_.push_back({});
  }
  lines_.push_back({KeyLine(key), key, {}});
}

std::ptrdiff_t SettingsDocument::FindEntry(const SettingsPath& key, WideView name) const {
  const auto found = std::find_if(lines_.rbegin(), lines_.rend(), [&](const Line& line) {
    return line.entry && EqualWithoutCase(line.entry->name, name) && IsSameKey(line.entry->key, key);
  });
  return lines_.rend() - found - 1;
}

const SettingValue* SettingsDocument::Find(const SettingsPath& key, WideView name) const {
  const std::ptrdiff_t i = FindEntry(key, name);
  return i < 0 ? nullptr : &lines_[static_cast<std::size_t>(i)].entry->value;
}

void SettingsDocument::Set(const SettingsPath& key, WideView name, const SettingValue& value) {
  if (const std::ptrdiff_t i = FindEntry(key, name); i >= 0) {
    Line& line = lines_[static_cast<std::size_t>(i)];
    line.entry->value = value;
    line.text = EntryLine(line.entry->name, value);
    return;
  }
  const auto isKey = [&](const Line& line) { return line.key && IsSameKey(*line.key, key); };
  auto place = std::find_if(lines_.begin(), lines_.end(), isKey);
  if (place == lines_.end()) {
    AppendKey(key);
    place = lines_.end() - 1;
  }
  // Behind the last entry of the key, before the blank line that parts it from the next one.
  auto after = place + 1;
  for (auto line = after; line != lines_.end() && !line->key; ++line) {
    if (line->entry) after = line + 1;
  }
  Line added{EntryLine(name, value), {}, SettingsEntry{*place->key, CString(name), value}};
  lines_.insert(after, std::move(added));
}

std::vector<SettingsEntry> SettingsDocument::List(const SettingsPath& key) const {
  std::vector<SettingsEntry> entries;
  for (const Line& line : lines_) {
    if (line.entry && IsWithin(line.entry->key, key)) entries.push_back(*line.entry);
  }
  return entries;
}

}  // namespace vrx
