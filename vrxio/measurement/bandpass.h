// The correction of measured curves for the bandpass of the instrument.

#ifndef VRXIO_MEASUREMENT_BANDPASS_H_
#define VRXIO_MEASUREMENT_BANDPASS_H_

#include <span>

namespace vrx::io {

/// Takes out of a curve what a triangular bandpass as wide as the spacing of its wavelengths has put in, in place: each
/// value becomes (1 + 2a) R - a (R before + R behind), the first and the last (1 + a) R - a (its neighbour), with a =
/// 0.083.
/// In:      values at even wavelengths, at least 2, in any unit.
/// Formula: Stearns and Stearns, An Example of a Method for Correcting Radiance Data for Bandpass Error, Color Research
///          and Application 13 (1988), 257-259; ASTM E2729.
void CorrectBandpass(std::span<double> curve);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_BANDPASS_H_
