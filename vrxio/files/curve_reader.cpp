#include <vrxio/files/curve_reader.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <vrxio/csv/csv_measurements.h>
#include <vrxio/measurement/bandpass.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/foundation/numbers.h>

namespace vrx::io {

namespace {

ReadOptions OptionsOf(bool fraction) {
  ReadOptions options;
  if (fraction) options.scale = ReadOptions::Scale::kFraction;
  return options;
}

// What the conditions of samples contradict each other in, beside what their own geometry says: a file that tells its samples
// apart by that may mix it.
std::string ConflictBeside(int32_t geometry, MeasuringConditions first, MeasuringConditions other) {
  for (MeasuringConditions* const conditions : {&first, &other}) LeaveToGeometry(geometry, *conditions);
  return ConditionConflict(first, other);
}

}  // namespace

CurveReader::CurveReader(std::unique_ptr<MeasurementReader> source, Content content, bool correctsBandpass)
    : source_(std::move(source)), correctsBandpass_(correctsBandpass) {
  Start(content);
}

CurveReader::CurveReader(CsvReader csv, bool fraction, Content content)
    : source_(ReadCsvRows(std::move(csv), CsvLayout(), OptionsOf(fraction))) {
  Start(content);
}

void CurveReader::Start(Content content) {
  const MeasurementLayout& layout = source_->FirstLayout();
  if (layout.wavelengths.empty()) {
    kind_ = source_->HasXyz() ? Sample::kXyz : Sample::kLab;
    if (content == Content::kCurves)
      source_->FailRow("the file has colours but no curves, which are needed here");
  }
  UseLayout(layout);
  if (kind_ != Sample::kCurve && source_->CanSeek()) ReadFirstConditions();
}

// Those of the first sample may stand in columns.
void CurveReader::ReadFirstConditions() {
  if (source_->Next(measured_)) UseLayout(*measured_.layout);
  Rewind();
}

void CurveReader::RequireLight(vrxIlluminant illuminant, int32_t observer) {
  if (kind_ == Sample::kCurve) return;
  light_.illuminant = illuminant;
  light_.observer = observer;
  const std::string conflict = LightConflict(first_, light_);
  if (!conflict.empty()) throw InputError(source_->Name() + ": " + conflict);
}

// The grid for the wavelengths of `layout`, and what its conditions have against the first ones.
void CurveReader::UseLayout(const MeasurementLayout& layout) {
  const bool isFirst = layout_ == nullptr;
  const bool sameWavelengths = !isFirst && layout_->wavelengths == layout.wavelengths;
  layout_ = &layout;
  conditions_ = WithCorrection(layout.conditions);
  if (rows_ <= 1) first_ = conditions_;
  if (unknownGeometry_.empty()) unknownGeometry_ = UnknownGeometryWarning(conditions_);
  if (mixture_.empty()) {
    mixture_ = HasGeometries() ? ConflictBeside(measured_.geometry, first_, layout.conditions)
                               : ConditionConflict(first_, layout.conditions);
  }
  const std::string conflict = LightConflict(layout.conditions, light_);
  if (!conflict.empty()) source_->FailRow(conflict);
  if (kind_ != Sample::kCurve || sameWavelengths || layout.wavelengths.empty()) return;
  grid_ = WavelengthGrid(layout.wavelengths);
  MakeFineGrid();
  if (correctsBandpass_ && !grid_.IsEven()) {
    source_->FailRow("the bandpass correction needs evenly spaced wavelengths");
  }
}

void CurveReader::MakeFineGrid() {
  if (interval_ == kWavelengthStep || kind_ != Sample::kCurve) return;
  const std::string fault = FaultOfInterval(layout_->wavelengths, interval_);
  if (!fault.empty()) source_->FailRow(fault);
  fineGrid_.emplace(layout_->wavelengths, interval_);
}

void CurveReader::SumAt(int32_t interval) {
  interval_ = interval;
  MakeFineGrid();
}

void CurveReader::CorrectBy(InstrumentProfile correction, const std::string& name) {
  if (kind_ != Sample::kCurve)
    throw InputError(source_->Name() + ": the file has colours, and a correction needs curves");
  correction_ = std::move(correction);
  correctionName_ = name;
  first_ = WithCorrection(std::move(first_));
  conditions_ = WithCorrection(std::move(conditions_));
}

MeasuringConditions CurveReader::WithCorrection(MeasuringConditions conditions) const {
  if (!correction_) return conditions;
  conditions.instrument.append(conditions.instrument.empty() ? "corrected by " : ", corrected by ");
  conditions.instrument.append(correctionName_);
  return conditions;
}

bool CurveReader::Next(CurveRow& row) {
  do {
    if (!source_->Next(measured_)) return false;
    if (kind_ != Sample::kCurve || !measured_.reflectance.empty()) break;
    ++withoutCurve_;
  } while (true);
  ++rows_;
  if (rows_ == 1) firstGeometry_ = measured_.geometry;
  row.kind = kind_;
  row.id = measured_.id;
  row.name = measured_.name;
  row.standard = measured_.standard;
  row.date = measured_.date;
  row.geometry = measured_.geometry;
  row.extras = measured_.extras;
  if (measured_.layout != layout_) UseLayout(*measured_.layout);
  if (kind_ == Sample::kCurve) {
    TakeCurve(measured_, row);
  } else if (kind_ == Sample::kXyz) {
    if (!measured_.hasXyz) source_->FailRow("the sample has no X, Y, Z as the first one has");
    row.color = measured_.xyz;
  } else {
    if (!measured_.hasLab) source_->FailRow("the sample has no L*, a*, b* as the first one has");
    row.color = measured_.lab;
  }
  const std::span<const double> values =
      kind_ == Sample::kCurve ? measured_.reflectance : std::span<const double>(row.color);
  if (scaleIsSaid_ && kind_ != Sample::kLab && !values.empty())
    largest_ = std::max(largest_, *std::ranges::max_element(values));
  zeros_ += std::ranges::all_of(values, [](double value) { return value == 0; });
  if (check_) check_(*this, row);
  return true;
}

void CurveReader::TakeCurve(const Measurement& measured, CurveRow& row) {
  std::span<const double> values = measured.reflectance;
  if (correctsBandpass_) {
    corrected_.assign(values.begin(), values.end());
    CorrectBandpass(corrected_);
    values = corrected_;
  }
  grid_.Convert(values, row.curve.GetData());
  if (fineGrid_) {
    row.fine.resize(static_cast<std::size_t>(FineSamples(interval_)));
    fineGrid_->Convert(values, row.fine.data());
  }
  if (!correction_) return;
  row.curve = correction_->Corrected(row.curve);
  if (IsUnset(row.curve[0])) row.curve[0] = 0.0;  // by chance, as WavelengthGrid::Convert has it
  // Factors that were damaged in their file, where every other reading would look odd, too.
  constexpr double kLargest = 1e6;
  const auto isReading = [](double sample) { return std::fabs(sample) <= kLargest; };
  if (!std::ranges::all_of(row.curve, isReading))
    source_->FailRow("the correction " + correctionName_ + " makes no reflectances of this curve");
}

std::string CurveReader::GridWarning() const {
  return kind_ == Sample::kCurve ? grid_.Warning() : std::string();
}

std::vector<std::string> CurveReader::SampleWarnings() const {
  std::vector<std::string> warnings;
  const auto warn = [&warnings](int64_t count, const char* what) {
    if (count > 0) warnings.push_back(std::to_string(count) + what);
  };
  warn(withoutCurve_, " samples have no curve and are left out");
  warn(source_->CountUnmeasured(), " rows have no values and are left out");
  warn(zeros_, " samples are 0 throughout: perhaps they were not measured");
  if (!unknownGeometry_.empty()) warnings.push_back(unknownGeometry_);
  if (!mixture_.empty()) warnings.push_back("measurements of different conditions are mixed: " + mixture_);
  return warnings;
}

void CurveReader::Rewind() {
  source_->Rewind();
  rows_ = zeros_ = withoutCurve_ = 0;
  largest_ = 0;
}

}  // namespace vrx::io
