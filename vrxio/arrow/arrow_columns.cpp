#include <vrxio/arrow/arrow_columns.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include <vrxio/text/input_error.h>

namespace vrx::io {
namespace {

void AddNumber(std::int32_t number, std::string& bytes) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof raw);
}

// The form that the interface prescribes: a count, and lengths before each key and value.
std::string MetadataBytes(const std::map<std::string, std::string>& metadata) {
  if (metadata.empty()) return {};
  std::string bytes;
  AddNumber(static_cast<std::int32_t>(metadata.size()), bytes);
  for (const auto& [key, value] : metadata) {
    AddNumber(static_cast<std::int32_t>(key.size()), bytes);
    bytes += key;
    AddNumber(static_cast<std::int32_t>(value.size()), bytes);
    bytes += value;
  }
  return bytes;
}

}  // namespace

// What a schema points to, its children but not what belongs to these: a receiver may take them one by one.
struct ArrowColumns::SchemaMemory {
  std::string name, format, metadata;
  std::vector<ArrowSchema> children;
  std::vector<ArrowSchema*> places;

  static void Release(ArrowSchema* schema) {
    const std::unique_ptr<SchemaMemory> memory(static_cast<SchemaMemory*>(schema->private_data));
    for (ArrowSchema& child : memory->children) {
      if (child.release != nullptr) child.release(&child);
    }
    schema->release = nullptr;
  }
};

struct ArrowColumns::ArrayMemory {
  std::vector<const void*> buffers;
  std::vector<std::shared_ptr<const void>> owners;
  std::vector<ArrowArray> children;
  std::vector<ArrowArray*> places;

  static void Release(ArrowArray* array) {
    const std::unique_ptr<ArrayMemory> memory(static_cast<ArrayMemory*>(array->private_data));
    for (ArrowArray& child : memory->children) {
      if (child.release != nullptr) child.release(&child);
    }
    array->release = nullptr;
  }
};

void ArrowColumns::FillSchema(const Part& part, ArrowSchema& schema) {
  auto memory = std::make_unique<SchemaMemory>();
  memory->name = part.name;
  memory->format = part.format;
  memory->metadata = MetadataBytes(part.metadata);
  memory->children.resize(part.children.size());
  schema = {memory->format.c_str(),
            memory->name.c_str(),
            memory->metadata.empty() ? nullptr : memory->metadata.data(),
            ARROW_FLAG_NULLABLE,
            static_cast<std::int64_t>(part.children.size()),
            nullptr,
            nullptr,
            &SchemaMemory::Release,
            nullptr};
  for (std::size_t i = 0; i < part.children.size(); ++i) {
    FillSchema(part.children[i], memory->children[i]);
    memory->places.push_back(&memory->children[i]);
  }
  schema.children = memory->places.data();
  schema.private_data = memory.release();
}

void ArrowColumns::FillArray(const Part& part, ArrowArray& array) {
  auto memory = std::make_unique<ArrayMemory>();
  memory->buffers = part.buffers;
  memory->owners = part.owners;
  memory->children.resize(part.children.size());
  array = {part.length,
           part.nulls,
           0,
           static_cast<std::int64_t>(part.buffers.size()),
           static_cast<std::int64_t>(part.children.size()),
           memory->buffers.data(),
           nullptr,
           nullptr,
           &ArrayMemory::Release,
           nullptr};
  for (std::size_t i = 0; i < part.children.size(); ++i) {
    FillArray(part.children[i], memory->children[i]);
    memory->places.push_back(&memory->children[i]);
  }
  array.children = memory->places.data();
  array.private_data = memory.release();
}

// A bit for each row, 1 where it is there; null where all are.
const void* ArrowColumns::AddValidity(std::span<const std::uint8_t> missing, Part& part) {
  part.nulls = std::ranges::count_if(missing, [](std::uint8_t is) { return is != 0; });
  if (part.nulls == 0) return nullptr;
  auto bits = std::make_shared<std::vector<std::uint8_t>>((missing.size() + 7) / 8);
  for (std::size_t i = 0; i < missing.size(); ++i) {
    if (missing[i] == 0) (*bits)[i / 8] = static_cast<std::uint8_t>((*bits)[i / 8] | (1U << (i % 8)));
  }
  part.owners.push_back(bits);
  return bits->data();
}

void ArrowColumns::AddNumbers(const std::string& name, std::span<const double> numbers, std::size_t width,
                              std::shared_ptr<const void> owner, std::span<const std::uint8_t> missing,
                              bool asLists) {
  Part values{.name = name,
              .format = "g",
              .length = static_cast<std::int64_t>(numbers.size()),
              .buffers = {nullptr, numbers.data()},
              .owners = {std::move(owner)}};
  if (width == 1 && !asLists) {
    values.buffers[0] = AddValidity(missing, values);
    columns_.push_back(std::move(values));
    return;
  }
  Part lists{.name = name,
             .format = "+w:" + std::to_string(width),
             .length = static_cast<std::int64_t>(width == 0 ? 0 : numbers.size() / width)};
  lists.buffers = {AddValidity(missing, lists)};
  values.name = "item";
  lists.children.push_back(std::move(values));
  columns_.push_back(std::move(lists));
}

void ArrowColumns::AddNumbers(const std::string& name, std::vector<double>&& numbers, std::size_t width,
                              std::span<const std::uint8_t> missing) {
  const auto kept = std::make_shared<const std::vector<double>>(std::move(numbers));
  AddNumbers(name, *kept, width, kept, missing);
}

void ArrowColumns::AddTexts(const std::string& name, std::span<const std::string_view> texts,
                            std::span<const std::uint8_t> missing) {
  auto offsets = std::make_shared<std::vector<std::int32_t>>(1);
  auto bytes = std::make_shared<std::string>();
  for (const std::string_view text : texts) {
    bytes->append(text);
    if (bytes->size() > std::numeric_limits<std::int32_t>::max())
      throw InputError("the texts of \"" + name + "\" take more than 2 GB");
    offsets->push_back(static_cast<std::int32_t>(bytes->size()));
  }
  Part part{.name = name,
            .format = "u",
            .length = static_cast<std::int64_t>(texts.size()),
            .owners = {offsets, bytes}};
  const void* validity = AddValidity(missing, part);
  part.buffers = {validity, offsets->data(), bytes->data()};
  columns_.push_back(std::move(part));
}

void ArrowColumns::Export(ArrowSchema& schema, ArrowArray& array) const {
  Part all{.format = "+s",
           .length = columns_.empty() ? 0 : columns_.front().length,
           .buffers = {nullptr},
           .children = columns_,
           .metadata = metadata_};
  FillSchema(all, schema);
  FillArray(all, array);
}

}  // namespace vrx::io
