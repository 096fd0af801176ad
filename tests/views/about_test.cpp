#include "views/about.h"

#include <gtest/gtest.h>

#include "res/ids.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {
namespace {

constexpr int kDialog = 204;
constexpr int kCommand = 322;

class AboutTest : public ViewsTest {
 protected:
  void ShowAbout(const std::function<void(ui::Dialog&)>& script) {
    Show(kCommand, kDialog, script);
  }
};

TEST_F(AboutTest, ItNamesProgramPlatformAndVersion) {
  OpenMain();
  bool shown = false;
  ShowAbout([&](ui::Dialog& dialog) {
    shown = true;
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Text(1010), u"Kelpin");
    EXPECT_EQ(dialog.Text(1013), u"for Pocket PC");
    EXPECT_EQ(dialog.Text(1008), u"Version 6.80");
    EXPECT_EQ(dialog.Control(1027)->resource, 352);
    EXPECT_EQ(dialog.Control(1006)->resource, 353);
    for (const int line : {1011, 1014, 1016}) EXPECT_FALSE(dialog.Text(line).empty()) << line;
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_TRUE(dialog.InputPanelDown());
    EXPECT_EQ(dialog.Bar()->KeyCount(), 0u);
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
  });
  EXPECT_TRUE(shown);
}

TEST_F(AboutTest, OnASmartphoneItSaysSoAndTheSoftKeyClosesIt) {
  OpenSmartphoneMain();
  ShowAbout([&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1013), u"for Smartphone");
    ASSERT_EQ(dialog.Bar()->KeyCount(), 1u);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 338);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Done");
    dialog.PressSoftKey(0);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(dialog.Result(), 16);
    EXPECT_EQ(dialog.Bar(), nullptr);
  });
}

TEST_F(AboutTest, TitleAndCopyrightAreBold) {
  OpenMain();
  ShowAbout([&](ui::Dialog& dialog) {
    for (const int control : {1010, 1013, 1008, 1011, 1014, 1016}) {
      EXPECT_EQ(dialog.Control(control)->bold, control == 1010 || control == 1014) << control;
    }
  });
}

TEST_F(AboutTest, TheLinesStandOneBelowTheOtherWithThePictureInTheirMiddle) {
  OpenMain();
  device.screen.SetClientSize({400, 600});
  ShowAbout([&](ui::Dialog& dialog) {
    int y = 12;
    for (const int control : {1010, 1013, 1008}) {
      const ui::Rect place = dialog.Bounds(control);
      EXPECT_EQ(place.y, y) << control;
      EXPECT_EQ(place.x, 0) << control;
      EXPECT_EQ(place.width, 400) << control;
      EXPECT_GT(place.height, 0) << control;
      y += place.height;
    }
    EXPECT_EQ(dialog.Bounds(1027), (ui::Rect{80, y, 240, 120}));  // 240 by 120 in 400
    y += 120;
    for (const int control : {1011, 1014, 1016}) {
      EXPECT_EQ(dialog.Bounds(control).y, y) << control;
      EXPECT_EQ(dialog.Bounds(control).width, 400) << control;
      y += dialog.Bounds(control).height;
    }
  });
}

TEST_F(AboutTest, ALineThatIsTooWideHasRoomForTwo) {
  OpenMain();
  device.screen.SetClientSize({400, 600});
  ShowAbout([&](ui::Dialog& dialog) {
    const int line = dialog.Bounds(1014).height;
    dialog.Resize({120, 601});
    EXPECT_EQ(dialog.Bounds(1014).height, line * 5 / 2);
    EXPECT_EQ(dialog.Bounds(1016).y, dialog.Bounds(1014).y + line * 5 / 2);
    EXPECT_EQ(dialog.Bounds(1010).height, line);  // the name is short
  });
}

TEST_F(AboutTest, ItIsLaidOutAgainOnlyWhenBothSidesChanged) {
  OpenMain();
  device.screen.SetClientSize({400, 600});
  ShowAbout([&](ui::Dialog& dialog) {
    for (const ui::Size size : {ui::Size{400, 500}, ui::Size{500, 600}, ui::Size{400, 600}}) {
      dialog.Resize(size);
      EXPECT_EQ(dialog.Bounds(1010).width, 400) << size.width << "x" << size.height;
    }
    dialog.Resize({500, 500});
    EXPECT_EQ(dialog.Bounds(1010).width, 500);
    EXPECT_EQ(dialog.Bounds(1027).x, 130);
  });
}

TEST_F(AboutTest, OkCancelAndDoneCloseItAndNothingElseDoes) {
  OpenMain();
  for (const int command : {1, 2, 338}) {
    ShowAbout([&](ui::Dialog& dialog) {
      for (const int ignored : {0, 339, 322}) {
        dialog.Command(ignored);
        EXPECT_FALSE(dialog.Ended()) << ignored;
      }
      dialog.Command(command);
      EXPECT_TRUE(dialog.Ended()) << command;
      EXPECT_EQ(dialog.Result(), 16);
    });
  }
}

TEST_F(AboutTest, HelpAndASettingsChange) {
  OpenMain();
  ShowAbout([&](ui::Dialog& dialog) {
    dialog.Help();
    EXPECT_EQ(Calls(kHelp), 1u);
    dialog.TakeScrollIntoView();
    dialog.SettingsChanged();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 1010);  // back to the top
  });
}

}  // namespace
}  // namespace kelpin::views
