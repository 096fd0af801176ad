#include "contacts/sim_to_contacts.h"

#include <memory>
#include <string_view>

#include "app/app_state.h"
#include "app/card_hold.h"
#include "app/main_list.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::contacts {

using platform::ContactProperty;
using sim::FieldResult;
using sim::FieldSlot;

namespace {

constexpr std::uint32_t kBusy = 1;
constexpr std::uint32_t kNotBusy = 0;

ui::ListView& List(const app::AppState& state) {
  return *state.dialog->List(res::kMainList);
}

ContactTexts Texts(const EntryCopy& entry) {
  return {.name = entry.name,
          .number = entry.number,
          .number2 = entry.number2,
          .number3 = entry.number3,
          .email = entry.email};
}

}  // namespace

SimToContacts::SimToContacts(app::AppState& state, ChosenRows& rows, OverwritePrompt& prompt)
    : state_(state), rows_(rows), prompt_(prompt), connection_(state.ports.contacts) {}

int SimToContacts::Open() {
  prompt_.Reset(PromptDirection::kIntoContacts);
  counters_ = {};
  onlyCopies_.clear();
  return connection_.Open();
}

void SimToContacts::Close() {
  connection_.Close();
  // Posted, so that it comes after what was posted at a prompt.
  state_.dialog->PostMessage(res::kMessageSetBusy, 0, kNotBusy);
}

SimToContacts::Step SimToContacts::CopyNext(ui::WindowHandle owner, EntryCopy& entry) {
  ui::ListView& list = List(state_);
  entry = {};
  entry.row = rows_.Next(list);
  if (entry.row < 0) {
    return Step::kNoneLeft;
  }
  ++counters_.processed;
  list.SetItemState(entry.row, 0, ui::kItemSelected);
  if (app::GetListRow(state_, entry.row, &entry.index, &entry.name, &entry.number) == 0) {
    return Step::kUnreadable;
  }
  ReadFields(entry);
  // Nothing that was read in part goes to Contacts because the program ends.
  if (app::CardIsGivenUp(state_)) {
    --counters_.processed;
    return Step::kUnreadable;
  }
  // Those were perhaps another card's; the name and the number are of the one that was listed.
  if (app::CardIsExchanged(state_)) {
    --counters_.processed;
    return Step::kExchanged;
  }
  Save(owner, entry);
  return Step::kCopied;
}

void SimToContacts::ReadFields(EntryCopy& entry) {
  const app::AppSettings& settings = state_.settings;
  const bool wanted =
      settings.Disable_ANR == 0 || settings.Disable_ANRA == 0 || settings.Disable_EMAIL == 0;
  // Fields of a card that did not tell of all it has look like none.
  entry.wholeRead = !wanted || state_.extPhonebook.SeesFieldsOf(entry.index);
  if (settings.Disable_ANR == 0) {
    ReadNumber(FieldSlot::kSecondNumber, entry, entry.number2);
  }
  if (settings.Disable_ANRA == 0) {
    ReadNumber(FieldSlot::kThirdNumber, entry, entry.number3);
  }
  if (settings.Disable_EMAIL == 0) {
    ReadEmail(entry);
  }
}

// A field that fails to be read is empty, and the contact is written all the same.
void SimToContacts::ReadNumber(FieldSlot slot, EntryCopy& entry, std::u16string& number) {
  std::uint32_t existing = sim::kNoRecord;
  sim::NumberField field;
  const FieldResult result =
      state_.extPhonebook.ReadNumberField(slot, entry.index, existing, field);
  if (result == FieldResult::kRead) {
    number = field.number;
  }
  entry.wholeRead = entry.wholeRead && result != FieldResult::kFailed;
}

void SimToContacts::ReadEmail(EntryCopy& entry) {
  std::uint32_t existing = sim::kNoRecord;
  std::u16string text;
  const FieldResult result = state_.extPhonebook.ReadTextField(
      FieldSlot::kEmail, entry.index, state_.settings.Enable_ASCII != 0, existing, text);
  if (result == FieldResult::kRead) {
    entry.email = text;
  }
  entry.wholeRead =
      entry.wholeRead && result != FieldResult::kFailed && result != FieldResult::kUnsupported;
}

