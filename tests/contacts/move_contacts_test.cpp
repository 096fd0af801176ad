#include "contacts/contacts_to_sim_run.h"
#include "tests/contacts/to_sim_fixture.h"

// The move, the question before a contact that does not fit, and names cut to the card.
namespace kelpin::contacts {
namespace {

using platform::SimResult;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class MoveContactsTest : public ToSimTest {
 protected:
  void SetUp() override {
    device.sim.SetEntry(1, u"Anna", u"111");
    Open();
    state->settings.CToSim_Type = 2;
  }
  std::vector<std::u16string> InContacts() {
    std::vector<std::u16string> names;
    for (const auto& [oid, contact] : device.contacts.Contacts()) {
      names.push_back(contact[ContactProperty::kLastName]);
    }
    return names;
  }
};

TEST_F(MoveContactsTest, WhatIsOnTheCardLeavesContacts) {
  Add(u"Zoe", u"+49 1");
  Add(u"Stays", u"2");
  Add(u"Anna", u"3");
  AnswerEvery(kOverwrite, 360);
  Copy(kMove, [](ui::Dialog& picker) { PickerList(picker).ClickCheckBox(1); });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 3", u"2 Zoe +491"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Stays"));
  ASSERT_THAT(Boxes(), SizeIs(1));
  EXPECT_EQ(Boxes()[0].text, Summary(1, 1, 0));
  ExpectRunEnded();
}

TEST_F(MoveContactsTest, AContactGoesAfterItsEntryWasReadBack) {
  const std::int32_t oid = Add(u"Zoe", u"1");
  device.journal.Clear();
  Copy(kMove);
  const std::string number = std::to_string(oid);
  EXPECT_LT(Position("SimWritePhonebookEntry"), Position("SimReadPhonebookEntry"));
  EXPECT_LT(Position("SimReadPhonebookEntry"), Position("Delete(" + number));
  EXPECT_THAT(device.journal.Entries("Delete("), ElementsAre("Delete(" + number + ")"));
}

TEST_F(MoveContactsTest, AContactThatIsNotReadBackStaysAndThatIsTold) {
  Add(u"Zoe", u"1");
  Add(u"Yan", u"2");
  device.failures.FailCallOf("SimReadPhonebookEntry", 1);
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1", u"3 Yan 2"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_EQ(Boxes()[0].text,
            u"Of the contacts that were moved, 1 are still in Contacts as well: the card does not "
            u"hold all of them, or they could not be deleted.");
  EXPECT_EQ(Boxes()[0].caption, u"Warning");
  EXPECT_EQ(Boxes()[1].text, Summary(2, 0, 0));
}

TEST_F(MoveContactsTest, AContactStaysOfWhichTheCardHasNoPlaceForAll) {
  Add(u"Zoe", u"1", {{ContactProperty::kHomeTelephoneNumber, u"2"}});
  Add(u"Yan", u"3", {{ContactProperty::kEmail1Address, u"y@example.org"}});
  Add(u"Xi", u"4");
  Copy(kMove);
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe", u"Yan"));
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"Of the contacts that were moved, 2 are still"));
}

TEST_F(MoveContactsTest, AFieldThatIsSwitchedOffKeepsNoContact) {
  state->settings.Disable_ANR = 1;
  state->settings.Disable_EMAIL = 1;
  Add(u"Zoe", u"1",
      {{ContactProperty::kHomeTelephoneNumber, u"2"},
       {ContactProperty::kEmail1Address, u"z@example.org"}});
  Copy(kMove);
  EXPECT_THAT(InContacts(), IsEmpty());
  EXPECT_THAT(Boxes(), SizeIs(1));
}

TEST_F(MoveContactsTest, AContactThatCouldNotBeReadWholeStays) {
  Add(u"Zoe", u"1");
  device.failures.FailCallOf("Get", 2);  // its last name
  Copy(kMove);
  EXPECT_TRUE(device.failures.Failed());
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2  1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"Of the contacts that were moved, 1 are still"));
}

