#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <random>
#include <string>

#include <vrxmath/numeric/elementary.h>

namespace vrx {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();
constexpr double kPi = 0x1.921fb54442d18p+1;

// The long double functions of mingw are those of the x87, less exact than ours over most of their range; emscripten's are those of
// double.
#if defined(_WIN32) || defined(__EMSCRIPTEN__)
constexpr bool kHasReference = false;
#else
constexpr bool kHasReference = LDBL_MANT_DIG >= 64;
#endif

using Function = double (*)(double, double);

template <double (*f)(double)>
double Unary(double x, double) {
  return f(x);
}

/// Every function as one of two arguments, by its name.
Function Named(const std::string& name) {
  static const std::map<std::string, Function> kFunctions = {
      {"CubeRoot", Unary<CubeRoot>}, {"Exp", Unary<Exp>},   {"Log", Unary<Log>},   {"Log10", Unary<Log10>},
      {"Sin", Unary<Sin>},           {"Cos", Unary<Cos>},   {"Atan", Unary<Atan>}, {"Atan2", Atan2},
      {"Asin", Unary<Asin>},         {"Acos", Unary<Acos>}, {"Power", Power}};
  return kFunctions.at(name);
}

// ----------------------------------------------------------------------------------------------------------
// Accuracy: the bounds of the header against the 64-bit significands of the C library's long double functions

using Real = long double;

template <Real (*f)(Real)>
Real UnaryReference(Real x, Real) {
  return f(x);
}

/// Where the arguments come from: the box [x0, x1] x [y0, y1], evenly or by their logarithms.
struct AccuracyRow {
  const char* name;
  Real (*reference)(Real, Real);
  enum { kEven, kLog } spacing;
  double x0, x1, y0, y1;
  double bound;  ///< in ULP, as documented
};

const AccuracyRow kAccuracy[] = {
    {"CubeRoot", UnaryReference<std::cbrt>, AccuracyRow::kEven, -8, 8, 0, 0, 0.5003},
    {"CubeRoot", UnaryReference<std::cbrt>, AccuracyRow::kLog, kTiny, kMax, 0, 0, 0.5003},
    {"Exp", UnaryReference<std::exp>, AccuracyRow::kEven, -2, 2, 0, 0, 0.52},
    {"Exp", UnaryReference<std::exp>, AccuracyRow::kEven, -707, 709.78, 0, 0, 0.52},
    {"Exp", UnaryReference<std::exp>, AccuracyRow::kEven, -746, -707, 0, 0, 0.52},
    {"Log", UnaryReference<std::log>, AccuracyRow::kEven, 0.9, 1.1, 0, 0, 0.501},
    {"Log", UnaryReference<std::log>, AccuracyRow::kLog, kTiny, kMax, 0, 0, 0.501},
    {"Log10", UnaryReference<std::log10>, AccuracyRow::kEven, 0.9, 1.1, 0, 0, 0.501},
    {"Log10", UnaryReference<std::log10>, AccuracyRow::kLog, kTiny, kMax, 0, 0, 0.501},
    {"Sin", UnaryReference<std::sin>, AccuracyRow::kEven, -7, 7, 0, 0, 0.54},
    {"Sin", UnaryReference<std::sin>, AccuracyRow::kEven, -1e5, 1e5, 0, 0, 0.54},
    {"Sin", UnaryReference<std::sin>, AccuracyRow::kLog, kTiny, 0x1p62, 0, 0, 0.54},
    {"Cos", UnaryReference<std::cos>, AccuracyRow::kEven, -7, 7, 0, 0, 0.54},
    {"Cos", UnaryReference<std::cos>, AccuracyRow::kEven, -1e5, 1e5, 0, 0, 0.54},
    {"Cos", UnaryReference<std::cos>, AccuracyRow::kLog, kTiny, 0x1p62, 0, 0, 0.54},
    {"Atan", UnaryReference<std::atan>, AccuracyRow::kEven, -2, 2, 0, 0, 0.52},
    {"Atan", UnaryReference<std::atan>, AccuracyRow::kLog, kTiny, kMax, 0, 0, 0.52},
    {"Asin", UnaryReference<std::asin>, AccuracyRow::kEven, -1, 1, 0, 0, 0.52},
    {"Asin", UnaryReference<std::asin>, AccuracyRow::kLog, kTiny, 1, 0, 0, 0.52},
    {"Acos", UnaryReference<std::acos>, AccuracyRow::kEven, -1, 1, 0, 0, 0.52},
    {"Acos", UnaryReference<std::acos>, AccuracyRow::kEven, 0.9999, 1, 0, 0, 0.52},
    {"Acos", UnaryReference<std::acos>, AccuracyRow::kLog, kTiny, 1, 0, 0, 0.52},
    {"Atan2", std::atan2, AccuracyRow::kEven, -128, 128, -128, 128, 0.52},
    {"Atan2", std::atan2, AccuracyRow::kLog, 1e-30, 1e30, 1e-30, 1e30, 0.52},
    {"Atan2", std::atan2, AccuracyRow::kLog, kTiny, kMax, kTiny, kMax, 0.52},
    {"Atan2", std::atan2, AccuracyRow::kLog, kTiny, 1e-290, kTiny, 1e-290, 0.52},
    {"Atan2", std::atan2, AccuracyRow::kLog, 1e290, kMax, 1e290, kMax, 0.52},
    {"Power", std::pow, AccuracyRow::kEven, 0, 2, -8, 8, 0.57},
    {"Power", std::pow, AccuracyRow::kLog, 1e-100, 1e100, 1e-5, 3.2, 0.57},
    {"Power", std::pow, AccuracyRow::kEven, 0.9, 1.1, -6000, 6000, 0.57},
};

/// The error of `got` in units of the last place of `expected` as a double.
double ErrorInUlp(double got, Real expected) {
  const double rounded = static_cast<double>(expected);
  if (!std::isfinite(rounded) || !std::isfinite(got)) return got == rounded ? 0 : kInf;
  const int exponent = std::max(std::ilogb(expected), DBL_MIN_EXP - 1);
  return static_cast<double>(std::fabs(std::scalbn(got - expected, DBL_MANT_DIG - 1 - exponent)));
}

TEST(Elementary, KeepsItsDocumentedErrorBounds) {
  if (!kHasReference) GTEST_SKIP() << "no reference that is good enough";
  constexpr double kReferenceError = 0.001;  // one unit of the reference is 2^-11 ULP
  std::mt19937_64 generator(20010203);
  const auto draw = [&](const AccuracyRow& row, double from, double to) {
    const double part = static_cast<double>(generator() >> 11) * 0x1p-53;
    return row.spacing == AccuracyRow::kEven
               ? from + (to - from) * part
               : std::exp2(std::log2(from) + (std::log2(to) - std::log2(from)) * part);
  };
  for (const AccuracyRow& row : kAccuracy) {
    double worst = 0, worst_x = 0, worst_y = 0;
    for (int i = 0; i < 20000; ++i) {
      const double x = draw(row, row.x0, row.x1), y = row.y0 == row.y1 ? 0 : draw(row, row.y0, row.y1);
      const double error = ErrorInUlp(Named(row.name)(x, y), row.reference(x, y));
      if (error > worst) worst = error, worst_x = x, worst_y = y;
    }
    EXPECT_LE(worst, row.bound + kReferenceError)
        << row.name << std::hexfloat << " at " << worst_x << ", " << worst_y << " of the row from " << row.x0;
  }
}

// ----------------------------------------------------------------------------------------------------------
// Exact results, bit for bit

struct ValueRow {
  const char* name;
  double x, y, expected;
};

void ExpectSameBits(const ValueRow& row) {
  const double got = Named(row.name)(row.x, row.y);
  if (std::isnan(row.expected)) {
    EXPECT_TRUE(std::isnan(got)) << row.name << "(" << row.x << ", " << row.y << ") = " << got;
    return;
  }
  EXPECT_EQ(std::bit_cast<std::uint64_t>(got), std::bit_cast<std::uint64_t>(row.expected))
      << std::hexfloat << row.name << "(" << row.x << ", " << row.y << ") = " << got << ", not "
      << row.expected;
}

/// Correctly rounded values from a multi-precision computation with 300 to 3000 bits. The first block was
/// chosen among random arguments for results that change, where any do, when a compiler fuses or rearranges
/// operations.
const ValueRow kPinned[] = {
    {"CubeRoot", 0x1.cf7e8c77ce906p-1, 0, 0x1.ef4acab171707p-1},
    {"CubeRoot", 0x1.3bfeef092bafep-2, 0, 0x1.59fd7bda79a4ep-1},
    {"CubeRoot", 0x1.31be932c5dab6p+0, 0, 0x1.0f9c39a92cdf8p+0},
    {"Exp", 0x1.cc159d51e8d3p+2, 0, 0x1.4b2273f8d1e8ap+10},
    {"Exp", 0x1.be4555e9708e4p+1, 0, 0x1.055e6ab14ff0ep+5},
    {"Exp", 0x1.f98019cd05302p+2, 0, 0x1.50a2ce49e3eabp+11},
    {"Log", 0x1.15561867c37ebp+3, 0, 0x1.146a54e1fb878p+1},
    {"Log", 0x1.7ceac09793e3ap+2, 0, 0x1.c8a075babfd04p+0},
    {"Log", 0x1.68c4fed17af6dp+1, 0, 0x1.0944fe9976b43p+0},
    {"Log10", 0x1.15561867c37ebp+3, 0, 0x1.e02ec2b123a64p-1},
    {"Log10", 0x1.7ceac09793e3ap+2, 0, 0x1.8c9ef997035ebp-1},
    {"Log10", 0x1.68c4fed17af6dp+1, 0, 0x1.ccd201a248057p-2},
    {"Sin", 0x1.e81e804eb721cp+0, 0, 0x1.e3621719bfe0ap-1},
    {"Sin", 0x1.c01ef690f0c44p+0, 0, 0x1.f7c1f419a14a9p-1},
    {"Sin", -0x1.24d087fe50f78p+2, 0, 0x1.fb30fd4ab0143p-1},
    {"Cos", 0x1.88eeb1816a128p-1, 0, 0x1.707ab585fb4cfp-1},
    {"Cos", 0x1.5ebdb687cee43p+2, 0, 0x1.63a9d1e6012fdp-1},
    {"Cos", 0x1.744e174570766p+1, 0, -0x1.f22b68939833fp-1},
    {"Atan", 0x1.0c4b489b9a88p-1, 0, 0x1.ee4195b5a7382p-2},
    {"Atan", -0x1.6529ea379bep+1, 0, -0x1.3a0777ed03b5dp+0},
    {"Atan", -0x1.057731b70738p+0, 0, -0x1.9788127875d1bp-1},
    {"Atan2", 0x1.fb89fde8850ep+5, -0x1.5eb1f8abb7384p+6, 0x1.41f1c42f7fe42p+1},
    {"Atan2", 0x1.c298f753a272p+4, 0x1.0d6b946efd42p+5, 0x1.6494e8a28663dp-1},
    {"Atan2", -0x1.5b241f5af2f1dp+5, 0x1.68abea9da214ep+6, -0x1.cb4b504aa53e7p-2},
    {"Asin", -0x1.44b87b23327fep-1, 0, -0x1.5fbe5c88980c1p-1},
    {"Asin", 0x1.d8da8d92ecd16p-1, 0, 0x1.2d5e1c9ae1783p+0},
    {"Asin", 0x1.a16d043f5c592p-1, 0, 0x1.e80c939f4da5dp-1},
    {"Acos", 0x1.d01c44bd1452p-1, 0, 0x1.be6becd17ef19p-2},
    {"Acos", -0x1.bf2ccdb752d3p-1, 0, 0x1.510351c306ab5p+1},
    {"Acos", -0x1.856363645b464p-1, 0, 0x1.37ab531be7505p+1},
    {"Power", 0x1.cf7e8c77ce906p-1, 0x1.5daf7f97cdffcp+1, 0x1.861ad676deebap-1},
    {"Power", 0x1.3bfeef092bafep-2, 0x1.1eeda9a22a2e2p+0, 0x1.1226ed523dcaep-2},
    {"Power", 0x1.31be932c5dab6p+0, 0x1.8fad8770803bap-2, 0x1.125f4a8209b76p+0},
    // The largest double; the double nearest to a multiple of pi/2; doubles next to pi and pi/2.
    {"Sin", 0x1.fffffffffffffp+1023, 0, 0x1.452fc98b34e97p-8},
    {"Cos", 0x1.fffffffffffffp+1023, 0, -0x1.fffe62ecfab75p-1},
    {"Sin", 0x1.6ac5b262ca1ffp+849, 0, 1},
    {"Cos", 0x1.6ac5b262ca1ffp+849, 0, -0x1.14ae72e6ba22fp-61},
    {"Sin", 0x1.921fb54442d18p+1, 0, 0x1.1a62633145c07p-53},
    {"Cos", 0x1.921fb54442d18p+0, 0, 0x1.1a62633145c07p-54},
    // A multiple of pi/2 below 10^5, so close that three parts of pi do not tell the difference.
    {"Cos", 0x1.67e57cdd4dc54p+15, 0, 0x1.396f53352c401p-53},
    // Both ends of the range of doubles.
    {"CubeRoot", 0x1p-1074, 0, 0x1p-358},
    {"CubeRoot", 0x0.fffffffffffffp-1022, 0, 0x1.428a2f98d728ap-341},
    {"CubeRoot", 0x1.fffffffffffffp+1023, 0, 0x1.428a2f98d728bp+341},
    {"Exp", -0x1.74385446d71c3p+9, 0, 0x1p-1074},
    {"Exp", -0x1.66p+9, 0, 0x0.0020ae2a389eap-1022},
    {"Exp", 0x1.62e42fefa39efp+9, 0, 0x1.fffffffffff2ap+1023},
    {"Log", 0x1p-1074, 0, -0x1.74385446d71c3p+9},
    {"Power", 0.5, 1073, 0x1p-1073},
    {"Power", 0x1.fffffffffffffp-1, 0x1p+62, 0x1.44109edb2088fp-739},
    {"Power", 0x1.0000000000001p+0, -0x1.1p+61, 0x1.20cb4e0c2f7c6p-785},
    // The neighbours of 1, where the logarithm and the arc cosine nearly vanish.
    {"Log", 0x1.fffffffffffffp-1, 0, -0x1p-53},
    {"Log10", 0x1.0000000000001p+0, 0, 0x1.bcb7b1526e50dp-54},
    {"Acos", 0x1.fffffffffffffp-1, 0, 0x1p-26},
    {"Acos", -0x1.fffffffffffffp-1, 0, 0x1.921fb52442d18p+1},
};

TEST(Elementary, GivesTheSameBitsEverywhere) {
  for (const ValueRow& row : kPinned) ExpectSameBits(row);
}

const ValueRow kSpecial[] = {
    {"Exp", 709.79, 0, kInf},   {"Exp", -745.14, 0, 0},      {"Exp", 1e300, 0, kInf},
    {"Exp", -1e300, 0, 0},      {"Exp", kTiny, 0, 1},        {"Log", -kTiny, 0, kNaN},
    {"Sin", kTiny, 0, kTiny},   {"Atan", -kTiny, 0, -kTiny}, {"Asin", 1.0000000000000002, 0, kNaN},
    {"Atan2", kTiny, kMax, 0},  {"Atan2", -kTiny, 2, -0.0},  {"Atan2", kTiny, -kTiny, kPi * 0.75},
    {"Atan2", kNaN, 1, kNaN},   {"Atan2", 0, kNaN, kNaN},    {"Atan", 1, 0, kPi / 4},
    {"Acos", -0.0, 0, kPi / 2},
};

TEST(Elementary, TreatsSpecialValuesAsDocumented) {
  for (const ValueRow& row : kSpecial) ExpectSameBits(row);
}

/// The C library agrees on all combinations of the special arguments: there the results carry no rounding to
/// differ in (or, for the angles, are multiples of pi/4 and quotients, which it rounds correctly).
TEST(Elementary, UnaryFunctionsMeetTheirStandardInTheCorners) {
  const std::map<std::string, Function> standard = {
      {"CubeRoot", Unary<std::cbrt>}, {"Exp", Unary<std::exp>},   {"Log", Unary<std::log>},
      {"Log10", Unary<std::log10>},   {"Sin", Unary<std::sin>},   {"Cos", Unary<std::cos>},
      {"Atan", Unary<std::atan>},     {"Asin", Unary<std::asin>}, {"Acos", Unary<std::acos>}};
  for (const auto& [name, function] : standard) {
    const bool exactAtOne = name != "Exp" && name != "Sin" && name != "Cos";
    for (const double x : {0.0, kInf, kNaN, exactAtOne ? 1.0 : 0.0}) {
      for (const double a : {x, -x}) ExpectSameBits({name.c_str(), a, 0, function(a, 0)});
    }
  }
}

TEST(Elementary, PowerAndAtan2MeetTheirStandardInTheCorners) {
#if defined(_WIN32) || defined(__EMSCRIPTEN__)
  GTEST_SKIP() << "the C library rounds its powers twice, or to a neighbour";
#endif
  const double magnitudes[] = {0, kTiny, 0x1p-1030, 0.5, 1, 2, 3, 0x1p52 + 1, 0x1p53, kMax, kInf, kNaN};
  for (const double x : magnitudes) {
    for (const double y : magnitudes) {
      for (const double a : {x, -x}) {
        for (const double b : {y, -y}) {
          ExpectSameBits({"Power", a, b, std::pow(a, b)});
          if (x == y || x == 0 || y == 0 || x == kInf || y == kInf) {
            ExpectSameBits({"Atan2", a, b, std::atan2(a, b)});
          }
        }
      }
      ExpectSameBits({"Power", -x, 2.5, x > 0 && x < kInf ? kNaN : std::pow(-x, 2.5)});
    }
  }
}

// ----------------------------------------------------------------------------------------------------------
// Laws

TEST(Elementary, PowersThatAreDoublesComeOutExact) {
  for (int i = -60000; i <= 60000; ++i) {
    const double n = i;
    EXPECT_EQ(CubeRoot(n * n * n), n);
    EXPECT_EQ(Power(std::fabs(n), 3), std::fabs(n * n * n));
    EXPECT_EQ(Power(n * n, 0.5), std::fabs(n));
  }
  double power = 1;
  for (int n = 0; n <= 22; ++n, power *= 10) {
    EXPECT_EQ(Log10(power), n);
    EXPECT_EQ(Power(10, n), power);
    EXPECT_EQ(Log10(1 / power), -n);
  }
  for (int n = -1074; n <= 1023; ++n) EXPECT_EQ(Power(2, n), std::ldexp(1, n));
}

/// Across every boundary between table entries and reduction steps the results must not step back.
TEST(Elementary, RisesAcrossTheJointsOfItsTables) {
  for (const char* name : {"CubeRoot", "Exp", "Log", "Log10", "Sin", "Atan", "Asin"}) {
    const Function f = Named(name);
    for (int i = 1; i <= 4096; ++i) {
      double x = i / 4096.0 - 0x1p-50;
      for (int step = 0; step < 16 && x < 1; ++step) {
        const double next = std::nextafter(x, 2);
        ASSERT_LE(f(x, 0), f(next, 0)) << name << std::hexfloat << " after " << x;
        x = next;
      }
    }
  }
}

TEST(Elementary, KeepsItsSymmetries) {
  std::mt19937_64 generator(7);
  std::uniform_real_distribution<double> draw(-100, 100);
  for (int i = 0; i < 20000; ++i) {
    const double x = draw(generator), y = draw(generator);
    EXPECT_EQ(CubeRoot(-x), -CubeRoot(x));
    EXPECT_EQ(Sin(-x), -Sin(x));
    EXPECT_EQ(Cos(-x), Cos(x));
    EXPECT_EQ(Atan2(-y, x), -Atan2(y, x));
    EXPECT_EQ(Atan2(y, x), Atan2(0x1p-700 * y, 0x1p-700 * x));
    EXPECT_LE(std::fabs(Sin(0x1p900 * x)), 1);
    EXPECT_NEAR(Sin(x) * Sin(x) + Cos(x) * Cos(x), 1, 4 * DBL_EPSILON);
  }
}

}  // namespace
}  // namespace vrx
