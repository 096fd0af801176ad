#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device/qt/activation.h"
#include "device/qt/instance.h"
#include "ui/screen.h"

namespace kelpin::qt {

// Anchor windows: nothing to see, but what other copies of the program find and bring forward.
// Screen thread.
class ScreenAnchors {
 public:
  // `raise` brings this copy's windows forward; it is called on any thread, with an activation
  // token that may be empty.
  ScreenAnchors(std::filesystem::path runtimeFolder,
                std::function<void(const std::string& token)> raise);

  bool Register(const ui::WindowClass& windowClass);
  ui::WindowHandle Create(std::u16string_view className, std::u16string_view title,
                          ui::AnchorStyle style);
  ui::WindowHandle Find(std::u16string_view className, std::u16string_view title);
  bool Owns(ui::WindowHandle handle) const;
  // Another copy's window; a stale handle changes nothing.
  void RaiseOther(ui::WindowHandle handle);

 private:
  struct Anchor {
    AnchorInfo info;
    std::unique_ptr<AnchorServer> server;
  };

  const std::filesystem::path runtimeFolder_;
  const std::function<void(const std::string&)> raise_;
  std::vector<std::u16string> classes_;
  std::unique_ptr<Activation> activation_;
  std::vector<Anchor> anchors_;
  std::string token_;  // this process's own, kept for every window it brings forward
};

}  // namespace kelpin::qt