TEST_F(MoveContactsTest, AContactWhoseNumberHadToBeCutStays) {
  const std::u16string most(state->simPhonebook.MaxNumberLength(), u'1');
  Add(u"Cut", most + u"2");
  Add(u"Fits", most);
  Add(u"Second", u"1", {{ContactProperty::kHomeTelephoneNumber, std::u16string(41, u'3')}});
  state->settings.Disable_ANR = 1;  // the card of this test has no place for it
  Copy(kMove);
  EXPECT_THAT(CardEntries(),
              ElementsAre(u"1 Anna 111", u"2 Cut " + most, u"3 Fits " + most, u"4 Second 1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Cut", u"Second"));
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"Of the contacts that were moved, 2 are still"));
}

TEST_F(MoveContactsTest, AContactStaysOfWhoseNumberLettersAreLost) {
  state->settings.Disable_ANR = 1;  // the card of this test has no place for it
  Add(u"Letters", u"1-800-FLOWERS");
  Add(u"Words", u"n/a", {{ContactProperty::kHomeTelephoneNumber, u"5"}});
  Add(u"Second", u"6", {{ContactProperty::kHomeTelephoneNumber, u"7 (evenings)"}});
  Add(u"Signs", u"+49 (30) 12-34/5.6");
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Letters 1800", u"3 Words 5",
                                         u"4 Second 6", u"5 Signs +4930123456"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Letters", u"Words", u"Second"));
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"Of the contacts that were moved, 3 are still"));
}

TEST_F(MoveContactsTest, AContactWhoseNameHadToBeCutStays) {
  state->settings.Enable_CutName = 1;
  device.sim.SetLengths(20, 16);
  Add(std::u16string(9, u'\u00EA'), u"1");
  Add(std::u16string(7, u'\u00E1'), u"2");
  Copy(kMove);
  EXPECT_EQ(device.sim.Name(2), std::u16string(7, u'\u00EA'));
  EXPECT_THAT(InContacts(), ElementsAre(std::u16string(9, u'\u00EA')));
  ASSERT_THAT(Boxes(), SizeIs(3));
  EXPECT_TRUE(Boxes()[1].text.starts_with(u"Of the contacts that were moved, 1 are still"));
}

TEST_F(MoveContactsTest, AContactThatCannotBeDeletedIsToldOf) {
  Add(u"Zoe", u"1");
  device.failures.FailCallOf("Delete", 1);
  Copy(kMove);
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  ASSERT_THAT(Boxes(), SizeIs(2));
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"Of the contacts that were moved, 1 are still"));
}

TEST_F(MoveContactsTest, ADuplicateThatIsLeftAloneStaysInContacts) {
  Add(u"Anna", u"3");
  AnswerEvery(kOverwrite, 361);
  Copy(kMove);
  EXPECT_THAT(InContacts(), ElementsAre(u"Anna"));
  EXPECT_EQ(Boxes().back().text, Summary(0, 0, 1));
}

// Of two contacts of one name the first is on the card alone by the time the second comes.
TEST_F(MoveContactsTest, TheEntryOfAMovedContactIsNotOverwrittenByAnotherOfItsName) {
  Add(u"Zoe", u"1");
  Add(u"Zoe", u"2");
  Add(u"Yan", u"3");
  AnswerEvery(kOverwrite, 360, true);
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1", u"3 Yan 3"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  EXPECT_EQ(device.contacts.Contacts().begin()->second[ContactProperty::kMobileTelephoneNumber],
            u"2");
  EXPECT_EQ(prompts[kOverwrite], 0);
  EXPECT_EQ(Boxes().back().text, Summary(2, 0, 1));
}

TEST_F(MoveContactsTest, NorIsAnEntryThatAMovedContactTookOver) {
  Add(u"Anna", u"1");
  Add(u"Anna", u"2");
  AnswerEvery(kOverwrite, 360, true);
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Anna"));
  EXPECT_EQ(prompts[kOverwrite], 1);
  EXPECT_EQ(Boxes().back().text, Summary(0, 1, 1));
}

