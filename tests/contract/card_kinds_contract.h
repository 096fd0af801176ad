#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/card_lock.h"
#include "platform/radio_interface.h"
#include "platform/sim_interface.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/card/radio_client.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"

namespace kelpin::contract {

inline void WantPin(nlohmann::json& image) {
  image["pins"]["pin1"]["enabled"] = true;
}

// Kinds of cards behind one way to them: listed, changed and asked for their PIN. `Base` is a test
// fixture that puts the sample card, changed, behind it with Put(sample, change), and then has the
// card, the service on it and its two clients: card, service, sim, radio.
template <class Base>
class CardKinds : public Base {
 protected:
  // The locations that a list of the whole card names.
  std::vector<std::uint32_t> Listed(std::uint32_t last) {
    const auto result = this->radio->ReadEntries(1, last);
    EXPECT_EQ(result.code, platform::kRilResultOk);
    std::vector<std::uint32_t> locations;
    for (const auto& entry :
         device::card::RadioClient::Records<platform::RilPhonebookEntry>(result)) {
      locations.push_back(entry.index);
    }
    return locations;
  }
  platform::SimResult Status(std::uint32_t& used) {
    std::uint32_t total = 0;
    return this->sim->Status(used, total);
  }
  std::uint32_t Used() {
    std::uint32_t used = 0;
    EXPECT_EQ(Status(used), platform::SimResult::kOk);
    return used;
  }
};

template <class Base>
class CardKindsContract : public CardKinds<Base> {};
TYPED_TEST_SUITE_P(CardKindsContract);

// Write, read back, delete; what the card holds is worked out from TS 31.102 4.4.2.3.
TYPED_TEST_P(CardKindsContract, AUsimIsListedAndChanged) {
  const std::vector<std::string> adn = {"7F10", "5F3A", "4F3A"};
  this->Put("usim");
  EXPECT_EQ(this->Used(), 180U);
  EXPECT_EQ(this->Listed(500).size(), 180U);
  EXPECT_EQ(this->sim->Text(1), u"Bauer, Anna|+12125550100");
  ASSERT_EQ(this->sim->Write(1, u"Kelpin", u"+442079460000"), platform::SimResult::kOk);
  EXPECT_EQ(this->Held(adn, 1).substr(0, 12), "4B656C70696E");
  EXPECT_EQ(this->sim->Text(1), u"Kelpin|+442079460000");
  ASSERT_EQ(this->sim->Delete(1), platform::SimResult::kOk);
  EXPECT_EQ(this->Held(adn, 1), "");
  EXPECT_EQ(this->Used(), 179U);
}

TYPED_TEST_P(CardKindsContract, AGsmCardIsListedAndChanged) {
  this->Put("sim-250");
  EXPECT_EQ(this->Listed(250).size(), 120U);
  ASSERT_EQ(this->sim->Write(101, u"New", u"123456789012345678901"), platform::SimResult::kOk);
  EXPECT_EQ(this->Held({"7F10", "6F3A"}, 101),
            "4E6577" + std::string(26, 'F') + "0B8121436587092143658709FF05");
  EXPECT_EQ(this->Held({"7F10", "6F4A"}, 5), "0201F1FFFFFFFFFFFFFFFFFFFF");
  ASSERT_EQ(this->sim->Delete(101), platform::SimResult::kOk);
  EXPECT_EQ(this->Held({"7F10", "6F4A"}, 5), "");  // free
}

TYPED_TEST_P(CardKindsContract, APhoneBookOfTheApplicationIsListedAndChanged) {
  this->Put("usim-local");
  EXPECT_EQ(this->Used(), 81U);
  ASSERT_EQ(this->sim->Write(1, u"Local", u"12"), platform::SimResult::kOk);
  EXPECT_EQ(this->sim->Text(1), u"Local|12");
}

TYPED_TEST_P(CardKindsContract, ExtendedFieldsAreReadAndWritten) {
  using kelpin::sim::FieldResult;
  constexpr auto kEmail = kelpin::sim::FieldSlot::kEmail;
  this->Put("usim");
  test::Journal journal;
  test::FailPlan failures;
  test::FakeDevices devices(journal, failures);
  test::FakeKernel kernel(journal, failures);
  kelpin::sim::RilExtPhonebook book(*this->service, kernel, devices);
  ASSERT_TRUE(book.Open(0));
  ASSERT_TRUE(book.LoadLayout({false, false, false, true}));
  std::uint32_t existing = 0;
  std::u16string text;
  ASSERT_EQ(book.ReadTextField(kEmail, 4, false, existing, text), FieldResult::kRead);
  EXPECT_EQ(text, u"info@example.org");
  ASSERT_EQ(book.WriteTextField(kEmail, 4, u"new@example.org", existing), 0U);
  ASSERT_EQ(book.ReadTextField(kEmail, 4, false, existing, text), FieldResult::kRead);
  EXPECT_EQ(text, u"new@example.org");
}

TYPED_TEST_P(CardKindsContract, APinIsWantedRefusedAndTaken) {
  using platform::CardLockResult;
  using platform::SimResult;
  constexpr auto kKeep = platform::LastTry::kKeep;
  for (const std::string sample : {"usim", "sim-250"}) {
    SCOPED_TRACE(sample);
    this->Put(sample, WantPin);
    std::uint32_t used = 0;
    EXPECT_EQ(this->Status(used), SimResult::kPinRequired);
    platform::CardLockState lock;
    ASSERT_EQ(this->service->GetLockState(lock), SimResult::kOk);
    EXPECT_TRUE(lock.wanted);
    EXPECT_EQ(lock.triesLeft, 3);
    EXPECT_EQ(this->service->VerifyPin("4321", kKeep, lock), CardLockResult::kRefused);
    EXPECT_EQ(lock.triesLeft, 2);
    EXPECT_TRUE(lock.wanted);
    EXPECT_EQ(this->service->VerifyPin("1234", kKeep, lock), CardLockResult::kTaken);
    EXPECT_FALSE(lock.wanted);
    EXPECT_EQ(this->Used(), sample == "usim" ? 180U : 120U);
  }
}

TYPED_TEST_P(CardKindsContract, ABlockedPinIsSaidAndThePukOpensTheCard) {
  using platform::CardLockResult;
  using platform::LastTry;
  this->Put("usim", [](nlohmann::json& image) {
    WantPin(image);
    image["pins"]["pin1"]["tries"] = 1;
  });
  platform::CardLockState lock;
  EXPECT_EQ(this->service->VerifyPin("4321", LastTry::kKeep, lock), CardLockResult::kLastTry);
  EXPECT_EQ(this->card->Image()["pins"]["pin1"]["tries"], 1);
  EXPECT_EQ(this->service->VerifyPin("4321", LastTry::kRisk, lock), CardLockResult::kBlocked);
  std::uint32_t used = 0;
  EXPECT_EQ(this->Status(used), platform::SimResult::kPukRequired);
  EXPECT_EQ(this->service->UnblockPin("87654321", "2468", LastTry::kKeep, lock),
            CardLockResult::kRefused);
  EXPECT_EQ(lock.unblockTriesLeft, 9);
  EXPECT_EQ(this->service->UnblockPin("12345678", "2468", LastTry::kKeep, lock),
            CardLockResult::kTaken);
  EXPECT_EQ(this->Used(), 180U);
  EXPECT_EQ(this->card->Image()["pins"]["pin1"]["code"], "2468");
}

REGISTER_TYPED_TEST_SUITE_P(CardKindsContract, AUsimIsListedAndChanged, AGsmCardIsListedAndChanged,
                            APhoneBookOfTheApplicationIsListedAndChanged,
                            ExtendedFieldsAreReadAndWritten, APinIsWantedRefusedAndTaken,
                            ABlockedPinIsSaidAndThePukOpensTheCard);

}  // namespace kelpin::contract
