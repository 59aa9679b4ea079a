// Calls the C interface as a careless host would: any numbers, counts, handles and null pointers, results written over
// what is read. A call that is refused has touched nothing. One that is not gives the results that it gives where every
// array has memory of its own, and no verdict passes on a difference that is not a number.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <span>
#include <vector>

#include <vrxmath/c_api.h>

namespace {

// Bytes as choices; 0 once there are no more.
class Choices {
 public:
  explicit Choices(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  uint8_t Byte() {
    if (bytes_.empty()) return 0;
    const uint8_t byte = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return byte;
  }
  int32_t Number() { return static_cast<int8_t>(Byte()); }
  // Usual numbers, and those that break formulas.
  double Real() {
    constexpr double kOdd[] = {0.0,
                               -0.0,
                               1e-5,
                               1e-300,
                               -1.0,
                               1e6,
                               1.1e6,
                               1e300,
                               std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()};
    const uint8_t byte = Byte();
    return byte >= 0xF0 ? kOdd[(byte - 0xF0U) % std::size(kOdd)] : byte / 2.5;
  }
  [[nodiscard]] std::span<const uint8_t> Rest() const { return bytes_; }

 private:
  std::span<const uint8_t> bytes_;
};

// The arguments that are no arrays of rows, the same in both calls.
struct Plain {
  int32_t numbers[5];
  double reals[9];
  vrx_system system;
  double curve[40];
  std::size_t handleChoice;
  vrx_handle handle;  // of this call
  int32_t count;
};

struct Arrays {
  const double* in[2];
  void* out[3];
};

// A function over rows: bytes a row of what it reads and writes, 0 for what it has not. An `out` may be null.
struct Function {
  std::size_t read[2], written[3];
  vrx_status (*call)(const Plain&, const Arrays&);
};

int32_t* Whole(void* place) {
  return static_cast<int32_t*>(place);
}
double* Real(void* place) {
  return static_cast<double*>(place);
}
uint8_t* Bytes(void* place) {
  return static_cast<uint8_t*>(place);
}

constexpr std::size_t kReal = sizeof(double), kWhole = sizeof(int32_t);

vrx_strength_settings StrengthSettings(const Plain& p) {
  return {p.numbers[0],     p.numbers[1],     p.numbers[2], p.numbers[3],
          p.numbers[4] & 1, p.numbers[4] / 2, p.reals[0],   p.reals[1]};
}

const Function kFunctions[] = {
    {{40 * kReal},
     {3 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_tristimulus(p.numbers[0], p.numbers[1], a.in[0], p.count, Real(a.out[0]));
     }},
    {{3 * kReal},
     {5 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_xyz_to_space(p.numbers[2], p.numbers[0], p.numbers[1], a.in[0], p.count, Real(a.out[0]));
     }},
    {{5 * kReal},
     {3 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_space_to_xyz(p.numbers[2], p.numbers[0], p.numbers[1], a.in[0], p.count, Real(a.out[0]));
     }},
    {{3 * kReal},
     {2 * kReal},
     [](const Plain& p, const Arrays& a) { return vrx_chromaticity(a.in[0], p.count, Real(a.out[0])); }},
    {{3 * kReal},
     {3, 1},
     [](const Plain& p, const Arrays& a) {
       return vrx_display_colors(p.numbers[0], p.numbers[1], a.in[0], p.count, Bytes(a.out[0]),
                                 Bytes(a.out[1]));
     }},
    {{3 * kReal, 3 * kReal},
     {7 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_differences(&p.system, p.numbers[0], p.numbers[1], a.in[0], a.in[1], p.count,
                              Real(a.out[0]));
     }},
    {{3 * kReal, 3 * kReal},
     {2 * kWhole, 2 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_nearest(&p.system, p.numbers[0], p.numbers[1], a.in[0], p.count, a.in[1], p.count, 2,
                          Whole(a.out[0]), Real(a.out[1]));
     }},
    {{3 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_indices(p.numbers[2], p.numbers[3], p.numbers[0], p.numbers[1], a.in[0], p.count,
                          Real(a.out[0]));
     }},
    {{7 * kReal},
     {kWhole, kWhole},
     [](const Plain& p, const Arrays& a) {
       return vrx_judge_boxes(p.reals, p.reals[7], a.in[0], p.count, Whole(a.out[0]), Whole(a.out[1]));
     }},
    {{7 * kReal},
     {kWhole, kWhole},
     [](const Plain& p, const Arrays& a) {
       return vrx_judge_ellipses(p.reals, p.reals[7], a.in[0], p.count, Whole(a.out[0]), Whole(a.out[1]));
     }},
    {{3 * kReal, 3 * kReal},
     {3 * kWhole},
     [](const Plain& p, const Arrays& a) {
       return vrx_shade_words(a.in[0], a.in[1], p.count, Whole(a.out[0]));
     }},
    {{3 * kReal, 3 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_grades(p.numbers[0], a.in[0], a.in[1], p.count, Real(a.out[0]));
     }},
    {{40 * kReal},
     {4 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_densities(p.numbers[0], a.in[0], p.count, Real(a.out[0]));
     }},
    {{3 * kReal},
     {4 * kReal},
     [](const Plain& p, const Arrays& a) { return vrx_munsell(a.in[0], p.count, Real(a.out[0])); }},
    {{3 * kReal},
     {3 * kReal},
     [](const Plain& p, const Arrays& a) { return vrx_munsell_to_xyz(a.in[0], p.count, Real(a.out[0])); }},
    {{3 * kReal},
     {2 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_dominant_wavelengths(p.numbers[0], p.numbers[1], a.in[0], p.count, Real(a.out[0]));
     }},
    {{3 * kReal},
     {2 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_color_temperatures(a.in[0], p.count, Real(a.out[0]));
     }},
    {{40 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_inconstancies(&p.system, p.numbers[0], p.numbers[1], p.numbers[2] & 1, a.in[0], p.count,
                                Real(a.out[0]));
     }},
    {{3 * kReal},
     {kWhole},
     [](const Plain& p, const Arrays& a) {
       return vrx_cie_white(p.numbers[0], p.numbers[1], a.in[0], p.count, Whole(a.out[0]));
     }},
    {{3 * kReal},
     {2 * kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_ganz_griesser(p.reals, a.in[0], p.count, Real(a.out[0]));
     }},
    {{40 * kReal},
     {40 * kReal},
     [](const Plain& p, const Arrays& a) {
       std::vector<double> factors(200, p.reals[0]);
       return vrx_correct_readings(factors.data(), a.in[0], p.count, Real(a.out[0]));
     }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) { return vrx_kubelka_munk(a.in[0], p.count, Real(a.out[0])); }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) { return vrx_absorbance(a.in[0], p.count, Real(a.out[0])); }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_to_internal(a.in[0], p.count, p.reals[0], p.reals[1], p.numbers[0], Real(a.out[0]));
     }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_to_measured(a.in[0], p.count, p.reals[0], p.reals[1], p.numbers[0], Real(a.out[0]));
     }},
    {{40 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       const vrx_strength_settings settings = StrengthSettings(p);
       return vrx_strength(&settings, p.curve, a.in[0], p.count, Real(a.out[0]));
     }},
    {{40 * kReal},
     {2 * kWhole, 14 * kReal, 6 * kWhole},
     [](const Plain& p, const Arrays& a) {
       const vrx_status status =
           vrx_judgement_trials(p.handle, a.in[0], p.count, Whole(a.out[0]), Real(a.out[1]), Whole(a.out[2]));
       for (int32_t i = 0; status == VRX_OK && a.out[1] != nullptr && i < 2 * p.count; ++i) {
         if (!std::isfinite(Real(a.out[1])[7 * i + 6]) && Whole(a.out[0])[i] != VRX_FAIL) std::abort();
       }
       return status;
     }},
    // One answer, whatever the count.
    {{9 * kReal},
     {9 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT : vrx_ellipse_about(&p.system, a.in[0], Real(a.out[0]));
     }},
    {{3 * kReal},
     {9 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_fit_ellipse(a.in[0], p.count, p.numbers[0], p.numbers[1], Real(a.out[0]));
     }},
    {{40 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_metamerism(&p.system, p.numbers[0], p.numbers[1], p.numbers[2] & 1, p.curve,
                                           a.in[0], Real(a.out[0]));
     }},
    {{3 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT : vrx_contrast_ratio(p.reals, a.in[0], Real(a.out[0]));
     }},
    {{3 * kReal, 3 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_spot_tone_value(p.reals, a.in[0], a.in[1], p.reals + 3, Real(a.out[0]));
     }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_tone_value(p.reals[0], p.reals[1], p.reals[2], p.reals[3], Real(a.out[0]));
     }},
    {{kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       const std::vector<int32_t> accepted(static_cast<std::size_t>(std::max(p.count, int32_t{1})),
                                           p.numbers[0] & 1);
       int32_t wronglyAccepted = 0, wronglyRejected = 0;  // no array is compared that others would lie in
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_fit_limit(a.in[0], accepted.data(), p.count, Real(a.out[0]), &wronglyAccepted,
                                          &wronglyRejected);
     }},
    {{kReal},
     {18 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_color_rendering(a.in[0], p.count, p.numbers[0], p.numbers[1], Real(a.out[0]));
     }},
    {{3 * kReal, 2 * kReal},
     {6 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1
                  ? VRX_BAD_COUNT
                  : vrx_fit_ganz_griesser(a.in[0], a.in[1], (p.numbers[0] & 1) != 0 ? a.in[1] : nullptr,
                                          p.count, Real(a.out[0]));
     }},
    {{40 * kReal, 40 * kReal},
     {200 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_fit_correction(a.in[0], a.in[1], p.count, p.numbers[0], Real(a.out[0]));
     }},
    {{kReal, kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT : vrx_stress(a.in[0], a.in[1], p.count, Real(a.out[0]));
     }},
    {{kReal},
     {kWhole},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1
                  ? VRX_BAD_COUNT
                  : vrx_readings_needed(p.reals[0], p.numbers[0], p.reals[1], p.reals[2], Whole(a.out[0]));
     }},
    {{7 * kReal},
     {7 * kReal},
     [](const Plain& p, const Arrays& a) {
       const vrx_status status = p.count < 1 ? VRX_BAD_COUNT : vrx_set_display_primaries(a.in[0]);
       if (status != VRX_OK) return status;
       (void)vrx_get_display_primaries(Real(a.out[0]));
       return vrx_set_display_primaries(nullptr);
     }},
    {{8 * kReal},
     {40 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1
                  ? VRX_BAD_COUNT
                  : vrx_predict(p.handle, p.numbers, a.in[0], std::min(p.count, int32_t{5}), Real(a.out[0]));
     }},
    {{40 * kReal, 40 * kReal},
     {},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1
                  ? VRX_BAD_COUNT
                  : vrx_colorants_level(p.handle, p.numbers[0], p.numbers[1], p.reals[0], a.in[0], a.in[1]);
     }},
    {{3 * kReal, 3 * kReal},
     {kReal},
     [](const Plain& p, const Arrays& a) {
       return vrx_solve(a.in[0], a.in[1], std::min(p.count, int32_t{3}), Real(a.out[0]));
     }},
    {{8 * kReal},
     {40 * kReal},
     [](const Plain& p, const Arrays& a) {
       return p.count < 1 ? VRX_BAD_COUNT
                          : vrx_predict_film(p.handle, p.numbers, a.in[0], std::min(p.count, int32_t{5}),
                                             p.numbers[4], p.curve, p.reals[0], Real(a.out[0]));
     }},
    {{40 * kReal, 40 * kReal},
     {},
     [](const Plain& p, const Arrays& a) -> vrx_status {
       // A calibration of its own: two components and any drawdowns of them.
       vrx_handle calibration = 0, colorants = 0;
       if (p.count < 1) return VRX_BAD_COUNT;
       const vrx_status opened = vrx_calibration_open(nullptr, 2, 1 + (p.numbers[0] & 1), &calibration);
       if (opened != VRX_OK) return opened;
       (void)vrx_calibration_opaque(calibration, p.reals, 1.0, a.in[0]);
       (void)vrx_calibration_opaque(calibration, p.reals + 1, p.reals[8], a.in[1]);
       (void)vrx_calibration_film(calibration, p.reals + 2, 1.0, a.in[0], a.in[1], p.curve, a.in[1]);
       const vrx_status status = vrx_calibrate(calibration, &colorants);
       if (status == VRX_OK) (void)vrx_close(colorants);
       (void)vrx_close(calibration);
       return status;
     }},
    {{40 * kReal, 40 * kReal},
     {40 * kReal, 40 * kReal, 40 * kReal},
     [](const Plain& p, const Arrays& a) {
       double white[40];
       std::fill_n(white, 40, p.reals[2]);
       // It knows one film: of several rows, an output may stand where another one's second row would.
       return p.count != 1 ? VRX_BAD_COUNT
                           : vrx_film_constants(a.in[0], a.in[1], p.curve, white, p.reals[0], p.reals[1],
                                                p.numbers[0], Real(a.out[0]), Real(a.out[1]), Real(a.out[2]));
     }},
};

