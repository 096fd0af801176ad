#include "app/list_turn.h"
#include "tests/contacts/copy_out_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What else happens while entries are copied or moved to Contacts.
class CopyOutMeanwhileTest : public CopyOutTest {
 protected:
  // Runs `action` while this one is asked about.
  void AtThePromptFor(std::u16string name, std::function<void()> action) {
    PutContact(name);
    device.screen.ScriptDialog(res::kDialogOverwritePrompt,
                               [action = std::move(action)](ui::Dialog& prompt) {
                                 action();
                                 prompt.Command(res::kOverwriteNo);
                               });
  }
  void Close() {
    Dialog().Close();
    device.screen.RunPending();
  }
};

TEST_F(CopyOutMeanwhileTest, TheScreenIsServedBetweenAnyTwoMovedEntries) {
  constexpr std::uint32_t kMany = 200;
  device.sim.SetCapacity(kMany);
  for (std::uint32_t index = 1; index <= kMany; ++index) {
    device.sim.SetEntry(index, Text(static_cast<int>(index)), u"1");
  }
  Open();
  SelectAll();
  std::size_t deletions = 0;
  std::size_t served = 0;
  device.sim.onDelete = [&](std::uint32_t) {
    EXPECT_EQ(served, deletions);
    ++deletions;
    device.screen.PostToScreen([&] {
      ++served;
      EXPECT_EQ(List().ItemCount(), static_cast<int>(kMany - deletions));
    });
  };
  Move();
  EXPECT_EQ(deletions, kMany);
  EXPECT_EQ(served, kMany);
  EXPECT_EQ(device.contacts.Contacts().size(), kMany);
  ExpectAtRest();
}

TEST_F(CopyOutMeanwhileTest, WhatIsSelectedMeanwhileIsNotMovedAndWhatWasChosenIs) {
  PutThree();
  device.sim.SetEntry(4, u"Dora", u"444");
  Open();
  SelectRows({0, 2});
  device.sim.onDelete = [&](std::uint32_t index) {
    if (index == 1) device.screen.PostToScreen([&] { Select(List().ItemCount() - 1); });
  };
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Cem:333"));
  EXPECT_THAT(Rows(), ElementsAre(u"2|Bert|222", u"4|Dora|444"));
}

TEST_F(CopyOutMeanwhileTest, WhatIsSelectedMeanwhileIsNotSaved) {
  PutThree();
  device.sim.SetEntry(4, u"Dora", u"444");
  Open();
  SelectRows({0, 2});
  AtThePromptFor(u"Anna", [this] { Select(3); });
  Save();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:old", u"Cem:333"));
}

TEST_F(CopyOutMeanwhileTest, NoOtherCommandRuns) {
  PutThree();
  Open();
  SelectRows({0, 1});
  AtThePromptFor(u"Anna", [this] {
    Dialog().Command(res::kCommandSaveToContacts);
    Dialog().Command(res::kCommandMoveToContacts);
    Dialog().Command(res::kCommandRefresh);
    Dialog().Command(res::kCommandDelete);
    Dialog().PressSoftKey(0);
    List().Click(1, 1, ui::kNoModifier);
    List().DoubleClick(1);
    EXPECT_TRUE(app::IsListLoading(*state));
  });
  Save();
  EXPECT_THAT(ran, IsEmpty());
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(device.sim.Entries().size(), 3u);
  ExpectAtRest();
}

TEST_F(CopyOutMeanwhileTest, ASecondSaveIsIgnoredWhileOneRuns) {
  PutThree();
  Open();
  SelectRows({0});
  Dialog().Command(res::kCommandSaveToContacts);
  state->dialog->PostCommand(res::kCommandSaveToContacts);
  device.screen.RunPending();
  EXPECT_EQ(device.kernel.RunHeldThreads(), 1u);
  device.screen.RunPending();
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
}

