#include <vrxmath/colorimetry/color_spaces.h>

#include <vrxmath/colorimetry/difference_formulas.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/weight_tables.h>

namespace vrx {
namespace {

// Coordinates with a hue, which a record keeps in the unit of the flag to the last bit.
void StorePolar(const Lab& lab, CLabValues& record) {
  record.SetValues(lab);
  if (!HueInDegrees()) record[CLabValues::kHue] = HueRadians(lab.a, lab.b);
}

}  // namespace

void ChromaHue(CLabValues& record) {
  Lab lab = record.Values(3);
  FillChromaHue(lab);
  record[CLabValues::kChroma] = lab.C;
  record[CLabValues::kHue] = HueInDegrees() ? lab.h : HueRadians(lab.a, lab.b);
}

void XyzToLab(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& lab) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return lab.Fill(kUnset);
  StorePolar(XyzToLab(xyz.Values(), n), lab);
}

void LabToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return xyz.Fill(kUnset);
  xyz.SetValues(LabToXyz(lab.Values(3), n));
}

void XyzToLuv(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& luv) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return luv.Fill(kUnset);
  StorePolar(XyzToLuv(xyz.Values(), n), luv);
}

void LuvToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& luv, CTrisValues& xyz) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return xyz.Fill(kUnset);
  xyz.SetValues(LuvToXyz(luv.Values(3), n));
}

void XyzToHunter(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz, CLabValues& record) {
  record.Fill(kUnset);
  Viewing viewing;
  if (!FindViewing(illuminant, observer, viewing)) return;
  const Lab lab = XyzToHunter(xyz.Values(), viewing);
  colorimetry_internal::Store(record, lab.L, lab.a, lab.b);
}

void HunterToXyz(vrxIlluminant illuminant, int32_t observer, const CLabValues& lab, CTrisValues& xyz) {
  Viewing viewing;
  if (!FindViewing(illuminant, observer, viewing)) return xyz.Fill(kUnset);
  xyz.SetValues(HunterToXyz(lab.Values(3), viewing));
}

void LabToDin99(const CLabValues& lab, double kCH, double kE, CLabValues& din99) {
  StorePolar(LabToDin99(lab.Values(CLabValues::kB + 1), kCH, kE), din99);
}

void LabDerivative(vrxIlluminant illuminant, int32_t observer, const CTrisValues& xyz,
                   const CTrisValues& change, CLabValues& result) {
  White n;
  if (!FindWhite(illuminant, observer, n)) return result.Fill(kUnset);
  const Lab d = LabDerivative(xyz.Values(), change.Values(), n);
  colorimetry_internal::Store(result, d.L, d.a, d.b);
}

void Chromaticity(const CTrisValues& xyz, double& x, double& y) {
  const Xy xy = IsUnset(xyz) ? Xy{kUnset, kUnset} : Chromaticity(xyz.Values());
  x = xy.x;
  y = xy.y;
}

}  // namespace vrx
