#include <vrxmath/platform/posix/locale_texts.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace vrx::platform_internal {
namespace {

// One conversion of strftime as a picture, with the names short and in full.
struct Conversion {
  WideChar letter;
  bool isTime;
  WideView picture;
  WideView inFull;
};

constexpr Conversion kConversions[] = {
    {u'd', false, u"dd", u"dd"},     {u'e', false, u"d", u"d"},       {u'm', false, u"MM", u"MM"},
    {u'y', false, u"yy", u"yyyy"},   {u'Y', false, u"yyyy", u"yyyy"}, {u'a', false, u"ddd", u"dddd"},
    {u'A', false, u"dddd", u"dddd"}, {u'b', false, u"MMM", u"MMMM"},  {u'h', false, u"MMM", u"MMMM"},
    {u'B', false, u"MMMM", u"MMMM"}, {u'H', true, u"HH", u"HH"},      {u'k', true, u"H", u"H"},
    {u'I', true, u"hh", u"hh"},      {u'l', true, u"h", u"h"},        {u'M', true, u"mm", u"mm"},
    {u'S', true, u"ss", u"ss"},      {u'p', true, u"tt", u"tt"},      {u'P', true, u"tt", u"tt"},
};

// A piece of a format: a conversion, or the text between two (no conversion).
struct Piece {
  const Conversion* conversion = nullptr;
  bool unpadded = false;  // "%-d"
  CString text;
};

WideView CompositeOf(WideChar letter, const PosixLocaleTexts& texts) {
  switch (letter) {
    case u'T':
      return u"%H:%M:%S";
    case u'R':
      return u"%H:%M";
    case u'D':
      return u"%m/%d/%y";
    case u'F':
      return u"%Y-%m-%d";
    case u'r':
      return texts.tFmtAmPm.IsEmpty() ? WideView(u"%I:%M:%S %p") : texts.tFmtAmPm.View();
    case u'x':
      return texts.dFmt;
    case u'X':
      return texts.tFmt;
    default:
      return {};
  }
}

void AppendText(std::vector<Piece>& pieces, WideChar unit) {
  if (pieces.empty() || pieces.back().conversion != nullptr) pieces.emplace_back();
  pieces.back().text += unit;
}

// Takes a strftime format apart. Time zones and conversions without a picture letter fall away. `depth` ends
// a format that names itself.
void Split(std::vector<Piece>& pieces, WideView format, const PosixLocaleTexts& texts, int depth = 0) {
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != u'%' || i + 1 == format.size()) {
      AppendText(pieces, format[i]);
      continue;
    }
    bool unpadded = false;
    for (++i; i + 1 < format.size() && WideView(u"-_^#0EO").find(format[i]) != WideView::npos; ++i) {
      unpadded = unpadded || format[i] == u'-' || format[i] == u'_';
    }
    const WideChar letter = format[i];
    const auto* conversion = std::find_if(std::begin(kConversions), std::end(kConversions),
                                          [&](const Conversion& c) { return c.letter == letter; });
    if (conversion != std::end(kConversions)) {
      pieces.push_back({conversion, unpadded, {}});
    } else if (letter == u'%' || letter == u'n' || letter == u't') {
      AppendText(pieces, letter == u'%' ? u'%' : u' ');
    } else if (depth < 2) {
      Split(pieces, CompositeOf(letter, texts), texts, depth + 1);
    }
  }
}

std::vector<Piece> SplitFormat(WideView format, const PosixLocaleTexts& texts) {
  std::vector<Piece> pieces;
  Split(pieces, format, texts);
  return pieces;
}

