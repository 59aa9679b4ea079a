#include <gtest/gtest.h>
#include <random>
#include <string>

#include <vrxmath/platform/exceptions.h>
#include <vrxmath/support/xml_reader.h>
#include <vrxmath/support/xml_scanner.h>

#include "tests/support/xml_checks.h"

namespace vrx {
namespace {

// Under sanitizers, which look for other faults than a difference to the reference, a tenth of the documents, and smaller ones.
#ifdef VRX_SANITIZED
constexpr int kLength = 2, kRounds = 2000, kMany = 10000;
#else
constexpr int kLength = 3, kRounds = 20000, kMany = 200000;
#endif

std::string Utf8(WideView text) {
  return CString(text).ToUtf8();
}
std::u16string Repeat(WideView text, int count) {
  std::u16string out;
  out.reserve(text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) out += text;
  return out;
}
std::u16string Join(std::initializer_list<WideView> parts) {
  std::u16string out;
  for (const WideView part : parts) out += part;
  return out;
}
std::u16string Number(int i) {
  const std::string digits = std::to_string(i);
  return {digits.begin(), digits.end()};
}

TEST(XmlReader, ErrorTexts) {
  struct Row {
    const WideChar* doc;
    const char* error;
  };
  const Row rows[] = {
      {nullptr, ""},
      {u"</a>", ""},
      {u"<?xml version='1.0'?><!-- empty -->", "Element tag not found"},
      {u"<a><  \n", "Abrupt end within tag"},
      {u"<'a'>", "Tag starts with quote"},
      {u"<!-- -- >", "Invalid node"},
      {u"<!DOCTYPE a [ > ", "Invalid node"},
      {u"< ?a?><a/>", "Invalid node"},
      {u"<a b='c'", "End of tag not found"},
      {u"<a></b>", "End tag does not correspond to a"},
      {u"<a></", "End tag not completed for element a"},
      {u"<a%s></>", "End tag does not correspond to a%s"},
  };
  for (const Row& row : rows) {
    CXmlReader xml;
    EXPECT_FALSE(xml.SetDoc(row.doc));
    EXPECT_EQ(xml.GetError().ToUtf8(), row.error) << Utf8(xml.GetDoc());
    EXPECT_EQ(xml.GetElementCount(), 1);
    EXPECT_EQ(xml.GetElement(0), XmlElement());
    EXPECT_FALSE(xml.FindElem() || xml.FindChildElem() || xml.IntoElem() || xml.OutOfElem());
  }
}

TEST(XmlReader, Records) {
  //          0         1         2         3
  //          0123456789012345678901234567890123456789
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(u"<?p?><r a='1'><x/> <y >t</y ><x></x></r>"));
  const XmlElement expected[] = {{0, 0, 5, 0, 0, 1, 0},
                                 {5, 13, 36, 39, 0, 2, 0},
                                 {14, 17, 16, 17, 1, 0, 3},
                                 {19, 22, 24, 28, 1, 0, 4},
                                 {29, 31, 32, 35, 1, 0, 0}};
  ASSERT_EQ(xml.GetElementCount(), 5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(xml.GetElement(i), expected[i]) << i;
  for (const int32_t index : {-1, 5, INT32_MIN, INT32_MAX}) {
    xml.FindElem();
    EXPECT_THROW(static_cast<void>(xml.GetTagName(index)), CInvalidArgException);
    EXPECT_THROW(static_cast<void>(xml.GetData(index)), CInvalidArgException);
    EXPECT_THROW(static_cast<void>(xml.GetAttrib(index, u"a")), CInvalidArgException);
    EXPECT_THROW(xml.SetData(index, u""), CInvalidArgException);
  }
}

TEST(XmlReader, DataAndAttributesOfTheRoot) {
  struct Row {
    const WideChar* doc;
    const char* data;
    const char* attrib;  // "a"
  };
  const Row rows[] = {
      {u"<r><![CDATA[1 &lt; 2]]></r>", "1 &lt; 2", ""},
      {u"<r>\n\t <![CDATA[<x>]]> more</r>", "<x>", ""},
      {u"<r>x<![CDATA[&lt;]]></r>", "x<![CDATA[<]]>", ""},
      {u"<r>&amp;lt; &apos;&quot;&gt;</r>", "&lt; '\">", ""},
      {u"<r>&eacute;&#65;&&lt&amp</r>", "&eacute;&#65;&&lt&amp", ""},
      {u"<r a=1/>", "", ""},
      {u"<r a = \n\"&lt;'\" >x</r>", "x", "<'"},
      {u"<r b='2' a='1' a='3'/>", "", "1"},
      {u"<r 'a'='1' b='a'/>", "", ""},
      {u"<r a='x>y'>z</r>", "y'>z", "x>y"},
  };
  for (const Row& row : rows) {
    CXmlReader xml;
    ASSERT_TRUE(xml.SetDoc(row.doc)) << Utf8(row.doc);
    EXPECT_EQ(xml.GetAttrib(1, u"a"), CString()) << "before the position is valid";
    xml.FindElem();
    EXPECT_EQ(xml.GetData(1).ToUtf8(), row.data) << Utf8(row.doc);
    EXPECT_EQ(xml.GetAttrib(1, u"a").ToUtf8(), row.attrib) << Utf8(row.doc);
    EXPECT_EQ(xml.GetAttrib(1, u"a[1]").ToUtf8(), row.attrib) << Utf8(row.doc);
  }
}

TEST(XmlReader, BytesAreSignExtendedAndUtf8IsConverted) {
  const char latin1[] = "<r>\xE9\x80\x7F</r>";
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDocBytes(latin1, 10));
  EXPECT_EQ(xml.GetData(1), u"\xFFE9\xFF80\x7F");
  EXPECT_FALSE(xml.SetDocBytes(latin1, -1) || xml.SetDocBytes(nullptr, 5));
  const std::string utf8 = "\xEF\xBB\xBF<r>\xC3\xA9 \xE2\x82\xAC\xF0\x9F\x98\x80 \xE9</r>";
  ASSERT_TRUE(xml.SetDocUtf8(utf8));
  EXPECT_EQ(xml.GetDoc(), CString::FromUtf8(utf8).View());
  EXPECT_EQ(xml.GetData(1), u"\u00E9 \u20AC\U0001F600 \uFFFD");
}

TEST(XmlReader, ALongerDocumentThanOffsetsReachIsRefused) {
  CXmlReader xml;
  const WideView longer(u"<r/>", kMaxXmlLength + 1);  // refused by its length, before it is read
  EXPECT_FALSE(xml.SetDoc(longer));
  EXPECT_EQ(xml.GetError(), u"Document too long");
  EXPECT_TRUE(xml.GetDoc().empty());
}

// --- Against the reference ---------------------------------------------------------------------------------

const WideView kPieces[] = {u"<",   u">",  u"/",  u"a",    u"b",    u" ",         u"=",   u"\"", u"'",
                            u"<a>", u"<b", u"?",  u"</a>", u"/>",   u"<a/>",      u"<!",  u"--", u"[",
                            u"]]>", u"<?", u"?>", u"&lt;", u"a=\"", u"<![CDATA[", u"-->", u"]"};

std::string CompareDocument(const std::u16string& doc) {
  CXmlReader xml;
  XmlReference reference;
  if (xml.SetDoc(doc) != reference.SetDoc(doc)) return "result of SetDoc";
  return CompareElements(xml, reference);
}

TEST(XmlReader, AgreesWithTheReferenceOnAllSmallDocuments) {
  std::size_t indices[kLength] = {};
  const WideView frames[][2] = {{u"", u""}, {u"<a>", u"</a>"}, {u"<a b='", u"</a>"}};
  while (indices[kLength - 1] < std::size(kPieces)) {
    std::u16string body;
    for (const std::size_t i : indices) body += kPieces[i];
    for (const auto& [before, after] : frames) {
      const std::u16string doc = Join({before, body, after});
      ASSERT_EQ(CompareDocument(doc), "") << Utf8(doc);
    }
    for (int place = 0; ++indices[place] == std::size(kPieces) && place + 1 < kLength; ++place)
      indices[place] = 0;
  }
}

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}
  unsigned Below(std::size_t n) { return static_cast<unsigned>(random_() % n); }

  // An element with children, data and junk in places that keep most documents whole.
  std::u16string Element(int depth) {
    const WideView name = Below(2) ? u"a" : u"b",
                   tagEnds[] = {u">", u" >", u"\n>", u" a='1'>", u" b=\"a>", u" '>"};
    if (Below(4) == 0) return Join({u"<", name, Below(3) ? u"/>" : u" '/>"});
    std::u16string text = Join({u"<", name, tagEnds[Below(std::size(tagEnds))]});
    for (unsigned parts = Below(4); parts > 0; --parts) {
      if (depth > 0) text += Element(depth - 1);
      if (Below(2)) text += kPieces[Below(std::size(kPieces))];
    }
    return Join({text, u"</", name, u">"});
  }

 private:
  std::mt19937 random_;
};

