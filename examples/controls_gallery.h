// What the gallery shows, for the program and its test.

#ifndef EXAMPLES_CONTROLS_GALLERY_H_
#define EXAMPLES_CONTROLS_GALLERY_H_

#include "controls/window_controls.h"

namespace gallery {

/// The controls of the gallery, with data of the two charts in a folder (examples/).
struct Gallery {
  HWND window = nullptr;
  vrx::controls::CheckList checks;
  vrx::controls::DragList from, to;
  vrx::controls::ColorList colors;
  vrx::controls::ExchangeList exchange;
  vrx::controls::ListEditor editor;
  vrx::controls::Tree tree;
  vrx::controls::Combo combo;
  vrx::controls::NumericEdit number;
  vrx::controls::ScrollEdit scroll;
  vrx::controls::Tabs tabs;
  vrx::controls::PictureFrame picture;
  vrx::controls::ProgressBar progress;
  vrx::controls::Plot plot;
  vrx::controls::SwatchPairControl split, framed;
  vrx::controls::Plane plane;
  vrx::controls::LightnessBarControl lightness;
  vrx::controls::Curves curves;
  vrx::controls::AnglePlot angles;
  vrx::controls::Trend trend;
};

/// A window with every control, laid out for a number of dots per inch. `exStyle`: WS_EX_LAYOUTRTL, or 0. A null window
/// where the controls or the files are missing.
Gallery Open(const wchar_t* folder, int dpi, DWORD exStyle);

/// Handles a message with the keys of a dialog.
void Dispatch(MSG& message);

/// Handles the messages that are waiting.
void HandleMessages();

/// Writes what a window shows on the screen to a 24-bit bitmap file. False when it cannot.
bool SaveScreenshot(HWND window, const wchar_t* path);

}  // namespace gallery

#endif  // EXAMPLES_CONTROLS_GALLERY_H_