bool IsLetter(WideChar unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

// The text as it must stand in a picture: letters and apostrophes between apostrophes.
void AppendQuotedText(CString& picture, WideView text) {
  const bool quoted =
      std::any_of(text.begin(), text.end(), [](WideChar c) { return IsLetter(c) || c == u'\''; });
  if (!quoted) {
    picture += text;
    return;
  }
  picture += u'\'';
  for (const WideChar unit : text) picture += unit == u'\'' ? WideView(u"''") : WideView(&unit, 1);
  picture += u'\'';
}

// Units between the parts of a format that belong to neither; the Arabic comma too.
constexpr WideView kBlanks = u" \t\u00A0\u202F,\u060C";

CString Trimmed(const CString& text) {
  const WideView view = text;
  const std::size_t first = view.find_first_not_of(kBlanks);
  return first == WideView::npos ? CString()
                                 : CString(view.substr(first, view.find_last_not_of(kBlanks) - first + 1));
}

// Words between a date and a time that say that a time follows: Norwegian, ISO 8601, Hausa and Tibetan.
constexpr WideView kTimeWords[] = {u"kl.", u"T", u"cikin", u"\u0F46\u0F74\u0F0B\u0F5A\u0F7C\u0F51"};

// The part of the text behind a date that belongs to it: all but blanks at its end, unless it is a word of the time.
CString WithoutTimeWords(const CString& text) {
  const CString word = Trimmed(text);
  if (std::find(std::begin(kTimeWords), std::end(kTimeWords), word.View()) != std::end(kTimeWords)) return {};
  return CString(text.View().substr(0, text.View().find_last_not_of(kBlanks) + 1));
}

enum class Wanted { kDate, kDateInFull, kTime };

// The picture of the wanted part of a format: its conversions, each with the text that follows it; text
// before the first conversion belongs to the first.
CString PictureOf(WideView format, const PosixLocaleTexts& texts, Wanted wanted) {
  const std::vector<Piece> pieces = SplitFormat(format, texts);
  const auto isWanted = [&](const Piece& piece) {
    return piece.conversion->isTime == (wanted == Wanted::kTime);
  };
  const auto first =
      std::find_if(pieces.begin(), pieces.end(), [](const Piece& p) { return p.conversion != nullptr; });
  bool keeps = first != pieces.end() && isWanted(*first);
  CString picture;
  for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
    if (piece->conversion != nullptr) keeps = isWanted(*piece);
    if (!keeps) continue;
    if (piece->conversion == nullptr) {
      const bool goesOn = std::any_of(piece + 1, pieces.end(),
                                      [&](const Piece& p) { return p.conversion != nullptr && isWanted(p); });
      AppendQuotedText(picture, goesOn ? piece->text : WithoutTimeWords(piece->text));
    } else {
      const Conversion& conversion = *piece->conversion;
      const WideView letters = wanted == Wanted::kDateInFull ? conversion.inFull : conversion.picture;
      picture += piece->unpadded && letters.size() == 2 ? letters.substr(0, 1) : letters;
    }
  }
  return Trimmed(picture);
}

CString TimeSeparatorOf(const PosixLocaleTexts& texts) {
  const std::vector<Piece> pieces = SplitFormat(texts.tFmt, texts);
  for (std::size_t i = 1; i + 1 < pieces.size(); ++i) {
    const bool afterHours = pieces[i - 1].conversion != nullptr && pieces[i - 1].conversion->isTime;
    const WideView text = pieces[i].text;
    if (!afterHours || pieces[i].conversion != nullptr) continue;
    const bool isMark =
        std::all_of(text.begin(), text.end(), [](WideChar c) { return c < 0x80 && !IsLetter(c); });
    return isMark ? Trimmed(pieces[i].text) : CString(u":");
  }
  return u":";
}

// The last size repeats, unless it is followed by the largest char.
std::vector<uint8_t> GroupSizesOf(const std::string& grouping) {
  std::vector<uint8_t> sizes;
  for (const char size : grouping) {
    const bool isEnd = static_cast<signed char>(size) < 0 || size == CHAR_MAX;
    sizes.push_back(isEnd ? uint8_t{0} : static_cast<uint8_t>(size));
    if (isEnd) break;
  }
  return sizes;
}

void ReplaceUnlessEmpty(CString& value, const CString& text) {
  if (!text.IsEmpty()) value = text;
}

}  // namespace

LocaleConventions ConventionsOf(const PosixLocaleTexts& texts) {
  LocaleConventions conventions;
  ReplaceUnlessEmpty(conventions.decimalSeparator, texts.radixChar);
  conventions.groupSeparator = texts.thouSep;
  conventions.groupSizes = GroupSizesOf(texts.grouping);
  ReplaceUnlessEmpty(conventions.timeSeparator, TimeSeparatorOf(texts));
  ReplaceUnlessEmpty(conventions.shortDatePicture, PictureOf(texts.dFmt, texts, Wanted::kDate));
  ReplaceUnlessEmpty(conventions.longDatePicture, PictureOf(texts.dTFmt, texts, Wanted::kDateInFull));
  ReplaceUnlessEmpty(conventions.timePicture, PictureOf(texts.tFmt, texts, Wanted::kTime));
  conventions.shortDayNames = texts.abDay;
  conventions.dayNames = texts.day;
  std::transform(texts.abMon.begin(), texts.abMon.end(), conventions.shortMonthNames.begin(), Trimmed);
  conventions.monthNames = texts.mon;
  conventions.standaloneMonthNames = texts.altMon;
  conventions.am = texts.amStr;
  conventions.pm = texts.pmStr;
  return conventions;
}

}  // namespace vrx::platform_internal
