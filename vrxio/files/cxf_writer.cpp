// CxF3 (ISO 17972-1).

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <vrxio/cxf/cxf_reader.h>
#include <vrxio/files/sample_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/input_error.h>
#include <vrxio/text/shown_text.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {
namespace {

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

class CxfWriter final : public SampleWriter {
 public:
  CxfWriter(const MeasurementReader& source, const WriteOptions& options, FileShape shape,
            const TextSink& sink)
      : SampleWriter(source, options, std::move(shape), sink), hasGrid_(!options.grid.empty()) {}

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
        text += std::string("<cc:") + parts[i] + '>' + ShortestText(color[i]) + "</cc:" + parts[i] + '>';
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
    // An empty one says that the object's date, which the schema demands, is that of the writing.
    if (DateOf(sample).empty()) tags += "<cc:Tag Name=\"Date\" Value=\"\"/>";
    if (!IsDateTime(DateOf(sample))) add("Date", DateOf(sample));
    for (std::size_t i = 0; i < shape_.others.size(); ++i) {
      add(shape_.others[i], OtherOf(sample, i, shape_.others[i]));
    }
    return tags;
  }

  // Tags are found by their names alone.
  bool IsTakenForOwn(const std::string& /*name*/) const override { return false; }

  void AddLosses(std::vector<std::string>& losses) override {
    bool hasDescription = false;
    AddRemarks(
        [&](const MeasurementReader::Remark& remark) {
          const bool isGeometry = !remark.text.empty() && remark.text == shape_.conditions.otherGeometry;
          return isGeometry || (remark.word == "DESCRIPTOR" && !std::exchange(hasDescription, true));
        },
        losses);
    const bool hasLight = shape_.conditions.illuminant >= 0, hasObserver = shape_.conditions.observer >= 0;
    if (hasLight && !hasObserver) losses.emplace_back("illuminant");
    if (hasObserver && !hasLight) losses.emplace_back("observer");
    if (shape_.hasControls) losses.emplace_back("line ends in texts");
    DropTwins({"SampleName", "Standard", "Date"}, losses);
    if (shape_.lacksDates && source_.FormName() != "CxF3")
      losses.emplace_back("that samples have no date (readers other than vrx find the moment of writing)");
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
        source_.FailRow("CxF3 holds reflectances above -10 and below 300 percent, not " +
                        ShortestText(percent));
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
    const bool isMCode = IsMeasurementCondition(kind.geometry);
    const int32_t geometry = kind.geometry == kNoGeometry || isMCode ? conditions.geometry : kind.geometry;
    text += "</cc:MeasurementType><cc:GeometryChoice>" + GeometryText(geometry, conditions.otherGeometry) +
            "</cc:GeometryChoice>";
    if (kind.hasCurve) {
      const std::vector<double>& wavelengths = WavelengthsOf(*kind.layout);
      text += "<cc:WavelengthRange StartWL=\"" + ShortestText(wavelengths[0]) + "\" Increment=\"" +
              ShortestText(wavelengths[1] - wavelengths[0]) + "\"/>";
    }
    text += Element("Aperture", conditions.aperture) + Element("Backing", conditions.backing);
    const int32_t m = isMCode ? kind.geometry - kGeometryM0 : conditions.mCondition;
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

  static std::string GeometryText(int32_t geometry, const std::string& otherwise) {
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
      const std::string degrees = ShortestText(AngleOfCode(static_cast<uint8_t>(geometry)));
      return "<cc:MultiAngle><cc:BRDFAngle Notation=\"" + degrees +
             "as\"><cc:IlluminationAngle>45</cc:IlluminationAngle>"
             "<cc:Aspecular>" +
             degrees + "</cc:Aspecular></cc:BRDFAngle></cc:MultiAngle>";
    }
    const std::string words = name.empty() ? otherwise : name;
    return "<cc:UnknownGeometry>" + (words.empty() ? "unknown" : Escaped(words)) + "</cc:UnknownGeometry>";
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

}  // namespace

std::unique_ptr<SampleWriter> MakeCxfWriter(const MeasurementReader& source, const WriteOptions& options,
                                            FileShape shape, const TextSink& sink) {
  return std::make_unique<CxfWriter>(source, options, std::move(shape), sink);
}

}  // namespace vrx::io
