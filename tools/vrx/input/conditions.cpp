#include "tools/vrx/input/conditions.h"

#include <algorithm>
#include <cstdio>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/foundation/angles.h>

#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

// "cmc 2:1:1, din99 1:1": every system that has parameters, with those under which it is usually quoted.
std::string UsualParameters() {
  std::string text;
  for (const DifferenceSystem& row : DifferenceSystems()) {
    if (row.parameterCount == 0) continue;
    text.append(text.empty() ? "" : ", ").append(row.shortName);
    for (int32_t k = 0; k < row.parameterCount; ++k) {
      text += k == 0 ? ' ' : ':';
      text += ParameterText(row.defaults[static_cast<std::size_t>(k)]).ToUtf8();
    }
  }
  return text;
}

// The names under which the run asked for illuminants.
std::map<vrxIlluminant, std::string>& AskedNames() {
  static std::map<vrxIlluminant, std::string> names;
  return names;
}

}  // namespace

std::string ShownIlluminant(vrxIlluminant illuminant) {
  const auto asked = AskedNames().find(illuminant);
  return asked != AskedNames().end() ? asked->second : CodeOf(illuminant);
}

std::string ShownLight(vrxIlluminant illuminant, int32_t observer) {
  const std::string usual = IlluminantName(illuminant, observer, kNameSlashObserver).ToUtf8();
  return ShownIlluminant(illuminant) + usual.substr(std::min(CodeOf(illuminant).size(), usual.size()));
}

void AddViewingOptions(Command& owner, ViewingOptions& viewing, const std::string& illuminants) {
  Command command = owner.Group("Light");
  viewing.usual = illuminants;
  command
      .AddOption("--illuminants,--illuminant", viewing.illuminants,
                 "Illuminants by code or number, separated by commas")
      .Shows("LIST [" + illuminants + "]");
  command.AddOption("--observer", viewing.observer, "Observer, in degrees").Shows("2|10 [10]");
  AddIlluminantFileOptions(command, viewing.illuminantFiles);
}

std::vector<vrxIlluminant> ViewingOptions::Illuminants() const {
  illuminantFiles.Register();
  std::vector<vrxIlluminant> list;
  for (const std::string& text : SplitList(illuminants.empty() ? usual : illuminants, ',')) {
    const vrxIlluminant illuminant = ParseIlluminant(text);
    if (std::ranges::find(list, illuminant) != list.end()) {
      throw InputError("illuminant " + CodeOf(illuminant) + " is named twice");
    }
    list.push_back(illuminant);
    const auto own = names.find(illuminant);
    AskedNames()[illuminant] = own != names.end() ? own->second : NameOfIlluminant(text);
  }
  return list;
}

int32_t ViewingOptions::Observer() const {
  return observer.empty() ? kObserver10 : ParseObserver(observer);
}

void ViewingOptions::RequireOneIlluminant() const {
  if (Illuminants().size() != 1) throw InputError("--illuminants: this command takes exactly one");
}

void ViewingOptions::TakeStated(const std::string& file, const MeasuringConditions& stated) {
  if (illuminants.empty() && !stated.otherIlluminant.empty()) {
    throw InputError(file + ": its colours were seen under \"" + stated.otherIlluminant +
                     "\", of which there is no table: name an illuminant with --illuminants");
  }
  if (illuminants.empty() && stated.illuminant >= 0) {
    illuminants = CodeOf(static_cast<vrxIlluminant>(stated.illuminant));
  }
  if (observer.empty() && stated.observer >= 0) observer = std::to_string(DegreesOf(stated.observer));
}

void ViewingOptions::Follow(std::initializer_list<CurveReader*> files, bool firstCounts) {
  const bool isNamed = !illuminants.empty();
  for (const CurveReader* file : files) {
    if (file->Kind() != Sample::kCurve) TakeStated(file->Source().Name(), file->FirstConditions());
  }
  const bool isStated = !isNamed && !illuminants.empty();
  for (CurveReader* file : files) {
    if (file->Kind() == Sample::kCurve) continue;
    const std::vector<vrxIlluminant> asked = Illuminants();
    const bool isOpen = isStated && file->FirstConditions().illuminant < 0;
    if (isOpen || (asked.size() > 1 && !firstCounts)) {
      throw InputError(file->Source().Name() +
                       ": a colour belongs to one illuminant: name it with --illuminants");
    }
    file->RequireLight(asked.front(), Observer());
  }
}

