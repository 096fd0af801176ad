#include "device/qt/qt_screen.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPixmap>
#include <utility>

#include "device/qt/activation.h"
#include "device/qt/instance.h"
#include "device/qt/message_window.h"
#include "device/qt/screen_anchors.h"
#include "device/qt/screen_application.h"
#include "device/qt/screen_windows.h"
#include "device/qt/text.h"
#include "device/qt/window_state.h"

namespace kelpin::qt {
namespace {

constexpr ui::WindowHandle kOwnedToo = 1;

}  // namespace

QtScreen::QtScreen(int& argc, char** argv, Options options)
    : boxes_(std::move(options.boxes)),
      application_(std::make_unique<ScreenApplication>(argc, argv)) {
  if (options.stateFolder.empty()) {
    options.stateFolder = DefaultStateFolder();
  }
  if (options.runtimeFolder.empty()) {
    options.runtimeFolder = DefaultRuntimeFolder();
  }
  windows_ = std::make_unique<ScreenWindows>(*application_, *this, std::move(options.stateFolder),
                                             options.size);
  anchors_ = std::make_unique<ScreenAnchors>(
      std::move(options.runtimeFolder), [this](const std::string& token) {
        PostToScreen([this, token] { WithActivationToken(token, [this] { windows_->Raise(); }); });
      });
}

QtScreen::~QtScreen() = default;

bool QtScreen::GrabMainWindow(const std::string& pngPath) {
  const QPixmap picture = windows_->Grab();
  return !picture.isNull() && picture.save(QString::fromStdString(pngPath), "PNG");
}

bool QtScreen::GrabFront(const std::string& pngPath) {
  const QPixmap picture = windows_->GrabFront();
  return !picture.isNull() && picture.save(QString::fromStdString(pngPath), "PNG");
}

void QtScreen::StopAsking() {
  windows_->StopAsking();
}

std::shared_ptr<ui::Dialog> QtScreen::FrontDialog() const {
  return windows_->Front();
}

std::u16string QtScreen::HelpSection() const {
  const auto front = windows_->Front();
  return front == nullptr ? std::u16string() : front->HelpSection();
}

ui::Metrics QtScreen::GetMetrics() {
  return application_->Metrics();
}

bool QtScreen::RegisterWindowClass(const ui::WindowClass& windowClass) {
  return anchors_->Register(windowClass);
}

ui::WindowHandle QtScreen::CreateAnchorWindow(std::u16string_view className,
                                              std::u16string_view title, ui::AnchorStyle style) {
  return anchors_->Create(className, title, style);
}

ui::WindowHandle QtScreen::FindWindow(std::u16string_view className, std::u16string_view title) {
  return anchors_->Find(className, title);
}

// A dialog comes forward with all that belongs to it either way: one in front of another that it
// cannot be used without would help nobody.
void QtScreen::SetForegroundWindow(ui::WindowHandle window) {
  const ui::WindowHandle handle = window & ~kOwnedToo;
  if (anchors_->Owns(handle) || windows_->Has(handle)) {
    windows_->Raise();
  } else {
    anchors_->RaiseOther(handle);
  }
}

std::shared_ptr<ui::Dialog> QtScreen::CreateDialog(const ui::DialogTemplate& resource,
                                                   ui::WindowHandle owner,
                                                   ui::DialogHandler& handler) {
  return windows_->CreateDialog(resource, owner, handler);
}

void QtScreen::ShowDialog(ui::Dialog& dialog) {
  windows_->ShowDialog(dialog);
}

int QtScreen::DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                        ui::DialogHandler& handler) {
  return windows_->DialogBox(resource, owner, handler);
}

ui::BoxAnswer QtScreen::MessageBox(ui::WindowHandle owner, std::u16string_view text,
                                   std::u16string_view caption, ui::BoxStyle style) {
  if (boxes_) {
    boxes_(text, caption, style);
    return MessageWindow::SafeAnswer(style);
  }
  return windows_->MessageBox(owner, std::u16string(text), std::u16string(caption), style);
}

void QtScreen::SetWaitCursor(bool wait) {
  application_->SetWaitCursor(wait);
}

bool QtScreen::HasClipboardText() {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  return data != nullptr && data->hasText() && !data->text().isEmpty();
}

void QtScreen::SetClipboardText(std::u16string_view text) {
  QGuiApplication::clipboard()->setText(ToQt(text));
}

std::u16string QtScreen::ClipboardText() {
  return FromQt(QGuiApplication::clipboard()->text());
}

int QtScreen::RunMessageLoop() {
  return windows_->Run();
}

void QtScreen::PostQuit(int code) {
  windows_->Quit(code);
}

bool QtScreen::IsScreenThread() const {
  return application_->IsScreenThread();
}

void QtScreen::PostToScreen(std::function<void()> work) {
  application_->Queue().Post(std::move(work));
}

void QtScreen::Post(std::function<void()> work) {
  PostToScreen(std::move(work));
}

void QtScreen::DialogChanged(ui::Dialog& dialog) {
  windows_->Changed(dialog.Handle());
}

void QtScreen::DialogEnded(ui::Dialog& dialog) {
  windows_->Ended(dialog);
}

void QtScreen::ShowPopup(ui::Dialog& dialog, std::shared_ptr<ui::Menu> menu, ui::Point point) {
  windows_->ShowPopup(dialog, menu, point);
}

}  // namespace kelpin::qt
