/* The header of the controls in C: it compiles, and a structure of it is what the library takes. */
#include "c_host.h"

int ShowColorsFromC(HWND swatch, COLORREF standard, COLORREF trial) {
  VRX_SWATCH_DATA data = {{sizeof data, 0, standard, trial}, L"standard", L"trial"};
  return (int)SendMessageW(swatch, VRXDM_SET, 0, (LPARAM)&data);
}
