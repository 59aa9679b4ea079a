// The measurement condition: six letters that say how a sample was measured, and what they mean.

#ifndef VRXMATH_SUPPORT_CONDITION_TEXT_H_
#define VRXMATH_SUPPORT_CONDITION_TEXT_H_

#include <vrxmath/export.h>
#include <vrxmath/platform/wide_string.h>

namespace vrx {

/// Describes a measurement-condition code, such as "CRIILL": calibration, gloss or measuring mode, specular
/// component, ultraviolet content, lens, mask. The descriptions of the positions present are joined with
/// ", ". The code is put right in place: it gets at least three letters, and a letter that means nothing is
/// replaced by its position's default (C, R, E, I, L; for the mask by the letter of the lens). Positions
/// beyond the sixth are left alone. The code "Std" stands for a standard without a measurement.
VRX_API CString ConditionText(CString& code);

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_CONDITION_TEXT_H_
