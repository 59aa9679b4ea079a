#include <cairo.h>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

#include "pictures/png_painter.h"

namespace vrx::pictures {
namespace {

constexpr double kFullCircle = 6.283185307179586;

struct Destroy {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};

void Check(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  throw std::runtime_error(std::string("cannot paint the picture: ") + cairo_status_to_string(status));
}

// The surface rounds a channel to the nearest of 256, so c / 255 comes out as c.
class CairoPainter {
 public:
  explicit CairoPainter(const PaperSize& size)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                            static_cast<int>(std::lround(size.width * size.scale)),
                                            static_cast<int>(std::lround(size.height * size.scale)))),
        context_(cairo_create(surface_.get())) {
    Check(cairo_status(context_.get()));
    cairo_scale(context_.get(), size.scale, size.scale);
    cairo_select_font_face(context_.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  }

  void Add(const Shape& shape) {
    switch (shape.kind) {
      case Shape::Kind::kRectangle:
        AddRectangle(shape);
        break;
      case Shape::Kind::kText:
        AddText(shape);
        break;
      case Shape::Kind::kMarks:
        for (const Shape& part : ShapesOfMarks(shape)) Add(part);
        break;
      case Shape::Kind::kEllipse:
        TraceEllipse(shape.box);
        FillAndStroke(shape);
        break;
      case Shape::Kind::kLine:
      case Shape::Kind::kPolygon:
        cairo_new_path(context_.get());
        for (const CDblPoint& point : shape.points) cairo_line_to(context_.get(), point.x, point.y);
        FillAndStroke(shape);
        break;
    }
  }

  std::string Encode() {
    Check(cairo_status(context_.get()));
    std::string png;
    const auto append = [](void* to, const unsigned char* bytes, unsigned length) {
      static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), length);
      return CAIRO_STATUS_SUCCESS;
    };
    Check(cairo_surface_write_to_png_stream(surface_.get(), append, &png));
    return png;
  }

 private:
  void Take(Paint paint, double strength) {
    const uint32_t color = ColorOf(paint, palette_);
    cairo_set_source_rgba(context_.get(), (color & 0xFF) / 255.0, (color >> 8 & 0xFF) / 255.0,
                          (color >> 16 & 0xFF) / 255.0, strength);
  }
  void FillAndStroke(const Shape& shape) {
    if (shape.fill) {
      Take(*shape.fill, shape.strength);
      shape.stroke ? cairo_fill_preserve(context_.get()) : cairo_fill(context_.get());
    }
    if (!shape.stroke) return;
    static constexpr double kDashes[] = {6, 4};
    Take(*shape.stroke, shape.strength);
    cairo_set_dash(context_.get(), kDashes, shape.dashed ? 2 : 0, 0);
    cairo_set_line_width(context_.get(), shape.strokeWidth);
    cairo_stroke(context_.get());
  }
  void AddRectangle(const Shape& shape) {
    const Rect box = shape.stroke ? shape.box.Inset(shape.strokeWidth / 2) : shape.box;
    if (!shape.stroke)
      cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_NONE);  // swatches have sharp edges
    cairo_rectangle(context_.get(), box.left, box.top, box.width, box.height);
    FillAndStroke(shape);
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_DEFAULT);
  }
  void TraceEllipse(const Rect& box) {
    cairo_save(context_.get());
    cairo_translate(context_.get(), box.Centre().x, box.Centre().y);
    cairo_scale(context_.get(), std::fmax(box.width / 2, 1e-3), std::fmax(box.height / 2, 1e-3));
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), 0, 0, 1, 0, kFullCircle);
    cairo_restore(context_.get());
  }
  void AddText(const Shape& shape) {
    const double size = shape.fontSize > 0 ? shape.fontSize : kFontSize;
    Take(*shape.fill, 1);
    cairo_set_font_size(context_.get(), size);
    const std::string line = shape.text.ToUtf8();
    double x = shape.align == Align::kEnd      ? shape.box.Right()
               : shape.align == Align::kMiddle ? shape.box.Centre().x
                                               : shape.box.left;
    cairo_text_extents_t extents{};
    if (shape.align != Align::kStart || shape.plate)
      cairo_text_extents(context_.get(), line.c_str(), &extents);
    if (shape.align != Align::kStart)
      x -= shape.align == Align::kEnd ? extents.x_advance : extents.x_advance / 2;
    if (shape.plate) {
      Shape plate;
      plate.box = {x - 2, shape.box.Centre().y - 0.7 * size, extents.x_advance + 4, 1.4 * size};
      plate.fill = shape.plate;
      AddRectangle(plate);
      Take(*shape.fill, 1);
    }
    cairo_move_to(context_.get(), x, BaselineOf(shape));
    cairo_show_text(context_.get(), line.c_str());
  }

  const Palette palette_ = PaperPalette();
  std::unique_ptr<cairo_surface_t, Destroy> surface_;
  std::unique_ptr<cairo_t, Destroy> context_;
};

}  // namespace

std::optional<std::string> PaintPng(const Picture& picture, const PaperSize& size) {
  CairoPainter painter(size);
  Picture ground;
  ground.Rectangle({0, 0, static_cast<double>(size.width), static_cast<double>(size.height)},
                   size.background);
  painter.Add(ground.Shapes()[0]);
  for (const Shape& shape : picture.Shapes()) painter.Add(shape);
  return painter.Encode();
}

}  // namespace vrx::pictures
