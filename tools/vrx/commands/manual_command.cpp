// vrx manual: the manual page, the completions of bash, or the page of all options.

#include <memory>
#include <string>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

enum class Document { kMan, kBash, kMarkdown };

std::string TextOf(Document document, const Command& tool) {
  if (document == Document::kBash) return BashCompletions(tool);
  return document == Document::kMan ? ManualPage(tool) : OptionsPage(tool);
}

}  // namespace

void AddManual(Command& tool) {
  const auto document = std::make_shared<Document>(Document::kMan);
  Command command =
      tool.AddCommand("manual", "Print the manual page, completions for bash, or a page of all options");
  command.AddChoice("DOCUMENT", *document, {"man", "bash", "markdown"},
                    "man: the manual page; bash: completions; markdown: the options of every command");
  command.SetNotes(
      "All of these are made from the commands themselves. The manual page and the completions are installed "
      "with\n"
      "the tool.\n\n"
      "Examples:\n"
      "  vrx manual > vrx.1\n"
      "  source <(vrx manual bash)\n");
  command.SetAction([document, tool] {
    OutputStream output;
    output.Append(TextOf(*document, tool));
    output.Finish();
    return kExitPass;
  });
}

}  // namespace vrx::tool
