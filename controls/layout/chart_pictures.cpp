#include "controls/layout/chart_pictures.h"

#include <algorithm>
#include <cmath>

#include <vrxmath/foundation/numbers.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/support/number_text.h>

namespace vrx::controls {
namespace {

// The standard is a thick line, trials differ by colour and then by dashes.
void Style(CDblPolyline& line, std::size_t index) {
  line.paint = index == 0 ? Role::kStandard : index % 2 == 1 ? Role::kTrial : Role::kOther;
  line.width = index == 0 ? 2 : 1;
  line.dashed = index > 2;
}

CString Text(ControlText number) {
  return CString::Load(kStringControl + static_cast<uint32_t>(number));
}

double ValueAt(const std::vector<double>& values, std::size_t i) {
  return i < values.size() ? values[i] : kUnset;
}

}  // namespace

std::vector<CDblPolyline> CurveLines(const CurvesData& data) {
  std::vector<CDblPolyline> lines;
  for (const std::vector<double>& curve : data.curves) {
    CDblPolyline line;
    Style(line, lines.size());
    line.name = Text(lines.empty() ? ControlText::kStandard : ControlText::kTrial);
    line.xHeading = Text(ControlText::kWavelength);
    line.yHeading = Text(ControlText::kReflectance);
    line.yRange = {0, 1};
    for (std::size_t i = 0; i < curve.size(); ++i) {
      line.Add({data.first + data.step * static_cast<double>(i), curve[i]});
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

std::vector<CDblPolyline> CurveDifferences(const CurvesData& data) {
  std::vector<CDblPolyline> lines;
  for (std::size_t trial = 1; trial < data.curves.size(); ++trial) {
    CDblPolyline line;
    Style(line, trial);
    line.name = Text(ControlText::kDifference);
    line.xHeading = Text(ControlText::kWavelength);
    line.yHeading = line.name;
    line.yRange = {-0.5, 0.5};
    for (std::size_t i = 0; i < data.curves[0].size(); ++i) {
      const double standard = data.curves[0][i], value = ValueAt(data.curves[trial], i);
      const bool isBoth = IsShown(standard) && IsShown(value);
      line.Add({data.first + data.step * static_cast<double>(i), isBoth ? value - standard : kUnset});
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

void DrawCurves(Picture& picture, Rect box, const CurvesData& data, const Look& look) {
  const std::vector<CDblPolyline> lines = CurveLines(data);
  const std::vector<CDblPolyline> differences =
      data.withDifference ? CurveDifferences(data) : std::vector<CDblPolyline>();
  if (differences.empty()) return DrawPolylines(picture, box, lines, look);
  const double upper = std::floor(box.height * 0.62);
  DrawPolylines(picture, {box.left, box.top, box.width, upper}, lines, look, {}, false);
  // The difference's targets go behind the curves'.
  Picture below;
  const LevelLine zero{0, Role::kStandard, false};
  DrawPolylines(below, {box.left, box.top + upper, box.width, box.height - upper}, differences, look,
                {&zero, 1});
  picture.Append(below, static_cast<int32_t>(lines.size()));
}

std::vector<CDblPolyline> AngleLines(const AnglesData& data) {
  std::vector<CDblPolyline> lines;
  for (const std::vector<double>& values : data.series) {
    CDblPolyline line;
    Style(line, lines.size() + 1);
    line.marked = true;
    line.name = data.heading;
    line.xHeading = Text(ControlText::kAngle);
    line.yHeading = data.heading;
    line.yRange = {0, 1e-3};
    for (std::size_t i = 0; i < data.angles.size(); ++i) {
      const double value = ValueAt(values, i), limit = ValueAt(data.limits, i);
      line.Add({data.angles[i], value});
      if (!data.limits.empty()) line.verdicts.Add(GradeTotal(value, limit, data.warningFactor));
    }
    lines.push_back(std::move(line));
  }
  const auto addLimit = [&](double factor, Role role, bool dashed) {
    CDblPolyline line;
    line.paint = role;
    line.dashed = dashed;
    line.name = Text(ControlText::kLimit);
    for (std::size_t i = 0; i < std::min(data.angles.size(), data.limits.size()); ++i) {
      line.Add({data.angles[i], IsShown(data.limits[i]) ? data.limits[i] * factor : kUnset});
    }
    lines.push_back(std::move(line));
  };
  if (data.limits.empty()) return lines;
  addLimit(1, Role::kFail, false);
  if (data.warningFactor != 1) addLimit(data.warningFactor, Role::kWarning, true);
  return lines;
}

CDblPolyline TrendLine(const TrendData& data) {
  CDblPolyline line;
  line.paint = Role::kFrame;
  line.marked = true;
  line.name = data.heading;
  line.yHeading = data.heading;
  line.yRange = {0, 1e-3};
  for (const double total : data.totals) {
    line.Add({static_cast<double>(line.GetSize() + 1), total});
    if (IsShown(data.limit)) line.verdicts.Add(GradeTotal(total, data.limit, data.warningFactor));
  }
  return line;
}

std::vector<LevelLine> TrendLevels(const TrendData& data) {
  std::vector<LevelLine> levels;
  if (!IsShown(data.limit)) return levels;
  levels.push_back({data.limit, Role::kFail, false});
  if (data.warningFactor != 1) levels.push_back({data.limit * data.warningFactor, Role::kWarning, true});
  return levels;
}

double PartDone(const ProgressData& data) {
  if (!(data.upper > data.lower)) return 0;
  const double part = (data.position - data.lower) / (data.upper - data.lower);
  return std::isfinite(part) ? std::clamp(part, 0.0, 1.0) : 0;
}

CString ProgressText(const ProgressData& data) {
  CValueRange whole;
  whole.decimals = 0;
  CString text = data.text;
  if (text.IsEmpty()) {
    text = NumberText(std::floor(PartDone(data) * 100), whole);
    text += u" %";
  }
  // Beyond a month nobody believes it.
  if (!(data.secondsLeft >= 0 && data.secondsLeft < 31 * 86400.0)) return text;
  const auto seconds = static_cast<int64_t>(std::ceil(data.secondsLeft));
  const auto twoDigits = [](int64_t value) {
    const WideChar digits[] = {static_cast<WideChar>(u'0' + value / 10),
                               static_cast<WideChar>(u'0' + value % 10)};
    return CString(WideView(digits, 2));
  };
  CString time;
  if (seconds >= 3600) {
    const int64_t hours = seconds / 3600;
    time = NumberText(static_cast<double>(hours), whole);
    time += u":";
    time += twoDigits(seconds / 60 % 60);
  } else {
    const int64_t minutes = seconds / 60;
    time = NumberText(static_cast<double>(minutes), whole);
  }
  time += u":";
  time += twoDigits(seconds % 60);
  text += u"  ";
  text += FillPattern(Text(ControlText::kTimeLeft), {time});
  return text;
}

void DrawProgress(Picture& picture, Rect box, const ProgressData& data, const Look& look) {
  const Paint bar = data.verdict < kFail || data.verdict > kPass
                        ? Paint(Role::kSelection)
                        : PaintOf(static_cast<Verdict>(data.verdict));
  picture.Rectangle(box, Role::kPaper);
  const double done = std::floor(box.width * PartDone(data) + 0.5);
  picture.Rectangle({box.left, box.top, done, box.height}, bar);
  picture.Frame(box, Role::kFrame);
  const CString text = ProgressText(data);
  const double width = std::min(look.TextWidth(text) * 1.2 + 4 * look.scale, box.width);
  const Rect place{box.left + (box.width - width) / 2, box.top + 2 * look.scale, width,
                   box.height - 4 * look.scale};
  // On a plate of its own the text is read on any bar.
  picture.Rectangle({place.left, box.Centre().y - look.textHeight / 2, width, look.textHeight}, Role::kPaper);
  picture.Text(place, text, Role::kText, Align::kMiddle);
}

Rect PicturePlace(Rect box, double width, double height, PictureMode mode) {
  if (mode == PictureMode::kStretch || !(width > 0) || !(height > 0)) return box;
  const double scale = mode == PictureMode::kFit ? std::min(box.width / width, box.height / height) : 1.0;
  const double w = std::floor(width * scale + 0.5), h = std::floor(height * scale + 0.5);
  return {box.left + std::floor((box.width - w) / 2), box.top + std::floor((box.height - h) / 2), w, h};
}

}  // namespace vrx::controls
