// A batch gives the bits of the single calls, on every instruction set that the machine has.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/batch/colorant_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/figure_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorant/strength.h>
#include <vrxmath/colorimetry/cie2000_formulas.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/display_color.h>
#include <vrxmath/colorimetry/fine_weights.h>
#include <vrxmath/colorimetry/munsell.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/numeric/instruction_set.h>

namespace vrx {
namespace {

constexpr vrxIlluminant kD65 = vrxIllumD65;

// Rows of the comparisons: a million for the systems that everybody uses, fewer elsewhere and where checks cost time.
#if defined(NDEBUG) && !defined(VRX_SANITIZED)
constexpr std::size_t kManyRows = 1'000'003, kRows = 100'003;
#else
constexpr std::size_t kManyRows = 20'003, kRows = 20'003;
#endif

// Steele, Lea and Flood's SplitMix64: the same numbers on every platform.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  double Between(double low, double high) {
    std::uint64_t z = (state_ += 0x9e3779b97f4a7c15);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return low + (high - low) * (static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53);
  }

 private:
  std::uint64_t state_;
};

// The bits, with one NaN for all.
std::uint64_t Bits(double x) {
  return std::bit_cast<std::uint64_t>(std::isnan(x) ? std::numeric_limits<double>::quiet_NaN() : x);
}

std::size_t CountDifferent(const std::vector<double>& got, const std::vector<double>& expected) {
  std::size_t different = got.size() != expected.size();
  for (std::size_t i = 0; i < got.size(); ++i)
    different += std::bit_cast<std::uint64_t>(got[i]) != Bits(expected[i]);
  return different;
}

// Pairs of colours as rows: most of them near each other, some far apart, grey, black, unset or not a number.
struct Pairs {
  std::vector<double> xyz[2], lab[2];

  explicit Pairs(std::size_t rows, std::uint64_t seed = 1) {
    Random random(seed);
    for (std::size_t i = 0; i < rows; ++i) {
      double standard[3], step = i % 7 == 0 ? 40.0 : 2.0;
      for (double& value : standard) value = random.Between(0.0, 95.0);
      if (i % 61 == 1) step = 0.0;
      if (i % 67 == 2)
        standard[0] = 0.47405, standard[1] = 0.5, standard[2] = 0.53652;  // half a percent of the white
      if (i % 71 == 3) standard[0] = standard[1] = standard[2] = step = 0.0;
      if (i % 73 == 4) standard[0] = standard[1] = standard[2] = kUnset, step = 1.0;
      if (i % 79 == 5) standard[i % 3] = std::numeric_limits<double>::quiet_NaN();
      Add(0, standard);
      for (double& value : standard) value = std::fabs(value + random.Between(-step, step));
      if (i % 83 == 6) standard[0] = standard[1] = standard[2] = kUnset;
      Add(1, standard);
    }
  }

  Color At(int side, std::size_t i) const {
    const double* x = &xyz[side][3 * i];
    const double* l = &lab[side][5 * i];
    return {{x[0], x[1], x[2]}, {l[0], l[1], l[2], l[3], l[4]}};
  }
  ColorBatch Batch(int side) const { return {xyz[side], lab[side]}; }
  std::size_t size() const { return xyz[0].size() / 3; }

 private:
  void Add(int side, const double (&values)[3]) {
    CColorValues color;
    color.tristimulus = {values[0], values[1], values[2]};
    FillCoordinates(vrxSystemLab, kD65, kObserver10, color);
    xyz[side].insert(xyz[side].end(), values, values + 3);
    lab[side].insert(lab[side].end(), color.lab.begin(), color.lab.end());
  }
};

const Pairs& ManyPairs() {
  static const Pairs pairs(kManyRows);
  return pairs;
}

const Pairs& SomePairs() {
  static const Pairs pairs(kRows);
  return pairs;
}

// Runs a check on every instruction set of the machine.
void OnEverySet(const std::function<void()>& check) {
  const InstructionSet before = CurrentInstructionSet();
  for (const InstructionSet set : kInstructionSets) {
    if (!UseInstructionSet(set)) continue;
    SCOPED_TRACE(InstructionSetName(set));
    check();
  }
  UseInstructionSet(before);
}

// Rows of `width` numbers as columns, each a vector.
std::vector<std::vector<double>> ToColumns(const std::vector<double>& rows, std::size_t width) {
  std::vector<std::vector<double>> columns(width);
  for (std::size_t i = 0; i < rows.size(); ++i) columns[i % width].push_back(rows[i]);
  return columns;
}
std::vector<double> ToRows(const std::vector<std::vector<double>>& columns) {
  std::vector<double> rows;
  for (std::size_t i = 0; i < columns[0].size(); ++i) {
    for (const auto& column : columns) rows.push_back(column[i]);
  }
  return rows;
}
template <class NUMBER, std::size_t kWidth, class COLUMNS>
BatchView<NUMBER, kWidth> ViewOf(COLUMNS& columns) {
  typename BatchView<NUMBER, kWidth>::Columns spans;
  for (std::size_t k = 0; k < kWidth; ++k) spans[k] = columns[k];
  return spans;
}

