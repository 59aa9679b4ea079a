// vrx manual: the manual page, or the completions of bash.

#include <memory>
#include <string>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

enum class Document { kMan, kBash };

}  // namespace

void AddManual(Command& tool) {
  const auto document = std::make_shared<Document>(Document::kMan);
  Command command = tool.AddCommand("manual", "Print the manual page, or completions for bash");
  command.AddChoice("DOCUMENT", *document, {"man", "bash"},
                    "man: the page as man reads it; bash: completions");
  command.SetNotes(
      "Both are made from the commands as they are and are installed with the tool.\n\n"
      "Examples:\n"
      "  vrx manual > vrx.1\n"
      "  source <(vrx manual bash)\n");
  command.SetAction([document, tool] {
    OutputStream output;
    output.Append(*document == Document::kMan ? ManualPage(tool) : BashCompletions(tool));
    output.Finish();
    return kExitPass;
  });
}

}  // namespace vrx::tool
