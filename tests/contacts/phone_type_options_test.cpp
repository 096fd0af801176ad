#include "contacts/phone_type_options.h"

#include "tests/contacts/to_sim_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr int kList = 1017;
constexpr int kEditor = 211;

class PhoneTypeOptionsTest : public ToSimTest {
 protected:
  void SetUp() override {
    SetSwitch(u"Home_Tel_Flag", 1);
    PutMark(u"Mobile_Tel_Mark", u"/M");
    PutMark(u"Assistant_Tel_Mark", u"/As");
    Open();
  }
  void PutMark(std::u16string_view name, std::u16string_view mark) {
    device.registry.PutString(platform::RegistryRoot::kLocalMachine, kProgramKey, name, mark);
  }
  void Options(const Script& script) {
    device.screen.ScriptDialog(kOptions, [&](ui::Dialog& options) {
      script(options);
      if (!options.Ended()) options.Command(2);
    });
    Dialog().Command(325);
    device.screen.RunPending();
  }
  // The settings as another start of the program finds them.
  app::AppSettings Stored() {
    app::AppSettings stored;
    EXPECT_EQ(app::LoadSettings(device.registry, stored), 1);
    return stored;
  }
  static std::vector<std::uint32_t> FlagsOf(const app::AppSettings& settings) {
    return {std::begin(settings.typeFlags), std::end(settings.typeFlags)};
  }
};

TEST_F(PhoneTypeOptionsTest, ItListsThePhoneTypesWithTheirMarks) {
  Options([&](ui::Dialog& options) {
    ui::ListView& list = *options.List(kList);
    EXPECT_EQ(options.Title(), u"Kelpin");
    EXPECT_EQ(options.Owner(), state->mainDialog);
    EXPECT_EQ(options.Text(1019), u"Contacts to SIM:");
    EXPECT_EQ(options.Text(1020),
              u"When the contact has more than one phone number, copy selected phone numbers into "
              u"SIM card.");
    EXPECT_EQ(list.Columns()[0].text, u"Phone Type");
    EXPECT_EQ(list.Columns()[1].text, u"Mark");
    EXPECT_THAT(
        RowsOf(list),
        ElementsAre(u"Mobile tel|/M", u"Work tel|", u"Home tel|", u"Company tel|", u"Work2 tel|",
                    u"Home2 tel|", u"Radio tel|", u"Pager|", u"Car tel|", u"Assistant tel|/As"));
    EXPECT_THAT(ChecksOf(list),
                ElementsAre(true, false, true, false, false, false, false, false, false, false));
    EXPECT_EQ(options.Bar()->KeyAt(0).command, 337);
    EXPECT_EQ(options.Bar()->KeyAt(0).text, u"OK");
    EXPECT_EQ(options.Bar()->KeyAt(1).command, 342);
    EXPECT_EQ(options.Bar()->KeyAt(1).text, u"Edit");
  });
}

