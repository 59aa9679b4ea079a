/* Files: measurements and colour systems, and structures that may grow. */
#include "c_api_checks.h"

static void write_file(const char* name, const char* content) {
  FILE* file = fopen(name, "wb");
  CHECK(file != NULL);
  if (file == NULL) return;
  fputs(content, file);
  fclose(file);
}

static void texts_of(vrx_handle table, int32_t kind, int32_t index, const char* expected) {
  char text[200] = "";
  vrx_char16 wide[200];
  int32_t length = -1;
  OK(vrx_measurements_text(table, kind, index, text, sizeof text, &length));
  OK(vrx_measurements_text16(table, kind, index, wide, 200, NULL));
  if (strcmp(text, expected) != 0) printf("kind %d: \"%s\"\n", (int)kind, text), ++failures;
  CHECK((size_t)length == strlen(expected) && same_text(text, wide));
}

/* Two greys from 400 to 700 nm, every 20 nm: straight lines and flat ends are what any way to 10 nm gives. */
static void measurements(void) {
  static const char file[] =
      "id,name,400,420,440,460,480,500,520,540,560,580,600,620,640,660,680,700\n"
      "P1,gr\xC3\xBCn,40,40,40,40,40,40,40,40,40,40,40,40,40,40,40,40\n"
      "P2,,10,10,10,10,10,10,10,10,10,10,10,10,10,10,10,10\n";
  const vrx_char16 path16[] = {'c', '_', 'a', 'p', 'i', '.', 'c', 's', 'v', 0};
  double curves[80], lab[3];
  vrx_handle table = 0, again = 0;
  vrx_measurements_summary all = {0};
  write_file("c_api.csv", file);
  OK(vrx_measurements_open("c_api.csv", NULL, &table));
  OK(vrx_measurements_open16(path16, NULL, &again));
  all.size = sizeof all;
  OK(vrx_measurements_summarize(table, &all));
  CHECK(all.size == sizeof all && all.count == 2 && all.form == VRX_FORM_CSV && all.has_curves == 1);
  CHECK(all.has_xyz == 0 && all.has_lab == 0 && all.warnings == 0);
  OK(vrx_measurements_numbers(table, VRX_NUMBERS_CURVES, 0, 2, curves));
  for (int i = 0; i < 80; ++i) CHECK(near(curves[i], i < 40 ? 40 : 10, 1e-9));
  OK(vrx_measurements_numbers(again, VRX_NUMBERS_CURVES, 1, 1, curves));
  CHECK(near(curves[0], 10, 1e-9));
  texts_of(table, VRX_TEXT_ID, 0, "P1");
  texts_of(table, VRX_TEXT_NAME, 0, "gr\xC3\xBCn");
  texts_of(table, VRX_TEXT_NAME, 1, "");
  REFUSES(vrx_measurements_numbers(table, VRX_NUMBERS_LAB, 0, 1, lab), VRX_REFUSED, "not all samples");
  REFUSES(vrx_measurements_numbers(table, 3, 0, 1, lab), VRX_OUT_OF_RANGE, "kind");
  REFUSES(vrx_measurements_numbers(table, VRX_NUMBERS_CURVES, 1, 2, curves), VRX_BAD_COUNT, "fewer samples");
  REFUSES(vrx_measurements_numbers(table, VRX_NUMBERS_CURVES, 3, 0, NULL), VRX_OUT_OF_RANGE, "first");
  REFUSES(vrx_measurements_text(table, VRX_TEXT_ID, 2, NULL, 0, NULL), VRX_OUT_OF_RANGE, "index");
  OK(vrx_close(table));
  OK(vrx_close(again));
  REFUSES(vrx_measurements_summarize(table, &all), VRX_BAD_HANDLE, "no open handle");

  /* The same as fractions, under a name that says less; then what is no file. */
  vrx_read_options options = {sizeof options, VRX_FORM_CSV, VRX_SCALE_FRACTION, 0};
  write_file("c_api.txt", "400,420,440,460,480,500\n0.4,0.4,0.4,0.4,0.4,0.4\n");
  OK(vrx_measurements_open("c_api.txt", &options, &table));
  OK(vrx_measurements_numbers(table, VRX_NUMBERS_CURVES, 0, 1, curves));
  CHECK(near(curves[10], 40, 1e-9));
  texts_of(table, VRX_TEXT_ID, 0, "1");
  texts_of(table, VRX_TEXT_WARNING, 0, "the wavelengths do not cover all of 400 to 700 nm; the rest is extrapolated");
  OK(vrx_close(table));
  table = 7;
  REFUSES(vrx_measurements_open("c_api.txt", NULL, &table), VRX_REFUSED, "with VRX_SCALE_FRACTION or VRX_SCALE_PERCENT");
  options.form = 5;
  REFUSES(vrx_measurements_open("c_api.txt", &options, &table), VRX_OUT_OF_RANGE, "form");
  options.form = VRX_FORM_CGATS;
  REFUSES(vrx_measurements_open("c_api.txt", &options, &table), VRX_REFUSED, "c_api.txt");
  REFUSES(vrx_measurements_open("no such file", NULL, &table), VRX_REFUSED, "no such file");
  REFUSES(vrx_measurements_open("-", NULL, &table), VRX_REFUSED, "./-");
  REFUSES(vrx_measurements_open(NULL, NULL, &table), VRX_NULL, "path");
  CHECK(table == 7);
  remove("c_api.csv"), remove("c_api.txt");
}

