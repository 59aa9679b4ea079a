// How the values of a CxF3 file were measured, and where its spectra lie.

#ifndef VRXIO_CXF_CXF_MEASURING_H_
#define VRXIO_CXF_CXF_MEASURING_H_

#include <cstdint>
#include <string>
#include <vector>

#include <vrxio/cxf/cxf_document.h>
#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// A ColorSpecification: how colour values were measured.
struct Measuring {
  MeasuringConditions conditions;
  double start = 0, increment = 0;  ///< nm; 0 when unknown
  struct Angle {
    std::string notation;
    int32_t geometry;
  };
  std::vector<Angle> angles;  ///< of a multi-angle geometry
  bool isReflectance = true;
  std::string measurementType;
};

/// Reads the ColorSpecification at `element`; what is missing or not understood stays unknown.
Measuring ParseMeasuring(const MarkupElement& xml, int32_t element);

}  // namespace vrx::io

#endif  // VRXIO_CXF_CXF_MEASURING_H_
