#include "tests/flow/entry_editor_flow.h"

// The entry dialogs on cards that are full, old, filled up or taken out meanwhile.
namespace kelpin::editor {
namespace {

constexpr char16_t kFull[] = u"The SIM is full. Delete some SIM contacts and try again.";

bool IsUnavailable(const ui::Dialog& dialog, int edit) {
  const auto control = dialog.Control(edit);
  return control && control->unavailable && !control->enabled;
}

class EntryEditorImageTest : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Cards, EntryEditorImageTest,
                         testing::Values("sim-250", "usim", "usim-empty", "usim-1000",
                                         "usim-local"),
                         [](const auto& card) {
                           std::string name = card.param;
                           std::erase(name, '-');
                           return name;
                         });

// Whatever the card has: a new entry with all that can be typed, opened again, changed, and every
// other entry as before.
TEST_P(EntryEditorImageTest, EveryCardTakesANewEntryAndItsChange) {
  EntryFlow flow(GetParam());
  flow.Open();
  const std::uint32_t location = flow.state.simPhonebook.FirstFreeSlot();
  ASSERT_NE(location, 0u);
  const auto entries = [&] {
    std::map<std::uint32_t, std::u16string> texts;
    for (std::uint32_t index = 1; index <= flow.state.simPhonebook.Total(); ++index) {
      std::u16string name;
      std::u16string number;
      if (index != location &&
          Succeeded(flow.state.simPhonebook.ReadEntry(index, &name, &number))) {
        texts[index] = name + u"|" + number;
      }
    }
    return texts;
  };
  const auto before = entries();
  const int extended[] = {res::kNewNumber2, res::kNewNumber3, res::kNewEmail, res::kNewNickname};
  const int again[] = {res::kEditNumber2, res::kEditNumber3, res::kEditEmail, res::kEditNickname};
  const std::u16string texts[] = {u"55", u"66", u"d.e", u"Do"};
  bool available[4] = {};
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    for (std::size_t i = 0; i < 4; ++i) {
      available[i] = !IsUnavailable(dialog, extended[i]);
      if (available[i]) flow.Type(dialog, extended[i], texts[i]);
    }
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(flow.BoxTexts().empty());
  flow.InEdit(location, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditName), u"Dora");
    EXPECT_EQ(dialog.Text(res::kEditNumber), u"+49444");
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(IsUnavailable(dialog, again[i]), !available[i]) << i;
      if (!available[i]) continue;
      EXPECT_EQ(dialog.Text(again[i]), texts[i]);
      flow.Type(dialog, again[i], u"");
    }
    flow.Type(dialog, res::kEditName, u"Dorle");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(flow.BoxTexts().empty());
  std::u16string row;
  EXPECT_EQ(flow.RowsOf(location, &row), 1);
  EXPECT_EQ(row, u"Dorle|+49444");
  flow.InEdit(location, [&](ui::Dialog& dialog) {
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(dialog.Text(again[i]), available[i] ? u"" : u"<Not available>") << i;
    }
  });
  EXPECT_EQ(entries(), before);
}

TEST(EntryEditorCards, AnOldSimHasNameAndNumberAlone) {
  EntryFlow flow("sim-250");
  flow.Open();
  const std::uint32_t location = flow.state.simPhonebook.FirstFreeSlot();
  flow.InNew([&](ui::Dialog& dialog) {
    for (const int edit : {res::kNewNumber2, res::kNewNumber3, res::kNewEmail, res::kNewNickname}) {
      EXPECT_TRUE(IsUnavailable(dialog, edit)) << edit;
    }
    for (const int button :
         {res::kNewNumber2Button, res::kNewNumber3Button, res::kNewGroupButton}) {
      EXPECT_FALSE(dialog.Enabled(button)) << button;
    }
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  nlohmann::json image = flow.card.Image();
  EXPECT_EQ(device::card::ImageRecord(image, {"7F10", "6F3A"}, location),
            EntryFlow::Padded("446F7261", 16) + EntryFlow::Padded("04919444F4", 14));
}

// Its free locations have references left over, and its files say what is not so.
TEST(EntryEditorCards, ADamagedCardTakesNameAndNumber) {
  EntryFlow flow("damaged");
  flow.Open();
  const std::size_t boxes = flow.BoxTexts().size();
  const std::uint32_t location = flow.state.simPhonebook.FirstFreeSlot();
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.BoxTexts().size(), boxes);
  flow.InEdit(location, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditName), u"Dora");
    EXPECT_EQ(dialog.Text(res::kEditNumber), u"+49444");
  });
}

