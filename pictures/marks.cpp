#include "pictures/marks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <unordered_map>

namespace vrx::pictures {
namespace {

// How far a mark stands out from the paper that stands for so many points: the eye tells four steps apart.
double StrengthOf(std::size_t count) {
  return count < 3 ? 0.45 : count < 10 ? 0.65 : count < 30 ? 0.85 : 1.0;
}

}  // namespace

Paint PaintOf(Verdict verdict) {
  return verdict == kPass ? Role::kPass : verdict == kWarning ? Role::kWarning : Role::kFail;
}

Mark MarkOf(Verdict verdict) {
  return verdict == kPass ? Mark::kDot : verdict == kWarning ? Mark::kTriangle : Mark::kCross;
}

std::vector<Crowd> Thinned(const std::vector<CDblPoint>& points, double side) {
  std::unordered_map<uint64_t, std::size_t> placeOf;
  std::vector<Crowd> crowds;
  const auto cell = [side](double at) { return static_cast<uint32_t>(static_cast<int32_t>(at / side)); };
  for (const CDblPoint& point : points) {
    const uint64_t key = uint64_t{cell(point.x)} << 32 | cell(point.y);
    const auto [entry, isNew] = placeOf.try_emplace(key, crowds.size());
    if (isNew) crowds.push_back({point, 0});
    Crowd& crowd = crowds[entry->second];
    const double part = 1 / static_cast<double>(++crowd.count);
    crowd.at.x += (point.x - crowd.at.x) * part;
    crowd.at.y += (point.y - crowd.at.y) * part;
  }
  return crowds;
}

void MarkLayer::Add(CDblPoint at, Paint paint) {
  auto entry = std::ranges::find(plain_, paint, &std::pair<Paint, std::vector<CDblPoint>>::first);
  if (entry == plain_.end()) entry = plain_.insert(entry, {paint, {}});
  entry->second.push_back(at);
}

// The points of each kind with their paint and mark, the worst at the end.
template <class DRAW>
void MarkLayer::ForEachKind(DRAW draw) const {
  for (const auto& [paint, points] : plain_) draw(points, paint, Mark::kDot);
  for (const Verdict verdict : {kPass, kWarning, kFail}) {
    draw(judged_[verdict], PaintOf(verdict), MarkOf(verdict));
  }
}

void MarkLayer::Draw(Picture& picture, const Look& look) const {
  constexpr std::size_t kMany = 1000;
  std::size_t count = 0;
  ForEachKind([&](const std::vector<CDblPoint>& points, Paint, Mark) { count += points.size(); });
  const bool areMany = count > kMany;
  const double radius = kMarkRadius * look.scale, side = areMany ? 2 * radius + 1 : 2;
  ForEachKind([&](const std::vector<CDblPoint>& points, Paint paint, Mark mark) {
    std::vector<std::pair<double, std::vector<CDblPoint>>> layers;  // by strength, the palest first
    for (const Crowd& crowd : Thinned(points, side)) {
      const double strength = areMany ? StrengthOf(crowd.count) : 1;
      auto layer = std::ranges::lower_bound(layers, strength, {}, &decltype(layers)::value_type::first);
      if (layer == layers.end() || layer->first != strength) layer = layers.insert(layer, {strength, {}});
      layer->second.push_back(crowd.at);
    }
    for (const auto& [strength, marks] : layers) picture.AddMarks(marks, mark, paint, radius, strength);
  });
}

void MarkLayer::DrawTicks(Picture& picture, double radius) const {
  ForEachKind([&](const std::vector<CDblPoint>& points, Paint paint, Mark) {
    std::vector<CDblPoint> places;
    for (const Crowd& crowd : Thinned(points, 2)) places.push_back(crowd.at);
    picture.AddMarks(places, Mark::kTick, paint, radius);
  });
}

}  // namespace vrx::pictures
