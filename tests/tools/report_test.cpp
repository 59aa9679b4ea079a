// Reports of the tool as text: what stands in their tables, facts, pictures and data. tests/report/ looks at them in a browser.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/testing/rows.h"
#include "tests/testing/tool_process.h"

namespace {

using nlohmann::json;
using vrx::test::ParseJson;
using Cells = std::vector<std::string>;

// What stands between two texts, from `at` on, which moves behind it; empty when there is no more.
std::string Between(const std::string& text, const std::string& first, const std::string& last,
                    std::size_t& at) {
  const std::size_t begin = text.find(first, at), end = text.find(last, begin + first.size());
  if (begin == std::string::npos || end == std::string::npos) {
    at = std::string::npos;
    return {};
  }
  at = end + last.size();
  return text.substr(begin + first.size(), end - begin - first.size());
}
std::string Between(const std::string& text, const std::string& first, const std::string& last) {
  std::size_t at = 0;
  return Between(text, first, last, at);
}

// HTML as it is read: without elements, and with the characters that were escaped.
std::string Read(const std::string& html) {
  std::string text;
  for (std::size_t i = 0; i < html.size(); ++i) {
    if (html[i] == '<')
      i = html.find('>', i);
    else
      text += html[i];
  }
  for (const auto& [escape, character] :
       {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}}) {
    for (std::size_t at = 0; (at = text.find(escape, at)) != std::string::npos; ++at)
      text.replace(at, std::string(escape).size(), character);
  }
  return text;
}

// The parts of a text that begin with `begin`, each up to `end`.
Cells Parts(const std::string& text, const std::string& begin, const std::string& end) {
  Cells parts;
  for (std::size_t at = 0; at != std::string::npos;) {
    const std::string part = Between(text, begin, end, at);
    if (at != std::string::npos) parts.push_back(part);
  }
  return parts;
}

// The cells of every row below the headings of the table that begins with `table`.
std::vector<Cells> TableOf(const std::string& page, const std::string& table) {
  std::vector<Cells> rows;
  const std::string body = Between(page.substr(page.find(table)), "<tbody>", "</tbody>");
  for (const std::string& row : Parts(body, "<tr>", "</tr>")) {
    Cells& cells = rows.emplace_back();
    for (const std::string& cell : Parts(row, "<t", "</t")) cells.push_back(Read("<" + cell));
  }
  return rows;
}
Cells Headings(const std::string& page) {
  Cells headings = Parts(Between(page, "<thead>", "</thead>"), "<th scope=\"col\">", "</th>");
  std::ranges::transform(headings, headings.begin(), Read);
  return headings;
}

// The lines of a csv output, whose fields may be quoted.
std::vector<Cells> Csv(const std::string& text) {
  std::vector<Cells> lines(1, Cells(1));
  bool isQuoted = false;
  for (const char c : text) {
    if (c == '"')
      isQuoted = !isQuoted;
    else if (isQuoted || (c != ',' && c != '\n'))
      lines.back().back() += c;
    else if (c == ',')
      lines.back().emplace_back();
    else
      lines.emplace_back(1);
  }
  lines.pop_back();
  return lines;
}

// True where a cell of a report is a cell of the csv, rounded to the decimals that it shows.
bool IsRounded(const std::string& shown, const std::string& csv) {
  if (csv.empty() && shown == "-") return true;
  char* end = nullptr;
  const double value = std::strtod(csv.c_str(), &end);
  if (csv.empty() || *end != '\0') return shown == csv;
  const std::size_t point = shown.find('.');
  const double decimals = point == std::string::npos ? 0 : static_cast<double>(shown.size() - point - 1);
  return std::fabs(std::strtod(shown.c_str(), nullptr) - value) <= 0.5000001 * std::pow(10.0, -decimals);
}

