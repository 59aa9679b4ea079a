// CGATS.17 text files.

#include <algorithm>
#include <array>
#include <utility>

#include <vrxio/files/sample_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/foundation/angles.h>

namespace vrx::io {
namespace {

class CgatsWriter final : public SampleWriter {
 public:
  using SampleWriter::SampleWriter;

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
      if (shape_.conditionsDiffer[i] || !shape_.hasConditions[i] || texts[i].second.empty()) continue;
      const bool isIlluminant = std::string_view(kKeywords[i].word) == "WEIGHTING_FUNCTION";
      put(kKeywords[i].word, (isIlluminant ? "ILLUMINANT, " : "") + texts[i].second, kKeywords[i].isStandard);
    }
    if (shape_.hasCurves) {
      put("SPECTRAL_BANDS", std::to_string(shape_.wavelengths.size()), false);
      put("SPECTRAL_START_NM", ShortestText(shape_.wavelengths.front()), false);
      put("SPECTRAL_END_NM", ShortestText(shape_.wavelengths.back()), false);
      put("SPECTRAL_NORM", "100.0", false);
    }
    if (shape_.SaysScaleOfXyz()) put("NORMALIZED_TO_Y_100", "YES", false);
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
      for (const double value : color) row += ' ' + ShortestText(value);
    };
    if (shape_.hasXyz) put(sample.xyz, sample.hasXyz);
    if (shape_.hasLab) put(sample.lab, sample.hasLab);
    for (const double value : curve) row += ' ' + ShortestText(value);
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
    for (const std::string& heading : shape_.others) fields.push_back(NameOf(heading));
    if (shape_.hasXyz) fields.insert(fields.end(), {"XYZ_X", "XYZ_Y", "XYZ_Z"});
    if (shape_.hasLab) fields.insert(fields.end(), {"LAB_L", "LAB_A", "LAB_B"});
    for (const double nm : shape_.wavelengths) fields.push_back("SPECTRAL_NM" + ShortestText(nm));
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
    DropTwins({"SAMPLE_ID", "SAMPLE_NAME", "STANDARD", "GEOMETRY", "DATE", "M_CONDITION", "FILTER", "BACKING",
               "INSTRUMENT", "APERTURE", "ILLUMINANT", "OBSERVER"},
              losses);
  }

  // A field's name has no blanks.
  std::string NameOf(const std::string& heading) const override {
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

}  // namespace

std::unique_ptr<SampleWriter> MakeCgatsWriter(const MeasurementReader& source, const WriteOptions& options,
                                              FileShape shape, const TextSink& sink) {
  return std::make_unique<CgatsWriter>(source, options, std::move(shape), sink);
}

}  // namespace vrx::io
