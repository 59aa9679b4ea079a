// Uniform colour spaces as formulas over values: those of the DIN99 family, CAM02-UCS, CAM16-UCS, Oklab and ICtCp, and the choice
// among all spaces in which difference systems work. What an illuminant and observer contribute is found once
// (SpaceTermsOf); the formulas then serve a colour and a pack of them.

#ifndef VRXMATH_COLORIMETRY_UNIFORM_SPACE_FORMULAS_H_
#define VRXMATH_COLORIMETRY_UNIFORM_SPACE_FORMULAS_H_

#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/appearance_formulas.h>
#include <vrxmath/colorimetry/space_formulas.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// The constants of a space of the DIN99 family: L99 = lightness ln(1 + lightnessSlope L*); a* and b* turned by an angle, the
/// second multiplied by `squeeze`; C99 = chroma ln(1 + chromaSlope G) of their length G, turned back by the same angle. The
/// X of colour and white is X + zShare (X - Z).
struct Din99Variant {
  double lightness, lightnessSlope;
  double cosine, sine;  ///< of the angle
  double squeeze;
  double chroma, chromaSlope;
  double zShare;
};

/// DIN99o: DIN 6176:2018, with kE = kCH = 1: L99 = 303.67 ln(1 + 0.0039 L*), 26 degrees, 0.83, C99 = ln(1 + 0.075 G) / 0.0435,
/// the same figures as in the package coloraide, after the summary of the standard at de.wikipedia.org. DIN99b, c, d: Cui, Luo, Rigg, Roesler and Witt, Color Res. Appl. 27, 2002, 282-290.
inline constexpr Din99Variant kDin99o{
    303.67, 0.0039, 0.898794046299167, 0.4383711467890774, 0.83, 1.0 / 0.0435, 0.075, 0.0};
inline constexpr Din99Variant kDin99b{303.67, 0.0039, 0.898794046299167, 0.4383711467890774, 0.83, 23.0,
                                      0.075,  0.0};
inline constexpr Din99Variant kDin99c{317.65, 0.0037, 1.0, 0.0, 0.94, 23.0, 0.066, 0.1};
inline constexpr Din99Variant kDin99d{325.22, 0.0036, 0.6427876096865394, 0.766044443118978, 1.14, 22.5,
                                      0.06,   0.12};

/// Coordinates of the DIN99 family from L*, a*, b*; chroma and hue are unset.
template <class T>
VRX_LANE_INLINE LabOf<T> LabToDin99Variant(const LabOf<T>& lab, const Din99Variant& v) {
  const T e = lab.a * v.cosine + lab.b * v.sine;
  const T f = v.squeeze * (lab.b * v.cosine - lab.a * v.sine);
  const T G = Sqrt(e * e + f * f);
  const T scale = v.chroma * Log(1.0 + v.chromaSlope * G) / Select(G > 0.0, G, T(1.0));
  return {v.lightness * Log(1.0 + v.lightnessSlope * lab.L), scale * (e * v.cosine - f * v.sine),
          scale * (e * v.sine + f * v.cosine), T(kUnset), T(kUnset)};
}
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToDin99Variant(const XyzOf<T>& xyz, const White& white, const Din99Variant& v) {
  const White stretched = {white.X + v.zShare * (white.X - white.Z), white.Y, white.Z};
  const XyzOf<T> moved = {xyz.X + v.zShare * (xyz.X - xyz.Z), xyz.Y, xyz.Z};
  return LabToDin99Variant(XyzToLabOnly(moved, stretched), v);
}

namespace uniform_constants {

/// The white for which Oklab and ICtCp are defined: D65 and 2 degrees.
inline constexpr White kDaylight{95.047, 100.0, 108.883};
inline constexpr Matrix3 kOklabResponse = {{{0.8189330101, 0.3618667424, -0.1288597137},
                                            {0.0329845436, 0.9293118715, 0.0361456387},
                                            {0.0482003018, 0.2643662691, 0.6338517070}}};
inline constexpr Matrix3 kOklabOpponent = {{{0.2104542553, 0.7936177850, -0.0040720468},
                                            {1.9779984951, -2.4285922050, 0.4505937099},
                                            {0.0259040371, 0.7827717662, -0.8086757660}}};
inline constexpr Matrix3 kXyzToRgb2020 = {{{1.7166511880, -0.3556707838, -0.2533662814},
                                           {-0.6666843518, 1.6164812366, 0.0157685458},
                                           {0.0176398574, -0.0427706133, 0.9421031212}}};
inline constexpr Matrix3 kRgb2020ToLms = {{{1688.0 / 4096.0, 2146.0 / 4096.0, 262.0 / 4096.0},
                                           {683.0 / 4096.0, 2951.0 / 4096.0, 462.0 / 4096.0},
                                           {99.0 / 4096.0, 309.0 / 4096.0, 3688.0 / 4096.0}}};
/// I, T = Ct / 2 and P = Cp, times 720.
inline constexpr Matrix3 kItpOpponent = {
    {{360.0, 360.0, 0.0},
     {360.0 * 6610.0 / 4096.0, -360.0 * 13613.0 / 4096.0, 360.0 * 7003.0 / 4096.0},
     {720.0 * 17933.0 / 4096.0, -720.0 * 17390.0 / 4096.0, -720.0 * 543.0 / 4096.0}}};

}  // namespace uniform_constants

