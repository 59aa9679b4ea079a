/* VrxMath for hosts that cannot use C++ classes: flat functions over numbers, texts and handles. Pure C11.
 *
 *   double curve[40] = {...}, xyz[3];
 *   if (vrx_tristimulus(VRX_ILLUM_D65, VRX_OBSERVER_10, curve, 1, xyz) != VRX_OK) {
 *     char reason[200];
 *     vrx_last_error(reason, sizeof reason, NULL);
 *   }
 *
 * Conventions. Every function returns a vrx_status, VRX_OK being 0, and throws nothing. Everything is checked before
 * anything is written: null where an array is needed, negative counts, numbers that are not finite, numbers of
 * illuminants and systems that nobody has, values that make no sense, and handles that are no handles. A call that is
 * refused has touched nothing, and vrx_last_error has a sentence about it.
 *
 * Arrays are the caller's and hold rows one after the other; with a count of 0 they may be null. Results may be written
 * over what was read: the numbers of a call are those that were there when it began, at any count of threads. Two places of
 * results that share memory are refused (VRX_OVERLAP).
 *
 * Values. Readings (reflectances, colours, differences) are finite and within 1e6 of 0. The parameters of a difference
 * system are 0.001 to 1000, angles -45 to 110 degrees, limits and semi-axes 0 to 1e6, the primaries of a screen span a
 * triangle. Flags are 0 or 1. A verdict is never given on a number that is not finite.
 *
 * Units. Curves are 40 reflectances in percent at 360, 370 ... 750 nm. X, Y, Z are on the scale on which the perfect
 * white has Y = 100. Hues are in degrees from 0 to 360. A value that does not exist is VRX_UNSET, on the way in as on
 * the way out: an unset colour (its first sample, or X, Y and Z) gives unset results.
 *
 * Texts are UTF-8, or UTF-16 in the functions whose names end in 16, and end with a zero. A function that returns one
 * takes a buffer, its capacity in units, zero included, and the place of the length without the zero, which may be null.
 * A text that does not fit is not written; the status is VRX_TOO_SMALL, and the length tells what it takes.
 *
 * Handles are numbers; 0 is none. They are the process's, not a thread's. One handle is for one thread at a time; other
 * functions may be called on any thread while nobody changes display primaries or user illuminants.
 *
 * A structure that begins with `size` may have more members in a later release: set `size` to its sizeof, and all that you do not
 * use to 0. Null stands for what is usual.
 *
 * On 32-bit Windows the functions are __stdcall, under undecorated names. Compare VRX_ABI_VERSION with vrx_abi_version
 * before the first call where header and library may come from different releases.
 */
#ifndef VRXMATH_C_API_H_
#define VRXMATH_C_API_H_

#include <stdint.h>

#if defined(_WIN32)
#define VRX_CALL __stdcall
#if defined(VRX_C_BUILDING)
#define VRX_C_API __declspec(dllexport)
#else
#define VRX_C_API __declspec(dllimport)
#endif
#else
#define VRX_CALL
#define VRX_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------------------------
 * Status, versions, texts */

typedef int32_t vrx_status;
enum {
  VRX_OK = 0,
  VRX_NULL = 1,         /* a null pointer where an array, a text or a place for a result is needed */
  VRX_BAD_COUNT = 2,    /* negative, or so large that the arrays could not exist */
  VRX_NOT_FINITE = 3,   /* a number is NaN or infinite */
  VRX_OUT_OF_RANGE = 4, /* a number that nobody has, or outside the values that make sense */
  VRX_BAD_HANDLE = 5,   /* no handle, one of another kind, or one that was closed */
  VRX_TOO_SMALL = 6,    /* the buffer of a text */
  VRX_REFUSED = 7,      /* the numbers are fine each, but there is no answer; vrx_last_error says why */
  VRX_NO_MEMORY = 8,
  VRX_INTERNAL = 9, /* an error of the library */
  VRX_OVERLAP = 10  /* two places of results share memory */
};

/* What stands for "not measured, not computed"; see Units above. */
#define VRX_UNSET 1e-5

/* Grows whenever a host that was built for an older number would misunderstand the library. */
#define VRX_ABI_VERSION 1

typedef uint16_t vrx_char16;

/* The number in VRX_ABI_VERSION of the header that the library was built with. */
VRX_C_API vrx_status VRX_CALL vrx_abi_version(int32_t* version);
/* The release, such as 1, 4, 0. */
VRX_C_API vrx_status VRX_CALL vrx_version(int32_t* major, int32_t* minor, int32_t* patch);

/* Why the last call on this thread was refused, at most 500 bytes of UTF-8; empty after one that succeeded. Asking does not
 * change it. */
