#include "tools/vrx/judging/standard_library.h"

#include <array>
#include <utility>

#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

class NearestOfAll final : public Standards {
 public:
  NearestOfAll(CurveReader reader, const JudgeSettings& settings)
      : reader_(std::move(reader)),
        conditions_{settings.difference, settings.illuminants, settings.observer},
        angle_(settings.angle),
        colors_(conditions_),
        library_(colors_.Colors(), colors_.Geometries()),
        trial_(conditions_) {
    constexpr std::size_t kMost = 4'000'000;
    CurveRow row;
    while (reader_.Next(row)) {
      if (places_.size() == kMost) reader_.Source().FailRow("more than 4 million standards");
      colors_.Add(row);
      places_.push_back(reader_.Source().Offset());
    }
    colors_.Compute();
  }

  const Standard& Of(const CurveRow& trial) override {
    const std::size_t row = NearestTo(trial);
    if (row != row_ || standard_.stamp == 0) {
      reader_.SeekTo(places_[row]);
      CurveRow read;
      static_cast<void>(reader_.Next(read));
      standard_ = {++stamps_,
                   std::string(read.id),
                   read.geometry,
                   read,
                   std::string(read.date),
                   {},
                   StatedGloss(reader_.Conditions())};
      row_ = row;
    }
    const int32_t geometry = trial.geometry != kNoGeometry ? trial.geometry : colors_.Geometry(row);
    if (standard_.geometry != geometry) {
      standard_.geometry = geometry;
      standard_.stamp = ++stamps_;
    }
    return standard_;
  }
  const CurveReader& Reader() const override { return reader_; }

 private:
  std::size_t NearestTo(const CurveRow& trial) {
    trial_.Clear();
    trial_.Add(trial);
    trial_.Compute();
    std::array<NearestMatch, 1> match{};
    library_.Find(conditions_.difference, angle_, trial_.Colors(), trial_.Geometries(), 1, match);
    if (match[0].index == NearestMatch::kNone) {
      throw InputError(reader_.Source().Name() + ": there is no standard that trial \"" +
                       std::string(trial.id) + "\" could be near to");
    }
    return match[0].index;
  }

  CurveReader reader_;
  SearchConditions conditions_;
  double angle_;
  NamedColors colors_;
  StandardsByGeometry library_;
  NamedColors trial_;
  std::vector<uint64_t> places_;
  Standard standard_;
  std::size_t row_ = 0;
  uint64_t stamps_ = 0;
};

}  // namespace

std::unique_ptr<Standards> NearestStandards(CurveReader reader, const JudgeSettings& settings) {
  return std::make_unique<NearestOfAll>(std::move(reader), settings);
}

}  // namespace vrx::tool
