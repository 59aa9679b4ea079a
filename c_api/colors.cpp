// From curves to colours, differences and indices: the batch functions behind checks.

#include <algorithm>
#include <cstring>
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

CTrisValues TristimulusOf(const double* xyz, const char* name) {
  const auto numbers = Numbers(xyz, 1, 3, name);
  return CTrisValues(numbers[0], numbers[1], numbers[2]);
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
    const auto values = Numbers(power, count, 1, "power");
    const IlluminantError error = RegisterUserIlluminant(
        static_cast<vrxUserIllum>(number), text, values, first, step,
        straight != 0 ? SpectralInterpolation::kLinear : SpectralInterpolation::kLagrange);
    if (error != IlluminantError::kNone) throw Refusal{VRX_REFUSED, IlluminantErrorText(error).ToUtf8()};
  });
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Call;
using api::NeedPlace;
using api::NeedRange;
using api::Numbers;
using api::Place;
using api::Refusal;

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
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    const auto samples = Numbers(curves, count, vrx::kWavelengths, "curves");
    const auto out = Place(xyz, count, 3, "xyz");
    vrx::TristimulusBatch(pair.illuminant, pair.observer, vrx::CurveBatch{samples}, api::Rows3(out),
                          api::Run());
  });
}

vrx_status VRX_CALL vrx_xyz_to_space(int32_t space, int32_t illuminant, int32_t observer, const double* xyz,
                                     int32_t count, double* coordinates) {
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    NeedRange(space, 0, api::kSpaces - 1, "space");
    const api::ConstRows3 in(Numbers(xyz, count, 3, "xyz"));
    const api::Rows5 out(Place(coordinates, count, 5, "coordinates"));
    // The system of each space is one that judges in it.
    constexpr int32_t kSystems[] = {vrx::vrxSystemLab, vrx::vrxSystemLuv, vrx::vrxSystemHunter};
    vrx::CoordinatesBatch(kSystems[space], pair.illuminant, pair.observer, in, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_space_to_xyz(int32_t space, int32_t illuminant, int32_t observer,
                                     const double* coordinates, int32_t count, double* xyz) {
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    NeedRange(space, 0, api::kSpaces - 1, "space");
    const api::ConstRows5 in(Numbers(coordinates, count, 5, "coordinates"));
    const api::Rows3 out(Place(xyz, count, 3, "xyz"));
    constexpr decltype(&vrx::LabToXyzBatch) kFunctions[] = {vrx::LabToXyzBatch, vrx::LuvToXyzBatch,
                                                            vrx::HunterToXyzBatch};
    kFunctions[space](pair.illuminant, pair.observer, in.Numbers<0, 3>(), out, api::Run());
  });
}

vrx_status VRX_CALL vrx_chromaticity(const double* xyz, int32_t count, double* xy) {
  return Call([&] {
    const auto in = Numbers(xyz, count, 3, "xyz");
    const auto out = Place(xy, count, 2, "xy");
    for (std::size_t row = 0; row * 3 < in.size(); ++row) {
      const vrx::CTrisValues values(in[3 * row], in[3 * row + 1], in[3 * row + 2]);
      vrx::Chromaticity(values, out[2 * row], out[2 * row + 1]);
    }
  });
}

vrx_status VRX_CALL vrx_display_colors(int32_t illuminant, int32_t observer, const double* xyz, int32_t count,
                                       uint8_t* rgb, uint8_t* displayable) {
  return Call([&] {
    const api::Pair pair(illuminant, observer);
    const api::ConstRows3 in(Numbers(xyz, count, 3, "xyz"));
    const vrx::BatchView<uint8_t, 3> out(Place(rgb, count, 3, "rgb"));
    const std::span<uint8_t> flags(displayable, displayable != nullptr ? in.size() : 0);
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

vrx_status VRX_CALL vrx_differences(const vrx_system* system, int32_t illuminant, int32_t observer,
                                    const double* standards, const double* samples, int32_t count,
                                    double* differences) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair pair(illuminant, observer);
    const auto standardNumbers = Numbers(standards, count, 3, "standards");
    const auto sampleNumbers = Numbers(samples, count, 3, "samples");
    const vrx::BatchView<double, 7> out(Place(differences, count, 7, "differences"));
    const api::Colors standard(settings, pair, standardNumbers);
    const api::Colors sample(settings, pair, sampleNumbers);
    vrx::DifferenceBatch(settings, system->angle, standard.batch, sample.batch, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_nearest(const vrx_system* system, int32_t illuminant, int32_t observer,
                                const double* standards, int32_t standard_count, const double* samples,
                                int32_t count, int32_t wanted, int32_t* indices, double* totals) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair pair(illuminant, observer);
    NeedRange(wanted, 1, std::numeric_limits<int32_t>::max(), "wanted");
    const auto standardNumbers = Numbers(standards, standard_count, 3, "standards");
    const auto sampleNumbers = Numbers(samples, count, 3, "samples");
    const auto width = static_cast<std::size_t>(wanted);
    const auto indexPlace = Place(indices, count, width, "indices");
    const auto totalPlace = Place(totals, count, width, "totals");
    const api::Colors library(settings, pair, standardNumbers);
    const api::Colors trials(settings, pair, sampleNumbers);
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
  return Call([&] {
    const auto list = vrx::ColorIndices();
    NeedRange(index, 0, static_cast<int32_t>(list.size()) - 1, "index");
    const api::Pair pair(illuminant, observer);
    const auto form = recalculated != 0 ? vrx::IndexForm::kRecalculated : vrx::IndexForm::kDirect;
    const vrx::IndexFunction function = list[static_cast<std::size_t>(index)].Function(form);
    if (function == nullptr) throw Refusal{VRX_OUT_OF_RANGE, "the index has no such form"};
    const api::ConstRows3 in(Numbers(xyz, count, 3, "xyz"));
    vrx::IndexBatch(function, pair.illuminant, pair.observer, in, Place(values, count, 1, "values"),
                    api::Run());
  });
}

vrx_status VRX_CALL vrx_metamerism(const vrx_system* system, int32_t reference, int32_t test,
                                   int32_t observer, const double standard[40], const double trial[40],
                                   double* index) {
  return Call([&] {
    const vrx::CDifferenceSettings settings = api::Settings(system);
    const api::Pair first(reference, observer), second(test, observer);
    const vrx::CReflData a = api::CurveOf(standard, "standard"), b = api::CurveOf(trial, "trial");
    NeedPlace(index, "index");
    *index = vrx::MetamerismIndex(first.illuminant, second.illuminant, observer, a, b, settings);
  });
}

vrx_status VRX_CALL vrx_contrast_ratio(const double over_black[3], const double over_white[3],
                                       double* ratio) {
  return Call([&] {
    const vrx::CTrisValues black = api::TristimulusOf(over_black, "over_black");
    const vrx::CTrisValues white = api::TristimulusOf(over_white, "over_white");
    NeedPlace(ratio, "ratio");
    *ratio = vrx::ContrastRatio(black, white);
  });
}
