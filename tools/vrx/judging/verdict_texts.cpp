#include "tools/vrx/judging/verdict_texts.h"

#include <array>

namespace vrx::tool {

VerdictLook LookOf(Verdict verdict) {
  static constexpr VerdictLook kLooks[] = {
      {"fail", Tint::kBad}, {"warning", Tint::kWarning}, {"pass", Tint::kGood}};
  return kLooks[static_cast<std::size_t>(verdict)];
}

const std::string& TextOf(ShadeWord word) {
  static constexpr std::size_t kWords = 11;
  static const auto kTexts = [] {
    std::array<std::string, kWords> texts;
    for (std::size_t i = 0; i < kWords; ++i)
      texts[i] = CString(ShadeWordText(static_cast<ShadeWord>(i))).ToUtf8();
    return texts;
  }();
  return kTexts[static_cast<std::size_t>(word)];
}

std::string JoinedWords(std::span<const ShadeWord> words) {
  std::string text;
  for (const ShadeWord word : words) {
    if (word != kShadeNone) text.append(text.empty() ? "" : ", ").append(TextOf(word));
  }
  return text;
}

}  // namespace vrx::tool
