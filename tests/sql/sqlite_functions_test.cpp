// The functions of SQL, as SQLite calls them from the module that it has loaded.

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <vrxio/text/decimal.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/sample_colors.h>
#include <vrxmath/colorimetry/color_differences.h>

namespace {

using vrx::io::ShortestText;

class SqliteFunctions : public testing::Test {
 protected:
  void SetUp() override {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
    database_.reset(database);
    ASSERT_EQ(sqlite3_enable_load_extension(database, 1), SQLITE_OK);
    char* error = nullptr;
    ASSERT_EQ(sqlite3_load_extension(database, VRX_SQLITE_MODULE, nullptr, &error), SQLITE_OK) << error;
    // Grey: a curve of one reflectance, as a list.
    std::string grey = "CREATE TABLE sample(name, curve)";
    EXPECT_EQ(Ask(grey), "");
    for (const int percent : {100, 40, 42, 5}) {
      std::string list = "[" + std::to_string(percent);
      for (int i = 1; i < 40; ++i) list += ", " + std::to_string(percent);
      Ask("INSERT INTO sample VALUES(" + std::to_string(percent) + ", vrx_curve('" + list + "]'))");
    }
  }

  // The cells of the answer, joined by "|", or the error.
  std::string Ask(const std::string& statement) {
    std::string cells;
    char* error = nullptr;
    const auto add = [](void* out, int count, char** values, char** /*names*/) {
      for (int i = 0; i < count; ++i) {
        auto& text = *static_cast<std::string*>(out);
        text += (text.empty() ? "" : "|") + std::string(values[i] == nullptr ? "NULL" : values[i]);
      }
      return 0;
    };
    if (sqlite3_exec(database_.get(), statement.c_str(), add, &cells, &error) == SQLITE_OK) return cells;
    std::string reason = error;
    sqlite3_free(error);
    return reason;
  }
  // `what` of the sample t and the standard s.
  std::string Of(const std::string& what, int trial, int standard = 40) {
    return Ask("SELECT " + what + " FROM sample t, sample s WHERE t.name = " + std::to_string(trial) +
               " AND s.name = " + std::to_string(standard));
  }

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };
  std::unique_ptr<sqlite3, Close> database_;
};

TEST_F(SqliteFunctions, AnswerWithTheLibrarysBits) {
  const std::vector<double> greys(40, 42.0), standard(40, 40.0);
  const auto colors = [](const std::vector<double>& curve) {
    const vrx::vrxIlluminant lamp = vrx::vrxIllumA;
    return vrx::ColorsOf(vrx::CurveBatch{curve}, vrx::vrxSystemLab, {&lamp, 1}, vrx::kObserver2).At(0, 0);
  };
  const vrx::Color color = colors(greys), other = colors(standard);
  EXPECT_EQ(Of("vrx_lab(t.curve, 'A', 2)", 42), "[" + ShortestText(color.lab.L) + "," +
                                                    ShortestText(color.lab.a) + "," +
                                                    ShortestText(color.lab.b) + "]");
  EXPECT_EQ(Of("vrx_tristimulus(t.curve, 'a', 2) ->> '$[1]'", 42), ShortestText(color.xyz.Y));
  // A perfect white; by CIE 15 Y = R and L* = 116 (Y/100)^(1/3) - 16.
  EXPECT_EQ(Of("round(vrx_lab(t.curve, 'D65') ->> '$[0]', 9)", 100), "100.0");
  EXPECT_EQ(Of("vrx_values(t.curve) = vrx_values(vrx_curve(vrx_values(t.curve)))", 42), "1");
  // L*a*b* of greys differ in lightness alone.
  const double dL = color.lab.L - other.lab.L;
  EXPECT_NEAR(std::stod(Of("vrx_delta(s.curve, t.curve, 'lab', 'A', 2)", 42)), dL, 1e-3);
  EXPECT_EQ(Of("vrx_delta(s.curve, t.curve, 'cmc', 'A', 2, '2:1') * 2 - vrx_delta(s.curve, t.curve, 'cmc', "
               "'A', 2, '1:1') < 1e-3",
               42),
            "1");
  EXPECT_EQ(Of("vrx_words(s.curve, t.curve, 'lab', 'A')", 42), "Lighter");
  EXPECT_EQ(Of("vrx_words(s.curve, t.curve, 'lab', 'A')", 40), "");
}

// Curves do not say their angle: weights at 45 degrees pass what those at 110 warn of.
TEST_F(SqliteFunctions, TheMeasuringAngleIsAsked) {
  const std::vector<double> greys(40, 42.0), standard(40, 40.0);
  vrx::CDifferenceSettings settings = vrx::DefaultSettings(vrx::vrxSystemDin6175);
  settings.ownFormula = true;
  const vrx::vrxIlluminant lamp = vrx::vrxIllumD65;
  const auto colors = [&](const std::vector<double>& curve) {
    return vrx::ColorsOf(vrx::CurveBatch{curve}, settings.system, {&lamp, 1}, vrx::kObserver10);
  };
  const vrx::ColorTable a = colors(standard), b = colors(greys);
  for (const double angle : {15.0, 110.0}) {
    double total = 0;
    vrx::TotalDifferenceBatch(settings, angle, a.Batches().front(), b.Batches().front(), {&total, 1});
    const std::string degrees = ShortestText(angle);
    EXPECT_EQ(
        Of("vrx_delta(s.curve, t.curve, 'din6175', 'D65', 10, '', " + degrees + ") = " + ShortestText(total),
           42),
        "1")
        << degrees;
    EXPECT_EQ(Of("vrx_judge(s.curve, t.curve, 'din6175', " + ShortestText(total * 1.01) +
                     ", 'D65', 10, '', '" + degrees + "')",
                 42),
              "warning");
  }
  EXPECT_EQ(Of("vrx_words(s.curve, t.curve, 'din6175', 'D65')", 42), "Lighter");
}

