/* Recipes and corrections: a colour that is made of two paints is found again, and a batch that lacks one of them gets it. */
#include <string.h>

#include "c_api_checks.h"

static int32_t calls, goes_on = 1;
static int32_t VRX_CALL count_calls(double part, void* context) {
  if (part < 0 || part > 1) ++failures;
  ++calls;
  return *(int32_t*)context;
}

static vrx_handle paints, search;
static int32_t ids[3];
static double target[40], batch[40];

static void matches(void) {
  int32_t found = 0, lines[6], kind;
  double amounts[6], differences[2], curve[40], black[40], white[40], share[2] = {0, 0};
  vrx_recipe_summary summary = {0};
  summary.size = sizeof summary;
  OK(vrx_search_watch(search, count_calls, &goes_on));
  OK(vrx_search_match(search, target, &found));
  CHECK(found >= 1 && found <= 3 && calls > 0);
  OK(vrx_search_summarize(search, 0, &summary));
  CHECK(summary.within_tolerance == 1 && summary.lines == 2 && summary.worst < 0.01 &&
        near(summary.total, 100, 1e-9));
  CHECK(summary.opacity == VRX_UNSET && summary.cost == 0 && summary.inconstancy > 0);
  OK(vrx_search_amounts(search, 0, 6, lines, amounts));
  for (int i = 0; i < 2; ++i) share[lines[i] == ids[0] ? 0 : 1] = amounts[i];
  CHECK(near(share[0], 95, 0.05) && near(share[1], 5, 0.05));
  OK(vrx_search_result(search, 0, differences, curve));
  for (int i = 0; i < 2; ++i) CHECK(differences[i] <= summary.worst);
  for (int i = 4; i < 35; ++i) CHECK(near(curve[i], target[i], 0.02));
  REFUSES(vrx_search_amounts(search, 0, 1, lines, amounts), VRX_OUT_OF_RANGE, "count");
  REFUSES(vrx_search_summarize(search, -1, &summary), VRX_OUT_OF_RANGE, "index");
  REFUSES(vrx_search_result(search, found, NULL, curve), VRX_OUT_OF_RANGE, "index");
  /* With a price, a limit and backings. */
  fill(black, 40, 3), fill(white, 40, 85);
  OK(vrx_search_component(search, ids[0], VRX_USE_REQUIRED, 0, 1, 2.0));
  OK(vrx_search_component(search, ids[1], VRX_USE_REQUIRED, 0, 1, 10.0));
  OK(vrx_search_opacity(search, white, black, 1e3, 90));
  REFUSES(vrx_search_match(search, target, &found), VRX_REFUSED,
          "vrx_search_opacity: the black backing is not darker than the white one");
  OK(vrx_search_opacity(search, black, white, 1e3, 90));
  OK(vrx_search_match(search, target, &found));
  OK(vrx_search_summarize(search, 0, &summary));
  CHECK(near(summary.cost, 95 * 2 + 5 * 10, 0.5) && summary.opacity > 99);
  OK(vrx_search_component(search, ids[1], VRX_USE_REQUIRED, 0.5, 1, 10.0));
  OK(vrx_search_match(search, target, &found));
  OK(vrx_search_summarize(search, 0, &summary));
  CHECK(summary.within_tolerance == 0 && summary.worst > 1);
  OK(vrx_search_component(search, ids[1], VRX_USE_OFFERED, 0, 1, 0));
  const double lab[3] = {60, 5, -5};
  OK(vrx_search_match_lab(search, lab, &found));
  CHECK(found >= 1);
  /* Stopped, or asked for what cannot be: what was found before is still there. */
  kind = found, goes_on = 0;
  REFUSES(vrx_search_match(search, target, &found), VRX_REFUSED, "stopped");
  goes_on = 1;
  for (int i = 0; i < 3; ++i) OK(vrx_search_component(search, ids[i], VRX_USE_REQUIRED, 0, 1, 0));
  REFUSES(vrx_search_match(search, target, &found), VRX_REFUSED,
          "VRX_USE_REQUIRED asks for, or that is more than most_colorants");
  for (int i = 0; i < 3; ++i) OK(vrx_search_component(search, ids[i], VRX_USE_OFFERED, 0, 1, 0));
  CHECK(found == kind);
  REFUSES(vrx_search_component(search, 9999, 0, 0, 1, 0), VRX_OUT_OF_RANGE, "no component 9999");
  REFUSES(vrx_search_component(search, 1, 3, 0, 1, 0), VRX_OUT_OF_RANGE, "use");
  REFUSES(vrx_search_component(search, 1, 0, 0.5, 0.4, 0), VRX_OUT_OF_RANGE, "most");
  REFUSES(vrx_search_component(search, -1, 0, 0, 1, 0), VRX_OUT_OF_RANGE, "component -1");
}

