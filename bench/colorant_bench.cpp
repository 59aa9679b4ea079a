// Blending, prediction and the comparison of formulas, each beside the bare work that it cannot do without:
// the same sums over plain arrays, or the standard library's own answer. Before anything is timed the two
// answers are compared, and a difference ends the program.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include <vrxmath/formula/prediction.h>

#include "bench/harness.h"

namespace vrx {
namespace {

constexpr int32_t kLevels = 10;
constexpr int32_t kLines = 20;
constexpr int32_t kFormulas = 1000;

using Curve = std::array<double, kWavelengths>;
struct PlainLevel {
  Curve K, S;
};
using PlainColorant = std::array<PlainLevel, kLevels>;

double Draw(std::mt19937_64& generator) {
  return static_cast<double>(generator() >> 11) * 0x1p-53;
}

PlainColorant DrawColorant(std::mt19937_64& generator) {
  PlainColorant colorant;
  for (PlainLevel& level : colorant) {
    for (double& K : level.K) K = 5.0 * Draw(generator);
    for (double& S : level.S) S = 0.1 + Draw(generator);
  }
  return colorant;
}

CColorant MakeColorant(const PlainColorant& plain, uint32_t id) {
  CColorant colorant;
  colorant.SetId(id);
  for (std::size_t i = 0; i < kLevels; ++i) {
    CColorantLevel level(1);
    level.concentration = 0.1 * static_cast<double>(i + 1);
    std::copy(plain[i].K.begin(), plain[i].K.end(), level.values[0].absorption.begin());
    std::copy(plain[i].S.begin(), plain[i].S.end(), level.values[0].scattering.begin());
    colorant.AppendLevel(level);
  }
  return colorant;
}

struct Data {
  std::array<PlainColorant, 5> plain;
  CColorantSystemData system;
  CDbFormula formula;                            // one fifth of each colorant: concentration 0.2, level 1
  std::array<CArrayVarex<CDbFormula>, 2> pairs;  // the same formulas, the second ones shuffled
};

CDbFormula DrawFormula(std::mt19937_64& generator) {
  CDbFormula formula;
  for (int32_t i = 0; i < kLines; ++i) {
    CDbFormulaElement line;
    line.componentId = 100 + static_cast<int32_t>(generator() % 30);
    line.amount = Draw(generator);
    formula.Add(line);
  }
  return formula;
}

const Data& Shared() {
  static const Data data = [] {
    Data d;
    std::mt19937_64 generator(5);
    for (std::size_t i = 0; i < d.plain.size(); ++i) {
      d.plain[i] = DrawColorant(generator);
      d.system.colorants.Add(MakeColorant(d.plain[i], static_cast<uint32_t>(i)));
      CDbFormulaElement line;
      line.componentId = static_cast<int32_t>(i);
      line.amount = 1.0;
      d.formula.Add(line);
    }
    for (int32_t i = 0; i < kFormulas; ++i) {
      CDbFormula formula = DrawFormula(generator);
      d.pairs[0].Add(formula);
      std::shuffle(formula.begin(), formula.end(), generator);
      d.pairs[1].Add(formula);
    }
    return d;
  }();
  return data;
}

// The bare work.

PlainColorant BlendPlain(const PlainColorant& a, const PlainColorant& b) {
  PlainColorant blend;
  for (std::size_t i = 0; i < kLevels; ++i) {
    for (std::size_t w = 0; w < kWavelengths; ++w) {
      blend[i].K[w] = 0.25 * a[i].K[w] + 0.75 * b[i].K[w];
      blend[i].S[w] = 0.25 * a[i].S[w] + 0.75 * b[i].S[w];
    }
  }
  return blend;
}

Curve PredictPlain(const std::array<PlainColorant, 5>& colorants) {
  Curve percent;
  for (std::size_t w = 0; w < kWavelengths; ++w) {
    double K = 0.0, S = 0.0;
    for (const PlainColorant& colorant : colorants) {
      K += 0.2 * colorant[1].K[w];
      S += 0.2 * colorant[1].S[w];
    }
    const double ks = K / S;
    const double internal = 1.0 + ks - std::sqrt(ks * ks + 2.0 * ks);
    percent[w] = 100.0 * (0.04 + 0.96 * 0.4 * internal / (1.0 - 0.6 * internal));
  }
  return percent;
}

bool IsPermutation(const CDbFormula& a, const CDbFormula& b) {
  return std::is_permutation(a.begin(), a.end(), b.begin(), b.end());
}

bool AnswersAgree() {
  const Data& data = Shared();
  CColorantArray colorants = data.system.colorants;
  colorants.Blend(0, 1, 0.25, 0.75);
  const PlainColorant blend = BlendPlain(data.plain[0], data.plain[1]);
  const CReflData curve = PredictReflectance(data.formula, data.system);
  const Curve percent = PredictPlain(data.plain);
  for (std::size_t w = 0; w < kWavelengths; ++w) {
    const auto i = static_cast<int32_t>(w);
    if (colorants[0].GetLevel(7).values[0].absorption[i] != blend[7].K[w]) return false;
    if (!(std::fabs(curve[i] - percent[w]) < 1e-11)) return false;
  }
  for (int32_t i = 0; i < kFormulas; ++i) {
    if (!(data.pairs[0][i] == data.pairs[1][i])) return false;
    if ((data.pairs[0][i] == data.pairs[1][0]) != IsPermutation(data.pairs[0][i], data.pairs[1][0])) {
      return false;
    }
  }
  return true;
}

// A thousand comparisons of 20-line formulas, all equal but shuffled: the dearest case.
template <class COMPARE>
bench::Work CompareFormulas(COMPARE compare) {
  return [compare] {
    const Data& data = Shared();
    int32_t equal = 0;
    for (int32_t i = 0; i < kFormulas; ++i) equal += compare(data.pairs[0][i], data.pairs[1][i]) ? 1 : 0;
    bench::Keep(&equal);
  };
}

void MeasureAll(bench::Table& table) {
  CColorantArray colorants = Shared().system.colorants;
  PlainColorant plain = Shared().plain[0];
  table.Compare(
      "blend of two colorants of ten levels", "the sums alone",
      [&] {
        colorants.Blend(0, 1, 0.25, 0.75);
        bench::Keep(colorants.GetData());
      },
      [&] {
        plain = BlendPlain(plain, Shared().plain[1]);
        bench::Keep(&plain);
      },
      1e9);
  table.Compare(
      "curve of a formula of five colorants", "the sums alone",
      [] {
        const CReflData curve = PredictReflectance(Shared().formula, Shared().system);
        bench::Keep(curve.GetData());
      },
      [] {
        const Curve curve = PredictPlain(Shared().plain);
        bench::Keep(&curve);
      },
      1e9);
  table.Compare("comparison of formulas of 20 lines", "std::is_permutation",
                CompareFormulas([](const CDbFormula& a, const CDbFormula& b) { return a == b; }),
                CompareFormulas(IsPermutation), 1e9 / kFormulas);
}

}  // namespace
}  // namespace vrx

int main(int argc, char** argv) {
  if (!vrx::AnswersAgree()) {
    std::fputs("colorant_bench: an answer differs from that of the bare work\n", stderr);
    return 1;
  }
  vrx::bench::Table table(argc, argv);
  vrx::MeasureAll(table);
  return 0;
}