TEST(XmlReader, AgreesWithTheReferenceOnLargerDocumentsAndWalks) {
  Generator generator(1);
  int parsed = 0;
  for (int round = 0; round < kRounds; ++round) {
    const std::u16string doc = generator.Element(3);
    ASSERT_EQ(CompareDocument(doc), "") << Utf8(doc);
    CXmlReader xml;
    XmlReference reference;
    parsed += xml.SetDoc(doc);
    reference.SetDoc(doc);
    for (int move = 0; move < 30; ++move) {
      ASSERT_EQ(CompareMove(xml, reference, generator.Below(256)), "") << Utf8(doc);
    }
  }
  EXPECT_GT(parsed, kRounds / 2);
}

TEST(XmlReader, RecordsFollowEveryChange) {
  Generator generator(2);
  for (int round = 0; round < kRounds / 4; ++round) {
    CXmlReader xml;
    if (!xml.SetDoc(generator.Element(3))) continue;
    for (int step = 0; step < 20; ++step) {
      const std::string before = Utf8(xml.GetDoc());
      if (generator.Below(2)) {
        Move(xml, generator.Below(128));
      } else {
        ASSERT_EQ(CheckChange(xml, generator.Below(128)), "") << before << "\nto " << Utf8(xml.GetDoc());
      }
    }
  }
}

