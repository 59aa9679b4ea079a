#include "tools/vrx/output/color_system_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/formula/prediction.h>

#include "tests/testing/temporary_folder.h"
#include "tools/vrx/base/command.h"

namespace vrx::tool {
namespace {

const std::string kExamples = std::string(VRX_SOURCE_DIR) + "/examples/";

CDbFormula Mix(int32_t a, double amountA, int32_t b, double amountB) {
  CDbFormula formula(2);
  formula[0].componentId = a, formula[0].amount = amountA;
  formula[1].componentId = b, formula[1].amount = amountB;
  return formula;
}

TEST(AcrylicPaints, ExactlyTwoPassTheWhiteTest) {
  const ColorSystem system = ReadColorSystem(kExamples + "acrylic_paints.json");
  ASSERT_EQ(system.data.colorants.GetSize(), 27);
  std::string whites;
  for (const CColorant& paint : system.data.colorants) {
    if (paint.IsWhite()) whites += paint.GetName().ToUtf8() + ";";
  }
  EXPECT_EQ(whites, "Titanium White;Titan Buff;");
  const CColorantValues& buff = system.data.colorants[16].GetLevel(0).values[0];
  double largest = 0.0;
  for (int32_t i = 8; i <= 34; ++i) largest = std::max(largest, buff.absorption[i] / buff.scattering[i]);
  EXPECT_NEAR(largest, 0.0973, 5e-5);
}

TEST(AcrylicPaints, PureLevelsAreTheirOwnCurvesAndTintsLieBetween) {
  const ColorSystem system = ReadColorSystem(kExamples + "acrylic_paints.json");
  const auto predict = [&](int32_t a, double amountA, int32_t b, double amountB) {
    return PredictReflectance(Mix(a, amountA, b, amountB), system.data);
  };
  const CReflData white = predict(1, 1.0, 1, 2.0);
  for (const CColorant& paint : system.data.colorants) {
    const auto id = static_cast<int32_t>(paint.GetId());
    const CReflData pure = predict(id, 3.0, id, 4.0);
    const CReflData tint = predict(1, 9.0, id, 1.0);
    const CColorantValues& curves = paint.GetLevel(0).values[0];
    for (int32_t i = 0; i < kWavelengths; ++i) {
      const double ks = curves.absorption[i] / curves.scattering[i];
      const double internal = 100.0 * SaundersonToInternal(pure[i] / 100.0, 0.04, 0.6);
      ASSERT_NEAR(KubelkaMunkKs(internal), ks, 1e-8 * (1.0 + ks * ks)) << id << " " << i;
      ASSERT_GE(tint[i], std::min(white[i], pure[i]) - 1e-12) << id << " " << i;
      ASSERT_LE(tint[i], std::max(white[i], pure[i]) + 1e-12) << id << " " << i;
    }
  }
}

TEST(AcrylicPaints, FormulasCanBePredicted) {
  const ColorSystem system = ReadColorSystem(kExamples + "acrylic_paints.json");
  for (const NamedFormula& formula : ReadFormulas(kExamples + "acrylic_formulas.json", system)) {
    EXPECT_FALSE(IsUnset(PredictReflectance(formula.formula, system.data))) << formula.name;
  }
}

std::string Curve(const char* first = "1") {
  std::string curve = "[";
  curve += first;
  for (int32_t i = 1; i < kWavelengths; ++i) curve += ",1";
  return curve + "]";
}

std::string System(const std::string& components, const std::string& more = "") {
  return R"({"name":"s","components":[)" + components + "]" + more + "}";
}

std::string WithLevels(const std::string& levels) {
  return System(R"({"id":1,"name":"a","levels":[)" + levels + "]}");
}

std::string Level(const std::string& concentration, const std::string& K) {
  return R"({"concentration":)" + concentration + R"(,"K":)" + K + R"(,"S":)" + Curve() + "}";
}

std::string Calibrated(const std::string& members) {
  return System(R"({"id":1,"name":"a","calibrated":{)" + members + "}}");
}

class ColorSystemFile : public testing::Test {
 protected:
  std::string Write(const std::string& text) { return folder_.Write("t.json", text); }
  // The complaint about a file, without its path.
  template <class READ>
  std::string Complaint(const std::string& text, READ read) {
    const std::string path = Write(text);
    try {
      read(path);
    } catch (const InputError& error) {
      const std::string what = error.what();
      return what.starts_with(path) ? what.substr(path.size()) : "without the file: " + what;
    }
    return "none";
  }

