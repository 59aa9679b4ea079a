#include <vrxmath/foundation/mixture.h>

#include <utility>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {
namespace {

// Stretches a curve's distance from that of the base.
void ScaleOverBase(CKSData& curve, const CKSData& base, double ratio) {
  for (int32_t i = 0; i < curve.GetSize(); ++i) curve[i] = base[i] + (curve[i] - base[i]) * ratio;
}

}  // namespace

CColorantValues::CColorantValues() {
  absorption.Fill(kUnset);
  scattering.Fill(kUnset);
}

void CColorantValues::Serialize(CArchive& archive) {
  CColorantValues loaded;
  const bool loads = archive.IsLoading();
  SerializeDoubles(archive, loads ? loaded.absorption : absorption, kWavelengths);
  SerializeDoubles(archive, loads ? loaded.scattering : scattering, kWavelengths);
  if (loads) *this = std::move(loaded);
}

CColorantValues UnitBase() {
  CColorantValues base;
  base.absorption.Fill(0.0);
  base.scattering.Fill(1.0);
  return base;
}

void CColorantLevel::RescaleUnitCurves(double ratio) {
  for (CColorantValues& entry : values) {
    for (double& K : entry.absorption) K *= ratio;
    for (double& S : entry.scattering) S *= ratio;
  }
}

void CColorantLevel::KeepContributionOverBase(double ratio, const CColorantValues& base) {
  for (CColorantValues& entry : values) {
    ScaleOverBase(entry.absorption, base.absorption, ratio);
    ScaleOverBase(entry.scattering, base.scattering, ratio);
  }
}

void CColorantLevel::Serialize(CArchive& archive) {
  SerializeFields(archive, concentration, values);
}

void CMixtureElement::Serialize(CArchive& archive) {
  SerializeFields(archive, flags, amount, values);
}

}  // namespace vrx
