/* The C interface from C: published values, calls that are refused, and one hash over the results of everything, which is
 * the same on every platform. */
#include <stdlib.h>

#include "c_api_checks.h"

int failures;

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

/* Texts of every function that gives one, by number, in both encodings. */
enum { kTable, kName, kDescription, kSystem, kColumns, kIndex, kRecalculated, kWord };

#define DEFINE_GIVE(encoding, unit)                                                                               \
  static vrx_status give##encoding(int kind, int32_t number, unit* text, int32_t capacity, int32_t* length) {     \
    vrx_system system;                                                                                            \
    if (vrx_default_system(number, &system) != VRX_OK) system.number = number;                                    \
    switch (kind) {                                                                                               \
      case kTable: return vrx_text##encoding(number, text, capacity, length);                                     \
      case kName: return vrx_illuminant_name##encoding(number, VRX_OBSERVER_10, 1, text, capacity, length);       \
      case kDescription: return vrx_illuminant_name##encoding(number, VRX_OBSERVER_2, 7, text, capacity, length); \
      case kSystem: return vrx_system_name##encoding(&system, text, capacity, length);                            \
      case kColumns: return vrx_system_columns##encoding(number, text, capacity, length);                         \
      case kWord: return vrx_shade_word##encoding(number, text, capacity, length);                                \
      default: return vrx_index_name##encoding(number, kind == kRecalculated, text, capacity, length);            \
    }                                                                                                             \
  }
DEFINE_GIVE(, char)
DEFINE_GIVE(16, vrx_char16)

static void texts(void) {
  static const struct {
    int kind;
    int32_t number;
    const char* text;
  } rows[] = {{kTable, 256, "Index out of bounds in CArrayVarex"},
              {kName, VRX_ILLUM_D65, "D65/10\xC2\xB0"},
              {kDescription, VRX_ILLUM_CWF, "Cool White Fluorescent (F2)"},
              {kSystem, VRX_SYSTEM_LAB, "CIE L*a*b*"},
              {kSystem, VRX_SYSTEM_CMC, "CMC (L:C) = 2.00 : 1.00, cf = 1.00"},
              {kColumns, VRX_SYSTEM_LAB,
               "\xCE\x94L*|\xCE\x94"
               "a*|\xCE\x94"
               "b*|\xCE\x94"
               "C*|\xCE\x94H*|\xCE\x94"
               "E*ab"},
              {kIndex, 2, "Whiteness: CIE"},
              {kRecalculated, 2, "Whiteness: CIE (Recalc)"},
              {kWord, 0, ""},
              {kWord, 1, "Darker"},
              {kWord, 10, "Bluer"}};
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    char text[200] = "", small[200];
    vrx_char16 wide[200], wide_small[200];
    int32_t length = -1, wide_length = -1, needed = -1;
    OK(give(rows[i].kind, rows[i].number, text, 200, &length));
    OK(give16(rows[i].kind, rows[i].number, wide, 200, &wide_length));
    if (strcmp(text, rows[i].text) != 0) printf("%s\n", text), ++failures;
    CHECK((size_t)length == strlen(text) && wide[wide_length] == 0 && same_text(text, wide));
    memset(small, 'x', sizeof small), memset(wide_small, 'x', sizeof wide_small);
    CHECK(give(rows[i].kind, rows[i].number, small, length, &needed) == VRX_TOO_SMALL && needed == length);
    CHECK(give16(rows[i].kind, rows[i].number, wide_small, wide_length, &needed) == VRX_TOO_SMALL &&
          needed == wide_length);
    CHECK(small[0] == 'x' && wide_small[0] == wide_small[1]);
    OK(give(rows[i].kind, rows[i].number, small, length + 1, NULL));
    OK(give16(rows[i].kind, rows[i].number, wide_small, wide_length + 1, NULL));
    CHECK(strcmp(small, text) == 0 && small[length + 1] == 'x' && same_text(text, wide_small));
    CHECK(give(rows[i].kind, rows[i].number, NULL, 0, &needed) == VRX_TOO_SMALL && needed == length);
    CHECK(give(rows[i].kind, rows[i].number, NULL, 1, NULL) == VRX_NULL);
    CHECK(give16(rows[i].kind, rows[i].number, wide, -1, NULL) == VRX_BAD_COUNT);
    for (int32_t k = 0; k < 2; ++k) {
      const int32_t nobodys = k == 0 ? -1 : 39999;
      CHECK(give(rows[i].kind, nobodys, text, 200, &length) == VRX_OUT_OF_RANGE);
      CHECK(give16(rows[i].kind, nobodys, wide, 200, &length) == VRX_OUT_OF_RANGE);
    }
  }
  /* Every heading has its element, and every illuminant its position. */
  static const int32_t of_fmc2[5] = {0, 1, 2, 4, 6};
  int32_t elements[7], count = 0, seen = 0, place = 0;
  for (int32_t system = 0; system <= VRX_SYSTEM_DIN6175; ++system) {
    char columns[200];
    int32_t headings = 1;
    OK(vrx_system_elements(system, elements, &count));
    OK(vrx_system_columns(system, columns, 200, NULL));
    for (const char* at = columns; *at != 0; ++at) headings += *at == '|';
    CHECK(count == headings && elements[count - 1] == 6);
    if (system == VRX_SYSTEM_FMC2) CHECK(count == 5 && memcmp(elements, of_fmc2, sizeof of_fmc2) == 0);
  }
  OK(vrx_illuminant_count(&count));
  for (int32_t i = 0; i < count; ++i) {
    OK(vrx_illuminant_at(i, &place));
    CHECK(place >= 0 && place < count);
    seen |= 1 << place;
  }
  CHECK(count == 26 && seen == (1 << 26) - 1);
  const vrx_char16 code[] = {'c', 'W', 'f', 0};
  int32_t number = -1;
  OK(vrx_find_illuminant("d65", &number));
  CHECK(number == VRX_ILLUM_D65);
  OK(vrx_find_illuminant16(code, &number));
  CHECK(number == VRX_ILLUM_CWF);
}

