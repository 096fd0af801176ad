#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "contacts/chosen_rows.h"
#include "contacts/overwrite_prompt.h"
#include "platform/mutex.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::contacts {

class SimToContacts;

// The Save to Contacts command: copies the entries that are selected when it is given, on a thread
// of its own. It has the list's turn until the user has read its summary; meanwhile the soft keys
// are off, and the window does not close without asking.
class SaveToContacts {
 public:
  SaveToContacts(app::AppState& state, app::Commands& commands, const app::ListLoader& loader,
                 OverwritePrompt& prompt)
      : state_(state), commands_(commands), loader_(loader), prompt_(prompt) {}

  // The command. Screen thread.
  void Start();
  // Whether the window may close: while entries are copied the user is asked, and a Yes closes it
  // once the entry in hand is done. Screen thread.
  bool MayClose();

 private:
  // The screen's part of a copy.
  struct Watch {
    std::function<ui::WindowHandle()> owner;  // of the prompts
    std::function<void(int processed)> entryDone;
    std::function<bool()> stopWanted;
  };

  void Run();
  void Copy();
  // Shows the progress dialog while it copies.
  void CopyWithProgress();
  // Leaves the summary; false when there is none to leave.
  bool CopyEntries(const Watch& watch);
  bool CopyEach(SimToContacts& run, const Watch& watch);
  void Tell();
  void End();

  app::AppState& state_;
  app::Commands& commands_;
  const app::ListLoader& loader_;
  OverwritePrompt& prompt_;

  std::optional<ChosenRows> chosen_;  // the running copy's
  std::u16string summary_;            // stays from run to run
  std::atomic<int> processed_ = 0;
  std::atomic<bool> closeWanted_ = false;
  Mutex lock_;
  bool running_ GUARDED_BY(lock_) = false;
};

}  // namespace kelpin::contacts
