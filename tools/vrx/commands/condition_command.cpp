// vrx condition: what a measurement-condition code means.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/text/text.h>
#include <vrxmath/support/condition_text.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct ConditionOptions {
  std::vector<std::string> codes;
  Format format = Format::kTable;
};

// A code with a letter too few shifts all behind it: what was read otherwise than it was written is told.
void TellOfOtherLetters(const std::string& given, const std::string& understood) {
  constexpr std::size_t kLetters = 6;
  const auto isSame = [](char a, char b) { return LowerCase(a) == LowerCase(b); };
  if (given.size() <= kLetters && std::ranges::equal(given, understood, isSame)) return;
  PrintMessage(
      "warning: the code \"" + given + "\" was understood as " + understood.substr(0, kLetters) +
      ": letters without a meaning at their place stand for the default, and those after the sixth for "
      "nothing");
}

void RunCondition(const ConditionOptions& options) {
  OutputStream output;
  const auto rows = MakeRowWriter(options.format, output, {{"code"}, {"description"}});
  for (const std::string& given : options.codes) {
    CString code = CString::FromUtf8(given);
    const std::string description = ConditionText(code).ToUtf8();
    TellOfOtherLetters(given, code.ToUtf8());
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
