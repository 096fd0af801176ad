#include "contacts/card_fields.h"

#include "app/app_state.h"
#include "sim/ril_ext_phonebook.h"

namespace kelpin::contacts {
namespace {

using sim::FieldResult;
using sim::FieldSlot;

bool HasPlace(const app::AppState& state, std::uint32_t index, FieldSlot slot) {
  std::uint32_t set = 0;
  std::uint32_t record = 0;
  return state.extPhonebook.Place(index, set, record) != 0 &&
         state.extPhonebook.SlotInUse(set, slot).fileClass != sim::kClassNone;
}

FieldOutcome NoPlaceFor(const std::u16string& text) {
  return text.empty() ? FieldOutcome::kWritten : FieldOutcome::kNoPlace;
}

FieldResult ReadNumber2(app::AppState& state, std::uint32_t index, std::uint32_t& existing,
                        sim::NumberField& field) {
  return state.extPhonebook.ReadNumberField(FieldSlot::kSecondNumber, index, existing, field);
}

FieldResult ReadEmail(app::AppState& state, std::uint32_t index, std::uint32_t& existing,
                      std::u16string& email) {
  return state.extPhonebook.ReadTextField(FieldSlot::kEmail, index,
                                          state.settings.Enable_ASCII != 0, existing, email);
}

std::u16string WithoutPlus(std::u16string number) {
  std::erase(number, u'+');
  return number;
}

}  // namespace

FieldOutcome WriteNumber2(app::AppState& state, std::uint32_t index, const std::u16string& number,
                          bool isNew) {
  if (!HasPlace(state, index, FieldSlot::kSecondNumber)) {
    return NoPlaceFor(number);
  }
  std::uint32_t existing = sim::kNoRecord;
  sim::NumberField field;
  if (!isNew && ReadNumber2(state, index, existing, field) == FieldResult::kFailed) {
    return FieldOutcome::kFailed;
  }
  // What the number is called stays as it was; a new one is called nothing.
  field.number = number;
  const bool enableNames = state.settings.Enable_AAS != 0;
  return state.extPhonebook.WriteNumberField(FieldSlot::kSecondNumber, index, field, enableNames,
                                             existing) == sim::kFieldWritten
             ? FieldOutcome::kWritten
             : FieldOutcome::kFailed;
}

FieldOutcome WriteEmail(app::AppState& state, std::uint32_t index, const std::u16string& email,
                        bool isNew) {
  if (!HasPlace(state, index, FieldSlot::kEmail)) {
    return NoPlaceFor(email);
  }
  std::uint32_t existing = sim::kNoRecord;
  std::u16string old;
  if (!isNew && ReadEmail(state, index, existing, old) == FieldResult::kFailed) {
    return FieldOutcome::kFailed;
  }
  return state.extPhonebook.WriteTextField(FieldSlot::kEmail, index, email, existing) ==
                 sim::kFieldWritten
             ? FieldOutcome::kWritten
             : FieldOutcome::kFailed;
}

bool CardHasEntry(app::AppState& state, std::uint32_t index, const std::u16string& name,
                  const std::u16string& number) {
  std::u16string nameThere;
  std::u16string numberThere;
  return Succeeded(state.simPhonebook.ReadEntry(index, &nameThere, &numberThere)) &&
         nameThere == name && WithoutPlus(numberThere) == WithoutPlus(number);
}

bool CardHasNumber2(app::AppState& state, std::uint32_t index, const std::u16string& number) {
  if (number.empty()) {
    return true;
  }
  std::uint32_t existing = sim::kNoRecord;
  sim::NumberField field;
  return ReadNumber2(state, index, existing, field) == FieldResult::kRead &&
         WithoutPlus(field.number) == WithoutPlus(number);
}

bool CardHasEmail(app::AppState& state, std::uint32_t index, const std::u16string& email) {
  if (email.empty()) {
    return true;
  }
  std::uint32_t existing = sim::kNoRecord;
  std::u16string there;
  return ReadEmail(state, index, existing, there) == FieldResult::kRead && there == email;
}

}  // namespace kelpin::contacts
