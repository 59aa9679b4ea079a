// Pictures as files, PNG or SVG.

#ifndef TOOLS_VRX_REPORT_PICTURE_FILE_H_
#define TOOLS_VRX_REPORT_PICTURE_FILE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "pictures/svg_painter.h"

namespace vrx::tool {

/// The longest side of a picture.
inline constexpr int32_t kLongestSide = 30'000;

enum class PictureFormat { kPng, kSvg };

/// The format of a file by the end of its name, .png or .svg. Throws InputError for any other.
PictureFormat PictureFormatOf(std::string_view path);

/// Writes the picture, in one step. Throws OutputError when it cannot be painted or the file cannot be written; an older one is
/// then kept. Throws InputError for a PNG where the program was built without what paints it.
void SavePicture(const pictures::Picture& picture, const pictures::PaperSize& size, const std::string& path);

/// ShownText for the content and the quoted attributes of HTML and XML.
std::string Escaped(std::string_view text);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_PICTURE_FILE_H_
