// The figures that laboratories report beside the difference: grades, densities and tone values, Munsell notation, limits from
// verdicts, repeated readings. Those of lamps, whites and instruments: single_figures.cpp.

#include <vector>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/colorimetry/density.h>
#include <vrxmath/colorimetry/munsell.h>
#include <vrxmath/tolerance/limit_fit.h>
#include <vrxmath/tolerance/repeated_readings.h>

#include "c_api/checks.h"

namespace vrx::c_api {
namespace {

Xyz XyzFrom(std::span<const double> numbers) {
  return {numbers[0], numbers[1], numbers[2]};
}

// L*, a*, b* with their chroma and hue.
std::vector<double> WithChromaAndHue(std::span<const double> lab) {
  const std::size_t count = lab.size() / 3;
  std::vector<double> rows(5 * count);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < 3; ++k) rows[5 * i + k] = lab[3 * i + k];
  }
  ChromaHueBatch(BatchView<double, 5>(std::span<double>(rows)));
  return rows;
}

bool IsUnsetLab(std::span<const double> lab) {
  return IsUnset(lab[0]) && IsUnset(lab[1]) && IsUnset(lab[2]);
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;
using api::Arrays;
using api::Call;
using api::NeedRange;
using api::NeedWithin;
using api::Refusal;

vrx_status VRX_CALL vrx_grades(int32_t scale, const double* standards, const double* samples, int32_t count,
                               double* grades) {
  return Call([&](Arrays& arrays) {
    NeedRange(scale, VRX_SCALE_CHANGE, VRX_SCALE_STAINING, "scale");
    const auto out = arrays.Place(grades, count, 1, "grades");
    const auto ofStandards = arrays.Numbers(standards, count, 3, "standards");
    const auto ofSamples = arrays.Numbers(samples, count, 3, "samples");
    const std::vector<double> first = api::WithChromaAndHue(ofStandards),
                              second = api::WithChromaAndHue(ofSamples);
    std::vector<double> found(out.size());
    vrx::GradeBatch(static_cast<vrx::GreyScale>(scale), vrx::BatchView<const double, 5>(first),
                    vrx::BatchView<const double, 5>(second), found, api::Run());
    for (std::size_t i = 0; i < found.size(); ++i) {
      const bool unset =
          api::IsUnsetLab(ofStandards.subspan(3 * i, 3)) || api::IsUnsetLab(ofSamples.subspan(3 * i, 3));
      out[i] = unset ? vrx::kUnset : found[i];
    }
  });
}

vrx_status VRX_CALL vrx_densities(int32_t status, const double* curves, int32_t count, double* densities) {
  return Call([&](Arrays& arrays) {
    NeedRange(status, VRX_DENSITY_A, VRX_DENSITY_T, "status");
    const auto out = arrays.Place(densities, count, 4, "densities");
    const auto in = arrays.Numbers(curves, count, 40, "curves");
    vrx::DensityBatch(static_cast<vrx::DensityStatus>(status), {in}, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_tone_value(double paper, double tint, double solid, double n, double* percent) {
  return Call([&](Arrays& arrays) {
    constexpr double kMostDensity = 20.0;
    double& out = arrays.Result(percent, "percent");
    NeedWithin(paper, -kMostDensity, kMostDensity, "paper");
    NeedWithin(tint, -kMostDensity, kMostDensity, "tint");
    NeedWithin(solid, -kMostDensity, kMostDensity, "solid");
    NeedWithin(n, 1.0, 10.0, "n");
    if (solid <= paper) throw Refusal{VRX_OUT_OF_RANGE, "the solid is no darker than the paper"};
    out = vrx::ToneValue(paper, tint, solid, n);
  });
}

vrx_status VRX_CALL vrx_spot_tone_value(const double paper[3], const double tint[3], const double solid[3],
                                        const double white[3], double* percent) {
  return Call([&](Arrays& arrays) {
    double& out = arrays.Result(percent, "percent");
    const vrx::Xyz first = api::XyzFrom(arrays.Numbers(paper, 1, 3, "paper"));
    const vrx::Xyz middle = api::XyzFrom(arrays.Numbers(tint, 1, 3, "tint"));
    const vrx::Xyz last = api::XyzFrom(arrays.Numbers(solid, 1, 3, "solid"));
    const auto ofWhite = arrays.Numbers(white, 1, 3, "white");
    for (const double number : ofWhite) NeedWithin(number, 1e-3, api::kLargestReading, "white");
    out = vrx::SpotColorToneValue(first, middle, last, {ofWhite[0], ofWhite[1], ofWhite[2]});
  });
}

vrx_status VRX_CALL vrx_munsell(const double* xyz, int32_t count, double* notations) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(notations, count, 4, "notations");
    const auto in = arrays.Numbers(xyz, count, 3, "xyz");
    vrx::MunsellBatch(in, out, api::Run());
  });
}

vrx_status VRX_CALL vrx_munsell_to_xyz(const double* notations, int32_t count, double* xyz) {
  return Call([&](Arrays& arrays) {
    const auto out = arrays.Place(xyz, count, 3, "xyz");
    const auto in = arrays.Numbers(notations, count, 3, "notations");
    for (std::size_t i = 0; i < out.size() / 3; ++i) {
      vrx::MunsellColor notation{in[3 * i], in[3 * i + 1], in[3 * i + 2]};
      const vrx::Xyz found = vrx::XyzFromMunsell(notation);
      out[3 * i] = found.X, out[3 * i + 1] = found.Y, out[3 * i + 2] = found.Z;
    }
  });
}

vrx_status VRX_CALL vrx_fit_limit(const double* totals, const int32_t* accepted, int32_t count, double* limit,
                                  int32_t* wrongly_accepted, int32_t* wrongly_rejected) {
  return Call([&](Arrays& arrays) {
    double& outLimit = arrays.Result(limit, "limit");
    int32_t &outAccepted = arrays.Result(wrongly_accepted, "wrongly_accepted"),
            &outRejected = arrays.Result(wrongly_rejected, "wrongly_rejected");
    const auto in = arrays.Numbers(totals, count, 1, "totals");
    for (const double total : in) NeedWithin(total, 0.0, api::kLargestReading, "totals");
    if (!in.empty()) api::NeedPlace(accepted, "accepted");
    std::vector<std::uint8_t> verdicts;
    for (std::size_t i = 0; i < in.size(); ++i) {
      NeedRange(accepted[i], 0, 1, "accepted");
      verdicts.push_back(static_cast<std::uint8_t>(accepted[i]));
    }
    if (!verdicts.empty() && !vrx::HasBothVerdicts(verdicts))
      throw Refusal{
          VRX_REFUSED,
          "accepted: a limit lies between what was accepted and what was rejected: both are needed"};
    const vrx::LimitFit fit = vrx::FitLimit(in, verdicts);
    outLimit = fit.limit;
    outAccepted = static_cast<int32_t>(fit.wronglyAccepted);
    outRejected = static_cast<int32_t>(fit.wronglyRejected);
  });
}

vrx_status VRX_CALL vrx_stress(const double* computed, const double* visual, int32_t count, double* percent) {
  return Call([&](Arrays& arrays) {
    double& out = arrays.Result(percent, "percent");
    const auto first = arrays.Numbers(computed, count, 1, "computed");
    out = vrx::Stress(first, arrays.Numbers(visual, count, 1, "visual"));
  });
}

vrx_status VRX_CALL vrx_readings_needed(double deviation, int32_t known, double within, double certainty,
                                        int32_t* readings) {
  return Call([&](Arrays& arrays) {
    int32_t& out = arrays.Result(readings, "readings");
    NeedWithin(deviation, 0.0, api::kLargestReading, "deviation");
    NeedRange(known, 2, 1'000'000'000, "known");
    NeedWithin(within, 1e-9, api::kLargestReading, "within");
    NeedWithin(certainty, 0.01, 0.9999, "certainty");
    const std::int64_t needed = vrx::ReadingsNeeded(deviation, known, within, certainty);
    if (needed == 0) throw Refusal{VRX_OUT_OF_RANGE, "more than 1000 million readings are needed"};
    out = static_cast<int32_t>(needed);
  });
}
