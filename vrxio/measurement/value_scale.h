// Whether reflectances are percent or fractions of 1, where files do not say it.

#ifndef VRXIO_MEASUREMENT_VALUE_SCALE_H_
#define VRXIO_MEASUREMENT_VALUE_SCALE_H_

#include <string>
#include <string_view>

#include <vrxio/text/input_error.h>

namespace vrx::io {

/// No set of samples stays below 1.5 percent, since its lightest one is rarely black, and no reflectance factor comes to 2,
/// not even of a fluorescent sample.
inline constexpr double kSurelyFraction = 1.5, kSurelyPercent = 2;

/// A file of values that may be percent or fractions of 1: only a person can tell which.
class ScaleError : public InputError {
 public:
  /// `place`: the file, and the line where there is one; `finding`: what its values are like.
  ScaleError(const std::string& place, const std::string& finding)
      : InputError(Statement(place, finding) + "; choose with --fraction or --percent"),
        statement_(Statement(place, finding)) {}

  /// The message without the options of the tool, for an interface that has others.
  const std::string& Statement() const { return statement_; }

 private:
  static std::string Statement(const std::string& place, const std::string& finding) {
    return place + ": " + finding + ": they may be fractions of 1 or percent";
  }

  std::string statement_;
};

/// How reflectances become percent.
struct ValueScale {
  double norm =
      100;  ///< the value that stands for 100 percent; 1 for fractions, which readers give as percent
  bool isFraction = false;  ///< values above 2 are refused
  bool mayExceed = false;   ///< not even then
  bool isGuess = false;     ///< nobody said that they are fractions: their values look like it
  bool isOpen = false;      ///< nobody said anything; they are percent if one of them comes to 2
};

/// True for a unit such as "%", "%R" or "R [%]".
bool IsPercentUnit(std::string_view text);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_VALUE_SCALE_H_
