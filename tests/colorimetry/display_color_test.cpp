#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <vrxmath/colorimetry/display_color.h>
#include <vrxmath/colorimetry/user_illuminants.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "tests/testing/messages.h"
#include "tests/testing/rows.h"

namespace vrx {
namespace {

using Rgb = std::array<int32_t, 3>;

// Leaves the default primaries behind for the next test.
class DisplayColor : public testing::Test {
 protected:
  ~DisplayColor() override { ResetDisplayPrimaries(); }
};

struct Shown {
  Rgb rgb;
  bool displayable;
};

Shown Show(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz) {
  Shown shown{};
  shown.displayable = XyzToDisplayRgb(illuminant, observer, xyz, shown.rgb[0], shown.rgb[1], shown.rgb[2]);
  return shown;
}

CTrisValues WhiteTimes(vrxIlluminant illuminant, int32_t observer, double factor) {
  CTrisValues xyz;
  WhitePoint(illuminant, observer, xyz);
  for (double& component : xyz) component *= factor;
  return xyz;
}

// The channel value in the middle of an 8-bit code, by the decoding curve.
double LinearOf(double code) {
  const double e = code / 255.0;
  return e <= 12.92 * 0.00304 ? e / 12.92 : std::pow((e + 0.055) / 1.055, 2.4);
}

TEST_F(DisplayColor, GreysComeBackAsTheirCode) {
  for (int32_t code = 0; code < 255; ++code) {
    const Shown shown =
        Show(vrxIllumD65, kObserver2, WhiteTimes(vrxIllumD65, kObserver2, LinearOf(code + 0.5)));
    EXPECT_EQ(shown.rgb, (Rgb{code, code, code}));
    EXPECT_TRUE(shown.displayable);
  }
}

TEST_F(DisplayColor, EveryWhiteIsWhite) {
  for (int32_t number = 0; number < kBuiltInIlluminants; ++number) {
    for (const int32_t observer : {kObserver2, kObserver10}) {
      const auto illuminant = static_cast<vrxIlluminant>(number);
      const Shown shown = Show(illuminant, observer, WhiteTimes(illuminant, observer, 1.0));
      for (const int32_t channel : shown.rgb) EXPECT_GE(channel, 254) << number;  // a hair below 1.0
      EXPECT_TRUE(shown.displayable);
      EXPECT_EQ(Show(illuminant, observer, WhiteTimes(illuminant, observer, 0.214)).rgb[1], 127) << number;
    }
  }
}

TEST_F(DisplayColor, SingleColours) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  struct Row {
    const char* label;
    CTrisValues xyz;
    Rgb rgb;
    bool displayable;
  };
  // Tristimulus values of the pure primaries at half strength, 0.2159 linear: IEC 61966-2-1.
  const Row rows[] = {
      {"black", {0.0, 0.0, 0.0}, {0, 0, 0}, true},
      {"unset", {}, {192, 192, 192}, true},
      {"red", {0.2159 * 41.24, 0.2159 * 21.26, 0.2159 * 1.93}, {128, 0, 0}, true},
      {"green", {0.2159 * 35.76, 0.2159 * 71.52, 0.2159 * 11.92}, {0, 128, 0}, true},
      {"blue", {0.2159 * 18.05, 0.2159 * 7.22, 0.2159 * 95.05}, {0, 0, 128}, true},
      {"half a step above white", {95.047 * 1.004, 100.4, 108.883 * 1.004}, {255, 255, 255}, true},
      {"a step above white", {95.047 * 1.005, 100.5, 108.883 * 1.005}, {255, 255, 255}, false},
      {"spectral green", {10.0, 60.0, 5.0}, {0, 255, 0}, false},
      {"not a number", {kNaN, 50.0, 50.0}, {0, 0, 0}, false},
  };
  for (const Row& row : rows) {
    const Shown shown = Show(vrxIllumD65, kObserver2, row.xyz);
    EXPECT_EQ(shown.rgb, row.rgb) << row.label;
    EXPECT_EQ(shown.displayable, row.displayable) << row.label;
  }
}

// The linear channel 0.003 lies on the straight piece: 12.92 x 0.003 x 255 = 9.88; codes are rounded down.
TEST_F(DisplayColor, DarkColoursAndRoundingDown) {
  const auto grey = [](double factor) {
    return Show(vrxIllumD65, kObserver2, WhiteTimes(vrxIllumD65, kObserver2, factor)).rgb[0];
  };
  EXPECT_EQ(grey(0.003), 9);
  EXPECT_EQ(grey(0.00305), 10);
  EXPECT_EQ(grey(0.999 / 12.92 / 255.0), 0);
  EXPECT_EQ(grey(1.001 / 12.92 / 255.0), 1);
  EXPECT_EQ(grey(0.9975), 254);
}

// The table of steps is the curve: at and around each step, and anywhere.
TEST_F(DisplayColor, StepsOfTheCurveStandWhereTheFormulaHasThem) {
  const DisplayCurve& curve = colorimetry_internal::GetDisplayCurve();
  const auto expectSame = [&](double channel) {
    ASSERT_EQ(DisplayCode(channel, curve), static_cast<std::uint64_t>(DisplayLevel(channel))) << channel;
  };
  for (int code = 1; code <= 255; ++code) {
    const auto bits = std::bit_cast<std::uint64_t>(LinearOf(code));
    for (std::uint64_t i = 0; i < 200; ++i) expectSame(std::bit_cast<double>(bits - 100 + i));
  }
  for (int i = -1000; i < 20'000; ++i) expectSame(i / 18'000.0);
  constexpr double kInf = std::numeric_limits<double>::infinity();
  for (const double channel : {kInf, -kInf, std::nan(""), 0.00304, 0x1p-12, 1e-300, 1e300})
    expectSame(channel);
}

// XYZ of linear channels, worked out from scratch: the primaries in the amounts that make the white.
struct Oracle {
  std::array<std::array<double, 3>, 3> columns;  // XYZ of red, green, blue at full strength

