// Columns in and out by the Arrow C data interface.

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/arrow/arrow_columns.h>
#include <vrxio/arrow/arrow_rows.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/judge_batch.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/foundation/numbers.h>

#include "c_api/handles.h"
#include "c_api/judging.h"

namespace vrx::c_api {
namespace {

// Where a result goes, and what it is made of: null until the whole of it is there.
struct ArrowPlaces {
  const ArrowSchema* schema;
  const ArrowArray* curves;
  ArrowSchema* resultSchema;
  ArrowArray* result;
};

// Curves of an Arrow array as the batch functions read them. A missing curve is unset.
struct ArrowCurves {
  std::span<const double> samples;
  std::vector<double> copy;

  std::size_t size() const { return samples.size() / kWavelengths; }
};

io::ArrowRows RowsOf(const ArrowPlaces& places) {
  NeedPlace(places.schema, "schema");
  NeedPlace(places.curves, "curves");
  NeedPlace(places.resultSchema, "result_schema");
  NeedPlace(places.result, "result");
  try {
    return io::NumbersOf(*places.schema, *places.curves);
  } catch (const io::InputError& error) {
    throw Refusal{VRX_REFUSED, error.what()};
  }
}

ArrowCurves CurvesOf(const ArrowPlaces& places) {
  const io::ArrowRows rows = RowsOf(places);
  if (rows.count > 0 && rows.width != kWavelengths)
    throw Refusal{VRX_REFUSED, "a curve has 40 numbers, and each list has " + std::to_string(rows.width)};
  if (rows.count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) / kWavelengths)
    throw Refusal{VRX_BAD_COUNT, "there are more curves than a call takes; hand over fewer rows at a time"};
  ArrowCurves curves;
  const std::size_t numbers = rows.count * kWavelengths;
  if (rows.floats != nullptr || !rows.gathered.empty() || !rows.missing.empty()) {
    curves.copy.resize(numbers);
    if (rows.floats != nullptr) {
      std::copy_n(rows.floats, numbers, curves.copy.begin());
    } else {
      std::copy_n(rows.doubles, numbers, curves.copy.begin());
    }
    for (std::size_t i = 0; i < rows.missing.size(); ++i) {
      if (rows.missing[i] != 0)
        std::fill_n(curves.copy.begin() + static_cast<std::ptrdiff_t>(i * kWavelengths), kWavelengths,
                    kUnset);
    }
  }
  curves.samples = Numbers(curves.copy.empty() ? rows.doubles : curves.copy.data(),
                           static_cast<std::int32_t>(rows.count), kWavelengths, "curves");
  return curves;
}

// Null where the curve is missing or has no value.
std::vector<std::uint8_t> MissingOf(const ArrowCurves& curves) {
  std::vector<std::uint8_t> missing(curves.size());
  for (std::size_t i = 0; i < missing.size(); ++i)
    missing[i] = IsUnset(curves.samples[i * kWavelengths]) ? 1 : 0;
  return missing;
}

void GiveColumns(const ArrowPlaces& places, std::span<const char* const> names,
                 std::vector<std::vector<double>> numbers, std::span<const std::uint8_t> missing) {
  io::ArrowColumns columns;
  for (std::size_t k = 0; k < names.size(); ++k)
    columns.AddNumbers(names[k], std::move(numbers[k]), 1, missing);
  columns.Export(*places.resultSchema, *places.result);
}

// X, Y, Z of the curves, a column each.
std::vector<std::vector<double>> TristimulusOf(const ArrowCurves& curves, const Pair& pair) {
  std::vector<std::vector<double>> xyz(3, std::vector<double>(curves.size()));
  TristimulusBatch(pair.illuminant, pair.observer, CurveBatch{curves.samples},
                   BatchView<double, 3>({xyz[0], xyz[1], xyz[2]}), Run());
  return xyz;
}

// L*, a*, b*, chroma and hue of the curves, a column each.
std::vector<std::vector<double>> LabOf(const ArrowCurves& curves, const Pair& pair) {
  const std::vector<std::vector<double>> xyz = TristimulusOf(curves, pair);
  std::vector<std::vector<double>> lab(5, std::vector<double>(curves.size()));
  XyzToLabBatch(pair.illuminant, pair.observer, BatchView<const double, 3>({xyz[0], xyz[1], xyz[2]}),
                BatchView<double, 5>({lab[0], lab[1], lab[2], lab[3], lab[4]}), Run());
  return lab;
}

// The columns of one illuminant: verdict, dE, words, and by how much which limit was broken.
void AddUnder(const std::string& name, std::size_t j, const JudgementTable& table,
              std::span<const std::uint8_t> missing, io::ArrowColumns& columns) {
  std::vector<std::string_view> verdicts;
  std::vector<std::string> words;
  std::vector<double> totals, broken, excess;
  std::vector<std::uint8_t> noExcess(missing.begin(), missing.end());
  for (std::size_t i = 0; i < table.size(); ++i) {
    const JudgementUnder under = table.At(i, j);
    verdicts.push_back(io::TextOf(under.verdict));
    words.push_back(io::JoinedWords(under.words));
    totals.push_back(under.difference[CDeltaValues::kTotal]);
    broken.push_back(static_cast<double>(under.breach.limit));
    excess.push_back(under.breach.Excess());
    if (!under.breach.HasExcess()) noExcess[i] = 1;
  }
  columns.AddTexts(name + " verdict", verdicts, missing);
  columns.AddNumbers(name + " dE", std::move(totals), 1, missing);
  columns.AddTexts(name + " words", std::vector<std::string_view>(words.begin(), words.end()), missing);
  columns.AddNumbers(name + " broken", std::move(broken), 1, missing);
  columns.AddNumbers(name + " excess", std::move(excess), 1, noExcess);
}

void GiveJudgement(const ArrowPlaces& places, const JudgeConditions& conditions, const JudgementTable& table,
                   std::span<const std::uint8_t> missing) {
  std::vector<std::string_view> overall;
  for (std::size_t i = 0; i < table.size(); ++i) overall.push_back(io::TextOf(table.Row(i).Worst()));
  io::ArrowColumns columns;
  columns.AddTexts("overall", overall, missing);
  for (std::size_t j = 0; j < conditions.illuminants.size(); ++j)
    AddUnder(io::CodeOf(conditions.illuminants[j]), j, table, missing, columns);
  columns.Export(*places.resultSchema, *places.result);
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;

vrx_status VRX_CALL vrx_arrow_tristimulus(int32_t illuminant, int32_t observer,
                                          const struct ArrowSchema* schema, const struct ArrowArray* curves,
                                          struct ArrowSchema* result_schema, struct ArrowArray* result) {
  return api::Call([&] {
    const api::Pair pair(illuminant, observer);
    const api::ArrowPlaces places{schema, curves, result_schema, result};
    const api::ArrowCurves read = api::CurvesOf(places);
    constexpr const char* kNames[] = {"X", "Y", "Z"};
    api::GiveColumns(places, kNames, api::TristimulusOf(read, pair), api::MissingOf(read));
  });
}

vrx_status VRX_CALL vrx_arrow_lab(int32_t illuminant, int32_t observer, const struct ArrowSchema* schema,
                                  const struct ArrowArray* curves, struct ArrowSchema* result_schema,
                                  struct ArrowArray* result) {
  return api::Call([&] {
    const api::Pair pair(illuminant, observer);
    const api::ArrowPlaces places{schema, curves, result_schema, result};
    const api::ArrowCurves read = api::CurvesOf(places);
    constexpr const char* kNames[] = {"L*", "a*", "b*", "C*", "h"};
    api::GiveColumns(places, kNames, api::LabOf(read, pair), api::MissingOf(read));
  });
}

vrx_status VRX_CALL vrx_arrow_judge(vrx_handle judgement, const struct ArrowSchema* schema,
                                    const struct ArrowArray* curves, struct ArrowSchema* result_schema,
                                    struct ArrowArray* result) {
  return api::Call([&] {
    const auto object = api::Find<api::Judgement>(judgement);
    const api::ArrowPlaces places{schema, curves, result_schema, result};
    const api::ArrowCurves read = api::CurvesOf(places);
    const vrx::JudgeStandards& standards = api::StandardsFor(*object, read.size());
    vrx::JudgementTable table;
    vrx::JudgeTrials(object->conditions, standards, {}, vrx::CurveBatch{read.samples}, table, api::Run());
    api::GiveJudgement(places, object->conditions, table, api::MissingOf(read));
  });
}
