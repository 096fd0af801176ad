#include "device/qt/screen_anchors.h"

#include <QRandomGenerator>
#include <algorithm>
#include <utility>

#include "device/qt/text.h"

namespace kelpin::qt {
namespace {

std::string Utf8(std::u16string_view text) {
  return ToQt(text).toStdString();
}

ui::WindowHandle RandomHandle() {
  ui::WindowHandle handle = 0;
  while (handle == 0) {
    handle = QRandomGenerator::system()->generate() & 0x7FFFFFFE;  // the lowest bit stays free
  }
  return handle;
}

}  // namespace

ScreenAnchors::ScreenAnchors(std::filesystem::path runtimeFolder,
                             std::function<void(const std::string&)> raise)
    : runtimeFolder_(std::move(runtimeFolder)), raise_(std::move(raise)) {}

bool ScreenAnchors::Register(const ui::WindowClass& windowClass) {
  if (windowClass.name.empty()) {
    return false;
  }
  classes_.push_back(windowClass.name);
  return true;
}

ui::WindowHandle ScreenAnchors::Create(std::u16string_view className, std::u16string_view title,
                                       ui::AnchorStyle style) {
  if (std::find(classes_.begin(), classes_.end(), className) == classes_.end()) {
    return 0;
  }
  Anchor anchor;
  anchor.info = {RandomHandle(), Utf8(className), Utf8(title), {}};
  if (style == ui::AnchorStyle::kVisible) {
    if (!activation_) {
      activation_ = std::make_unique<Activation>(nullptr);
      QObject::connect(activation_.get(), &Activation::Raise, activation_.get(),
                       [this](const QString& token) { raise_(token.toStdString()); });
    }
    anchor.info.busName = activation_->Register();
  }
  anchor.server = std::make_unique<AnchorServer>(runtimeFolder_, anchor.info, raise_);
  anchors_.push_back(std::move(anchor));
  return anchors_.back().info.handle;
}

bool ScreenAnchors::Owns(ui::WindowHandle handle) const {
  return std::any_of(anchors_.begin(), anchors_.end(),
                     [handle](const Anchor& anchor) { return anchor.info.handle == handle; });
}

ui::WindowHandle ScreenAnchors::Find(std::u16string_view className, std::u16string_view title) {
  const std::string wantedClass = Utf8(className);
  const std::string wantedTitle = Utf8(title);
  for (const Anchor& anchor : anchors_) {
    if (anchor.info.className == wantedClass &&
        (wantedTitle.empty() || anchor.info.title == wantedTitle)) {
      return anchor.info.handle;
    }
  }
  const std::optional<AnchorInfo> other = FindAnchor(runtimeFolder_, wantedClass, wantedTitle);
  return other ? other->handle : 0;
}

void ScreenAnchors::RaiseOther(ui::WindowHandle handle) {
  const std::optional<AnchorInfo> other = AskAnchor(runtimeFolder_, handle);
  if (!other) {
    return;
  }
  if (std::string token = TakeActivationToken(); !token.empty()) {
    token_ = std::move(token);
  }
  if (!Activation::Activate(other->busName, token_)) {
    RaiseAnchor(runtimeFolder_, handle, token_);
  }
}

}  // namespace kelpin::qt
