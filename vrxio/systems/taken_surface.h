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
  bool isGiven = false;     ///< the user says so, which answers for curves of 45/0: a matt surface is in them
  int32_t geometry =
      kNoGeometry;  ///< of the curves that the colour system was calibrated on, where it says that
};

/// What the curves beside a system are taken for, as SpecularOf gives it; anything goes for a system without a surface that does not
/// say either, unless something is `given`.
TakenSpecular TakenBy(const ColorSystem& system, std::optional<SaundersonMode> given);

/// What curves are taken for that no colour system is beside: as `given`, else with the surface included.
TakenSpecular TakenAlone(std::optional<SaundersonMode> given);

/// How an interface says where a geometry stands ("the file"), and its setting for the surface with a value of SpecularName, such as
/// `--specular included`.
struct SurfaceNames {
  std::string_view source;
  std::function<std::string(std::string_view value)> setting;
};

/// The message, without its place, about a curve of which its conditions or its own geometry say that its specular component was
/// measured the other way; empty for any other. 45/0 and other angles beside the gloss say that it was not measured; a user who
/// says that it is included has answered that.
std::string OtherSpecularText(MeasuringConditions conditions, int32_t geometry, const TakenSpecular& taken,
                              const SurfaceNames& names);

/// The geometry of the curves that a colour system is calibrated on: the one that all have, else none.
class CommonGeometry {
 public:
  /// Takes up a curve with what its conditions or its own geometry say.
  void Add(MeasuringConditions conditions, int32_t geometry);
  int32_t Get() const { return common_; }

 private:
  int32_t common_ = kNoGeometry;
  bool isFirst_ = true;
};

}  // namespace vrx::io

#endif  // VRXIO_SYSTEMS_TAKEN_SURFACE_H_
