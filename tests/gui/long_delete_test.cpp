#include <QEvent>
#include <QLabel>
#include <QTimer>
#include <chrono>
#include <set>
#include <thread>

#include "app/delete_entries.h"
#include "tests/gui/main_window.h"

// A Delete of many entries on the window itself.
namespace kelpin::test {
namespace {

constexpr std::uint32_t kMany = 500;

// Notes how many rows there were each time the list was drawn, and whether a key was off then.
class DrawnRows : public QObject {
 public:
  DrawnRows(ui::ListView& list, const QWidget& key) : list_(list), key_(key) {}
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      counts.insert(list_.ItemCount());
      keyWasOff = keyWasOff || !key_.isEnabled();
    }
    return false;
  }
  std::set<int> counts;
  bool keyWasOff = false;

 private:
  ui::ListView& list_;
  const QWidget& key_;
};

class LongDelete : public MainWindowTest {
 protected:
  LongDelete() {
    sim.SetCapacity(kMany);
    for (std::uint32_t index = 1; index <= kMany; ++index) sim.SetEntry(index, u"Name", u"1");
    wiring.fillCommands = [](app::AppState& app, app::Commands& commands, app::ListLoader& loader) {
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandRefresh, [&loader] { loader.Refresh(); });
      commands.Register(res::kCommandSelectAll, [&app] { app::SelectAllRows(app); });
      app::RegisterDelete(app, commands, loader, nullptr);
    };
  }

  // Everything is selected and the question answered with Yes, by key; runs until the end.
  void DeleteAll() {
    QTest::keyClick(Rows(), Qt::Key_A, Qt::ControlModifier);
    ASSERT_EQ(List().SelectedCount(), static_cast<int>(kMany));
    screen_->PostToScreen([] {
      ASSERT_NE(OpenBox(), nullptr);
      QTest::keyClick(OpenBox(), Qt::Key_Y);
    });
    QTest::keyClick(Rows(), Qt::Key_Delete);
  }
  static QString BoxText() {
    return OpenBox()->findChild<QLabel*>(QStringLiteral("messageText"))->text();
  }
  QString Asked(std::size_t deleted) const {
    return QStringLiteral(
               "%1 of 500 entries are deleted, the others are still on the card.\n"
               "Stop and close?")
        .arg(deleted);
  }
};

TEST_F(LongDelete, TheWindowIsDrawnWhileTheRowsGo) {
  Open();
  DrawnRows drawn(List(), *Key(1));
  Rows()->viewport()->installEventFilter(&drawn);
  // As long as a quick card takes.
  sim.onDelete = [](std::uint32_t) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
  DeleteAll();
  ASSERT_TRUE(ServeUntil([this] { return List().ItemCount() == 0; }));
  EXPECT_TRUE(sim.Entries().empty());
  drawn.counts.erase(0);
  drawn.counts.erase(static_cast<int>(kMany));
  EXPECT_GE(drawn.counts.size(), 5u);
  EXPECT_TRUE(drawn.keyWasOff);
  EXPECT_TRUE(ServeUntil([this] { return Key(0)->isEnabled() && Key(1)->isEnabled(); }));
}

TEST_F(LongDelete, WhileItRunsTheKeysAreOffAndTheListOpensNothing) {
  Open();
  bool looked = false;
  sim.onDelete = [&](std::uint32_t index) {
    if (index != 100) return;
    screen_->PostToScreen([&] {
      Window()->Sync();
      looked = true;
      EXPECT_FALSE(Key(0)->isEnabled());
      EXPECT_FALSE(Key(1)->isEnabled());
      for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Delete, Qt::Key_F5, Qt::Key_F10}) {
        QTest::keyClick(Rows(), key);
      }
      EXPECT_EQ(OpenBox(), nullptr);
      EXPECT_FALSE(Key(1)->Menu()->isVisible());
    });
  };
  DeleteAll();
  ASSERT_TRUE(ServeUntil([this] { return List().ItemCount() == 0; }));
  EXPECT_TRUE(looked);
}

TEST_F(LongDelete, ClosingAsksAndANoLetsItGoOn) {
  Open();
  bool asked = false;
  sim.onDelete = [&](std::uint32_t index) {
    if (index != 200) return;
    screen_->PostToScreen([&] {
      QTimer::singleShot(0, [&] {
        ASSERT_NE(OpenBox(), nullptr);
        asked = true;
        EXPECT_EQ(BoxText(), Asked(kMany - sim.Entries().size()));
        KeepPictures();
        const std::size_t left = sim.Entries().size();
        QTest::qWait(50);
        EXPECT_EQ(sim.Entries().size(), left);  // nothing goes on under the question
        QTest::keyClick(OpenBox(), Qt::Key_Escape);
      });
      Window()->close();
    });
  };
  DeleteAll();
  ASSERT_TRUE(ServeUntil([this] { return List().ItemCount() == 0; }));
  EXPECT_TRUE(asked);
  EXPECT_FALSE(state->dialog->Ended());
  EXPECT_TRUE(sim.Entries().empty());
}

TEST_F(LongDelete, AYesClosesWithTheRestOnTheCard) {
  Open();
  QString told;
  std::size_t left = 0;
  sim.onDelete = [&](std::uint32_t index) {
    if (index != 300) return;
    screen_->PostToScreen([&] {
      QTimer::singleShot(0, [&] {
        ASSERT_NE(OpenBox(), nullptr);
        told = BoxText();
        left = sim.Entries().size();
        QTest::keyClick(OpenBox(), Qt::Key_Y);
      });
      Window()->close();
    });
  };
  DeleteAll();
  ASSERT_TRUE(ServeUntil([this] { return state->dialog->Ended(); }));
  Settle();
  EXPECT_EQ(told, Asked(kMany - left));
  EXPECT_GT(left, 0u);
  EXPECT_EQ(sim.Entries().size(), left);
}

}  // namespace
}  // namespace kelpin::test
