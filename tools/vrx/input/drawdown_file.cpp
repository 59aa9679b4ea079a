#include "tools/vrx/input/drawdown_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <vrxio/text/decimal.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/input/conditions.h"

namespace vrx::tool {
namespace {

constexpr std::string_view kSurface = "surface", kFormula = "formula";

// What stands before the name of a component in a heading.
enum class ColumnKind { kShare, kAmount, kBase };
struct ColumnPrefix {
  std::string_view text;
  ColumnKind kind;
};
constexpr std::array<ColumnPrefix, 4> kPrefixes = {{{"share:", ColumnKind::kShare},
                                                    {"amount:", ColumnKind::kAmount},
                                                    {"base:", ColumnKind::kBase},
                                                    {"resin:", ColumnKind::kBase}}};

const ColumnPrefix* PrefixOf(std::string_view heading) {
  for (const ColumnPrefix& prefix : kPrefixes) {
    if (heading.starts_with(prefix.text)) return &prefix;
  }
  return nullptr;
}

enum Surface : std::size_t { kOpaque, kBlackCard, kWhiteCard, kOverBlack, kOverWhite, kSurfaces };
constexpr std::array<std::string_view, kSurfaces> kSurfaceNames = {"opaque", "black card", "white card",
                                                                   "film over black", "film over white"};

bool IsDrawdownColumn(std::string_view heading) {
  return EqualsIgnoringCase(heading, kSurface) || PrefixOf(heading) != nullptr;
}

bool IsAdditionColumn(std::string_view heading) {
  return IsDrawdownColumn(heading) || EqualsIgnoringCase(heading, kFormula);
}

// The rows of one id, as they come.
struct Rows {
  std::string id;
  std::array<std::optional<CReflData>, kSurfaces> curves;
  std::array<bool, kSurfaces> isUsed{};
  CDoubleArray1 shares;
};

class Reader {
 public:
  Reader(const std::string& path, const CurveInputOptions& options, const TakenSpecular& taken,
         const DrawdownFile* known, const std::string& substrate)
      : curves_(OpenCurves(path, options, Content::kCurves, known ? IsAdditionColumn : IsDrawdownColumn)),
        taken_(taken),
        isClosed_(known != nullptr),
        isOnSubstrate_(!substrate.empty()) {
    file_.isOnSubstrate = isOnSubstrate_;
    if (known != nullptr) {
      file_.names = known->names;
      file_.isBase = known->isBase;
      file_.geometry = known->geometry;
    }
    const std::vector<std::string> headings = curves_.Source().ExtraHeadings();
    for (std::size_t i = 0; i < headings.size(); ++i) TakeHeading(headings[i], i);
    if (componentColumns_.empty() && !formulaColumn_) {
      throw InputError(path + ": there is no column \"share:NAME\" or \"amount:NAME\" of a component");
    }
    if (!componentColumns_.empty() && formulaColumn_) {
      curves_.Source().FailExtra(*formulaColumn_, "the components have columns of their own");
    }
    if (isOnSubstrate_) FindSubstrate(substrate);
  }

  DrawdownFile Read() {
    CurveRow row;
    while (curves_.Next(row)) Take(row);
    WarnAboutInput(curves_);
    for (Rows& rows : rows_) {
      if (rows.curves[kOpaque]) file_.drawdowns.Add(OpaqueOf(rows));
      if (HasFilm(rows)) file_.drawdowns.Add(FilmOf(rows));
    }
    for (const Rows& rows : rows_) {
      for (const Surface card : {kBlackCard, kWhiteCard}) {
        if (!rows.curves[card] || rows.isUsed[card]) continue;
        file_.unusedCards.push_back("\"" + rows.id + "\" " + std::string(kSurfaceNames[card]));
      }
    }
    return std::move(file_);
  }

 private:
  struct ComponentColumn {
    std::size_t extra;  // among the extras of a row
    std::size_t component;
  };

  // Parts have no unit without the amount of the substrate.
  void FindSubstrate(const std::string& substrate) {
    const auto isIt = [&](const std::string& name) { return EqualsIgnoringCase(name, substrate); };
    if (std::ranges::any_of(file_.names, isIt)) return;
    if (!file_.areShares) {
      throw InputError(curves_.Source().Name() + ": there is no column \"base:" + substrate +
                       "\" of the substrate, to which the amounts are relative");
    }
    file_.names.push_back(substrate);
    file_.isBase.push_back(true);
    hasImpliedSubstrate_ = true;
  }

