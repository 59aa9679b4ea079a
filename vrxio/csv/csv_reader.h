// Tables of comma-separated values, read as a stream in constant memory.
//
// The first record names the columns and tells the separator: a semicolon if it has one, else a tab, else a
// comma. Fields may stand in double quotes, with "" for a quote. Numbers take a decimal point and, where the
// separator is not the comma, a decimal comma. The text is UTF-8 with or without a byte-order mark; lines end
// in LF or CR LF. Blank lines are passed over, and so are empty fields that a separator at the end of a line makes and
// closing marks (IsClosingMark). A dialect may have runs of blanks for separators.
//
// Whatever cannot be read raises InputError with file, line, column and reason.

#ifndef VRXIO_CSV_CSV_READER_H_
#define VRXIO_CSV_CSV_READER_H_

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxio/text/input_stream.h>
#include <vrxio/text/number_shape.h>

namespace vrx::io {

/// How a file of comma-separated values is laid out where it departs from the usual.
struct CsvDialect {
  char separator = 0;         ///< 0: what the header tells; ' ' for runs of blanks
  uint64_t headerOffset = 0;  ///< the byte where the header begins, and its line
  int64_t headerLine = 1;
  std::vector<std::string> columns;  ///< the names of the columns of a file without a header
  bool skipComments = false;         ///< lines that begin with # are passed over
};

/// True for a line that ends the data of an export, such as ">>>>>End Spectral Data<<<<<" or "[EndOfFile]".
bool IsClosingMark(std::string_view line);

/// One table, read record by record and field by field.
class CsvReader {
 public:
  /// The longest record, in bytes, and the largest number of columns.
  static constexpr std::size_t kMaxRecordBytes = std::size_t{1} << 20;
  static constexpr std::size_t kMaxColumns = 10'000;

  /// Opens a file, or standard input for "-", and reads the header. UTF-16 with a mark and lines that end in CR alone
  /// are read too, of files up to kLargestHeldFile.
  explicit CsvReader(const std::string& path);
  /// The same for any stream; `name` is what messages call it. `stream` must outlive the reader.
  CsvReader(std::istream& stream, std::string name);
  /// The same for an open file that is laid out in another way.
  CsvReader(InputStream input, CsvDialect dialect);

  const std::string& Name() const { return input_.name; }
  /// The column names, without surrounding spaces.
  const std::vector<std::string>& Header() const { return header_; }

  /// Goes to the next record; false after the last one. What was left of the current one is not looked at.
  bool Next();

  // The fields of the current record, left to right.

  /// The next field as text, without its quotes and without surrounding spaces; valid UTF-8. It lives until
  /// the next call of Next.
  std::string_view Text();
  /// The next `values.size()` fields as numbers; with `asPercent` times a hundred, rounded once.
  void Numbers(std::span<double> values, bool asPercent = false);
  double Number();
  /// Makes sure that no field is left but empty ones.
  void EndRecord();
  /// True when each of these columns, which ascend, is empty or a dash in the current record, none of which was read yet.
  bool AreEmpty(std::span<const std::size_t> columns) const;

  /// Where the current record begins: its byte in the file.
  uint64_t Offset() const { return offset_; }
  /// True when SeekTo works: a file, not a pipe.
  bool CanSeek() const { return input_.size > 0; }
  /// Passes over the next record for good: the first one is behind it.
  void SkipRecord();
  /// Makes the record at `offset` the next one. Messages then name bytes, not lines.
  void SeekTo(uint64_t offset);
  /// Goes back to the first record behind the header.
  void Rewind();

  /// Bytes of the file, 0 for a pipe; and those read so far, to within a buffer.
  uint64_t Size() const { return input_.size; }
  uint64_t Position() const { return bufferOffset_ + begin_; }

  /// The line of the current record, from 1.
  int64_t Line() const { return line_; }
  /// Where the current record stands, and its column `column` (from 0), for messages.
  std::string Place() const;
  std::string PlaceAt(std::size_t column) const;
  /// Refuses the current record at the field that was read last, at column `column` (from 0), or as a whole.
  [[noreturn]] void Fail(const std::string& reason) const;
  [[noreturn]] void FailAt(std::size_t column, const std::string& reason) const;
  [[noreturn]] void FailRow(const std::string& reason) const;

 private:
  void Start();
  void SkipPreamble();
  void ReadHeader();
  void TakeHeader();
  bool Fill();
  const char* FindRecordEnd();
  void CollapseBlanks();
  std::string_view RawField();
  std::string_view Unquoted(char* at);
  std::size_t ShortNumbers(std::span<double> values, bool asPercent);
  double SlowNumber(bool asPercent);
  void RequireField();
  [[noreturn]] void FailLong() const;

  InputStream input_;
  CsvDialect dialect_;
  std::vector<std::string> header_;

  // The buffer holds the file from bufferOffset_ on; begin_ ... used_ is what no record has taken yet. One
  // byte behind used_ is a line end, so that a scan over a field needs no second limit, and a few more may be read.
  std::unique_ptr<char[]> buffer_;
  uint64_t bufferOffset_ = 0;
  std::size_t begin_ = 0;
  std::size_t used_ = 0;
  std::size_t chunk_;
  bool atEnd_ = false;

  char separator_ = ',';
  char decimalSeparator_ = '.';

  // The current record.
  char* at_ = nullptr;         // the next field; null when there is none
  char* recordEnd_ = nullptr;  // its line end
  std::size_t column_ = 0;     // fields taken
  uint64_t offset_ = 0;
  int64_t line_ = 0;  // from 1; less when it is not known
  int64_t nextLine_ = 1;
  NumberShape shape_;  // of the number that was read last

  // The first record behind the header.
  uint64_t bodyOffset_ = 0;
  int64_t bodyLine_ = 0;
};

}  // namespace vrx::io

#endif  // VRXIO_CSV_CSV_READER_H_