std::vector<double> Elements(const Difference& d) {
  return {d.dL, d.da, d.db, d.weightedL, d.dC, d.dH, d.dE};
}

class Systems : public testing::TestWithParam<std::int32_t> {};

TEST_P(Systems, BatchesHaveTheBitsOfTheSingleDifference) {
  const bool usual =
      GetParam() == vrxSystemCmc || GetParam() == vrxSystemCie94 || GetParam() == vrxSystemCie2000;
  const Pairs& pairs = usual ? ManyPairs() : SomePairs();
  const CDifferenceSettings settings = {GetParam(), {1.25, 1.5, 0.75, 1.0}};
  std::vector<double> expected, totals, ofFirst;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto d = Elements(ComputeDifference(settings, pairs.At(0, i), pairs.At(1, i), 25.0));
    expected.insert(expected.end(), d.begin(), d.end());
    totals.push_back(d[6]);
    ofFirst.push_back(ComputeDifference(settings, pairs.At(0, 0), pairs.At(1, i), 25.0).dE);
  }
  const auto labs1 = ToColumns(pairs.lab[0], 5), labs2 = ToColumns(pairs.lab[1], 5);
  const auto xyz1 = ToColumns(pairs.xyz[0], 3), xyz2 = ToColumns(pairs.xyz[1], 3);
  const ColorBatch columns1 = {ViewOf<const double, 3>(xyz1), ViewOf<const double, 5>(labs1)};
  const ColorBatch columns2 = {ViewOf<const double, 3>(xyz2), ViewOf<const double, 5>(labs2)};
  OnEverySet([&] {
    std::vector<double> rows(expected.size()), total(totals.size());
    EXPECT_TRUE(DifferenceBatch(settings, 25.0, pairs.Batch(0), pairs.Batch(1), rows));
    EXPECT_EQ(CountDifferent(rows, expected), 0u);
    EXPECT_TRUE(TotalDifferenceBatch(settings, 25.0, columns1, columns2, total));
    EXPECT_EQ(CountDifferent(total, totals), 0u);
    const ColorBatch first = {pairs.Batch(0).xyz.Rows(0, 1), pairs.Batch(0).lab.Rows(0, 1)};
    EXPECT_TRUE(TotalDifferenceBatch(settings, 25.0, first, columns2, total));
    EXPECT_EQ(CountDifferent(total, ofFirst), 0u);
  });
}

// The total by the hues themselves, step by step, which the faster form by points must meet.
TEST(Cie2000, DifferencesByPointsAreThoseByHues) {
  const Pairs& pairs = SomePairs();
  double largest = 0.0;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    Lab s = pairs.At(0, i).lab, t = pairs.At(1, i).lab;
    if (std::isnan(s.C) || std::isnan(t.C)) continue;
    if (i % 13 == 0) t.a = -s.a * (1.0 + 1e-6 * static_cast<double>(i % 1000)), t.b = -s.b, FillChromaHue(t);
    const auto [ps, pt, terms] = Cie2000Pair(s, t);
    const double dH = 2.0 * std::sqrt(ps.C * pt.C) * SinDegrees(Cie2000HueStep(ps, pt) / 2.0);
    const double l = (pt.L - ps.L) / terms.weights.SL, c = (pt.C - ps.C) / terms.weights.SC,
                 h = dH / terms.weights.SH;
    Difference d{};
    WeightCie2000(s, t, 1.0, 1.0, 1.0, d);
    largest = std::max(largest, std::fabs(d.dE - std::sqrt(l * l + c * c + h * h + terms.RT * c * h)));
  }
  EXPECT_LT(largest, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(All, Systems, testing::Range(0, kDifferenceSystems));

TEST(Spaces, BatchesHaveTheBitsOfTheSingleConversions) {
  using Single = void (*)(vrxIlluminant, std::int32_t, const CTrisValues&, CLabValues&);
  using Inverse = void (*)(vrxIlluminant, std::int32_t, const CLabValues&, CTrisValues&);
  using Batch5 = bool (*)(vrxIlluminant, std::int32_t, const BatchView<const double, 3>&,
                          const BatchView<double, 5>&, const BatchRun&);
  using Batch3 = bool (*)(vrxIlluminant, std::int32_t, const BatchView<const double, 3>&,
                          const BatchView<double, 3>&, const BatchRun&);
  struct Row {
    const char* name;
    Single single;
    Inverse inverse;
    Batch5 batch;
    Batch3 batchOnly, batchInverse;
    vrxIlluminant illuminant = kD65;
    std::int32_t observer = kObserver10;
  };
  const Row rows[] = {
      {"L*a*b*", XyzToLab, LabToXyz, XyzToLabBatch, XyzToLabOnlyBatch, LabToXyzBatch},
      {"L*u*v*", XyzToLuv, LuvToXyz, XyzToLuvBatch, XyzToLuvOnlyBatch, LuvToXyzBatch},
      {"Hunter", XyzToHunter, HunterToXyz, nullptr, XyzToHunterBatch, HunterToXyzBatch},
      {"Hunter C/2", XyzToHunter, HunterToXyz, nullptr, XyzToHunterBatch, HunterToXyzBatch, vrxIllumC, 0}};
  const Pairs& pairs = SomePairs();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<double> full, only, back;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const CTrisValues xyz = {pairs.xyz[1][3 * i], pairs.xyz[1][3 * i + 1], pairs.xyz[1][3 * i + 2]};
      CLabValues lab;
      CTrisValues inverse;
      if (!IsUnset(xyz)) row.single(row.illuminant, row.observer, xyz, lab);
      full.insert(full.end(), lab.begin(), lab.end());
      only.insert(only.end(), lab.begin(), lab.begin() + 3);
      if (!IsUnset(lab)) row.inverse(row.illuminant, row.observer, lab, inverse);
      back.insert(back.end(), inverse.begin(), inverse.end());
    }
    OnEverySet([&] {
      std::vector<double> got(full.size());
      if (row.batch != nullptr) {
        EXPECT_TRUE(row.batch(row.illuminant, row.observer, pairs.xyz[1], got, {}));
        EXPECT_EQ(CountDifferent(got, full), 0u);
        for (std::size_t i = 0; i < got.size(); ++i) got[i] = i % 5 < 3 ? got[i] : 0.0;
        EXPECT_TRUE(ChromaHueBatch(got));
        EXPECT_EQ(CountDifferent(got, full), 0u) << "chroma and hue of L, a, b";
      }
      got = pairs.xyz[1];  // in place
      EXPECT_TRUE(row.batchOnly(row.illuminant, row.observer, got, got, {}));
      EXPECT_EQ(CountDifferent(got, only), 0u);
      auto columns = ToColumns(only, 3);
      EXPECT_TRUE(row.batchInverse(row.illuminant, row.observer, ViewOf<const double, 3>(columns),
                                   ViewOf<double, 3>(columns), {}));
      EXPECT_EQ(CountDifferent(ToRows(columns), back), 0u);
    });
  }
}

