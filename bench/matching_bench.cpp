// Recipes: how many targets a second, how near they come, and what two cores add.
//
//   matching_bench EXAMPLES                 # the folder examples/; about a minute
//   VRX_INSTRUCTION_SET=avx2 matching_bench EXAMPLES
//
// The six example formulas must come back from their curves, with the same bits on one thread and on two and with every
// instruction set of the machine, before anything is timed. Times are processor time of one thread; only the comparison of
// cores takes the time that passes.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <vrxio/files/curve_reader.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxmath/formula/prediction.h>
#include <vrxmath/matching/recipe.h>
#include <vrxmath/numeric/instruction_set.h>

#include "bench/harness.h"

namespace vrx::bench {
namespace {

std::vector<CRecipeTarget> ReadTargets(const std::string& path) {
  io::CurveReader curves(io::CsvReader(path), false);
  io::CurveRow row;
  std::vector<CRecipeTarget> targets;
  while (curves.Next(row)) targets.emplace_back().curve = row.curve;
  return targets;
}

CRecipeSettings Settings(int32_t mostColorants) {
  CRecipeSettings settings;
  settings.mostColorants = mostColorants;
  settings.order = RecipeOrder::kColor;
  settings.mode = SaundersonMode::kExcluded;
  return settings;
}

CRecipeArray Match(const CColorantSystemData& system, const CRecipeTarget& target,
                   const CRecipeSettings& settings) {
  CRecipeArray recipes;
  const RecipeOutcome outcome = FormulateRecipes(system, {}, target, settings, recipes);
  Require(outcome.fault == RecipeFault::kNone && !recipes.IsEmpty(), "a target without a recipe");
  return recipes;
}

std::vector<uint64_t> BitsOf(const CRecipeArray& recipes) {
  std::vector<uint64_t> bits;
  for (const CRecipe& recipe : recipes) {
    for (const CDbFormulaElement& line : recipe.formula) {
      bits.push_back(static_cast<uint64_t>(line.componentId));
      bits.push_back(std::bit_cast<uint64_t>(line.amount));
    }
    bits.push_back(std::bit_cast<uint64_t>(recipe.worst));
  }
  return bits;
}

// The answers that a recipe search must give before its speed means anything.
void CheckAnswers(const io::ColorSystem& system, const std::string& folder,
                  const std::vector<CRecipeTarget>& targets) {
  CRecipeSettings settings = Settings(4);
  settings.mode = SaundersonMode::kIncluded;
  for (const io::NamedFormula& named : io::ReadFormulas(folder + "/acrylic_formulas.json", system)) {
    CRecipeTarget target;
    target.curve = PredictReflectance(named.formula, system.data);
    const CDbFormula found = Match(system.data, target, settings)[0].formula;
    bool isSame = found.GetSize() == named.formula.GetSize();
    for (const CDbFormulaElement& line : named.formula) {
      isSame = isSame && std::any_of(found.begin(), found.end(), [&](const CDbFormulaElement& other) {
                 return other.componentId == line.componentId && std::fabs(other.amount - line.amount) < 1e-4;
               });
    }
    Require(isSame, named.name);
  }
  settings = Settings(3);
  const InstructionSet before = CurrentInstructionSet();
  for (const CRecipeTarget& target : targets) {
    settings.threads = 1;
    const std::vector<uint64_t> expected = BitsOf(Match(system.data, target, settings));
    settings.threads = 2;
    Require(BitsOf(Match(system.data, target, settings)) == expected, "two threads");
    for (const InstructionSet set : kInstructionSets) {
      if (!UseInstructionSet(set)) continue;
      Require(BitsOf(Match(system.data, target, settings)) == expected, InstructionSetName(set));
    }
    UseInstructionSet(before);
  }
}

struct Figures {
  double seconds = 1e300;  // a target
  double median = 0.0;     // of the worst differences
};

// The fastest of some rounds over all targets, and how near the best recipes come.
Figures Measure(const CColorantSystemData& system, const std::vector<CRecipeTarget>& targets,
                const CRecipeSettings& settings, int rounds) {
  Figures figures;
  for (int round = 0; round < rounds; ++round) {
    std::vector<double> worst;
    worst.reserve(targets.size());
    const double start = Now(Clock::kProcessor);
    for (const CRecipeTarget& target : targets) worst.push_back(Match(system, target, settings)[0].worst);
    const double seconds = Now(Clock::kProcessor) - start;
    figures.seconds = std::min(figures.seconds, seconds / static_cast<double>(targets.size()));
    std::sort(worst.begin(), worst.end());
    figures.median = 0.5 * (worst[(worst.size() - 1) / 2] + worst[worst.size() / 2]);
  }
  return figures;
}

// A system of 100 colorants: those that are given, and blends of two of them.
CColorantSystemData HundredColorants(const CColorantSystemData& system) {
  CColorantSystemData larger = system;
  Random random(15);
  const int32_t own = system.colorants.GetSize();
  for (uint32_t id = 1001; larger.colorants.GetSize() < 100; ++id) {
    const auto pick = [&] { return static_cast<int32_t>(random.Between(0.0, own)); };
    const CColorantValues& a = system.colorants[pick()].GetLevel(0).values[0];
    const CColorantValues& b = system.colorants[pick()].GetLevel(0).values[0];
    const double part = random.Between(0.2, 0.8);
    CColorantLevel level(1);
    level.concentration = 1.0;
    for (int32_t w = 0; w < kWavelengths; ++w) {
      level.values[0].absorption[w] = part * a.absorption[w] + (1.0 - part) * b.absorption[w];
      level.values[0].scattering[w] = part * a.scattering[w] + (1.0 - part) * b.scattering[w];
    }
    CColorant colorant;
    colorant.SetId(id);
    colorant.AppendLevel(level);
    larger.colorants.Add(colorant);
  }
  return larger;
}

void PrintRow(const char* what, const Figures& figures, double mostMedian) {
  Require(figures.median <= mostMedian, what);
  std::printf("%-44s %9.4f %9.1f %12.3f\n", what, figures.seconds, 1.0 / figures.seconds, figures.median);
  std::fflush(stdout);
}

// What a subset costs where a colorant is required, limited or neither.
void CompareLimits(const CColorantSystemData& system, const std::vector<CRecipeTarget>& targets) {
  const CRecipeSettings free = Settings(4);
  CRecipeSettings required = free, limited = free;
  const uint32_t id = system.colorants[9].GetId();
  required.components.Add({id, CRecipeComponent::kRequired, 0.0, 1.0, 0.0});
  limited.components.Add({system.colorants[0].GetId(), CRecipeComponent::kOffered, 0.0, 0.5, 0.0});
  const auto perSubset = [&](const CRecipeSettings& settings) {
    const auto subsets = static_cast<double>(CheckRecipe(system, {}, targets[0], settings).subsets);
    return Measure(system, targets, settings, 2).seconds / subsets;
  };
  const double without = perSubset(free);
  std::printf("a subset with a required colorant: %.2f times one without; with a largest share: %.2f times\n",
              perSubset(required) / without, perSubset(limited) / without);
  std::fflush(stdout);
}

void CompareCores(const CColorantSystemData& system, const std::vector<CRecipeTarget>& targets) {
  CRecipeSettings one = Settings(5), two = one;
  two.threads = 2;
  std::size_t next = 0;
  const auto work = [&](const CRecipeSettings& settings) {
    return [&] { Match(system, targets[next], settings); };
  };
  const Work works[] = {work(one), work(two)};
  std::array<double, 2> total{};
  for (next = 0; next < targets.size(); next += 3) {
    const std::vector<double> seconds = SecondsOf({works[0], works[1]}, 5, Clock::kWall);
    for (std::size_t k = 0; k < 2; ++k) total[k] += seconds[k];
  }
  std::printf("two cores: %.2f times as fast as one (up to 5 colorants, time that passed)\n",
              total[0] / total[1]);
}

int Run(const std::string& folder) {
  const io::ColorSystem paints = io::ReadColorSystem(folder + "/acrylic_paints.json");
  std::vector<CRecipeTarget> targets = ReadTargets(folder + "/chart_average.csv");
  for (const CRecipeTarget& sample : ReadTargets(folder + "/cie_test_samples.csv")) targets.push_back(sample);
  CheckAnswers(paints, folder, targets);

  std::printf("%zu targets, three illuminants, one thread, %s\n", targets.size(),
              InstructionSetName(CurrentInstructionSet()));
  std::printf("%-44s %9s %9s %12s\n", "", "s each", "a second", "median dE00");
  PrintRow("27 paints up to 4: 20,853 subsets", Measure(paints.data, targets, Settings(4), 5), 0.27);
  PrintRow("27 paints up to 5: 101,583 subsets", Measure(paints.data, targets, Settings(5), 2), 0.20);
  const CColorantSystemData hundred = HundredColorants(paints.data);
  const std::vector<CRecipeTarget> few = {targets[1], targets[14], targets[30]};
  PrintRow("100 colorants up to 4: 4,087,975 subsets", Measure(hundred, few, Settings(4), 1), 1.0);
  CRecipeSettings ranked = Settings(4);
  ranked.prerank = 2000;
  PrintRow("the same, pre-ranked to 2,000 of each size", Measure(hundred, few, ranked, 2), 1.0);
  CompareLimits(hundred, few);
  CompareCores(paints.data, targets);
  return 0;
}

}  // namespace
}  // namespace vrx::bench

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: matching_bench EXAMPLES\n");
    return 2;
  }
  return vrx::bench::Run(argv[1]);
}
