// The colours of pictures.

#ifndef PICTURES_PAINT_H_
#define PICTURES_PAINT_H_

#include <cstdint>

namespace vrx::pictures {

/// The purpose of a colour. A palette, or the style sheet of a page, gives each role one, so that a picture follows the system or
/// the page.
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
  kInside,  ///< the area that passes
  kBand,    ///< the area of warnings, and that of curves too many to be drawn
};
inline constexpr int32_t kRoles = 18;

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

}  // namespace vrx::pictures

#endif  // PICTURES_PAINT_H_
