#include <vrxio/json/json_measurements.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/sample_columns.h>
#include <vrxio/text/byte_window.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>

namespace vrx::io {
namespace {

constexpr std::size_t kMaxObjectBytes = std::size_t{1} << 20;
constexpr std::size_t kMaxMembers = 10'000;
constexpr int kDeepest = 64;

// One member of an object: its name and its value, a number or a text; null and containers are neither.
struct Member {
  enum Kind { kNumber, kText, kOther };
  std::string name;
  Kind kind = kOther;
  bool isContainer = false;
  double number = 0;   // as a reflectance of a file of fractions: percent
  double percent = 0;  // of that as a fraction
  std::string text;
};

// Reads the bytes of one object, member by member.
class ObjectParser {
 public:
  /// With `areFractions` the numbers are read as percent too.
  ObjectParser(std::string_view bytes, bool areFractions) : rest_(bytes), areFractions_(areFractions) {}

  // The reason why it is of no use; empty when there is none.
  const std::string& Error() const { return error_; }

  void Parse(std::vector<Member>& members) {
    members.clear();
    Expect('{');
    if (!Take('}')) {
      do {
        if (members.size() == kMaxMembers) return Fail("more than 10000 members");
        Member& member = members.emplace_back();
        SkipSpace();
        member.name = String();
        Expect(':');
        Value(member, 0);
      } while (error_.empty() && Take(','));
      Expect('}');
    }
  }

