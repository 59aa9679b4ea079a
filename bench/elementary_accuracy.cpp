// The elementary functions against MPFR, which knows the exact result: the largest error of each in units in the last place
// (ULP), over numbers of every size and over those that colour work brings, and whether special values give what C's
// functions give. Minutes for the full count; fails where an error exceeds what elementary.h states.
//
//   elementary_accuracy [COUNT [FUNCTION...]]     points a function, 10,000,000 when not given; all functions or those named

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mpfr.h>

#include <vrxmath/numeric/elementary.h>

#include "bench/harness.h"

namespace vrx::bench {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Exact = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr);
template <int (*F)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)>
int OfOne(mpfr_ptr result, mpfr_srcptr x, mpfr_srcptr) {
  return F(result, x, MPFR_RNDN);
}
template <int (*F)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t)>
int OfTwo(mpfr_ptr result, mpfr_srcptr x, mpfr_srcptr y) {
  return F(result, x, y, MPFR_RNDN);
}

struct Function {
  const char* name;
  double (*ours)(double x, double y);
  Exact exact;
  double low, high;  // arguments of colour work; every second point
  double bound;      // ULP, as stated
  bool takesTwo = false;
};

const Function kFunctions[] = {
    {"CubeRoot", [](double x, double) { return CubeRoot(x); }, &OfOne<mpfr_cbrt>, 0.0, 2.0, 0.5003},
    {"Exp", [](double x, double) { return Exp(x); }, &OfOne<mpfr_exp>, -40.0, 40.0, 0.52},
    {"Log", [](double x, double) { return Log(x); }, &OfOne<mpfr_log>, 0.0, 4.0, 0.501},
    {"Log10", [](double x, double) { return Log10(x); }, &OfOne<mpfr_log10>, 0.0, 4.0, 0.501},
    {"Power", [](double x, double y) { return Power(x, y); }, &OfTwo<mpfr_pow>, 0.0, 8.0, 0.57, true},
    {"Sin", [](double x, double) { return Sin(x); }, &OfOne<mpfr_sin>, -7.0, 7.0, 0.54},
    {"Cos", [](double x, double) { return Cos(x); }, &OfOne<mpfr_cos>, -7.0, 7.0, 0.54},
    {"Atan", [](double x, double) { return Atan(x); }, &OfOne<mpfr_atan>, -4.0, 4.0, 0.52},
    {"Atan2", [](double x, double y) { return Atan2(x, y); }, &OfTwo<mpfr_atan2>, -120.0, 120.0, 0.52, true},
    {"Asin", [](double x, double) { return Asin(x); }, &OfOne<mpfr_asin>, -1.0, 1.0, 0.52},
    {"Acos", [](double x, double) { return Acos(x); }, &OfOne<mpfr_acos>, -1.0, 1.0, 0.52},
};

// 200 bits of room: the error of the reference itself does not show.
class Reference {
 public:
  Reference() { mpfr_inits2(200, exact_, x_, y_, nullptr); }
  ~Reference() { mpfr_clears(exact_, x_, y_, nullptr); }
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;

  // How far `got` is from the exact result, in ULP of that; infinity where one is special and the other is not.
  double Error(const Function& f, double x, double y, double got) {
    mpfr_set_d(x_, x, MPFR_RNDN);
    mpfr_set_d(y_, y, MPFR_RNDN);
    f.exact(exact_, x_, y_);
    const double nearest = mpfr_get_d(exact_, MPFR_RNDN);
    if (std::isnan(nearest) || std::isnan(got))
      return std::isnan(nearest) && std::isnan(got) ? 0.0 : kInfinity;
    if (std::isinf(nearest) || std::isinf(got) || nearest == 0.0) {
      const bool same = std::bit_cast<std::uint64_t>(nearest) == std::bit_cast<std::uint64_t>(got);
      return same                                                                           ? 0.0
             : std::isinf(nearest) == std::isinf(got) && got != nearest && !std::isinf(got) ? 1.0
                                                                                            : kInfinity;
    }
    int exponent = 0;
    std::frexp(nearest, &exponent);
    mpfr_sub_d(exact_, exact_, got, MPFR_RNDN);
    mpfr_mul_2si(exact_, exact_, 53 - std::max(exponent, -1021), MPFR_RNDN);
    return std::fabs(mpfr_get_d(exact_, MPFR_RNDN));
  }

