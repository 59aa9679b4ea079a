/* Every way in which arguments can be wrong: the status, the argument that the reason names, and the outputs as they were. */
#include "c_api_checks.h"

/* How many difference systems there are. */
static int32_t system_count(void) {
  vrx_system system;
  int32_t count = 0;
  while (vrx_default_system(count, &system) == VRX_OK) ++count;
  return count;
}

/* A number that is none is found at every place of three curves, and nothing is written. */
static void wrong_numbers(void) {
  const struct {
    double value;
    vrx_status status;
    const char* is;
  } rows[] = {{NAN, VRX_NOT_FINITE, "is not finite"},
              {-INFINITY, VRX_NOT_FINITE, "is not finite"},
              {-1e300, VRX_OUT_OF_RANGE, "is beyond"}};
  double curves[120], xyz[9];
  for (int i = 0; i < 120; ++i) curves[i] = 42.0;
  for (int place = 0; place < 120; ++place) {
    for (size_t row = 0; row < sizeof rows / sizeof *rows; ++row) {
      for (int i = 0; i < 9; ++i) xyz[i] = 7;
      curves[place] = rows[row].value;
      CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curves, 3, xyz) == rows[row].status);
      char reason[100], expected[100];
      OK(vrx_last_error(reason, sizeof reason, NULL));
      snprintf(expected, sizeof expected, "number %d of curves %s", place, rows[row].is);
      CHECK(strncmp(reason, expected, strlen(expected)) == 0);
      for (int i = 0; i < 9; ++i) CHECK(xyz[i] == 7);
    }
    curves[place] = 42.0;
  }
}

static void wrong_and_closed(void) {
  double curve[40], xyz[3] = {7, 7, 7};
  for (int i = 0; i < 40; ++i) curve[i] = 42.0;
  CHECK(vrx_tristimulus(26, 1, curve, 1, xyz) == VRX_OUT_OF_RANGE);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 2, curve, 1, xyz) == VRX_OUT_OF_RANGE);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, NULL, 1, xyz) == VRX_NULL);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curve, 1, NULL) == VRX_NULL);
  CHECK(vrx_tristimulus(VRX_ILLUM_D65, 1, curve, -1, xyz) == VRX_BAD_COUNT);
  OK(vrx_tristimulus(VRX_ILLUM_D65, 1, NULL, 0, NULL));

  vrx_system system;
  CHECK(vrx_default_system(system_count(), &system) == VRX_OUT_OF_RANGE);
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

