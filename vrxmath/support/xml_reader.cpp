#include <vrxmath/support/xml_reader.h>

#include <algorithm>
#include <cstring>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/with_memory.h>
#include <vrxmath/support/xml_parser.h>
#include <vrxmath/support/xml_scanner.h>
#include <vrxmath/support/xml_search_index.h>

namespace vrx {
namespace {

using platform_internal::WithMemory;

struct Entity {
  WideChar unit;
  WideView text;  // after the "&"
};
constexpr Entity kEntities[] = {
    {u'<', u"lt;"}, {u'&', u"amp;"}, {u'>', u"gt;"}, {u'\'', u"apos;"}, {u'"', u"quot;"}};
constexpr std::size_t kTextEntities = 3;  // the quotes after them stand for themselves outside attributes

CString Decoded(WideView text) {
  const XmlScanner scanner(text);
  CString out;
  int32_t from = 0;
  for (int32_t amp; (amp = scanner.Find(u'&', from)) != kXmlNotFound;) {
    out += scanner.Between(from, amp);
    from = amp + 1;
    const Entity* entity = std::find_if(std::begin(kEntities), std::end(kEntities),
                                        [&](const Entity& e) { return scanner.Has(from, e.text); });
    if (entity == std::end(kEntities)) {
      out += u'&';
    } else {
      out += entity->unit;
      from += static_cast<int32_t>(entity->text.size());
    }
  }
  out += scanner.Between(from, scanner.GetLength());
  return out;
}

CString Encoded(WideView from, bool forAttribute) {
  const auto end = forAttribute ? std::end(kEntities) : std::begin(kEntities) + kTextEntities;
  CString out;
  std::size_t copied = 0;
  for (std::size_t i = 0; i < from.size(); ++i) {
    const Entity* entity =
        std::find_if(std::begin(kEntities), end, [&](const Entity& e) { return e.unit == from[i]; });
    if (entity == end) continue;
    out += from.substr(copied, i - copied);
    out += u'&';
    out += entity->text;
    copied = i + 1;
  }
  out += from.substr(copied);
  return out;
}

CString DecodeText(WideView text) {
  return WithMemory([&] { return Decoded(text); });
}

CString TextOf(WideView text) {
  return WithMemory([&] { return CString(text); });
}

// Appends bytes, each made a unit by `widen`, through a buffer: no second copy of the text is held.
template <class Widen>
void AppendWidened(std::u16string& text, std::string_view bytes, Widen widen) {
  constexpr std::size_t kBufferUnits = 4096;
  WideChar buffer[kBufferUnits];
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kBufferUnits))) {
    const std::string_view part = bytes.substr(0, kBufferUnits);
    std::transform(part.begin(), part.end(), buffer, widen);
    text.append(buffer, part.size());
  }
}

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

// Length of the ASCII that `utf8` begins with; eight bytes are looked at together.
std::size_t AsciiLength(std::string_view utf8) {
  std::size_t length = 0;
  for (uint64_t bytes; utf8.size() - length >= sizeof bytes; length += sizeof bytes) {
    std::memcpy(&bytes, utf8.data() + length, sizeof bytes);
    if ((bytes & 0x8080808080808080) != 0) break;
  }
  while (length < utf8.size() && IsAscii(utf8[length])) ++length;
  return length;
}

// Appends UTF-8: runs of ASCII are widened, and what lies between them, which holds whole sequences, is
// converted.
void AppendUtf8(std::u16string& text, std::string_view utf8) {
  while (!utf8.empty()) {
    const std::size_t ascii = AsciiLength(utf8);
    AppendWidened(text, utf8.substr(0, ascii), [](char c) { return static_cast<WideChar>(c); });
    utf8.remove_prefix(ascii);
    const auto other = std::find_if(utf8.begin(), utf8.end(), IsAscii) - utf8.begin();
    text += CString::FromUtf8(utf8.substr(0, static_cast<std::size_t>(other))).View();
    utf8.remove_prefix(static_cast<std::size_t>(other));
  }
}

}  // namespace

CXmlReader::CXmlReader() : elements_(1) {}

bool CXmlReader::SetDoc(XmlText text) {
  if (text.View().size() > kMaxXmlLength) {
    Clear();
    return Fail(u"Document too long");
  }
  return WithMemory([&] {
    doc_.assign(text.View());
    return Parse();
  });
}

bool CXmlReader::SetDocBytes(const void* bytes, int32_t count) {
  Clear();
  if (bytes == nullptr || count < 1) return false;
  const std::string_view text(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
  if (text.size() > kMaxXmlLength) return Fail(u"Document too long");
  return WithMemory([&] {
    doc_.reserve(text.size());
    AppendWidened(doc_, text, [](char c) { return static_cast<WideChar>(static_cast<signed char>(c)); });
    return Parse();
  });
}

bool CXmlReader::SetDocUtf8(std::string_view utf8) {
  Clear();
  if (utf8.size() > kMaxXmlLength) return Fail(u"Document too long");
  return WithMemory([&] {
    doc_.reserve(utf8.size());
    AppendUtf8(doc_, utf8);
    return Parse();
  });
}

void CXmlReader::Clear() {
  doc_.clear();
  Parse();
}

bool CXmlReader::Parse() {
  ResetPosition();
  ForgetIndexes();
  error_.Empty();
  return ParseXmlElements(doc_, elements_, error_);
}

bool CXmlReader::Fail(WideView text) {
  error_ = text;
  return false;
}

void CXmlReader::ForgetIndexes() {
  searched_ = 0;
  names_.reset();
  attributes_.reset();
}

const XmlElement& CXmlReader::At(int32_t index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= elements_.size()) throw CInvalidArgException();
  return elements_[static_cast<std::size_t>(index)];
}

