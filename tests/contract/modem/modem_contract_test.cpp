// The suites of the SIM and radio interfaces on the card service over a card in a modem, on each
// way that a modem may give to it.
#include <memory>
#include <thread>

#include "device/card/sim_service.h"
#include "tests/contract/known_image.h"
#include "tests/contract/modem/modem_fixture.h"
#include "tests/contract/radio_interface_contract.h"
#include "tests/contract/sim_interface_contract.h"

namespace kelpin::contract {
namespace {

// The known card is a GSM SIM, which has no logical channels; with the usual files of a USIM beside
// it, it has.
nlohmann::json KnownUsimImage() {
  nlohmann::json image = KnownImage();
  image["classes"] = "both";
  image["mf"]["files"].push_back({{"id", "2F00"},
                                  {"structure", "linearFixed"},
                                  {"recordLength", 32},
                                  {"recordCount", 1},
                                  {"records", {"61094F07A0000000871002" + std::string(42, 'F')}}});
  image["mf"]["files"].push_back({{"aid", "A0000000871002"}, {"files", nlohmann::json::array()}});
  return image;
}

class KnownModemCard {
 public:
  KnownModemCard(const AtModem::Abilities& abilities, const nlohmann::json& image)
      : card_(device::card::SoftCard::FromText(image.dump(1))),
        modem_(card_.Channel(), abilities),
        channel_(OpenModem(modem_.Port())),
        service_(std::make_unique<device::card::SimService>(*channel_)) {}

  device::card::SimService& Service() { return *service_; }
  std::string Description() const { return channel_->Description(); }

  // The modem starts anew, and the card with it, while it is in use.
  void Touch() {
    platform::SimHandle sim = 0;
    ASSERT_EQ(service_->SimInitialize(0, nullptr, nullptr, sim), platform::SimResult::kOk);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(service_->SimGetPhonebookStatus(sim, platform::kSimPhonebookStorageSim, used, total),
              platform::SimResult::kOk);
    EXPECT_EQ(service_->SimDeinitialize(sim), platform::SimResult::kOk);
    modem_.Tell("\r\nRDY\r\n");
  }

 private:
  device::card::SoftCard card_;
  TestModem modem_;
  std::unique_ptr<device::modem::ModemChannel> channel_;
  std::unique_ptr<device::card::SimService> service_;
};

struct OnLogicalChannel : KnownModemCard {
  OnLogicalChannel() : KnownModemCard(LogicalChannels(), KnownUsimImage()) {
    EXPECT_NE(Description().find("(+CGLA)"), std::string::npos) << Description();
  }
};
struct OnBasicChannel : KnownModemCard {
  OnBasicChannel() : KnownModemCard(BasicChannel(), KnownImage()) {
    EXPECT_NE(Description().find("(+CSIM)"), std::string::npos) << Description();
  }
};
struct ByFileCommands : KnownModemCard {
  ByFileCommands() : KnownModemCard(FileCommands(), KnownImage()) {
    EXPECT_NE(Description().find("(+CRSM)"), std::string::npos) << Description();
  }
};

template <class Card>
class SimMaker {
 public:
  platform::SimInterface& Port() { return card_.Service(); }

 private:
  Card card_;
};

template <class Card>
class RadioMaker {
 public:
  platform::RadioInterface& Port() { return card_.Service(); }
  void TouchCard() { card_.Touch(); }

 private:
  Card card_;
};

using Sims = ::testing::Types<SimMaker<OnLogicalChannel>, SimMaker<OnBasicChannel>,
                              SimMaker<ByFileCommands>>;
using Radios = ::testing::Types<RadioMaker<OnLogicalChannel>, RadioMaker<OnBasicChannel>,
                                RadioMaker<ByFileCommands>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Modem, SimInterfaceContract, Sims);
INSTANTIATE_TYPED_TEST_SUITE_P(Modem, RadioInterfaceContract, Radios);

}  // namespace
}  // namespace kelpin::contract
