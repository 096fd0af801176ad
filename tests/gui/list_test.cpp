#include <QApplication>
#include <QHeaderView>
#include <QPointingDevice>
#include <QScrollBar>
#include <QTest>
#include <atomic>
#include <thread>

#include "device/qt/list_pane.h"
#include "device/qt/theme.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

class ListOnScreen : public GuiTest {
 protected:
  void Open(const ui::DialogTemplate& resource = kListTemplate) {
    dialog_ = Show(resource, handler_);
    control_ = resource.id == kPickDialog ? kPickList : kSampleList;
    list_ = dialog_->List(control_);
    table_ = Table(*dialog_, control_);
    FillList(*list_, SampleEntries());
    Settle();
    handler_.notifications.clear();
  }
  void Click(int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::mouseClick(table_->viewport(), Qt::LeftButton, modifiers, Cell(*table_, row, column));
  }
  std::vector<int> Selected() const {
    std::vector<int> rows;
    for (int row = list_->NextItem(-1, ui::kItemSelected); row >= 0;
         row = list_->NextItem(row, ui::kItemSelected)) {
      rows.push_back(row);
    }
    return rows;
  }
  QColor PixelOfRow(int row) const {
    const int x = 3;
    const int y = table_->rowViewportPosition(row) + 4;
    return table_->viewport()->grab().toImage().pixelColor(x, y);
  }

  SampleDialog handler_{*screen_};
  std::shared_ptr<ui::Dialog> dialog_;
  int control_ = 0;
  ui::ListView* list_ = nullptr;
  qt::ListTable* table_ = nullptr;
};

TEST_F(ListOnScreen, ShowsItsRowsFitForAFinger) {
  Open();
  EXPECT_EQ(table_->model()->rowCount(), 14);
  EXPECT_EQ(table_->model()->index(4, 1).data().toString(), QStringLiteral("Müller, Jörg"));
  EXPECT_GE(table_->rowHeight(0), 48);
  EXPECT_EQ(table_->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Name"));
}

TEST_F(ListOnScreen, APressSelectsThatRowAloneAndIsToldOnce) {
  Open();
  Click(2, 1);
  EXPECT_EQ(Selected(), std::vector<int>{2});
  EXPECT_EQ(list_->FocusedItem(), 2);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 1u);
  Click(5, 2);
  EXPECT_EQ(Selected(), std::vector<int>{5});
}

TEST_F(ListOnScreen, ControlTogglesAndShiftExtends) {
  Open();
  Click(1, 1);
  Click(3, 1, Qt::ControlModifier);
  EXPECT_EQ(Selected(), (std::vector<int>{1, 3}));
  Click(5, 1, Qt::ShiftModifier);
  EXPECT_EQ(Selected(), (std::vector<int>{3, 4, 5}));
}

TEST_F(ListOnScreen, AFingerThatMovesAwayPressesNothing) {
  Open();
  const QPoint from = Cell(*table_, 1, 1);
  QTest::mousePress(table_->viewport(), Qt::LeftButton, Qt::NoModifier, from);
  QTest::mouseMove(table_->viewport(), from + QPoint(0, 60));
  QTest::mouseRelease(table_->viewport(), Qt::LeftButton, Qt::NoModifier, from + QPoint(0, 60));
  EXPECT_TRUE(Selected().empty());
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 0u);
}

TEST_F(ListOnScreen, SelectedRowsAreTinted) {
  Open();
  const QColor plain = PixelOfRow(3);
  list_->SetItemState(3, ui::kItemSelected, ui::kItemSelected);
  Settle();
  const QColor tinted = PixelOfRow(3);
  EXPECT_NE(plain, tinted);
  EXPECT_EQ(tinted, table_->palette().color(qt::kSelectionRole));
  EXPECT_EQ(PixelOfRow(4), table_->palette().color(QPalette::Base));
}