/* What each function refuses, and the argument that it names. Nothing is written: every result stays 7. */
static void every_argument(void) {
  const int32_t d65 = VRX_ILLUM_D65, two = 2;
  double in[120], nan[120], out[123], factors[200];
  int32_t whole[123];
  uint8_t bytes[123];
  vrx_handle handle = 7;
  fill(in, 120, 0.5), fill(nan, 120, 0.5), fill(out, 123, 7);
  for (int i = 0; i < 123; ++i) whole[i] = bytes[i] = 7;
  nan[2] = NAN;
  vrx_system lab, cmc, wrong, nobodys, gepqs2;
  OK(vrx_default_system(VRX_SYSTEM_LAB, &lab));
  OK(vrx_default_system(VRX_SYSTEM_CMC, &cmc));
  OK(vrx_default_system(VRX_SYSTEM_GE_PQS2, &gepqs2));
  wrong = cmc, wrong.angle = NAN;
  nobodys = cmc, nobodys.number = system_count();
  int32_t lamps = 0, indices = 0;
  OK(vrx_illuminant_count(&lamps));
  OK(vrx_index_count(&indices));

  REFUSES(vrx_abi_version(NULL), VRX_NULL, "version");
  REFUSES(vrx_version(whole, NULL, whole), VRX_NULL, "minor");
  REFUSES(vrx_set_threads(-1), VRX_OUT_OF_RANGE, "threads is -1, not 0 to 1024");
  REFUSES(vrx_set_threads(1025), VRX_OUT_OF_RANGE, "threads");
  REFUSES(vrx_find_illuminant(NULL, whole), VRX_NULL, "code");
  REFUSES(vrx_illuminant_at(-1, whole), VRX_OUT_OF_RANGE, "position");
  REFUSES(vrx_illuminant_at(0, NULL), VRX_NULL, "illuminant");
  REFUSES(vrx_illuminant_count(NULL), VRX_NULL, "count");
  REFUSES(vrx_system_elements(system_count(), whole, whole + 7), VRX_OUT_OF_RANGE, "number");
  REFUSES(vrx_system_elements(1, whole, whole + 6), VRX_OVERLAP, "count");
  REFUSES(vrx_find_illuminant("D65", NULL), VRX_NULL, "illuminant");
  REFUSES(vrx_find_illuminant("D56", whole), VRX_OUT_OF_RANGE, "there is no illuminant D56");
  REFUSES(vrx_illuminant_name(d65, 1, 8, (char*)bytes, 99, whole), VRX_OUT_OF_RANGE, "style");
  REFUSES(vrx_white_point(-1, 1, out), VRX_OUT_OF_RANGE, "there is no illuminant -1");
  REFUSES(vrx_white_point(d65, -1, out), VRX_OUT_OF_RANGE, "observer");
  REFUSES(vrx_white_point(d65, 1, NULL), VRX_NULL, "xyz");
  REFUSES(vrx_weights(d65, 1, NULL), VRX_NULL, "table");
  REFUSES(vrx_register_illuminant(1000, NULL, in, 61, 400, 5, 0), VRX_NULL, "name");
  REFUSES(vrx_register_illuminant(1000, "X", NULL, 61, 400, 5, 0), VRX_NULL, "power");
  REFUSES(vrx_register_illuminant(1000, "X", nan, 61, 400, 5, 0), VRX_NOT_FINITE, "number 2 of power");
  REFUSES(vrx_register_illuminant(1000, "X", in, 61, 400, 5, 2), VRX_OUT_OF_RANGE, "straight");
  REFUSES(vrx_register_illuminant(999, "X", in, 61, 400, 5, 0), VRX_REFUSED, "1000 to 1255");
  REFUSES(vrx_register_illuminant(1000, "d65", in, 61, 400, 5, 0), VRX_REFUSED, "code");
  REFUSES(vrx_register_illuminant(1000, "X", in, 60, 400, 5, 0), VRX_REFUSED, "too few");
  REFUSES(vrx_register_illuminant(1000, "X", in, 61, 405, 5, 0), VRX_REFUSED, "must cover");
  REFUSES(vrx_register_illuminant(1000, "X", in, 61, 400, 2, 0), VRX_REFUSED, "every 1, 5 or 10 nm");
  REFUSES(vrx_remove_illuminant(999), VRX_OUT_OF_RANGE, "number");

  REFUSES(vrx_xyz_to_space(3, d65, 1, in, 1, out), VRX_OUT_OF_RANGE, "space");
  REFUSES(vrx_xyz_to_space(0, d65, 1, nan, 1, out), VRX_NOT_FINITE, "xyz");
  REFUSES(vrx_xyz_to_space(0, d65, 1, in, 1, NULL), VRX_NULL, "coordinates");
  REFUSES(vrx_space_to_xyz(-1, d65, 1, in, 1, out), VRX_OUT_OF_RANGE, "space");
  REFUSES(vrx_space_to_xyz(0, d65, 1, in, -1, out), VRX_BAD_COUNT, "negative");
  REFUSES(vrx_space_to_xyz(0, d65, 1, in, 1, NULL), VRX_NULL, "xyz");
  REFUSES(vrx_chromaticity(nan, 1, out), VRX_NOT_FINITE, "xyz");
  REFUSES(vrx_chromaticity(in, 1, NULL), VRX_NULL, "xy");
  REFUSES(vrx_display_colors(d65, 1, nan, 1, bytes, bytes + 3), VRX_NOT_FINITE, "xyz");
  REFUSES(vrx_display_colors(d65, 1, in, 1, NULL, bytes), VRX_NULL, "rgb");
  REFUSES(vrx_get_display_primaries(NULL), VRX_NULL, "primaries");
  REFUSES(vrx_set_display_primaries(nan), VRX_NOT_FINITE, "primaries");

  REFUSES(vrx_default_system(1, NULL), VRX_NULL, "system");
  REFUSES(vrx_differences(NULL, d65, 1, in, in, 1, out), VRX_NULL, "system");
  REFUSES(vrx_differences(&nobodys, d65, 1, in, in, 1, out), VRX_OUT_OF_RANGE, "the number of the system is");
  REFUSES(vrx_differences(&wrong, d65, 1, in, in, 1, out), VRX_NOT_FINITE, "angle");
  REFUSES(vrx_differences(&lab, d65, 1, nan, in, 1, out), VRX_NOT_FINITE, "standards");
  REFUSES(vrx_differences(&lab, d65, 1, in, nan, 1, out), VRX_NOT_FINITE, "samples");
  REFUSES(vrx_differences(&lab, d65, 1, in, in, 1, NULL), VRX_NULL, "differences");
  REFUSES(vrx_nearest(&lab, d65, 1, nan, 1, in, 1, 1, whole, out), VRX_NOT_FINITE, "standards");
  REFUSES(vrx_nearest(&lab, d65, 1, in, 1, nan, 1, 1, whole, out), VRX_NOT_FINITE, "samples");
  REFUSES(vrx_nearest(&lab, d65, 1, in, 1, in, 1, 0, whole, out), VRX_OUT_OF_RANGE, "wanted");
  REFUSES(vrx_nearest(&lab, d65, 1, in, 1, in, 1, 1, NULL, out), VRX_NULL, "indices");
  REFUSES(vrx_nearest(&lab, d65, 1, in, 1, in, 1, 1, whole, NULL), VRX_NULL, "totals");
  REFUSES(vrx_index_count(NULL), VRX_NULL, "count");
  REFUSES(vrx_indices(indices, 0, d65, 1, in, 1, out), VRX_OUT_OF_RANGE, "index is");
  REFUSES(vrx_indices(5, 1, d65, 1, in, 1, out), VRX_OUT_OF_RANGE, "no such form");
  REFUSES(vrx_index_name(5, 1, (char*)bytes, 99, whole), VRX_OUT_OF_RANGE, "no such form");
  REFUSES(vrx_indices(0, 0, d65, 1, in, 1, NULL), VRX_NULL, "values");
  REFUSES(vrx_grades(2, in, in, 1, out), VRX_OUT_OF_RANGE, "scale");
  REFUSES(vrx_grades(0, in, nan, 1, out), VRX_NOT_FINITE, "samples");
  REFUSES(vrx_densities(4, in, 1, out), VRX_OUT_OF_RANGE, "status");
  REFUSES(vrx_densities(0, nan, 1, out), VRX_NOT_FINITE, "curves");
  REFUSES(vrx_tone_value(1, 0.5, 1, 1, out), VRX_OUT_OF_RANGE, "no darker than the paper");
  REFUSES(vrx_tone_value(0, 0.5, 1, 0, out), VRX_OUT_OF_RANGE, "n is");
  REFUSES(vrx_tone_value(nan[2], 0.5, 1, 1, out), VRX_NOT_FINITE, "paper");
  REFUSES(vrx_tone_value(0.1, 0.5, 1.2, 0.5, out), VRX_OUT_OF_RANGE, "n is not 1 to 10");
  REFUSES(vrx_spot_tone_value(in, in, NULL, in, out), VRX_NULL, "solid");
  REFUSES(vrx_munsell(nan, 1, out), VRX_NOT_FINITE, "xyz");
  REFUSES(vrx_munsell_to_xyz(in, 1, NULL), VRX_NULL, "xyz");
  REFUSES(vrx_dominant_wavelengths(lamps, 1, in, 1, out), VRX_OUT_OF_RANGE, "there is no illuminant");
  REFUSES(vrx_color_temperatures(nan, 1, out), VRX_NOT_FINITE, "xyz");
  REFUSES(vrx_color_rendering(in, 40, 380, 7, out), VRX_OUT_OF_RANGE, "power: ");
  REFUSES(vrx_inconstancies(&lab, d65, 0, 1, nan, 1, out), VRX_NOT_FINITE, "curves");
  REFUSES(vrx_cie_white(d65, 1, in, 1, NULL), VRX_NULL, "within");
  REFUSES(vrx_ganz_griesser(nan, in, 1, out), VRX_NOT_FINITE, "parameters");
  REFUSES(vrx_fit_ganz_griesser(in, in, in, 2, out), VRX_REFUSED, "three standards");
  const double whites[9] = {84, 88, 92, 84, 87, 96, 83, 86, 101}, backwards[3] = {130, 90, 60}, upwards[3] = {60, 90, 130};
  const double untold[3] = {VRX_UNSET, VRX_UNSET, VRX_UNSET};
  REFUSES(vrx_fit_ganz_griesser(whites, backwards, NULL, 3, out), VRX_REFUSED, "whiteness does not grow");
  REFUSES(vrx_fit_ganz_griesser(whites, upwards, untold, 3, out), VRX_REFUSED, "tint: fewer than three");
  REFUSES(vrx_fit_correction(in, in, 1, 32, factors), VRX_OUT_OF_RANGE, "terms");
  REFUSES(vrx_fit_correction(in, in, 1, 1, factors), VRX_REFUSED, "too few tiles");
  double grays[160], swapped[160];
  for (int i = 0; i < 160; ++i) grays[i] = 10 + 20 * (i / 40), swapped[(i / 40 == 1 ? 80 : i / 40 == 2 ? 40 : i / 40 * 40) + i % 40] = grays[i];
  REFUSES(vrx_fit_correction(grays, grays, 3, VRX_TERM_ZERO + VRX_TERM_SCALE, factors), VRX_REFUSED, "too few tiles");
  REFUSES(vrx_fit_correction(grays, swapped, 4, VRX_TERM_SCALE, factors), VRX_REFUSED,
          "tile 1 looks like tile 2: corrected it is");
  REFUSES(vrx_correct_readings(NULL, in, 1, out), VRX_NULL, "factors");
  REFUSES(vrx_fit_limit(in, whole + 3, 1, out, whole, whole), VRX_OVERLAP, "wrongly_rejected");
  REFUSES(vrx_fit_limit(in, NULL, 1, out, whole, whole + 1), VRX_NULL, "accepted");
  const int32_t none[3] = {0, 0, 0};
  REFUSES(vrx_fit_limit(whites, none, 3, out, whole, whole + 1), VRX_REFUSED, "both are needed");
  REFUSES(vrx_inconstancies(&lab, d65, d65, 1, in, 1, out), VRX_OUT_OF_RANGE, "it is the reference");
  REFUSES(vrx_metamerism(&lab, d65, d65, 1, in, in, out), VRX_OUT_OF_RANGE, "it is the reference");
  REFUSES(vrx_stress(in, nan, 3, out), VRX_NOT_FINITE, "visual");
  REFUSES(vrx_readings_needed(0.3, 1, 0.2, 0.95, whole), VRX_OUT_OF_RANGE, "known");
  REFUSES(vrx_readings_needed(0.3, 5, 0.2, 1, whole), VRX_OUT_OF_RANGE, "certainty");
  REFUSES(vrx_readings_needed(1e6, 5, 1e-9, 0.95, whole), VRX_OUT_OF_RANGE, "1000 million");
  REFUSES(vrx_metamerism(&lab, lamps, d65, 1, in, in, out), VRX_OUT_OF_RANGE, "there is no illuminant");
  REFUSES(vrx_metamerism(&lab, d65, lamps + 1, 1, in, in, out), VRX_OUT_OF_RANGE, "there is no illuminant");
  REFUSES(vrx_metamerism(&lab, d65, 0, 1, nan, in, out), VRX_NOT_FINITE, "standard");
  REFUSES(vrx_metamerism(&lab, d65, 0, 1, in, nan, out), VRX_NOT_FINITE, "trial");
  REFUSES(vrx_metamerism(&lab, d65, 0, 1, in, in, NULL), VRX_NULL, "index");
  REFUSES(vrx_contrast_ratio(nan, in, out), VRX_NOT_FINITE, "over_black");
  REFUSES(vrx_contrast_ratio(in, NULL, out), VRX_NULL, "over_white");
  REFUSES(vrx_contrast_ratio(in, in, NULL), VRX_NULL, "ratio");

  REFUSES(vrx_judge_boxes(nan, 0.5, in, 1, whole, NULL), VRX_NOT_FINITE, "box");
  REFUSES(vrx_judge_boxes(in, 1.01, in, 1, whole, NULL), VRX_OUT_OF_RANGE, "warning factor");
  REFUSES(vrx_judge_boxes(in, NAN, in, 1, whole, NULL), VRX_NOT_FINITE, "warning factor");
  REFUSES(vrx_judge_boxes(in, 0.5, nan, 1, whole, NULL), VRX_NOT_FINITE, "differences");
  REFUSES(vrx_judge_boxes(in, 0.5, in, 1, NULL, whole), VRX_NULL, "verdicts");
  REFUSES(vrx_judge_ellipses(nan, 0.5, in, 1, whole, NULL), VRX_NOT_FINITE, "ellipse");
  REFUSES(vrx_judge_ellipses(in, -0.01, in, 1, whole, NULL), VRX_OUT_OF_RANGE, "warning factor");
  REFUSES(vrx_ellipse_about(&lab, in, out), VRX_OUT_OF_RANGE, "no ellipsoids");
  REFUSES(vrx_ellipse_about(&cmc, nan, out), VRX_NOT_FINITE, "lab");
  REFUSES(vrx_ellipse_about(&cmc, in, NULL), VRX_NULL, "ellipse");
  REFUSES(vrx_fit_ellipse(in, 9, 2, 0, out), VRX_OUT_OF_RANGE, "surface");
  REFUSES(vrx_fit_ellipse(in, 9, 0, 2, out), VRX_OUT_OF_RANGE, "at_standard");
  REFUSES(vrx_fit_ellipse(in, 9, 0, 0, NULL), VRX_NULL, "ellipse");
  REFUSES(vrx_shade_words(nan, in, 1, whole), VRX_NOT_FINITE, "lab");
  REFUSES(vrx_shade_words(in, nan, 1, whole), VRX_NOT_FINITE, "differences");
  REFUSES(vrx_shade_words(in, in, 1, NULL), VRX_NULL, "words");
  REFUSES(vrx_judgement_open(&lab, &d65, 0, 1, &handle), VRX_OUT_OF_RANGE, "count");
  REFUSES(vrx_judgement_open(&lab, &d65, 65, 1, &handle), VRX_OUT_OF_RANGE, "count is 65, not 1 to 64");
  REFUSES(vrx_judgement_open(&lab, NULL, 1, 1, &handle), VRX_NULL, "illuminants");
  REFUSES(vrx_judgement_open(&lab, &d65, 1, 1, NULL), VRX_NULL, "judgement");
  wrong.angle = 44;
  REFUSES(vrx_judgement_open(&wrong, &d65, 1, 1, &handle), VRX_OUT_OF_RANGE, "no geometry");

  REFUSES(vrx_kubelka_munk(nan, 3, out), VRX_NOT_FINITE, "reflectances");
  REFUSES(vrx_kubelka_munk(in, 3, NULL), VRX_NULL, "ks");
  REFUSES(vrx_absorbance(in, 3, NULL), VRX_NULL, "densities");
  REFUSES(vrx_to_internal(in, 1, 1.0, 0.6, 0, out), VRX_OUT_OF_RANGE, "k1");
  REFUSES(vrx_to_internal(in, 1, 0.04, -0.1, 0, out), VRX_OUT_OF_RANGE, "k2");
  REFUSES(vrx_to_measured(in, 1, 0.04, NAN, 0, out), VRX_NOT_FINITE, "k2");
  REFUSES(vrx_to_measured(in, 1, 0.04, 0.6, 3, out), VRX_OUT_OF_RANGE, "surface");
  const vrx_strength_settings form = {6, 0, 39, d65, 1, 0, 0, 0}, first = {0, 5, 4, d65, 1, 0, 0, 0},
                              last = {0, 0, 40, d65, 1, 0, 0, 0}, lamp = {3, 0, 39, lamps, 1, 0, 0, 0},
                              k2 = {0, 0, 39, d65, 1, 0, 0, 1}, good = {0, 0, 39, d65, 1, 0, 0, 0};
  REFUSES(vrx_strength(NULL, in, in, 1, out), VRX_NULL, "settings");
  REFUSES(vrx_strength(&form, in, in, 1, out), VRX_OUT_OF_RANGE, "form");
  REFUSES(vrx_strength(&first, in, in, 1, out), VRX_OUT_OF_RANGE, "first is 5, not 0 to 4");
  REFUSES(vrx_strength(&last, in, in, 1, out), VRX_OUT_OF_RANGE, "last");
  REFUSES(vrx_strength(&lamp, in, in, 1, out), VRX_OUT_OF_RANGE, "there is no illuminant");
  REFUSES(vrx_strength(&k2, in, in, 1, out), VRX_OUT_OF_RANGE, "k2");
  REFUSES(vrx_strength(&good, nan, in, 1, out), VRX_NOT_FINITE, "standard");
  REFUSES(vrx_strength(&good, in, nan, 1, out), VRX_NOT_FINITE, "batches");
  REFUSES(vrx_strength(&good, in, in, 1, NULL), VRX_NULL, "percents");
  REFUSES(vrx_colorants_open(-1, 0, 0, &handle), VRX_OUT_OF_RANGE, "model");
  REFUSES(vrx_colorants_open(0, 1, 0, &handle), VRX_OUT_OF_RANGE, "k1");
  REFUSES(vrx_colorants_open(0, 0, 0, NULL), VRX_NULL, "colorants");
  REFUSES(vrx_colorants_read(NULL, 3, &handle), VRX_NULL, "bytes");
  REFUSES(vrx_colorants_read(bytes, -1, &handle), VRX_BAD_COUNT, "count");
  REFUSES(vrx_colorants_read(NULL, 0, &handle), VRX_REFUSED, "archive");
  REFUSES(vrx_solve(in, in, 4097, out), VRX_OUT_OF_RANGE, "n is 4097, not 0 to 4096");
  REFUSES(vrx_solve(nan, in, 2, out), VRX_NOT_FINITE, "number 2 of a");
  REFUSES(vrx_solve(in, nan, 3, out), VRX_NOT_FINITE, "number 2 of b");
  REFUSES(vrx_solve(in, in, 2, NULL), VRX_NULL, "x");
  if (sizeof(size_t) == 4) REFUSES(vrx_kubelka_munk(in, INT32_MAX, out), VRX_BAD_COUNT, "larger than memory");
  CHECK(handle == 7);

  vrx_handle judgement, colorants;
  OK(vrx_judgement_open(&gepqs2, &d65, 1, 1, &judgement));
  OK(vrx_colorants_open(VRX_MODEL_COATINGS, 0, 0, &colorants));
  REFUSES(vrx_judgement_standard(judgement, nan), VRX_NOT_FINITE, "curve");
  REFUSES(vrx_judgement_box(judgement, 0, nan), VRX_NOT_FINITE, "box");
  REFUSES(vrx_judgement_ellipse(judgement, 1, in), VRX_OUT_OF_RANGE, "index is 1, not 0 to 0");
  REFUSES(vrx_judgement_ellipse(colorants, 0, in), VRX_BAD_HANDLE, "another kind");
  REFUSES(vrx_judgement_warning(judgement, 2), VRX_OUT_OF_RANGE, "factor");
  REFUSES(vrx_judgement_grade(judgement, 2, 4), VRX_OUT_OF_RANGE, "scale");
  REFUSES(vrx_judgement_grade(judgement, 0, 5.5), VRX_OUT_OF_RANGE, "least grade");
  REFUSES(vrx_judgement_grade(judgement, 0, 3.3), VRX_OUT_OF_RANGE, "half step");
  REFUSES(vrx_judgement_inconstancy(judgement, NAN), VRX_NOT_FINITE, "inconstancy");
  REFUSES(vrx_judgement_inconstancy(judgement, 1), VRX_REFUSED, "two illuminants");
  OK(vrx_judgement_standard(judgement, in));
  REFUSES(vrx_judgement_trials(judgement, nan, 1, whole, out, whole + 1), VRX_NOT_FINITE, "curves");
  REFUSES(vrx_judgement_trials(judgement, in, 1, NULL, out, whole), VRX_NULL, "verdicts");
  REFUSES(vrx_colorants_level(judgement, 1, 0, 1, in, in), VRX_BAD_HANDLE, "another kind");
  REFUSES(vrx_colorants_level(colorants, -1, 0, 1, in, in), VRX_OUT_OF_RANGE, "id");
  REFUSES(vrx_colorants_level(colorants, 1, 2, 1, in, in), VRX_OUT_OF_RANGE, "kind");
  REFUSES(vrx_colorants_level(colorants, 1, 0, 1.01, in, in), VRX_OUT_OF_RANGE, "concentration");
  REFUSES(vrx_colorants_level(colorants, 1, 0, 1, nan, in), VRX_NOT_FINITE, "absorption");
  REFUSES(vrx_colorants_level(colorants, 1, 0, 1, in, nan), VRX_NOT_FINITE, "scattering");
  REFUSES(vrx_predict(colorants, NULL, in, 1, out), VRX_NULL, "ids");
  REFUSES(vrx_predict(colorants, &two, nan, 3, out), VRX_NOT_FINITE, "amounts");
  REFUSES(vrx_predict(colorants, &two, in, 1, NULL), VRX_NULL, "curve");
  REFUSES(vrx_predict(colorants, &two, in, 65536, out), VRX_OUT_OF_RANGE, "count");
  OK(vrx_close(judgement));
  OK(vrx_close(colorants));
  for (int i = 0; i < 123; ++i) CHECK(out[i] == 7 && whole[i] == 7 && bytes[i] == 7);

  /* The reason is there until the next call that succeeds, in both encodings, and asking leaves it. */
  vrx_char16 wide[200];
  char text[200];
  int32_t length = -1;
  CHECK(vrx_set_threads(-1) == VRX_OUT_OF_RANGE);
  CHECK(vrx_last_error(text, 5, &length) == VRX_TOO_SMALL && length == 28);
  OK(vrx_last_error16(wide, 200, &length));
  OK(vrx_last_error(text, 200, NULL));
  CHECK(length == 28 && same_text(text, wide) && strcmp(text, "threads is -1, not 0 to 1024") == 0);
  OK(vrx_set_threads(1));
  OK(vrx_last_error(text, 200, &length));
  CHECK(length == 0 && text[0] == 0);
}

