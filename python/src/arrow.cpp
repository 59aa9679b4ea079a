#include "python/src/arrow.h"

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include <vrxio/arrow/arrow_columns.h>
#include <vrxio/arrow/arrow_rows.h>
#include <vrxio/text/input_error.h>

#include "python/src/arrays.h"
#include "python/src/module.h"

namespace vrx::python {
namespace {

constexpr const char* kSchemaCapsule = "arrow_schema";
constexpr const char* kArrayCapsule = "arrow_array";
constexpr const char* kStreamCapsule = "arrow_array_stream";
constexpr const char* kWavelengthsKey = "wavelengths";

// A structure of the interface that is released with its owner.
template <class PART>
struct Owned {
  PART part{};
  Owned() = default;
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() {
    if (part.release != nullptr) part.release(&part);
  }
};

// Moves a structure out of its capsule.
template <class PART>
void TakeFrom(const py::handle& capsule, const char* kind, PART& part) {
  auto* given = static_cast<PART*>(PyCapsule_GetPointer(capsule.ptr(), kind));
  if (given == nullptr) throw py::error_already_set();
  if (given->release == nullptr) throw py::value_error(std::string(kind) + ": it was taken already");
  part = *given;
  given->release = nullptr;
}

// A schema and the arrays of one or of several chunks.
struct Chunks {
  std::shared_ptr<Owned<ArrowSchema>> schema = std::make_shared<Owned<ArrowSchema>>();
  std::vector<std::shared_ptr<Owned<ArrowArray>>> arrays;
};

Chunks ChunksOfArray(const py::handle& argument) {
  const py::tuple both = argument.attr("__arrow_c_array__")();
  Chunks chunks;
  TakeFrom(both[0], kSchemaCapsule, chunks.schema->part);
  chunks.arrays.push_back(std::make_shared<Owned<ArrowArray>>());
  TakeFrom(both[1], kArrayCapsule, chunks.arrays.back()->part);
  return chunks;
}

Chunks ChunksOfStream(const py::handle& argument, const char* name) {
  Owned<ArrowArrayStream> stream;
  TakeFrom(argument.attr("__arrow_c_stream__")(), kStreamCapsule, stream.part);
  const auto need = [&](int status) {
    if (status == 0) return;
    const char* reason = stream.part.get_last_error(&stream.part);
    throw py::value_error(std::string(name) + ": " +
                          (reason != nullptr ? reason : "its columns cannot be read"));
  };
  Chunks chunks;
  need(stream.part.get_schema(&stream.part, &chunks.schema->part));
  for (;;) {
    auto next = std::make_shared<Owned<ArrowArray>>();
    need(stream.part.get_next(&stream.part, &next->part));
    if (next->part.release == nullptr) return chunks;
    chunks.arrays.push_back(std::move(next));
  }
}

// Numbers of one chunk where they lie; `base` keeps them.
py::object NumbersOfChunk(const ArrowSchema& schema, const ArrowArray& array, const py::capsule& base,
                          bool isList) {
  io::ArrowRows rows = io::NumbersOf(schema, array);
  const auto count = static_cast<py::ssize_t>(rows.count), width = static_cast<py::ssize_t>(rows.width);
  const std::vector<py::ssize_t> shape = isList ? std::vector{count, width} : std::vector{count};
  py::array numbers;
  if (!rows.gathered.empty()) {
    numbers = py::array_t<double>(shape, rows.gathered.data());
  } else if (rows.floats != nullptr) {
    numbers = py::array_t<float>(shape, rows.floats, base);
  } else if (rows.doubles != nullptr) {
    numbers = py::array_t<double>(shape, rows.doubles, base);
  } else {
    numbers = py::array_t<double>(shape);
  }
  if (rows.gathered.empty()) numbers.attr("setflags")(py::arg("write") = false);  // the sender's memory
  if (rows.missing.empty()) return numbers;
  py::object mask = py::array_t<bool>(count, reinterpret_cast<const bool*>(rows.missing.data()));
  if (isList) mask = mask.attr("repeat")(width).attr("reshape")(count, width);
  return py::module_::import("numpy").attr("ma").attr("array")(numbers, py::arg("mask") = mask,
                                                               py::arg("copy") = false);
}

py::object Together(const std::vector<py::object>& parts) {
  if (parts.size() == 1) return parts.front();
  return py::module_::import("numpy").attr("ma").attr("concatenate")(py::cast(parts));
}

bool IsListOfNumbers(const ArrowSchema& schema) {
  return io::IsOfNumbers(schema) && schema.n_children == 1;
}

// An array of one column and what keeps its memory. The array is a copy that nobody releases.
struct Chunk {
  ArrowArray array;
  py::capsule base;
};

// Integers and truth values, which are no curves and may be mistaken for a part of one.
bool IsOfOtherNumbers(const ArrowSchema& schema) {
  const std::string_view format = schema.format != nullptr ? schema.format : "";
  return format.size() == 1 && std::string_view("bcCsSiIlLe").find(format) != std::string_view::npos;
}

ArrowColumn ColumnOf(const ArrowSchema& schema, const std::vector<Chunk>& chunks) {
  ArrowColumn column;
  column.label = schema.name != nullptr ? schema.name : "";
  column.isList = IsListOfNumbers(schema);
  column.wavelengths = io::MetadataOf(schema, kWavelengthsKey);
  column.holdsNumbers = io::IsOfNumbers(schema) || IsOfOtherNumbers(schema);
  if (io::IsOfNumbers(schema)) {
    std::vector<py::object> parts;
    for (const auto& [array, base] : chunks) {
      if (array.length > 0 || chunks.size() == 1)
        parts.push_back(NumbersOfChunk(schema, array, base, column.isList));
    }
    column.numbers = parts.empty() ? py::array_t<double>(0) : Together(parts);
  } else if (io::IsOfTexts(schema)) {
    py::list texts;
    for (const auto& [array, base] : chunks) {
      for (const std::string& text : io::TextsOf(schema, array)) texts.append(text);
    }
    column.texts = texts;
  }
  return column;
}

// Columns on their way out --------------------------------------------------------------------------------------

// Keeps an object of Python until a receiver lets go of it, on whatever thread; for good once there is no interpreter.
std::shared_ptr<const void> KeptBy(const py::object& object) {
  auto* kept = new py::object(object);
  return {static_cast<const void*>(kept), [](const void* pointer) {
            if (Py_IsInitialized() == 0) return;
            const py::gil_scoped_acquire lock;
            delete static_cast<const py::object*>(pointer);
          }};
}

// Whether a row is missing: masked in whole or in part.
std::vector<std::uint8_t> MissingRows(const py::object& values) {
  if (!py::hasattr(values, "mask")) return {};
  py::object mask = py::module_::import("numpy").attr("ma").attr("getmaskarray")(values);
  if (py::cast<py::array>(mask).ndim() > 1) mask = mask.attr("any")(py::arg("axis") = 1);
  const auto bools = py::cast<py::array_t<bool>>(mask);
  return {bools.data(), bools.data() + bools.size()};
}

void AddColumn(const std::string& name, const py::object& values, io::ArrowColumns& columns) {
  if (py::isinstance<py::list>(values)) {
    std::vector<std::string> texts;
    std::vector<std::uint8_t> missing;
    for (const py::handle text : values) {
      missing.push_back(text.is_none() ? 1 : 0);
      texts.push_back(text.is_none() ? std::string() : py::str(text).cast<std::string>());
    }
    columns.AddTexts(name, std::vector<std::string_view>(texts.begin(), texts.end()), missing);
    return;
  }
  const py::object plain = py::module_::import("numpy").attr("ma").attr("getdata")(values);
  const auto numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(plain);
  if (!numbers || numbers.ndim() < 1 || numbers.ndim() > 2) throw py::error_already_set();
  const std::size_t width = numbers.ndim() == 2 ? static_cast<std::size_t>(numbers.shape(1)) : 1;
  columns.AddNumbers(name, std::span(numbers.data(), static_cast<std::size_t>(numbers.size())), width,
                     KeptBy(numbers), MissingRows(values), numbers.ndim() == 2);
}

template <class PART>
py::capsule CapsuleOf(std::unique_ptr<Owned<PART>> part, const char* kind) {
  PyObject* capsule = PyCapsule_New(part.get(), kind, [](PyObject* own) {
    delete static_cast<Owned<PART>*>(PyCapsule_GetPointer(own, PyCapsule_GetName(own)));
  });
  if (capsule == nullptr) throw py::error_already_set();
  (void)part.release();
  return py::reinterpret_steal<py::capsule>(capsule);
}

// (name, values) after each other, as the capsules of a record batch.
py::tuple ExportColumns(const std::vector<std::pair<std::string, py::object>>& given,
                        const std::map<std::string, std::string>& metadata) {
  io::ArrowColumns columns;
  for (const auto& [name, values] : given) AddColumn(name, values, columns);
  columns.SetMetadata(metadata);
  auto schema = std::make_unique<Owned<ArrowSchema>>();
  auto array = std::make_unique<Owned<ArrowArray>>();
  columns.Export(schema->part, array->part);
  return py::make_tuple(CapsuleOf(std::move(schema), kSchemaCapsule),
                        CapsuleOf(std::move(array), kArrayCapsule));
}

// The rows of a structure's column, which may begin before those of the structure and go on behind them.
ArrowArray ChildOf(const ArrowSchema& schema, const ArrowArray& array, std::int64_t i, const char* name) {
  const bool isThere = array.n_children == schema.n_children && array.children[i] != nullptr &&
                       array.offset >= 0 && array.length >= 0 &&
                       array.children[i]->length - array.offset >= array.length;
  if (!isThere)
    throw py::value_error(std::string(name) + ": an Arrow table whose columns are shorter than it");
  if (array.null_count > 0)
    throw py::value_error(std::string(name) + ": an Arrow structure with rows that are null as a whole");
  ArrowArray child = *array.children[i];
  child.offset += array.offset;
  child.length = array.length;
  if (array.offset != 0 && child.null_count > 0) child.null_count = -1;  // of other rows
  return child;
}

}  // namespace

bool IsArrow(const py::handle& argument) {
  return py::hasattr(argument, "__arrow_c_array__") || py::hasattr(argument, "__arrow_c_stream__");
}

ArrowTable ArrowTableOf(const py::handle& argument, const char* name) {
  const Chunks chunks =
      py::hasattr(argument, "__arrow_c_array__") ? ChunksOfArray(argument) : ChunksOfStream(argument, name);
  const ArrowSchema& schema = chunks.schema->part;
  std::vector<Chunk> whole;
  for (const auto& array : chunks.arrays) {
    auto* kept = new std::shared_ptr<Owned<ArrowArray>>(array);
    whole.push_back({array->part, py::capsule(kept, [](void* own) {
                       delete static_cast<std::shared_ptr<Owned<ArrowArray>>*>(own);
                     })});
  }
  ArrowTable table;
  if (std::string_view(schema.format != nullptr ? schema.format : "") != "+s") {
    table.columns.push_back(ColumnOf(schema, whole));
    table.columns.back().label.clear();
    return table;
  }
  for (std::int64_t i = 0; i < schema.n_children; ++i) {
    std::vector<Chunk> parts;
    for (const auto& [array, base] : whole) parts.push_back({ChildOf(schema, array, i, name), base});
    table.columns.push_back(ColumnOf(*schema.children[i], parts));
    if (table.columns.back().wavelengths.empty())
      table.columns.back().wavelengths = io::MetadataOf(schema, kWavelengthsKey);
  }
  return table;
}

void DefineArrow(py::module_& module) {
  module.def("arrow_export", &ExportColumns, py::arg("columns"), py::arg("metadata"));
}

}  // namespace vrx::python
