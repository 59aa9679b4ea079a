#include <vrxmath/platform/wide_string.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/resources.h>
#include <vrxmath/platform/with_memory.h>

namespace vrx {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kMaxLength = static_cast<std::size_t>(std::numeric_limits<int32_t>::max()) / 2;

bool IsHighSurrogate(char32_t c) {
  return c >= 0xD800 && c < 0xDC00;
}
bool IsLowSurrogate(char32_t c) {
  return c >= 0xDC00 && c < 0xE000;
}

// Decodes one code point of `utf8` at `pos` and moves `pos` past it; an invalid byte is skipped alone.
char32_t DecodeCodePoint(std::string_view utf8, std::size_t& pos) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned lead = byte(pos++);
  if (lead < 0x80) return lead;
  const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || utf8.size() - pos < static_cast<std::size_t>(extra)) return kReplacement;
  char32_t code = lead & (0x3FU >> extra);
  for (int i = 0; i < extra; ++i) {
    const unsigned next = byte(pos + static_cast<std::size_t>(i));
    if ((next & 0xC0U) != 0x80U) return kReplacement;
    code = code << 6 | (next & 0x3FU);
  }
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[extra] || code > 0x10FFFF || IsHighSurrogate(code) || IsLowSurrogate(code)) {
    return kReplacement;
  }
  pos += static_cast<std::size_t>(extra);
  return code;
}

void AppendUtf8(std::string& out, char32_t code) {
  const auto put = [&](char32_t bits) { out += static_cast<char>(static_cast<unsigned char>(bits)); };
  if (code < 0x80) return put(code);
  if (code < 0x800) {
    put(0xC0 | code >> 6);
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
  }
  put(0x80 | (code & 0x3F));
}

std::u16string DecodeUtf8(std::string_view utf8) {
  std::u16string units;
  units.reserve(utf8.size());
  for (std::size_t pos = 0; pos < utf8.size();) {
    const char32_t code = DecodeCodePoint(utf8, pos);
    if (code >= 0x10000) {
      units += static_cast<WideChar>(0xD800 + ((code - 0x10000) >> 10));
      units += static_cast<WideChar>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      units += static_cast<WideChar>(code);
    }
  }
  return units;
}

std::string EncodeUtf8(WideView text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t code = text[i];
    if (IsHighSurrogate(code) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
    } else if (IsHighSurrogate(code) || IsLowSurrogate(code)) {
      code = kReplacement;
    }
    AppendUtf8(utf8, code);
  }
  return utf8;
}

}  // namespace

CString::Block* CString::Allocate(std::size_t capacity) {
  if (capacity > kMaxLength) throw CMemoryException();
  void* memory = ::operator new(sizeof(Block) + (capacity + 1) * sizeof(WideChar), std::nothrow);
  if (memory == nullptr) throw CMemoryException();
  return new (memory) Block{0, static_cast<uint32_t>(capacity)};
}

void CString::Assign(WideView text) {
  if (text.empty()) return Empty();
  Block* block = Allocate(text.size());
  std::memcpy(block->Text(), text.data(), text.size() * sizeof(WideChar));
  block->Text()[text.size()] = 0;
  block->length = static_cast<uint32_t>(text.size());
  ::operator delete(std::exchange(block_, block));
}

CString::CString(const WideChar* text) : CString(text ? WideView(text) : WideView()) {}
CString::CString(WideView text) {
  Assign(text);
}
CString::CString(const CString& other) {
  Assign(other.View());
}
CString::~CString() {
  ::operator delete(block_);
}

CString& CString::operator=(const CString& other) {
  if (this != &other) Assign(other.View());
  return *this;
}

CString& CString::operator=(CString&& other) noexcept {
  std::swap(block_, other.block_);
  return *this;
}

WideChar CString::GetAt(std::ptrdiff_t i) const {
  return i >= 0 && i < GetLength() ? block_->Text()[i] : WideChar{0};
}

void CString::SetAt(std::ptrdiff_t i, WideChar unit) {
  if (i >= 0 && i < GetLength()) block_->Text()[i] = unit;
}

void CString::Empty() {
  ::operator delete(std::exchange(block_, nullptr));
}

CString& CString::operator+=(WideView text) {
  if (text.empty()) return *this;
  const WideView old = View();
  const std::size_t length = old.size() + text.size();
  if (block_ == nullptr || length > block_->capacity) {
    Block* block = Allocate(std::max(length, std::min(2 * old.size(), kMaxLength)));
    std::copy(old.begin(), old.end(), block->Text());
    std::copy(text.begin(), text.end(),
              block->Text() + old.size());  // before the old block goes: it may alias
    ::operator delete(std::exchange(block_, block));
  } else {
    std::memmove(block_->Text() + old.size(), text.data(), text.size() * sizeof(WideChar));
  }
  block_->length = static_cast<uint32_t>(length);
  block_->Text()[length] = 0;
  return *this;
}

CString CString::FromUtf8(std::string_view utf8) {
  return platform_internal::WithMemory([&] { return CString(WideView(DecodeUtf8(utf8))); });
}

std::string CString::ToUtf8() const {
  return platform_internal::WithMemory([&] { return EncodeUtf8(View()); });
}

CString CString::Load(uint32_t number) {
  return CString(FindString(number));
}

CString FillPattern(WideView pattern, std::initializer_list<WideView> texts) {
  CString out;
  auto next = texts.begin();
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const WideChar following = i + 1 < pattern.size() ? pattern[i + 1] : WideChar{0};
    if (pattern[i] == u'%' && following == u's') {
      if (next != texts.end()) out += *next++;
      ++i;
    } else {
      out += pattern[i];
      if (pattern[i] == u'%' && following == u'%') ++i;
    }
  }
  return out;
}

}  // namespace vrx
