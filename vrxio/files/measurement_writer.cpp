#include <vrxio/files/measurement_writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <vrxio/cxf/cxf_reader.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxio/text/text.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {

std::vector<std::pair<std::string, std::string>> ConditionTexts(const MeasuringConditions& conditions) {
  std::vector<std::pair<std::string, std::string>> texts;
  texts.emplace_back("measuring geometry", GeometryName(conditions.geometry));
  texts.emplace_back("M condition",
                     conditions.mCondition < 0 ? "" : "M" + std::to_string(conditions.mCondition));
  texts.emplace_back("filter", conditions.filter);
  texts.emplace_back("backing", conditions.backing);
  texts.emplace_back("instrument", conditions.instrument);
  texts.emplace_back("aperture", conditions.aperture);
  texts.emplace_back("illuminant", conditions.illuminant < 0
                                       ? conditions.otherIlluminant
                                       : CodeOf(static_cast<vrxIlluminant>(conditions.illuminant)));
  texts.emplace_back("observer",
                     conditions.observer < 0 ? "" : std::to_string(DegreesOf(conditions.observer)));
  return texts;
}

namespace {

std::string Shortest(double value) {
  char text[40];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// The fields that any sample of a file has.
struct Shape {
  bool hasNames = false, hasStandards = false, hasGeometries = false, hasSampleDates = false;
  bool hasFileDates = false, fileDatesDiffer = false;
  bool hasXyz = false, hasLab = false, hasCurves = false;
  std::vector<double> wavelengths;  // that all curves have; empty when they differ
  bool wavelengthsDiffer = false;
  double largest = 0;  // reflectance in percent
  int64_t samples = 0;
  MeasuringConditions conditions;   // of the first sample
  std::vector<bool> hasConditions;  // by place in ConditionTexts: some sample's is known
  std::vector<bool> conditionsDiffer;
  std::vector<std::string> others;              // headings of the columns that nothing is made of
  bool hasQuotes = false, hasControls = false;  // double quotes and line ends in some text

  bool HasDates() const { return hasSampleDates || hasFileDates; }
};

// What a file is like as a whole: ShapeOf looks at all of its samples.
class ShapeFinder {
 public:
  explicit ShapeFinder(const MeasurementReader& source) {
    shape_.hasStandards = source.HasStandards();
    shape_.hasGeometries = source.HasGeometries();
  }

  void Take(const Measurement& sample) {
    ++shape_.samples;
    shape_.hasNames = shape_.hasNames || (!sample.name.empty() && sample.name != sample.id);
    shape_.hasXyz = shape_.hasXyz || sample.hasXyz;
    shape_.hasLab = shape_.hasLab || sample.hasLab;
    shape_.hasSampleDates = shape_.hasSampleDates || !sample.date.empty();
    for (const std::string_view text : {sample.id, sample.name, sample.standard, sample.date}) TakeText(text);
    TakeOthers(sample);
    for (const double value : sample.reflectance) shape_.largest = std::max(shape_.largest, value);
    if (std::exchange(last_, sample.layout) == sample.layout) return;
    TakeConditions(sample.layout->conditions);
    if (sample.reflectance.empty()) return;
    if (!shape_.hasCurves) shape_.wavelengths = sample.layout->wavelengths;
    shape_.hasCurves = true;
    shape_.wavelengthsDiffer = shape_.wavelengthsDiffer || shape_.wavelengths != sample.layout->wavelengths;
  }

  Shape Finish() { return std::move(shape_); }

 private:
  void TakeText(std::string_view text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    shape_.hasQuotes = shape_.hasQuotes || text.find('"') != std::string_view::npos;
    shape_.hasControls = shape_.hasControls || std::ranges::any_of(text, isControl);
  }

  void TakeOthers(const Measurement& sample) {
    if (sample.otherHeadings.data() != lastHeadings_.data() ||
        sample.otherHeadings.size() != lastHeadings_.size() ||
        !std::ranges::equal(sample.otherHeadings, std::span(lastNames_))) {
      lastHeadings_ = sample.otherHeadings;
      lastNames_.assign(sample.otherHeadings.begin(), sample.otherHeadings.end());
      for (const std::string& heading : sample.otherHeadings) AddOther(heading);
    }
    for (const std::string& text : sample.others) TakeText(text);
  }

  void AddOther(const std::string& heading) {
    constexpr std::size_t kMost = 10'000;
    const bool isKnown = std::ranges::find(shape_.others, heading) != shape_.others.end();
    if (!isKnown && shape_.others.size() < kMost) shape_.others.push_back(heading);
  }

  void TakeConditions(const MeasuringConditions& conditions) {
    const auto texts = ConditionTexts(conditions);
    const bool isFirst = shape_.hasConditions.empty();
    if (isFirst) {
      shape_.conditions = conditions;
      shape_.hasConditions.resize(texts.size());
      shape_.conditionsDiffer.resize(texts.size());
    }
    const auto first = ConditionTexts(shape_.conditions);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (!texts[i].second.empty()) shape_.hasConditions[i] = true;
      if (texts[i].second != first[i].second) shape_.conditionsDiffer[i] = true;
      TakeText(texts[i].second);
    }
    shape_.hasFileDates = shape_.hasFileDates || !conditions.date.empty();
    shape_.fileDatesDiffer = shape_.fileDatesDiffer || conditions.date != shape_.conditions.date;
    // Where samples have a geometry of their own it is theirs.
    if (shape_.hasGeometries) shape_.hasConditions[0] = shape_.conditionsDiffer[0] = false;
  }

  Shape shape_;
  const MeasurementLayout* last_ = nullptr;
  std::span<const std::string> lastHeadings_;
  std::vector<std::string> lastNames_;
};

Shape ShapeOf(MeasurementReader& source, const std::function<void(uint64_t)>& onProgress) {
  ShapeFinder finder(source);
  Measurement sample;
  while (source.Next(sample)) {
    finder.Take(sample);
    if (onProgress) onProgress(source.Position());
  }
  source.Rewind();
  return finder.Finish();
}

// The date of a sample, or that of its file.
std::string_view DateOf(const Measurement& sample) {
  return sample.date.empty() ? std::string_view(sample.layout->conditions.date) : sample.date;
}

// "2024-05-01T12:00:00" and what may follow of a time zone.
bool IsDateTime(std::string_view text) {
  constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:dd";
  if (text.size() < kPattern.size()) return false;
  for (std::size_t i = 0; i < kPattern.size(); ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    if (kPattern[i] == 'd' ? !isDigit : text[i] != kPattern[i]) return false;
  }
  return text.substr(kPattern.size()).find_first_not_of("0123456789.:+-Z") == std::string_view::npos;
}

// A form of file: told of each sample with its curve at the wavelengths of the file.
class Writer {
 public:
  Writer(const MeasurementReader& source, const WriteOptions& options, Shape shape, const TextSink& sink)
      : source_(source), options_(options), shape_(std::move(shape)), sink_(sink) {}
  virtual ~Writer() = default;

