#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/delete_entries.h"
#include "app/list_commands.h"
#include "app/list_loader.h"
#include "app/main_dialog.h"
#include "app/start_up.h"
#include "app/watchers.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "res/ids.h"
#include "sim/sim_phonebook.h"
#include "tests/card/soft_card.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"

// The program on a software card that others use too: it is written to, reset, taken out and
// exchanged while the list is shown.
namespace kelpin::app {
namespace {

using device::card::SoftCard;
using platform::kSimPhonebookStorageSim;
using platform::SimResult;
using Texts = std::vector<std::u16string>;

class CardChangesTest : public testing::Test {
 protected:
  CardChangesTest() {
    kernel.SetThreadMode(test::FakeKernel::ThreadMode::kRun);
    EXPECT_EQ(service.SimInitialize(0, nullptr, nullptr, other), SimResult::kOk);
    wiring.fillCommands = [this](AppState& app, Commands& commands, ListLoader& list) {
      loader = &list;
      commands.Register(res::kCommandNew, [] {});
      commands.Register(res::kCommandSelectAll, [&app] { SelectAllRows(app); });
      commands.Register(res::kCommandRefresh, [&list] { list.Refresh(); });
      RegisterDelete(app, commands, list, [this](std::uint32_t index, ExtendedField field) {
        if (field == ExtendedField::kNumber2 && onDeleted) onDeleted(index);
      });
    };
    wiring.startWatchers = [](AppState& app, Commands& commands, ListLoader&) {
      StartWatchers(app, commands);
    };
  }

  ~CardChangesTest() override {
    if (state.dialog != nullptr && !state.dialog->Ended()) {
      state.dialog->PostClose();
      screen.RunMessageLoop();
    }
    kernel.EndThreads();
    EXPECT_EQ(service.SimDeinitialize(other), SimResult::kOk);
  }

  // The program's list, read and at rest, with every watcher waiting.
  void Open() {
    mainDialog = std::make_unique<MainDialog>(state, wiring);
    ASSERT_EQ(InitInstance(state, *mainDialog, 1, 0), 1);
    ASSERT_TRUE(Settle());
  }
  bool Settle() {
    return screen.RunUntil([this] {
      return kernel.Waiters(sim::kStoredEventName) == 1 &&
             kernel.Waiters(sim::kDeletedEventName) == 1 &&
             kernel.Waiters(sim::kPhonebookEventName) == 1 && !IsListLoading(state) &&
             !loader->IsWaiting() && List().Visible();
    });
  }
  // Serves the screen until the list is this.
  bool Becomes(const Texts& rows) {
    return screen.RunUntil([&] { return Rows() == rows; }) && Settle();
  }

  // What another program does through a session of its own.
  void Write(std::uint32_t index, std::u16string_view name, std::u16string_view number) {
    platform::SimPhonebookEntry entry;
    entry.params = platform::kSimEntryAll;
    entry.numPlan = platform::kNumPlanTelephone;
    name.copy(entry.text, name.size());
    number.copy(entry.address, number.size());
    ASSERT_EQ(service.SimWritePhonebookEntry(other, kSimPhonebookStorageSim, index, entry),
              SimResult::kOk);
  }
  void WriteThree() {
    Write(1, u"Anna", u"111");
    Write(2, u"Bert", u"222");
    Write(3, u"Cem", u"333");
  }
  std::uint32_t UsedOnTheCard() {
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(service.SimGetPhonebookStatus(other, kSimPhonebookStorageSim, used, total),
              SimResult::kOk);
    return used;
  }

  ui::ListView& List() { return *state.dialog->List(res::kMainList); }
  Texts Rows() {
    Texts rows;
    for (int row = 0; row < List().ItemCount(); ++row) {
      rows.push_back(List().ItemText(row, 0) + u"|" + List().ItemText(row, 1) + u"|" +
                     List().ItemText(row, 2));
    }
    return rows;
  }

