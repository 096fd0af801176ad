#include "app/list_loader.h"

#include "tests/app/app_fixture.h"

namespace kelpin::app {
namespace {

using platform::SimResult;
using Texts = std::vector<std::u16string>;

class ListLoaderTest : public AppTest {
 protected:
  void PutEntries(std::uint32_t first, std::uint32_t last) {
    for (std::uint32_t index = first; index <= last; ++index) {
      device.sim.SetEntry(index, u"Name", u"100");
    }
  }
  // What the radio has, apart from what the card reports.
  void PutRadioEntry(std::uint32_t index, test::FakeRadio::Entry entry) {
    device.radio.SetEntrySource(nullptr);
    device.radio.SetEntry(index, std::move(entry));
  }
  void UseExtendedLoader() { SetDriverValue(u"QRVmaskW1", 0x00010000); }
  // Fails the bulk read that begins at this location.
  void FailBatchFrom(std::uint32_t first) {
    device.radio.SetResponder([first](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      if (command.name == "RIL_ReadPhonebookEntries" && command.first == first) {
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
  }
  std::size_t StatusCalls() { return Calls("SimGetPhonebookStatus"); }
};

TEST_F(ListLoaderTest, ALoadHidesTheListAndTurnsItsCommandsOff) {
  device.sim.SetEntry(1, u"Anna", u"1");
  bool headerFirst = false;
  bool hidden = false;
  device.radio.SetResponder([&](const test::FakeRadio::Command& command) {
    if (command.name == "RIL_SendRestrictedSimCmd") {
      headerFirst = !IsListLoading(*state) && !List().Visible();
    }
    if (command.name == "RIL_ReadPhonebookEntries") {
      hidden = true;
      EXPECT_FALSE(List().Visible());
      EXPECT_TRUE(IsListLoading(*state));
      EXPECT_FALSE(List().Notifying());
      EXPECT_TRUE(device.screen.WaitCursor());
      EXPECT_FALSE(Menu().IsEnabled(res::kCommandRefresh));
      EXPECT_FALSE(SoftKeyEnabled(0));
      EXPECT_FALSE(SoftKeyEnabled(1));
    }
    return std::optional<test::FakeRadio::Answer>();
  });
  Open();
  EXPECT_TRUE(headerFirst);
  EXPECT_TRUE(hidden);
  ExpectAtRest();
}

TEST_F(ListLoaderTest, HeaderThenLayoutThenEntries) {
  device.sim.SetEntry(1, u"Anna", u"1");
  wiring.loadLayout = [this](AppState& app) {
    device.journal.Add("layout");
    EXPECT_TRUE(IsListLoading(app));
  };
  Make();
  Open();
  EXPECT_LT(Position("RIL_SendRestrictedSimCmd"), Position("layout"));
  EXPECT_LT(Position("layout"), Position("RIL_ReadPhonebookEntries"));
  // Status, then capabilities, both after the layout.
  const std::vector<std::string> entries = device.journal.Entries();
  const auto layout = std::find(entries.begin(), entries.end(), "layout");
  const auto status = std::find(layout, entries.end(), "SimGetPhonebookStatus(2, 16)");
  const auto caps = std::find(layout, entries.end(), "SimGetDevCaps(2, 63)");
  ASSERT_NE(caps, entries.end());
  EXPECT_LT(status, caps);
  Refresh();
  EXPECT_EQ(Calls("layout"), 2u);
}

TEST_F(ListLoaderTest, TheDriversMaskChoosesTheLoader) {
  device.sim.SetEntry(1, u"Anna", u"1");
  Open();
  EXPECT_EQ(Batches(), (std::vector<std::string>{"1-10"}));
  EXPECT_EQ(Calls("RIL_DevSpecific(1, 167"), 0u);
  EXPECT_EQ(Rows(), Texts{u"1|Anna|1"});
}

TEST_F(ListLoaderTest, TheExtendedLoaderAsksItsOwnWay) {
  UseExtendedLoader();
  device.sim.SetCapacity(15);
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetEntry(15, u"Bert", u"2");
  Open();
  EXPECT_TRUE(Batches().empty());
  EXPECT_EQ(device.journal.Entries("RIL_DevSpecific"),
            (std::vector<std::string>{"RIL_DevSpecific(1, 167, 1, 10)",
                                      "RIL_DevSpecific(1, 167, 11, 15)"}));
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|1", u"15|Bert|2"}));
}

TEST_F(ListLoaderTest, AnInternationalNumberHasItsPlus) {
  device.sim.SetUsed(4);
  PutRadioEntry(1, {u"A", u"4930123", 1, 1, {}});
  PutRadioEntry(2, {u"B", u"030123", 0, 1, {}});
  PutRadioEntry(3, {u"C", u"555", 2, 1, {}});
  PutRadioEntry(4, {u"D %s %d", u"", 1, 1, {}});
  Open();
  EXPECT_EQ(Rows(), (Texts{u"1|A|+4930123", u"2|B|030123", u"3|C|555", u"4|D %s %d|+"}));
}

TEST_F(ListLoaderTest, AnEmptyCardIsNotReadAndItsMapIsFree) {
  Open();
  EXPECT_TRUE(Batches().empty());
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_EQ(state->simPhonebook.FirstFreeSlot(), 1u);
  EXPECT_EQ(List().Message().text, u"No entries on this card");
  EXPECT_EQ(List().Message().total, 0);
  ExpectAtRest();
}

TEST_F(ListLoaderTest, AnEmptyCardsHintNamesOnlyWhatCanBePressed) {
  std::erase(known, res::kCommandNew);
  Open();
  EXPECT_EQ(List().Message().text, u"No entries on this card");
  EXPECT_EQ(List().Message().hint, u"");
  theCommands->Register(res::kCommandNew, [] {});
  Refresh();
  EXPECT_EQ(List().Message().hint, u"Press New to add one, or Contacts to SIM... in the menu.");
}

TEST_F(ListLoaderTest, AFullCardIsReadTenLocationsAtATime) {
  device.sim.SetCapacity(250);
  PutEntries(1, 250);
  Open();
  const std::vector<std::string> batches = Batches();
  ASSERT_EQ(batches.size(), 25u);
  EXPECT_EQ(batches.front(), "1-10");
  EXPECT_EQ(batches[1], "11-20");
  EXPECT_EQ(batches.back(), "241-250");
  EXPECT_EQ(List().ItemCount(), 250);
}

TEST_F(ListLoaderTest, TheLastBatchEndsWithTheCard) {
  device.sim.SetCapacity(255);
  PutEntries(1, 255);
  Open();
  ASSERT_EQ(Batches().size(), 26u);
  EXPECT_EQ(Batches().back(), "251-255");
}

TEST_F(ListLoaderTest, ASmallCardIsReadAtOnce) {
  device.sim.SetCapacity(7);
  PutEntries(7, 7);
  Open();
  EXPECT_EQ(Batches(), (std::vector<std::string>{"1-7"}));
}

TEST_F(ListLoaderTest, ReadingStopsWithTheLastUsedEntry) {
  device.sim.SetCapacity(250);
  PutEntries(1, 9);
  PutEntries(11, 13);
  PutEntries(200, 201);
  device.sim.SetUsed(12);
  Open();
  EXPECT_EQ(Batches(), (std::vector<std::string>{"1-10", "11-20"}));
  EXPECT_EQ(List().ItemCount(), 12);
}

TEST_F(ListLoaderTest, EntriesBeyondTheCapacityAreIgnoredButCounted) {
  device.sim.SetCapacity(20);
  device.sim.SetUsed(3);
  // The radio answers the first batch with entries that the card says it does not have.
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.name == "RIL_ReadPhonebookEntries") {
      const std::uint32_t indexes[] = {20, 21, 22};
      for (const std::uint32_t index : indexes) {
        platform::RilPhonebookEntry entry;
        entry.index = index;
        entry.text[0] = u'x';
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&entry);
        if (!answer) answer.emplace();
        answer->data.insert(answer->data.end(), bytes, bytes + sizeof(entry));
      }
    }
    return answer;
  });
  Open();
  EXPECT_EQ(Batches(), (std::vector<std::string>{"1-10"}));
  EXPECT_EQ(Rows(), Texts{u"20|x|"});
  EXPECT_EQ(state->simPhonebook.Slot(20), 1);
  EXPECT_EQ(state->simPhonebook.Slot(21), 0);
}

TEST_F(ListLoaderTest, AFilledListIsSortedByNameWithItsFirstRowSelected) {
  device.sim.SetEntry(1, u"cem", u"1");
  device.sim.SetEntry(2, u"Anna", u"2");
  device.sim.SetEntry(3, u"\u0412\u0435\u0440\u0430", u"3");
  device.sim.SetEntry(4, u"Bert", u"4");
  Make();
  state->sortColumn = 2;
  Open();
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{2, 4, 1, 3}));
  EXPECT_EQ(state->sortColumn, 1);
  EXPECT_EQ(List().SortArrowColumn(), 1);
  EXPECT_EQ(List().SortArrowDirection(), ui::SortArrow::kAscending);
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(List().ItemState(0), ui::kItemSelected | ui::kItemFocused);
  EXPECT_EQ(List().TakeEnsureVisible(), 0);
  ExpectAtRest();
}

