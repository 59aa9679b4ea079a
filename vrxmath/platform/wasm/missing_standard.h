// What the standard library of emscripten 3.1 (libc++ 13) lacks of C++20, under its standard names, so that sources are the same
// everywhere. The build for WebAssembly includes it before every source; a newer standard library has all of it and sees nothing.

#ifndef VRXMATH_PLATFORM_WASM_MISSING_STANDARD_H_
#define VRXMATH_PLATFORM_WASM_MISSING_STANDARD_H_

#if defined(__cplusplus)
#include <version>

#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 14000
#include <algorithm>
#include <array>
#include <charconv>
#include <compare>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace std {  // NOLINT(cert-dcl58-cpp): where the sources look for it

template <class TO, class FROM>
requires(sizeof(TO) == sizeof(FROM) && is_trivially_copyable_v<TO> &&
         is_trivially_copyable_v<FROM>) constexpr TO bit_cast(const FROM& from) noexcept {
  return __builtin_bit_cast(TO, from);
}

template <class T>
requires(is_unbounded_array_v<T>) unique_ptr<T> make_unique_for_overwrite(size_t count) {
  return unique_ptr<T>(new remove_extent_t<T>[count]);
}

/// Finds texts of bytes, looking at as few of them as it can (Horspool 1980).
template <class I>
class boyer_moore_horspool_searcher {
 public:
  boyer_moore_horspool_searcher(I first, I last) : first_(first), size_(last - first) {
    skip_.fill(size_);
    for (ptrdiff_t i = 0; i + 1 < size_; ++i) skip_[static_cast<unsigned char>(first[i])] = size_ - 1 - i;
  }
  template <class J>
  pair<J, J> operator()(J begin, J end) const {
    while (end - begin >= size_) {
      if (std::equal(first_, first_ + size_, begin)) return {begin, begin + size_};
      begin += skip_[static_cast<unsigned char>(begin[size_ - 1])];
    }
    return {end, end};
  }

 private:
  I first_;
  ptrdiff_t size_;
  array<ptrdiff_t, 256> skip_;
};

inline strong_ordering operator<=>(string_view a, string_view b) noexcept {
  return a.compare(b) <=> 0;
}
inline strong_ordering operator<=>(u16string_view a, u16string_view b) noexcept {
  return a.compare(b) <=> 0;
}

/// Numbers from texts, rounded once and correctly, and shortest texts of numbers, as the standard has them.
from_chars_result from_chars(const char* first, const char* last, double& value,
                             chars_format format = chars_format::general);
to_chars_result to_chars(char* first, char* last, double value);
to_chars_result to_chars(char* first, char* last, double value, chars_format format);
to_chars_result to_chars(char* first, char* last, double value, chars_format format, int precision);

namespace ranges {

template <class IN, class OUT>
struct in_out_result {
  IN in;
  OUT out;
};
template <class T>
struct min_max_result {
  T min, max;
};

// The algorithms over whole ranges, each by its older namesake. `proj`: what of an element is looked at.
struct adjacent_find_function {
  template <range R, class PREDICATE = equal_to, class PROJECTION = identity>
  constexpr auto operator()(R&& r, PREDICATE predicate = {}, PROJECTION proj = {}) const {
    return std::adjacent_find(ranges::begin(r), ranges::end(r), [&](auto&& a, auto&& b) {
      return bool(std::invoke(predicate, std::invoke(proj, a), std::invoke(proj, b)));
    });
  }
};
inline constexpr adjacent_find_function adjacent_find{};

#define VRX_RANGE_PREDICATE(name)                                                                     \
  struct name##_function {                                                                            \
    template <range R, class PREDICATE, class PROJECTION = identity>                                  \
    constexpr auto operator()(R&& r, PREDICATE predicate, PROJECTION proj = {}) const {               \
      return std::name(ranges::begin(r), ranges::end(r),                                              \
                       [&](auto&& x) { return bool(std::invoke(predicate, std::invoke(proj, x))); }); \
    }                                                                                                 \
    template <input_or_output_iterator I, class PREDICATE, class PROJECTION = identity>               \
    constexpr auto operator()(I first, I last, PREDICATE predicate, PROJECTION proj = {}) const {     \
      return std::name(first, last,                                                                   \
                       [&](auto&& x) { return bool(std::invoke(predicate, std::invoke(proj, x))); }); \
    }                                                                                                 \
  };                                                                                                  \
  inline constexpr name##_function name {}
VRX_RANGE_PREDICATE(all_of);
VRX_RANGE_PREDICATE(any_of);
VRX_RANGE_PREDICATE(none_of);
VRX_RANGE_PREDICATE(count_if);
VRX_RANGE_PREDICATE(find_if);
VRX_RANGE_PREDICATE(find_if_not);
#undef VRX_RANGE_PREDICATE

#define VRX_RANGE_VALUE(name, by)                                                                 \
  struct name##_function {                                                                        \
    template <range R, class T, class PROJECTION = identity>                                      \
    constexpr auto operator()(R&& r, const T& value, PROJECTION proj = {}) const {                \
      return std::by(ranges::begin(r), ranges::end(r),                                            \
                     [&](auto&& x) { return bool(std::invoke(proj, x) == value); });              \
    }                                                                                             \
    template <input_or_output_iterator I, class T, class PROJECTION = identity>                   \
    constexpr auto operator()(I first, I last, const T& value, PROJECTION proj = {}) const {      \
      return std::by(first, last, [&](auto&& x) { return bool(std::invoke(proj, x) == value); }); \
    }                                                                                             \
  };                                                                                              \
  inline constexpr name##_function name {}
