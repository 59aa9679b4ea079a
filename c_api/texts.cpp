// Versions, errors and texts. A text exists in two encodings: one template, two functions.

#include <vrxmath/colorimetry/difference_systems.h>
#include <vrxmath/colorimetry/indices.h>
#include <vrxmath/judging/shade.h>
#include <vrxmath/platform/resources.h>

#include "c_api/checks.h"

namespace vrx::c_api {
namespace {

template <class UNIT>
vrx_status LastError(UNIT* text, int32_t capacity, int32_t* length) noexcept {
  try {
    Give(CString::FromUtf8(LastReason()), text, capacity, length);
    return VRX_OK;
  } catch (const Refusal& refusal) {
    return refusal.status;
  } catch (...) {
    return VRX_NO_MEMORY;
  }
}

template <class UNIT>
vrx_status TableText(int32_t number, UNIT* text, int32_t capacity, int32_t* length) noexcept {
  return Call([&] {
    const CString result = number < 0 ? CString() : CString(FindString(static_cast<uint32_t>(number)));
    if (result.IsEmpty()) throw Refusal{VRX_OUT_OF_RANGE, "there is no text " + std::to_string(number)};
    Give(result, text, capacity, length);
  });
}

template <class UNIT>
vrx_status IlluminantText(int32_t illuminant, int32_t observer, int32_t style, UNIT* text, int32_t capacity,
                          int32_t* length) noexcept {
  return Call([&] {
    const Pair pair(illuminant, observer);
    NeedRange(style, kNameDashObserver, kNameDescription, "style");
    Give(IlluminantName(pair.illuminant, pair.observer, style), text, capacity, length);
  });
}

template <class UNIT>
vrx_status SystemText(const vrx_system* system, UNIT* text, int32_t capacity, int32_t* length) noexcept {
  return Call([&] {
    const CDifferenceSettings settings = Settings(system);
    Give(DifferenceSystemName(settings.system, NameLength::kLong, settings.parameters), text, capacity,
         length);
  });
}

template <class UNIT>
vrx_status ColumnsText(int32_t number, UNIT* text, int32_t capacity, int32_t* length) noexcept {
  return Call([&] {
    NeedRange(number, 0, kDifferenceSystems - 1, "number");
    Give(DifferenceColumns(number), text, capacity, length);
  });
}

template <class UNIT>
vrx_status IndexText(int32_t index, int32_t recalculated, UNIT* text, int32_t capacity,
                     int32_t* length) noexcept {
  return Call([&] {
    const auto indices = ColorIndices();
    NeedRange(index, 0, static_cast<int32_t>(indices.size()) - 1, "index");
    NeedRange(recalculated, 0, 1, "recalculated");
    const IndexForm form = recalculated != 0 ? IndexForm::kRecalculated : IndexForm::kDirect;
    const ColorIndex& entry = indices[static_cast<std::size_t>(index)];
    if (entry.Function(form) == nullptr) throw Refusal{VRX_OUT_OF_RANGE, "the index has no such form"};
    Give(IndexLabel(entry, form), text, capacity, length);
  });
}

template <class UNIT>
vrx_status WordText(int32_t word, UNIT* text, int32_t capacity, int32_t* length) noexcept {
  return Call([&] {
    NeedRange(word, kShadeNone, kBluer, "word");
    Give(word == kShadeNone ? CString() : CString(ShadeWordText(static_cast<ShadeWord>(word))), text,
         capacity, length);
  });
}

template <class UNIT>
vrx_status FindByCode(const UNIT* code, int32_t* illuminant) noexcept {
  return Call([&] {
    const CString text = Text(code, "code");
    NeedPlace(illuminant, "illuminant");
    vrxIlluminant found{};
    if (!FindIlluminant(text, found))
      throw Refusal{VRX_OUT_OF_RANGE, "there is no illuminant " + text.ToUtf8()};
    *illuminant = static_cast<int32_t>(found);
  });
}

}  // namespace
}  // namespace vrx::c_api

namespace api = vrx::c_api;

