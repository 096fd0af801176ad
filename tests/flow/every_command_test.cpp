#include "program.h"
#include "tests/views/call_fixture.h"

// Every command of the main window with what the program runs for it.
namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;
using testing::IsEmpty;

struct Opening {
  int command;
  int dialog;
};
// On a Pocket PC.
constexpr Opening kOpenings[] = {{312, 202}, {314, 203},  {316, 214},  {1076, 215}, {345, 212},
                                 {318, 205}, {1108, 205}, {1083, 368}, {1084, 371}, {323, 208},
                                 {348, 213}, {324, 207},  {325, 206},  {322, 204}};

class EveryCommandTest : public CallTest {
 protected:
  EveryCommandTest() {
    for (const char16_t* const name :
         {u"Enable_SDN", u"Enable_AAS", u"Enable_GAS", u"Enable_Move_Func", u"Mobile_Tel_Flag"}) {
      SetSwitch(name, 1);
    }
    wiring.fillCommands = ProgramWiring().fillCommands;
  }
  void OpenList() {
    OpenMain();  // threads are real from here on
    SelectEntry(1);
    device.screen.RunPending();
    device.journal.Clear();
  }
  // Gives the command; the dialog that it opens is looked at and closed.
  bool Opens(const Opening& opening) {
    bool opened = false;
    device.screen.ScriptDialog(opening.dialog, [&](ui::Dialog& dialog) {
      opened = true;
      EXPECT_EQ(dialog.Owner(), state->mainDialog) << opening.command;
      EXPECT_EQ(device.screen.Front().get(), &dialog);
      dialog.Close();
    });
    Dialog().Command(opening.command);
    EXPECT_EQ(device.screen.OpenDialogs(), 1u) << opening.command;  // modal: gone when it returns
    device.screen.RunPending();
    return opened;
  }
};

TEST_F(EveryCommandTest, OpensItsDialogOverTheMainWindow) {
  OpenList();
  for (const Opening& opening : kOpenings) EXPECT_TRUE(Opens(opening)) << opening.command;
  EXPECT_THAT(BoxTexts(), IsEmpty());
}

TEST_F(EveryCommandTest, ASmartphoneTellsOfItsCardInADialogOfItsOwn) {
  OpenList();
  state->isSmartphone = 1;
  EXPECT_TRUE(Opens({324, 209}));
}

TEST_F(EveryCommandTest, TheTalkKeyOpensTheCallDialog) {
  OpenList();
  bool opened = false;
  device.screen.ScriptDialog(214, [&](ui::Dialog& dialog) {
    opened = true;
    dialog.Close();
  });
  EXPECT_TRUE(Dialog().HotKey(0x72, ui::kNoModifier));
  EXPECT_TRUE(opened);
}

// A dialog that opened here would fail the test: nobody waits for it.
TEST_F(EveryCommandTest, ACardThatIsNotReadyIsToldAndNothingOpens) {
  OpenList();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  std::size_t told = 0;
  for (const int command :
       {312, 314, 315, 316, 1076, 1107, 320, 323, 348, 1083, 1084, 324, 318, 1108}) {
    Dialog().Command(command);
    device.screen.RunPending();
    ++told;
    ASSERT_EQ(Boxes().size(), told) << command;
    EXPECT_EQ(Boxes().back().text, u"SIM is busy.");
    EXPECT_EQ(Boxes().back().owner, state->mainDialog);
  }
  EXPECT_EQ(Calls("CreateThread"), 0u);
  EXPECT_EQ(Calls("SimDeletePhonebookEntry"), 0u);
  EXPECT_EQ(List().ItemCount(), 4);
}

TEST_F(EveryCommandTest, ACardWhoseLimitsAreNotKnownTakesNoContacts) {
  OpenList();
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
  for (const int command : {318, 1108, 324}) Dialog().Command(command);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy.", u"SIM is busy.", u"SIM is busy."));
}

TEST_F(EveryCommandTest, WhatNeedsNoCardOpensWithoutOne) {
  OpenList();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  for (const Opening& opening : {Opening{345, 212}, Opening{325, 206}, Opening{322, 204}}) {
    EXPECT_TRUE(Opens(opening)) << opening.command;
  }
  EXPECT_THAT(BoxTexts(), IsEmpty());
}

TEST_F(EveryCommandTest, AFullCardIsToldInPlaceOfANewEntryWhereThatIsWanted) {
  SetSwitch(u"SIM_Full_Detect", 1);
  device.sim.SetCapacity(3);
  PutThree();
  OpenMain();
  Dialog().Command(312);
  EXPECT_THAT(BoxTexts(), ElementsAre(u"The SIM is full. Delete some SIM contacts and try again."));
  state->settings.SIM_Full_Detect = 0;
  EXPECT_TRUE(Opens({312, 202}));
  EXPECT_EQ(Boxes().size(), 1u);
}

TEST_F(EveryCommandTest, TheWholeOfANewCardIsCopiedAfterAYes) {
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  Open();
  Load();  // the copy's own thread
  std::vector<std::u16string> names;
  for (const auto& [oid, contact] : device.contacts.Contacts()) {
    names.push_back(contact[platform::ContactProperty::kLastName]);
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre(u"Anna", u"Bert", u"Cem", u"Dora"));
  EXPECT_EQ(device.sim.Entries().size(), 4u);
  EXPECT_EQ(Boxes().size(), 2u);  // the question, and what came of it
}

}  // namespace
}  // namespace kelpin::views
