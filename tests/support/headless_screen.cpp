#include "tests/support/headless_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "tests/support/call_text.h"

namespace kelpin::test {
namespace {

ui::BoxAnswer Dismissed(ui::BoxStyle style) {
  return style.buttons == ui::BoxButtons::kOk ? ui::BoxAnswer::kOk : ui::BoxAnswer::kNo;
}

bool HasEnabled(const std::vector<ui::MenuItem>& items, int command) {
  return std::any_of(items.begin(), items.end(), [&](const ui::MenuItem& item) {
    return (item.command == command && item.enabled) || HasEnabled(item.items, command);
  });
}

}  // namespace

HeadlessScreen::HeadlessScreen() : journal_(ownJournal_), failures_(ownFailures_) {}

HeadlessScreen::HeadlessScreen(Journal& journal, FailPlan& failures)
    : journal_(journal), failures_(failures) {}

HeadlessScreen::~HeadlessScreen() {
  // Handlers of dialogs that a test left open may be gone already: none is told.
  const MutexLock guard(lock_);
  over_ = true;
  changed_.notify_all();
}

// What the user will do.

void HeadlessScreen::ScriptBox(ui::BoxAnswer answer) {
  const MutexLock guard(lock_);
  answers_.push_back(answer);
}

void HeadlessScreen::ScriptDismissBox() {
  const MutexLock guard(lock_);
  answers_.emplace_back(std::nullopt);
}

void HeadlessScreen::SetDefaultAnswers(ui::BoxAnswer ok, ui::BoxAnswer question) {
  const MutexLock guard(lock_);
  okAnswer_ = ok;
  questionAnswer_ = question;
}

void HeadlessScreen::OnBox(std::function<void(const ShownBox&)> look) {
  const MutexLock guard(lock_);
  look_ = std::move(look);
}

void HeadlessScreen::ScriptDialog(int resource, DialogScript script) {
  const MutexLock guard(lock_);
  scripts_[resource].push_back(std::move(script));
}

void HeadlessScreen::ScriptEveryDialog(int resource, DialogScript script) {
  const MutexLock guard(lock_);
  standingScripts_[resource] = std::move(script);
}

void HeadlessScreen::ScriptWaitForEnd(int resource) {
  ScriptDialog(resource, [this](ui::Dialog& dialog) {
    EXPECT_TRUE(RunUntil([&] { return dialog.Ended(); }))
        << "dialog " << dialog.Resource() << " was not ended";
  });
}

bool HeadlessScreen::ChoosePopup(int command) {
  std::shared_ptr<ui::Dialog> dialog;
  std::shared_ptr<ui::Menu> menu;
  {
    const MutexLock guard(lock_);
    dialog = popupDialog_.lock();
    menu = std::exchange(popupMenu_, nullptr);
  }
  if (!dialog || !menu || !HasEnabled(menu->Items(), command)) {
    return false;
  }
  dialog->Command(command);
  return true;
}

void HeadlessScreen::DismissPopup() {
  const MutexLock guard(lock_);
  popupMenu_ = nullptr;
}

// Serving.

std::function<void()> HeadlessScreen::TakeWork() {
  const MutexLock guard(lock_);
  if (work_.empty()) {
    return nullptr;
  }
  std::function<void()> work = std::move(work_.front());
  work_.pop_front();
  return work;
}

bool HeadlessScreen::Leaving() const {
  const MutexLock guard(lock_);
  return quit_.has_value();
}

bool HeadlessScreen::Over() const {
  const MutexLock guard(lock_);
  return over_;
}

void HeadlessScreen::RunPending() {
  ASSERT_TRUE(IsScreenThread()) << "work is served on the screen thread";
  while (const std::function<void()> work = TakeWork()) {
    work();
  }
}

bool HeadlessScreen::RunUntil(const std::function<bool()>& done, int seconds) {
  // What a thread does without posting is seen at the next look.
  constexpr auto kLook = std::chrono::milliseconds(2);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!done()) {
    if (const std::function<void()> work = TakeWork()) {
      work();
      continue;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    const MutexLock guard(lock_);
    if (work_.empty()) {
      changed_.wait_for(lock_, kLook);
    }
  }
  return true;
}

bool HeadlessScreen::RunOnScreen(std::function<void()> work) {
  enum class Stage { kWaiting, kRunning, kDone, kWithdrawn };
  struct Request {
    Mutex lock;
    Stage stage = Stage::kWaiting;
  };
  const auto request = std::make_shared<Request>();
  PostToScreen([this, request, work = std::move(work)] {
    {
      const MutexLock guard(request->lock);
      if (request->stage == Stage::kWithdrawn) {
        return;
      }
      request->stage = Stage::kRunning;
    }
    work();
    {
      const MutexLock guard(request->lock);
      request->stage = Stage::kDone;
    }
    const MutexLock guard(lock_);  // so that the wait below cannot miss it
    changed_.notify_all();
  });
  const MutexLock guard(lock_);
  while (true) {
    {
      const MutexLock inner(request->lock);
      if (request->stage == Stage::kDone) {
        return true;
      }
      if (over_ && request->stage == Stage::kWaiting) {
        request->stage = Stage::kWithdrawn;
        return false;
      }
    }
    changed_.wait(lock_);
  }
}

int HeadlessScreen::RunMessageLoop() {
  journal_.Add("RunMessageLoop()");
  while (!Leaving()) {
    if (const std::function<void()> work = TakeWork()) {
      work();
      continue;
    }
    const MutexLock guard(lock_);
    while (work_.empty() && !quit_) {
      changed_.wait(lock_);
    }
  }
  const MutexLock guard(lock_);
  over_ = true;
  changed_.notify_all();
  return quit_.value_or(0);
}

void HeadlessScreen::PostQuit(int code) {
  journal_.Add(CallText("PostQuit", code));
  PostToScreen([this, code] {
    const MutexLock guard(lock_);
    if (!quit_) {
      quit_ = code;
    }
  });
}

bool HeadlessScreen::IsScreenThread() const {
  return std::this_thread::get_id() == screenThread_;
}

void HeadlessScreen::PostToScreen(std::function<void()> work) {
  {
    const MutexLock guard(lock_);
    work_.push_back(std::move(work));
  }
  changed_.notify_all();
}

// Dialogs.

ui::WindowHandle HeadlessScreen::NextHandle() {
  lastHandle_ += 0x10;  // the lowest bit stays free
  return lastHandle_;
}

std::shared_ptr<ui::Dialog> HeadlessScreen::MakeDialog(const ui::DialogTemplate& resource,
                                                       ui::WindowHandle owner,
                                                       ui::DialogHandler& handler, bool modal) {
  std::shared_ptr<ui::Dialog> dialog;
  ui::Size client;
  {
    const MutexLock guard(lock_);
    dialog = std::make_shared<ui::Dialog>(resource, NextHandle(), owner, handler, *this);
    open_.push_back({dialog, modal, modal});
    client = client_;
  }
  dialog->Resize(client);
  dialog->Init();
  dialog->Resize(client);
  return dialog;
}

std::shared_ptr<ui::Dialog> HeadlessScreen::CreateDialog(const ui::DialogTemplate& resource,
                                                         ui::WindowHandle owner,
                                                         ui::DialogHandler& handler) {
  journal_.Add(CallText("CreateDialog", resource.id, Hex(owner)));
  if (failures_.Fails("CreateDialog")) {
    return nullptr;
  }
  return MakeDialog(resource, owner, handler, false);
}

void HeadlessScreen::ShowDialog(ui::Dialog& dialog) {
  journal_.Add(CallText("ShowDialog", dialog.Resource()));
  {
    const MutexLock guard(lock_);
    for (Open& open : open_) {
      open.shown = open.shown || open.dialog.get() == &dialog;
    }
  }
  ActivateFront();
}

int HeadlessScreen::DialogBox(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                              ui::DialogHandler& handler) {
  journal_.Add(CallText("DialogBox", resource.id, Hex(owner)));
  if (Over()) {
    return ui::kDialogDone;
  }
  if (IsScreenThread()) {
    return RunModal(resource, owner, handler);
  }
  int result = ui::kDialogDone;
  RunOnScreen([&] { result = RunModal(resource, owner, handler); });
  return result;
}

int HeadlessScreen::RunModal(const ui::DialogTemplate& resource, ui::WindowHandle owner,
                             ui::DialogHandler& handler) {
  if (Leaving()) {
    return ui::kDialogDone;
  }
  const std::shared_ptr<ui::Dialog> dialog = MakeDialog(resource, owner, handler, true);
  if (!dialog->Ended()) {
    ActivateFront();
    RunPending();
  }
  if (!dialog->Ended() && !Leaving()) {
    RunScript(*dialog);
  }
  dialog->End(ui::kDialogDone);  // only counts when it was left open
  TakeAway(dialog);
  ActivateFront();
  return dialog->Result();
}

void HeadlessScreen::RunScript(ui::Dialog& dialog) {
  DialogScript script;
  {
    const MutexLock guard(lock_);
    std::deque<DialogScript>& queue = scripts_[dialog.Resource()];
    if (!queue.empty()) {
      script = std::move(queue.front());
      queue.pop_front();
    } else if (const auto standing = standingScripts_.find(dialog.Resource());
               standing != standingScripts_.end()) {
      script = standing->second;
    }
  }
  if (script) {
    script(dialog);
    RunPending();
  }
  if (!dialog.Ended() && !Leaving()) {
    ADD_FAILURE() << "dialog " << dialog.Resource()
                  << (script ? " was left open by its script" : " opened and no script waits");
    dialog.Close();
    RunPending();
  }
}

void HeadlessScreen::DialogEnded(ui::Dialog& dialog) {
  bool modal = false;
  {
    const MutexLock guard(lock_);
    for (const Open& open : open_) {
      modal = modal || (open.modal && open.dialog.get() == &dialog);
    }
  }
  if (!modal) {
    PostToScreen([this, ended = dialog.shared_from_this()] {
      TakeAway(ended);
      ActivateFront();
    });
  }
}

void HeadlessScreen::TakeAway(const std::shared_ptr<ui::Dialog>& dialog) {
  {
    const MutexLock guard(lock_);
    std::erase_if(open_, [&](const Open& open) { return open.dialog == dialog; });
    if (popupDialog_.lock() == dialog) {
      popupMenu_ = nullptr;
    }
  }
  dialog->Activate(false);
  dialog->Destroyed();
}

std::shared_ptr<ui::Dialog> HeadlessScreen::Front() const {
  const MutexLock guard(lock_);
  std::shared_ptr<ui::Dialog> front;
  bool frontIsModal = false;
  for (const Open& open : open_) {
    if (open.shown && (open.modal || !frontIsModal)) {
      front = open.dialog;
      frontIsModal = open.modal;
    }
  }
  return front;
}

void HeadlessScreen::ActivateFront() {
  const std::shared_ptr<ui::Dialog> front = Front();
  std::vector<Open> others;
  {
    const MutexLock guard(lock_);
    others = open_;
  }
  for (const Open& open : others) {
    if (open.dialog != front) {
      open.dialog->Activate(false);
    }
  }
  if (front) {
    front->Activate(true);
  }
}

std::shared_ptr<ui::Dialog> HeadlessScreen::Find(int resource) const {
  const MutexLock guard(lock_);
  const auto found = std::find_if(open_.rbegin(), open_.rend(), [&](const Open& open) {
    return open.dialog->Resource() == resource;
  });
  return found == open_.rend() ? nullptr : found->dialog;
}

bool HeadlessScreen::Shown(const ui::Dialog& dialog) const {
  const MutexLock guard(lock_);
  return std::any_of(open_.begin(), open_.end(),
                     [&](const Open& open) { return open.shown && open.dialog.get() == &dialog; });
}

std::size_t HeadlessScreen::OpenDialogs() const {
  const MutexLock guard(lock_);
  return open_.size();
}

void HeadlessScreen::DialogChanged(ui::Dialog& /*dialog*/) {
  const MutexLock guard(lock_);
  ++repaints_;
}

void HeadlessScreen::ShowPopup(ui::Dialog& dialog, std::shared_ptr<ui::Menu> menu,
                               ui::Point point) {
  ShownPopup shown{dialog.Resource(), menu->Items(), point};
  const MutexLock guard(lock_);
  popups_.push_back(std::move(shown));
  popupMenu_ = std::move(menu);
  popupDialog_ = dialog.weak_from_this();
}

// Boxes.

ui::BoxAnswer HeadlessScreen::MessageBox(ui::WindowHandle owner, std::u16string_view text,
                                         std::u16string_view caption, ui::BoxStyle style) {
  journal_.Add(CallText("MessageBox", Hex(owner), text, caption));
  const ShownBox box{owner, std::u16string(text), std::u16string(caption), style};
  if (Over()) {
    return Dismissed(style);
  }
  if (IsScreenThread()) {
    return AnswerBox(box);
  }
  ui::BoxAnswer answer = Dismissed(style);
  RunOnScreen([&] { answer = AnswerBox(box); });
  return answer;
}

ui::BoxAnswer HeadlessScreen::AnswerBox(const ShownBox& box) {
  std::function<void(const ShownBox&)> look;
  {
    const MutexLock guard(lock_);
    boxes_.push_back(box);
    look = look_;
  }
  if (look) {
    look(box);
  }
  const MutexLock guard(lock_);
  const bool question = box.style.buttons == ui::BoxButtons::kYesNo;
  ui::BoxAnswer answer = question ? questionAnswer_ : okAnswer_;
  if (!answers_.empty()) {
    answer = answers_.front().value_or(Dismissed(box.style));
    answers_.pop_front();
  }
  const bool fits = question ? answer == ui::BoxAnswer::kYes || answer == ui::BoxAnswer::kNo
                             : answer == ui::BoxAnswer::kOk;
  EXPECT_TRUE(fits) << "the box \"" << Utf8(box.text) << "\" has no such button";
  return fits ? answer : Dismissed(box.style);
}

}  // namespace kelpin::test
