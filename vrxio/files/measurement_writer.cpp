#include <vrxio/files/measurement_writer.h>

#include <utility>

#include <vrxio/files/sample_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {

std::vector<std::pair<std::string, std::string>> ConditionTexts(const MeasuringConditions& conditions) {
  std::vector<std::pair<std::string, std::string>> texts;
  texts.emplace_back("measuring geometry", GeometryName(conditions.geometry));
  texts.emplace_back("M condition",
                     conditions.mCondition < 0 ? "" : "M" + std::to_string(conditions.mCondition));
  texts.emplace_back("filter", conditions.filter);
  texts.emplace_back("backing", conditions.backing);
  texts.emplace_back("instrument", conditions.instrument);
  texts.emplace_back("aperture", conditions.aperture);
  texts.emplace_back("illuminant", conditions.illuminant < 0
                                       ? conditions.otherIlluminant
                                       : CodeOf(static_cast<vrxIlluminant>(conditions.illuminant)));
  texts.emplace_back("observer",
                     conditions.observer < 0 ? "" : std::to_string(DegreesOf(conditions.observer)));
  return texts;
}

namespace {

std::unique_ptr<SampleWriter> MakeWriter(const MeasurementReader& source, const WriteOptions& options,
                                         FileShape shape, const TextSink& sink) {
  switch (options.form) {
    case ReadOptions::Form::kCgats:
      return MakeCgatsWriter(source, options, std::move(shape), sink);
    case ReadOptions::Form::kCxf:
      return MakeCxfWriter(source, options, std::move(shape), sink);
    case ReadOptions::Form::kJson:
      return MakeJsonWriter(source, options, std::move(shape), sink);
    default:
      return MakeCsvWriter(source, options, std::move(shape), sink);
  }
}

}  // namespace

void WriteMeasurements(MeasurementReader& source, const WriteOptions& options, const TextSink& sink) {
  FileShape shape = ShapeOf(source, options.onProgress);
  const bool isTable = options.form != ReadOptions::Form::kCxf;
  if (isTable && options.grid.empty() && shape.wavelengthsDiffer) {
    throw InputError(source.Name() +
                     ": the samples have different wavelengths; --grid 400-700/10 brings them to one list");
  }
  const bool hasCurves = shape.hasCurves;
  if (!options.grid.empty() && hasCurves) shape.wavelengths = options.grid;
  const std::unique_ptr<SampleWriter> writer = MakeWriter(source, options, std::move(shape), sink);
  const std::vector<std::string> losses = writer->Losses();
  if (options.onLosses && !losses.empty()) options.onLosses(losses);
  writer->Begin();
  Measurement sample;
  SpectralResampler resampler;
  const MeasurementLayout* layout = nullptr;
  std::vector<double> curve(options.grid.size());
  while (source.Next(sample)) {
    if (options.onProgress) options.onProgress(source.Size() + source.Position());
    if (isTable && hasCurves && sample.reflectance.empty()) {
      source.FailRow("the sample has no curve as others have, and the format takes all or none");
    }
    if (options.grid.empty() || sample.reflectance.empty()) {
      writer->Add(sample, sample.reflectance);
      continue;
    }
    if (std::exchange(layout, sample.layout) != sample.layout) {
      resampler = SpectralResampler(layout->wavelengths, options.grid);
    }
    resampler.Convert(sample.reflectance, curve.data());
    writer->Add(sample, curve);
  }
  writer->Finish();
}

}  // namespace vrx::io
