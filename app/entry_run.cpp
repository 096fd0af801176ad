#include "app/entry_run.h"

#include "app/app_state.h"
#include "app/commands.h"
#include "app/list_turn.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::app {

void EntryRun::Begin() {
  running_ = true;
  state_.ports.screen.SetWaitCursor(true);
  commands_.EnableSoftKeys(false);
  PostNext();
}

void EntryRun::PostNext() {
  if (!nextIsDue_) {
    nextIsDue_ = true;
    state_.dialog->PostCommand(nextCommand_);
  }
}

bool EntryRun::IsDue() {
  nextIsDue_ = false;
  if (!running_ || asking_) {
    return false;
  }
  if (!hasList_) {
    hasList_ = TakeListOrAsk(state_, nextCommand_);
    nextIsDue_ = !hasList_;
  }
  return hasList_;
}

void EntryRun::End() {
  running_ = false;
  commands_.EnableSoftKeys(true);
  state_.ports.screen.SetWaitCursor(false);
  if (hasList_) {
    hasList_ = false;
    GiveListBack(state_);
  }
  commands_.FollowSelection();
}

bool EntryRun::MayClose(std::u16string_view question) {
  if (asking_) {
    return false;
  }
  ui::BoxAnswer answer = ui::BoxAnswer::kNo;
  {
    const Asking asking(*this);
    answer = state_.ports.screen.MessageBox(state_.mainDialog, question,
                                            res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  }
  if (answer != ui::BoxAnswer::kYes) {
    PostNext();
  }
  return answer == ui::BoxAnswer::kYes;
}

}  // namespace kelpin::app