constexpr std::size_t kArena = 16384;  // bytes: the most that a call takes is 200 numbers for each of 8 rows

// Handles of both kinds, one that is closed, and none.
struct Handles {
  static constexpr std::size_t kCount = 5;
  vrx_handle all[kCount] = {};

  Handles() {
    const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
    double white[40], clear[40];
    std::fill_n(white, 40, 1.0);
    std::fill_n(clear, 40, 0.1);
    vrx_system cmc;
    (void)vrx_default_system(VRX_SYSTEM_CMC, &cmc);
    (void)vrx_judgement_open(&cmc, lamps, 2, VRX_OBSERVER_10, &all[0]);
    (void)vrx_judgement_standard(all[0], white);
    (void)vrx_colorants_open(VRX_MODEL_COATINGS, 0.04, 0.6, &all[1]);
    (void)vrx_colorants_level(all[1], 0, VRX_CALIBRATION_WHITE, 1, clear, white);
    (void)vrx_colorants_level(all[1], 1, VRX_COLORANT, 1, white, clear);
    (void)vrx_colorants_open(VRX_MODEL_TEXTILES, 0, 0, &all[2]);
    (void)vrx_close(all[2]);
    all[3] = 77;
  }
  ~Handles() {
    (void)vrx_close(all[0]);
    (void)vrx_close(all[1]);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;
};

Plain ChoosePlain(Choices& choices) {
  Plain plain{};
  for (int32_t& number : plain.numbers) number = choices.Number();
  for (double& real : plain.reals) real = choices.Real();
  if (vrx_default_system(plain.numbers[4], &plain.system) != VRX_OK) plain.system.number = plain.numbers[4];
  if ((choices.Byte() & 1) != 0) plain.system.parameters[choices.Byte() % 4] = choices.Real();
  if ((choices.Byte() & 1) != 0) plain.system.angle = choices.Real();
  std::fill_n(plain.curve, 40, choices.Real());
  plain.handleChoice = choices.Byte() % Handles::kCount;
  plain.count = choices.Number() % 9;
  return plain;
}

// A place in the arena, which now and then is null.
std::byte* ChoosePlace(Choices& choices, std::span<double> arena, std::size_t size) {
  const std::size_t offset = choices.Byte();
  if (offset == 0xFF) return nullptr;
  const std::size_t last = (kArena - size) / kReal;
  return std::as_writable_bytes(arena.subspan(std::min(offset, last))).data();
}

std::size_t SizeOf(const Plain& plain, std::size_t width) {
  return width * static_cast<std::size_t>(std::max(plain.count, int32_t{0}));
}

// The same arrays, each in memory of its own: as much as it takes and no byte more.
struct Apart {
  std::vector<std::vector<double>> in;
  std::vector<std::vector<uint8_t>> out, before;
  Arrays arrays{};