  void TakeHeading(const std::string& heading, std::size_t extra) {
    const ColumnPrefix* const prefix = PrefixOf(heading);
    if (prefix == nullptr) {
      std::optional<std::size_t>& column =
          EqualsIgnoringCase(heading, kSurface) ? surfaceColumn_ : formulaColumn_;
      if (column) curves_.Source().FailExtra(extra, "the column appears twice");
      column = extra;
      return;
    }
    const bool isShare = prefix->kind == ColumnKind::kShare;
    if (!componentColumns_.empty() && isShare != file_.areShares) {
      curves_.Source().FailExtra(extra, "a file cannot have both shares and amounts");
    }
    file_.areShares = isShare;
    AddComponent(heading.substr(prefix->text.size()), prefix->kind == ColumnKind::kBase, extra);
  }

  void AddComponent(const std::string& name, bool isBase, std::size_t extra) {
    if (name.empty()) curves_.Source().FailExtra(extra, "the component has no name");
    const auto found = std::ranges::find(file_.names, name);
    const auto component = static_cast<std::size_t>(found - file_.names.begin());
    const auto isSame = [&](const ComponentColumn& column) { return column.component == component; };
    if (std::ranges::any_of(componentColumns_, isSame)) {
      curves_.Source().FailExtra(extra, "the column appears twice");
    }
    if (found == file_.names.end()) {
      if (isClosed_) curves_.Source().FailExtra(extra, "the calibration has no such component");
      file_.names.push_back(name);
      file_.isBase.push_back(isBase);
    }
    componentColumns_.push_back({extra, component});
  }

  void Take(const CurveRow& row) {
    RefuseOtherSpecular(curves_, row, taken_);
    file_.geometry.Add(curves_.Conditions(), row.geometry);
    const Surface surface = SurfaceOf(row);
    const auto [found, isNew] = places_.emplace(std::string(row.id), rows_.size());
    if (isNew) rows_.emplace_back().id = row.id;
    Rows& rows = rows_[found->second];
    if (rows.curves[surface]) {
      curves_.Source().FailRow("\"" + rows.id + "\" has a row \"" + std::string(kSurfaceNames[surface]) +
                               "\" already");
    }
    rows.curves[surface] = row.curve;
    if (surface != kBlackCard && surface != kWhiteCard) TakeShares(row, rows);
  }

  Surface SurfaceOf(const CurveRow& row) const {
    if (!surfaceColumn_) return kOpaque;
    for (std::size_t surface = 0; surface < kSurfaces; ++surface) {
      if (EqualsIgnoringCase(row.extras[*surfaceColumn_], kSurfaceNames[surface])) {
        return static_cast<Surface>(surface);
      }
    }
    curves_.Source().FailExtra(
        *surfaceColumn_,
        "unknown surface; expected opaque, black card, white card, film over black or film over white");
  }

  // Shares of percent or of 1 may be off by what weighing and rounding do.
  void TakeShares(const CurveRow& row, Rows& rows) {
    constexpr double kLargestError = 0.005;
    CDoubleArray1 shares;
    shares.SetSize(static_cast<int32_t>(file_.names.size()));
    std::fill(shares.begin(), shares.end(), 0.0);
    if (formulaColumn_) TakeFormula(row.extras[*formulaColumn_], shares);
    for (const ComponentColumn& column : componentColumns_) {
      double share = 0.0;
      const std::string& text = row.extras[column.extra];
      if (!text.empty() && (!ParseDecimal(text, ',', share) || share < 0.0)) {
        curves_.Source().FailExtra(column.extra, file_.areShares ? "a share must be a number of 0 or more"
                                                                 : "an amount must be 0 or more");
      }
      shares[static_cast<std::ptrdiff_t>(column.component)] = share;
    }
    double total = 0.0;
    for (const double share : shares) total += share;
    if (hasImpliedSubstrate_) shares[shares.GetSize() - 1] = total = 100.0;
    if (file_.areShares && !isOnSubstrate_ && std::fabs(total - 1.0) > kLargestError &&
        std::fabs(total - 100.0) > 100.0 * kLargestError) {
      curves_.Source().FailRow("the shares of \"" + rows.id + "\" add up to neither 100 (percent) nor 1");
    }
    if (!(total > 0.0)) curves_.Source().FailRow("there is nothing in \"" + rows.id + "\"");
    if (rows.shares.IsEmpty()) rows.shares = shares;
    if (!(rows.shares == shares))
      curves_.Source().FailRow("\"" + rows.id + "\" has other shares in another row");
  }

