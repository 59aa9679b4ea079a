// Lists of records that have no archive form of their own, wrapped into one for the archive checks.

#ifndef TESTS_TESTING_RECORD_LISTS_H_
#define TESTS_TESTING_RECORD_LISTS_H_

#include <initializer_list>

#include <vrxmath/foundation/record_archive.h>

namespace vrx::test {

template <class RECORD>
struct RecordList {
  CArrayVarex<RECORD> records;

  RecordList(std::initializer_list<RECORD> elements = {}) {
    for (const RECORD& element : elements) records.Add(element);
  }
  void Serialize(CArchive& archive) { SerializeRecords(archive, records); }
  bool operator==(const RecordList&) const = default;
};

}  // namespace vrx::test

#endif  // TESTS_TESTING_RECORD_LISTS_H_
