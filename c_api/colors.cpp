// From curves to colours, differences and indices: the batch functions behind checks.

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/display_color.h>
#include <vrxmath/colorimetry/user_illuminants.h>

#include "c_api/checks.h"

namespace vrx::c_api {
namespace {

using ConstRows3 = BatchView<const double, 3>;
using Rows3 = BatchView<double, 3>;
using Rows5 = BatchView<double, 5>;
using ConstRows5 = BatchView<const double, 5>;

constexpr int32_t kSpaces = 3;

// X, Y, Z of which none is negative.
CTrisValues TristimulusOf(const double* xyz, const char* name) {
  const auto numbers = Numbers(xyz, 1, 3, name);
  for (const double number : numbers) NeedWithin(number, 0.0, kLargestReading, name);
  return CTrisValues(numbers[0], numbers[1], numbers[2]);
}

// Primaries of a screen that show colours: chromaticities with y above 0 that span a triangle, and a gamma.
void NeedPrimaries(std::span<const double> numbers) {
  constexpr double kLeastArea = 1e-4, kLeastY = 1e-3;  // the smallest real screens have an area of 0.05
  for (std::size_t i = 0; i < 6; i += 2) {
    NeedWithin(numbers[i], -1.0, 2.0, "x of a primary");
    NeedWithin(numbers[i + 1], kLeastY, 2.0, "y of a primary");
  }
  NeedWithin(numbers[6], 0.1, 10.0, "gamma");
  const double area = ((numbers[2] - numbers[0]) * (numbers[5] - numbers[1]) -
                       (numbers[4] - numbers[0]) * (numbers[3] - numbers[1])) /
                      2;
  if (std::abs(area) < kLeastArea) throw Refusal{VRX_OUT_OF_RANGE, "the primaries span no triangle"};
}

// Colours as a difference system reads them.
struct Colors {
  std::vector<double> lab;
  ColorBatch batch;

  Colors(const CDifferenceSettings& settings, const Pair& pair, std::span<const double> xyz)
      : lab(xyz.size() / 3 * 5) {
    CoordinatesBatch(settings.system, pair.illuminant, pair.observer, ConstRows3(xyz), Rows5(lab), Run());
    batch = {ConstRows3(xyz), BatchView<const double, 5>(std::span<const double>(lab))};
  }
};

template <class UNIT>
vrx_status Register(int32_t number, const UNIT* name, const double* power, int32_t count, int32_t first,
                    int32_t step, int32_t straight) noexcept {
  return Call([&] {
    const CString text = Text(name, "name");
    NeedRange(straight, 0, 1, "straight");
    const auto values = Numbers(power, count, 1, "power", std::numeric_limits<double>::max());
    const IlluminantError error = RegisterUserIlluminant(
        static_cast<vrxUserIllum>(number), text, values, first, step,
        straight != 0 ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
    if (error != IlluminantError::kNone) throw Refusal{VRX_REFUSED, IlluminantErrorText(error).ToUtf8()};
  });
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::NeedPlace;
using api::NeedRange;
using api::Numbers;
using api::Refusal;

vrx_status VRX_CALL vrx_illuminant_count(int32_t* count) {
  return Call([&] {
    NeedPlace(count, "count");
    *count = vrx::kBuiltInIlluminants;
  });
}

vrx_status VRX_CALL vrx_illuminant_at(int32_t position, int32_t* illuminant) {
  return Call([&] {
    NeedRange(position, 0, vrx::kBuiltInIlluminants - 1, "position");
    NeedPlace(illuminant, "illuminant");
    *illuminant = static_cast<int32_t>(vrx::IlluminantDisplayOrder()[position]);
  });
}

vrx_status VRX_CALL vrx_white_point(int32_t illuminant, int32_t observer, double xyz[3]) {
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    NeedPlace(xyz, "xyz");
    std::copy_n(vrx::WeightTable(pair.illuminant, pair.observer) + vrx::kTableWhite, 3, xyz);
  });
}

vrx_status VRX_CALL vrx_weights(int32_t illuminant, int32_t observer, double table[123]) {
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    NeedPlace(table, "table");
    std::copy_n(vrx::WeightTable(pair.illuminant, pair.observer), vrx::kTableDoubles, table);
  });
}

vrx_status VRX_CALL vrx_register_illuminant(int32_t number, const char* name, const double* power,
                                            int32_t count, int32_t first_nm, int32_t step, int32_t straight) {
  return api::Register(number, name, power, count, first_nm, step, straight);
}
vrx_status VRX_CALL vrx_register_illuminant16(int32_t number, const vrx_char16* name, const double* power,
                                              int32_t count, int32_t first_nm, int32_t step,
                                              int32_t straight) {
  return api::Register(number, name, power, count, first_nm, step, straight);
}

