/* The C interface from C: published values, calls that are refused, and one hash over the results of everything, which is
 * the same on every platform. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vrxmath/c_api.h>

static int failures;

#define CHECK(condition)                                                            \
  do {                                                                              \
    if (!(condition)) {                                                             \
      char reason[200] = "";                                                        \
      vrx_last_error(reason, sizeof reason, NULL);                                  \
      printf("%s:%d: %s; \"%s\"\n", __FILE__, __LINE__, #condition, reason);        \
      ++failures;                                                                   \
    }                                                                               \
  } while (0)
#define OK(call) CHECK((call) == VRX_OK)

static int near(double a, double b, double tolerance) { return fabs(a - b) <= tolerance; }

/* CIE 15 white points, and pairs 1, 7 and 17 of Sharma, Wu and Dalal (2005) with their CIEDE2000 differences. */
static void published_values(void) {
  double white[3], xyz[2][3];
  OK(vrx_white_point(VRX_ILLUM_D65, VRX_OBSERVER_2, white));
  CHECK(white[0] == 95.047 && white[1] == 100.0 && white[2] == 108.883);
  static const double pairs[][7] = {{50, 2.6772, -79.7751, 50, 0, -82.7485, 2.0425},
                                    {50, 0, 0, 50, -1, 2, 2.3669},
                                    {50, 2.5, 0, 73, 25, -18, 27.1492}};
  vrx_system system;
  OK(vrx_default_system(VRX_SYSTEM_CIE2000, &system));
  for (size_t i = 0; i < sizeof pairs / sizeof pairs[0]; ++i) {
    const double lab[2][5] = {{pairs[i][0], pairs[i][1], pairs[i][2]}, {pairs[i][3], pairs[i][4], pairs[i][5]}};
    double difference[7];
    OK(vrx_space_to_xyz(VRX_SPACE_LAB, VRX_ILLUM_D65, VRX_OBSERVER_10, lab[0], 2, xyz[0]));
    OK(vrx_differences(&system, VRX_ILLUM_D65, VRX_OBSERVER_10, xyz[0], xyz[1], 1, difference));
    CHECK(near(difference[6], pairs[i][6], 1e-4));
  }
}

static void texts(void) {
  char text[64];
  vrx_char16 wide[64];
  int32_t length = -1, number = -1;
  OK(vrx_find_illuminant("d65", &number));
  CHECK(number == VRX_ILLUM_D65);
  OK(vrx_illuminant_name(number, VRX_OBSERVER_10, 1, text, sizeof text, &length));
  CHECK(strcmp(text, "D65/10\xC2\xB0") == 0 && length == 8);
  OK(vrx_illuminant_name16(number, VRX_OBSERVER_10, 1, wide, 64, &length));
  CHECK(length == 7 && wide[5] == '0' && wide[6] == 0xB0 && wide[7] == 0);
  memset(text, 'x', sizeof text);
  CHECK(vrx_illuminant_name(number, VRX_OBSERVER_10, 1, text, 8, &length) == VRX_TOO_SMALL);
  CHECK(text[0] == 'x' && length == 8);
  CHECK(vrx_text(256, NULL, 0, &length) == VRX_TOO_SMALL && length == 34);
  CHECK(vrx_text(0, text, sizeof text, NULL) == VRX_OUT_OF_RANGE);
}

