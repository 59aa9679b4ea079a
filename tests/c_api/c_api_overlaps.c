/* Results written over the numbers that they come from: they are what they are in a place of their own, at every count of
 * threads, whichever way the two overlap. Two places of results that share memory are refused. */
#include <stdlib.h>

#include "c_api_checks.h"

enum { kRows = 5000, kWidest = 40, kSlack = 64 };

static vrx_system cmc;

static vrx_status lab(const double* in, void* out) {
  return vrx_xyz_to_space(VRX_SPACE_LAB, VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status back(const double* in, void* out) {
  return vrx_space_to_xyz(VRX_SPACE_LAB, VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status tristimulus(const double* in, void* out) {
  return vrx_tristimulus(VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status chromaticity(const double* in, void* out) {
  return vrx_chromaticity(in, kRows, out);
}
static vrx_status display(const double* in, void* out) {
  return vrx_display_colors(VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out, NULL);
}
static vrx_status differences(const double* in, void* out) {
  return vrx_differences(&cmc, VRX_ILLUM_D65, VRX_OBSERVER_10, in, in + 3, kRows, out);
}
static vrx_status nearest(const double* in, void* out) {
  static int32_t indices[kRows];
  return vrx_nearest(&cmc, VRX_ILLUM_D65, VRX_OBSERVER_10, in, 30, in, kRows, 1, indices, out);
}
static vrx_status whiteness(const double* in, void* out) {
  return vrx_indices(2, 0, VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status grades(const double* in, void* out) {
  return vrx_grades(VRX_SCALE_CHANGE, in, in + 3, kRows, out);
}
static vrx_status densities(const double* in, void* out) {
  return vrx_densities(VRX_DENSITY_T, in, kRows, out);
}
static vrx_status munsell(const double* in, void* out) {
  return vrx_munsell(in, kRows, out);
}
static vrx_status munsell_back(const double* in, void* out) {
  return vrx_munsell_to_xyz(in, kRows, out);
}
static vrx_status dominant(const double* in, void* out) {
  return vrx_dominant_wavelengths(VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status inconstancy(const double* in, void* out) {
  return vrx_inconstancies(&cmc, VRX_ILLUM_D65, VRX_ILLUM_A, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status ganz_griesser(const double* in, void* out) {
  return vrx_ganz_griesser(in + 6, in, kRows, out);
}
static vrx_status cie_white(const double* in, void* out) {
  return vrx_cie_white(VRX_ILLUM_D65, VRX_OBSERVER_10, in, kRows, out);
}
static vrx_status correct_readings(const double* in, void* out) {
  return vrx_correct_readings(in + 3, in, kRows, out);
}
static vrx_status boxes(const double* in, void* out) {
  static const double box[7] = {40, 40, 60, 60, 60, 60, 70};
  return vrx_judge_boxes(box, 0.75, in, kRows, out, NULL);
}
static vrx_status words(const double* in, void* out) {
  return vrx_shade_words(in, in + 3, kRows, out);
}
static vrx_status ks(const double* in, void* out) {
  return vrx_kubelka_munk(in, kRows, out);
}
static vrx_status absorbance(const double* in, void* out) {
  return vrx_absorbance(in, kRows, out);
}
static vrx_status internal(const double* in, void* out) {
  return vrx_to_internal(in, kRows, 0.04, 0.6, VRX_SURFACE_INCLUDED, out);
}
static vrx_status strength(const double* in, void* out) {
  static const vrx_strength_settings settings = {VRX_STRENGTH_APPARENT, 0, 39, 0, 0, VRX_SURFACE_NONE, 0, 0};
  return vrx_strength(&settings, in, in, kRows, out);
}

static void written_over(void) {
  static const struct {
    const char* name;
    vrx_status (*call)(const double* in, void* out);
    size_t read, written; /* bytes a row */
  } rows[] = {{"xyz_to_space", lab, 24, 40},
              {"space_to_xyz", back, 40, 24},
              {"tristimulus", tristimulus, 320, 24},
              {"chromaticity", chromaticity, 24, 16},
              {"display_colors", display, 24, 3},
              {"differences", differences, 24, 56},
              {"nearest", nearest, 24, 8},
              {"indices", whiteness, 24, 8},
              {"grades", grades, 24, 8},
              {"densities", densities, 320, 32},
              {"munsell", munsell, 24, 32},
              {"munsell_to_xyz", munsell_back, 24, 24},
              {"dominant_wavelengths", dominant, 24, 16},
              {"inconstancies", inconstancy, 320, 8},
              {"ganz_griesser", ganz_griesser, 24, 16},
              {"cie_white", cie_white, 24, 4},
              {"correct_readings", correct_readings, 320, 320},
              {"judge_boxes", boxes, 56, 4},
              {"shade_words", words, 24, 12},
              {"kubelka_munk", ks, 8, 8},
              {"absorbance", absorbance, 8, 8},
              {"to_internal", internal, 8, 8},
              {"strength", strength, 320, 8}};
  const size_t numbers = (size_t)kRows * kWidest + 2 * kSlack;
  double* readings = malloc(numbers * sizeof(double));
  double* arena = malloc(2 * numbers * sizeof(double));
  uint8_t* expected = malloc(numbers * sizeof(double));
  uint32_t state = 7;
  for (size_t i = 0; i < numbers; ++i) {
    state = state * 1664525u + 1013904223u;
    readings[i] = 1.0 + (state >> 8) * (90.0 / (1 << 24));
  }
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    const size_t size = kRows * rows[i].written;
    OK(vrx_set_threads(1));
    OK(rows[i].call(readings, expected));
    for (int32_t threads = 1; threads <= 4; threads += 3) {
      OK(vrx_set_threads(threads));
      /* At the very place, one number before and after it, and with its end in the middle of what is read. */
      for (int k = 0; k < 4; ++k) {
        double* in = arena + numbers / 2;
        double* out = k < 3 ? in + k - 1 : in + kRows * rows[i].read / 16 - size / 8;
        memcpy(in, readings, numbers * sizeof(double));
        OK(rows[i].call(in, out));
        if (memcmp(out, expected, size) != 0) printf("%s, %d: differs\n", rows[i].name, k), ++failures;
      }
    }
  }
  OK(vrx_set_threads(1));
  free(readings), free(arena), free(expected);
}

static void over_one_another(void) {
  static const double box[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1}, one[7] = {0.5, 0.5, 0.5, 0, 0, 0, 0.5};
  double place[16];
  int32_t* whole = (int32_t*)place;
  fill(place, 16, 7);
  REFUSES(vrx_version(whole, whole + 1, whole), VRX_OVERLAP, "patch shares memory");
  REFUSES(vrx_judge_boxes(box, 0.75, one, 1, whole, whole), VRX_OVERLAP, "totals");
  REFUSES(vrx_judge_ellipses(box, 0.75, one, 1, whole, whole), VRX_OVERLAP, "totals");
  REFUSES(vrx_nearest(&cmc, 2, 1, one, 2, one, 2, 2, whole + 6, place), VRX_OVERLAP, "totals");
  REFUSES(vrx_display_colors(2, 1, one, 1, (uint8_t*)place, (uint8_t*)place + 2), VRX_OVERLAP, "displayable");
  REFUSES(vrx_text(256, (char*)place, 100, whole + 3), VRX_OVERLAP, "length");
  for (int i = 0; i < 16; ++i) CHECK(place[i] == 7);
  OK(vrx_display_colors(2, 1, one, 1, (uint8_t*)place, (uint8_t*)place + 3));
}

void overlaps(void) {
  OK(vrx_default_system(VRX_SYSTEM_CMC, &cmc));
  written_over();
  over_one_another();
}
