// User illuminants from files: `--illuminant-file`, for every command that takes illuminants.

#ifndef TOOLS_VRX_INPUT_ILLUMINANT_FILES_H_
#define TOOLS_VRX_INPUT_ILLUMINANT_FILES_H_

#include <string>
#include <vector>

namespace vrx::tool {

class Command;

struct IlluminantFileOptions {
  std::vector<std::string> files;
  bool straight = false;

  /// Registers every illuminant of the files, so that it can be named by its code or number. May be called
  /// again. Throws InputError for a file that is not one or an illuminant that the library refuses.
  void Register() const;
};

/// Adds `--illuminant-file` and `--illuminant-linear`; vrxio/csv/illuminant_files.h says what stands in such a file.
void AddIlluminantFileOptions(Command& owner, IlluminantFileOptions& options);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_ILLUMINANT_FILES_H_
