// Pictures as PNG.

#ifndef PICTURES_PNG_PAINTER_H_
#define PICTURES_PNG_PAINTER_H_

#include <optional>
#include <string>

#include "pictures/svg_painter.h"

namespace vrx::pictures {

/// A PNG with `size.scale` pixels per unit of length, in the colours of PaperPalette. None where the program was built without what
/// paints it, which is so on Windows. Throws std::runtime_error where the picture cannot be painted, as for want of memory.
[[nodiscard]] std::optional<std::string> PaintPng(const Picture& picture, const PaperSize& size);

}  // namespace vrx::pictures

#endif  // PICTURES_PNG_PAINTER_H_
