#include "pictures/curves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include "pictures/texts.h"

namespace vrx::pictures {
namespace {

// The standard is a thick line. Up to four trials differ by colour and dashes; more are thin lines of one kind.
void Style(CDblPolyline& line, std::size_t trial, std::size_t trials) {
  constexpr std::size_t kToldApart = 4;
  const bool areMany = trials > kToldApart;
  line.paint = areMany || trial % 2 == 0 ? Role::kTrial : Role::kOther;
  line.width = areMany ? 0.7 : 1.4;
  line.dashed = !areMany && trial < 2;
}

double ValueAt(const std::vector<double>& values, std::size_t i) {
  return i < values.size() ? values[i] : kUnset;
}

std::size_t FirstTrial(const CurvesData& data) {
  return data.hasStandard ? 1 : 0;
}
std::size_t CountTrials(const CurvesData& data) {
  return data.curves.size() - std::min(data.curves.size(), FirstTrial(data));
}
std::size_t CountLines(const CurvesData& data) {
  return std::min(CountTrials(data), kMostTrialLines);
}

double WavelengthAt(const CurvesData& data, std::size_t i) {
  return data.first + data.step * static_cast<double>(i);
}

CString NameOf(const CString& own, ControlText usual) {
  return own.IsEmpty() ? ChartText(usual) : own;
}

// What all curves, also those without lines, need of an axis.
Interval Reach(const CurvesData& data, Interval reach, auto value) {
  for (std::size_t c = FirstTrial(data); c < data.curves.size(); ++c) {
    for (std::size_t i = 0; i < data.curves[c].size(); ++i) Widen(reach, value(c, i));
  }
  return reach;
}

// The area between two limits at each wavelength.
void DrawArea(Picture& picture, const Scale& scale, const CurvesData& data, std::size_t samples,
              auto reachAt) {
  std::vector<CDblPoint> outline, below;
  for (std::size_t i = 0; i < samples; ++i) {
    const Interval reach = reachAt(i);
    if (!(reach.lower <= reach.upper)) continue;
    const double x = scale.x0 + scale.perX * WavelengthAt(data, i);
    outline.push_back({x, scale.y0 + scale.perY * reach.upper});
    below.push_back({x, scale.y0 + scale.perY * reach.lower});
  }
  outline.insert(outline.end(), below.rbegin(), below.rend());
  picture.Polygon(outline, Role::kBand);
}

// The area between the lowest and the highest trial.
void DrawEnvelope(Picture& picture, const Scale& scale, const CurvesData& data) {
  std::size_t samples = 0;
  for (const auto& curve : data.curves) samples = std::max(samples, curve.size());
  DrawArea(picture, scale, data, samples, [&](std::size_t i) {
    Interval reach = kNoInterval;
    for (std::size_t c = FirstTrial(data); c < data.curves.size(); ++c)
      Widen(reach, ValueAt(data.curves[c], i));
    return reach;
  });
}

// The area that the data name themselves.
void DrawBand(Picture& picture, const Scale& scale, const CurvesData& data) {
  DrawArea(picture, scale, data, std::min(data.lower.size(), data.upper.size()), [&](std::size_t i) {
    Interval reach = kNoInterval;
    Widen(reach, data.lower[i]);
    Widen(reach, data.upper[i]);
    return reach;
  });
}

// An entry of the legend: a line and what it is.
struct KeyEntry {
  CString name;
  const CDblPolyline* line = nullptr;
};

std::vector<KeyEntry> KeyOf(const CurvesData& data, const std::vector<CDblPolyline>& lines) {
  std::vector<KeyEntry> entries;
  if (!data.hasStandard || lines.size() < 2) return entries;
  const CString trial = NameOf(data.trialName, ControlText::kTrial);
  const bool isCut = CountTrials(data) > kMostTrialLines && !data.manyTrialsName.IsEmpty();
  entries.push_back({NameOf(data.standardName, ControlText::kStandard), &lines.front()});
  entries.push_back({isCut ? data.manyTrialsName : trial, &lines[1]});
  return entries;
}

constexpr double kKeyLine = 26, kKeyGap = 6;  // of an entry, in 1/96 inch

double KeyWidth(const std::vector<KeyEntry>& entries, const Look& look) {
  double width = 0;
  for (const KeyEntry& entry : entries)
    width += (kKeyLine + 3 * kKeyGap) * look.scale + look.TextWidth(entry.name);
  return width;
}

// The legend, from `right` to the left, in the line of text whose top is `top`.
void DrawKey(Picture& picture, const std::vector<KeyEntry>& entries, double right, double top,
             const Look& look) {
  double x = right - KeyWidth(entries, look);
  for (const KeyEntry& entry : entries) {
    const double y = top + look.textHeight / 2, length = kKeyLine * look.scale;
    const double width = look.TextWidth(entry.name);
    picture.Line({x, y}, {x + length, y}, entry.line->paint, entry.line->width * look.scale,
                 entry.line->dashed);
    x += length + kKeyGap * look.scale;
    picture.Text({x, top, width + kKeyGap * look.scale, look.textHeight}, entry.name, Role::kText);
    x += width + 2 * kKeyGap * look.scale;
  }
}

}  // namespace

std::vector<CDblPolyline> CurveLines(const CurvesData& data) {
  std::vector<CDblPolyline> lines;
  const std::size_t first = FirstTrial(data), trials = CountLines(data);
  Interval reach = Reach(data, {0, 1}, [&](std::size_t c, std::size_t i) { return data.curves[c][i]; });
  for (const double value : data.upper) Widen(reach, value);
  for (std::size_t c = 0; c < std::min(data.curves.size(), first + trials); ++c) {
    CDblPolyline line;
    if (c < first)
      line.paint = Role::kStandard, line.width = 2;
    else
      Style(line, c - first, trials);
    line.name = c < first ? NameOf(data.standardName, ControlText::kStandard)
                          : NameOf(data.trialName, ControlText::kTrial);
    line.xHeading = ChartText(ControlText::kWavelength);
    line.yHeading = ChartText(ControlText::kReflectance);
    line.yRange = reach;
    for (std::size_t i = 0; i < data.curves[c].size(); ++i)
      line.Add({WavelengthAt(data, i), data.curves[c][i]});
    lines.push_back(std::move(line));
  }
  return lines;
}

std::vector<CDblPolyline> CurveDifferences(const CurvesData& data) {
  std::vector<CDblPolyline> lines;
  if (!data.hasStandard || data.curves.empty()) return lines;
  const auto difference = [&](std::size_t c, std::size_t i) {
    const double standard = ValueAt(data.curves[0], i), value = ValueAt(data.curves[c], i);
    return IsShown(standard) && IsShown(value) ? value - standard : kUnset;
  };
  // The same on both sides of zero.
  const Interval reach = Reach(data, {-0.1, 0.1}, difference);
  const double most = std::max(-reach.lower, reach.upper);
  for (std::size_t trial = 1; trial <= CountLines(data); ++trial) {
    CDblPolyline line;
    Style(line, trial - 1, CountLines(data));
    line.name = ChartText(ControlText::kDifference);
    line.xHeading = ChartText(ControlText::kWavelength);
    line.yHeading = ChartText(ControlText::kReflectanceDifference);
    line.yRange = {-most, most};
    for (std::size_t i = 0; i < data.curves[0].size(); ++i)
      line.Add({WavelengthAt(data, i), difference(trial, i)});
    lines.push_back(std::move(line));
  }
  return lines;
}

void DrawCurves(Picture& picture, Rect box, const CurvesData& data, const Look& look) {
  std::vector<CDblPolyline> lines = CurveLines(data);
  const std::vector<CDblPolyline> differences =
      data.withDifference ? CurveDifferences(data) : std::vector<CDblPolyline>();
  const std::vector<KeyEntry> key = KeyOf(data, lines);
  const double heading = lines.empty() ? 0 : look.TextWidth(lines[0].yHeading);
  // Where the legend has no room beside the heading it has a line of its own.
  PlotExtras extras;
  if (!key.empty() && KeyWidth(key, look) + heading + 8 * look.digitWidth > box.width)
    extras.above = look.textHeight;
  extras.hasX = differences.empty();
  extras.isFirstOnTop = true;
  const LevelLine zero{0, Role::kStandard, false};
  PlotExtras lower{.levels = {&zero, 1}, .isFirstOnTop = true, .ySteps = 4};
  extras.yLabels = lower.yLabels =
      std::max(LabelsOf(lines, look, extras), LabelsOf(differences, look, lower));
  const double height = differences.empty() ? box.height : std::floor(box.height * 0.62);
  const Rect above{box.left, box.top, box.width, height};
  Picture curves;
  const Rect area = DrawPolylines(curves, above, lines, look, extras);
  // The area of all trials lies behind their lines.
  if (CountTrials(data) > kMostTrialLines) DrawEnvelope(picture, curves.Scales()[0], data);
  if (!curves.Scales().empty()) DrawBand(picture, curves.Scales()[0], data);
  picture.Append(curves, 0);
  DrawKey(picture, key, area.Right(), area.top - 1.5 * look.textHeight - extras.above, look);
  if (differences.empty()) return;
  // The difference's targets go behind the curves'.
  Picture below;
  DrawPolylines(below, {box.left, box.top + height, box.width, box.height - height}, differences, look,
                lower);
  picture.Append(below, static_cast<int32_t>(lines.size()));
}

}  // namespace vrx::pictures
