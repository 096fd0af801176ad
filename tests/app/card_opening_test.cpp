#include "app/card_opening.h"

#include <chrono>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "res/card_dialogs.h"
#include "tests/app/app_fixture.h"
#include "tests/support/fake_card_lock.h"

namespace kelpin::app {
namespace {

using platform::SimResult;

// A card that does not answer until it is left behind.
class SilentLock : public test::FakeCardLock {
 public:
  SimResult GetLockState(platform::CardLockState& state) override {
    {
      const MutexLock lock(lock_);
      while (!released_) changed_.wait(lock_);
      if (abandoned_) return SimResult::kNotReady;
    }
    return FakeCardLock::GetLockState(state);
  }
  void Release(bool abandoned) {
    const MutexLock lock(lock_);
    released_ = true;
    abandoned_ = abandoned;
    changed_.notify_all();
  }

 private:
  Mutex lock_;
  Condition changed_;
  bool released_ GUARDED_BY(lock_) = false;
  bool abandoned_ GUARDED_BY(lock_) = false;
};

class CardOpeningTest : public AppTest {
 protected:
  CardOpeningTest() {
    device.kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
    device.ports.cardLock = &lock;
    test::FakeCardLock::Card open;
    open.enabled = false;
    lock.PutIn(open);
  }
  ~CardOpeningTest() override { device.kernel.EndThreads(); }

  static constexpr std::chrono::milliseconds kNone{0};
  static constexpr std::chrono::milliseconds kLong{60000};
  SilentLock lock;
};

TEST_F(CardOpeningTest, AQuickCardIsOpenedWithoutAWindow) {
  lock.Release(false);
  EXPECT_TRUE(OpenCard(device.ports, {.patience = kLong}));
  EXPECT_EQ(Calls("DialogBox"), 0u);
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 1u);
}

TEST_F(CardOpeningTest, ACardThatTakesLongIsWaitedForWithAWindowThatGoesByItself) {
  device.screen.ScriptDialog(res::kDialogOpeningCard, [this](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kOpeningTitle), u"Opening the card\u2026");
    lock.Release(false);
    EXPECT_TRUE(device.screen.RunUntil([&] { return dialog.Ended(); }));
  });
  EXPECT_TRUE(OpenCard(device.ports, {.patience = kNone}));
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 1u);
}

TEST_F(CardOpeningTest, ASilentCardIsGivenUpByCancel) {
  int given = 0;
  device.screen.ScriptDialog(res::kDialogOpeningCard, [this](ui::Dialog& dialog) {
    dialog.PressSoftKey(0);
    dialog.Close();  // once is enough
    EXPECT_TRUE(device.screen.RunUntil([&] { return dialog.Ended(); }));
  });
  EXPECT_FALSE(OpenCard(device.ports, {.giveUp = [&] {
                          ++given;
                          lock.Release(true);
                        }}));
  EXPECT_EQ(given, 1);
}

TEST_F(CardOpeningTest, ALockedCardIsAskedForOverTheWindow) {
  lock.PutIn({});
  lock.Release(false);
  device.screen.ScriptWaitForEnd(res::kDialogOpeningCard);
  device.screen.ScriptDialog(res::kDialogCardPin, [](ui::Dialog& dialog) {
    EXPECT_NE(dialog.Owner(), 0u);
    dialog.EditByUser(res::kCardPin, u"1234", 4);
    dialog.PressSoftKey(0);
  });
  EXPECT_TRUE(OpenCard(device.ports, {}));
  EXPECT_EQ(lock.Sent(), std::vector<std::string>{"1234"});
}

TEST_F(CardOpeningTest, WithNobodyThereALockedCardStaysLocked) {
  lock.PutIn({});
  lock.Release(false);
  device.ports.attended = false;
  EXPECT_TRUE(OpenCard(device.ports, {.patience = kLong}));
  EXPECT_TRUE(lock.Sent().empty());
  EXPECT_EQ(lock.CodesExpected(), 0);
}

TEST_F(CardOpeningTest, WithoutAThreadTheProgramStartsAllTheSame) {
  lock.Release(false);
  device.failures.FailCallOf("CreateThread", 1);
  EXPECT_TRUE(OpenCard(device.ports, {}));
  EXPECT_EQ(Calls("SimGetPhonebookStatus"), 0u);
}

}  // namespace
}  // namespace kelpin::app
