// A point of a drawing or of a plotted line.

#ifndef PICTURES_DBL_POINT_H_
#define PICTURES_DBL_POINT_H_

namespace vrx {

/// Two coordinates, in whatever unit their owner says.
struct CDblPoint {
  double x = 0.0;
  double y = 0.0;
  bool operator==(const CDblPoint&) const = default;
};

}  // namespace vrx

#endif  // PICTURES_DBL_POINT_H_
