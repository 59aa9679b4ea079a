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

bool IsPercentUnit(std::string_view text) {
  const std::string plain = PlainText(text);
  if (plain == "percent") return true;
  return text.find('%') != std::string_view::npos &&
         (plain.empty() || plain == "r" || plain == "reflectance");
}

}  // namespace vrx::io