// The numbers behind each `begin` in an attribute or path.
std::vector<std::array<double, 2>> Points(const std::string& path, const std::string& begin) {
  std::vector<std::array<double, 2>> points;
  for (std::size_t at = path.find(begin); at != std::string::npos; at = path.find(begin, at + 1)) {
    char* next = nullptr;
    const double x = std::strtod(&path[at + begin.size()], &next);
    points.push_back({x, std::strtod(next + 1, nullptr)});
  }
  return points;
}

// A picture, whose points are brought to the values of its axes by the first and the last label of each.
class Picture {
 public:
  // `panel` counts from 0 those that stand below each other.
  Picture(const std::string& page, const std::string& caption, std::size_t panel = 0)
      : svg_(Between(page.substr(page.find("<figcaption>" + caption)), "<svg", "</svg>")),
        x_(Axis("middle", "x=\"", 0, panel)),
        y_(Axis("end", "y=\"", 4, panel)) {}  // labels hang 4 below their line

  std::array<double, 2> ValueAt(std::array<double, 2> point) const {
    return {x_.ValueAt(point[0]), y_.ValueAt(point[1])};
  }
  // The marks of one verdict, in their order; those of the lightness beside a plane are strokes of a length of 12.
  std::vector<std::array<double, 2>> Marks(const std::string& verdict) const {
    std::vector<std::array<double, 2>> values;
    for (const std::string& path : Parts(svg_, "<path d=\"", "/>")) {
      if (path.find(verdict) == std::string::npos || path.find("h12") != std::string::npos) continue;
      for (const auto& point : Points(path, "M")) values.push_back(ValueAt(point));
    }
    return values;
  }
  // Where the lines begin whose element has these words in it.
  std::vector<std::array<double, 2>> Lines(const std::string& words) const {
    std::vector<std::array<double, 2>> values;
    for (const std::string& line : Parts(svg_, "<polyline points=\"", "/>")) {
      if (line.find(words) != std::string::npos) values.push_back(ValueAt(Points(line, "")[0]));
    }
    return values;
  }
  const std::string& Svg() const { return svg_; }

 private:
  struct Line {
    double at0, value0, at1, value1;
    double ValueAt(double at) const { return value0 + (at - at0) * (value1 - value0) / (at1 - at0); }
  };
  Line Axis(const std::string& anchor, const char* attribute, double shift, std::size_t panel) const {
    std::vector<std::array<double, 2>> ticks;
    for (const std::string& text : Parts(svg_, "<text ", "</text>")) {
      const std::string label = text.substr(text.find('>') + 1);
      char* end = nullptr;
      const double value = std::strtod(label.c_str(), &end);
      if (label.empty() || *end != '\0' || text.find("\"" + anchor + "\"") == std::string::npos) continue;
      if (!ticks.empty() && value < ticks.back()[1]) {  // the labels of the next panel
        if (panel-- == 0) break;
        ticks.clear();
      }
      ticks.push_back({std::strtod(&text[text.find(attribute) + 3], nullptr) - shift, value});
    }
    if (ticks.size() < 2) return {0, 0, 1, NAN};
    return {ticks.front()[0], ticks.front()[1], ticks.back()[0], ticks.back()[1]};
  }

  std::string svg_;
  Line x_, y_;
};

void ExpectPoints(const std::string& label, const std::vector<std::array<double, 2>>& got,
                  const std::vector<std::array<double, 2>>& expected) {
  ASSERT_EQ(got.size(), expected.size()) << label;
  for (std::size_t i = 0; i < got.size(); ++i)
    EXPECT_TRUE(vrx::test::RowMatches(label, got[i], expected[i], 0.02));
}