static void corrections(void) {
  const double amounts[2] = {97, 3};
  int32_t found = 0;
  double curve[40];
  vrx_recipe_summary before = {0}, after = {0};
  before.size = after.size = sizeof before;
  OK(vrx_search_correct(search, ids, amounts, 2, batch, target, &found));
  OK(vrx_search_summarize(search, -1, &before));
  OK(vrx_search_summarize(search, 0, &after));
  CHECK(found >= 1 && before.within_tolerance == 0 && before.lines == 0 && after.within_tolerance == 1);
  CHECK(after.worst < before.worst && after.total > 0 && after.total < 20);
  OK(vrx_search_result(search, 0, NULL, curve));
  REFUSES(vrx_search_correct(search, ids, amounts, 0, batch, target, &found), VRX_REFUSED, "formula");
}

/* Drawdowns that known paints predict give K and S that predict the same, and what is wrong with others is said. */
static void calibrations(void) {
  static const double shares[5][2] = {{1, 0}, {0, 1}, {0.9, 0.1}, {0.5, 0.5}, {0.97, 0.03}};
  const double mixed[2] = {80, 20}, nothing[2] = {0, 0}, wrong[2] = {1, NAN};
  const int32_t own[2] = {1, 2};
  double curve[40], again[40];
  int32_t length = 0, count = 0;
  static char text[40000];
  vrx_handle calibration, system;
  vrx_calibration_settings settings = {0};
  vrx_drawdown_fit fit = {0};
  settings.size = sizeof settings, fit.size = sizeof fit;
  OK(vrx_usual_calibration_settings(&settings));
  CHECK(settings.k1 == 0.04 && settings.k2 == 0.6 && settings.leave_one_out == 1);
  settings.surface = VRX_SURFACE_NONE;
  OK(vrx_calibration_open(&settings, 2, 1, &calibration));
  OK(vrx_calibration_component(calibration, 1, VRX_COLORANT, "white"));
  OK(vrx_calibration_component(calibration, 2, VRX_COLORANT, "blue"));
  for (int i = 0; i < 5; ++i) {
    OK(vrx_predict_film(paints, ids, shares[i], 2, VRX_SURFACE_NONE, NULL, 0, curve));
    OK(vrx_calibration_opaque(calibration, shares[i], 1, curve));
  }
  REFUSES(vrx_calibration_fit(calibration, 0, &fit), VRX_OUT_OF_RANGE, "drawdown");
  OK(vrx_calibrate(calibration, &system));
  OK(vrx_calibration_fit(calibration, 3, &fit));
  CHECK(fit.delta_e < 0.01 && fit.leave_one_out < 0.05 && fit.is_film == 0 && fit.thickness == VRX_UNSET);
  OK(vrx_predict_film(paints, ids, mixed, 2, VRX_SURFACE_NONE, NULL, 0, curve));
  OK(vrx_predict_film(system, own, mixed, 2, VRX_SURFACE_NONE, NULL, 0, again));
  for (int i = 4; i < 35; ++i) CHECK(near(again[i], curve[i], 0.01));
  OK(vrx_colorants_text(system, text, sizeof text, &length));
  CHECK(length > 1000 && strstr(text, "\"blue\"") != NULL);
  OK(vrx_colorants_count(system, &count));
  CHECK(count == 2);
  OK(vrx_close(system));
  REFUSES(vrx_calibration_component(calibration, 3, VRX_COLORANT, "x"), VRX_OUT_OF_RANGE, "id");
  REFUSES(vrx_calibration_component(calibration, 1, VRX_CALIBRATION_WHITE, "x"), VRX_OUT_OF_RANGE, "kind");
  REFUSES(vrx_calibration_opaque(calibration, nothing, 1, curve), VRX_OUT_OF_RANGE, "all shares are 0");
  REFUSES(vrx_calibration_opaque(calibration, wrong, 1, curve), VRX_NOT_FINITE, "shares");
  REFUSES(vrx_calibration_opaque(calibration, mixed, 0, curve), VRX_OUT_OF_RANGE, "weight");
  OK(vrx_calibration_film(calibration, mixed, 1, curve, curve, curve, curve));
  REFUSES(vrx_calibrate(calibration, &system), VRX_REFUSED, "drawdown 5 has a black card that is not darker");
  REFUSES(vrx_calibrate(paints, &system), VRX_BAD_HANDLE, "another kind");
  OK(vrx_close(calibration));
  settings.model = 99;
  REFUSES(vrx_calibration_open(&settings, 2, 1, &calibration), VRX_OUT_OF_RANGE, "model");
  REFUSES(vrx_calibration_open(NULL, 2, 3, &calibration), VRX_OUT_OF_RANGE, "white");
  OK(vrx_calibration_open(NULL, 2, 1, &calibration));
  REFUSES(vrx_calibrate(calibration, &system), VRX_REFUSED, "no drawdown has the white");
  OK(vrx_close(calibration));
}

