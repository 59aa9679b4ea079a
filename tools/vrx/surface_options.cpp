#include "tools/vrx/surface_options.h"

#include <map>
#include <string>

namespace vrx::tool {

void AddSpecularOption(CLI::App& command, SaundersonMode& specular) {
  static const std::map<std::string, SaundersonMode> kNames{{"included", SaundersonMode::kIncluded},
                                                            {"excluded", SaundersonMode::kExcluded},
                                                            {"none", SaundersonMode::kNone}};
  const auto toNumber = [](std::string& text) -> std::string {
    const auto found = kNames.find(CLI::detail::to_lower(text));
    if (found == kNames.end()) return "\"" + text + "\" is none of included, excluded and none";
    text = std::to_string(static_cast<int>(found->second));
    return {};
  };
  command
      .add_option("--specular", specular,
                  "Whether the curves hold what the surface reflects; none corrects nothing")
      ->transform(CLI::Validator(toNumber, ""))
      ->option_text("included|excluded|none [included]");
}

void AddSurfaceOptions(CLI::App& command, SurfaceOptions& options) {
  constexpr double kLargestReflection = 0.999;
  const auto isReflection = [](const std::string& text) -> std::string {
    double k = -1.0;
    const bool isNumber = CLI::detail::lexical_cast(text, k);
    return isNumber && k >= 0.0 && k <= kLargestReflection ? "" : "a number from 0 to 0.999 is expected";
  };
  command.add_option("--k1", options.k1, "Surface reflection of incident light")
      ->check(isReflection)
      ->option_text("K1 [0.04]");
  command.add_option("--k2", options.k2, "Internal surface reflection")
      ->check(isReflection)
      ->option_text("K2 [0.6]");
  AddSpecularOption(command, options.specular);
}

}  // namespace vrx::tool
