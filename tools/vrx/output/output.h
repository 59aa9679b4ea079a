// Results on their way to standard output: a stream that cannot fail silently, and the three formats of the
// tool, `table` for people, `csv` and `json` for programs.
//
// Numbers in csv and json carry the fewest digits that read back to the same double. An unset value is an
// empty field, a null, or "-" in a table. JSON has no word for infinities and NaN; they are null there, and
// "inf", "-inf" and "nan" in csv.

#ifndef TOOLS_VRX_OUTPUT_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_OUTPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vrx/base/output_error.h"
#include "tools/vrx/output/decimal_run.h"

namespace vrx::tool {

class Command;

/// How results are written.
struct Format {
  enum Kind { kTable, kCsv, kJson };
  static constexpr int kShortest = -1;

  Format(Kind given = kTable) : kind(given) {}  // NOLINT(google-explicit-constructor): a kind is a format
  operator Kind() const { return kind; }        // NOLINT(google-explicit-constructor)

  Kind kind;
  int digits = kShortest;     ///< decimals of numbers in csv, and in place of a column's own in tables
  bool csvSafe = false;       ///< texts that a spreadsheet would run as formulas get an apostrophe in csv
  bool decimalComma = false;  ///< numbers in csv have a comma, and semicolons separate
};

/// Adds `--format table|csv|json`, `--digits`, `--csv-safe` and `--decimal-comma` to a subcommand.
void AddFormatOption(Command& owner, Format& format);

/// The longest text that a cell of a table shows, in characters.
inline constexpr std::size_t kLongestCell = 120;

/// Buffered text to a file. A result that ends early must not pass for a whole one: when the stream is
/// destroyed without `Finish`, what is still in the buffer (1 MiB) is dropped, and if some of the text had
/// left already, a line that no reader of the format accepts is put behind it.
class OutputStream {
 public:
  explicit OutputStream(std::FILE* file = stdout);
  /// A stream that stays in memory, as long as it gets, and writes texts and numbers as `other` does.
  static OutputStream InMemory(const OutputStream& other) { return {other.format_, other.onTerminal_}; }
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;
  ~OutputStream();

  /// Appends text. Throws OutputError when the file does not take it.
  void Append(std::string_view text) {
    if (text.size() > room_ - used_) return AppendInParts(text);
    std::copy_n(text.data(), text.size(), buffer_.get() + used_);
    used_ += text.size();
  }
  void Append(char c) {
    if (used_ == room_) Send();
    buffer_[used_++] = c;
  }
  void AppendSpaces(std::size_t count);
  /// Text for a person: on a terminal without what it would obey, elsewhere as it is.
  void AppendShown(std::string_view text);
  /// The shortest text that reads back to `value`, or its fixed text in the digits of the format; nothing when it is
  /// unset.
  void AppendNumber(double value, bool isKnown = false);
  /// The longest text that AppendNumber appends, in bytes.
  static constexpr std::size_t kLongestNumber = 330;
  /// For rows of many short parts, which cost less without a question for room at each: so many free bytes, some thousand at
  /// most, to write to. EndPart appends what was written to them, up to `end`.
  char* Room(std::size_t bytes);
  void EndPart(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }
  /// Writes to such bytes what AppendNumber appends; returns its end. A number that `isKnown` is one also where it is as small as
  /// those that stand for unset.
  char* WriteNumber(double value, char* out, bool isKnown = false) const;
  /// Numbers that are written as by WriteNumber one after the other: the digits of all are found at once.
  class Numbers {
   public:
    static constexpr std::size_t kMost = DecimalRun::kMost;
    /// kMost numbers at most, which must outlive it, as must the stream.
    Numbers(const OutputStream& stream, std::span<const double> numbers)
        : stream_(stream), numbers_(numbers) {
      if (isShortest_) decimals_.Find(numbers);
    }
    char* Write(std::size_t i, char* out, bool isKnown = false) const {
      return isShortest_ && decimals_.Has(i) ? decimals_.Write(i, out)
                                             : stream_.WriteNumber(numbers_[i], out, isKnown);
    }