  SoftCard card{"usim-empty"};
  device::card::SimService service{card.Channel()};
  device::card::CardDevices devices;
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock{journal};
  test::HeadlessScreen screen{journal, failures};
  test::FakeRegistry registry{journal, failures};
  test::FakeShell shell{journal, failures};
  test::FakePrograms programs{journal, failures};
  test::FakeTelephone telephone{journal, failures};
  test::FakeContacts contacts{journal, failures};
  test::FakeLog log;
  test::FakeKernel kernel{journal, failures, &clock};
  Ports ports{service,  service,   devices,  registry, kernel, shell,
              programs, telephone, contacts, clock,    log,    screen};
  AppState state{ports};
  Wiring wiring;
  std::unique_ptr<MainDialog> mainDialog;
  ListLoader* loader = nullptr;
  platform::SimHandle other = 0;
  std::function<void(std::uint32_t index)> onDeleted;
};

TEST_F(CardChangesTest, WhatAnotherProgramWritesAndDeletesIsListed) {
  WriteThree();
  Open();
  EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"2|Bert|222", u"3|Cem|333"}));
  Write(5, u"Bea", u"555");
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"5|Bea|555", u"2|Bert|222", u"3|Cem|333"}));
  Write(2, u"Bertha", u"2222");
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"5|Bea|555", u"2|Bertha|2222", u"3|Cem|333"}));
  ASSERT_EQ(service.SimDeletePhonebookEntry(other, kSimPhonebookStorageSim, 1), SimResult::kOk);
  EXPECT_TRUE(Becomes({u"5|Bea|555", u"2|Bertha|2222", u"3|Cem|333"}));
  EXPECT_TRUE(screen.Boxes().empty());
}

TEST_F(CardChangesTest, ADeletionReachesTheCardAndItsOwnNoticesAreNotQueued) {
  WriteThree();
  Open();
  screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  state.dialog->Command(res::kCommandSelectAll);
  state.dialog->Command(res::kCommandDelete);
  EXPECT_TRUE(Becomes({}));
  EXPECT_EQ(UsedOnTheCard(), 0u);
  EXPECT_EQ(state.simPhonebook.DeletedCount(), 0u);
  EXPECT_EQ(screen.Boxes().size(), 1u);
}

TEST_F(CardChangesTest, ACardThatIsResetBehindTheProgramIsReadAgain) {
  WriteThree();
  Open();
  const std::uint64_t version = List().RowsVersion();
  ASSERT_TRUE(card.Channel().Reset());
  EXPECT_TRUE(screen.RunUntil([&] { return List().RowsVersion() != version; }));
  EXPECT_TRUE(Becomes({u"1|Anna|111", u"2|Bert|222", u"3|Cem|333"}));
  EXPECT_TRUE(screen.Boxes().empty());
}

TEST_F(CardChangesTest, ACardThatIsExchangedIsListed) {
  WriteThree();
  Open();
  SoftCard another("usim");
  const auto before = another.Image();
  const std::string file = another.File() + ".copy";
  std::ofstream(file) << before.dump(1);
  std::string error;
  ASSERT_TRUE(card.Channel().Insert(file, error)) << error;
  ASSERT_TRUE(screen.RunUntil([this] { return List().ItemCount() > 3; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(static_cast<std::uint32_t>(List().ItemCount()), UsedOnTheCard());
}

TEST_F(CardChangesTest, NothingIsDeletedFromACardThatWasExchangedMeanwhile) {
  WriteThree();
  Open();
  SoftCard another("usim");
  const std::string file = another.File() + ".copy";
  std::ofstream(file) << another.Image().dump(1);
  onDeleted = [&](std::uint32_t index) {
    std::string error;
    if (index != 1) return;
    EXPECT_TRUE(card.Channel().Insert(file, error)) << error;
  };
  screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  state.dialog->Command(res::kCommandSelectAll);
  state.dialog->Command(res::kCommandDelete);
  ASSERT_TRUE(screen.RunUntil([this] { return List().ItemCount() > 3; }));
  ASSERT_TRUE(Settle());
  // The question, and why it ended: the card refused, or the list was to be read again.
  EXPECT_EQ(screen.Boxes().size(), 2u);
  EXPECT_EQ(nlohmann::json::parse(std::ifstream(file))["mf"], another.Image()["mf"]);
  EXPECT_EQ(state.simPhonebook.CollectDeletions(), 1u);
  EXPECT_EQ(card.Image()["format"], "kelpin card image 1");  // the old card is whole
}

TEST_F(CardChangesTest, ACardThatIsTakenOutStopsADeletion) {
  WriteThree();
  Open();
  onDeleted = [&](std::uint32_t index) {
    if (index == 2) card.Channel().Remove();
  };
  screen.SetDefaultAnswers(ui::BoxAnswer::kOk, ui::BoxAnswer::kYes);
  state.dialog->Command(res::kCommandSelectAll);
  state.dialog->Command(res::kCommandDelete);
  ASSERT_TRUE(screen.RunUntil([this] { return screen.Boxes().size() == 2; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(screen.Boxes()[1].style, ui::kBoxError);
  EXPECT_EQ(Rows(), Texts{u"3|Cem|333"});
  EXPECT_EQ(List().SelectedCount(), 1);
  card.Channel().Insert();
  ASSERT_TRUE(
      screen.RunUntil([this] { return List().SelectedCount() == 1 && Rows().size() == 1; }));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(UsedOnTheCard(), 1u);
}

}  // namespace
}  // namespace kelpin::app
