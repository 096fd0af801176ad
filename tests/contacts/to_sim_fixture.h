#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/contacts/contacts_fixture.h"

namespace kelpin::contacts {

// Contacts that go to the card.
class ToSimTest : public ContactsTest {
 protected:
  static constexpr int kPicker = 205;
  static constexpr int kOptions = 206;
  static constexpr int kDelete = 212;
  static constexpr int kNotAll = 216;
  static constexpr int kOverwrite = 356;
  static constexpr int kCopy = 318;
  static constexpr int kMove = 1108;

  using Script = std::function<void(ui::Dialog&)>;
  using Texts = std::map<ContactProperty, std::u16string>;

  ToSimTest() { SetSwitch(u"Mobile_Tel_Flag", 1); }

  std::int32_t Add(std::u16string_view last, std::u16string_view mobile, Texts more = {}) {
    test::FakeContact contact;
    contact[ContactProperty::kLastName] = last;
    contact[ContactProperty::kMobileTelephoneNumber] = mobile;
    for (auto& [property, text] : more) contact[property] = text;
    return device.contacts.Insert(std::move(contact));
  }

  static std::vector<bool> ChecksOf(const ui::ListView& list) {
    std::vector<bool> checks;
    for (int row = 0; row < list.ItemCount(); ++row) checks.push_back(list.Checked(row));
    return checks;
  }
  static ui::ListView& PickerList(ui::Dialog& picker) { return *picker.List(1015); }

  // Runs the threads that were made, and what they posted.
  void RunThreads() {
    device.kernel.RunHeldThreads();
    device.screen.RunPending();
  }

  // Gives the command; `script` runs when the picker is filled. A picker left open is cancelled.
  void Pick(int command, const Script& script) {
    device.screen.ScriptDialog(kPicker, [this, command, script](ui::Dialog& picker) {
      RunThreads();
      if (script) script(picker);
      if (!picker.Ended()) picker.Command(command == kMove ? 1114 : 329);
    });
    Dialog().Command(command);
    device.screen.RunPending();
  }

  // The picker's left soft key, and the copy.
  void Done(ui::Dialog& picker) {
    picker.PressSoftKey(0);
    RunThreads();
  }

  // The whole command with what is checked at the start, after `choose`.
  void Copy(int command = kCopy, const Script& choose = nullptr) {
    Pick(command, [this, choose](ui::Dialog& picker) {
      if (choose) choose(picker);
      Done(picker);
      EXPECT_TRUE(picker.Ended());
    });
  }

  // Answers every prompt of this dialog so.
  void AnswerEvery(int dialog, int answer, bool applyToAll = false) {
    device.screen.ScriptEveryDialog(dialog, [this, dialog, answer, applyToAll](ui::Dialog& box) {
      ++prompts[dialog];
      promptTexts.push_back(box.Text(dialog == kNotAll ? 1079 : 357));
      if (applyToAll) box.PressCheckBox(dialog == kNotAll ? 1080 : 358);
      box.Command(answer);
    });
  }

  void PutAnnaAndCem() {
    device.sim.SetCapacity(6);
    device.sim.SetEntry(1, u"Anna", u"111");
    device.sim.SetEntry(3, u"Cem", u"333");
  }
  // What is on the card, "1 Name 123".
  std::vector<std::u16string> CardEntries() {
    std::vector<std::u16string> entries;
    for (const auto& [index, entry] : device.sim.Entries()) {
      entries.push_back(Text(static_cast<int>(index)) + u" " + entry.text + u" " + entry.address);
    }
    return entries;
  }

  // All was put back as a run finds it.
  void ExpectRunEnded() {
    EXPECT_FALSE(device.screen.WaitCursor());
    EXPECT_EQ(state->simPhonebook.CollectStores(), 1u);
    EXPECT_EQ(device.contacts.OpenUses(), 0);
    EXPECT_FALSE(app::IsListLoading(*state));
    EXPECT_TRUE(List().Notifying());
  }

  std::map<int, int> prompts;               // how often each was shown
  std::vector<std::u16string> promptTexts;  // of all of them, in order
};

}  // namespace kelpin::contacts