/* A lamp of equal power has the white X = Y = Z = 100, which the 1931 functions keep to 0.04 and those of 1964 to 0.1. */
static void own_lamps(void) {
  double power[381], white[3], smooth[3], straight[3];
  char text[40];
  int32_t number = 0;
  fill(power, 381, 3.0);
  const vrx_char16 name16[] = {'E', '2', '|', 'E', 0};
  OK(vrx_register_illuminant(1003, "SHOP|Shop lighting", power, 61, 400, 5, 1));
  OK(vrx_register_illuminant16(1255, name16, power, 381, 380, 1, 0));
  OK(vrx_white_point(1255, VRX_OBSERVER_2, white));
  CHECK(near(white[0], 100, 0.04) && white[1] == 100 && near(white[2], 100, 0.04));
  OK(vrx_white_point(1255, VRX_OBSERVER_10, white));
  CHECK(near(white[0], 100, 0.1) && white[1] == 100 && near(white[2], 100, 0.1));
  OK(vrx_find_illuminant("shop", &number));
  CHECK(number == 1003);
  OK(vrx_illuminant_name(1003, VRX_OBSERVER_2, 4, text, sizeof text, NULL));
  CHECK(strcmp(text, "SHOP") == 0);
  OK(vrx_illuminant_name(1003, VRX_OBSERVER_2, 7, text, sizeof text, NULL));
  CHECK(strcmp(text, "Shop lighting") == 0);
  /* Straight lines between values 10 nm apart are the same as what they go through every nm; cubics are not. */
  double coarse[39];
  for (int i = 0; i < 39; ++i) coarse[i] = i % 3 == 0;
  for (int i = 0; i < 381; ++i)
    power[i] = i == 380 ? coarse[38] : coarse[i / 10] + (coarse[i / 10 + 1] - coarse[i / 10]) * (i % 10) / 10;
  OK(vrx_register_illuminant(1003, "SHOP", power, 381, 380, 1, 0));
  OK(vrx_white_point(1003, VRX_OBSERVER_2, white));
  OK(vrx_register_illuminant(1003, "SHOP", coarse, 39, 380, 10, 1));
  OK(vrx_white_point(1003, VRX_OBSERVER_2, straight));
  OK(vrx_register_illuminant(1003, "SHOP", coarse, 39, 380, 10, 0));
  OK(vrx_white_point(1003, VRX_OBSERVER_2, smooth));
  CHECK(near(straight[0], white[0], 1e-9) && !near(smooth[0], white[0], 1e-3));
  OK(vrx_remove_illuminant(1255));
  OK(vrx_remove_illuminant(1003));
  CHECK(vrx_remove_illuminant(1003) == VRX_OUT_OF_RANGE && vrx_remove_illuminant(2) == VRX_OUT_OF_RANGE);
  CHECK(vrx_white_point(1003, VRX_OBSERVER_2, white) == VRX_OUT_OF_RANGE);
}