TEST_F(CopyOutMeanwhileTest, RowsThatGoBeforeItsTurnAreLeftOut) {
  PutThree();
  Open();
  SelectRows({0, 2});
  ASSERT_TRUE(app::TakeList(*state));
  Dialog().Command(res::kCommandMoveToContacts);
  device.screen.RunPending();
  EXPECT_THAT(Contacts(), IsEmpty());  // somebody else has the rows
  List().DeleteItem(0);
  app::GiveListBack(*state);
  device.screen.RunPending();
  EXPECT_THAT(Contacts(), ElementsAre(u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 0, 0)));
}

TEST_F(CopyOutMeanwhileTest, AListThatIsToBeReadAgainStopsBoth) {
  PutThree();
  Open();
  SelectAll();
  device.sim.onDelete = [&](std::uint32_t) { theLoader->StartLoad(); };
  Move();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
  EXPECT_THAT(BoxTexts(), ElementsAre(u"1 of 3 entries are done. The card was changed meanwhile, "
                                      u"so the others were not copied and the list is read "
                                      u"again."));
  device.sim.onDelete = nullptr;
  Load();
  EXPECT_THAT(Rows(), ElementsAre(u"2|Bert|222", u"3|Cem|333"));

  SelectAll();
  AtThePromptFor(u"Bert", [this] { theLoader->StartLoad(); });
  Save();
  Load();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:old"));
  EXPECT_EQ(BoxTexts().back().substr(0, 24), u"1 of 2 entries are done.");
  ExpectStoreLetGo();
  ExpectAtRest();
}

// Closing the window.

TEST_F(CopyOutMeanwhileTest, AMoveThatIsClosedStopsAfterTheEntryInHand) {
  PutThree();
  Open();
  SelectAll();
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  device.sim.onDelete = [&](std::uint32_t index) {
    if (index == 1) device.screen.PostToScreen([&] { Dialog().Close(); });
  };
  Move();
  EXPECT_TRUE(Dialog().Ended());
  EXPECT_THAT(BoxTexts(),
              ElementsAre(u"1 of 3 entries are done, the others are not in Contacts yet.\nStop "
                          u"and close?"));
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111"));
  EXPECT_EQ(device.sim.Entries().size(), 2u);
  ExpectStoreLetGo();
}

TEST_F(CopyOutMeanwhileTest, AMoveThatIsNotToBeClosedGoesOn) {
  PutThree();
  Open();
  SelectAll();
  device.screen.ScriptDismissBox();
  device.sim.onDelete = [&](std::uint32_t index) {
    if (index == 1) device.screen.PostToScreen([&] { Dialog().Close(); });
  };
  Move();
  EXPECT_FALSE(Dialog().Ended());
  EXPECT_TRUE(device.sim.Entries().empty());
  EXPECT_EQ(BoxTexts().back(), Summary(3, 0, 0));
  ExpectAtRest();
}

TEST_F(CopyOutMeanwhileTest, ASaveThatIsClosedEndsTheProgramAfterTheEntryInHand) {
  PutThree();
  Open();
  SelectAll();
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  AtThePromptFor(u"Bert", [this] {
    Close();
    EXPECT_FALSE(Dialog().Ended());  // Bert is in hand
  });
  Save();
  EXPECT_TRUE(Dialog().Ended());
  EXPECT_EQ(Boxes().size(), 1u);  // the question alone
  EXPECT_THAT(Contacts(), ElementsAre(u"Bert:old", u"Anna:111"));
  ExpectStoreLetGo();
}

TEST_F(CopyOutMeanwhileTest, ASaveThatIsNotToBeClosedGoesOn) {
  PutThree();
  Open();
  SelectAll();
  device.screen.ScriptDismissBox();
  AtThePromptFor(u"Bert", [this] { Close(); });
  Save();
  EXPECT_FALSE(Dialog().Ended());
  EXPECT_EQ(BoxTexts().back(), Summary(2, 0, 1));
  ExpectAtRest();
  Close();
  EXPECT_TRUE(Dialog().Ended());  // at rest nobody is asked
}

}  // namespace
}  // namespace kelpin::contacts