VRX_C_API vrx_status VRX_CALL vrx_last_error(char* text, int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_last_error16(vrx_char16* text, int32_t capacity, int32_t* length);

/* The display text of that number in the library's table; VRX_OUT_OF_RANGE when there is none. */
VRX_C_API vrx_status VRX_CALL vrx_text(int32_t number, char* text, int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_text16(int32_t number, vrx_char16* text, int32_t capacity, int32_t* length);

/* Threads that functions with many rows may use: 1 at first, 0 for as many as there are cores. Results are the same. */
VRX_C_API vrx_status VRX_CALL vrx_set_threads(int32_t threads);

/* ------------------------------------------------------------------------------------------------------------------
 * Illuminants */

enum {
  VRX_ILLUM_A = 0,
  VRX_ILLUM_C = 1,
  VRX_ILLUM_D65 = 2,
  VRX_ILLUM_CWF = 3,
  VRX_ILLUM_T84 = 4,
  VRX_ILLUM_D50 = 5
};
enum { VRX_OBSERVER_2 = 0, VRX_OBSERVER_10 = 1 };

/* The built-in illuminants in the order in which a user is offered them: how many, and the number at a position from 0. */
VRX_C_API vrx_status VRX_CALL vrx_illuminant_count(int32_t* count);
VRX_C_API vrx_status VRX_CALL vrx_illuminant_at(int32_t position, int32_t* illuminant);
/* The number of an illuminant by its code, such as "D65", in any case; built-in ones are numbered from 0 to one below
   vrx_illuminant_count. */
VRX_C_API vrx_status VRX_CALL vrx_find_illuminant(const char* code, int32_t* illuminant);
VRX_C_API vrx_status VRX_CALL vrx_find_illuminant16(const vrx_char16* code, int32_t* illuminant);
/* Its display name. `style`: 0 "D65 - 10°", 1 and 3 "D65/10°", 2 "Illuminant D65", 4 "D65", 5 "Illuminant D65 - 10°",
 * 6 "10°", 7 the description. */
VRX_C_API vrx_status VRX_CALL vrx_illuminant_name(int32_t illuminant, int32_t observer, int32_t style,
                                                  char* text, int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_illuminant_name16(int32_t illuminant, int32_t observer, int32_t style,
                                                    vrx_char16* text, int32_t capacity, int32_t* length);
/* The white point, and the weighting table (40 X, 40 Y and 40 Z weights for 360 to 750 nm, then the white point). */
VRX_C_API vrx_status VRX_CALL vrx_white_point(int32_t illuminant, int32_t observer, double xyz[3]);
VRX_C_API vrx_status VRX_CALL vrx_weights(int32_t illuminant, int32_t observer, double table[123]);

/* Registers a lamp under a number from 1000 to 1255, which every function then takes as an illuminant, or replaces it.
 * `name`: "code|description". `power`: `count` relative spectral powers every `step` (1, 5 or 10) nm from `first_nm` on,
 * all of 400 to 700 nm at least. `straight`: 1 for straight lines between them, 0 for cubics (ASTM E2022). */
VRX_C_API vrx_status VRX_CALL vrx_register_illuminant(int32_t number, const char* name, const double* power,
                                                      int32_t count, int32_t first_nm, int32_t step,
                                                      int32_t straight);
VRX_C_API vrx_status VRX_CALL vrx_register_illuminant16(int32_t number, const vrx_char16* name,
                                                        const double* power, int32_t count, int32_t first_nm,
                                                        int32_t step, int32_t straight);
/* Takes it away again; VRX_OUT_OF_RANGE when it is not there. */
VRX_C_API vrx_status VRX_CALL vrx_remove_illuminant(int32_t number);

/* ------------------------------------------------------------------------------------------------------------------
 * Files of measurements: CSV, CGATS, CxF and JSON, read as a whole. Paths are those of the system, also for "-". A file that cannot
 * be used is refused (VRX_REFUSED) with its name, line, column and the reason. */

typedef int32_t vrx_handle;

enum { VRX_FORM_BY_CONTENT = 0, VRX_FORM_CSV = 1, VRX_FORM_CGATS = 2, VRX_FORM_CXF = 3, VRX_FORM_JSON = 4 };
/* What reflectances and X, Y, Z are. By the file: what it says; one that says nothing and can be either is refused. */
enum { VRX_SCALE_BY_FILE = 0, VRX_SCALE_PERCENT = 1, VRX_SCALE_FRACTION = 2 };
typedef struct vrx_read_options {
  int32_t size;
  int32_t form;
  int32_t scale;
  int32_t lenient; /* 1: unknown columns and other deviations are skipped, with a note */
} vrx_read_options;
typedef struct vrx_measurements_summary {
  int32_t size;
  int32_t count;                        /* of samples */
  int32_t form;                         /* of the file */
  int32_t has_curves, has_xyz, has_lab; /* 1 where all samples have them */
  int32_t notes, warnings;              /* how many there are */
  int32_t illuminant,
      observer; /* under which the colours of the first sample were seen; -1 where the file does not say */
} vrx_measurements_summary;

VRX_C_API vrx_status VRX_CALL vrx_measurements_open(const char* path, const vrx_read_options* options,
                                                    vrx_handle* measurements);
VRX_C_API vrx_status VRX_CALL vrx_measurements_open16(const vrx_char16* path, const vrx_read_options* options,
                                                      vrx_handle* measurements);
/* What there is; the size of the structure says how much of it the caller knows. */
VRX_C_API vrx_status VRX_CALL vrx_measurements_summarize(vrx_handle measurements,
                                                         vrx_measurements_summary* summary);
/* The numbers of `count` samples from `first` on: curves (40 each), X, Y, Z or L*, a*, b* (3 each). */
enum { VRX_NUMBERS_CURVES = 0, VRX_NUMBERS_XYZ = 1, VRX_NUMBERS_LAB = 2 };
VRX_C_API vrx_status VRX_CALL vrx_measurements_numbers(vrx_handle measurements, int32_t kind, int32_t first,
                                                       int32_t count, double* numbers);
/* A text of a sample: what names it (its id, else its name, else its number from 1), its name, its measuring geometry; or a note of
 * what was skipped, a warning of what may make the numbers other than they look. */
enum { VRX_TEXT_ID = 0, VRX_TEXT_NAME = 1, VRX_TEXT_GEOMETRY = 2, VRX_TEXT_NOTE = 3, VRX_TEXT_WARNING = 4 };
VRX_C_API vrx_status VRX_CALL vrx_measurements_text(vrx_handle measurements, int32_t kind, int32_t index,
                                                    char* text, int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_measurements_text16(vrx_handle measurements, int32_t kind, int32_t index,
                                                      vrx_char16* text, int32_t capacity, int32_t* length);

/* ------------------------------------------------------------------------------------------------------------------
 * From curves to colours. `count` rows each. */

/* X, Y, Z of curves (ASTM E308): 40 numbers in, 3 out. */
VRX_C_API vrx_status VRX_CALL vrx_tristimulus(int32_t illuminant, int32_t observer, const double* curves,
                                              int32_t count, double* xyz);

/* The colour spaces: what a row holds. */
enum {
  VRX_SPACE_LAB = 0,   /* CIE L*, a*, b*, C*, h: 5 numbers */
  VRX_SPACE_LUV = 1,   /* CIE L*, u*, v*, C*uv, huv: 5 numbers */
  VRX_SPACE_HUNTER = 2 /* Hunter L, a, b, and twice unset: 5 numbers */
};
/* X, Y, Z into a space, and back; on the way back chroma and hue are not read. */
VRX_C_API vrx_status VRX_CALL vrx_xyz_to_space(int32_t space, int32_t illuminant, int32_t observer,
                                               const double* xyz, int32_t count, double* coordinates);
VRX_C_API vrx_status VRX_CALL vrx_space_to_xyz(int32_t space, int32_t illuminant, int32_t observer,
                                               const double* coordinates, int32_t count, double* xyz);
/* Chromaticity x, y; unset where X + Y + Z is 0. */
VRX_C_API vrx_status VRX_CALL vrx_chromaticity(const double* xyz, int32_t count, double* xy);

/* 8-bit red, green and blue for a screen (3 bytes a row). `displayable`: 1 where the screen can show the colour, else 0;
 * may be null. */
VRX_C_API vrx_status VRX_CALL vrx_display_colors(int32_t illuminant, int32_t observer, const double* xyz,
                                                 int32_t count, uint8_t* rgb, uint8_t* displayable);
/* The primaries of the screen: red x, y, green x, y, blue x, y, gamma. Setting null goes back to IEC 61966-2-1. */
VRX_C_API vrx_status VRX_CALL vrx_get_display_primaries(double primaries[7]);
VRX_C_API vrx_status VRX_CALL vrx_set_display_primaries(const double primaries[7]);

/* ------------------------------------------------------------------------------------------------------------------
 * Differences */

enum {
  VRX_SYSTEM_LAB = 0, /* dE*ab */
  VRX_SYSTEM_CMC = 1, /* parameters l, c, commercial factor */
  VRX_SYSTEM_HUNTER = 2,
  VRX_SYSTEM_FMC2 = 3,
  VRX_SYSTEM_CIE94 = 4, /* kL, kC, kH, total */
  VRX_SYSTEM_LCH = 5,
  VRX_SYSTEM_LUV = 6,
  VRX_SYSTEM_XYZ = 7,
  VRX_SYSTEM_GE_PQS2 = 8,
  VRX_SYSTEM_AUDI = 9,
  VRX_SYSTEM_DIN99 = 10,   /* kCH, kE; dE*ab unless own_formula is set */
  VRX_SYSTEM_CIE2000 = 11, /* kL, kC, kH, total */
  VRX_SYSTEM_DIN6175 = 12, /* gL, gC, gH */
  VRX_SYSTEM_DIN99O = 13,  /* DIN 6176:2018 */
  VRX_SYSTEM_DIN99B = 14,
  VRX_SYSTEM_DIN99C = 15,
  VRX_SYSTEM_DIN99D = 16,
  VRX_SYSTEM_CAM02_UCS = 17,
  VRX_SYSTEM_CAM16_UCS = 18,
  VRX_SYSTEM_OKLAB = 19, /* times 100 */
  VRX_SYSTEM_ITP = 20,   /* ITU-R BT.2124 */
  VRX_SYSTEM_HYAB = 21
};

/* A difference system. vrx_default_system fills it with the parameters under which the system is usually quoted, and an
 * angle of 45. The names of the parameters are beside the numbers above; those that a system does not have are not read. */
typedef struct vrx_system {
  int32_t number;
  int32_t own_formula;  /* 1: DIN99 by its own formula; 0 otherwise */
  double parameters[4]; /* 0.001 to 1000 */
  double angle;         /* aspecular, -45 to 110 degrees; Audi and DIN 6175-2 read it and take 0 for 1 */
} vrx_system;

VRX_C_API vrx_status VRX_CALL vrx_default_system(int32_t number, vrx_system* system);
/* Its display name with its parameters, and the headings of its difference columns, separated by "|". */
VRX_C_API vrx_status VRX_CALL vrx_system_name(const vrx_system* system, char* text, int32_t capacity,
                                              int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_system_name16(const vrx_system* system, vrx_char16* text, int32_t capacity,
                                                int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_system_columns(int32_t number, char* text, int32_t capacity,
                                                 int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_system_columns16(int32_t number, vrx_char16* text, int32_t capacity,
                                                   int32_t* length);

/* Which of the 7 elements of a difference stands under each heading of vrx_system_columns, in their order, and how many there
 * are. */
VRX_C_API vrx_status VRX_CALL vrx_system_elements(int32_t number, int32_t elements[7], int32_t* count);

/* Sample minus standard, pair by pair: X, Y, Z of both (3 numbers a row) into 7 elements. What a system lacks is unset.
 *
 *   elements  what they are                            of the system
 *   0, 1, 2   dL*, da*, db*                            all but those below
 *             dL*, du*, dv*                            LUV
 *             dL, da, db of Hunter                     HUNTER
 *             dL, drg, dyb in MacAdam units            FMC2
 *             10 dX, 10 dY, 10 dZ                      XYZ
 *             100 dY/Y, 10000 dx, 10000 dy             GE_PQS2
 *             dL99, da99, db99                         DIN99 by its own formula
 *   3         dL*, divided by its weight for CMC, CIE94  not HUNTER, FMC2, XYZ, GE_PQS2
 *   4, 5      dC*, dH*, likewise; dH* is positive where  not HUNTER, GE_PQS2; FMC2 has the chroma in 4,
 *             the sample's hue is the greater            XYZ 10000 dx, 10000 dy
 *   6         the total, in the unit of the system       all
 */
VRX_C_API vrx_status VRX_CALL vrx_differences(const vrx_system* system, int32_t illuminant, int32_t observer,
                                              const double* standards, const double* samples, int32_t count,
                                              double* differences);
/* Of `standards` the `wanted` nearest to each sample, nearest first: their indices from 0, and the total differences.
 * -1 and unset where there are no more. */
VRX_C_API vrx_status VRX_CALL vrx_nearest(const vrx_system* system, int32_t illuminant, int32_t observer,
                                          const double* standards, int32_t standard_count,
                                          const double* samples, int32_t count, int32_t wanted,
                                          int32_t* indices, double* totals);

/* ------------------------------------------------------------------------------------------------------------------
 * Indices */

/* How many whiteness, tint and yellowness indices there are. They are numbered from 0 in the order of their display. */
VRX_C_API vrx_status VRX_CALL vrx_index_count(int32_t* count);
/* The display name. `recalculated`: 1 for the form that takes any illuminant, 0 for the published one. VRX_OUT_OF_RANGE
 * for a form that an index does not have. */
VRX_C_API vrx_status VRX_CALL vrx_index_name(int32_t index, int32_t recalculated, char* text,
                                             int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_index_name16(int32_t index, int32_t recalculated, vrx_char16* text,
                                               int32_t capacity, int32_t* length);
/* The index of each row of X, Y, Z; unset where the form is not defined for the illuminant and observer. */
VRX_C_API vrx_status VRX_CALL vrx_indices(int32_t index, int32_t recalculated, int32_t illuminant,
                                          int32_t observer, const double* xyz, int32_t count, double* values);
/* Special metamerism index (CIE 15): the difference under `test` of two curves that match under `reference`, which
 * is another illuminant. */
VRX_C_API vrx_status VRX_CALL vrx_metamerism(const vrx_system* system, int32_t reference, int32_t test,
                                             int32_t observer, const double standard[40],
                                             const double trial[40], double* index);
/* Contrast ratio of a coating, 1 for complete hiding: Y over black by Y over white. */
VRX_C_API vrx_status VRX_CALL vrx_contrast_ratio(const double over_black[3], const double over_white[3],
                                                 double* ratio);

/* ------------------------------------------------------------------------------------------------------------------
 * Grades, print, Munsell notation */

enum { VRX_SCALE_CHANGE = 0, VRX_SCALE_STAINING = 1 };
/* The grade of each pair of L*, a*, b* by a grey scale, 5 to 1, not rounded: change of colour (ISO 105-A05) or staining
 * (ISO 105-A04). */
VRX_C_API vrx_status VRX_CALL vrx_grades(int32_t scale, const double* standards, const double* samples,
                                         int32_t count, double* grades);

enum { VRX_DENSITY_A = 0, VRX_DENSITY_E = 1, VRX_DENSITY_M = 2, VRX_DENSITY_T = 3 };
/* Densities of each curve of 40 samples by the products of ISO 5-3: through red, green and blue, and visual (4 numbers a row).
 * Unset where no light comes back. */
VRX_C_API vrx_status VRX_CALL vrx_densities(int32_t status, const double* curves, int32_t count,
                                            double* densities);
/* How much of the paper a tint covers, in percent, by three densities of one filter: Murray-Davies for n = 1, Yule-Nielsen
 * for more, up to 10. */
VRX_C_API vrx_status VRX_CALL vrx_tone_value(double paper, double tint, double solid, double n,
                                             double* percent);
/* The same for a spot colour by ISO 20654, from X, Y, Z under D50 and 2 degrees with their white. Unset where solid and paper
 * are one colour. */
VRX_C_API vrx_status VRX_CALL vrx_spot_tone_value(const double paper[3], const double tint[3],
                                                  const double solid[3], const double white[3],
                                                  double* percent);

/* The Munsell notation of each row of X, Y, Z under C and 2 degrees: hue above 0 to 100 (5 is 5R, 15 is 5YR; 0 for a
 * neutral), value, chroma, and 1 where it is extrapolated, else 0 (4 numbers a row). Unset outside 0 <= Y <= 100 and beyond
 * chroma 60. */
VRX_C_API vrx_status VRX_CALL vrx_munsell(const double* xyz, int32_t count, double* notations);
/* X, Y, Z under C and 2 degrees of each hue, value and chroma (3 numbers a row); unset outside their ranges. */
VRX_C_API vrx_status VRX_CALL vrx_munsell_to_xyz(const double* notations, int32_t count, double* xyz);

/* ------------------------------------------------------------------------------------------------------------------
 * Single figures of colours and lamps, whiteness of an instrument, corrections of readings */

/* Dominant wavelength in nm (negative: the complementary one of a purple) and excitation purity of each row of X, Y, Z (2 numbers
 * a row); unset for a colour with the chromaticity of the white, and for black. */
VRX_C_API vrx_status VRX_CALL vrx_dominant_wavelengths(int32_t illuminant, int32_t observer,
                                                       const double* xyz, int32_t count, double* figures);
/* Correlated colour temperature in K and Duv of each light, as X, Y, Z of the 2 degree observer (2 numbers a row); unset farther than
 * 0.05 from the Planckian locus in CIE 1960 u, v. */
VRX_C_API vrx_status VRX_CALL vrx_color_temperatures(const double* xyz, int32_t count, double* figures);
/* The colour rendering of a lamp by CIE 13.3 from its relative power every `step` (1, 5 or 10) nm from `first` on, over 400 to
 * 700 nm at least: colour temperature, Duv, the distance from the reference in CIE 1960 u, v (the indices are defined up to
 * 0.0054), Ra, and R1 to R14. All unset for a lamp without a colour temperature. */
VRX_C_API vrx_status VRX_CALL vrx_color_rendering(const double* power, int32_t count, int32_t first,
                                                  int32_t step, double figures[18]);
/* Colour inconstancy of each curve of 40 samples: how far its colour drifts from `reference` to `test`, another illuminant, in units of
 * the system (complete adaptation by CAT16). Unset for an unset curve. */
VRX_C_API vrx_status VRX_CALL vrx_inconstancies(const vrx_system* system, int32_t reference, int32_t test,
                                                int32_t observer, const double* curves, int32_t count,
                                                double* values);
/* 1 for each row of X, Y, Z that lies where CIE whiteness and tint mean something (40 < W < 5 Y - 280 and -3 < T < 3), else 0. */
VRX_C_API vrx_status VRX_CALL vrx_cie_white(int32_t illuminant, int32_t observer, const double* xyz,
                                            int32_t count, int32_t* within);
/* Ganz-Griesser whiteness and tint of each row of X, Y, Z under D65 and 10 degrees (2 numbers a row). `parameters`: P, Q, C, m, n, k
 * of the instrument; null for the nominal ones. */
VRX_C_API vrx_status VRX_CALL vrx_ganz_griesser(const double parameters[6], const double* xyz, int32_t count,
                                                double* figures);
/* Fits these parameters to standards, three or more of different saturations: X, Y, Z, and whiteness and tint of their certificates. `tint` may be
 * null; m, n and k are the nominal ones then. VRX_REFUSED where whiteness or tint runs the wrong way: certificates are exchanged. */
VRX_C_API vrx_status VRX_CALL vrx_fit_ganz_griesser(const double* xyz, const double* whiteness,
                                                    const double* tint, int32_t count, double parameters[6]);

enum {
  VRX_TERM_ZERO = 1,
  VRX_TERM_SCALE = 2,
  VRX_TERM_NONLINEAR = 4,
  VRX_TERM_WAVELENGTH = 8,
  VRX_TERM_BANDWIDTH = 16
};
/* Fits what makes readings of one instrument those of a reference from curves of the same tiles by both: 5 factors for each of the 40
 * wavelengths, in the order of the terms, 0 for a term that is not among `terms`. At least two tiles more than terms.
 * VRX_REFUSED, with the places of both from 0, where a reading looks like another tile's: tiles that were exchanged. */
VRX_C_API vrx_status VRX_CALL vrx_fit_correction(const double* reference, const double* other, int32_t count,
                                                 int32_t terms, double factors[200]);
/* Corrects curves of 40 samples by such factors. */
VRX_C_API vrx_status VRX_CALL vrx_correct_readings(const double factors[200], const double* curves,
                                                   int32_t count, double* corrected);

/* ------------------------------------------------------------------------------------------------------------------
 * Tolerances and verdicts */

enum { VRX_FAIL = 0, VRX_WARNING = 1, VRX_PASS = 2 };

/* The limit of the total that agrees best with what people accepted (1) and rejected (0), and how many of both kinds of
 * decisions it gets wrong; of limits that are as good the strictest. Unset without totals; VRX_REFUSED where all are accepted or
 * all rejected, which no limit lies between. */
VRX_C_API vrx_status VRX_CALL vrx_fit_limit(const double* totals, const int32_t* accepted, int32_t count,
                                            double* limit, int32_t* wrongly_accepted,
                                            int32_t* wrongly_rejected);
/* STRESS of computed and visual differences, in percent: 0 where they are proportional (Garcia and others 2007). Unset where
 * all of one kind are 0. */
VRX_C_API vrx_status VRX_CALL vrx_stress(const double* computed, const double* visual, int32_t count,
                                         double* percent);
/* How many readings bring a mean within `within` with a certainty of 0.01 to 0.9999, where the standard deviation is known
 * from `known` readings, 2 or more (Student's t; the reasoning of ASTM E1345). */
VRX_C_API vrx_status VRX_CALL vrx_readings_needed(double deviation, int32_t known, double within,
                                                  double certainty, int32_t* readings);

/* The first three elements of each difference (7 numbers a row) against a box: plus and minus of each (minus limits as
 * positive numbers), then the limit of the total. Verdicts: fail outside, warning outside the box scaled by
 * `warning_factor` (0 to 1), else pass. `totals`: the verdicts on element 6 against the limit; may be null. */
VRX_C_API vrx_status VRX_CALL vrx_judge_boxes(const double box[7], double warning_factor,
                                              const double* differences, int32_t count, int32_t* verdicts,
                                              int32_t* totals);
/* The same against an ellipsoid of L*a*b* differences: centre dL*, da*, db*; semi-axes along lightness, at the angle
 * and across it; the angle in degrees from +a* to +b*; the limit of the total; the commercial factor. */
VRX_C_API vrx_status VRX_CALL vrx_judge_ellipses(const double ellipse[9], double warning_factor,
                                                 const double* differences, int32_t count, int32_t* verdicts,
                                                 int32_t* totals);
/* The ellipsoid of CMC, CIE94 or CIE2000 about a standard (L*, a*, b*). */
VRX_C_API vrx_status VRX_CALL vrx_ellipse_about(const vrx_system* system, const double lab[3],
                                                double ellipse[9]);
/* The smallest ellipsoid that holds all of `count` accepted differences (dL*, da*, db*), or with `surface` 1 the one
 * whose surface comes nearest to borderline ones. `at_standard`: 1 puts its centre at the standard. VRX_REFUSED when the
 * differences leave an axis open. */
VRX_C_API vrx_status VRX_CALL vrx_fit_ellipse(const double* accepted, int32_t count, int32_t surface,
                                              int32_t at_standard, double ellipse[9]);
/* The shade words of a trial: three numbers from 0 (no word) to 10 a row, from L*, a*, b* and dL*, da*, db* (3 numbers
 * a row each); and the text of such a number. */
VRX_C_API vrx_status VRX_CALL vrx_shade_words(const double* lab, const double* differences, int32_t count,
                                              int32_t* words);
VRX_C_API vrx_status VRX_CALL vrx_shade_word(int32_t word, char* text, int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_shade_word16(int32_t word, vrx_char16* text, int32_t capacity,
                                               int32_t* length);

/* A judgement: standards and their tolerances under several illuminants, against which trials are judged. */

/* A judgement under `count` (1 to 64) illuminants, none of them twice. Every tolerance is a box of 1.5 at first, the warning factor 0.75. The
 * angle of the system is 45, or one of the aspecular angles of the library's geometries. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_open(const vrx_system* system, const int32_t* illuminants,
                                                 int32_t count, int32_t observer, vrx_handle* judgement);
/* The one standard's curve. It has no limits of its own. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_standard(vrx_handle judgement, const double curve[40]);
/* The box under illuminant `index` of the list, from 0. Judges by boxes from now on. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_box(vrx_handle judgement, int32_t index, const double box[7]);
/* The ellipsoid under that illuminant. Judges by ellipsoids from now on. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_ellipse(vrx_handle judgement, int32_t index,
                                                    const double ellipse[9]);
/* The ellipsoids of CMC, CIE94 or CIE2000 about each standard, under every illuminant. Judges by ellipsoids from now on. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_system_ellipses(vrx_handle judgement);
VRX_C_API vrx_status VRX_CALL vrx_judgement_warning(vrx_handle judgement, double factor);

/* How the verdicts on the components and on the total become one. */
enum {
  VRX_VERDICT_WORSE = 0,     /* the worse of the two, at first */
  VRX_VERDICT_TOTAL = 1,     /* that on the total */
  VRX_VERDICT_COMPONENTS = 2 /* that on the components */
};
VRX_C_API vrx_status VRX_CALL vrx_judgement_rule(vrx_handle judgement, int32_t rule);
/* Two limits more, which make a verdict worse and never better. The grade of trial against standard by a grey scale
 * (VRX_SCALE_...), in half steps, must be `least` at least: 1, 1.5, 2 ... 5, or 0 where it decides nothing. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_grade(vrx_handle judgement, int32_t scale, double least);
/* The trial's own colour must not change by more than `most` (0 or more, in the units of the system) from the first illuminant to
 * another, adapted by CAT16. VRX_REFUSED where the judgement has one illuminant alone. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_inconstancy(vrx_handle judgement, double most);

/* Several standards (1 to 4,000,000) in the place of the one. `geometries`: the code of each one's measuring geometry, 0 to 48,
 * whose angle the weights of Audi and DIN 6175 take; null where the angle of the system holds for all. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_standards(vrx_handle judgement, const double* curves,
                                                      const int32_t* geometries, int32_t count);
/* Limits of one standard's own under illuminant `index`. All standards judge by boxes, or by ellipsoids, from now on; those
 * without limits of their own by those of the illuminant. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_standard_box(vrx_handle judgement, int32_t standard,
                                                         int32_t index, const double box[7]);
VRX_C_API vrx_status VRX_CALL vrx_judgement_standard_ellipse(vrx_handle judgement, int32_t standard,
                                                             int32_t index, const double ellipse[9]);

/* Judges `count` trial curves. With m illuminants each trial has m rows in the order of the list: `verdicts`, the
 * worse of components and total (1 number); `differences` (7 numbers) and `words` (3 numbers) may be null. VRX_REFUSED
 * before there is a standard. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_trials(vrx_handle judgement, const double* curves, int32_t count,
                                                   int32_t* verdicts, double* differences, int32_t* words);

/* The limit that made a verdict, of several the one that is used most. */
enum {
  VRX_BROKEN_NONE = 0,  /* a pass */
  VRX_BROKEN_FIRST = 1, /* the first component of the box */
  VRX_BROKEN_SECOND = 2,
  VRX_BROKEN_THIRD = 3,
  VRX_BROKEN_TOTAL = 4,
  VRX_BROKEN_ELLIPSOID = 5,
  VRX_BROKEN_NO_DIFFERENCE = 6, /* a curve is unset */
  VRX_BROKEN_GRADE = 7,
  VRX_BROKEN_INCONSTANCY = 8
};
/* Where the outcomes of a judgement go: arrays in the order of vrx_judgement_trials, null for what is not asked for. */
typedef struct vrx_outcome {
  int32_t size;             /* sizeof(vrx_outcome) */
  int32_t* verdicts;        /* 1 number a row: VRX_FAIL, VRX_WARNING, VRX_PASS */
  int32_t* components;      /* 1: the verdict on the components or of the ellipsoid */
  int32_t* totals;          /* 1: the verdict on the total */
  double* differences;      /* 7 */
  int32_t* words;           /* 3 */
  double* ellipsoid_values; /* 1: 1 on the surface; VRX_UNSET where boxes judge */
  int32_t* broken;          /* 1: VRX_BROKEN_... */
  double* breaches; /* 2: the value, and the limit or the edge of the warning band that it is beyond */
} vrx_outcome;
/* Judges `count` trial curves as vrx_judgement_trials does, each against the standard at its place in `standard_of`, from
 * 0. Null for one standard, and for as many standards as trials, which are pairs then. */
VRX_C_API vrx_status VRX_CALL vrx_judgement_trials_of(vrx_handle judgement, const double* curves,
                                                      const int32_t* standard_of, int32_t count,
                                                      const vrx_outcome* outcome);

/* ------------------------------------------------------------------------------------------------------------------
 * Columns of other programs, by the Arrow C data interface. Its structures are declared in vrxmath/arrow_c_data.h, and as well in any
 * header that other programs bring for them. */
struct ArrowSchema;
struct ArrowArray;

/* `curves` is a column of lists of 40 numbers, double or float ("+w:40", or "+l" and "+L" where all are that long), which is read where
 * it lies and stays the caller's; a column of a record batch is one of its children. At most 53,687,091 curves a call. The result is a
 * record batch of the caller's, with a row for each curve, who releases both of its structures; they are written only when the call
 * succeeds. A curve that is null, or holds a null, or is unset has null in all columns. */

/* Columns X, Y, Z. */
VRX_C_API vrx_status VRX_CALL vrx_arrow_tristimulus(int32_t illuminant, int32_t observer,
                                                    const struct ArrowSchema* schema,
                                                    const struct ArrowArray* curves,
                                                    struct ArrowSchema* result_schema,
                                                    struct ArrowArray* result);
/* Columns L*, a*, b*, C*, h. */
VRX_C_API vrx_status VRX_CALL vrx_arrow_lab(int32_t illuminant, int32_t observer,
                                            const struct ArrowSchema* schema, const struct ArrowArray* curves,
                                            struct ArrowSchema* result_schema, struct ArrowArray* result);
/* Judges as vrx_judgement_trials does, under one standard or as many as curves. Columns: overall ("fail", "warning", "pass"), and for
 * each illuminant, by its code, "D65 verdict", "D65 dE", "D65 words" ("Darker, Less Yellow"), "D65 broken" (VRX_BROKEN_...) and
 * "D65 excess": by how much that limit, or the edge of the warning band, was passed; null where none was. */
VRX_C_API vrx_status VRX_CALL vrx_arrow_judge(vrx_handle judgement, const struct ArrowSchema* schema,
                                              const struct ArrowArray* curves,
                                              struct ArrowSchema* result_schema, struct ArrowArray* result);

/* ------------------------------------------------------------------------------------------------------------------
 * Colorants */

/* What a reading holds of the surface. */
enum { VRX_SURFACE_INCLUDED = 0, VRX_SURFACE_EXCLUDED = 1, VRX_SURFACE_NONE = 2 };

/* K/S (Kubelka-Munk) of reflectances in percent, and absorbance; `count` single numbers. */
VRX_C_API vrx_status VRX_CALL vrx_kubelka_munk(const double* reflectances, int32_t count, double* ks);
VRX_C_API vrx_status VRX_CALL vrx_absorbance(const double* reflectances, int32_t count, double* densities);
/* Saunderson's correction of reflectances as fractions, and back. k1 and k2 from 0 to below 1. */
VRX_C_API vrx_status VRX_CALL vrx_to_internal(const double* measured, int32_t count, double k1, double k2,
                                              int32_t surface, double* internal);
VRX_C_API vrx_status VRX_CALL vrx_to_measured(const double* internal, int32_t count, double k1, double k2,
                                              int32_t surface, double* measured);

/* How strength is read. */
enum {
  VRX_STRENGTH_APPARENT = 0,   /* sum of K/S over the band */
  VRX_STRENGTH_ABSORBANCE = 1, /* sum of absorbance over the band */
  VRX_STRENGTH_CHROMATIC = 2,  /* K/S where the standard absorbs most within the band */
  VRX_STRENGTH_LUMINOUS = 3,   /* K/S of Y; from here on by the tristimulus values */
  VRX_STRENGTH_PSEUDO = 4,     /* K/S of three filter readings */
  VRX_STRENGTH_TRISTIMULUS = 5 /* sum of the corrected X, Y and Z */
};
typedef struct vrx_strength_settings {
  int32_t form;
  int32_t first, last;          /* band, 0 to 39, both inclusive */
  int32_t illuminant, observer; /* for the forms by tristimulus values */
  int32_t surface;
  double k1, k2;
} vrx_strength_settings;
/* Strength in percent of `count` batch curves against one standard. */
VRX_C_API vrx_status VRX_CALL vrx_strength(const vrx_strength_settings* settings, const double standard[40],
                                           const double* batches, int32_t count, double* percents);

/* A colour system: colorants and bases from which formulas are predicted. */
enum { VRX_COLORANT = 0, VRX_RESIN = 1, VRX_CALIBRATION_WHITE = 8 };
enum {
  VRX_MODEL_COATINGS = 0, /* two-constant theory */
  VRX_MODEL_TEXTILES = 3  /* one-constant theory: a resin or calibration white is the substrate */
};
/* An empty system with Saunderson's constants, k1 and k2 from 0 to below 1. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_open(int32_t model, double k1, double k2, vrx_handle* colorants);
/* Reads the library's archive form of a colour system. VRX_REFUSED when it is damaged or newer than the library. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_read(const uint8_t* bytes, int32_t count, vrx_handle* colorants);
/* Reads a file of a colour system (JSON). VRX_REFUSED with file, field and reason for one that cannot be used. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_open_file(const char* path, vrx_handle* colorants);
VRX_C_API vrx_status VRX_CALL vrx_colorants_open_file16(const vrx_char16* path, vrx_handle* colorants);
/* How many components a system has, colorants and then resins; the id and the kind of the one at `index` from 0, and its name. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_count(vrx_handle colorants, int32_t* count);
VRX_C_API vrx_status VRX_CALL vrx_colorants_component(vrx_handle colorants, int32_t index, int32_t* id,
                                                      int32_t* kind);
VRX_C_API vrx_status VRX_CALL vrx_colorants_name(vrx_handle colorants, int32_t index, char* text,
                                                 int32_t capacity, int32_t* length);
VRX_C_API vrx_status VRX_CALL vrx_colorants_name16(vrx_handle colorants, int32_t index, vrx_char16* text,
                                                   int32_t capacity, int32_t* length);
/* Gives component `id` a calibration level: concentration from 0 to 1, above those given before, and K and S per unit of
 * concentration, 40 numbers each. The first level of an id makes the component, of that kind. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_level(vrx_handle colorants, int32_t id, int32_t kind,
                                                  double concentration, const double absorption[40],
                                                  const double scattering[40]);
/* The curve that a formula of `count` ids and amounts gives, with the surface as the system was calibrated, included where it does not
 * say so. VRX_REFUSED where it gives none. */
VRX_C_API vrx_status VRX_CALL vrx_predict(vrx_handle colorants, const int32_t* ids, const double* amounts,
                                          int32_t count, double curve[40]);

/* The same with the surface as `surface` says, which is VRX_REFUSED where the system was calibrated otherwise, and over a backing (40 reflectances in percent, measured bare) as a film of that
 * thickness, in the unit of length of the system; opaque where `backing` is null. */
VRX_C_API vrx_status VRX_CALL vrx_predict_film(vrx_handle colorants, const int32_t* ids,
                                               const double* amounts, int32_t count, int32_t surface,
                                               const double* backing, double thickness, double curve[40]);
/* What a film absorbs and scatters over its thickness, K X and S X, from its curves over black and over white and those of the bare
 * backings (P. Kubelka 1948): unset where it is opaque; may be null. `ratio`: K/S. */
VRX_C_API vrx_status VRX_CALL vrx_film_constants(const double over_black[40], const double over_white[40],
                                                 const double black[40], const double white[40], double k1,
                                                 double k2, int32_t surface, double* absorption,
                                                 double* scattering, double ratio[40]);

/* ------------------------------------------------------------------------------------------------------------------
 * Recipes: which colorants of a colour system, and how much of each, give a colour; and what to add to a batch that came out wrong. */

enum { VRX_OBJECTIVE_TRISTIMULUS = 0, VRX_OBJECTIVE_SPECTRAL = 1, VRX_OBJECTIVE_COMBINED = 2 };
enum {
  VRX_ORDER_FEWEST = 0,
  VRX_ORDER_COLOR = 1,
  VRX_ORDER_METAMERISM = 2,
  VRX_ORDER_COST = 3,
  VRX_ORDER_INCONSTANCY = 4
};
enum { VRX_AIM_SMALLEST = 0, VRX_AIM_CHEAPEST = 1, VRX_AIM_NEAREST = 2 };
enum { VRX_USE_OFFERED = 0, VRX_USE_REQUIRED = 1, VRX_USE_EXCLUDED = 2 };

typedef struct vrx_recipe_settings {
  int32_t size;
  int32_t most_colorants; /* of a recipe, and of additions: 1 to 6; a substrate does not count */
  int32_t top;            /* recipes that are found at most, 1 to 10000 */
  int32_t objective;      /* what the search makes small */
  int32_t order;          /* of the recipes within the tolerance, which stand before the others */
  int32_t aim;            /* of a correction */
  int32_t surface;        /* what the curves hold of it */
  int32_t prerank;        /* 0: every subset is solved; else this many of each size, at most a million */
  double least_amount;    /* least share of every colorant of a recipe, 0 to 1 */
  double tolerance;       /* largest difference under any illuminant */
  double batch_size;      /* total of the amounts; with a substrate its amount */
  double resolution;      /* step of the dispenser in the unit of the amounts; 0: none */
  double most_addition;   /* of a correction, as a part of the batch, 0 to 1 */
  int64_t most_subsets;   /* of components; a search among more is refused */
} vrx_recipe_settings;
/* A recipe or correction that was found. What it has not is unset. */
typedef struct vrx_recipe_summary {
  int32_t size;
  int32_t lines;            /* of its formula */
  int32_t within_tolerance; /* 1 or 0 */
  int32_t alike;            /* recipes that differ from it by traces only */
  double total;             /* of the amounts */
  double worst;             /* of its differences from the target */
  double metamerism;        /* largest index from the first illuminant to another */
  double rms;               /* of the curves' difference from 400 to 700 nm, percent */
  double cost;
  double opacity;     /* contrast ratio in percent */
  double inconstancy; /* of its colour, the largest from the first illuminant to another */
} vrx_recipe_summary;
/* Called on the calling thread of a search with the part that is done, 0 to 1; 0 stops the search, which is then refused. */
typedef int32_t(VRX_CALL* vrx_progress)(double part, void* context);

/* Fills the structure with what is usual. */
VRX_C_API vrx_status VRX_CALL vrx_usual_recipe_settings(vrx_recipe_settings* settings);
/* A search among the components of a colour system, judged under `count` (1 to 64) illuminants, none twice, the first being the primary one.
 * `settings`: null for what is usual, with the surface of the system. VRX_REFUSED for a surface with which it was not calibrated. */
VRX_C_API vrx_status VRX_CALL vrx_search_open(vrx_handle colorants, const vrx_system* system,
                                              const int32_t* illuminants, int32_t count, int32_t observer,
                                              const vrx_recipe_settings* settings, vrx_handle* search);
/* How a component may be used, the limits of its share (0 to 1) in a recipe that has it, and the cost of one unit of it. Components
 * that no call names are free; VRX_ORDER_COST and VRX_AIM_CHEAPEST are refused where nothing that may be used costs anything. */
VRX_C_API vrx_status VRX_CALL vrx_search_component(vrx_handle search, int32_t id, int32_t use, double least,
                                                   double most, double cost);
/* Asks for the opacity of a film of that thickness over two backings, as contrast ratio in percent, and for at least so much.
 * Searches are VRX_REFUSED where the black one is not darker than the white one. */
VRX_C_API vrx_status VRX_CALL vrx_search_opacity(vrx_handle search, const double black[40],
                                                 const double white[40], double thickness,
                                                 double least_opacity);
/* Who is told how far a search is; null for nobody. */
VRX_C_API vrx_status VRX_CALL vrx_search_watch(vrx_handle search, vrx_progress progress, void* context);
/* Finds recipes of a curve, or of L*, a*, b* under the primary illuminant: how many, best first, indexed from 0. */
VRX_C_API vrx_status VRX_CALL vrx_search_match(vrx_handle search, const double target[40], int32_t* found);
VRX_C_API vrx_status VRX_CALL vrx_search_match_lab(vrx_handle search, const double lab[3], int32_t* found);
/* Finds what to add to a batch: its formula (amounts in any one unit), its measured curve, its size in the settings. Index -1 is
 * the batch as it is. */
VRX_C_API vrx_status VRX_CALL vrx_search_correct(vrx_handle search, const int32_t* ids, const double* amounts,
                                                 int32_t count, const double measured[40],
                                                 const double target[40], int32_t* found);
/* What the last call found, until the next one: a summary; the ids and amounts, for which `count` says how many there is room for; the
 * differences from the target under each illuminant (may be null), and the curve that it is predicted to give. */
VRX_C_API vrx_status VRX_CALL vrx_search_summarize(vrx_handle search, int32_t index,
                                                   vrx_recipe_summary* summary);
VRX_C_API vrx_status VRX_CALL vrx_search_amounts(vrx_handle search, int32_t index, int32_t count,
                                                 int32_t* ids, double* amounts);
VRX_C_API vrx_status VRX_CALL vrx_search_result(vrx_handle search, int32_t index, double* differences,
                                                double curve[40]);

/* ------------------------------------------------------------------------------------------------------------------
 * Calibration: K and S of the colorants of a system from weighed drawdowns, which are read as they are. */

typedef struct vrx_calibration_settings {
  int32_t size;
  int32_t
      model; /* a VRX_MODEL: textiles are ladders of single dyes on a substrate, others are mixed freely */
  int32_t surface;              /* what the curves hold of it */
  int32_t illuminant, observer; /* under which fits are told */
  int32_t
      leave_one_out; /* 1: every drawdown is foreseen without itself, too, which costs a calibration each; 0: none is */
  double k1, k2; /* of the surface */
} vrx_calibration_settings;
/* How well a drawdown is described, in CIEDE2000 units. What is not known is unset. */
typedef struct vrx_drawdown_fit {
  int32_t size;
  int32_t is_film;
  double delta_e;              /* by the calibration; of a film the mean over its two backings */
  double leave_one_out;        /* by a calibration without this drawdown */
  double leave_one_out_linear; /* the same by the linear solution, where the refined one begins */
  double thickness;            /* of a film, in the unit of length in which the white scatters 1 */
  double measured_contrast;    /* Y over black / Y over white, of a film */
  double predicted_contrast;
} vrx_drawdown_fit;

/* Fills the structure with what is usual. */
VRX_C_API vrx_status VRX_CALL vrx_usual_calibration_settings(vrx_calibration_settings* settings);
/* A calibration of `components` (1 to 200) components, numbered from 1, of which the number `white` is the unit of scattering, or
 * the substrate. Each is a colorant that its number names until vrx_calibration_component says more. */
VRX_C_API vrx_status VRX_CALL vrx_calibration_open(const vrx_calibration_settings* settings,
                                                   int32_t components, int32_t white,
                                                   vrx_handle* calibration);
/* The kind (VRX_COLORANT or VRX_RESIN) and the name of a component. */
VRX_C_API vrx_status VRX_CALL vrx_calibration_component(vrx_handle calibration, int32_t id, int32_t kind,
                                                        const char* name);
VRX_C_API vrx_status VRX_CALL vrx_calibration_component16(vrx_handle calibration, int32_t id, int32_t kind,
                                                          const vrx_char16* name);
/* Adds a drawdown: a share of every component, in any one unit, and the weight of its residuals, 1 as a rule. It is opaque, or a film
 * that was read over a black and a white card, which were read bare. Up to 10000, indexed from 0. */
VRX_C_API vrx_status VRX_CALL vrx_calibration_opaque(vrx_handle calibration, const double* shares,
                                                     double weight, const double curve[40]);
VRX_C_API vrx_status VRX_CALL vrx_calibration_film(vrx_handle calibration, const double* shares,
                                                   double weight, const double over_black[40],
                                                   const double over_white[40], const double black[40],
                                                   const double white[40]);
/* Calibrates: a colour system whose components have those numbers. VRX_REFUSED with the drawdown or the components and the reason
 * where the drawdowns do not tell it. */
VRX_C_API vrx_status VRX_CALL vrx_calibrate(vrx_handle calibration, vrx_handle* colorants);
/* How the last calibration describes a drawdown. */
VRX_C_API vrx_status VRX_CALL vrx_calibration_fit(vrx_handle calibration, int32_t drawdown,
                                                  vrx_drawdown_fit* fit);
/* The text of a file of a colour system (JSON, UTF-8), which vrx_colorants_open_file reads. */
VRX_C_API vrx_status VRX_CALL vrx_colorants_text(vrx_handle colorants, char* text, int32_t capacity,
                                                 int32_t* length);

/* Closes a handle of any kind. */
VRX_C_API vrx_status VRX_CALL vrx_close(vrx_handle handle);

/* ------------------------------------------------------------------------------------------------------------------
 * Linear equations */

/* Solves a x = b by elimination with pivoting; `a` is n x n (n up to 4096), row by row. VRX_REFUSED when it is singular. */
VRX_C_API vrx_status VRX_CALL vrx_solve(const double* a, const double* b, int32_t n, double* x);

#ifdef __cplusplus
}
#endif

#endif /* VRXMATH_C_API_H_ */
