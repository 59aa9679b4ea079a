// Viewing conditions and difference systems as options of the command line.

#ifndef TOOLS_VRX_INPUT_CONDITIONS_H_
#define TOOLS_VRX_INPUT_CONDITIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include <vrxio/measurement/names.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/input/illuminant_files.h"

namespace vrx::tool {

class Command;

/// The conditions under which colours are seen, as options give them.
struct ViewingOptions {
  std::string illuminants;  ///< codes or numbers, separated by commas
  std::string observer = "10";
  IlluminantFileOptions illuminantFiles;

  /// Registers the illuminants of the files first.
  std::vector<vrxIlluminant> Illuminants() const;
  int32_t Observer() const;
};

/// Adds `--illuminants` with a default list such as "D65,A,CWF", `--observer` and the options of illuminant
/// files.
void AddViewingOptions(Command& owner, ViewingOptions& viewing, const std::string& illuminants);

/// The difference system, as options give it.
struct SystemOptions {
  std::string system;
  std::string parameters;  ///< numbers, separated by commas or colons; empty for the usual ones

  CDifferenceSettings Settings() const;
  /// The parameters as they were given.
  std::vector<double> Given() const;
};

/// Adds `--system` with a default and `--parameters`.
void AddSystemOptions(Command& owner, SystemOptions& options, const std::string& system);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_CONDITIONS_H_