 private:
  mpfr_t exact_, x_, y_;
};

// Zeros, the ends of the subnormal and of the normal numbers, infinities, NaN, and numbers around which functions turn.
constexpr double kSpecial[] = {0.0,
                               0x1p-1074,
                               0x1p-1022,
                               0x1.fffffffffffffp-1023,
                               0x1p-54,
                               0x1p-26,
                               0.5,
                               1.0,
                               0x1.0000000000001p0,
                               0x1.fffffffffffffp-1,
                               1.5,
                               2.0,
                               3.0,
                               10.0,
                               100.0,
                               1e5,
                               1e22,
                               709.782712893384,
                               745.1332191019412,
                               0x1p53,
                               0x1p970,
                               0x1.fffffffffffffp1023,
                               kInfinity};

struct Worst {
  double error = 0.0, x = 0.0, y = 0.0;
  void Take(double e, double atX, double atY) {
    if (e > error) *this = {e, atX, atY};
  }
};

Worst OfSpecialValues(const Function& f, Reference& reference) {
  Worst worst;
  const auto check = [&](double x, double y) { worst.Take(reference.Error(f, x, y, f.ours(x, y)), x, y); };
  for (const double x : kSpecial) {
    for (const double y : kSpecial) {
      check(x, y), check(-x, y), check(x, -y), check(-x, -y);
    }
    for (const double nan = std::numeric_limits<double>::quiet_NaN(); const double other : {x, -x}) {
      check(nan, other), check(other, nan);
    }
  }
  return worst;
}

Worst OfPoints(const Function& f, Reference& reference, std::uint64_t count) {
  Worst worst;
  Random random(11);
  const auto anySize = [&] {  // evenly over the exponents, subnormals included
    const double x = std::ldexp(random.Between(1.0, 2.0), static_cast<int>(random.Between(-1076.0, 1024.0)));
    return random.Between(-1.0, 1.0) < 0.0 ? -x : x;
  };
  for (std::uint64_t i = 0; i < count; ++i) {
    const bool usual = i % 2 == 0;
    const double x = usual ? random.Between(f.low, f.high) : anySize();
    const double y = !f.takesTwo ? 0.0 : usual ? random.Between(f.low, f.high) : anySize();
    worst.Take(reference.Error(f, x, y, f.ours(x, y)), x, y);
  }
  return worst;
}

bool Report(const Function& f, std::uint64_t count) {
  Reference reference;
  const Worst special = OfSpecialValues(f, reference), points = OfPoints(f, reference, count);
  const bool good = points.error <= f.bound && special.error <= f.bound;
  std::printf("%-9s %9.5f %9.5f %9.4f  at %a, %a%s\n", f.name, points.error, special.error, f.bound, points.x,
              points.y, good ? "" : "  EXCEEDED");
  if (!good) std::printf("          special values at %a, %a\n", special.x, special.y);
  std::fflush(stdout);
  return good;
}

}  // namespace
}  // namespace vrx::bench

int main(int argc, char** argv) {
  const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 10'000'000;
  std::printf("%-9s %9s %9s %9s\n", "function", "ULP", "special", "stated");
  bool good = true;
  for (const auto& function : vrx::bench::kFunctions) {
    const auto isNamed = [&](const char* name) { return std::strcmp(name, function.name) == 0; };
    if (argc < 3 || std::any_of(argv + 2, argv + argc, isNamed)) good &= vrx::bench::Report(function, count);
  }
  return good ? 0 : 1;
}
