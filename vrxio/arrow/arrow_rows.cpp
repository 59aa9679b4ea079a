#include <vrxio/arrow/arrow_rows.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

constexpr std::uint64_t kMostNumbers = 100'000;  // in a row

[[noreturn]] void RefuseColumn(const ArrowSchema& schema, const std::string& reason) {
  const std::string name = schema.name != nullptr ? schema.name : "";
  throw InputError((name.empty() ? std::string("an Arrow array") : "the Arrow column \"" + name + "\"") +
                   " " + reason);
}

std::string_view FormatOf(const ArrowSchema& schema) {
  return schema.format != nullptr ? schema.format : "";
}

// The numbers of a row of a list of fixed length; 0 for other formats, and for what is no count.
std::uint64_t FixedWidth(std::string_view format) {
  if (!format.starts_with("+w:")) return 0;
  std::uint64_t width = 0;
  const auto [end, error] = std::from_chars(format.data() + 3, format.data() + format.size(), width);
  return error == std::errc() && end == format.data() + format.size() ? width : 0;
}

bool IsOfFloats(const ArrowSchema& schema) {
  return FormatOf(schema) == "f" || FormatOf(schema) == "g";
}

// The parts of an array that its format says, checked.
void NeedShape(const ArrowSchema& schema, const ArrowArray& array, std::int64_t buffers,
               std::int64_t children) {
  // More rows than that no memory has, whose places are counted in at most 16 bytes a row.
  constexpr std::int64_t kMost = std::numeric_limits<std::ptrdiff_t>::max() / 16;
  const bool hasCounts = array.length >= 0 && array.offset >= 0 && array.length <= kMost - array.offset;
  const bool hasParts = array.release != nullptr && array.n_buffers >= buffers &&
                        array.n_children == children && schema.n_children == children &&
                        (buffers == 0 || array.buffers != nullptr) &&
                        (children == 0 || (array.children != nullptr && schema.children != nullptr));
  if (!hasCounts || !hasParts)
    RefuseColumn(schema, "contradicts itself: its lengths or parts are not those of its type");
  for (std::int64_t i = 0; i < children; ++i) {
    if (array.children[i] == nullptr || schema.children[i] == nullptr)
      RefuseColumn(schema, "has a part that is not there");
  }
}

// Bits of what is there, from an array's offset on.
class Validity {
 public:
  Validity(const ArrowArray& array) : offset_(static_cast<std::size_t>(array.offset)) {
    if (array.null_count != 0 && array.n_buffers > 0)
      bits_ = static_cast<const std::uint8_t*>(array.buffers[0]);
  }
  bool IsComplete() const { return bits_ == nullptr; }
  bool Has(std::size_t i) const {
    const std::size_t place = offset_ + i;
    return IsComplete() || ((bits_[place / 8] >> (place % 8)) & 1) != 0;
  }

 private:
  const std::uint8_t* bits_ = nullptr;
  std::size_t offset_;
};

// Numbers of a column of float or double.
struct Plain {
  Plain(const ArrowSchema& schema, const ArrowArray& array)
      : validity((NeedShape(schema, array, 2, 0), array)) {
    count = static_cast<std::size_t>(array.length);
    const auto offset = static_cast<std::size_t>(array.offset);
    if (array.buffers[1] == nullptr && count > 0) RefuseColumn(schema, "has no numbers");
    if (array.buffers[1] == nullptr) return;
    if (FormatOf(schema) == "f") {
      floats = static_cast<const float*>(array.buffers[1]) + offset;
    } else {
      doubles = static_cast<const double*>(array.buffers[1]) + offset;
    }
  }
  double At(std::size_t i) const { return floats != nullptr ? static_cast<double>(floats[i]) : doubles[i]; }

  const double* doubles = nullptr;
  const float* floats = nullptr;
  std::size_t count = 0;
  Validity validity;
};

// Where the numbers of each row begin and how many they are.
struct Lists {
  std::vector<std::size_t> from, length;
};

template <class OFFSET>
void ReadLists(const ArrowSchema& schema, const ArrowArray& array, std::size_t numbers, Lists& lists) {
  const auto* offsets = static_cast<const OFFSET*>(array.buffers[1]);
  if (offsets == nullptr && array.length > 0) RefuseColumn(schema, "has no offsets");
  for (std::int64_t i = array.offset; i < array.offset + array.length; ++i) {
    const OFFSET from = offsets[i], to = offsets[i + 1];
    if (from < 0 || to < from || static_cast<std::uint64_t>(to) > numbers)
      RefuseColumn(schema, "has a list that lies outside of its numbers");
    lists.from.push_back(static_cast<std::size_t>(from));
    lists.length.push_back(static_cast<std::size_t>(to - from));
  }
}

