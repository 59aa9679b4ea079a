// What the writers of all formats share.

#ifndef VRXIO_FILES_SAMPLE_WRITER_H_
#define VRXIO_FILES_SAMPLE_WRITER_H_

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/files/file_shape.h>
#include <vrxio/files/measurement_writer.h>
#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/measurement.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/text.h>

namespace vrx::io {

/// Writes one format: it is given each sample with its curve at the wavelengths of the file.
class SampleWriter {
 public:
  SampleWriter(const MeasurementReader& source, const WriteOptions& options, FileShape shape,
               const TextSink& sink)
      : source_(source), options_(options), shape_(std::move(shape)), sink_(sink) {}
  virtual ~SampleWriter() = default;

  /// What stands before the samples; each sample, its curve in percent and empty where it has none; what stands behind them. A
  /// sample that the format cannot hold fails with its row.
  virtual void Begin() = 0;
  virtual void Add(const Measurement& sample, std::span<const double> curve) = 0;
  virtual void Finish() = 0;

  /// What of the source does not go into the form, by name.
  std::vector<std::string> Losses() {
    std::vector<std::string> losses = source_.PassedOver();
    AddLosses(losses);
    return losses;
  }

 protected:
  virtual void AddLosses(std::vector<std::string>& losses) = 0;

  /// Words about the whole file. The maker of a file that this library wrote is no loss.
  void AddRemarks(const std::function<bool(const MeasurementReader::Remark&)>& isHeld,
                  std::vector<std::string>& losses) const {
    for (const MeasurementReader::Remark& remark : source_.Remarks()) {
      const bool isOwn = remark.word == "ORIGINATOR" && remark.text == "vrx";
      if (!isOwn && !isHeld(remark)) losses.push_back(remark.word);
    }
  }

  /// The name under which the format has a kept column.
  virtual std::string NameOf(const std::string& heading) const { return heading; }

  /// Whether a reader of the file would take a column of this name for one that the file has of its own. Readers of tables go by what a
  /// heading means: "L*(2/A)" is another L.
  virtual bool IsTakenForOwn(const std::string& name) const {
    const Heading meaning = MeaningOf(name);
    switch (meaning.role) {
      case ColumnRole::kId:
        return meaning.rank == kIdByName;
      case ColumnRole::kName:
        return shape_.hasNames;
      case ColumnRole::kStandard:
        return shape_.hasStandards;
      case ColumnRole::kGeometry:
        return shape_.hasGeometries;
      case ColumnRole::kDate:
        return shape_.HasDates();
      case ColumnRole::kColor:
        return meaning.color <= kColumnZ ? shape_.hasXyz : meaning.color <= kColumnB && shape_.hasLab;
      default:
        return false;
    }
  }

  /// Takes those of the kept columns out that a reader of the file would take for one of its own, or for each other; they are
  /// lost.
  void DropTwins(const std::vector<std::string>& ownNames, std::vector<std::string>& losses) {
    std::vector<std::string> names = ownNames, kept;
    for (const std::string& heading : shape_.others) {
      const std::string name = NameOf(heading);
      const auto isName = [&](const std::string& other) { return EqualsIgnoringCase(other, name); };
      // What has no heading gives way to what has one.
      const bool isTwin = std::ranges::any_of(names, isName) || IsTakenForOwn(name) ||
                          (heading.empty() && std::ranges::any_of(shape_.others, isName));
      if (isTwin) {
        losses.push_back(heading.empty() ? "the column without a heading" : heading);
        continue;
      }
      kept.push_back(heading);
      names.push_back(name);
    }
    shape_.others = std::move(kept);
  }

  /// The text of a kept column; empty where the sample has none.
  static std::string_view OtherOf(const Measurement& sample, std::size_t column, const std::string& heading) {
    if (column < sample.others.size() && sample.otherHeadings[column] == heading)
      return sample.others[column];
    const auto found = std::ranges::find(sample.otherHeadings, heading);
    return found != sample.otherHeadings.end()
               ? std::string_view(
                     sample.others[static_cast<std::size_t>(found - sample.otherHeadings.begin())])
               : std::string_view();
  }

  /// Whether a text is a number as this library writes it, which no reader could take for another.
  static bool IsPlainNumber(std::string_view text) {
    double value = 0;
    return ParseDecimal(text, '.', value) && ShortestText(value) == text;
  }

  std::string ValueText(double percent) const {
    return options_.fraction ? FractionText(percent) : ShortestText(percent);
  }
  void Put(std::string_view text) { sink_(text); }

  const MeasurementReader& source_;
  const WriteOptions& options_;
  FileShape shape_;
  const TextSink& sink_;
};

/// The writer of a format; `source`, `options` and `sink` must outlive it.
std::unique_ptr<SampleWriter> MakeCsvWriter(const MeasurementReader& source, const WriteOptions& options,
                                            FileShape shape, const TextSink& sink);
std::unique_ptr<SampleWriter> MakeJsonWriter(const MeasurementReader& source, const WriteOptions& options,
                                             FileShape shape, const TextSink& sink);
std::unique_ptr<SampleWriter> MakeCgatsWriter(const MeasurementReader& source, const WriteOptions& options,
                                              FileShape shape, const TextSink& sink);
std::unique_ptr<SampleWriter> MakeCxfWriter(const MeasurementReader& source, const WriteOptions& options,
                                            FileShape shape, const TextSink& sink);

}  // namespace vrx::io

#endif  // VRXIO_FILES_SAMPLE_WRITER_H_
