#include <algorithm>

#include "tests/support/call_text.h"
#include "tests/support/headless_screen.h"

// Windows, cursor and clipboard of the headless screen, and what was seen of it.
namespace kelpin::test {

void HeadlessScreen::SetMetrics(const ui::Metrics& metrics) {
  const MutexLock guard(lock_);
  metrics_ = metrics;
}

ui::Metrics HeadlessScreen::GetMetrics() {
  const MutexLock guard(lock_);
  return metrics_;
}

void HeadlessScreen::SetClientSize(ui::Size size) {
  std::vector<Open> open;
  {
    const MutexLock guard(lock_);
    client_ = size;
    open = open_;
  }
  for (const Open& one : open) {
    one.dialog->Resize(size);
  }
}

void HeadlessScreen::AddForeignWindow(std::u16string_view className, std::u16string_view title,
                                      ui::WindowHandle handle) {
  const MutexLock guard(lock_);
  foreign_.push_back({handle, std::u16string(className), std::u16string(title)});
}

bool HeadlessScreen::RegisterWindowClass(const ui::WindowClass& windowClass) {
  journal_.Add(CallText("RegisterWindowClass", windowClass.name));
  if (failures_.Fails("RegisterWindowClass")) {
    return false;
  }
  const MutexLock guard(lock_);
  classes_.push_back(windowClass);
  return true;
}

ui::WindowHandle HeadlessScreen::CreateAnchorWindow(std::u16string_view className,
                                                    std::u16string_view title,
                                                    ui::AnchorStyle style) {
  journal_.Add(CallText("CreateAnchorWindow", className, title,
                        style == ui::AnchorStyle::kVisible ? "visible" : "disabled"));
  if (failures_.Fails("CreateAnchorWindow")) {
    return 0;
  }
  const MutexLock guard(lock_);
  const bool registered =
      std::any_of(classes_.begin(), classes_.end(),
                  [&](const ui::WindowClass& known) { return known.name == className; });
  if (!registered) {
    return 0;
  }
  anchors_.push_back({NextHandle(), std::u16string(className), std::u16string(title), style});
  return anchors_.back().handle;
}

ui::WindowHandle HeadlessScreen::FindWindow(std::u16string_view className,
                                            std::u16string_view title) {
  journal_.Add(CallText("FindWindow", className, title));
  const MutexLock guard(lock_);
  for (const std::vector<AnchorWindow>* windows : {&foreign_, &anchors_}) {
    for (const AnchorWindow& window : *windows) {
      if (window.className == className && (title.empty() || window.title == title)) {
        return window.handle;
      }
    }
  }
  return 0;
}

void HeadlessScreen::SetForegroundWindow(ui::WindowHandle window) {
  journal_.Add(CallText("SetForegroundWindow", Hex(window)));
  const MutexLock guard(lock_);
  raised_.push_back(window);
}

void HeadlessScreen::SetWaitCursor(bool wait) {
  journal_.Add(CallText("SetWaitCursor", wait ? "on" : "off"));
  const MutexLock guard(lock_);
  waitLog_.push_back(wait);
}

bool HeadlessScreen::HasClipboardText() {
  const MutexLock guard(lock_);
  return !clipboard_.empty();
}

void HeadlessScreen::SetClipboardText(std::u16string_view text) {
  const MutexLock guard(lock_);
  clipboard_ = text;
}

std::u16string HeadlessScreen::ClipboardText() {
  const MutexLock guard(lock_);
  return clipboard_;
}

std::vector<ShownBox> HeadlessScreen::Boxes() const {
  const MutexLock guard(lock_);
  return boxes_;
}

std::vector<ShownPopup> HeadlessScreen::Popups() const {
  const MutexLock guard(lock_);
  return popups_;
}

std::vector<ui::WindowClass> HeadlessScreen::WindowClasses() const {
  const MutexLock guard(lock_);
  return classes_;
}

std::vector<AnchorWindow> HeadlessScreen::Anchors() const {
  const MutexLock guard(lock_);
  return anchors_;
}

std::vector<ui::WindowHandle> HeadlessScreen::Raised() const {
  const MutexLock guard(lock_);
  return raised_;
}

bool HeadlessScreen::WaitCursor() const {
  const MutexLock guard(lock_);
  return !waitLog_.empty() && waitLog_.back();
}

std::vector<bool> HeadlessScreen::WaitCursorLog() const {
  const MutexLock guard(lock_);
  return waitLog_;
}

std::uint64_t HeadlessScreen::Repaints() const {
  const MutexLock guard(lock_);
  return repaints_;
}

}  // namespace kelpin::test