TEST_F(ListLoaderTest, TheDirectionOutlivesALoad) {
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetEntry(2, u"Bert", u"2");
  Open();
  List().ClickHeader(kColumnNumber);
  Refresh();
  EXPECT_EQ(state->sortColumn, 1);
  EXPECT_EQ(RowIndexes(), (std::vector<std::uint32_t>{2, 1}));
  EXPECT_EQ(List().SortArrowDirection(), ui::SortArrow::kDescending);
}

TEST_F(ListLoaderTest, ReadEntriesMarkTheirLocations) {
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetEntry(3, u"Bert", u"2");
  Open();
  EXPECT_EQ(state->simPhonebook.Slot(1), 1);
  EXPECT_EQ(state->simPhonebook.Slot(2), 0);
  EXPECT_EQ(state->simPhonebook.Slot(3), 1);
  EXPECT_EQ(state->simPhonebook.FirstFreeSlot(), 2u);
}

TEST_F(ListLoaderTest, AHiddenEntryTakesItsLocationButNoRow) {
  UseExtendedLoader();
  device.sim.SetUsed(3);
  PutRadioEntry(1, {u"Seen", u"1", 0, 1, 0});
  PutRadioEntry(2, {u"Hidden", u"2", 0, 1, 1});
  PutRadioEntry(3, {u"Hidden too", u"3", 0, 1, 0x80000000});
  Open();
  EXPECT_EQ(Rows(), Texts{u"1|Seen|1"});
  EXPECT_EQ(state->simPhonebook.Slot(2), 1);
  EXPECT_EQ(state->simPhonebook.Slot(3), 1);
}

