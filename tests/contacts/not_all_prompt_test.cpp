#include "contacts/not_all_prompt.h"

#include "tests/contacts/to_sim_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;

class NotAllPromptTest : public ToSimTest {
 protected:
  void SetUp() override { Open(); }
  NotAllAnswers Ask(const Script& script, bool move = false) {
    NotAllAnswers answers{true, true};
    device.screen.ScriptDialog(kNotAll, script);
    AskNotAll(*state, state->mainDialog, move, u"Zo\u00EB %s", answers);
    return answers;
  }
};

TEST_F(NotAllPromptTest, TheCopyAsksWhetherToProceed) {
  Ask([&](ui::Dialog& box) {
    EXPECT_EQ(box.Title(), u"Kelpin");
    EXPECT_EQ(box.Text(1079),
              u"Not all \"Zo\u00EB %s\" phone(s) and email(s) could be copied. Do you want to "
              u"proceed?\n\nYes: Still copy this contact and continue\nNo: Skip the current "
              u"contact, continue from the next contact");
    EXPECT_EQ(box.Text(1080), u"Apply to all");
    EXPECT_FALSE(box.Checked(1080));
    EXPECT_EQ(box.Bar()->KeyAt(0).command, 1081);
    EXPECT_EQ(box.Bar()->KeyAt(0).text, u"Yes");
    EXPECT_EQ(box.Bar()->KeyAt(1).command, 1082);
    EXPECT_EQ(box.Bar()->KeyAt(1).text, u"No");
    box.Command(1082);
  });
}

TEST_F(NotAllPromptTest, TheMoveSaysWhatTheCardHolds) {
  Ask(
      [&](ui::Dialog& box) {
        EXPECT_EQ(box.Text(1079),
                  u"If you move the current contact, \u201CZo\u00EB %s\u201D, to the SIM card, at "
                  u"most only two phone numbers and one e-mail address can be stored on the SIM "
                  u"card.\n\nTap Yes to move this contact to the SIM card, or tap No to skip to "
                  u"the next contact.");
        box.Command(1082);
      },
      true);
}

TEST_F(NotAllPromptTest, YesAndNoAndTheBoxAreTaken) {
  struct Case {
    int command;
    bool check;
    bool answer;
  };
  for (const Case& one :
       {Case{1081, false, true}, Case{1, false, true}, Case{1081, true, true},
        Case{1082, false, false}, Case{2, false, false}, Case{1082, true, false}}) {
    const NotAllAnswers answers = Ask([&](ui::Dialog& box) {
      if (one.check) box.PressCheckBox(1080);
      EXPECT_FALSE(box.Ended());
      box.Command(one.command);
      EXPECT_TRUE(box.Ended());
      EXPECT_EQ(box.Result(), 16);
    });
    EXPECT_EQ(answers.answer, one.answer) << one.command;
    EXPECT_EQ(answers.applyToAll, one.check) << one.command;
  }
}

TEST_F(NotAllPromptTest, EscapeAndTheCloseBoxMeanNo) {
  EXPECT_FALSE(Ask([](ui::Dialog& box) { box.KeyDown({ui::Key::kEscape}); }).answer);
  EXPECT_FALSE(Ask([](ui::Dialog& box) { box.Close(); }).answer);
}

TEST_F(NotAllPromptTest, OtherCommandsAreIgnored) {
  Ask([](ui::Dialog& box) {
    box.Command(360);
    EXPECT_FALSE(box.Ended());
    box.Command(1082);
  });
}

TEST_F(NotAllPromptTest, TheCheckBoxStaysInTheWindowBelowTheText) {
  Ask([&](ui::Dialog& box) {
    const ui::Rect text = box.Bounds(1079);
    EXPECT_EQ(text.x, 16);
    EXPECT_EQ(text.y, 8);
    EXPECT_EQ(text.width, 328);
    EXPECT_GE(text.height, 6 * 20);  // six lines at least: two paragraphs, a blank line, two more
    EXPECT_EQ(box.Bounds(1080), (ui::Rect{16, 8 + text.height + 4, 328, 40}));
    device.screen.SetClientSize({360, 120});
    EXPECT_LE(box.Bounds(1080).y + 40, 120);
    box.Command(1082);
  });
}

TEST_F(NotAllPromptTest, HelpShowsTheProgramsHelp) {
  Ask([](ui::Dialog& box) {
    box.KeyDown({ui::Key::kF1});
    box.Command(1082);
  });
  EXPECT_THAT(device.programs.Started(),
              ElementsAre(test::FakePrograms::Start{u"peghelp", u"Kelpin.htm"}));
}

}  // namespace
}  // namespace kelpin::contacts