Lists ListsOf(const ArrowSchema& schema, const ArrowArray& array, std::size_t numbers) {
  Lists lists;
  const std::uint64_t width = FixedWidth(FormatOf(schema));
  if (width == 0) {
    NeedShape(schema, array, 2, 1);
    if (FormatOf(schema) == "+L") {
      ReadLists<std::int64_t>(schema, array, numbers, lists);
    } else {
      ReadLists<std::int32_t>(schema, array, numbers, lists);
    }
    return lists;
  }
  const auto rows = static_cast<std::size_t>(array.length), offset = static_cast<std::size_t>(array.offset);
  if (width > kMostNumbers || (rows > 0 && (offset + rows) > numbers / width))
    RefuseColumn(schema, "has fewer numbers than its rows take");
  return lists;
}

// The one length of all lists that are there.
std::size_t WidthOf(const ArrowSchema& schema, const Lists& lists, const Validity& validity) {
  std::optional<std::size_t> width;
  for (std::size_t i = 0; i < lists.length.size(); ++i) {
    if (!validity.Has(i)) continue;
    if (!width) width = lists.length[i];
    if (*width != lists.length[i])
      RefuseColumn(schema, "has lists of " + std::to_string(*width) + " and of " +
                               std::to_string(lists.length[i]) +
                               " numbers; a curve is as long as the other ones");
  }
  if (width.value_or(0) > kMostNumbers) RefuseColumn(schema, "has lists of more than 100000 numbers");
  return width.value_or(0);
}

void MarkMissing(const Validity& rows, const Plain& numbers, std::size_t from, ArrowRows& result) {
  if (rows.IsComplete() && numbers.validity.IsComplete()) return;
  std::vector<std::uint8_t> missing(result.count);
  for (std::size_t i = 0; i < result.count; ++i) {
    bool isThere = rows.Has(i);
    for (std::size_t k = 0; isThere && !numbers.validity.IsComplete() && k < result.width; ++k)
      isThere = numbers.validity.Has(from + i * result.width + k);
    missing[i] = isThere ? 0 : 1;
  }
  if (std::ranges::any_of(missing, [](std::uint8_t is) { return is != 0; }))
    result.missing = std::move(missing);
}

// Rows that begin at the number `from` and follow each other.
ArrowRows RowsInPlace(const Plain& numbers, const Validity& validity, std::size_t from, std::size_t count,
                      std::size_t width) {
  ArrowRows rows;
  rows.count = count;
  rows.width = width;
  if (numbers.doubles != nullptr) rows.doubles = numbers.doubles + from;
  if (numbers.floats != nullptr) rows.floats = numbers.floats + from;
  MarkMissing(validity, numbers, from, rows);
  return rows;
}

// Lists with gaps between them: the numbers of those that are there, 0 in the place of others, which are marked.
ArrowRows GatheredRows(const Plain& numbers, const Validity& validity, const Lists& lists,
                       std::size_t width) {
  ArrowRows rows;
  rows.count = lists.from.size();
  rows.width = width;
  rows.gathered.resize(rows.count * width);
  rows.missing.resize(rows.count);
  for (std::size_t i = 0; i < rows.count; ++i) {
    bool isThere = validity.Has(i);
    for (std::size_t k = 0; isThere && k < width; ++k) {
      isThere = numbers.validity.Has(lists.from[i] + k);
      rows.gathered[i * width + k] = isThere ? numbers.At(lists.from[i] + k) : 0.0;
    }
    rows.missing[i] = isThere ? 0 : 1;
  }
  rows.doubles = rows.gathered.data();
  return rows;
}

bool FollowEachOther(const Lists& lists, std::size_t width) {
  for (std::size_t i = 0; i < lists.from.size(); ++i) {
    if (lists.length[i] != width || lists.from[i] != lists.from[0] + i * width) return false;
  }
  return true;
}

template <class OFFSET>
std::string TextAt(const ArrowSchema& schema, const ArrowArray& array, std::int64_t place) {
  const auto* offsets = static_cast<const OFFSET*>(array.buffers[1]);
  const auto* bytes = static_cast<const char*>(array.buffers[2]);
  if (offsets == nullptr || offsets[place] < 0 || offsets[place + 1] < offsets[place])
    RefuseColumn(schema, "has a text that lies outside of its bytes");
  const auto length = static_cast<std::size_t>(offsets[place + 1] - offsets[place]);
  return length == 0 ? std::string() : std::string(bytes + offsets[place], length);
}

