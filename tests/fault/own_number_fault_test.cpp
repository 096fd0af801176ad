#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <string>

#include "tests/views/views_fixture.h"

// An own number saved, erased and listed with one platform call failing: the first, the second, …
// until a run makes fewer calls than that. The record is as it was or as it was meant, the others
// are left alone, the list shows what the card has, and what did not work is told and can be done
// again.
namespace kelpin::views {
namespace {

constexpr std::uint32_t kCallLimit = 100;  // more calls than any run makes
constexpr std::uint32_t kFile = 0x6F40;
constexpr int kListDialog = 208;
constexpr int kEditDialog = 210;
constexpr char16_t kOldRow[] = u"1|Home|+491712345678";
constexpr char16_t kOtherRow[] = u"2|Work|01234";

enum class Deed { kSave, kErase };

// One run, with everything made anew.
class Round : public ViewsTest {
 public:
  void TestBody() override {}

  void Prepare() {
    SetRecords(kFile, {old_, other_});
    OpenMain();
    device.screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  }

  // The deed with its `failingCall`th call failing, and once more where it was refused.
  void Do(Deed deed, std::uint32_t failingCall) {
    const std::vector<std::uint8_t> meant =
        deed == Deed::kSave ? new_ : std::vector<std::uint8_t>(28, 0xFF);
    const std::u16string meantRow = deed == Deed::kSave ? u"1|New|77" : u"1||";
    Show(323, kListDialog, [&](ui::Dialog& dialog) {
      ui::ListView& list = *dialog.List(res::kOwnNumbersList);
      ASSERT_TRUE(AwaitRest(list));
      device.failures.FailCall(failingCall);
      const bool quiet = Once(deed, dialog);
      device.screen.RunPending();
      failed = device.failures.FailedKind();
      device.failures.FailCall(0);
      EXPECT_FALSE(device.screen.WaitCursor());
      const std::vector<std::uint8_t> there = Record(1);
      EXPECT_TRUE(there == old_ || there == meant);
      EXPECT_EQ(list.ItemText(0, 0), u"1");
      EXPECT_THAT(RowsOf(list), testing::ElementsAre(there == meant ? meantRow : kOldRow,
                                                     std::u16string(kOtherRow)));
      // Nobody believes in a change that was not made.
      EXPECT_TRUE(!quiet || there == meant);

      Once(deed, dialog);
      device.screen.RunPending();
      EXPECT_EQ(Record(1), meant);
      EXPECT_EQ(list.ItemText(0, 1), deed == Deed::kSave ? u"New" : u"");
      EXPECT_EQ(list.ItemText(0, 2), deed == Deed::kSave ? u"77" : u"");
    });
    EXPECT_EQ(Record(2), other_);
    EXPECT_EQ(Header(), deed == Deed::kSave ? u"My No. 77" : u"My No. 01234");
    EXPECT_EQ(device.screen.OpenDialogs(), 1u);
    EXPECT_EQ(device.radio.OpenSessions(), 2u);  // the main list's
  }

  // Opening the list with a call failing, and once more without.
  void List(std::uint32_t failingCall) {
    bool opened = false;
    device.screen.ScriptEveryDialog(kListDialog, [&](ui::Dialog& dialog) {
      opened = true;
      ui::ListView& list = *dialog.List(res::kOwnNumbersList);
      EXPECT_TRUE(AwaitRest(list));
      // What is listed is what the card has, from its first record on.
      const std::vector<std::u16string> rows = RowsOf(list);
      const std::vector<std::u16string> all = {kOldRow, kOtherRow};
      ASSERT_LE(rows.size(), all.size());
      for (std::size_t row = 0; row < rows.size(); ++row) EXPECT_EQ(rows[row], all[row]);
      EXPECT_TRUE(rows.size() == all.size() || device.failures.Failed());
      dialog.Close();
    });
    device.failures.FailCall(failingCall);
    Dialog().Command(323);
    failed = device.failures.FailedKind();
    device.failures.FailCall(0);
    EXPECT_TRUE(opened || !Boxes().empty());
    opened = false;
    boxes_ = Boxes().size();
    Dialog().Command(323);
    EXPECT_TRUE(opened);
  }

