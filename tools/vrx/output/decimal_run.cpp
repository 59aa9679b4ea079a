#include "tools/vrx/output/decimal_run.h"

#include <algorithm>

#include "tools/vrx/output/decimal_kernels.h"

namespace vrx::tool {

void DecimalRun::Find(std::span<const double> numbers) {
  constexpr std::size_t kStep = 8;
  static_assert(kMost % kStep == 0);
  const std::size_t padded = (numbers.size() + kStep - 1) / kStep * kStep;
  std::ranges::copy(numbers, numbers_.begin());
  std::fill(numbers_.begin() + static_cast<std::ptrdiff_t>(numbers.size()),
            numbers_.begin() + static_cast<std::ptrdiff_t>(padded), 0.0);
  CurrentKernels<DecimalKernels>().find(numbers_.data(), padded, starts_.data(), middles_.data(),
                                        ends_.data());
}

}  // namespace vrx::tool
