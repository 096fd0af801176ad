#include "contacts/contacts_to_sim.h"

#include "tests/contacts/to_sim_fixture.h"

// What a copy writes to the card and tells.
namespace kelpin::contacts {
namespace {

using platform::SimResult;
using testing::ElementsAre;
using testing::IsEmpty;

class ContactsToSimTest : public ToSimTest {
 protected:
  void SetUp() override {
    PutAnnaAndCem();
    Open();
  }
  void ExpectSummary(int created, int overwritten, int existing) {
    ASSERT_FALSE(Boxes().empty());
    EXPECT_EQ(Boxes().back().text, Summary(created, overwritten, existing));
    EXPECT_EQ(Boxes().back().caption, u"Info");
    EXPECT_EQ(Boxes().back().style, ui::kBoxNotice);
    EXPECT_EQ(Boxes().back().owner, state->mainDialog);
  }
};

TEST_F(ContactsToSimTest, CheckedContactsGoToFreeLocationsInTheirOrder) {
  Add(u"Zoe", u"+49 1");
  Add(u"Left out", u"2");
  Add(u"Bert", u"3");
  Copy(kCopy, [](ui::Dialog& picker) { PickerList(picker).ClickCheckBox(1); });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe +491", u"3 Cem 333", u"4 Bert 3"));
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111", u"4|Bert|3", u"3|Cem|333", u"2|Zoe|+491"));
  EXPECT_EQ(state->simPhonebook.Slot(2), 1);
  EXPECT_EQ(state->simPhonebook.Slot(4), 1);
  ASSERT_EQ(Boxes().size(), 1u);
  ExpectSummary(2, 0, 0);
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, NothingCheckedIsToldAsNothing) {
  Add(u"Zoe", u"1");
  Copy(kCopy, [](ui::Dialog& picker) { picker.Command(1050); });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"3 Cem 333"));
  ExpectSummary(0, 0, 0);
}

TEST_F(ContactsToSimTest, TheNewestEntryIsSelectedInTheSortedList) {
  Add(u"Zoe", u"1");
  Add(u"Bert", u"2");
  Copy();
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(RowText(List().NextItem(-1, ui::kItemSelected)), u"4|Bert|2");
}

TEST_F(ContactsToSimTest, TheListIsSortedAsTheUserHasIt) {
  Dialog().List(res::kMainList)->ClickHeader(app::kColumnIndex);  // from the greatest location down
  Add(u"Zoe", u"1");
  Copy();
  EXPECT_THAT(RowIndexes(), ElementsAre(3, 2, 1));
}

TEST_F(ContactsToSimTest, ADuplicateIsAskedAboutAndLeftAloneOnNo) {
  Add(u"Cem", u"999");
  AnswerEvery(kOverwrite, 361);
  Copy();
  EXPECT_EQ(prompts[kOverwrite], 1);
  EXPECT_THAT(promptTexts,
              ElementsAre(u"\"Cem\" already exists in SIM card. Do you want to overwrite it?"));
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"3 Cem 333"));
  ExpectSummary(0, 0, 1);
}

TEST_F(ContactsToSimTest, ADuplicateIsWrittenOverOnYes) {
  Add(u"Cem", u"999");
  AnswerEvery(kOverwrite, 360);
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"3 Cem 999"));
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111", u"3|Cem|999"));
  ExpectSummary(0, 1, 0);
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, ApplyToAllEndsTheQuestionsOfOneRun) {
  for (const std::u16string_view name : {u"Anna", u"Cem", u"New"}) Add(name, u"7");
  AnswerEvery(kOverwrite, 360, true);
  Copy();
  EXPECT_EQ(prompts[kOverwrite], 1);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 7", u"2 New 7", u"3 Cem 7"));
  ExpectSummary(1, 2, 0);
  AnswerEvery(kOverwrite, 361, true);
  Copy();
  EXPECT_EQ(prompts[kOverwrite], 2);
  ExpectSummary(0, 0, 3);
}

TEST_F(ContactsToSimTest, WithoutApplyToAllEveryDuplicateIsAskedAbout) {
  for (const std::u16string_view name : {u"Anna", u"Cem"}) Add(name, u"7");
  device.screen.ScriptDialog(kOverwrite, [](ui::Dialog& box) { box.Command(360); });
  device.screen.ScriptDialog(kOverwrite, [](ui::Dialog& box) { box.Close(); });  // means No
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 7", u"3 Cem 333"));
  ExpectSummary(0, 1, 1);
}

