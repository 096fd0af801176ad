#include "contacts/save_to_contacts.h"

#include "app/app_state.h"
#include "app/commands.h"
#include "app/list_loader.h"
#include "app/list_turn.h"
#include "contacts/copy_progress.h"
#include "contacts/marked_row.h"
#include "contacts/run_counters.h"
#include "contacts/sim_to_contacts.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::contacts {
namespace {

constexpr std::size_t kProgressFrom = 2;  // entries

ui::ListView& List(const app::AppState& state) {
  return *state.dialog->List(res::kMainList);
}

}  // namespace

void SaveToContacts::Start() {
  {
    const MutexLock lock(lock_);
    if (running_) {
      return;
    }
    chosen_.emplace(List(state_));
    if (chosen_->Count() == 0) {
      return;
    }
    running_ = true;
  }
  closeWanted_ = false;
  processed_ = 0;
  commands_.EnableSoftKeys(false);
  if (state_.ports.kernel.CreateThread([this] { Run(); }) == 0) {
    commands_.EnableSoftKeys(true);
    End();
  }
}

void SaveToContacts::Run() {
  if (!app::TakeList(state_)) {
    End();
    return;
  }
  // Who had the list until now has turned them on again.
  commands_.EnableSoftKeys(false);
  chosen_->Place(List(state_));
  if (state_.settings.Show_ProgressBar != 0 && chosen_->Count() >= kProgressFrom) {
    CopyWithProgress();
  } else {
    Copy();
  }
  commands_.EnableSoftKeys(true);
  app::GiveListBack(state_);
  End();
}

void SaveToContacts::Copy() {
  const bool told = CopyEntries(
      {[this] { return state_.mainDialog; }, [](int) {}, [this] { return closeWanted_.load(); }});
  if (told) {
    Tell();
  }
}

void SaveToContacts::CopyWithProgress() {
  CopyProgressDialog progress(state_, static_cast<int>(chosen_->Count()),
                              [this](CopyProgressDialog& dialog) {
                                CopyEntries({[&dialog] { return dialog.Handle(); },
                                             [&dialog](int processed) { dialog.Show(processed); },
                                             [&dialog] { return dialog.StopWanted(); }});
                              });
  progress.Run();
  Tell();
}

bool SaveToContacts::CopyEntries(const Watch& watch) {
  state_.ports.screen.SetWaitCursor(true);
  SimToContacts run(state_, *chosen_, prompt_);
  bool told = false;
  if (run.Open() != 0) {
    told = CopyEach(run, watch);
    run.Close();
  }
  state_.ports.screen.SetWaitCursor(false);
  return told;
}

bool SaveToContacts::CopyEach(SimToContacts& run, const Watch& watch) {
  while (!state_.closing && !watch.stopWanted()) {
    // A card that is to be read again may be another one, with other fields at these locations.
    if (loader_.IsWaiting()) {
      summary_ = CopyStoppedText(processed_, chosen_->Count());
      return true;
    }
    EntryCopy entry;
    const SimToContacts::Step step = run.CopyNext(watch.owner(), entry);
    if (step == SimToContacts::Step::kUnreadable) {
      return false;
    }
    if (step == SimToContacts::Step::kExchanged) {
      summary_ = CopyStoppedText(processed_, chosen_->Count());
      return true;
    }
    if (step == SimToContacts::Step::kNoneLeft) {
      break;
    }
    processed_ = run.Counters().processed;
    watch.entryDone(processed_);
  }
  summary_ = run.Summary();
  return true;
}

void SaveToContacts::Tell() {
  if (state_.closing || closeWanted_) {
    return;
  }
  ShowSummary(state_, summary_);
  SelectMarkedRow(List(state_));
}

void SaveToContacts::End() {
  commands_.FollowSelection();
  {
    const MutexLock lock(lock_);
    running_ = false;
  }
  if (closeWanted_) {
    state_.dialog->PostClose();
  }
}

bool SaveToContacts::MayClose() {
  {
    const MutexLock lock(lock_);
    if (!running_) {
      return true;
    }
  }
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      state_.mainDialog, CopyCloseQuestion(processed_, chosen_->Count()),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  if (answer != ui::BoxAnswer::kYes) {
    return false;
  }
  const MutexLock lock(lock_);
  closeWanted_ = running_;
  return !running_;
}

}  // namespace kelpin::contacts
