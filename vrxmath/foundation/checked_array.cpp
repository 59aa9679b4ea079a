#include <vrxmath/foundation/checked_array.h>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/message_box.h>
#include <vrxmath/platform/resources.h>

namespace vrx::foundation_internal {

void ReportIndexError() {
  ShowMessage(FindString(kStringIndexOutOfBounds));
}

}  // namespace vrx::foundation_internal
