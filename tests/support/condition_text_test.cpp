#include <gtest/gtest.h>

#include <vrxmath/support/condition_text.h>

namespace vrx {
namespace {

TEST(ConditionText, DescribesAndPutsRightInPlace) {
  struct Row {
    const WideChar* code;
    const char* corrected;
    const char* text;
  };
  const Row rows[] = {
      {u"C", "CRE", "C - Calibrated, R - Reflectance, E - SCE"},
      {u"", "CRE", "C - Calibrated, R - Reflectance, E - SCE"},
      {u"B1B", "B1B", "B - 100% Cal, 1 - Flat, B - Both SCI/SCE"},
      {u"XTIR", "XTIR",
       "X - Not Calibrated, T - Transmittance, I - SCI, R - Partial UV Energy (400nm Cutoff)"},
      {u"CRIIMZ", "CRIIMM",
       "C - Calibrated, R - Reflectance, I - SCI, I - 100% UV Energy, M - Medium Lens, M - Medium Mask"},
      {u"cri??Xyz", "CREILXyz",
       "C - Calibrated, R - Reflectance, E - SCE, I - 100% UV Energy, L - Large Lens, X - Extra Large Mask"},
      {u"CRIA?!", "CRIALL",
       "C - Calibrated, R - Reflectance, I - SCI, A - Extra UV Filter, L - Large Lens, L - Large Mask"},
      {u"Std", "Std", "No Standard Available"},
      {u"STD", "CTE", "C - Calibrated, T - Transmittance, E - SCE"},
  };
  for (const Row& row : rows) {
    CString code(row.code);
    EXPECT_EQ(ConditionText(code).ToUtf8(), row.text);
    EXPECT_EQ(code.ToUtf8(), row.corrected);
  }
}

// Every text begins with its letter, so each letter must find the text of its own.
TEST(ConditionText, EveryLetterFindsItsText) {
  const WideView letters[] = {u"BCHKLX", u"1234567PRT", u"BEI", u"AEFGIJPQR", u"LMSUVX", u"LMOPSUVX"};
  const WideChar* const words[] = {u"", u"", u"", u"UV", u"Lens", u"Mask"};
  for (std::size_t position = 0; position < 6; ++position) {
    for (const WideChar letter : letters[position]) {
      CString code(u"CREILL");
      code.SetAt(static_cast<std::ptrdiff_t>(position), letter);
      const CString text = ConditionText(code);
      WideView piece = text;
      for (std::size_t i = 0; i < position; ++i) piece.remove_prefix(piece.find(u", ") + 2);
      piece = piece.substr(0, piece.find(u", "));
      EXPECT_EQ(piece.substr(0, 4), std::u16string(1, letter) + u" - ") << text.ToUtf8();
      EXPECT_NE(piece.find(words[position]), WideView::npos) << text.ToUtf8();
    }
  }
}

}  // namespace
}  // namespace vrx
