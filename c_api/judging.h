// Judgements of handles, ready to judge.

#ifndef C_API_JUDGING_H_
#define C_API_JUDGING_H_

#include <cstddef>

#include "c_api/handles.h"

namespace vrx::c_api {

/// The standards of a judgement with the limits in force. Refuses a judgement without a standard, and other counts of trials than fit
/// where each trial has no standard of its own named: one standard, or as many as trials.
JudgeStandards& StandardsFor(Judgement& judgement, std::size_t trials);

}  // namespace vrx::c_api

#endif  // C_API_JUDGING_H_
