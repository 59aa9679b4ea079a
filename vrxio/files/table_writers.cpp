// Tables: CSV and JSON, whose columns have the same names.

#include <algorithm>
#include <array>
#include <utility>

#include <vrxio/files/sample_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {
namespace {

// The columns of a table: CSV and JSON have them by the same names.
class TableWriter : public SampleWriter {
 public:
  using SampleWriter::SampleWriter;

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
      cells.push_back({NameOf(shape_.others[i]), std::string(text), IsPlainNumber(text)});
    }
    if (shape_.hasXyz) {
      const bool needsUnit = shape_.SaysScaleOfXyz();
      AddColor(cells, needsUnit ? kXyzInPercent : kXyz, sample.xyz, sample.hasXyz);
    }
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
    DropTwins(names, losses);
  }
  std::string NameOf(const std::string& heading) const override {
    return heading.empty() ? "index" : heading;
  }

 private:
  static constexpr std::array<const char*, 3> kXyz{"X", "Y", "Z"}, kXyzInPercent{"X [%]", "Y [%]", "Z [%]"};

  // Values that all lie below 2 percent could be fractions: the unit says that they are not.
  std::string ValueHeading(double nm) const {
    const bool needsUnit = shape_.largest < kSurelyPercent && !options_.fraction;
    return (needsUnit ? "%R " : "") + ShortestText(nm);
  }

  static void AddColor(std::vector<Cell>& cells, std::array<const char*, 3> names,
                       const std::array<double, 3>& color, bool isThere) {
    if (!isThere)
      throw InputError("some samples have a colour and others have none: the format takes all or none");
    for (std::size_t i = 0; i < 3; ++i) cells.push_back({names[i], ShortestText(color[i]), true});
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

}  // namespace

std::unique_ptr<SampleWriter> MakeCsvWriter(const MeasurementReader& source, const WriteOptions& options,
                                            FileShape shape, const TextSink& sink) {
  return std::make_unique<CsvWriter>(source, options, std::move(shape), sink);
}

std::unique_ptr<SampleWriter> MakeJsonWriter(const MeasurementReader& source, const WriteOptions& options,
                                             FileShape shape, const TextSink& sink) {
  return std::make_unique<JsonWriter>(source, options, std::move(shape), sink);
}

}  // namespace vrx::io
