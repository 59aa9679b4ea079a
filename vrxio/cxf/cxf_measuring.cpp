#include <vrxio/cxf/cxf_measuring.h>

#include <string_view>
#include <utility>

#include <vrxio/measurement/names.h>
#include <vrxio/text/decimal.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {
namespace {

int32_t GeometryOfAspecular(std::string_view degrees) {
  double value = 0;
  if (!ParseDecimal(degrees, '.', value)) return kNoGeometry;
  const int32_t code = ParseGeometry(ShortestText(value) + "deg");
  return code == kUnknownGeometry ? kNoGeometry : code;
}

class MeasuringReader {
 public:
  explicit MeasuringReader(const MarkupElement& element) : xml_(element) {}

  Measuring Read(int32_t element) {
    const int32_t measurement = xml_.Child(element, "MeasurementSpec");
    ReadGeometry(xml_.Child(measurement, "GeometryChoice"));
    const int32_t range = xml_.Child(measurement, "WavelengthRange");
    if (range > 0) {
      spec_.start = NumberOf(range, "StartWL");
      spec_.increment = NumberOf(range, "Increment");
    }
    spec_.measurementType = xml_.TextOf(measurement, "MeasurementType");
    const std::string& type = spec_.measurementType;
    spec_.isReflectance =
        type.empty() || type.find("Reflectance") != std::string::npos || type == "Spectrum_Custom";
    MeasuringConditions& conditions = spec_.conditions;
    conditions.aperture = xml_.TextOf(measurement, "Aperture");
    conditions.backing = xml_.TextOf(measurement, "Backing");
    ReadDevice(xml_.Child(measurement, "Device"));
    const int32_t tristimulus = xml_.Child(element, "TristimulusSpec");
    TakeCondition("illuminant", xml_.TextOf(tristimulus, "Illuminant"), conditions);
    TakeCondition("observer", xml_.TextOf(tristimulus, "Observer"), conditions);
    return std::move(spec_);
  }

 private:
  double NumberOf(int32_t element, std::string_view attribute) const {
    std::string text;
    double value = 0;
    return xml_.Attribute(element, attribute, text) && ParseDecimal(text, '.', value) ? value : 0;
  }

  void ReadGeometry(int32_t choice) {
    const int32_t sphere = xml_.Child(choice, "SphereGeometry");
    if (sphere > 0) TakeCondition("geometry", "sphere", spec_.conditions);
    TakeCondition("specular", xml_.Text(sphere), spec_.conditions);
    const int32_t single = xml_.Child(choice, "SingleAngle");
    if (single > 0) {
      double illumination = 0, measurement = 0;
      ParseDecimal(xml_.TextOf(single, "IlluminationAngle"), '.', illumination);
      ParseDecimal(xml_.TextOf(single, "MeasurementAngle"), '.', measurement);
      TakeCondition("geometry", ShortestText(illumination) + "/" + ShortestText(measurement),
                    spec_.conditions);
    }
    TakeCondition("geometry", xml_.TextOf(choice, "UnknownGeometry"), spec_.conditions);
    const int32_t multi = xml_.Child(choice, "MultiAngle");
    for (int32_t angle = xml_.Child(multi, "BRDFAngle"); angle > 0; angle = xml_.NextSibling(angle)) {
      if (xml_.Name(angle) != "BRDFAngle") continue;
      Measuring::Angle& added = spec_.angles.emplace_back();
      xml_.Attribute(angle, "Notation", added.notation);
      const std::string aspecular = xml_.TextOf(angle, "Aspecular");
      added.geometry = GeometryOfAspecular(aspecular);
      if (added.geometry == kNoGeometry) spec_.conditions.otherGeometry = aspecular;
    }
    if (spec_.angles.size() == 1) spec_.conditions.geometry = spec_.angles.front().geometry;
  }

  void ReadDevice(int32_t device) {
    std::string instrument = xml_.TextOf(device, "Manufacturer");
    const std::string model = xml_.TextOf(device, "Model");
    if (!instrument.empty() && !model.empty()) instrument += ' ';
    instrument += model;
    spec_.conditions.instrument = instrument;
    const int32_t filter = xml_.Child(device, "DeviceFilter");
    std::string description;
    const bool isDescribed = filter > 0 && xml_.Attribute(filter, "FilterDescription", description);
    TakeCondition("filter", isDescribed ? description : xml_.Text(filter), spec_.conditions);
    TakeCondition("illumination", xml_.TextOf(device, "DeviceIllumination"), spec_.conditions);
    TakeCondition("polarization", xml_.TextOf(device, "DevicePolarization"), spec_.conditions);
  }

  const MarkupElement& xml_;
  Measuring spec_;
};

}  // namespace

Measuring ParseMeasuring(const MarkupElement& xml, int32_t element) {
  return MeasuringReader(xml).Read(element);
}

}  // namespace vrx::io
