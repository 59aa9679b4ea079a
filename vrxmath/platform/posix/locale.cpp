#include <clocale>
#include <cwchar>
#include <langinfo.h>
#include <locale.h>
#include <string>

#include <vrxmath/platform/posix/locale_texts.h>

namespace vrx::platform_internal {
namespace {

// A locale of the C library, while it is asked; also this thread's, so that its encoding can be converted.
class OpenLocale {
 public:
  explicit OpenLocale(const char* name) : locale_(::newlocale(LC_ALL_MASK, name, locale_t{})) {
    if (locale_ == locale_t{}) locale_ = ::newlocale(LC_ALL_MASK, "C", locale_t{});
    previous_ = ::uselocale(locale_);
  }
  OpenLocale(const OpenLocale&) = delete;
  OpenLocale& operator=(const OpenLocale&) = delete;
  ~OpenLocale() {
    ::uselocale(previous_);
    ::freelocale(locale_);
  }

  CString Text(nl_item item) const {
    const char* bytes = ::nl_langinfo_l(item, locale_);
    std::mbstate_t state = {};
    const std::size_t length = std::mbsrtowcs(nullptr, &bytes, 0, &state);
    if (length == static_cast<std::size_t>(-1)) return CString::FromUtf8(bytes);
    std::wstring wide(length, L'\0');
    state = {};
    std::mbsrtowcs(wide.data(), &bytes, length, &state);
    return FromCodePoints(wide);
  }

  template <std::size_t N>
  std::array<CString, N> Texts(nl_item first) const {
    std::array<CString, N> texts;
    for (std::size_t i = 0; i < N; ++i) texts[i] = Text(first + static_cast<nl_item>(i));
    return texts;
  }

 private:
  // wchar_t holds code points here; names of days and months lie in the basic plane.
  static CString FromCodePoints(const std::wstring& wide) {
    CString text;
    for (const wchar_t c : wide)
      text += static_cast<WideChar>(static_cast<uint32_t>(c) < 0x10000 ? c : 0xFFFD);
    return text;
  }

  locale_t locale_;
  locale_t previous_;
};

}  // namespace

PosixLocaleTexts ReadPosixLocaleTexts(const char* name) {
  const OpenLocale locale(name);
  PosixLocaleTexts texts;
  texts.dFmt = locale.Text(D_FMT);
  texts.tFmt = locale.Text(T_FMT);
  texts.tFmtAmPm = locale.Text(T_FMT_AMPM);
  texts.dTFmt = locale.Text(D_T_FMT);
  texts.amStr = locale.Text(AM_STR);
  texts.pmStr = locale.Text(PM_STR);
  texts.radixChar = locale.Text(RADIXCHAR);
  texts.thouSep = locale.Text(THOUSEP);
  texts.grouping = std::localeconv()->grouping;
  texts.abDay = locale.Texts<7>(ABDAY_1);
  texts.day = locale.Texts<7>(DAY_1);
  texts.abMon = locale.Texts<12>(ABMON_1);
  texts.mon = locale.Texts<12>(MON_1);
#if defined(ALTMON_1) || defined(__GLIBC__)
  texts.altMon = locale.Texts<12>(ALTMON_1);
#else
  texts.altMon = texts.mon;
#endif
  return texts;
}

const Locale& SystemLocale() {
  static const FixedLocale locale(ConventionsOf(ReadPosixLocaleTexts("")));
  return locale;
}

}  // namespace vrx::platform_internal
