// Viewing conditions and difference systems as options of the command line.

#ifndef TOOLS_VRX_INPUT_CONDITIONS_H_
#define TOOLS_VRX_INPUT_CONDITIONS_H_

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/measurement/names.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/input/illuminant_files.h"

namespace vrx::tool {

class Command;

/// The conditions under which colours are seen, as options give them.
struct ViewingOptions {
  std::string illuminants;  ///< codes or numbers, separated by commas; empty for the usual ones
  std::string usual;        ///< the same
  std::string observer;     ///< empty for the usual one
  IlluminantFileOptions illuminantFiles;
  std::map<vrxIlluminant, std::string>
      names;  ///< how results call illuminants that have no code of their own

  /// Registers the illuminants of the files first.
  std::vector<vrxIlluminant> Illuminants() const;
  int32_t Observer() const;
  /// Throws InputError where the options name several illuminants, for a command that takes one.
  void RequireOneIlluminant() const;

  /// Follows the files that are to be seen so. Colours without curves count under the light of their file: what it says of
  /// that takes the place of what the options leave open. Throws InputError where another light was asked for, where files
  /// contradict each other, and where nothing says which of several illuminants colours belong to. `firstCounts`: of
  /// several illuminants the first is that of colours.
  void Follow(std::initializer_list<CurveReader*> files, bool firstCounts = false);

  /// The same for one table of colours whose headings state their light.
  void Follow(const std::string& file, const MeasuringConditions& stated);

 private:
  void TakeStated(const std::string& file, const MeasuringConditions& stated);
};

/// An illuminant by the name under which the run asked for it: "TL84" and not "T84". Its code where it did not.
std::string ShownIlluminant(vrxIlluminant illuminant);
/// The same with the observer: "TL84/10 degrees", with the degree sign.
std::string ShownLight(vrxIlluminant illuminant, int32_t observer);

/// The illuminants of judgements, searches and recipes where nobody names others, as `--illuminants` lists them: "D65,A,CWF".
std::string UsualIlluminants();

/// Adds `--illuminants` with a default list such as UsualIlluminants(), `--observer` and the options of illuminant
/// files.
void AddViewingOptions(Command& owner, ViewingOptions& viewing, const std::string& illuminants);

/// The difference system, as options give it.
struct SystemOptions {
  std::string system;
  std::string parameters;  ///< numbers, separated by commas or colons; empty for the usual ones
  std::string angle;       ///< aspecular measuring angle in degrees; empty for the usual one

  CDifferenceSettings Settings() const;
  /// The measuring angle where no geometry says one: the one that was given, else 45 degrees. Throws InputError for one that
  /// no geometry can have.
  double Angle() const;
  /// True for a geometry that has an aspecular angle of its own.
  static bool HasAngle(int32_t geometry);
  /// The angle at which a sample of a geometry was measured: the geometry's own, or Angle() where it has none.
  double AngleOf(int32_t geometry) const;
  /// Says on standard error that the usual angle was taken, where the system depends on it, nobody gave one, and
  /// `geometriesKnown` is false.
  void WarnAboutAngle(bool geometriesKnown) const;
  /// The parameters as they were given.
  std::vector<double> Given() const;
};

/// Adds `--system` with a default, `--parameters` and `--angle`.
void AddSystemOptions(Command& owner, SystemOptions& options, const std::string& system);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_CONDITIONS_H_