 private:
  void Fail(std::string_view what) {
    if (error_.empty()) error_ = what;
    rest_ = {};
  }
  void SkipSpace() {
    while (!rest_.empty() && IsSpace(rest_.front())) rest_.remove_prefix(1);
  }
  bool Take(char c) {
    SkipSpace();
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  void Expect(char c) {
    if (!Take(c)) Fail(std::string("expected ") + c);
  }

  void Value(Member& member, int depth) {
    SkipSpace();
    if (depth > kDeepest) return Fail("lists and objects are nested more than 64 deep");
    if (rest_.empty()) return Fail("expected a value");
    const char c = rest_.front();
    if (c == '"') {
      member.kind = Member::kText;
      member.text = String();
    } else if (c == '{' || c == '[') {
      member.isContainer = true;
      Container(c, depth);
    } else if (c == '-' || (c >= '0' && c <= '9')) {
      Number(member);
    } else {
      Word();
    }
  }

  void Container(char open, int depth) {
    const char close = open == '{' ? '}' : ']';
    Take(open);
    if (Take(close)) return;
    do {
      SkipSpace();
      if (open == '{') {
        String();
        Expect(':');
      }
      Member ignored;
      Value(ignored, depth + 1);
    } while (error_.empty() && Take(','));
    Expect(close);
  }

  void Number(Member& member) {
    const auto isPart = [](char c) {
      return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
    };
    std::size_t end = 0;
    while (end < rest_.size() && isPart(rest_[end])) ++end;
    member.kind = Member::kNumber;
    const std::string_view text = rest_.substr(0, end);
    if (!ParseDecimal(text, '.', member.number)) Fail("this is not a number");
    if (areFractions_) ParseFractionAsPercent(text, member.percent);
    if (!rest_.empty()) rest_.remove_prefix(end);
  }

  void Word() {
    for (const std::string_view word : {"null", "true", "false"}) {
      if (rest_.starts_with(word)) return rest_.remove_prefix(word.size());
    }
    Fail("expected a value");
  }

  std::string String() {
    std::string text;
    if (rest_.empty() || rest_.front() != '"') return Fail("expected a text in quotes"), text;
    rest_.remove_prefix(1);
    while (!rest_.empty() && rest_.front() != '"') {
      const std::size_t plain = PlainCharacters();
      text.append(rest_.substr(0, plain));
      rest_.remove_prefix(plain);
      if (plain > 0) continue;
      if (rest_.front() != '\\') return Fail("a control character in a text"), text;
      rest_.remove_prefix(1);
      Escape(text);
    }
    if (rest_.empty()) return Fail("a text does not end"), text;
    rest_.remove_prefix(1);
    if (const char* const fault = TextFault(text, false)) Fail(fault);
    return text;
  }

  // How many characters stand before the next that ends the text, begins an escape or may not be there.
  [[nodiscard]] std::size_t PlainCharacters() const {
    const auto isSpecial = [](char c) {
      return c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' ';
    };
    return static_cast<std::size_t>(std::ranges::find_if(rest_, isSpecial) - rest_.begin());
  }

  void Escape(std::string& text) {
    if (rest_.empty()) return Fail("a text does not end");
    const char c = rest_.front();
    rest_.remove_prefix(1);
    constexpr std::string_view kNames = "\"\\/bfnrt", kCharacters = "\"\\/\b\f\n\r\t";
    if (const std::size_t at = kNames.find(c); at != std::string_view::npos) {
      text += kCharacters[at];
    } else if (c == 'u') {
      AppendUtf8(EscapedCharacter(), text);
    } else {
      Fail("an unknown escape");
    }
  }

  // The character of one escape, or of two that are the halves of one (RFC 8259).
  uint32_t EscapedCharacter() {
    const uint32_t first = Unit();
    if (first < 0xD800 || first >= 0xE000) return first;
    uint32_t second = 0;
    if (first < 0xDC00 && rest_.starts_with("\\u")) {
      rest_.remove_prefix(2);
      second = Unit();
    }
    if (second < 0xDC00 || second >= 0xE000) return Fail("an escape of half a character"), 0;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
  }

  uint32_t Unit() {
    uint32_t unit = 0;
    const std::string_view digits = rest_.substr(0, 4);
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    if (digits.size() < 4 || error != std::errc() || stop != digits.data() + 4)
      return Fail("an unknown escape"), 0;
    rest_.remove_prefix(4);
    return unit;
  }

  std::string_view rest_;
  bool areFractions_;
  std::string error_;
};

class JsonReader final : public MeasurementReader {
 public:
  JsonReader(InputStream input, const ReadOptions& options)
      : options_(options), window_(std::move(input), "JSON") {
    if (window_.More() && window_.Bytes().starts_with("\xEF\xBB\xBF")) window_.Skip(3);
    if (Peek() != '[') Fail(window_.Line(), "expected a list of objects");
    window_.Skip(1);
    first_ = window_.Offset();
    firstLine_ = window_.Line();
    if (!ReadObject()) Fail(window_.Line(), "the list is empty");
    for (const Member& member : members_) {
      names_.push_back(member.name);
      const bool isValue = member.kind != Member::kOther || WavelengthOf(member.name) > 0;
      if (!isValue) options_.ignoredColumns.push_back(member.name);
      if (!isValue && member.isContainer) PassOver(Shown(member.name));
    }
    columns_ = SampleColumns(names_, options_, true, [this](std::size_t column, const std::string& reason) {
      const bool isNamed = column != SampleColumns::kWholeRow;
      Fail(line_, (isNamed ? Shown(names_[column]) + ": " : std::string()) + reason);
    });
    for (std::size_t i = 0; i < names_.size(); ++i) places_[names_[i]] = i;
    ordered_.resize(names_.size());
    if (!columns_.Choice().empty()) Note(columns_.Choice());
    if (!columns_.Unused().empty()) Note("members that are not used: " + columns_.Unused());
    ValueScale scale;
    scale.isFraction = AreFractions();
    if (scale.isFraction) scale.norm = 1;
    scale.mayExceed = options_.force;
    scale.isOpen = options_.scale == ReadOptions::Scale::kByFile && !columns_.SayPercent();
    layout_ = &columns_.Begin(MeasuringConditions(), scale);
    Rewind();
    if (CanSeek() && columns_.Scale().IsOpen()) FindScale();
  }

  bool Next(Measurement& sample) override {
    if (!NextMeasured()) {
      if (columns_.Scale().IsOpen()) columns_.Scale().Ask(Name());
      return false;
    }
    sample = Measurement();
    for (const SampleColumns::Run& run : columns_.Runs()) TakeRun(run, sample);
    columns_.Finish(rows_, sample);
    return true;
  }