  // "1:94;carbon black:6": components by name or by number from 1, and amounts.
  void TakeFormula(std::string_view text, CDoubleArray1& shares) const {
    while (!text.empty()) {
      const std::string_view line = text.substr(0, text.find(';'));
      text.remove_prefix(std::min(line.size() + 1, text.size()));
      const std::size_t colon = line.rfind(':');
      double amount = 0.0;
      if (colon == std::string_view::npos || !ParseDecimal(line.substr(colon + 1), '.', amount) ||
          !(amount > 0.0)) {
        curves_.Source().FailExtra(*formulaColumn_, "expected a formula such as 1:94;7:1.5");
      }
      shares[static_cast<std::ptrdiff_t>(ComponentOf(line.substr(0, colon)))] += amount;
    }
  }

  std::size_t ComponentOf(std::string_view text) const {
    const auto isIt = [&](const std::string& name) { return EqualsIgnoringCase(name, text); };
    const auto found = std::ranges::find_if(file_.names, isIt);
    if (found != file_.names.end()) return static_cast<std::size_t>(found - file_.names.begin());
    double number = 0.0;
    const bool isNumber = ParseDecimal(text, '.', number) && number >= 1.0 && number == std::floor(number) &&
                          number <= static_cast<double>(file_.names.size());
    if (!isNumber) {
      curves_.Source().FailExtra(*formulaColumn_,
                                 "the calibration has no component \"" + std::string(text) + "\"");
    }
    return static_cast<std::size_t>(number) - 1;
  }

  static bool HasFilm(const Rows& rows) { return rows.curves[kOverBlack] || rows.curves[kOverWhite]; }

  CDrawdown OpaqueOf(const Rows& rows) const {
    CDrawdown drawdown;
    drawdown.id = CString::FromUtf8(rows.id);
    drawdown.shares = rows.shares;
    drawdown.opaque = *rows.curves[kOpaque];
    return drawdown;
  }

  CDrawdown FilmOf(Rows& rows) {
    CDrawdown drawdown;
    drawdown.id = CString::FromUtf8(rows.id);
    drawdown.shares = rows.shares;
    drawdown.isFilm = true;
    drawdown.overBlack = CurveOf(rows, kOverBlack);
    drawdown.overWhite = CurveOf(rows, kOverWhite);
    drawdown.black = CurveOf(rows, kBlackCard);
    drawdown.white = CurveOf(rows, kWhiteCard);
    return drawdown;
  }

  const CReflData& CurveOf(Rows& rows, Surface surface) {
    rows.isUsed[surface] = true;
    if (rows.curves[surface]) return *rows.curves[surface];
    if (surface == kBlackCard || surface == kWhiteCard) {
      const auto shared = places_.find("card");
      if (shared != places_.end() && rows_[shared->second].curves[surface]) {
        rows_[shared->second].isUsed[surface] = true;
        return *rows_[shared->second].curves[surface];
      }
    }
    throw InputError(curves_.Source().Name() + ": the film \"" + rows.id + "\" has no row \"" +
                     std::string(kSurfaceNames[surface]) + "\"");
  }

  CurveReader curves_;
  TakenSpecular taken_;
  DrawdownFile file_;
  bool isClosed_;  // no components but those of another file
  bool isOnSubstrate_;
  bool hasImpliedSubstrate_ = false;                          // the last component, 100 percent
  std::optional<std::size_t> surfaceColumn_, formulaColumn_;  // among the extras of a row
  std::vector<ComponentColumn> componentColumns_;
  std::vector<Rows> rows_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace

DrawdownFile ReadDrawdowns(const std::string& path, const CurveInputOptions& options,
                           const TakenSpecular& taken, const DrawdownFile* known,
                           const std::string& substrate) {
  return Reader(path, options, taken, known, substrate).Read();
}

}  // namespace vrx::tool