const XmlElement& CXmlReader::GetElement(int32_t index) const {
  return At(index);
}

void CXmlReader::ResetPosition() {
  parent_ = current_ = child_ = 0;
  valid_ = false;
}

// True once searches have looked at so much that sorting the names costs less than going on.
bool CXmlReader::IsSearchedOften() const {
  constexpr int64_t kTimesTheDocument = 16;
  constexpr int64_t kSmallDocument = 1024;
  return searched_ > kTimesTheDocument * (static_cast<int64_t>(doc_.size()) + kSmallDocument);
}

// The next child of `parent` after the child `after` (0: from the first on) that `name` matches; 0 for none.
int32_t CXmlReader::NextMatching(int32_t parent, int32_t after, WideView name) const {
  int32_t index = after != 0 ? At(after).nextSibling : At(parent).firstChild;
  if (name.empty()) return index;
  if (!names_ && IsSearchedOften()) {
    names_ = WithMemory([&] { return std::make_shared<XmlNameIndex>(MakeTagNameIndex(doc_, elements_)); });
  }
  if (names_) {
    return std::max(0, names_->First(doc_, parent, name, after != 0 ? At(after).closeEnd : 0));
  }
  const XmlScanner scanner(doc_);
  for (XmlToken token; index != 0; index = At(index).nextSibling) {
    scanner.ReadToken(At(index).tagStart + 1, token);
    searched_ += token.end - At(index).tagStart;
    if (XmlNameMatches(name, scanner.TextOf(token))) break;
  }
  return index;
}

bool CXmlReader::FindElem(XmlText name) {
  const int32_t found = NextMatching(parent_, current_, name.View());
  if (found == 0) return false;
  current_ = found;
  child_ = 0;
  valid_ = true;
  return true;
}

bool CXmlReader::FindChildElem(XmlText name) {
  if (current_ == 0) FindElem();
  const int32_t found = NextMatching(current_, child_, name.View());
  if (found == 0) return false;
  child_ = found;
  current_ = At(found).parent;
  parent_ = At(current_).parent;
  valid_ = current_ != 0;
  return true;
}

bool CXmlReader::IntoElem() {
  if (current_ == 0 || !valid_) return false;
  parent_ = current_;
  current_ = child_;
  child_ = 0;
  valid_ = current_ != 0;
  return true;
}

bool CXmlReader::OutOfElem() {
  if (parent_ == 0) return false;
  child_ = current_;
  current_ = parent_;
  parent_ = At(parent_).parent;
  valid_ = true;
  return true;
}

CString CXmlReader::GetTagName(int32_t index) const {
  const XmlElement& element = At(index);
  XmlToken token;
  if (element.tagEnd == 0) return CString();  // the document, or removed
  const XmlScanner scanner(doc_);
  scanner.ReadToken(element.tagStart + 1, token);
  return TextOf(scanner.TextOf(token));
}

CString CXmlReader::GetData(int32_t index) const {
  constexpr WideView kSectionBegin = u"<![CDATA[", kSectionEnd = u"]]>";
  const XmlElement& element = At(index);
  if (element.tagEnd == 0 || element.firstChild != 0 || element.IsEmptyTag()) return CString();
  const XmlScanner content(WideView(doc_).substr(0, static_cast<std::size_t>(element.contentEnd)));
  const int32_t begin = content.SkipBlanks(element.tagEnd + 1);
  const int32_t sectionText = begin + static_cast<int32_t>(kSectionBegin.size());
  if (content.Has(begin, kSectionBegin) && sectionText + 2 < element.contentEnd) {
    const int32_t end = content.FindText(kSectionEnd, sectionText);
    if (end != kXmlNotFound) return TextOf(content.Between(sectionText, end));
  }
  return DecodeText(content.Between(element.tagEnd + 1, element.contentEnd));
}

CString CXmlReader::GetAttrib(int32_t index, XmlText name) const {
  if (index == 0 || !valid_) return CString();
  return DecodeText(FindAttrib(index, name.View()));
}

// The value of an attribute as it stands in the document; empty when there is none.
WideView CXmlReader::FindAttrib(int32_t index, WideView name) const {
  const XmlElement& element = At(index);
  if (element.tagEnd == 0) return WideView();
  if (!attributes_ && IsSearchedOften()) {
    attributes_ = WithMemory([&] { return std::make_shared<XmlAttributeIndex>(doc_, elements_); });
  }
  if (attributes_) return attributes_->Find(doc_, index, name);
  const XmlScanner scanner(doc_);
  const XmlAttrib attrib = FindXmlAttrib(scanner, element.tagStart, name);
  searched_ += attrib.last.next - element.tagStart;
  return attrib.hasValue ? scanner.TextOf(attrib.last) : WideView();
}

CString CXmlReader::EncodeText(XmlText text, bool forAttribute) {
  return WithMemory([&] { return Encoded(text.View(), forAttribute); });
}

}  // namespace vrx
