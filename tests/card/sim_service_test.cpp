#include "device/card/sim_service.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using Paths = std::vector<std::string>;

const Paths kAdn = {"7F10", "5F3A", "4F3A"};
const Paths kExt1 = {"7F10", "5F3A", "4F80"};
constexpr std::uint32_t kStored = platform::kSimNotifyPhonebookEntryStored;
constexpr std::uint32_t kDeleted = platform::kSimNotifyPhonebookEntryDeleted;

std::string Padded(const std::string& alpha, std::size_t bytes) {
  return alpha + std::string(2 * bytes - alpha.size(), 'F');
}

std::string Free(std::size_t bytes) {
  return std::string(2 * bytes, 'F');
}

// A record that the image writes as "" when it looks like a free one.
std::string Held(const SoftCard& card, const Paths& path, std::size_t record, std::size_t length) {
  nlohmann::json image = card.Image();
  const std::string hex = ImageRecord(image, path, record);
  if (!hex.empty()) return hex;
  const auto& file = ImageFile(image, path);
  return file.contains("fill") ? file["fill"].get<std::string>() : Free(length);
}

TEST(SimService, AWrittenEntryIsOnTheCardByteForByteAndReadBack) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  SimClient sim(service);
  ASSERT_EQ(sim.Write(1, u"Kelpin", u"+442079460000"), SimResult::kOk);
  EXPECT_EQ(Held(card, kAdn, 1, 30), Padded("4B656C70696E", 16) + "0791440297640000FFFFFFFFFFFF");
  EXPECT_EQ(sim.Text(1), u"Kelpin|+442079460000");
  ASSERT_EQ(sim.Write(1, u"\u0416\u0417\u0418", u"*100#"), SimResult::kOk);
  EXPECT_EQ(Held(card, kAdn, 1, 30), Padded("810308969798", 16) + "04811A00FBFFFFFFFFFFFFFFFFFF");
  EXPECT_EQ(sim.Text(1), u"\u0416\u0417\u0418|*100#");
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 1U);
}

TEST(SimService, EverySessionIsToldOfEveryChangeWithItsLocation) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  SimClient writer(service);
  SimClient other(service);
  SimClient deaf(service, platform::kSimInitNoNotifications);
  ASSERT_EQ(writer.Write(251, u"Second set", u"1"), SimResult::kOk);
  ASSERT_EQ(other.Delete(251), SimResult::kOk);
  const std::vector<SimClient::Notice> expected = {{kStored, 251, 16}, {kDeleted, 251, 16}};
  EXPECT_EQ(writer.Notices(), expected);
  EXPECT_EQ(other.Notices(), expected);
  EXPECT_TRUE(deaf.Notices().empty());
}

TEST(SimService, DeletingAFreeLocationSucceedsAndTellsNobody) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  SimClient sim(service);
  EXPECT_EQ(sim.Delete(7), SimResult::kOk);
  EXPECT_TRUE(sim.Notices().empty());
}

TEST(SimService, WhatDoesNotFitIsRefusedAndNothingIsWritten) {
  SoftCard card("usim");
  SimService service(card.Channel());
  SimClient sim(service);
  const std::string before = Held(card, kAdn, 1, 38);
  EXPECT_EQ(sim.Write(1, std::u16string(25, u'x'), u"1"), SimResult::kBadParameter);
  EXPECT_EQ(sim.Write(1, u"x", std::u16string(41, u'1')), SimResult::kBadParameter);
  EXPECT_EQ(sim.Write(1, u"x", u"12+3"), SimResult::kBadParameter);
  EXPECT_EQ(sim.Write(1, u"", u""), SimResult::kBadParameter);
  EXPECT_EQ(sim.Write(0, u"x", u"1"), SimResult::kInvalidIndex);
  EXPECT_EQ(sim.Write(501, u"x", u"1"), SimResult::kInvalidIndex);
  EXPECT_EQ(sim.Delete(501), SimResult::kInvalidIndex);
  EXPECT_EQ(Held(card, kAdn, 1, 38), before);
  EXPECT_TRUE(sim.Notices().empty());
}

