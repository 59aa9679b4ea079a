// The components of a colour system as people name them: by number, or by name.

#ifndef VRXIO_SYSTEMS_COMPONENTS_H_
#define VRXIO_SYSTEMS_COMPONENTS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/systems/color_system_file.h>

namespace vrx::io {

/// The component of a system by its id or its name in any case, also where that is a number; "id:7" and "name:7" say which
/// of the two is meant. Null, with `fault` as a message without its place, for none and for a text that means several.
const CComponent* FindComponent(const ColorSystem& system, std::string_view text, std::string& fault);
/// The components of a system that have this name, in any case.
std::vector<const CComponent*> ComponentsOfName(const ColorSystem& system, std::string_view name);
/// The component of a system by its id alone; null when there is none.
const CComponent* ComponentOfId(const ColorSystem& system, uint32_t id);

/// What FindComponent finds a component by: its name, or "id:7" where the name means another one, too.
std::string TellingName(const ColorSystem& system, const CComponent& component);

}  // namespace vrx::io

#endif  // VRXIO_SYSTEMS_COMPONENTS_H_
