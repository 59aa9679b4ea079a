// Whether reflectances and tristimulus values are percent or fractions of 1, where files do not say it.

#ifndef VRXIO_MEASUREMENT_VALUE_SCALE_H_
#define VRXIO_MEASUREMENT_VALUE_SCALE_H_

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include <vrxio/text/input_error.h>

namespace vrx::io {

/// No set of samples stays below 1.5 percent, since its lightest one is rarely black, and no reflectance factor comes to 2,
/// not even of a fluorescent sample.
inline constexpr double kSurelyFraction = 1.5, kSurelyPercent = 2;

/// How files of two scales are brought to one, where the scale that is said holds for all of them.
inline constexpr std::string_view kBringToOneScale =
    "convert that one first: vrx convert FRACTIONS.csv PERCENT.csv --fraction";

/// A file of values that may be percent or fractions of 1: only a person can tell which.
class ScaleError : public InputError {
 public:
  /// `place`: the file, and the line where there is one; `finding`: what its values are like.
  ScaleError(const std::string& place, const std::string& finding)
      : InputError(Statement(place, finding) +
                   "; choose with --fraction or --percent, for all files of a command" +
                   "; if one of several has fractions, " + std::string(kBringToOneScale)),
        statement_(Statement(place, finding)) {}

  /// The message without the options of the tool, for an interface that has others.
  const std::string& Statement() const { return statement_; }

 private:
  static std::string Statement(const std::string& place, const std::string& finding) {
    return place + ": " + finding + ": they may be fractions of 1 or percent";
  }

  std::string statement_;
};

/// Looks among the values of a file for one that tells their scale: percent for sure where one comes to 2. Tristimulus values have
/// it, too, as Y of the perfect diffuser is 100 or 1, and X and Z of no sample come to 2 where it is 1 (CIE 15).
class ScaleSearch {
 public:
  enum class Values { kReflectances, kTristimulus };

  ScaleSearch() = default;
  /// `isOpen`: nobody said the scale.
  ScaleSearch(Values values, bool isOpen) : values_(values), isOpen_(isOpen) {}

  /// True as long as no value has come to 2: percent or fractions, nobody knows.
  bool IsOpen() const { return isOpen_; }
  /// The largest value that was looked at; 0 for none above it.
  double Largest() const { return largest_; }
  void Take(std::span<const double> values) {
    if (!isOpen_) return;
    for (const double value : values) largest_ = std::max(largest_, value);
    isOpen_ = largest_ < kSurelyPercent;
  }
  /// Asks which, of the file that ended so: throws ScaleError.
  [[noreturn]] void Ask(const std::string& file) const;

 private:
  Values values_ = Values::kReflectances;
  bool isOpen_ = false;
  double largest_ = 0;
};

/// Why a value that was read as a fraction of 1 is refused.
std::string AboveFractions();

/// How reflectances and tristimulus values become percent.
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
