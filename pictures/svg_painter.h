// Pictures as SVG: files of their own, and elements of a page. Texts stay texts, which can be searched and read aloud.

#ifndef PICTURES_SVG_PAINTER_H_
#define PICTURES_SVG_PAINTER_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "pictures/shapes.h"

namespace vrx::pictures {

/// The font size of texts that name none.
inline constexpr double kFontSize = 11;
/// The sizes of texts in that font, for charts that are painted as SVG or PNG: numbers have a point, whoever reads them.
inline constexpr Look kPaperLook{1, 15, 7, false};

/// A picture on a ground of its own. `scale`: of the size that it asks for, the lengths in it stay what they are.
struct PaperSize {
  int32_t width = 0, height = 0;
  Paint background = Role::kPaper;
  double scale = 1;
};

/// An SVG document in the colours of PaperPalette. Coordinates keep one decimal.
[[nodiscard]] std::string PaintSvg(const Picture& picture, const PaperSize& size);

/// An SVG element for a page, whose style sheet has the classes `f-NAME` (fill) and `s-NAME` (stroke) of each role (RoleName).
/// `label` (UTF-8) is what a screen reader says instead.
[[nodiscard]] std::string PaintInlineSvg(const Picture& picture, int32_t width, int32_t height,
                                         std::string_view label);
/// The name of a role in a style sheet, such as "trial".
[[nodiscard]] std::string_view RoleName(Role role);

/// Where the baseline of a text lies, so that its letters stand in the middle of its box.
[[nodiscard]] double BaselineOf(const Shape& text);

/// "#rrggbb" of a colour 0x00BBGGRR.
[[nodiscard]] std::string HexColor(uint32_t color);
/// Text (UTF-8) for the content and the quoted attributes of HTML and XML.
[[nodiscard]] std::string EscapedForXml(std::string_view text);

}  // namespace vrx::pictures

#endif  // PICTURES_SVG_PAINTER_H_
