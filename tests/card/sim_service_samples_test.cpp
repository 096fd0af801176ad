// What the service tells of every sample card. The expected entries were decoded by hand from the
// records in res/cards.
#include <gtest/gtest.h>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;

struct Expected {
  std::uint32_t index;
  std::u16string text;  // as SimClient::Text
};

constexpr char16_t kEntryEmpty[] = u"!88000345";
constexpr char16_t kInvalidIndex[] = u"!88000341";

std::u16string Digits(std::size_t count, char16_t digit) {
  return std::u16string(count, digit);
}

struct Sample {
  const char* name;
  std::uint32_t used;
  std::uint32_t total;
  platform::SimCaps caps;
  std::uint32_t messages;
  std::uint32_t messagePlaces;
  std::vector<Expected> entries;
};

platform::SimCaps Caps(std::uint32_t address, std::uint32_t text, std::uint32_t last) {
  platform::SimCaps caps;
  caps.params = platform::kSimCapsAll;
  caps.maxAddressLength = address;
  caps.maxTextLength = text;
  caps.minIndex = 1;
  caps.maxIndex = last;
  return caps;
}

std::vector<Sample> Samples() {
  const std::u16string callingCard = u"Calling card|+12125550142p0123456789p5566";
  const std::u16string twoExtensions =
      u"Two extensions|49302312512345678901"
      u"23456789012345678901"
      u"234";
  const std::u16string twentyOne = u"Twenty-one|493023125001234567891";
  return {
      {"sim-250",
       120,
       250,
       Caps(40, 16, 250),
       3,
       10,
       {{1, u"Notruf|112"},
        {2, u"Voicemail|*86"},
        {3, u"IMEI|*#06#"},
        {4, u"Konto|*100#"},
        {5, u"Call divert|**21*004930231250#"},
        {6, u"Conference|+442079460111p4711p#"},
        {7, callingCard},
        {8, twoExtensions},
        {9, u"Exactly twenty|49302312500123456789"},
        {10, u"Plus and twenty|+49302312500123456789"},
        {11, twentyOne},
        {12, u"Name only|"},
        {101, kEntryEmpty},
        {250, u"Plumber West|+494066969296"},
        {0, kInvalidIndex},
        {251, kInvalidIndex}}},
      {"usim",
       180,
       500,
       Caps(40, 24, 500),
       3,
       20,
       {{1, u"Bauer, Anna|+12125550100"},
        {2, u"Ay\u015Fe G\u00FCne\u015F|+442079460000"},
        {3, u"Dr. \u00D8deg\u00E5rd|+4722123456"},
        {4, u"\u9AD8\u6A4B\u3055\u304F\u3089|+447700900000"},
        {5, u"Voicemail|*86"},
        {7, u"Kowalski, Ma\u0142gorzata|+48601234567"},
        {9, u"\u03A3\u03C9\u03BA\u03C1\u03AC\u03C4\u03B7\u03C2|+302101234567"},
        {17, kEntryEmpty},
        {113, callingCard},
        {114, twoExtensions},
        {117, twentyOne},
        {251, u"\u0E2D\u0E23\u0E17\u0E31\u0E22 \u0E43\u0E08\u0E14\u0E35 34|+447700900666"},
        {501, kInvalidIndex}}},
      {"usim-empty", 0, 500, Caps(40, 16, 500), 3, 20, {{1, kEntryEmpty}, {500, kEntryEmpty}}},
      {"usim-full", 250, 250, Caps(40, 18, 250), 3, 20, {{1, u"Notruf|112"}, {7, callingCard}}},
      {"usim-1000",
       900,
       1000,
       Caps(40, 16, 1000),
       3,
       20,
       {{7, callingCard},
        {8, twoExtensions},
        {751, u"Hotel East|+14155550120"},
        {753, u"Hotel West|+493023125257"},
        {1001, kInvalidIndex}}},
      {"usim-local",
       81,
       250,
       Caps(40, 15, 250),
       3,
       20,
       {{1, u"Notruf|112"}, {5, u"Call divert|**21*004930231250#"}, {11, twentyOne}}},
  };
}