  virtual void Begin() = 0;
  virtual void Add(const Measurement& sample, std::span<const double> curve) = 0;
  virtual void Finish() = 0;

  // What of the source does not go into the form, by name.
  std::vector<std::string> Losses() {
    std::vector<std::string> losses = source_.PassedOver();
    AddLosses(losses);
    return losses;
  }

 protected:
  virtual void AddLosses(std::vector<std::string>& losses) = 0;

  // Words about the whole file. The maker of a file that this library wrote is no loss.
  void AddRemarks(const std::function<bool(const MeasurementReader::Remark&)>& isHeld,
                  std::vector<std::string>& losses) const {
    for (const MeasurementReader::Remark& remark : source_.Remarks()) {
      const bool isOwn = remark.word == "ORIGINATOR" && remark.text == "vrx";
      if (!isOwn && !isHeld(remark)) losses.push_back(remark.word);
    }
  }

  // Takes those of the kept columns out that a reader of the file would take for one of its own; they are lost.
  void DropTwins(const std::vector<std::string>& ownNames, std::vector<std::string>& losses) {
    std::vector<std::string> names = ownNames, kept;
    for (const std::string& heading : shape_.others) {
      const bool isTwin = std::ranges::any_of(
          names, [&](const std::string& name) { return EqualsIgnoringCase(name, heading); });
      (isTwin ? losses : kept).push_back(heading);
      names.push_back(heading);
    }
    shape_.others = std::move(kept);
  }

  // The text of a kept column; empty where the sample has none.
  static std::string_view OtherOf(const Measurement& sample, std::size_t column, const std::string& heading) {
    if (column < sample.others.size() && sample.otherHeadings[column] == heading)
      return sample.others[column];
    const auto found = std::ranges::find(sample.otherHeadings, heading);
    return found != sample.otherHeadings.end()
               ? std::string_view(
                     sample.others[static_cast<std::size_t>(found - sample.otherHeadings.begin())])
               : std::string_view();
  }

  // Whether a text is a number as this library writes it, which no reader could take for another.
  static bool IsPlainNumber(std::string_view text) {
    double value = 0;
    return ParseDecimal(text, '.', value) && Shortest(value) == text;
  }

  std::string ValueText(double percent) const {
    return options_.fraction ? FractionText(percent) : Shortest(percent);
  }
  void Put(std::string_view text) { sink_(text); }