class Report : public vrx::test::ToolProcess {
 protected:
  void SetUp() override {
    // Straight curves: percent at 400 nm, and what every 10 nm add.
    folder_.Write("s.csv", Header("id,name") + Curve("S", "the standard", 40, 0));
    folder_.Write("t.csv", Header("id,name") + Curve("A", "one", 40, 0.02) + Curve("B", "two", 44, -0.1) +
                               Curve("C", "three", 41, 0) + Curve("D", "four", 38, 0.1) +
                               Curve("E", "five", 40.5, 0.05));
    // From s in L*a*b*: 0.5, 1.3 (a warning beyond 0.75 of 1.5), 2, 5, and four of 0.6.
    folder_.Write("ls.csv", "id,L,a,b\ns,50,0,0\n");
    folder_.Write(
        "lt.csv",
        "id,L,a,b\nt1,50.5,0,0\nt2,50,1.2,0.5\nt3,50,0,-2\nt4,53,4,0\nt5,49.4,0,0\nt6,50,0.6,0\nt7,50,0,0.6\n"
        "t8,50,-0.6,0\n");
  }

  static std::string Curve(const std::string& id, const std::string& name, double level, double step) {
    std::string row = id + "," + name;
    for (int i = 0; i < 31; ++i) row += "," + std::to_string(level + step * i);
    return row + "\n";
  }
  // The page that a command writes, and its csv.
  std::pair<std::string, std::vector<Cells>> RunReport(const std::string& arguments) {
    const Result result = Run(arguments + " --format csv --report r.html");
    EXPECT_EQ(result.status, 0) << arguments << "\n" << result.err;
    return {folder_.Read("r.html"), Csv(result.out)};
  }
  static json DataOf(const std::string& page) {
    return ParseJson(Between(page, "id=\"data\">", "</script>"));
  }
};

// Without the columns that a page leaves out where nobody asked for their numbers.
std::vector<Cells> WithoutUnasked(std::vector<Cells> csv) {
  for (std::size_t k = csv.front().size(); k-- > 0;) {
    if (csv.front()[k] != "cost" && csv.front()[k] != "opacity") continue;
    for (Cells& row : csv) row.erase(row.begin() + static_cast<std::ptrdiff_t>(k));
  }
  return csv;
}

// Row for row and column for column, in the written table and in the data that the script shows.
TEST_F(Report, TablesHoldTheResults) {
  const std::string kPaints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  for (const std::string& command :
       {std::string("color t.csv --illuminants D65,A"), std::string("index t.csv --illuminants C"),
        std::string("index t.csv --standard s.csv --illuminants D65,A"), std::string("strength s.csv t.csv"),
        std::string("fit-tolerance t.csv --standard s.csv --illuminants D65"),
        "match " + kPaints + " s.csv --specular excluded --max-colorants 2 --top 3"}) {
    const auto [page, all] = RunReport(command);
    const std::vector<Cells> csv = WithoutUnasked(all);
    const std::vector<Cells> rows = TableOf(page, "data-table=\"0\"");
    const json data = DataOf(page)["tables"][0];
    ASSERT_EQ(Headings(page).size(), csv[0].size()) << command;
    ASSERT_EQ(rows.size() + 1, csv.size()) << command;
    ASSERT_EQ(data["rows"].size() + 1, csv.size()) << command;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      ASSERT_EQ(rows[i].size(), csv[0].size()) << command;
      for (std::size_t k = 0; k < rows[i].size(); ++k) {
        const bool isFormula = csv[0][k] == "formula";  // by numbers in the csv, by names for people
        EXPECT_TRUE(isFormula || IsRounded(rows[i][k], csv[i + 1][k]))
            << command << ", row " << i << ", " << csv[0][k] << ": " << rows[i][k] << " for "
            << csv[i + 1][k];
        const json& cell = data["rows"][i][k];
        const std::string given = cell.is_string() ? cell.get<std::string>()
                                  : cell.is_null() ? ""
                                                   : cell.dump();
        EXPECT_TRUE(IsRounded(rows[i][k], given)) << command << ": " << rows[i][k] << " for " << given;
      }
    }
    EXPECT_EQ(Headings(page)[0], data["columns"][0]["heading"]);
  }
}

