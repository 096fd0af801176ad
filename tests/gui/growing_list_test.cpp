#include <QScrollBar>
#include <QTest>
#include <thread>

#include "tests/gui/gui_support.h"

// A list that a worker fills while the user has a look around in it.
namespace kelpin::test {
namespace {

constexpr int kHalf = 10'000;

class GrowingList : public GuiTest {
 protected:
  void Open() {
    dialog_ = Show(kPickTemplate, handler_);
    list_ = dialog_->List(kPickList);
    table_ = Table(*dialog_, kPickList);
    list_->DeleteAllItems();
    list_->SetNotifying(false);
  }
  // As a worker does it; drawn when this returns.
  void AddRows(int count) {
    std::thread([this, count] {
      for (int row = 0; row < count; ++row) {
        list_->InsertRow(list_->ItemCount(), {u"Name", u"112"}, nullptr);
      }
    }).join();
    const int wanted = list_->ItemCount();
    ASSERT_TRUE(ServeUntil([&] { return table_->model()->rowCount() == wanted; }));
    Settle();
  }

  SampleDialog handler_{*screen_};
  std::shared_ptr<ui::Dialog> dialog_;
  ui::ListView* list_ = nullptr;
  qt::ListTable* table_ = nullptr;
};

TEST_F(GrowingList, StaysWhereTheUserScrolledToWhileRowsComeAtTheFoot) {
  Open();
  AddRows(kHalf);
  QScrollBar* const bar = table_->verticalScrollBar();
  const int before = bar->maximum();
  bar->setValue(bar->maximum() / 2);
  Settle();
  const int value = bar->value();
  const int top = table_->rowAt(1);
  ASSERT_GT(top, kHalf / 4);
  AddRows(kHalf);
  EXPECT_EQ(bar->value(), value);
  EXPECT_EQ(table_->rowAt(1), top);
  EXPECT_GT(bar->maximum(), before);
}

TEST_F(GrowingList, ABoxThatWasCheckedMeanwhileStaysChecked) {
  Open();
  AddRows(kHalf);
  list_->ClickCheckBox(5);
  AddRows(kHalf);
  EXPECT_TRUE(list_->Checked(5));
  EXPECT_FALSE(list_->Checked(kHalf + 5));
}

}  // namespace
}  // namespace kelpin::test
