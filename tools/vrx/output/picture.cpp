
#include "tools/vrx/output/picture.h"

#include <cairo.h>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "tools/vrx/commands/command.h"
#include "tools/vrx/conditions.h"

namespace vrx::tool {
namespace {

std::string HexColour(DisplayRgb colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", static_cast<unsigned>(colour.red) & 0xff,
                static_cast<unsigned>(colour.green) & 0xff, static_cast<unsigned>(colour.blue) & 0xff);
  return text;
}

std::string XmlEscaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// Text stays text, so that it can be searched and read aloud.
class SvgPicture final : public Picture {
 public:
  SvgPicture(int32_t width, int32_t height, DisplayRgb background) {
    const std::string size = " width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height);
    svg_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"" + size +
           "\" font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\">\n";
    Rectangle(0, 0, width, height, background);
  }
  void Rectangle(int32_t x, int32_t y, int32_t width, int32_t height, DisplayRgb colour) override {
    svg_ += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) +
            Attribute("height", height) + " fill=\"" + HexColour(colour) + "\"/>\n";
  }
  void Text(int32_t x, int32_t y, std::string_view text, int32_t size, DisplayRgb colour) override {
    svg_ += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("font-size", size) + " fill=\"" +
            HexColour(colour) + "\">" + XmlEscaped(text) + "</text>\n";
  }
  std::string Encode() override { return svg_ + "</svg>\n"; }

 private:
  static std::string Attribute(const char* name, int32_t value) {
    return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
  }

  std::string svg_;
};

// The surface rounds a channel to the nearest of 256, so c / 255 comes out as c.
class PngPicture final : public Picture {
 public:
  PngPicture(int32_t width, int32_t height, DisplayRgb background)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
        context_(cairo_create(surface_.get())) {
    Check(cairo_status(context_.get()));
    cairo_set_antialias(context_.get(), CAIRO_ANTIALIAS_NONE);  // of edges; text has its own
    cairo_select_font_face(context_.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    Rectangle(0, 0, width, height, background);
  }
  void Rectangle(int32_t x, int32_t y, int32_t width, int32_t height, DisplayRgb colour) override {
    SetColour(colour);
    cairo_rectangle(context_.get(), x, y, width, height);
    cairo_fill(context_.get());
  }
  void Text(int32_t x, int32_t y, std::string_view text, int32_t size, DisplayRgb colour) override {
    SetColour(colour);
    cairo_set_font_size(context_.get(), size);
    cairo_move_to(context_.get(), x, y);
    cairo_show_text(context_.get(), std::string(text).c_str());
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
    throw std::runtime_error(std::string("cannot paint the picture: ") + cairo_status_to_string(status));
  }
  void SetColour(DisplayRgb colour) {
    cairo_set_source_rgb(context_.get(), colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
  }

  std::unique_ptr<cairo_surface_t, Destroy> surface_;
  std::unique_ptr<cairo_t, Destroy> context_;
};

}  // namespace

PictureFormat PictureFormatOf(std::string_view path) {
  const std::string_view end = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
  if (EqualsIgnoringCase(end, ".png")) return PictureFormat::kPng;
  if (EqualsIgnoringCase(end, ".svg")) return PictureFormat::kSvg;
  throw InputError(std::string(path) + ": the name of a picture ends in .png or .svg");
}

std::unique_ptr<Picture> MakePicture(PictureFormat format, int32_t width, int32_t height,
                                     DisplayRgb background) {
  if (format == PictureFormat::kSvg) return std::make_unique<SvgPicture>(width, height, background);
  return std::make_unique<PngPicture>(width, height, background);
}

void SavePicture(Picture& picture, const std::string& path) {
  const std::string content = picture.Encode();
  std::ofstream file(path, std::ios::binary);
  if (!file) throw InputError(path + ": cannot be created");
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (file) return;
  std::remove(path.c_str());
  throw InputError(path + ": cannot be written");
}

}  // namespace vrx::tool
