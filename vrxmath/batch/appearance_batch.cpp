#include <vrxmath/batch/appearance_batch.h>

#include <algorithm>
#include <array>

#include <vrxmath/batch/appearance_kernels.h>
#include <vrxmath/batch/batch_conditions.h>

namespace vrx {
namespace {

constexpr std::size_t kAppearanceBlockRows = 2048;

const AppearanceKernels& AppearanceInUse() {
  return CurrentKernels<AppearanceKernels>();
}

// One kernel from rows to rows.
template <class TERMS, std::size_t kIn, std::size_t kOut>
bool ConvertAppearance(void (*kernel)(const TERMS&, AppearanceKernels::Rows, AppearanceKernels::Target,
                                      std::size_t),
                       const TERMS& terms, const BatchView<const double, kIn>& from,
                       const BatchView<double, kOut>& to, const BatchRun& run) {
  RequireSameCount(from.size(), to.size());
  return ForEachBlock(run, from.size(), kAppearanceBlockRows, [&](std::size_t first, std::size_t count) {
    kernel(terms, ColumnsOf(from, first, count).data(), ColumnsOf(to, first, count).data(), count);
  });
}

AppearanceTerms Under(AppearanceModel model, vrxIlluminant illuminant, std::int32_t observer,
                      const ViewingConditions& conditions) {
  return AppearanceTermsOf(model, RequireViewing(illuminant, observer).white, conditions);
}

}  // namespace

bool AdaptBatch(AdaptationTransform transform, const White& from, const White& to, double degree,
                const BatchView<const double, 3>& xyz, const BatchView<double, 3>& adapted,
                const BatchRun& run) {
  return ConvertAppearance(AppearanceInUse().adapt, AdaptationMatrix(transform, from, to, degree), xyz,
                           adapted, run);
}

bool AppearanceBatch(AppearanceModel model, vrxIlluminant illuminant, std::int32_t observer,
                     const ViewingConditions& conditions, const BatchView<const double, 3>& xyz,
                     const BatchView<double, 6>& appearance, const BatchRun& run) {
  return ConvertAppearance(AppearanceInUse().appearance, Under(model, illuminant, observer, conditions), xyz,
                           appearance, run);
}

bool XyzFromAppearanceBatch(AppearanceModel model, vrxIlluminant illuminant, std::int32_t observer,
                            const ViewingConditions& conditions, const BatchView<const double, 3>& appearance,
                            const BatchView<double, 3>& xyz, const BatchRun& run) {
  return ConvertAppearance(AppearanceInUse().xyz, Under(model, illuminant, observer, conditions), appearance,
                           xyz, run);
}

bool GradeBatch(GreyScale scale, const BatchView<const double, 5>& standards,
                const BatchView<const double, 5>& samples, std::span<double> grades, const BatchRun& run) {
  const std::size_t n = samples.size();
  RequireSameCount(n, grades.size());
  if (standards.size() != 1) RequireSameCount(n, standards.size());
  return ForEachBlock(run, n, kAppearanceBlockRows, [&](std::size_t from, std::size_t count) {
    const Column<double> target{grades.data() + from, 1};
    const auto sample = ColumnsOf(samples, from, count);
    if (standards.size() == 1) {
      const Lab one{standards.at(0, 0), standards.at(0, 1), standards.at(0, 2), standards.at(0, 3),
                    standards.at(0, 4)};
      return AppearanceInUse().grade(scale, one, sample.data(), &target, count);
    }
    std::array<Column<const double>, 10> both;
    std::ranges::copy(sample, std::ranges::copy(ColumnsOf(standards, from, count), both.begin()).out);
    AppearanceInUse().gradeOfPairs(scale, both.data(), &target, count);
  });
}

}  // namespace vrx
