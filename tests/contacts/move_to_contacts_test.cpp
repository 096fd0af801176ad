#include <optional>

#include "tests/contacts/copy_out_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MoveToContactsTest : public CopyOutTest {
 protected:
  // Runs `action` when the card is told to empty this location.
  void AtDeletionOf(std::uint32_t location, std::function<void()> action) {
    device.sim.onDelete = [location, action = std::move(action)](std::uint32_t index) {
      if (index == location) action();
    };
  }
  // The card leaves every question about its fields unanswered.
  void TellNothingOfTheFields() {
    constexpr std::uint8_t kFileCommand = 128;
    using Answer = test::FakeRadio::Answer;
    device.radio.SetResponder([](const test::FakeRadio::Command& command) {
      const bool onFile = !command.block.empty() && command.block[0] == kFileCommand;
      return onFile ? std::optional<Answer>(Answer{platform::kRilResultError, {}}) : std::nullopt;
    });
  }
  static constexpr std::u16string_view kStillThere =
      u"\n\n1 of them are still on the SIM card as well, because not all they hold could be read "
      u"or is in Contacts.";
};

TEST_F(MoveToContactsTest, WithoutASelectionTheCardIsNotEvenAsked) {
  PutThree();
  Open();
  SelectRows({});
  device.journal.Clear();
  state->dialog->PostCommand(res::kCommandMoveToContacts);
  device.screen.RunPending();
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 0u);
  EXPECT_THAT(Boxes(), IsEmpty());
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, ACardThatIsNotReadyEndsItWithItsError) {
  PutThree();
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", platform::SimResult::kNotReady);
  device.journal.Clear();
  Move();
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM isn't yet ready to perform the requested operation. "));
  EXPECT_EQ(Calls("CoInitializeEx"), 0u);
  EXPECT_EQ(OnTheCard().size(), 3u);
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, ContactsThatCannotBeOpenedOnlyTakeTheCursorAway) {
  PutThree();
  Open();
  device.failures.FailCallOf("CoInitializeEx", 1);
  Move();
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(OnTheCard().size(), 3u);
  EXPECT_EQ(List().SelectedCount(), 1);
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, WhatReachedContactsLeavesTheCardAndTheList) {
  PutThree();
  Open();
  SelectRows({0, 2});
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(2u));
  EXPECT_THAT(Rows(), ElementsAre(u"2|Bert|222"));
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text, Summary(2, 0, 0));
  EXPECT_EQ(Boxes()[0].caption, u"Info");
  EXPECT_EQ(Boxes()[0].style, ui::kBoxNotice);
  EXPECT_EQ(state->simPhonebook.Slot(1), 0);
  EXPECT_EQ(state->simPhonebook.Slot(2), 1);
  EXPECT_EQ(state->simPhonebook.Slot(3), 0);
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, TheLastEntryLeavesAnEmptyList) {
  PutThree();
  Open();
  SelectAll();
  Move();
  EXPECT_THAT(Rows(), IsEmpty());
  EXPECT_THAT(OnTheCard(), IsEmpty());
  EXPECT_FALSE(Menu().IsEnabled(res::kCommandMoveToContacts));
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, TheMarkedRowOfThoseLeftIsSelected) {
  PutThree();
  Open();
  SelectRows({0});
  List().SetSelectionMark(2);
  Move();
  EXPECT_EQ(List().ItemState(1) & (ui::kItemSelected | ui::kItemFocused),
            ui::kItemSelected | ui::kItemFocused);
  EXPECT_EQ(RowText(1), u"3|Cem|333");
  EXPECT_EQ(List().TakeEnsureVisible(), 1);
}

TEST_F(MoveToContactsTest, ItNeverShowsProgressAndNeedsNoThread) {
  SetSwitch(u"Show_ProgressBar", 1);
  PutThree();
  Open();
  SelectAll();
  device.journal.Clear();
  Move();
  EXPECT_EQ(Calls("CreateThread"), 0u);
  EXPECT_EQ(Calls("DialogBox"), 0u);
  EXPECT_THAT(OnTheCard(), IsEmpty());
}