/* There and back in every space; the white is L = 100 without colour; CIE 15 has x, y of D65 as 0.31272, 0.32903. */
static void colours(void) {
  double xyz[6] = {20, 30, 40, 0, 0, 0}, back[3], coordinates[5], xy[4], primaries[7], own[7];
  uint8_t rgb[6], displayable[2];
  OK(vrx_white_point(VRX_ILLUM_D65, VRX_OBSERVER_2, xyz + 3));
  for (int32_t space = VRX_SPACE_LAB; space <= VRX_SPACE_HUNTER; ++space) {
    OK(vrx_xyz_to_space(space, VRX_ILLUM_D65, VRX_OBSERVER_2, xyz, 1, coordinates));
    OK(vrx_space_to_xyz(space, VRX_ILLUM_D65, VRX_OBSERVER_2, coordinates, 1, back));
    for (int i = 0; i < 3; ++i) CHECK(near(back[i], xyz[i], 1e-9));
    OK(vrx_xyz_to_space(space, VRX_ILLUM_D65, VRX_OBSERVER_2, xyz + 3, 1, coordinates));
    CHECK(near(coordinates[0], 100, 1e-9) && near(coordinates[1], 0, 1e-9) && near(coordinates[2], 0, 1e-9));
  }
  OK(vrx_chromaticity(xyz, 2, xy));
  CHECK(near(xy[0], 20.0 / 90, 1e-12) && near(xy[1], 30.0 / 90, 1e-12));
  CHECK(near(xy[2], 0.31272, 1e-5) && near(xy[3], 0.32903, 1e-5));
  fill(back, 3, 0.0);
  OK(vrx_chromaticity(back, 1, xy));
  CHECK(xy[0] == VRX_UNSET && xy[1] == VRX_UNSET);

  const double purple[6] = {60, 10, 90, 1.002 * xyz[3], 1.002 * xyz[4], 1.002 * xyz[5]};
  OK(vrx_display_colors(VRX_ILLUM_D65, VRX_OBSERVER_2, purple, 2, rgb, displayable));
  CHECK(displayable[0] == 0 && displayable[1] == 1 && rgb[3] == 255 && rgb[4] == 255 && rgb[5] == 255);
  OK(vrx_get_display_primaries(primaries));
  CHECK(primaries[0] == 0.64 && primaries[1] == 0.33 && primaries[2] == 0.30 && primaries[5] == 0.06 &&
        primaries[6] == 2.2);
  memcpy(own, primaries, sizeof own);
  own[0] = 0.7;
  OK(vrx_set_display_primaries(own));
  OK(vrx_get_display_primaries(own));
  CHECK(own[0] == 0.7 && own[1] == 0.33);
  OK(vrx_set_display_primaries(NULL));
  OK(vrx_get_display_primaries(own));
  CHECK(memcmp(own, primaries, sizeof own) == 0);
}

/* Three greys in a library, and indices of the perfect white under D65. */
static void nearest_and_indices(void) {
  const double standards[9] = {9, 10, 11, 38, 40, 42, 57, 60, 63}, samples[6] = {38.1, 40, 42, 58, 61, 64};
  double totals[8], white[3], value;
  int32_t indices[8], count = 0, found = 0;
  vrx_system system;
  OK(vrx_default_system(VRX_SYSTEM_CMC, &system));
  CHECK(system.number == VRX_SYSTEM_CMC && system.own_formula == 0 && system.angle == 45);
  CHECK(system.parameters[0] == 2 && system.parameters[1] == 1 && system.parameters[2] == 1);
  OK(vrx_nearest(&system, VRX_ILLUM_D65, VRX_OBSERVER_10, standards, 3, samples, 2, 4, indices, totals));
  const int32_t expected[8] = {1, 2, 0, -1, 2, 1, 0, -1};
  CHECK(memcmp(indices, expected, sizeof indices) == 0);
  CHECK(totals[0] < totals[1] && totals[1] < totals[2] && totals[3] == VRX_UNSET && totals[4] < totals[5]);
  double delta[7];
  OK(vrx_differences(&system, VRX_ILLUM_D65, VRX_OBSERVER_10, standards + 6, samples, 1, delta));
  CHECK(totals[1] == delta[6]);

  OK(vrx_white_point(VRX_ILLUM_D65, VRX_OBSERVER_10, white));
  OK(vrx_index_count(&count));
  for (int32_t i = 0; i < count; ++i) {
    char name[80];
    if (vrx_index_name(i, 0, name, sizeof name, NULL) != VRX_OK) continue;
    const double known = strcmp(name, "Whiteness: CIE") == 0 ? 100 : strcmp(name, "Tint: CIE") == 0 ? 0 : -1;
    if (known < 0) continue;
    ++found;
    OK(vrx_indices(i, 0, VRX_ILLUM_D65, VRX_OBSERVER_10, white, 1, &value));
    CHECK(near(value, known, 0.05));
    OK(vrx_indices(i, 0, VRX_ILLUM_A, VRX_OBSERVER_10, white, 1, &value));
    CHECK(value == VRX_UNSET);
  }
  CHECK(found == 2);
  const double black[3] = {40, 45, 50}, over_white[3] = {80, 90, 100};
  OK(vrx_contrast_ratio(black, over_white, &value));
  CHECK(value == 0.5);
}

