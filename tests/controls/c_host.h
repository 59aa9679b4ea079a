/* What a host in C does. */
#ifndef TESTS_CONTROLS_C_HOST_H_
#define TESTS_CONTROLS_C_HOST_H_

#include "controls/vrx_controls.h"

#ifdef __cplusplus
extern "C"
#endif
    int
    ShowColorsFromC(HWND swatch, COLORREF standard, COLORREF trial);

#endif /* TESTS_CONTROLS_C_HOST_H_ */
