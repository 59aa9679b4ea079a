// A colour system as Python holds it: with its components in the order of its file.

#ifndef PYTHON_SRC_COLOR_SYSTEM_H_
#define PYTHON_SRC_COLOR_SYSTEM_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vrxio/systems/color_system_file.h>
#include <vrxio/systems/components.h>

namespace vrx::python {

struct System {
  explicit System(io::ColorSystem given) : file(std::move(given)) {
    for (const CComponent* component : io::ComponentsInOrder(file)) {
      ids.push_back(component->GetId());
      names.push_back(component->GetName().ToUtf8());
    }
  }

  /// The place of a component in `ids`, which must have it: throws std::out_of_range otherwise.
  std::size_t PlaceOfId(uint32_t id) const {
    const auto found = std::find(ids.begin(), ids.end(), id);
    if (found == ids.end()) throw std::out_of_range("no component " + std::to_string(id));
    return static_cast<std::size_t>(found - ids.begin());
  }

  /// What results call the component of a place, and what finds it again: its name, or "id:7" where others have that name, too.
  const std::string& Label(std::size_t place) const {
    if (labels.empty()) labels.resize(ids.size());
    std::string& label = labels[place];
    if (label.empty()) label = io::TellingName(file, *io::ComponentOfId(file, ids[place]));
    return label;
  }

  io::ColorSystem file;
  std::vector<uint32_t> ids;
  std::vector<std::string> names;

 private:
  mutable std::vector<std::string> labels;  // those that were asked for, under the interpreter's lock
};

}  // namespace vrx::python

#endif  // PYTHON_SRC_COLOR_SYSTEM_H_
