// Indices, pictures and user illuminants from the command line.

#include <algorithm>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <png.h>
#include <sstream>
#include <string>
#include <vector>

#include "tests/testing/tool_process.h"
#include "tools/vrx/report/picture_file.h"

namespace vrx::tool {
namespace {

class IndexAndSwatch : public test::ToolProcess {
 protected:
  // A flat curve of so many percent from 400 to 700 nm.
  // Equal power from 380 to 780 nm.
  static std::string EqualEnergy(const std::string& heading, int step = 5) {
    std::string file = "nm," + heading + "\n";
    for (int nm = 380; nm <= 780; nm += step) file += std::to_string(nm) + ",100\n";
    return file;
  }
};

TEST_F(IndexAndSwatch, IndexRowsNameLabelAndForm) {
  folder_.Write("xyz.csv", "id,X,Y,Z\npaper,80,85,92\n");
  // A colour counts under one illuminant.
  Result result = Run("index xyz.csv --illuminants C --observer 2 --format csv");
  EXPECT_EQ(result.status, 0) << result.err;
  result.out += Run("index xyz.csv --illuminants D65 --observer 2 --format csv").out;
  EXPECT_TRUE(result.out.starts_with("id,illuminant,observer,index,form,value,note\n"));
  const auto number = [&](const std::string& beginning) {
    const std::size_t at = result.out.find("\n" + beginning);
    return at == std::string::npos ? -1.0 : std::strtod(&result.out[at + 1 + beginning.size()], nullptr);
  };
  EXPECT_NEAR(number("paper,C,2,Whiteness: ASTM E313-1973,direct,"), 56.696, 1e-9);
  EXPECT_NEAR(number("paper,D65,2,Whiteness: ASTM E313-1973 (Recalc),recalculated,"), 83.4590934, 1e-6);
  EXPECT_NEAR(number("paper,D65,2,Yellowness: DIN 6167,direct,"), -0.4658824, 1e-6);
  EXPECT_NE(result.out.find("paper,C,2,Whiteness: Berger,direct,,\n"), std::string::npos);  // unset is empty
  // The table has the same rows but for those.
  EXPECT_EQ(Run("index xyz.csv --illuminants C --observer 2").out.find("Whiteness: Berger  "),
            std::string::npos);
}

TEST_F(IndexAndSwatch, NamesChooseAndTheWideFormHasASampleARow) {
  folder_.Write("white.csv", Header("id") + Flat("paper", "88") + Flat("grey", "20"));
  const Result wide =
      Run("index white.csv --indices wi-cie,dominant,inconstancy --wide --illuminants D65,A --format csv");
  EXPECT_EQ(wide.status, 0) << wide.err;
  EXPECT_TRUE(wide.out.starts_with(
      "id,observer,wi-cie D65,dominant D65,cie limits D65,wi-cie A,dominant A,inconstancy A,"
      "cie limits A\npaper,10,8"))
      << wide.out;
  EXPECT_NE(wide.out.find(",within,"), std::string::npos);
  EXPECT_NE(wide.out.find("\ngrey,10,"), std::string::npos);
  const Result family = Run("index white.csv --indices ti --illuminants D65 --format csv");
  EXPECT_EQ(std::count(family.out.begin(), family.out.end(), '\n'), 1 + 2 * 4) << family.out;
  EXPECT_NE(family.out.find("outside the limits"), std::string::npos) << "a grey is no white";
  const Result unknown = Run("index white.csv --indices wi,blue");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.err.find("unknown index \"blue\""), std::string::npos) << unknown.err;
}

TEST_F(IndexAndSwatch, ContrastRatioAndMetamerismJoinThem) {
  folder_.Write("drawdown.csv", Header("id,geometry") + Flat("P,Over White", "80") +
                                    Flat("P,Over Black", "72") + Flat("Q,30", "40") + Flat("R,29", "80"));
  const Result result = Run("index drawdown.csv --standard drawdown.csv --format csv");
  EXPECT_NE(result.out.find("\nP,,D65,10,Contrast ratio,direct,0.9"), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find("\nR,,D65,10,Contrast ratio"), std::string::npos);  // Q and R are two panels
  // Greys that differ in lightness alone are no metamers.
  const std::size_t at = result.out.find("\nQ,Over Black,C,10,Metamerism index: D65,direct,");
  ASSERT_NE(at, std::string::npos);
  EXPECT_NEAR(std::strtod(&result.out[result.out.find("direct,", at) + 7], nullptr), 0.0, 1e-9);
  const Result own = Run("index drawdown.csv --standard drawdown.csv --pairs --format csv");
  EXPECT_NE(own.out.find("\nR,Over White,C,10,Metamerism index: D65,direct,0,\n"), std::string::npos)
      << own.out << own.err;
}

// An instrument may measure all panels over white and then all over black.
TEST_F(IndexAndSwatch, ContrastRatiosDoNotDependOnTheOrderOfRows) {
  const std::string white = Flat("P,Over White", "80") + Flat("Q,Over White", "60"),
                    black = Flat("P,Over Black", "72") + Flat("Q,Over Black", "30");
  folder_.Write("apart.csv", Header("id,geometry") + white + black);
  folder_.Write("back.csv", Header("id,geometry") + black + white);
  for (const char* file : {"apart.csv", "back.csv"}) {
    const std::string out = Run("index " + std::string(file) + " --illuminants D65 --format csv").out;
    for (const char* row : {"\nP,,D65,10,Contrast ratio,direct,0.9", "\nQ,,D65,10,Contrast ratio,direct,0.5"})
      EXPECT_NE(out.find(row), std::string::npos) << file << row;
  }
  folder_.Write("twice.csv", Header("id,geometry") + white + black + Flat("P,Over White", "79"));
  ExpectRefused(
      {{"index twice.csv", "twice.csv, line 6: \"P\" has several readings over white or over black"}});
}

// Of one id at two angles both rows looked alike, and trials that name their standards were held against the first one.
TEST_F(IndexAndSwatch, GeometriesAndStandardsAreTheSamplesOwn) {
  folder_.Write("std.csv", Header() + Flat("a", "20") + Flat("b", "80"));
  folder_.Write("lots.csv", Header("id,standard,geometry") + Flat("1,b,15deg", "80") + Flat("2,a,SCE", "20"));
  const std::string index =
      "index lots.csv --standard std.csv --illuminants D65,A --indices wi-berger --format csv";
  const std::string out = Run(index).out;
  for (const char* row : {"\n1,15\xC2\xB0,A,10,Metamerism index: D65,direct,0,\n",
                          "\n2,SCE,A,10,Metamerism index: D65,direct,0,\n"})
    EXPECT_NE(out.find(row), std::string::npos) << row << out;
  ExpectRefused(
      {{index + " --standard-id a", "--standard-id: the trials already name their standards in a column"}});
  EXPECT_TRUE(Run("index lots.csv --wide --format csv").out.starts_with("id,geometry,observer,"));
  const std::string colours = Run("color lots.csv --illuminants D65 --format csv").out;
  EXPECT_TRUE(colours.starts_with("id,geometry,illuminant,observer,X,")) << colours;
  EXPECT_NE(colours.find("\n2,SCE,D65,10,"), std::string::npos);
  const std::pair<const char*, const char*> kOthers[] = {
      {"munsell lots.csv --format csv", "\n2,SCE,N"},
      {"density lots.csv --format csv", "\n2,SCE,0."},
      {"strength std.csv lots.csv --specular excluded --format csv", "\na,2,SCE,"}};
  for (const auto& [command, row] : kOthers) {
    const std::string found = Run(command).out;
    EXPECT_NE(found.find(",geometry,"), std::string::npos) << found;
    EXPECT_NE(found.find(row), std::string::npos) << found;
  }
}

// M0 against M2 decides over whitened paper, in metamerism as in a verdict.
TEST_F(IndexAndSwatch, ConditionsOfTheStandardAreCompared) {
  folder_.Write("m0.csv", Header("id,filter") + Flat("S,M0", "80"));
  folder_.Write("m2.csv", Header("id,filter") + Flat("T,M2", "80"));
  const std::string warning = "other conditions than m0.csv: M0 and M2";
  EXPECT_NE(Run("index m2.csv --standard m0.csv").err.find(warning), std::string::npos);
  EXPECT_EQ(Run("index m0.csv --standard m0.csv").err, "");
}

TEST_F(IndexAndSwatch, UserIlluminantsFromFiles) {
  folder_.Write("e.csv", EqualEnergy("E|Equal energy"));
  folder_.Write("shop.csv", EqualEnergy("1005:Shop", 10));
  const std::string files = " --illuminant-file e.csv --illuminant-file shop.csv";
  const Result list = Run("tables --format csv" + files);
  EXPECT_NE(list.out.find("\n1000,E,Equal energy,99.99"), std::string::npos) << list.out << list.err;
  EXPECT_NE(list.out.find("\n1005,Shop,Shop,99.99"), std::string::npos);
  folder_.Write("white.csv", Header() + Flat("W", "100"));
  for (const char* command :
       {"color white.csv", "index white.csv", "swatch white.csv white.csv --output w.svg"}) {
    const Result result = Run(command + files + " --illuminants e,1005");
    EXPECT_EQ(result.status, 0) << command << result.err;
  }
  EXPECT_NE(folder_.Read("w.svg").find("Shop/10"), std::string::npos);
}

TEST_F(IndexAndSwatch, BadRequestsAreRefused) {
  folder_.Write("good.csv", Header() + Flat("A", "50") + Flat("B", "51"));
  folder_.Write("one.csv", Header() + Flat("A", "50"));
  folder_.Write("negative.csv", EqualEnergy("E") + "785,-1\n");
  folder_.Write("hole.csv", EqualEnergy("E") + "795,1\n");
  folder_.Write("half.csv", "nm,E\n380.5,1\n");
  folder_.Write("text.csv", "nm,E\n380,one\n");
  folder_.Write("head.csv", "wavelength,E\n380,1\n");
  folder_.Write("d65.csv", EqualEnergy("d65"));
  folder_.Write("number.csv", EqualEnergy("999:E"));
  folder_.Write("same.csv", EqualEnergy("1000:F"));
  folder_.Write("e.csv", EqualEnergy("E"));
  folder_.Write("xyz.csv", "X,Y\n1,2\n");
  ExpectRefused({
      {"tables --illuminant-file negative.csv",
       "negative.csv: illuminant \"E\": The spectral power must not be"},
      {"tables --illuminant-file hole.csv", "hole.csv, line 83: the wavelengths are not evenly spaced"},
      {"tables --illuminant-file half.csv", "whole number of nm"},
      {"tables --illuminant-file text.csv", "text.csv, line 2, column 2 (E)"},
      {"tables --illuminant-file head.csv", "the header must be nm"},
      {"tables --illuminant-file d65.csv", "that of another illuminant"},
      {"tables --illuminant-file number.csv", "1000 to 1255"},
      {"tables --illuminant-file e.csv --illuminant-file same.csv", "another illuminant has this number"},
      {"color good.csv --illuminants 1000", "unknown illuminant"},
      {"index xyz.csv", "neither wavelengths nor X,Y,Z"},
      {"index good.csv --indices wi-cie,inconstancy --illuminants A",
       "inconstancy is the change from the first"},
      {"swatch good.csv", "--output is required"},
      {"swatch good.csv --output a.jpg", ".png or .svg"},
      {"swatch good.csv --output none/a.png", "none/a.png: No such file"},
      {"swatch one.csv --output a.png", "there are no trials"},
      {"swatch one.csv --pairs --output a.png", "--pairs needs a second file"},
      {"swatch - --output a.png < good.csv", "name a file"},
      {"swatch good.csv --standard-id C --output a.png", "no standard \"C\""},
  });
}

struct Image {
  png_uint_32 width = 0, height = 0;
  std::vector<png_byte> pixels;  // three bytes each
  std::array<int, 3> At(png_uint_32 x, png_uint_32 y) const {
    const png_byte* pixel = &pixels[3 * (y * width + x)];
    return {pixel[0], pixel[1], pixel[2]};
  }
};

Image ReadPng(const std::string& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  Image image;
  if (png_image_begin_read_from_file(&png, path.c_str()) == 0) return image;
  png.format = PNG_FORMAT_RGB;
  image = {png.width, png.height, std::vector<png_byte>(PNG_IMAGE_SIZE(png))};
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) return {};
  return image;
}