TEST_F(MoveContactsTest, WhatTheCardRefusedStaysInContacts) {
  Add(u"Zoe", u"1");
  Add(u"Yan", u"2");
  device.failures.FailCallOf("SimWritePhonebookEntry", 2);
  Copy(kMove);
  EXPECT_THAT(InContacts(), ElementsAre(u"Yan"));
  EXPECT_EQ(Boxes().back().text, Summary(1, 0, 0));
}

TEST_F(MoveContactsTest, TheMoveOfNumbersDeletesNothing) {
  state->settings.CToSim_Type = 0;
  Add(u"Zoe", u"1");
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  EXPECT_EQ(Boxes().back().text, Summary(1, 0, 0));
}

TEST_F(MoveContactsTest, WithoutQuestionsTheMoveDeletesNothing) {
  state->settings.Disable_Prompt_Contact_Exist = 1;
  Add(u"Zoe", u"1");
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(MoveContactsTest, AStoreThatCannotBeOpenedMovesNothingAndSaysSo) {
  Add(u"Zoe", u"1");
  Pick(kMove, [&](ui::Dialog& picker) {
    device.failures.FailCallOf("CoCreateInstance", 1);
    Done(picker);
    EXPECT_TRUE(picker.Ended());
  });
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Zoe"));
  ASSERT_THAT(Boxes(), SizeIs(1));
  EXPECT_EQ(Boxes()[0].text, Summary(0, 0, 0));
  ExpectRunEnded();
}

// The question about contacts that do not fit.

TEST_F(MoveContactsTest, EachContactIsAskedAboutWhereTheSettingsWantThat) {
  state->settings.CToSim_Type = 1;
  for (const std::u16string_view name : {u"Zoe", u"Yan", u"Xi"}) Add(name, u"1");
  device.screen.ScriptDialog(kNotAll, [](ui::Dialog& box) { box.Command(1081); });
  device.screen.ScriptDialog(kNotAll, [](ui::Dialog& box) { box.Command(1082); });
  device.screen.ScriptDialog(kNotAll, [](ui::Dialog& box) { box.Command(1); });
  Copy(kMove);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1", u"3 Xi 1"));
  EXPECT_THAT(InContacts(), ElementsAre(u"Yan"));
  EXPECT_EQ(Boxes().back().text, Summary(2, 0, 0));  // who was left out is not counted
}

TEST_F(MoveContactsTest, NoForAllLeavesOutTheRestWithoutAsking) {
  state->settings.CToSim_Type = 1;
  for (const std::u16string_view name : {u"Zoe", u"Yan", u"Xi"}) Add(name, u"1");
  device.screen.ScriptDialog(kNotAll, [](ui::Dialog& box) { box.Command(1081); });
  device.screen.ScriptDialog(kNotAll, [](ui::Dialog& box) {
    box.PressCheckBox(1080);
    box.Command(1082);
  });
  Copy();
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1"));
}

TEST_F(MoveContactsTest, AnAnswerForAllHoldsForOneRun) {
  state->settings.CToSim_Type = 1;
  Add(u"Zoe", u"1");
  Add(u"Yan", u"1");
  AnswerEvery(kNotAll, 1082, true);
  Copy();
  Copy();
  EXPECT_EQ(prompts[kNotAll], 2);
}

TEST_F(MoveContactsTest, TheTwoQuestionsHaveAnswersOfTheirOwn) {
  state->settings.CToSim_Type = 1;
  Add(u"Anna", u"1");
  Add(u"Anna", u"2");
  AnswerEvery(kNotAll, 1081, true);
  AnswerEvery(kOverwrite, 361);
  Copy();
  EXPECT_EQ(prompts[kNotAll], 1);
  EXPECT_EQ(prompts[kOverwrite], 2);
}

TEST_F(MoveContactsTest, YesForAllDuplicatesLeavesTheOtherQuestionBe) {
  state->settings.CToSim_Type = 1;
  Add(u"Anna", u"1");
  Add(u"Anna", u"2");
  AnswerEvery(kNotAll, 1081);
  AnswerEvery(kOverwrite, 360, true);
  Copy();
  EXPECT_EQ(prompts[kNotAll], 2);
  EXPECT_EQ(prompts[kOverwrite], 1);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 2"));
}

TEST_F(MoveContactsTest, WhereTheSettingsWantItNoContactIsAskedAbout) {
  Add(u"Zoe", u"1");
  Copy();
  EXPECT_EQ(Calls("DialogBox(216"), 0u);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111", u"2 Zoe 1"));
}

TEST_F(MoveContactsTest, AnyOtherValueLeavesEveryContactOutWithoutAsking) {
  state->settings.CToSim_Type = 3;
  Add(u"Zoe", u"1");
  Copy();
  EXPECT_EQ(prompts[kNotAll], 0);
  EXPECT_THAT(CardEntries(), ElementsAre(u"1 Anna 111"));
  EXPECT_EQ(Boxes().back().text, Summary(0, 0, 0));
}

// Names that the card takes in two bytes a character.

TEST_F(MoveContactsTest, ALongNameOutsideTheGsmAlphabetIsCutAfterAWarning) {
  state->settings.Enable_CutName = 1;
  device.sim.SetLengths(20, 16);
  Add(std::u16string(8, u'\u00E1'), u"1");  // 16 bytes of 16
  Add(std::u16string(9, u'\u00EA'), u"2");
  Copy();
  // 16 / 2 - 1 stay.
  EXPECT_EQ(device.sim.Name(2), std::u16string(7, u'\u00E1'));
  EXPECT_EQ(device.sim.Name(3), std::u16string(7, u'\u00EA'));
  ASSERT_THAT(Boxes(), SizeIs(3));
  for (const std::size_t box : {0u, 1u}) {
    EXPECT_EQ(Boxes()[box].text,
              u"For contact names over 16 bytes long, only the first 16 bytes of the name will be "
              u"copied to the SIM.");
    EXPECT_EQ(Boxes()[box].caption, u"Warning");
    EXPECT_EQ(Boxes()[box].style, ui::kBoxWarning);
  }
}

TEST_F(MoveContactsTest, TheOtherSchemeCutsOneCharacterLater) {
  state->settings.Enable_CutName = 1;
  state->settings.Dismiss_NameScheme = 1;
  device.sim.SetLengths(20, 16);
  Add(std::u16string(8, u'\u00E1'), u"1");  // 16 < 17
  Add(std::u16string(9, u'\u00EA'), u"2");  // 18 >= 17: 16 / 2 stay
  Copy();
  EXPECT_EQ(device.sim.Name(2), std::u16string(8, u'\u00E1'));
  EXPECT_EQ(device.sim.Name(3), std::u16string(8, u'\u00EA'));
  EXPECT_THAT(Boxes(), SizeIs(2));
}

TEST_F(MoveContactsTest, TheWarningSpeaksOf16BytesWhateverTheLimit) {
  state->settings.Enable_CutName = 1;
  device.sim.SetLengths(20, 30);
  Add(std::u16string(20, u'\u00E1'), u"1");
  Copy();
  EXPECT_EQ(device.sim.Name(2).size(), 14u);
  EXPECT_TRUE(Boxes()[0].text.starts_with(u"For contact names over 16 bytes long"));
}

TEST_F(MoveContactsTest, AGsmNameIsNeitherWarnedOfNorCut) {
  state->settings.Enable_CutName = 1;
  device.sim.SetLengths(20, 16);
  Add(u"Abcdefghijklmnop \u20AC{}", u"1");
  Copy();
  ASSERT_FALSE(Boxes().empty());
  EXPECT_EQ(Boxes()[0].text.find(u"16 bytes"), std::u16string::npos);
  // 20 characters of 16: the card was given all of them, and refused.
  EXPECT_NE(Boxes()[0].text.find(u"\"Abcdefghijklmnop \u20AC{}\" does not fit"),
            std::u16string::npos);
}

TEST_F(MoveContactsTest, WithoutTheSettingNoNameIsCut) {
  device.sim.SetLengths(20, 16);
  Add(std::u16string(8, u'\u00E1'), u"1");
  Copy();
  EXPECT_EQ(device.sim.Name(2), std::u16string(8, u'\u00E1'));
  EXPECT_THAT(Boxes(), SizeIs(1));
}

}  // namespace
}  // namespace kelpin::contacts
