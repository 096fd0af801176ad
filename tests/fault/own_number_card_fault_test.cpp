#include <gmock/gmock.h>

#include <string>
#include <tuple>

#include "tests/fault/faulty_channel.h"
#include "tests/flow/entry_editor_flow.h"

// An own number saved and erased on a software card with one command going wrong: the first, the
// second, … until a run sends fewer than that. The record is as it was or as it was meant, the
// others are left alone, and the list shows what the card holds.
namespace kelpin::views {
namespace {

using device::card::Fault;
using device::card::FaultyChannel;
using device::card::ImageRecord;
using device::card::StaysAway;
using editor::EntryFlow;

constexpr std::uint32_t kCommandLimit = 60;  // more commands than any run sends
constexpr char kUsim[] = "A0000000871002FF49FF0589";
// 16 bytes of name, the number's length, international, its digits, filled up.
constexpr char kOld[] = "4D79204E6F2EFFFFFFFFFFFFFFFFFFFF0791947121436587FFFFFFFFFFFF";
constexpr char kOther[] = "576F726BFFFFFFFFFFFFFFFFFFFFFFFF03811032FFFFFFFFFFFFFFFFFFFF";
constexpr char kNew[] = "4E6577FFFFFFFFFFFFFFFFFFFFFFFFFF0591940321F3FFFFFFFFFFFFFFFF";
constexpr char16_t kOldRow[] = u"My No.|+491712345678";

enum class Deed { kSave, kErase };

struct Round {
  // Gone: the card stays out until the run is over.
  Round(Deed theDeed, Fault theFault) : deed(theDeed), fault(theFault) {}

  bool Gone() const { return StaysAway(fault); }
  std::string Meant() const { return deed == Deed::kSave ? kNew : std::string(60, 'F'); }
  std::u16string MeantRow() const { return deed == Deed::kSave ? u"New|+4930123" : u"|"; }

  std::string Record(std::size_t record) {
    nlohmann::json image = flow.card.Image();
    const std::string hex = ImageRecord(image, {kUsim, "6F40"}, record);
    return hex.empty() ? std::string(60, 'F') : hex;
  }
  static std::u16string RowText(const ui::ListView& list, int row) {
    return list.ItemText(row, 1) + u"|" + list.ItemText(row, 2);
  }
  // The list is read again whenever the card's own numbers were rewritten.
  void ExpectRow(const ui::ListView& list, int row, const std::u16string& text) {
    EXPECT_TRUE(flow.screen.RunUntil([&] { return RowText(list, row) == text; }))
        << row << " says " << testing::PrintToString(RowText(list, row)) << " and not "
        << testing::PrintToString(text);
  }
  bool AwaitRest(const ui::ListView& list) {
    return flow.screen.RunUntil([&] { return list.ItemCount() == 4 && !flow.screen.WaitCursor(); });
  }
  // Whether it went by without a word.
  bool Once(ui::Dialog& dialog, ui::ListView& list) {
    constexpr std::uint32_t kState = ui::kItemSelected | ui::kItemFocused;
    list.SetItemState(0, kState, kState);
    flow.screen.RunPending();
    const std::size_t before = flow.screen.Boxes().size();
    flow.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
    flow.screen.ScriptEveryDialog(210, [&](ui::Dialog& editor) {
      flow.Type(editor, res::kOwnNumberName, u"New");
      flow.Type(editor, res::kOwnNumberNumber, u"+4930123");
      editor.Command(340);
      if (editor.Ended()) return;
      EXPECT_EQ(editor.Text(res::kOwnNumberNumber), u"+4930123");
      editor.Command(2);
    });
    dialog.Command(deed == Deed::kSave ? 332 : 334);
    flow.screen.RunPending();
    return flow.screen.Boxes().size() == before + (deed == Deed::kErase ? 1u : 0u);
  }

  // Whether the command came that was to go wrong.
  bool Run(std::uint32_t command) {
    bool fired = false;
    flow.Open();
    flow.screen.ScriptDialog(208, [&](ui::Dialog& dialog) {
      ui::ListView& list = *dialog.List(res::kOwnNumbersList);
      ASSERT_TRUE(AwaitRest(list));
      channel->Arm(command, fault);
      const bool quiet = Once(dialog, list);
      ASSERT_TRUE(AwaitRest(list));
      fired = channel->Fired();
      const std::string there = Record(1);
      EXPECT_TRUE(there == kOld || there == Meant()) << there;
      EXPECT_EQ(Record(2), kOther);
      EXPECT_TRUE(!quiet || there == Meant());
      if (!Gone()) {
        ExpectRow(list, 0, there == Meant() ? MeantRow() : kOldRow);
        ExpectRow(list, 1, u"Work|0123");
      }
      channel->Disarm();
      if (!Gone() && there != Meant()) {
        EXPECT_TRUE(Once(dialog, list));
        EXPECT_EQ(Record(1), Meant());
        ExpectRow(list, 0, MeantRow());
      }
      dialog.Close();
    });
    flow.state.dialog->Command(res::kCommandOwnNumbers);
    EXPECT_EQ(Record(2), kOther);
    EXPECT_EQ(Record(3), std::string(60, 'F'));
    return fired;
  }

  const Deed deed;
  const Fault fault;
  FaultyChannel* channel = nullptr;
  EntryFlow flow{"usim-empty",
                 [](nlohmann::json& image) {
                   device::card::SetImageRecord(image, {kUsim, "6F40"}, 1, kOld);
                   device::card::SetImageRecord(image, {kUsim, "6F40"}, 2, kOther);
                 },
                 [this](device::card::CardChannel& card) {
                   auto faulty = std::make_unique<FaultyChannel>(card);
                   channel = faulty.get();
                   return faulty;
                 }};
};

class OwnNumberCardFault : public testing::TestWithParam<std::tuple<Deed, Fault>> {};

TEST_P(OwnNumberCardFault, IsSavedOrErasedWholeOrNotAtAllAndTheListShowsIt) {
  bool fired = true;
  std::uint32_t command = 1;
  for (; fired; ++command) {
    ASSERT_LT(command, kCommandLimit);
    SCOPED_TRACE(command);
    Round round(std::get<Deed>(GetParam()), std::get<Fault>(GetParam()));
    fired = round.Run(command);
    if (HasFailure()) return;
  }
  EXPECT_GT(command, 2u);
}

INSTANTIATE_TEST_SUITE_P(EachWay, OwnNumberCardFault,
                         testing::Combine(testing::Values(Deed::kSave, Deed::kErase),
                                          testing::ValuesIn(device::card::kFaults)));

}  // namespace
}  // namespace kelpin::views
