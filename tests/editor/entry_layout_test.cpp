#include "tests/editor/entry_editor_fixture.h"

// Where the controls of the two forms stand.
namespace kelpin::editor {
namespace {

class EntryLayoutTest : public EntryEditorTest {
 protected:
  EntryLayoutTest() { device.sim.SetEntry(2, u"Anna", u"111"); }
};

// With the metrics of 360 x 640: margin 16, gap 8, labels 20, fields 40, buttons 48.
TEST_F(EntryLayoutTest, ControlsAreStackedOverTheWidth) {
  Open();
  InEdit(2, [](ui::Dialog& dialog) {
    const auto at = [&](int control) { return dialog.Bounds(control); };
    EXPECT_EQ(at(1055), (ui::Rect{16, 4, 328, 20}));
    EXPECT_EQ(at(1056), (ui::Rect{16, 24, 328, 40}));
    EXPECT_EQ(at(1007), (ui::Rect{16, 72, 328, 20}));
    EXPECT_EQ(at(1012), (ui::Rect{16, 92, 328, 40}));
    EXPECT_EQ(at(2006), (ui::Rect{16, 140, 328, 20}));
    EXPECT_EQ(at(2007), (ui::Rect{16, 160, 328, 40}));
    EXPECT_EQ(at(1009), (ui::Rect{16, 208, 328, 20}));
    EXPECT_EQ(at(1018), (ui::Rect{16, 228, 328, 40}));
    // The button is higher than its label, which stands on the field, and keeps off both fields.
    EXPECT_EQ(at(2013), (ui::Rect{296, 272, 48, 40}));
    EXPECT_EQ(at(1057), (ui::Rect{16, 296, 272, 20}));
    EXPECT_EQ(at(1058), (ui::Rect{16, 316, 328, 40}));
    EXPECT_EQ(at(2014), (ui::Rect{296, 360, 48, 40}));
    EXPECT_EQ(at(1067), (ui::Rect{16, 384, 272, 20}));
    EXPECT_EQ(at(1068), (ui::Rect{16, 404, 328, 40}));
    EXPECT_EQ(at(1059), (ui::Rect{16, 452, 328, 20}));
    EXPECT_EQ(at(1060), (ui::Rect{16, 472, 328, 40}));
    EXPECT_EQ(at(2015), (ui::Rect{16, 520, 328, 20}));
    EXPECT_EQ(at(2016), (ui::Rect{16, 540, 272, 40}));
    EXPECT_EQ(at(2017), (ui::Rect{296, 540, 48, 40}));
  });
}

TEST_F(EntryLayoutTest, WhatIsHiddenTakesNoRoom) {
  for (const char16_t* const name : {u"Disable_ANR", u"Disable_ANRA"}) SetSwitch(name, 1);
  for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS"}) SetSwitch(name, 0);
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Bounds(1002), (ui::Rect{16, 4, 328, 20}));
    EXPECT_EQ(dialog.Bounds(1005), (ui::Rect{16, 92, 328, 40}));
    EXPECT_EQ(dialog.Bounds(1063), (ui::Rect{16, 140, 328, 20}));
    EXPECT_EQ(dialog.Bounds(2009), (ui::Rect{16, 228, 272, 40}));
  });
}

TEST_F(EntryLayoutTest, ANewSizeInEitherDimensionPlacesTheControlsAnew) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    const ui::Size before = dialog.ClientSize();
    dialog.SetBounds(1004, {});
    dialog.Handler().OnSize(dialog, before);
    EXPECT_EQ(dialog.Bounds(1004), ui::Rect{});
    dialog.Handler().OnSize(dialog, {before.width, before.height + 1});
    EXPECT_EQ(dialog.Bounds(1004), (ui::Rect{16, 24, 328, 40}));
    device.screen.SetClientSize({640, before.height + 1});
    EXPECT_EQ(dialog.Bounds(1004), (ui::Rect{16, 24, 608, 40}));
    EXPECT_EQ(dialog.Bounds(2012).x, 576);
  });
}

}  // namespace
}  // namespace kelpin::editor
