#include <array>
#include <cairo.h>
#include <cmath>
#include <string>

#include "tools/vrx/output/output.h"
#include "tools/vrx/report/png_picture.h"

namespace vrx::tool {
namespace {

constexpr double kFullCircle = 6.283185307179586;

// The surface rounds a channel to the nearest of 256, so c / 255 comes out as c.
class PngPicture final : public Picture {
 public:
  PngPicture(int32_t width, int32_t height, Paint background, double scale)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(width * scale)),
                                            static_cast<int>(std::lround(height * scale)))),
        context_(cairo_create(surface_.get())) {
    Check(cairo_status(context_.get()));
    cairo_scale(context_.get(), scale, scale);
    cairo_select_font_face(context_.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    Rectangle(0, 0, width, height, background);
  }
  void Rectangle(double x, double y, double width, double height, Paint fill) override {
    Take(fill);
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_NONE);  // swatches have sharp edges
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_fill(context_.get());
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_DEFAULT);
  }
  void Text(double x, double y, std::string_view text, int32_t size, Paint paint, Anchor anchor) override {
    Take(paint);
    cairo_set_font_size(context_.get(), size);
    const std::string line(text);
    if (anchor != Anchor::kStart) {
      cairo_text_extents_t extents;
      cairo_text_extents(context_.get(), line.c_str(), &extents);
      x -= anchor == Anchor::kEnd ? extents.x_advance : extents.x_advance / 2;
    }
    cairo_move_to(context_.get(), x, y);
    cairo_show_text(context_.get(), line.c_str());
  }
  void Line(std::span<const PlanePoint> points, Paint paint, Stroke stroke) override {
    static constexpr double kDashes[][4] = {{}, {6, 4, 6, 4}, {1.5, 3, 1.5, 3}, {8, 3, 2, 3}};
    Take(paint);
    Trace(points);
    const bool isSolid = stroke.dash == Dash::kSolid;
    cairo_set_dash(context_.get(), kDashes[static_cast<std::size_t>(stroke.dash)], isSolid ? 0 : 4, 0);
    cairo_set_line_width(context_.get(), stroke.width);
    cairo_stroke(context_.get());
  }
  void Area(std::span<const PlanePoint> outline, Paint fill) override {
    Take(fill);
    Trace(outline);
    cairo_fill(context_.get());
  }
  void Marks(std::span<const PlanePoint> points, Mark mark, Paint paint) override {
    for (const auto& [x, y] : points) {
      switch (mark) {
        case Mark::kDot:
        case Mark::kPoint:
          Take(paint);
          cairo_arc(context_.get(), x, y, RadiusOf(mark), 0, kFullCircle);
          cairo_fill(context_.get());
          break;
        case Mark::kTriangle:
          Area(std::array<PlanePoint, 3>{{{x, y - 3.5}, {x + 3.5, y + 2.5}, {x - 3.5, y + 2.5}}}, paint);
          break;
        case Mark::kCross:
          Line(std::array<PlanePoint, 2>{{{x - 3, y - 3}, {x + 3, y + 3}}}, paint, {1.6, Dash::kSolid});
          Line(std::array<PlanePoint, 2>{{{x - 3, y + 3}, {x + 3, y - 3}}}, paint, {1.6, Dash::kSolid});
          break;
        case Mark::kTick:
          Line(std::array<PlanePoint, 2>{{{x - 6, y}, {x + 6, y}}}, paint, {1.6, Dash::kSolid});
          break;
      }
    }
  }
  std::string Encode() override {
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
  struct Destroy {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
  };

  static void Check(cairo_status_t status) {
    if (status == CAIRO_STATUS_SUCCESS) return;
    throw OutputError(std::string("cannot paint the picture: ") + cairo_status_to_string(status));
  }
  void Take(Paint paint) {
    const DisplayRgb colour = paint.Colour();
    cairo_set_source_rgb(context_.get(), colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
  }
  void Trace(std::span<const PlanePoint> points) {
    cairo_new_path(context_.get());
    for (const PlanePoint& point : points) cairo_line_to(context_.get(), point.x, point.y);
  }

  std::unique_ptr<cairo_surface_t, Destroy> surface_;
  std::unique_ptr<cairo_t, Destroy> context_;
};

}  // namespace

std::unique_ptr<Picture> MakePngPicture(int32_t width, int32_t height, Paint background, double scale) {
  return std::make_unique<PngPicture>(width, height, background, scale);
}

}  // namespace vrx::tool
