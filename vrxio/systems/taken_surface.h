// How the surface enters the curves of a colour system, held against what files and geometries say of it themselves.

#ifndef VRXIO_SYSTEMS_TAKEN_SURFACE_H_
#define VRXIO_SYSTEMS_TAKEN_SURFACE_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <vrxio/measurement/measurement.h>
#include <vrxio/systems/color_system_file.h>

namespace vrx::io {

/// What curves are taken for.
struct TakenSpecular {
  SaundersonMode mode = SaundersonMode::kNone;  ///< with none anything goes
  bool isOfSystem = false;  ///< the colour system says so, so that no setting can change it
};

/// What the curves beside a system are taken for, as SpecularOf gives it; anything goes for a system without a surface that does not
/// say either, unless something is `given`.
TakenSpecular TakenBy(const ColorSystem& system, std::optional<SaundersonMode> given);

/// How an interface says where a geometry stands ("the file"), and its setting for the surface with a value of SpecularName, such as
/// `--specular included`.
struct SurfaceNames {
  std::string_view source;
  std::function<std::string(std::string_view value)> setting;
};

/// The message, without its place, about a curve of which its conditions or its own geometry say that its specular component was
/// measured the other way; empty for any other.
std::string OtherSpecularText(MeasuringConditions conditions, int32_t geometry, const TakenSpecular& taken,
                              const SurfaceNames& names);

}  // namespace vrx::io

#endif  // VRXIO_SYSTEMS_TAKEN_SURFACE_H_