/* Every way in which arguments can be wrong, with the outputs as they were. */
static void refusals(void) {
  double curve[40], xyz[3] = {7, 7, 7};
  for (int i = 0; i < 40; ++i) curve[i] = 42.0;
  CHECK(vrx_tristimulus(26, 1, curve, 1, xyz) == VRX_OUT_OF_RANGE);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 2, curve, 1, xyz) == VRX_OUT_OF_RANGE);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, NULL, 1, xyz) == VRX_NULL);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curve, 1, NULL) == VRX_NULL);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curve, -1, xyz) == VRX_BAD_COUNT);
  OK(vrx_tristimulus(VRX_ILLUM_D65, 1, NULL, 0, NULL));
  curve[39] = NAN;
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curve, 1, xyz) == VRX_NOT_FINITE);
  char reason[100];
  OK(vrx_last_error(reason, sizeof reason, NULL));
  CHECK(strcmp(reason, "number 39 of curves is not finite") == 0);
  CHECK(xyz[0] == 7 && xyz[1] == 7 && xyz[2] == 7);
  curve[39] = 42.0;

  vrx_system system;
  CHECK(vrx_default_system(13, &system) == VRX_OUT_OF_RANGE);
  OK(vrx_default_system(VRX_SYSTEM_CMC, &system));
  system.parameters[3] = INFINITY;
  const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  vrx_handle judgement = 0, colorants = 0;
  int32_t verdicts[2] = {7, 7};
  CHECK(vrx_judgement_open(&system, lamps, 2, 1, &judgement) == VRX_NOT_FINITE && judgement == 0);
  OK(vrx_default_system(VRX_SYSTEM_CMC, &system));
  OK(vrx_judgement_open(&system, lamps, 2, 1, &judgement));
  OK(vrx_colorants_open(VRX_MODEL_COATINGS, 0.04, 0.6, &colorants));
  CHECK(vrx_judgement_trials(judgement, curve, 1, verdicts, NULL, NULL) == VRX_REFUSED);
  CHECK(vrx_judgement_standard(colorants, curve) == VRX_BAD_HANDLE);
  CHECK(vrx_judgement_standard(judgement + 1000, curve) == VRX_BAD_HANDLE);
  CHECK(vrx_judgement_box(judgement, 2, curve) == VRX_OUT_OF_RANGE);
  OK(vrx_judgement_standard(judgement, curve));
  OK(vrx_close(judgement));
  CHECK(vrx_close(judgement) == VRX_BAD_HANDLE);
  CHECK(vrx_judgement_trials(judgement, curve, 1, verdicts, NULL, NULL) == VRX_BAD_HANDLE);
  CHECK(vrx_close(0) == VRX_BAD_HANDLE && vrx_close(-1) == VRX_BAD_HANDLE && verdicts[0] == 7);
  const int32_t id = 5;
  const double amount = 1;
  CHECK(vrx_predict(colorants, &id, &amount, 1, curve) == VRX_REFUSED && curve[0] == 42.0);
  CHECK(vrx_colorants_read((const uint8_t*)"VRXS", 4, &judgement) == VRX_REFUSED);
  OK(vrx_close(colorants));
}

/* From a curve to a verdict: greys of Y = 40 and 42, whose L* are 69.4695 and 70.8709; within a box of 1.5 and beyond one
 * of 0.5. */
static void judging(void) {
  double curves[2][40], differences[4][7];
  for (int i = 0; i < 40; ++i) curves[0][i] = 40.0, curves[1][i] = 42.0;
  const double narrow[7] = {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5};
  const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  vrx_system system;
  vrx_handle judgement;
  int32_t verdicts[4], words[4][3];
  OK(vrx_default_system(VRX_SYSTEM_LAB, &system));
  OK(vrx_judgement_open(&system, lamps, 2, VRX_OBSERVER_10, &judgement));
  OK(vrx_judgement_standard(judgement, curves[0]));
  OK(vrx_judgement_box(judgement, 1, narrow));
  OK(vrx_judgement_trials(judgement, curves[0], 2, verdicts, differences[0], words[0]));
  CHECK(verdicts[0] == VRX_PASS && verdicts[1] == VRX_PASS && verdicts[3] == VRX_FAIL);
  CHECK(verdicts[2] == VRX_WARNING && near(differences[2][0], 1.4014, 1e-3));
  CHECK(words[0][0] == 0 && words[2][0] == 2);
  OK(vrx_close(judgement));
}

/* ------------------------------------------------------------------------------------------------------------------ */

static uint64_t hash = 14695981039346656037u;

static void add_bytes(const void* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) hash = (hash ^ ((const uint8_t*)bytes)[i]) * 1099511628211u;
}
/* NaN is one value here: its sign and payload are the processor's. */
static void add(const double* values, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    if (values[i] == values[i]) add_bytes(&values[i], sizeof values[i]);
    else add_bytes("NaN", 3);
  }
}

