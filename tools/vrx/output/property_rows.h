// Results that are one thing: rows of a property and its value.

#ifndef TOOLS_VRX_OUTPUT_PROPERTY_ROWS_H_
#define TOOLS_VRX_OUTPUT_PROPERTY_ROWS_H_

#include <cstdint>
#include <memory>
#include <string>

#include "tools/vrx/output/output.h"

namespace vrx::tool {

class PropertyRows {
 public:
  PropertyRows(const Format& format, OutputStream& output)
      : rows_(MakeRowWriter(format, output, {{"property"}, {"value"}})) {}

  void Add(const std::string& property, const std::string& value) {
    rows_->Text(property);
    rows_->Text(value);
    rows_->EndRow();
  }
  void Add(const std::string& property, int64_t value) {
    rows_->Text(property);
    rows_->Integer(value);
    rows_->EndRow();
  }
  void Finish() { rows_->Finish(); }

 private:
  std::unique_ptr<RowWriter> rows_;
};

}  // namespace vrx::tool

#endif  // TOOLS_VRX_OUTPUT_PROPERTY_ROWS_H_