TEST(SimServiceSamples, EveryCardTellsItsEntriesAndCapacities) {
  for (const Sample& sample : Samples()) {
    SCOPED_TRACE(sample.name);
    SoftCard card(sample.name);
    SimService service(card.Channel());
    SimClient sim(service);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
    EXPECT_EQ(used, sample.used);
    EXPECT_EQ(total, sample.total);
    platform::SimCaps caps;
    ASSERT_EQ(sim.Caps(caps), SimResult::kOk);
    EXPECT_EQ(caps.params, sample.caps.params);
    EXPECT_EQ(caps.maxAddressLength, sample.caps.maxAddressLength);
    EXPECT_EQ(caps.maxTextLength, sample.caps.maxTextLength);
    EXPECT_EQ(caps.minIndex, sample.caps.minIndex);
    EXPECT_EQ(caps.maxIndex, sample.caps.maxIndex);
    for (const Expected& expected : sample.entries) {
      EXPECT_EQ(sim.Text(expected.index), expected.text) << expected.index;
    }
    ASSERT_EQ(
        service.SimGetSmsStorageStatus(sim.Handle(), platform::kSimSmsStorageSim, used, total),
        SimResult::kOk);
    EXPECT_EQ(used, sample.messages);
    EXPECT_EQ(total, sample.messagePlaces);
  }
}

TEST(SimServiceSamples, ADamagedCardTellsWhatCanBeRead) {
  SoftCard card("damaged");
  SimService service(card.Channel());
  SimClient sim(service);
  const std::u16string base = u"447700900001";
  const std::vector<Expected> entries = {
      {1, u"Good entry|+447700900010"},
      {2, u"Length 15|+" + base},
      {3, u"Length 0|"},
      {4, u"Length 1|"},
      {5, u"Length 80|+" + base},
      {6, kEntryEmpty},
      {7, Digits(16, u'@') + u"|"},
      {8, u"\u0418\u0432\u0430|+" + base},
      {9, u"\u0418|+" + base},
      {10, u"|+" + base},
      {11, u"|+" + base},
      {12, u"\u05E0\u064F\u05E1|+" + base},
      {13, u"|+" + base},
      {14, u"\u0418\u04FF|+" + base},
      {15, u"\uFFFD|+" + base},
      {16, u"\uFFFD\uFFFD|+" + base},
      {17, u"|+" + base},
      {18, u"\uFFFD\uFFFD\uFFFD\u03A6|+" + base},
      {19, u"ab |+" + base},
      {20, u"ab\u00ECcd|+" + base},
      {21, u"Dig\uFFFDits|+" + base},
      {22, u"Nibbles|??1"},
      {23, u"Odd TON|" + base},
      {24, u"Ext 99|+" + base},
      {25, u"Ext 0|+" + base},
      {26, u"Ext loop|+" + base + Digits(20, u'1') + Digits(20, u'2')},
      {27, u"Ext self|+" + base + Digits(20, u'3')},
      {28, u"Ext free|+" + base},
      {29, u"Ext length|+" + base + Digits(20, u'4')},
      {30, u"Ext party|+" + base},
      {31, u"CCP 200|+" + base},
      {32, u"After the damage|112"},
      {33, kEntryEmpty},
      {251, u"Second set|112"},
      {500, kEntryEmpty},
      {501, kInvalidIndex},
  };
  for (const Expected& expected : entries) {
    EXPECT_EQ(sim.Text(expected.index), expected.text) << expected.index;
  }
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(used, 32U);  // 31 in the first set, now that the blank one was read, and 1
  EXPECT_EQ(total, 500U);
}