  const MeasurementReader& source_;
  const WriteOptions& options_;
  Shape shape_;
  const TextSink& sink_;
};

// The columns of a table: CSV and JSON have them by the same names.
class TableWriter : public Writer {
 public:
  using Writer::Writer;

 protected:
  struct Cell {
    std::string name;
    std::string text;
    bool isNumber;
  };

  std::vector<Cell> CellsOf(const Measurement& sample, std::span<const double> curve) const {
    std::vector<Cell> cells{{"id", std::string(sample.id), false}};
    if (shape_.hasNames) cells.push_back({"name", std::string(sample.name), false});
    if (shape_.hasStandards) cells.push_back({"standard", std::string(sample.standard), false});
    if (shape_.hasGeometries) cells.push_back({"geometry", GeometryName(sample.geometry), false});
    if (shape_.HasDates()) cells.push_back({"date", std::string(DateOf(sample)), false});
    const auto here = ConditionTexts(sample.layout->conditions);
    for (std::size_t i = 0; i < here.size(); ++i) {
      if (shape_.hasConditions[i]) cells.push_back({here[i].first, here[i].second, false});
    }
    for (std::size_t i = 0; i < shape_.others.size(); ++i) {
      const std::string_view text = OtherOf(sample, i, shape_.others[i]);
      const std::string& heading = shape_.others[i];
      cells.push_back({heading.empty() ? "index" : heading, std::string(text), IsPlainNumber(text)});
    }
    if (shape_.hasXyz) AddColor(cells, {"X", "Y", "Z"}, sample.xyz, sample.hasXyz);
    if (shape_.hasLab) AddColor(cells, {"L", "a", "b"}, sample.lab, sample.hasLab);
    for (std::size_t i = 0; i < curve.size(); ++i) {
      cells.push_back({ValueHeading(shape_.wavelengths[i]), ValueText(curve[i]), true});
    }
    return cells;
  }

  void AddLosses(std::vector<std::string>& losses) override {
    AddRemarks([](const MeasurementReader::Remark&) { return false; }, losses);
    std::vector<std::string> names{"id"};
    if (shape_.hasNames) names.emplace_back("name");
    if (shape_.hasStandards) names.emplace_back("standard");
    if (shape_.hasGeometries) names.emplace_back("geometry");
    if (shape_.HasDates()) names.emplace_back("date");
    const auto conditions = ConditionTexts(shape_.conditions);
    for (std::size_t i = 0; i < shape_.hasConditions.size(); ++i) {
      if (shape_.hasConditions[i]) names.push_back(conditions[i].first);
    }
    if (shape_.hasXyz) names.insert(names.end(), {"X", "Z"});
    if (shape_.hasLab) names.insert(names.end(), {"L", "a", "b"});
    DropTwins(names, losses);
  }

 private:
  // Values that all lie below 2 percent could be fractions: the unit says that they are not.
  std::string ValueHeading(double nm) const {
    const bool needsUnit = shape_.largest < kSurelyPercent && !options_.fraction;
    return (needsUnit ? "%R " : "") + Shortest(nm);
  }

  static void AddColor(std::vector<Cell>& cells, std::array<const char*, 3> names,
                       const std::array<double, 3>& color, bool isThere) {
    if (!isThere)
      throw InputError("some samples have a colour and others have none: the format takes all or none");
    for (std::size_t i = 0; i < 3; ++i) cells.push_back({names[i], Shortest(color[i]), true});
  }
};

class CsvWriter final : public TableWriter {
 public:
  using TableWriter::TableWriter;

  void Begin() override {}
  void Add(const Measurement& sample, std::span<const double> curve) override {
    const std::vector<Cell> cells = CellsOf(sample, curve);
    std::string line;
    if (std::exchange(isFirst_, false)) {
      for (const Cell& cell : cells) line += (line.empty() ? "" : Separator()) + Quoted(cell.name);
      line += '\n';
    }
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i > 0 ? Separator() : "") + TextOf(cells[i]);
    Put(line + '\n');
  }
  void Finish() override {}

 private:
  std::string Separator() const { return options_.decimalComma ? ";" : ","; }

  std::string TextOf(const Cell& cell) const {
    if (!cell.isNumber) return Quoted(cell.text);
    std::string text = cell.text;
    if (options_.decimalComma) std::ranges::replace(text, '.', ',');
    return text;
  }

  std::string Quoted(const std::string& text) const {
    const bool isFormula = options_.csvSafe && StartsFormula(text);
    if (text.find_first_of(",\"\n\r#;\t") == std::string::npos && !isFormula) return text;
    std::string quoted = isFormula ? "\"'" : "\"";
    for (const char c : text) {
      if (c == '"') quoted += '"';
      quoted += c;
    }
    return quoted + '"';
  }

  bool isFirst_ = true;
};