TEST(Spaces, CoordinatesOfSystemsHaveTheBitsOfTheSingleColour) {
  const Pairs pairs(10'007, 11);
  for (std::int32_t system = 0; system < kDifferenceSystems; ++system) {
    for (const vrxIlluminant illuminant : {kD65, vrxIllumA}) {
      SCOPED_TRACE(testing::Message() << system << " under " << illuminant);
      std::vector<double> expected, got(5 * pairs.size());
      CColorValues color;
      for (std::size_t i = 0; i < pairs.size(); ++i) {
        color.tristimulus = {pairs.xyz[1][3 * i], pairs.xyz[1][3 * i + 1], pairs.xyz[1][3 * i + 2]};
        FillCoordinates(system, illuminant, kObserver10, color);
        expected.insert(expected.end(), color.lab.begin(), color.lab.end());
      }
      OnEverySet([&] {
        EXPECT_TRUE(CoordinatesBatch(system, illuminant, kObserver10, pairs.xyz[1], got));
        EXPECT_EQ(CountDifferent(got, expected), 0u);
      });
    }
  }
}

TEST(Appearance, BatchesHaveTheBitsOfTheSingleColour) {
  const Pairs pairs(10'007, 12);
  const std::size_t n = pairs.size();
  White d65, a;
  ASSERT_TRUE(FindWhite(kD65, kObserver10, d65) && FindWhite(vrxIllumA, kObserver10, a));
  const Matrix3 matrix = AdaptationMatrix(AdaptationTransform::kCat16, d65, a, 0.8);
  const AppearanceTerms terms = AppearanceTermsOf(AppearanceModel::kCam16, d65);
  std::vector<double> adapted, looks, jch, back, grades[3];
  for (std::size_t i = 0; i < n; ++i) {
    const Color s = pairs.At(0, i), t = pairs.At(1, i);
    const Xyz under = Adapt(t.xyz, matrix);
    adapted.insert(adapted.end(), {under.X, under.Y, under.Z});
    const vrx::Appearance look = AppearanceFromXyz(terms, t.xyz);
    looks.insert(looks.end(), {look.J, look.C, look.h, look.Q, look.M, look.s});
    jch.insert(jch.end(), {look.J, look.C, look.h});
    const Xyz xyz = IsUnset(t.xyz) ? t.xyz : XyzFromAppearance(terms, look.J, look.C, look.h);
    back.insert(back.end(), {xyz.X, xyz.Y, xyz.Z});
    const bool unset = IsUnset(s.xyz) || IsUnset(t.xyz);
    grades[0].push_back(unset ? kUnset : ChangeGrade(s.lab, t.lab));
    grades[1].push_back(unset ? kUnset : StainingGrade(s.lab, t.lab));
    grades[2].push_back(IsUnset(t.xyz) ? kUnset : ChangeGrade(pairs.At(0, 0).lab, t.lab));
  }
  OnEverySet([&] {
    std::vector<double> triples(3 * n), sixes(6 * n), ones(n);
    EXPECT_TRUE(AdaptBatch(AdaptationTransform::kCat16, d65, a, 0.8, pairs.xyz[1], triples));
    EXPECT_EQ(CountDifferent(triples, adapted), 0u);
    EXPECT_TRUE(AppearanceBatch(AppearanceModel::kCam16, kD65, kObserver10, {}, pairs.xyz[1], sixes));
    EXPECT_EQ(CountDifferent(sixes, looks), 0u);
    EXPECT_TRUE(XyzFromAppearanceBatch(AppearanceModel::kCam16, kD65, kObserver10, {}, jch, triples));
    EXPECT_EQ(CountDifferent(triples, back), 0u);
    EXPECT_TRUE(GradeBatch(GreyScale::kChange, pairs.lab[0], pairs.lab[1], ones));
    EXPECT_EQ(CountDifferent(ones, grades[0]), 0u);
    EXPECT_TRUE(GradeBatch(GreyScale::kStaining, pairs.lab[0], pairs.lab[1], ones));
    EXPECT_EQ(CountDifferent(ones, grades[1]), 0u);
    EXPECT_TRUE(GradeBatch(GreyScale::kChange, pairs.Batch(0).lab.Rows(0, 1), pairs.lab[1], ones));
    EXPECT_EQ(CountDifferent(ones, grades[2]), 0u);
  });
}

TEST(Tristimulus, AllIlluminantsInOnePassOverCurvesOfEitherPrecision) {
  constexpr std::size_t kCurves = 2'103, kStride = 43;
  std::vector<double> samples(kCurves * kStride);
  std::vector<float> samples32(samples.size());
  Random random(2);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = samples32[i] = static_cast<float>(random.Between(0, 110));
  for (std::size_t i = 5; i < kCurves; i += 97) samples[i * kStride] = kUnset;
  for (std::size_t i = 7; i < kCurves; i += 89) samples[i * kStride + i % 40] = std::nan("");
  std::vector<vrxIlluminant> illuminants;
  for (std::int32_t j = 0; j < 2 * kBuiltInIlluminants; ++j) {
    illuminants.push_back(static_cast<vrxIlluminant>(j % kBuiltInIlluminants));
  }
  const std::size_t m = illuminants.size();
  std::vector<double> expected;
  for (std::size_t i = 0; i < kCurves; ++i) {
    CReflData curve;
    for (std::size_t k = 0; k < 40; ++k) curve[static_cast<std::int32_t>(k)] = samples[i * kStride + k];
    for (const vrxIlluminant illuminant : illuminants) {
      CTrisValues xyz;
      curve.Tristimulus(illuminant, kObserver10, xyz);
      expected.insert(expected.end(), xyz.begin(), xyz.end());
    }
  }
  OnEverySet([&] {
    std::vector<double> one(kCurves * 3), one32(one.size());
    for (const std::size_t count : {1u, 2u, 3u, 4u, 7u, 26u, 52u}) {
      std::vector<double> rows(kCurves * 3 * count), some;
      std::vector<BatchView<double, 3>> targets, apart;
      std::vector<std::vector<double>> columns(3 * count, std::vector<double>(kCurves));
      for (std::size_t j = 0; j < count; ++j) {
        targets.emplace_back(std::span(rows).subspan(3 * j), 3 * count);
        apart.push_back(BatchView<double, 3>({columns[3 * j], columns[3 * j + 1], columns[3 * j + 2]}));
      }
      EXPECT_TRUE(TristimulusBatch(std::span(illuminants).first(count), kObserver10,
                                   CurveBatch{samples, kStride}, targets));
      for (auto row = expected.begin(); row != expected.end(); row += 3 * static_cast<std::ptrdiff_t>(m)) {
        some.insert(some.end(), row, row + 3 * static_cast<std::ptrdiff_t>(count));
      }
      EXPECT_EQ(CountDifferent(rows, some), 0u) << count;
      EXPECT_TRUE(TristimulusBatch(std::span(illuminants).first(count), kObserver10,
                                   CurveBatch{samples, kStride}, apart));
      EXPECT_EQ(CountDifferent(ToRows(columns), some), 0u) << count;
    }
    EXPECT_TRUE(TristimulusBatch(kD65, kObserver10, CurveBatch{samples, kStride}, one));
    EXPECT_TRUE(TristimulusBatch(kD65, kObserver10, CurveBatch32{samples32, kStride}, one32));
    std::size_t different = 0;
    for (std::size_t i = 0; i < kCurves; ++i) {
      const bool touched = i % 97 == 5 || i % 89 == 7;
      if (!touched) different += std::memcmp(&one[3 * i], &one32[3 * i], 3 * sizeof(double)) != 0;
    }
    EXPECT_EQ(different, 0u);
  });
}

TEST(Tristimulus, FineCurvesHaveTheBitsOfTheSingleCurve) {
  constexpr std::size_t kCurves = 261;
  std::vector<vrxIlluminant> illuminants{kD65, vrxIllumA, vrxIllumT84, vrxIllumLB1};
  for (const std::int32_t interval : {5, 1}) {
    const auto n = static_cast<std::size_t>(FineSamples(interval));
    std::vector<double> samples(kCurves * n), expected(kCurves * 12, kUnset);
    Random random(5);
    for (double& sample : samples) sample = random.Between(0, 110);
    samples[7 * n] = kUnset, samples[9 * n + 1] = std::nan("");
    for (std::size_t i = 0; i < kCurves; ++i) {
      for (std::size_t j = 0; j < 4; ++j) {
        Xyz xyz{kUnset, kUnset, kUnset};
        EXPECT_EQ(
            FineTristimulus(std::span(samples).subspan(i * n, n), interval, illuminants[j], kObserver10, xyz),
            i != 7);
        std::copy_n(&xyz.X, 3, &expected[12 * i + 3 * j]);
      }
    }
    OnEverySet([&] {
      for (const std::size_t m : {1u, 2u, 4u}) {
        std::vector<double> rows(kCurves * 12, kUnset), some = expected;
        std::vector<BatchView<double, 3>> targets;
        for (std::size_t j = 0; j < m; ++j) targets.emplace_back(std::span(rows).subspan(3 * j), 12);
        for (std::size_t k = 0; k < some.size(); ++k) some[k] = k % 12 < 3 * m ? some[k] : kUnset;
        EXPECT_TRUE(TristimulusBatch(std::span(illuminants).first(m), kObserver10,
                                     FineCurveBatch{samples, interval}, targets, BatchRun{2, {}}));
        EXPECT_EQ(CountDifferent(rows, some), 0u) << m;
      }
    });
  }
  std::vector<double> curves(85);
  EXPECT_THROW((void)CurveCount(FineCurveBatch{curves, 1}), CInvalidArgException);
  EXPECT_THROW((void)CurveCount(FineCurveBatch{curves, 2}), CInvalidArgException);
}

// Every triple of values on limits, beside them and beyond them all, then random ones within a few units of 0.
std::vector<double> AwkwardTriples() {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const double values[] = {0.0,
                           -0.0,
                           0.1,
                           -0.1,
                           std::nextafter(0.1, 0.0),
                           1.5,
                           -1.5,
                           std::nextafter(1.5, 2.0),
                           kUnset,
                           1.125,
                           kInf,
                           -kInf,
                           std::nan(""),
                           5e-324,
                           -1e308,
                           1e160};
  std::vector<double> triples;
  for (const double x : values) {
    for (const double y : values) {
      for (const double z : values) triples.insert(triples.end(), {x, y, z});
    }
  }
  Random random(10);
  while (triples.size() < 3 * 20'011) triples.push_back(random.Between(-2.5, 2.5));
  return triples;
}

// A check of triples as dense rows, as part of wider rows, and as columns, on every instruction set.
void InEveryShape(const std::vector<double>& triples,
                  const std::function<void(const BatchView<const double, 3>&)>& check) {
  std::vector<double> wide;
  for (std::size_t i = 0; i < triples.size(); ++i) {
    wide.push_back(triples[i]);
    if (i % 3 == 2) wide.insert(wide.end(), 4, 0.0);
  }
  const auto columns = ToColumns(triples, 3);
  OnEverySet([&] {
    check(triples);
    check(BatchView<const double, 7>(wide).Numbers<0, 3>());
    check(ViewOf<const double, 3>(columns));
  });
}

TEST(Judging, VerdictsAreThoseOfTheSingleJudgement) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(),
                   kInf = std::numeric_limits<double>::infinity();
  struct Row {
    double plus, minus, axis, angle, warningFactor;
  };
  const Row rows[] = {{0.5, 2.0, 2.5, 30.0, 0.75},      {1.5, 1.5, 1.5, 0.0, 1.0},
                      {kUnset, kUnset, 0.0, 90.0, 0.5}, {kInf, 0.0, kInf, 45.0, 0.9},
                      {kNaN, 1.5, kNaN, 1e6, 0.75},     {-0.5, 0.1, 1.5, kNaN, 2.0},
                      {1.5, 1.5, 5e-324, 10.0, 0.0},    {1e308, 1e308, 1e160, 0.1, kNaN}};
  const std::vector<double> triples = AwkwardTriples();
  const std::size_t n = triples.size() / 3;
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.plus << ' ' << row.axis << ' ' << row.warningFactor);
    CBoxTolData box;
    box.SetTolerance(1, row.plus, row.minus);
    CEllipseData ellipse;
    ellipse[CEllipseData::kAngle] = row.angle, ellipse[CEllipseData::kMajorAxis] = row.axis;
    ellipse[CEllipseData::kCentreL] = 0.1;
    std::vector<Verdict> inBox, inEllipse, inTotal, verdicts(n), ofTotals(3 * n);
    for (std::size_t i = 0; i < n; ++i) {
      const Difference d = {triples[3 * i], triples[3 * i + 1], triples[3 * i + 2], 0.0, 0.0, 0.0, 0.0};
      const bool unset = IsUnset(d.dL) && IsUnset(d.da) && IsUnset(d.db);
      const bool wellInside = box.Accepts(d, row.warningFactor);
      inBox.push_back(unset || !box.Accepts(d, 1.0) ? kFail : wellInside ? kPass : kWarning);
      inEllipse.push_back(unset ? kFail : ellipse.Judge(d, row.warningFactor));
    }
    for (const double total : triples)
      inTotal.push_back(IsUnset(total) ? kFail : GradeTotal(total, row.plus, row.warningFactor));
    InEveryShape(triples, [&](const BatchView<const double, 3>& differences) {
      EXPECT_TRUE(BoxVerdictBatch(box, row.warningFactor, differences, verdicts));
      EXPECT_EQ(verdicts, inBox);
      EXPECT_TRUE(EllipseVerdictBatch(ellipse, row.warningFactor, differences, verdicts));
      EXPECT_EQ(verdicts, inEllipse);
      EXPECT_TRUE(TotalVerdictBatch(row.plus, row.warningFactor, triples, ofTotals));
      EXPECT_EQ(ofTotals, inTotal);
    });
  }
}

