#include "tools/vrx/input/illuminant_files.h"

#include <vrxio/csv/illuminant_files.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {

void IlluminantFileOptions::Register() const {
  RegisterIlluminantFiles(files,
                          straight ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
}

void AddIlluminantFileOptions(Command& owner, IlluminantFileOptions& options) {
  Command command = owner.Group("Light");
  command
      .AddOption("--illuminant-file", options.files,
                 "Spectral power of further illuminants: a column nm and one for each, named by its code; 1, "
                 "5 or 10 nm apart")
      .ReadsFile()

      .Shows("FILE ...");
  command.AddFlag("--illuminant-linear", options.straight,
                  "Interpolate that file linearly, as CIE D65 is defined, not by cubics");
}

}  // namespace vrx::tool