vrx_status VRX_CALL vrx_remove_illuminant(int32_t number) {
  return Call([&] {
    NeedRange(number, vrx::kFirstUserIlluminant, vrx::kFirstUserIlluminant + vrx::kUserIlluminants - 1,
              "number");
    (void)api::Pair(number, vrx::kObserver2);
    vrx::RemoveUserIlluminant(static_cast<vrx::vrxUserIllum>(number));
  });
}

vrx_status VRX_CALL vrx_tristimulus(int32_t illuminant, int32_t observer, const double* curves, int32_t count,
                                    double* xyz) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    const auto out = arrays.Place(xyz, count, 3, "xyz");
    const auto samples = arrays.Numbers(curves, count, vrx::kWavelengths, "curves");
    vrx::TristimulusBatch(pair.illuminant, pair.observer, vrx::CurveBatch{samples}, api::Rows3(out),
                          api::Run());
  });
}

vrx_status VRX_CALL vrx_xyz_to_space(int32_t space, int32_t illuminant, int32_t observer, const double* xyz,
                                     int32_t count, double* coordinates) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    NeedRange(space, 0, api::kSpaces - 1, "space");
    const api::Rows5 out(arrays.Place(coordinates, count, 5, "coordinates"));
    const api::ConstRows3 in(arrays.Numbers(xyz, count, 3, "xyz"));
    // The system of each space is one that judges in it.
    constexpr int32_t kSystems[] = {vrx::vrxSystemLab, vrx::vrxSystemLuv, vrx::vrxSystemHunter};
    vrx::CoordinatesBatch(kSystems[space], pair.illuminant, pair.observer, in, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_space_to_xyz(int32_t space, int32_t illuminant, int32_t observer,
                                     const double* coordinates, int32_t count, double* xyz) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    NeedRange(space, 0, api::kSpaces - 1, "space");
    const api::Rows3 out(arrays.Place(xyz, count, 3, "xyz"));
    const api::ConstRows5 in(arrays.Numbers(coordinates, count, 5, "coordinates"));
    constexpr decltype(&vrx::LabToXyzBatch) kFunctions[] = {vrx::LabToXyzBatch, vrx::LuvToXyzBatch,
                                                            vrx::HunterToXyzBatch};
    kFunctions[space](pair.illuminant, pair.observer, in.Numbers<0, 3>(), out, api::Run());
  });
}

vrx_status VRX_CALL vrx_chromaticity(const double* xyz, int32_t count, double* xy) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(xy, count, 2, "xy");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    for (std::size_t row = 0; row * 3 < in.size(); ++row) {
      const vrx::CTrisValues values(in[3 * row], in[3 * row + 1], in[3 * row + 2]);
      vrx::Chromaticity(values, out[2 * row], out[2 * row + 1]);
    }
  });
}

vrx_status VRX_CALL vrx_display_colors(int32_t illuminant, int32_t observer, const double* xyz, int32_t count,
                                       uint8_t* rgb, uint8_t* displayable) {
  return Call([&](Arrays& arrays) {
    const api::Pair pair(illuminant, observer);
    const vrx::BatchView<uint8_t, 3> out(arrays.Place(rgb, count, 3, "rgb"));
    const auto flags = arrays.PlaceIfWanted(displayable, count, 1, "displayable");
    const api::ConstRows3 in(arrays.Numbers(xyz, count, 3, "xyz"));
    vrx::DisplayColorBatch(pair.illuminant, pair.observer, in, out, flags, api::Run());
  });
}

vrx_status VRX_CALL vrx_get_display_primaries(double primaries[7]) {
  return Call([&] {
    NeedPlace(primaries, "primaries");
    vrx::CDoubleArray1 settings;
    vrx::GetDisplayPrimaries(settings);
    std::copy(settings.begin(), settings.end(), primaries);
  });
}

vrx_status VRX_CALL vrx_set_display_primaries(const double primaries[7]) {
  return Call([&] {
    if (primaries == nullptr) return vrx::ResetDisplayPrimaries();
    const auto numbers = Numbers(primaries, 1, vrx::kDisplaySettings, "primaries");
    api::NeedPrimaries(numbers);
    vrx::CDoubleArray1 settings;
    settings.SetSize(vrx::kDisplaySettings);
    std::copy(numbers.begin(), numbers.end(), settings.begin());
    vrx::SetDisplayPrimaries(settings);
  });
}

vrx_status VRX_CALL vrx_default_system(int32_t number, vrx_system* system) {
  return Call([&] {
    NeedRange(number, 0, vrx::kDifferenceSystems - 1, "number");
    NeedPlace(system, "system");
    const vrx::CDifferenceSettings settings = vrx::DefaultSettings(number);
    *system = {number, 0, {}, 45.0};
    std::copy(settings.parameters.begin(), settings.parameters.end(), system->parameters);
  });
}

