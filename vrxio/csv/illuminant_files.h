// User illuminants from files of spectral power.

#ifndef VRXIO_CSV_ILLUMINANT_FILES_H_
#define VRXIO_CSV_ILLUMINANT_FILES_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/weighting.h>

namespace vrx::io {

/// A tabulated spectrum of a file.
struct TabulatedSpectrum {
  std::string heading;
  std::vector<double> power;
  int32_t firstWavelength = 0;  ///< nm
  int32_t step = 0;
};

/// The spectra of a file as RegisterIlluminantFiles reads it, at most 256, whatever may be wrong with their numbers. Throws
/// InputError for a file that is not one.
std::vector<TabulatedSpectrum> ReadSpectra(const std::string& file);

/// Registers every illuminant of the files, so that it can be named by its code or number. May be called again.
///
/// A file has a column of wavelengths, headed `nm`, 1, 5 or 10 nm apart, and a column of relative spectral power for each
/// illuminant, headed by its code, code|description, or number:code|description. Illuminants without a number get the
/// next one from 1000 on. `interpolation` says how the power is brought to 1 nm. Throws InputError for a file that is
/// not one or an illuminant that the library refuses.
void RegisterIlluminantFiles(std::span<const std::string> files, SpectralInterpolation interpolation);

}  // namespace vrx::io

#endif  // VRXIO_CSV_ILLUMINANT_FILES_H_
