#pragma once

#include "tests/flow/entry_editor_flow.h"

namespace kelpin::editor {

// An entry with all that a USIM holds, made, changed and deleted in the windows and looked for in
// the card's bytes. On "usim" the first free location is 17, the free records of the shared e-mails
// begin with 47, of the first set's third numbers with 20 and of its nicknames with 23.

inline void MakeAnEntryWithEveryField(EntryFlow& flow) {
  flow.InNew([&](ui::Dialog& dialog) {
    flow.Type(dialog, res::kNewName, u"Dora");
    flow.Type(dialog, res::kNewNickname, u"Do");
    flow.Type(dialog, res::kNewNumber, u"+49444");
    flow.Type(dialog, res::kNewNumber2, u"+4955");
    flow.Type(dialog, res::kNewNumber3, u"66");
    flow.Type(dialog, res::kNewEmail, u"d@e.f");
    flow.PickName(dialog, res::kNewNumber2Button, 2);
    EXPECT_EQ(dialog.Text(res::kNewNumber2Label), u"Mobile 2");
    flow.PickGroups(dialog, res::kNewGroupButton, {0, 4});
    EXPECT_EQ(dialog.Text(res::kNewGroup), u"Family, Ärzte");
    flow.Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(flow.BoxTexts().empty());
  // Alpha of 24 bytes; length, TON/NPI and ten of BCD; capability and extension.
  EXPECT_EQ(flow.Record("4F3A", 17),
            EntryFlow::Padded("446F7261", 24) + EntryFlow::Padded("04919444F4", 14));
  EXPECT_EQ(flow.Record("4F40", 17), EntryFlow::Padded("0203919455", 15));
  EXPECT_EQ(flow.Record("4F48", 20), EntryFlow::Padded("00028166", 17));
  EXPECT_EQ(flow.Record("4F50", 47), EntryFlow::Padded("6400652E66", 42));
  EXPECT_EQ(flow.Record("4F58", 23), EntryFlow::Padded("446F", 20));
  EXPECT_EQ(flow.Record("4F60", 17), "2F1417");
  EXPECT_EQ(flow.Record("4F70", 17), "010500");
  std::u16string row;
  EXPECT_EQ(flow.RowsOf(17, &row), 1);  // our own row and the notice make one
  EXPECT_EQ(row, u"Dora|+49444");
}

// It is all there when it is opened again.
inline void ChangeTheEntryWithEveryField(EntryFlow& flow) {
  flow.InEdit(17, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditName), u"Dora");
    EXPECT_EQ(dialog.Text(res::kEditNickname), u"Do");
    EXPECT_EQ(dialog.Text(res::kEditNumber), u"+49444");
    EXPECT_EQ(dialog.Text(res::kEditNumber2Label), u"Mobile 2");
    EXPECT_EQ(dialog.Text(res::kEditNumber2), u"+4955");
    EXPECT_EQ(dialog.Text(res::kEditNumber3), u"66");
    EXPECT_EQ(dialog.Text(res::kEditEmail), u"d@e.f");
    EXPECT_EQ(dialog.Text(res::kEditGroup), u"Family, Ärzte");
    flow.PickName(dialog, res::kEditNumber2Button, 0);
    EXPECT_EQ(dialog.Text(res::kEditNumber2Label), u"Phone Number 2:");
    flow.Done(dialog);
  });
  EXPECT_EQ(flow.Record("4F40", 17), EntryFlow::Padded("0003919455", 15));
  EXPECT_EQ(flow.Record("4F60", 17), "2F1417");
}

// None of its records is left for the next entry.
inline void DeleteTheEntryWithEveryField(EntryFlow& flow) {
  flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  ui::ListView& list = flow.List();
  list.SetItemState(-1, 0, ui::kItemSelected);
  const int row = app::FindListRow(flow.state, 17);
  ASSERT_GE(row, 0);
  list.SetItemState(row, ui::kItemSelected, ui::kItemSelected);
  flow.state.dialog->Command(res::kCommandDelete);
  EXPECT_TRUE(flow.screen.RunUntil([&] { return flow.RowsOf(17) == 0; }));
  EXPECT_TRUE(flow.Settle());
  EXPECT_EQ(flow.BoxTexts().size(), 1U);  // the question
  for (const auto& [file, record] :
       {std::pair("4F3A", 17), std::pair("4F40", 17), std::pair("4F48", 20), std::pair("4F50", 47),
        std::pair("4F58", 23), std::pair("4F60", 17), std::pair("4F70", 17)}) {
    EXPECT_EQ(flow.Record(file, static_cast<std::size_t>(record)), "") << file;  // free
  }
}

}  // namespace kelpin::editor