/* The cheapest is refused until something that may be used has a cost. */
static void costs(const vrx_system* system, vrx_recipe_settings settings) {
  const double amounts[2] = {97, 3};
  const int32_t lamp = VRX_ILLUM_D65;
  int32_t found = 7;
  settings.order = VRX_ORDER_COST, settings.aim = VRX_AIM_CHEAPEST;
  OK(vrx_search_open(paints, system, &lamp, 1, VRX_OBSERVER_10, &settings, &search));
  REFUSES(vrx_search_match(search, target, &found), VRX_REFUSED,
          "VRX_ORDER_COST: no component has a cost; give costs in vrx_search_component");
  OK(vrx_search_component(search, ids[0], VRX_USE_EXCLUDED, 0, 1, 2.0));
  REFUSES(vrx_search_correct(search, ids, amounts, 2, batch, target, &found), VRX_REFUSED,
          "VRX_AIM_CHEAPEST: no component");
  CHECK(found == 7);
  OK(vrx_search_component(search, ids[0], VRX_USE_OFFERED, 0, 1, 2.0));
  OK(vrx_search_match(search, target, &found));
  OK(vrx_search_correct(search, ids, amounts, 2, batch, target, &found));
  OK(vrx_close(search));
}

/* Paints that are calibrated from three drawdowns with that surface. */
static void calibrate_with(int32_t surface, vrx_handle* calibrated) {
  const double shares[3][2] = {{1, 0}, {0, 1}, {0.8, 0.2}};
  double curve[40];
  vrx_handle calibration;
  vrx_calibration_settings settings = {0};
  settings.size = sizeof settings;
  OK(vrx_usual_calibration_settings(&settings));
  settings.surface = surface, settings.leave_one_out = 0;
  OK(vrx_calibration_open(&settings, 2, 1, &calibration));
  for (int i = 0; i < 3; ++i) {
    OK(vrx_predict_film(paints, ids, shares[i], 2, surface, NULL, 0, curve));
    OK(vrx_calibration_opaque(calibration, shares[i], 1, curve));
  }
  OK(vrx_calibrate(calibration, calibrated));
  OK(vrx_close(calibration));
}

