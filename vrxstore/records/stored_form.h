// Conditions, limits and outcomes of judgements in the form in which every back end keeps them, so that a judgement can be
// computed again from what is stored, to the last bit.

#ifndef VRXSTORE_RECORDS_STORED_FORM_H_
#define VRXSTORE_RECORDS_STORED_FORM_H_

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxstore/records/records.h>

namespace vrx::store {

/// "system=cmc parameters=2:1:1:1 own=1 illuminants=D65,A observer=10 angle=45 rule=worse warning=0.75": numbers in the
/// fewest digits that read back to the same doubles.
std::string ConditionsText(const JudgeConditions& conditions);
/// Throws StoreError for a text that is none.
JudgeConditions ConditionsFrom(std::string_view text);

/// A byte for the kind (0: box, 1: ellipsoid, 2: the system's ellipsoid), then the numbers as little-endian doubles.
std::string LimitsBytes(std::span<const JudgeLimits> limits);
std::vector<JudgeLimits> LimitsFrom(std::string_view bytes);

/// Doubles as little-endian bytes, and back. DoublesFrom throws StoreError unless there are as many as `out` holds.
void AppendDoubles(std::span<const double> numbers, std::string& bytes);
void DoublesFrom(std::string_view bytes, std::span<double> out);

/// The numbers that are stored of an outcome, in this order: seven elements of the difference, dL*, da*, db*, the trial's L*, a*,
/// b*, the ellipsoid's value, what the broken limit was held against, that limit, and the
/// grade.
inline constexpr std::size_t kOutcomeNumbers = 17;
void OutcomeNumbers(const JudgementUnder& outcome, std::span<double, kOutcomeNumbers> numbers);
void TakeOutcomeNumbers(std::span<const double, kOutcomeNumbers> numbers, JudgementUnder& outcome);

/// Whether two judgements are the same in every stored number, to the bit, and in every word and verdict.
bool AreSame(const Judgement& a, const Judgement& b);

/// Takes apart and joins the options of a profile: a line each, "--system cmc".
std::string OptionsText(const Profile& profile);
void TakeOptions(std::string_view text, Profile& profile);

/// The amounts of a recipe: a line each, "Titanium White\t94", numbers in the fewest digits that read back to the same doubles.
/// AmountsText throws StoreError for a name with a tab or a line end in it.
std::string AmountsText(const MadeRecipe& recipe);
void TakeAmounts(std::string_view text, MadeRecipe& recipe);

/// How a curve was measured, as lines of the words that TakeCondition knows: "INSTRUMENT\tSpectro 3000". The date is left out.
std::string MeasuringText(const io::MeasuringConditions& conditions);
io::MeasuringConditions MeasuringFrom(std::string_view text);

}  // namespace vrx::store

#endif  // VRXSTORE_RECORDS_STORED_FORM_H_
