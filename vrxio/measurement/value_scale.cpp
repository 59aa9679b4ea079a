#include <vrxio/measurement/value_scale.h>

#include <vrxio/text/decimal.h>
#include <vrxio/text/text.h>

namespace vrx::io {

void ScaleSearch::Ask(const std::string& file) const {
  const std::string largest = "the largest is " + ShortestText(largest_);
  throw ScaleError(file, values_ == Values::kReflectances
                             ? "all values are below 2, " + largest
                             : "all of X, Y, Z are below 2, " + largest + " (Y of a white is 1 or 100)");
}

std::string AboveFractions() {
  return "the value is above 2, too much for a fraction of 1; use --percent if no file has fractions, or "
         "--force to accept it; if another file has them, the files seem to have different scales: " +
         std::string(kBringToOneScale);
}

bool IsPercentUnit(std::string_view text) {
  const std::string plain = PlainText(text);
  if (plain == "percent") return true;
  return text.find('%') != std::string_view::npos &&
         (plain.empty() || plain == "r" || plain == "reflectance");
}

}  // namespace vrx::io
