#include "tools/vrx/input/surface_options.h"

#include <charconv>
#include <optional>
#include <string>

#include <vrxio/text/input_error.h>

#include "tools/vrx/base/command_line.h"
#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {
namespace {

std::string RefuseUnlessReflection(const std::string& text) {
  constexpr double kLargestReflection = 0.999;
  double k = -1.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, k);
  const bool isReflection = error == std::errc() && stop == end && k >= 0.0 && k <= kLargestReflection;
  return isReflection ? "" : "must be a number from 0 to 0.999";
}

}  // namespace

void AddSpecularOption(Command& command, GivenSpecular& specular) {
  command.AddChoice("--specular", specular, {"included", "excluded", "none"},
                    "How the curves were measured, if the colour system does not say");
}

SaundersonMode SpecularOf(GivenSpecular given, const io::ColorSystem& system, const std::string& path) {
  std::optional<SaundersonMode> mode;
  if (given != GivenSpecular::kNotGiven) mode = static_cast<SaundersonMode>(given);
  std::string complaint;
  const SaundersonMode specular = io::SpecularOf(system, mode, complaint);
  if (!complaint.empty()) throw InputError(path + ": \"specular\": " + complaint + " as --specular says");
  return specular;
}

TakenSpecular TakenBy(GivenSpecular given, const io::ColorSystem& system, const std::string& path) {
  const SaundersonMode mode = SpecularOf(given, system, path);
  const bool isOpen = !system.specular && given == GivenSpecular::kNotGiven && system.data.k1 == 0.0;
  return {isOpen ? SaundersonMode::kNone : mode, system.specular.has_value()};
}

std::string OtherSpecularText(io::MeasuringConditions conditions, int32_t geometry,
                              const TakenSpecular& taken) {
  io::TakeGeometry(geometry, conditions);
  if (taken.mode == SaundersonMode::kNone || conditions.specular == io::Specular::kUnknown) return "";
  const bool isIncluded = conditions.specular == io::Specular::kIncluded;
  if (isIncluded == (taken.mode == SaundersonMode::kIncluded)) return "";
  const std::string stated = isIncluded ? "included" : "excluded",
                    other = isIncluded ? "excluded" : "included";
  return "the file says that the specular component is " + stated + ", but " +
         (taken.isOfSystem ? "the colour system is of curves with it " + other
                           : "--specular is " + other + "; use --specular " + stated);
}

void RefuseOtherSpecular(const io::CurveReader& curves, const io::CurveRow& row, const TakenSpecular& taken) {
  const std::string other = OtherSpecularText(curves.Conditions(), row.geometry, taken);
  if (!other.empty()) curves.Source().FailRow(other);
}

void AddSurfaceOptions(Command& owner, SurfaceOptions& options) {
  Command command = owner.Group("Surface");
  command.AddOption("--k1", options.k1, "Fraction of the incident light that the surface reflects")
      .Shows("K1 [0.04]")
      .Check(RefuseUnlessReflection);
  command.AddOption("--k2", options.k2, "Fraction of the light from within that the surface reflects back")
      .Shows("K2 [0.6]")
      .Check(RefuseUnlessReflection);
  command.AddChoice(
      "--specular", options.specular, {"included", "excluded", "none"},
      "Whether the curves include the light that the surface reflects; none: do not correct for it");
}

}  // namespace vrx::tool
