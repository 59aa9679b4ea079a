// Pictures of rectangles, lines, marks and short texts, as PNG or SVG, or as SVG within a page.

#ifndef TOOLS_VRX_REPORT_PICTURE_H_
#define TOOLS_VRX_REPORT_PICTURE_H_

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <vrxmath/tolerance/ellipse_tolerance.h>

namespace vrx::tool {

/// 8-bit red, green and blue in the space of the display.
struct DisplayRgb {
  int32_t red = 0, green = 0, blue = 0;
};

/// "#rrggbb".
std::string HexColour(DisplayRgb colour);

/// The purpose of a colour. A page gives each of these a colour per theme; a file of its own has the light ones.
enum class Ink : uint8_t {
  kPaper,
  kText,
  kMuted,
  kGrid,
  kStandard,
  kTrial,
  kPass,
  kWarning,
  kFail,
  kInside,
  kBand
};

/// A fixed colour, as that of a sample, or one of the inks.
class Paint {
 public:
  constexpr Paint(DisplayRgb colour) : colour_(colour), isFixed_(true) {}
  constexpr Paint(Ink ink) : ink_(ink) {}

  bool IsFixed() const { return isFixed_; }
  Ink GetInk() const { return ink_; }
  /// The fixed colour, or the ink's on white paper.
  DisplayRgb Colour() const;

 private:
  DisplayRgb colour_;
  Ink ink_ = Ink::kText;
  bool isFixed_ = false;
};

enum class Anchor : uint8_t { kStart, kMiddle, kEnd };
enum class Dash : uint8_t { kSolid, kDashed, kDotted, kDashDotted };

struct Stroke {
  double width = 1;
  Dash dash = Dash::kSolid;
};

/// Shapes that are told apart without colour. A point is a small dot.
enum class Mark : uint8_t { kDot, kPoint, kTriangle, kCross, kTick };

/// A picture that is being painted. Lengths are in pixels from the top left corner. Coordinates keep one
/// decimal.
class Picture {
 public:
  virtual ~Picture() = default;
  virtual void Rectangle(double x, double y, double width, double height, Paint fill) = 0;
  /// One line of UTF-8 text with its baseline at `y`; `size` is that of the font.
  virtual void Text(double x, double y, std::string_view text, int32_t size, Paint paint,
                    Anchor anchor = Anchor::kStart) = 0;
  virtual void Line(std::span<const PlanePoint> points, Paint paint, Stroke stroke = {}) = 0;
  virtual void Area(std::span<const PlanePoint> outline, Paint fill) = 0;
  /// One shape at every point.
  virtual void Marks(std::span<const PlanePoint> points, Mark mark, Paint paint) = 0;
  /// The finished file; call once, at the end.
  virtual std::string Encode() = 0;
};

/// The longest side of a picture.
inline constexpr int32_t kLongestSide = 30'000;

enum class PictureFormat { kPng, kSvg };

/// The format of a file by the end of its name, .png or .svg. Throws InputError for any other.
PictureFormat PictureFormatOf(std::string_view path);

/// An empty picture of one colour. `scale`: pixels of a PNG, and of the size that an SVG asks for, per unit of length.
std::unique_ptr<Picture> MakePicture(PictureFormat format, int32_t width, int32_t height, Paint background,
                                     double scale = 1);

/// An empty SVG element for a page, whose style sheet has the classes `f-NAME` (fill) and `s-NAME` (stroke) of
/// each ink. `label` is what a screen reader says instead.
std::unique_ptr<Picture> MakeInlinePicture(int32_t width, int32_t height, std::string_view label);

/// Writes the picture, in one step. Throws OutputError when the file cannot be written; an older one is then kept.
void SavePicture(Picture& picture, const std::string& path);

/// ShownText for the content and the quoted attributes of HTML and XML.
std::string Escaped(std::string_view text);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_PICTURE_H_
