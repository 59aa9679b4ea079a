#include "tools/vrx/input/dilutions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/text/decimal.h>

#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {
namespace {

// A dilution and what one part of it holds.
struct Dilution {
  std::string name;
  std::vector<std::pair<std::string, double>> parts;
};

// Reads the rows of a file; those of one dilution may stand anywhere, it counts from its first one on.
std::vector<Dilution> ReadDilutions(const std::string& path) {
  CsvReader csv(path);
  constexpr std::array<std::string_view, 3> kColumns = {"component", "of", "amount"};
  const std::vector<std::string>& header = csv.Header();
  const bool isTable = std::ranges::equal(header, kColumns, EqualsIgnoringCase);
  if (!isTable) csv.FailRow("expected the columns component, of and amount");
  std::vector<Dilution> dilutions;
  while (csv.Next()) {
    const std::string name(csv.Text()), of(csv.Text()), text(csv.Text());
    csv.EndRecord();
    double amount = 0.0;
    if (name.empty() || of.empty()) csv.FailRow("a component has no name");
    if (EqualsIgnoringCase(name, of)) csv.FailRow("\"" + name + "\" cannot be a dilution of itself");
    if (!ParseDecimal(text, ',', amount) || !(amount > 0.0 && amount <= 1.0)) {
      csv.FailAt(2, "the amount in a dilution must be a number above 0 and up to 1");
    }
    const auto isIt = [&](const Dilution& dilution) { return EqualsIgnoringCase(dilution.name, name); };
    auto found = std::ranges::find_if(dilutions, isIt);
    if (found == dilutions.end()) found = dilutions.insert(found, {name, {}});
    found->parts.emplace_back(of, amount);
  }
  return dilutions;
}

class Expansion {
 public:
  Expansion(const std::string& path, DrawdownFile& file) : path_(path), file_(file) {}

  void Expand(const Dilution& dilution) {
    const std::size_t column = ColumnOf(dilution.name);
    if (column == file_.names.size()) Fail("no drawdown has a component \"" + dilution.name + "\"");
    std::vector<std::pair<std::size_t, double>> parts;
    double rest = 1.0;
    for (const auto& [of, amount] : dilution.parts) {
      rest -= amount;
      parts.emplace_back(ColumnOrNew(of), amount);
    }
    constexpr double kRounding = 1e-9;
    if (rest < -kRounding) Fail("the parts of \"" + dilution.name + "\" add up to more than one");
    if (rest > kRounding) parts.emplace_back(BaseOf(dilution.name), rest);
    for (CDrawdown& drawdown : file_.drawdowns) {
      const double amount = drawdown.shares[Index(column)];
      for (const auto& [component, part] : parts) drawdown.shares[Index(component)] += amount * part;
      drawdown.shares.RemoveAt(static_cast<int32_t>(column));
    }
    file_.names.erase(file_.names.begin() + Index(column));
    file_.isBase.erase(file_.isBase.begin() + Index(column));
  }

 private:
  static std::ptrdiff_t Index(std::size_t component) { return static_cast<std::ptrdiff_t>(component); }

  std::size_t ColumnOf(const std::string& name) const {
    const auto isIt = [&](const std::string& own) { return EqualsIgnoringCase(own, name); };
    return static_cast<std::size_t>(std::ranges::find_if(file_.names, isIt) - file_.names.begin());
  }

  // What is used only diluted has no column of its own.
  std::size_t ColumnOrNew(const std::string& name) {
    const std::size_t column = ColumnOf(name);
    if (column < file_.names.size()) return column;
    file_.names.push_back(name);
    file_.isBase.push_back(false);
    for (CDrawdown& drawdown : file_.drawdowns) drawdown.shares.Add(0.0);
    return column;
  }

  std::size_t BaseOf(const std::string& dilution) const {
    if (std::ranges::count(file_.isBase, true) != 1) {
      Fail("the parts of \"" + dilution +
           "\" add up to less than one, and there is no single base for the rest");
    }
    return static_cast<std::size_t>(std::ranges::find(file_.isBase, true) - file_.isBase.begin());
  }

  [[noreturn]] void Fail(const std::string& what) const { throw InputError(path_ + ": " + what); }

  const std::string& path_;
  DrawdownFile& file_;
};

}  // namespace

void ExpandDilutions(const std::string& path, DrawdownFile& file) {
  std::vector<Dilution> dilutions = ReadDilutions(path);
  // What dilutes another one is taken apart after it.
  for (; !dilutions.empty(); dilutions.pop_back()) Expansion(path, file).Expand(dilutions.back());
}

}  // namespace vrx::tool
