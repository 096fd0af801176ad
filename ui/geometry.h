#pragma once

namespace kelpin::ui {

// Device-independent pixels, origin at the top left of the dialog's client area.
struct Point {
  int x = 0;
  int y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rect&) const = default;
};

// Sizes a layout needs; the screen gives them for the text size in use.
struct Metrics {
  Size screen = {360, 640};
  int margin = 16;
  int gap = 8;           // between a field and the next label
  int labelHeight = 20;  // a caption line
  int fieldHeight = 40;  // an edit, a button, a check box
  int headerHeight = 56;
  int textLineHeight = 20;  // a line of running text
  int buttonWidth = 48;     // the "..." buttons
  int progressHeight = 8;
};

}  // namespace kelpin::ui