TEST(SimService, AFailedReadLeavesTheOutputsAsTheyWere) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  SimClient sim(service);
  platform::SimPhonebookEntry entry;
  entry.params = 0x55;
  entry.text[0] = u'z';
  EXPECT_EQ(sim.Read(3, entry), SimResult::kEntryEmpty);
  EXPECT_EQ(entry.params, 0x55U);
  EXPECT_EQ(entry.text[0], u'z');
  std::uint32_t used = 77;
  std::uint32_t total = 78;
  EXPECT_EQ(service.SimGetPhonebookStatus(sim.Handle(), 1, used, total), SimResult::kBadParameter);
  EXPECT_EQ(service.SimGetPhonebookStatus(9999, 16, used, total), SimResult::kBadParameter);
  card.Channel().Remove();
  EXPECT_EQ(sim.Status(used, total), SimResult::kNotInserted);
  EXPECT_EQ(used, 77U);
  EXPECT_EQ(total, 78U);
  platform::SimCaps caps;
  caps.maxTextLength = 5;
  EXPECT_EQ(sim.Caps(caps), SimResult::kNotInserted);
  EXPECT_EQ(caps.maxTextLength, 5U);
}

TEST(SimService, AFullCardIsWrittenOverWhereTheCallerSays) {
  SoftCard card("usim-full");
  SimService service(card.Channel());
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, total);
  EXPECT_EQ(sim.Write(total, u"Over", u"1"), SimResult::kOk);
  EXPECT_EQ(sim.Write(total + 1, u"Over", u"1"), SimResult::kInvalidIndex);
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, total);
}

// Numbers over twenty digits.

TEST(SimService, ANumberThatGrowsTakesAFreeExtensionRecordAndOneThatShrinksGivesItBack) {
  SoftCard card("usim");
  SimService service(card.Channel());
  SimClient sim(service);
  // Records 1 to 4 of EF_EXT1 are in use.
  ASSERT_EQ(sim.Write(1, u"Bauer, Anna", u"+1234567890123456789012345"), SimResult::kOk);
  EXPECT_EQ(Held(card, kAdn, 1, 38),
            Padded("42617565722C20416E6E61", 24) + "0B9121436587092143658709FF05");
  EXPECT_EQ(Held(card, kExt1, 5, 13), "02032143F5FFFFFFFFFFFFFFFF");
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+1234567890123456789012345");

  ASSERT_EQ(sim.Write(1, u"Bauer, Anna", u"+12345678901234567890"), SimResult::kOk);
  EXPECT_EQ(Held(card, kAdn, 1, 38),
            Padded("42617565722C20416E6E61", 24) + "0B9121436587092143658709FFFF");
  EXPECT_EQ(Held(card, kExt1, 5, 13), Free(13));
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+12345678901234567890");
}

TEST(SimService, DeletingALongNumberGivesItsWholeChainBack) {
  SoftCard card("usim");
  SimService service(card.Channel());
  SimClient sim(service);
  ASSERT_EQ(sim.Delete(114), SimResult::kOk);  // EF_EXT1 records 2 and 3
  EXPECT_EQ(Held(card, kAdn, 114, 38), Free(38));
  EXPECT_EQ(Held(card, kExt1, 2, 13), Free(13));
  EXPECT_EQ(Held(card, kExt1, 3, 13), Free(13));
  EXPECT_EQ(Held(card, kExt1, 1, 13), "0204985C65F6FFFFFFFFFFFFFF");
  EXPECT_EQ(Held(card, kExt1, 4, 13), "0201F1FFFFFFFFFFFFFFFFFFFF");
  EXPECT_EQ(sim.Text(113), u"Calling card|+12125550142p0123456789p5566");
}

TEST(SimService, RenamingAnEntryLeavesItsNumberAndChainAlone) {
  SoftCard card("usim");
  SimService service(card.Channel());
  SimClient sim(service);
  const std::u16string number =
      u"49302312512345678901"
      u"23456789012345678901"
      u"234";
  ASSERT_EQ(sim.Write(114, u"Renamed", number), SimResult::kOk);  // longer than we would write
  EXPECT_EQ(Held(card, kAdn, 114, 38),
            Padded("52656E616D6564", 24) + "0B8194033221153254769810FF02");
  EXPECT_EQ(Held(card, kExt1, 2, 13), "020A3254769810325476981003");
  EXPECT_EQ(sim.Text(114), u"Renamed|" + number);
}