TEST_F(MoveToContactsTest, ItsOwnDeletionsAreNotCollected) {
  PutThree();
  Open();
  SelectAll();
  std::vector<std::uint32_t> collecting;
  device.sim.onDelete = [&](std::uint32_t) {
    collecting.push_back(state->simPhonebook.CollectDeletions());
  };
  device.screen.OnBox([&](const test::ShownBox&) {
    EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
    EXPECT_EQ(device.contacts.OpenUses(), 0);
    EXPECT_FALSE(device.screen.WaitCursor());
  });
  Move();
  EXPECT_THAT(collecting, ElementsAre(0u, 0u, 0u));
}

TEST_F(MoveToContactsTest, WhereNothingIsAskedDuplicatesStay) {
  SetSwitch(u"Disable_Prompt_Contact_Exist", 1);
  PutThree();
  PutContact(u"Bert");
  Open();
  SelectAll();
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Bert:old", u"Anna:111", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(2u));
  EXPECT_THAT(BoxTexts(), ElementsAre(AddedSummary(2, 1)));
}

// Of two entries of one name the first is in Contacts alone by the time the second comes. Rows of
// equal names stand with the last location on top.
TEST_F(MoveToContactsTest, TheContactOfAMovedEntryIsNotOverwrittenByAnotherOfItsName) {
  PutThree();
  device.sim.SetEntry(4, u"Anna", u"444");
  Open();
  SelectAll();
  device.screen.ScriptEveryDialog(res::kDialogOverwritePrompt, [this](ui::Dialog& dialog) {
    prompts.push_back(dialog.Text(res::kOverwriteText));
    dialog.Command(res::kOverwriteYes);
  });
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:444", u"Bert:222", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(1u));
  EXPECT_THAT(Rows(), ElementsAre(u"1|Anna|111"));
  EXPECT_THAT(prompts, IsEmpty());
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(3, 0, 1)));
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, YesToAllOverwritesNoContactOfAMovedEntryEither) {
  PutThree();
  device.sim.SetEntry(4, u"Anna", u"444");
  PutContact(u"Anna");
  PutContact(u"Bert");
  Open();
  SelectAll();
  AnswerPrompt(res::kOverwriteYes, true);
  Move();
  // The first Anna took the old contact's place with the user's Yes, the second takes nobody's.
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:444", u"Bert:222", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(1u));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 2, 1)));
}

TEST_F(MoveToContactsTest, TheSecondOfANameCanBeMovedOverTheFirstInARunOfItsOwn) {
  PutThree();
  device.sim.SetEntry(4, u"Anna", u"444");
  Open();
  SelectAll();
  Move();
  AnswerPrompt(res::kOverwriteYes);
  SelectAll();
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), IsEmpty());
}

// Fields that nobody sees.

TEST_F(MoveToContactsTest, EntriesStayOfACardThatDidNotTellWhatFieldsItHas) {
  PutThree();
  TellNothingOfTheFields();
  Open();
  SelectRows({0});
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
  EXPECT_EQ(OnTheCard().size(), 3u);
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 0, 0) + std::u16string(kStillThere)));
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, ACardWithoutExtendedFieldsIsMovedFromAfterEveryLoad) {
  PutThree();
  Open();
  Refresh();
  EXPECT_TRUE(state->extPhonebook.SeesFieldsOf(1));
  Refresh();
  EXPECT_TRUE(state->extPhonebook.SeesFieldsOf(1));
  SelectAll();
  Move();
  EXPECT_THAT(OnTheCard(), IsEmpty());
}

TEST_F(MoveToContactsTest, WithEveryFieldSwitchedOffNoneIsMissed) {
  SetSwitch(u"Disable_ANR", 1);
  SetSwitch(u"Disable_ANRA", 1);
  SetSwitch(u"Disable_EMAIL", 1);
  PutThree();
  TellNothingOfTheFields();
  Open();
  SelectAll();
  Move();
  EXPECT_THAT(OnTheCard(), IsEmpty());
}

TEST_F(MoveToContactsTest, AnEntryThatCouldNotBeSavedStays) {
  PutThree();
  Open();
  SelectAll();
  device.failures.FailCallOf("Save", 2);
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(2u));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(2, 0, 0)));
}

