// Every archive form as a function that reads a value of it and stores it again: for the fuzz target, and for the test
// that holds the seeds to their bytes.

#ifndef FUZZ_ARCHIVE_FORMS_H_
#define FUZZ_ARCHIVE_FORMS_H_

#include <cstddef>
#include <span>
#include <vector>

#include <vrxmath/colorant/colorant_array.h>
#include <vrxmath/colorant/colorant_rules.h>
#include <vrxmath/colorant/colorant_system.h>
#include <vrxmath/colorant/components.h>
#include <vrxmath/formula/formula.h>
#include <vrxmath/formula/product_line.h>
#include <vrxmath/foundation/angles.h>
#include <vrxmath/foundation/attributes.h>
#include <vrxmath/foundation/cmc_factors.h>
#include <vrxmath/foundation/list_data.h>
#include <vrxmath/foundation/mixture.h>
#include <vrxmath/foundation/sort_double.h>
#include <vrxmath/foundation/typed_arrays.h>
#include <vrxmath/platform/archive.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/tolerance/averaging_stats.h>

namespace vrx_archive_forms {

using vrx::CArchive;

// Reads one value from `in` and stores it to `out`.
using Reader = void (*)(CArchive& in, CArchive& out);

template <class T>
void Record(CArchive& in, CArchive& out) {
  T value;
  value.Serialize(in);
  value.Serialize(out);
}

inline void Text(CArchive& in, CArchive& out) {
  out.WriteString(in.ReadString());
}

// The fields of a colour system without the frame around them, whose checksum would keep most inputs out.
inline void SystemFields(CArchive& in, CArchive& out) {
  vrx::CColorantSystemData system;
  system.SerializeFields(in);
  system.SerializeFields(out);
}

inline void LabelledFormula(CArchive& in, CArchive& out) {
  vrx::CDbFormula formula;
  formula.SerializeWithLabels(in);
  formula.SerializeWithLabels(out);
}

// One line per archive form; the corpus relies on the order, so new ones go to the end.
inline constexpr Reader kReaders[] = {
    Record<vrx::CByteArray1>,    // 0
    Record<vrx::CWordArray1>,    // 1
    Record<vrx::CIntArray1>,     // 2
    Record<vrx::CDoubleArray1>,  // 3
    Record<vrx::CRectArray1>,    // 4
    Text,                        // 5
    Record<vrx::CAngles>,        // 6
    Record<vrx::CAttribute>,     // 7
    Record<vrx::CMixture>,
    Record<vrx::CColorantLevel>,
    Record<vrx::CListDataArray>,  // 10
    Record<vrx::CCmcFactorData>,
    Record<vrx::CAdditiveArray>,
    Record<vrx::CColorantRulesData>,
    SystemFields,
    Record<vrx::CColorantSystemData>,
    Record<vrx::CProductLineData>,
    Record<vrx::CDbFormula>,
    LabelledFormula,
    Record<vrx::CDbNames>,
    Record<vrx::CAveragingStats>,  // 20
    Record<vrx::CBlendColorant>,
    Record<vrx::CColorantSystemComponent>,
    Record<vrx::CAttributeLabel>,
    Record<vrx::CSortDouble>,
    Record<vrx::CAngleWeight>,
};

// The bytes that a value read from `bytes` is stored in; empty when nothing can be read.
inline std::vector<std::byte> StoreAgain(Reader reader, std::span<const std::byte> bytes) try {
  vrx::MemoryStore from(bytes), to;
  CArchive in(from, CArchive::kLoad), out(to, CArchive::kStore);
  reader(in, out);
  return to.Bytes();
} catch (const vrx::CArchiveException&) {
  return {};
}

}  // namespace vrx_archive_forms

#endif  // FUZZ_ARCHIVE_FORMS_H_
