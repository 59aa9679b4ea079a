// The marks of judged points: a shape and a colour for each verdict, and what becomes of them in a crowd.

#ifndef PICTURES_MARKS_H_
#define PICTURES_MARKS_H_

#include <cstddef>
#include <utility>
#include <vector>

#include <vrxmath/tolerance/verdict.h>

#include "pictures/shapes.h"

namespace vrx::pictures {

/// The colour and the shape of a verdict's mark.
[[nodiscard]] Paint PaintOf(Verdict verdict);
[[nodiscard]] Mark MarkOf(Verdict verdict);

/// The radius of every mark of a picture, in 1/96 inch.
inline constexpr double kMarkRadius = 3;

/// A mark for many points of one kind.
struct Crowd {
  CDblPoint at;           ///< their mean
  std::size_t count = 0;  ///< how many
};
/// Points in squares of `side`, those of each square as one, in the order of their first points.
[[nodiscard]] std::vector<Crowd> Thinned(const std::vector<CDblPoint>& points, double side);

/// Gathers points and draws their marks, all of one size, the worse verdicts over the better ones. Of points within two pixels one
/// is drawn; of more than a thousand points so many that their marks do not overlap, paler where there are few.
class MarkLayer {
 public:
  void Add(CDblPoint at, Verdict verdict) { judged_[verdict].push_back(at); }
  /// A point without a verdict.
  void Add(CDblPoint at, Paint paint);
  void Draw(Picture& picture, const Look& look) const;
  /// The same as bars across, half a width of `radius` each, for a strip of one dimension.
  void DrawTicks(Picture& picture, double radius) const;

 private:
  template <class DRAW>
  void ForEachKind(DRAW draw) const;

  std::vector<std::pair<Paint, std::vector<CDblPoint>>> plain_;
  std::vector<CDblPoint> judged_[3];  // by verdict
};

}  // namespace vrx::pictures

#endif  // PICTURES_MARKS_H_