/* Greys of ISO 105-A02 and A03, densities of greys, 5R 5/10 of the renotation, and what follows by hand. */
static void figures(void) {
  const double grey[6] = {50, 0, 0, 50, 0, 0}, other[6] = {51.7, 0, 0, 54.3, 0, 0};
  double grades[2], curve[40], densities[4], value, notation[4], xyz[3];
  int32_t whole[2];
  OK(vrx_grades(VRX_SCALE_CHANGE, grey, other, 2, grades));
  CHECK(near(grades[0], 4.0, 1e-9));
  OK(vrx_grades(VRX_SCALE_STAINING, grey, other, 2, grades));
  CHECK(near(grades[1], 4.0, 0.04));
  for (int i = 0; i < 40; ++i) curve[i] = 10;
  OK(vrx_densities(VRX_DENSITY_E, curve, 1, densities));
  for (int i = 0; i < 4; ++i) CHECK(near(densities[i], 1.0, 1e-12));
  OK(vrx_tone_value(0, 0.30102999566398, 2, 1, &value));
  CHECK(near(value, 50 / 0.99, 1e-9));
  const double notations[3] = {5, 5, 10}, white[3] = {96.422, 100, 82.521},
               solid[3] = {12.05275, 12.5, 10.315125};
  OK(vrx_munsell_to_xyz(notations, 1, xyz));
  CHECK(near(xyz[0] / (xyz[0] + xyz[1] + xyz[2]), 0.4747, 1e-9));
  OK(vrx_munsell(xyz, 1, notation));
  CHECK(near(notation[0], 5, 1e-6) && near(notation[1], 5, 1e-6) && near(notation[2], 10, 1e-6) &&
        notation[3] == 0);
  OK(vrx_spot_tone_value(white, solid, solid, white, &value));
  CHECK(value == 100);
  const double totals[4] = {1.4, 0.2, 1.0, 0.6}, seen[4] = {1, 0, 1, 0};
  const int32_t accepted[4] = {0, 1, 0, 1};
  OK(vrx_fit_limit(totals, accepted, 4, &value, whole, whole + 1));
  CHECK(near(value, 0.8, 1e-12) && whole[0] == 0 && whole[1] == 0);
  OK(vrx_stress(seen, seen, 4, &value));
  CHECK(near(value, 0, 1e-5));
  OK(vrx_readings_needed(0.3, 5, 0.2, 0.95, whole));
  CHECK(whole[0] == 18);
}

static vrx_status dominant_of(const double* two, double* figures) {
  return vrx_dominant_wavelengths(VRX_ILLUM_D65, VRX_OBSERVER_2, two, 2, figures);
}
static vrx_status temperature_of(const double* two, double* figures) {
  return vrx_color_temperatures(two, 2, figures);
}
static vrx_status whiteness_of(const double* two, double* figures) {
  return vrx_ganz_griesser(NULL, two, 2, figures);
}

/* What has no chromaticity, unset or black, has no figure. A red of CIE 15's diagram, illuminant A as a light and as Planck's radiator, perfect whites and greys, an instrument that reads 98 %. */
static void single_figures(void) {
  const double red[3] = {0.54369557 / 0.32107944, 1, 0.13522499 / 0.32107944}, lamp[3] = {109.85, 100, 35.585};
  const double whites[9] = {94.811, 100, 107.304, 84, 87, 96, 83, 86, 101}, grey[3] = {18.962, 20, 21.461};
  double power[41], curves[120], low[120], factors[200], rendering[18], both[6], parameters[6], whiteness[3], tint[3];
  int32_t within[2];
  OK(vrx_dominant_wavelengths(VRX_ILLUM_D65, VRX_OBSERVER_2, red, 1, both));
  CHECK(near(both[0], 616, 0.6) && near(both[1], 0.6229, 1e-3));
  const double unset[6] = {VRX_UNSET, VRX_UNSET, VRX_UNSET, 0, 0, 0};
  vrx_status (*const ofColors[3])(const double*, double*) = {dominant_of, temperature_of, whiteness_of};
  for (int i = 0; i < 3; ++i) {
    OK(ofColors[i](unset, both));
    for (int k = 0; k < 4; ++k) CHECK(both[k] == VRX_UNSET);
  }
  OK(vrx_color_temperatures(lamp, 1, both));
  CHECK(near(both[0], 2855.5, 1) && near(both[1], 0, 2e-4));
  for (int i = 0; i < 41; ++i)
    power[i] = pow(560.0 / (380 + 10 * i), 5) / (exp(1.4388e7 / (2856.0 * (380 + 10 * i))) - 1);
  OK(vrx_color_rendering(power, 41, 380, 10, rendering));
  CHECK(near(rendering[0], 2856, 1) && rendering[2] < 1e-4 && near(rendering[3], 100, 0.1) && near(rendering[12], 100, 0.1));
  for (int i = 0; i < 120; ++i) curves[i] = 20 + i / 40 * 30, low[i] = 0.98 * curves[i];
  vrx_system system;
  OK(vrx_default_system(VRX_SYSTEM_CIE2000, &system));
  OK(vrx_inconstancies(&system, VRX_ILLUM_D65, VRX_ILLUM_A, VRX_OBSERVER_10, curves, 3, both));
  CHECK(both[0] < 0.02 && both[2] < 0.02);
  OK(vrx_cie_white(VRX_ILLUM_D65, VRX_OBSERVER_10, whites, 1, within));
  OK(vrx_cie_white(VRX_ILLUM_D65, VRX_OBSERVER_10, grey, 1, within + 1));
  CHECK(within[0] == 1 && within[1] == 0);
  OK(vrx_ganz_griesser(NULL, whites, 3, both));
  CHECK(near(both[0], 100, 0.3));
  for (int i = 0; i < 3; ++i) whiteness[i] = both[2 * i], tint[i] = both[2 * i + 1];
  OK(vrx_fit_ganz_griesser(whites, whiteness, tint, 3, parameters));
  CHECK(near(parameters[0], -1868.322, 1e-6) && near(parameters[4], 748.366, 1e-6));
  OK(vrx_fit_correction(curves, low, 3, VRX_TERM_SCALE, factors));
  CHECK(near(factors[1], 1 / 0.98 - 1, 1e-12) && factors[0] == 0);
  OK(vrx_correct_readings(factors, low, 3, low));
  CHECK(near(low[119], 80, 1e-9));
}