  test::TemporaryFolder folder_;
};

TEST_F(ColorSystemFile, BadSystemsAreNamedByField) {
  struct Row {
    std::string text, complaint;
  };
  const std::string component = R"({"id":1,"name":"a"})";
  std::string nested, many;
  for (int i = 1; i < 63; ++i) nested += "[0]";
  for (int i = 0; i < 65'535; ++i) many += "[],";
  const Row rows[] = {
      {System(component), "none"},
      {R"({"name":"s",)"
       "\n}",
       ", line 2, column 1: this is not JSON"},
      {"{\"name\":", ", line 1, column 9: the file ends too early"},
      {"[]", ": expected an object"},
      {R"({"name":"s"})", ": member \"components\" is missing"},
      {System(component, R"(,"k1":1e999)"), ": a number is beyond the range of doubles"},
      {System(component, R"(,"rules":[{"id":1,"id":1}])"), ": rules[0]: member \"id\" appears twice"},
      {System(component, ",\"rules\":" + std::string(64, '[')),
       ": rules" + nested + ": more than 64 objects and lists within each other"},
      {System(component, ",\"rules\":[" + many + "[]]"), ": rules: more than 65535 rules"},
      {System(component, R"(,"k2":1)"), ": k2: 1 is not within 0 to 0.999"},
      {System(component, R"(,"colour":1)"), ": unknown member \"colour\""},
      {System(component, R"(,"rules":[[1],[1,2]])"), ": rules[1][1]: the colour system has no component 2"},
      {System(R"({"name":"a"})"), ": components[0]: member \"id\" is missing"},
      {System(R"({"id":18446744073709551615,"name":"a"})"), ": components[0].id: not within 0 to 2147483647"},
      {System(R"({"id":1.5,"name":"a"})"), ": components[0].id: expected a whole number"},
      {System(component + "," + component), ": components[1].id: this id is already in use"},
      {System(R"({"id":1,"name":7})"), ": components[0].name: expected a text"},
      {WithLevels(Level("0.5", "[1,2]")), ": components[0].levels[0].K: 2 numbers instead of 40"},
      {WithLevels(Level("0.5", Curve("null"))), ": components[0].levels[0].K[0]: expected a number"},
      {WithLevels(Level("0.5", Curve("-1"))), ": components[0].levels[0].K[0]: -1 is not within 0 to 1e+100"},
      {WithLevels(Level("1.5", Curve())),
       ": components[0].levels[0].concentration: 1.5 is not within 0 to 1"},
      {WithLevels(Level("0.5", Curve()) + "," + Level("0.5", Curve())),
       ": components[0].levels[1].concentration: levels must ascend"},
      {System(component, R"(,"specular":"maybe")"),
       ": specular: \"maybe\" is not one of \"included\", \"excluded\", \"none\""},
      {System(component, R"(,"geometry":"46/0")"), ": geometry: this is no geometry"},
      {System(component, R"(,"geometry":"")"), ": geometry: this is no geometry"},
      {System(component, R"(,"calibrated_on":7)"), ": calibrated_on: expected a text"},
      {Calibrated(R"("least":5,"most":100,"drawdowns":2)"), "none"},
      {Calibrated(R"("least":5,"most":4,"drawdowns":2)"),
       ": components[0].calibrated.most: the most is less than the least"},
      {Calibrated(R"("least":5,"most":100,"drawdowns":0)"),
       ": components[0].calibrated.drawdowns: not within 1 to 2147483647"},
      {Calibrated(R"("least":5,"drawdowns":2)"), ": components[0].calibrated: member \"most\" is missing"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Complaint(row.text, [](const std::string& path) { ReadColorSystem(path); }), row.complaint);
  }
}

TEST_F(ColorSystemFile, WhatACalibrationKnowsComesBack) {
  ColorSystem system = ReadColorSystem(Write(Calibrated(R"("least":2.5,"most":100,"drawdowns":3)")));
  EXPECT_FALSE(system.specular);
  EXPECT_TRUE(IsUnset(system.calibrated[0].leaveOneOut));
  system.specular = SaundersonMode::kExcluded;
  system.geometry = io::ParseGeometry("15deg");
  system.calibratedOn = "oils \"A\"";
  system.calibrated[0].leaveOneOut = 1.25;
  system.calibrated[0].leaveOneOut90 = 3.5;
  const ColorSystem again = ReadColorSystem(Write(io::ColorSystemText(system)));
  EXPECT_EQ(again.specular, system.specular);
  EXPECT_EQ(again.geometry, system.geometry);
  EXPECT_EQ(again.calibratedOn, system.calibratedOn);
  ASSERT_EQ(again.calibrated.GetSize(), 1);
  EXPECT_EQ(again.calibrated[0].leastShare, 0.025);
  EXPECT_EQ(again.calibrated[0].mostShare, 1.0);
  EXPECT_EQ(again.calibrated[0].drawdowns, 3);
  EXPECT_EQ(again.calibrated[0].leaveOneOut, 1.25);
  EXPECT_EQ(again.calibrated[0].leaveOneOut90, 3.5);
}

TEST_F(ColorSystemFile, BadFormulasAreNamedByField) {
  const ColorSystem system = ReadColorSystem(Write(System(R"({"id":1,"name":"a"})")));
  struct Row {
    const char *lines, *complaint;
  };
  const Row rows[] = {
      {R"([{"component":1,"amount":2}])", "none"},
      {R"([{"component":1,"amount":-2}])", ": formulas[0].lines[0].amount: -2 is not within 0 to 1e+100"},
      {R"([{"component":9,"amount":2}])",
       ": formulas[0].lines[0].component: the colour system has no component 9"},
      {R"([{"component":1}])", ": formulas[0].lines[0]: member \"amount\" is missing"},
      {R"([{"component":1,"amount":0}])", ": formulas[0].lines: there is nothing in it"},
      {R"({})", ": formulas[0].lines: expected a list"},
  };
  for (const Row& row : rows) {
    const std::string text = std::string(R"({"formulas":[{"name":"f","lines":)") + row.lines + "}]}";
    EXPECT_EQ(Complaint(text, [&](const std::string& path) { ReadFormulas(path, system); }), row.complaint);
  }
}

}  // namespace
}  // namespace vrx::tool
