// The solvers of CMatrix against Eigen's nearest: same systems, same run, answers compared before the clock
// starts. Both sides include the copy of the input that their in-place work needs; neither allocates its
// result in the loop.

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <vrxmath/numeric/matrix.h>

#include "bench/harness.h"

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

void MeasureGaussSolve(vrx::bench::Table& table, int n) {
  const System system(n);
  const CMatrix original = system.Ours(true);
  CMatrix work = original;
  CDoubleArray1 x = system.OurRightHandSide();
  Require(work.GaussSolve(x) == 1 &&
              Difference(x, system.matrix.partialPivLu().solve(system.rightHandSide)) < 1e-11,
          "GaussSolve");
  Eigen::PartialPivLU<Eigen::MatrixXd> lu(n);
  Eigen::VectorXd solution(n);
  const auto seconds = vrx::bench::SecondsOf({[&] {
                                                work = original;
                                                Require(work.GaussSolve(x) == 1, "GaussSolve");
                                                vrx::bench::Keep(x.GetData());
                                              },
                                              [&] {
                                                lu.compute(system.matrix);
                                                solution = lu.solve(system.rightHandSide);
                                                vrx::bench::Keep(solution.data());
                                              }});
  table.Report({"GaussSolve, n = " + std::to_string(n), "Eigen PartialPivLU", seconds[0] * 1e9,
                seconds[1] * 1e9, n >= 40 ? "<= 1.5" : "<= 1.2", true});
}

void MeasureInvertSolve(vrx::bench::Table& table, int n) {
  const System system(n);
  const CMatrix original = system.Ours(false);
  const CDoubleArray1 rightHandSide = system.OurRightHandSide();
  CMatrix work = original;
  CDoubleArray1 x = rightHandSide;
  Require(work.InvertSolve(x) == 1 && Difference(work, system.matrix.fullPivLu().inverse()) < 1e-11 &&
              Difference(x, system.matrix.fullPivLu().solve(system.rightHandSide)) < 1e-11,
          "InvertSolve");
  Eigen::FullPivLU<Eigen::MatrixXd> lu(n, n);
  Eigen::MatrixXd inverse(n, n);
  Eigen::VectorXd solution(n);
  table.Compare(
      "InvertSolve, n = " + std::to_string(n), "Eigen FullPivLU",
      [&] {
        work = original;
        x = rightHandSide;
        Require(work.InvertSolve(x) == 1, "InvertSolve");
        vrx::bench::Keep(x.GetData());
      },
      [&] {
        lu.compute(system.matrix);
        inverse = lu.inverse();
        solution.noalias() = inverse * system.rightHandSide;
        vrx::bench::Keep(inverse.data());
        vrx::bench::Keep(solution.data());
      },
      1e9);
}

void MeasureSvdDecompose(vrx::bench::Table& table, int n) {
  const System system(n);
  const auto size = static_cast<uint32_t>(n);
  const CMatrix original = system.Ours(false);
  CMatrix work = original, v(size, size);
  CDoubleArray1 w = system.OurRightHandSide();
  work.SvdDecompose(w, v);
  CDoubleArray1 sorted = w;
  std::sort(sorted.begin(), sorted.end(), std::greater<>());
  Require(Difference(sorted, system.matrix.bdcSvd().singularValues()) < 1e-11, "SvdDecompose");
  constexpr unsigned kThin = Eigen::ComputeThinU | Eigen::ComputeThinV;
  Eigen::BDCSVD<Eigen::MatrixXd> svd(n, n, kThin);
  table.Compare(
      "SvdDecompose, n = " + std::to_string(n), "Eigen BDCSVD",
      [&] {
        work = original;
        work.SvdDecompose(w, v);
        vrx::bench::Keep(w.GetData());
      },
      [&] {
        svd.compute(system.matrix, kThin);
        vrx::bench::Keep(svd.singularValues().data());
      },
      1e9);
}

}  // namespace

int main(int argc, char** argv) {
  vrx::bench::Table table(argc, argv);
  for (const int n : {3, 10, 40, 100}) {
    MeasureGaussSolve(table, n);
    MeasureInvertSolve(table, n);
    MeasureSvdDecompose(table, n);
  }
  return 0;
}