/* CIE 15: the trial's X, Y, Z under the test illuminant are scaled by what matches it to the standard under the reference. */
static void metamerism(void) {
  double curves[2][40], reference[2][3], test[2][3], corrected[3], delta[7], index;
  for (int i = 0; i < 40; ++i) curves[0][i] = 40.0, curves[1][i] = 36.0 + 0.2 * i;
  vrx_system system;
  OK(vrx_default_system(VRX_SYSTEM_LAB, &system));
  OK(vrx_tristimulus(VRX_ILLUM_D65, VRX_OBSERVER_10, curves[0], 2, reference[0]));
  OK(vrx_tristimulus(VRX_ILLUM_A, VRX_OBSERVER_10, curves[0], 2, test[0]));
  for (int i = 0; i < 3; ++i) corrected[i] = test[1][i] * (reference[0][i] / reference[1][i]);
  OK(vrx_differences(&system, VRX_ILLUM_A, VRX_OBSERVER_10, test[0], corrected, 1, delta));
  OK(vrx_metamerism(&system, VRX_ILLUM_D65, VRX_ILLUM_A, VRX_OBSERVER_10, curves[0], curves[1], &index));
  CHECK(delta[6] > 0.5 && near(index, delta[6], 1e-9));
  OK(vrx_metamerism(&system, VRX_ILLUM_D65, VRX_ILLUM_A, VRX_OBSERVER_10, curves[0], curves[0], &index));
  CHECK(index == 0);
}

/* Box: +1, -2 | +0.5, -1 | +3, -3 | total 2. Ellipsoid about (0.5, 0, 0): semi-axes 2 along L*, 3 along b* (90 degrees), 1
 * along a*, total 2. Warnings begin beyond half of each about its centre: beyond -1.25 and 0.25, -0.625 and 0.125, -1.5 and 1.5. */
static void tolerances(void) {
  const double box[7] = {1, 2, 0.5, 1, 3, 3, 2}, ellipse[9] = {0.5, 0, 0, 2, 3, 1, 90, 2, 1};
  static const struct {
    double d[4]; /* of L*, a*, b*, and the total */
    int32_t box, ellipse, total;
  } rows[] = {
      {{0.2, 0, 0, 0}, VRX_PASS, VRX_PASS, VRX_PASS},          {{0.6, 0, 0, 1.1}, VRX_WARNING, VRX_PASS, VRX_WARNING},
      {{1.1, 0, 0, 0}, VRX_FAIL, VRX_PASS, VRX_PASS},          {{-1.2, 0, 0, 0}, VRX_PASS, VRX_WARNING, VRX_PASS},
      {{-1.9, 0, 0, 2.1}, VRX_WARNING, VRX_FAIL, VRX_FAIL},    {{0.2, 0.6, 0, 0}, VRX_FAIL, VRX_WARNING, VRX_PASS},
      {{0.2, -0.9, 0, 0}, VRX_WARNING, VRX_WARNING, VRX_PASS}, {{0.2, 0, 1.4, 0}, VRX_PASS, VRX_PASS, VRX_PASS},
      {{0.2, 0, 2.9, 0}, VRX_WARNING, VRX_WARNING, VRX_PASS},  {{0.2, 0, -3.1, 0}, VRX_FAIL, VRX_FAIL, VRX_PASS},
  };
  enum { kRows = sizeof rows / sizeof rows[0] };
  double differences[kRows][7] = {{0}};
  int32_t verdicts[kRows], totals[kRows];
  for (int i = 0; i < kRows; ++i) {
    memcpy(differences[i], rows[i].d, 3 * sizeof(double));
    differences[i][6] = rows[i].d[3];
  }
  for (int by_ellipse = 0; by_ellipse < 2; ++by_ellipse) {
    if (by_ellipse)
      OK(vrx_judge_ellipses(ellipse, 0.5, differences[0], kRows, verdicts, totals));
    else
      OK(vrx_judge_boxes(box, 0.5, differences[0], kRows, verdicts, totals));
    for (int i = 0; i < kRows; ++i) {
      const int32_t expected = by_ellipse ? rows[i].ellipse : rows[i].box;
      if (verdicts[i] != expected || totals[i] != rows[i].total) {
        printf("%s %d: %d, total %d\n", by_ellipse ? "ellipse" : "box", i, (int)verdicts[i], (int)totals[i]);
        ++failures;
      }
    }
  }
  OK(vrx_judge_boxes(box, 0.5, differences[0], 1, verdicts, NULL));

  /* About a grey of L* = 50 the semi-axes of CMC(2:1) are 2 SL, SC, SC with SL = 0.040975 L / (1 + 0.01765 L), SC = 0.638. */
  double about[9];
  const double grey[3] = {50, 0, 0};
  vrx_system system;
  OK(vrx_default_system(VRX_SYSTEM_CMC, &system));
  system.parameters[2] = 1.5;
  OK(vrx_ellipse_about(&system, grey, about));
  CHECK(near(about[3], 1.5 * 2 * 0.040975 * 50 / (1 + 0.01765 * 50), 1e-9) && near(about[4], 1.5 * 0.638, 1e-9));
  CHECK(near(about[5], 1.5 * 0.638, 1e-9) && about[7] == 1.5 && about[8] == 1.5);

  /* Points on an ellipsoid: the ends of its axes and eight between them. */
  const double axes[3] = {1, 2, 0.5};
  double points[15][3] = {{0}}, fitted[9];
  for (int i = 0; i < 6; ++i) points[i][i / 2] = i % 2 ? axes[i / 2] : -axes[i / 2];
  for (int i = 0; i < 24; ++i) points[6 + i / 3][i % 3] = (i / 3 >> i % 3 & 1 ? 1 : -1) * axes[i % 3] / sqrt(3);
  fill(points[14], 3, 0.25); /* inside, where the smallest body cares for none */
  for (int32_t surface = 0; surface < 2; ++surface) {
    OK(vrx_fit_ellipse(points[0], surface ? 14 : 15, surface, 1, fitted));
    CHECK(near(fitted[3], 1, 1e-3) && near(fmod(fitted[6] + 1, 180), 1, 0.1));
    CHECK(near(fitted[4], 2, 2e-3) && near(fitted[5], 0.5, 1e-3));
  }
  for (int i = 0; i < 14; ++i) points[i][0] += 0.25;
  OK(vrx_fit_ellipse(points[0], 14, 0, 0, fitted));
  CHECK(near(fitted[0], 0.25, 1e-3) && near(fitted[3], 1, 1e-3));
  CHECK(vrx_fit_ellipse(points[0], 2, 0, 1, fitted) == VRX_REFUSED);

  const double lab[6] = {50, 20, -20, 50, -20, 20}, d[6] = {1, 2, -2, -1, 2, -2};
  const int32_t words[6] = {2, 3, 10, 1, 5, 8}; /* lighter, redder, bluer; darker, less green, less yellow */
  OK(vrx_shade_words(lab, d, 2, verdicts));
  CHECK(memcmp(verdicts, words, sizeof words) == 0);
}

