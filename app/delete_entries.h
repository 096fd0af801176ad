#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "app/entry_run.h"
#include "platform/sim_result.h"
#include "sim/sim_phonebook.h"

namespace kelpin::ui {
struct RowData;
}

namespace kelpin::app {

struct AppState;
class Commands;
class ListLoader;

// What an entry may have beside its name and number, in the order in which it is cleared.
enum class ExtendedField { kNumber2, kNumber3, kEmail, kNickname, kGroup };

// Clears one field of the entry at `index` where the card keeps such a field. Failures are its own.
using ClearField = std::function<void(std::uint32_t index, ExtendedField field)>;

// Deletes the entry at `index` from the card, where it still is what is `known` of it (else
// kEntryChanged), and then, where that worked, clears the fields that the settings let it have;
// `clearField` may be empty. Its row stays. Any thread.
platform::SimResult DeleteFromCard(AppState& state, std::uint32_t index,
                                   const sim::SimPhonebook::KnownTexts& known,
                                   const ClearField& clearField);

// The Delete command: takes the selected entries from the card and from the list, after a question.
//
// What was selected when the user was asked is what is deleted, an entry at a time, so that the
// window is drawn and the rows are seen to go. A list that is to be read again, since the card was
// changed or replaced, ends the work: what is left is no longer what the user chose.
//
// Screen thread.
class EntryDeletion {
 public:
  // `clearField` may be empty.
  EntryDeletion(AppState& state, Commands& commands, const ListLoader& loader,
                ClearField clearField);

  // The command.
  void Start();
  // The next entry; comes by the command kCommandDeleteNext.
  void Continue();
  // Whether the window may close: while entries are being deleted the user is asked, and a Yes ends
  // the work.
  bool MayClose();

 private:
  bool Ask();
  void Begin();
  void DeleteFirst();
  // The first chosen row's number, -1 when it is not listed any more.
  int FirstRow() const;
  void SelectMarkedRow();
  // Puts everything back as it was; what is not deleted yet stays.
  void End();
  void TellStopped();

  AppState& state_;
  const ListLoader& loader_;
  const ClearField clearField_;
  EntryRun run_;

  std::deque<std::shared_ptr<const ui::RowData>> chosen_;  // not deleted yet, from the top
  std::size_t chosenCount_ = 0;
  std::size_t deletedCount_ = 0;
};

// Registers the command and what it needs.
void RegisterDelete(AppState& state, Commands& commands, const ListLoader& loader,
                    ClearField clearField);

}  // namespace kelpin::app
