// The files about a report: the hashes of its inputs, pictures to carry along, and the way onto paper.

#ifndef TOOLS_VRX_REPORT_REPORT_FILES_H_
#define TOOLS_VRX_REPORT_REPORT_FILES_H_

#include <string>
#include <string_view>

namespace vrx::tool {

/// SHA-256 (FIPS 180-4) of a text, as 32 bytes.
std::string Sha256(std::string_view content);
/// The SHA-256 of a file in hexadecimal digits, as `sha256sum` prints it; empty for what is no file on a disk, as a pipe
/// can be read only once.
std::string HashOfFile(const std::string& path);

/// A picture (PNG, JPEG or SVG, up to 1 MiB) as a data URL. Throws InputError when it is none.
std::string PictureUrl(const std::string& path);

/// Prints a page of HTML to a PDF file, through the Chromium that VRX_CHROMIUM names or the path finds. Throws InputError
/// when there is none, and when it writes nothing within a minute.
void PrintToPdf(std::string_view html, const std::string& path);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_REPORT_REPORT_FILES_H_
