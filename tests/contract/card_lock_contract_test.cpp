#include "tests/contract/card_lock_contract.h"

#include <mutex>
#include <string>
#include <string_view>

#include "device/card/sim_service.h"
#include "platform/mutex.h"
#include "tests/card/soft_card.h"
#include "tests/support/fake_card_lock.h"

namespace kelpin::test {
namespace {

class FakeBench {
 public:
  FakeBench(int tries, int unblockTries) : lock_(Card(tries, unblockTries)) {}
  platform::CardLock& Port() { return lock_; }
  int Sent() { return static_cast<int>(lock_.Sent().size()); }
  int Tries() { return lock_.Now().tries; }
  int UnblockTries() { return lock_.Now().unblockTries; }
  void Reset() { lock_.Reset(); }

 private:
  static FakeCardLock::Card Card(int tries, int unblockTries) {
    FakeCardLock::Card card;
    card.tries = tries;
    card.unblockTries = unblockTries;
    return card;
  }
  FakeCardLock lock_;
};

// The software card, as it stands in the file `sample`.
class SoftBench {
 public:
  SoftBench(const std::string& sample, int tries, int unblockTries)
      : card_(sample,
              [=](nlohmann::json& image) {
                image["pins"]["pin1"] = {{"code", "1234"},
                                         {"puk", "12345678"},
                                         {"enabled", true},
                                         {"tries", tries},
                                         {"pukTries", unblockTries}};
              }),
        service_(card_.Channel()) {
    card_.Channel().SetTrace([this](std::string_view line) {
      // VERIFY and RESET RETRY COUNTER that carry a code show it as asterisks.
      const std::lock_guard lock(mutex_);
      if (line.find('*') != std::string_view::npos) ++sent_;
    });
  }
  ~SoftBench() { card_.Channel().SetTrace(nullptr); }
  platform::CardLock& Port() { return service_; }
  int Sent() {
    const std::lock_guard lock(mutex_);
    return sent_;
  }
  int Tries() { return card_.Image()["pins"]["pin1"].value("tries", 3); }
  int UnblockTries() { return card_.Image()["pins"]["pin1"].value("pukTries", 10); }
  void Reset() { EXPECT_TRUE(card_.Channel().Reset()); }

 private:
  device::card::SoftCard card_;
  EndingMutex mutex_;
  int sent_ = 0;
  device::card::SimService service_;
};

class UsimBench : public SoftBench {
 public:
  UsimBench(int tries, int unblockTries) : SoftBench("usim", tries, unblockTries) {}
};

class GsmBench : public SoftBench {
 public:
  GsmBench(int tries, int unblockTries) : SoftBench("sim-250", tries, unblockTries) {}
};

using Benches = ::testing::Types<FakeBench, UsimBench, GsmBench>;
INSTANTIATE_TYPED_TEST_SUITE_P(Locks, CardLockContract, Benches);

}  // namespace
}  // namespace kelpin::test