  std::string failed;  // the call's name

 private:
  using ViewsTest::Record;
  std::vector<std::uint8_t> Record(std::size_t record) {
    return device.radio.GetFile(kFile)->records.at(record - 1);
  }
  bool AwaitRest(const ui::ListView& list) {
    // A fill that could not begin leaves no row and no word.
    const bool rest = Await([&] {
      return !device.screen.WaitCursor() &&
             (list.ItemCount() == 2 || Boxes().size() > boxes_ || device.failures.Failed());
    });
    return rest && Await([&] { return !device.screen.WaitCursor(); });
  }
  // Whether it went by without a word.
  bool Once(Deed deed, ui::Dialog& dialog) {
    SelectRow(*dialog.List(res::kOwnNumbersList), 0);
    device.screen.RunPending();
    const std::size_t before = Boxes().size();
    if (deed == Deed::kErase) {
      dialog.Command(334);
      device.screen.RunPending();
      // The question alone.
      return Boxes().size() == before + 1 && Boxes().back().caption == u"Warning";
    }
    device.screen.ScriptEveryDialog(kEditDialog, [&](ui::Dialog& editor) {
      editor.EditByUser(1023, u"New", 3);
      editor.EditByUser(1026, u"77", 2);
      editor.Command(340);
      if (editor.Ended()) return;
      // What was typed is still there.
      EXPECT_EQ(editor.Text(1023), u"New");
      EXPECT_EQ(editor.Text(1026), u"77");
      EXPECT_GT(Boxes().size(), before);
      editor.Command(2);
    });
    dialog.Command(332);
    device.screen.RunPending();
    return Boxes().size() == before;
  }

  std::size_t boxes_ = 0;  // before the list was opened
  const std::vector<std::uint8_t> old_ =
      Record("Home", {0x07, 0x91, 0x94, 0x71, 0x21, 0x43, 0x65, 0x87});
  const std::vector<std::uint8_t> other_ = Record("Work", {0x04, 0x81, 0x10, 0x32, 0xF4});
  const std::vector<std::uint8_t> new_ = Record("New", {0x02, 0x81, 0x77});
};

void RunAll(Deed deed) {
  std::set<std::string> kinds;
  for (std::uint32_t call = 1;; ++call) {
    ASSERT_LT(call, kCallLimit);
    SCOPED_TRACE(call);
    Round round;
    round.Prepare();
    round.Do(deed, call);
    if (testing::Test::HasFailure() || round.failed.empty()) break;
    kinds.insert(round.failed);
  }
  // The calls that matter were among them.
  EXPECT_THAT(kinds, testing::IsSupersetOf({"SimGetPhonebookStatus", "RIL_SendRestrictedSimCmd"}));
}

TEST(OwnNumberFault, ASavedNumber) {
  RunAll(Deed::kSave);
}

TEST(OwnNumberFault, AnErasedNumber) {
  RunAll(Deed::kErase);
}

TEST(OwnNumberFault, TheList) {
  std::set<std::string> kinds;
  for (std::uint32_t call = 1;; ++call) {
    ASSERT_LT(call, kCallLimit);
    SCOPED_TRACE(call);
    Round round;
    round.Prepare();
    round.List(call);
    if (testing::Test::HasFailure() || round.failed.empty()) break;
    kinds.insert(round.failed);
  }
  EXPECT_THAT(kinds, testing::IsSupersetOf({"SimGetPhonebookStatus", "RIL_SendRestrictedSimCmd",
                                            "RIL_Initialize", "CreateThread"}));
}

}  // namespace
}  // namespace kelpin::views
