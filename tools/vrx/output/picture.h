// Pictures of rectangles and short texts, as PNG or SVG.

#ifndef TOOLS_VRX_OUTPUT_PICTURE_H_
#define TOOLS_VRX_OUTPUT_PICTURE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vrx::tool {

/// 8-bit red, green and blue in the space of the display.
struct DisplayRgb {
  int32_t red = 0, green = 0, blue = 0;
};

/// A picture that is being painted. Lengths are in pixels from the top left corner.
class Picture {
 public:
  virtual ~Picture() = default;
  virtual void Rectangle(int32_t x, int32_t y, int32_t width, int32_t height, DisplayRgb colour) = 0;
  /// One line of UTF-8 text with its baseline at `y`; `size` is that of the font.
  virtual void Text(int32_t x, int32_t y, std::string_view text, int32_t size, DisplayRgb colour) = 0;
  /// The finished file; call once, at the end.
  virtual std::string Encode() = 0;
};

/// The longest side of a picture.
inline constexpr int32_t kLongestSide = 30'000;

enum class PictureFormat { kPng, kSvg };

/// The format of a file by the end of its name, .png or .svg. Throws InputError for any other.
PictureFormat PictureFormatOf(std::string_view path);

/// An empty picture of one colour.
std::unique_ptr<Picture> MakePicture(PictureFormat format, int32_t width, int32_t height,
                                     DisplayRgb background);

/// Writes the picture. Throws InputError when the file cannot be written; it is then removed.
void SavePicture(Picture& picture, const std::string& path);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_PICTURE_H_
