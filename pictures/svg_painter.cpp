#include "pictures/svg_painter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace vrx::pictures {
namespace {

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

std::string Points(const std::vector<CDblPoint>& points) {
  std::string text;
  for (const CDblPoint& point : points) {
    if (!text.empty()) text += ' ';
    text += Number(point.x) + "," + Number(point.y);
  }
  return text;
}

class SvgWriter {
 public:
  // `palette`: null in a page, whose style sheet has the colours.
  explicit SvgWriter(const Palette* palette) : palette_(palette) {}

  void Add(const Shape& shape) {
    switch (shape.kind) {
      case Shape::Kind::kRectangle:
        shape.stroke ? AddFrame(shape) : AddRectangle(shape);
        break;
      case Shape::Kind::kLine:
        svg_ += "<polyline points=\"" + Points(shape.points) + "\"" + Stroked(shape) + "/>\n";
        break;
      case Shape::Kind::kPolygon:
        svg_ += "<polygon points=\"" + Points(shape.points) + "\"" + Filled(shape) + "/>\n";
        break;
      case Shape::Kind::kEllipse:
        svg_ += "<ellipse" + Attribute("cx", shape.box.Centre().x) + Attribute("cy", shape.box.Centre().y) +
                Attribute("rx", shape.box.width / 2) + Attribute("ry", shape.box.height / 2) +
                (shape.fill ? Filled(shape) : "") + (shape.stroke ? Stroked(shape) : "") + "/>\n";
        break;
      case Shape::Kind::kText:
        AddText(shape);
        break;
      case Shape::Kind::kMarks:
        AddMarks(shape);
        break;
    }
  }
  [[nodiscard]] const std::string& Svg() const { return svg_; }

 private:
  void AddRectangle(const Shape& shape) {
    svg_ += "<rect" + Attribute("x", shape.box.left) + Attribute("y", shape.box.top) +
            Attribute("width", shape.box.width) + Attribute("height", shape.box.height) + Filled(shape) +
            "/>\n";
  }
  // Its line lies within the box.
  void AddFrame(const Shape& shape) {
    const Rect box = shape.box.Inset(shape.strokeWidth / 2);
    svg_ += "<path d=\"M" + Number(box.left) + " " + Number(box.top) + "h" + Number(box.width) + "v" +
            Number(box.height) + "h" + Number(-box.width) + "z\"" + Stroked(shape) + "/>\n";
  }
  void AddText(const Shape& shape) {
    static constexpr const char* kAnchors[] = {"", " text-anchor=\"middle\"", " text-anchor=\"end\""};
    const double size = shape.fontSize > 0 ? shape.fontSize : kFontSize;
    const double x = shape.align == Align::kStart    ? shape.box.left
                     : shape.align == Align::kMiddle ? shape.box.Centre().x
                                                     : shape.box.Right();
    if (shape.plate) AddPlate(shape, x, size);
    svg_ += "<text" + Attribute("x", x) + Attribute("y", BaselineOf(shape)) + Attribute("font-size", size) +
            kAnchors[static_cast<std::size_t>(shape.align)] + Filled(shape) + ">" +
            EscapedForXml(shape.text.ToUtf8()) + "</text>\n";
  }
  // Nobody measures letters here: 0.6 of the font's size is what they take on average.
  void AddPlate(const Shape& text, double x, double size) {
    const double width = 0.6 * size * static_cast<double>(text.text.GetLength()) + 4;
    const double left = text.align == Align::kStart    ? x - 2
                        : text.align == Align::kMiddle ? x - width / 2
                                                       : x - width + 2;
    Shape plate;
    plate.box = {left, text.box.Centre().y - 0.7 * size, width, 1.4 * size};
    plate.fill = text.plate;
    AddRectangle(plate);
  }
  // One path for all: ten thousand marks are short.
  void AddMarks(const Shape& shape) {
    const double r = shape.radius;
    const std::string one = OneMark(shape.mark, r);
    svg_ += "<path d=\"";
    for (const CDblPoint& point : shape.points) svg_ += "M" + Number(point.x) + " " + Number(point.y) + one;
    svg_ += "\"";
    if (shape.mark == Mark::kTriangle) {
      svg_ += Filled(shape) + "/>\n";
      return;
    }
    const bool isDot = shape.mark == Mark::kDot;
    const double width = isDot                        ? 2 * r
                         : shape.mark == Mark::kCross ? r / 2
                         : shape.mark == Mark::kTick  ? r / 4
                                                      : 1;
    Shape stroke;
    stroke.stroke = shape.fill;
    stroke.strokeWidth = width;
    stroke.strength = shape.strength;
    svg_ += Stroked(stroke) + (isDot ? " stroke-linecap=\"round\"/>\n" : "/>\n");
  }
  // The path of a mark about the place where it begins.
  static std::string OneMark(Mark mark, double r) {
    const std::string one = Number(r), two = Number(2 * r), minus = Number(-r), minusTwo = Number(-2 * r);
    switch (mark) {
      case Mark::kDot:
        return "h0";
      case Mark::kTriangle:
        return "m0" + minus + "l" + one + " " + two + "h" + minusTwo + "z";
      case Mark::kCross:
        return "m" + minus + minus + "l" + two + " " + two + "m" + minusTwo + " 0l" + two + minusTwo;
      case Mark::kPlus:
        return "m" + minus + " 0h" + two + "m" + minus + minus + "v" + two;
      case Mark::kTick:
        return "m" + minus + " 0h" + two;
    }
    return {};
  }