  Apart(const Function& function, const Plain& plain, const Arrays& together) : in(2), out(3) {
    for (std::size_t i = 0; i < in.size(); ++i) {
      if (together.in[i] == nullptr) continue;
      in[i].assign(together.in[i], together.in[i] + SizeOf(plain, function.read[i]) / kReal);
      in[i].shrink_to_fit();
      arrays.in[i] = in[i].data();
    }
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (together.out[i] == nullptr) continue;
      const uint8_t* const place = Bytes(together.out[i]);
      out[i].assign(place, place + SizeOf(plain, function.written[i]));
      out[i].shrink_to_fit();
      arrays.out[i] = out[i].data();
    }
    before = out;
  }
};

// A call that finds the handles as they are at first.
vrx_status CallAfresh(const Function& function, Plain plain, const Arrays& arrays) {
  const Handles handles;
  plain.handle = handles.all[plain.handleChoice];
  return function.call(plain, arrays);
}

void Compare(const Function& function, const Plain& plain, const Arrays& together,
             std::span<const double> before, std::span<const double> arena) {
  Apart apart(function, plain, together);
  const vrx_status expected = CallAfresh(function, plain, apart.arrays);
  if (expected != VRX_OK && apart.out != apart.before) std::abort();
  const vrx_status status = CallAfresh(function, plain, together);
  if (status != VRX_OK) {
    if (std::memcmp(before.data(), arena.data(), kArena) != 0) std::abort();
    if (status != VRX_OVERLAP && status != expected) std::abort();
    return;
  }
  if (expected != VRX_OK) std::abort();
  for (std::size_t i = 0; i < apart.out.size(); ++i) {
    if (together.out[i] != nullptr && !apart.out[i].empty() &&
        std::memcmp(together.out[i], apart.out[i].data(), apart.out[i].size()) != 0)
      std::abort();
  }
}

