#pragma once

#include <string>

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// What was said to the question of one run whether a contact is to be copied although the card
// cannot hold all of it.
struct NotAllAnswers {
  bool applyToAll = false;
  bool answer = false;  // yes
};

// Dialog 216, which asks it. Screen thread.
class NotAllPrompt : public ui::DialogHandler {
 public:
  NotAllPrompt(app::AppState& state, bool move, std::u16string name, NotAllAnswers& answers)
      : state_(state), move_(move), name_(std::move(name)), answers_(answers) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Answer(ui::Dialog& dialog, bool yes);

  app::AppState& state_;
  const bool move_;
  const std::u16string name_;
  NotAllAnswers& answers_;
};

// Asks about the contact of this name. The wait cursor is off meanwhile and on again after. Any
// thread; returns when it is answered.
void AskNotAll(app::AppState& state, ui::WindowHandle owner, bool move, const std::u16string& name,
               NotAllAnswers& answers);

}  // namespace kelpin::contacts