class JsonWriter final : public TableWriter {
 public:
  using TableWriter::TableWriter;

  void Begin() override { Put("["); }
  void Add(const Measurement& sample, std::span<const double> curve) override {
    std::string object = std::exchange(isFirst_, false) ? "\n{" : ",\n{";
    bool isFirstMember = true;
    for (const Cell& cell : CellsOf(sample, curve)) {
      if (!std::exchange(isFirstMember, false)) object += ',';
      object += Quoted(cell.name) + ':' + (cell.isNumber ? cell.text : Quoted(cell.text));
    }
    Put(object + '}');
  }
  void Finish() override { Put("\n]\n"); }

 private:
  static std::string Quoted(std::string_view text) {
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string quoted = "\"";
    while (!text.empty()) {
      const char32_t character = TakeCharacter(text);
      if (character == '"' || character == '\\') quoted += '\\';
      if (IsHidden(character) && character <= 0xFFFF) {
        quoted += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) quoted += kHex[(character >> shift) & 15];
      } else {
        AppendUtf8(character, quoted);
      }
    }
    return quoted + '"';
  }

  bool isFirst_ = true;
};

class CgatsWriter final : public Writer {
 public:
  using Writer::Writer;

  void Begin() override {
    const MeasuringConditions& conditions = shape_.conditions;
    std::string text = "CGATS.17\n\n" + OriginatorText();
    const auto put = [&text](const std::string& word, const std::string& value, bool isStandard = true) {
      if (value.empty()) return;
      if (!isStandard) text += "KEYWORD \"" + word + "\"\n";
      text += word + ' ' + Quoted(value) + '\n';
    };
    if (!HasDateField()) put("CREATED", conditions.date);
    for (const MeasurementReader::Remark& remark : source_.Remarks()) {
      if (IsHeld(remark) && remark.word != "ORIGINATOR")
        put(remark.word, remark.text, IsStandardWord(remark.word));
    }
    const auto texts = ConditionTexts(conditions);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const bool isOfSamples = shape_.conditionsDiffer[i] || (i == 0 && shape_.hasGeometries);
      if (isOfSamples || texts[i].second.empty()) continue;
      const bool isIlluminant = std::string_view(kKeywords[i].word) == "WEIGHTING_FUNCTION";
      put(kKeywords[i].word, (isIlluminant ? "ILLUMINANT, " : "") + texts[i].second, kKeywords[i].isStandard);
    }
    if (shape_.hasCurves) {
      put("SPECTRAL_BANDS", std::to_string(shape_.wavelengths.size()), false);
      put("SPECTRAL_START_NM", Shortest(shape_.wavelengths.front()), false);
      put("SPECTRAL_END_NM", Shortest(shape_.wavelengths.back()), false);
      put("SPECTRAL_NORM", "100.0", false);
    }
    const std::vector<std::string> fields = Fields();
    text += "\nNUMBER_OF_FIELDS " + std::to_string(fields.size()) + "\nBEGIN_DATA_FORMAT\n";
    for (std::size_t i = 0; i < fields.size(); ++i) text += (i > 0 ? " " : "") + fields[i];
    text += "\nEND_DATA_FORMAT\n\nNUMBER_OF_SETS " + std::to_string(shape_.samples) + "\nBEGIN_DATA\n";
    Put(text);
  }

  void Add(const Measurement& sample, std::span<const double> curve) override {
    std::string row = Quoted(sample.id);
    if (shape_.hasNames) row += ' ' + Quoted(sample.name);
    if (shape_.hasStandards) row += ' ' + Quoted(sample.standard);
    if (shape_.hasGeometries) row += ' ' + Quoted(GeometryName(sample.geometry));
    if (HasDateField()) row += ' ' + Quoted(DateOf(sample));
    const auto conditions = ConditionTexts(sample.layout->conditions);
    for (std::size_t i = 0; i < conditions.size(); ++i) {
      if (shape_.conditionsDiffer[i]) row += ' ' + Quoted(conditions[i].second);
    }
    for (std::size_t i = 0; i < shape_.others.size(); ++i) {
      const std::string_view text = OtherOf(sample, i, shape_.others[i]);
      row += ' ' + (IsPlainNumber(text) ? std::string(text) : Quoted(text));
    }
    const auto put = [&row](const std::array<double, 3>& color, bool isThere) {
      if (!isThere)
        throw InputError("some samples have a colour and others have none: the format takes all or none");
      for (const double value : color) row += ' ' + Shortest(value);
    };
    if (shape_.hasXyz) put(sample.xyz, sample.hasXyz);
    if (shape_.hasLab) put(sample.lab, sample.hasLab);
    for (const double value : curve) row += ' ' + Shortest(value);
    Put(row + '\n');
  }

  void Finish() override { Put("END_DATA\n"); }

 private:
  std::vector<std::string> Fields() const {
    std::vector<std::string> fields{"SAMPLE_ID"};
    if (shape_.hasNames) fields.emplace_back("SAMPLE_NAME");
    if (shape_.hasStandards) fields.emplace_back("STANDARD");
    if (shape_.hasGeometries) fields.emplace_back("GEOMETRY");
    if (HasDateField()) fields.emplace_back("DATE");
    for (std::size_t i = 0; i < shape_.conditionsDiffer.size(); ++i) {
      if (shape_.conditionsDiffer[i]) fields.emplace_back(kKeywords[i].field);
    }
    for (const std::string& heading : shape_.others) fields.push_back(FieldOf(heading));
    if (shape_.hasXyz) fields.insert(fields.end(), {"XYZ_X", "XYZ_Y", "XYZ_Z"});
    if (shape_.hasLab) fields.insert(fields.end(), {"LAB_L", "LAB_A", "LAB_B"});
    for (const double nm : shape_.wavelengths) fields.push_back("SPECTRAL_NM" + Shortest(nm));
    return fields;
  }

  // Dates of samples, or of files that differ in it.
  bool HasDateField() const { return shape_.hasSampleDates || shape_.fileDatesDiffer; }

  std::string OriginatorText() const {
    const auto& remarks = source_.Remarks();
    const auto given = std::ranges::find(remarks, "ORIGINATOR", &MeasurementReader::Remark::word);
    return "ORIGINATOR " + Quoted(given != remarks.end() ? given->text : "vrx") + '\n';
  }

  // A keyword is one word; of those that only one may be there the first counts.
  bool IsHeld(const MeasurementReader::Remark& remark) const {
    const auto& remarks = source_.Remarks();
    const auto first = std::ranges::find(remarks, remark.word, &MeasurementReader::Remark::word);
    const bool isWord = remark.word.find_first_of(" \t\"#") == std::string::npos;
    const bool isSecondDate = remark.word == "CREATED" && !shape_.conditions.date.empty();
    return isWord && &*first == &remark && !isSecondDate;
  }

  static bool IsStandardWord(std::string_view word) {
    constexpr std::string_view kWords[] = {
        "ORIGINATOR", "DESCRIPTOR", "CREATED",          "MANUFACTURER", "PROD_DATE",
        "SERIAL",     "MATERIAL",   "PRINT_CONDITIONS", "TARGET_TYPE",  "COMPUTATIONAL_PARAMETER"};
    return std::ranges::find(kWords, word) != std::end(kWords);
  }

  void AddLosses(std::vector<std::string>& losses) override {
    AddRemarks([this](const MeasurementReader::Remark& remark) { return IsHeld(remark); }, losses);
    if (shape_.hasQuotes) losses.emplace_back("double quotes in texts");
    if (shape_.hasControls) losses.emplace_back("line ends in texts");
    DropTwins({"SAMPLE_ID", "SAMPLE_NAME", "STANDARD", "GEOMETRY", "DATE", "XYZ_X", "XYZ_Y", "XYZ_Z", "LAB_L",
               "LAB_A", "LAB_B", "M_CONDITION", "FILTER", "BACKING", "INSTRUMENT", "APERTURE", "ILLUMINANT",
               "OBSERVER"},
              losses);
  }

  // A heading as the name of a field, which has no blanks.
  static std::string FieldOf(std::string_view heading) {
    std::string field;
    for (const char c : heading)
      field += c == ' ' || c == '"' || c == '#' || static_cast<unsigned char>(c) < ' ' ? '_' : c;
    return field.empty() ? "_" : field;
  }

  // By place in ConditionTexts: a keyword, and the name of a field where samples differ.
  struct Keyword {
    const char* word;
    bool isStandard;
    const char* field;
  };
  static constexpr Keyword kKeywords[] = {{"MEASUREMENT_GEOMETRY", true, "MEASURING_GEOMETRY"},
                                          {"MEASUREMENT_CONDITION", false, "M_CONDITION"},
                                          {"FILTER", true, "FILTER"},
                                          {"SAMPLE_BACKING", true, "BACKING"},
                                          {"INSTRUMENTATION", true, "INSTRUMENT"},
                                          {"APERTURE", false, "APERTURE"},
                                          {"WEIGHTING_FUNCTION", true, "ILLUMINANT"},
                                          {"OBSERVER", false, "OBSERVER"}};

  // The form has no way to put a quote into a text.
  static std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? '\'' : static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    return quoted + '"';
  }
};

