// How judgements are written: a row of a table or of csv, or a JSON object, per trial and illuminant, and a
// summary per illuminant at the end of a table.

#ifndef TOOLS_VRX_OUTPUT_JUDGE_OUTPUT_H_
#define TOOLS_VRX_OUTPUT_JUDGE_OUTPUT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <vrxio/curve_reader.h>
#include "tools/vrx/conditions.h"
#include "tools/vrx/judge.h"
#include "tools/vrx/output/output.h"

namespace vrx::tool {

class JudgeOutput {
 public:
  virtual ~JudgeOutput() = default;
  /// Writes the outcome of a trial under every illuminant.
  virtual void Add(const CurveRow& trial, const Judge& judge) = 0;
  virtual void Finish() = 0;
};

/// `output` and `settings` must outlive the writer. A table has columns for names and geometries when
/// `trials` have them.
std::unique_ptr<JudgeOutput> MakeJudgeOutput(const Format& format, OutputStream& output,
                                             const JudgeSettings& settings, const CurveReader& trials);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_JUDGE_OUTPUT_H_
