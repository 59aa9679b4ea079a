#include <vrxmath/batch/difference_kernels.h>

#include <type_traits>
#include <utility>

#include <vrxmath/batch/lane_rows.h>

namespace vrx {
namespace {

// The columns of tristimulus values and of coordinates.
enum XyzColumn : std::size_t { kX, kY, kZ };
constexpr std::size_t kXyzColumns = 3;
enum LabColumn : std::size_t { kL, kA, kB, kChroma, kHue };

// Which of the columns of a colour a system reads: X, Y, Z or not, and how many of L, a, b, C, h.
template <bool kReadsXyz, std::size_t kLabElements>
struct ColorReader {
  static constexpr std::size_t kXyzElements = kReadsXyz ? kXyzColumns : 0;
  static constexpr std::size_t kColumns = kXyzElements + kLabElements;
  using One = Widths<kXyzElements, kLabElements>;
  using Two = Widths<kXyzElements, kLabElements, kXyzElements, kLabElements>;

  static void Choose(const ColorColumns& columns, Column<const double>* chosen) {
    std::size_t k = 0;
    for (std::size_t i = 0; i < 8; ++i) {
      if (i < kXyzColumns ? kReadsXyz : i < kXyzColumns + kLabElements) chosen[k++] = columns.of[i];
    }
  }

  // The colour of one row in every lane.
  static VRX_LANE_INLINE void Broadcast(const ColorColumns& columns, Lanes* x) {
    Column<const double> chosen[kColumns];
    Choose(columns, chosen);
    for (std::size_t k = 0; k < kColumns; ++k) x[k] = *chosen[k].first;
  }

  static VRX_LANE_INLINE ColorOf<Lanes> Read(const Lanes* x) {
    ColorOf<Lanes> color;
    const Lanes none = kUnset;
    color.xyz = {none, none, none};
    color.lab = {none, none, none, none, none};
    if constexpr (kReadsXyz) color.xyz = {x[kX], x[kY], x[kZ]};
    const Lanes* lab = x + kXyzElements;
    if constexpr (kLabElements > kB) color.lab.L = lab[kL], color.lab.a = lab[kA], color.lab.b = lab[kB];
    if constexpr (kLabElements > kChroma) color.lab.C = lab[kChroma];
    if constexpr (kLabElements > kHue) color.lab.h = lab[kHue];
    return color;
  }