  const MeasurementLayout& FirstLayout() const override { return *layout_; }
  std::string_view FormName() const override { return "JSON"; }
  bool HasIds() const override { return columns_.Has(ColumnRole::kId); }
  bool HasNames() const override { return columns_.Has(ColumnRole::kName); }
  bool HasStandards() const override { return columns_.Has(ColumnRole::kStandard); }
  bool HasGeometries() const override { return columns_.Has(ColumnRole::kGeometry); }
  bool HasXyz() const override { return columns_.HasXyz(); }
  const std::string& Name() const override { return window_.Input().name; }
  uint64_t Size() const override { return window_.Input().size; }
  uint64_t Position() const override { return window_.Offset(); }
  int64_t CountUnmeasured() const override { return unmeasured_; }
  uint64_t Offset() const override { return offset_; }
  bool CanSeek() const override { return Size() > 0; }
  void SeekTo(uint64_t offset) override {
    window_.SeekTo(offset, 0);
    needsComma_ = isEnded_ = false;
  }
  void Rewind() override {
    if (CanSeek() || rows_ > 0) {
      window_.SeekTo(first_, firstLine_);
      needsComma_ = isEnded_ = false;
    } else {
      isHeld_ = true;  // a pipe: the object that was read goes first
    }
    rows_ = unmeasured_ = 0;
  }
  std::string RowPlace() const override { return PlaceOf(line_); }

 private:
  bool AreFractions() const { return options_.scale == ReadOptions::Scale::kFraction; }
  // Looks for the value that tells the scale, which most often is in the first object. Of a pipe it is asked for at the end.
  void FindScale() {
    Measurement sample;
    while (columns_.Scale().IsOpen() && Next(sample)) {
    }
    Rewind();
  }

  std::string PlaceOf(int64_t line) const { return window_.PlaceOf(line); }
  [[noreturn]] void Fail(int64_t line, const std::string& reason) const {
    throw InputError(PlaceOf(line) + ": " + reason);
  }

  // The members are those of the first object in its order, as they are in almost every file.
  [[nodiscard]] bool AreAsInFirst() const { return std::ranges::equal(members_, names_, {}, &Member::name); }

  // Brings the members of this object into the order of those of the first one.
  void Order() {
    if (AreAsInFirst()) {
      std::ranges::transform(members_, ordered_.begin(), [](const Member& member) { return &member; });
      return;
    }
    std::ranges::fill(ordered_, nullptr);
    for (const Member& member : members_) {
      const auto place = places_.find(member.name);
      if (place != places_.end()) {
        ordered_[place->second] = &member;
      } else {
        PassOver(Shown(member.name));
      }
    }
  }

  void TakeRun(const SampleColumns::Run& run, Measurement& sample) {
    for (std::size_t i = 0; i < run.count; ++i) {
      const Member* const member = ordered_[run.column + i];
      if (SampleColumns::IsText(run)) {
        if (run.meaning.role < ColumnRole::kDevice) continue;
        std::string& text = texts_[run.column];
        const bool isThere = member != nullptr && member->kind != Member::kOther;
        text = !isThere ? "" : member->kind == Member::kNumber ? ShortestText(member->number) : member->text;
        // An object without the member does not take it from the one before.
        const bool mayBeEmpty =
            run.meaning.role == ColumnRole::kDevice || run.meaning.role >= ColumnRole::kGeometry;
        if (isThere || mayBeEmpty) columns_.TakeText(run, text, sample);
        continue;
      }
      const bool isFraction = columns_.AreFractions(run);
      if (!TakeNumber(member, isFraction, columns_.Values(run)[i])) {
        Fail(line_, Shown(names_[run.column + i]) + ": expected a number");
      }
    }
  }

  // A number, or a text that is one, as some programs write them.
  static bool TakeNumber(const Member* member, bool isFraction, double& value) {
    if (member == nullptr || member->kind == Member::kOther) return false;
    if (member->kind == Member::kText) {
      const std::string_view text = Trimmed(member->text);
      return isFraction ? ParseFractionAsPercent(text, value) : ParseDecimal(text, '.', value);
    }
    value = isFraction ? member->percent : member->number;
    return true;
  }

  // Reads the next object and orders its members; a lenient reader leaves those out that have no value in them.
  bool NextMeasured() {
    while (ReadObject()) {
      ++rows_;
      Order();
      if (!options_.lenient || !HasNoValue()) return true;
      ++unmeasured_;
    }
    return false;
  }

  // Whether all values of this object are null or missing.
  bool HasNoValue() const {
    for (const SampleColumns::Run& run : columns_.Runs()) {
      for (std::size_t i = 0; i < run.count && !SampleColumns::IsText(run); ++i) {
        const Member* const member = ordered_[run.column + i];
        if (member != nullptr && member->kind != Member::kOther) return false;
      }
    }
    return true;
  }

