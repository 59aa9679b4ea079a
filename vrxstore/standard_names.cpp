#include <vrxstore/standard_names.h>

#include <vector>

#include <vrxio/measurement/names.h>

namespace vrx::store {

std::string UnknownStandardText(Store& store, const std::string& name) {
  std::vector<std::string> names;
  for (StandardEntry& entry : store.Standards()) names.push_back(std::move(entry.name));
  return "there is no standard \"" + name + "\"" + io::DidYouMean(name, names);
}

}  // namespace vrx::store
