/* Columns by the Arrow C data interface: the numbers of the other functions, null where a curve is missing, and refusals that leave
 * nothing to release. */
#include <stdlib.h>

#include <vrxmath/arrow_c_data.h>

#include "c_api_checks.h"

enum { ROWS = 3, WIDTH = 40 };

static int released;

static void release_array(struct ArrowArray* array) {
  ++released;
  array->release = NULL;
}

static void release_schema(struct ArrowSchema* schema) {
  schema->release = NULL;
}

/* A column of lists of `format` over numbers, with a bit for each row that is there. */
struct column {
  struct ArrowSchema schema, item_schema, *schemas[1];
  struct ArrowArray array, item, *items[1];
  const void *buffers[1], *item_buffers[2];
};

static void make_column(struct column* column, const char* format, const char* item, const void* numbers, const uint8_t* there) {
  const struct ArrowSchema item_schema = {item, "item", NULL, 2, 0, NULL, NULL, release_schema, NULL};
  const struct ArrowSchema schema = {format, "curve", NULL, 2, 1, column->schemas, NULL, release_schema, NULL};
  const struct ArrowArray values = {ROWS * WIDTH, 0, 0, 2, 0, column->item_buffers, NULL, NULL, release_array, NULL};
  const struct ArrowArray lists = {ROWS, -1, 0, 1, 1, column->buffers, column->items, NULL, release_array, NULL};
  column->item_schema = item_schema;
  column->schema = schema;
  column->item = values;
  column->array = lists;
  column->schemas[0] = &column->item_schema;
  column->items[0] = &column->item;
  column->buffers[0] = there;
  column->item_buffers[0] = NULL;
  column->item_buffers[1] = numbers;
}

static const double* doubles_of(const struct ArrowArray* array, int column) {
  return array->children[column]->buffers[1];
}

static int is_there(const struct ArrowArray* array, int column, int row) {
  const uint8_t* bits = array->children[column]->buffers[0];
  return bits == NULL || (bits[row / 8] >> (row % 8) & 1) != 0;
}

static int has_text(const struct ArrowArray* array, int column, int row, const char* text) {
  const int32_t* offsets = array->children[column]->buffers[1];
  const char* bytes = array->children[column]->buffers[2];
  const size_t length = (size_t)(offsets[row + 1] - offsets[row]);
  return length == strlen(text) && memcmp(bytes + offsets[row], text, length) == 0;
}

static void colours_of_columns(const double* curves) {
  static const uint8_t there[] = {5}; /* the second curve is null */
  float floats[ROWS * WIDTH];
  for (int i = 0; i < ROWS * WIDTH; ++i) floats[i] = (float)curves[i];
  double xyz[3 * ROWS], coordinates[5 * ROWS];
  OK(vrx_tristimulus(VRX_ILLUM_A, VRX_OBSERVER_2, curves, ROWS, xyz));
  OK(vrx_xyz_to_space(0, VRX_ILLUM_A, VRX_OBSERVER_2, xyz, ROWS, coordinates));
  const struct {
    const char *format, *item;
    const void* numbers;
  } columns[] = {{"+w:40", "g", curves}, {"+w:40", "f", floats}};
  for (size_t c = 0; c < sizeof columns / sizeof *columns; ++c) {
    struct column column;
    struct ArrowSchema schema;
    struct ArrowArray array;
    make_column(&column, columns[c].format, columns[c].item, columns[c].numbers, there);
    OK(vrx_arrow_tristimulus(VRX_ILLUM_A, VRX_OBSERVER_2, &column.schema, &column.array, &schema, &array));
    CHECK(strcmp(schema.format, "+s") == 0 && schema.n_children == 3 && strcmp(schema.children[2]->name, "Z") == 0);
    CHECK(array.length == ROWS && array.children[1]->null_count == 1 && !is_there(&array, 0, 1) && is_there(&array, 0, 2));
    for (int k = 0; k < 3; ++k) CHECK(doubles_of(&array, k)[2] == xyz[6 + k]);
    struct ArrowArray taken = *array.children[0]; /* a column may outlive its table */
    array.children[0]->release = NULL;
    array.release(&array);
    CHECK(((const double*)taken.buffers[1])[0] == xyz[0]);
    taken.release(&taken);
    schema.release(&schema);
    CHECK(array.release == NULL && schema.release == NULL && taken.release == NULL);
    OK(vrx_arrow_lab(VRX_ILLUM_A, VRX_OBSERVER_2, &column.schema, &column.array, &schema, &array));
    for (int k = 0; k < 5; ++k) CHECK(doubles_of(&array, k)[2] == coordinates[10 + k]);
    array.release(&array);
    schema.release(&schema);
  }
}