// The pixels of a PNG are the colours asked for, every one of the 256 levels.
TEST_F(IndexAndSwatch, PngKeepsEveryLevel) {
  pictures::Picture picture;
  for (uint32_t level = 0; level < 256; ++level) {
    const double x = level;
    picture.Rectangle({x, 0, 1, 1}, pictures::Paint::Fixed(level));
    picture.Rectangle({x, 1, 1, 1}, pictures::Paint::Fixed(level << 8));
    picture.Rectangle({x, 2, 1, 1}, pictures::Paint::Fixed(level << 16));
  }
  SavePicture(picture, {256, 3, pictures::Paint::Fixed(0)}, folder_ / "levels.png");
  const Image image = ReadPng(folder_ / "levels.png");
  ASSERT_EQ(image.pixels.size(), 256u * 3 * 3);
  for (int level = 0; level < 256; ++level) {
    const auto x = static_cast<png_uint_32>(level);
    EXPECT_EQ(image.At(x, 0), (std::array{level, 0, 0}));
    EXPECT_EQ(image.At(x, 1), (std::array{0, level, 0}));
    EXPECT_EQ(image.At(x, 2), (std::array{0, 0, level}));
  }
}

// 21.4 % grey is (127, 127, 127) under every illuminant; both formats paint it where the other does.
TEST_F(IndexAndSwatch, StandardsAndTrialsStandSideBySide) {
  folder_.Write("greys.csv",
                Header() + Flat("Std & <Co>", "21.4") + Flat("lighter", "30") + Flat("same", "21.4"));
  for (const char* name : {"a.svg", "a.PNG"}) {
    const Result result = Run(std::string("swatch greys.csv --output ") + name + " --illuminants D65,A");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
  }
  const std::string svg = folder_.Read("a.svg");
  for (const char* text :
       {"Std &amp; &lt;Co&gt; | lighter", ">fail<", ">pass<", "E 0.00<", "D65/10", "CMC"}) {
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  }
  const Image image = ReadPng(folder_ / "a.PNG");
  ASSERT_GT(image.width, 0u);
  std::map<std::string, int> patches;
  std::istringstream lines(svg);
  for (std::string line; std::getline(lines, line);) {
    int x, y, width, height;
    unsigned colour;
    if (std::sscanf(line.c_str(), "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"#%x\"/>", &x, &y,
                    &width, &height, &colour) != 5) {
      continue;
    }
    if (x > 0) ++patches[line.substr(line.find("fill"))];
    const std::array expected{static_cast<int>(colour >> 16), static_cast<int>(colour >> 8 & 255),
                              static_cast<int>(colour & 255)};
    for (const int dx : {0, width - 1}) {
      EXPECT_EQ(image.At(static_cast<png_uint_32>(x + dx), static_cast<png_uint_32>(y + height - 1)),
                expected);
    }
  }
  EXPECT_EQ((patches["fill=\"#7f7f7f\"/>"]), 6);  // standard twice, its double once, under two illuminants
}

