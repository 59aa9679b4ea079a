// Files of measurements and of colour systems.

#include <algorithm>
#include <array>
#include <span>

#include <vrxio/files/measurement_table.h>
#include <vrxio/measurement/names.h>
#include <vrxio/measurement/value_scale.h>
#include <vrxio/systems/color_system_file.h>
#include <vrxio/text/input_error.h>

#include "c_api/handles.h"

namespace vrx::c_api {
namespace {

using io::MeasurementTable;

// What a reader complains of is a refusal with its sentence.
template <class READ>
auto Reading(const READ& read) {
  try {
    return read();
  } catch (const io::ScaleError& error) {
    throw Refusal{VRX_REFUSED, error.Statement() + "; choose with VRX_SCALE_FRACTION or VRX_SCALE_PERCENT"};
  } catch (const io::InputError& error) {
    throw Refusal{VRX_REFUSED, error.what()};
  }
}

io::ReadOptions OptionsOf(const vrx_read_options* given) {
  using Options = io::ReadOptions;
  const vrx_read_options usual{sizeof usual, VRX_FORM_BY_CONTENT, VRX_SCALE_BY_FILE, 0};
  const vrx_read_options options = Sized(given, usual, "options");
  NeedRange(options.form, VRX_FORM_BY_CONTENT, VRX_FORM_JSON, "form");
  NeedRange(options.scale, VRX_SCALE_BY_FILE, VRX_SCALE_FRACTION, "scale");
  NeedRange(options.lenient, 0, 1, "lenient");
  constexpr Options::Form kForms[] = {Options::Form::kByContent, Options::Form::kCsv, Options::Form::kCgats,
                                      Options::Form::kCxf, Options::Form::kJson};
  constexpr Options::Scale kScales[] = {Options::Scale::kByFile, Options::Scale::kPercent,
                                        Options::Scale::kFraction};
  io::ReadOptions result;
  result.form = kForms[options.form];
  result.scale = kScales[options.scale];
  result.lenient = options.lenient != 0;
  return result;
}

// A path of a file; "-" is one, too, and not standard input.
template <class UNIT>
std::string PathOf(const UNIT* path) {
  const std::string utf8 = Text(path, "path").ToUtf8();
  return utf8 == "-" ? "./-" : utf8;
}

template <class UNIT>
vrx_status OpenTable(const UNIT* path, const vrx_read_options* options, vrx_handle* measurements) noexcept {
  return Call([&] {
    const std::string file = PathOf(path);
    const io::ReadOptions read = OptionsOf(options);
    NeedPlace(measurements, "measurements");
    *measurements = OpenHandle(
        std::make_shared<MeasurementTable>(Reading([&] { return io::ReadMeasurementTable(file, read); })));
  });
}

int32_t FormNumber(const std::string& form) {
  constexpr std::array<std::string_view, 5> kNames{"", "CSV", "CGATS", "CxF3", "JSON"};
  return static_cast<int32_t>(std::ranges::find(kNames, form) - kNames.begin()) % 5;
}

// The texts of a table of one kind.
std::string TextAt(const MeasurementTable& table, int32_t kind, int32_t index) {
  NeedRange(kind, VRX_TEXT_ID, VRX_TEXT_WARNING, "kind");
  const std::vector<std::string>* const lists[] = {&table.ids, &table.names, nullptr, &table.notes,
                                                   &table.warnings};
  const auto* const list = lists[kind];
  const std::size_t count = list != nullptr ? list->size() : table.geometries.size();
  NeedRange(index, 0, static_cast<int32_t>(count) - 1, "index");
  const auto at = static_cast<std::size_t>(index);
  return list != nullptr ? (*list)[at] : io::GeometryName(table.geometries[at]);
}

template <class UNIT>
vrx_status TableText(vrx_handle measurements, int32_t kind, int32_t index, UNIT* text, int32_t capacity,
                     int32_t* length) noexcept {
  return Call([&] {
    const auto table = Find<MeasurementTable>(measurements);
    Give(CString::FromUtf8(TextAt(*table, kind, index)), text, capacity, length);
  });
}

// The components of a system: colorants, then resins.
const CComponent& ComponentAt(const io::ColorSystem& system, int32_t index) {
  const int32_t colorants = system.data.colorants.GetSize();
  NeedRange(index, 0, colorants + system.data.resins.GetSize() - 1, "index");
  if (index < colorants) return system.data.colorants[index];
  return system.data.resins[index - colorants];
}

template <class UNIT>
vrx_status ComponentName(vrx_handle colorants, int32_t index, UNIT* text, int32_t capacity,
                         int32_t* length) noexcept {
  return Call([&] {
    const auto system = Find<io::ColorSystem>(colorants);
    Give(ComponentAt(*system, index).GetName(), text, capacity, length);
  });
}

template <class UNIT>
vrx_status OpenSystem(const UNIT* path, vrx_handle* colorants) noexcept {
  return Call([&] {
    const std::string file = PathOf(path);
    NeedPlace(colorants, "colorants");
    *colorants =
        OpenHandle(std::make_shared<io::ColorSystem>(Reading([&] { return io::ReadColorSystem(file); })));
  });
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;

vrx_status VRX_CALL vrx_measurements_open(const char* path, const vrx_read_options* options,
                                          vrx_handle* measurements) {
  return api::OpenTable(path, options, measurements);
}
vrx_status VRX_CALL vrx_measurements_open16(const vrx_char16* path, const vrx_read_options* options,
                                            vrx_handle* measurements) {
  return api::OpenTable(path, options, measurements);
}

vrx_status VRX_CALL vrx_measurements_summarize(vrx_handle measurements, vrx_measurements_summary* summary) {
  return api::Call([&] {
    const auto table = api::Find<vrx::io::MeasurementTable>(measurements);
    vrx_measurements_summary found{};
    found.count = static_cast<int32_t>(table->ids.size());
    found.form = api::FormNumber(table->form);
    found.has_curves = table->curves.empty() ? 0 : 1;
    found.has_xyz = table->xyz.empty() ? 0 : 1;
    found.has_lab = table->lab.empty() ? 0 : 1;
    found.notes = static_cast<int32_t>(table->notes.size());
    found.warnings = static_cast<int32_t>(table->warnings.size());
    found.illuminant = table->illuminant;
    found.observer = table->observer;
    api::GiveSized(&found, sizeof found, summary, "summary");
  });
}

vrx_status VRX_CALL vrx_measurements_numbers(vrx_handle measurements, int32_t kind, int32_t first,
                                             int32_t count, double* numbers) {
  return api::Call([&] {
    const auto table = api::Find<vrx::io::MeasurementTable>(measurements);
    api::NeedRange(kind, VRX_NUMBERS_CURVES, VRX_NUMBERS_LAB, "kind");
    const std::vector<double>* const columns[] = {&table->curves, &table->xyz, &table->lab};
    const std::vector<double>& column = *columns[kind];
    const std::size_t width = kind == VRX_NUMBERS_CURVES ? vrx::kWavelengths : 3;
    const auto place = api::Place(numbers, count, width, "numbers");
    const auto rows = static_cast<int32_t>(table->ids.size());
    api::NeedRange(first, 0, rows, "first");
    if (count > rows - first)
      throw api::Refusal{VRX_BAD_COUNT, "there are fewer samples than first and count say"};
    if (column.empty() && count > 0) throw api::Refusal{VRX_REFUSED, "not all samples of the file have them"};
    std::copy_n(column.data() + static_cast<std::size_t>(first) * width, place.size(), place.begin());
  });
}

vrx_status VRX_CALL vrx_measurements_text(vrx_handle measurements, int32_t kind, int32_t index, char* text,
                                          int32_t capacity, int32_t* length) {
  return api::TableText(measurements, kind, index, text, capacity, length);
}
vrx_status VRX_CALL vrx_measurements_text16(vrx_handle measurements, int32_t kind, int32_t index,
                                            vrx_char16* text, int32_t capacity, int32_t* length) {
  return api::TableText(measurements, kind, index, text, capacity, length);
}

vrx_status VRX_CALL vrx_colorants_open_file(const char* path, vrx_handle* colorants) {
  return api::OpenSystem(path, colorants);
}
vrx_status VRX_CALL vrx_colorants_open_file16(const vrx_char16* path, vrx_handle* colorants) {
  return api::OpenSystem(path, colorants);
}

vrx_status VRX_CALL vrx_colorants_count(vrx_handle colorants, int32_t* count) {
  return api::Call([&] {
    const auto system = api::Find<vrx::io::ColorSystem>(colorants);
    api::NeedPlace(count, "count");
    *count = system->data.colorants.GetSize() + system->data.resins.GetSize();
  });
}

vrx_status VRX_CALL vrx_colorants_component(vrx_handle colorants, int32_t index, int32_t* id, int32_t* kind) {
  return api::Call([&](api::Arrays& arrays) {
    const auto system = api::Find<vrx::io::ColorSystem>(colorants);
    const vrx::CComponent& component = api::ComponentAt(*system, index);
    int32_t& number = arrays.Result(id, "id");
    int32_t& sort = arrays.Result(kind, "kind");
    number = static_cast<int32_t>(component.GetId());
    sort = component.GetKind();
  });
}

vrx_status VRX_CALL vrx_colorants_name(vrx_handle colorants, int32_t index, char* text, int32_t capacity,
                                       int32_t* length) {
  return api::ComponentName(colorants, index, text, capacity, length);
}
vrx_status VRX_CALL vrx_colorants_name16(vrx_handle colorants, int32_t index, vrx_char16* text,
                                         int32_t capacity, int32_t* length) {
  return api::ComponentName(colorants, index, text, capacity, length);
}
