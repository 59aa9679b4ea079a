// Files as they are written: what stands in the header and in the tags, what is reported as lost, and what is refused.

#include <vrxio/files/measurement_writer.h>

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/names.h>
#include <vrxio/text/input_error.h>

namespace {

using namespace vrx::io;
using Form = ReadOptions::Form;
using Texts = std::vector<std::string>;

std::unique_ptr<MeasurementReader> Open(std::istringstream& stream, const ReadOptions& reading) {
  InputStream input = WrapInput(stream, "f");
  HoldInput(input);
  return OpenMeasurements(std::move(input), reading);
}

struct Written {
  std::string text;
  Texts losses;
};

// A file with all that it says, in another form.
Written Write(const std::string& content, WriteOptions writing) {
  std::istringstream stream(content);
  ReadOptions reading;
  reading.keepsOthers = true;
  reading.scale = ReadOptions::Scale::kPercent;
  Written written;
  writing.creationDate = "2026-01-01T00:00:00Z";
  writing.onLosses = [&](const Texts& losses) { written.losses = losses; };
  WriteMeasurements(*Open(stream, reading), writing, [&](std::string_view text) { written.text += text; });
  return written;
}

Written Write(const std::string& content, Form form, std::vector<double> grid = {}) {
  WriteOptions writing;
  writing.form = form;
  writing.grid = std::move(grid);
  return Write(content, writing);
}

std::string Refusal(const std::string& content, Form form) {
  try {
    Write(content, form);
  } catch (const InputError& error) {
    return error.what();
  }
  return "not refused";
}

std::string Cgats(const std::string& keywords, const std::string& fields, const std::string& rows) {
  return "CGATS.17\n" + keywords + "BEGIN_DATA_FORMAT\n" + fields + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" + rows +
         "END_DATA\n";
}

// What lies between two texts, of which the first must be there.
std::string Part(const std::string& text, const std::string& from, const std::string& to) {
  const std::size_t begin = text.find(from);
  if (begin == std::string::npos) return "nothing behind " + from;
  return text.substr(begin + from.size(), text.find(to, begin + from.size()) - begin - from.size());
}

constexpr const char* kLab = "SAMPLE_ID LAB_L LAB_A LAB_B";

// A program that knows the standard alone refuses a word that is neither in it nor declared by KEYWORD, and one that
// finds a fact in the header takes it for every sample.
TEST(CgatsWriter, TheHeaderSaysWhatHoldsForAllSamples) {
  const std::string own = "ORIGINATOR \"vrx\"\n", row = "a 1 2 3\n";
  const struct {
    std::string content, header, fields, rows;
  } kFiles[] = {
      {Cgats("ORIGINATOR \"lab 3\"\nDESCRIPTOR \"Chart 3\"\nSHIFT \"night\"\nSERIAL 17\nCREATED \"May\"\n",
             kLab, row),
       "ORIGINATOR \"lab 3\"\nCREATED \"May\"\nDESCRIPTOR \"Chart 3\"\nKEYWORD \"SHIFT\"\nSHIFT \"night\"\n"
       "SERIAL \"17\"\n",
       kLab, "\"a\" 1 2 3\n"},
      {Cgats("MEASUREMENT_GEOMETRY \"45/0\"\nFILTER \"M1\"\nSAMPLE_BACKING white\nAPERTURE \"4 mm\"\n"
             "WEIGHTING_FUNCTION \"ILLUMINANT, A\"\nWEIGHTING_FUNCTION \"OBSERVER, 2 degree\"\n",
             kLab, row),
       own +
           "MEASUREMENT_GEOMETRY \"45/0\"\nKEYWORD \"MEASUREMENT_CONDITION\"\nMEASUREMENT_CONDITION \"M1\"\n"
           "FILTER \"M1\"\nSAMPLE_BACKING \"white\"\nKEYWORD \"APERTURE\"\nAPERTURE \"4 mm\"\n"
           "WEIGHTING_FUNCTION \"ILLUMINANT, A\"\nKEYWORD \"OBSERVER\"\nOBSERVER \"2\"\n",
       kLab, "\"a\" 1 2 3\n"},
      {Cgats("", "SAMPLE_ID nm400 nm410 nm420", "a 10 20.5 30\n"),
       own + "KEYWORD \"SPECTRAL_BANDS\"\nSPECTRAL_BANDS \"3\"\nKEYWORD \"SPECTRAL_START_NM\"\n"
             "SPECTRAL_START_NM \"400\"\nKEYWORD \"SPECTRAL_END_NM\"\nSPECTRAL_END_NM \"420\"\n"
             "KEYWORD \"SPECTRAL_NORM\"\nSPECTRAL_NORM \"100.0\"\n",
       "SAMPLE_ID SPECTRAL_NM400 SPECTRAL_NM410 SPECTRAL_NM420", "\"a\" 10 20.5 30\n"},
      // Dates of samples, those of whole files that differ, and other conditions that do, go into fields.
      {Cgats("CREATED \"May\"\n", std::string("DATE ") + kLab, "\"1 May\" a 1 2 3\n\"\" b 4 5 6\n"), own,
       "SAMPLE_ID DATE LAB_L LAB_A LAB_B", "\"a\" \"1 May\" 1 2 3\n\"b\" \"May\" 4 5 6\n"},
      {Cgats("CREATED \"May\"\nSAMPLE_BACKING black\nFILTER M0\n", kLab, row) +
           Cgats("CREATED \"June\"\nSAMPLE_BACKING black\nFILTER M2\n", kLab, "b 4 5 6\n"),
       own + "SAMPLE_BACKING \"black\"\n", "SAMPLE_ID DATE M_CONDITION FILTER LAB_L LAB_A LAB_B",
       "\"a\" \"May\" \"M0\" \"M0\" 1 2 3\n\"b\" \"June\" \"M2\" \"M2\" 4 5 6\n"},
      // Where each sample has a geometry of its own it is not that of the header.
      {Cgats("MEASUREMENT_GEOMETRY \"d/8\"\n", std::string("GEOMETRY ") + kLab, "SCI a 1 2 3\nSCE b 4 5 6\n"),
       own, "SAMPLE_ID GEOMETRY LAB_L LAB_A LAB_B", "\"a\" \"SCI\" 1 2 3\n\"b\" \"SCE\" 4 5 6\n"},
      // Fields that nothing is made of go where they belong in each of the tables.
      {Cgats("", std::string(kLab) + " LOT", "a 1 2 3 7\n") +
           Cgats("", std::string(kLab) + " DAY LOT", "b 4 5 6 1 8\n"),
       own, "SAMPLE_ID LOT DAY LAB_L LAB_A LAB_B", "\"a\" 7 \"\" 1 2 3\n\"b\" 8 1 4 5 6\n"},
      // The name of a field is one word; the zeros of a number are part of a text.
      {"id,lot no,day,L,a,b\na,007,7,1,2,3\n", own, "SAMPLE_ID lot_no day LAB_L LAB_A LAB_B",
       "\"a\" \"007\" 7 1 2 3\n"},
  };
  for (const auto& file : kFiles) {
    const Written written = Write(file.content, Form::kCgats);
    EXPECT_EQ(Part(written.text, "CGATS.17\n\n", "\nNUMBER_OF_FIELDS"), file.header) << file.content;
    EXPECT_EQ(Part(written.text, "BEGIN_DATA_FORMAT\n", "\nEND_DATA_FORMAT"), file.fields) << file.content;
    EXPECT_EQ(Part(written.text, "BEGIN_DATA\n", "END_DATA\n"), file.rows) << file.content;
    EXPECT_EQ(written.losses, Texts{}) << file.content;
  }
}

// CxF3 asks for a date-time of every object: another date would make the document invalid, and may not be lost either.
TEST(CxfWriter, TagsHoldWhatTheFormHasNoPlaceFor) {
  const std::string given = "2026-01-01T00:00:00Z";
  const auto date = [](const std::string& text) { return "<cc:Tag Name=\"Date\" Value=\"" + text + "\"/>"; };
  const struct {
    std::string name, date, created, tags;
  } kSamples[] = {
      {"", "", given, date("")},   // the moment of writing is no date of the sample
      {"a", "", given, date("")},  // the name is the id once more
      {"A & b", "", given, "<cc:Tag Name=\"SampleName\" Value=\"A &amp; b\"/>" + date("")},
      {"", "2024-05-01T12:00:00", "2024-05-01T12:00:00", ""},
      {"", "2024-05-01T12:00:00.5+02:00", "2024-05-01T12:00:00.5+02:00", ""},
      {"", "2024-05-01", given, date("2024-05-01")},
      {"", "2024-05-01 12:00:00", given, date("2024-05-01 12:00:00")},
      {"", "2024-05-01T12:00:0", given, date("2024-05-01T12:00:0")},
      {"", "2024-o5-01T12:00:00", given, date("2024-o5-01T12:00:00")},
      {"", "2024-05-01T12:00:00 UTC", given, date("2024-05-01T12:00:00 UTC")},
  };
  for (const auto& sample : kSamples) {
    const std::string values = sample.name + ',' + sample.date + ",50,1,-2\n";
    const std::string text = Write("id,name,date,L,a,b\na," + values, Form::kCxf).text;
    EXPECT_EQ(Part(text, "<cc:CreationDate>", "</cc:CreationDate>"), sample.created) << values;
    const std::string tags =
        sample.tags.empty() ? "" : "<cc:TagCollection Name=\"vrx\">" + sample.tags + "</cc:TagCollection>";
    EXPECT_EQ(Part(text, "</cc:ColorValues>", "</cc:Object>"), tags) << values;
  }
  const std::string all =
      Write("Date: 2024-05-01T08:00:00\nid,standard,lot,L,a,b\na,S,7,50,1,-2\n", Form::kCxf).text;
  EXPECT_EQ(Part(all, "<cc:CreationDate>", "</cc:CreationDate>"), "2024-05-01T08:00:00");
  EXPECT_EQ(Part(all, "<cc:TagCollection Name=\"vrx\">", "</cc:TagCollection>"),
            "<cc:Tag Name=\"Standard\" Value=\"S\"/><cc:Tag Name=\"lot\" Value=\"7\"/>");
  EXPECT_EQ(Part(Write("id,X,Y,Z\na,20,25,30\n", Form::kCxf).text, "<cc:ColorValues>", "</cc:ColorValues>"),
            "<cc:ColorCIEXYZ "
            "ColorSpecification=\"c1\"><cc:X>20</cc:X><cc:Y>25</cc:Y><cc:Z>30</cc:Z></cc:ColorCIEXYZ>");
}

// What the writer of CxF3 says of samples without a date.
constexpr const char* kUndated =
    "that samples have no date (readers other than vrx find the moment of writing)";

// A sample without a date has none when it is read back, beside others that have one; an empty tag of others says nothing.
TEST(CxfWriter, UndatedSamplesStayUndated) {
  const std::string mixed =
      "id,date,L,a,b\na,,50,1,-2\nb,2024-05-01,50,1,-2\nc,2024-05-01T12:00:00,50,1,-2\n";
  const Written cxf = Write(mixed, Form::kCxf);
  EXPECT_EQ(cxf.losses, Texts{kUndated});
  EXPECT_EQ(Write(cxf.text, Form::kCsv).text, mixed);
  const Written again = Write(cxf.text, Form::kCxf);
  EXPECT_EQ(again.text, cxf.text);
  EXPECT_EQ(again.losses, Texts()) << "nothing more is lost";
  EXPECT_EQ(Write("id,L,a,b\na,50,1,-2\n", Form::kJson).losses, Texts());
  std::string foreign = cxf.text;
  for (std::size_t at; (at = foreign.find("Collection Name=\"vrx\"")) != std::string::npos;)
    foreign.replace(at, 21, "Collection Name=\"lab\"");
  EXPECT_NE(Write(foreign, Form::kCsv).text.find("a,2026-01-01T00:00:00Z,50"), std::string::npos);
}

// Who converts a file is told what the new one does not have, and of nothing that it has.
TEST(MeasurementWriter, LossesAreNamed) {
  const std::string words =
      "ORIGINATOR \"vrx\"\nDESCRIPTOR \"Chart 3\"\nDESCRIPTOR \"Chart 4\"\nSHIFT 1\nSHIFT 2\n";
  const std::string lab = Cgats(words, kLab, "a 1 2 3\n");
  const std::string lit = "id,L,a,b,illuminant\na,1,2,3,A\n", seen = "id,L,a,b,observer\na,1,2,3,2\n",
                    both = "id,L,a,b,illuminant,observer\na,1,2,3,A,10\n",
                    quotes = "id,lot,L,a,b\na,\"4\"\" pipe\nred\",1,2,3\n",
                    twice = "id,standard,STANDARD,lot,Lot,L,a,b\na,S,T,7,8,1,2,3\n";
  const struct {
    std::string content;
    Form form;
    Texts losses;
  } kFiles[] = {
      {lab, Form::kCgats, {"DESCRIPTOR", "SHIFT"}},
      {lab, Form::kCxf, {"DESCRIPTOR", "SHIFT", "SHIFT", kUndated}},
      {lab, Form::kCsv, {"DESCRIPTOR", "DESCRIPTOR", "SHIFT", "SHIFT"}},
      {"Shift leader: X\nBatch: 7\n" + both, Form::kCgats, {"Shift leader"}},  // a keyword is one word
      {lit, Form::kCxf, {"illuminant", kUndated}},
      {seen, Form::kCxf, {"observer", kUndated}},
      {both, Form::kCxf, {kUndated}},
      {lit, Form::kCsv, {}},
      {seen, Form::kJson, {}},
      {quotes, Form::kCgats, {"double quotes in texts", "line ends in texts"}},
      {quotes, Form::kCxf, {"line ends in texts", kUndated}},
      {quotes, Form::kCsv, {}},
      {twice, Form::kCgats, {"STANDARD", "Lot"}},
      {twice, Form::kCxf, {"STANDARD", "Lot", kUndated}},
      {twice, Form::kCsv, {"STANDARD", "Lot"}},
  };
  for (const auto& file : kFiles)
    EXPECT_EQ(Write(file.content, file.form).losses, file.losses) << file.content;
  const std::string cxf = Write(lab, Form::kCxf).text;
  EXPECT_EQ(Part(cxf, "<cc:Description>", "</cc:Description>"), "Chart 3");
}

// A second column of a name that the table has already would be read in the place of the first one, or make the file unreadable.
TEST(TableWriters, TwinsOfTheirColumnsAreLeftOut) {
  const std::string source =
      "id,ID,name,NAME,standard,Standard,geometry,Geometry,date,DATE,L,A,B,L,a,b,X,Y,Z,Z\n"
      "i,j,n,o,s,t,SCI,SCE,May,June,50,1,2,60,3,4,20,25,30,40\n";
  const Texts losses{"ID", "NAME", "Standard", "Geometry", "DATE", "L", "a", "b", "Z"};
  const Written csv = Write(source, Form::kCsv), json = Write(source, Form::kJson);
  EXPECT_EQ(csv.text, "id,name,standard,geometry,date,X,Y,Z,L,a,b\ni,n,s,SCI,May,20,25,30,50,1,2\n");
  EXPECT_EQ(csv.losses, losses);
  EXPECT_EQ(
      json.text,
      "[\n{\"id\":\"i\",\"name\":\"n\",\"standard\":\"s\",\"geometry\":\"SCI\",\"date\":\"May\",\"X\":20,"
      "\"Y\":25,\"Z\":30,\"L\":50,\"a\":1,\"b\":2}\n]\n");
  EXPECT_EQ(json.losses, losses);
  // What would end a text of JSON, or turn it about where it is shown, is escaped.
  EXPECT_EQ(Write("id,L,a,b,backing,measuring geometry\n\"4\"\" \\ \x1F\xE2\x80\xAE\",1,2,3,white,45/0\n",
                  Form::kJson)
                .text,
            "[\n{\"id\":\"4\\\" \\\\ \\u001f\\u202e\",\"measuring "
            "geometry\":\"45/0\",\"backing\":\"white\",\"L\":1,\"a\":2,\"b\":3}\n]\n");
  // Parts of no colour clash with nothing.
  const std::string parts = "id,X,L,400,410,420\na,1,2,10,20,30\n";
  EXPECT_EQ(Write(parts, Form::kCsv).text, parts);
}

// Read without it, trials for several standards would all be held against the first one.
TEST(CxfWriter, TheStandardOfATrialIsReadAgain) {
  const std::string text = Write("id,standard,L,a,b\n1,S,50,1,-2\n2,R,51,1,-2\n", Form::kCxf).text;
  const auto standards = [](const std::string& content) {
    std::istringstream stream(content);
    const auto reader = Open(stream, {});
    std::string names = reader->HasStandards() ? "" : "none:";
    try {
      for (Measurement sample; reader->Next(sample);) names.append(sample.standard).append(";");
    } catch (const InputError& error) {
      names += error.what();
    }
    return names;
  };
  const auto without = [&](const std::string& part) {
    std::string other = text;
    return other.erase(other.find(part), part.size());
  };
  EXPECT_EQ(standards(text), "S;R;");
  EXPECT_NE(standards(without("<cc:Tag Name=\"Standard\" Value=\"R\"/>")).find("S;"), std::string::npos);
  EXPECT_NE(
      standards(without("<cc:Tag Name=\"Standard\" Value=\"R\"/>")).find("the object names no standard"),
      std::string::npos);
  EXPECT_NE(standards(without("<cc:Tag Name=\"Standard\" Value=\"S\"/>")).find("the first one does not"),
            std::string::npos);
  // A tag of another program may mean anything.
  std::string foreign = text;
  for (std::size_t at = 0; (at = foreign.find("Name=\"vrx\"")) != std::string::npos;)
    foreign.replace(at, 10, "Name=\"lab\"");
  EXPECT_EQ(standards(foreign), "none:;;");
}

// What the samples of a file are, without the columns that are only kept.
std::string FactsOf(const std::string& content) {
  std::istringstream stream(content);
  ReadOptions reading;
  reading.keepsOthers = true;
  reading.scale = ReadOptions::Scale::kPercent;
  const auto reader = Open(stream, reading);
  std::ostringstream facts;
  for (Measurement sample; reader->Next(sample);) {
    const MeasuringConditions& conditions = sample.layout->conditions;
    facts << sample.id << " " << GeometryName(sample.geometry) << " " << GeometryName(conditions.geometry)
          << " " << conditions.illuminant << " " << conditions.observer;
    for (int i = 0; sample.hasXyz && i < 3; ++i) facts << " " << sample.xyz[static_cast<std::size_t>(i)];
    for (int i = 0; sample.hasLab && i < 3; ++i) facts << " " << sample.lab[static_cast<std::size_t>(i)];
    for (const double value : sample.reflectance) facts << " " << value;
    facts << "\n";
  }
  Measurement none;
  EXPECT_FALSE(reader->Next(none)) << "the end stays the end";
  return facts.str();
}

// A kept column must not become a colour, a light or an id of the file that is written: what would is left out and named.
TEST(MeasurementWriter, SamplesAreTheSameInEveryForm) {
  const struct {
    const char* label;
    std::string content;
    Texts losses;
  } rows[] = {
      {"colours under two lights",
       "id,L*(10/D65),a*(10/D65),b*(10/D65),L*(2/A),a*(2/A),b*(2/A)\nx,50,1,2,60,3,4\n",
       {"L*(2/A)", "a*(2/A)", "b*(2/A)"}},
      {"a second Y", Cgats("", "SAMPLE_ID XYZ_X XYZ_Y XYZ_Z Y", "a 1 2 3 4\n"), {"Y"}},
      {"a luminance alone stays", "id,L,a,b,Y\nx,50,1,2,18\n", {}},
      {"the letter of a light beside the angles",
       "id,measuring geometry,geometry,400,410,420\na,45/0,M0,10,20,30\nb,45/0,M1,10,20,30\n",
       {}},
      {"the angles of the samples themselves",
       "id,geometry,400,410,420\na,45/0,10,20,30\nb,SCI,10,20,30\n",
       {}},
  };
  for (const auto& row : rows) {
    for (const Form form : {Form::kCsv, Form::kJson, Form::kCgats}) {
      const Written written = Write(row.content, form);
      EXPECT_EQ(FactsOf(written.text), FactsOf(row.content)) << row.label << "\n" << written.text;
      EXPECT_EQ(written.losses, row.losses) << row.label;
    }
  }
}

// A column of row numbers has no heading; where another is called as tables call it, that one stays.
TEST(TableWriters, AColumnWithoutAHeadingGivesWay) {
  for (const Form form : {Form::kCsv, Form::kJson}) {
    const Written written = Write(",id,index,400,410,420\n0,a,7,10,20.5,30\n", form);
    EXPECT_EQ(written.losses, Texts{"the column without a heading"});
    EXPECT_EQ(FactsOf(written.text), FactsOf("id,400,410,420\na,10,20.5,30\n"));
    EXPECT_NE(written.text.find('7'), std::string::npos) << written.text;
  }
}

// Percent that could be fractions are asked about when they are read: the unit answers beforehand.
TEST(TableWriters, DarkCurvesSayThatTheyArePercent) {
  const struct {
    const char* values;
    bool fraction, comma;
    const char* written;
  } kRows[] = {
      {"0.5,1.99,1", false, false, "id,%R 400,%R 410,%R 420\na,0.5,1.99,1\n"},
      {"0.5,2,1", false, false, "id,400,410,420\na,0.5,2,1\n"},
      {"0.5,2,1", false, true, "id;400;410;420\na;0,5;2;1\n"},
      {"0.5,1.99,1", true, false, "id,400,410,420\na,0.005,0.0199,0.01\n"},
  };
  for (const auto& [values, fraction, comma, expected] : kRows) {
    WriteOptions writing;
    writing.fraction = fraction;
    writing.decimalComma = comma;
    EXPECT_EQ(Write("id,400,410,420\na," + std::string(values) + "\n", writing).text, expected);
  }
}

// A table has one list of wavelengths: what does not fit it is refused rather than shifted under another heading.
TEST(MeasurementWriter, CurvesOfSeveralKindsInOneFile) {
  const std::string ten = Cgats("", "SAMPLE_ID nm400 nm410 nm420", "a 10 20 30\n"),
                    twenty = Cgats("", "SAMPLE_ID nm400 nm420 nm440", "b 10 20 60\n"),
                    more = Cgats("", "SAMPLE_ID nm400 nm410 nm420", "c 40 50 60\n");
  for (const Form form : {Form::kCsv, Form::kCgats, Form::kJson})
    EXPECT_EQ(Refusal(ten + twenty, form),
              "f: the samples have different wavelengths; --grid 400-700/10 brings them to one list");
  EXPECT_EQ(Refusal(ten + more, Form::kCsv), "not refused");
  const std::string cxf = Write(ten + twenty, Form::kCxf).text;
  EXPECT_NE(cxf.find("StartWL=\"400\" Increment=\"20\""), std::string::npos) << cxf;
  // The quadratic through three values has 3/8, 6/8 and -1/8 of them in the middle of its first interval.
  EXPECT_EQ(Write(ten + twenty + more, Form::kCsv, {400, 410, 420, 430, 440}).text,
            "id,400,410,420,430,440\na,10,20,30,30,30\nb,10,11.25,20,36.25,60\nc,40,50,60,60,60\n");
  // Two objects, the second without a curve.
  std::string mixed = Write("id,400,410,420,L,a,b\na,10,20,30,1,2,3\nb,10,20,30,4,5,6\n", Form::kCxf).text;
  const std::size_t second = mixed.rfind("<cc:ReflectanceSpectrum"), behind = mixed.rfind("<cc:ColorCIELab");
  mixed.erase(second, behind - second);
  for (const Form form : {Form::kCsv, Form::kCgats, Form::kJson})
    EXPECT_EQ(Refusal(mixed, form),
              "f (CxF3), line 7: the sample has no curve as others have, and the format takes all or none");
  EXPECT_EQ(Refusal(mixed, Form::kCxf), "not refused");
}

// A bar that goes back, or ends before the file does, tells the user that something is wrong.
TEST(MeasurementWriter, ProgressGoesOnToTheEnd) {
  std::string content = "id,400,410,420\n";
  for (int i = 0; i < 9; ++i) content += "a,10,20,30\n";
  std::istringstream stream(content);
  WriteOptions writing;
  std::vector<uint64_t> done;
  writing.onProgress = [&](uint64_t bytes) { done.push_back(bytes); };
  WriteMeasurements(*Open(stream, {}), writing, [](std::string_view) {});
  ASSERT_EQ(done.size(), 18U);
  EXPECT_TRUE(std::ranges::is_sorted(done));
  EXPECT_EQ(done[8], content.size());
  EXPECT_GT(done[9], content.size());
  EXPECT_EQ(done[17], 2 * content.size());
}

}  // namespace
