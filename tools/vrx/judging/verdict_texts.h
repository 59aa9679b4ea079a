// Verdicts and shade words as they are written.

#ifndef TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_
#define TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_

#include <span>
#include <string>

#include <vrxmath/judging/evaluation.h>

#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// A verdict's word and its colour on a terminal.
struct VerdictLook {
  const char* text;
  Tint tint;
};
VerdictLook LookOf(Verdict verdict);

/// A shade word as UTF-8; a blank for none.
const std::string& TextOf(ShadeWord word);
/// The words that say something, as "Darker, Redder".
std::string JoinedWords(std::span<const ShadeWord> words);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_