TEST_F(ListOnScreen, ALongPressAsksForTheContextMenuAndIsNoClick) {
  Open();
  const QPoint at = Cell(*table_, 2, 1);
  QTest::mousePress(table_->viewport(), Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_TRUE(ServeUntil([&] { return handler_.Count(ui::NotifyCode::kContextMenu) > 0; }));
  QTest::mouseRelease(table_->viewport(), Qt::LeftButton, Qt::NoModifier, at);
  Settle();
  ASSERT_EQ(handler_.Count(ui::NotifyCode::kContextMenu), 1u);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 0u);
  EXPECT_EQ(Selected(), std::vector<int>{2});
  const auto told = std::find_if(
      handler_.notifications.begin(), handler_.notifications.end(),
      [](const ui::Notification& one) { return one.code == ui::NotifyCode::kContextMenu; });
  const QPoint there = table_->viewport()->mapTo(WindowOf(*dialog_), at);
  EXPECT_EQ(told->point, (ui::Point{there.x(), there.y()}));
}

class ListUnderAFinger : public ListOnScreen {
 protected:
  static QPointingDevice* Finger() {
    static QPointingDevice* finger = QTest::createTouchDevice();
    return finger;
  }
  // A touch, seen by the window as a touch screen's would be.
  auto Touch() { return QTest::touchEvent(WindowOf(*dialog_)->windowHandle(), Finger()); }
  QPoint InWindow(QPoint inViewport) const {
    return table_->viewport()->mapTo(WindowOf(*dialog_), inViewport);
  }
};

TEST_F(ListUnderAFinger, ATapSelects) {
  Open();
  const QPoint at = InWindow(Cell(*table_, 2, 1));
  Touch().press(1, at).commit();
  Touch().release(1, at).commit();
  EXPECT_TRUE(ServeUntil([&] { return Selected() == std::vector<int>{2}; }));
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 1u);
}

TEST_F(ListUnderAFinger, ADragScrollsAndSelectsNothing) {
  Open();
  QPoint at = InWindow(Cell(*table_, 6, 1));
  Touch().press(1, at).commit();
  for (int step = 0; step < 12; ++step) {
    QTest::qWait(10);
    at -= QPoint(0, 12);
    Touch().move(1, at).commit();
  }
  Touch().release(1, at).commit();
  EXPECT_TRUE(ServeUntil([&] { return table_->verticalScrollBar()->value() > 0; }));
  Settle();
  EXPECT_TRUE(Selected().empty());
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 0u);
}

TEST_F(ListUnderAFinger, AHoldAsksForTheContextMenu) {
  Open();
  const QPoint at = InWindow(Cell(*table_, 3, 1));
  Touch().press(1, at).commit();
  EXPECT_TRUE(ServeUntil([&] { return handler_.Count(ui::NotifyCode::kContextMenu) == 1; }));
  Touch().release(1, at).commit();
  Settle();
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kContextMenu), 1u);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 0u);
}

TEST_F(ListOnScreen, TheRightButtonAsksForTheContextMenu) {
  Open();
  QContextMenuEvent event(QContextMenuEvent::Mouse, Cell(*table_, 4, 1),
                          table_->viewport()->mapToGlobal(Cell(*table_, 4, 1)));
  QApplication::sendEvent(table_->viewport(), &event);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kContextMenu), 1u);
  EXPECT_EQ(Selected(), std::vector<int>{4});
}

TEST_F(ListOnScreen, TwoPressesActivate) {
  Open();
  QTest::mouseDClick(table_->viewport(), Qt::LeftButton, Qt::NoModifier, Cell(*table_, 2, 1));
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kItemActivated), 1u);
}

TEST_F(ListOnScreen, KeysMoveTheFocusAndScrollItIntoSight) {
  Open();
  Click(0, 1);
  for (int i = 0; i < 12; ++i) {
    QTest::keyClick(table_, Qt::Key_Down);
  }
  Settle();
  EXPECT_EQ(list_->FocusedItem(), 12);
  const int top = table_->rowViewportPosition(12);
  EXPECT_GE(top, 0);
  EXPECT_LE(top + table_->rowHeight(12), table_->viewport()->height());
  QTest::keyClick(table_, Qt::Key_Return);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kItemActivated), 1u);
  QTest::keyClick(table_, Qt::Key_Menu);
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kContextMenu), 1u);
}