/* Hosts of an earlier and of a later release. */
static void sizes(void) {
  struct {
    vrx_read_options known;
    int32_t later;
  } later = {{sizeof later, 0, 0, 0}, 0};
  struct {
    vrx_measurements_summary known;
    int32_t later;
  } wide;
  vrx_measurements_summary early;
  vrx_handle table = 0;
  write_file("c_api.csv", "id,L,a,b\nP1,50,1,2\n");
  OK(vrx_measurements_open("c_api.csv", &later.known, &table));
  memset(&wide, 7, sizeof wide), memset(&early, 7, sizeof early);
  wide.known.size = sizeof wide, early.size = 8;
  OK(vrx_measurements_summarize(table, &wide.known));
  OK(vrx_measurements_summarize(table, &early));
  CHECK(wide.known.has_lab == 1 && wide.later == 0 && wide.known.size == sizeof wide);
  CHECK(early.count == 1 && early.form == 0x07070707 && early.size == 8);
  OK(vrx_close(table));
  later.later = 1;
  REFUSES(vrx_measurements_open("c_api.csv", &later.known, &table), VRX_OUT_OF_RANGE, "this release");
  for (int i = 0; i < 3; ++i) {
    later.known.size = (int32_t[]){0, -1, 5000}[i];
    REFUSES(vrx_measurements_open("c_api.csv", &later.known, &table), VRX_OUT_OF_RANGE, "size of options");
  }
  remove("c_api.csv");
}

/* The paints of the examples: a formula of theirs, opaque and as a film, which shows its backing where it is thin. */
static void systems(void) {
  vrx_handle paints = 0;
  int32_t count = 0, ids[2], kind = -1;
  const double amounts[2] = {95, 5};
  double opaque[40], thick[40], bare[40], backing[40], over[2][40], ratio[40], from_film[40];
  char name[100];
  OK(vrx_colorants_open_file(VRX_SOURCE_DIR "/examples/acrylic_paints.json", &paints));
  OK(vrx_colorants_count(paints, &count));
  CHECK(count > 3);
  for (int32_t i = 0; i < 2; ++i) OK(vrx_colorants_component(paints, i, &ids[i], &kind));
  OK(vrx_colorants_name(paints, 0, name, sizeof name, NULL));
  CHECK(name[0] != 0 && ids[0] != ids[1]);
  REFUSES(vrx_colorants_component(paints, count, &kind, &count), VRX_OUT_OF_RANGE, "index");
  OK(vrx_predict(paints, ids, amounts, 2, opaque));
  fill(backing, 40, 20);
  OK(vrx_predict_film(paints, ids, amounts, 2, VRX_SURFACE_INCLUDED, backing, 1e4, thick));
  OK(vrx_predict_film(paints, ids, amounts, 2, VRX_SURFACE_INCLUDED, backing, 0, bare));
  for (int i = 0; i < 40; ++i) CHECK(near(thick[i], opaque[i], 1e-6) && near(bare[i], 20, 1e-9));
  REFUSES(vrx_predict_film(paints, ids, amounts, 2, 3, NULL, 0, bare), VRX_OUT_OF_RANGE, "surface");
  REFUSES(vrx_predict_film(paints, ids, amounts, 2, 0, backing, -1, bare), VRX_OUT_OF_RANGE, "thickness");
  /* From two films the K/S of the opaque one. */
  fill(backing, 40, 4), fill(bare, 40, 85);
  OK(vrx_predict_film(paints, ids, amounts, 2, VRX_SURFACE_NONE, backing, 0.2, over[0]));
  OK(vrx_predict_film(paints, ids, amounts, 2, VRX_SURFACE_NONE, bare, 0.2, over[1]));
  OK(vrx_predict_film(paints, ids, amounts, 2, VRX_SURFACE_NONE, NULL, 0, opaque));
  OK(vrx_film_constants(over[0], over[1], backing, bare, 0, 0, VRX_SURFACE_NONE, NULL, NULL, from_film));
  OK(vrx_kubelka_munk(opaque, 40, ratio));
  for (int i = 0; i < 40; ++i) CHECK(near(from_film[i], ratio[i], 0.02 * ratio[i] + 1e-6));
  REFUSES(vrx_film_constants(over[0], over[1], backing, bare, 0, 0, 0, ratio, ratio, from_film), VRX_OVERLAP, "scattering");
  OK(vrx_close(paints));
  paints = 7;
  REFUSES(vrx_colorants_open_file("no such file", &paints), VRX_REFUSED, "no such file");
  CHECK(paints == 7);
}

void files(void) {
  measurements();
  sizes();
  systems();
}
