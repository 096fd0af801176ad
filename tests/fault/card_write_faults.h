#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"
#include "tests/fault/faulty_channel.h"

// Changes of an entry of which every command may go wrong, on any way to the card.
namespace kelpin::device::card {

using EntryTexts = std::map<std::uint32_t, std::u16string>;

// The whole phone book as a program that starts now finds it.
inline EntryTexts ReadAllEntries(CardChannel& channel) {
  SimService service(channel);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), platform::SimResult::kOk);
  EntryTexts entries;
  for (std::uint32_t index = 1; index <= total; ++index) {
    const std::u16string text = sim.Text(index);
    if (text != u"!88000345") entries[index] = text;
  }
  return entries;
}

// The sample cut down to twelve places a file, so that thousands of runs are seconds: a call fails
// the same on a small card. Entries 7, 8 and 11 have extension records, 12 and every place of a
// second set are free.
inline void CutDown(nlohmann::json& directory) {
  constexpr std::size_t kPlaces = 12;
  for (nlohmann::json& file : directory["files"]) {
    if (file.contains("files")) CutDown(file);
    if (!file.contains("recordCount") || file["recordCount"] <= kPlaces) continue;
    file["recordCount"] = kPlaces;
    while (file["records"].size() > kPlaces) file["records"].erase(kPlaces);
  }
}

inline const std::vector<std::string> kAdn = {"7F10", "5F3A", "4F3A"};

inline void SmallUsim(nlohmann::json& image) {
  const auto name = [](std::string alpha) { return alpha + std::string(48 - alpha.size(), 'F'); };
  CutDown(image["mf"]);
  SetImageRecord(image, kAdn, 7, name("43616C6C696E672063617264") + "0B912121550541C210325476FF01");
  SetImageRecord(image, kAdn, 8,
                 name("54776F20657874656E73696F6E73") + "0B8194033221153254769810FF02");
  SetImageRecord(image, kAdn, 11, name("5477656E74792D6F6E65") + "0B8194033221051032547698FF04");
  SetImageRecord(image, kAdn, 12, "");
}

inline void SmallGsm(nlohmann::json& image) {
  CutDown(image["mf"]);
  SetImageRecord(image, {"7F10", "6F3A"}, 12, "");
}

inline void SmallLocal(nlohmann::json& image) {
  CutDown(image["mf"]);
  SetImageRecord(image, {kUsimAdf, "5F3A", "4F3A"}, 12, "");
}

struct WantedChange {
  const char* why;
  const char* sample;
  ImageChange small;
  std::uint32_t index;
  std::u16string after;  // "" when the entry is gone
  std::function<platform::SimResult(SimClient&)> run;
  // The second and third numbers, which may point at extension records too, were not read yet.
  bool cold = false;
};

inline std::vector<WantedChange> WantedChanges() {
  const std::u16string twenty = u"12345678901234567890";
  const std::u16string three =
      u"49302312512345678901"
      u"23456789012345678901"
      u"234";
  const auto write = [](std::uint32_t index, std::u16string name, std::u16string number) {
    return [=](SimClient& sim) { return sim.Write(index, name, number); };
  };
  const auto remove = [](std::uint32_t index) {
    return [=](SimClient& sim) { return sim.Delete(index); };
  };
  return {
      {"a new entry", "usim", SmallUsim, 12, u"New|+4930", write(12, u"New", u"+4930")},
      {"a new entry with a long number", "usim", SmallUsim, 12, u"New|" + twenty + u"55",
       write(12, u"New", twenty + u"55"), true},
      {"a number grows past twenty digits", "usim", SmallUsim, 1, u"Bauer, Anna|" + twenty + u"55",
       write(1, u"Bauer, Anna", twenty + u"55")},
      {"a long number becomes another long one", "usim", SmallUsim, 11,
       u"Twenty-one|" + twenty + u"66", write(11, u"Twenty-one", twenty + u"66")},
      {"a number of two extension records shrinks", "usim", SmallUsim, 8, u"Two extensions|112",
       write(8, u"Two extensions", u"112")},
      {"a name changes", "usim", SmallUsim, 8, u"Renamed|" + three, write(8, u"Renamed", three)},
      {"an entry is deleted", "usim", SmallUsim, 2, u"", remove(2)},
      {"an entry with extension records is deleted", "usim", SmallUsim, 8, u"", remove(8)},
      {"a GSM card's number grows", "sim-250", SmallGsm, 2, u"Voicemail|" + twenty + u"55",
       write(2, u"Voicemail", twenty + u"55")},
      {"a GSM card's new entry", "sim-250", SmallGsm, 12, u"New|+4930",
       write(12, u"New", u"+4930")},
      {"a GSM card's long number shrinks", "sim-250", SmallGsm, 8, u"Two extensions|112",
       write(8, u"Two extensions", u"112")},
      {"a GSM card's long number is deleted", "sim-250", SmallGsm, 8, u"", remove(8)},
      {"a card without search gets a long number", "usim-local", SmallLocal, 2,
       u"Voicemail|" + twenty + u"55", write(2, u"Voicemail", twenty + u"55")},
  };
}

