#!/usr/bin/env python3
"""check_std_includes.py SOURCE_DIR ORDER

Fails when a file uses a name of the standard library whose header neither it includes nor a header of the project that it
includes: it then compiles only as long as another header of the standard library, or a source that is compiled together with it
(VRX_UNITY), brings that header along. ORDER is the file of check_include_order.py: the folders that are looked at.
"""
import pathlib
import re
import sys

from check_include_order import read_order

INCLUDE = re.compile(r"^[ \t]*#[ \t]*include[ \t]*[<\"]([^>\"]+)[>\"]", re.MULTILINE)
COMMENT_OR_TEXT = re.compile(r"//[^\n]*|\"(?:\\.|[^\"\\\n])*\"")
NAME = re.compile(r"\bstd::([a-z_0-9]+)")

# The headers, any one of which has the names. What several headers have to declare (std::move, std::begin) is not listed.
HEADERS = {
    "algorithm": """adjacent_find all_of any_of clamp copy copy_if copy_n count count_if equal fill fill_n find find_if lower_bound
        max max_element min min_element minmax minmax_element move_backward none_of nth_element partition_point pop_heap push_heap
        remove_if replace_if reverse search sort sort_heap stable_partition stable_sort swap_ranges transform upper_bound""",
    "algorithm ranges": "ranges",
    "array": "array",
    "atomic": "atomic memory_order_acq_rel memory_order_acquire memory_order_relaxed memory_order_release",
    "bit": "bit_cast countl_zero countr_zero endian popcount rotl rotr",
    "bitset": "bitset",
    "cctype": "isalnum isalpha isdigit",
    "charconv": "chars_format from_chars to_chars to_chars_result",
    "charconv system_error": "errc",
    "chrono": "chrono",
    "cmath": """acos atan2 cbrt ceil copysign cos exp fabs floor fmax fmin frexp hypot isfinite isinf isnan ldexp log lround nan pow
        round signbit sin sqrt""",
    "concepts": "convertible_to integral floating_point same_as",
    "condition_variable": "condition_variable",
    "csignal": "raise signal",
    "cstddef cstdio cstring": "size_t",
    "cstddef": "byte ptrdiff_t to_integer",
    "cstdint": "int16_t int32_t int64_t int8_t uint16_t uint32_t uint64_t uint8_t uintptr_t",
    "cstdio": "fclose ferror fflush fopen fprintf fputs fread fwrite setvbuf snprintf",
    "cstdlib": "atexit atoi free getenv strtod strtoll",
    "cstring": "memchr memcmp memcpy memmove memset strcat strcmp strerror strncpy",
    "ctime": "mktime time time_t timespec tm",
    "deque": "deque",
    "exception": "current_exception exception_ptr rethrow_exception uncaught_exceptions",
    "exception stdexcept": "exception",
    "filesystem": "filesystem",
    "fstream": "ifstream ofstream",
    "functional": "boyer_moore_horspool_searcher function greater hash invoke less",
    "initializer_list": "initializer_list",
    "iostream": "cerr cin cout",
    "istream iostream sstream fstream": "istream",
    "limits": "numeric_limits",
    "map": "map multimap",
    "memory": """addressof destroy destroy_n make_shared make_unique make_unique_for_overwrite shared_ptr uninitialized_copy
        uninitialized_fill_n uninitialized_value_construct unique_ptr""",
    "mutex": "lock_guard mutex scoped_lock unique_lock",
    "new": "bad_alloc launder nothrow",
    "numeric": "accumulate iota",
    "optional": "nullopt optional",
    "ostream iostream sstream fstream": "ostream",
    "random": "random_device",
    "ranges": "views",
    "set": "set",
    "span": "as_bytes as_writable_bytes span",
    "sstream": "istringstream ostringstream",
    "stdexcept": "invalid_argument length_error logic_error out_of_range runtime_error",
    "string": "basic_string getline stod string to_string to_wstring u16string u32string u8string wstring",
    "string_view": "string_view u16string_view wstring_view",
    "system_error": "error_code system_error",
    "thread": "this_thread thread",
    "tuple": "apply tie tuple tuple_element_t tuple_size_v",
    "type_traits": """conditional_t enable_if_t is_arithmetic_v is_base_of_v is_convertible_v is_enum_v is_function_v is_invocable_r_v
        is_invocable_v is_nothrow_move_assignable_v is_same_v is_trivially_copyable_v is_trivially_destructible_v remove_const_t
        remove_cvref_t remove_reference_t type_identity_t""",
    "unordered_map": "unordered_map",
    "unordered_set": "unordered_set",
    "utility": "exchange forward index_sequence make_index_sequence pair",
    "variant": "get_if holds_alternative variant visit",
    "vector": "vector",
}
HEADERS_OF = {name: headers.split() for headers, names in HEADERS.items() for name in names.split()}


def headers_reached(file, includes):
    """The headers that are not the project's which a file includes, itself or through the project's."""
    seen, waiting, others = {file}, [file], set()
    while waiting:
        for name in includes[waiting.pop()]:
            if name not in includes:
                others.add(name)
            elif name not in seen:
                seen.add(name)
                waiting.append(name)
    return others


def missing_headers(texts):
    includes = {file: INCLUDE.findall(text) for file, text in texts.items()}
    for file, text in texts.items():
        reached = headers_reached(file, includes)
        for name in sorted(set(NAME.findall(COMMENT_OR_TEXT.sub("", text)))):
            headers = HEADERS_OF.get(name, [])
            if headers and not reached.intersection(headers):
                yield f"{file}: std::{name} without <{headers[0]}>"


def main(source_dir, order):
    tops = sorted({folder.split("/")[0] for folder in read_order(order)})
    texts = {
        path.relative_to(source_dir).as_posix(): path.read_text()
        for top in tops
        for path in sorted((source_dir / top).rglob("*"))
        if path.suffix in (".h", ".cpp")
    }
    errors = list(missing_headers(texts))
    if errors or not texts:
        sys.exit(f"{len(texts)} files seen\n" + "\n".join(errors))
    print(f"{len(texts)} files include the headers of what they use of the standard library")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
