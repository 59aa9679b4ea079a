// Uses the installed library as a host does: a colour difference, and what crosses the border of a shared library
// beside plain calls, which are exceptions in both directions, class information and containers.

#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include <vrxmath/colorimetry/color_differences.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/message_box.h>

#if !defined(_WIN32)  // whose package has no readers
#include <vrxio/files/curve_reader.h>
#include <vrxio/files/measurement_files.h>
#endif

namespace {

int failures = 0;

void Check(bool ok, const char* what) {
  std::printf("%-4s %s\n", ok ? "ok" : "FAIL", what);
  if (!ok) ++failures;
}

// The difference of two greys; closed forms of CIE L* and of the CMC lightness weight give the answer.
void CompareGreys() {
  const vrx::vrxIlluminant light = vrx::vrxIllumD65;
  const vrx::CDifferenceSettings cmc = vrx::DefaultSettings(vrx::vrxSystemCmc);
  vrx::CReflData standard, trial;
  standard.Fill(42.0);
  trial.Fill(40.0);
  vrx::CColorValues a, b;
  standard.Tristimulus(light, vrx::kObserver10, a.tristimulus);
  trial.Tristimulus(light, vrx::kObserver10, b.tristimulus);
  vrx::FillCoordinates(cmc.system, light, vrx::kObserver10, a);
  vrx::FillCoordinates(cmc.system, light, vrx::kObserver10, b);
  vrx::CDeltaValues delta;
  vrx::ComputeDifference(cmc, light, vrx::kObserver10, a, b, 45.0, delta);

  const double L1 = 116.0 * std::cbrt(0.42) - 16.0;
  const double L2 = 116.0 * std::cbrt(0.40) - 16.0;
  const double SL = 0.040975 * L1 / (1.0 + 0.01765 * L1);
  Check(std::fabs(a.tristimulus[1] - 42.0) < 0.01, "Y of a grey");
  Check(std::fabs(a.lab[0] - L1) < 0.01, "L* of a grey");
  Check(std::fabs(delta[6] - (L1 - L2) / (2.0 * SL)) < 0.01, "CMC(2:1) difference of two greys");
}

void CrossTheBorder() {
  vrx::CAngles angles;
  bool caught = false;
  try {
    angles.SetCodes(-1);
  } catch (const vrx::CInvalidArgException& error) {
    caught = dynamic_cast<const vrx::CException*>(static_cast<const std::exception*>(&error)) != nullptr;
  }
  Check(caught, "an exception of the library is caught by its class");

  vrx::SetMessageBoxHandler([](vrx::WideView, vrx::MessageIcon, void*) { throw std::out_of_range("index"); });
  caught = false;
  try {
    static_cast<void>(angles.GetAngle(7));
  } catch (const std::out_of_range&) {
    caught = true;
  }
  vrx::SetMessageBoxHandler(nullptr);
  Check(caught, "an exception of the host passes through the library");

  angles.SetCodes(3);
  vrx::CByteArray1 codes = angles.Codes();
  codes.InsertAt(0, 8, 100);
  angles.SetCodes(codes);
  Check(angles.GetCount() == 103 && angles.GetAngle(0) == 45.0, "containers grow on either side");

  vrx::CReflData curve;
  vrx::CObject& object = curve;
  Check(dynamic_cast<vrx::CDoubleArray1*>(&object) != nullptr && object.IsKindOf(vrx::CObject::kClass),
        "class information is the same on both sides");
}

void ReadMeasurements() {
#if !defined(_WIN32)
  std::istringstream file("id,400,410,420\ngrey,40,40,40\n");
  vrx::io::CurveReader curves(vrx::io::OpenMeasurements(vrx::io::WrapInput(file, "curves")));
  vrx::io::CurveRow row;
  Check(curves.Next(row) && row.id == "grey" && row.curve[39] == 40.0, "a curve from a file");
#endif
}

}  // namespace

int main() {
  CompareGreys();
  CrossTheBorder();
  ReadMeasurements();
  return failures == 0 ? 0 : 1;
}
