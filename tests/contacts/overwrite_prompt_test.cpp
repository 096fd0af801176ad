#include "contacts/overwrite_prompt.h"

#include "tests/contacts/copy_out_fixture.h"

namespace kelpin::contacts {
namespace {

using testing::ElementsAre;

// The question, and what a run makes of its answers.
class OverwritePromptTest : public CopyOutTest {
 protected:
  // Asks about a name; the script looks at the dialog and answers.
  int Ask(std::u16string_view name, const std::function<void(ui::Dialog&)>& script) {
    device.screen.ScriptDialog(res::kDialogOverwritePrompt, script);
    return AskOverwrite(*state, state->mainDialog, name, prompt);
  }
  // The answer and the check box, as the prompt keeps them.
  std::vector<int> Answered(const std::function<void(ui::Dialog&)>& script) {
    prompt.Reset(PromptDirection::kIntoContacts);
    const int answer = Ask(u"Anna", script);
    EXPECT_EQ(answer, prompt.applyAnswer);
    return {prompt.applyAnswer, prompt.applyToAll};
  }

  OverwritePrompt prompt;
};

TEST_F(OverwritePromptTest, ItNamesTheDuplicateAndWhereItIs) {
  Open();
  prompt.Reset(PromptDirection::kIntoContacts);
  Ask(u"Anna \"50%\" %s\n", [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kOverwriteText),
              u"\"Anna \"50%\" %s\n\" already exists in Contacts. Do you want to overwrite it?");
    EXPECT_EQ(dialog.Text(res::kOverwriteApplyToAll), u"Apply to all");
    EXPECT_FALSE(dialog.Checked(res::kOverwriteApplyToAll));
    EXPECT_EQ(dialog.Title(), state->appTitle);
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    ASSERT_NE(dialog.Bar(), nullptr);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Yes");
    EXPECT_EQ(dialog.Bar()->KeyAt(1).text, u"No");
    dialog.PressSoftKey(1);
    EXPECT_EQ(dialog.Bar(), nullptr);
  });
  prompt.Reset(PromptDirection::kIntoSim);
  Ask(u"Anna", [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kOverwriteText),
              u"\"Anna\" already exists in SIM card. Do you want to overwrite it?");
    dialog.PressSoftKey(1);
  });
}

TEST_F(OverwritePromptTest, YesAndNoKeepTheAnswerAndTheCheckBox) {
  using Script = std::function<void(ui::Dialog&)>;
  Open();
  const auto command = [](int id) { return Script([id](ui::Dialog& d) { d.Command(id); }); };
  const auto checked = [](int id) {
    return Script([id](ui::Dialog& d) {
      d.PressCheckBox(res::kOverwriteApplyToAll);
      d.Command(id);
    });
  };
  EXPECT_THAT(Answered(command(360)), ElementsAre(1, 0));
  EXPECT_THAT(Answered(command(1)), ElementsAre(1, 0));
  EXPECT_THAT(Answered(command(361)), ElementsAre(0, 0));
  EXPECT_THAT(Answered(command(2)), ElementsAre(0, 0));
  EXPECT_THAT(Answered(checked(360)), ElementsAre(1, 1));
  EXPECT_THAT(Answered(checked(1)), ElementsAre(1, 1));
  EXPECT_THAT(Answered(checked(361)), ElementsAre(0, 1));
  EXPECT_THAT(Answered(checked(2)), ElementsAre(0, 1));
}

TEST_F(OverwritePromptTest, EscapeAndTheCloseBoxMeanNo) {
  Open();
  EXPECT_THAT(Answered([](ui::Dialog& dialog) { dialog.KeyDown({ui::Key::kEscape}); }),
              ElementsAre(0, 0));
  EXPECT_THAT(Answered([](ui::Dialog& dialog) { dialog.Close(); }), ElementsAre(0, 0));
}

TEST_F(OverwritePromptTest, AProgramThatEndsAnswersNo) {
  Open();
  prompt.Reset(PromptDirection::kIntoContacts);
  prompt.applyAnswer = 1;
  state->dialog->PostClose();
  device.screen.RunMessageLoop();
  EXPECT_EQ(AskOverwrite(*state, state->mainDialog, u"Anna", prompt), 0);
  EXPECT_EQ(prompt.applyAnswer, 0);
}

TEST_F(OverwritePromptTest, AnyOtherCommandLeavesItOpen) {
  Open();
  Answered([](ui::Dialog& dialog) {
    dialog.Command(res::kOverwriteApplyToAll);
    EXPECT_FALSE(dialog.Ended());
    dialog.Command(res::kOverwriteNo);
  });
}

