#include <vrxio/csv/correction_file.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {

InstrumentProfile ReadCorrection(const std::string& path) {
  CsvReader csv(path);
  const std::vector<std::string>& header = csv.Header();
  const bool isHeaded = header.size() == kInstrumentTerms + 1 && header[0] == "nm" &&
                        std::equal(header.begin() + 1, header.end(), kCorrectionTerms.begin());
  if (!isHeaded) csv.FailRow("the header of a correction is nm,zero,scale,nonlinear,wavelength,bandwidth");
  std::vector<InstrumentProfile::Factors> factors;
  while (csv.Next()) {
    const auto place = static_cast<std::int32_t>(factors.size());
    if (place == kWavelengths || csv.Number() != WavelengthAt(place))
      csv.FailRow("the wavelengths of a correction are 360 to 750 nm in steps of 10");
    csv.Numbers(factors.emplace_back());
    csv.EndRecord();
  }
  const auto profile = InstrumentProfile::FromFactors(factors);
  if (!profile) throw InputError(path + ": the correction ends before 750 nm");
  return *profile;
}

}  // namespace vrx::io
