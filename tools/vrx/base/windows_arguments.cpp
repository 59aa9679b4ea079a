#include "tools/vrx/base/windows_arguments.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <vrxmath/platform/wide_string.h>

namespace vrx::tool {
namespace {

struct Argument {
  std::u16string text;
  bool isPattern = false;  ///< it has a "*" or "?" outside of quotation marks
};

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t';
}

// Backslashes up to a place; in front of a quotation mark two of them stand for one, and an odd one makes the mark plain.
// True when it did.
bool TakeBackslashes(std::u16string_view& line, std::u16string& text) {
  const std::size_t count = std::min(line.find_first_not_of(u'\\'), line.size());
  line.remove_prefix(count);
  const bool isMarked = count > 0 && !line.empty() && line.front() == u'"';
  text.append(isMarked ? count / 2 : count, u'\\');
  if (!isMarked || count % 2 == 0) return false;
  text += u'"';
  line.remove_prefix(1);
  return true;
}

Argument TakeArgument(std::u16string_view& line) {
  Argument argument;
  for (bool quoted = false; !line.empty();) {
    if (TakeBackslashes(line, argument.text) || line.empty()) continue;
    const char16_t c = line.front();
    if (!quoted && IsBlank(c)) break;
    line.remove_prefix(1);
    if (c != u'"') {
      argument.isPattern = argument.isPattern || (!quoted && (c == u'*' || c == u'?'));
      argument.text += c;
    } else if (quoted && !line.empty() && line.front() == u'"') {
      argument.text += u'"';
      line.remove_prefix(1);
    } else {
      quoted = !quoted;
    }
  }
  return argument;
}

// The program's name knows no backslashes.
void DropProgram(std::u16string_view& line) {
  const bool quoted = !line.empty() && line.front() == u'"';
  const std::size_t end = quoted ? line.find(u'"', 1) : line.find_first_of(u" \t");
  line.remove_prefix(end == std::u16string_view::npos ? line.size() : end + (quoted ? 1 : 0));
}

void DropBlanks(std::u16string_view& line) {
  while (!line.empty() && IsBlank(line.front())) line.remove_prefix(1);
}

char16_t Folded(char16_t c) {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

// Whether a name fits a pattern; when a "*" cannot take less any more, the last one takes more.
bool Fits(std::u16string_view name, std::u16string_view pattern) {
  std::size_t n = 0, p = 0, star = std::u16string_view::npos, taken = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      taken = n;
    } else if (p < pattern.size() && (pattern[p] == u'?' || Folded(pattern[p]) == Folded(name[n]))) {
      ++p, ++n;
    } else if (star != std::u16string_view::npos) {
      p = star + 1;
      n = ++taken;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

std::string Utf8(std::u16string_view text) {
  return CString(text).ToUtf8();
}

// The files that a pattern fits, with its folder in front of each as it was given.
std::vector<std::string> FilesOf(std::u16string_view pattern) {
  const std::size_t slash = pattern.find_last_of(u"/\\:");
  const std::u16string_view folder = pattern.substr(0, slash + 1), name = pattern.substr(slash + 1);
  std::vector<std::string> files;
  std::error_code error;
  const std::filesystem::path path =
      folder.empty() ? std::filesystem::path(".") : std::filesystem::path(folder);
  for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
    const std::u16string own = entry.path().filename().u16string();
    if (Fits(own, name) && entry.is_regular_file(error)) files.push_back(Utf8(folder) + Utf8(own));
  }
  std::ranges::sort(files);
  return files;
}

}  // namespace

std::vector<std::string> WindowsArguments(std::u16string_view commandLine) {
  std::vector<std::string> arguments;
  DropProgram(commandLine);
  for (DropBlanks(commandLine); !commandLine.empty(); DropBlanks(commandLine)) {
    const Argument argument = TakeArgument(commandLine);
    std::vector<std::string> files;
    if (argument.isPattern && !argument.text.starts_with(u'-')) files = FilesOf(argument.text);
    if (files.empty()) files.push_back(Utf8(argument.text));
    std::ranges::move(files, std::back_inserter(arguments));
  }
  return arguments;
}

}  // namespace vrx::tool
