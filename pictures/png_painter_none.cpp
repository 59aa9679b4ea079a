#include "pictures/png_painter.h"

namespace vrx::pictures {

std::optional<std::string> PaintPng(const Picture& /*picture*/, const PaperSize& /*size*/) {
  return std::nullopt;
}

}  // namespace vrx::pictures