  Oracle(const double (&xy)[6], const CTrisValues& white) {
    std::array<std::array<double, 3>, 3> p;
    for (std::size_t i = 0; i < 3; ++i) p[i] = {xy[2 * i], xy[2 * i + 1], 1.0 - xy[2 * i] - xy[2 * i + 1]};
    const auto determinant = [](const auto& a, const auto& b, const auto& c) {
      return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1]) +
             c[0] * (a[1] * b[2] - a[2] * b[1]);
    };
    const double whole = determinant(p[0], p[1], p[2]);
    const double amounts[] = {determinant(white, p[1], p[2]) / whole, determinant(p[0], white, p[2]) / whole,
                              determinant(p[0], p[1], white) / whole};
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t k = 0; k < 3; ++k) columns[i][k] = amounts[i] * p[i][k];
    }
  }

  CTrisValues Xyz(const Rgb& codes) const {
    CTrisValues xyz(0.0, 0.0, 0.0);
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        xyz[static_cast<std::ptrdiff_t>(k)] += columns[i][k] * LinearOf(codes[i] + 0.5);
      }
    }
    return xyz;
  }
};

void ExpectCodesComeBack(const double (&xy)[6], vrxIlluminant illuminant, int32_t observer) {
  const Oracle oracle(xy, WhiteTimes(illuminant, observer, 1.0));
  for (int32_t red = 0; red < 255; red += 23) {
    for (int32_t green = 0; green < 255; green += 23) {
      for (int32_t blue = 0; blue < 255; blue += 23) {
        const Rgb codes{red, green, blue};
        const Shown shown = Show(illuminant, observer, oracle.Xyz(codes));
        ASSERT_EQ(shown.rgb, codes);
        ASSERT_TRUE(shown.displayable);
      }
    }
  }
}

