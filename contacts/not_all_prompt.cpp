#include "contacts/not_all_prompt.h"

#include "app/app_state.h"
#include "contacts/prompt_layout.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {

void NotAllPrompt::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  views::CreateBar(dialog, res::kBarNotAllPrompt);
  const int question = move_ ? res::kStringNotAllMovedQuestion : res::kStringNotAllCopiedQuestion;
  dialog.SetText(res::kNotAllText, res::Format(res::LoadString(question), {name_}));
  dialog.SetText(res::kNotAllApplyToAll, res::LoadString(res::kStringApplyToAll));
}

void NotAllPrompt::OnSize(ui::Dialog& dialog, ui::Size client) {
  PlacePrompt(dialog, state_.ports.screen.GetMetrics(), client, res::kNotAllText,
              res::kNotAllApplyToAll);
}

void NotAllPrompt::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kNotAllYes:
      Answer(dialog, true);
      break;
    case res::kCancel:
    case res::kNotAllNo:
      Answer(dialog, false);
      break;
    default:
      break;
  }
}

void NotAllPrompt::Answer(ui::Dialog& dialog, bool yes) {
  answers_.answer = yes;
  answers_.applyToAll = dialog.Checked(res::kNotAllApplyToAll);
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void NotAllPrompt::OnHelp(ui::Dialog& /*dialog*/) {
  views::ShowHelp(state_);
}

// The close box means No.
void NotAllPrompt::OnClose(ui::Dialog& dialog) {
  Answer(dialog, false);
}

void AskNotAll(app::AppState& state, ui::WindowHandle owner, bool move, const std::u16string& name,
               NotAllAnswers& answers) {
  // An answer that never comes, since the program ends, is No.
  answers = {};
  state.ports.screen.SetWaitCursor(false);
  NotAllPrompt prompt(state, move, name, answers);
  views::RunDialog(state, res::kDialogNotAllPrompt, owner, prompt);
  state.ports.screen.SetWaitCursor(true);
}

}  // namespace kelpin::contacts
