// How the surface enters a measurement, as options give it: the same for every command that leaves the surface.

#ifndef TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_
#define TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_

#include <cstdint>
#include <string>

#include <vrxmath/colorant/optical_transforms.h>

#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxio/systems/taken_surface.h>

namespace vrx::tool {

class Command;

/// `--specular` of a command that reads a colour system, which says itself how what it was calibrated on was measured.
enum class GivenSpecular { kIncluded, kExcluded, kNone, kNotGiven };

/// The surface of a command that no colour system is beside.
struct SurfaceOptions {
  double k1 = 0.04;
  double k2 = 0.6;
  GivenSpecular given = GivenSpecular::kNotGiven;

  /// How the surface enters the curves: as given, and included when nothing is.
  SaundersonMode Specular() const { return Taken().mode; }
  /// What the command takes curves for.
  io::TakenSpecular Taken() const;
};

/// Adds `--specular included|excluded|none`.
void AddSpecularOption(Command& command, GivenSpecular& specular);

/// How the surface enters the curves of a command: as the file of the colour system says; where it does not, as given, and
/// included when nothing is. Throws InputError where the two differ.
SaundersonMode SpecularOf(GivenSpecular given, const io::ColorSystem& system, const std::string& path);

/// What a command takes curves for, against which the files are held that say it themselves. Throws InputError as SpecularOf does.
io::TakenSpecular TakenBy(GivenSpecular given, const io::ColorSystem& system, const std::string& path);

/// The message, without its place, about a curve of which its file says, by its conditions or its own geometry, that its
/// specular component was measured the other way; empty for any other.
std::string OtherSpecularText(const io::MeasuringConditions& conditions, int32_t geometry,
                              const io::TakenSpecular& taken);
/// Throws InputError for a row of which the file says that its specular component was measured the other way.
void RefuseOtherSpecular(const io::CurveReader& curves, const io::CurveRow& row,
                         const io::TakenSpecular& taken);

/// Adds `--k1`, `--k2` and `--specular`.
void AddSurfaceOptions(Command& owner, SurfaceOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_
