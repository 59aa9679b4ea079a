// Files that Python writes: measurements in every form, and texts.

#include <exception>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <vrxio/files/measurement_writer.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "python/src/module.h"
#include "python/src/tables.h"
#include "python/src/unlocked.h"
#include "tools/vrx/output/measurement_output.h"

namespace vrx::python {
namespace {

// Why a file could not be written: an OSError once the lock is there.
struct WriteFailure : std::runtime_error {
  using std::runtime_error::runtime_error;
};
// Ctrl+C, which the end of the work tells.
struct WriteStopped {};

// New content of a file, which appears as a whole at Commit or not at all. It is opened with the first of it: until then nothing
// is touched.
class WholeFile {
 public:
  explicit WholeFile(std::string path) : path_(std::move(path)) {}

  void Write(std::string_view text) {
    if (!isOpen_ && !file_.Open(path_)) Fail();
    isOpen_ = true;
    try {
      file_.Write(std::as_bytes(std::span(text)));
    } catch (const CArchiveException&) {
      Fail();
    }
  }
  void Commit() {
    Write({});
    if (!file_.Commit()) Fail();
  }

 private:
  [[noreturn]] void Fail() { throw WriteFailure(path_ + ": " + file_.GetError()); }

  std::string path_;
  FileReplacer file_;
  bool isOpen_ = false;
};

// Writes without the lock. `write(file, goesOn)` may throw WriteStopped where the latter is false.
template <class WRITE>
void WriteWhole(const std::string& path, const WRITE& write) {
  try {
    WithoutLock([&](const auto& goesOn) {
      try {
        WholeFile file(path);
        write(file, goesOn);
        file.Commit();
      } catch (const WriteStopped&) {
      }
    });
  } catch (const WriteFailure& failure) {
    PyErr_SetString(PyExc_OSError, failure.what());
    throw py::error_already_set();
  }
}

// Measurements into a file, in pieces that are worth a call of the system.
template <class GOES_ON>
void WriteSamples(io::MeasurementReader& source, io::WriteOptions writing, WholeFile& file,
                  const GOES_ON& goesOn) {
  constexpr std::size_t kEnough = std::size_t{1} << 18;
  std::string pieces;
  writing.onProgress = [&](std::uint64_t) {
    if (!goesOn()) throw WriteStopped();
  };
  io::WriteMeasurements(source, writing, [&](std::string_view text) {
    pieces += text;
    if (pieces.size() < kEnough) return;
    file.Write(pieces);
    pieces.clear();
  });
  file.Write(pieces);
}

tool::WritingOptions WritingOptionsOf(const py::dict& options) {
  tool::WritingOptions writing;
  writing.form = FormNamed(options["to"].cast<std::string>());
  writing.fraction = options["to_fraction"].cast<bool>();
  writing.csvSafe = options["csv_safe"].cast<bool>();
  writing.decimalComma = options["decimal_comma"].cast<bool>();
  writing.grid = options["grid"].cast<std::string>();
  return writing;
}

std::vector<std::string> Convert(const std::string& in, const std::string& out, const std::string& form,
                                 const std::string& scale, const py::dict& options) {
  const io::WriteOptions writing = tool::WritingOf(WritingOptionsOf(options), out);
  const io::ReadOptions reading = ReadOptionsOf(form, scale);
  tool::Converted converted;
  WriteWhole(out, [&](WholeFile& file, const auto& goesOn) {
    converted = tool::ConvertMeasurements(in, out, reading, writing,
                                          [&](io::MeasurementReader& source, const io::WriteOptions& given) {
                                            WriteSamples(source, given, file, goesOn);
                                          });
  });
  return converted.losses;
}

std::vector<std::string> WriteTable(const std::string& out, const py::dict& columns,
                                    const py::dict& options) {
  io::WriteOptions writing = tool::WritingOf(WritingOptionsOf(options), out);
  const auto source = io::OpenMeasurementTable(TableOf(columns), "measurements");
  std::vector<std::string> losses;
  writing.onLosses = [&](const std::vector<std::string>& lost) { losses = lost; };
  WriteWhole(out, [&](WholeFile& file, const auto& goesOn) { WriteSamples(*source, writing, file, goesOn); });
  return losses;
}

void WriteText(const std::string& path, const std::string& content) {
  WriteWhole(path, [&](WholeFile& file, const auto&) { file.Write(content); });
}

}  // namespace

void DefineWriting(py::module_& module) {
  module.def("convert", &Convert, py::arg("source"), py::arg("target"), py::arg("form"), py::arg("scale"),
             py::arg("options"));
  module.def("write_table", &WriteTable, py::arg("path"), py::arg("columns"), py::arg("options"));
  module.def("write_file", &WriteText, py::arg("path"), py::arg("content"));
}

}  // namespace vrx::python