class CxfWriter final : public Writer {
 public:
  CxfWriter(const MeasurementReader& source, const WriteOptions& options, Shape shape, const TextSink& sink)
      : Writer(source, options, std::move(shape), sink), hasGrid_(!options.grid.empty()) {}

  void Begin() override {
    const auto& remarks = source_.Remarks();
    const auto description = std::ranges::find(remarks, "DESCRIPTOR", &MeasurementReader::Remark::word);
    Put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<cc:CxF xmlns:cc=\"" + std::string(kCxfNamespace) +
        "\">\n<cc:FileInformation><cc:Creator>vrx</cc:Creator>" +
        Element("Description", description != remarks.end() ? description->text : "") +
        "</cc:FileInformation>\n<cc:Resources>\n<cc:ObjectCollection>\n");
  }

  void Add(const Measurement& sample, std::span<const double> curve) override {
    const std::string reference = " ColorSpecification=\"c" + std::to_string(KindOf(sample)) + "\">";
    const std::string_view date = DateOf(sample);
    std::string text = "<cc:Object ObjectType=\"Sample\" Name=\"" + Escaped(sample.id) + "\" Id=\"s" +
                       std::to_string(++objects_) + "\"><cc:CreationDate>" +
                       (IsDateTime(date) ? std::string(date) : options_.creationDate) +
                       "</cc:CreationDate><cc:ColorValues>";
    if (!curve.empty())
      text += "<cc:ReflectanceSpectrum" + reference + SpectrumText(curve) + "</cc:ReflectanceSpectrum>";
    const auto put = [&](const char* name, std::array<const char*, 3> parts,
                         const std::array<double, 3>& color) {
      text += std::string("<cc:") + name + reference;
      for (std::size_t i = 0; i < 3; ++i) {
        text += std::string("<cc:") + parts[i] + '>' + Shortest(color[i]) + "</cc:" + parts[i] + '>';
      }
      text += std::string("</cc:") + name + '>';
    };
    if (sample.hasLab) put("ColorCIELab", {"L", "A", "B"}, sample.lab);
    if (sample.hasXyz) put("ColorCIEXYZ", {"X", "Y", "Z"}, sample.xyz);
    text += "</cc:ColorValues>";
    const std::string tags = TagsOf(sample);
    if (!tags.empty()) text += "<cc:TagCollection Name=\"vrx\">" + tags + "</cc:TagCollection>";
    Put(text + "</cc:Object>\n");
  }

  void Finish() override {
    std::string text = "</cc:ObjectCollection>\n<cc:ColorSpecificationCollection>\n";
    for (std::size_t i = 0; i < kinds_.size(); ++i) text += KindText(i + 1, kinds_[i]);
    Put(text + "</cc:ColorSpecificationCollection>\n</cc:Resources>\n</cc:CxF>\n");
  }

 private:
  // What the schema has no element for.
  std::string TagsOf(const Measurement& sample) const {
    std::string tags;
    const auto add = [&tags](std::string_view name, std::string_view value) {
      if (value.empty()) return;
      tags += "<cc:Tag Name=\"" + Escaped(name) + "\" Value=\"" + Escaped(value) + "\"/>";
    };
    if (sample.name != sample.id) add("SampleName", sample.name);
    add("Standard", sample.standard);
    if (!IsDateTime(DateOf(sample))) add("Date", DateOf(sample));
    for (std::size_t i = 0; i < shape_.others.size(); ++i) {
      add(shape_.others[i], OtherOf(sample, i, shape_.others[i]));
    }
    return tags;
  }

  void AddLosses(std::vector<std::string>& losses) override {
    bool hasDescription = false;
    AddRemarks(
        [&](const MeasurementReader::Remark& remark) {
          return remark.word == "DESCRIPTOR" && !std::exchange(hasDescription, true);
        },
        losses);
    const bool hasLight = shape_.conditions.illuminant >= 0, hasObserver = shape_.conditions.observer >= 0;
    if (hasLight && !hasObserver) losses.emplace_back("illuminant");
    if (hasObserver && !hasLight) losses.emplace_back("observer");
    if (shape_.hasControls) losses.emplace_back("line ends in texts");
    DropTwins({"SampleName", "Standard", "Date"}, losses);
  }

  // Samples of one kind share a ColorSpecification.
  struct Kind {
    const MeasurementLayout* layout;
    int32_t geometry;
    bool hasCurve;
  };

  // The number of the sample's kind, from 1.
  std::size_t KindOf(const Measurement& sample) {
    const bool hasCurve = !sample.reflectance.empty();
    const auto same = std::ranges::find_if(kinds_, [&](const Kind& kind) {
      return kind.layout == sample.layout && kind.geometry == sample.geometry && kind.hasCurve == hasCurve;
    });
    if (same != kinds_.end()) return static_cast<std::size_t>(same - kinds_.begin()) + 1;
    if (hasCurve) CheckWavelengths(WavelengthsOf(*sample.layout));
    kinds_.push_back({sample.layout, sample.geometry, hasCurve});
    return kinds_.size();
  }

  const std::vector<double>& WavelengthsOf(const MeasurementLayout& layout) const {
    return hasGrid_ ? options_.grid : layout.wavelengths;
  }

  void CheckWavelengths(const std::vector<double>& wavelengths) const {
    const double first = wavelengths.front(), step = wavelengths[1] - first;
    bool isWhole = first == std::floor(first) && step == std::floor(step) && first >= 360 && first <= 400;
    for (std::size_t i = 0; i < wavelengths.size(); ++i) {
      isWhole = isWhole && wavelengths[i] == first + step * static_cast<double>(i);
    }
    if (isWhole) return;
    throw InputError(source_.Name() +
                     ": CxF3 holds wavelengths that begin from 360 to 400 nm in whole even steps, not " +
                     DescribeWavelengths(wavelengths) + "; --grid 380-730/10 brings them there");
  }

  std::string SpectrumText(std::span<const double> curve) const {
    std::string text;
    for (const double percent : curve) {
      if (!(percent > -10 && percent < 300)) {
        source_.FailRow("CxF3 holds reflectances above -10 and below 300 percent, not " + Shortest(percent));
      }
      if (!text.empty()) text += ' ';
      text += FractionText(percent);
    }
    return text;
  }

  std::string KindText(std::size_t number, const Kind& kind) const {
    const MeasuringConditions& conditions = kind.layout->conditions;
    std::string text = "<cc:ColorSpecification Id=\"c" + std::to_string(number) + "\">" +
                       TristimulusText(conditions) + "<cc:MeasurementSpec><cc:MeasurementType>";
    text += kind.hasCurve ? "Spectrum_Reflectance" : "Colorimetric_Reflectance";
    const bool isMCode = kind.geometry >= 42 && kind.geometry <= 45;
    const int32_t geometry = kind.geometry == kNoGeometry || isMCode ? conditions.geometry : kind.geometry;
    text += "</cc:MeasurementType><cc:GeometryChoice>" + GeometryText(geometry) + "</cc:GeometryChoice>";
    if (kind.hasCurve) {
      const std::vector<double>& wavelengths = WavelengthsOf(*kind.layout);
      text += "<cc:WavelengthRange StartWL=\"" + Shortest(wavelengths[0]) + "\" Increment=\"" +
              Shortest(wavelengths[1] - wavelengths[0]) + "\"/>";
    }
    text += Element("Aperture", conditions.aperture) + Element("Backing", conditions.backing);
    const int32_t m = isMCode ? kind.geometry - 42 : conditions.mCondition;
    return text + DeviceText(conditions, m) + "</cc:MeasurementSpec></cc:ColorSpecification>\n";
  }

  static std::string TristimulusText(const MeasuringConditions& conditions) {
    if (conditions.illuminant < 0 || conditions.observer < 0) return {};
    constexpr std::string_view kKnown[] = {"A", "C", "D50", "D55", "D65", "D75", "F7", "F10"};
    const std::string code = CodeOf(static_cast<vrxIlluminant>(conditions.illuminant));
    const std::string name = code == "CWF"   ? "F2"
                             : code == "T84" ? "TL84"
                             : code == "U30" ? "UL30"
                             : code == "U50" ? "UL50"
                                             : code;
    const bool isKnown = name != code || std::ranges::find(kKnown, code) != std::end(kKnown);
    return "<cc:TristimulusSpec><cc:Illuminant" +
           (isKnown ? ">" + name : " Name=\"" + Escaped(code) + "\">Custom") +
           "</cc:Illuminant><cc:Observer>" + std::to_string(DegreesOf(conditions.observer)) +
           "_Degree</cc:Observer><cc:Method>unknown</cc:Method></cc:TristimulusSpec>";
  }

  static std::string GeometryText(int32_t geometry) {
    const auto single = [](const char* illumination, const char* measurement) {
      return std::string(
                 "<cc:SingleAngle><cc:SingleAngleConfiguration>Annular</cc:SingleAngleConfiguration>"
                 "<cc:IlluminationAngle>") +
             illumination + "</cc:IlluminationAngle><cc:MeasurementAngle>" + measurement +
             "</cc:MeasurementAngle></cc:SingleAngle>";
    };
    const std::string name = GeometryName(geometry);
    if (name == "45/0") return single("45", "0");
    if (name == "0/45") return single("0", "45");
    if (name == "SCI") return "<cc:SphereGeometry>Specular_Included</cc:SphereGeometry>";
    if (name == "SCE") return "<cc:SphereGeometry>Specular_Excluded</cc:SphereGeometry>";
    if (name == "d8") return "<cc:SphereGeometry>Diffuse</cc:SphereGeometry>";
    if (name.ends_with("\xC2\xB0")) {
      const std::string degrees = Shortest(AngleOfCode(static_cast<uint8_t>(geometry)));
      return "<cc:MultiAngle><cc:BRDFAngle Notation=\"" + degrees +
             "as\"><cc:IlluminationAngle>45</cc:IlluminationAngle>"
             "<cc:Aspecular>" +
             degrees + "</cc:Aspecular></cc:BRDFAngle></cc:MultiAngle>";
    }
    return "<cc:UnknownGeometry>" + (name.empty() ? "unknown" : Escaped(name)) + "</cc:UnknownGeometry>";
  }

  static std::string DeviceText(const MeasuringConditions& conditions, int32_t m) {
    constexpr std::string_view kIlluminations[] = {"M0_Incandescent", "M1_Daylight", "M2_UVExcluded",
                                                   "M3_Polarized"};
    std::string text = Element("Model", conditions.instrument);
    if (!conditions.filter.empty()) {
      const bool isKnown = conditions.filter.starts_with("Filter_");
      text += isKnown ? Element("DeviceFilter", conditions.filter)
                      : "<cc:DeviceFilter FilterDescription=\"" + Escaped(conditions.filter) +
                            "\">Filter_Custom</cc:DeviceFilter>";
    }
    if (m >= 0) text += Element("DeviceIllumination", kIlluminations[static_cast<std::size_t>(m)]);
    return text.empty() ? text : "<cc:Device>" + text + "</cc:Device>";
  }

  static std::string Element(const std::string& name, std::string_view text) {
    return text.empty() ? std::string() : "<cc:" + name + '>' + Escaped(text) + "</cc:" + name + '>';
  }

  static std::string Escaped(std::string_view text) {
    std::string escaped;
    while (!text.empty()) {
      const char32_t c = TakeCharacter(text);
      if (c == '&')
        escaped += "&amp;";
      else if (c == '<')
        escaped += "&lt;";
      else if (c == '>')
        escaped += "&gt;";
      else if (c == '"')
        escaped += "&quot;";
      else if (c < ' ')
        escaped += ' ';
      else
        AppendUtf8(c == 0xFFFE || c == 0xFFFF ? 0xFFFD : c, escaped);  // no characters of XML
    }
    return escaped;
  }

  bool hasGrid_;
  std::vector<Kind> kinds_;
  int64_t objects_ = 0;
};

