#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "res/ids.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/flow/program_on_card.h"

namespace kelpin::contacts {

// The program on a card and on a store that outlive it. Threads run on the test's own thread, when
// it says so, until it asks for real ones with the watchers.
class CardProgram : public test::ProgramOnCard {
 public:
  CardProgram(device::card::CardChannel& channel, platform::ContactsStore& store,
              Threads threads = Threads::kHeld)
      : ProgramOnCard(channel, threads, &store) {
    SetSwitch(u"Enable_Move_Func", 1);
    SetSwitch(u"Mobile_Tel_Flag", 1);
  }

  // The whole command with everything that is offered.
  void Copy(int command) {
    screen.ScriptDialog(205, [this](ui::Dialog& picker) {
      RunThreads();
      EXPECT_TRUE(screen.RunUntil([&] { return picker.Bar()->KeyAt(0).enabled; }));
      picker.PressSoftKey(0);
      RunThreads();
      EXPECT_TRUE(screen.RunUntil([&] { return picker.Ended(); }));
    });
    state.dialog->Command(command);
    screen.RunPending();
  }

  // "Name|Number", sorted as the list is.
  std::vector<std::u16string> Rows() const { return test::RowsOf(List(), 1); }
  // The location of an entry of this name, 0 when it is not listed.
  std::uint32_t Find(std::u16string_view name) {
    for (int row = 0; row < List().ItemCount(); ++row) {
      std::uint32_t index = 0;
      std::u16string there;
      if (app::GetListRow(state, row, &index, &there, nullptr) != 0 && there == name) return index;
    }
    return 0;
  }
  std::u16string Number2(std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    sim::NumberField field;
    static_cast<void>(
        state.extPhonebook.ReadNumberField(sim::FieldSlot::kSecondNumber, index, existing, field));
    return field.number;
  }
  std::u16string Email(std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    std::u16string text;
    static_cast<void>(
        state.extPhonebook.ReadTextField(sim::FieldSlot::kEmail, index, false, existing, text));
    return text;
  }
};

}  // namespace kelpin::contacts