// Files may grow to 512 bytes, as if the disk were full then.
TEST_F(IndexAndSwatch, APictureThatFailsLeavesTheOneThatWasThere) {
  folder_.Write("greys.csv", Header() + Flat("A", "21.4") + Flat("B", "21.5"));
  for (const char* command : {"swatch greys.csv --output old.svg", "swatch greys.csv --output old.png",
                              "plot plane greys.csv greys.csv --output old.svg"}) {
    const std::string name = std::string("old") + &command[std::string(command).size() - 4];
    folder_.Write(name, "old");
    const Result result = Run(std::string("--version; trap '' XFSZ; ulimit -f 1; " VRX_TOOL " ") + command);
    EXPECT_EQ(result.status, 2) << command;
    EXPECT_TRUE(result.err.starts_with("vrx: " + name + ": File too large\n")) << result.err;
    EXPECT_EQ(folder_.Read(name), "old") << command;
  }
}

// The limit of a box lies where the ticks say, in SVG and in a PNG of any scale.
TEST_F(IndexAndSwatch, PlotsAreDrawnToScale) {
  folder_.Write("greys.csv", Header() + Flat("A", "21.4") + Flat("B", "21.5"));
  const std::string files =
      " greys.csv greys.csv --illuminants D65 --system lab --tolerance 2,2,2,2,2,2,2 --output ";
  for (const char* name : {"plane.svg", "plane.png --scale 3"}) {
    EXPECT_EQ(Run("plot plane" + files + name).status, 0) << name;
  }
  const std::string svg = folder_.Read("plane.svg");
  double left = 0, bottom = 0, right = 0;
  ASSERT_EQ(std::sscanf(&svg[svg.find("<polygon")], "<polygon points=\"%lf,%lf %lf", &left, &bottom, &right),
            3);
  const auto tick = [&](const std::string& label) {
    const std::size_t at = svg.rfind("<text", svg.find("middle\" fill=\"#6b6d71\">" + label + "<"));
    return std::strtod(&svg[at + std::string("<text x=\"").size()], nullptr);
  };
  EXPECT_NEAR(left, tick("-2"), 0.1);
  EXPECT_NEAR(right, tick("2"), 0.1);
  const Image image = ReadPng(folder_ / "plane.png");
  ASSERT_EQ(image.width, 3u * 340);
  // Just inside the limit lies the warning band, just outside the paper.
  const auto y = static_cast<png_uint_32>(3 * bottom) - 10;
  const auto x = static_cast<png_uint_32>(3 * left);
  EXPECT_EQ(image.At(x + 5, y), (std::array{251, 239, 208}));
  EXPECT_EQ(image.At(x - 7, y), (std::array{255, 255, 255}));
  ExpectRefused({
      {"plot plane greys.csv greys.csv --pairs --output a.svg", "several standards"},
      {"plot angles greys.csv greys.csv --output a.svg", "no two aspecular angles"},
      {"plot trend greys.csv greys.csv --trial-id C --output a.svg", "no such trial"},
      {"plot plane greys.csv greys.csv --scale 100 --output a.svg", "--scale"},
      {"judge greys.csv greys.csv --report none/a.html", "none/a.html: No such file"},
      {"judge greys.csv greys.csv --report greys.csv", "must end in .html or .pdf"},
      {"judge greys.csv greys.csv --report a.html --report-logo greys.csv", "not a PNG"},
      {"judge greys.csv greys.csv --report a.html --report-logo none.png", "none.png: No such file"},
      {"judge greys.csv greys.csv --report a.html --report-logo /proc/self/mem",
       "/proc/self/mem: cannot be read: Input/output error"},
  });
}

