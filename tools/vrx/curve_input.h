// What the commands that read curves have in common: their options and their remarks.

#ifndef TOOLS_VRX_CURVE_INPUT_H_
#define TOOLS_VRX_CURVE_INPUT_H_

#include <string>
#include <string_view>

#include <vrxio/curve_reader.h>
#include "tools/vrx/input.h"

namespace vrx::tool {

class Command;

struct CurveInputOptions {
  bool fraction = false;
  bool verbose = false;
};

/// Adds `--fraction` and `--verbose`.
void AddCurveInputOptions(Command& command, CurveInputOptions& options);

/// Opens a file of curves, or of colours where they will do. With `--verbose` standard error says how its wavelengths
/// are used; when they leave out a part of 400 to 700 nm it says so in any case.
CurveReader OpenCurves(const std::string& path, const CurveInputOptions& options,
                       Content content = Content::kCurves);
/// The same of a file whose header was looked at already; with columns of its own, see CurveReader.
CurveReader OpenCurves(CsvReader csv, const CurveInputOptions& options, Content content = Content::kCurves,
                       bool (*isExtra)(std::string_view heading) = nullptr);

/// Says on standard error when the values that were read are fractions by the look of them.
void WarnAboutFractions(const CurveReader& curves);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_CURVE_INPUT_H_
