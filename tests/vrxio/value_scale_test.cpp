// Percent or fractions of 1: tristimulus values.

#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <vrxio/files/measurement_files.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

// Why a file from a pipe is refused, in whichever row; empty when it is not.
std::string RefusalOf(const std::string& content, const ReadOptions& options = {}) {
  std::istringstream stream(content);
  try {
    const auto reader = OpenMeasurements(WrapInput(stream, "f"), options);
    Measurement sample;
    while (reader->Next(sample)) {
    }
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

// X, Y, Z on a scale of 1 pass for nearly black ones: a difference of 4.9 becomes 0.75. Where none of a file comes to 2, in any row
// or table, the file is asked about. The values that each reading gives are those of the published scale, Y = 100 for the white.
TEST(MeasurementFiles, ScaleOfTristimulusValues) {
  ReadOptions fraction, percent;
  fraction.scale = ReadOptions::Scale::kFraction;
  percent.scale = ReadOptions::Scale::kPercent;
  const std::string table = "BEGIN_DATA_FORMAT\nSAMPLE_ID XYZ_X XYZ_Y XYZ_Z\nEND_DATA_FORMAT\nBEGIN_DATA\n";
  const std::string cgats = table + "a 0.4 0.42 0.5\nEND_DATA\n";
  const std::string kOpen[] = {
      "id,X,Y,Z\na,0.4,0.42,0.5\nb,1.9,1.9,1.9\n", "id,x,y,Y\na,0.3,0.3,0.42\n",
      R"([{"id":"a","X":0.4,"Y":0.42,"Z":0.5}])",  cgats,
      cgats + table + "b 1.9 0.1 0.1\nEND_DATA\n", "X(2/A),Y(2/A),Z(2/A)\n0.4,0.42,0.5\n"};
  for (const std::string& content : kOpen) {
    SCOPED_TRACE(content);
    EXPECT_NE(RefusalOf(content).find("all of X, Y, Z are below 2"), std::string::npos) << RefusalOf(content);
    std::istringstream held(content);
    InputStream input = WrapInput(held, "f");
    HoldInput(input);
    EXPECT_THROW(OpenMeasurements(std::move(input)), ScaleError);
    for (const auto& [options, y] : {std::pair(fraction, 42.0), std::pair(percent, 0.42)}) {
      std::istringstream stream(content);
      const auto reader = OpenMeasurements(WrapInput(stream, "f"), options);
      Measurement sample;
      ASSERT_TRUE(reader->Next(sample));
      EXPECT_EQ(sample.xyz[1], y);
    }
  }
  const std::string kSaid[] = {
      "id,X,Y,Z\na,0.4,0.42,0.5\nb,1.9,2,1.9\n", "id,X [%],Y [%],Z [%]\na,0.4,0.42,0.5\n",
      cgats + table + "b 1.9 0.1 2.1\nEND_DATA\n", "NORMALIZED_TO_Y_100 \"YES\"\n" + cgats};
  for (const std::string& content : kSaid) EXPECT_EQ(RefusalOf(content), "") << content;
  EXPECT_NE(RefusalOf("id,X,Y,Z\na,40,42,50\n", fraction).find("too much for a fraction of 1"),
            std::string::npos);
}

// X, Y, Z beside a curve have a scale of their own, by the curve: Y of a grey is its reflectance.
TEST(MeasurementFiles, TristimulusValuesBesideACurve) {
  ReadOptions fraction;
  fraction.scale = ReadOptions::Scale::kFraction;
  const struct {
    std::string content;
    ReadOptions options;
    double y;
  } kFiles[] = {{"X,Y,Z,500,510,520,530,540,550,560\n.4,.42,.5,42,42,42,42,42,42,42\n", {}, 42},
                {"X,Y,Z,500,510,520,530,540,550,560\n.4,.42,.5,.42,.42,.42,.42,.42,.42,.42\n", fraction, 42},
                {"X,Y,Z,500,510,520,530,540,550,560\n40,42,50,.42,.42,.42,.42,.42,.42,.42\n", fraction, 42},
                {"X,Y,Z,500,510,520,530,540,550,560\n.4,.42,.5,2,.42,.42,.42,.42,.42,.42\n", {}, 0.42}};
  for (const auto& [content, options, y] : kFiles) {
    std::istringstream stream(content);
    const auto reader = OpenMeasurements(WrapInput(stream, "f"), options);
    Measurement sample;
    ASSERT_TRUE(reader->Next(sample)) << content;
    EXPECT_DOUBLE_EQ(sample.xyz[1], y) << content;
  }
}

}  // namespace
}  // namespace vrx::io
