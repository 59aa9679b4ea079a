// Names in sorted order, which a reader builds when it is searched for more than its document is long.
//
// Neither index keeps the document, which moves when its reader does; every question brings it along.

#ifndef VRXMATH_SUPPORT_XML_SEARCH_INDEX_H_
#define VRXMATH_SUPPORT_XML_SEARCH_INDEX_H_

#include <cstdint>
#include <span>
#include <vector>

#include <vrxmath/platform/wide_string.h>
#include <vrxmath/support/xml_element.h>
#include <vrxmath/support/xml_scanner.h>

namespace vrx {

/// Names in groups. Finds the first one of a group, from some place on, that a name matches: in logarithmic
/// time, however many others lie between.
class XmlNameIndex {
 public:
  struct Entry {
    int32_t group = 0;
    int32_t begin = 0;  ///< the name's first unit in the document
    int32_t end = 0;
    int32_t value = 0;  ///< what a search returns
  };

  XmlNameIndex() = default;
  XmlNameIndex(WideView doc, std::vector<Entry> entries);

  /// The value of the first match that begins at or after `from`; kXmlNotFound when there is none.
  int32_t First(WideView doc, int32_t group, WideView name, int32_t from) const;

 private:
  std::vector<Entry> entries_;  // by group, then text, then place
};

/// The tag names, grouped by parent; the values are element indices.
XmlNameIndex MakeTagNameIndex(WideView doc, std::span<const XmlElement> elements);

/// The tokens of all start tags.
///
/// A search for an attribute reads tokens from the tag name on up to an unquoted ">", "/" or "?". Where a
/// quote is not closed in its tag, it reads on through the tags that follow, and then many elements share
/// most of what they read. So the tokens are kept once, in lanes: a lane is the tokens read from one element
/// on, up to the first that an earlier lane has read, where it joins that lane. At any place of a document a
/// scan can be in one of four states (between words, in a word, in either kind of quotes), and two scans in
/// the same state go on as one: a search passes through four lanes at most.
class XmlAttributeIndex {
 public:
  XmlAttributeIndex(WideView doc, std::span<const XmlElement> elements);

  /// The value of the attribute `name` of an element, not decoded; empty when there is none.
  WideView Find(WideView doc, int32_t element, WideView name) const;

 private:
  struct Word {
    int32_t begin = 0;
    int32_t end = 0;
    int32_t lane = 0;
    bool quoted = false;
  };

  class Builder;
  int32_t NextWord(int32_t word) const;
  std::vector<XmlNameIndex::Entry> Names(WideView doc) const;

  std::vector<Word> words_;          // lane by lane
  std::vector<int32_t> laneJoins_;   // for each lane, the word of an earlier one that follows its last
  std::vector<int32_t> firstWords_;  // for each element, the word after its tag name
  XmlNameIndex names_;               // the unquoted words, grouped by lane
};

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_XML_SEARCH_INDEX_H_
