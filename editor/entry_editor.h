#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/edit_context_menu.h"
#include "editor/dialog_hold.h"
#include "editor/entry_editor_state.h"
#include "editor/entry_form.h"
#include "editor/entry_reader.h"
#include "editor/entry_writer.h"
#include "editor/pickers.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::editor {

class SavedRows;

// Where the user picks from the card's name lists: Pickers' routines.
struct NamePickers {
  std::function<std::optional<NumberName>(int button, ui::WindowHandle owner)> numberName;
  std::function<std::optional<GroupSelection>(int button, ui::WindowHandle owner,
                                              const GroupSelection& current)>
      group;
};

// The dialog for a new entry of the card, or for the selected one.
//
// What takes more than a command or two of the card is done on a thread of its own: reading the
// entry, or what there is room for, when the dialog opens, and saving. Meanwhile the dialog is
// held: it is drawn, but takes no input, and while it saves it does not close. The thread keeps the
// object alive and comes back through the screen's thread; a dialog that has ended by then is left
// alone.
//
// Screen thread.
class EntryEditor : public ui::DialogHandler, public std::enable_shared_from_this<EntryEditor> {
 public:
  // `editorState` is this dialog's own of the two. Everything outlives the dialog.
  EntryEditor(app::AppState& state, const EntryControls& controls, EntryEditorState& editorState,
              const NamePickers& pickers, SavedRows& savedRows);

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnActivate(ui::Dialog& dialog, bool active) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnSettingsChange(ui::Dialog& dialog) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  bool IsNew() const { return controls_.location.edit == 0; }
  bool Open() const { return dialog_ != nullptr && !dialog_->Ended(); }

  // Opening.
  void SetTexts();
  void SetBasicLimits();
  void SetInputModes();
  void TakeSelectedRow();
  void StartReading();
  // As the dialog was before its entry was read.
  void ShowAnew();
  void ShowRead(const EntryContent& content);
  void ShowContent(const EntryContent& content);
  void SetExtendedLimits(const EntryContent& content);
  void ShowField(const ExtendedField& field, const FieldContent& content, bool numberNames);
  void ShowGroup(const GroupContent& group);
  void SetUnavailable(const ExtendedField& field);
  void AttachMenus();
  void FocusName();

  // Input.
  bool IsFiltered(int edit) const;
  void Filter(int edit);
  void SwitchInputMode(int edit);
  void PickNumberName(const ExtendedField& field);
  void PickGroup();

  // Saving.
  void StartSave();
  void AwaitLoad();
  void ContinueSave();
  EntryInput Input() const;
  // Tells what is wrong with it and where.
  bool Accept(const EntryInput& input);
  void Refuse(int text, int edit);
  void Tell(int text);
  void FinishSave(const EntryInput& input, const SaveOutcome& outcome);
  // Another program changed the entry: the user says whether it is read again.
  void OfferToReadAgain();
  void LetGo();

  void RaisePanel(bool up);
  void SetWaiting(bool waiting);
  void Close();
  void Release();
  // Runs `work` on a thread of its own; false when there is none to be had.
  bool OnThread(std::function<void()> work);
  void OnScreen(std::function<void()> work);

  app::AppState& state_;
  const EntryControls& controls_;
  EntryEditorState& editor_;
  const NamePickers& pickers_;
  SavedRows& savedRows_;

  std::shared_ptr<ui::Dialog> dialog_;  // from its start to its end
  ui::Size size_;                       // the controls were last placed for
  DialogHold hold_;
  bool saving_ = false;
  std::uint32_t troublesBefore_ = 0;  // shown of the card's before the save began
  bool waiting_ = false;              // the wait cursor is on
  bool panelUp_ = false;
  bool scrolled_ = false;  // the last field was once brought into view
  std::array<bool, kExtendedFieldCount> unread_ = {};
  // What an existing entry was when it was read, and the card's generation then.
  std::shared_ptr<EntryContent> known_;
  std::uint32_t generation_ = 0;
  std::vector<std::unique_ptr<app::EditContextMenu>> menus_;
  std::atomic<bool> stop_ = false;  // nobody waits for what is being read any more
};

// The two dialogs, each with its state. Screen thread.
class EntryEditors {
 public:
  EntryEditors(app::AppState& state, NamePickers pickers, SavedRows& savedRows)
      : state_(state), pickers_(std::move(pickers)), savedRows_(savedRows) {}

  // The commands. Each tells why not where the card is not ready.
  void OpenNew();
  void OpenEdit();

 private:
  void Open(const EntryControls& controls, EntryEditorState& editorState);

  app::AppState& state_;
  const NamePickers pickers_;
  SavedRows& savedRows_;
  EntryEditorState new_;
  EntryEditorState edit_;
};

}  // namespace kelpin::editor
