// Values in the binary format in which PostgreSQL takes and gives them: the most significant byte first.

#ifndef VRXSTORE_POSTGRES_WIRE_H_
#define VRXSTORE_POSTGRES_WIRE_H_

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <libpq-fe.h>
#include <span>
#include <string>
#include <string_view>

#include <vrxstore/records/records.h>

namespace vrx::store {

/// The numbers of types in the server's catalogue, which never change.
inline constexpr Oid kBoolType = 16, kBytesType = 17, kInt8Type = 20, kInt2Type = 21, kInt4Type = 23,
                     kTextType = 25, kFloat8Type = 701, kFloat8ArrayType = 1022;

template <std::integral NUMBER>
void AppendWire(NUMBER number, std::string& bytes) {
  for (std::size_t k = sizeof(NUMBER); k-- > 0;)
    bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * k) & 0xFF);
}

/// A number of up to eight bytes with its sign.
inline std::int64_t WireInteger(std::string_view bytes) {
  std::uint64_t bits = !bytes.empty() && (bytes.front() & 0x80) != 0 ? ~std::uint64_t{0} : 0;
  for (const char byte : bytes) bits = bits << 8 | static_cast<unsigned char>(byte);
  return static_cast<std::int64_t>(bits);
}

inline void AppendWireDouble(double number, std::string& bytes) {
  AppendWire(std::bit_cast<std::uint64_t>(number), bytes);
}

/// An array of one dimension, float8[]: its dimensions, whether it has NULLs, the type; length and first index; then the elements
/// with their sizes.
inline void AppendWireDoubles(std::span<const double> numbers, std::string& bytes) {
  AppendWire(std::int32_t{1}, bytes);
  AppendWire(std::int32_t{0}, bytes);
  AppendWire(kFloat8Type, bytes);
  AppendWire(static_cast<std::int32_t>(numbers.size()), bytes);
  AppendWire(std::int32_t{1}, bytes);
  for (const double number : numbers) {
    AppendWire(static_cast<std::int32_t>(sizeof(number)), bytes);
    AppendWireDouble(number, bytes);
  }
}

/// Takes such an array apart. Throws StoreError unless it is one of as many numbers as `numbers` holds.
inline void TakeWireDoubles(std::string_view bytes, std::span<double> numbers) {
  constexpr std::size_t kHead = 20, kElement = 12;
  const bool isWhole = bytes.size() == kHead + kElement * numbers.size() &&
                       WireInteger(bytes.substr(0, 4)) == 1 &&
                       WireInteger(bytes.substr(8, 4)) == static_cast<std::int64_t>(kFloat8Type);
  for (std::size_t i = 0; isWhole && i < numbers.size(); ++i) {
    const std::string_view element = bytes.substr(kHead + kElement * i, kElement);
    if (WireInteger(element.substr(0, 4)) != sizeof(double))
      throw StoreError("an element of an array is NULL");
    numbers[i] = std::bit_cast<double>(WireInteger(element.substr(4)));
  }
  if (!isWhole)
    throw StoreError("an array has not the " + std::to_string(numbers.size()) + " numbers that it should");
}

}  // namespace vrx::store

#endif  // VRXSTORE_POSTGRES_WIRE_H_
