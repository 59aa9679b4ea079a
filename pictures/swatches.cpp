#include "pictures/swatches.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <vrxmath/colorimetry/display_color.h>

namespace vrx::pictures {
namespace {

constexpr Paint kBlack = Paint::Fixed(0x000000), kWhite = Paint::Fixed(0xFFFFFF);

// Black or white, whichever is read more easily on a colour.
Paint ReadableOn(uint32_t color) {
  const uint32_t red = color & 0xFF, green = color >> 8 & 0xFF, blue = color >> 16 & 0xFF;
  return 299 * red + 587 * green + 114 * blue > 140'000 ? kBlack : kWhite;
}

// One colour with its name at the bottom and, out of gamut, the mark in its corner.
void DrawSwatch(Picture& picture, Rect box, const Swatch& swatch, WideView name, const Look& look) {
  picture.Rectangle(box, Paint::Fixed(swatch.color));
  const double gap = 3 * look.scale;
  if (box.height > look.textHeight + 2 * gap) {
    picture.Text({box.left + gap, box.Bottom() - look.textHeight - gap, box.width - 2 * gap, look.textHeight},
                 name, ReadableOn(swatch.color));
  }
  if (swatch.inGamut) return;
  const double side = std::min({12 * look.scale, box.width / 2, box.height / 2});
  const CDblPoint corner{box.Right(), box.top};
  picture.Polygon(
      std::array{corner, CDblPoint{corner.x - side, corner.y}, CDblPoint{corner.x, corner.y + side}}, kWhite);
  picture.Line({corner.x - side, corner.y}, {corner.x, corner.y + side}, kBlack, 2 * look.scale);
}

}  // namespace

Swatch SwatchOf(const CTrisValues& xyz, vrxIlluminant illuminant, int32_t observer) {
  int32_t red = 0, green = 0, blue = 0;
  const bool inGamut = XyzToDisplayRgb(illuminant, observer, xyz, red, green, blue);
  return {static_cast<uint32_t>(red) | static_cast<uint32_t>(green) << 8 | static_cast<uint32_t>(blue) << 16,
          inGamut};
}

Swatch SwatchOf(const Xyz& xyz, vrxIlluminant illuminant, int32_t observer) {
  return SwatchOf(CTrisValues(xyz.X, xyz.Y, xyz.Z), illuminant, observer);
}

void DrawSwatchPair(Picture& picture, Rect box, const SwatchPair& pair, const Look& look) {
  if (!pair.hasTrial || pair.framed) {
    DrawSwatch(picture, box, pair.standard, pair.standardName, look);
    const Rect inner{box.left + box.width / 4, box.top + box.height / 4, box.width / 2, box.height / 2};
    if (pair.hasTrial) DrawSwatch(picture, inner, pair.trial, pair.trialName, look);
    return;
  }
  const double middle = std::floor(box.width / 2);
  DrawSwatch(picture, {box.left, box.top, middle, box.height}, pair.standard, pair.standardName, look);
  DrawSwatch(picture, {box.left + middle, box.top, box.width - middle, box.height}, pair.trial,
             pair.trialName, look);
}

}  // namespace vrx::pictures