TEST(Judging, WordsAreThoseOfTheSingleCall) {
  const std::vector<double> differences = AwkwardTriples();
  std::vector<double> trials = differences;
  std::rotate(trials.begin(), trials.begin() + 3 * 17 + 1, trials.end());
  const std::size_t n = trials.size() / 3;
  std::vector<std::int32_t> expected;
  for (std::size_t i = 0; i < n; ++i) {
    const double *t = &trials[3 * i], *d = &differences[3 * i];
    const ShadeWords shade =
        DescribeShade(Lab{t[0], t[1], t[2], 0.0, 0.0}, Difference{d[0], d[1], d[2], 0.0, 0.0, 0.0, 0.0});
    expected.insert(expected.end(), shade.words.begin(), shade.words.end());
  }
  InEveryShape(differences, [&](const BatchView<const double, 3>& view) {
    std::vector<std::int32_t> words(3 * n), wide(4 * n, -1);
    EXPECT_TRUE(ShadeBatch(trials, view, words));
    EXPECT_EQ(words, expected);
    EXPECT_TRUE(ShadeBatch(trials, view, BatchView<std::int32_t, 3>(wide, 4)));
    for (std::size_t i = 0; i < wide.size(); ++i)
      ASSERT_EQ(wide[i], i % 4 == 3 ? -1 : expected[i / 4 * 3 + i % 4]) << i;
  });
}