VRX_RANGE_VALUE(count, count_if);
VRX_RANGE_VALUE(find, find_if);
#undef VRX_RANGE_VALUE

#define VRX_RANGE_ORDER(name)                                                         \
  struct name##_function {                                                            \
    template <range R, class LESS = less, class PROJECTION = identity>                \
    constexpr auto operator()(R&& r, LESS before = {}, PROJECTION proj = {}) const {  \
      return std::name(ranges::begin(r), ranges::end(r), [&](auto&& a, auto&& b) {    \
        return bool(std::invoke(before, std::invoke(proj, a), std::invoke(proj, b))); \
      });                                                                             \
    }                                                                                 \
  };                                                                                  \
  inline constexpr name##_function name {}
VRX_RANGE_ORDER(is_sorted);
VRX_RANGE_ORDER(max_element);
VRX_RANGE_ORDER(min_element);
VRX_RANGE_ORDER(sort);
VRX_RANGE_ORDER(stable_sort);
#undef VRX_RANGE_ORDER

struct lower_bound_function {
  template <range R, class T, class LESS = less, class PROJECTION = identity>
  constexpr auto operator()(R&& r, const T& value, LESS before = {}, PROJECTION proj = {}) const {
    return std::lower_bound(ranges::begin(r), ranges::end(r), value, [&](auto&& x, const T& bound) {
      return bool(std::invoke(before, std::invoke(proj, x), bound));
    });
  }
};
inline constexpr lower_bound_function lower_bound{};

struct min_function {
  template <range R, class LESS = less, class PROJECTION = identity>
  constexpr range_value_t<R> operator()(R&& r, LESS before = {}, PROJECTION proj = {}) const {
    return *ranges::min_element(r, before, proj);
  }
};
inline constexpr min_function min{};

struct minmax_function {
  template <range R, class LESS = less, class PROJECTION = identity>
  constexpr min_max_result<range_value_t<R>> operator()(R&& r, LESS before = {}, PROJECTION proj = {}) const {
    const auto [least, most] = std::minmax_element(ranges::begin(r), ranges::end(r), [&](auto&& a, auto&& b) {
      return bool(std::invoke(before, std::invoke(proj, a), std::invoke(proj, b)));
    });
    return {*least, *most};
  }
};
inline constexpr minmax_function minmax{};

struct equal_function {
  template <range A, range B, class PREDICATE = equal_to, class FIRST = identity, class SECOND = identity>
  constexpr bool operator()(A&& a, B&& b, PREDICATE predicate = {}, FIRST first = {},
                            SECOND second = {}) const {
    return std::equal(ranges::begin(a), ranges::end(a), ranges::begin(b), ranges::end(b),
                      [&](auto&& x, auto&& y) {
                        return bool(std::invoke(predicate, std::invoke(first, x), std::invoke(second, y)));
                      });
  }
};
inline constexpr equal_function equal{};

#define VRX_RANGE_COPY(name)                                                                \
  struct name##_function {                                                                  \
    template <range R, class OUT>                                                           \
    constexpr in_out_result<iterator_t<R>, OUT> operator()(R&& r, OUT out) const {          \
      return {ranges::end(r), std::name(ranges::begin(r), ranges::end(r), std::move(out))}; \
    }                                                                                       \
    template <input_or_output_iterator I, class OUT>                                        \
    constexpr in_out_result<I, OUT> operator()(I first, I last, OUT out) const {            \
      return {last, std::name(first, last, std::move(out))};                                \
    }                                                                                       \
  };                                                                                        \
  inline constexpr name##_function name {}
VRX_RANGE_COPY(copy);
VRX_RANGE_COPY(move);
#undef VRX_RANGE_COPY

struct copy_if_function {
  template <range R, class OUT, class PREDICATE>
  constexpr in_out_result<iterator_t<R>, OUT> operator()(R&& r, OUT out, PREDICATE predicate) const {
    return {ranges::end(r), std::copy_if(ranges::begin(r), ranges::end(r), std::move(out), predicate)};
  }
};
inline constexpr copy_if_function copy_if{};

struct transform_function {
  template <range R, class OUT, class CHANGE>
  constexpr in_out_result<iterator_t<R>, OUT> operator()(R&& r, OUT out, CHANGE change) const {
    return {ranges::end(r), std::transform(ranges::begin(r), ranges::end(r), std::move(out),
                                           [&](auto&& x) { return std::invoke(change, x); })};
  }
};
inline constexpr transform_function transform{};

struct fill_function {
  template <range R, class T>
  constexpr void operator()(R&& r, const T& value) const {
    std::fill(ranges::begin(r), ranges::end(r), value);
  }
};
inline constexpr fill_function fill{};

struct for_each_function {
  template <range R, class USE>
  constexpr void operator()(R&& r, USE use) const {
    for (auto&& x : r) std::invoke(use, x);
  }
};
inline constexpr for_each_function for_each{};

struct replace_function {
  template <range R, class T, class U>
  constexpr void operator()(R&& r, const T& before, const U& after) const {
    std::replace_if(
        ranges::begin(r), ranges::end(r), [&](auto&& x) { return bool(x == before); }, after);
  }
};
inline constexpr replace_function replace{};

struct replace_if_function {
  template <range R, class PREDICATE, class U>
  constexpr void operator()(R&& r, PREDICATE predicate, const U& after) const {
    std::replace_if(ranges::begin(r), ranges::end(r), predicate, after);
  }
};
inline constexpr replace_if_function replace_if{};

}  // namespace ranges
}  // namespace std

#endif
#endif

#endif  // VRXMATH_PLATFORM_WASM_MISSING_STANDARD_H_