// Texts into buffers that are too small or just right.
void AskForTexts(const Plain& plain) {
  char text[300];
  vrx_char16 wide[300];
  int32_t length = 0;
  (void)vrx_text(plain.numbers[0] + 256 * plain.numbers[1], text, plain.numbers[2], &length);
  (void)vrx_system_name(&plain.system, text, plain.numbers[2], &length);
  (void)vrx_illuminant_name16(plain.numbers[0], plain.numbers[1], plain.numbers[2], wide, plain.numbers[3],
                              &length);
  if (vrx_last_error(text, sizeof text, &length) == VRX_OK &&
      std::strlen(text) != static_cast<std::size_t>(length))
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Choices choices({data, size});
  const Function& function = kFunctions[choices.Byte() % std::size(kFunctions)];
  (void)vrx_set_threads(choices.Byte() % 4);
  const Plain plain = ChoosePlain(choices);
  std::vector<double> arena(kArena / kReal);
  Arrays together{};
  for (std::size_t i = 0; i < std::size(together.in); ++i)
    together.in[i] = reinterpret_cast<double*>(ChoosePlace(choices, arena, SizeOf(plain, function.read[i])));
  for (std::size_t i = 0; i < std::size(together.out); ++i) {
    if (function.written[i] > 0)
      together.out[i] = ChoosePlace(choices, arena, SizeOf(plain, function.written[i]));
  }
  vrx_handle read = 0;
  const std::span<const uint8_t> rest = choices.Rest();
  if (vrx_colorants_read(rest.data(), static_cast<int32_t>(rest.size()), &read) == VRX_OK)
    (void)vrx_close(read);
  for (std::size_t i = 0; i < arena.size(); ++i)
    arena[i] = rest.empty() ? 50.0 : Choices(rest.subspan(i % rest.size())).Real();
  const std::vector<double> before = arena;
  Compare(function, plain, together, before, arena);
  AskForTexts(plain);
  return 0;
}
