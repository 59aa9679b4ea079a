#include <vrxmath/foundation/mixture.h>

#include <span>

#include <vrxmath/foundation/record_archive.h>

namespace vrx {
namespace {

// A curve has 40 samples in every archive.
void SerializeCurve(CArchive& archive, CKSData& curve) {
  if (archive.IsLoading()) curve.SetSize(kWavelengths);
  for (int32_t i = 0; i < kWavelengths; ++i) SerializeField(archive, curve[i]);
}

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
  SerializeCurve(archive, absorption);
  SerializeCurve(archive, scattering);
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
  SerializeField(archive, concentration);
  SerializeRecords(archive, values);
}

void CMixtureElement::Serialize(CArchive& archive) {
  SerializeFields(archive, flags, amount);
  SerializeRecords(archive, values);
}

CMixture::~CMixture() = default;

void CMixture::Serialize(CArchive& archive) {
  SerializeRecords(archive, *this);
}

}  // namespace vrx
