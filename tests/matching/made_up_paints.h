// A colour system of made-up paints with smooth curves, for tests of recipes.

#ifndef TESTS_MATCHING_MADE_UP_PAINTS_H_
#define TESTS_MATCHING_MADE_UP_PAINTS_H_

#include <cmath>
#include <initializer_list>
#include <utility>

#include <vrxmath/formula/prediction.h>

namespace vrx::test {

inline CColorant Paint(uint32_t id, double strength, double centre, double width, double scattering,
                       double base) {
  CColorant colorant;
  colorant.SetId(id);
  CColorantLevel level(1);
  level.concentration = 1.0;
  for (int32_t w = 0; w < kWavelengths; ++w) {
    const double distance = (w - centre) / width;
    level.values[0].absorption[w] = base + strength * std::exp(-distance * distance);
    level.values[0].scattering[w] = scattering;
  }
  colorant.AppendLevel(level);
  return colorant;
}

/// White 1, black 2, yellow 3, orange 4, red 5, violet 6, blue 7, green 8.
inline CColorantSystemData MadeUpPaints(int32_t model = kModelCoatings) {
  CColorantSystemData system;
  system.opticalModel = model;
  const double paints[][5] = {{0.02, 0.0, 4.0, 1.0, 0.002}, {0.0, 20.0, 10.0, 0.1, 30.0},
                              {3.0, 6.0, 5.0, 0.4, 0.02},   {4.0, 12.0, 5.0, 0.3, 0.03},
                              {5.0, 16.0, 6.0, 0.2, 0.05},  {6.0, 20.0, 6.0, 0.1, 0.06},
                              {9.0, 27.0, 8.0, 0.1, 0.05},  {7.0, 33.0, 9.0, 0.15, 0.3}};
  uint32_t id = 1;
  for (const auto& [strength, centre, width, scattering, base] : paints) {
    system.colorants.Add(Paint(id++, strength, centre, width, scattering, base));
  }
  system.colorants[0].SetKind(kKindCalibrationWhite);
  return system;
}

inline CDbFormula Mixture(std::initializer_list<std::pair<int32_t, double>> lines) {
  CDbFormula formula;
  for (const auto& [id, amount] : lines) {
    CDbFormulaElement line;
    line.componentId = id;
    line.amount = amount;
    formula.Add(line);
  }
  return formula;
}

}  // namespace vrx::test

#endif  // TESTS_MATCHING_MADE_UP_PAINTS_H_
