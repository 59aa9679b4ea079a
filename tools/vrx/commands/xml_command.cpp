// vrx xml: the outline of an XML document, or what stands at a path in it.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include <vrxio/text/whole_file.h>
#include <vrxmath/support/xml_reader.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/commands/commands.h"
#include "tools/vrx/input/xml_path.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {
namespace {

struct XmlOptions {
  std::string file;
  std::string path;
  Format format = Format::kTable;
};

// Whether a document may begin like this: with white space at most before the first bracket. Text in 16-bit units has
// a mark before it.
bool MayBeXml(std::string_view beginning) {
  if (beginning.starts_with("\xFE\xFF") || beginning.starts_with("\xFF\xFE")) return true;
  if (beginning.starts_with("\xEF\xBB\xBF")) beginning.remove_prefix(3);
  const std::size_t first = beginning.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && beginning[first] == '<';
}

// Text in 16-bit units behind a byte-order mark; UTF-8 without one or with its own.
bool SetDocOfBytes(CXmlReader& xml, const std::string& bytes) {
  const bool isBigEndian = bytes.starts_with("\xFE\xFF");
  if (!isBigEndian && !bytes.starts_with("\xFF\xFE")) return xml.SetDocUtf8(bytes);
  std::u16string units(bytes.size() / 2 - 1, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<unsigned char>(bytes[2 * i + 2]);
    const auto second = static_cast<unsigned char>(bytes[2 * i + 3]);
    units[i] = static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
  }
  return xml.SetDoc(units);
}

// One line for a table: runs of white space and control characters become a space, the end of a long text
// dots.
std::string InOneLine(const CString& text) {
  constexpr std::size_t kMaxUnits = 60;
  std::u16string line;
  for (const char16_t unit : text.View()) {
    const bool isBlank = unit <= u' ' || (unit >= 0x7F && unit < 0xA0);
    if (isBlank && (line.empty() || line.back() == u' ')) continue;
    line += isBlank ? u' ' : unit;
    if (line.size() > kMaxUnits) {
      line.replace(kMaxUnits - 3, line.size(), u"...");
      break;
    }
  }
  return CString(WideView(line)).ToUtf8();
}

class Outline {
 public:
  Outline(const CXmlReader& xml, Format format, OutputStream& output)
      : xml_(xml),
        isTable_(format == Format::kTable),
        rows_(MakeRowWriter(format, output, {{"depth"}, {"element"}, {"text"}})) {}

  // The element `top` and all below it, in document order.
  void Write(int32_t top) {
    int32_t depth = 0;
    for (int32_t index = top; index != 0;) {
      AddRow(index, depth);
      int32_t next = xml_.GetElement(index).firstChild;
      if (next != 0) ++depth;
      while (next == 0 && index != top) {
        next = xml_.GetElement(index).nextSibling;
        if (next != 0) break;
        index = xml_.GetElement(index).parent;
        --depth;
      }
      index = next;
    }
    rows_->Finish();
  }

 private:
  // Deeper elements are not indented further, or a deep document would be mostly spaces.
  static constexpr int32_t kMaxIndentedDepth = 20;

  void AddRow(int32_t index, int32_t depth) {
    const CString name = xml_.GetTagName(index), text = xml_.GetData(index);
    rows_->Integer(depth);
    if (isTable_) {
      const auto indent = 2 * static_cast<std::size_t>(std::min(depth, kMaxIndentedDepth));
      rows_->Text(std::string(indent, ' ') + InOneLine(name));
      rows_->Text(InOneLine(text));
    } else {
      rows_->Text(name.ToUtf8());
      rows_->Text(text.ToUtf8());
    }
    rows_->EndRow();
  }

  const CXmlReader& xml_;
  bool isTable_;
  std::unique_ptr<RowWriter> rows_;
};

// A value alone: as it is, for scripts; in csv and json as the only row.
void WriteValue(const std::string& value, Format format, OutputStream& output) {
  if (format == Format::kTable) {
    output.AppendShown(value);
    return output.Append('\n');
  }
  const auto rows = MakeRowWriter(format, output, {{"value"}});
  rows->Text(value);
  rows->EndRow();
  rows->Finish();
}

void RunXml(const XmlOptions& options) {
  constexpr std::size_t kLargestDocument = std::size_t{1} << 28;
  CXmlReader xml;
  const std::string name = options.file == "-" ? "standard input" : options.file;
  if (!SetDocOfBytes(xml, ReadWholeFile(options.file, kLargestDocument, MayBeXml))) {
    const std::string reason = xml.GetError().ToUtf8();
    throw InputError(name + ": " + (reason.empty() ? "there is no element" : reason));
  }
  OutputStream output;
  if (options.path.empty()) {
    Outline(xml, options.format, output).Write(xml.GetElement(0).firstChild);
  } else {
    const XmlPath path = ParseXmlPath(options.path);
    GoTo(xml, path);
    const int32_t index = xml.GetCurrentIndex();
    if (!path.attribute.empty()) {
      WriteValue(xml.GetAttrib(index, CString::FromUtf8(path.attribute)).ToUtf8(), options.format, output);
    } else if (xml.GetElement(index).firstChild == 0) {
      WriteValue(xml.GetData(index).ToUtf8(), options.format, output);
    } else {
      Outline(xml, options.format, output).Write(index);
    }
  }
  output.Finish();
}

}  // namespace

void AddXml(Command& tool) {
  const auto options = std::make_shared<XmlOptions>();
  Command command = tool.AddCommand("xml", "Show the outline of an XML document, or a value in it");
  command
      .AddOption("FILE", options->file,
                 "XML in UTF-8, or in UTF-16 with a byte-order mark (- for standard input)")
      .ReadsFile()
      .Required();
  command.AddOption("PATH", options->path, "What to show, such as root/child[2]/@attribute; * is any name");
  AddFormatOption(command, options->format);
  command.SetNotes(
      "The text of an element without children, or the value of an attribute, is printed as it is. A "
      "missing\n"
      "attribute counts as empty.\n\n"
      "Examples:\n"
      "  vrx xml standards.xml                              # all elements, indented, with their texts\n"
      "  vrx xml standards.xml standards/standard[2]        # one element only\n"
      "  vrx xml standards.xml standards/standard[2]/@name  # one value\n");
  command.SetAction([options] {
    RunXml(*options);
    return kExitPass;
  });
}

}  // namespace vrx::tool
