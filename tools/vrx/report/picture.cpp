
#include "tools/vrx/report/picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <vrxmath/foundation/numbers.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/input/conditions.h"
#include "tools/vrx/output/file_output.h"
#include "tools/vrx/report/png_picture.h"

namespace vrx::tool {
namespace {

constexpr std::string_view kInkNames[] = {"paper", "text",    "muted", "grid",   "standard", "trial",
                                          "pass",  "warning", "fail",  "inside", "band"};
// Dark enough on white for text (a contrast of 4.5 or more), apart from grid and areas.
constexpr DisplayRgb kLightInks[] = {{255, 255, 255}, {27, 31, 36},    {87, 96, 106},  {208, 215, 222},
                                     {27, 31, 36},    {17, 99, 193},   {26, 127, 55},  {143, 89, 2},
                                     {180, 35, 24},   {226, 240, 229}, {251, 239, 208}};

// With one decimal at most.
std::string Number(double value) {
  const double tenths = std::round(std::clamp(value, -1e6, 1e6) * 10) + 0.0;  // no "-0"
  char text[16];
  char* end = std::to_chars(text, text + sizeof text, static_cast<int32_t>(tenths / 10)).ptr;
  const int32_t decimal = std::abs(static_cast<int32_t>(tenths)) % 10;
  std::string number(tenths < 0 && tenths > -10 ? "-" : "");
  number.append(text, end);
  if (decimal != 0) number.append(".").append(1, static_cast<char>('0' + decimal));
  return number;
}

std::string Attribute(const char* name, double value) {
  return std::string(" ") + name + "=\"" + Number(value) + "\"";
}

// Text stays text, so that it can be searched and read aloud.
class SvgPicture final : public Picture {
 public:
  SvgPicture(std::string opening, bool inPage) : svg_(std::move(opening)), inPage_(inPage) {}

  void Rectangle(double x, double y, double width, double height, Paint fill) override {
    svg_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) +
            Attribute("height", height) + Filled(fill) + "/>\n";
  }
  void Text(double x, double y, std::string_view text, int32_t size, Paint paint, Anchor anchor) override {
    static constexpr const char* kAnchors[] = {"", " text-anchor=\"middle\"", " text-anchor=\"end\""};
    svg_ += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("font-size", size) +
            kAnchors[static_cast<std::size_t>(anchor)] + Filled(paint) + ">" + Escaped(text) + "</text>\n";
  }
  void Line(std::span<const PlanePoint> points, Paint paint, Stroke stroke) override {
    svg_ += "<polyline points=\"" + Points(points) + "\"" + Stroked(paint, stroke) + "/>\n";
  }
  void Area(std::span<const PlanePoint> outline, Paint fill) override {
    svg_ += "<polygon points=\"" + Points(outline) + "\"" + Filled(fill) + "/>\n";
  }
  void Marks(std::span<const PlanePoint> points, Mark mark, Paint paint) override {
    if (points.empty()) return;
    static constexpr const char* kShapes[] = {"h0", "h0", "m0-3.5l3.5 6h-7z", "m-3-3l6 6m-6 0l6-6",
                                              "m-6 0h12"};
    svg_ += "<path d=\"";
    for (const PlanePoint& point : points) {
      svg_ += "M" + Number(point.x) + " " + Number(point.y) + kShapes[static_cast<std::size_t>(mark)];
    }
    const bool isRound = mark == Mark::kDot || mark == Mark::kPoint;
    const double width = isRound ? 2 * RadiusOf(mark) : 1.6;
    svg_ += "\"" + (mark == Mark::kTriangle ? Filled(paint) : Stroked(paint, {width, Dash::kSolid})) +
            (isRound ? " stroke-linecap=\"round\"/>\n" : "/>\n");
  }
  std::string Encode() override { return svg_ + "</svg>\n"; }

 private:
  std::string Coloured(const char* attribute, char shortName, Paint paint) const {
    if (inPage_ && !paint.IsFixed()) {
      return std::string(" class=\"") + shortName + "-" +
             std::string(kInkNames[static_cast<std::size_t>(paint.GetInk())]) + "\"";
    }
    return std::string(" ") + attribute + "=\"" + HexColour(paint.Colour()) + "\"";
  }
  std::string Filled(Paint paint) const { return Coloured("fill", 'f', paint); }
  std::string Stroked(Paint paint, Stroke stroke) const {
    static constexpr const char* kDashes[] = {"", " stroke-dasharray=\"6 4\"", " stroke-dasharray=\"1.5 3\"",
                                              " stroke-dasharray=\"8 3 2 3\""};
    return " fill=\"none\"" + Coloured("stroke", 's', paint) + Attribute("stroke-width", stroke.width) +
           kDashes[static_cast<std::size_t>(stroke.dash)];
  }
  static std::string Points(std::span<const PlanePoint> points) {
    std::string text;
    for (const PlanePoint& point : points) {
      if (!text.empty()) text += ' ';
      text += Number(point.x) + "," + Number(point.y);
    }
    return text;
  }

  std::string svg_;
  bool inPage_;
};

}  // namespace

double RadiusOf(Mark mark) {
  return mark == Mark::kPoint ? 1.7 : 3;
}

std::string HexColour(DisplayRgb colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", static_cast<unsigned>(colour.red) & 0xff,
                static_cast<unsigned>(colour.green) & 0xff, static_cast<unsigned>(colour.blue) & 0xff);
  return text;
}

DisplayRgb Paint::Colour() const {
  return isFixed_ ? colour_ : kLightInks[static_cast<std::size_t>(ink_)];
}

PictureFormat PictureFormatOf(std::string_view path) {
  const std::string_view end = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
  if (EqualsIgnoringCase(end, ".png")) return PictureFormat::kPng;
  if (EqualsIgnoringCase(end, ".svg")) return PictureFormat::kSvg;
  throw InputError(std::string(path) + ": the name of a picture ends in .png or .svg");
}

std::unique_ptr<Picture> MakePicture(PictureFormat format, int32_t width, int32_t height, Paint background,
                                     double scale) {
  if (format == PictureFormat::kPng) return MakePngPicture(width, height, background, scale);
  std::string opening =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"" +
      Attribute("width", width * scale) + Attribute("height", height * scale);
  if (scale != 1) opening += " viewBox=\"0 0 " + Number(width) + " " + Number(height) + "\"";
  opening += " font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\">\n";
  auto picture = std::make_unique<SvgPicture>(std::move(opening), false);
  picture->Rectangle(0, 0, width, height, background);
  return picture;
}

std::unique_ptr<Picture> MakeInlinePicture(int32_t width, int32_t height, std::string_view label) {
  return std::make_unique<SvgPicture>("<svg role=\"img\" aria-label=\"" + Escaped(label) +
                                          "\" viewBox=\"0 0 " + Number(width) + " " + Number(height) + "\"" +
                                          Attribute("width", width) + ">\n",
                                      true);
}

void SavePicture(Picture& picture, const std::string& path) {
  ReplaceFile(path, picture.Encode());
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : ShownText(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace vrx::tool
