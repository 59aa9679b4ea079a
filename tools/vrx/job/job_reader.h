// Standards and trials of a job as measurements, which every command reads and writes as it does those of files.

#ifndef TOOLS_VRX_JOB_JOB_READER_H_
#define TOOLS_VRX_JOB_JOB_READER_H_

#include <memory>
#include <string>

#include <vrxio/files/curve_reader.h>
#include <vrxstore/last_judgements.h>

#include "tools/vrx/base/reader_names.h"

namespace vrx::tool {

/// The current standards of a job, all of them or one. `store` must outlive the reader. Throws InputError when there are none.
std::unique_ptr<MeasurementReader> ReadStandards(store::Store& store, const std::string& file,
                                                 const std::string& standard = {});
/// The trials of a filter whose judgements count by `last`, which must outlive the reader, each with the name of its standard;
/// `acceptedOnly`: those that count as accepted.
std::unique_ptr<MeasurementReader> ReadTrials(store::Store& store, const std::string& file,
                                              const store::TrialFilter& filter,
                                              const store::LastJudgements& last, bool acceptedOnly = false);

}  // namespace vrx::tool

#endif  // TOOLS_VRX_JOB_JOB_READER_H_
