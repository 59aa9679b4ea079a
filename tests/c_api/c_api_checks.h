/* What the tests of the C interface share. */
#ifndef TESTS_C_API_C_API_CHECKS_H_
#define TESTS_C_API_C_API_CHECKS_H_

#include <math.h>
#include <stdio.h>
#include <string.h>

#include <vrxmath/c_api.h>

extern int failures;

/* Calls that are refused, with the outputs as they were. */
void refusals(void);
/* Files of measurements and of colour systems, films. */
void files(void);
/* Recipes and corrections. */
void recipes(void);
/* Columns of Arrow. */
void arrow_columns(void);
/* Arrays that share memory. */
void overlaps(void);

#define CHECK(condition)                                                     \
  do {                                                                       \
    if (!(condition)) {                                                      \
      char reason[200] = "";                                                 \
      vrx_last_error(reason, sizeof reason, NULL);                           \
      printf("%s:%d: %s; \"%s\"\n", __FILE__, __LINE__, #condition, reason); \
      ++failures;                                                            \
    }                                                                        \
  } while (0)
#define OK(call) CHECK((call) == VRX_OK)
/* A call that is refused with that status, for a reason that says `why`. */
#define REFUSES(call, status, why)                                    \
  do {                                                                \
    char said[200] = "";                                              \
    CHECK((call) == (status));                                        \
    OK(vrx_last_error(said, sizeof said, NULL));                      \
    if (strstr(said, why) == NULL) {                                  \
      printf("%s:%d: %s: \"%s\"\n", __FILE__, __LINE__, #call, said); \
      ++failures;                                                     \
    }                                                                 \
  } while (0)

static inline int near(double a, double b, double tolerance) {
  return fabs(a - b) <= tolerance;
}

static inline void fill(double* numbers, int count, double value) {
  for (int i = 0; i < count; ++i) numbers[i] = value;
}

/* True where UTF-16 says what UTF-8 does, of characters below U+0800. */
static inline int same_text(const char* utf8, const vrx_char16* utf16) {
  const uint8_t* at = (const uint8_t*)utf8;
  for (; *at != 0; ++utf16) {
    const int code = *at < 0x80 ? at[0] : (at[0] & 31) << 6 | (at[1] & 63);
    if (code != *utf16) return 0;
    at += *at < 0x80 ? 1 : 2;
  }
  return *utf16 == 0;
}

#endif /* TESTS_C_API_C_API_CHECKS_H_ */
