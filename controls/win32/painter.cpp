#include "controls/win32/painter.h"

#include <algorithm>
#include <cmath>

namespace vrx::controls {
namespace {

// An object that is selected while it lives, and then deleted.
class Selected {
 public:
  Selected(HDC device, HGDIOBJ object, bool isOwned)
      : device_(device), object_(object), old_(::SelectObject(device, object)), isOwned_(isOwned) {}
  Selected(const Selected&) = delete;
  Selected& operator=(const Selected&) = delete;
  ~Selected() {
    ::SelectObject(device_, old_);
    if (isOwned_) ::DeleteObject(object_);
  }

 private:
  HDC device_;
  HGDIOBJ object_;
  HGDIOBJ old_;
  bool isOwned_;
};

LONG Round(double value) {
  return static_cast<LONG>(std::floor(std::clamp(value, -30000.0, 30000.0) + 0.5));
}

class ShapePainter {
 public:
  ShapePainter(HDC device, const Palette& palette, POINT origin, bool isRightToLeft)
      : device_(device), palette_(palette), origin_(origin), isRightToLeft_(isRightToLeft) {}

  void Add(const Shape& shape) {
    if (shape.kind == Shape::Kind::kText) return PaintText(shape);
    if (shape.kind == Shape::Kind::kMarks) {
      for (const Shape& part : ShapesOfMarks(shape)) Add(part);
      return;
    }
    if (shape.kind == Shape::Kind::kRectangle && shape.fill)
      FillBox(BoxOf(shape.box), *shape.fill, shape.strength);
    if (shape.kind == Shape::Kind::kRectangle) {
      if (shape.stroke) FrameBox(BoxOf(shape.box), *shape.stroke, Round(shape.strokeWidth));
      return;
    }
    const Selected pen(device_, PenOf(shape), shape.stroke.has_value());
    const Selected brush(device_,
                         shape.fill
                             ? ::CreateSolidBrush(pictures::ColorOf(*shape.fill, palette_, shape.strength))
                             : ::GetStockObject(NULL_BRUSH),
                         shape.fill.has_value());
    std::vector<POINT> points;
    points.reserve(shape.points.size());
    for (const CDblPoint& point : shape.points)
      points.push_back({origin_.x + Round(point.x), origin_.y + Round(point.y)});
    const RECT box = BoxOf(shape.box);
    switch (shape.kind) {
      case Shape::Kind::kLine:
        ::Polyline(device_, points.data(), static_cast<int>(points.size()));
        break;
      case Shape::Kind::kPolygon:
        ::Polygon(device_, points.data(), static_cast<int>(points.size()));
        break;
      default:
        ::Ellipse(device_, box.left, box.top, box.right + 1, box.bottom + 1);
        break;
    }
  }

 private:
  RECT BoxOf(const Rect& box) const {
    return {origin_.x + Round(box.left), origin_.y + Round(box.top), origin_.x + Round(box.Right()),
            origin_.y + Round(box.Bottom())};
  }

  HGDIOBJ PenOf(const Shape& shape) const {
    if (!shape.stroke) return ::GetStockObject(NULL_PEN);
    const LOGBRUSH brush{BS_SOLID, pictures::ColorOf(*shape.stroke, palette_, shape.strength), 0};
    const auto width = static_cast<DWORD>(std::max<LONG>(Round(shape.strokeWidth), 1));
    const DWORD dashes[] = {4 * width, 3 * width};
    const DWORD style = PS_GEOMETRIC | PS_ENDCAP_FLAT | PS_JOIN_ROUND;
    return shape.dashed ? ::ExtCreatePen(style | PS_USERSTYLE, width, &brush, 2, dashes)
                        : ::ExtCreatePen(style | PS_SOLID, width, &brush, 0, nullptr);
  }

  void FillBox(const RECT& box, Paint paint, double strength = 1) {
    if (box.left >= box.right || box.top >= box.bottom) return;
    const HBRUSH brush = ::CreateSolidBrush(pictures::ColorOf(paint, palette_, strength));
    ::FillRect(device_, &box, brush);
    ::DeleteObject(brush);
  }

