#include <vrxio/files/measurement_writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <vrxio/cxf/cxf_reader.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/decimal.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {
namespace {

std::string Shortest(double value) {
  char text[40];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// The fields that any sample of a file has.
struct Shape {
  bool hasIds = true, hasNames = false, hasStandards = false, hasGeometries = false, hasDates = false;
  bool hasXyz = false, hasLab = false, hasCurves = false;
  std::vector<double> wavelengths;  // that all curves have; empty when they differ
  bool wavelengthsDiffer = false;
  int64_t samples = 0;
  MeasuringConditions conditions;   // of the first sample
  std::vector<bool> hasConditions;  // by place in ConditionTexts: some sample's is known
};

// The conditions of a layout as words and texts, in the words that TakeCondition knows.
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
                                       ? ""
                                       : CodeOf(static_cast<vrxIlluminant>(conditions.illuminant)));
  texts.emplace_back("observer",
                     conditions.observer < 0 ? "" : std::to_string(DegreesOf(conditions.observer)));
  return texts;
}

void TakeConditions(const MeasuringConditions& conditions, Shape& shape) {
  const auto texts = ConditionTexts(conditions);
  if (shape.hasConditions.empty()) {
    shape.conditions = conditions;
    shape.hasConditions.resize(texts.size());
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (!texts[i].second.empty()) shape.hasConditions[i] = true;
  }
  // Where samples have a geometry of their own it is theirs.
  if (shape.hasGeometries) shape.hasConditions[0] = false;
}

