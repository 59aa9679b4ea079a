// Reading files of measurements: CxF3 beside expat over the same bytes, and CGATS and CSV in rows a second; and how the time of a
// CxF3 object with very many colours grows with them.
//
// The files lie in memory and are read from a stream, as files are. Before anything is timed, all names and values are
// compared with those that the file was made of, and those that expat's host found likewise.

#include <charconv>
#include <expat.h>
#include <istream>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/files/measurement_files.h>
#include <vrxio/text/decimal.h>
#include "bench/harness.h"

namespace {

using namespace vrx::bench;

constexpr int kSamples = 10'000;
constexpr int kFirst = 380, kStep = 10;  // nm
constexpr std::size_t kValues = 36;

struct Samples {
  std::vector<std::string> names;
  std::vector<double> values;  // percent, kValues a sample
  bool operator==(const Samples&) const = default;
};

// Reflectances with three decimals of a percent, as instruments write them.
Samples MakeSamples() {
  Samples made;
  Random random(13);
  for (int i = 0; i < kSamples; ++i) {
    made.names.push_back("Patch " + std::to_string(i + 1));
    for (std::size_t k = 0; k < kValues; ++k) {
      made.values.push_back(static_cast<double>(static_cast<int>(random.Between(2000, 95'000))) / 1000);
    }
  }
  return made;
}

std::string Shortest(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string ValuesText(const Samples& samples, std::size_t row, char separator,
                       std::string (*textOf)(double)) {
  std::string text;
  for (std::size_t k = 0; k < kValues; ++k) {
    if (k > 0) text += separator;
    text += textOf(samples.values[row * kValues + k]);
  }
  return text;
}

std::string WavelengthsText(const std::string& before, char separator) {
  std::string text;
  for (int k = 0; k < static_cast<int>(kValues); ++k)
    text += separator + before + std::to_string(kFirst + k * kStep);
  return text;
}

std::string MakeCsv(const Samples& samples) {
  std::string text = "id" + WavelengthsText("", ',') + '\n';
  for (std::size_t i = 0; i < samples.names.size(); ++i)
    text += samples.names[i] + ',' + ValuesText(samples, i, ',', Shortest) + '\n';
  return text;
}

std::string MakeCgats(const Samples& samples) {
  std::string text =
      "CGATS.17\nKEYWORD \"SPECTRAL_NORM\"\nSPECTRAL_NORM \"100\"\nBEGIN_DATA_FORMAT\nSAMPLE_NAME" +
      WavelengthsText("SPECTRAL_NM", ' ') + "\nEND_DATA_FORMAT\nNUMBER_OF_SETS " +
      std::to_string(samples.names.size()) + "\nBEGIN_DATA\n";
  for (std::size_t i = 0; i < samples.names.size(); ++i)
    text += '"' + samples.names[i] + "\" " + ValuesText(samples, i, ' ', Shortest) + '\n';
  return text + "END_DATA\n";
}

std::string MakeCxf(const Samples& samples) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<cc:CxF "
      "xmlns:cc=\"http://colorexchangeformat.com/CxF3-core\">\n"
      "<cc:Resources>\n<cc:ObjectCollection>\n";
  for (std::size_t i = 0; i < samples.names.size(); ++i) {
    text += "  <cc:Object ObjectType=\"Target\" Name=\"" + samples.names[i] + "\" Id=\"s" +
            std::to_string(i) +
            "\">\n    <cc:CreationDate>2026-05-04T09:30:00Z</cc:CreationDate>\n    <cc:ColorValues>\n"
            "      <cc:ReflectanceSpectrum ColorSpecification=\"m0\" StartWL=\"380\">" +
            ValuesText(samples, i, ' ', vrx::io::FractionText) +
            "</cc:ReflectanceSpectrum>\n    </cc:ColorValues>\n  </cc:Object>\n";
  }
  return text +
         "</cc:ObjectCollection>\n<cc:ColorSpecificationCollection>\n  <cc:ColorSpecification Id=\"m0\">\n"
         "    <cc:MeasurementSpec>\n      <cc:MeasurementType>Spectrum_Reflectance</cc:MeasurementType>\n"
         "      <cc:WavelengthRange StartWL=\"380\" Increment=\"10\"/>\n    </cc:MeasurementSpec>\n"
         "  </cc:ColorSpecification>\n</cc:ColorSpecificationCollection>\n</cc:Resources>\n</cc:CxF>\n";
}

// One object of so many colours that say nothing of how they were measured, against the schema, which is told of the first ones.
std::string MakeColors(int count) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<cc:CxF "
      "xmlns:cc=\"http://colorexchangeformat.com/CxF3-core\">\n"
      "<cc:Resources>\n<cc:ObjectCollection>\n<cc:Object ObjectType=\"Target\" Name=\"many\" Id=\"m\">\n"
      "<cc:CreationDate>2026-05-04T09:30:00Z</cc:CreationDate>\n<cc:ColorValues>\n";
  for (int i = 0; i < count; ++i) {
    text += "<cc:ColorCIELab><cc:L>" + std::to_string(i % 100) +
            "</cc:L><cc:A>1</cc:A><cc:B>2</cc:B></cc:ColorCIELab>\n";
  }
  return text + "</cc:ColorValues>\n</cc:Object>\n</cc:ObjectCollection>\n</cc:Resources>\n</cc:CxF>\n";
}

// A file in memory, without a copy of it.
class MemoryFile : public std::streambuf {
 public:
  explicit MemoryFile(const std::string& content) {
    char* const begin = const_cast<char*>(content.data());  // which is only read
    setg(begin, begin, begin + content.size());
  }

 private:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode) override {
    char* const start = from == std::ios_base::beg ? eback() : from == std::ios_base::cur ? gptr() : egptr();
    setg(eback(), start + offset, egptr());
    return gptr() - eback();
  }
  pos_type seekpos(pos_type position, std::ios_base::openmode mode) override {
    return seekoff(position, std::ios_base::beg, mode);
  }
};

// Ours: calls `take` with each sample.
template <class Take>
void ReadSamples(const std::string& content, std::string_view form, Take take) {
  MemoryFile file(content);
  std::istream stream(&file);
  vrx::io::InputStream input = vrx::io::WrapInput(stream, "bench");
  input.size = content.size();
  const auto reader = vrx::io::OpenMeasurements(std::move(input));
  Require(reader->FormName() == form, "the form");
  vrx::io::Measurement sample;
  while (reader->Next(sample)) take(sample);
}

Samples Collected(const std::string& content, std::string_view form) {
  Samples read;
  ReadSamples(content, form, [&](const vrx::io::Measurement& sample) {
    read.names.emplace_back(sample.id);
    read.values.insert(read.values.end(), sample.reflectance.begin(), sample.reflectance.end());
  });
  return read;
}

// Reads the stream to its end with a parser, which is freed then.
void FeedExpat(XML_Parser parser, const std::string& content) {
  constexpr int kChunk = 64 << 10;
  MemoryFile file(content);
  std::istream stream(&file);
  bool atEnd = false;
  while (!atEnd) {
    void* const buffer = XML_GetBuffer(parser, kChunk);
    stream.read(static_cast<char*>(buffer), kChunk);
    atEnd = stream.gcount() < kChunk;
    const XML_Status status = XML_ParseBuffer(parser, static_cast<int>(stream.gcount()), atEnd ? 1 : 0);
    Require(status == XML_STATUS_OK, "expat");
  }
  XML_ParserFree(parser);
}

// A host of expat that takes the name and the values of each object, and nothing else.
class ExpatHost {
 public:
  void Read(const std::string& content) {
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    FeedExpat(parser, content);
  }

  Samples read;

 private:
  static void OnStart(void* user, const char* name, const char** attributes) {
    ExpatHost& host = *static_cast<ExpatHost*>(user);
    const std::string_view element = name;
    host.inSpectrum_ = element == "cc:ReflectanceSpectrum";
    host.text_.clear();
    if (element != "cc:Object") return;
    for (; *attributes != nullptr; attributes += 2) {
      if (std::string_view(*attributes) == "Name") host.read.names.emplace_back(attributes[1]);
    }
  }
  static void OnText(void* user, const char* text, int length) {
    ExpatHost& host = *static_cast<ExpatHost*>(user);
    if (host.inSpectrum_) host.text_.append(text, static_cast<std::size_t>(length));
  }
  static void OnEnd(void* user, const char*) {
    ExpatHost& host = *static_cast<ExpatHost*>(user);
    if (!host.inSpectrum_) return;
    host.inSpectrum_ = false;
    const char* at = host.text_.data();
    const char* const end = at + host.text_.size();
    while (at < end) {
      double value = 0;
      at = std::from_chars(at, end, value).ptr;
      host.read.values.push_back(value);
      while (at < end && *at == ' ') ++at;
    }
  }

  std::string text_;
  bool inSpectrum_ = false;
};

void ParseWithExpat(const std::string& content) {
  FeedExpat(XML_ParserCreate(nullptr), content);
}

// Fractions of expat's host against percent.
bool SameWithin(const Samples& fractions, const Samples& percent) {
  bool same = fractions.names == percent.names && fractions.values.size() == percent.values.size();
  for (std::size_t i = 0; same && i < percent.values.size(); ++i) {
    const double difference = fractions.values[i] * 100 - percent.values[i];
    same = difference < 1e-12 && difference > -1e-12;
  }
  return same;
}

// The time of a colour among many beside that among a quarter of them.
void TellGrowth() {
  constexpr int kFew = 12'500, kMany = 4 * kFew;
  const std::string few = MakeColors(kFew), many = MakeColors(kMany);
  const auto read = [](const std::string& content) {
    return [&content] {
      ReadSamples(content, "CxF3", [](const vrx::io::Measurement& sample) { Keep(&sample); });
    };
  };
  for (const auto& [content, last] : {std::pair(&few, kFew - 1), std::pair(&many, kMany - 1)}) {
    int samples = 0;
    double lightness = -1;
    ReadSamples(*content, "CxF3", [&](const vrx::io::Measurement& sample) {
      ++samples;
      lightness = sample.lab[0];
    });
    Require(samples == 1 && lightness == last % 100, "CxF3 colours");
  }
  const std::vector<double> seconds = SecondsOf({read(few), read(many)}, 5);
  std::printf(
      "growth: a CxF3 colour without a ColorSpecification among %d takes %.2f times as long as among %d\n",
      kMany, seconds[1] / seconds[0] * kFew / kMany, kFew);
}

}  // namespace

int main() {
  const Samples samples = MakeSamples();
  const std::string csv = MakeCsv(samples), cgats = MakeCgats(samples), cxf = MakeCxf(samples);
  Require(Collected(csv, "CSV") == samples, "CSV");
  Require(Collected(cgats, "CGATS") == samples, "CGATS");
  Require(Collected(cxf, "CxF3") == samples, "CxF3");
  {
    ExpatHost host;
    host.Read(cxf);
    Require(SameWithin(host.read, samples), "expat's host");
  }

  const auto ours = [](const std::string& content, std::string_view form) {
    return [&content, form] {
      ReadSamples(content, form, [](const vrx::io::Measurement& sample) { Keep(&sample); });
    };
  };
  const std::vector<double> seconds = SecondsOf({ours(csv, "CSV"), ours(cgats, "CGATS"), ours(cxf, "CxF3"),
                                                 [&] {
                                                   ExpatHost host;
                                                   host.Read(cxf);
                                                   Keep(&host);
                                                 },
                                                 [&] { ParseWithExpat(cxf); }});
  struct Line {
    const char* label;
    const std::string& content;
  };
  const Line kLines[] = {{"CSV", csv},
                         {"CGATS", cgats},
                         {"CxF3", cxf},
                         {"expat, names and values", cxf},
                         {"expat, no handlers", cxf}};
  std::printf("%d samples of %zu values, one core\n", kSamples, kValues);
  for (std::size_t i = 0; i < seconds.size(); ++i) {
    std::printf("%-24s %9.0f rows/s %5.0f MB/s", kLines[i].label, kSamples / seconds[i],
                static_cast<double>(kLines[i].content.size()) / seconds[i] * 1e-6);
    std::printf(i < 3 ? "\n" : "  %.2f times the time of CxF3\n", seconds[i] / seconds[2]);
  }
  TellGrowth();
  return 0;
}