TEST(SimService, ANameInAnotherFormStaysAsItIsWhenTheNumberChanges) {
  SoftCard card("usim", [](nlohmann::json& image) {
    // "AB" in the 81 form, which no phone needs for it.
    SetImageRecord(image, kAdn, 1, Padded("8102084142", 24) + "028111FFFFFFFFFFFFFFFFFFFFFF");
  });
  SimService service(card.Channel());
  SimClient sim(service);
  EXPECT_EQ(sim.Text(1), u"AB|11");
  ASSERT_EQ(sim.Write(1, u"AB", u"22"), SimResult::kOk);
  EXPECT_EQ(Held(card, kAdn, 1, 38), Padded("8102084142", 24) + "028122FFFFFFFFFFFFFFFFFFFFFF");
}

TEST(SimService, WithoutAFreeExtensionRecordALongNumberIsRefused) {
  SoftCard card("usim-full", [](nlohmann::json& image) {
    // Records 5 and 6 are free in the sample: two entries more take them.
    SetImageRecord(image, kExt1, 5, "020121FFFFFFFFFFFFFFFFFFFF");
    SetImageRecord(image, kExt1, 6, "020143FFFFFFFFFFFFFFFFFFFF");
    SetImageRecord(image, kAdn, 20, Padded("58", 18) + "0B8121436587092143658709FF05");
    SetImageRecord(image, kAdn, 21, Padded("59", 18) + "0B8121436587092143658709FF06");
  });
  SimService service(card.Channel());
  SimClient sim(service);
  const std::string before = Held(card, kAdn, 30, 32);
  EXPECT_EQ(sim.Write(30, u"Long", u"123456789012345678901"), SimResult::kSimFull);
  EXPECT_EQ(Held(card, kAdn, 30, 32), before);
  // One that has a record of its own may use it again.
  EXPECT_EQ(sim.Write(20, u"X",
                      u"99999999999999999999"
                      u"777"),
            SimResult::kOk);
  EXPECT_EQ(sim.Text(20), u"X|99999999999999999999777");
  EXPECT_EQ(sim.Text(21), u"Y|1234567890123456789034");
}

TEST(SimService, AnExtensionRecordThatNothingPointsAtIsTakenWhenNoneIsFree) {
  SoftCard card("usim-full", [](nlohmann::json& image) {
    SetImageRecord(image, kExt1, 5, "020121FFFFFFFFFFFFFFFFFFFF");
    SetImageRecord(image, kExt1, 6, "020143FFFFFFFFFFFFFFFFFFFF");
  });
  SimService service(card.Channel());
  SimClient sim(service);
  ASSERT_EQ(sim.Write(30, u"Long", u"123456789012345678901"), SimResult::kOk);
  EXPECT_EQ(Held(card, kExt1, 5, 13), "0201F1FFFFFFFFFFFFFFFFFFFF");
  EXPECT_EQ(sim.Text(30), u"Long|123456789012345678901");
  EXPECT_EQ(sim.Text(7), u"Calling card|+12125550142p0123456789p5566");
}

TEST(SimService, AnExtensionRecordOfTwoEntriesIsKeptForTheOther) {
  SoftCard card("usim", [](nlohmann::json& image) {
    SetImageRecord(image, kAdn, 1, Padded("58", 24) + "0B8121436587092143658709FF01");
  });
  SimService service(card.Channel());
  SimClient sim(service);
  ASSERT_EQ(sim.Delete(1), SimResult::kOk);
  EXPECT_EQ(sim.Text(113), u"Calling card|+12125550142p0123456789p5566");
}

