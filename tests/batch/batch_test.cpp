// A batch gives the bits of the single calls, on every instruction set that the machine has.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/batch/colorant_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorant/strength.h>
#include <vrxmath/colorimetry/cie2000_formulas.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/display_color.h>
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
  for (std::int32_t j = 0; j < 26 + 26; ++j) illuminants.push_back(static_cast<vrxIlluminant>(j % 26));
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

TEST(Judging, VerdictsWordsIndicesAndDisplayColoursAreThoseOfTheRecords) {
  const Pairs pairs(20'011, 3);
  const std::size_t n = pairs.size();
  std::vector<double> deltas(7 * n);
  DifferenceBatch(DefaultSettings(vrxSystemLab), 0.0, pairs.Batch(0), pairs.Batch(1), deltas);
  const BatchView<const double, 7> all(deltas);
  const auto first = all.Numbers<0, 3>();
  std::vector<double> totals(n), index(n), ks(n), density(n), internal(n), measured(n);
  for (std::size_t i = 0; i < n; ++i) totals[i] = all.at(i, 6);
  CBoxTolData box;
  box.SetTolerance(1, 0.5, 2.0);
  CEllipseData ellipse;
  ellipse[CEllipseData::kAngle] = 30.0, ellipse[CEllipseData::kMajorAxis] = 2.5;
  std::vector<Verdict> inBox(n), inEllipse(n), inTotal(n);
  std::vector<std::int32_t> words(3 * n);
  std::vector<std::uint8_t> rgb(3 * n), displayable(n);
  OnEverySet([&] {
    EXPECT_TRUE(BoxVerdictBatch(box, 0.75, first, inBox));
    EXPECT_TRUE(EllipseVerdictBatch(ellipse, 0.75, first, inEllipse));
    EXPECT_TRUE(TotalVerdictBatch(1.5, 0.75, totals, inTotal));
    const BatchView<const double, 5> labs(pairs.lab[1]);
    EXPECT_TRUE(ShadeBatch(labs.Numbers<0, 3>(), first, words));
    EXPECT_TRUE(IndexBatch(&WhitenessCie, kD65, kObserver10, pairs.xyz[1], index));
    EXPECT_TRUE(DisplayColorBatch(kD65, kObserver10, pairs.xyz[1], rgb, displayable));
    for (std::size_t i = 0; i < n; ++i) {
      CDeltaValues delta;
      CLabValues lab;
      for (std::int32_t k = 0; k < 7; ++k) delta[k] = all.at(i, static_cast<std::size_t>(k));
      for (std::int32_t k = 0; k < 5; ++k) lab[k] = labs.at(i, static_cast<std::size_t>(k));
      const CTrisValues xyz = {pairs.xyz[1][3 * i], pairs.xyz[1][3 * i + 1], pairs.xyz[1][3 * i + 2]};
      const bool unset = IsUnset(delta);
      const Verdict expected = !box.Accepts(delta, 1.0) ? kFail : box.Accepts(delta, 0.75) ? kPass : kWarning;
      ASSERT_EQ(inBox[i], unset ? kFail : expected) << i;
      ASSERT_EQ(inEllipse[i], unset ? kFail : ellipse.Judge(delta, 0.75)) << i;
      ASSERT_EQ(inTotal[i], unset ? kFail : GradeTotal(delta[6], 1.5, 0.75)) << i;
      const ShadeWords shade = unset ? ShadeWords() : DescribeShade(lab, delta);
      std::int32_t red, green, blue;
      const bool shown = XyzToDisplayRgb(kD65, kObserver10, xyz, red, green, blue);
      for (std::size_t k = 0; k < 3; ++k) ASSERT_EQ(words[3 * i + k], shade.words[k]) << i;
      ASSERT_EQ(Bits(index[i]), Bits(WhitenessCie(kD65, kObserver10, xyz))) << i;
      ASSERT_TRUE(rgb[3 * i] == red && rgb[3 * i + 1] == green && rgb[3 * i + 2] == blue) << i;
      ASSERT_EQ(displayable[i] != 0, shown) << i;
    }
  });
}

TEST(Colorants, TransformsAndSumsHaveTheBitsOfTheSingleCalls) {
  constexpr std::size_t kCurves = 515;
  std::vector<double> samples(40 * kCurves);
  Random random(4);
  for (double& sample : samples) sample = random.Between(0.0, 102.0);
  samples[0] = kUnset, samples[1] = 0.0, samples[2] = std::nan(""), samples[3] = 150.0, samples[4] = 0.01;
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

// FNV-1a over what a judged set consists of. The value came out of g++ and clang++, with and without optimisation.
TEST(Bits, OfAJudgedSetAreTheSameOnEveryPlatform) {
  const Pairs pairs(4'099, 5);
  OnEverySet([&] {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (std::int32_t system = 0; system < kDifferenceSystems; ++system) {
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

}  // namespace
}  // namespace vrx
