// What a search for recipes is asked and what it answers: targets, settings, recipes, and why there is none.

#ifndef VRXMATH_MATCHING_RECIPE_TYPES_H_
#define VRXMATH_MATCHING_RECIPE_TYPES_H_

#include <cstdint>
#include <functional>
#include <optional>

#include <vrxmath/colorant/component_calibration.h>
#include <vrxmath/colorant/components.h>
#include <vrxmath/colorant/optical_transforms.h>
#include <vrxmath/colorimetry/color_records.h>
#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/illuminants.h>
#include <vrxmath/export.h>
#include <vrxmath/formula/formula.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

/// What a search takes for granted where nobody says otherwise, the same in every interface. Shares are parts of 1.
struct RecipeDefaults {
  static constexpr int32_t kMostColorants = 4;  ///< of a recipe, and of the additions to a batch
  static constexpr int32_t kTop = 10;
  static constexpr double kTolerance = 1.0;
  static constexpr double kBatchSize = 100.0;
  static constexpr double kThickness = 1.0;
  static constexpr double kMostAddition = 0.2;   ///< to a batch
  static constexpr double kMargin = 0.25;        ///< of the tolerance, that a correction keeps in hand
  static constexpr double kStockAddition = 1.0;  ///< to a leftover
  static constexpr uint64_t kMostSubsets = 100'000'000;
  static constexpr uint32_t kThreads =
      0;  ///< one per core; a host of the library starts with the calling one
          ///< alone
};

/// The goal of a recipe: a measured curve in percent or, where none exists, a colour under the first illuminant of the
/// settings.
struct CRecipeTarget {
  CReflData curve;  ///< unset for a colour alone
  CLabValues lab;   ///< L*, a*, b*; for a colour alone
  /// The same sample at further geometries: a recipe has one curve, and its difference under an illuminant is the
  /// largest over all of them. What is matched is their mean.
  CReflDataArray others;
  /// Aspecular measuring angles in degrees, of the curve (or the colour) and of each of `others`; where none stands that of
  /// the settings.
  CDoubleArray1 angles{};
};

/// Choice, limits and price of one component that has its own. They stand here, since the fields of component records are
/// the host's.
struct CRecipeComponent {
  enum Use : int32_t { kOffered, kRequired, kExcluded };

  uint32_t componentId = kNewComponentId;
  Use use = kOffered;
  /// Limits of its share, 0 to 1, of a recipe that has it; one that is required has at least 1e-5.
  double least = 0.0;
  double most = 1.0;
  double cost = 0.0;  ///< of one unit of amount
};
using CRecipeComponentArray = CArrayVarex<CRecipeComponent>;

/// The quantity that the steps make small.
enum class RecipeObjective {
  kTristimulus,  ///< colour differences under the illuminants
  kSpectral,     ///< the difference of the curves, root mean square over 400 to 700 nm
  kCombined,     ///< both: the square of a unit of colour difference weighs as that of a percent
};

/// By what recipes are ordered; first always those within the tolerance, last the worst difference over the illuminants.
enum class RecipeOrder { kFewest, kColor, kMetamerism, kCost, kExpected, kInconstancy };

/// The choice of components, the criterion by which recipes are judged, and how they are made up.
struct VRX_API CRecipeSettings {
  /// D65, A and CWF.
  CRecipeSettings();

  /// Every component with levels is offered that the system's list of components has not switched off; here stand the exceptions.
  CRecipeComponentArray components;
  int32_t mostColorants = RecipeDefaults::kMostColorants;  ///< 1 to 6; a substrate does not count
  double leastAmount = 0.0;                                ///< least share of every colorant of a recipe

  CIllumArray illuminants;  ///< the first is the primary one
  CDoubleArray1 weights;    ///< of their squared differences, one each; empty: all alike
  int32_t observer = kObserver10;
  CDifferenceSettings difference = DefaultSettings(vrxSystemCie2000);
  /// Aspecular measuring angle in degrees, -180 to 180, for the systems whose weights depend on it, of targets that say
  /// none.
  double angle = 45.0;
  double tolerance = RecipeDefaults::kTolerance;  ///< largest difference under any illuminant
  RecipeObjective objective = RecipeObjective::kTristimulus;
  SaundersonMode mode = SaundersonMode::kIncluded;  ///< of the target, and so of the prediction

  RecipeOrder order = RecipeOrder::kFewest;
  int32_t top = RecipeDefaults::kTop;  ///< recipes that are returned
  /// A colorant is a trace of a recipe when leaving it out changes the colour by less than this under every illuminant,
  /// and recipes that differ only by traces count as one. Unset: a tenth of the tolerance; 0: every recipe counts.
  std::optional<double> trace;
  double batchSize = RecipeDefaults::kBatchSize;  ///< total of the amounts; with a substrate its amount
  /// Step of the dispenser, in the unit of the amounts; 0: none. Amounts are the nearest steps, and the largest takes what
  /// then is missing from the batch size, itself rounded to a step.
  double resolution = 0.0;

  /// Opacity: contrast ratio of a film of this thickness over the two backings; unset backings: not computed.
  CReflData black;
  CReflData white;
  double thickness = RecipeDefaults::kThickness;  ///< in the unit of length of the colorants' curves
  double leastOpacity = 0.0;                      ///< contrast ratio in percent that a recipe must have

