// Columns handed to other programs as Arrow arrays (vrxmath/arrow_c_data.h).

#ifndef VRXIO_ARROW_ARROW_COLUMNS_H_
#define VRXIO_ARROW_ARROW_COLUMNS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vrxmath/arrow_c_data.h>

namespace vrx::io {

/// Columns of one length, and their memory until the last one who received them lets it go.
///
///   ArrowColumns columns;
///   columns.AddTexts("id", ids);
///   columns.AddNumbers("Lab", lab, 3);                 // a list of 3 in each row
///   columns.Export(schema, array);
class ArrowColumns {
 public:
  /// Numbers, `width` in each row: a column of doubles, or of lists of that fixed length where it is above 1 or `asLists` says so. They
  /// are not copied: `owner` keeps them. Rows with a 1 in `missing` are null; it is empty where none is.
  void AddNumbers(const std::string& name, std::span<const double> numbers, std::size_t width,
                  std::shared_ptr<const void> owner, std::span<const std::uint8_t> missing = {},
                  bool asLists = false);
  /// The same for numbers that are handed over.
  void AddNumbers(const std::string& name, std::vector<double>&& numbers, std::size_t width,
                  std::span<const std::uint8_t> missing = {});
  /// Texts in UTF-8. Throws InputError for more than 2 GB of them.
  void AddTexts(const std::string& name, std::span<const std::string_view> texts,
                std::span<const std::uint8_t> missing = {});
  /// Words about all rows, which go with the schema.
  void SetMetadata(std::map<std::string, std::string> metadata) { metadata_ = std::move(metadata); }

  /// A record batch: a structure of the columns. Both are the receiver's, who releases them.
  void Export(ArrowSchema& schema, ArrowArray& array) const;

 private:
  /// A column or its child: what the two structures point to.
  struct Part {
    std::string name = {}, format = {};
    std::int64_t length = 0, nulls = 0;
    std::vector<const void*> buffers = {};
    std::vector<std::shared_ptr<const void>> owners = {};
    std::vector<Part> children = {};
    std::map<std::string, std::string> metadata = {};
  };
  struct SchemaMemory;
  struct ArrayMemory;

  static void FillSchema(const Part& part, ArrowSchema& schema);
  static void FillArray(const Part& part, ArrowArray& array);
  static const void* AddValidity(std::span<const std::uint8_t> missing, Part& part);

  std::vector<Part> columns_;
  std::map<std::string, std::string> metadata_;
};

}  // namespace vrx::io

#endif  // VRXIO_ARROW_ARROW_COLUMNS_H_
