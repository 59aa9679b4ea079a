#include "bench/svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace vrx::bench {
namespace {

constexpr const char* kColors[] = {"#1b6ca8", "#c0392b", "#2e7d32", "#8e44ad", "#b9770e", "#444444"};

std::string Fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string Text(double x, double y, const std::string& text, const std::string& more = "") {
  return "<text x=\"" + Fixed(x, 1) + "\" y=\"" + Fixed(y, 1) + "\" " + more + ">" + text + "</text>\n";
}

std::string Line(double x1, double y1, double x2, double y2, const std::string& color) {
  return "<line x1=\"" + Fixed(x1, 1) + "\" y1=\"" + Fixed(y1, 1) + "\" x2=\"" + Fixed(x2, 1) + "\" y2=\"" +
         Fixed(y2, 1) + "\" stroke=\"" + color + "\"/>\n";
}

void Write(const std::string& path, int width, int height, const std::string& title,
           const std::string& body) {
  std::ofstream file(path);
  file << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
       << "\" font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" "
          "fill=\"white\"/>\n"
       << Text(16, 22, title, "font-size=\"14\" font-weight=\"bold\"") << body << "</svg>\n";
}

}  // namespace

void WriteLinePlot(const std::string& path, const std::string& title, const std::string& x,
                   const std::string& y, const std::vector<Series>& series) {
  constexpr double kLeft = 60, kRight = 500, kTop = 40, kBottom = 330;
  double most = 0.0, low = HUGE_VAL, high = 0.0;
  for (const Series& s : series) {
    for (const auto& [px, py] : s.points)
      most = std::max(most, py), low = std::min(low, px), high = std::max(high, px);
  }
  most *= 1.1;
  const auto toX = [&](double v) {
    return kLeft + (kRight - kLeft) * std::log10(v / low) / std::log10(high / low);
  };
  const auto toY = [&](double v) { return kBottom - (kBottom - kTop) * v / most; };
  std::string body =
      Line(kLeft, kBottom, kRight, kBottom, "black") + Line(kLeft, kTop, kLeft, kBottom, "black");
  for (double v = low; v <= high * 1.01; v *= 10) {
    body += Text(toX(v), kBottom + 18,
                 "10"
                 "<tspan dy=\"-4\" font-size=\"9\">" +
                     Fixed(std::log10(v), 0) + "</tspan>",
                 "text-anchor=\"middle\"");
  }
  for (int k = 1; k <= 5; ++k) {
    const double v = most * k / 5;
    body += Line(kLeft, toY(v), kRight, toY(v), "#dddddd") +
            Text(kLeft - 6, toY(v) + 4, Fixed(v, 1), "text-anchor=\"end\"");
  }
  body +=
      Text((kLeft + kRight) / 2, kBottom + 40, x, "text-anchor=\"middle\"") + Text(kLeft + 4, kTop - 6, y);
  for (std::size_t k = 0; k < series.size(); ++k) {
    const std::string color = kColors[k % std::size(kColors)];
    body += "<polyline fill=\"none\" stroke-width=\"2\" stroke=\"" + color + "\" points=\"";
    for (const auto& [px, py] : series[k].points) body += Fixed(toX(px), 1) + "," + Fixed(toY(py), 1) + " ";
    body += "\"/>\n" + Text(kRight + 12, kTop + 16 + 18 * static_cast<double>(k), series[k].name,
                            "fill=\"" + color + "\"");
  }
  Write(path, 700, 390, title, body);
}

void WriteBarPlot(const std::string& path, const std::string& title, const std::vector<Bar>& bars) {
  constexpr double kLeft = 430, kRight = 760, kTop = 40, kStep = 20;
  double most = 1.0;
  for (const Bar& bar : bars) most = std::max(most, bar.value);
  std::string body;
  for (std::size_t k = 0; k < bars.size(); ++k) {
    const double y = kTop + kStep * static_cast<double>(k), width = (kRight - kLeft) * bars[k].value / most;
    body += Text(kLeft - 8, y + 12, bars[k].name, "text-anchor=\"end\"");
    body += "<rect x=\"" + Fixed(kLeft, 1) + "\" y=\"" + Fixed(y, 1) + "\" width=\"" + Fixed(width, 1) +
            "\" height=\"15\" fill=\"#1b6ca8\"/>\n" +
            Text(kLeft + width + 6, y + 12, Fixed(bars[k].value, 1));
  }
  Write(path, 820, static_cast<int>(kTop + kStep * static_cast<double>(bars.size()) + 16), title, body);
}

}  // namespace vrx::bench