/* 50 % has K/S = 0.25; twice as much, the reflectance 1.5 - sqrt(1.25), an absorbance of 0.417975. */
static void colorants_and_equations(void) {
  const double weak = 50, strong = 100 * (1.5 - sqrt(1.25));
  double ks[2], internal, measured, percents[2], standard[40], batches[80], curve[40];
  const double reflectances[2] = {weak, strong};
  OK(vrx_kubelka_munk(reflectances, 2, ks));
  CHECK(near(ks[0], 0.25, 1e-12) && near(ks[1], 0.5, 1e-12));
  OK(vrx_absorbance(reflectances, 2, ks));
  CHECK(near(ks[0], 0.30103, 1e-6) && near(ks[1], 0.417975, 1e-6));
  /* Saunderson with k1 = 0.04, k2 = 0.6 of R = 0.5: (R - k1) / (1 - k1 - (1 - R) k2) = 0.46 / 0.66; without the gloss in
   * the reading R / ((1 - k1) (1 - k2) + k2 R) = 0.5 / 0.684. */
  const double half = 0.5, expected[3] = {0.46 / 0.66, 0.5 / 0.684, 0.5};
  for (int32_t surface = VRX_SURFACE_INCLUDED; surface <= VRX_SURFACE_NONE; ++surface) {
    OK(vrx_to_internal(&half, 1, 0.04, 0.6, surface, &internal));
    CHECK(near(internal, expected[surface], 1e-12));
    OK(vrx_to_measured(&internal, 1, 0.04, 0.6, surface, &measured));
    CHECK(near(measured, 0.5, 1e-12));
  }
  fill(standard, 40, weak), fill(batches, 40, strong), fill(batches + 40, 40, weak);
  for (int32_t form = VRX_STRENGTH_APPARENT; form <= VRX_STRENGTH_LUMINOUS; ++form) {
    const vrx_strength_settings settings = {form, 0, 39, VRX_ILLUM_D65, VRX_OBSERVER_10, VRX_SURFACE_NONE, 0, 0};
    OK(vrx_strength(&settings, standard, batches, 2, percents));
    CHECK(near(percents[0], form == VRX_STRENGTH_ABSORBANCE ? 138.842 : 200, 0.01) && near(percents[1], 100, 1e-6));
  }

  /* K = 0.5, S = 0 in K = 0, S = 1: one part in one has K/S = 0.5, one part in two 0.25. */
  vrx_handle system;
  double K[40], S[40];
  const int32_t ids[2] = {1, 2};
  const double equal[2] = {3, 3}, less[2] = {4, 2};
  OK(vrx_colorants_open(VRX_MODEL_COATINGS, 0, 0, &system));
  fill(K, 40, 0), fill(S, 40, 1);
  OK(vrx_colorants_level(system, 1, VRX_CALIBRATION_WHITE, 1, K, S));
  CHECK(vrx_colorants_level(system, 1, VRX_CALIBRATION_WHITE, 1, K, S) == VRX_REFUSED);
  CHECK(vrx_colorants_level(system, 1, VRX_RESIN, 1, K, S) == VRX_REFUSED);
  OK(vrx_colorants_level(system, 2, VRX_COLORANT, 1, S, K));
  OK(vrx_predict(system, ids, equal, 2, curve));
  CHECK(near(curve[0], 100 * (2 - sqrt(3)), 1e-9) && curve[39] == curve[0]);
  OK(vrx_predict(system, ids, less, 2, curve));
  CHECK(near(curve[0], strong, 1e-9));
  OK(vrx_close(system));

  const double a[9] = {2, 1, 0, 0, 1, 4, 1, 0, 1}, b[3] = {4, 14, 4}; /* of x = 1, 2, 3 */
  const double singular[4] = {1, 2, 2, 4};
  double x[3];
  OK(vrx_solve(a, b, 3, x));
  CHECK(near(x[0], 1, 1e-12) && near(x[1], 2, 1e-12) && near(x[2], 3, 1e-12));
  CHECK(vrx_solve(singular, b, 2, x) == VRX_REFUSED);
  OK(vrx_solve(NULL, NULL, 0, NULL));
}