Shape ShapeOf(MeasurementReader& source) {
  Shape shape;
  shape.hasStandards = source.HasStandards();
  shape.hasGeometries = source.HasGeometries();
  Measurement sample;
  const MeasurementLayout* last = nullptr;
  while (source.Next(sample)) {
    ++shape.samples;
    shape.hasNames = shape.hasNames || (!sample.name.empty() && sample.name != sample.id);
    shape.hasDates = shape.hasDates || !sample.date.empty();
    shape.hasXyz = shape.hasXyz || sample.hasXyz;
    shape.hasLab = shape.hasLab || sample.hasLab;
    if (std::exchange(last, sample.layout) == sample.layout) continue;
    TakeConditions(sample.layout->conditions, shape);
    if (sample.reflectance.empty()) continue;
    if (!shape.hasCurves) shape.wavelengths = sample.layout->wavelengths;
    shape.hasCurves = true;
    shape.wavelengthsDiffer = shape.wavelengthsDiffer || shape.wavelengths != sample.layout->wavelengths;
  }
  source.Rewind();
  return shape;
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

 protected:
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
    if (shape_.hasDates) cells.push_back({"date", std::string(sample.date), false});
    const auto here = ConditionTexts(sample.layout->conditions);
    for (std::size_t i = 0; i < here.size(); ++i) {
      if (shape_.hasConditions[i]) cells.push_back({here[i].first, here[i].second, false});
    }
    if (shape_.hasXyz) AddColor(cells, {"X", "Y", "Z"}, sample.xyz, sample.hasXyz);
    if (shape_.hasLab) AddColor(cells, {"L", "a", "b"}, sample.lab, sample.hasLab);
    for (std::size_t i = 0; i < curve.size(); ++i) {
      cells.push_back({Shortest(shape_.wavelengths[i]), ValueText(curve[i]), true});
    }
    return cells;
  }

 private:
  static void AddColor(std::vector<Cell>& cells, std::array<const char*, 3> names,
                       const std::array<double, 3>& color, bool isThere) {
    if (!isThere)
      throw InputError("some samples have a colour and others have none: the form takes all or none");
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
      for (const Cell& cell : cells) line += (line.empty() ? "" : ",") + cell.name;
      line += '\n';
    }
    for (std::size_t i = 0; i < cells.size(); ++i) line += (i > 0 ? "," : "") + Quoted(cells[i].text);
    Put(line + '\n');
  }
  void Finish() override {}

 private:
  static std::string Quoted(const std::string& text) {
    if (text.find_first_of(",\"\n\r#;\t") == std::string::npos) return text;
    std::string quoted = "\"";
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
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (c == '"' || c == '\\') {
        quoted += '\\';
        quoted += c;
      } else if (byte < ' ' || byte == 0x7F) {
        quoted += "\\u00";
        quoted += kHex[byte >> 4];
        quoted += kHex[byte & 15];
      } else {
        quoted += c;
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
    std::string text = "CGATS.17\n\nORIGINATOR \"vrx\"\n";
    const auto put = [&text](const std::string& word, const std::string& value, bool isStandard = true) {
      if (value.empty()) return;
      if (!isStandard) text += "KEYWORD \"" + word + "\"\n";
      text += word + ' ' + Quoted(value) + '\n';
    };
    put("CREATED", conditions.date);
    put("INSTRUMENTATION", conditions.instrument);
    put("MEASUREMENT_GEOMETRY", GeometryName(conditions.geometry));
    if (conditions.mCondition >= 0)
      put("MEASUREMENT_CONDITION", "M" + std::to_string(conditions.mCondition), false);
    put("FILTER", conditions.filter);
    put("SAMPLE_BACKING", conditions.backing);
    put("APERTURE", conditions.aperture, false);
    if (conditions.illuminant >= 0) {
      put("WEIGHTING_FUNCTION", "ILLUMINANT, " + CodeOf(static_cast<vrxIlluminant>(conditions.illuminant)));
    }
    if (conditions.observer >= 0) put("OBSERVER", std::to_string(DegreesOf(conditions.observer)), false);
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
    if (!ConditionConflict(shape_.conditions, sample.layout->conditions).empty() && !shape_.hasGeometries) {
      throw InputError(source_.Name() +
                       ": measurements of different conditions, which one table of CGATS does not hold");
    }
    std::string row = Quoted(sample.id);
    if (shape_.hasNames) row += ' ' + Quoted(sample.name);
    if (shape_.hasGeometries) row += ' ' + Quoted(GeometryName(sample.geometry));
    if (shape_.hasDates) row += ' ' + Quoted(sample.date);
    const auto put = [&row](const std::array<double, 3>& color, bool isThere) {
      if (!isThere)
        throw InputError("some samples have a colour and others have none: the form takes all or none");
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
    if (shape_.hasGeometries) fields.emplace_back("GEOMETRY");
    if (shape_.hasDates) fields.emplace_back("DATE");
    if (shape_.hasXyz) fields.insert(fields.end(), {"XYZ_X", "XYZ_Y", "XYZ_Z"});
    if (shape_.hasLab) fields.insert(fields.end(), {"LAB_L", "LAB_A", "LAB_B"});
    for (const double nm : shape_.wavelengths)
      fields.push_back((IsEvenAndWhole() ? "SPEC_" : "SPECTRAL_NM") + Shortest(nm));
    return fields;
  }

  // Names that most programs know, for wavelengths that they can hold.
  bool IsEvenAndWhole() const {
    const std::vector<double>& nm = shape_.wavelengths;
    for (std::size_t i = 0; i < nm.size(); ++i) {
      if (nm[i] != std::floor(nm[i]) || nm[i] != nm[0] + (nm[1] - nm[0]) * static_cast<double>(i))
        return false;
    }
    return true;
  }

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
    Put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<cc:CxF xmlns:cc=\"" + std::string(kCxfNamespace) +
        "\">\n<cc:FileInformation><cc:Creator>vrx</cc:Creator></cc:FileInformation>\n<cc:Resources>\n"
        "<cc:ObjectCollection>\n");
  }

  void Add(const Measurement& sample, std::span<const double> curve) override {
    const std::string reference = " ColorSpecification=\"c" + std::to_string(KindOf(sample)) + "\">";
    const std::string date = IsDateTime(sample.date) ? std::string(sample.date) : options_.creationDate;
    std::string text = "<cc:Object ObjectType=\"Sample\" Name=\"" + Escaped(sample.id) + "\" Id=\"s" +
                       std::to_string(++objects_) + "\"><cc:CreationDate>" + date +
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
    if (!sample.name.empty() && sample.name != sample.id) {
      text += "<cc:TagCollection Name=\"vrx\"><cc:Tag Name=\"SampleName\" Value=\"" + Escaped(sample.name) +
              "\"/></cc:TagCollection>";
    }
    Put(text + "</cc:Object>\n");
  }

  void Finish() override {
    std::string text = "</cc:ObjectCollection>\n<cc:ColorSpecificationCollection>\n";
    for (std::size_t i = 0; i < kinds_.size(); ++i) text += KindText(i + 1, kinds_[i]);
    Put(text + "</cc:ColorSpecificationCollection>\n</cc:Resources>\n</cc:CxF>\n");
  }

 private:
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
    for (const char c : text) {
      if (c == '&')
        escaped += "&amp;";
      else if (c == '<')
        escaped += "&lt;";
      else if (c == '>')
        escaped += "&gt;";
      else if (c == '"')
        escaped += "&quot;";
      else if (static_cast<unsigned char>(c) < ' ')
        escaped += ' ';
      else
        escaped += c;
    }
    return escaped;
  }

  // "2024-05-01T12:00:00" and what may follow of a time zone.
  static bool IsDateTime(std::string_view text) {
    constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:dd";
    if (text.size() < kPattern.size()) return false;
    for (std::size_t i = 0; i < kPattern.size(); ++i) {
      const bool isDigit = text[i] >= '0' && text[i] <= '9';
      if (kPattern[i] == 'd' ? !isDigit : text[i] != kPattern[i]) return false;
    }
    return text.substr(kPattern.size()).find_first_not_of("0123456789.:+-Z") == std::string_view::npos;
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
  Shape shape = ShapeOf(source);
  const bool isTable = options.form != ReadOptions::Form::kCxf;
  if (isTable && options.grid.empty() && shape.wavelengthsDiffer) {
    throw InputError(source.Name() +
                     ": the samples have different wavelengths; --grid 400-700/10 brings them to one list");
  }
  const bool hasCurves = shape.hasCurves;
  if (!options.grid.empty() && hasCurves) shape.wavelengths = options.grid;
  const std::unique_ptr<Writer> writer = MakeWriter(source, options, std::move(shape), sink);
  writer->Begin();
  Measurement sample;
  SpectralResampler resampler;
  const MeasurementLayout* layout = nullptr;
  std::vector<double> curve(options.grid.size());
  while (source.Next(sample)) {
    if (isTable && hasCurves && sample.reflectance.empty()) {
      source.FailRow("the sample has no curve as others have, and the form takes all or none");
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