void ViewingOptions::Follow(const std::string& file, const MeasuringConditions& stated) {
  TakeStated(file, stated);
  const std::vector<vrxIlluminant> asked = Illuminants();
  if (asked.size() != 1)
    throw InputError("--illuminants: a colour belongs to one illuminant; name that alone");
  MeasuringConditions required;
  required.illuminant = asked.front();
  required.observer = Observer();
  const std::string conflict = LightConflict(stated, required);
  if (!conflict.empty()) throw InputError(file + ": " + conflict);
}

std::string UsualIlluminants() {
  std::string list;
  for (const vrxIlluminant illuminant : JudgeDefaults::kIlluminants)
    list.append(list.empty() ? "" : ",").append(CodeOf(illuminant));
  return list;
}

double SystemOptions::Angle() const {
  constexpr double kUsual = 45.0, kLeast = -45.0, kLargest = 110.0;
  if (angle.empty()) return kUsual;
  const std::vector<double> numbers = ParseNumbers(angle, "--angle");
  if (numbers.size() != 1 || numbers[0] < kLeast || numbers[0] > kLargest) {
    throw InputError("--angle: must be from -45 to 110 degrees");
  }
  return numbers[0];
}

bool SystemOptions::HasAngle(int32_t geometry) {
  return HasAspecularAngle(geometry);
}

double SystemOptions::AngleOf(int32_t geometry) const {
  return AspecularAngle(geometry, Angle());
}

void SystemOptions::WarnAboutAngle(bool geometriesKnown) const {
  const DifferenceSystem& row = *FindDifferenceSystem(ParseSystem(system));
  if (!row.readsAngle || geometriesKnown || !angle.empty()) return;
  std::fprintf(stderr,
               "vrx: warning: %s depends on the measuring angle, which is not given: 45 degrees are assumed; "
               "set it with --angle\n",
               std::string(row.shortName).c_str());
}

void AddSystemOptions(Command& owner, SystemOptions& options, const std::string& system) {
  Command command = owner.Group("Difference");
  options.system = system;
  std::string names = "Difference system by number or name:";
  for (const DifferenceSystem& row : DifferenceSystems()) names.append(" ").append(row.shortName);
  command.AddOption("--system", options.system, names).Shows("NAME [" + system + "]");
  command
      .AddOption("--parameters", options.parameters,
                 "Parameters of the system, in the order of its name, instead of the usual ones: " +
                     UsualParameters())
      .Shows("LIST");
  command
      .AddOption("--angle", options.angle,
                 "Aspecular measuring angle in degrees for audi and din6175, if no geometry names one")
      .Shows("DEGREES [45]");
}

std::vector<double> SystemOptions::Given() const {
  if (parameters.empty()) return {};
  std::string list = parameters;
  std::ranges::replace(list, ':', ',');  // headings print them so
  return ParseNumbers(list, "--parameters");
}

CDifferenceSettings SystemOptions::Settings() const {
  CDifferenceSettings settings = DefaultSettings(ParseSystem(system));
  settings.ownFormula = true;  // a user who names DIN99 means its own figures
  const std::vector<double> given = Given();
  if (given.size() > static_cast<std::size_t>(ParameterCount(settings.system))) {
    throw InputError("--parameters: " + std::string(ShortNameOf(settings.system)) + " has " +
                     std::to_string(ParameterCount(settings.system)) + " parameters");
  }
  if (std::ranges::any_of(given, [](double parameter) { return parameter <= 0; })) {
    throw InputError("--parameters: every parameter must be above 0");
  }
  std::ranges::copy(given, settings.parameters.begin());
  return settings;
}

}  // namespace vrx::tool