TEST_F(ListOnScreen, APageIsWhatFits) {
  Open();
  Click(0, 1);
  QTest::keyClick(table_, Qt::Key_PageDown);
  const int page = table_->viewport()->height() / table_->rowHeight(0);
  EXPECT_GE(list_->FocusedItem(), page - 1);
  EXPECT_LE(list_->FocusedItem(), page);
}

TEST_F(ListOnScreen, AHeaderPressSortsAndTheArrowStandsThere) {
  Open();
  auto* header = table_->horizontalHeader();
  const auto picture = [&] { return header->viewport()->grab().toImage(); };
  const QImage before = picture();
  QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(header->sectionViewportPosition(2) + 30, header->height() / 2));
  ASSERT_EQ(handler_.Count(ui::NotifyCode::kColumnClick), 1u);
  EXPECT_EQ(handler_.notifications.back().column, 2);
  list_->SetSortArrow(2, ui::SortArrow::kDescending);
  Settle();
  EXPECT_NE(picture(), before);
}

TEST_F(ListOnScreen, ALongNumberScrollsIntoSight) {
  Open();
  QScrollBar* bar = table_->horizontalScrollBar();
  ASSERT_GT(bar->maximum(), 0);
  QTest::keyClick(table_, Qt::Key_Right);
  EXPECT_GT(bar->value(), 0);
  bar->setValue(bar->maximum());
  // The whole number is within the viewport: its column ends at the right edge.
  const int end = table_->columnViewportPosition(2) + table_->columnWidth(2);
  EXPECT_EQ(end, table_->viewport()->width());
}

TEST_F(ListOnScreen, NothingScrollsSidewaysWhenAllNumbersFit) {
  Open();
  list_->DeleteAllItems();
  FillList(*list_, {{1, u"Taxi", u"112"}});
  Settle();
  EXPECT_EQ(table_->horizontalScrollBar()->maximum(), 0);
}

TEST_F(ListOnScreen, ACheckBoxIsToggledByItselfAlone) {
  Open(kPickTemplate);
  QTest::mouseClick(table_->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(27, Cell(*table_, 1, 0).y()));
  EXPECT_TRUE(list_->Checked(1));
  EXPECT_EQ(handler_.Count(ui::NotifyCode::kClick), 0u);
  Click(1, 1);
  EXPECT_TRUE(list_->Checked(1));
  QTest::keyClick(table_, Qt::Key_Space);
  EXPECT_FALSE(list_->Checked(1));
}

TEST_F(ListOnScreen, AHiddenListsPlaceTellsHowFarTheLoadIs) {
  Open();
  auto* message = Find<QWidget>(*dialog_, "message");
  EXPECT_FALSE(message->isVisible());
  list_->SetVisible(false);
  list_->SetMessage({u"Reading the card…", u"120 of 181", 120, 181});
  Settle();
  EXPECT_FALSE(table_->isVisible());
  EXPECT_TRUE(message->isVisible());
  EXPECT_EQ(message->accessibleName(), QStringLiteral("Reading the card…\n120 of 181"));
  list_->SetVisible(true);
  Settle();
  EXPECT_TRUE(table_->isVisible());
  EXPECT_FALSE(message->isVisible());
  EXPECT_TRUE(table_->hasFocus()) << "the list has its focus back";
}

TEST_F(ListOnScreen, AnEmptyListKeepsItsHeaderAndSaysSoBelow) {
  Open();
  list_->DeleteAllItems();
  list_->SetMessage({u"No entries on this card", u"Press New to add one.", 0, 0});
  Settle();
  auto* message = Find<QWidget>(*dialog_, "message");
  EXPECT_TRUE(message->isVisible());
  EXPECT_TRUE(table_->horizontalHeader()->isVisible());
  EXPECT_GE(message->y(), table_->horizontalHeader()->height());
}