TEST_F(Report, AJudgementHasItsDifferencesUnderTheirHeadings) {
  const auto [page, csv] = RunReport("judge s.csv t.csv --illuminants D65,A");
  const std::vector<Cells> rows = TableOf(page, "data-table=\"0\"");
  Cells headings = Headings(page);
  headings.resize(7);
  EXPECT_EQ(headings,
            (Cells{"Trial", "Name", "Illuminant", "Verdict", "Reason", "Standard | trial", "\xCE\x94L*"}));
  ASSERT_EQ(rows.size(), 10u);
  const json data = DataOf(page);
  const char* const verdicts[] = {"fail", "warning", "pass"};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Cells& row = csv[i + 1];
    EXPECT_EQ(rows[i][0], row[1]);
    EXPECT_EQ(rows[i][2], row[3] + "/10\xC2\xB0");
    for (std::size_t k = 0; k < 7; ++k) EXPECT_TRUE(IsRounded(rows[i][6 + k], row[5 + k])) << i << " " << k;
    std::string words;
    for (std::size_t k = 12; k < 15; ++k)
      words += (row[k] == " " ? "" : words.empty() ? "" : ", ") + (row[k] == " " ? "" : row[k]);
    EXPECT_EQ(rows[i][13], words);
    EXPECT_EQ(rows[i][3], row[17]) << i;
    EXPECT_EQ(verdicts[data["tables"][0]["rows"][i][3].get<std::size_t>()], row[17]) << i;
    // What the script marks in the pictures: da*, db*, dL* by illuminant.
    const json& plotted = data["trials"][i / 2][1];
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_NEAR(plotted[3 * (i % 2) + k], std::stod(row[5 + (k + 1) % 3]), 0.0006) << i << " " << k;
  }
  const json places = {{"total", 12}, {"words", 13}, {"verdict", 3}, {"colours", 5}};
  EXPECT_EQ(data["places"], places);
  // The curves: 44 percent at 400 nm down to 41 at 700 nm.
  EXPECT_EQ(data["samples"], json({4, 34}));
  EXPECT_EQ(data["standards"]["0"][4], 40.0);
  EXPECT_EQ(data["trials"][1][2][4], 44.0);
  EXPECT_EQ(data["trials"][1][2][34], 41.0);
  const Picture curves(page, "Reflectance, and difference");
  std::size_t found = 0;
  for (const std::string& line : Parts(curves.Svg(), "<polyline points=\"", "/>")) {
    if (line.find("s-trial") == std::string::npos) continue;
    const std::array<double, 2> first = curves.ValueAt(Points(line, "")[0]);
    const std::size_t last = line.rfind(' ', line.find('"') - 1);
    found += vrx::test::RowMatches("first", first, std::array{400.0, 44.0}, 0.05) &&
             vrx::test::RowMatches("last", curves.ValueAt(Points(line.substr(last), " ")[0]),
                                   std::array{700.0, 41.0}, 0.05);
  }
  EXPECT_EQ(found, 1u) << "the curve of B";

  // Below them and the line of the key, in the same order, what each has more than the standard.
  const auto absolute = curves.Lines("s-trial");
  const auto differences = Picture(page, "Reflectance, and difference", 1).Lines("s-trial");
  ASSERT_EQ(differences.size(), 11u);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(differences[6 + i][1], absolute[i][1] - 40.0, 0.05) << i;

  // Metamerism: totals of the judgement, and the index as another command has it; the worst trial first.
  const std::vector<Cells> metamerism = TableOf(page, "class=\"metamerism\"");
  ASSERT_EQ(metamerism.size(), 5u);
  const auto [other, indices] = RunReport("index t.csv --standard s.csv --illuminants D65,A");
  double last = 1e9;
  for (const Cells& cells : metamerism) {
    const std::size_t i = 2 * static_cast<std::size_t>(cells[0][0] - 'A');
    EXPECT_TRUE(IsRounded(cells[1], csv[i + 1][11]) && IsRounded(cells[2], csv[i + 2][11])) << cells[0];
    const auto row = std::ranges::find_if(indices, [&](const Cells& index) {
      return index[0] == cells[0] && index[1] == "A" && index[3] == "Metamerism index: D65";
    });
    ASSERT_NE(row, indices.end());
    EXPECT_TRUE(IsRounded(cells[3], (*row)[5])) << cells[0] << " " << cells[3] << " " << (*row)[5];
    const double worst = std::max(std::stod(cells[1]), std::stod(cells[2]));
    EXPECT_LE(worst, last);
    last = worst;
  }
  // Of a single trial they stand below each other, without an index under the reference itself.
  folder_.Write("b.csv", Header("id,name") + Curve("B", "two", 44, -0.1));
  const std::vector<Cells> one =
      TableOf(RunReport("judge s.csv b.csv --illuminants D65,A").first, "class=\"metamerism\"");
  ASSERT_EQ(one.size(), 2u);
  const auto b = std::ranges::find(metamerism, "B", [](const Cells& cells) { return cells[0]; });
  EXPECT_EQ(one[0], (Cells{"D65/10\xC2\xB0", (*b)[1], "-"}));
  EXPECT_EQ(one[1], (Cells{"A/10\xC2\xB0", (*b)[2], (*b)[3]}));
}