// Tristimulus values: awkward ones, then colours.
std::vector<double> AwkwardColors() {
  std::vector<double> xyz = AwkwardTriples();
  const Pairs pairs(4'001, 3);
  xyz.insert(xyz.end(), pairs.xyz[1].begin(), pairs.xyz[1].end());
  return xyz;
}

TEST(Values, IndicesAreThoseOfTheSingleCalls) {
  const std::vector<double> xyz = AwkwardColors();
  std::vector<double> expected(xyz.size() / 3), got(expected.size());
  std::vector<IndexFunction> functions = {
      [](vrxIlluminant, std::int32_t, const CTrisValues& row) { return row[0] * -row[1]; }};
  for (const ColorIndex& index : ColorIndices()) {
    functions.push_back(index.direct);
    if (index.recalculated != nullptr) functions.push_back(index.recalculated);
  }
  for (const auto& pair : {std::pair(kD65, kObserver10), std::pair(vrxIllumC, kObserver2)}) {
    const vrxIlluminant illuminant = pair.first;
    const std::int32_t observer = pair.second;
    for (std::size_t f = 0; f < functions.size(); ++f) {
      SCOPED_TRACE(testing::Message() << f << " under " << illuminant);
      for (std::size_t i = 0; i < expected.size(); ++i)
        expected[i] = functions[f](illuminant, observer, {xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]});
      InEveryShape(xyz, [&](const BatchView<const double, 3>& view) {
        EXPECT_TRUE(IndexBatch(functions[f], illuminant, observer, view, got));
        EXPECT_EQ(CountDifferent(got, expected), 0u);
      });
    }
  }
}