vrx_status VRX_CALL vrx_system_elements(int32_t number, int32_t elements[7], int32_t* count) {
  return Call([&](Arrays& arrays) {
    NeedRange(number, 0, vrx::kDifferenceSystems - 1, "number");
    const auto places = arrays.Place(elements, 1, vrx::CDeltaValues::kValues, "elements");
    int32_t& shown = arrays.Result(count, "count");
    const auto found = vrx::DifferenceColumnElements(number);
    std::copy(found.begin(), found.end(), places.begin());
    shown = static_cast<int32_t>(found.size());
  });
}

vrx_status VRX_CALL vrx_differences(const vrx_system* system, int32_t illuminant, int32_t observer,
                                    const double* standards, const double* samples, int32_t count,
                                    double* differences) {
  return Call([&](Arrays& arrays) {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const double angle = system->angle;
    const api::Pair pair(illuminant, observer);
    const vrx::BatchView<double, 7> out(arrays.Place(differences, count, 7, "differences"));
    const api::Colors standard(settings, pair, arrays.Numbers(standards, count, 3, "standards"));
    const api::Colors sample(settings, pair, arrays.Numbers(samples, count, 3, "samples"));
    vrx::DifferenceBatch(settings, angle, standard.batch, sample.batch, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_nearest(const vrx_system* system, int32_t illuminant, int32_t observer,
                                const double* standards, int32_t standard_count, const double* samples,
                                int32_t count, int32_t wanted, int32_t* indices, double* totals) {
  return Call([&](Arrays& arrays) {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair pair(illuminant, observer);
    NeedRange(wanted, 1, std::numeric_limits<int32_t>::max(), "wanted");
    const auto width = static_cast<std::size_t>(wanted);
    const auto indexPlace = arrays.Place(indices, count, width, "indices");
    const auto totalPlace = arrays.Place(totals, count, width, "totals");
    const api::Colors library(settings, pair, arrays.Numbers(standards, standard_count, 3, "standards"));
    const api::Colors trials(settings, pair, arrays.Numbers(samples, count, 3, "samples"));
    std::vector<vrx::NearestMatch> matches(indexPlace.size());
    vrx::FindNearestBatch(settings, system->angle, std::span(&trials.batch, 1), std::span(&library.batch, 1),
                          width, matches, api::Run());
    for (std::size_t i = 0; i < matches.size(); ++i) {
      indexPlace[i] =
          matches[i].index == vrx::NearestMatch::kNone ? -1 : static_cast<int32_t>(matches[i].index);
      totalPlace[i] = matches[i].difference;
    }
  });
}

vrx_status VRX_CALL vrx_index_count(int32_t* count) {
  return Call([&] {
    NeedPlace(count, "count");
    *count = static_cast<int32_t>(vrx::ColorIndices().size());
  });
}

vrx_status VRX_CALL vrx_indices(int32_t index, int32_t recalculated, int32_t illuminant, int32_t observer,
                                const double* xyz, int32_t count, double* values) {
  return Call([&](Arrays& arrays) {
    const auto list = vrx::ColorIndices();
    NeedRange(index, 0, static_cast<int32_t>(list.size()) - 1, "index");
    NeedRange(recalculated, 0, 1, "recalculated");
    const api::Pair pair(illuminant, observer);
    const auto form = recalculated != 0 ? vrx::IndexForm::kRecalculated : vrx::IndexForm::kDirect;
    const vrx::IndexFunction function = list[static_cast<std::size_t>(index)].Function(form);
    if (function == nullptr) throw Refusal{VRX_OUT_OF_RANGE, "the index has no such form"};
    const auto out = arrays.Place(values, count, 1, "values");
    const api::ConstRows3 in(arrays.Numbers(xyz, count, 3, "xyz"));
    vrx::IndexBatch(function, pair.illuminant, pair.observer, in, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_metamerism(const vrx_system* system, int32_t reference, int32_t test,
                                   int32_t observer, const double standard[40], const double trial[40],
                                   double* index) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair first(reference, observer), second(test, observer);
    if (first.illuminant == second.illuminant)
      throw Refusal{VRX_OUT_OF_RANGE, "test: it is the reference, under which the curves are made to match"};
    const vrx::CReflData a = api::CurveOf(standard, "standard"), b = api::CurveOf(trial, "trial");
    NeedPlace(index, "index");
    const double found = vrx::MetamerismIndex(first.illuminant, second.illuminant, observer, a, b, settings);
    if (!std::isfinite(found)) throw Refusal{VRX_REFUSED, "the trial is black under the reference"};
    *index = found;
  });
}

vrx_status VRX_CALL vrx_contrast_ratio(const double over_black[3], const double over_white[3],
                                       double* ratio) {
  return Call([&] {
    const vrx::CTrisValues black = api::TristimulusOf(over_black, "over_black");
    const vrx::CTrisValues white = api::TristimulusOf(over_white, "over_white");
    NeedPlace(ratio, "ratio");
    if (!IsUnset(white) && white[vrx::CTrisValues::kY] <= 0.0)
      throw Refusal{VRX_OUT_OF_RANGE, "Y over white is 0"};
    *ratio = vrx::ContrastRatio(black, white);
  });
}