TEST_F(ContactsToSimTest, ANameInOtherLettersIsNoDuplicate) {
  Add(u"cem", u"9");
  Add(u"Cem ", u"8");
  Copy();
  EXPECT_EQ(prompts[kOverwrite], 0);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 cem 9", u"3 Cem 333", u"4 Cem  8"));
  ExpectSummary(2, 0, 0);
}

TEST_F(ContactsToSimTest, OfSeveralRowsOfANameTheFirstCounts) {
  device.sim.SetEntry(5, u"Cem", u"555");
  Refresh();
  Dialog().List(res::kMainList)->ClickHeader(app::kColumnIndex);  // descending: 5, 3, 1
  ASSERT_THAT(RowIndexes(), ElementsAre(5, 3, 1));
  Add(u"Cem", u"9");
  AnswerEvery(kOverwrite, 360);
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"3 Cem 333", u"5 Cem 9"));
}

TEST_F(ContactsToSimTest, ANameThatTheRunItselfWroteIsADuplicate) {
  Add(u"Zoe", u"1");
  Add(u"Yan", u"2");
  Add(u"Zoe", u"3");
  AnswerEvery(kOverwrite, 360);
  Copy();
  EXPECT_EQ(prompts[kOverwrite], 1);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 3", u"3 Cem 333", u"4 Yan 2"));
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111", u"3|Cem|333", u"4|Yan|2", u"2|Zoe|3"));
  ExpectSummary(2, 1, 0);
}

TEST_F(ContactsToSimTest, WithoutQuestionsAnExistingNameIsWrittenAgainAndNothingIsTold) {
  state->settings.Disable_Prompt_Contact_Exist = 1;
  Add(u"Cem", u"999");
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Cem 999", u"3 Cem 333"));
  EXPECT_THAT(Rows(), testing::UnorderedElementsAre(u"1|Anna|111", u"2|Cem|999", u"3|Cem|333"));
  EXPECT_EQ(state->simPhonebook.Slot(2), 1);
  EXPECT_EQ(Boxes().size(), 0u);
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, AFullCardStopsTheRunAtThatRow) {
  for (const std::u16string_view name : {u"A", u"B", u"C", u"D", u"E", u"F"}) Add(name, u"1");
  Copy(kCopy, [](ui::Dialog& picker) { EXPECT_EQ(picker.Text(1040), u"(6 / 4)"); });
  EXPECT_THAT(CardEntries(),
              ElementsAre(u"1 Anna 111", u"2 A 1", u"3 Cem 333", u"4 B 1", u"5 C 1", u"6 D 1"));
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[0].caption, u"Error");
  EXPECT_EQ(Boxes()[0].text, u"The SIM is full. Delete some SIM contacts and try again.");
  ExpectSummary(4, 0, 0);
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, AFullCardStopsTheRunWithoutQuestionsToo) {
  state->settings.Disable_Prompt_Contact_Exist = 1;
  for (const std::u16string_view name : {u"A", u"B", u"C", u"D", u"E"}) Add(name, u"1");
  Copy();
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].caption, u"Error");
  EXPECT_EQ(device.sim.Entries().size(), 6u);
}

TEST_F(ContactsToSimTest, AWriteThatFailsStopsTheRun) {
  for (const std::u16string_view name : {u"A", u"B", u"C"}) Add(name, u"1");
  device.sim.SetPlannedFailure(SimResult::kMemoryFailure);
  device.failures.FailCallOf("SimWritePhonebookEntry", 2);
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 A 1", u"3 Cem 333"));
  EXPECT_THAT(Rows(), ElementsAre(u"2|A|1", u"1|Anna|111", u"3|Cem|333"));
  EXPECT_EQ(state->simPhonebook.Slot(4), 0);
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[0].caption, u"Error");
  EXPECT_EQ(Boxes()[0].text, u"Storage memory failure.");
  ExpectSummary(1, 0, 0);
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, AnOverwriteThatFailsLeavesTheRowAsItWas) {
  Add(u"Cem", u"999");
  AnswerEvery(kOverwrite, 360);
  device.sim.SetResult("SimWritePhonebookEntry", SimResult::kSimFailure);
  Copy();
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111", u"3|Cem|333"));
  ExpectSummary(0, 0, 0);
}