TEST(Values, FiguresAreThoseOfTheSingleCalls) {
  constexpr std::size_t kCurves = 1'101;
  Random random(29);
  std::vector<double> curves(41 * kCurves), densities, inconstancies, notations, xyz;
  for (double& sample : curves) sample = random.Between(-1.0, 110.0);
  const double kAwkward[] = {0.0, kUnset, -1e300, 1e300};
  for (std::size_t i = 0; i < std::size(kAwkward); ++i) std::fill_n(curves.data() + 41 * i, 40, kAwkward[i]);
  curves[41 * 5 + 7] = std::nan("");
  for (std::size_t i = 0; i < kCurves; ++i) {
    CReflData curve;
    std::copy_n(curves.data() + 41 * i, 40, curve.begin());
    const Densities d = DensitiesOf(curve, DensityStatus::kE);
    densities.insert(densities.end(), {d.red, d.green, d.blue, d.visual});
    inconstancies.push_back(
        InconstancyIndex(kD65, vrxIllumA, kObserver10, curve, DefaultSettings(vrxSystemCie2000)));
    const double Y = random.Between(-5.0, 110.0);
    xyz.insert(xyz.end(), {Y * random.Between(0.7, 1.2), Y, Y * random.Between(0.5, 1.5)});
    const MunsellColor found = MunsellFromXyz({xyz[3 * i], Y, xyz[3 * i + 2]});
    notations.insert(notations.end(),
                     {found.hue, found.value, found.chroma, found.isExtrapolated ? 1.0 : 0.0});
  }
  const CurveBatch batch = {std::span(curves).first(curves.size() - 1), 41};
  OnEverySet([&] {
    std::vector<double> four(4 * kCurves), one(kCurves);
    EXPECT_TRUE(DensityBatch(DensityStatus::kE, batch, four));
    EXPECT_EQ(CountDifferent(four, densities), 0u);
    EXPECT_TRUE(
        InconstancyBatch(kD65, vrxIllumA, kObserver10, batch, DefaultSettings(vrxSystemCie2000), one));
    EXPECT_EQ(CountDifferent(one, inconstancies), 0u);
    EXPECT_TRUE(MunsellBatch(xyz, four, {2, nullptr}));
    EXPECT_EQ(CountDifferent(four, notations), 0u);
    EXPECT_THROW(MunsellBatch(xyz, std::span(four).first(4)), CInvalidArgException);
  });
}