TEST(XmlReader, Changes) {
  CXmlReader xml;
  const auto doc = [&xml] { return Utf8(xml.GetDoc()); };
  EXPECT_FALSE(xml.SetDoc(u"<?xml version='1.0'?>"));
  EXPECT_TRUE(xml.AddElem(u"r"));
  EXPECT_TRUE(xml.AddChildElem(u"b", u"2"));
  EXPECT_TRUE(xml.IntoElem() && xml.AddElem(u"c", u"<3>"));
  EXPECT_EQ(doc(), "<?xml version='1.0'?><r><b>2</b><c>&lt;3&gt;</c></r>");
  EXPECT_TRUE(xml.SetAttrib(3, u"n", u"\"1\"") && xml.SetAttrib(3, u"m", u"x") &&
              xml.SetAttrib(3, u"n", u"2"));
  EXPECT_TRUE(xml.SetAttrib(2, u"k", nullptr) && xml.SetData(2, u"") && xml.SetData(3, u"4"));
  EXPECT_EQ(doc(), "<?xml version='1.0'?><r><b k=\"\"></b><c n=\"2\" m=\"x\">4</c></r>");
  xml.ResetPosition();
  EXPECT_TRUE(xml.FindElem() && xml.FindChildElem(u"b") && xml.IntoElem() && xml.RemoveElem());
  EXPECT_FALSE(xml.IsPositionValid());
  EXPECT_EQ(xml.GetTagName(2), u"") << "removed";
  EXPECT_TRUE(xml.FindElem() && xml.GetTagName(xml.GetCurrentIndex()) == u"c");
  EXPECT_EQ(doc(), "<?xml version='1.0'?><r><c n=\"2\" m=\"x\">4</c></r>");

  EXPECT_EQ(CXmlReader::EncodeText(u"<a b=\"c\">&'", false).ToUtf8(), "&lt;a b=\"c\"&gt;&amp;'");
  EXPECT_EQ(CXmlReader::EncodeText(u"<a b=\"c\">&'", true).ToUtf8(), "&lt;a b=&quot;c&quot;&gt;&amp;&apos;");

  // An attribute that could not be found at the end of the tag goes to its beginning.
  for (const auto& [before, after] :
       {std::pair{u"<r a=1/>", "<r a=\"2\" a=1/>"}, std::pair{u"<r a='x>y'></r>", "<r a=\"2\" a='x>y'></r>"},
        std::pair{u"<r 'b></r>", "<r a=\"2\" 'b></r>"}, std::pair{u"<r b//>", "<r a=\"2\" b//>"}}) {
    EXPECT_TRUE(xml.SetDoc(before) && xml.SetAttrib(1, u"a", u"2"));
    EXPECT_EQ(doc(), after);
  }
  EXPECT_TRUE(xml.SetData(1, u"x"));
  EXPECT_EQ(doc(), "<r a=\"2\" b/ >x</r>");
}