TEST_F(ContactsToSimTest, TheCardsOwnNoticesAreNotCollectedUntilASecondAfterTheLoop) {
  Add(u"Zoe", u"1");
  Pick(kCopy, [&](ui::Dialog& picker) {
    const auto waited = std::make_shared<bool>(false);
    device.clock.OnAdvance([this, waited] {
      *waited = true;
      device.sim.Drain();
      EXPECT_EQ(state->simPhonebook.CollectStores(), 0u);
      EXPECT_THAT(Rows().front(), u"2|Zoe|1");  // not sorted yet
    });
    Done(picker);
    EXPECT_TRUE(*waited);
  });
  EXPECT_THAT(device.journal.Entries("Sleep"), ElementsAre("Sleep(1000)"));
  EXPECT_EQ(state->simPhonebook.StoredCount(), 0u);
  EXPECT_EQ(state->simPhonebook.CollectStores(), 1u);
}

TEST_F(ContactsToSimTest, TheWaitCursorIsOffWhileAQuestionShows) {
  Add(u"Cem", u"999");
  device.screen.ScriptDialog(kOverwrite, [&](ui::Dialog& box) {
    EXPECT_FALSE(device.screen.WaitCursor());
    box.Command(361);
  });
  Copy();
  ExpectRunEnded();
}

TEST_F(ContactsToSimTest, ACloseWhileItCopiesEndsTheRunAfterTheRowItIsAt) {
  for (const std::u16string_view name : {u"A", u"Anna", u"C"}) Add(name, u"1");
  Pick(kCopy, [&](ui::Dialog& picker) {
    device.screen.ScriptDialog(kOverwrite, [&](ui::Dialog& box) {
      picker.KeyDown({ui::Key::kEscape});
      EXPECT_FALSE(picker.Ended());  // the copy runs still
      box.Command(360);
    });
    Done(picker);
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 1", u"2 A 1", u"3 Cem 333"));
  ExpectSummary(1, 1, 0);
}

TEST_F(ContactsToSimTest, ACardThatIsChangedMeanwhileEndsTheRun) {
  for (const std::u16string_view name : {u"A", u"Anna", u"C"}) Add(name, u"1");
  Pick(kCopy, [&](ui::Dialog& picker) {
    device.screen.ScriptDialog(kOverwrite, [&](ui::Dialog& box) {
      EXPECT_EQ(theLoader->StartLoad(), 1);
      box.Command(360);
    });
    picker.PressSoftKey(0);
    device.kernel.RunHeldThreads();  // the copy; the load waits for it
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 1", u"2 A 1", u"3 Cem 333"));
  ASSERT_EQ(Boxes().size(), 2u);
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"2 of 3 contacts are done. "));
  ExpectSummary(1, 1, 0);
  Load();
}

TEST_F(ContactsToSimTest, AnEmptyNameIsADuplicateOfAnother) {
  Add(u"", u"5");
  Add(u"", u"6");
  AnswerEvery(kOverwrite, 361);
  Copy();
  EXPECT_THAT(promptTexts,
              ElementsAre(u"\"\" already exists in SIM card. Do you want to overwrite it?"));
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2  5", u"3 Cem 333"));
}

TEST_F(ContactsToSimTest, NamesThatLookLikePatternsAreAskedAboutAsTheyAre) {
  device.sim.SetEntry(5, u"%s %d \"x\"", u"5");
  Refresh();
  Add(u"%s %d \"x\"", u"6");
  AnswerEvery(kOverwrite, 361);
  Copy();
  EXPECT_THAT(
      promptTexts,
      ElementsAre(u"\"%s %d \"x\"\" already exists in SIM card. Do you want to overwrite it?"));
}

TEST_F(ContactsToSimTest, NoContactIsDeletedByACopy) {
  state->settings.CToSim_Type = 2;
  Add(u"Zoe", u"1");
  Copy();
  EXPECT_EQ(device.contacts.Contacts().size(), 1u);
  EXPECT_THAT(device.journal.Entries("Delete("), IsEmpty());
}

}  // namespace
}  // namespace kelpin::contacts
