#include <vrxmath/platform/case_folding.h>

#include <algorithm>
#include <cstdint>

namespace vrx {
namespace {

// Small letters `first`, `first + step` ... `last` and the distance to their capitals.
struct Letters {
  uint16_t first;
  uint16_t last;
  uint16_t step;
  int16_t toCapital;
};

// The simple upper-case mapping of Unicode 14. A gap between alternating capitals and small letters is crossed
// where a range says so.
constexpr Letters kLetters[] = {
    {0x0061, 0x007A, 1, -32},  // Latin
    {0x00B5, 0x00B5, 1, 743}, {0x00E0, 0x00F6, 1, -32}, {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121}, {0x0101, 0x012F, 2, -1},  {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},  {0x014B, 0x0177, 2, -1},  {0x017A, 0x017E, 2, -1},
    {0x01A1, 0x01A5, 2, -1},  {0x01B0, 0x01B0, 1, -1},  {0x01CE, 0x01DC, 2, -1},
    {0x01DF, 0x01EF, 2, -1},  {0x01F9, 0x021F, 2, -1},  {0x0223, 0x0233, 2, -1},
    {0x03AC, 0x03AC, 1, -38},  // Greek
    {0x03AD, 0x03AF, 1, -37}, {0x03B1, 0x03C1, 1, -32}, {0x03C2, 0x03C2, 1, -31},
    {0x03C3, 0x03CB, 1, -32}, {0x03CC, 0x03CC, 1, -64}, {0x03CD, 0x03CE, 1, -63},
    {0x0430, 0x044F, 1, -32},  // Cyrillic
    {0x0450, 0x045F, 1, -80}, {0x0461, 0x0481, 2, -1},  {0x048B, 0x04BF, 2, -1},
    {0x04C2, 0x04CE, 2, -1},  {0x04CF, 0x04CF, 1, -15}, {0x04D1, 0x052F, 2, -1},
    {0x0561, 0x0586, 1, -48},                           // Armenian
    {0x1E01, 0x1E95, 2, -1},  {0x1EA1, 0x1EFF, 2, -1},  // Latin with two marks
    {0xFF41, 0xFF5A, 1, -32},                           // full-width Latin
};

}  // namespace

WideChar ToCapital(WideChar unit) {
  const auto* letters = std::lower_bound(std::begin(kLetters), std::end(kLetters), unit,
                                         [](const Letters& row, WideChar c) { return row.last < c; });
  if (letters == std::end(kLetters) || unit < letters->first ||
      (unit - letters->first) % letters->step != 0) {
    return unit;
  }
  return static_cast<WideChar>(unit + letters->toCapital);
}

bool EqualWithoutCase(WideView a, WideView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](WideChar x, WideChar y) { return ToCapital(x) == ToCapital(y); });
}

}  // namespace vrx