  /// Two-constant: the part of a recipe that its colorants make up, when the system has a clear component (a resin
  /// without absorption and scattering), which makes up the rest and on which the colour of an opaque film does not
  /// depend.
  double leastLoad = 0.0;
  double mostLoad = 1.0;

  /// What is known of the system's components: their ranges and how well they are predicted. May be empty.
  CComponentCalibrationArray calibrated;
  bool isWithinRange = false;  ///< no share outside of the calibrated ranges

  uint64_t mostSubsets = RecipeDefaults::kMostSubsets;  ///< more are refused
  /// Lossy: only this many subsets of each size, those with the least linearised objective, are solved; 0: all. At most
  /// a million.
  int64_t prerank = 0;
  uint32_t threads = 1;  ///< the calling one included; 0: one per core
  /// Called on the calling thread with the part that is done, 0 to 1; false stops the search. May be empty.
  std::function<bool(double)> progress;
};

/// What the part of the colorants in a recipe rests on.
enum class LoadBasis {
  kWhole,         ///< there is no clear component: the colorants are the whole, or the target tells
  kGiven,         ///< the settings fix it, or the limits of its components do
  kOpacity,       ///< the least that is opaque enough
  kRange,         ///< the largest at which no colorant exceeds its calibrated range; the target does not tell
  kUndetermined,  ///< nothing tells: the largest that the settings allow
};

/// One recipe.
struct CRecipe {
  using MovesBitwise = CRecipe;

  CDbFormula formula;  ///< components in the order of the system, amounts by batchSize and resolution
  int32_t colorants = 0;
  CDoubleArray1
      differences;        ///< under each illuminant; a colour alone has only the first, the others are unset
  double worst = kUnset;  ///< the largest of them
  double metamerism =
      kUnset;  ///< largest MetamerismIndex from the first illuminant to another; unset without one
  /// Largest InconstancyIndex of `curve` from the first illuminant to another (CAT16), in units of the settings' difference;
  /// unset with one illuminant.
  double inconstancy = kUnset;
  double rms =
      kUnset;  ///< root mean square of the curves' difference, 400 to 700 nm, percent; unset without one
  double cost = 0.0;
  double opacity = kUnset;  ///< contrast ratio in percent
  bool isWithinTolerance = false;
  int32_t alike = 0;    ///< recipes further down that differ from it only by traces
  CDWordArray1 traces;  ///< the components that are traces of these, or of it
  double load = 1.0;    ///< the part of its colorants
  LoadBasis loadBasis = LoadBasis::kWhole;
  CDWordArray1 outside;  ///< components whose shares lie outside of their calibrated range
  /// CIEDE2000 that nine of ten predictions like it do not exceed (PredictionError); unset where nothing is known of a
  /// component.
  double expected = kUnset;
  CReflData curve;  ///< what it is predicted to give, percent
};
using CRecipeArray = CArrayVarex<CRecipe>;

/// Why there is no recipe.
enum class RecipeFault {
  kNone,
  kNoMixingLaw,  ///< the optical model mixes by other laws
  kNoSubstrate,  ///< one-constant, and the system has neither a calibration white nor a resin with levels
  kTargetNotMeasured,   ///< an unset or non-finite sample
  kTargetBelowSurface,  ///< samples from 400 to 700 nm lie at the floor of the surface correction
  kNeedsCurve,          ///< an objective with curves, and a target without one
  kUnknownComponent,    ///< `component` is not in the system, or has no levels
  kContradiction,       ///< `component` is both required and excluded
  kTooFewAllowed,       ///< fewer components are allowed than required, or more required than mostColorants
  kLimits,  ///< `component`: its limits are not 0 <= least <= most <= 1, or least > most with leastAmount
  kLimitsTogether,       ///< the required components' least shares exceed 1, or no subset can make up 1
  kEverythingForbidden,  ///< the rules forbid every subset
  kTooManySubsets,       ///< `subsets` exceeds mostSubsets
  kNoClear,              ///< the load is limited, and the system has no clear component
  kLoad,  ///< its limits are not 0 <= least <= most <= 1, or those of components contradict them
  kTargetChangesWithAngle,  ///< its geometries differ as those of effect pigments do
  kSettings,                ///< a setting is out of its range; illuminants without a table
  kStopped,                 ///< progress answered false
  kBatchFormula,            ///< of a correction: the batch's formula is empty or cannot be predicted
  kBatchNotMeasured,        ///< its curve has an unset or non-finite sample
  kBatchBelowSurface,       ///< and lies at the floor of the surface correction
  kBackings,                ///< the black backing is not darker than the white one
  kNoCosts,                 ///< the cheapest is asked for, and nothing on offer costs anything
};

/// The fault of a search, with the component id that it concerns, and how many subsets there were.
struct RecipeOutcome {
  RecipeFault fault = RecipeFault::kNone;
  uint32_t component = 0;
  uint64_t subsets = 0;  ///< of the search, rules not counted
};

}  // namespace vrx

#endif  // VRXMATH_MATCHING_RECIPE_TYPES_H_
