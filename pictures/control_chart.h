// Charts of individuals: values in their order with the centre and the limits of their process.

#ifndef PICTURES_CONTROL_CHART_H_
#define PICTURES_CONTROL_CHART_H_

#include <vector>

#include <vrxmath/tolerance/verdict.h>

#include "pictures/polylines.h"

namespace vrx::pictures {

/// Values of one kind in the order of measurement, the first at 1.
struct ControlStrip {
  CString heading;       ///< of the values
  CString orderHeading;  ///< of the axis below
  std::vector<double> values;
  std::vector<Verdict>
      marks;  ///< one a value: kFail beyond the limits, kWarning for another signal, kPass for none
  double centre = kUnset;  ///< unset, as the limits, where there is no chart of the values
  double lower = kUnset, upper = kUnset;
};

/// Several below each other over one order. The limits are dashed lines, the centre is a solid one.
void DrawControlStrips(Picture& picture, Rect box, const std::vector<ControlStrip>& strips, const Look& look);

}  // namespace vrx::pictures

#endif  // PICTURES_CONTROL_CHART_H_