// The notations that were published of the 24-patch chart (McCamy, Marcus and Davidson 1976), against curves measured of another copy:
// hue number, value, chroma.
TEST_F(IndexAndSwatch, MunsellNotationsOfAChart) {
  const std::string chart = VRX_SOURCE_DIR "/examples/chart_average.csv";
  const struct {
    const char* patch;
    double hue, value, chroma;
  } kRows[] = {{"P01", 13, 3.7, 3.2},    {"P02", 12.2, 6.47, 4.1}, {"P03", 74.3, 4.95, 5.5},
               {"P05", 79.7, 5.47, 6.7}, {"P07", 15, 6, 11},       {"P09", 2.5, 5, 10},
               {"P10", 85, 3, 7}};
  const std::string out = Run("munsell " + chart + " --format csv").out;
  for (const auto& row : kRows) {
    const std::size_t at = out.find(std::string("\n") + row.patch + ",");
    ASSERT_NE(at, std::string::npos) << out;
    double hue = 0, value = 0, chroma = 0;
    const std::size_t numbers = out.find(',', out.find(',', at) + 1);
    ASSERT_EQ(std::sscanf(out.c_str() + numbers, ",%lf,%lf,%lf", &hue, &value, &chroma), 3) << row.patch;
    EXPECT_NEAR(hue, row.hue, 1.5) << row.patch;
    EXPECT_NEAR(value, row.value, 0.15) << row.patch;
    EXPECT_NEAR(chroma, row.chroma, 1.0) << row.patch;
  }
  EXPECT_EQ(Run("munsell --notation '5R 4/10,N5' --format csv | cut -d , -f 1-6").out,
            "id,notation,hue,value,chroma,extrapolated\n5R 4/10,5R 4/10,5,4,10,no\nN5,N 5/,0,5,0,no\n");
}

