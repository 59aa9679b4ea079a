// How the surface enters a measurement, as options give it: the same for every command that leaves the surface.

#ifndef TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_
#define TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_

#include <vrxmath/colorant/optical_transforms.h>

namespace vrx::tool {

class Command;

struct SurfaceOptions {
  double k1 = 0.04;
  double k2 = 0.6;
  SaundersonMode specular = SaundersonMode::kIncluded;
};

/// Adds `--specular included|excluded|none`.
void AddSpecularOption(Command& command, SaundersonMode& specular);

/// Adds `--k1`, `--k2` and `--specular`.
void AddSurfaceOptions(Command& command, SurfaceOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_SURFACE_OPTIONS_H_
