#include <vrxmath/support/xml_search_index.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace vrx {
namespace {

WideView TextAt(WideView doc, int32_t begin, int32_t end) {
  return doc.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

}  // namespace

XmlNameIndex::XmlNameIndex(WideView doc, std::vector<Entry> entries) : entries_(std::move(entries)) {
  std::sort(entries_.begin(), entries_.end(), [doc](const Entry& a, const Entry& b) {
    if (a.group != b.group) return a.group < b.group;
    const int order = TextAt(doc, a.begin, a.end).compare(TextAt(doc, b.begin, b.end));
    return order != 0 ? order < 0 : a.begin < b.begin;
  });
}

int32_t XmlNameIndex::First(WideView doc, int32_t group, WideView name, int32_t from) const {
  const Entry* first = nullptr;
  for (std::size_t length = 1; length <= name.size(); ++length) {
    if (length < name.size() && !EndsXmlName(name[length])) continue;
    const WideView text = name.substr(0, length);
    const auto found = std::partition_point(entries_.begin(), entries_.end(), [&](const Entry& entry) {
      if (entry.group != group) return entry.group < group;
      const int order = TextAt(doc, entry.begin, entry.end).compare(text);
      return order != 0 ? order < 0 : entry.begin < from;
    });
    if (found == entries_.end() || found->group != group || TextAt(doc, found->begin, found->end) != text) {
      continue;
    }
    if (first == nullptr || found->begin < first->begin) first = &*found;
  }
  return first == nullptr ? kXmlNotFound : first->value;
}

XmlNameIndex MakeTagNameIndex(WideView doc, std::span<const XmlElement> elements) {
  const XmlScanner scanner(doc);
  std::vector<XmlNameIndex::Entry> entries;
  entries.reserve(elements.size());
  for (std::size_t i = 1; i < elements.size(); ++i) {
    XmlToken token;
    if (elements[i].tagEnd == 0) continue;  // removed
    scanner.ReadToken(elements[i].tagStart + 1, token);
    entries.push_back({elements[i].parent, token.begin, token.end, static_cast<int32_t>(i)});
  }
  return XmlNameIndex(doc, std::move(entries));
}

// Fills `words_`, `laneJoins_` and `firstWords_`.
class XmlAttributeIndex::Builder {
 public:
  Builder(XmlAttributeIndex& index, WideView doc)
      : index_(index), scanner_(doc), wordsFrom_(doc.size() + 1, kNotRead) {}

  void AddAll(std::span<const XmlElement> elements) {
    index_.firstWords_.assign(elements.size(), kXmlNotFound);
    std::vector<int32_t> order(elements.size() - 1);
    std::iota(order.begin(), order.end(), 1);
    const auto tagStart = [elements](int32_t i) { return elements[static_cast<std::size_t>(i)].tagStart; };
    std::sort(order.begin(), order.end(), [&](int32_t a, int32_t b) { return tagStart(a) < tagStart(b); });
    for (const int32_t i : order) {
      if (elements[static_cast<std::size_t>(i)].tagEnd == 0) continue;  // removed
      XmlToken name;
      scanner_.ReadToken(tagStart(i) + 1, name);
      if (!scanner_.EndsTag(name)) index_.firstWords_[static_cast<std::size_t>(i)] = ReadLane(name.next);
    }
  }

 private:
  static constexpr int32_t kNotRead = -2;

  // Reads a lane from `from` on and returns its first word; of an earlier lane, if that has been there.
  int32_t ReadLane(int32_t from) {
    int32_t& first = wordsFrom_[static_cast<std::size_t>(from)];
    if (first != kNotRead) return first;
    const int32_t lane = static_cast<int32_t>(index_.laneJoins_.size());
    int32_t* slot = &first;
    for (XmlToken token; *slot == kNotRead; slot = &wordsFrom_[static_cast<std::size_t>(from)]) {
      *slot = kXmlNotFound;
      if (!scanner_.ReadToken(from, token) || scanner_.EndsTag(token)) break;
      *slot = static_cast<int32_t>(index_.words_.size());
      index_.words_.push_back({token.begin, token.end, lane, token.quoted});
      from = token.next;
    }
    index_.laneJoins_.push_back(*slot);
    return first;
  }

  XmlAttributeIndex& index_;
  const XmlScanner scanner_;
  std::vector<int32_t> wordsFrom_;  // for each place of the document, the word that is read from there
};

XmlAttributeIndex::XmlAttributeIndex(WideView doc, std::span<const XmlElement> elements) {
  Builder(*this, doc).AddAll(elements);
  names_ = XmlNameIndex(doc, Names(doc));
}

std::vector<XmlNameIndex::Entry> XmlAttributeIndex::Names(WideView doc) const {
  std::vector<XmlNameIndex::Entry> names;
  for (std::size_t i = 0; i < words_.size(); ++i) {
    const Word& word = words_[i];
    if (word.quoted || doc[static_cast<std::size_t>(word.begin)] == u'=') continue;
    names.push_back({word.lane, word.begin, word.end, static_cast<int32_t>(i)});
  }
  return names;
}

int32_t XmlAttributeIndex::NextWord(int32_t word) const {
  if (word == kXmlNotFound) return word;
  const std::size_t next = static_cast<std::size_t>(word) + 1;
  const int32_t lane = words_[next - 1].lane;
  return next < words_.size() && words_[next].lane == lane ? word + 1
                                                           : laneJoins_[static_cast<std::size_t>(lane)];
}

WideView XmlAttributeIndex::Find(WideView doc, int32_t element, WideView name) const {
  int32_t word = firstWords_[static_cast<std::size_t>(element)];
  while (word != kXmlNotFound) {
    const Word& from = words_[static_cast<std::size_t>(word)];
    const int32_t found = names_.First(doc, from.lane, name, from.begin);
    if (found == kXmlNotFound) {
      word = laneJoins_[static_cast<std::size_t>(from.lane)];
      continue;
    }
    const int32_t value = NextWord(NextWord(found));
    if (value == kXmlNotFound || !words_[static_cast<std::size_t>(value)].quoted) break;
    const Word& text = words_[static_cast<std::size_t>(value)];
    return TextAt(doc, text.begin, text.end);
  }
  return WideView();
}

}  // namespace vrx
