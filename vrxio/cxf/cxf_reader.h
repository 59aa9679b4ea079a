// Measurements in CxF3 files (ISO 17972-1): reflectance spectra, CIE L*a*b*, L*C*h and XYZ values of the objects, and how
// they were measured. Custom resources are passed over.

#ifndef VRXIO_CXF_CXF_READER_H_
#define VRXIO_CXF_CXF_READER_H_

#include <memory>
#include <string_view>

#include <vrxio/measurement/measurement.h>
#include <vrxio/text/input_stream.h>

namespace vrx::io {

/// The namespace of CxF3.
inline constexpr std::string_view kCxfNamespace = "http://colorexchangeformat.com/CxF3-core";

/// True for the beginning of a document of markup.
bool IsMarkup(std::string_view beginning);
/// True when the declaration of a document names Latin-1 as its encoding. Throws InputError for one that is neither that
/// nor Unicode.
bool IsMarkupInLatin1(const std::string& name, std::string_view beginning);

/// Reads an open file up to its first sample. A file is read twice, as how the objects were measured stands behind them; a
/// pipe is held in memory. Throws InputError when it is not CxF3 or has neither reflectances nor colours.
///
/// The Name of an object is the id of its sample, or its Id when it has no name. An object with several spectra gives
/// a sample for each, with its geometry.
std::unique_ptr<MeasurementReader> ReadCxf(InputStream input, const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_CXF_CXF_READER_H_