/* A system that says how its curves were measured takes no others: a surface that is not in the curve gives another recipe. */
static void surfaces(const vrx_system* system) {
  const double amounts[2] = {80, 20};
  const int32_t own[2] = {1, 2}, lamp = VRX_ILLUM_D65;
  int32_t found;
  double curve[40], again[40];
  vrx_handle included, excluded, closed = 7;
  vrx_recipe_settings recipe = {0};
  recipe.size = sizeof recipe;
  OK(vrx_usual_recipe_settings(&recipe));
  calibrate_with(VRX_SURFACE_EXCLUDED, &excluded);
  OK(vrx_predict_film(excluded, own, amounts, 2, VRX_SURFACE_EXCLUDED, NULL, 0, curve));
  OK(vrx_predict(excluded, own, amounts, 2, again));
  CHECK(memcmp(curve, again, sizeof curve) == 0);
  const char* const why =
      "surface: the system was calibrated on curves with the surface excluded, not included";
  REFUSES(vrx_predict_film(excluded, own, amounts, 2, VRX_SURFACE_INCLUDED, NULL, 0, curve), VRX_REFUSED,
          why);
  REFUSES(vrx_search_open(excluded, system, &lamp, 1, VRX_OBSERVER_10, &recipe, &closed), VRX_REFUSED, why);
  CHECK(closed == 7);
  OK(vrx_search_open(excluded, system, &lamp, 1, VRX_OBSERVER_10, NULL, &closed));
  OK(vrx_close(closed));
  recipe.surface = VRX_SURFACE_EXCLUDED;
  OK(vrx_search_open(excluded, system, &lamp, 1, VRX_OBSERVER_10, &recipe, &closed));
  OK(vrx_close(closed));
  OK(vrx_close(excluded));
  /* What the system rules out is no way to take a curve that is darker than its surface. */
  calibrate_with(VRX_SURFACE_INCLUDED, &included);
  OK(vrx_search_open(included, system, &lamp, 1, VRX_OBSERVER_10, NULL, &closed));
  for (int i = 0; i < 40; ++i) curve[i] = 2;
  REFUSES(vrx_search_match(closed, curve, &found), VRX_REFUSED,
          "target is darker than the surface alone; the colour system is of curves with the specular "
          "component, which this "
          "one lacks: measure it with that, or calibrate the system on curves without it");
  OK(vrx_close(closed));
  OK(vrx_close(included));
}

void recipes(void) {
  const double amounts[2] = {95, 5}, too_little[2] = {97, 3};
  const int32_t lamps[2] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  int32_t kind;
  vrx_system system;
  vrx_recipe_settings settings = {0};
  vrx_handle closed = 7;
  OK(vrx_default_system(VRX_SYSTEM_CIE2000, &system));
  OK(vrx_colorants_open_file(VRX_SOURCE_DIR "/examples/acrylic_paints.json", &paints));
  for (int32_t i = 0; i < 3; ++i) OK(vrx_colorants_component(paints, i, &ids[i], &kind));
  OK(vrx_predict(paints, ids, amounts, 2, target));
  OK(vrx_predict(paints, ids, too_little, 2, batch));
  settings.size = sizeof settings;
  OK(vrx_usual_recipe_settings(&settings));
  CHECK(settings.most_colorants == 4 && settings.batch_size == 100 && settings.tolerance == 1);
  settings.most_colorants = 2, settings.top = 3;
  OK(vrx_search_open(paints, &system, lamps, 2, VRX_OBSERVER_10, &settings, &search));
  matches();
  corrections();
  calibrations();
  OK(vrx_close(search));
  costs(&system, settings);
  surfaces(&system);
  settings.most_colorants = 7;
  REFUSES(vrx_search_open(paints, &system, lamps, 2, 1, &settings, &closed), VRX_OUT_OF_RANGE,
          "most_colorants");
  settings.most_colorants = 2, settings.tolerance = NAN;
  REFUSES(vrx_search_open(paints, &system, lamps, 2, 1, &settings, &closed), VRX_NOT_FINITE, "tolerance");
  const int32_t twice[3] = {VRX_ILLUM_A, VRX_ILLUM_D65, VRX_ILLUM_A};
  REFUSES(vrx_search_open(paints, &system, twice, 3, 1, NULL, &closed), VRX_OUT_OF_RANGE,
          "illuminants: 0 is there twice");
  REFUSES(vrx_judgement_open(&system, twice, 3, 1, &closed), VRX_OUT_OF_RANGE,
          "illuminants: 0 is there twice");
  REFUSES(vrx_search_open(search, &system, lamps, 2, 1, NULL, &closed), VRX_BAD_HANDLE, "no open handle");
  CHECK(closed == 7);
  OK(vrx_close(paints));
}