TEST_F(PhoneTypeOptionsTest, OkStoresWhatIsCheckedAndTheMarks) {
  Options([&](ui::Dialog& options) {
    ui::ListView& list = *options.List(kList);
    list.ClickCheckBox(0);
    list.ClickCheckBox(7);
    list.SetItemText(7, 1, u"/P");
    options.Command(337);
    EXPECT_TRUE(options.Ended());
    EXPECT_EQ(options.Result(), 16);
  });
  EXPECT_THAT(FlagsOf(state->settings), ElementsAre(0, 0, 1, 0, 0, 0, 0, 1, 0, 0));
  EXPECT_THAT(FlagsOf(Stored()), ElementsAre(0, 0, 1, 0, 0, 0, 0, 1, 0, 0));
  EXPECT_EQ(std::u16string(Stored().typeMarks[0]), u"/M");
  EXPECT_EQ(std::u16string(Stored().typeMarks[7]), u"/P");
  EXPECT_EQ(std::u16string(Stored().typeMarks[9]), u"/As");
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(PhoneTypeOptionsTest, TheOkKeyStoresToo) {
  Options([](ui::Dialog& options) {
    options.List(kList)->ClickCheckBox(1);
    options.Command(1);
  });
  EXPECT_THAT(FlagsOf(Stored()), ElementsAre(1, 1, 1, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(PhoneTypeOptionsTest, AMarkOfFourHoldsUntilTheEndAndIsLostAtTheNextStart) {
  Options([](ui::Dialog& options) {
    options.List(kList)->SetItemText(0, 1, u"/Mob");
    options.Command(337);
  });
  EXPECT_EQ(std::u16string(state->settings.typeMarks[0]), u"/Mob");
  EXPECT_EQ(std::u16string(Stored().typeMarks[0]), u"");
}

TEST_F(PhoneTypeOptionsTest, AMarkHasFourCharactersAtMost) {
  Options([](ui::Dialog& options) {
    options.List(kList)->SetItemText(0, 1, u"/Mobile");
    options.Command(337);
  });
  EXPECT_EQ(std::u16string(state->settings.typeMarks[0]), u"/Mob");
}

TEST_F(PhoneTypeOptionsTest, AShorterMarkTakesThePlaceOfTheOldOneWhole) {
  Options([](ui::Dialog& options) {
    options.List(kList)->SetItemText(9, 1, u"/");
    options.Command(337);
  });
  EXPECT_EQ(std::u16string(state->settings.typeMarks[9]), u"/");
  EXPECT_EQ(std::u16string(Stored().typeMarks[9]), u"/");
}

TEST_F(PhoneTypeOptionsTest, WithNothingCheckedTheMobileNumberIsChosen) {
  Options([](ui::Dialog& options) {
    ui::ListView& list = *options.List(kList);
    list.SetCheck(-1, false);
    list.SetItemText(0, 1, u"/1");
    options.Command(337);
  });
  EXPECT_THAT(FlagsOf(Stored()), ElementsAre(1, 0, 0, 0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(std::u16string(Stored().typeMarks[0]), u"/1");
}

TEST_F(PhoneTypeOptionsTest, CancelAndTheCloseBoxStoreNothing) {
  const std::vector<Script> ways = {
      [](ui::Dialog& options) { options.Command(2); }, [](ui::Dialog& options) { options.Close(); },
      [](ui::Dialog& options) { options.KeyDown({ui::Key::kEscape}); }};
  for (const Script& leave : ways) {
    device.journal.Clear();
    Options([&](ui::Dialog& options) {
      options.List(kList)->SetCheck(-1, true);
      options.List(kList)->SetItemText(0, 1, u"x");
      leave(options);
      EXPECT_TRUE(options.Ended());
    });
    EXPECT_THAT(FlagsOf(state->settings), ElementsAre(1, 0, 1, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(std::u16string(state->settings.typeMarks[0]), u"/M");
    EXPECT_THAT(FlagsOf(Stored()), ElementsAre(1, 0, 1, 0, 0, 0, 0, 0, 0, 0));
  }
}

TEST_F(PhoneTypeOptionsTest, AChoiceThatCannotBeStoredIsToldAndHoldsMeanwhile) {
  Options([&](ui::Dialog& options) {
    options.List(kList)->ClickCheckBox(1);
    device.failures.FailCall(1);
    options.Command(337);
    device.failures.FailCall(0);
    EXPECT_TRUE(options.Ended());
  });
  ASSERT_EQ(Boxes().size(), 1u);
  EXPECT_EQ(Boxes()[0].text,
            u"The phone types and marks could not be stored.\nThey hold until Kelpin is closed.");
  EXPECT_EQ(state->settings.typeFlags[1], 1u);
}

TEST_F(PhoneTypeOptionsTest, EditIsOffUntilARowIsSelected) {
  Options([&](ui::Dialog& options) {
    EXPECT_FALSE(options.Bar()->KeyAt(1).enabled);
    options.Command(342);
    EXPECT_EQ(Calls("DialogBox(211"), 0u);
    options.List(kList)->Click(2, 0, ui::kNoModifier);
    EXPECT_TRUE(options.Bar()->KeyAt(1).enabled);
    options.List(kList)->Click(-1, 0, ui::kNoModifier);  // below the rows: none is selected
    EXPECT_FALSE(options.Bar()->KeyAt(1).enabled);
  });
}

TEST_F(PhoneTypeOptionsTest, EditOpensTheMarkOfTheSelectedRow) {
  Options([&](ui::Dialog& options) {
    ui::ListView& list = *options.List(kList);
    const std::vector<bool> checks = ChecksOf(list);
    list.Click(2, 0, ui::kNoModifier);
    device.screen.ScriptDialog(kEditor, [&](ui::Dialog& editor) {
      EXPECT_EQ(editor.Owner(), options.Handle());
      EXPECT_EQ(editor.Text(1033), u"Home tel");
      editor.EditByUser(1038, u"/H", 2);
      editor.Command(343);
    });
    options.Command(342);
    EXPECT_EQ(list.ItemText(2, 1), u"/H");
    EXPECT_EQ(ChecksOf(list), checks);
    EXPECT_EQ(std::u16string(Stored().typeMarks[2]), u"");  // not before OK
    options.Command(337);
  });
  EXPECT_EQ(std::u16string(Stored().typeMarks[2]), u"/H");
}

TEST_F(PhoneTypeOptionsTest, ADoublePressEditsAndDoesNotClose) {
  Options([&](ui::Dialog& options) {
    device.screen.ScriptDialog(kEditor, [](ui::Dialog& editor) {
      EXPECT_EQ(editor.Text(1033), u"Work tel");
      editor.Command(344);
    });
    options.List(kList)->DoubleClick(1);
    EXPECT_EQ(Calls("DialogBox(211"), 1u);
    EXPECT_FALSE(options.Ended());
  });
}

TEST_F(PhoneTypeOptionsTest, TheTextIsAboveTheListAndTheListFillsTheRest) {
  Options([&](ui::Dialog& options) {
    const ui::Rect text = options.Bounds(1020);
    const ui::Rect list = options.Bounds(kList);
    EXPECT_EQ(options.Bounds(1019), (ui::Rect{0, 0, 360, 56}));
    EXPECT_EQ(text.y, 56);
    EXPECT_GE(list.y, text.y + text.height);
    EXPECT_EQ(list.y + list.height, 560);
    EXPECT_EQ(list.width, 360);
  });
}

TEST_F(PhoneTypeOptionsTest, HelpShowsTheProgramsHelp) {
  Options([](ui::Dialog& options) { options.Help(); });
  EXPECT_THAT(device.programs.Started(),
              ElementsAre(test::FakePrograms::Start{u"peghelp", u"Kelpin.htm"}));
}

TEST_F(PhoneTypeOptionsTest, TheChoiceIsWhatTheNextCopyOffers) {
  Add(u"Zoe", u"1", {{ContactProperty::kBusinessTelephoneNumber, u"2"}});
  Options([](ui::Dialog& options) {
    options.List(kList)->SetCheck(-1, false);
    options.List(kList)->ClickCheckBox(1);
    options.Command(337);
  });
  Pick(kCopy,
       [](ui::Dialog& picker) { EXPECT_THAT(RowsOf(PickerList(picker)), ElementsAre(u"Zoe|2")); });
}

}  // namespace
}  // namespace kelpin::contacts
