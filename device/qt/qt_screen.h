#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ui/screen.h"

namespace kelpin::qt {

class ScreenAnchors;
class ScreenApplication;
class ScreenWindows;

// The screen of a Linux desktop or phone, drawn with Qt Widgets.
//
//   qt::QtScreen screen(argc, argv, {});
//   qt::QtShell shell(u"PocketPC");
//   … start the program with both, then return screen.RunMessageLoop();
//
// Made and destroyed on the screen thread, one at a time. Takes Qt's own options out of the command
// line. A QApplication that is already there is used.
//
// The environment may set KELPIN_THEME (light, dark, light-contrast, dark-contrast),
// KELPIN_TEXT_SCALE (percent) and KELPIN_FONT (a font family).
class QtScreen : public ui::Screen, public ui::DialogHost {
 public:
  // Told of each box instead of the user; it is answered as Escape would. Any thread.
  using BoxListener = std::function<void(std::u16string_view text, std::u16string_view caption,
                                         ui::BoxStyle style)>;
  struct Options {
    std::filesystem::path stateFolder;    // empty: $XDG_STATE_HOME/kelpin
    std::filesystem::path runtimeFolder;  // empty: $XDG_RUNTIME_DIR/kelpin
    std::optional<ui::Size> size;         // of the main window, for this run; not remembered
    BoxListener boxes = nullptr;          // empty: the user is asked
  };

  QtScreen(int& argc, char** argv, Options options);
  ~QtScreen() override;
  QtScreen(const QtScreen&) = delete;
  QtScreen& operator=(const QtScreen&) = delete;

  // Saves a picture (PNG) of the main window as it is drawn now, also without a display. False
  // when there is no main window or the file cannot be written. Screen thread.
  bool GrabMainWindow(const std::string& pngPath);
  // The same of the dialog in front.
  bool GrabFront(const std::string& pngPath);
  // The program was told to end, and nobody is there to be asked: no message box is shown from now
  // on, each is answered as Escape would. Any thread.
  void StopAsking();
  // The dialog that was opened last; null when none is open. Screen thread.
  std::shared_ptr<ui::Dialog> FrontDialog() const;
  // The section of the help that belongs to the dialog in front. Screen thread.
  std::u16string HelpSection() const;

  ui::Metrics GetMetrics() override;
  bool RegisterWindowClass(const ui::WindowClass& windowClass) override;
  ui::WindowHandle CreateAnchorWindow(std::u16string_view className, std::u16string_view title,
                                      ui::AnchorStyle style) override;
  ui::WindowHandle FindWindow(std::u16string_view className, std::u16string_view title) override;
  void SetForegroundWindow(ui::WindowHandle window) override;
  std::shared_ptr<ui::Dialog> CreateDialog(const ui::DialogTemplate& resource,
                                           ui::WindowHandle owner,
                                           ui::DialogHandler& handler) override;
  void ShowDialog(ui::Dialog& dialog) override;
  int DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                ui::DialogHandler& handler) override;
  ui::BoxAnswer MessageBox(ui::WindowHandle owner, std::u16string_view text,
                           std::u16string_view caption, ui::BoxStyle style) override;
  void SetWaitCursor(bool wait) override;
  bool HasClipboardText() override;
  void SetClipboardText(std::u16string_view text) override;
  std::u16string ClipboardText() override;
  int RunMessageLoop() override;
  void PostQuit(int code) override;
  bool IsScreenThread() const override;
  void PostToScreen(std::function<void()> work) override;

  void Post(std::function<void()> work) override;
  void DialogChanged(ui::Dialog& dialog) override;
  void DialogEnded(ui::Dialog& dialog) override;
  void ShowPopup(ui::Dialog& dialog, std::shared_ptr<ui::Menu> menu, ui::Point point) override;

 private:
  const BoxListener boxes_;
  std::unique_ptr<ScreenApplication> application_;
  std::unique_ptr<ScreenWindows> windows_;
  std::unique_ptr<ScreenAnchors> anchors_;
};

}  // namespace kelpin::qt
