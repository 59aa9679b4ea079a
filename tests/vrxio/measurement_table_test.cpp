// Samples in memory, as whatever reads files takes them.

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/files/measurement_files.h>
#include <vrxio/files/measurement_table.h>
#include <vrxio/files/measurement_writer.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/wavelength_grid.h>
#include <vrxio/text/input_error.h>
#include <vrxmath/foundation/numbers.h>

namespace {

using namespace vrx::io;

MeasurementTable TwoSamples() {
  MeasurementTable table;
  table.ids = {"P1", "a \"b\", c"};
  table.names = {"", "Signal red"};
  table.geometries = {kNoGeometry, ParseGeometry("15deg")};
  table.lab = {50.0, 1.0 / 3, -2.0, 60.5, 0.1, 1e-7};
  for (int i = 0; i < 80; ++i) table.curves.push_back(5.0 + i / 7.0);
  return table;
}

// What is written of a table in any form is the table, to the bit.
TEST(MeasurementTable, ComesBackFromEveryForm) {
  const MeasurementTable table = TwoSamples();
  using Form = ReadOptions::Form;
  for (const Form form : {Form::kCsv, Form::kCgats, Form::kCxf, Form::kJson}) {
    WriteOptions writing;
    writing.form = form;
    writing.creationDate = "2026-01-01T00:00:00Z";
    std::string content;
    WriteMeasurements(*OpenMeasurementTable(table, "samples"), writing,
                      [&](std::string_view text) { content += text; });
    std::istringstream stream(content);
    CurveReader reader(OpenMeasurements(WrapInput(stream, "f"), {}), Content::kCurvesOrColors);
    CurveRow row;
    for (std::size_t i = 0; i < 2; ++i) {
      ASSERT_TRUE(reader.Next(row)) << content;
      const bool keepsQuotes = form != Form::kCgats;  // which has no way to write one
      EXPECT_EQ(row.id, keepsQuotes || i == 0 ? table.ids[i] : "a 'b', c");
      EXPECT_EQ(row.geometry, table.geometries[i]) << content;
      for (std::size_t k = 0; k < 40; ++k) {
        ASSERT_EQ(row.curve[static_cast<int>(k)], table.curves[40 * i + k]) << i << ' ' << k;
      }
    }
    EXPECT_FALSE(reader.Next(row));
  }
}

TEST(MeasurementTable, IsReadLikeAFile) {
  const auto reader = OpenMeasurementTable(TwoSamples(), "samples");
  EXPECT_TRUE(reader->HasNames() && reader->HasGeometries() && reader->CanSeek() && !reader->HasXyz());
  EXPECT_EQ(reader->FirstLayout().wavelengths, LibraryWavelengths());
  Measurement sample;
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(reader->Next(sample));
    EXPECT_EQ(sample.id, "P1");
    ASSERT_TRUE(reader->Next(sample));
    EXPECT_EQ(sample.name, "Signal red");
    EXPECT_EQ(reader->RowPlace(), "samples, row 2");
    EXPECT_EQ(sample.lab[2], 1e-7);
    EXPECT_FALSE(reader->Next(sample));
    reader->SeekTo(1);
    ASSERT_TRUE(reader->Next(sample));
    EXPECT_EQ(sample.id, "a \"b\", c");
    EXPECT_EQ(reader->Offset(), 1U);
    reader->Rewind();
  }
}

TEST(MeasurementTable, RefusesColumnsThatDoNotFit) {
  const std::pair<const char*, void (*)(MeasurementTable&)> kRows[] = {
      {"no samples", [](MeasurementTable& table) { table = {}; }},
      {"no numbers", [](MeasurementTable& table) { table.curves.clear(), table.lab.clear(); }},
      {"a name", [](MeasurementTable& table) { table.names.pop_back(); }},
      {"a geometry", [](MeasurementTable& table) { table.geometries.push_back(0); }},
      {"a value", [](MeasurementTable& table) { table.curves.pop_back(); }},
      {"a coordinate", [](MeasurementTable& table) { table.lab.push_back(0.0); }},
      {"X alone", [](MeasurementTable& table) { table.xyz = {1.0}; }},
  };
  for (const auto& [what, spoil] : kRows) {
    MeasurementTable table = TwoSamples();
    spoil(table);
    EXPECT_THROW((void)OpenMeasurementTable(table, "samples"), InputError) << what;
  }
}

// What has no distance from the grid, and the first sample that is by chance the mark of an unset curve.
TEST(MeasurementTable, TheGridTellsWhatItDoes) {
  std::vector<double> toShort;
  for (int nm = 400; nm <= 690; nm += 10) toShort.push_back(nm);
  EXPECT_NE(WavelengthGrid(toShort).Warning().find("extrapolated"), std::string::npos);
  EXPECT_EQ(WavelengthGrid(LibraryWavelengths()).Warning(), "");
  std::vector<double> measured(40, 20.0), curve(40);
  measured[0] = vrx::kUnset;
  WavelengthGrid(LibraryWavelengths()).Convert(measured, curve.data());
  EXPECT_EQ(curve[0], 0.0);
  EXPECT_EQ(curve[39], 20.0);
}

// Words of a person: what says nothing is left out.
TEST(ShadeWords, Joined) {
  using vrx::ShadeWord;
  const ShadeWord all[] = {vrx::kDarker, vrx::kLessRed, vrx::kYellower},
                  one[] = {vrx::kShadeNone, vrx::kShadeNone, vrx::kBluer},
                  none[] = {vrx::kShadeNone, vrx::kShadeNone, vrx::kShadeNone};
  EXPECT_EQ(JoinedWords(all), "Darker, Less Red, Yellower");
  EXPECT_EQ(JoinedWords(one), "Bluer");
  EXPECT_EQ(JoinedWords(none), "");
}

}  // namespace