std::unique_ptr<Writer> MakeWriter(const MeasurementReader& source, const WriteOptions& options, Shape shape,
                                   const TextSink& sink) {
  switch (options.form) {
    case ReadOptions::Form::kCgats:
      return std::make_unique<CgatsWriter>(source, options, std::move(shape), sink);
    case ReadOptions::Form::kCxf:
      return std::make_unique<CxfWriter>(source, options, std::move(shape), sink);
    case ReadOptions::Form::kJson:
      return std::make_unique<JsonWriter>(source, options, std::move(shape), sink);
    default:
      return std::make_unique<CsvWriter>(source, options, std::move(shape), sink);
  }
}

}  // namespace

void WriteMeasurements(MeasurementReader& source, const WriteOptions& options, const TextSink& sink) {
  Shape shape = ShapeOf(source, options.onProgress);
  const bool isTable = options.form != ReadOptions::Form::kCxf;
  if (isTable && options.grid.empty() && shape.wavelengthsDiffer) {
    throw InputError(source.Name() +
                     ": the samples have different wavelengths; --grid 400-700/10 brings them to one list");
  }
  const bool hasCurves = shape.hasCurves;
  if (!options.grid.empty() && hasCurves) shape.wavelengths = options.grid;
  const std::unique_ptr<Writer> writer = MakeWriter(source, options, std::move(shape), sink);
  const std::vector<std::string> losses = writer->Losses();
  if (options.onLosses && !losses.empty()) options.onLosses(losses);
  writer->Begin();
  Measurement sample;
  SpectralResampler resampler;
  const MeasurementLayout* layout = nullptr;
  std::vector<double> curve(options.grid.size());
  while (source.Next(sample)) {
    if (options.onProgress) options.onProgress(source.Size() + source.Position());
    if (isTable && hasCurves && sample.reflectance.empty()) {
      source.FailRow("the sample has no curve as others have, and the format takes all or none");
    }
    if (options.grid.empty() || sample.reflectance.empty()) {
      writer->Add(sample, sample.reflectance);
      continue;
    }
    if (std::exchange(layout, sample.layout) != sample.layout) {
      resampler = SpectralResampler(layout->wavelengths, options.grid);
    }
    resampler.Convert(sample.reflectance, curve.data());
    writer->Add(sample, curve);
  }
  writer->Finish();
}

}  // namespace vrx::io
