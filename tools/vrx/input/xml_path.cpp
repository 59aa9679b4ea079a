
#include "tools/vrx/input/xml_path.h"

#include <charconv>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {
namespace {

// "[n]" at the end of `step`, which it is cut off from.
int32_t TakePosition(std::string_view& step) {
  const std::size_t open = step.find('[');
  if (open == std::string_view::npos) return 1;
  const char* const first = step.data() + open + 1;
  const char* const last = step.data() + step.size();
  int32_t position = 0;
  const auto [end, error] = std::from_chars(first, last, position);
  if (error != std::errc() || position < 1 || end + 1 != last || *end != ']') {
    throw InputError("a step may end in a position such as [2], not in \"" + std::string(step.substr(open)) +
                     "\"");
  }
  step = step.substr(0, open);
  return position;
}

XmlStep ParseStep(std::string_view step) {
  XmlStep parsed;
  parsed.isPlaced = step.find('[') != std::string_view::npos;
  parsed.position = TakePosition(step);
  if (step.empty()) throw InputError("each step of a path needs a name, as in root/child[2]/@attribute");
  if (step != "*") parsed.name = step;
  return parsed;
}

// Moves on `step.position` times; the reader's searches go on behind the last place.
bool Follow(CXmlReader& xml, const XmlStep& step, bool isRoot) {
  const CString name = CString::FromUtf8(step.name);
  for (int32_t i = 0; i < step.position; ++i) {
    if (!(isRoot ? xml.FindElem(name) : xml.FindChildElem(name))) return false;
  }
  return isRoot || xml.IntoElem();
}

// How many elements a step may mean: the current one, and those of its name behind it.
int32_t CountOfLike(const CXmlReader& xml, const XmlStep& step) {
  int32_t count = 1;
  for (int32_t i = xml.GetElement(xml.GetCurrentIndex()).nextSibling; i != 0;
       i = xml.GetElement(i).nextSibling) {
    if (step.name.empty() || xml.GetTagName(i).ToUtf8() == step.name) ++count;
  }
  return count;
}

}  // namespace

XmlPath ParseXmlPath(std::string_view text) {
  XmlPath path;
  if (text.starts_with('/')) text.remove_prefix(1);
  while (true) {
    const std::size_t slash = text.find('/');
    const std::string_view step = text.substr(0, slash);
    if (step.starts_with('@') && slash == std::string_view::npos && step.size() > 1 && !path.steps.empty()) {
      path.attribute = step.substr(1);
      return path;
    }
    path.steps.push_back(ParseStep(step));
    if (slash == std::string_view::npos) return path;
    text.remove_prefix(slash + 1);
  }
}

void GoTo(CXmlReader& xml, const XmlPath& path) {
  xml.ResetPosition();
  std::string walked;
  for (const XmlStep& step : path.steps) {
    const std::string name = step.name.empty() ? "*" : step.name;
    walked += (walked.empty() ? "" : "/") + name;
    if (step.position != 1) walked.append("[").append(std::to_string(step.position)).append("]");
    if (!Follow(xml, step, &step == &path.steps.front())) throw InputError("there is no element " + walked);
    const int32_t count = step.isPlaced ? 1 : CountOfLike(xml, step);
    if (count > 1) {
      PrintMessage("warning: there are " + std::to_string(count) + " elements " + walked +
                   "; the first is taken: a position such as [2] says which");
    }
  }
}

}  // namespace vrx::tool
