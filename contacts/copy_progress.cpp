#include "contacts/copy_progress.h"

#include <algorithm>
#include <utility>

#include "app/app_state.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {
namespace {

constexpr int kLeft = 16;
constexpr int kTop = 40;
constexpr int kBetween = 40;
constexpr int kStep = 10;

}  // namespace

CopyProgressDialog::CopyProgressDialog(app::AppState& state, int total, Copy copy)
    : state_(state), total_(total), copy_(std::move(copy)) {}

void CopyProgressDialog::Run() {
  views::RunDialog(state_, res::kDialogCopyProgress, state_.mainDialog, *this);
  const MutexLock lock(lock_);
  while (copying_) {
    ended_.wait(lock_);
  }
}

std::u16string CopyProgressDialog::Status(int processed) const {
  return res::Format(res::LoadString(res::kStringCopyProgress), {processed, total_});
}

void CopyProgressDialog::OnInit(ui::Dialog& dialog) {
  dialog_ = dialog.shared_from_this();
  dialog.SetFullScreen(false, true);
  dialog.SetTitle(state_.appTitle);
  dialog.SetText(res::kProgressStatus, Status(0));
  dialog.SetProgressRange(res::kProgressBar, 0, kStep * total_, kStep);
  dialog.SetProgress(res::kProgressBar, 0);
  dialog.PostMessage(res::kMessageStartCopy);
}

void CopyProgressDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int width = std::max(0, client.width - 2 * kLeft);
  dialog.SetBounds(res::kProgressStatus, {kLeft, kTop, width, metrics.textLineHeight});
  dialog.SetBounds(res::kProgressBar, {kLeft, kTop + metrics.textLineHeight + kBetween, width,
                                       metrics.progressHeight});
}

void CopyProgressDialog::OnCommand(ui::Dialog& dialog, int command) {
  if (command == res::kCancel) {
    dialog.Close();
  }
}

void CopyProgressDialog::OnMessage(ui::Dialog& dialog, std::uint32_t message,
                                   std::uint32_t /*first*/, std::uint32_t /*second*/) {
  if (message != res::kMessageStartCopy) {
    return;
  }
  {
    const MutexLock lock(lock_);
    copying_ = true;
  }
  if (state_.ports.kernel.CreateThread([this] { RunCopy(); }) == 0) {
    {
      const MutexLock lock(lock_);
      copying_ = false;
    }
    dialog.End(ui::kDialogDone);
  }
}

void CopyProgressDialog::RunCopy() {
  copy_(*this);
  dialog_->PostClose();
  // From here on the dialog's runner may go on, and this object with it.
  const MutexLock lock(lock_);
  copying_ = false;
  ended_.notify_all();
}

void CopyProgressDialog::Show(int processed) {
  dialog_->SetText(res::kProgressStatus, Status(processed));
  dialog_->StepProgress(res::kProgressBar);
}

void CopyProgressDialog::OnClose(ui::Dialog& dialog) {
  stopWanted_ = true;
  dialog.End(ui::kDialogDone);
}

void CopyProgressDialog::OnDestroy(ui::Dialog& /*dialog*/) {
  stopWanted_ = true;
}

}  // namespace kelpin::contacts
