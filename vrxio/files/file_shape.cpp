#include <vrxio/files/file_shape.h>

#include <algorithm>
#include <span>
#include <utility>

#include <vrxio/files/measurement_writer.h>
#include <vrxio/measurement/names.h>

namespace vrx::io {
namespace {

// Gathers a shape, sample by sample.
class ShapeFinder {
 public:
  explicit ShapeFinder(const MeasurementReader& source) {
    shape_.hasStandards = source.HasStandards();
    shape_.hasGeometries = source.HasGeometries();
  }

  void Take(const Measurement& sample) {
    ++shape_.samples;
    shape_.hasNames = shape_.hasNames || (!sample.name.empty() && sample.name != sample.id);
    shape_.hasXyz = shape_.hasXyz || sample.hasXyz;
    shape_.hasLab = shape_.hasLab || sample.hasLab;
    shape_.hasSampleDates = shape_.hasSampleDates || !sample.date.empty();
    shape_.lacksDates = shape_.lacksDates || DateOf(sample).empty();
    for (const std::string_view text : {sample.id, sample.name, sample.standard, sample.date}) TakeText(text);
    TakeOthers(sample);
    leavesGeometryOpen_ = leavesGeometryOpen_ || IsMeasurementCondition(sample.geometry);
    for (const double value : sample.reflectance) shape_.largest = std::max(shape_.largest, value);
    for (const double value : sample.xyz) shape_.largestXyz = std::max(shape_.largestXyz, value);
    if (std::exchange(last_, sample.layout) == sample.layout) return;
    TakeConditions(sample.layout->conditions);
    if (sample.reflectance.empty()) return;
    if (!shape_.hasCurves) shape_.wavelengths = sample.layout->wavelengths;
    shape_.hasCurves = true;
    shape_.wavelengthsDiffer = shape_.wavelengthsDiffer || shape_.wavelengths != sample.layout->wavelengths;
  }

  FileShape Finish() {
    // Where samples have a geometry of their own it is theirs; the letter of a measurement condition, M0 to M3, leaves it open.
    if (shape_.hasGeometries && !leavesGeometryOpen_ && shape_.samples > 0) {
      shape_.hasConditions[0] = shape_.conditionsDiffer[0] = false;
    }
    return std::move(shape_);
  }

 private:
  void TakeText(std::string_view text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    shape_.hasQuotes = shape_.hasQuotes || text.find('"') != std::string_view::npos;
    shape_.hasControls = shape_.hasControls || std::ranges::any_of(text, isControl);
  }

  void TakeOthers(const Measurement& sample) {
    if (sample.otherHeadings.data() != lastHeadings_.data() ||
        sample.otherHeadings.size() != lastHeadings_.size() ||
        !std::ranges::equal(sample.otherHeadings, std::span(lastNames_))) {
      lastHeadings_ = sample.otherHeadings;
      lastNames_.assign(sample.otherHeadings.begin(), sample.otherHeadings.end());
      for (const std::string& heading : sample.otherHeadings) AddOther(heading);
    }
    for (const std::string& text : sample.others) TakeText(text);
  }

  void AddOther(const std::string& heading) {
    constexpr std::size_t kMost = 10'000;
    const bool isKnown = std::ranges::find(shape_.others, heading) != shape_.others.end();
    if (!isKnown && shape_.others.size() < kMost) shape_.others.push_back(heading);
  }

  void TakeConditions(const MeasuringConditions& conditions) {
    const auto texts = ConditionTexts(conditions);
    const bool isFirst = shape_.hasConditions.empty();
    if (isFirst) {
      shape_.conditions = conditions;
      shape_.hasConditions.resize(texts.size());
      shape_.conditionsDiffer.resize(texts.size());
    }
    const auto first = ConditionTexts(shape_.conditions);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (!texts[i].second.empty()) shape_.hasConditions[i] = true;
      if (texts[i].second != first[i].second) shape_.conditionsDiffer[i] = true;
      TakeText(texts[i].second);
    }
    shape_.hasFileDates = shape_.hasFileDates || !conditions.date.empty();
    shape_.fileDatesDiffer = shape_.fileDatesDiffer || conditions.date != shape_.conditions.date;
  }

  FileShape shape_;
  bool leavesGeometryOpen_ = false;
  const MeasurementLayout* last_ = nullptr;
  std::span<const std::string> lastHeadings_;
  std::vector<std::string> lastNames_;
};

}  // namespace

FileShape ShapeOf(MeasurementReader& source, const std::function<void(uint64_t)>& onProgress) {
  ShapeFinder finder(source);
  Measurement sample;
  while (source.Next(sample)) {
    finder.Take(sample);
    if (onProgress) onProgress(source.Position());
  }
  source.Rewind();
  return finder.Finish();
}

std::string_view DateOf(const Measurement& sample) {
  return sample.date.empty() ? std::string_view(sample.layout->conditions.date) : sample.date;
}

}  // namespace vrx::io