TEST_F(SqliteFunctions, TheWorstLampDecides) {
  // Redder from 610 nm on, where a bulb has more of its light.
  const std::string redder =
      "vrx_curve(replace(vrx_values(s.curve), ',40,40,40,40,40,40,40,40,40,40,40,40,40,40,40]', "
      "',42,42,42,42,42,42,42,42,42,42,42,42,42,42,42]'))";
  EXPECT_EQ(Of("vrx_judge(s.curve, " + redder + ", 'lab', 1.38, 'D65')", 40), "pass");
  EXPECT_EQ(Of("vrx_judge(s.curve, " + redder + ", 'lab', 1.38, 'D65,A')", 40), "fail");
  EXPECT_EQ(Of("vrx_judge(s.curve, t.curve, 'lab', 2, 'D65,A')", 42), "pass");  // by 1.4
  EXPECT_EQ(Of("vrx_judge(s.curve, t.curve, 'lab', 1.5, 'D65,A')", 42), "warning");
  EXPECT_EQ(Of("vrx_judge(s.curve, t.curve, 'lab', 1, 'D65,A')", 42), "fail");
  EXPECT_EQ(Ask("SELECT count(*) FROM sample t, sample s WHERE s.name = 40 AND vrx_delta(s.curve, t.curve, "
                "'lab', 'D65') < 2"),
            "2");
}

TEST_F(SqliteFunctions, RefuseWhatMeansNothing) {
  EXPECT_EQ(Of("vrx_lab(NULL, 'D65'), vrx_delta(t.curve, NULL, 'cmc', 'D65')", 42), "NULL|NULL");
  Ask("CREATE TABLE unset(curve); INSERT INTO unset VALUES(x'" +
      [] {
        std::string hex;
        for (int i = 0; i < 40; ++i) hex += "f168e388b5f8e43e";  // 1e-5, the mark of what was not measured
        return hex;
      }() +
      "')");
  EXPECT_EQ(Ask("SELECT vrx_lab(curve, 'D65'), vrx_values(curve), vrx_words(curve, curve, 'cmc', 'D65'), "
                "vrx_judge(curve, curve, 'cmc', 1, 'D65') FROM unset"),
            "NULL|NULL|NULL|fail");
  const std::pair<const char*, const char*> kRefused[] = {
      {"vrx_lab(x'00', 'D65')", "vrx_lab: a curve is a BLOB of 40 doubles"},
      {"vrx_lab('text', 'D65')", "vrx_lab: a curve is a BLOB of 40 doubles"},
      {"vrx_curve('[1, 2]')", "vrx_curve: a curve has 40 numbers"},
      {"vrx_curve('[1, nan]')", "vrx_curve: "},
      {"vrx_lab(t.curve, 'D99')", "vrx_lab: unknown illuminant \"D99\""},
      {"vrx_lab(t.curve, 'D65', 5)", "vrx_lab: unknown observer \"5\""},
      {"vrx_delta(t.curve, t.curve, 'cmc', 'D65,A')", "vrx_delta: one illuminant is expected"},
      {"vrx_delta(t.curve, t.curve, 'xyzzy', 'A')", "vrx_delta: unknown"},
      {"vrx_delta(t.curve, t.curve, 'cmc', 'A', 10, '1:2:3:4')", "vrx_delta: the system has 3 parameters"},
      {"vrx_delta(t.curve, t.curve, 'din6175', 'A')", "vrx_delta: din6175 depends on the measuring angle"},
      {"vrx_judge(t.curve, t.curve, 'audi', 1, 'A', 10, '')",
       "vrx_judge: audi depends on the measuring angle"},
      {"vrx_judge(t.curve, t.curve, 'audi', 1, 'A', 10, '', 'x')",
       "the angle must be from -45 to 110 degrees"},
      {"vrx_judge(t.curve, t.curve, 'audi', 1, 'A', 10, '', 111)",
       "the angle must be from -45 to 110 degrees"},
      {"vrx_judge(t.curve, t.curve, 'cmc', -1, 'A')", "vrx_judge: the tolerance must be a number above 0"},
      {"vrx_judge(t.curve, t.curve, 'cmc', 9e999, 'A')", "vrx_judge: the tolerance must be a number above 0"},
      {"vrx_lab(t.curve)", "wrong number of arguments"},
  };
  for (const auto& [call, reason] : kRefused)
    EXPECT_NE(Of(call, 42).find(reason), std::string::npos) << call << ": " << Of(call, 42);
  // What gives one answer for one curve may stand in an index.
  EXPECT_EQ(Ask("CREATE INDEX lightness ON sample(vrx_lab(curve, 'D65') ->> '$[0]')"), "");
}

}  // namespace