// A view is 16 bytes: the length, and up to 12 bytes of text, or 4 of them, the number of a buffer and the place in it.
std::string TextOfView(const ArrowSchema& schema, const ArrowArray& array, std::int64_t place) {
  constexpr std::int32_t kInside = 12;
  const auto* view = static_cast<const char*>(array.buffers[1]) + 16 * place;
  std::int32_t parts[4];
  std::memcpy(parts, view, sizeof parts);
  const auto [length, prefix, buffer, from] = parts;
  if (length < 0) RefuseColumn(schema, "has a text that lies outside of its bytes");
  if (length <= kInside) return {view + 4, static_cast<std::size_t>(length)};
  if (buffer < 0 || buffer >= array.n_buffers - 3 || from < 0)
    RefuseColumn(schema, "has a text that lies outside of its bytes");
  return {static_cast<const char*>(array.buffers[2 + buffer]) + from, static_cast<std::size_t>(length)};
}

}  // namespace

bool IsOfNumbers(const ArrowSchema& schema) {
  if (schema.dictionary != nullptr) return false;
  if (IsOfFloats(schema)) return true;
  const std::string_view format = FormatOf(schema);
  const bool isList = format == "+l" || format == "+L" || FixedWidth(format) != 0;
  return isList && schema.n_children == 1 && schema.children != nullptr && schema.children[0] != nullptr &&
         schema.children[0]->dictionary == nullptr && IsOfFloats(*schema.children[0]);
}

ArrowRows NumbersOf(const ArrowSchema& schema, const ArrowArray& array) {
  if (!IsOfNumbers(schema)) {
    RefuseColumn(
        schema,
        "is of the type \"" + std::string(FormatOf(schema)) +
            "\"; curves are lists of float or double, of a fixed length (\"+w:40\") or all of one length");
  }
  if (IsOfFloats(schema)) {
    const Plain numbers(schema, array);
    return RowsInPlace(numbers, Validity(array), 0, numbers.count, 1);
  }
  NeedShape(schema, array, FixedWidth(FormatOf(schema)) != 0 ? 1 : 2, 1);
  const Plain numbers(*schema.children[0], *array.children[0]);
  const Lists lists = ListsOf(schema, array, numbers.count);
  const Validity validity(array);
  const auto fixed = static_cast<std::size_t>(FixedWidth(FormatOf(schema)));  // not beyond kMostNumbers
  if (fixed != 0) {
    return RowsInPlace(numbers, validity, static_cast<std::size_t>(array.offset) * fixed,
                       static_cast<std::size_t>(array.length), fixed);
  }
  const std::size_t width = WidthOf(schema, lists, validity);
  if (!FollowEachOther(lists, width)) return GatheredRows(numbers, validity, lists, width);
  return RowsInPlace(numbers, validity, lists.from.empty() ? 0 : lists.from[0], lists.from.size(), width);
}

bool IsOfTexts(const ArrowSchema& schema) {
  const std::string_view format = FormatOf(schema);
  return schema.dictionary == nullptr && (format == "u" || format == "U" || format == "vu");
}

std::vector<std::string> TextsOf(const ArrowSchema& schema, const ArrowArray& array) {
  if (!IsOfTexts(schema)) RefuseColumn(schema, "has no texts");
  NeedShape(schema, array, 3, 0);
  if (array.length > 0 && array.buffers[1] == nullptr) RefuseColumn(schema, "has no texts");
  const std::string_view format = FormatOf(schema);
  const Validity validity(array);
  std::vector<std::string> texts(static_cast<std::size_t>(array.length));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (!validity.Has(i)) continue;
    const std::int64_t place = array.offset + static_cast<std::int64_t>(i);
    texts[i] = format == "vu"  ? TextOfView(schema, array, place)
               : format == "U" ? TextAt<std::int64_t>(schema, array, place)
                               : TextAt<std::int32_t>(schema, array, place);
  }
  return texts;
}

std::string MetadataOf(const ArrowSchema& schema, const std::string& key) {
  const char* at = schema.metadata;
  if (at == nullptr) return {};
  const auto number = [&at] {
    std::int32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    at += sizeof value;
    return std::max(value, 0);
  };
  const auto text = [&] {
    const auto length = static_cast<std::size_t>(number());
    const std::string_view read(at, length);
    at += length;
    return read;
  };
  for (std::int32_t left = number(); left > 0; --left) {
    const std::string_view name = text(), value = text();
    if (name == key) return std::string(value);
  }
  return {};
}

}  // namespace vrx::io
