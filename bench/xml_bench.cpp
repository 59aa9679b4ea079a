// Parsing a document of 10 MB, beside expat (events) and pugixml (a tree), in one run.
//
// Each reader gets the same UTF-8 bytes and ends with what it answers from: CXmlReader its text in 16-bit
// units and its records, pugixml its copy and its nodes, expat the events of a host that takes start tags.
// Before anything is timed, names, attributes and texts of all elements are compared. Times are milliseconds a document;
// "heap" is the largest heap in use while parsing, in multiples of the document's bytes (the caller's own copy not counted).

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <malloc.h>
#include <new>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include <vrxmath/support/xml_reader.h>

#include "bench/harness.h"

namespace {

std::size_t heapInUse = 0;
std::size_t heapPeak = 0;

void* Allocate(std::size_t size) {
  void* block = std::malloc(size);
  heapInUse += malloc_usable_size(block);
  heapPeak = std::max(heapPeak, heapInUse);
  return block;
}
void Release(void* block) {
  heapInUse -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* block = Allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}

namespace {

constexpr std::size_t kDocumentBytes = 10'000'000;

/// Standards as a host keeps them: few attributes, a curve as text.
std::string MakeCurves() {
  std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- standards -->\n<standards>\n";
  for (int i = 0; doc.size() < kDocumentBytes; ++i) {
    const std::string id = std::to_string(i);
    doc += "  <standard id=\"" + id + "\" name=\"Red &amp; " + id +
           "\">\n    <geometry>d8</geometry>\n    <curve>";
    for (int k = 0; k < 40; ++k) doc += std::to_string((i * 37 + k * 113) % 10000) + (k < 39 ? " " : "");
    doc += "</curve>\n    <note>caf\xC3\xA9</note>\n  </standard>\n";
  }
  return doc + "</standards>\n";
}

/// Almost nothing but tags: the most elements that 10 MB are likely to hold.
std::string MakeRecords() {
  std::string doc = "<measurements>";
  for (int i = 0; doc.size() < kDocumentBytes; ++i) {
    const std::string id = std::to_string(i);
    doc += "<m id=\"" + id + "\" angle=\"45\"><L>5" + id + "</L><a>-1.25</a><b>" + id + "</b><ok/></m>";
  }
  return doc + "</measurements>";
}

struct ExpatTag {
  std::string name;
  std::vector<std::string> attributes;  // name, value, name, value ...
};

template <class Handler>
bool ParseWithExpat(const std::string& doc, Handler handler, void* user) {
  const XML_Memory_Handling_Suite memory = {Allocate,
                                            [](void* block, std::size_t size) {
                                              void* const moved = Allocate(size);
                                              if (block != nullptr) {
                                                __builtin_memcpy(moved, block,
                                                                 std::min(size, malloc_usable_size(block)));
                                                Release(block);
                                              }
                                              return moved;
                                            },
                                            [](void* block) {
                                              if (block != nullptr) Release(block);
                                            }};
  const XML_Parser parser = XML_ParserCreate_MM(nullptr, &memory, nullptr);
  XML_SetUserData(parser, user);
  XML_SetStartElementHandler(parser, handler);
  const bool parsed = XML_Parse(parser, doc.data(), static_cast<int>(doc.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(parser);
  return parsed;
}

vrx::CString Wide(const char* utf8) {
  return vrx::CString::FromUtf8(utf8);
}

/// Compares one element of pugixml's tree with the record and the tag of the same number.
bool SameElement(const pugi::xml_node& node, const vrx::CXmlReader& xml, int32_t index, const ExpatTag& tag) {
  if (xml.GetTagName(index) != Wide(node.name()) || tag.name != node.name()) return false;
  std::size_t next = 0;
  for (const pugi::xml_attribute& attribute : node.attributes()) {
    if (xml.GetAttrib(index, Wide(attribute.name())) != Wide(attribute.value())) return false;
    if (next + 1 >= tag.attributes.size() || tag.attributes[next] != attribute.name() ||
        tag.attributes[next + 1] != attribute.value()) {
      return false;
    }
    next += 2;
  }
  const bool isLeaf = xml.GetElement(index).firstChild == 0;
  return next == tag.attributes.size() && (!isLeaf || xml.GetData(index) == Wide(node.text().get()));
}

bool SameAnswers(const std::string& doc) {
  std::vector<ExpatTag> tags;
  const auto keep = [](void* user, const char* name, const char** attributes) {
    ExpatTag tag{name, {}};
    for (; *attributes != nullptr; ++attributes) tag.attributes.emplace_back(*attributes);
    static_cast<std::vector<ExpatTag>*>(user)->push_back(tag);
  };
  pugi::xml_document tree;
  vrx::CXmlReader xml;
  if (!ParseWithExpat(doc, +keep, &tags) || !tree.load_string(doc.c_str()) || !xml.SetDocUtf8(doc))
    return false;
  xml.FindElem();
  struct Walker : pugi::xml_tree_walker {
    const std::vector<ExpatTag>& tags;
    const vrx::CXmlReader& xml;
    int32_t index = 0;
    Walker(const std::vector<ExpatTag>& t, const vrx::CXmlReader& x) : tags(t), xml(x) {}
    bool for_each(pugi::xml_node& node) override {
      if (node.type() != pugi::node_element) return true;
      ++index;
      return index < xml.GetElementCount() && static_cast<std::size_t>(index) <= tags.size() &&
             SameElement(node, xml, index, tags[static_cast<std::size_t>(index) - 1]);
    }
  };
  Walker walker(tags, xml);
  return tree.traverse(walker) && walker.index + 1 == xml.GetElementCount() &&
         tags.size() == static_cast<std::size_t>(walker.index);
}

// Parses, and ends the program when the document is refused.
template <class PARSE>
vrx::bench::Work Parses(const std::string& doc, PARSE parse) {
  return [&doc, parse] { vrx::bench::Require(parse(doc), "parsing"); };
}

double HeapOf(const vrx::bench::Work& work, const std::string& doc) {
  const std::size_t before = heapPeak = heapInUse;
  work();
  return static_cast<double>(heapPeak - before) / static_cast<double>(doc.size());
}

void MeasureAll(vrx::bench::Table& table, const std::string& label, const std::string& doc) {
  const auto ours = Parses(doc, [](const std::string& text) {
    vrx::CXmlReader xml;
    return xml.SetDocUtf8(text);
  });
  const auto expat = Parses(doc, [](const std::string& text) {
    int64_t elements = 0;
    const auto count = [](void* user, const char*, const char**) { ++*static_cast<int64_t*>(user); };
    return ParseWithExpat(text, +count, &elements) && elements > 0;
  });
  const auto pugixml = Parses(doc, [](const std::string& text) {
    pugi::xml_document tree;
    return static_cast<bool>(tree.load_buffer(text.data(), text.size()));
  });
  const auto seconds = vrx::bench::SecondsOf({ours, expat, pugixml}, 9);
  table.Report({label, "expat, events", seconds[0] * 1e3, seconds[1] * 1e3, ""});
  table.Report({label, "pugixml, a tree", seconds[0] * 1e3, seconds[2] * 1e3, ""});
  table.Report({label + ", heap", "pugixml", HeapOf(ours, doc), HeapOf(pugixml, doc), "", true});
}

}  // namespace

int main(int argc, char** argv) {
  pugi::set_memory_management_functions(Allocate, Release);
  const std::string curves = MakeCurves(), records = MakeRecords();
  if (!SameAnswers(curves) || !SameAnswers(records)) {
    std::fprintf(stderr, "the readers disagree about the document\n");
    return 1;
  }
  vrx::bench::Table table(argc, argv, "ms");
  MeasureAll(table, "XML of curves, 10 MB", curves);
  MeasureAll(table, "XML of records, 10 MB", records);
  return 0;
}
