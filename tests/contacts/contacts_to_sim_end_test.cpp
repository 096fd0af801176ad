#include "contacts/contacts_to_sim.h"
#include "tests/contacts/to_sim_fixture.h"

// How a copy to the card ends, and what is told when it stops early.
namespace kelpin::contacts {
namespace {

using platform::SimResult;
using testing::ElementsAre;

class ContactsToSimEndTest : public ToSimTest {
 protected:
  void SetUp() override {
    PutAnnaAndCem();
    Open();
  }
};

TEST_F(ContactsToSimEndTest, AContactThatDoesNotFitIsNamedBeforeTheError) {
  for (const bool asks : {true, false}) {
    SCOPED_TRACE(asks);
    state->settings.Disable_Prompt_Contact_Exist = asks ? 0 : 1;
    device.sim.SetLengths(20, 9);
    state->settings.CToSim_Type = 2;  // names are offered whole
    Add(asks ? u"First" : u"Second", u"1");
    Add(u"Long %s name", u"2");
    Add(u"Third", u"3");
    const std::size_t before = Boxes().size();
    // From the second time on what is on the card already is left out.
    Copy(kCopy, [&](ui::Dialog& picker) {
      if (!asks) {
        for (const int row : {0, 1, 2}) PickerList(picker).ClickCheckBox(row);
      }
    });
    ASSERT_EQ(Boxes().size(), before + (asks ? 3u : 2u));
    EXPECT_EQ(Boxes()[before].caption, u"Warning");
    EXPECT_EQ(Boxes()[before].style, ui::kBoxWarning);
    EXPECT_EQ(Boxes()[before].text,
              u"1 of 3 contacts are done. \"Long %s name\" does not fit the card: the name is too "
              u"long, or the number is not one that the card can keep.\n\nShorten the name or "
              u"correct the number in Contacts, then copy this contact and the ones below it.");
    EXPECT_EQ(Boxes()[before + 1].caption, u"Error");
    EXPECT_EQ(Boxes()[before + 1].text, u"Bad parameter.");
  }
  EXPECT_EQ(Boxes()[2].text, Summary(1, 0, 0));
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 First 1", u"3 Cem 333", u"4 Second 1"));
}

TEST_F(ContactsToSimEndTest, AContactWithoutANameIsNamedByWhatItHas) {
  state->settings.CToSim_Type = 2;
  device.sim.SetPlannedFailure(SimResult::kBadParameter);
  struct Case {
    std::u16string_view number;
    std::u16string_view email;
    std::u16string_view called;
  };
  for (const Case& one : {Case{u"5", u"e@example.org", u"\"5\" does not fit"},
                          Case{u"", u"e@example.org", u"\"e@example.org\" does not fit"}}) {
    Add(u"", one.number, {{ContactProperty::kEmail1Address, std::u16string(one.email)}});
    device.failures.FailCallOf("SimWritePhonebookEntry", 1);
    const std::size_t before = Boxes().size();
    Copy(kCopy, [](ui::Dialog& picker) {
      picker.Command(1050);
      PickerList(picker).ClickCheckBox(PickerList(picker).ItemCount() - 1);
    });
    ASSERT_GT(Boxes().size(), before);
    EXPECT_NE(Boxes()[before].text.find(one.called), std::u16string::npos);
  }
}

TEST_F(ContactsToSimEndTest, OfALongNameEnoughIsShown) {
  state->settings.CToSim_Type = 2;
  Add(std::u16string(200, u'x'), u"5");
  Copy();
  ASSERT_EQ(Boxes().size(), 3u);
  EXPECT_NE(Boxes()[0].text.find(u"\"" + std::u16string(60, u'x') + u"\u2026\" does not fit"),
            std::u16string::npos);
}

TEST_F(ContactsToSimEndTest, OfTheBoxesPressedWhileItCopiesOnlyTheUncheckedCount) {
  for (const std::u16string_view name : {u"Cem", u"Left", u"Out", u"Late"}) Add(name, u"7");
  Pick(kCopy, [&](ui::Dialog& picker) {
    PickerList(picker).ClickCheckBox(3);  // off
    device.screen.ScriptDialog(kOverwrite, [&](ui::Dialog& box) {
      PickerList(picker).ClickCheckBox(2);
      PickerList(picker).ClickCheckBox(3);
      box.Command(361);
    });
    Done(picker);
  });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Left 7", u"3 Cem 333"));
  EXPECT_EQ(Boxes().back().text, Summary(1, 0, 1));
}

// A stop ends as a run that went through does.
TEST_F(ContactsToSimEndTest, AStopWaitsSortsAndClosesBeforeTheErrorIsTold) {
  state->settings.CToSim_Type = 2;
  Add(u"Zoe", u"1");
  Add(u"Bert", u"2");
  Add(u"Yan", u"3");
  Pick(kMove, [&](ui::Dialog& picker) {
    device.sim.SetPlannedFailure(SimResult::kMemoryFailure);
    device.failures.FailCallOf("SimWritePhonebookEntry", 3);
    device.journal.Clear();
    const auto atSleep = std::make_shared<std::vector<std::u16string>>();
    device.clock.OnAdvance([this, atSleep] {
      *atSleep = Rows();
      EXPECT_TRUE(device.screen.WaitCursor());
      EXPECT_GT(device.contacts.OpenUses(), 0);
    });
    Done(picker);
    EXPECT_THAT(*atSleep, ElementsAre(u"4|Bert|2", u"2|Zoe|1", u"1|Anna|111", u"3|Cem|333"));
  });
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111", u"4|Bert|2", u"3|Cem|333", u"2|Zoe|1"));
  EXPECT_EQ(Calls("Sleep(1000)"), 1u);
  EXPECT_LT(Position("Sleep(1000)"), Position("CoUninitialize"));
  EXPECT_LT(Position("CoUninitialize"), Position("MessageBox"));
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[0].text, u"Storage memory failure.");
  EXPECT_EQ(Boxes()[1].text, Summary(2, 0, 0));
  ExpectRunEnded();
}

TEST_F(ContactsToSimEndTest, TheWaitCursorIsOffWhenTheErrorIsTold) {
  device.sim.SetResult("SimWritePhonebookEntry", SimResult::kSimFailure);
  Add(u"Zoe", u"1");
  bool told = false;
  device.screen.OnBox([&](const test::ShownBox& box) {
    if (box.caption == u"Error") {
      told = true;
      EXPECT_FALSE(device.screen.WaitCursor());
    }
  });
  Copy();
  EXPECT_TRUE(told);
}

TEST_F(ContactsToSimEndTest, APickerThatIsLeftAfterARunTellsNothing) {
  Add(u"Zoe", u"1");
  Copy();
  ASSERT_EQ(Boxes().size(), 1u);
  Pick(kCopy, nullptr);
  EXPECT_EQ(Boxes().size(), 1u);
}

}  // namespace
}  // namespace kelpin::contacts
