#include <vrxio/systems/components.h>

#include <algorithm>
#include <charconv>

#include <vrxio/measurement/names.h>

namespace vrx::io {
namespace {

// "3, 5 and 9" for the joint " and ".
std::string NumbersText(const std::vector<const CComponent*>& components, std::string_view joint) {
  std::string text;
  for (std::size_t i = 0; i < components.size(); ++i) {
    if (i > 0) text += i + 1 < components.size() ? std::string_view(", ") : joint;
    text += std::to_string(components[i]->GetId());
  }
  return text;
}

}  // namespace

const CComponent* ComponentOfId(const ColorSystem& system, uint32_t id) {
  for (const CComponent* component : ComponentsInOrder(system)) {
    if (component->GetId() == id) return component;
  }
  return nullptr;
}

std::vector<const CComponent*> ComponentsOfName(const ColorSystem& system, std::string_view name) {
  std::vector<const CComponent*> found;
  for (const CComponent* component : ComponentsInOrder(system)) {
    if (EqualsIgnoringCase(component->GetName().ToUtf8(), name)) found.push_back(component);
  }
  return found;
}

const CComponent* FindComponent(const ColorSystem& system, std::string_view text, std::string& fault) {
  constexpr std::string_view kId = "id:", kName = "name:";
  const bool isOnlyId = text.starts_with(kId), isOnlyName = text.starts_with(kName);
  if (isOnlyId) text.remove_prefix(kId.size());
  if (isOnlyName) text.remove_prefix(kName.size());
  const std::string named(text);
  uint32_t id = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), id);
  const bool isId = !isOnlyName && end.ec == std::errc() && end.ptr == text.data() + text.size();
  const CComponent* const byId = isId ? ComponentOfId(system, id) : nullptr;
  std::vector<const CComponent*> byName;
  if (!isOnlyId) byName = ComponentsOfName(system, text);
  const auto other = std::ranges::find_if(byName, [&](const CComponent* found) { return found != byId; });
  if (byId != nullptr && other != byName.end()) {
    fault = "\"" + named + "\" is the number of the component \"" + byId->GetName().ToUtf8() +
            "\" and the name of component " + std::to_string((*other)->GetId()) + "; write id:" + named +
            " or name:" + named;
  } else if (byId == nullptr && byName.size() > 1) {
    fault = "\"" + named + "\" is the name of components " + NumbersText(byName, " and ") + "; write " +
            NumbersText(byName, " or ");
  } else if (byId == nullptr && byName.empty()) {
    fault = "the colour system has no component \"" + named + "\"";
  } else {
    return byId != nullptr ? byId : byName.front();
  }
  return nullptr;
}

std::string TellingName(const ColorSystem& system, const CComponent& component) {
  std::string name = component.GetName().ToUtf8(), fault;
  return FindComponent(system, name, fault) == &component ? name : "id:" + std::to_string(component.GetId());
}

}  // namespace vrx::io
