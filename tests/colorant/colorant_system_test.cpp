#include <gtest/gtest.h>

#include <vrxmath/colorant/colorant_system.h>

#include "tests/testing/archives.h"

namespace vrx {
namespace {

// A system in which every field differs from its default.
CColorantSystemData FullSystem() {
  CColorantSystemData system;
  system.k1 = 0.03, system.k2 = 0.55, system.valueA = 2.0, system.count = 4, system.valueB = -1.5;
  system.flagsA = 1, system.flagsB = 0x80000000, system.opticalModel = kModelTradeSales;
  system.name = u"Acrylic \u0394";
  const uint8_t codes[] = {4, 8, 11};
  system.angles.SetCodes(codes);
  system.angles.SelectFromText(u"0,1,1");
  system.attributeLabels.Add({1, 2, u"Lot"});
  system.textsA.Add(u"a");
  system.textsB.Add(u"");
  system.numbersA.Add(1), system.numbersB.Add(2), system.numbersC.Add(3);

  CColorant colorant;
  colorant.SetName(u"Ochre");
  colorant.SetId(12);
  colorant.SetKind(kKindCalibrationWhite);
  colorant.SetPercent(40.0);
  CColorantLevel level(1);
  level.concentration = 0.25;
  level.values[0].absorption[7] = 3.5;
  colorant.AppendLevel(level);
  CAttributeArray attributes;
  attributes.Add(CAttribute());
  colorant.SetAttributes(attributes);
  system.colorants.Add(colorant);

  CResin resin;
  resin.SetResinCode(5);
  resin.SetResinValue(0.75);
  resin.SetTriple({1.0, 2.0, 3.0});
  resin.AddAdditive(3, 0.5);
  CTopOff topOff;
  topOff.text = u"Water", topOff.mode = 2;
  resin.SetTopOff(topOff);
  system.resins.Add(resin);
  system.componentsA.Add({12, 8, 0, false});
  system.componentsB.Add({9999, 1, 1, true});
  return system;
}

TEST(ColorantSystem, ArchiveForm) {
  const CColorantSystemData full = FullSystem();
  test::ExpectRoundTripAndTruncations(full);
  test::ExpectRoundTripAndTruncations(CColorantSystemData(), full);

  CColorantSystemData read;
  test::Load(read, test::Stored(full));
  EXPECT_EQ(read.angles.GetCurrent(), 1) << "the selection comes back";
  EXPECT_TRUE(read.colorants[0].IsModified());
  EXPECT_EQ(read.resins[0].GetResinCode(), 5) << "what equality leaves out is kept all the same";
  EXPECT_EQ(read.resins[0].GetResinValue(), 0.75);
  test::ExpectRoundTripAndTruncations(CColorantSystemComponent{12, 8, 0, false});
  test::ExpectRoundTripAndTruncations(CBlendColorant{12, 0.5, 3});
}

TEST(ColorantSystem, EveryFieldCounts) {
  const CColorantSystemData full = FullSystem(), plain;
  const auto differsBy = [&](auto field) {
    CColorantSystemData changed = full;
    changed.*field = plain.*field;
    return !(changed == full);
  };
  using System = CColorantSystemData;
  EXPECT_TRUE(differsBy(&System::k1) && differsBy(&System::k2) && differsBy(&System::valueA));
  EXPECT_TRUE(differsBy(&System::count) && differsBy(&System::valueB) && differsBy(&System::flagsA));
  EXPECT_TRUE(differsBy(&System::flagsB) && differsBy(&System::opticalModel) && differsBy(&System::name));
  EXPECT_TRUE(differsBy(&System::angles) && differsBy(&System::attributeLabels) &&
              differsBy(&System::textsA));
  EXPECT_TRUE(differsBy(&System::textsB) && differsBy(&System::numbersA) && differsBy(&System::numbersB));
  EXPECT_TRUE(differsBy(&System::numbersC) && differsBy(&System::colorants) && differsBy(&System::resins));
  EXPECT_TRUE(differsBy(&System::componentsA) && differsBy(&System::componentsB));
}

TEST(ColorantSystem, EveryDamagedByteIsFound) {
  const test::Bytes sound = test::Stored(FullSystem());
  const CColorantSystemData old;
  CColorantSystemData target = old;
  for (std::size_t i = 0; i < sound.size(); ++i) {
    test::Bytes damaged = sound;
    damaged[i] ^= std::byte{0x10};
    ASSERT_NE(test::ArchiveFailure([&] { test::Load(target, damaged); }), 0) << "byte " << i;
    ASSERT_TRUE(target == old) << "byte " << i;
  }
}

TEST(ColorantSystem, HostileCountsFailBeforeAllocating) {
  // Each count of the field list in turn becomes 2^32 - 1: 0xFFFF put where it stands, with zeros behind it
  // never a sound system, must end as a short or bad archive.
  MemoryStore fields;
  CArchive out(fields, CArchive::kStore);
  CColorantSystemData empty;
  empty.SerializeFields(out);
  ASSERT_EQ(fields.Bytes().size(), CColorantSystemData::kMinArchiveBytes + 2);  // one geometry and its flag
  for (std::size_t i = 48; i + 2 <= fields.Bytes().size(); ++i) {
    test::Bytes bytes = fields.Bytes();
    bytes.resize(i);
    bytes.insert(bytes.end(), 64, std::byte{0xFF});
    MemoryStore store{std::span(bytes)};
    CArchive in(store, CArchive::kLoad);
    CColorantSystemData target;
    EXPECT_NE(test::ArchiveFailure([&] { target.SerializeFields(in); }), 0) << i;
  }
}

}  // namespace
}  // namespace vrx
