// One colour call at a time, ours against Little CMS in the same run. Every answer is compared before it is timed.
//
// The two sides: our L*a*b* record carries chroma and hue, which the peer computes in a call of its own
// (cmsLab2LCh), so both are timed with it. The peer's CIE94 uses other constants (textile, mean chroma): its answer is
// compared with that formula, its time with ours, which is the same amount of work.

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <lcms2.h>
#include <string>
#include <vector>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/colorimetry/color_spaces.h>
#include <vrxmath/colorimetry/weight_tables.h>

#include "bench/harness.h"

namespace {

constexpr int kColours = 512;

struct Samples {
  std::vector<vrx::CReflData> curves;
  std::vector<vrx::CTrisValues> xyz;
  std::vector<vrx::CLabValues> lab;
  std::vector<cmsCIEXYZ> peerXyz;
  std::vector<cmsCIELab> peerLab;
};

// Smooth random curves, and their colours under D65 and 10 degrees.
const Samples& TheSamples() {
  static const Samples samples = [] {
    Samples s;
    uint32_t state = 12345;
    const auto random = [&state] {
      state = state * 1664525U + 1013904223U;
      return (state >> 8) / 16777216.0;
    };
    for (int n = 0; n < kColours; ++n) {
      vrx::CReflData curve;
      const double base = 5 + 40 * random(), swing = 40 * random(), phase = 6 * random();
      for (int i = 0; i < vrx::kWavelengths; ++i)
        curve[i] = base + swing * (1 + std::sin(0.15 * i + phase)) / 2;
      vrx::CTrisValues xyz;
      vrx::CLabValues lab;
      curve.Tristimulus(vrx::vrxIllumD65, vrx::kObserver10, xyz);
      vrx::XyzToLab(vrx::vrxIllumD65, vrx::kObserver10, xyz, lab);
      s.curves.push_back(curve);
      s.xyz.push_back(xyz);
      s.lab.push_back(lab);
      s.peerXyz.push_back({xyz[0], xyz[1], xyz[2]});
      s.peerLab.push_back({lab[0], lab[1], lab[2]});
    }
    return s;
  }();
  return samples;
}

cmsCIEXYZ PeerWhite() {
  vrx::CTrisValues white;
  vrx::WhitePoint(vrx::vrxIllumD65, vrx::kObserver10, white);
  return {white[0], white[1], white[2]};
}

void Require(bool equal, const char* what, int n, double ours, double theirs) {
  if (equal) return;
  std::fprintf(stderr, "%s, sample %d: %.12g here, %.12g there\n", what, n, ours, theirs);
  std::exit(1);
}

double PeerCie94(const cmsCIELab& a, const cmsCIELab& b) {
  const double C1 = std::hypot(a.a, a.b), C2 = std::hypot(b.a, b.b), mean = std::sqrt(C1 * C2);
  const double dL = a.L - b.L, dC = C1 - C2, da = a.a - b.a, db = a.b - b.b;
  const double dH2 = std::fmax(0.0, da * da + db * db - dC * dC);
  const double SC = 1 + 0.048 * mean, SH = 1 + 0.014 * mean;
  return std::sqrt(dL * dL + dC * dC / (SC * SC) + dH2 / (SH * SH));
}

void CompareAnswers() {
  const Samples& s = TheSamples();
  const cmsCIEXYZ white = PeerWhite();
  for (int n = 0; n < kColours; ++n) {
    const auto i = static_cast<std::size_t>(n), j = static_cast<std::size_t>((n + 1) % kColours);
    cmsCIELab lab;
    cmsCIELCh lch;
    cmsXYZ2Lab(&white, &lab, &s.peerXyz[i]);
    cmsLab2LCh(&lch, &lab);
    const double theirs[] = {lab.L, lab.a, lab.b, lch.C, lch.h};
    for (int k = 0; k < 5; ++k) {
      Require(std::fabs(s.lab[i][k] - theirs[k]) < 1e-4, "XYZ to L*a*b*", n, s.lab[i][k], theirs[k]);
    }
    vrx::CDeltaValues delta;
    vrx::DeltaEab(s.lab[i], s.lab[j], delta);
    double peer = cmsDeltaE(&s.peerLab[i], &s.peerLab[j]);
    Require(std::fabs(delta[6] - peer) < 1e-6, "dE*ab", n, delta[6], peer);
    vrx::DeltaCmc(s.lab[i], 2.0, 1.0, delta);
    peer = cmsCMCdeltaE(&s.peerLab[i], &s.peerLab[j], 2.0, 1.0);
    Require(std::fabs(delta[6] - peer) < 1e-6, "CMC", n, delta[6], peer);
    vrx::DeltaCie2000(s.lab[i], s.lab[j], 1.0, 1.0, 1.0, delta);
    peer = cmsCIE2000DeltaE(&s.peerLab[i], &s.peerLab[j], 1.0, 1.0, 1.0);
    Require(std::fabs(delta[6] - peer) < 1e-6, "CIEDE2000", n, delta[6], peer);
    peer = cmsCIE94DeltaE(&s.peerLab[i], &s.peerLab[j]);
    Require(std::fabs(PeerCie94(s.peerLab[i], s.peerLab[j]) - peer) < 1e-6, "CIE94", n, 0.0, peer);
  }
}

// `call` on one sample after the other, each with its neighbour.
template <class CALL>
vrx::bench::Work Calls(CALL call) {
  return [call]() mutable {
    double sum = 0.0;
    for (std::size_t n = 0; n + 1 < kColours; ++n) sum += call(n, n + 1);
    vrx::bench::Keep(&sum);
  };
}
constexpr double kNanoseconds = 1e9 / (kColours - 1);

// The physical limit of a tristimulus call: its 120 multiplications and additions, three chains, without any record.
void MeasureTristimulus(vrx::bench::Table& table) {
  const double* weights = vrx::WeightTable(vrx::vrxIllumD65, vrx::kObserver10);
  table.Compare("tristimulus values", "120 multiply-adds",
                Calls([xyz = vrx::CTrisValues()](std::size_t n, std::size_t) mutable {
                  TheSamples().curves[n].Tristimulus(vrx::vrxIllumD65, vrx::kObserver10, xyz);
                  return xyz.GetData()[0];
                }),
                Calls([weights](std::size_t n, std::size_t) {
                  const double* curve = TheSamples().curves[n].GetData();
                  double X = 0, Y = 0, Z = 0;
                  for (int i = 0; i < 40; ++i) {
                    X += weights[i] * curve[i];
                    Y += weights[40 + i] * curve[i];
                    Z += weights[80 + i] * curve[i];
                  }
                  return X + Y + Z;
                }),
                kNanoseconds);
}

void MeasureLab(vrx::bench::Table& table) {
  const cmsCIEXYZ white = PeerWhite();
  table.Compare("XYZ to L*a*b* with hue", "lcms2 + cmsLab2LCh",
                Calls([lab = vrx::CLabValues()](std::size_t n, std::size_t) mutable {
                  vrx::XyzToLab(vrx::vrxIllumD65, vrx::kObserver10, TheSamples().xyz[n], lab);
                  return lab.GetData()[4];
                }),
                Calls([white](std::size_t n, std::size_t) {
                  cmsCIELab lab;
                  cmsCIELCh lch;
                  cmsXYZ2Lab(&white, &lab, &TheSamples().peerXyz[n]);
                  cmsLab2LCh(&lch, &lab);
                  return lch.h;
                }),
                kNanoseconds);
}

// One difference of each system, from a pair of records to the seven elements. A system without a peer of its own stands
// beside the plain difference of L*a*b*.
void MeasureDifference(vrx::bench::Table& table, int32_t system) {
  const vrx::CDifferenceSettings settings = vrx::DefaultSettings(system);
  std::vector<vrx::CColorValues> colours(kColours);
  for (std::size_t n = 0; n < kColours; ++n) {
    colours[n].tristimulus = TheSamples().xyz[n];
    vrx::FillCoordinates(system, vrx::vrxIllumD65, vrx::kObserver10, colours[n]);
  }
  const auto ours = Calls([&, delta = vrx::CDeltaValues()](std::size_t n, std::size_t m) mutable {
    vrx::ComputeDifference(settings, vrx::vrxIllumD65, vrx::kObserver10, colours[n], colours[m], 45.0, delta);
    return delta.GetData()[6];
  });
  const auto& lab = TheSamples().peerLab;
  const std::string work = vrx::DifferenceSystemName(system, vrx::NameLength::kLong).ToUtf8();
  const auto compare = [&](const char* peer, auto call) {
    table.Compare(work, peer, ours,
                  Calls([&lab, call](std::size_t n, std::size_t m) { return call(lab[n], lab[m]); }),
                  kNanoseconds);
  };
  using Lab = cmsCIELab;
  switch (system) {
    case vrx::vrxSystemCmc:
      return compare("lcms2 cmsCMCdeltaE", [](const Lab& a, const Lab& b) {
        return cmsCMCdeltaE(const_cast<Lab*>(&a), const_cast<Lab*>(&b), 2.0, 1.0);
      });
    case vrx::vrxSystemCie94:
      return compare("lcms2 cmsCIE94DeltaE",
                     [](const Lab& a, const Lab& b) { return cmsCIE94DeltaE(&a, &b); });
    case vrx::vrxSystemCie2000:
      return compare("lcms2 cmsCIE2000DeltaE",
                     [](const Lab& a, const Lab& b) { return cmsCIE2000DeltaE(&a, &b, 1.0, 1.0, 1.0); });
    default:
      return compare("lcms2 cmsDeltaE", [](const Lab& a, const Lab& b) { return cmsDeltaE(&a, &b); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  CompareAnswers();
  vrx::bench::Table table(argc, argv);
  MeasureTristimulus(table);
  MeasureLab(table);
  for (int32_t system = 0; system < vrx::kDifferenceSystems; ++system) MeasureDifference(table, system);
  return 0;
}