void SimToContacts::Save(ui::WindowHandle owner, EntryCopy& entry) {
  const ContactTexts texts = Texts(entry);
  if (state_.settings.Disable_Prompt_Contact_Exist == 0) {
    SaveOrAsk(owner, texts, entry);
    return;
  }
  if (connection_.AddContact(texts) != 0) {
    ++counters_.created;
    entry.saved = true;
  }
}

void SimToContacts::SaveOrAsk(ui::WindowHandle owner, const ContactTexts& texts, EntryCopy& entry) {
  if (prompt_.applyToAll == 0) {
    prompt_.applyAnswer = 0;
  }
  // The only place that an entry of the same name has left: nobody's Yes is about that one.
  const bool onlyCopy = onlyCopies_.contains(entry.name);
  switch (connection_.AddOrOverwriteContact(onlyCopy ? 0 : prompt_.applyAnswer, texts)) {
    case AddOrOverwriteResult::kCreated:
      ++counters_.created;
      entry.saved = true;
      return;
    case AddOrOverwriteResult::kOverwritten:
      ++counters_.overwritten;
      entry.saved = true;
      return;
    case AddOrOverwriteResult::kFailed:
      return;
    case AddOrOverwriteResult::kExists:
      break;
  }
  if (onlyCopy || prompt_.applyToAll != 0) {
    ++counters_.existing;
    return;
  }
  const int answer = AskOverwrite(state_, owner, entry.name, prompt_);
  state_.dialog->PostMessage(res::kMessageSetBusy, 0, kBusy);
  if (answer == 0) {
    ++counters_.existing;
    return;
  }
  // The user's Yes counts. What became of it decides what a move may delete: an entry whose contact
  // could not be written would be lost on both sides.
  ++counters_.overwritten;
  const AddOrOverwriteResult result = connection_.AddOrOverwriteContact(1, texts);
  entry.saved =
      result == AddOrOverwriteResult::kOverwritten || result == AddOrOverwriteResult::kCreated;
}

bool SimToContacts::IsInContacts(const EntryCopy& entry) {
  if (!entry.saved || connection_.app == nullptr || connection_.contact == nullptr) {
    return false;
  }
  const std::int32_t oid = ContactOid(*connection_.contact);
  std::shared_ptr<platform::IItem> item;
  std::shared_ptr<platform::IContact> contact;
  if (oid == 0 || !platform::Succeeded(connection_.app->GetItemFromOidEx(oid, 0, item)) ||
      item == nullptr || !platform::Succeeded(item->QueryInterface(platform::kIContact, contact)) ||
      contact == nullptr) {
    return false;
  }
  const auto has = [&contact](ContactProperty property, std::u16string_view text) {
    std::u16string kept;
    return platform::Succeeded(contact->Get(property, kept)) && kept == text;
  };
  return has(ContactProperty::kLastName, entry.name) &&
         (entry.name.empty() || has(ContactProperty::kFileAs, entry.name)) &&
         has(ContactProperty::kMobileTelephoneNumber, entry.number) &&
         has(ContactProperty::kBusinessTelephoneNumber, entry.number2) &&
         has(ContactProperty::kHomeTelephoneNumber, entry.number3) &&
         has(ContactProperty::kEmail1Address, entry.email);
}

std::u16string SimToContacts::Summary() const {
  return state_.settings.Disable_Prompt_Contact_Exist == 0 ? SummaryText(counters_)
                                                           : AddedSummaryText(counters_);
}

std::u16string CopyStoppedText(int processed, std::size_t chosen) {
  return res::Format(res::LoadString(res::kTextCopyFromSimStopped), {processed, chosen},
                     kSummaryLimit);
}

std::u16string CopyCloseQuestion(int processed, std::size_t chosen) {
  return res::Format(res::LoadString(res::kTextCopyFromSimCloseQuestion), {processed, chosen});
}

}  // namespace kelpin::contacts
