#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/mutex.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// Dialog 379: a copy that runs on a thread of its own, and how far it is. The dialog ends with the
// copy. A user who closes it before ends the copy after the entry in hand.
class CopyProgressDialog : public ui::DialogHandler {
 public:
  using Copy = std::function<void(CopyProgressDialog& progress)>;

  // `total`: entries to copy. `copy` runs once the dialog is there.
  CopyProgressDialog(app::AppState& state, int total, Copy copy);

  // Shows it; returns when dialog and copy have ended. Not on the screen thread, which the copy may
  // need.
  void Run();

  // For the copy, on its thread.
  ui::WindowHandle Handle() const { return dialog_->Handle(); }
  void Show(int processed);
  bool StopWanted() const { return stopWanted_; }

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  std::u16string Status(int processed) const;
  void RunCopy();

  app::AppState& state_;
  const int total_;
  const Copy copy_;
  std::shared_ptr<ui::Dialog> dialog_;
  std::atomic<bool> stopWanted_ = false;
  Mutex lock_;
  Condition ended_;
  bool copying_ GUARDED_BY(lock_) = false;
};

}  // namespace kelpin::contacts