vrx_status VRX_CALL vrx_abi_version(int32_t* version) {
  return api::Call([&] {
    api::NeedPlace(version, "version");
    *version = VRX_ABI_VERSION;
  });
}

vrx_status VRX_CALL vrx_version(int32_t* major, int32_t* minor, int32_t* patch) {
  return api::Call([&](api::Arrays& arrays) {
    int32_t& first = arrays.Result(major, "major");
    int32_t& second = arrays.Result(minor, "minor");
    int32_t& third = arrays.Result(patch, "patch");
    first = VRX_VERSION_MAJOR;
    second = VRX_VERSION_MINOR;
    third = VRX_VERSION_PATCH;
  });
}

vrx_status VRX_CALL vrx_set_threads(int32_t threads) {
  return api::Call([&] {
    api::NeedRange(threads, 0, 1024, "threads");
    api::SetThreads(static_cast<unsigned>(threads));
  });
}

vrx_status VRX_CALL vrx_last_error(char* text, int32_t capacity, int32_t* length) {
  return api::LastError(text, capacity, length);
}
vrx_status VRX_CALL vrx_last_error16(vrx_char16* text, int32_t capacity, int32_t* length) {
  return api::LastError(text, capacity, length);
}

vrx_status VRX_CALL vrx_text(int32_t number, char* text, int32_t capacity, int32_t* length) {
  return api::TableText(number, text, capacity, length);
}
vrx_status VRX_CALL vrx_text16(int32_t number, vrx_char16* text, int32_t capacity, int32_t* length) {
  return api::TableText(number, text, capacity, length);
}

vrx_status VRX_CALL vrx_find_illuminant(const char* code, int32_t* illuminant) {
  return api::FindByCode(code, illuminant);
}
vrx_status VRX_CALL vrx_find_illuminant16(const vrx_char16* code, int32_t* illuminant) {
  return api::FindByCode(code, illuminant);
}

vrx_status VRX_CALL vrx_illuminant_name(int32_t illuminant, int32_t observer, int32_t style, char* text,
                                        int32_t capacity, int32_t* length) {
  return api::IlluminantText(illuminant, observer, style, text, capacity, length);
}
vrx_status VRX_CALL vrx_illuminant_name16(int32_t illuminant, int32_t observer, int32_t style,
                                          vrx_char16* text, int32_t capacity, int32_t* length) {
  return api::IlluminantText(illuminant, observer, style, text, capacity, length);
}

vrx_status VRX_CALL vrx_system_name(const vrx_system* system, char* text, int32_t capacity, int32_t* length) {
  return api::SystemText(system, text, capacity, length);
}
vrx_status VRX_CALL vrx_system_name16(const vrx_system* system, vrx_char16* text, int32_t capacity,
                                      int32_t* length) {
  return api::SystemText(system, text, capacity, length);
}

vrx_status VRX_CALL vrx_system_columns(int32_t number, char* text, int32_t capacity, int32_t* length) {
  return api::ColumnsText(number, text, capacity, length);
}
vrx_status VRX_CALL vrx_system_columns16(int32_t number, vrx_char16* text, int32_t capacity,
                                         int32_t* length) {
  return api::ColumnsText(number, text, capacity, length);
}

vrx_status VRX_CALL vrx_index_name(int32_t index, int32_t recalculated, char* text, int32_t capacity,
                                   int32_t* length) {
  return api::IndexText(index, recalculated, text, capacity, length);
}
vrx_status VRX_CALL vrx_index_name16(int32_t index, int32_t recalculated, vrx_char16* text, int32_t capacity,
                                     int32_t* length) {
  return api::IndexText(index, recalculated, text, capacity, length);
}

vrx_status VRX_CALL vrx_shade_word(int32_t word, char* text, int32_t capacity, int32_t* length) {
  return api::WordText(word, text, capacity, length);
}
vrx_status VRX_CALL vrx_shade_word16(int32_t word, vrx_char16* text, int32_t capacity, int32_t* length) {
  return api::WordText(word, text, capacity, length);
}
