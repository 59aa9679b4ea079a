// What the functions of SQL compute, whichever database calls them: of curves in percent at the wavelengths of the library, with
// illuminants, systems and parameters as people name them. All throw io::InputError for a text that means nothing.

#ifndef SQL_COLOR_FUNCTIONS_H_
#define SQL_COLOR_FUNCTIONS_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/illuminants.h>

namespace vrx::sql {

using Curve = std::array<double, kWavelengths>;

/// X, Y, Z or L*, a*, b*; none for a curve that is unset.
using Triple = std::array<double, 3>;
std::optional<Triple> TristimulusOf(const Curve& curve, const std::string& illuminant, std::int32_t observer);
std::optional<Triple> LabOf(const Curve& curve, const std::string& illuminant, std::int32_t observer);

/// Under what two curves are compared.
struct Comparison {
  std::string system, illuminants;  ///< "cmc"; "D65,A"
  std::int32_t observer = kObserver10;
  std::string parameters = {};  ///< "2:1", the first ones of the system; the others stay as they usually are
  std::string angle = {};       ///< aspecular, in degrees, for systems that depend on it, which need one
};

/// The total difference under one illuminant; none where there is none. Throws io::InputError, as VerdictOf does, where the system
/// depends on the measuring angle and there is none.
std::optional<double> DeltaOf(const Curve& standard, const Curve& trial, const Comparison& comparison);
/// The shade words under one illuminant, "Darker, Less Yellow", an empty text for none; nothing where there is no difference.
std::optional<std::string> WordsOf(const Curve& standard, const Curve& trial, const Comparison& comparison);
/// "fail", "warning" or "pass": the worst verdict of the total under all illuminants. What has no difference fails.
std::string VerdictOf(const Curve& standard, const Curve& trial, double tolerance,
                      const Comparison& comparison);

}  // namespace vrx::sql

#endif  // SQL_COLOR_FUNCTIONS_H_