TEST_F(OverwritePromptTest, HelpShowsTheManual) {
  Open();
  Answered([](ui::Dialog& dialog) {
    dialog.Help();
    dialog.Command(res::kOverwriteNo);
  });
  EXPECT_EQ(device.journal.Entries("StartProgram").back(), "StartProgram(peghelp, Kelpin.htm)");
}

TEST_F(OverwritePromptTest, TextAndCheckBoxFollowTheWidth) {
  Open();
  Answered([&](ui::Dialog& dialog) {
    for (const int width : {360, 640}) {
      device.screen.SetClientSize({width, 500});
      const ui::Rect text = dialog.Bounds(res::kOverwriteText);
      const ui::Rect box = dialog.Bounds(res::kOverwriteApplyToAll);
      EXPECT_EQ(text.x, 16);
      EXPECT_EQ(text.y, 8);
      EXPECT_EQ(text.width, width - 32);
      EXPECT_EQ(box.x, 16);
      EXPECT_EQ(box.y, text.y + text.height + 4);
    }
    dialog.Command(res::kOverwriteNo);
  });
}

TEST_F(OverwritePromptTest, ANameHasTwoHundredFiftyFiveUnitsAndNoHalfCharacter) {
  Open();
  prompt.Reset(PromptDirection::kIntoContacts);
  Ask(std::u16string(300, u'x'), [](ui::Dialog& dialog) { dialog.Command(res::kOverwriteNo); });
  EXPECT_EQ(prompt.name, std::u16string(255, u'x'));
  // The emoji's two units would be the 255th and the 256th.
  Ask(std::u16string(254, u'x') + u"\U0001F600",
      [](ui::Dialog& dialog) { dialog.Command(res::kOverwriteNo); });
  EXPECT_EQ(prompt.name, std::u16string(254, u'x'));
  Ask(u"", [](ui::Dialog& dialog) { dialog.Command(res::kOverwriteNo); });
  EXPECT_EQ(prompt.name, std::u16string(254, u'x'));
}

// In a run.

TEST_F(OverwritePromptTest, AnOverwrittenContactKeepsWhatTheCardHasNoPlaceFor) {
  PutThree();
  const std::int32_t oid = PutContact(u"Anna");
  Open();
  SelectRows({0});
  AnswerPrompt(res::kOverwriteYes);
  Save();
  test::FakeContact expected;
  expected[ContactProperty::kFirstName] = u"First";
  expected[ContactProperty::kLastName] = u"Anna";
  expected[ContactProperty::kFileAs] = u"Anna";
  expected[ContactProperty::kMobileTelephoneNumber] = u"111";
  EXPECT_EQ(device.contacts.Contacts().at(oid), expected);
}

TEST_F(OverwritePromptTest, AfterARunToTheCardTheNextSaveAsksAboutContacts) {
  PutThree();
  PutContact(u"Anna");
  Open();
  device.screen.ScriptDialog(res::kDialogContactPicker, [this](ui::Dialog& picker) {
    Load();
    picker.Command(res::kCancel);
  });
  Dialog().Command(res::kCommandContactsToSim);
  device.screen.RunPending();
  SelectRows({0});
  AnswerPrompt(res::kOverwriteNo);
  Save();
  EXPECT_THAT(prompts,
              ElementsAre(u"\"Anna\" already exists in Contacts. Do you want to overwrite it?"));
}

TEST_F(OverwritePromptTest, TheWaitCursorIsOffWhileItIsAsked) {
  PutThree();
  PutContact(u"Anna");
  Open();
  SelectRows({0, 1});
  bool whileAsked = true;
  device.screen.ScriptDialog(res::kDialogOverwritePrompt, [&](ui::Dialog& dialog) {
    whileAsked = device.screen.WaitCursor();
    dialog.Command(res::kOverwriteNo);
  });
  const std::size_t before = device.screen.WaitCursorLog().size();
  Save();
  EXPECT_FALSE(whileAsked);
  std::vector<bool> log = device.screen.WaitCursorLog();
  log.erase(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(before));
  // The run, the prompt, the run again, its end; then what the main window was told: busy, at rest.
  EXPECT_EQ(log, (std::vector<bool>{true, false, true, false, true, false}));
  EXPECT_FALSE(device.screen.WaitCursor());
}

}  // namespace
}  // namespace kelpin::contacts
