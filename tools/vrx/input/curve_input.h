// The common part of the commands that read curves: their options and their remarks.

#ifndef TOOLS_VRX_INPUT_CURVE_INPUT_H_
#define TOOLS_VRX_INPUT_CURVE_INPUT_H_

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/text/input_stream.h>
#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

class Command;

struct CurveInputOptions {
  bool fraction = false;
  bool percent = false;
  bool verbose = false;
  std::string bandpass;
  /// Which files a correction is for, where standards have one of their own.
  enum class Corrected { kAll, kTrials, kUnsaid };
  std::string correction;  ///< file of the correction of an instrument; empty for none
  Corrected corrected = Corrected::kUnsaid;
  /// At which interval curves are summed to tristimulus values.
  enum class Sums { kTen, kFive, kOne };
  Sums sums = Sums::kTen;
  std::string ignoredColumns;
  std::string columns;
  std::string profile;  ///< whose options were filled in before
  ReadOptions read;     ///< without what the members above say

  /// That interval in nm.
  int32_t Interval() const { return sums == Sums::kOne ? 1 : sums == Sums::kFive ? 5 : kWavelengthStep; }
  /// All of them as a reader takes them. Throws InputError for those that contradict each other.
  ReadOptions Reading() const;
  /// The same options for a file of standards beside one of trials: with or without the correction. Throws InputError where
  /// `--corrected` has to say which.
  CurveInputOptions OfStandards() const;
};

/// Adds `--fraction` and `--percent`.
void AddScaleOptions(Command& owner, CurveInputOptions& options);
/// Adds the options that say how a file is read: `--input-format`, `--fraction`, `--percent`, `--force`, `--lenient`,
/// `--id-column`, `--ignore-columns`, `--latin1`, `--columns`, `--wavelengths`, `--wavelengths-in` and `--profile`.
void AddReadOptions(Command& owner, CurveInputOptions& options);
/// Adds those and `--bandpass` and `--verbose`.
void AddUncorrectedInputOptions(Command& owner, CurveInputOptions& options);
/// Adds those and `--correction` and `--corrected`, which all commands have but those that write or compare readings as they are.
void AddCurveInputOptions(Command& owner, CurveInputOptions& options);
/// Adds `--interval`, for commands that make nothing of curves but colours.
void AddIntervalOption(Command& owner, CurveInputOptions& options);

/// Opens a file of curves, or of colours where they will do. With `--verbose` standard error says how its wavelengths
/// are used; when they leave out a part of 400 to 700 nm it says so in any case. `isExtra` knows the headings of columns
/// that only this command has a use for.
CurveReader OpenCurves(const std::string& path, const CurveInputOptions& options,
                       Content content = Content::kCurves,
                       bool (*isExtra)(std::string_view heading) = nullptr);
/// The same of an open file.
CurveReader OpenCurves(InputStream input, const CurveInputOptions& options,
                       Content content = Content::kCurves,
                       bool (*isExtra)(std::string_view heading) = nullptr);

/// Throws InputError where `--interval` asks for sums and none of the files has curves.
void RequireCurvesToSum(const CurveInputOptions& options, std::initializer_list<const CurveReader*> files);

/// Something that a user is to know of a file.
struct InputWarning {
  std::string file, text;
};
/// The largest value of a file in percent, as it was read; 0 of one that has no scale, such as L*, a*, b*.
struct FileValues {
  std::string name;
  double largest = 0;
};
/// A warning where one of two files, both of which a person said to be percent, looks like fractions of 1 beside the other: the
/// option holds for both, and no verdict on near black against a light colour is what was meant.
std::vector<InputWarning> ScaleWarnings(const FileValues& a, const FileValues& b);

/// What is odd about the samples that were read, and about their wavelengths, for a report; of two files what they have against
/// each other, too.
std::vector<InputWarning> WarningsOf(const CurveReader& curves);
std::vector<InputWarning> WarningsOf(const CurveReader& standards, const CurveReader& trials);

/// How the samples of a file were measured, as far as it says: "Spectro 3000, 45/0, M1, black backing". What differs from
/// sample to sample is left out.
std::string MeasuringText(const CurveReader& curves);

/// Says on standard error what is odd about the samples that were read: samples without a curve, measurements of different
/// conditions.
void WarnAboutInput(const CurveReader& curves);
/// The same of two files that are held against each other.
void WarnAboutInput(const CurveReader& standards, const CurveReader& trials);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_INPUT_CURVE_INPUT_H_
