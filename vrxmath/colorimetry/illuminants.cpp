#include <algorithm>

#include <vrxmath/colorimetry/illuminants.h>
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
  if (illuminant < 0 || illuminant >= kIlluminantNumbers) return {{}, {}, true};
  const WideView both = FindString(kStringIlluminant + static_cast<uint32_t>(illuminant));
  const std::size_t bar = both.find(u'|');
  if (bar == WideView::npos) return {both, both, true};
  return {both.substr(0, bar), both.substr(bar + 1), false};
}

enum ObserverForm : uint32_t { kPlain = 0, kDash = 2, kSlash = 4 };

WideView ObserverText(int32_t observer, ObserverForm form) {
  return FindString(kStringObserver + form + (observer == kObserver10 ? 1u : 0u));
}

WideChar LowerCase(WideChar c) {
  return c >= u'A' && c <= u'Z' ? static_cast<WideChar>(c + 32) : c;
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
  for (int32_t number = 0; number < kBuiltInIlluminants; ++number) {
    const WideView candidate = DescriptionOf(static_cast<vrxIlluminant>(number)).code;
    if (std::equal(code.begin(), code.end(), candidate.begin(), candidate.end(),
                   [](WideChar a, WideChar b) { return LowerCase(a) == LowerCase(b); })) {
      illuminant = static_cast<vrxIlluminant>(number);
      return true;
    }
  }
  return false;
}

}  // namespace vrx
