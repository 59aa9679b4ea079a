
#include "tools/vrx/curve_input.h"

#include <utility>

#include "tools/vrx/command_line.h"
#include "tools/vrx/output/text.h"

namespace vrx::tool {

namespace {

void Remark(const std::string& file, const std::string& text) {
  PrintMessage(file + ": " + text);
}

}  // namespace

void AddCurveInputOptions(Command& command, CurveInputOptions& options) {
  command.AddFlag("--fraction", options.fraction, "Reflectances are fractions, 0 to 1, not percent");
  command.AddFlag("--verbose", options.verbose, "Say on standard error how the wavelengths are used");
}

CurveReader OpenCurves(const std::string& path, const CurveInputOptions& options, Content content) {
  return OpenCurves(CsvReader(path), options, content);
}

CurveReader OpenCurves(CsvReader csv, const CurveInputOptions& options, Content content,
                       bool (*isExtra)(std::string_view)) {
  CurveReader curves(std::move(csv), options.fraction, content, isExtra);
  if (curves.Kind() != Sample::kCurve) return curves;
  if (options.verbose) Remark(curves.Csv().Name(), curves.Grid().Description());
  if (curves.Grid().IsNarrow()) {
    Remark(curves.Csv().Name(),
           "warning: the wavelengths leave out a part of 400 to 700 nm, which is guessed");
  }
  return curves;
}

void WarnAboutFractions(const CurveReader& curves) {
  if (!curves.LooksLikeFractions()) return;
  Remark(curves.Csv().Name(), "warning: no value is above 1 percent; for fractions of 1 use --fraction");
}

}  // namespace vrx::tool