/* Finite numbers that make no sense, whose results would be NaN, or a verdict on nothing. */
static void senseless(void) {
  const int32_t d65 = VRX_ILLUM_D65;
  const double grey[3] = {20, 21, 22}, black[3] = {0, 0, 0}, difference[7] = {1, 1, 1, 1, 1, 1, 2};
  double curve[40], huge[40], out[40], limits[9], primaries[7];
  int32_t whole[40];
  uint8_t bytes[12];
  vrx_handle handle = 7, judgement, colorants;
  fill(curve, 40, 50), fill(huge, 40, 50), fill(out, 40, 7);
  for (int i = 0; i < 40; ++i) whole[i] = 7;
  huge[1] = -1.1e6;
  for (int32_t number = 0; number < system_count(); ++number) {
    static const int parameters[VRX_SYSTEM_DIN6175 + 1] = {[VRX_SYSTEM_CMC] = 3,
                                                           [VRX_SYSTEM_CIE94] = 4,
                                                           [VRX_SYSTEM_DIN99] = 2,
                                                           [VRX_SYSTEM_CIE2000] = 4,
                                                           [VRX_SYSTEM_DIN6175] = 3};
    vrx_system system;
    OK(vrx_default_system(number, &system));
    for (int i = 0; i < 4; ++i) {
      const double usual = system.parameters[i];
      for (int k = 0; k < 3; ++k) {
        system.parameters[i] = (double[]){0, -1, 1001}[k];
        const vrx_status status = vrx_differences(&system, d65, 1, grey, black, 1, out);
        CHECK(status == (number <= VRX_SYSTEM_DIN6175 && i < parameters[number] ? VRX_OUT_OF_RANGE : VRX_OK));
        CHECK(vrx_judgement_open(&system, &d65, 1, 1, &handle) == status);
        CHECK(vrx_metamerism(&system, d65, 0, 1, curve, curve, out) == status);
        if (status == VRX_OK) OK(vrx_close(handle));
        handle = 7, out[0] = 7;
      }
      system.parameters[i] = usual;
    }
    system.angle = 111;
    REFUSES(vrx_differences(&system, d65, 1, grey, grey, 1, out), VRX_OUT_OF_RANGE, "angle");
    system.angle = 45, system.own_formula = 2;
    REFUSES(vrx_differences(&system, d65, 1, grey, grey, 1, out), VRX_OUT_OF_RANGE, "own_formula");
  }
  fill(out, 40, 7);
  vrx_system lab;
  OK(vrx_default_system(VRX_SYSTEM_LAB, &lab));
  OK(vrx_judgement_open(&lab, &d65, 1, 1, &judgement));
  for (int i = 0; i < 7; ++i) {
    fill(limits, 7, 1), limits[i] = -1;
    REFUSES(vrx_judge_boxes(limits, 0.75, difference, 1, whole, NULL), VRX_OUT_OF_RANGE, "limit of the box");
    REFUSES(vrx_judgement_box(judgement, 0, limits), VRX_OUT_OF_RANGE, "limit of the box");
  }
  for (int i = 3; i < 9; ++i) {
    fill(limits, 9, 1), limits[i] = -0.1;
    const vrx_status expected = i == 6 ? VRX_OK : VRX_OUT_OF_RANGE; /* the angle may be negative */
    CHECK(vrx_judge_ellipses(limits, 0.75, difference, 1, whole + 39, NULL) == expected);
    CHECK(vrx_judgement_ellipse(judgement, 0, limits) == expected);
  }
  whole[39] = 7;
  REFUSES(vrx_judge_boxes(difference, 0.75, huge, 1, whole, NULL), VRX_OUT_OF_RANGE,
          "number 1 of differences is beyond");
  REFUSES(vrx_judgement_standard(judgement, huge), VRX_OUT_OF_RANGE, "curve");
  OK(vrx_judgement_standard(judgement, curve));
  REFUSES(vrx_judgement_trials(judgement, huge, 1, whole, NULL, NULL), VRX_OUT_OF_RANGE, "curves");
  REFUSES(vrx_tristimulus(d65, 1, huge, 1, out), VRX_OUT_OF_RANGE, "curves");
  REFUSES(vrx_indices(2, 2, d65, 1, grey, 1, out), VRX_OUT_OF_RANGE, "recalculated");
  REFUSES(vrx_index_name(2, -1, (char*)bytes, 12, NULL), VRX_OUT_OF_RANGE, "recalculated");
  REFUSES(vrx_contrast_ratio(grey, black, out), VRX_OUT_OF_RANGE, "over white");
  REFUSES(vrx_contrast_ratio(huge, grey, out), VRX_OUT_OF_RANGE, "over_black");
  fill(huge, 40, 0);
  REFUSES(vrx_metamerism(&lab, d65, 0, 1, curve, huge, out), VRX_REFUSED, "black");

  static const struct {
    int place;
    double value;
    const char* why;
  } screens[] = {{0, 3, "x of"}, {1, 0, "y of"}, {3, -0.1, "y of"}, {6, 0, "gamma"}, {6, 1e5, "gamma"}};
  for (size_t i = 0; i < sizeof screens / sizeof screens[0]; ++i) {
    OK(vrx_get_display_primaries(primaries));
    primaries[screens[i].place] = screens[i].value;
    REFUSES(vrx_set_display_primaries(primaries), VRX_OUT_OF_RANGE, screens[i].why);
  }
  OK(vrx_get_display_primaries(primaries)); /* blue half-way between red and green */
  primaries[4] = (primaries[0] + primaries[2]) / 2, primaries[5] = (primaries[1] + primaries[3]) / 2;
  REFUSES(vrx_set_display_primaries(primaries), VRX_OUT_OF_RANGE, "triangle");

  OK(vrx_colorants_open(VRX_MODEL_COATINGS, 0, 0, &colorants));
  curve[7] = -0.5;
  REFUSES(vrx_colorants_level(colorants, 1, 0, 1, curve, huge), VRX_OUT_OF_RANGE, "absorption");
  REFUSES(vrx_colorants_level(colorants, 1, 0, 1, huge, curve), VRX_OUT_OF_RANGE, "scattering");
  OK(vrx_close(judgement));
  OK(vrx_close(colorants));
  for (int i = 0; i < 40; ++i) CHECK(out[i] == 7 && whole[i] == 7);
}

void refusals(void) {
  wrong_numbers();
  wrong_and_closed();
  every_argument();
  senseless();
}