static void judgement_of_columns(const double* curves) {
  const vrx_system cmc = {.number = 2, .parameters = {2, 1, 1, 1}, .angle = 45};
  const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  const double box[] = {100, 100, 100, 100, 100, 100, 1};
  vrx_handle judgement = 0;
  struct column column;
  struct ArrowSchema schema;
  struct ArrowArray array;
  make_column(&column, "+w:40", "g", curves, NULL);
  OK(vrx_judgement_open(&cmc, lamps, 2, VRX_OBSERVER_10, &judgement));
  REFUSES(vrx_arrow_judge(judgement, &column.schema, &column.array, &schema, &array), VRX_REFUSED, "no standard");
  OK(vrx_judgement_standard(judgement, curves));
  for (int i = 0; i < 2; ++i) OK(vrx_judgement_box(judgement, i, box));
  int32_t verdicts[2 * ROWS], words[6 * ROWS];
  double differences[14 * ROWS];
  OK(vrx_judgement_trials(judgement, curves, ROWS, verdicts, differences, words));
  OK(vrx_arrow_judge(judgement, &column.schema, &column.array, &schema, &array));
  CHECK(schema.n_children == 11 && strcmp(schema.children[6]->name, "A verdict") == 0);
  CHECK(has_text(&array, 0, 0, "pass") && has_text(&array, 0, 1, "fail") && has_text(&array, 6, 0, "pass"));
  CHECK(has_text(&array, 3, 0, "") && has_text(&array, 3, 1, "Lighter"));
  for (int i = 0; i < ROWS; ++i) CHECK(doubles_of(&array, 7)[i] == differences[7 * (2 * i + 1) + 6]);
  CHECK(doubles_of(&array, 9)[1] == VRX_BROKEN_TOTAL && doubles_of(&array, 10)[1] == differences[7 * 3 + 6] - 1);
  CHECK(!is_there(&array, 10, 0) && is_there(&array, 10, 1));
  array.release(&array);
  schema.release(&schema);
  OK(vrx_close(judgement));
}

void arrow_columns(void) {
  static double curves[ROWS * WIDTH];
  for (int i = 0; i < ROWS; ++i) fill(curves + WIDTH * i, WIDTH, 20.0 + 2 * i * i);
  colours_of_columns(curves);
  judgement_of_columns(curves);

  struct column column;
  struct ArrowSchema schema;
  struct ArrowArray array;
  const struct {
    const char *format, *item;
    double first;
    vrx_status status;
    const char* why;
  } refused[] = {{"+w:39", "g", 20, VRX_REFUSED, "each list has 39"},
                 {"+w:41", "g", 20, VRX_REFUSED, "fewer numbers"},
                 {"+w:40", "l", 20, VRX_REFUSED, "\"curve\" is of the type"},
                 {"g", "g", 20, VRX_REFUSED, "contradicts itself"},
                 {"+w:40", "g", (double)NAN, VRX_NOT_FINITE, "curves"}};
  for (size_t i = 0; i < sizeof refused / sizeof *refused; ++i) {
    array.release = NULL;
    curves[0] = refused[i].first;
    make_column(&column, refused[i].format, refused[i].item, curves, NULL);
    REFUSES(vrx_arrow_tristimulus(VRX_ILLUM_D65, VRX_OBSERVER_10, &column.schema, &column.array, &schema, &array),
            refused[i].status, refused[i].why);
    CHECK(array.release == NULL);
  }
  REFUSES(vrx_arrow_lab(VRX_ILLUM_D65, VRX_OBSERVER_10, &column.schema, &column.array, &schema, NULL), VRX_NULL, "result is null");
  CHECK(released == 0); /* what is read stays the caller's */
}
