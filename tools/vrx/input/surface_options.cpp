#include "tools/vrx/input/surface_options.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

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

std::optional<SaundersonMode> ModeOf(GivenSpecular given) {
  if (given == GivenSpecular::kNotGiven) return {};
  return static_cast<SaundersonMode>(given);
}

}  // namespace

io::TakenSpecular SurfaceOptions::Taken() const {
  return io::TakenAlone(ModeOf(given));
}

void AddSpecularOption(Command& command, GivenSpecular& specular) {
  command.AddChoice("--specular", specular, {"included", "excluded", "none"},
                    "How the curves were measured, if the colour system does not say");
}

SaundersonMode SpecularOf(GivenSpecular given, const io::ColorSystem& system, const std::string& path) {
  std::string complaint;
  const SaundersonMode specular = io::SpecularOf(system, ModeOf(given), complaint);
  if (!complaint.empty()) throw InputError(path + ": \"specular\": " + complaint + " as --specular says");
  return specular;
}

io::TakenSpecular TakenBy(GivenSpecular given, const io::ColorSystem& system, const std::string& path) {
  (void)SpecularOf(given, system, path);
  return io::TakenBy(system, ModeOf(given));
}

std::string OtherSpecularText(const io::MeasuringConditions& conditions, int32_t geometry,
                              const io::TakenSpecular& taken) {
  const auto setting = [](std::string_view value) {
    return "--specular" + (value.empty() ? std::string() : " " + std::string(value));
  };
  return io::OtherSpecularText(conditions, geometry, taken, {"the file", setting});
}

void RefuseOtherSpecular(const io::CurveReader& curves, const io::CurveRow& row,
                         const io::TakenSpecular& taken) {
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
      "--specular", options.given, {"included", "excluded", "none"},
      "Whether the curves include the light that the surface reflects; none: do not correct for it");
}

}  // namespace vrx::tool