/// Oklab times 100 of responses, L = 100 for the white; chroma and hue are unset.
/// Formula: Ottosson, "A perceptual color space for image processing", 2020.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToOklab(const XyzOf<T>& xyz, const Matrix3& response) {
  const XyzOf<T> lms = Times(response, xyz.X, xyz.Y, xyz.Z);
  const XyzOf<T> lab =
      Times(uniform_constants::kOklabOpponent, CubeRoot(lms.X), CubeRoot(lms.Y), CubeRoot(lms.Z));
  return {100.0 * lab.X, 100.0 * lab.Y, 100.0 * lab.Z, T(kUnset), T(kUnset)};
}

/// The signal for a luminance in cd/m^2 (ITU-R BT.2100, perceptual quantisation); 0 below darkness.
template <class T>
VRX_LANE_INLINE T PerceptualSignal(T luminance) {
  const T light = Select(luminance > 0.0, luminance, Select(luminance == luminance, T(0.0), luminance));
  const T y = Power(light / 10000.0, T(0.1593017578125));
  return Power((0.8359375 + 18.8515625 * y) / (1.0 + 18.6875 * y), T(78.84375));
}

/// 720 times I, Ct / 2 and Cp, in which dE ITP is the distance, of a colour whose white has 100 cd/m^2; chroma and hue are
/// unset. Formula: ITU-R BT.2124, ITU-R BT.2100.
template <class T>
VRX_LANE_INLINE LabOf<T> XyzToItp(const XyzOf<T>& xyz, const Matrix3& response) {
  const XyzOf<T> lms = Times(response, xyz.X, xyz.Y, xyz.Z);
  const XyzOf<T> itp = Times(uniform_constants::kItpOpponent, PerceptualSignal(lms.X),
                             PerceptualSignal(lms.Y), PerceptualSignal(lms.Z));
  return {itp.X, itp.Y, itp.Z, T(kUnset), T(kUnset)};
}

/// What an illuminant and observer contribute to the coordinates of a space.
struct SpaceTerms {
  CoordinateSpace space = CoordinateSpace::kLab;
  Viewing viewing = {};
  AppearanceTerms appearance = {};  ///< for the uniform spaces of the appearance models
  Matrix3 response = {};            ///< for Oklab and ICtCp, with the adaptation to their white
  Din99Variant din99 = {};
};

/// The terms of a space. The appearance models see the standard ViewingConditions. Colours under other whites come to that of
/// Oklab and ICtCp by a complete CAT16.
inline SpaceTerms SpaceTermsOf(CoordinateSpace space, const Viewing& viewing) {
  using namespace uniform_constants;
  SpaceTerms terms;
  terms.space = space;
  terms.viewing = viewing;
  const auto adapted = [&viewing](const Matrix3& response) {
    return Product(response, AdaptationMatrix(AdaptationTransform::kCat16, viewing.white, kDaylight));
  };
  switch (space) {
    case CoordinateSpace::kDin99o:
      terms.din99 = kDin99o;
      break;
    case CoordinateSpace::kDin99b:
      terms.din99 = kDin99b;
      break;
    case CoordinateSpace::kDin99c:
      terms.din99 = kDin99c;
      break;
    case CoordinateSpace::kDin99d:
      terms.din99 = kDin99d;
      break;
    case CoordinateSpace::kCam02Ucs:
      terms.appearance = AppearanceTermsOf(AppearanceModel::kCiecam02, viewing.white);
      break;
    case CoordinateSpace::kCam16Ucs:
      terms.appearance = AppearanceTermsOf(AppearanceModel::kCam16, viewing.white);
      break;
    case CoordinateSpace::kOklab:
      terms.response = adapted(kOklabResponse);
      for (auto& row : terms.response.at) {
        for (double& element : row) element /= 100.0;
      }
      break;
    case CoordinateSpace::kItp:
      terms.response = adapted(Product(kRgb2020ToLms, kXyzToRgb2020));
      break;
    default:
      break;
  }
  return terms;
}

/// The coordinates of a colour in the space of the terms.
template <class T>
VRX_LANE_INLINE LabOf<T> Coordinates(const SpaceTerms& terms, const XyzOf<T>& xyz) {
  LabOf<T> lab;
  switch (terms.space) {
    case CoordinateSpace::kHunter:
      return XyzToHunter(xyz, terms.viewing);
    case CoordinateSpace::kLuv:
      return XyzToLuv(xyz, terms.viewing.white);
    case CoordinateSpace::kLab:
      return XyzToLab(xyz, terms.viewing.white);
    case CoordinateSpace::kDin99o:
    case CoordinateSpace::kDin99b:
    case CoordinateSpace::kDin99c:
    case CoordinateSpace::kDin99d:
      lab = XyzToDin99Variant(xyz, terms.viewing.white, terms.din99);
      break;
    case CoordinateSpace::kCam02Ucs:
    case CoordinateSpace::kCam16Ucs:
      lab = UniformFromXyz(terms.appearance, xyz);
      break;
    case CoordinateSpace::kOklab:
      lab = XyzToOklab(xyz, terms.response);
      break;
    case CoordinateSpace::kItp:
      lab = XyzToItp(xyz, terms.response);
      break;
  }
  FillChromaHue(lab);
  return lab;
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_UNIFORM_SPACE_FORMULAS_H_