TEST_F(DisplayColor, EveryMixtureOfThePrimariesComesBack) {
  const double standard[] = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06};
  const double wide[] = {0.7, 0.3, 0.17, 0.797, 0.131, 0.046};
  ExpectCodesComeBack(standard, vrxIllumD65, kObserver2);
  ExpectCodesComeBack(standard, vrxIllumA, kObserver10);
  CDoubleArray1 settings;
  for (const double value : wide) settings.Add(value);
  settings.Add(1.8);
  SetDisplayPrimaries(settings);
  ExpectCodesComeBack(wide, vrxIllumD65, kObserver2);  // not the conversion kept from above
  ResetDisplayPrimaries();
  ExpectCodesComeBack(standard, vrxIllumD65, kObserver2);
}

TEST_F(DisplayColor, PrimariesAreKeptAsGiven) {
  CDoubleArray1 settings;
  GetDisplayPrimaries(settings);
  const std::array defaults = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 2.2};
  EXPECT_TRUE(test::RowMatches("defaults", settings, defaults, 0.0));
  settings[0] = 0.7, settings[1] = 0.3, settings[6] = 1.8;
  SetDisplayPrimaries(settings);
  CDoubleArray1 read;
  GetDisplayPrimaries(read);
  EXPECT_TRUE(read == settings);

  test::MessageRecorder messages;
  settings.SetSize(6);
  SetDisplayPrimaries(settings);
  EXPECT_EQ(messages.Take(), test::IndexErrors());
  GetDisplayPrimaries(settings);
  EXPECT_TRUE(read == settings);
}

// Primaries in one point, or with y = 0, have no conversion; what comes out is still a colour.
TEST_F(DisplayColor, DegeneratePrimariesStayWithinTheScale) {
  for (const double y : {0.33, 0.0}) {
    CDoubleArray1 settings;
    for (int i = 0; i < 3; ++i) settings.Add(0.3), settings.Add(y);
    settings.Add(2.2);
    SetDisplayPrimaries(settings);
    for (const int32_t channel : Show(vrxIllumD65, kObserver2, CTrisValues(40.0, 50.0, 60.0)).rgb) {
      EXPECT_TRUE(channel >= 0 && channel <= 255);
    }
  }
}

TEST_F(DisplayColor, MissingTablesAreGreyAndNewUserTablesAreSeen) {
  const auto lamp = static_cast<vrxUserIllum>(kFirstUserIlluminant);
  test::MessageRecorder messages;
  EXPECT_EQ(Show(IlluminantOf(lamp), kObserver2, CTrisValues(40.0, 50.0, 60.0)).rgb, (Rgb{192, 192, 192}));
  EXPECT_EQ(messages.Take(), test::IndexErrors());
  for (const double red : {1.0, 4.0}) {
    std::vector<double> power(81, 1.0);
    std::fill(power.begin() + 40, power.end(), red);
    ASSERT_EQ(RegisterUserIlluminant(lamp, u"Lamp", power, 380, 5), IlluminantError::kNone);
    const Shown shown =
        Show(IlluminantOf(lamp), kObserver2, WhiteTimes(IlluminantOf(lamp), kObserver2, 0.214));
    EXPECT_EQ(shown.rgb, (Rgb{127, 127, 127})) << red;
  }
  RemoveUserIlluminant(lamp);
}

TEST_F(DisplayColor, ThreadsConvertSideBySide) {
  std::array<std::thread, 4> threads;
  std::array<int, 4> wrong{};
  for (std::size_t t = 0; t < threads.size(); ++t) {
    threads[t] = std::thread([&, t] {
      for (int32_t i = 0; i < 2000; ++i) {
        const auto illuminant = static_cast<vrxIlluminant>(i % kBuiltInIlluminants);
        const Shown shown = Show(illuminant, kObserver10, WhiteTimes(illuminant, kObserver10, 0.214));
        if (shown.rgb != Rgb{127, 127, 127}) ++wrong[t];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

}  // namespace
}  // namespace vrx