TEST(XmlReader, ChangesThatCannotBeMade) {
  CXmlReader xml;
  const auto refused = [&xml](bool done) { return done ? "done" : xml.GetError().ToUtf8(); };
  EXPECT_FALSE(xml.SetDoc(u"<a><b"));
  EXPECT_EQ(refused(xml.AddElem(u"r")), "Document is not well formed");
  EXPECT_TRUE(xml.SetDoc(u"<a><b/></a>"));
  EXPECT_EQ(refused(xml.AddElem(u"r")), "Document has a root element");
  EXPECT_EQ(refused(xml.AddChildElem(u"c")), "No current element");
  EXPECT_EQ(refused(xml.SetData(1, u"x")), "Element has child elements");
  EXPECT_EQ(refused(xml.SetData(0, u"x")), "Element not found");
  EXPECT_TRUE(xml.FindElem());
  EXPECT_EQ(refused(xml.RemoveElem()), "Root element cannot be removed");
  for (const WideChar* name : {u"", u"a b", u"a=", u"a[1]", u"<", u"a'"}) {
    EXPECT_EQ(refused(xml.AddChildElem(name)), "Invalid name");
    EXPECT_EQ(refused(xml.SetAttrib(2, name, u"x")), "Invalid name");
  }
  EXPECT_EQ(Utf8(xml.GetDoc()), "<a><b/></a>");
  EXPECT_TRUE(xml.SetDoc(u"<></>>"));
  EXPECT_EQ(refused(xml.SetAttrib(1, u"a", u"x")), "Element takes no attributes");
}

// --- Cost: each case takes minutes, or a deep stack, when its cost is not in proportion to the document. ---------

TEST(XmlReaderCost, DepthNeedsNoStack) {
  constexpr int kDepth = 1000000;
  const std::u16string open = Repeat(u"<a>", kDepth), nested = Join({open, Repeat(u"</a>", kDepth)});
  CXmlReader xml;
  EXPECT_FALSE(xml.SetDoc(open));
  ASSERT_TRUE(xml.SetDoc(Join({u"<r>", nested, u"</r>"})));
  int depth = 0;
  while (xml.FindChildElem() && xml.IntoElem()) ++depth;
  EXPECT_EQ(depth, kDepth);
  while (xml.OutOfElem()) --depth;
  EXPECT_EQ(depth, 0);
  EXPECT_TRUE(xml.IntoElem() && xml.RemoveElem());
  EXPECT_TRUE(xml.GetDoc() == u"<r></r>");
}

TEST(XmlReaderCost, Parsing) {
  for (const WideView piece : {u"<![CDATA[", u"<!--", u"<!D [", u"<a '", u"<", u"<!---->", u"<a/>", u"]]]"}) {
    CXmlReader xml;
    EXPECT_FALSE(xml.SetDoc(Join({u"<r>", Repeat(piece, kMany)}))) << Utf8(piece);
  }
}

TEST(XmlReaderCost, SearchesAmongManySiblingsAndTheirData) {
  std::u16string doc = Join({u"<r><d>", Repeat(u"&", kMany), u"</d>"});
  for (int i = 0; i < kMany; ++i) doc += Join({u"<a", Number(i), u"> <![CDATA[x]]></a", Number(i), u"><c/>"});
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(Join({doc, u"</r>"})) && xml.FindElem());
  EXPECT_EQ(xml.GetData(2).GetLength(), kMany);
  for (int i = 0; i < kMany; ++i) {
    ASSERT_FALSE(xml.FindChildElem(Join({u"b", Number(i)})));
    ASSERT_TRUE(xml.FindChildElem(Join({u"a", Number(i)})));
    ASSERT_EQ(xml.GetData(xml.GetChildIndex()), u"x");
  }
}

TEST(XmlReaderCost, Attributes) {
  std::u16string doc = Join({u"<", Repeat(u"r", kMany)});
  for (int i = 0; i < kMany; ++i) doc += Join({u" a", Number(i), u"='", Number(i), u"'"});
  CXmlReader xml;
  ASSERT_TRUE(xml.SetDoc(Join({doc, u"/>"})) && xml.FindElem());
  for (int i = 0; i < kMany; ++i) {
    ASSERT_EQ(xml.GetAttrib(1, Join({u"a", Number(i)})), WideView(Number(i)));
    ASSERT_EQ(xml.GetAttrib(1, Join({u"b", Number(i)})), u"");
  }
  // The quote that opens in each tag closes behind it, so that a search from any element reads all the rest.
  for (const WideView piece : {u"<a '/>'", u"<a '/>'<a \"/>\"", u"<a '/>\"<a \"/>'"}) {
    ASSERT_TRUE(xml.SetDoc(Join({u"<r>", Repeat(piece, kMany), u"<a b='1'/></r>"})) && xml.FindElem());
    EXPECT_EQ(xml.GetAttrib(xml.GetElementCount() - 1, u"b"), u"1");
    const CString first = xml.GetAttrib(2, u"b");
    for (int i = 2; i < xml.GetElementCount() - 1; i += 2) ASSERT_EQ(xml.GetAttrib(i, u"b"), first) << i;
  }
}

}  // namespace
}  // namespace vrx