// Differences that are known: counts, the worst trial, and every mark of a verdict where its difference is.
TEST_F(Report, VerdictsAreCountedMarkedAndDrawn) {
  const auto [page, csv] = RunReport("judge ls.csv lt.csv --system lab --illuminants D65");
  EXPECT_EQ(Read(Between(page, "<p class=\"overall\">", "</p>")),
            "fail 5 pass, 1 warning, 2 fail; trials: 8");
  const std::string card = Between(page, "<div class=\"card\">", "</p>");
  EXPECT_EQ(Read(Between(card, "<ul>", "</ul>")), "5 pass1 warning2 fail");
  EXPECT_NE(card.find("class=\"fail\" style=\"flex-grow:2\""), std::string::npos);
  EXPECT_NE(Read(card).find("mean \xCE\x94"
                            "E*ab 1.4095 % of \xCE\x94"
                            "E*ab below 3.95mean |\xCE\x94"
                            "H*| 0.00largest \xCE\x94"
                            "E*ab 5.00 t4"),
            std::string::npos)
      << Read(card);
  const std::string pair = Between(page, "<figure class=\"pair\"", "</figure>");
  EXPECT_NE(Read(pair).find("\xCE\x94"
                            "E*ab 5.00 failLighter, RedderStandard L* 50.00, a* 0.00, b* 0.00, C* 0.00, h 0.0"
                            "Trial L* 53.00, a* 4.00, b* 0.00, C* 4.00, h 0.0"),
            std::string::npos)
      << Read(pair);
  EXPECT_NE(pair.find("<span class=\"verdict fail\">"), std::string::npos);

  EXPECT_EQ(Read(Between(page, "<p class=\"shown\">", "</p>")), "t4 the worst of 8");

  const Picture plane(page, "D65/10");
  ExpectPoints("warning", plane.Marks("f-warning"), {{1.2, 0.5}});
  ExpectPoints("fail", plane.Marks("s-fail"), {{0, -2}, {4, 0}});
  ExpectPoints("pass", plane.Marks("s-pass"), {{0, 0}, {0.6, 0}, {0, 0.6}, {-0.6, 0}});
  const Picture trend(page, "Total difference in the order");
  ExpectPoints("warning in order", trend.Marks("f-warning"), {{2, 1.3}});
  ExpectPoints("fail in order", trend.Marks("s-fail"), {{3, 2}, {4, 5}});
  ExpectPoints("pass in order", trend.Marks("s-pass"), {{1, 0.5}, {5, 0.6}, {6, 0.6}, {7, 0.6}, {8, 0.6}});
  ExpectPoints("limit and warning", trend.Lines("s-text"), {{0.5, 1.5}, {0.5, 1.125}});
  // Five in the first bins of half a unit, one each from 1 to 1.5 and from 2 on; 5 itself belongs to the last.
  const Picture histogram(page, "Frequency");
  const auto limits = histogram.Lines("s-text");
  ASSERT_EQ(limits.size(), 2u);
  EXPECT_TRUE(
      vrx::test::RowMatches("limits", std::array{limits[0][0], limits[1][0]}, std::array{1.5, 1.125}, 0.02));
  std::vector<std::array<double, 2>> bars;
  for (const std::string& bar : Parts(histogram.Svg(), "<rect ", "/>")) {
    const auto number = [&](const char* name) {
      return std::strtod(&bar[bar.find(name) + std::string(name).size()], nullptr);
    };
    EXPECT_GT(number("width=\""), 10) << bar;
    bars.push_back(histogram.ValueAt({number("x=\"") - 0.5, number("y=\"")}));
  }
  ExpectPoints("bars", bars, {{0.5, 5}, {1, 1}, {2, 1}, {4.5, 1}});
}