TEST_F(ListLoaderTest, AHiddenFlagThatTheMaskDoesNotNameDoesNotCount) {
  UseExtendedLoader();
  device.sim.SetUsed(1);
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.name == "RIL_DevSpecific") {
      platform::RilPhonebookEntryEx entry;
      entry.params = 0xFFFFFFF7;  // everything but the flag
      entry.index = 4;
      entry.text[0] = u'x';
      entry.hidden = 1;
      const auto* bytes = reinterpret_cast<const std::uint8_t*>(&entry);
      answer.emplace().data.assign(bytes, bytes + sizeof(entry));
    }
    return answer;
  });
  Open();
  EXPECT_EQ(Rows(), Texts{u"4|x|"});
}

TEST_F(ListLoaderTest, TextsWithoutAnEndAreCutToTheirRoom) {
  device.sim.SetUsed(1);
  device.radio.SetResponder([](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.name == "RIL_ReadPhonebookEntries") {
      platform::RilPhonebookEntry entry;
      entry.index = 1;
      entry.addressType = 1;
      for (char16_t& unit : entry.text) unit = u'n';
      for (char16_t& unit : entry.address) unit = u'5';
      const auto* bytes = reinterpret_cast<const std::uint8_t*>(&entry);
      answer.emplace().data.assign(bytes, bytes + sizeof(entry));
      answer->data.push_back(0x77);  // and half a record behind it
    }
    return answer;
  });
  Open();
  ASSERT_EQ(List().ItemCount(), 1);
  EXPECT_EQ(List().ItemText(0, kColumnName), std::u16string(255, u'n'));
  EXPECT_EQ(List().ItemText(0, kColumnNumber), u"+" + std::u16string(254, u'5'));
}

// Failures.

TEST_F(ListLoaderTest, AStatusThatFailsIsShownAndEndsTheLoad) {
  device.sim.SetEntry(1, u"Anna", u"1");
  ASSERT_EQ(Start(), 1);
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  Load();
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
  EXPECT_EQ(Boxes()[0].owner, state->mainDialog);
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_TRUE(Batches().empty());
  EXPECT_EQ(List().Message().text, u"The card could not be read");
  EXPECT_EQ(List().Message().hint, u"Press Refresh in the menu to try again.");
  ExpectAtRest();
}

TEST_F(ListLoaderTest, CapabilitiesThatFailAreShownAndEndTheLoad) {
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimFailure);
  Open();
  EXPECT_EQ(BoxTexts(), Texts{u"SIM failure was detected. "});
  EXPECT_EQ(List().ItemCount(), 0);
  EXPECT_TRUE(Batches().empty());
  ExpectAtRest();
}