TEST(SimService, AnExtensionRecordOfASecondNumberIsKept) {
  SoftCard card("usim", [](nlohmann::json& image) {
    SetImageRecord(image, kAdn, 1, Padded("58", 24) + "0B8121436587092143658709FF06");
    SetImageRecord(image, kExt1, 6, "0201F9FFFFFFFFFFFFFFFFFFFF");
    // EF_ANR of type 1, record 9, points at the same record.
    SetImageRecord(image, {"7F10", "5F3A", "4F40"}, 9, "000B8121436587092143658709FF06");
  });
  SimService service(card.Channel());
  SimClient sim(service);
  ASSERT_EQ(sim.Delete(1), SimResult::kOk);
  EXPECT_EQ(Held(card, kExt1, 6, 13), "0201F9FFFFFFFFFFFFFFFFFFFF");
}

TEST(SimService, AGsmCardIsWrittenInItsOwnClass) {
  SoftCard card("sim-250");
  SimService service(card.Channel());
  SimClient sim(service);
  const Paths adn = {"7F10", "6F3A"};
  const Paths ext1 = {"7F10", "6F4A"};
  ASSERT_EQ(sim.Write(101, u"New", u"123456789012345678901"), SimResult::kOk);
  EXPECT_EQ(Held(card, adn, 101, 30), Padded("4E6577", 16) + "0B8121436587092143658709FF05");
  EXPECT_EQ(Held(card, ext1, 5, 13), "0201F1FFFFFFFFFFFFFFFFFFFF");
  ASSERT_EQ(sim.Delete(101), SimResult::kOk);
  EXPECT_EQ(Held(card, adn, 101, 30), Free(30));
  EXPECT_EQ(Held(card, ext1, 5, 13), Free(13));
}

// The card's own refusals.

void WantPin(nlohmann::json& image) {
  image["pins"]["pin1"]["enabled"] = true;
}

TEST(SimService, AWantedPinIsSaidAndNoPinIsSent) {
  for (const char* name : {"usim", "sim-250", "usim-local"}) {
    SCOPED_TRACE(name);
    SoftCard card(name, WantPin);
    std::vector<std::string> verifies;
    card.Channel().SetTrace([&verifies](std::string_view line) {
      // A VERIFY with a PIN behind it; the question for the tries left has none.
      if (line.size() > 12 && line.substr(4, 2) == "20" && line[0] == '>') {
        verifies.emplace_back(line);
      }
    });
    SimService service(card.Channel());
    SimClient sim(service);
    RadioClient radio(service);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(sim.Status(used, total), SimResult::kPinRequired);
    EXPECT_EQ(sim.Write(1, u"x", u"1"), SimResult::kPinRequired);
    EXPECT_EQ(sim.Delete(1), SimResult::kPinRequired);
    EXPECT_EQ(radio.ReadEntries(1, 10).code, platform::kRilResultError);
    card.Channel().SetTrace(nullptr);
    EXPECT_TRUE(verifies.empty());
  }
}

TEST(SimService, AVerifiedPinOpensThePhoneBook) {
  for (const char* name : {"usim", "sim-250", "usim-local"}) {
    SCOPED_TRACE(name);
    SoftCard card(name, WantPin);
    SimService service(card.Channel());
    SimClient sim(service);
    platform::CardLockState lock;
    ASSERT_EQ(service.GetLockState(lock), SimResult::kOk);
    EXPECT_TRUE(lock.wanted);
    EXPECT_EQ(lock.triesLeft, 3);
    EXPECT_EQ(service.VerifyPin("4321", platform::LastTry::kKeep, lock),
              platform::CardLockResult::kRefused);
    EXPECT_EQ(lock.triesLeft, 2);
    EXPECT_EQ(service.VerifyPin("1234", platform::LastTry::kKeep, lock),
              platform::CardLockResult::kTaken);
    EXPECT_FALSE(lock.wanted);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(sim.Status(used, total), SimResult::kOk);
    EXPECT_GT(used, 0U);
  }
}

TEST(SimService, TheLastTryIsNotSpentUnasked) {
  SoftCard card("usim", [](nlohmann::json& image) {
    WantPin(image);
    image["pins"]["pin1"]["tries"] = 1;
  });
  SimService service(card.Channel());
  platform::CardLockState lock;
  EXPECT_EQ(service.VerifyPin("4321", platform::LastTry::kKeep, lock),
            platform::CardLockResult::kLastTry);
  EXPECT_EQ(lock.triesLeft, 1);
  EXPECT_EQ(card.Image()["pins"]["pin1"]["tries"], 1);
  EXPECT_EQ(service.VerifyPin("4321", platform::LastTry::kRisk, lock),
            platform::CardLockResult::kBlocked);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), SimResult::kPukRequired);
}

