#pragma once

#include <string_view>

namespace kelpin::app {

struct AppState;
class Commands;

// A command's work on entries of the main list, done on the screen thread, an entry at a time, with
// the screen served between two entries. Meanwhile nobody else works on the list, its soft keys are
// off, and the window does not close without asking. Screen thread.
class EntryRun {
 public:
  // The user is asked or told something, which serves the screen, as long as one of these is there.
  class Asking {
   public:
    explicit Asking(EntryRun& run) : run_(run) { run_.asking_ = true; }
    ~Asking() { run_.asking_ = false; }
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;

   private:
    EntryRun& run_;
  };

  // `nextCommand` is posted to the main dialog for each entry.
  EntryRun(AppState& state, Commands& commands, int nextCommand)
      : state_(state), commands_(commands), nextCommand_(nextCommand) {}

  // Whether the command may begin another run.
  bool IsFree() const { return !running_ && !asking_; }
  bool IsRunning() const { return running_; }

  // Until End.
  void Begin();
  void PostNext();
  // When nextCommand comes: whether the next entry is to be taken in hand. It is not when the run
  // is over, while the user is being asked, and while others work on the list, after whom it comes
  // again.
  bool IsDue();
  void End();
  // Whether the window may close. While entries are worked on the user is asked; the caller ends
  // the run then.
  bool MayClose(std::u16string_view question);

 private:
  AppState& state_;
  Commands& commands_;
  const int nextCommand_;
  bool running_ = false;
  bool asking_ = false;
  bool hasList_ = false;
  bool nextIsDue_ = false;  // nextCommand_ will come
};

}  // namespace kelpin::app
