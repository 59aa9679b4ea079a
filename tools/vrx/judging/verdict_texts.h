// Verdicts and shade words as they are written.

#ifndef TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_
#define TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <vrxio/measurement/names.h>
#include <vrxmath/batch/judge_batch.h>

#include "tools/vrx/output/json_output.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

/// A verdict's word and its colour on a terminal.
struct VerdictLook {
  const char* text;
  Tint tint;
};
VerdictLook LookOf(Verdict verdict);

using io::JoinedWords;
using io::TextOf;

/// A heading of a difference in ASCII, as csv and options name it: "dL", "dEcmc", "10dX" of "\u0394X*10", "100dY/Y" of "\u0394Y*100/Y".
std::string ElementName(std::string_view heading);
/// The name of an element of a system's differences in ASCII, such as "dEcmc"; "e3" for one that it does not show.
std::string NameOfElement(int32_t system, int32_t element);
/// The room of element `i` of the `count` that a system shows. The total stays; of seven, the first three are those
/// that the others weigh, and go first.
Room RoomOfElement(std::size_t i, std::size_t count);
/// What a limit is a limit of: an element's name, "ellipsoid", or "no difference"; empty for none.
std::string NameOfLimit(BrokenLimit limit, int32_t system);
/// The same under the system's own heading, with how far the limit was passed: "\u0394E*cmc +0.28". Of a warning, which keeps
/// the limit, with the edge of the warning band: "\u0394E*cmc > 1.12". Empty for none.
std::string ReasonText(const LimitBreach& breach, Verdict verdict, int32_t system);

/// Adds the member `reason` of a verdict in JSON: null where no limit was broken, else an object of the limit's name, the value, the
/// bound and the excess; where there is no difference of its name alone.
void AddReason(const LimitBreach& breach, int32_t system, JsonObject& object);

/// A grade in half steps as laboratories write it: "4", "4-5"; empty for an unset one.
std::string GradeText(double halfStep);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_VERDICT_TEXTS_H_