TEST_F(ListOnScreen, ARightToLeftNameStandsWhereAllNamesBegin) {
  Open();
  const QImage row = table_->viewport()->grab().toImage();
  const int left = table_->columnViewportPosition(1);
  const int middle = left + table_->columnWidth(1) / 2;
  const int y = table_->rowViewportPosition(9);  // שרה כהן
  const auto inked = [&](int from, int to) {
    int pixels = 0;
    for (int x = from; x < to; ++x) {
      for (int dy = 8; dy < table_->rowHeight(9) - 8; ++dy) {
        pixels += row.pixelColor(x, y + dy).lightness() < 128 ? 1 : 0;
      }
    }
    return pixels;
  };
  EXPECT_GT(inked(left, middle), 40);
  EXPECT_EQ(inked(middle + 20, left + table_->columnWidth(1)), 0);
}

TEST_F(ListOnScreen, ManyRowsOfAWorkerAppearWhileTheScreenServes) {
  Open();
  list_->DeleteAllItems();
  list_->SetNotifying(false);
  constexpr int kRows = 100'000;
  std::atomic<bool> done = false;
  std::atomic<int> served = 0;
  std::thread worker([&] {
    for (int i = 0; i < kRows; ++i) {
      // However quick it is: the screen has its turn in the middle.
      while (i == kRows / 2 && served == 0) {
        std::this_thread::yield();
      }
      list_->InsertRow(0, {u"1", u"Name", u"112"}, nullptr);
    }
    done = true;
  });
  while (!done) {
    QTest::qWait(1);
    ++served;
  }
  worker.join();
  EXPECT_TRUE(ServeUntil([&] { return table_->model()->rowCount() == kRows; }));
  list_->EnsureVisible(kRows - 1);
  Settle();
  EXPECT_EQ(table_->rowAt(table_->viewport()->height() - 2), kRows - 1);
}

TEST_F(ListOnScreen, ManyChangesCostFewDrawings) {
  Open();
  int drawn = 0;
  class Counter : public QObject {
   public:
    explicit Counter(int& count) : count_(count) {}
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
      count_ += event->type() == QEvent::Paint ? 1 : 0;
      return false;
    }

   private:
    int& count_;
  } counter(drawn);
  table_->viewport()->installEventFilter(&counter);
  for (int i = 0; i < 1000; ++i) {
    list_->SetItemText(0, 1, i % 2 == 0 ? u"even" : u"odd");
    QApplication::processEvents();
  }
  Settle();
  // 1,000 changes, each served: only those a frame apart are drawn.
  EXPECT_GT(drawn, 0);
  EXPECT_LT(drawn, 500);
  table_->viewport()->removeEventFilter(&counter);
}

TEST_F(ListOnScreen, AScreenReaderThatComesLateFindsTheSelection) {
  Open();
  list_->SetItemState(1, ui::kItemSelected, ui::kItemSelected);
  Settle();
  QAccessible::setActive(true);
  EXPECT_TRUE(table_->selectionModel()->isRowSelected(1));
  EXPECT_FALSE(table_->selectionModel()->isRowSelected(0));
  QAccessible::setActive(false);
}

TEST_F(ListOnScreen, RowsThatAreReadAgainAreSelectedByNobodyElse) {
  Open();
  QAccessible::setActive(true);
  list_->SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
  Settle();
  EXPECT_TRUE(table_->selectionModel()->isRowSelected(2));
  list_->DeleteAllItems();
  FillList(*list_, {{1, u"Anna", u"111"}, {2, u"Bert", u"222"}});
  list_->SetItemState(-1, 0, ui::kItemSelected);
  list_->SetItemState(0, ui::kItemSelected, ui::kItemSelected);
  Settle();
  EXPECT_EQ(list_->SelectedCount(), 1);
  EXPECT_TRUE(table_->selectionModel()->isRowSelected(0));
  EXPECT_FALSE(table_->selectionModel()->isRowSelected(1));
  // A reader's own choice is the list's.
  table_->selectionModel()->select(table_->model()->index(1, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
  EXPECT_EQ(list_->SelectedCount(), 2);
  QAccessible::setActive(false);
}

TEST_F(ListOnScreen, AResizeMovesTheListBeforeTheProgramDoes) {
  handler_.init = [](ui::Dialog&) {};
  Open();
  WindowOf(*dialog_)->resize(900, 640);
  Settle();
  EXPECT_EQ(table_->width(), 900);
}

}  // namespace
}  // namespace kelpin::test