  std::string Coloured(const char* attribute, char shortName, Paint paint) const {
    if (palette_ == nullptr && !paint.IsFixed())
      return std::string(" class=\"") + shortName + "-" + std::string(RoleName(paint.GetRole())) + "\"";
    const uint32_t color = paint.IsFixed() ? paint.FixedColor() : ColorOf(paint, *palette_);
    return std::string(" ") + attribute + "=\"" + HexColor(color) + "\"";
  }
  static std::string Strength(const char* attribute, double strength) {
    if (strength >= 1) return {};
    char text[8];
    std::snprintf(text, sizeof text, "%.2f", strength);
    return std::string(" ") + attribute + "=\"" + text + "\"";
  }
  std::string Filled(const Shape& shape) const {
    return Coloured("fill", 'f', *shape.fill) + Strength("fill-opacity", shape.strength);
  }
  std::string Stroked(const Shape& shape) const {
    return std::string(shape.fill ? "" : " fill=\"none\"") + Coloured("stroke", 's', *shape.stroke) +
           Attribute("stroke-width", shape.strokeWidth) + Strength("stroke-opacity", shape.strength) +
           (shape.dashed ? " stroke-dasharray=\"6 4\"" : "");
  }

  const Palette* palette_;
  std::string svg_;
};

}  // namespace

std::string PaintSvg(const Picture& picture, const PaperSize& size) {
  const Palette palette = PaperPalette();
  SvgWriter writer(&palette);
  Picture ground;
  ground.Rectangle({0, 0, static_cast<double>(size.width), static_cast<double>(size.height)},
                   size.background);
  writer.Add(ground.Shapes()[0]);
  for (const Shape& shape : picture.Shapes()) writer.Add(shape);
  std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"" +
                    Attribute("width", size.width * size.scale) +
                    Attribute("height", size.height * size.scale);
  if (size.scale != 1) svg += " viewBox=\"0 0 " + Number(size.width) + " " + Number(size.height) + "\"";
  svg += " font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\">\n";
  return svg + writer.Svg() + "</svg>\n";
}

std::string PaintInlineSvg(const Picture& picture, int32_t width, int32_t height, std::string_view label) {
  SvgWriter writer(nullptr);
  for (const Shape& shape : picture.Shapes()) writer.Add(shape);
  return "<svg role=\"img\" aria-label=\"" + EscapedForXml(label) + "\" viewBox=\"0 0 " + Number(width) +
         " " + Number(height) + "\"" + Attribute("width", width) + ">\n" + writer.Svg() + "</svg>\n";
}

std::string_view RoleName(Role role) {
  static constexpr std::string_view kNames[kRoles] = {
      "paper", "text",     "muted", "label", "face", "face-text", "selection", "selection-text", "frame",
      "grid",  "standard", "trial", "other", "pass", "warning",   "fail",      "inside",         "band"};
  return kNames[static_cast<std::size_t>(role)];
}

double BaselineOf(const Shape& text) {
  constexpr double kBelowMiddle = 4.0 / 11;  // in sizes of the font
  return text.box.Centre().y + (text.fontSize > 0 ? text.fontSize : kFontSize) * kBelowMiddle;
}

std::string HexColor(uint32_t color) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
  return text;
}

std::string EscapedForXml(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
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

}  // namespace vrx::pictures
