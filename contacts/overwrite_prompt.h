#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

inline constexpr std::size_t kPromptNameLimit = 255;  // UTF-16 units

// Where the run copies to, which is where the name exists already.
enum class PromptDirection { kIntoContacts = 0, kIntoSim = 1 };

// What the user said about duplicates in one run. Every run starts with a Reset.
struct OverwritePrompt {
  void Reset(PromptDirection into);

  int applyToAll = 0;   // the last prompt's check box: the answer holds for the rest of the run
  int applyAnswer = 0;  // the last prompt's answer: 1 is yes
  PromptDirection direction = PromptDirection::kIntoContacts;
  std::u16string name;
};

// Dialog 356, which asks whether to overwrite. Escape and the close box mean No. Screen thread.
class OverwritePromptDialog : public ui::DialogHandler {
 public:
  OverwritePromptDialog(app::AppState& state, OverwritePrompt& prompt)
      : state_(state), prompt_(prompt) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Answer(ui::Dialog& dialog, int answer);

  app::AppState& state_;
  OverwritePrompt& prompt_;
};

// Asks about this name; an empty one leaves the prompt's name as it was. 1 when the answer is yes.
// The wait cursor is off meanwhile and on again after. Any thread, one at a time; returns when it
// is answered.
[[nodiscard]] int AskOverwrite(app::AppState& state, ui::WindowHandle owner,
                               std::u16string_view name, OverwritePrompt& prompt);

}  // namespace kelpin::contacts
