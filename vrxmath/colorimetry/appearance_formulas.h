// Colour appearance as formulas over values: CIECAM02 (CIE 159:2004) and CAM16 (Li et al., Color Res. Appl. 42, 2017, 703-718) in
// both directions. What the viewing conditions contribute is found once (AppearanceTermsOf); the formulas then serve a colour
// and a pack of them.
//
// Black has J = 0 and no hue; so does what the models place below black. Colours whose responses add up to nothing or less,
// which no lamp and no surface gives, have NaN as their chroma.

#ifndef VRXMATH_COLORIMETRY_APPEARANCE_FORMULAS_H_
#define VRXMATH_COLORIMETRY_APPEARANCE_FORMULAS_H_

#include <cstdint>

#include <vrxmath/colorimetry/adaptation_formulas.h>
#include <vrxmath/colorimetry/hue.h>
#include <vrxmath/colorimetry/values.h>
#include <vrxmath/numeric/lanes.h>

namespace vrx {

/// A colour-appearance model.
enum class AppearanceModel : int32_t { kCiecam02, kCam16 };

/// The light around the field of view. The factors F, c and Nc of CIE 159.
struct Surround {
  double F, c, Nc;
};
inline constexpr Surround kAverageSurround{1.0, 0.69, 1.0};
inline constexpr Surround kDimSurround{0.9, 0.59, 0.9};
inline constexpr Surround kDarkSurround{0.8, 0.525, 0.8};

/// The conditions in which a colour is seen. The standard ones are those of a light booth: 1000 lx on grey of 20 %.
struct ViewingConditions {
  double adaptingLuminance =
      63.66197723675813;     ///< L_A in cd/m^2: illuminance times the factor of the background, over pi
  double background = 20.0;  ///< Y_b on the scale of the white's 100
  Surround surround = kAverageSurround;
  double degree = -1.0;  ///< of adaptation, 0 to 1; any negative number: by the model's formula
};

/// What the conditions contribute to a model.
struct AppearanceTerms {
  AppearanceModel model = AppearanceModel::kCam16;
  Matrix3 forward{}, inverse{};   ///< from tristimulus values to the adapted responses, and back
  double FL = 0.0, FLRoot = 0.0;  ///< luminance-level adaptation and its fourth root
  double Nbb = 0.0, cz = 0.0, c = 0.0, chromaFactor = 0.0, hueFactor = 0.0;
  double whiteResponse = 0.0;  ///< the achromatic response A of the white
};

/// The correlates of a colour: lightness, chroma, hue in degrees, brightness, colourfulness, saturation.
template <class T>
struct AppearanceOf {
  T J, C, h, Q, M, s;
};
using Appearance = AppearanceOf<double>;

namespace appearance_constants {

inline constexpr Matrix3 kHuntPointerEstevez = {
    {{0.38971, 0.68898, -0.07868}, {-0.22981, 1.18340, 0.04641}, {0.0, 0.0, 1.0}}};
inline constexpr double kCosine2 = -0.4161468365471424, kSine2 = 0.9092974268256817;  // of 2 radians
inline constexpr double kHueScale = 50000.0 / 13.0;
inline constexpr double kNoise = 0.305;  // the achromatic response of darkness

}  // namespace appearance_constants

/// The compression of an adapted response, odd about 0, with the model's offset 0.1.
template <class T>
VRX_LANE_INLINE T CompressedResponse(T response, double FL) {
  const T x = Power(FL * Abs(response) / 100.0, T(0.42));
  const T y = 400.0 * x / (x + 27.13);
  return Select(response < 0.0, -y, y) + 0.1;
}
template <class T>
VRX_LANE_INLINE T ExpandedResponse(T compressed, double FL) {
  const T y = Abs(compressed - 0.1);
  const T x = 100.0 / FL * Power(27.13 * y / (400.0 - y), T(1.0 / 0.42));
  return Select(compressed < 0.1, -x, x);
}

/// The compressed responses of a colour and what the models make of them first: opponent signals a and b, the achromatic
/// signal 2R + G + B/20, and the sum R + G + 1.05 B that divides a and b.
template <class T>
struct OpponentSignalsOf {
  T a, b, achromatic, sum;
};
template <class T>
VRX_LANE_INLINE OpponentSignalsOf<T> OpponentSignals(const AppearanceTerms& terms, const XyzOf<T>& xyz) {
  const XyzOf<T> adapted = Times(terms.forward, xyz.X, xyz.Y, xyz.Z);
  const T R = CompressedResponse(adapted.X, terms.FL), G = CompressedResponse(adapted.Y, terms.FL),
          B = CompressedResponse(adapted.Z, terms.FL);
  return {R - 12.0 * G / 11.0 + B / 11.0, (R + G - 2.0 * B) / 9.0, 2.0 * R + G + B / 20.0,
          R + G + 21.0 / 20.0 * B};
}

/// The terms of a model for a white (Y = 100) and conditions. A degree of adaptation that the formula gives is
/// F (1 - exp((-L_A - 42) / 92) / 3.6), kept within 0 to 1.
VRX_LANE_INLINE AppearanceTerms AppearanceTermsOf(AppearanceModel model, const White& white,
                                                  const ViewingConditions& conditions = {}) {
  using namespace appearance_constants;
  const double LA = conditions.adaptingLuminance;
  const Surround& surround = conditions.surround;
  const double byFormula = surround.F * (1.0 - Exp((-LA - 42.0) / 92.0) / 3.6);
  const double D = Min(conditions.degree < 0.0 ? Max(byFormula, 0.0) : conditions.degree, 1.0);
  AppearanceTerms terms;
  terms.model = model;
  const bool is02 = model == AppearanceModel::kCiecam02;
  const Matrix3 response = ResponseMatrix(is02 ? AdaptationTransform::kCat02 : AdaptationTransform::kCat16);
  Matrix3 adapted = response;
  for (auto& row : adapted.at) {
    const double gain = D * white.Y / (row[0] * white.X + row[1] * white.Y + row[2] * white.Z) + 1.0 - D;
    for (double& element : row) element *= gain;
  }
  terms.forward = is02 ? Product(kHuntPointerEstevez, Product(Inverse(response), adapted)) : adapted;
  terms.inverse = Inverse(terms.forward);
  const double k = 1.0 / (5.0 * LA + 1.0), k4 = k * k * k * k;
  terms.FL = 0.2 * k4 * (5.0 * LA) + 0.1 * (1.0 - k4) * (1.0 - k4) * CubeRoot(5.0 * LA);
  terms.FLRoot = Sqrt(Sqrt(terms.FL));
  const double n = conditions.background / white.Y;
  terms.Nbb = 0.725 * Power(1.0 / n, 0.2);
  terms.c = surround.c;
  terms.cz = surround.c * (1.48 + Sqrt(n));
  terms.chromaFactor = Power(1.64 - Power(0.29, n), 0.73);
  terms.hueFactor = kHueScale * surround.Nc * terms.Nbb;
  const auto signals = OpponentSignals(terms, Xyz{white.X, white.Y, white.Z});
  terms.whiteResponse = (signals.achromatic - kNoise) * terms.Nbb;
  return terms;
}

/// J, and J / 100 to the power of 1/2, of an achromatic signal; 0 for black and below.
template <class T>
VRX_LANE_INLINE T LightnessOf(const AppearanceTerms& terms, T achromatic) {
  const T A = (achromatic - appearance_constants::kNoise) * terms.Nbb;
  const T ratio = Select(A > 0.0, A, Select(A == A, T(0.0), A)) / terms.whiteResponse;
  return 100.0 * Power(ratio, T(terms.cz));
}

/// The chroma C of opponent signals whose length is r, J being the lightness.
template <class T>
VRX_LANE_INLINE T ChromaOf(const AppearanceTerms& terms, const OpponentSignalsOf<T>& signals, T r, T J) {
  using namespace appearance_constants;
  const T safe = Select(r > 0.0, r, T(1.0));
  const T cosine = (signals.a * kCosine2 - signals.b * kSine2) / safe;  // of the hue plus 2 radians
  const T eccentricity = 0.25 * (cosine + 3.8);
  const T t = terms.hueFactor * eccentricity * r / signals.sum;
  return Power(t, T(0.9)) * Sqrt(J / 100.0) * terms.chromaFactor;
}

/// The appearance of a colour; all unset for unset tristimulus values.
template <class T>
VRX_LANE_INLINE AppearanceOf<T> AppearanceFromXyz(const AppearanceTerms& terms, const XyzOf<T>& xyz) {
  const auto signals = OpponentSignals(terms, xyz);
  const T r = Sqrt(signals.a * signals.a + signals.b * signals.b);
  AppearanceOf<T> look;
  look.J = LightnessOf(terms, signals.achromatic);
  look.C = ChromaOf(terms, signals, r, look.J);
  look.h = HueDegrees(signals.a, signals.b);
  look.Q = 4.0 / terms.c * Sqrt(look.J / 100.0) * (terms.whiteResponse + 4.0) * terms.FLRoot;
  look.M = look.C * terms.FLRoot;
  look.s = 100.0 * Sqrt(look.M / Select(look.Q == 0.0, T(1.0), look.Q));
  const auto unset = IsUnset(xyz);
  const auto unlessUnset = [unset](T value) VRX_LANE_LAMBDA { return Select(unset, T(kUnset), value); };
  return {unlessUnset(look.J), unlessUnset(look.C), unlessUnset(look.h),
          unlessUnset(look.Q), unlessUnset(look.M), unlessUnset(look.s)};
}

/// The colour of a lightness J, a chroma C and a hue in degrees.
template <class T>
VRX_LANE_INLINE XyzOf<T> XyzFromAppearance(const AppearanceTerms& terms, T J, T C, T h) {
  using namespace appearance_constants;
  const auto black = J <= 0.0;
  const T light = Select(black, T(1.0), J);
  const T t = Power(C / (Sqrt(light / 100.0) * terms.chromaFactor), T(1.0 / 0.9));
  const T cosine = CosDegrees(h), sine = SinDegrees(h);
  const T eccentricity = 0.25 * (cosine * kCosine2 - sine * kSine2 + 3.8);
  const T A = terms.whiteResponse * Power(light / 100.0, T(1.0 / terms.cz));
  const T achromatic = A / terms.Nbb + kNoise;
  const T r =
      23.0 * achromatic * t / (23.0 * terms.hueFactor * eccentricity + t * (11.0 * cosine + 108.0 * sine));
  const T a = r * cosine, b = r * sine;
  const T R = (460.0 * achromatic + 451.0 * a + 288.0 * b) / 1403.0,
          G = (460.0 * achromatic - 891.0 * a - 261.0 * b) / 1403.0,
          B = (460.0 * achromatic - 220.0 * a - 6300.0 * b) / 1403.0;
  const XyzOf<T> xyz = Times(terms.inverse, ExpandedResponse(R, terms.FL), ExpandedResponse(G, terms.FL),
                             ExpandedResponse(B, terms.FL));
  return {Select(black, T(0.0), xyz.X), Select(black, T(0.0), xyz.Y), Select(black, T(0.0), xyz.Z)};
}

/// The hue quadrature H, 0 to 400 from red by yellow, green and blue to red, of a hue in degrees (CIE 159, table 4).
template <class T>
VRX_LANE_INLINE T HueQuadrature(T h) {
  constexpr double kHues[5] = {20.14, 90.0, 164.25, 237.53, 380.14}, kE[5] = {0.8, 0.7, 1.0, 1.2, 0.8};
  const T turned = Select(h < kHues[0], h + 360.0, h);
  T H = T(0.0);
  for (int i = 0; i < 4; ++i) {
    const T from = (turned - kHues[i]) / kE[i], to = (kHues[i + 1] - turned) / kE[i + 1];
    H = Select(turned >= kHues[i], 100.0 * i + 100.0 * from / (from + to), H);
  }
  return H;
}

/// Coordinates J', a', b' of the uniform spaces CAM02-UCS and CAM16-UCS, with M' and the hue in degrees unset.
/// Formula: Luo, Cui and Li, Color Res. Appl. 31, 2006, 320-330; J' = 1.7 J / (1 + 0.007 J), M' = ln(1 + 0.0228 M) / 0.0228.
template <class T>
VRX_LANE_INLINE LabOf<T> UniformFromXyz(const AppearanceTerms& terms, const XyzOf<T>& xyz) {
  const auto signals = OpponentSignals(terms, xyz);
  const T r = Sqrt(signals.a * signals.a + signals.b * signals.b);
  const T J = LightnessOf(terms, signals.achromatic);
  const T M = ChromaOf(terms, signals, r, J) * terms.FLRoot;
  const T scale = Log(1.0 + 0.0228 * M) / 0.0228 / Select(r > 0.0, r, T(1.0));
  return {1.7 * J / (1.0 + 0.007 * J), scale * signals.a, scale * signals.b, T(kUnset), T(kUnset)};
}

/// XyzFromAppearance of coordinates J', a', b'.
template <class T>
VRX_LANE_INLINE XyzOf<T> XyzFromUniform(const AppearanceTerms& terms, const LabOf<T>& ucs) {
  const T J = ucs.L / (1.7 - 0.007 * ucs.L);
  const T M = (Exp(0.0228 * Sqrt(ucs.a * ucs.a + ucs.b * ucs.b)) - 1.0) / 0.0228;
  return XyzFromAppearance(terms, J, M / terms.FLRoot, HueDegrees(ucs.a, ucs.b));
}

}  // namespace vrx

#endif  // VRXMATH_COLORIMETRY_APPEARANCE_FORMULAS_H_
