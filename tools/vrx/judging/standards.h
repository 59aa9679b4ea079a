// Which standard a trial is judged against: one for all trials, the one that it names, or the row of the same id.

#ifndef TOOLS_VRX_JUDGING_STANDARDS_H_
#define TOOLS_VRX_JUDGING_STANDARDS_H_

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <vrxmath/foundation/angles.h>

#include <vrxio/files/curve_reader.h>
#include "tools/vrx/base/reader_names.h"
#include "tools/vrx/judging/judge.h"

namespace vrx::tool {

/// Gives each trial its standard.
class Standards {
 public:
  virtual ~Standards() = default;
  /// The standard of `trial`; valid until the next call. A trial of a geometry takes the standard's row of that geometry, else
  /// its row without one. Throws InputError when there is none.
  virtual const Standard& Of(const CurveRow& trial) = 0;
  /// There are no more trials. Throws InputError when the last one had two standards.
  virtual void EndTrials() {}
  /// The reader of the standards' file.
  virtual const CurveReader& Reader() const = 0;
};

/// The standard's own rows in a file that holds the trials too: the first one of its id, of each geometry. A later one of that
/// id was measured again and is a trial.
class OwnRows {
 public:
  bool Take(const Standard& standard, const CurveRow& trial) {
    return standard.id == trial.id && taken_.insert(trial.geometry).second;
  }

 private:
  std::set<int32_t> taken_;
};

/// One standard for every trial: the rows of `id`, or of the first row's id when `id` is empty, one per
/// geometry. Throws InputError when there are none or two of a geometry; in a file without geometries that other trials are compared with, for two rows of the first id as well. Where `trials` is given and nobody named the standard,
/// trials that each have the id of a standard are a question, whether they belong to those: it is asked before the first
/// trial, and of trials from a pipe behind the last one. `offersPairs`: the command has `--pairs`, which the question names.
std::unique_ptr<Standards> OneStandard(CurveReader reader, const std::string& id,
                                       CurveReader* trials = nullptr, bool offersPairs = true);

/// The row of the id that the trial names as its standard, else of the trial's own. As long as both files are in the same
/// order they are read side by side; from the first trial that is elsewhere in the standards' file, or whose geometry the row
/// there does not have, through an index of its rows (16 bytes each, at most 4 million), for which the file must not be a
/// pipe. The order of the rows makes no difference.
std::unique_ptr<Standards> PairedStandards(CurveReader reader);

/// Those of a file of standards for a file of trials: paired where asked for or where the trials name theirs in a column, else one for
/// all. Throws InputError where both the column and `id` name standards.
std::unique_ptr<Standards> StandardsForTrials(CurveReader reader, const std::string& id, bool pairs,
                                              CurveReader& trials);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JUDGING_STANDARDS_H_