static uint64_t state = 20010203;
static double draw(double low, double high) {
  state = state * 6364136223846793005u + 1442695040888963407u;
  return low + (high - low) * ((double)(state >> 11) / 9007199254740992.0);
}

enum { kPairs = 10000, kCurves = 200 };

static void add_colors(void) {
  double* standards = malloc(2 * 3 * kPairs * sizeof(double));
  double* results = malloc(7 * kPairs * sizeof(double));
  uint8_t* rgb = malloc(4 * kPairs);
  double* samples = standards + 3 * kPairs;
  int32_t count = 0;
  for (int i = 0; i < 3 * kPairs; ++i) standards[i] = draw(0.0, 105.0), samples[i] = standards[i] * draw(0.9, 1.1);
  for (int32_t space = 0; space <= VRX_SPACE_HUNTER; ++space) {
    OK(vrx_xyz_to_space(space, VRX_ILLUM_A, VRX_OBSERVER_2, standards, kPairs, results));
    add(results, 5 * kPairs);
  }
  for (int32_t number = 0; number <= VRX_SYSTEM_DIN6175; ++number) {
    vrx_system system;
    OK(vrx_default_system(number, &system));
    for (system.own_formula = 0; system.own_formula < 2; ++system.own_formula) {
      OK(vrx_differences(&system, VRX_ILLUM_D65, VRX_OBSERVER_10, standards, samples, kPairs, results));
      add(results, 7 * kPairs);
    }
  }
  OK(vrx_index_count(&count));
  for (int32_t i = 0; i < 2 * count; ++i) {
    for (int32_t lamp = VRX_ILLUM_C; lamp <= VRX_ILLUM_D65; ++lamp) {
      if (vrx_indices(i / 2, i % 2, lamp, VRX_OBSERVER_2, standards, kPairs, results) == VRX_OK) add(results, kPairs);
    }
  }
  OK(vrx_display_colors(VRX_ILLUM_D65, VRX_OBSERVER_10, standards, kPairs, rgb, rgb + 3 * kPairs));
  add_bytes(rgb, 4 * kPairs);
  free(standards), free(results), free(rgb);
}

static void add_colorants(void) {
  static double curves[40 * kCurves], results[40 * kCurves];
  for (int i = 0; i < 40 * kCurves; ++i) curves[i] = draw(1.0, 95.0);
  for (int32_t form = 0; form <= VRX_STRENGTH_TRISTIMULUS; ++form) {
    const vrx_strength_settings settings = {form, 4, 34, VRX_ILLUM_D65, VRX_OBSERVER_10, VRX_SURFACE_INCLUDED, 0.04, 0.6};
    OK(vrx_strength(&settings, curves, curves + 40, kCurves - 1, results));
    add(results, kCurves - 1);
  }
  vrx_handle colorants;
  OK(vrx_colorants_open(VRX_MODEL_COATINGS, 0.04, 0.6, &colorants));
  for (int32_t id = 0; id < 10; ++id) {
    OK(vrx_colorants_level(colorants, id, VRX_COLORANT, 1.0, curves + 40 * id, curves + 40 * (id + 10)));
  }
  for (int32_t id = 0; id + 3 < 10; ++id) {
    const int32_t ids[3] = {id, id + 1, id + 3};
    const double amounts[3] = {draw(0, 9), draw(0, 9), draw(0, 9)};
    OK(vrx_predict(colorants, ids, amounts, 3, results));
    add(results, 40);
  }
  OK(vrx_close(colorants));
  OK(vrx_solve(curves, curves + 40 * 100, 40, results));
  add(results, 40);
}

static void same_bits_everywhere(void) {
  double table[123];
  for (int32_t i = 0; i < 52; ++i) {
    OK(vrx_weights(i / 2, i % 2, table));
    add(table, 123);
  }
  add_colors();
  add_colorants();
  printf("results: %016llx\n", (unsigned long long)hash);
  CHECK(hash == 0x9f24d8b1aee90a4cu);
}

int main(void) {
  int32_t version = 0;
  OK(vrx_abi_version(&version));
  CHECK(version == VRX_ABI_VERSION);
  published_values();
  texts();
  refusals();
  judging();
  same_bits_everywhere();
  if (failures == 0) printf("passed\n");
  return failures != 0;
}
