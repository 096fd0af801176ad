#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "contacts/chosen_rows.h"
#include "contacts/contacts_connection.h"
#include "contacts/overwrite_prompt.h"
#include "contacts/run_counters.h"
#include "sim/ext_layout.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// One entry of the card on its way to Contacts.
struct EntryCopy {
  int row = -1;
  std::uint32_t index = 0;  // its location
  std::u16string name;
  std::u16string number;
  std::u16string number2;
  std::u16string number3;
  std::u16string email;
  bool wholeRead = true;  // no field failed to be read, or could not be seen
  bool saved = false;     // a contact was created or overwritten with it
};

// One run that copies chosen entries of the card to Contacts, an entry at a time, on the thread
// that opened it. The caller has the list's turn from before Place until after the run.
class SimToContacts {
 public:
  enum class Step {
    kCopied,  // or left alone: the entry was taken in hand
    kNoneLeft,
    kUnreadable,  // the row holds no entry, or the program ends; the run is to end
    kExchanged,   // another card is in than the one that was listed; the run is to end
  };

  SimToContacts(app::AppState& state, ChosenRows& rows, OverwritePrompt& prompt);

  // 1, or 0 when Contacts cannot be opened; no Close then. Puts prompt and counters at their start.
  [[nodiscard]] int Open();
  // Also tells the main window to be busy no more.
  void Close();

  // The next entry. Prompts belong to `owner`.
  [[nodiscard]] Step CopyNext(ui::WindowHandle owner, EntryCopy& entry);
  // Whether Contacts, asked anew, has the entry that CopyNext saved last, with all it holds.
  bool IsInContacts(const EntryCopy& entry);
  // The entry is on the card no more. In this run no other entry overwrites its contact: one of the
  // same name counts as existing, without a question.
  void NoteMoved(const EntryCopy& entry) { onlyCopies_.insert(entry.name); }

  const RunCounters& Counters() const { return counters_; }
  std::u16string Summary() const;

 private:
  void ReadFields(EntryCopy& entry);
  void ReadNumber(sim::FieldSlot slot, EntryCopy& entry, std::u16string& number);
  void ReadEmail(EntryCopy& entry);
  void Save(ui::WindowHandle owner, EntryCopy& entry);
  void SaveOrAsk(ui::WindowHandle owner, const ContactTexts& texts, EntryCopy& entry);

  app::AppState& state_;
  ChosenRows& rows_;
  OverwritePrompt& prompt_;
  ContactsConnection connection_;
  RunCounters counters_;
  std::unordered_set<std::u16string> onlyCopies_;  // names
};

// What the user is told when a run ended because the card was changed, and asked when the window is
// to close meanwhile.
std::u16string CopyStoppedText(int processed, std::size_t chosen);
std::u16string CopyCloseQuestion(int processed, std::size_t chosen);

}  // namespace kelpin::contacts