// Reads the second and third numbers of both sets, as an editor does.
inline void ReadNumbers(RadioClient& radio) {
  for (const std::uint32_t code : {kCodeSecondNumber, kCodeThirdNumber}) {
    for (const std::uint32_t set : {0U, 1U}) {
      for (std::uint32_t record = 1; record <= 12; ++record) {
        radio.File(platform::kRilSimReadRecord, code + 10 * set, record);
      }
    }
  }
}

// What stands between the card and the program; null: nothing. It goes before the card does.
using WayToTheCard = std::function<std::unique_ptr<CardChannel>(CardChannel& card)>;

// One change, again and again on a card as new.
class WriteFaults {
 public:
  explicit WriteFaults(WantedChange change, WayToTheCard way = nullptr)
      : change_(std::move(change)),
        way_(std::move(way)),
        image_(ImageText(change_.sample, change_.small)) {
    SoftCard card = SoftCard::FromText(image_);
    before_ = ReadAllEntries(card.Channel());
  }

  // The change with its nth command gone wrong; 0: none does. Whatever happens: no other entry
  // changes, the entry is as before or as wanted, and the code says which. The commands it sent.
  std::vector<std::uint8_t> Run(std::uint32_t command, Fault fault) const {
    SoftCard card = SoftCard::FromText(image_);
    const std::unique_ptr<CardChannel> between = way_ ? way_(card.Channel()) : nullptr;
    FaultyChannel channel(between ? *between : card.Channel());
    platform::SimResult result = platform::SimResult::kOk;
    std::vector<SimClient::Notice> notices;
    std::vector<std::uint8_t> sent;
    {
      SimService service(channel);
      SimClient sim(service);
      RadioClient radio(service);
      EXPECT_EQ(radio.ReadEntries(1, 100).code, platform::kRilResultOk);
      if (!change_.cold) ReadNumbers(radio);
      channel.Arm(command, fault);
      result = change_.run(sim);
      notices = sim.Notices();
      sent = channel.Sent();
      EXPECT_EQ(channel.Fired(), command != 0);
    }
    channel.Disarm();
    const EntryTexts expected = Expected();
    if (command == 0) {
      EXPECT_EQ(result, platform::SimResult::kOk);
    }
    ExpectTruth(result, notices.size(), fault, ReadAllEntries(channel), expected);

    // What was left behind is no hindrance.
    SimService service(channel);
    SimClient sim(service);
    EXPECT_EQ(change_.run(sim), platform::SimResult::kOk);
    EXPECT_EQ(ReadAllEntries(channel), expected);
    return sent;
  }

 private:
  EntryTexts Expected() const {
    EntryTexts expected = before_;
    if (change_.after.empty()) {
      expected.erase(change_.index);
    } else {
      expected[change_.index] = change_.after;
    }
    return expected;
  }
  void ExpectTruth(platform::SimResult result, std::size_t notices, Fault fault,
                   const EntryTexts& after, const EntryTexts& expected) const {
    using platform::SimResult;
    if (result == SimResult::kOk) {
      EXPECT_EQ(after, expected) << "told to be done";
      EXPECT_EQ(notices, 1U);
      return;
    }
    EXPECT_EQ(notices, 0U);
    if (StaysAway(fault)) {
      // Nobody could ask the card: either is true.
      EXPECT_TRUE(after == before_ || after == expected);
      const bool pulled = fault == Fault::kGoneBefore || fault == Fault::kGoneAfter;
      EXPECT_EQ(result, pulled ? SimResult::kNotInserted : SimResult::kRadioNotPresent);
    } else {
      EXPECT_EQ(after, before_) << "told to have failed";
    }
  }

  const WantedChange change_;
  const WayToTheCard way_;
  const std::string image_;
  EntryTexts before_;
};

}  // namespace kelpin::device::card
