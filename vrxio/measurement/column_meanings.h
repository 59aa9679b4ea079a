// The meaning of the columns of one table: what a heading leaves open the others decide.

#ifndef VRXIO_MEASUREMENT_COLUMN_MEANINGS_H_
#define VRXIO_MEASUREMENT_COLUMN_MEANINGS_H_

#include <string>
#include <vector>

#include <vrxio/measurement/headings.h>
#include <vrxio/measurement/measurement.h>

namespace vrx::io {

/// The meanings of the columns of a table, and what was chosen among them, for a note.
struct ColumnMeanings {
  std::vector<Heading> columns;
  std::string note;
};

/// Finds out what headings mean in the light of each other:
/// - numbers that do not fit into the wavelengths of the others, such as a component "R350" among 400, 410 ... 700, are no
///   wavelengths, where they are spelt otherwise or lie beyond what instruments measure;
/// - of several columns that may have the ids the surest one has them (IdRank), or the one that `options` name, and the others
///   are passed over; a first column without a heading may have them too;
/// - columns of the caller's own and those to be passed over are so marked.
/// Throws InputError without a place for an id column that is not there.
ColumnMeanings MeaningsOf(const std::vector<std::string>& headings, const ReadOptions& options);

}  // namespace vrx::io

#endif  // VRXIO_MEASUREMENT_COLUMN_MEANINGS_H_
