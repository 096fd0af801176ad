#include "app/card_opening.h"

#include <chrono>
#include <memory>

#include "app/card_unlock.h"
#include "platform/mutex.h"
#include "res/card_dialogs.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/sim_phonebook.h"
#include "ui/dialog.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

constexpr int kTextLines = 3;

// The window that says that the card takes long. It goes when the card was opened: until then its
// worker may want to ask over it.
class OpeningWindow final : public ui::DialogHandler {
 public:
  OpeningWindow(ui::Screen& screen, const CardOpening& opening)
      : screen_(screen), opening_(opening) {}

  // The worker.

  // Has the window shown and returns it, to be asked over; 0 when it cannot be had.
  ui::WindowHandle Want() {
    const MutexLock lock(lock_);
    wanted_ = true;
    changed_.notify_all();
    while (dialog_ == nullptr && !gone_) changed_.wait(lock_);
    return dialog_ == nullptr ? 0 : dialog_->Handle();
  }
  void Done() {
    const MutexLock lock(lock_);
    done_ = true;
    changed_.notify_all();
    if (dialog_ != nullptr) dialog_->End(ui::kDialogDone);
  }

  // The screen's thread. True when the worker was done before a window was needed.
  bool WaitAWhile() {
    const auto end = std::chrono::steady_clock::now() + opening_.patience;
    const MutexLock lock(lock_);
    while (!done_ && !wanted_) {
      if (changed_.wait_until(lock_, end) == std::cv_status::timeout) break;
    }
    return done_;
  }
  // Behind the window: the worker needs this object until it is done.
  void WaitUntilDone() {
    const MutexLock lock(lock_);
    gone_ = true;
    changed_.notify_all();
    while (!done_) changed_.wait(lock_);
  }
  bool GivenUp() const { return givenUp_; }

  void OnInit(ui::Dialog& dialog) override {
    dialog.SetFullScreen(true, true);
    dialog.SetTitle(res::LoadString(res::kStringAppTitle));
    dialog.CreateMenuBar(res::OpeningCardBar());
    const MutexLock lock(lock_);
    dialog_ = dialog.shared_from_this();
    changed_.notify_all();
    if (done_) dialog.End(ui::kDialogDone);
  }
  void OnSize(ui::Dialog& dialog, ui::Size client) override {
    const ui::Metrics metrics = screen_.GetMetrics();
    dialog.SetBounds(res::kOpeningTitle, {0, 0, client.width, metrics.headerHeight});
    dialog.SetBounds(res::kOpeningText,
                     {metrics.margin, metrics.headerHeight + metrics.gap,
                      client.width - 2 * metrics.margin, kTextLines * metrics.textLineHeight});
  }
  void OnCommand(ui::Dialog& dialog, int command) override {
    if (command == res::kCancel || command == res::kOpeningCancel) OnClose(dialog);
  }
  void OnClose(ui::Dialog& /*dialog*/) override {
    if (givenUp_) return;
    givenUp_ = true;
    if (opening_.giveUp) opening_.giveUp();
  }

 private:
  ui::Screen& screen_;
  const CardOpening& opening_;
  bool givenUp_ = false;  // the screen's thread alone
  Mutex lock_;
  Condition changed_;
  bool wanted_ GUARDED_BY(lock_) = false;
  bool done_ GUARDED_BY(lock_) = false;
  bool gone_ GUARDED_BY(lock_) = false;  // the window was shown, or could not be
  std::shared_ptr<ui::Dialog> dialog_ GUARDED_BY(lock_);
};

void Open(const Ports& ports, const CardOpening& opening, OpeningWindow& window) {
  platform::CardLock* const lock = ports.cardLock;
  if (lock != nullptr && opening.code != nullptr) {
    UnlockCardWith(*lock, *opening.code);
  }
  platform::CardLockState state;
  if (lock != nullptr && ports.attended && Succeeded(lock->GetLockState(state)) && state.wanted) {
    if (const ui::WindowHandle owner = window.Want(); owner != 0) {
      UnlockCard(*lock, ports.screen, owner);
    }
  }
  // The answer is known from here on, and start-up asks for it itself.
  static_cast<void>(sim::SimPhonebook::ProbeSim(ports.sim));
}

}  // namespace

bool OpenCard(const Ports& ports, const CardOpening& opening) {
  OpeningWindow window(ports.screen, opening);
  const int started = ports.kernel.CreateThread([&] {
    Open(ports, opening, window);
    window.Done();
  });
  if (started != 0 && !window.WaitAWhile()) {
    ports.screen.DialogBox(res::OpeningCardDialog(), 0, window);
    window.WaitUntilDone();
  }
  return !window.GivenUp();
}

}  // namespace kelpin::app
