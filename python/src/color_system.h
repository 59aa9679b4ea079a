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

  io::ColorSystem file;
  std::vector<uint32_t> ids;
  std::vector<std::string> names;
};

}  // namespace vrx::python

#endif  // PYTHON_SRC_COLOR_SYSTEM_H_