TEST(Values, DisplayColoursAreThoseOfTheSingleCall) {
  const std::vector<double> xyz = AwkwardColors();
  const std::size_t n = xyz.size() / 3;
  std::vector<std::uint8_t> expected, shown, rgb(3 * n), apart(5 * n), displayable(n);
  for (std::size_t i = 0; i < n; ++i) {
    std::int32_t channels[3];
    shown.push_back(XyzToDisplayRgb(kD65, kObserver10, {xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]},
                                    channels[0], channels[1], channels[2]));
    for (const std::int32_t channel : channels) expected.push_back(static_cast<std::uint8_t>(channel));
  }
  InEveryShape(xyz, [&](const BatchView<const double, 3>& view) {
    EXPECT_TRUE(DisplayColorBatch(kD65, kObserver10, view, rgb));
    EXPECT_EQ(rgb, expected);
    EXPECT_TRUE(
        DisplayColorBatch(kD65, kObserver10, view, BatchView<std::uint8_t, 3>(apart, 5), displayable));
    EXPECT_EQ(displayable, shown);
    for (std::size_t i = 0; i < rgb.size(); ++i) ASSERT_EQ(apart[i / 3 * 5 + i % 3], expected[i]) << i;
  });
}

TEST(Colorants, TransformsAndSumsHaveTheBitsOfTheSingleCalls) {
  constexpr std::size_t kCurves = 515;
  std::vector<double> samples(40 * kCurves);
  Random random(4);
  for (double& sample : samples) sample = random.Between(0.0, 102.0);
  samples[0] = kUnset, samples[1] = 0.0, samples[2] = 200.0, samples[3] = 150.0, samples[4] = 0.01;
  const CReflData standard;
  for (const SaundersonMode mode :
       {SaundersonMode::kIncluded, SaundersonMode::kExcluded, SaundersonMode::kNone}) {
    for (const bool useAbsorbance : {false, true}) {
      const StrengthSumSettings settings = {useAbsorbance, 4, 34, 0.04, 0.6, mode};
      std::vector<double> f, internal, measured, ratios, sums(kCurves), got(samples.size());
      for (const double R : samples) {
        f.push_back(useAbsorbance ? Absorbance(R) : KubelkaMunkKs(R));
        internal.push_back(SaundersonToInternal(R, 0.04, 0.6, mode));
        measured.push_back(SaundersonToMeasured(R, 0.04, 0.6, mode));
      }
      CReflData base;
      base.Fill(30.0);
      std::vector<double> baseSamples(40, 30.0), baseSum(1);
      OnEverySet([&] {
        EXPECT_TRUE(useAbsorbance ? AbsorbanceBatch(samples, got) : KubelkaMunkKsBatch(samples, got));
        EXPECT_EQ(CountDifferent(got, f), 0u);
        EXPECT_TRUE(SaundersonToInternalBatch(samples, 0.04, 0.6, mode, got));
        EXPECT_EQ(CountDifferent(got, internal), 0u);
        EXPECT_TRUE(SaundersonToMeasuredBatch(samples, 0.04, 0.6, mode, got));
        EXPECT_EQ(CountDifferent(got, measured), 0u);
        EXPECT_TRUE(StrengthSumBatch(settings, {samples}, sums));
        EXPECT_TRUE(StrengthSumBatch(settings, {baseSamples}, baseSum));
        for (std::size_t i = 0; i < kCurves; ++i) {
          CReflData curve;
          for (std::int32_t k = 0; k < 40; ++k) curve[k] = samples[40 * i + static_cast<std::size_t>(k)];
          ASSERT_EQ(Bits(sums[i] / baseSum[0]),
                    Bits(StrengthRatio(base, curve, useAbsorbance, 4, 34, 0.04, 0.6, mode)));
        }
      });
    }
  }
}

TEST(Colorants, NaNStaysNaN) {
  std::vector<double> curves(80, 40.0), values(80), sums(2);
  curves[12] = std::nan("");
  OnEverySet([&] {
    EXPECT_TRUE(StrengthSumBatch({}, CurveBatch{curves}, sums));
    EXPECT_TRUE(std::isnan(sums[0]) && !std::isnan(sums[1]));
    for (const auto batch : {KubelkaMunkKsBatch, AbsorbanceBatch}) {
      EXPECT_TRUE(batch(curves, values, {}));
      for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(std::isnan(values[i]), i == 12) << i;
    }
  });
}

