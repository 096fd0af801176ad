#pragma once

#include <memory>

#include "editor/name_family.h"
#include "editor/name_list_fill.h"
#include "editor/name_list_state.h"
#include "ui/dialog.h"

namespace kelpin::editor {

// What the two lists to pick from have in common. OK chooses, however it is given; the close box,
// Escape and "Cancel" leave everything as it was. Screen thread.
class NamePicker : public ui::DialogHandler {
 public:
  // All of it outlives the dialog.
  NamePicker(app::AppState& state, NameListState& listState, const NameFamily& family)
      : state_(state), names_(listState), family_(family) {}
  ~NamePicker() override { Release(); }

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

  bool Chosen() const { return chosen_; }

 protected:
  virtual std::uint32_t ListStyle() const = 0;
  virtual NameRows Rows() const = 0;
  virtual void SetKeys(ui::Dialog& dialog) = 0;
  // True when the choice was taken; otherwise the dialog stays.
  virtual bool Choose(ui::ListView& list) = 0;

  void Confirm(ui::Dialog& dialog);
  // All the card's names are listed, or no more can be.
  bool Filled() const { return fill_ != nullptr && fill_->Ended(); }

  app::AppState& state_;
  NameListState& names_;
  const NameFamily& family_;

 private:
  void Release();

  std::shared_ptr<NameListFill> fill_;
  bool chosen_ = false;
};

// One name for a number. The choice is the state's `record` and `name`.
class NumberNamePicker final : public NamePicker {
 public:
  NumberNamePicker(app::AppState& state, NameListState& listState)
      : NamePicker(state, listState, kNumberNames) {}

  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;

 private:
  std::uint32_t ListStyle() const override;
  NameRows Rows() const override;
  void SetKeys(ui::Dialog& dialog) override;
  bool Choose(ui::ListView& list) override;
};

// The groups of an entry: those that are checked among the first ten. The choice is the state's
// `groups`. Both soft keys stay off: the title bar's keys choose and cancel.
class GroupPicker final : public NamePicker {
 public:
  GroupPicker(app::AppState& state, NameListState& listState)
      : NamePicker(state, listState, kGroupNames) {}

 private:
  std::uint32_t ListStyle() const override;
  NameRows Rows() const override;
  void SetKeys(ui::Dialog& dialog) override;
  // Not before the list is filled: what is not listed yet would be lost.
  bool Choose(ui::ListView& list) override;
};

}  // namespace kelpin::editor