// A mark gives the verdict on what its picture shows: a trial that is only too light fails on the strip of the lightness and passes in
// the plane. Its stroke is 12 long.
TEST_F(Report, EachPictureHasAVerdictOfItsOwn) {
  folder_.Write("light.csv", "id,L,a,b\nt1,53,0,0\nt2,50,1.2,0\n");
  const auto [page, csv] = RunReport(
      "judge ls.csv light.csv --system lab --illuminants D65 --tolerance "
      "1.5,1.5,1.5,1.5,1.5,1.5,1.5");
  const Picture plane(page, "D65/10");
  ExpectPoints("plane, pass", plane.Marks("s-pass"), {{0, 0}});
  ExpectPoints("plane, warning", plane.Marks("f-warning"), {{1.2, 0}});
  ExpectPoints("plane, fail", plane.Marks("s-fail"), {});
  std::string strip;
  for (const std::string& path : Parts(plane.Svg(), "<path d=\"", "/>")) {
    if (path.find("h12") == std::string::npos) continue;
    for (const std::string verdict : {"pass", "warning", "fail"}) {
      if (path.find("s-" + verdict) != std::string::npos) strip += verdict + " ";
    }
  }
  EXPECT_EQ(strip, "pass fail ");
}

// Totals have no second picture beside them that would show the box: a trial that fails by it was green where its total is small.
TEST_F(Report, TotalsHaveTheVerdictOfTheTrial) {
  folder_.Write("light.csv", "id,L,a,b\nt1,51,0,0\nt2,50,0.4,0\nt3,50.9,0,0\n");
  const std::string judge =
      "ls.csv light.csv --system lab --illuminants D65 --limits dL=0.9,da=9,db=9 --tolerance ";
  const auto [page, csv] = RunReport("judge " + judge + "5");
  const Picture trend(page, "Total difference in the order");
  ExpectPoints("fail", trend.Marks("s-fail"), {{1, 1}});
  ExpectPoints("warning", trend.Marks("f-warning"), {{3, 0.9}});
  ExpectPoints("pass", trend.Marks("s-pass"), {{2, 0.4}});
  ASSERT_EQ(Run("plot trend " + judge + "5 --output trend.svg").status, 0);
  EXPECT_NE(folder_.Read("trend.svg").find("m-3-3l6 6m-6 0l6-6"), std::string::npos)
      << "a cross, by itself, too";
}