TEST_F(MoveToContactsTest, AnEntryThatContactsDoesNotGiveBackStaysAndTheSummarySaysSo) {
  PutThree();
  Open();
  SelectAll();
  device.failures.FailCallOf("GetItemFromOidEx", 2);  // the second entry's
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222", u"Cem:333"));
  EXPECT_THAT(OnTheCard(), ElementsAre(2u));
  EXPECT_THAT(Rows(), ElementsAre(u"2|Bert|222"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(3, 0, 0) + std::u16string(kStillThere)));
}

TEST_F(MoveToContactsTest, ANumberThatContactsDidNotKeepStaysOnTheCard) {
  PutThree();
  Open();
  SelectRows({0});
  // FirstName, MiddleName, LastName, CompanyName, FileAs, then the mobile number.
  device.failures.FailCallOf("Put", 6);
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:"));
  EXPECT_EQ(OnTheCard().size(), 3u);
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 0, 0) + std::u16string(kStillThere)));
}

TEST_F(MoveToContactsTest, AnEntryThatAnotherProgramChangedMeanwhileStays) {
  PutThree();
  Open();
  SelectAll();
  device.sim.SetEntry(2, u"Bertha", u"222");  // behind the list's back
  device.sim.SetEntry(3, u"Cem", u"999");
  Move();
  EXPECT_THAT(OnTheCard(), ElementsAre(2u, 3u));
  EXPECT_EQ(device.sim.Name(2), u"Bertha");
  EXPECT_EQ(device.sim.Number(3), u"999");
}

TEST_F(MoveToContactsTest, AnInternationalNumberIsMovedWhereverItsPlusStands) {
  device.sim.SetEntry(1, u"Short code", u"*31#+49171");
  Open();
  ASSERT_THAT(Rows(), ElementsAre(u"1|Short code|+*31#49171"));
  Move();
  EXPECT_THAT(OnTheCard(), IsEmpty());
}

TEST_F(MoveToContactsTest, ACardThatRefusesToDeleteEndsItWithItsErrorAlone) {
  PutThree();
  Open();
  SelectAll();
  AtDeletionOf(2, [this] {
    device.sim.SetResult("SimDeletePhonebookEntry", platform::SimResult::kMemoryFailure);
  });
  device.screen.OnBox([&](const test::ShownBox&) {
    EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
    EXPECT_EQ(device.contacts.OpenUses(), 0);
    EXPECT_FALSE(device.screen.WaitCursor());
  });
  Move();
  EXPECT_THAT(BoxTexts(), ElementsAre(u"Storage memory failure."));
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222"));
  EXPECT_THAT(OnTheCard(), ElementsAre(2u, 3u));
  EXPECT_THAT(Rows(), ElementsAre(u"2|Bert|222", u"3|Cem|333"));
  EXPECT_EQ(List().ItemState(1) & ui::kItemSelected, ui::kItemSelected);  // not reached
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, ARowWithoutAnEntryEndsItWithoutASummary) {
  PutThree();
  Open();
  List().InsertItem(1, u"", nullptr);
  SelectRows({0, 1, 2});
  Move();
  EXPECT_THAT(OnTheCard(), ElementsAre(2u, 3u));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_EQ(state->simPhonebook.CollectDeletions(), 1u);
  ExpectStoreLetGo();
  ExpectAtRest();
}

TEST_F(MoveToContactsTest, EachEntryIsInContactsAndReadBackBeforeItIsDeleted) {
  PutThree();
  Open();
  SelectRows({0});
  device.journal.Clear();
  Move();
  const std::size_t saved = Position("Save()");
  const std::size_t readBack = Position("GetItemFromOidEx");
  const std::size_t readCard = Position("SimReadPhonebookEntry");
  const std::size_t deleted = Position("SimDeletePhonebookEntry");
  EXPECT_LT(Position("SimGetPhonebookStatus"), Position("CoInitializeEx"));
  EXPECT_LT(saved, readBack);
  EXPECT_LT(readBack, readCard);
  EXPECT_LT(readCard, deleted);
  EXPECT_LT(deleted, Position("CoUninitialize"));
}

}  // namespace
}  // namespace kelpin::contacts