  // The next character that is no blank; 0 at the end of the file.
  char Peek() {
    while (true) {
      const std::string_view bytes = window_.Bytes();
      const auto blanks = static_cast<std::size_t>(std::ranges::find_if_not(bytes, IsSpace) - bytes.begin());
      window_.Skip(blanks);
      if (!window_.Bytes().empty()) return window_.Bytes().front();
      if (!window_.More()) return 0;
    }
  }

  // Reads the next object of the list; false at its end.
  bool ReadObject() {
    if (std::exchange(isHeld_, false)) return true;
    if (isEnded_) return false;
    char c = Peek();
    if (c == ',' && needsComma_) {
      window_.Skip(1);
      c = Peek();
    } else if (c == '{' && needsComma_) {
      Fail(window_.Line(), "expected a comma between objects");
    }
    if (c == ']') return EndList();
    if (c == 0) Fail(window_.Line(), "the file ends within the list");
    if (c != '{') Fail(window_.Line(), "expected an object");
    needsComma_ = true;
    line_ = window_.Line();
    offset_ = window_.Offset();
    const std::size_t size = SizeOfObject();
    ObjectParser parser(window_.Bytes().substr(0, size), AreFractions());
    parser.Parse(members_);
    if (!parser.Error().empty()) Fail(line_, parser.Error());
    window_.Skip(size);
    if (!AreAsInFirst()) CheckNames();
    return true;
  }

  // Goes behind the bracket that ends the list, where nothing may stand. Answers false, as nothing was read.
  bool EndList() {
    window_.Skip(1);
    if (Peek() != 0) Fail(window_.Line(), "there is more text after the end of the list");
    isEnded_ = true;
    return false;
  }

  // The bytes of the object at the position, up to its closing brace.
  std::size_t SizeOfObject() {
    int depth = 0;
    bool quoted = false;
    std::string_view bytes = window_.Bytes();
    const auto isThere = [&](std::size_t at) {
      if (at < bytes.size()) return true;
      const bool isMore = window_.More();
      bytes = window_.Bytes();
      return isMore;
    };
    for (std::size_t at = 0;; ++at) {
      if (!isThere(at)) Fail(line_, "the file ends within the object that begins here");
      if (at > kMaxObjectBytes) Fail(line_, "an object is longer than 1 MiB");
      const char c = bytes[at];
      if (quoted) {
        if (c == '\\') ++at;
        if (!isThere(at)) Fail(line_, "the file ends within a text");
        quoted = c != '"';
      } else if (c == '"') {
        quoted = true;
      } else if (c == '{' || c == '[') {
        if (++depth > kDeepest) Fail(line_, "lists and objects are nested more than 64 deep");
      } else if (c == '}' || c == ']') {
        if (--depth == 0) return at + 1;
      }
    }
  }

  void CheckNames() const {
    std::vector<std::string_view> names;
    for (const Member& member : members_) names.push_back(member.name);
    std::ranges::sort(names);
    const auto twice = std::ranges::adjacent_find(names);
    if (twice != names.end()) Fail(line_, "the object has two members " + Shown(*twice));
  }

  ReadOptions options_;
  ByteWindow window_;
  SampleColumns columns_;
  const MeasurementLayout* layout_ = nullptr;
  std::vector<std::string> names_;
  std::map<std::string, std::size_t, std::less<>> places_;
  std::vector<const Member*>
      ordered_;  // the members of this object in the order of names_; null where there is none
  std::map<std::size_t, std::string> texts_;  // of the current sample, by column
  std::vector<Member> members_;
  uint64_t first_ = 0;
  int64_t firstLine_ = 1;
  uint64_t offset_ = 0;
  int64_t line_ = 1;
  int64_t rows_ = 0, unmeasured_ = 0;
  bool needsComma_ = false;
  bool isHeld_ = false;
  bool isEnded_ = false;  // the list, at whose end the window stands
};

}  // namespace

bool IsJson(std::string_view beginning) {
  if (beginning.starts_with("\xEF\xBB\xBF")) beginning.remove_prefix(3);
  const std::size_t first = beginning.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return false;
  if (beginning[first] == '{') return true;
  const std::size_t second = beginning.find_first_not_of(" \t\r\n", first + 1);
  return beginning[first] == '[' && second != std::string_view::npos &&
         (beginning[second] == '{' || beginning[second] == ']');
}

std::unique_ptr<MeasurementReader> ReadJson(InputStream input, const ReadOptions& options) {
  return std::make_unique<JsonReader>(std::move(input), options);
}

}  // namespace vrx::io