// Lists the whole card as the main list does: status, limits, then ten locations at a time.
std::size_t ListAll(SimService& service, bool extended, std::size_t& hidden) {
  SimClient sim(service);
  RadioClient radio(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), SimResult::kOk);
  platform::SimCaps caps;
  EXPECT_EQ(sim.Caps(caps), SimResult::kOk);
  std::size_t entries = 0;
  hidden = 0;
  for (std::uint32_t first = 1; first <= total; first += 10) {
    const std::uint32_t last = std::min(first + 9, total);
    const auto result =
        extended ? radio.ReadEntriesEx(first, last) : radio.ReadEntries(first, last);
    EXPECT_EQ(result.code, platform::kRilResultOk);
    if (extended) {
      for (const auto& entry : RadioClient::Records<platform::RilPhonebookEntryEx>(result)) {
        EXPECT_NE(entry.params & platform::kRilEntryHidden, 0U);
        ++entries;
        hidden += entry.hidden;
      }
    } else {
      entries += RadioClient::Records<platform::RilPhonebookEntry>(result).size();
    }
  }
  EXPECT_EQ(entries, used);
  return entries;
}

TEST(SimServiceSamples, ListingACardCostsItsUsedEntriesAndAConstant) {
  // Headers and searches: these, and so many for each set, whatever the card could hold.
  constexpr std::uint64_t kCommandsOnce = 30;
  constexpr std::uint64_t kCommandsForASet = 15;
  const struct {
    const char* name;
    std::uint64_t used;
    std::uint64_t extensions;  // used records of EF_EXT1
    std::size_t hidden;
    std::uint64_t sets;
  } samples[] = {{"usim", 180, 4, 3, 2},
                 {"usim-empty", 0, 0, 0, 2},
                 {"usim-full", 250, 4, 0, 1},
                 {"usim-1000", 900, 4, 0, 4}};
  for (const auto& sample : samples) {
    for (const bool extended : {false, true}) {
      SCOPED_TRACE(sample.name + std::string(extended ? " extended" : " plain"));
      SoftCard card(sample.name);
      SimService service(card.Channel());
      std::size_t hidden = 0;
      EXPECT_EQ(ListAll(service, extended, hidden), sample.used);
      if (extended) {
        EXPECT_EQ(hidden, sample.hidden);
      }
      EXPECT_LE(card.Channel().CommandCount(),
                sample.used + sample.extensions + kCommandsOnce + kCommandsForASet * sample.sets);
      EXPECT_GE(card.Channel().CommandCount(), sample.used);

      const auto before = card.Channel().CommandCount();
      ListAll(service, extended, hidden);
      EXPECT_EQ(card.Channel().CommandCount(), before) << "a second list reads nothing again";
    }
  }
}

TEST(SimServiceSamples, ACardThatCannotSearchIsReadOnceAndNeverTwice) {
  for (const char* name : {"sim-250", "usim-local"}) {
    SCOPED_TRACE(name);
    SoftCard card(name);
    SimService service(card.Channel());
    std::size_t hidden = 0;
    ListAll(service, false, hidden);
    EXPECT_LE(card.Channel().CommandCount(), 250U + 4U + 40U);
    const auto before = card.Channel().CommandCount();
    ListAll(service, false, hidden);
    EXPECT_EQ(card.Channel().CommandCount(), before);
  }
}

TEST(SimServiceSamples, TheGlobalPhoneBookIsFoundWithoutWholePaths) {
  SoftCard card("usim", [](nlohmann::json& image) { image["pathSelect"] = false; });
  SimService service(card.Channel());
  std::size_t hidden = 0;
  EXPECT_EQ(ListAll(service, true, hidden), 180U);
  EXPECT_EQ(hidden, 3U);
}

TEST(SimServiceSamples, ALocalPhoneBookIsFoundWithoutWholePaths) {
  SoftCard card("usim-local", [](nlohmann::json& image) { image["pathSelect"] = false; });
  SimService service(card.Channel());
  std::size_t hidden = 0;
  EXPECT_EQ(ListAll(service, false, hidden), 81U);
}

TEST(SimServiceSamples, ACardThatKnowsOnlyTheGsmClassIsReadByIt) {
  SoftCard card("usim", [](nlohmann::json& image) { image["classes"] = "A0"; });
  SimService service(card.Channel());
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(total, 500U);  // DF PHONEBOOK can be selected by steps in either class
  EXPECT_EQ(used, 180U);
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
}

}  // namespace
}  // namespace kelpin::device::card