TEST_F(IndexAndSwatch, PrintWhitenessAndInstruments) {
  std::string header = "id", paper = "p", tint = "t", solid = "s", other = "p";
  for (int nm = 400; nm <= 700; nm += 10)
    header += "," + std::to_string(nm), paper += ",100", tint += ",50", solid += ",1", other += ",98";
  folder_.Write("print.csv", header + "\n" + paper + "\n" + tint + "\n" + solid + "\n");
  EXPECT_EQ(Run("density print.csv --paper p --solid s --digits 3 --format csv | cut -d , -f 1,2,5,6,7").out,
            "id,red,visual,filter,tone_value\np,0.000,0.000,red,0.000\nt,0.301,0.301,red,50.505\ns,2.000,2."
            "000,red,100.000\n");
  const std::string reversed = Run("density print.csv --paper s --solid p 2>&1").out;
  EXPECT_NE(reversed.find("the solid \"p\" is in no filter darker than the paper \"s\""), std::string::npos)
      << reversed;
  EXPECT_EQ(Run("density print.csv --paper p --solid s --report print.html").status, 0);
  EXPECT_NE(folder_.Read("print.html").find("ISO 5-3, status T; p - s, Murray-Davies"), std::string::npos);
  folder_.Write("whites.csv",
                "id,tint,X,Y,Z,whiteness\na,0,84,88,92,60\nb,,84,87,96,90\nc,1,83,86,101,130\n");
  EXPECT_EQ(Run("fit-whiteness whites.csv --digits 1 --format csv 2> /dev/null").out,
            "id,whiteness,fitted_whiteness,whiteness_residual,tint,fitted_tint,tint_residual\n"
            "a,60.0,59.3,0.7,0.0,,\nb,90.0,91.4,-1.4,,,\nc,130.0,129.4,0.6,1.0,,\n");
  folder_.Write("backwards.csv", "id,X,Y,Z,whiteness\na,84,88,92,130\nb,84,87,96,90\nc,83,86,101,60\n");
  folder_.Write("soiled.csv", "id,X,Y,Z,whiteness\na,84,88,92,60\nb,84,87,96,70\nc,83,86,101,130\n");
  const std::string soiled = Run("fit-whiteness soiled.csv print.csv 2>&1").out;
  EXPECT_NE(soiled.find("warning: standard \"b\" is -"), std::string::npos) << soiled;
  ASSERT_EQ(Run("fit-whiteness whites.csv --parameters --format csv > own.csv 2> /dev/null").status, 0);
  EXPECT_EQ(Run("index whites.csv --indices wi-cie --ganz-griesser own.csv --illuminants D65 "
                "--ignore-columns tint,whiteness --wide --digits 1 --format csv "
                "| cut -d , -f 1,4")
                .out,
            "id,wi-gg D65\na,59.3\nb,91.4\nc,129.4\n");
  // Of the second sample more than half of the whiteness is the brightener's.
  folder_.Write("m1.csv", "id,X,Y,Z\nb,84,87,96\nc,83,86,101\n");
  folder_.Write("m2.csv", "id,X,Y,Z\nc,84,88,92\nb,84,87,96\n");
  EXPECT_EQ(
      Run("fit-whiteness whites.csv m1.csv --without-uv m2.csv --digits 1 --format csv 2> /dev/null").out,
      "id,whiteness,tint,without_uv,brightener,brightener_percent\nb,91.4,,91.4,0.0,0.0\nc,129.4,,59.3,70.1,"
      "54.2\n");
  folder_.Write("dark.csv", "nm,b\n400,1\n410,1\n420,1\n");
  // An instrument that reads 98 % of everything is found and corrected.
  std::string low = header + "\n";
  for (const auto& [id, percent] : {std::pair{"p", "98"}, {"t", "49"}, {"s", "0.98"}}) {
    low += id;
    for (int nm = 400; nm <= 700; nm += 10) low += std::string(",") + percent;
    low += "\n";
  }
  folder_.Write("low.csv", low);
  EXPECT_EQ(Run("instruments print.csv low.csv --terms scale --digits 2 --format csv").out,
            "id,difference,corrected,left_out\np,0.78,0.00,0.00\nt,0.62,0.00,0.00\ns,0.17,0.00,0.00\n");
  // The correction that it writes, for the trials of another command; and dates of one instrument.
  ASSERT_EQ(Run("instruments print.csv low.csv --terms scale --factors --format csv > shop.csv").status, 0);
  EXPECT_EQ(Run("judge print.csv low.csv --pairs --system lab --tolerance 1 --illuminants D65 --correction "
                "shop.csv "
                "--corrected trials --digits 2 --format csv 2> /dev/null | cut -d , -f 1,11")
                .out,
            "standard,dEab\np,0.00\nt,0.00\ns,0.00\n");
  std::string series = "date," + header + "\n";
  for (const auto& [date, white] :
       {std::pair{"2026-01-01", "100"}, {"2026-04-11", "99"}, {"2026-07-20", "98"}, {"2026-10-28", "97"}}) {
    series += std::string(date) + ",w";
    for (int nm = 400; nm <= 700; nm += 10) series += std::string(",") + white;
    series += "\n";
  }
  folder_.Write("series.csv", series);
  EXPECT_EQ(Run("instruments series.csv --drift --digits 2 --format csv").out,
            "date,days,tiles,mean,largest,tile,per_year\n2026-04-11,100,1,0.39,0.39,w,\n"
            "2026-07-20,200,1,0.78,0.78,w,\n2026-10-28,300,1,1.17,1.17,w,1.43\n");
  // Exchanged tiles are named, and give no factors; angles are not taken for readings of one tile.
  const auto greys = [&](const std::string& columns,
                         std::initializer_list<std::pair<const char*, int>> tiles) {
    std::string text = "id," + columns + header.substr(3) + "\n";
    for (const auto& [id, percent] : tiles) {
      text += id;
      for (int nm = 400; nm <= 700; nm += 10) text += "," + std::to_string(percent);
      text += "\n";
    }
    return text;
  };
  folder_.Write("four.csv", greys("", {{"a", 10}, {"b", 30}, {"c", 50}, {"d", 70}}));
  folder_.Write("exchanged.csv", greys("", {{"a", 10}, {"b", 50}, {"c", 30}, {"d", 70}}));
  folder_.Write("gloss.csv", greys("geometry,", {{"a,45/0", 10}, {"b,45/0", 30}, {"c,45/0", 50}}));
  folder_.Write("sphere.csv", greys("geometry,", {{"a,d/8", 10}, {"b,d/8", 30}, {"c,d/8", 50}}));
  folder_.Write("angles.csv",
                greys("geometry,", {{"a,15as", 30}, {"a,45as", 20}, {"b,15as", 50}, {"b,45as", 40}}));
  const std::string warned = Run("instruments four.csv exchanged.csv --terms scale 2>&1").out;
  EXPECT_NE(warned.find("exchanged.csv: warning: the reading of tile b looks like tile c: corrected"),
            std::string::npos)
      << warned;
  folder_.Write("dates.csv",
                greys("date,geometry,",
                      {{"a,2026-01-01,15as", 30}, {"a,2026-01-01,45as", 10}, {"a,2026-04-01,45as", 10}}));
  EXPECT_EQ(Run("instruments dates.csv --drift --digits 2 --format csv").out,
            "date,days,tiles,mean,largest,tile,per_year\n2026-04-01,90,1,0.00,0.00,a 45\xC2\xB0,\n");
  const std::string shop = folder_.Read("shop.csv");
  folder_.Write("huge.csv", std::string(shop).replace(shop.find(",0,"), 3, ",1e300,"));
  folder_.Write("late.csv", series.replace(series.find("2026-04-11"), 10, "11.4.2026"));
  ExpectRefused({
      {"instruments four.csv exchanged.csv --terms scale --factors", "tile b looks like tile c"},
      {"instruments angles.csv four.csv --terms scale", "angles.csv: tiles were read in geometry \"15"},
      {"instruments gloss.csv sphere.csv --terms scale", "no correction makes one of the other"},
      {"instruments late.csv --drift", "late.csv, line 3: a series needs the date of each reading"},
      {"instruments low.csv --drift", "a series needs the date"},
      {"judge print.csv low.csv --tolerance 1 --pairs --correction shop.csv",
       "--corrected all corrects them, too"},
      {"color low.csv --correction print.csv", "the header of a correction is nm,zero"},
      {"color low.csv --correction huge.csv", "huge.csv makes no reflectances"},
      {"color m1.csv --correction shop.csv", "a correction needs curves"},
      {"index print.csv --ganz-griesser own.csv --illuminants C", "are for D65 and 10 degrees"},
      {"index print.csv --ganz-griesser whites.csv", "is P,Q,C,m,n,k"},
      {"lamp print.csv", "the header must be nm"},
      {"lamp dark.csv", "dark.csv: lamp \"b\": "},
      {"density print.csv --paper p --solid s --n 0.5", "--n: must be a factor from 1 to 10"},
      {"density print.csv --paper p", "tone values need both"},
      {"density print.csv --paper p --solid q", "there is no patch \"q\""},
      {"munsell", "one of them is needed"},
      {"munsell --notation 5X", "is no Munsell notation"},
      {"fit-whiteness whites.csv m2.csv --without-uv print.csv", "there is no sample \"c\" in print.csv"},
      {"fit-whiteness whites.csv --without-uv m2.csv", "needs SAMPLES"},
      {"fit-whiteness backwards.csv", "backwards.csv: whiteness does not grow with saturation"},
      {"fit-whiteness print.csv", "three standards or more"},
      {"instruments print.csv low.csv --terms zeal", "is not one of zero"},
      {"instruments print.csv low.csv --terms zero,scale", "3 tiles are not enough"},
      {"judge print.csv print.csv --least-grade 4", "--grade change or --grade staining says"},
      {"judge print.csv print.csv --grade change --least-grade 6", "--least-grade: must be 1, 1-2"},
  });
}

}  // namespace
}  // namespace vrx::tool