// A lot that was measured at several angles fails as one, and its measurements are no lots.
TEST_F(Report, LotsAreCountedBesideTheirMeasurements) {
  folder_.Write("as.csv", "id,geometry,L,a,b\nP,15deg,50,0,0\nP,45deg,50,0,0\n");
  folder_.Write("at.csv",
                "id,geometry,L,a,b\nA,15deg,50,3,0\nB,45deg,50.4,0,0\nA,45deg,50.2,0,0\nB,15deg,50,0.5,0\n"
                "C,15deg,50,1.3,0\nD,45deg,50,4,0\nD,15deg,50,4,0\n");
  const std::string judge = "judge as.csv at.csv --system lab --illuminants D65 --standard-id P";
  const auto [page, csv] = RunReport(judge);
  EXPECT_EQ(Read(Between(page, "<p class=\"overall\">", "</p>")),
            "fail 3 pass, 1 warning, 3 fail; trials: 7");
  EXPECT_EQ(Read(Between(page, "<p class=\"reasons\">", "</p>")),
            "Lots: 1 pass, 1 warning, 2 fail of 4, each by the worst of its geometries. Counts of trials are "
            "of measurements, "
            "one for each geometry of a lot.");
  EXPECT_EQ(Read(Between(Between(page, "<div class=\"card\">", "</div>\n</div>"), "</ul>\n<p>", "</p>")),
            "lots: 1 pass, 1 warning, 2 fail");
  const std::string summary = Run(judge + " --summary --format csv").out;
  EXPECT_NE(summary.find(",samples,pass,warning,fail,lots,lots_pass,lots_warning,lots_fail,mean,"),
            std::string::npos);
  EXPECT_NE(summary.find(",7,3,1,3,4,1,1,2,"), std::string::npos) << summary;
  EXPECT_NE(Run(judge).out.find("lots fail"), std::string::npos);
  // Lots of one measurement each are the trials.
  folder_.Write("one.csv", "id,geometry,L,a,b\nA,15deg,50,3,0\nB,45deg,50.4,0,0\n");
  const auto [plain, plainCsv] =
      RunReport("judge as.csv one.csv --system lab --illuminants D65 --standard-id P");
  EXPECT_EQ(plain.find("Lots:"), std::string::npos);
  EXPECT_EQ(Run("judge as.csv one.csv --system lab --illuminants D65 --standard-id P --summary --format csv")
                .out.find("lots"),
            std::string::npos);
}

// Measured at several angles a sample has one place in the trend, whatever the order of the rows, and each angle is a line.
TEST_F(Report, AnglesAreALineEach) {
  folder_.Write("as.csv", "id,geometry,L,a,b\nP,15deg,50,0,0\nP,45deg,50,0,0\n");
  folder_.Write("at.csv",
                "id,geometry,L,a,b\nA,15deg,50,1,0\nA,45deg,50.2,0,0\nB,45deg,50.4,0,0\nB,15deg,50,1.2,0\n"
                "C,15deg,50,0.8,0\n");
  const auto [page, csv] = RunReport("judge as.csv at.csv --system lab --illuminants D65 --standard-id P");
  const Picture trend(page, "Total difference in the order");
  ExpectPoints("15", trend.Lines("s-trial"), {{1, 1}});
  ExpectPoints("45", trend.Lines("s-other"), {{1, 0.2}});
  for (const char* name : {">15\xC2\xB0<", ">45\xC2\xB0<"})
    EXPECT_NE(trend.Svg().find(name), std::string::npos);
  EXPECT_EQ(DataOf(page)["orders"], json({1, 1, 2, 2, 3}));
}