  // Whether a colour may be unset; one coordinate tells of nearly all that they are not.
  static VRX_LANE_INLINE auto MaybeUnset(const ColorOf<Lanes>& color) {
    return IsUnset(kReadsXyz ? color.xyz.X : color.lab.L);
  }
  static VRX_LANE_INLINE auto Unset(const ColorOf<Lanes>& color) {
    if constexpr (kReadsXyz) {
      return IsUnset(color.xyz);
    } else {
      return IsUnset(color.lab.L) & IsUnset(color.lab.a) & IsUnset(color.lab.b);
    }
  }
};

// All elements of a difference, or the total alone.
template <std::size_t kOut>
VRX_LANE_INLINE void StoreElements(const DifferenceOf<Lanes>& d, Lanes* y) {
  const Lanes elements[7] = {d.dL, d.da, d.db, d.weightedL, d.dC, d.dH, d.dE};
  for (std::size_t k = 0; k < kOut; ++k) y[k] = elements[7 - kOut + k];
}

// CIEDE2000 in stages: the colours with a' and C', the hue between them, what it turns, and the rest.
enum CarriedNumber : std::size_t {
  kStandardL,
  kStandardA,
  kStandardB,
  kStandardC,  // primed
  kSampleL,
  kSampleA,
  kSampleB,
  kSampleC,
  kDa,  // before a was stretched
  kUnsetIsOne,
  kMeanX,
  kMeanY,
  kTurn,  // the mean hue, then the sine of the rotation
  kCarriedNumbers
};

VRX_LANE_INLINE void CarryColor(const LabOf<Lanes>& lab, std::size_t first, Carried carried) {
  carried.Set(first, lab.L);
  carried.Set(first + 1, lab.a);
  carried.Set(first + 2, lab.b);
  carried.Set(first + 3, lab.C);
}
VRX_LANE_INLINE LabOf<Lanes> CarriedColor(std::size_t first, Carried carried) {
  return {carried.Get(first), carried.Get(first + 1), carried.Get(first + 2), carried.Get(first + 3), kUnset};
}

template <class READER>
VRX_LANE_INLINE void PrimePair(const ColorOf<Lanes>& standard, const ColorOf<Lanes>& sample,
                               Carried carried) {
  const Lanes G = Cie2000AStretch(standard.lab, sample.lab);
  const LabOf<Lanes> s = Cie2000WithoutHue(standard.lab, G), t = Cie2000WithoutHue(sample.lab, G);
  const auto mean = Cie2000MeanOfPoints(s, t);
  CarryColor(s, kStandardL, carried);
  CarryColor(t, kSampleL, carried);
  carried.Set(kMeanX, mean.x);
  carried.Set(kMeanY, mean.y);
  carried.Set(kDa, sample.lab.a - standard.lab.a);
  Lanes unset = 0.0;
  if (Any(READER::MaybeUnset(standard) | READER::MaybeUnset(sample))) {
    unset = Select(READER::Unset(standard) | READER::Unset(sample), Lanes(1.0), unset);
  }
  carried.Set(kUnsetIsOne, unset);
}

template <std::size_t kOut>
VRX_LANE_INLINE void FinishPair(const DifferenceContext& context, Carried carried, Lanes* y) {
  const LabOf<Lanes> s = CarriedColor(kStandardL, carried), t = CarriedColor(kSampleL, carried);
  const auto parts =
      Cie2000Parts(s, t, {carried.Get(kMeanX), carried.Get(kMeanY)}, [&] { return carried.Get(kTurn); });
  DifferenceOf<Lanes> d;
  d.dL = t.L - s.L, d.da = carried.Get(kDa), d.db = t.b - s.b;
  WeightCie2000Primed(s, t, parts, context.parameters[0], context.parameters[1], context.parameters[2], d);
  StoreElements<kOut>(d, y);
  MarkUnset<kOut>(carried.Get(kUnsetIsOne) != 0.0, y);
}

enum class Fixed { kNone, kStandard, kSample };

template <class FORMULA, class READER, std::size_t kOut, Fixed kFixed>
void Differences(const DifferenceContext& given, const ColorColumns& standards, const ColorColumns& samples,
                 const Column<double>* out, std::size_t count) {
  constexpr std::size_t kColumns = READER::kColumns;
  constexpr std::size_t kIn = kFixed == Fixed::kNone ? 2 * kColumns : kColumns;
  Column<const double> in[kIn];
  Lanes fixed[kColumns];
  if constexpr (kFixed != Fixed::kStandard) READER::Choose(standards, in);
  if constexpr (kFixed != Fixed::kSample) READER::Choose(samples, in + kIn - kColumns);
  if constexpr (kFixed == Fixed::kStandard) READER::Broadcast(standards, fixed);
  if constexpr (kFixed == Fixed::kSample) READER::Broadcast(samples, fixed);

  // A copy that nothing else can change keeps its numbers in registers.
  const DifferenceContext context = given;
  const auto standardOf = [&](const Lanes* x) VRX_LANE_LAMBDA {
    return READER::Read(kFixed == Fixed::kStandard ? fixed : x);
  };
  const auto sampleOf = [&](const Lanes* x) VRX_LANE_LAMBDA {
    return READER::Read(kFixed == Fixed::kSample ? fixed : kFixed == Fixed::kNone ? x + kColumns : x);
  };
  using In = std::conditional_t<kFixed == Fixed::kNone, typename READER::Two, typename READER::One>;
  if constexpr (std::is_same_v<FORMULA, Cie2000Formula>) {
    const auto kernel = InStages<kCarriedNumbers>(
        [&](const Lanes* x, Carried carried)
            VRX_LANE_LAMBDA { PrimePair<READER>(standardOf(x), sampleOf(x), carried); },
        [&](Carried carried, Lanes* y) VRX_LANE_LAMBDA { FinishPair<kOut>(context, carried, y); },
        [](Carried carried) VRX_LANE_LAMBDA {
          carried.Set(kTurn, Cie2000Direction(carried.Get(kMeanX), carried.Get(kMeanY)));
        },
        [](Carried carried) VRX_LANE_LAMBDA { carried.Set(kTurn, Cie2000RotationSine(carried.Get(kTurn))); });
    OverRows<In, Widths<kOut>>(in, out, count, kernel);
  } else {
    OverRows<In, Widths<kOut>>(in, out, count, [&](const Lanes* x, Lanes* y) VRX_LANE_LAMBDA {
      const ColorOf<Lanes> standard = standardOf(x), sample = sampleOf(x);
      StoreElements<kOut>(FORMULA::Of(context, standard, sample), y);
      MarkUnset<kOut>(
          READER::MaybeUnset(standard) | READER::MaybeUnset(sample),
          [&] { return READER::Unset(standard) | READER::Unset(sample); }, y);
    });
  }
}

template <class FORMULA>
constexpr DifferenceKernels::System SystemOf() {
  constexpr std::size_t kLabElements = static_cast<std::size_t>(FORMULA::kLabElements);
  using Reader = ColorReader<FORMULA::kReadsXyz, kLabElements>;
  return {FORMULA::kReadsXyz,
          kLabElements > 0,
          &Differences<FORMULA, Reader, 7, Fixed::kNone>,
          &Differences<FORMULA, Reader, 7, Fixed::kStandard>,
          &Differences<FORMULA, Reader, 1, Fixed::kNone>,
          &Differences<FORMULA, Reader, 1, Fixed::kStandard>,
          &Differences<FORMULA, Reader, 1, Fixed::kSample>};
}

template <std::size_t... I>
constexpr DifferenceKernels KernelsOfSystems(std::index_sequence<I...>) {
  using Rows = difference_table_internal::Rows;
  return {{SystemOf<typename std::tuple_element_t<I, Rows>::Formula>()...},
          {SystemOf<typename std::tuple_element_t<I, Rows>::OwnFormula>()...}};
}

}  // namespace

template <>
const DifferenceKernels& KernelsOf<DifferenceKernels, VRX_LANES>() {
  static constexpr DifferenceKernels kKernels =
      KernelsOfSystems(std::make_index_sequence<kDifferenceSystems>());
  return kKernels;
}

}  // namespace vrx
