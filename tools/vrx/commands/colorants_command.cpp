// vrx colorants: the components of a colour system.

#include <algorithm>
#include <memory>
#include <string>

#include <vrxmath/colorant/component_names.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/output/color_system_file.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct ColorantsOptions {
  std::string system;
  Format format = Format::kTable;
};

// The largest K/S of the first level from 440 to 700 nm, by which a white is told; unset without one.
double LargestKs(const CComponent& component) {
  constexpr int32_t kFirst = 8;
  constexpr int32_t kLast = 34;
  if (component.GetLevels().IsEmpty()) return kUnset;
  const CColorantValues& curves = component.GetLevel(0).values[0];
  double largest = 0.0;
  for (int32_t i = kFirst; i <= kLast; ++i) {
    largest = std::max(largest, curves.absorption[i] / curves.scattering[i]);
  }
  return largest;
}

void AddRow(RowWriter& rows, const CComponent& component, int32_t model) {
  const CColorantLevelArray& levels = component.GetLevels();
  rows.Integer(component.GetId());
  rows.Text(component.GetName().ToUtf8());
  rows.Text(ComponentKindName(component.GetKind(), model).ToUtf8());
  rows.Integer(levels.GetSize());
  rows.Number(levels.IsEmpty() ? kUnset : levels[0].concentration);
  rows.Number(levels.IsEmpty() ? kUnset : levels[levels.GetSize() - 1].concentration);
  rows.Number(LargestKs(component));
  rows.Text(CColorant(component).IsWhite() ? "yes" : "no");
  rows.EndRow();
}

void RunColorants(const ColorantsOptions& options) {
  const ColorSystem system = ReadColorSystem(options.system);
  const int32_t model = system.data.opticalModel;
  OutputStream output;
  if (options.format == Format::kTable) {
    output.Append(Shortened(system.data.name.ToUtf8(), kLongestCell) + " (" +
                  OpticalModelName(model).ToUtf8() + ")\n\n");
  }
  const auto rows = MakeRowWriter(options.format, output,
                                  {{"id"},
                                   {"name"},
                                   {"kind"},
                                   {"levels"},
                                   {"lowest"},
                                   {"highest"},
                                   {"largest_ks", "largest K/S", 4},
                                   {"white"}});
  for (const CComponent* component : ComponentsInOrder(system)) AddRow(*rows, *component, model);
  rows->Finish();
  output.Finish();
}

}  // namespace

void AddColorants(Command& tool) {
  const auto options = std::make_shared<ColorantsOptions>();
  Command command = tool.AddCommand("colorants", "List the components of a colour system");
  command.AddOption("SYSTEM", options->system, "JSON file of a colour system").ReadsFile().Required();
  AddFormatOption(command, options->format);
  command.SetNotes(
      "For each component: its kind, how many levels it has, the lowest and highest concentration of these, "
      "the\n"
      "largest K/S of the first level from 440 to 700 nm, and whether it is a white, that is, whether this "
      "K/S\n"
      "is at most 0.1.\n\n"
      "Examples:\n"
      "  vrx colorants examples/acrylic_paints.json\n"
      "  vrx colorants system.json --format csv\n");
  command.SetAction([options] {
    RunColorants(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
