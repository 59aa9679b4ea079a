// Drawdowns and repeated readings as the commands get them from files.

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <vrxio/files/measurement_files.h>

#include "tests/testing/temporary_folder.h"
#include "tools/vrx/input/drawdown_file.h"
#include "tools/vrx/input/readings.h"

namespace vrx::tool {
namespace {

// Curves of one value each, which tells them apart.
std::string Described(const DrawdownFile& file) {
  std::ostringstream text;
  for (const std::string& name : file.names) text << name << ' ';
  for (const CDrawdown& drawdown : file.drawdowns) {
    text << '|' << drawdown.id.ToUtf8();
    for (const double share : drawdown.shares) text << ' ' << share;
    if (drawdown.isFilm) {
      text << " film " << drawdown.overBlack[10] << ' ' << drawdown.overWhite[10] << " on "
           << drawdown.black[10] << ' ' << drawdown.white[10];
    } else {
      text << " opaque " << drawdown.opaque[10];
    }
  }
  return text.str();
}

const std::string kGrid = ",400,420,440,460,480,500,520,540,560,580,600,620,640,660,680,700\n";

TEST(Drawdowns, CurvesGoWhereTheirSurfaceSays) {
  const std::string kHead = "id,surface,share:W,share:B" + kGrid;
  const auto row = [](const std::string& start, int value) {
    std::string text = start;
    for (int i = 0; i < 16; ++i) text.append(",").append(std::to_string(value));
    return text + "\n";
  };
  const std::string kCards = row("card,black card,,", 1) + row("card,White Card,,", 80);
  const std::string kFilm = row("f,film over black,90,10", 20) + row("f,film over white,90,10", 50);
  const std::pair<std::string, const char*> kFiles[] = {
      {"id,share:W,share:B" + kGrid + row("w,1,0", 90) + row("m,0.5,0.5", 40),
       "W B |w 1 0 opaque 90|m 0.5 0.5 opaque 40"},
      // Cards that all films share, wherever they stand, and those of a film's own before them.
      {kHead + kFilm + kCards, "W B |f 90 10 film 20 50 on 1 80"},
      {kHead + kCards + kFilm + row("f,white card,,", 85), "W B |f 90 10 film 20 50 on 1 85"},
      {kHead + kCards + row("f,black card,,", 2) + kFilm, "W B |f 90 10 film 20 50 on 2 80"},
      // One id may be read opaque too; drawdowns stand in the order of their first rows.
      {kHead + row("g,opaque,100,0", 88) + kFilm + kCards + row("f,opaque,90,10", 60),
       "W B |g 100 0 opaque 88|f 90 10 opaque 60|f 90 10 film 20 50 on 1 80"},
      // Weighing leaves a rest of half a percent.
      {kHead + row("w,OPAQUE,99.5,", 90) + row("m,opaque,0.505,0.5", 40),
       "W B |w 99.5 0 opaque 90|m 0.505 0.5 opaque 40"}};
  const test::TemporaryFolder folder;
  for (const auto& [content, expected] : kFiles) {
    EXPECT_EQ(Described(ReadDrawdowns(folder.Write("d.csv", content), {}, {})), expected) << content;
  }
  const std::pair<std::string, const char*> kFaults[] = {
      {kHead + row("w,opaque,99.4,", 90), "d.csv, line 2: the shares of \"w\" add up to neither"},
      {kHead + row("w,opaque,0.5,0.494", 90), "d.csv, line 2: the shares"},
      {kHead + row("w,opaque,101,-1", 90), "d.csv, line 2, column 4 (share:B): a share must be a number"},
      {kHead + row("w,opaque,x,100", 90), "d.csv, line 2, column 3 (share:W): a share must be a number"},
      {"id,share:W,share:W" + kGrid + row("w,50,50", 90), "column 3 (share:W): the column appears twice"},
      {"id,share:" + kGrid + row("w,100", 90), "column 2 (share:): the component has no name"},
      {"id,surface,Surface,share:W" + kGrid + row("w,opaque,opaque,100", 90), "the column appears twice"},
      {kHead + kFilm + row("card,black card,,", 1), "the film \"f\" has no row \"white card\""}};
  for (const auto& [content, message] : kFaults) {
    try {
      ReadDrawdowns(folder.Write("d.csv", content), {}, {});
      ADD_FAILURE() << "not refused: " << content;
    } catch (const InputError& error) {
      EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
    }
  }
}

std::vector<Readings> ReadingsOf(const std::string& content, std::size_t count = 0) {
  std::istringstream stream(content);
  CurveReader reader(OpenMeasurements(WrapInput(stream, "f"), {}), Content::kCurvesOrColors);
  return ReadReadings(reader, count);
}

TEST(Readings, ScatterAndOutliers) {
  const struct {
    const char* lightness;  // of the readings; a* and b* are 0
    double deviation, range, mean, largest;
    std::vector<std::size_t> outliers;
  } kRows[] = {
      {"50", 0, 0, 0, 0, {}},
      {"50 52", std::sqrt(2.0), 2, 1, 1, {}},
      {"50 51 52 53", std::sqrt(5.0 / 3), 3, 1, 1.5, {}},
      // Of three, two that agree within 0.1 outvote a third; otherwise Dixon's Q decides: 15.9 times 1 is too near, 16 times is not.
      {"50 50 90", std::sqrt(1600.0 / 3), 40, 160.0 / 9, 80.0 / 3, {2}},
      {"50 51 34.125", std::sqrt(89.63020833333334), 16.875, 7.277777777777779, 10.916666666666664, {}},
      {"50 51 34", std::sqrt(91.0), 17.0, 7.333333333333333, 11.0, {2}},
      {"50 50.0625 50.25",
       std::sqrt(0.016927083333333336),
       0.25,
       0.09722222222222143,
       0.1458333333333357,
       {}},
      {"50 50.0625 50.5", std::sqrt(0.07421875), 0.5, 0.20833333333333334, 0.3125, {2}},
      // From the median of 51 half keep within 1: three times that is no outlier yet.
      {"50 51 52 54", std::sqrt(8.75 / 3), 4, 1.25, 2.25, {}},
      {"54.5 52 50 51", std::sqrt(11.1875 / 3), 4.5, 1.375, 2.625, {0}},
      // Instruments repeat within 0.1.
      {"50 50 50 50.0625", 0.03125, 0.0625, 0.0234375, 0.046875, {}},
      {"50 50.125 50 50", 0.0625, 0.125, 0.046875, 0.09375, {1}},
  };
  for (const auto& row : kRows) {
    std::string content = "id,L,a,b\n", value;
    for (std::istringstream values(row.lightness); values >> value;) content += "s," + value + ",0,0\n";
    const std::vector<Readings> all = ReadingsOf(content);
    ASSERT_EQ(all.size(), 1U);
    const ReadingStatistics got = StatisticsOf(all[0], vrxIllumD65, kObserver10);
    EXPECT_NEAR(got.stats.First(0), row.deviation, 1e-12) << row.lightness;
    EXPECT_NEAR(got.stats.Second(0), row.range, 1e-12) << row.lightness;
    EXPECT_EQ(got.stats.First(1), 0);
    EXPECT_NEAR(got.meanDifference, row.mean, 1e-12) << row.lightness;
    EXPECT_NEAR(got.largestDifference, row.largest, 1e-12) << row.lightness;
    EXPECT_EQ(got.outliers, row.outliers) << row.lightness;
    EXPECT_EQ(got.stats.GetSetting(), static_cast<int32_t>(all[0].samples.size()));
  }
  // The mean is that of reflectances, not of colours: half of white has L* 76.07 (CIE 15), half-way lies 50.
  for (const char* content :
       {"id,540,560,580,600\ns,0,0,0,0\ns,100,100,100,100\n", "id,X,Y,Z\ns,0,0,0\ns,94.811,100,107.304\n"}) {
    const ReadingStatistics got = StatisticsOf(ReadingsOf(content).at(0), vrxIllumD65, kObserver10);
    EXPECT_NEAR(got.largestDifference, 116 * std::cbrt(0.5) - 16, 0.02) << content;
    EXPECT_NEAR(got.meanDifference, 50, 0.02) << content;
    EXPECT_NEAR(got.stats.Second(0), 100, 0.02) << content;
  }
}

TEST(Readings, AreGroupedByIdAndGeometryOrInTurn) {
  const std::string kContent =
      "id,geometry,L,a,b\nu,15deg,1,0,0\nv,15deg,2,0,0\nu,25deg,3,0,0\nu,15deg,5,0,0\nv,15deg,8,0,0\nu,25deg,"
      "13,0,0\n";
  std::string alike = kContent;
  for (std::size_t at = 0; (at = alike.find("25deg")) != std::string::npos;) alike.replace(at, 5, "15deg");
  const std::tuple<const std::string&, std::size_t, const char*> kRows[] = {
      {kContent, 0, "u@4:1,5 v@4:2,8 u@7:3,13 "},
      {kContent, 1, "u@4:1 v@4:2 u@7:3 u@4:5 v@4:8 u@7:13 "},
      {alike, 2, "u@4:1,2 u@4:3,5 v@4:8,13 "},
      {alike, 6, "u@4:1,2,3,5,8,13 "}};
  for (const auto& [content, count, expected] : kRows) {
    std::ostringstream text;
    for (const Readings& readings : ReadingsOf(content, count)) {
      text << readings.id << '@' << readings.geometry;
      double sum = 0;
      for (std::size_t i = 0; i < readings.samples.size(); ++i) {
        sum += readings.samples[i].color[0];
        text << (i == 0 ? ":" : ",") << readings.samples[i].color[0];
      }
      text << ' ';
      EXPECT_NEAR(readings.Mean().color[0], sum / static_cast<double>(readings.samples.size()), 1e-12);
      EXPECT_EQ(readings.Mean().geometry, readings.geometry);
    }
    EXPECT_EQ(text.str(), expected) << count;
  }
  EXPECT_THROW(ReadingsOf(alike, 4), InputError);
  EXPECT_THROW(ReadingsOf(alike, 7), InputError);
  EXPECT_THROW(ReadingsOf(kContent, 2), InputError);  // the mean of two angles is that of none
}

}  // namespace
}  // namespace vrx::tool