/* A colour system in the archive form: its surface has k1 = 0.04 and k2 = 0.6. Cut off anywhere or changed in any byte it
 * is refused. */
static void archives(void) {
  uint8_t bytes[] = {'V', 'R', 'X', 'S', 1,  0,  111, 8,   104, 242, 80, 0, 123, 20, 174, 71,  225, 122, 164,
                     63,  51,  51,  51,  51, 51, 51,  227, 63,  0,   0,  0, 0,   0,  0,   240, 63,  3,   0,
                     0,   0,   0,   0,   0,  0,  0,   0,   0,   0,   0,  0, 0,   0,  0,   0,   0,   0,   0,
                     0,   0,   0,   0,   0,  1,  0,   0,   0,   0,   1,  0, 0,   0,  0,   0,   0,   0,   0,
                     0,   0,   0,   0,   0,  0,  0,   0,   0,   0,   0,  0, 0,   0,  0,   0};
  const int32_t size = (int32_t)sizeof bytes, id = 1;
  const double one = 1;
  double K[40], S[40], curve[40];
  vrx_handle system = 7;
  for (int32_t i = 0; i < size; ++i) {
    CHECK(vrx_colorants_read(bytes, i, &system) == VRX_REFUSED);
    bytes[i] ^= 1;
    CHECK(vrx_colorants_read(bytes, size, &system) == VRX_REFUSED && system == 7);
    bytes[i] ^= 1;
  }
  OK(vrx_colorants_read(bytes, size, &system));
  fill(K, 40, 0.25), fill(S, 40, 1);
  OK(vrx_colorants_level(system, id, VRX_COLORANT, 1, K, S));
  OK(vrx_predict(system, &id, &one, 1, curve));
  CHECK(near(curve[0], 100 * (0.04 + 0.96 * 0.4 * 0.5 / (1 - 0.6 * 0.5)), 1e-9));
  const vrx_handle closed = system;
  OK(vrx_close(closed));
  OK(vrx_colorants_read(bytes, size, &system));
  CHECK(system != closed && vrx_close(closed) == VRX_BAD_HANDLE);
  OK(vrx_close(system));
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
  CHECK(words[0][0] == 0 && words[2][0] == 2 && words[3][0] == 2 && near(differences[3][0], 1.4014, 1e-3));
  OK(vrx_judgement_warning(judgement, 0.95));
  OK(vrx_judgement_trials(judgement, curves[1], 1, verdicts, NULL, NULL));
  CHECK(verdicts[0] == VRX_PASS && verdicts[1] == VRX_FAIL);
  /* Both are lighter by 1.4: inside an ellipsoid about 1, outside one about -1. */
  const double about[2][9] = {{1, 0, 0, 1, 1, 1, 0, 9, 1}, {-1, 0, 0, 1, 1, 1, 0, 9, 1}};
  for (int32_t i = 0; i < 2; ++i) OK(vrx_judgement_ellipse(judgement, i, about[i]));
  OK(vrx_judgement_trials(judgement, curves[1], 1, verdicts, NULL, NULL));
  CHECK(verdicts[0] == VRX_PASS && verdicts[1] == VRX_FAIL);
  OK(vrx_judgement_box(judgement, 0, narrow)); /* boxes again */
  OK(vrx_judgement_trials(judgement, curves[1], 1, verdicts, NULL, NULL));
  CHECK(verdicts[0] == VRX_FAIL);
  OK(vrx_close(judgement));
}

