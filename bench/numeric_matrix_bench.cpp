// The solvers of CMatrix against Eigen's nearest: same systems, same run, answers compared before the clock
// starts. Both sides include the copy of the input that their in-place work needs; neither allocates its
// result in the loop.

#include <Eigen/Dense>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <vrxmath/numeric/matrix.h>

namespace {

using vrx::CDoubleArray1;
using vrx::CMatrix;

/// A random system A x = b with a dominant enough diagonal to be well conditioned.
struct System {
  explicit System(int n) : matrix(n, n), rightHandSide(n) {
    std::mt19937_64 generator(static_cast<unsigned>(n));
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) matrix(i, j) = uniform(generator) + (i == j ? 2.0 : 0.0);
      rightHandSide(i) = uniform(generator);
    }
  }

  CMatrix Ours(bool augmented) const {
    const auto n = static_cast<uint32_t>(matrix.rows());
    CMatrix ours(n, augmented ? n + 1 : n);
    for (int i = 0; i < matrix.rows(); ++i) {
      for (int j = 0; j < matrix.cols(); ++j) ours[i][j] = matrix(i, j);
      if (augmented) ours[i][matrix.cols()] = rightHandSide(i);
    }
    return ours;
  }
  CDoubleArray1 OurRightHandSide() const {
    CDoubleArray1 b;
    for (int i = 0; i < rightHandSide.size(); ++i) b.Add(rightHandSide(i));
    return b;
  }

  Eigen::MatrixXd matrix;
  Eigen::VectorXd rightHandSide;
};

void Require(bool agreed, const char* what) {
  if (agreed) return;
  std::fprintf(stderr, "numeric_matrix_bench: %s disagrees with Eigen\n", what);
  std::exit(1);
}

double Difference(const CDoubleArray1& ours, const Eigen::VectorXd& theirs) {
  double worst = 0.0;
  for (int i = 0; i < theirs.size(); ++i) worst = std::max(worst, std::fabs(ours[i] - theirs(i)));
  return worst;
}

double Difference(const CMatrix& ours, const Eigen::MatrixXd& theirs) {
  double worst = 0.0;
  for (int i = 0; i < theirs.rows(); ++i) worst = std::max(worst, Difference(ours[i], theirs.row(i)));
  return worst;
}

void GaussSolve_Ours(benchmark::State& state) {
  const System system(static_cast<int>(state.range(0)));
  const CMatrix original = system.Ours(true);
  CMatrix work = original;
  CDoubleArray1 x = system.OurRightHandSide();
  Require(work.GaussSolve(x) == 1 &&
              Difference(x, system.matrix.partialPivLu().solve(system.rightHandSide)) < 1e-11,
          "GaussSolve");
  for (auto _ : state) {
    work = original;
    benchmark::DoNotOptimize(work.GaussSolve(x));
  }
}

void GaussSolve_Eigen(benchmark::State& state) {
  const System system(static_cast<int>(state.range(0)));
  Eigen::PartialPivLU<Eigen::MatrixXd> lu(state.range(0));
  Eigen::VectorXd x(state.range(0));
  for (auto _ : state) {
    lu.compute(system.matrix);
    x = lu.solve(system.rightHandSide);
    benchmark::DoNotOptimize(x.data());
  }
}

void InvertSolve_Ours(benchmark::State& state) {
  const System system(static_cast<int>(state.range(0)));
  const CMatrix original = system.Ours(false);
  const CDoubleArray1 rightHandSide = system.OurRightHandSide();
  CMatrix work = original;
  CDoubleArray1 x = rightHandSide;
  Require(work.InvertSolve(x) == 1 && Difference(work, system.matrix.fullPivLu().inverse()) < 1e-11 &&
              Difference(x, system.matrix.fullPivLu().solve(system.rightHandSide)) < 1e-11,
          "InvertSolve");
  for (auto _ : state) {
    work = original;
    x = rightHandSide;
    benchmark::DoNotOptimize(work.InvertSolve(x));
  }
}

void InvertSolve_Eigen(benchmark::State& state) {
  const System system(static_cast<int>(state.range(0)));
  Eigen::FullPivLU<Eigen::MatrixXd> lu(state.range(0), state.range(0));
  Eigen::MatrixXd inverse(state.range(0), state.range(0));
  Eigen::VectorXd x(state.range(0));
  for (auto _ : state) {
    lu.compute(system.matrix);
    inverse = lu.inverse();
    x.noalias() = inverse * system.rightHandSide;
    benchmark::DoNotOptimize(inverse.data());
    benchmark::DoNotOptimize(x.data());
  }
}

void SvdDecompose_Ours(benchmark::State& state) {
  const auto n = static_cast<uint32_t>(state.range(0));
  const System system(static_cast<int>(n));
  const CMatrix original = system.Ours(false);
  CMatrix work = original, v(n, n);
  CDoubleArray1 w = system.OurRightHandSide();
  work.SvdDecompose(w, v);
  CDoubleArray1 sorted = w;
  std::sort(sorted.begin(), sorted.end(), std::greater<>());
  Require(Difference(sorted, system.matrix.bdcSvd().singularValues()) < 1e-11, "SvdDecompose");
  for (auto _ : state) {
    work = original;
    work.SvdDecompose(w, v);
    benchmark::DoNotOptimize(w.GetData());
  }
}

void SvdDecompose_Eigen(benchmark::State& state) {
  const System system(static_cast<int>(state.range(0)));
  constexpr unsigned kThin = Eigen::ComputeThinU | Eigen::ComputeThinV;
  Eigen::BDCSVD<Eigen::MatrixXd> svd(state.range(0), state.range(0), kThin);
  for (auto _ : state) {
    svd.compute(system.matrix, kThin);
    benchmark::DoNotOptimize(svd.singularValues().data());
  }
}

#define VRX_MATRIX_SIZES Arg(3)->Arg(10)->Arg(40)->Arg(100)
BENCHMARK(GaussSolve_Ours)->VRX_MATRIX_SIZES;
BENCHMARK(GaussSolve_Eigen)->VRX_MATRIX_SIZES;
BENCHMARK(InvertSolve_Ours)->VRX_MATRIX_SIZES;
BENCHMARK(InvertSolve_Eigen)->VRX_MATRIX_SIZES;
BENCHMARK(SvdDecompose_Ours)->VRX_MATRIX_SIZES;
BENCHMARK(SvdDecompose_Eigen)->VRX_MATRIX_SIZES;

}  // namespace

BENCHMARK_MAIN();
