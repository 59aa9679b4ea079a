#include <vrxmath/colorimetry/illuminants.h>

#include <algorithm>

#include <vrxmath/colorimetry/illuminant_registry.h>
#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/resources.h>

namespace vrx {
namespace {

struct Description {
  WideView code;
  WideView text;
  bool reserved;
};

// The description of an illuminant, taken apart at its bar; one without a bar stands for both parts.
Description DescriptionOf(vrxIlluminant illuminant) {
  const bool numbered = illuminant >= 0 && illuminant < kIlluminantNumbers;
  const WideView both = numbered ? FindString(kStringIlluminant + static_cast<uint32_t>(illuminant))
                                 : colorimetry_internal::UserIlluminantText(illuminant);
  const std::size_t bar = both.find(u'|');
  if (bar == WideView::npos) return {both, both, true};
  return {both.substr(0, bar), both.substr(bar + 1), false};
}

enum ObserverForm : uint32_t { kPlain = 0, kDash = 2, kSlash = 4 };

WideView ObserverText(int32_t observer, ObserverForm form) {
  return FindString(kStringObserver + form + (observer == kObserver10 ? 1U : 0U));
}

WideChar LowerCase(WideChar c) {
  return c >= u'A' && c <= u'Z' ? static_cast<WideChar>(c + 32) : c;
}

bool EqualWithoutCase(WideView a, WideView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](WideChar x, WideChar y) { return LowerCase(x) == LowerCase(y); });
}

}  // namespace

CString IlluminantCode(vrxIlluminant illuminant) {
  return CString(DescriptionOf(illuminant).code);
}

CString IlluminantName(vrxIlluminant illuminant, int32_t observer, int32_t style) {
  if (style == kNameObserver) return CString(ObserverText(observer, kPlain));
  const Description description = DescriptionOf(illuminant);
  if (description.reserved) return CString(description.code);
  if (style == kNameDescription) return CString(description.text);
  CString name;
  if (style == kNamePrefixed || style == kNamePrefixedDashObserver)
    name = FindString(kStringIlluminantPrefix);
  name += description.code;
  if (style == kNamePrefixed || style == kNameCode) return name;
  const bool dash = style == kNameDashObserver || style == kNamePrefixedDashObserver;
  name += ObserverText(observer, dash ? kDash : kSlash);
  return name;
}

CIllumArray IlluminantDisplayOrder() {
  CIllumArray order;
  order.RemoveAll();
  int32_t number = 0;
  for (const WideChar c : FindString(kStringIlluminantOrder)) {
    if (c != u',') {
      number = 10 * number + (c - u'0');
    } else {
      order.Add(static_cast<vrxIlluminant>(number));
      number = 0;
    }
  }
  order.Add(static_cast<vrxIlluminant>(number));
  return order;
}

bool FindIlluminant(WideView code, vrxIlluminant& illuminant) {
  CIllumArray candidates = IlluminantDisplayOrder();
  for (int32_t i = 0; i < kUserIlluminants; ++i) {
    const int32_t number = kFirstUserIlluminant + i;
    if (colorimetry_internal::IsRegistered(number)) candidates.Add(static_cast<vrxIlluminant>(number));
  }
  const auto found = std::find_if(candidates.begin(), candidates.end(), [code](vrxIlluminant candidate) {
    return EqualWithoutCase(code, DescriptionOf(candidate).code);
  });
  if (found == candidates.end()) return false;
  illuminant = *found;
  return true;
}

}  // namespace vrx