   private:
    const OutputStream& stream_;
    std::span<const double> numbers_;
    bool isShortest_ = stream_.format_.digits == Format::kShortest;
    DecimalRun decimals_;
  };

  /// `value` with 0 to 9 decimals, rounded to nearest; never "-0.00". An unset value is "-".
  void AppendFixed(double value, int decimals);
  /// A field of a csv row, in quotes when it has a comma, a quote or a line end in it. On a terminal it is shown as
  /// by AppendShown, and with the format's `csvSafe` an apostrophe stands before what a spreadsheet would run.
  void AppendCsvText(std::string_view text);
  /// The same behind a text of the caller's.
  void AddCsvField(std::string_view text, std::string& to) const;
  /// Takes the digits and the safety of csv from a format.
  void SetFormat(const Format& format) { format_ = format; }

  /// Sends everything. Throws OutputError when the file does not take it.
  void Finish();

  /// The text of a stream in memory, until more is written to it; and the end of it.
  std::string_view Text() const { return {buffer_.get(), used_}; }
  void Clear() { used_ = 0; }

 private:
  static constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

  OutputStream(const Format& format, bool onTerminal);  // in memory

  void Send();
  void TurnPointsIntoCommas();
  void Grow();
  void AppendInParts(std::string_view text);

  std::FILE* file_ = nullptr;  // null for a stream in memory
  bool onTerminal_ = false;
  Format format_;
  std::size_t room_ = kBufferBytes;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
  std::string field_;      // of csv, on its way
  bool isQuoted_ = false;  // the text that was sent ends within quotes
  bool sent_ = false;
  bool finished_ = false;
};

/// What becomes of a column where the terminal is too narrow for all. The last column of a kind is left out first.
enum class Room {
  kNeeded,  ///< always there; its texts are shortened where nothing else helps
  kWhole,   ///< always there, and its texts whole: the reason of a verdict
  kLast,    ///< left out where the texts of kNeeded, shortened, are still too wide
  kSpare,   ///< left out before any text is shortened
};

/// A column of results.
struct Column {
  std::string name;           ///< heading in csv and key in json
  std::string heading = {};   ///< heading in a table; the name when empty
  int decimals = 2;           ///< of numbers in a table
  Room room = Room::kNeeded;  ///< in a table for which the terminal is too narrow
  bool inReport = true;       ///< false: a report does without it
};

/// How a cell of a table looks on a terminal.
enum class Tint { kPlain, kGood, kWarning, kBad, kHeading };

/// `text` in the tint's colour when `useColour` is set.
std::string Tinted(std::string_view text, Tint tint, bool useColour);

/// Rows of results in one of the three formats. A row is one call per column, left to right, then `EndRow`.
/// Text is UTF-8; tables cut it to kLongestCell characters, on a terminal to what its width leaves, and say at their end
/// which columns it had no room for. Memory is constant: a table takes its column widths from its first rows.
class RowWriter {
 public:
  virtual ~RowWriter() = default;
  virtual void Text(std::string_view text, Tint tint = Tint::kPlain) = 0;
  /// A text that programs and people get in different words: csv and json take `plain`, tables and reports `shown`.
  virtual void Words(std::string_view plain, std::string_view shown) = 0;
  /// Nothing, or a dash, when it is unset.
  virtual void Number(double value, Tint tint = Tint::kPlain) = 0;
  /// A number that was computed, however near it comes to those that stand for unset.
  virtual void Known(double value) = 0;
  virtual void Integer(int64_t value) = 0;
  virtual void EndRow() = 0;
  /// Ends the results; call once. Does not end the stream.
  virtual void Finish() = 0;
};

/// `output` must outlive the writer.
std::unique_ptr<RowWriter> MakeRowWriter(const Format& format, OutputStream& output,
                                         std::vector<Column> columns);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_OUTPUT_H_
