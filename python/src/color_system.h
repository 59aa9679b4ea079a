// A colour system as Python holds it: with its components in the order of its file.

#ifndef PYTHON_SRC_COLOR_SYSTEM_H_
#define PYTHON_SRC_COLOR_SYSTEM_H_

#include <cstdint>
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

  io::ColorSystem file;
  std::vector<uint32_t> ids;
  std::vector<std::string> names;
};

}  // namespace vrx::python

#endif  // PYTHON_SRC_COLOR_SYSTEM_H_
