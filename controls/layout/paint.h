// The colours of what controls draw.

#ifndef CONTROLS_LAYOUT_PAINT_H_
#define CONTROLS_LAYOUT_PAINT_H_

#include <cstdint>

namespace vrx::controls {

/// The purpose of a colour. The system's colours give each role one, so that a picture follows them.
enum class Role : uint8_t {
  kPaper,          ///< background of a list, an edit field, a plot
  kText,           ///< on paper
  kMuted,          ///< disabled texts
  kLabel,          ///< labels of ticks, units: less than text, but to be read
  kFace,           ///< background of a dialog
  kFaceText,       ///< on face
  kSelection,      ///< background of selected entries
  kSelectionText,  ///< on selection
  kFrame,          ///< outlines of boxes
  kGrid,
  kStandard,
  kTrial,
  kOther,  ///< every second trial
  kPass,
  kWarning,
  kFail,
};

/// A colour as 0x00BBGGRR, which stays what it is, as that of a sample; or a role.
class Paint {
 public:
  constexpr Paint(Role role) : role_(role) {}  // NOLINT(google-explicit-constructor)
  static constexpr Paint Fixed(uint32_t color) {
    Paint paint(Role::kText);
    paint.isFixed_ = true;
    paint.color_ = color & 0xFFFFFF;
    return paint;
  }
  [[nodiscard]] bool IsFixed() const { return isFixed_; }
  [[nodiscard]] uint32_t FixedColor() const { return color_; }
  [[nodiscard]] Role GetRole() const { return role_; }
  bool operator==(const Paint&) const = default;

 private:
  uint32_t color_ = 0;
  Role role_;
  bool isFixed_ = false;
};

}  // namespace vrx::controls

#endif  // CONTROLS_LAYOUT_PAINT_H_