// FNV-1a over what a judged set consists of. The value came out of g++ and clang++, with and without optimisation.
TEST(Bits, OfAJudgedSetAreTheSameOnEveryPlatform) {
  const Pairs pairs(4'099, 5);
  OnEverySet([&] {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (std::int32_t system = 0; system <= vrxSystemDin6175; ++system) {
      std::vector<double> deltas(7 * pairs.size());
      DifferenceBatch(DefaultSettings(system), 45.0, pairs.Batch(0), pairs.Batch(1), deltas);
      for (const double value : deltas) hash = (hash ^ std::bit_cast<std::uint64_t>(value)) * 0x100000001b3;
    }
    EXPECT_EQ(hash, 4581090989718419639u);
  });
}

TEST(Nearest, AreThoseOfASortOfAllDifferences) {
  constexpr std::size_t kCount = 10;
  const Pairs library(3'001, 6), trials(23, 7);
  const CDifferenceSettings settings = DefaultSettings(vrxSystemCie2000);
  // The second illuminant sees other colours; the library repeats one, so that there are ties.
  const Pairs library2(3'001, 8), trials2(23, 9);
  const ColorBatch standards[] = {library.Batch(0), library2.Batch(0)},
                   samples[] = {trials.Batch(1), trials2.Batch(1)};
  std::vector<NearestMatch> matches(kCount * trials.size());
  for (const std::size_t illuminants : {1u, 2u}) {
    ASSERT_TRUE(FindNearestBatch(settings, 0.0, std::span(samples).first(illuminants),
                                 std::span(standards).first(illuminants), kCount, matches));
    for (std::size_t t = 0; t < trials.size(); ++t) {
      std::vector<std::pair<double, std::size_t>> all;
      for (std::size_t i = 0; i < library.size(); ++i) {
        const double d = ComputeDifference(settings, library.At(0, i), trials.At(1, t), 0.0).dE;
        const double d2 = ComputeDifference(settings, library2.At(0, i), trials2.At(1, t), 0.0).dE;
        const double worst = illuminants == 1 ? d : std::max(d, d2);
        const bool counts =
            !std::isnan(d) && !IsUnset(d) && (illuminants == 1 || (!std::isnan(d2) && !IsUnset(d2)));
        if (counts) all.emplace_back(worst, i);
      }
      std::sort(all.begin(), all.end());
      for (std::size_t k = 0; k < kCount; ++k) {
        const NearestMatch& match = matches[t * kCount + k];
        if (k < all.size()) {
          ASSERT_EQ(match.index, all[k].second) << t;
          ASSERT_EQ(match.difference, all[k].first);
        } else {
          ASSERT_EQ(match.index, NearestMatch::kNone);
        }
      }
    }
  }
}

// Of 15 and 45 degrees, of a geometry that the library does not know, and of none; the difference is that at the angle of the sample.
TEST(Nearest, LookAmongTheStandardsOfTheirGeometry) {
  const CDifferenceSettings settings = DefaultSettings(vrxSystemAudi);
  ColorTable standards{std::vector<ColorTable::Under>(1)}, samples = standards;
  const auto add = [](ColorTable& colors, double a) {
    colors.under[0].xyz.insert(colors.under[0].xyz.end(), {20.0, 20.0, 20.0});
    colors.under[0].lab.insert(colors.under[0].lab.end(), {50.0, a, 10.0, std::hypot(a, 10.0), 0.0});
  };
  for (const double a : {10.0, 11.0, 12.0, 13.0, 14.0}) add(standards, a);
  const std::vector<int32_t> ofStandards{4, 8, 1000, 4, -1};
  for (int i = 0; i < 5; ++i) add(samples, 9.0);
  const int32_t ofSamples[] = {4, 8, 1000, 1001, -1};
  std::vector<NearestMatch> matches(15);
  StandardsByGeometry library(standards, ofStandards);
  constexpr std::size_t kNone = NearestMatch::kNone;
  const std::size_t expected[] = {0, 3, 4, 1, 4, kNone, 2, 4, kNone, 4, kNone, kNone, 0, 1, 2};
  for (int run = 0; run < 2; ++run) {
    ASSERT_TRUE(library.Find(settings, 75.0, samples, ofSamples, 3, matches));
    for (std::size_t k = 0; k < matches.size(); ++k) EXPECT_EQ(matches[k].index, expected[k]) << k;
  }
  const double angles[] = {15.0, 45.0, 75.0, 75.0, 75.0};
  for (std::size_t i = 0; i < std::size(angles); ++i) {
    const NearestMatch& match = matches[3 * i];
    EXPECT_EQ(match.difference,
              ComputeDifference(settings, standards.At(0, match.index), samples.At(0, i), angles[i]).dE);
  }
  EXPECT_THROW(library.Find(settings, 75.0, samples, std::span(ofSamples).first(4), 3, matches),
               CInvalidArgException);
}

}  // namespace
}  // namespace vrx