TEST_F(Report, FactsSayHowWasJudged) {
  folder_.Write("limits.csv", "standard,limit\n,2\n");
  const struct {
    std::string arguments, fact;
  } kRows[] = {
      {"--system lab", "Tolerancetotal 1.50"},
      {"--system lab --tolerance 1.5,1.5,1.5,1.5,1.5,1.5,1.5", "Tolerancebox, every limit 1.50"},
      {"--system lab --tolerance 1,2,3,4,5,6,7",
       "Tolerancebox, limits \xCE\x94L* -2.00 ... 1.00, \xCE\x94"
       "a* -4.00 ... 3.00, \xCE\x94"
       "b* -6.00 ... 5.00, total 7.00"},
      {"--ellipse --tolerance 1.2", "1.20"},
      {"--system lab --warning 0.6", "Warningabove 0.60 of a limit"},
      {"--observer 2", "Observer2 degrees"},
      {"--parameters 1.5,1", "DifferenceCMC (L:C) = 1.50 : 1.00, cf = 1.00"},
      {"--system din6175", "DifferenceDIN6175 (gL:gC:gH) = 1.00 : 1.00 : 1.00, 45\xC2\xB0"},
      {"--system din6175 --angle 110", "DifferenceDIN6175 (gL:gC:gH) = 1.00 : 1.00 : 1.00, 110\xC2\xB0"},
      {"--report-author \"<i>A & B</i>\"", "<i>A & B</i>"},
      {"--report-customer \"<i>C</i>\"", "Customer<i>C</i>"},
      {"--report-lot 4711", "Lot4711"},
  };
  for (const auto& row : kRows) {
    const auto [page, csv] = RunReport("judge ls.csv lt.csv --illuminants D65 " + row.arguments);
    const std::string facts = Read(Between(page, "<dl class=\"facts\">", "</dl>"));
    EXPECT_NE(facts.find(row.fact), std::string::npos) << row.arguments << "\n" << facts;
    EXPECT_NE(facts.find("Standardsls.csv SHA-256 "), std::string::npos) << facts;
    EXPECT_NE(facts.find("Trialslt.csv SHA-256 "), std::string::npos);
  }
}

// Ids, names, standards, titles and files with characters of HTML: as text wherever they stand, in every kind of report.
TEST_F(Report, NamesAreText) {
  const std::string hostile = "<i>\"x\"&'</i></script>";
  folder_.Write("<i>.csv", Header("id,standard,name") +
                               Curve("\"" + hostile.substr(0, 3) + "1\",<i>s", "<i>n", 40, 0.1) +
                               Curve("<i>2,<i>s", "<i>n", 41, 0.2) + Curve("<i>3,<i>s", "<i>n", 42, 0) +
                               Curve("<i>4,<i>s", "<i>n", 39, 0) + Curve("<i>5,<i>s", "<i>n", 40, -0.1));
  folder_.Write("<i>s.csv", Header("id,name") + Curve("<i>s", "<i>n", 40, 0) + Curve("other", "", 50, 0));
  const std::string kPaints = VRX_SOURCE_DIR "/examples/acrylic_paints.json";
  for (const std::string& command :
       {std::string("judge '<i>s.csv' '<i>.csv'"), std::string("color '<i>.csv'"),
        std::string("index '<i>.csv' --illuminants C"), std::string("strength '<i>s.csv' '<i>.csv'"),
        std::string("fit-tolerance '<i>.csv' --standard '<i>s.csv' --illuminants D65"),
        "match " + kPaints + " '<i>.csv' --specular excluded --max-colorants 1 --top 1"}) {
    const auto [page, csv] = RunReport(command + " --report-title '" + "<i>&</i></script>" + "'");
    EXPECT_EQ(page.find("<i>"), std::string::npos) << command << page.substr(page.find("<i>"), 200);
    EXPECT_EQ(Parts(page, "</scr", ">").size(), 2u) << command << ": the data's end and the script's";
    EXPECT_EQ(Read(Between(page, "<h1>", "</h1>")), "<i>&</i></script>") << command;
    const std::vector<Cells> rows = TableOf(page, "data-table=\"0\"");
    ASSERT_FALSE(rows.empty()) << command;
    EXPECT_TRUE(rows[0][0].starts_with("<i>") || rows[0][1].starts_with("<i>") || command.starts_with("fit"))
        << command << rows[0][0];
    EXPECT_FALSE(DataOf(page).is_discarded()) << command;
  }
}

}  // namespace
