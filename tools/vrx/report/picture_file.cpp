
#include "tools/vrx/report/picture_file.h"

#include <algorithm>
#include <stdexcept>

#include <vrxio/measurement/names.h>

#include "pictures/png_painter.h"
#include "tools/vrx/base/command.h"
#include "tools/vrx/base/output_error.h"
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/base/text.h"
#include "tools/vrx/output/file_output.h"

namespace vrx::tool {
namespace {

std::string Png(const pictures::Picture& picture, const pictures::PaperSize& size) {
  std::optional<std::string> png;
  try {
    png = pictures::PaintPng(picture, size);
  } catch (const std::runtime_error& error) {
    throw OutputError(error.what());
  }
  if (!png) throw InputError("this build of vrx cannot draw PNG pictures; use a name that ends in .svg");
  return *png;
}

}  // namespace

PictureFormat PictureFormatOf(std::string_view path) {
  const std::string_view end = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
  if (EqualsIgnoringCase(end, ".png")) return PictureFormat::kPng;
  if (EqualsIgnoringCase(end, ".svg")) return PictureFormat::kSvg;
  throw InputError(std::string(path) + ": the name of a picture must end in .png or .svg");
}

void SavePicture(const pictures::Picture& picture, const pictures::PaperSize& size, const std::string& path) {
  const bool isPng = PictureFormatOf(path) == PictureFormat::kPng;
  ReplaceFile(path, isPng ? Png(picture, size) : pictures::PaintSvg(picture, size));
}

std::string Escaped(std::string_view text) {
  return pictures::EscapedForXml(ShownText(text));
}

}  // namespace vrx::tool
