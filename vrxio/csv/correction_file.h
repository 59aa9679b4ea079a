// The correction of an instrument from a file.

#ifndef VRXIO_CSV_CORRECTION_FILE_H_
#define VRXIO_CSV_CORRECTION_FILE_H_

#include <array>
#include <string>
#include <string_view>

#include <vrxmath/colorimetry/instrument_profile.h>

namespace vrx::io {

/// What the columns behind `nm` are headed, in the order of the terms.
inline constexpr std::array<std::string_view, kInstrumentTerms> kCorrectionTerms = {
    "zero", "scale", "nonlinear", "wavelength", "bandwidth"};

/// Reads a correction: a column `nm`, 360 to 750 in steps of 10, and those of kCorrectionTerms with the factors of
/// InstrumentProfile. Throws InputError for a file that is not one.
InstrumentProfile ReadCorrection(const std::string& path);

}  // namespace vrx::io

#endif  // VRXIO_CSV_CORRECTION_FILE_H_
