#include <vrxio/csv/whiteness_file.h>

#include <algorithm>
#include <array>
#include <string_view>

#include <vrxio/csv/csv_reader.h>
#include <vrxio/text/input_error.h>

namespace vrx::io {

GanzGriesser ReadGanzGriesser(const std::string& path) {
  constexpr std::array<std::string_view, 6> kHeader = {"P", "Q", "C", "m", "n", "k"};
  CsvReader csv(path);
  if (!std::ranges::equal(csv.Header(), kHeader))
    csv.FailRow("the header of a file of Ganz-Griesser parameters is P,Q,C,m,n,k");
  if (!csv.Next()) throw InputError(path + ": there are no parameters behind the header");
  std::array<double, kHeader.size()> numbers{};
  csv.Numbers(numbers);
  csv.EndRecord();
  if (csv.Next()) csv.FailRow("one row of parameters is expected");
  return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
}

}  // namespace vrx::io
