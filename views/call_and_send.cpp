#include "views/call_and_send.h"

#include <optional>
#include <utility>

#include "app/app_state.h"
#include "res/ids.h"
#include "views/compose_message.h"
#include "views/entry_contact.h"
#include "views/make_call.h"
#include "views/value_chooser.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr ChooserResources kCallChooser = {
    res::kDialogCallChooser, res::kBarCallChooser,  res::kCallChooserLabel,
    res::kCallChooserList,   res::kCallChooserCall, res::kCallChooserCancel,
    res::kTextCallChooser,   res::kStringPhone,     res::kMessageFillCallChooser};

constexpr ChooserResources kSendChooser = {
    res::kDialogSendChooser, res::kBarSendChooser,    res::kSendChooserLabel,
    res::kSendChooserList,   res::kSendChooserSelect, res::kSendChooserCancel,
    res::kTextSendChooser,   res::kStringContact,     res::kMessageFillSendChooser};

class CallChooser final : public ValueChooser {
 public:
  CallChooser(app::AppState& state, EntryContact contact)
      : ValueChooser(state, kCallChooser, {{contact.number}, {contact.number2}, {contact.number3}}),
        name_(std::move(contact.name)) {}

 private:
  void Chosen(ui::Dialog& dialog, const Value& value) override {
    MakeCall(state_, dialog.Handle(), name_, value.text);
  }

  const std::u16string name_;
};

class SendChooser final : public ValueChooser {
 public:
  SendChooser(app::AppState& state, EntryContact contact)
      : ValueChooser(state, kSendChooser,
                     {{contact.number},
                      {contact.number2},
                      {contact.number3},
                      {contact.email, AddressKind::kEmail}}),
        name_(std::move(contact.name)) {}

 private:
  void Chosen(ui::Dialog& /*dialog*/, const Value& value) override {
    ComposeMessage(state_, value.kind, name_, value.text);
  }

  const std::u16string name_;
};

}  // namespace

void CallSelectedEntry(app::AppState& state) {
  std::optional<EntryContact> contact = CollectContact(state, false);
  if (!contact) {
    return;
  }
  if (contact->number2.empty() && contact->number3.empty()) {
    MakeCall(state, state.mainDialog, contact->name, contact->number);
    return;
  }
  CallChooser chooser(state, std::move(*contact));
  RunDialog(state, res::kDialogCallChooser, state.mainDialog, chooser);
}

void SendToSelectedEntry(app::AppState& state) {
  if (std::optional<EntryContact> contact = CollectContact(state, true)) {
    SendChooser chooser(state, std::move(*contact));
    RunDialog(state, res::kDialogSendChooser, state.mainDialog, chooser);
  }
}

}  // namespace kelpin::views