TEST_F(ListLoaderTest, ABatchThatFailsShowsTheCardsCodeAndKeepsTheRows) {
  device.sim.SetCapacity(30);
  PutEntries(1, 30);
  FailBatchFrom(11);
  bool busy = false;
  device.radio.SetResponder([&](const test::FakeRadio::Command& command) {
    std::optional<test::FakeRadio::Answer> answer;
    if (command.name == "RIL_ReadPhonebookEntries" && command.first == 11) {
      busy = true;
      device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
      answer.emplace().code = platform::kRilResultError;
    }
    return answer;
  });
  Open();
  EXPECT_TRUE(busy);
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
  EXPECT_EQ(Batches(), (std::vector<std::string>{"1-10", "11-20"}));
  EXPECT_EQ(List().ItemCount(), 10);
  ExpectAtRest();
}

TEST_F(ListLoaderTest, ABatchThatFailsOnAHealthyCardShowsNothing) {
  device.sim.SetCapacity(30);
  PutEntries(1, 30);
  FailBatchFrom(21);
  ASSERT_EQ(Start(), 1);
  const std::size_t before = StatusCalls();
  Load();
  EXPECT_EQ(StatusCalls(), before + 2);  // at the start, and after the failure
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(List().ItemCount(), 20);
  EXPECT_EQ(List().Message().text, u"The card could not be read");
  ExpectAtRest();
}

TEST_F(ListLoaderTest, TheListSaysWhetherTheCardIsMissingOrLocked) {
  struct Case {
    SimResult result;
    const char16_t* text;
  };
  ASSERT_EQ(Start(), 1);
  Load();
  for (const Case& one :
       {Case{SimResult::kNotInserted, u"No SIM card"}, Case{SimResult::kNoSim, u"No SIM card"},
        Case{SimResult::kPinRequired, u"The card is locked"},
        Case{SimResult::kPukRequired, u"The card is locked"},
        Case{SimResult::kSimFailure, u"The card could not be read"}}) {
    device.sim.SetResult("SimGetDevCaps", one.result);
    Refresh();
    EXPECT_EQ(List().Message().text, one.text);
    EXPECT_FALSE(List().Message().hint.empty());
    device.sim.SetResult("SimGetDevCaps", SimResult::kOk);
  }
}

TEST_F(ListLoaderTest, TheHiddenListSaysHowFarTheLoadIs) {
  device.sim.SetCapacity(30);
  PutEntries(1, 25);
  std::vector<ui::ListMessage> messages;
  device.radio.SetResponder([&](const test::FakeRadio::Command&) {
    messages.push_back(List().Message());
    return std::optional<test::FakeRadio::Answer>();
  });
  Open();
  ASSERT_EQ(messages.size(), 4u);  // the header's question, then three batches
  EXPECT_EQ(messages[0].text, u"Reading the card\u2026");
  EXPECT_EQ(messages[0].total, 0);
  EXPECT_EQ(messages[1].text, u"Reading the card\u2026 0 of 25");
  EXPECT_EQ(messages[2].text, u"Reading the card\u2026 10 of 25");
  EXPECT_EQ(messages[2].done, 10);
  EXPECT_EQ(messages[2].total, 25);
  EXPECT_EQ(messages[3].text, u"Reading the card\u2026 20 of 25");
}

// New SIM.

TEST_F(ListLoaderTest, ANewSimIsCopiedWhenTheUserSaidYes) {
  device.sim.SetEntry(1, u"Anna", u"1");
  device.sim.SetEntry(2, u"Bert", u"2");
  SetSwitch(u"QueryNewSIM", 1);
  SetDriverValue(u"SIMChanged", 1);
  device.screen.ScriptBox(ui::BoxAnswer::kYes);
  int selectedAtCopy = 0;
  const auto fill = wiring.fillCommands;
  wiring.fillCommands = [&, fill](AppState& app, Commands& commands, ListLoader& loader) {
    fill(app, commands, loader);
    commands.Register(res::kCommandSaveToContacts, [&] {
      ran.push_back(res::kCommandSaveToContacts);
      selectedAtCopy = List().SelectedCount();
    });
  };
  Make();
  Open();
  EXPECT_EQ(ran, (std::vector<int>{res::kCommandSaveToContacts}));
  EXPECT_EQ(selectedAtCopy, 2);
  EXPECT_EQ(state->settings.QueryNewSIM, 0u);
  Refresh();
  EXPECT_EQ(ran.size(), 1u);
}

}  // namespace
}  // namespace kelpin::app
