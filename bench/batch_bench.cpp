// The batch path beside its peers, in one run: first the answers, then one table of ratios, and plots for docs/.
//
//   batch_bench [--tsv] [--svg FOLDER] [--only TEXT]
//
// Peers: the C libraries lcms2 (one colour a call) and OpenBLAS (a matrix product), a plain pass of reading, and our own single
// calls. `reach` is what was asked of a ratio; it depends on the instruction set. One thread, but for the last rows.

#include <cblas.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <lcms2.h>
#include <string>
#include <vector>

#include <vrxmath/batch/appearance_batch.h>
#include <vrxmath/batch/color_space_batch.h>
#include <vrxmath/batch/color_value_batch.h>
#include <vrxmath/batch/difference_batch.h>
#include <vrxmath/batch/judgement_batch.h>
#include <vrxmath/batch/nearest.h>
#include <vrxmath/batch/tristimulus_batch.h>
#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/display_color.h>
#include <vrxmath/colorimetry/weight_tables.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/numeric/instruction_set.h>

#include "bench/harness.h"
#include "bench/svg_plot.h"

namespace vrx::bench {
namespace {

constexpr vrxIlluminant kD65 = vrxIllumD65;
constexpr std::int32_t kObserver = kObserver10;

Table* table = nullptr;
std::string only;

bool Wanted(const std::string& work) {
  return only.empty() || work.find(only) != std::string::npos;
}

void Report(Row row) {
  table->Report(std::move(row));
}

std::string SetName() {
  return InstructionSetName(CurrentInstructionSet());
}
bool Is512() {
  return CurrentInstructionSet() == InstructionSet::kAvx512;
}

struct Colors {
  std::vector<double> xyz, lab;  // n x 3, n x 5
  std::vector<std::vector<double>> columns{5};

