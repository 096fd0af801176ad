#include "tests/contacts/copy_out_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SaveToContactsTest : public CopyOutTest {};

TEST_F(SaveToContactsTest, WithoutASelectionNothingHappens) {
  PutThree();
  Open();
  SelectRows({});
  state->dialog->PostCommand(res::kCommandSaveToContacts);
  device.journal.Clear();
  Load();
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Contacts(), IsEmpty());
  EXPECT_EQ(Calls("CoInitializeEx"), 0u);
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, TheSelectedEntriesAreCopiedAndTold) {
  PutThree();
  Open();
  SelectRows({0, 2});
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Cem:333"));
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text, Summary(2, 0, 0));
  EXPECT_EQ(Boxes()[0].caption, u"Info");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxNotice);
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(device.sim.Entries().size(), 3u);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{1, 2, 3}));
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, AnEntryGoesToTheContactsOwnFields) {
  device.sim.SetEntry(4, u"Dora", u"+49171");
  Open();
  Save();
  ASSERT_EQ(device.contacts.Contacts().size(), 1u);
  const test::FakeContact contact = device.contacts.Contacts().begin()->second;
  test::FakeContact expected;
  expected[ContactProperty::kLastName] = u"Dora";
  expected[ContactProperty::kFileAs] = u"Dora";
  expected[ContactProperty::kMobileTelephoneNumber] = u"+49171";
  EXPECT_EQ(contact, expected);
}

TEST_F(SaveToContactsTest, ItWorksOnAThreadOfItsOwn) {
  PutThree();
  Open();
  Dialog().Command(res::kCommandSaveToContacts);
  device.screen.RunPending();
  EXPECT_THAT(Contacts(), IsEmpty());  // the worker has not run yet
  EXPECT_FALSE(SoftKeyEnabled(0));
  EXPECT_FALSE(SoftKeyEnabled(1));
  Load();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, WithoutAThreadEverythingIsAsBefore) {
  PutThree();
  Open();
  device.failures.FailCallOf("CreateThread", 1);
  Save();
  ASSERT_TRUE(device.failures.Failed());
  EXPECT_THAT(Contacts(), IsEmpty());
  ExpectAtRest();
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
}

TEST_F(SaveToContactsTest, RowsAreTakenFromTheTopAndLoseTheirSelection) {
  PutThree();
  Open();
  SelectAll();
  List().SetSelectionMark(1);
  Texts listed;
  device.screen.OnBox([&](const test::ShownBox&) { EXPECT_EQ(List().SelectedCount(), 0); });
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222", u"Cem:333"));
  EXPECT_EQ(List().SelectedCount(), 1);
}

TEST_F(SaveToContactsTest, TheMarkedRowIsSelectedFocusedAndScrolledTo) {
  PutThree();
  Open();
  SelectAll();
  List().SetSelectionMark(1);
  List().TakeEnsureVisible();
  Save();
  EXPECT_EQ(List().ItemState(1) & (ui::kItemSelected | ui::kItemFocused),
            ui::kItemSelected | ui::kItemFocused);
  EXPECT_EQ(List().TakeEnsureVisible(), 1);
  EXPECT_TRUE(Menu().IsEnabled(res::kCommandSaveToContacts));
}

TEST_F(SaveToContactsTest, CountersStartAtZeroInEveryRun) {
  PutThree();
  Open();
  SelectAll();
  Save();
  SelectRows({0});
  AnswerPrompt(res::kOverwriteNo);
  Save();
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(3, 0, 0), Summary(0, 0, 1)));
}

// What fails.

TEST_F(SaveToContactsTest, ContactsThatCannotBeOpenedEndItWithoutAWord) {
  PutThree();
  Open();
  SelectRows({1});
  device.failures.FailCallOf("Logon", 1);
  List().TakeEnsureVisible();
  Save();
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(List().TakeEnsureVisible(), -1);  // nothing is selected anew
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, ARowWithoutAnEntryEndsItWithoutASummary) {
  PutThree();
  Open();
  List().InsertItem(1, u"", nullptr);
  SelectRows({0, 1, 2});
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(List().ItemState(2) & ui::kItemSelected, ui::kItemSelected);
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, AnEntryThatCannotBeSavedIsCountedNowhereAndTheRestIsCopied) {
  PutThree();
  Open();
  SelectAll();
  device.failures.FailCallOf("Save", 2);
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(2, 0, 0)));
}

// Adding only.

TEST_F(SaveToContactsTest, WhereNothingIsAskedANameThatExistsIsSkipped) {
  SetSwitch(u"Disable_Prompt_Contact_Exist", 1);
  PutThree();
  PutContact(u"Bert");
  Open();
  SelectAll();
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Bert:old", u"Anna:111", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(AddedSummary(2, 1)));
  EXPECT_EQ(Boxes()[0].caption, u"Info");
}

TEST_F(SaveToContactsTest, WhereNothingIsAskedAFailureCountsAsExisting) {
  SetSwitch(u"Disable_Prompt_Contact_Exist", 1);
  PutThree();
  Open();
  SelectAll();
  device.failures.FailCallOf("Save", 1);
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Bert:222", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(AddedSummary(2, 1)));
}

// The menu.

TEST_F(SaveToContactsTest, ItIsInTheMenuWhateverIsSwitchedOffAndMovingOnlyWhereItIsSwitchedOn) {
  SetSwitch(u"Enable_Move_Func", 2);
  Open();
  EXPECT_TRUE(Menu().Contains(res::kCommandSaveToContacts));
  EXPECT_FALSE(Menu().Contains(res::kCommandMoveToContacts));
  EXPECT_FALSE(Menu().Contains(res::kCommandMoveContactsToSim));
}

// A new card.

TEST_F(SaveToContactsTest, ANewCardIsCopiedWhenTheUserWantsIt) {
  PutThree();
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  PutContact(u"Cem");
  AnswerPrompt(res::kOverwriteNo);
  Open();  // the load
  Load();  // the copy that it asked for
  EXPECT_THAT(BoxTexts(), ElementsAre(u"Do you want to copy SIM card entries to your Contacts?",
                                      Summary(2, 0, 1)));
  EXPECT_THAT(Contacts(), ElementsAre(u"Cem:old", u"Anna:111", u"Bert:222"));
  ExpectAtRest();
}

TEST_F(SaveToContactsTest, ANewCardIsLeftAloneWhenTheUserSaysNo) {
  PutThree();
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  device.screen.ScriptDismissBox();
  Open();
  Load();
  Refresh();
  Load();
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_THAT(Contacts(), IsEmpty());
}

}  // namespace
}  // namespace kelpin::contacts
