#include <vrxmath/support/condition_text.h>

#include <algorithm>
#include <array>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

// One position of the code: its letters in the order of their texts, and what stands for any other letter.
struct Position {
  WideView letters;
  WideChar defaultLetter;
};

constexpr WideChar kSameAsLens = 0;
constexpr std::ptrdiff_t kLens = 4;
constexpr int32_t kFewestLetters = 3;

constexpr std::array<Position, 6> kPositions = {{
    {u"BCHKLX", u'C'},           // calibration
    {u"1234567PRT", u'R'},       // gloss, or measuring mode
    {u"BEI", u'E'},              // specular component
    {u"AEFGIJPQR", u'I'},        // ultraviolet content
    {u"LMSUVX", u'L'},           // lens
    {u"LMOPSUVX", kSameAsLens},  // mask
}};

// The string number of a position's first letter: the texts of all positions stand in one row.
uint32_t FirstText(std::size_t position) {
  std::size_t number = kStringConditionLetters;
  for (std::size_t i = 0; i < position; ++i) number += kPositions[i].letters.size();
  return static_cast<uint32_t>(number);
}

// Puts letter `i` right and returns its text.
WideView DescribePosition(CString& code, std::size_t i) {
  const auto at = static_cast<std::ptrdiff_t>(i);
  const WideView letters = kPositions[i].letters;
  if (letters.find(code.GetAt(at)) == WideView::npos) {
    const WideChar letter = kPositions[i].defaultLetter;
    code.SetAt(at, letter != kSameAsLens ? letter : code.GetAt(kLens));
  }
  const std::size_t letter = letters.find(code.GetAt(at));
  return letter == WideView::npos ? WideView() : FindString(FirstText(i) + static_cast<uint32_t>(letter));
}

}  // namespace

CString ConditionText(CString& code) {
  if (code == FindString(kStringConditionStandard)) return CString::Load(kStringConditionStandard + 1);
  while (code.GetLength() < kFewestLetters) code += u' ';
  const std::size_t count = std::min(code.View().size(), kPositions.size());
  CString text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += u", ";
    text += DescribePosition(code, i);
  }
  return text;
}

}  // namespace vrx