// A program that erased an entry without its references leaves them at the free location.
TEST(EntryEditorCards, ReferencesLeftAtAFreeLocationAreNotTheNewEntrys) {
  EntryFlow flow("usim", [](nlohmann::json& image) {
    // The first e-mail, the first third number and the second nickname, which are others'.
    device::card::SetImageRecord(image, {"7F10", "5F3A", "4F60"}, 17, "010102");
  });
  flow.Open();
  const std::string email = flow.Record("4F50", 1);
  const std::string number = flow.Record("4F48", 1);
  const std::string nickname = flow.Record("4F58", 2);
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    flow.Type(dialog, res::kNewNickname, u"Do");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(flow.BoxTexts().empty());
  // The nickname alone, in the first free record: 23.
  EXPECT_EQ(flow.Record("4F60", 17), "FFFF17");
  EXPECT_EQ(flow.Record("4F58", 23), EntryFlow::Padded("446F", 20));
  flow.InEdit(17, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditEmail), u"");
    EXPECT_EQ(dialog.Text(res::kEditNumber3), u"");
    EXPECT_EQ(dialog.Text(res::kEditNickname), u"Do");
    flow.Done(dialog);
  });
  EXPECT_EQ(flow.Record("4F50", 1), email);
  EXPECT_EQ(flow.Record("4F48", 1), number);
  EXPECT_EQ(flow.Record("4F58", 2), nickname);
}

TEST(EntryEditorCards, AFullCardIsLeftAsItIs) {
  EntryFlow flow("usim-full");
  flow.Open();
  const nlohmann::json before = flow.card.Image();
  flow.InNew([&](ui::Dialog& dialog) {
    for (const int edit : {res::kNewNumber2, res::kNewNumber3, res::kNewEmail, res::kNewNickname}) {
      EXPECT_TRUE(IsUnavailable(dialog, edit)) << edit;
    }
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"1");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.BoxTexts(), Texts{kFull});
  EXPECT_EQ(flow.card.Image(), before);
}

TEST(EntryEditorCards, ACardThatFillsUpWhileTheFormIsOpen) {
  EntryFlow flow("usim-full", [](nlohmann::json& image) {
    device::card::SetImageRecord(image, {"7F10", "5F3A", "4F3A"}, 250, "");
  });
  flow.Open();
  platform::SimHandle other = 0;
  ASSERT_TRUE(Succeeded(flow.service.SimInitialize(0, nullptr, nullptr, other)));
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"1");
    platform::SimPhonebookEntry entry;
    entry.params = platform::kSimEntryAll;
    entry.numPlan = platform::kNumPlanTelephone;
    std::u16string_view(u"Eve").copy(entry.text, 3);
    std::u16string_view(u"222").copy(entry.address, 3);
    ASSERT_TRUE(Succeeded(
        flow.service.SimWritePhonebookEntry(other, platform::kSimPhonebookStorageSim, 250, entry)));
    ASSERT_TRUE(flow.screen.RunUntil([&] { return flow.state.simPhonebook.Slot(250) == 1; }));
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(flow.BoxTexts(), Texts{kFull});
  EXPECT_EQ(flow.Record("4F3A", 250).substr(0, 6), "457665");  // Eve
  ASSERT_TRUE(Succeeded(flow.service.SimDeinitialize(other)));
}

TEST(EntryEditorCards, ACardThatIsTakenOutWhileTheFormIsOpen) {
  EntryFlow flow("usim");
  flow.Open();
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    flow.Type(dialog, res::kNewEmail, u"d.e");
    flow.card.Channel().Remove();
    flow.Done(dialog);
    EXPECT_FALSE(dialog.Ended());
    ASSERT_FALSE(flow.BoxTexts().empty());
    EXPECT_EQ(dialog.Text(res::kNewName), u"Dora");
    EXPECT_EQ(dialog.Text(res::kNewEmail), u"d.e");
    EXPECT_TRUE(dialog.Enabled(res::kNewName));
  });
  EXPECT_EQ(flow.Record("4F3A", 17), "");
  flow.card.Channel().Insert();
}

TEST(EntryEditorCards, ACardThatIsTakenOutBeforeAnEntryIsOpened) {
  EntryFlow flow("usim");
  flow.Open();
  flow.card.Channel().Remove();
  flow.state.dialog->List(res::kMainList)->SetItemState(0, ui::kItemSelected, ui::kItemSelected);
  flow.state.dialog->Command(res::kCommandEdit);
  EXPECT_TRUE(flow.Settle());
  EXPECT_FALSE(flow.BoxTexts().empty());
}

}  // namespace
}  // namespace kelpin::editor