  // Four bars within the box, so that no edge depends on a pen.
  void FrameBox(const RECT& box, Paint paint, LONG width) {
    width = std::max<LONG>(width, 1);
    FillBox({box.left, box.top, box.right, box.top + width}, paint);
    FillBox({box.left, box.bottom - width, box.right, box.bottom}, paint);
    FillBox({box.left, box.top, box.left + width, box.bottom}, paint);
    FillBox({box.right - width, box.top, box.right, box.bottom}, paint);
  }

  // The box of the letters with two pixels beside them, within the text's own.
  RECT PlateOf(const Shape& shape, const RECT& box, UINT format) const {
    RECT letters{0, 0, box.right - box.left, box.bottom - box.top};
    ::DrawTextW(device_, SystemText(shape.text), shape.text.GetLength(), &letters, format | DT_CALCRECT);
    const LONG width = std::min<LONG>(letters.right - letters.left + 4, box.right - box.left);
    const LONG height = std::min<LONG>(letters.bottom - letters.top, box.bottom - box.top);
    const LONG left = shape.align == Align::kMiddle ? (box.left + box.right - width) / 2
                      : shape.align == Align::kEnd  ? box.right - width
                                                    : box.left;
    const LONG top = (box.top + box.bottom - height) / 2;
    return {left, top, left + width, top + height};
  }

  void PaintText(const Shape& shape) {
    RECT box = BoxOf(shape.box);
    UINT format = DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS;
    format |= shape.align == Align::kMiddle ? DT_CENTER : shape.align == Align::kEnd ? DT_RIGHT : DT_LEFT;
    if (isRightToLeft_) format |= DT_RTLREADING;
    if (shape.plate) FillBox(PlateOf(shape, box, format), *shape.plate);
    ::SetTextColor(device_, pictures::ColorOf(*shape.fill, palette_));
    ::DrawTextW(device_, SystemText(shape.text), shape.text.GetLength(), &box, format);
  }

  HDC device_;
  const Palette& palette_;
  POINT origin_;
  bool isRightToLeft_;
};

}  // namespace

void PaintPicture(HDC device, const Picture& picture, const Palette& palette, HFONT font, POINT origin,
                  bool isRightToLeft) {
  const int saved = ::SaveDC(device);
  ::SelectObject(device, font);
  ::SetBkMode(device, TRANSPARENT);
  ShapePainter painter(device, palette, origin, isRightToLeft);
  for (const Shape& shape : picture.Shapes()) painter.Add(shape);
  ::RestoreDC(device, saved);
}

// Pictures are turned around by the layout, not by the device: bitmaps and plots would come out reversed.
PaintBuffer::PaintBuffer(HDC target, const RECT& area, bool isTurned)
    : target_(target), area_(area), layout_(::SetLayout(target, 0)) {
  memory_ = ::CreateCompatibleDC(target);
  if (memory_ != nullptr) {
    bitmap_ = ::CreateCompatibleBitmap(target, std::max<LONG>(area.right - area.left, 1),
                                       std::max<LONG>(area.bottom - area.top, 1));
  }
  if (bitmap_ == nullptr) {
    if (isTurned) ::SetLayout(target, layout_);
    return;
  }
  old_ = ::SelectObject(memory_, bitmap_);
  ::SetViewportOrgEx(memory_, -area.left, -area.top, nullptr);
  if (isTurned) ::SetLayout(memory_, LAYOUT_RTL);
}

PaintBuffer::~PaintBuffer() {
  if (bitmap_ != nullptr) {
    ::SetLayout(memory_, 0);
    ::BitBlt(target_, area_.left, area_.top, area_.right - area_.left, area_.bottom - area_.top, memory_,
             area_.left, area_.top, SRCCOPY);
    ::SelectObject(memory_, old_);
    ::DeleteObject(bitmap_);
  }
  if (memory_ != nullptr) ::DeleteDC(memory_);
  if (layout_ != GDI_ERROR) ::SetLayout(target_, layout_);
}

}  // namespace vrx::controls
