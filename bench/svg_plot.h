// Two kinds of plot as SVG: lines over a logarithmic axis, and bars.

#ifndef BENCH_SVG_PLOT_H_
#define BENCH_SVG_PLOT_H_

#include <string>
#include <utility>
#include <vector>

namespace vrx::bench {

struct Series {
  std::string name;
  std::vector<std::pair<double, double>> points;
};

struct Bar {
  std::string name;
  double value;
};

/// Writes lines over a logarithmic x axis; the y axis begins at 0.
void WriteLinePlot(const std::string& path, const std::string& title, const std::string& x,
                   const std::string& y, const std::vector<Series>& series);

/// Writes horizontal bars with their values.
void WriteBarPlot(const std::string& path, const std::string& title, const std::vector<Bar>& bars);

}  // namespace vrx::bench

#endif  // BENCH_SVG_PLOT_H_