/* The same greys as standards of their own: each trial by its standard's limits, and why it failed. */
static void judging_by_several_standards(void) {
  double curves[2][40], breaches[2][2], values[2];
  for (int i = 0; i < 40; ++i) curves[0][i] = 40.0, curves[1][i] = 42.0;
  const double narrow[7] = {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 9}, wide[7] = {2, 2, 2, 2, 2, 2, 9};
  const int32_t d65 = VRX_ILLUM_D65, other[] = {1, 0}, geometries[] = {0, 0}, beyond[] = {0, 2};
  int32_t verdicts[2], broken[2];
  const vrx_outcome outcome = {sizeof(vrx_outcome), verdicts, NULL, NULL, NULL, NULL, values, broken, breaches[0]};
  vrx_system system;
  vrx_handle judgement;
  OK(vrx_default_system(VRX_SYSTEM_LAB, &system));
  OK(vrx_judgement_open(&system, &d65, 1, VRX_OBSERVER_10, &judgement));
  OK(vrx_judgement_standards(judgement, curves[0], geometries, 2));
  OK(vrx_judgement_box(judgement, 0, wide));
  OK(vrx_judgement_standard_box(judgement, 1, 0, narrow));
  OK(vrx_judgement_trials_of(judgement, curves[0], NULL, 2, &outcome));
  CHECK(verdicts[0] == VRX_PASS && verdicts[1] == VRX_PASS && broken[0] == VRX_BROKEN_NONE);
  OK(vrx_judgement_trials_of(judgement, curves[0], other, 2, &outcome));
  CHECK(verdicts[0] == VRX_FAIL && broken[0] == VRX_BROKEN_FIRST && verdicts[1] == VRX_PASS);
  CHECK(near(breaches[0][0], -1.4014, 1e-3) && breaches[0][1] == -0.5 && values[0] == VRX_UNSET);
  OK(vrx_judgement_rule(judgement, VRX_VERDICT_TOTAL));
  OK(vrx_judgement_trials_of(judgement, curves[0], other, 2, &outcome));
  CHECK(verdicts[0] == VRX_PASS);
  CHECK(vrx_judgement_trials_of(judgement, curves[0], beyond, 2, &outcome) == VRX_OUT_OF_RANGE);
  CHECK(vrx_judgement_trials_of(judgement, curves[0], NULL, 1, &outcome) == VRX_BAD_COUNT);
  CHECK(vrx_judgement_system_ellipses(judgement) == VRX_OUT_OF_RANGE);
  OK(vrx_close(judgement));
}

/* A grey grows lighter by two units, which is grade 4 on the scale of change (1.7 units), and a red that is its own standard
 * drifts from daylight to a bulb. */
static void judging_by_grade_and_inconstancy(void) {
  double grey[2][40], red[40], breaches[2][2];
  for (int i = 0; i < 40; ++i) grey[0][i] = 40.0, grey[1][i] = 42.0, red[i] = i < 24 ? 5.0 : 60.0;
  const double none[7] = {999, 999, 999, 999, 999, 999, 999};
  const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  int32_t verdicts[2], broken[2];
  const vrx_outcome outcome = {sizeof(vrx_outcome), verdicts, NULL, NULL, NULL, NULL, NULL, broken, breaches[0]};
  vrx_system system;
  vrx_handle judgement;
  OK(vrx_default_system(VRX_SYSTEM_CIE2000, &system));
  OK(vrx_judgement_open(&system, lamps, 2, VRX_OBSERVER_10, &judgement));
  OK(vrx_judgement_standard(judgement, grey[0]));
  OK(vrx_judgement_box(judgement, 0, none));
  OK(vrx_judgement_box(judgement, 1, none));
  OK(vrx_judgement_grade(judgement, VRX_SCALE_CHANGE, 4.0));
  OK(vrx_judgement_trials_of(judgement, grey[1], NULL, 1, &outcome));
  CHECK(verdicts[0] == VRX_PASS && broken[0] == VRX_BROKEN_NONE);
  OK(vrx_judgement_grade(judgement, VRX_SCALE_CHANGE, 4.5));
  OK(vrx_judgement_trials_of(judgement, grey[1], NULL, 1, &outcome));
  CHECK(verdicts[0] == VRX_FAIL && broken[0] == VRX_BROKEN_GRADE && breaches[0][0] == 4.0 && breaches[0][1] == 4.5);
  OK(vrx_judgement_grade(judgement, VRX_SCALE_CHANGE, 0.0));
  OK(vrx_judgement_standard(judgement, red));
  OK(vrx_judgement_inconstancy(judgement, 2.0));
  OK(vrx_judgement_trials_of(judgement, red, NULL, 1, &outcome));
  CHECK(verdicts[0] == VRX_PASS && verdicts[1] == VRX_FAIL && broken[1] == VRX_BROKEN_INCONSTANCY);
  CHECK(breaches[1][0] > 2.0 && breaches[1][1] == 2.0);
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
    if (values[i] == values[i])
      add_bytes(&values[i], sizeof values[i]);
    else
      add_bytes("NaN", 3);
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
    const vrx_strength_settings settings = {form, 4,  34, VRX_ILLUM_D65, VRX_OBSERVER_10, VRX_SURFACE_INCLUDED,
                                            0.04, 0.6};
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
  own_lamps();
  colours();
  nearest_and_indices();
  figures();
  single_figures();
  metamerism();
  tolerances();
  colorants_and_equations();
  refusals();
  arrow_columns();
  overlaps();
  files();
  recipes();
  archives();
  judging();
  judging_by_several_standards();
  judging_by_grade_and_inconstancy();
  same_bits_everywhere();
  if (failures == 0) printf("passed\n");
  return failures != 0;
}