TEST(SimService, AFileThatOnlyTheIssuerMayWriteIsNoMatterOfThePin) {
  SoftCard card("usim",
                [](nlohmann::json& image) { ImageFile(image, kAdn)["access"]["update"] = "ADM"; });
  SimService service(card.Channel());
  SimClient sim(service);
  EXPECT_EQ(sim.Write(1, u"x", u"1"), SimResult::kUnsupported);
}

TEST(SimService, ACardWithoutAPhoneBookSaysSo) {
  SoftCard card("sim-250", [](nlohmann::json& image) {
    auto& files = ImageFile(image, {"7F10"})["files"];
    files.erase(files.begin());
  });
  SimService service(card.Channel());
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), SimResult::kUnsupported);
}

// Sessions.

TEST(SimService, ManySessionsAtOnceSeeOneCard) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&service, i] {
      SimClient sim(service);
      RadioClient radio(service);
      for (std::uint32_t n = 0; n < 10; ++n) {
        const std::uint32_t index = static_cast<std::uint32_t>(i) * 10 + n + 1;
        EXPECT_EQ(sim.Write(index, u"n", u"12"), SimResult::kOk);
        EXPECT_EQ(sim.Text(index), u"n|12");
        EXPECT_EQ(radio.ReadEntries(index, index).code, platform::kRilResultOk);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 40U);
}

TEST(SimService, ClosingARadioSessionAnswersWhatWasStillDue) {
  SoftCard card("usim", [](nlohmann::json& image) { image["delayMs"] = 5; });
  SimService service(card.Channel());
  RadioClient radio(service);
  std::vector<std::int32_t> ids;
  for (int i = 0; i < 5; ++i) {
    ids.push_back(service.RIL_ReadPhonebookEntries(radio.Handle(), 1, 10));
  }
  radio.Close();
  EXPECT_EQ(radio.ResultCount(), 5U);
  EXPECT_EQ(radio.Await(ids.back()).code, platform::kRilResultError);
  EXPECT_LT(service.RIL_ReadPhonebookEntries(radio.Handle(), 1, 10), 0);
}

TEST(SimService, EndingTheServiceAnswersWhatWasStillDue) {
  SoftCard card("usim", [](nlohmann::json& image) { image["delayMs"] = 5; });
  std::vector<std::pair<std::uint32_t, std::int32_t>> results;
  {
    SimService service(card.Channel());
    platform::RilHandle ril = 0;
    const auto keep = [](std::uint32_t code, std::int32_t id, const void*, std::uint32_t,
                         void* parameter) {
      static_cast<std::vector<std::pair<std::uint32_t, std::int32_t>>*>(parameter)->emplace_back(
          code, id);
    };
    ASSERT_EQ(service.RIL_Initialize(1, keep, nullptr, 0, &results, ril), 0);
    for (int i = 0; i < 4; ++i) {
      EXPECT_GT(service.RIL_ReadPhonebookEntries(ril, 1, 10), 0);
    }
  }
  ASSERT_EQ(results.size(), 4U);
  EXPECT_EQ(results.back().first, platform::kRilResultError);
}

TEST(SimService, WhatIsNoSessionIsRefused) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  platform::RilHandle ril = 5;
  EXPECT_NE(service.RIL_Initialize(2, nullptr, nullptr, 0, nullptr, ril), 0);
  EXPECT_EQ(ril, 0U);
  EXPECT_NE(service.RIL_Deinitialize(77), 0);
  EXPECT_LT(service.RIL_ReadPhonebookEntries(77, 1, 2), 0);
  platform::SimHandle sim = 5;
  EXPECT_EQ(service.SimInitialize(0x80, nullptr, nullptr, sim), SimResult::kBadParameter);
  EXPECT_EQ(sim, 0U);
  EXPECT_EQ(service.SimDeinitialize(77), SimResult::kBadParameter);
}

}  // namespace
}  // namespace kelpin::device::card
