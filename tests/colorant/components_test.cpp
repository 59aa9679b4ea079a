#include <cmath>
#include <gtest/gtest.h>

#include <vrxmath/colorant/colorant_array.h>
#include <vrxmath/colorant/component_names.h>
#include <vrxmath/colorant/components.h>

#include "tests/testing/archives.h"
#include "tests/testing/messages.h"

namespace vrx {
namespace {

CColorantLevel MakeLevel(double concentration, double K, double S) {
  CColorantLevel level(1);
  level.concentration = concentration;
  level.values[0].absorption.Fill(K);
  level.values[0].scattering.Fill(S);
  return level;
}

CColorant MakeColorant(int levels, double K, double S) {
  CColorant colorant;
  for (int i = 1; i <= levels; ++i) colorant.AppendLevel(MakeLevel(0.1 * i, K * i, S));
  return colorant;
}

TEST(Components, SettersNoteOnlyChanges) {
  CComponent component;
  component.SetFactor(1.0 + 1.1e-16);
  component.SetId(4999);
  component.SetName(u"");
  component.SetCurrentLevel(5);
  EXPECT_FALSE(component.IsModified());
  EXPECT_TRUE(test::Stored(component).empty()) << "components write nothing themselves";
  using Change = void (*)(CComponent&);
  const Change changes[] = {
      [](CComponent& c) { c.SetFactor(1.0 + 2.3e-16); },
      [](CComponent& c) { c.SetId(5); },
      [](CComponent& c) { c.SetName(u"x"); },
      [](CComponent& c) { c.SetRefB(0); },
      [](CComponent& c) { c.SetScaleC(0.5); },
      [](CComponent& c) { c.SetOption(1); },
      [](CComponent& c) { c.SetFlags(1); },
      [](CComponent& c) { c.SetAmountB(1.0); },
      [](CComponent& c) { c.AppendLevel({}); },
      [](CComponent& c) { c.SetLevel(0, {}); },
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    CComponent changed;
    changes[i](changed);
    EXPECT_TRUE(changed.IsModified()) << i;
    EXPECT_FALSE(changed == CComponent()) << i;
    changed.Reset();
    EXPECT_TRUE(changed == CComponent()) << i;
    EXPECT_FALSE(changed.IsModified()) << i;
  }
}

TEST(Components, LevelsGrowReplaceAndLeave) {
  CComponent component;
  component.SetLevel(2, MakeLevel(0.3, 1.0, 1.0));
  EXPECT_EQ(component.GetLevels().GetSize(), 3);
  EXPECT_THROW(component.SetLevel(-1, {}), CInvalidArgException);
  EXPECT_THROW(component.SetLevel(0x7FFFFFFF, {}), CInvalidArgException);
  component.SetCurrentLevel(2);
  component.RemoveLevel(2);
  EXPECT_EQ(component.GetCurrentLevel(), 1);
  component.RemoveLevel(0);
  component.RemoveLevel(0);
  EXPECT_EQ(component.GetCurrentLevel(), 0);
  component.AppendLevel(MakeLevel(0.3, 1.0, 1.0));
  EXPECT_TRUE(CComponent(component).IsModified()) << "copied too";

  test::MessageRecorder messages;
  CResin resin;
  resin.SetLevelValues(7, 0, CColorantValues());
  resin.SetAdditiveId(-1, 5);
  resin.SetAdditiveAmount(0, 5.0);
  EXPECT_EQ(messages.Take(), test::IndexErrors(3));
  EXPECT_FALSE(resin.IsModified());
  if constexpr (sizeof(std::ptrdiff_t) > 4) {
    EXPECT_EQ(component.GetLevel(std::ptrdiff_t{1} << 32).concentration, 0.0);
    EXPECT_EQ(messages.Take(), test::IndexErrors());
  }
}

TEST(Components, AssignmentMatrixOfKinds) {
  struct Row {
    int32_t kind, inColorant, inResin;
  };
  const Row rows[] = {{0, 0, 1}, {1, 0, 1}, {2, 2, 1}, {8, 8, 1}, {9, 9, 1}, {77, 77, 1}};
  for (const Row& row : rows) {
    CComponent source;
    source.SetKind(row.kind);
    source.SetName(u"n");
    EXPECT_EQ(CColorant(source).GetKind(), row.inColorant) << row.kind;
    EXPECT_EQ(CResin(source).GetKind(), row.inResin) << row.kind;
    EXPECT_TRUE(CResin(source).GetName() == u"n");
  }
  CResin resin;
  resin.SetResinCode(4);
  resin.AddAdditive(7, 1.5);
  CColorant colorant;
  colorant.SetPercent(50.0);
  colorant = resin;
  EXPECT_EQ(colorant.GetKind(), 0);
  EXPECT_EQ(colorant.GetPercent(), 50.0) << "what a component does not have stays";
  const CResin copy = resin;
  EXPECT_TRUE(copy == resin);
  EXPECT_EQ(copy.GetResinCode(), 4);
}

TEST(Components, EqualityNearAndExact) {
  const double near = 100.0 + 1.5e-14;  // one step of a double at 100
  CColorant a, b;
  b.SetValueA(1e-17);
  EXPECT_FALSE(b.GetValueA() == 1e-17) << "a setter sees no change within the near-equality";
  a.SetPercent(near);
  EXPECT_FALSE(a == b);
  CComponent c, d;
  c.SetScaleA(0.3), d.SetScaleA(0.1 + 0.2);
  EXPECT_TRUE(c == d);
  CResin r, s;
  s.SetResinCode(3);
  s.SetResinValue(4.0);
  EXPECT_TRUE(r == s) << "code and value take no part";
  CTopOff topOff;
  topOff.mode = 1;
  s.SetTopOff(topOff);
  EXPECT_FALSE(r == s);
  s = r;
  s.SetTriple({0.0, 0.0, 1.0 + 1e-15});
  EXPECT_FALSE(r == s);
}

TEST(Components, Additives) {
  CResin resin;
  EXPECT_EQ(resin.TotalAdditiveAmount(), 0.0);
  EXPECT_EQ(resin.FindAdditive(0), 9999u);
  resin.AddAdditive(5, 1.5);
  resin.AddAdditive(6, 2.0);
  EXPECT_EQ(resin.FindAdditive(6), 1u);
  EXPECT_EQ(resin.TotalAdditiveAmount(), 3.5);
  resin.RemoveAdditive(77);
  resin.RemoveAdditive(5);
  EXPECT_EQ(resin.FindAdditive(6), 0u);

  CAdditiveArray one;
  one.Add({0x01020304, 1.0});
  EXPECT_EQ(test::Stored(one), test::MakeBytes({1, 0, 4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  test::ExpectRoundTripAndTruncations(resin.GetAdditives(), one);
  test::ExpectHostileCountsRefused(one);
  resin.Reset();
  EXPECT_TRUE(resin == CResin());
}

TEST(Components, WhiteTestLooksAt440To700) {
  struct Row {
    int32_t index;
    double ratio;
    bool white;
  };
  const Row rows[] = {{8, 0.1, true}, {8, 0.1000001, false}, {34, 0.1000001, false},
                      {7, 9.0, true}, {35, 9.0, true},       {20, std::nan(""), false}};
  for (const Row& row : rows) {
    CColorantLevel level = MakeLevel(1.0, 0.05, 1.0);
    level.values[0].absorption[row.index] = row.ratio;
    CColorant colorant;
    colorant.AppendLevel(level);
    EXPECT_EQ(colorant.IsWhite(), row.white) << row.index << " " << row.ratio;
  }
  EXPECT_FALSE(CColorant().IsWhite());
}

TEST(Components, BlendOfTwo) {
  CColorantArray colorants;
  colorants.Add(MakeColorant(5, 2.0, 1.0));
  colorants.Add(MakeColorant(3, 8.0, 0.5));
  colorants[0].SetId(17);
  colorants[0].SetName(u"Ochre");
  colorants[0].SetClassCode(6);
  colorants[0].SetPercent(80.0);
  const CColorantArray before = colorants;
  colorants.Blend(0, 1, 0.75, 0.25);
  const CColorant& blend = colorants[0];
  ASSERT_EQ(blend.GetLevels().GetSize(), 3);
  EXPECT_DOUBLE_EQ(blend.GetLevel(1).concentration, 0.2);
  EXPECT_DOUBLE_EQ(blend.GetLevel(1).values[0].absorption[39], 0.75 * 4.0 + 0.25 * 16.0);
  EXPECT_DOUBLE_EQ(blend.GetLevel(1).values[0].scattering[0], 0.75 + 0.25 * 0.5);
  EXPECT_EQ(blend.GetDescription().ToUtf8(), " 0.750000  0.250000");
  EXPECT_TRUE(blend.GetName() == u"Ochre");
  EXPECT_EQ(blend.GetClassCode(), 6);
  EXPECT_EQ(blend.GetId(), 4999u);
  EXPECT_EQ(blend.GetPercent(), 100.0);
  EXPECT_TRUE(colorants[1] == before[1]);

  colorants = before;
  colorants.Blend(0, 1, 1.0, 0.0);
  for (int32_t i = 0; i < 3; ++i) EXPECT_TRUE(colorants[0].GetLevel(i) == before[0].GetLevel(i)) << i;
}

TEST(Components, BlendOfManyIsBuiltFromPairs) {
  CColorantArray colorants;
  for (int i = 0; i < 3; ++i) {
    colorants.Add(MakeColorant(4 - i, 1.1 + i, 0.9));
    colorants[i].SetId(static_cast<uint32_t>(10 + i));
  }
  CColorantArray pairs = colorants;
  pairs.Blend(2, 0, 0.2, 0.3);
  pairs.Blend(2, 1, 1.0, 0.5);
  CBlendColorantArray lines;
  lines.Add({12, 0.2, -1});
  lines.Add({0, 0.3, 0});
  lines.Add({11, 0.5, -1});
  const CColorantArray before = colorants;
  ASSERT_TRUE(colorants.Blend(lines));
  EXPECT_TRUE(colorants[2].GetLevels() == pairs[2].GetLevels());
  EXPECT_EQ(colorants[2].GetDescription().ToUtf8(), " 0.200000  0.300000  0.500000");

  colorants = before;
  lines.Add({99, 0.5, -1});
  EXPECT_FALSE(colorants.Blend(lines));
  EXPECT_TRUE(colorants == before);
}

TEST(Components, FactorConversionThereAndBack) {
  for (const LevelUpdate update : {LevelUpdate::kRescaleUnitCurves, LevelUpdate::kKeepContributionOverBase}) {
    CColorant colorant;
    for (const double c : {0.0, 0.02, 0.5, 1.0}) colorant.AppendLevel(MakeLevel(c, 3.0, 0.4));
    colorant.SetFactor(2.5);
    colorant.SetAmountA(10.0);
    CColorant converted = colorant;
    converted.ConvertFactor(FactorDirection::kToPlain, 1.25, update);
    EXPECT_DOUBLE_EQ(converted.GetAmountA(), 4.0);
    // The odds c / (1 - c) double: 1 : 49 becomes 2 : 49, 1 : 1 becomes 2 : 1.
    EXPECT_DOUBLE_EQ(converted.GetLevel(1).concentration, 2.0 / 51.0);
    EXPECT_DOUBLE_EQ(converted.GetLevel(2).concentration, 2.0 / 3.0);
    EXPECT_EQ(converted.GetLevel(3).concentration, 1.0);
    converted.ConvertFactor(FactorDirection::kToFactor, 1.25, update);
    EXPECT_DOUBLE_EQ(converted.GetAmountA(), 10.0);
    for (int32_t i = 0; i < 4; ++i) {
      EXPECT_DOUBLE_EQ(converted.GetLevel(i).concentration, colorant.GetLevel(i).concentration) << i;
      EXPECT_NEAR(converted.GetLevel(i).values[0].absorption[20], 3.0, 1e-14) << i;
      EXPECT_NEAR(converted.GetLevel(i).values[0].scattering[20], 0.4, 1e-14) << i;
    }
  }
}

TEST(Components, Names) {
  struct Row {
    int32_t kind, model;
    const char* name;
  };
  const Row rows[] = {{0, 0, "Colorant"}, {1, 5, "Base"},      {1, 1, "Resin"},     {1, 8, "Resin"},
                      {2, 0, "Additive"}, {8, 3, "Cal White"}, {9, 3, "Cal Black"}, {-1, 0, "Unknown"}};
  for (const Row& row : rows)
    EXPECT_EQ(ComponentKindName(row.kind, row.model).ToUtf8(), row.name) << row.kind;
  EXPECT_EQ(OpticalModelName(4).ToUtf8(), "Filter|Beer's Law");
  EXPECT_TRUE(OpticalModelName(9).IsEmpty());
  EXPECT_EQ(FactorName(5, false).ToUtf8(), "Paste Factors");
  EXPECT_EQ(FactorName(1, true).ToUtf8(), "Concentrate");
}

}  // namespace
}  // namespace vrx
