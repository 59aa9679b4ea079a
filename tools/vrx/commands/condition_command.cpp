// vrx condition: what a measurement-condition code means.

#include <memory>
#include <string>
#include <vector>

#include <vrxmath/support/condition_text.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct ConditionOptions {
  std::vector<std::string> codes;
  Format format = Format::kTable;
};

void RunCondition(const ConditionOptions& options) {
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output, {{"code"}, {"description"}});
  for (const std::string& given : options.codes) {
    CString code = CString::FromUtf8(given);
    const std::string description = ConditionText(code).ToUtf8();
    rows->Text(code.ToUtf8());
    rows->Text(description);
    rows->EndRow();
  }
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddCondition(Command& tool) {
  const auto options = std::make_shared<ConditionOptions>();
  Command command = tool.AddCommand("condition", "Explain measurement-condition codes");
  command.AddOption("CODE", options->codes, "Code of up to six letters, such as CRIILL").Required();
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The letters stand for calibration, gloss or measuring mode, specular component, ultraviolet content,\n"
      "lens and mask. A letter without a meaning is replaced by the default of its position, and letters "
      "after\n"
      "the sixth are ignored; the first column shows the code as it was understood.\n\n"
      "Example:\n"
      "  vrx condition CRIILL\n");
  command.SetAction([options] {
    RunCondition(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
