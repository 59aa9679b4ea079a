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

constexpr std::string_view kSharePrefix = "share:";
constexpr std::string_view kSurface = "surface";

enum Surface : std::size_t { kOpaque, kBlackCard, kWhiteCard, kOverBlack, kOverWhite, kSurfaces };
constexpr std::array<std::string_view, kSurfaces> kSurfaceNames = {"opaque", "black card", "white card",
                                                                   "film over black", "film over white"};

bool IsDrawdownColumn(std::string_view heading) {
  return EqualsIgnoringCase(heading, kSurface) || heading.starts_with(kSharePrefix);
}

// The rows of one id, as they come.
struct Rows {
  std::string id;
  std::array<std::optional<CReflData>, kSurfaces> curves;
  CDoubleArray1 shares;
};

class Reader {
 public:
  Reader(const std::string& path, const CurveInputOptions& options)
      : curves_(OpenCurves(path, options, Content::kCurves, IsDrawdownColumn)) {
    const std::vector<std::string> headings = curves_.Source().ExtraHeadings();
    for (std::size_t i = 0; i < headings.size(); ++i) {
      const std::string& heading = headings[i];
      if (!heading.starts_with(kSharePrefix)) {
        if (surfaceColumn_) curves_.Source().FailExtra(i, "there are two such columns");
        surfaceColumn_ = i;
      } else {
        AddComponent(heading.substr(kSharePrefix.size()), i);
      }
    }
    if (shareColumns_.empty()) throw InputError(path + ": there is no column \"share:NAME\" of a component");
  }

  DrawdownFile Read() {
    CurveRow row;
    while (curves_.Next(row)) Take(row);
    WarnAboutInput(curves_);
    for (const Rows& rows : rows_) {
      if (rows.curves[kOpaque]) file_.drawdowns.Add(OpaqueOf(rows));
      if (HasFilm(rows)) file_.drawdowns.Add(FilmOf(rows));
    }
    return std::move(file_);
  }

 private:
  void AddComponent(const std::string& name, std::size_t extra) {
    if (name.empty()) curves_.Source().FailExtra(extra, "the component has no name");
    if (std::ranges::find(file_.names, name) != file_.names.end()) {
      curves_.Source().FailExtra(extra, "there are two such columns");
    }
    file_.names.push_back(name);
    shareColumns_.push_back(extra);
  }

  void Take(const CurveRow& row) {
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
        "the surface is none of opaque, black card, white card, film over black and film over white");
  }

  // Shares of percent or of 1; they may be off by what weighing and rounding do.
  void TakeShares(const CurveRow& row, Rows& rows) {
    constexpr double kLargestError = 0.005;
    CDoubleArray1 shares;
    double total = 0.0;
    for (const std::size_t column : shareColumns_) {
      double share = 0.0;
      const std::string& text = row.extras[column];
      if (!text.empty() && (!ParseDecimal(text, ',', share) || share < 0.0)) {
        curves_.Source().FailExtra(column, "a share is a number, 0 or more");
      }
      total += share;
      shares.Add(share);
    }
    if (std::fabs(total - 1.0) > kLargestError && std::fabs(total - 100.0) > 100.0 * kLargestError) {
      curves_.Source().FailRow("the shares of \"" + rows.id + "\" add up to neither 100 (percent) nor 1");
    }
    if (rows.shares.IsEmpty()) rows.shares = shares;
    if (!(rows.shares == shares))
      curves_.Source().FailRow("\"" + rows.id + "\" has other shares in another row");
  }

  static bool HasFilm(const Rows& rows) { return rows.curves[kOverBlack] || rows.curves[kOverWhite]; }

  CDrawdown OpaqueOf(const Rows& rows) const {
    CDrawdown drawdown;
    drawdown.id = CString::FromUtf8(rows.id);
    drawdown.shares = rows.shares;
    drawdown.opaque = *rows.curves[kOpaque];
    return drawdown;
  }

  CDrawdown FilmOf(const Rows& rows) const {
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

  const CReflData& CurveOf(const Rows& rows, Surface surface) const {
    if (rows.curves[surface]) return *rows.curves[surface];
    if (surface == kBlackCard || surface == kWhiteCard) {
      const auto shared = places_.find("card");
      if (shared != places_.end() && rows_[shared->second].curves[surface]) {
        return *rows_[shared->second].curves[surface];
      }
    }
    throw InputError(curves_.Source().Name() + ": the film \"" + rows.id + "\" has no row \"" +
                     std::string(kSurfaceNames[surface]) + "\"");
  }

  CurveReader curves_;
  DrawdownFile file_;
  std::optional<std::size_t> surfaceColumn_;  // both among the extras of a row
  std::vector<std::size_t> shareColumns_;
  std::vector<Rows> rows_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace

DrawdownFile ReadDrawdowns(const std::string& path, const CurveInputOptions& options) {
  return Reader(path, options).Read();
}

}  // namespace vrx::tool
