// Changes of an entry of a card in a modem whose commands go wrong, on each way that gives no
// channel of our own. Nothing is lost and the truth is told, as with a card in a reader.
#include <algorithm>
#include <memory>
#include <string>

#include "tests/contract/modem/modem_fixture.h"
#include "tests/fault/card_write_faults.h"

namespace kelpin::contract {
namespace {

using device::card::CardChannel;
using device::card::Fault;
using device::card::WantedChange;
using device::card::WriteFaults;

constexpr std::uint8_t kUpdateRecord = 0xDC;

struct Way {
  const char* name;
  AtModem::Abilities abilities;
};

class ModemWriteFault : public testing::TestWithParam<Way> {
 protected:
  std::unique_ptr<CardChannel> PutInModem(CardChannel& card) {
    modem_ = std::make_unique<TestModem>(card, GetParam().abilities);
    return OpenModem(modem_->Port());
  }
  static WantedChange ChangeCalled(std::string_view why) {
    const auto changes = device::card::WantedChanges();
    const auto found = std::find_if(changes.begin(), changes.end(),
                                    [why](const WantedChange& one) { return one.why == why; });
    EXPECT_NE(found, changes.end()) << why;
    return *found;
  }

  std::unique_ptr<TestModem> modem_;
};

// Updates alone: how commands that only read go wrong is the same on every channel.
TEST_P(ModemWriteFault, EveryUpdateOfTheChangeMayFail) {
  for (const char* const why :
       {"a long number becomes another long one", "an entry with extension records is deleted"}) {
    SCOPED_TRACE(why);
    const WriteFaults faults(ChangeCalled(why),
                             [this](CardChannel& card) { return PutInModem(card); });
    const auto sent = faults.Run(0, Fault::kRefused);
    EXPECT_GE(std::count(sent.begin(), sent.end(), kUpdateRecord), 2);
    for (std::uint32_t command = 1; command <= sent.size() && !HasFailure(); ++command) {
      if (sent[command - 1] != kUpdateRecord) continue;
      for (const Fault fault : {Fault::kRefused, Fault::kLostBefore, Fault::kLostAfter,
                                Fault::kCutBefore, Fault::kCutAfter, Fault::kGoneAfter}) {
        SCOPED_TRACE("command " + std::to_string(command) + ", fault " +
                     std::to_string(static_cast<int>(fault)));
        faults.Run(command, fault);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Modem, ModemWriteFault,
                         testing::Values(Way{"BasicChannel", BasicChannel()},
                                         Way{"FileCommands", FileCommands()}),
                         [](const auto& way) { return way.param.name; });

}  // namespace
}  // namespace kelpin::contract