  Colors(std::size_t n, std::uint64_t seed, const Colors* near = nullptr) : xyz(3 * n), lab(5 * n) {
    Random random(seed);
    for (std::size_t i = 0; i < xyz.size(); ++i) {
      xyz[i] = near == nullptr ? random.Between(3.0, 90.0) : near->xyz[i] * random.Between(0.97, 1.03);
    }
    XyzToLabBatch(kD65, kObserver, xyz, lab);
    for (auto& column : columns) column.resize(n);
    for (std::size_t i = 0; i < lab.size(); ++i) columns[i % 5][i / 5] = lab[i];
  }
  ColorBatch Rows() const { return {xyz, lab}; }
  ColorBatch Columns() const {
    return {xyz, BatchView<const double, 5>({columns[0], columns[1], columns[2], columns[3], columns[4]})};
  }
};

cmsCIEXYZ WhiteForLcms() {
  CTrisValues white;
  WhitePoint(kD65, kObserver, white);
  return {white[0], white[1], white[2]};
}

// ---- curves to tristimulus values

void MeasureTristimulus(std::size_t n, std::size_t illuminants, const std::string& reach) {
  const std::string work = "XYZ, " + std::to_string(illuminants) + " illuminant(s), " + SetName();
  if (!Wanted(work)) return;
  Random random(1);
  HugeVector curves(40 * n), ours(3 * illuminants * n), theirs(ours.size());
  std::vector<double> weights(3 * illuminants * 40);
  for (double& sample : curves) sample = random.Between(0.5, 100.0);
  std::vector<vrxIlluminant> list;
  std::vector<BatchView<double, 3>> targets;
  for (std::size_t j = 0; j < illuminants; ++j) {
    list.push_back(static_cast<vrxIlluminant>(j));
    targets.emplace_back(std::span(ours).subspan(3 * j), 3 * illuminants);
    const double* const columns = WeightTable(list[j], kObserver);
    for (std::size_t i = 0; i < 40; ++i) {
      for (std::size_t k = 0; k < 3; ++k) weights[(i * illuminants + j) * 3 + k] = columns[40 * k + i];
    }
  }
  const auto rows = static_cast<blasint>(n), width = static_cast<blasint>(3 * illuminants);
  const Work batch = [&] { TristimulusBatch(list, kObserver, CurveBatch{curves}, targets); };
  const Work blas = [&] {
    cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, rows, width, 40, 0.01, curves.data(), 40,
                weights.data(), width, 0.0, theirs.data(), width);
  };
  // A pass that only reads: sixteen sums, so that it waits for the memory and not for itself.
  double total = 0.0;
  const Work read = [&] {
    double sums[16] = {};
    for (std::size_t i = 0; i + 16 <= curves.size(); i += 16) {
      for (std::size_t k = 0; k < 16; ++k) sums[k] += curves[i + k];
    }
    for (const double sum : sums) total += sum;
    Keep(&total);
  };
  batch(), blas();
  for (std::size_t i = 0; i < ours.size(); i += 7) Require(std::fabs(ours[i] - theirs[i]) < 1e-9, work);
  const auto seconds = SecondsOf({batch, blas, read}, 9);
  const double scale = 1e9 / static_cast<double>(n);
  if (illuminants == 1) Report({work, "read pass", seconds[0] * scale, seconds[2] * scale, "<= 1.5", true});
  Report({work, "OpenBLAS dgemm", seconds[0] * scale, seconds[1] * scale, reach});
}

// ---- colour spaces

void MeasureLab(std::size_t n) {
  if (!Wanted("L*a*b*")) return;
  const Colors colors(n, 2);
  std::vector<double> lab(3 * n), full(5 * n);
  std::vector<cmsCIELab> theirs(n);
  std::vector<cmsCIELCh> lch(n);
  const cmsCIEXYZ white = WhiteForLcms();
  const auto convert = [&](std::size_t i) {
    const cmsCIEXYZ xyz = {colors.xyz[3 * i], colors.xyz[3 * i + 1], colors.xyz[3 * i + 2]};
    cmsXYZ2Lab(&white, &theirs[i], &xyz);
  };
  const Work batch = [&] { XyzToLabOnlyBatch(kD65, kObserver, colors.xyz, lab); };
  const Work batchHue = [&] { XyzToLabBatch(kD65, kObserver, colors.xyz, full); };
  const Work lcms = [&] {
    for (std::size_t i = 0; i < n; ++i) convert(i);
  };
  const Work lcmsHue = [&] {
    for (std::size_t i = 0; i < n; ++i) convert(i), cmsLab2LCh(&lch[i], &theirs[i]);
  };
  batch(), batchHue(), lcmsHue();
  for (std::size_t i = 0; i < n; ++i) {
    Require(std::fabs(lab[3 * i + 1] - theirs[i].a) < 2e-3 && std::fabs(full[5 * i + 3] - lch[i].C) < 2e-3,
            "L*a*b*");
  }
  const auto s = SecondsOf({batch, lcms, batchHue, lcmsHue});
  const double scale = 1e9 / static_cast<double>(n);
  Report({"XYZ to L*a*b*, " + SetName(), "lcms2 cmsXYZ2Lab", s[0] * scale, s[1] * scale,
          Is512() ? ">= 6" : ">= 4.5"});
  Report({"XYZ to L*a*b* with hue, " + SetName(), "lcms2 + cmsLab2LCh", s[2] * scale, s[3] * scale,
          Is512() ? ">= 7" : ">= 5.5"});
}

// ---- differences

using LcmsDifference = double (*)(const cmsCIELab&, const cmsCIELab&);

void MeasureSystem(std::size_t n, std::int32_t system, const char* name, LcmsDifference peer,
                   double agreement, const std::string& reachRows, const std::string& reachTotals) {
  if (!Wanted(name)) return;
  const Colors standards(n, 3), samples(n, 4, &standards);
  const CDifferenceSettings settings = DefaultSettings(system);
  std::vector<double> rows(7 * n), totals(n), theirs(n);
  std::vector<cmsCIELab> a(n), b(n);
  std::vector<Color> standard(n), sample(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double *s = &standards.lab[5 * i], *t = &samples.lab[5 * i];
    a[i] = {s[0], s[1], s[2]}, b[i] = {t[0], t[1], t[2]};
    standard[i] = {{50.0, 50.0, 50.0}, {s[0], s[1], s[2], s[3], s[4]}};
    sample[i] = {{50.0, 50.0, 50.0}, {t[0], t[1], t[2], t[3], t[4]}};
  }
  std::vector<Difference> single(n);
  const Work batch = [&] { DifferenceBatch(settings, 0.0, standards.Rows(), samples.Rows(), rows); };
  const Work batchTotals = [&] {
    TotalDifferenceBatch(settings, 0.0, standards.Columns(), samples.Columns(), totals);
  };
  const Work lcms = [&] {
    for (std::size_t i = 0; i < n; ++i) theirs[i] = peer(a[i], b[i]);
  };
  const Work singles = [&] {
    for (std::size_t i = 0; i < n; ++i) single[i] = ComputeDifference(settings, standard[i], sample[i], 0.0);
  };
  batch(), batchTotals(), lcms(), singles();
  for (std::size_t i = 0; i < n; ++i) {
    Require(rows[7 * i + 6] == single[i].dE && totals[i] == single[i].dE, name);
    Require(std::fabs(theirs[i] - totals[i]) <= agreement * (1.0 + totals[i]), name);
  }
  const auto s = SecondsOf({batch, batchTotals, lcms, singles});
  const double scale = 1e9 / static_cast<double>(n);
  const std::string of = std::string(name) + ", ";
  Report({of + "seven elements in rows, " + SetName(), "lcms2", s[0] * scale, s[2] * scale, reachRows});
  Report({of + "totals in columns, " + SetName(), "lcms2", s[1] * scale, s[2] * scale, reachTotals});
  if (CurrentInstructionSet() == InstructionSet::kBase) {
    Report({of + "single call", "lcms2", s[3] * scale, s[2] * scale, "no slower than before"});
  }
}

void MeasureDifferences(std::size_t n) {
  const bool wide = Is512();
  MeasureSystem(
      n, vrxSystemCmc, "CMC",
      [](const cmsCIELab& a, const cmsCIELab& b) {
        return cmsCMCdeltaE(const_cast<cmsCIELab*>(&a), const_cast<cmsCIELab*>(&b), 2, 1);
      },
      1e-2, ">= 11", wide ? ">= 20" : ">= 15");
  MeasureSystem(
      n, vrxSystemCie94, "CIE94",
      [](const cmsCIELab& a, const cmsCIELab& b) { return cmsCIE94DeltaE(&a, &b); }, 0.3, ">= 25", ">= 37");
  MeasureSystem(
      n, vrxSystemCie2000, "CIEDE2000",
      [](const cmsCIELab& a, const cmsCIELab& b) { return cmsCIE2000DeltaE(&a, &b, 1, 1, 1); }, 1e-6,
      wide ? ">= 9.5" : ">= 9", wide ? ">= 11.5" : ">= 10");
}

// ---- verdicts, words, indices, display colours

// A batch of n rows beside the single call for each row; both give `kWidth` numbers a row.
template <class NUMBER, std::size_t kWidth, class BATCH, class SINGLE>
void MeasureOwn(std::size_t n, const char* name, const BATCH& batch, const SINGLE& single) {
  if (!Wanted(name)) return;
  std::vector<NUMBER> ours(kWidth * n), expected(ours.size());
  const Work batches = [&] { batch(ours); };
  const Work singles = [&] {
    for (std::size_t i = 0; i < n; ++i) single(i, &expected[kWidth * i]);
  };
  batches(), singles();
  Require(ours == expected, name);
  table->Compare(std::string(name) + ", " + SetName(), "our single call", batches, singles,
                 1e9 / static_cast<double>(n));
}

void MeasureJudging(std::size_t n) {
  const Colors standards(n, 3), samples(n, 4, &standards);
  std::vector<double> deltas(7 * n), totals(n);
  DifferenceBatch(DefaultSettings(vrxSystemLab), 0.0, standards.Rows(), samples.Rows(), deltas);
  std::vector<Difference> delta;
  std::vector<Lab> lab;
  std::vector<CTrisValues> xyz;
  for (std::size_t i = 0; i < n; ++i) {
    const double *d = &deltas[7 * i], *l = &samples.lab[5 * i], *x = &samples.xyz[3 * i];
    delta.push_back({d[0], d[1], d[2], d[3], d[4], d[5], d[6]});
    lab.push_back({l[0], l[1], l[2], l[3], l[4]});
    xyz.emplace_back(x[0], x[1], x[2]);
    totals[i] = d[6];
  }
  const auto components = BatchView<const double, 7>(deltas).Numbers<0, 3>();
  const CBoxTolData box;
  CEllipseData ellipse;
  ellipse[CEllipseData::kAngle] = 30.0, ellipse[CEllipseData::kMajorAxis] = 2.5;
  MeasureOwn<Verdict, 1>(
      n, "box verdicts", [&](auto& verdicts) { BoxVerdictBatch(box, 0.75, components, verdicts); },
      [&](std::size_t i, Verdict* verdict) {
        *verdict = !box.Accepts(delta[i], 1.0) ? kFail : box.Accepts(delta[i], 0.75) ? kPass : kWarning;
      });
  MeasureOwn<Verdict, 1>(
      n, "ellipsoid verdicts",
      [&](auto& verdicts) { EllipseVerdictBatch(ellipse, 0.75, components, verdicts); },
      [&](std::size_t i, Verdict* verdict) { *verdict = ellipse.Judge(delta[i], 0.75); });
  MeasureOwn<Verdict, 1>(
      n, "verdicts on totals", [&](auto& verdicts) { TotalVerdictBatch(1.5, 0.75, totals, verdicts); },
      [&](std::size_t i, Verdict* verdict) { *verdict = box.JudgeTotal(totals[i], 0.75); });
  MeasureOwn<std::int32_t, 3>(
      n, "shade words",
      [&](auto& words) {
        ShadeBatch(BatchView<const double, 5>(samples.lab).Numbers<0, 3>(), components, words);
      },
      [&](std::size_t i, std::int32_t* words) {
        const ShadeWords shade = DescribeShade(lab[i], delta[i]);
        for (std::size_t k = 0; k < 3; ++k) words[k] = shade.words[k];
      });
  const auto index = [&](const char* name, IndexFunction function) {
    MeasureOwn<double, 1>(
        n, name, [&](auto& values) { IndexBatch(function, kD65, kObserver, samples.xyz, values); },
        [&](std::size_t i, double* value) { *value = function(kD65, kObserver, xyz[i]); });
  };
  index("CIE whiteness", &WhitenessCie);
  index("Stensby whiteness", &WhitenessStensby);
  index("E313 yellowness", &YellownessE313Cie);
  MeasureOwn<std::uint8_t, 3>(
      n, "display colours", [&](auto& rgb) { DisplayColorBatch(kD65, kObserver, samples.xyz, rgb); },
      [&](std::size_t i, std::uint8_t* rgb) {
        std::int32_t channels[3];
        XyzToDisplayRgb(kD65, kObserver, xyz[i], channels[0], channels[1], channels[2]);
        for (std::size_t k = 0; k < 3; ++k) rgb[k] = static_cast<std::uint8_t>(channels[k]);
      });
}

// ---- appearance: adaptation, colour-appearance models, uniform spaces, grades

void MeasureAppearance(std::size_t n) {
  const Colors samples(n, 11), standards(n, 12);
  std::vector<Xyz> xyz;
  std::vector<CColorValues> colors(n);
  std::vector<Lab> s, t;
  for (std::size_t i = 0; i < n; ++i) {
    xyz.push_back({samples.xyz[3 * i], samples.xyz[3 * i + 1], samples.xyz[3 * i + 2]});
    colors[i].tristimulus.SetValues(xyz.back());
    const double* a = &standards.lab[5 * i];
    const double* b = &samples.lab[5 * i];
    s.push_back({a[0], a[1], a[2], a[3], a[4]});
    t.push_back({b[0], b[1], b[2], b[3], b[4]});
  }
  const White d65 = {94.811, 100.0, 107.304}, a = {111.144, 100.0, 35.2};
  const Matrix3 matrix = AdaptationMatrix(AdaptationTransform::kCat16, d65, a);
  MeasureOwn<double, 3>(
      n, "CAT16", [&](auto& out) { AdaptBatch(AdaptationTransform::kCat16, d65, a, 1.0, samples.xyz, out); },
      [&](std::size_t i, double* out) {
        const Xyz adapted = Adapt(xyz[i], matrix);
        out[0] = adapted.X, out[1] = adapted.Y, out[2] = adapted.Z;
      });
  White white;
  if (!FindWhite(kD65, kObserver, white)) return;
  const AppearanceTerms terms = AppearanceTermsOf(AppearanceModel::kCam16, white);
  MeasureOwn<double, 6>(
      n, "CAM16",
      [&](auto& out) { AppearanceBatch(AppearanceModel::kCam16, kD65, kObserver, {}, samples.xyz, out); },
      [&](std::size_t i, double* out) {
        const Appearance look = AppearanceFromXyz(terms, xyz[i]);
        const double values[] = {look.J, look.C, look.h, look.Q, look.M, look.s};
        std::copy_n(values, 6, out);
      });
  for (const std::int32_t system : {vrxSystemDin99o, vrxSystemCam16Ucs, vrxSystemOklab, vrxSystemItp}) {
    MeasureOwn<double, 5>(
        n, DifferenceSystemName(system, NameLength::kShort).ToUtf8().c_str(),
        [&](auto& out) { CoordinatesBatch(system, kD65, kObserver, samples.xyz, out); },
        [&](std::size_t i, double* out) {
          FillCoordinates(system, kD65, kObserver, colors[i]);
          std::copy_n(colors[i].lab.GetData(), 5, out);
        });
  }
  for (const GreyScale scale : {GreyScale::kChange, GreyScale::kStaining}) {
    MeasureOwn<double, 1>(
        n, scale == GreyScale::kChange ? "grade of change" : "grade of staining",
        [&](auto& out) { GradeBatch(scale, standards.lab, samples.lab, out); },
        [&](std::size_t i, double* out) { *out = GreyScaleGrade(scale, s[i], t[i]); });
  }
}

// ---- nearest standards, cores, growth

void MeasureNearest(std::size_t n) {
  const std::string work = "nearest 10 of " + std::to_string(n) + ", CIEDE2000, 3 illuminants";
  if (!Wanted(work)) return;
  const Colors library(n, 5), trial(1, 6);
  const ColorBatch libraries[] = {library.Columns(), library.Columns(), library.Columns()};
  const ColorBatch trials[] = {trial.Rows(), trial.Rows(), trial.Rows()};
  const CDifferenceSettings settings = DefaultSettings(vrxSystemCie2000);
  std::vector<double> totals(n);
  std::vector<NearestMatch> matches(10);
  const Work search = [&] { FindNearestBatch(settings, 0.0, trials, libraries, 10, matches); };
  const Work differences = [&] {
    for (int j = 0; j < 3; ++j) TotalDifferenceBatch(settings, 0.0, library.Columns(), trial.Rows(), totals);
  };
  search(), differences();
  for (std::size_t k = 0; k < 10; ++k) {
    Require(totals[matches[k].index] == matches[k].difference, work);
    const auto nearer =
        std::count_if(totals.begin(), totals.end(), [&](double d) { return d < matches[k].difference; });
    Require(static_cast<std::size_t>(nearer) <= k, work);
  }
  const auto s = SecondsOf({search, differences}, 7);
  const double scale = 1e9 / static_cast<double>(n);
  Report({work, "the differences alone", s[0] * scale, s[1] * scale, "<= 1.2", true});
}

void MeasureCores(std::size_t n) {
  if (!Wanted("cores")) return;
  const Colors standards(n, 3), samples(n, 4, &standards);
  std::vector<double> totals(n);
  const CDifferenceSettings settings = DefaultSettings(vrxSystemCie2000);
  const auto run = [&](unsigned threads) {
    return [&, threads] {
      TotalDifferenceBatch(settings, 0.0, standards.Columns(), samples.Columns(), totals, {threads, nullptr});
    };
  };
  const auto s = SecondsOf({run(2), run(1)}, 25, Clock::kWall);
  const double scale = 1e9 / static_cast<double>(n);
  Report({"CIEDE2000 on two cores", "on one", s[0] * scale, s[1] * scale, ">= 1.8"});
}

Series Growth(const char* name, const std::function<Work(std::size_t n)>& make) {
  Series series{name, {}};
  for (std::size_t n = 1'000; n <= 10'000'000; n *= 10) {
    series.points.emplace_back(static_cast<double>(n),
                               SecondsOf({make(n)}, 7)[0] * 1e9 / static_cast<double>(n));
  }
  return series;
}

void WritePlots(const std::string& folder) {
  constexpr std::size_t kMost = 10'000'000;
  const Colors standards(kMost, 3), samples(kMost, 4, &standards);
  Random random(1);
  HugeVector curves(40 * kMost), xyz(3 * kMost);
  std::vector<double> totals(kMost);
  for (double& sample : curves) sample = random.Between(0.5, 100.0);
  const auto difference = [&](std::int32_t system) {
    return [&, system](std::size_t n) -> Work {
      const auto first = [n](const ColorBatch& c) { return ColorBatch{c.xyz.Rows(0, n), c.lab.Rows(0, n)}; };
      const ColorBatch s = first(standards.Columns()), t = first(samples.Columns());
      return [&totals, system, s, t, n] {
        TotalDifferenceBatch(DefaultSettings(system), 0.0, s, t, std::span(totals).first(n));
      };
    };
  };
  const std::vector<Series> growth = {
      Growth("curves to XYZ",
             [&](std::size_t n) -> Work {
               return [&, n] {
                 TristimulusBatch(kD65, kObserver, CurveBatch{std::span(curves).first(40 * n)},
                                  std::span(xyz).first(3 * n));
               };
             }),
      Growth("XYZ to L*a*b* with hue",
             [&](std::size_t n) -> Work {
               return [&, n] {
                 static HugeVector lab(5 * kMost);
                 XyzToLabBatch(kD65, kObserver, std::span(standards.xyz).first(3 * n),
                               std::span(lab).first(5 * n));
               };
             }),
      Growth("CMC", difference(vrxSystemCmc)), Growth("CIEDE2000", difference(vrxSystemCie2000))};
  WriteLinePlot(folder + "/batch_growth.svg",
                "Time a row against the count of rows (" + SetName() + ", one core)", "rows", "ns a row",
                growth);
  std::vector<Bar> bars;
  for (const Row& row : table->rows()) {
    if (row.oursOverPeer || row.peer == "on one" || row.peer == "our single call") continue;
    bars.push_back({row.work + " / " + row.peer, row.Ratio()});
  }
  WriteBarPlot(folder + "/batch_peers.svg", "How many times faster than the peer", bars);
}

}  // namespace
}  // namespace vrx::bench

int main(int argc, char** argv) {
  using namespace vrx;
  using namespace vrx::bench;
  std::string folder;
  Table printed(argc, argv);
  table = &printed;
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--svg") == 0) folder = argv[i + 1];
    if (std::strcmp(argv[i], "--only") == 0) only = argv[i + 1];
  }
  openblas_set_num_threads(1);
  const InstructionSet widest = CurrentInstructionSet();
  for (const InstructionSet set : kInstructionSets) {
    if (!UseInstructionSet(set)) continue;
    MeasureLab(2'048);
    MeasureDifferences(2'048);
    MeasureJudging(2'048);
    MeasureAppearance(2'048);
  }
  UseInstructionSet(widest);
  MeasureTristimulus(1'000'000, 1, ">= 2");
  MeasureTristimulus(1'000'000, 3, ">= 1.8");
  MeasureTristimulus(200'000, 26, ">= 1.6");
  MeasureNearest(1'000'000);
  MeasureCores(1'000'000);
  if (!folder.empty()) WritePlots(folder);
  return 0;
}
