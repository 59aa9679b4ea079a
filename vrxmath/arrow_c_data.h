/* The structures of the Arrow C data interface, by which programs hand columns to each other in one process without a copy
 * (https://arrow.apache.org/docs/format/CDataInterface.html). Any other header that declares them serves as well: they are the
 * same everywhere, and whichever comes first counts. */
#ifndef VRXMATH_ARROW_C_DATA_H_
#define VRXMATH_ARROW_C_DATA_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

/* What an array holds: a text such as "g" (double) or "+w:40" (40 of the child in each row), and a name. */
struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  struct ArrowSchema** children;
  struct ArrowSchema* dictionary;
  void (*release)(struct ArrowSchema*);
  void* private_data;
};

/* Its rows. Whoever receives it calls `release` when it is no longer needed, which sets `release` to null. */
struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  struct ArrowArray** children;
  struct ArrowArray* dictionary;
  void (*release)(struct ArrowArray*);
  void* private_data;
};

#endif /* ARROW_C_DATA_INTERFACE */

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

/* Arrays of one schema, one after the other. The functions give 0, or the number of an error that get_last_error has a text for. */
struct ArrowArrayStream {
  int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
  int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
  const char* (*get_last_error)(struct ArrowArrayStream*);
  void (*release)(struct ArrowArrayStream*);
  void* private_data;
};

#endif /* ARROW_C_STREAM_INTERFACE */

#ifdef __cplusplus
}
#endif

#endif /* VRXMATH_ARROW_C_DATA_H_ */
