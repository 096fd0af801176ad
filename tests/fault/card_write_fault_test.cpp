// Every command of every change of an entry goes wrong once, in every way. Whatever happens: no
// other entry changes, the entry is as before or as wanted, and the code says which.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"
#include "tests/fault/faulty_channel.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using Entries = std::map<std::uint32_t, std::u16string>;

// The whole phone book as a program that starts now finds it.
Entries ReadAll(CardChannel& channel) {
  SimService service(channel);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  EXPECT_EQ(sim.Status(used, total), SimResult::kOk);
  Entries entries;
  for (std::uint32_t index = 1; index <= total; ++index) {
    const std::u16string text = sim.Text(index);
    if (text != u"!88000345") entries[index] = text;
  }
  return entries;
}

// The sample cut down to twelve places a file, so that thousands of runs are seconds: a call fails
// the same on a small card. Entries 7, 8 and 11 have extension records, 12 and every place of a
// second set are free.
void CutDown(nlohmann::json& directory) {
  constexpr std::size_t kPlaces = 12;
  for (nlohmann::json& file : directory["files"]) {
    if (file.contains("files")) CutDown(file);
    if (!file.contains("recordCount") || file["recordCount"] <= kPlaces) continue;
    file["recordCount"] = kPlaces;
    while (file["records"].size() > kPlaces) file["records"].erase(kPlaces);
  }
}

const std::vector<std::string> kAdn = {"7F10", "5F3A", "4F3A"};

void SmallUsim(nlohmann::json& image) {
  const auto name = [](std::string alpha) { return alpha + std::string(48 - alpha.size(), 'F'); };
  CutDown(image["mf"]);
  SetImageRecord(image, kAdn, 7, name("43616C6C696E672063617264") + "0B912121550541C210325476FF01");
  SetImageRecord(image, kAdn, 8,
                 name("54776F20657874656E73696F6E73") + "0B8194033221153254769810FF02");
  SetImageRecord(image, kAdn, 11, name("5477656E74792D6F6E65") + "0B8194033221051032547698FF04");
  SetImageRecord(image, kAdn, 12, "");
}

void SmallGsm(nlohmann::json& image) {
  CutDown(image["mf"]);
  SetImageRecord(image, {"7F10", "6F3A"}, 12, "");
}

void SmallLocal(nlohmann::json& image) {
  CutDown(image["mf"]);
  SetImageRecord(image, {kUsimAdf, "5F3A", "4F3A"}, 12, "");
}

struct Change {
  const char* why;
  const char* sample;
  ImageChange small;
  std::uint32_t index;
  std::u16string after;  // "" when the entry is gone
  std::function<SimResult(SimClient&)> run;
  // The second and third numbers, which may point at extension records too, were not read yet.
  bool cold = false;
};

std::vector<Change> Changes() {
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
void ReadNumbers(RadioClient& radio) {
  for (const std::uint32_t code : {kCodeSecondNumber, kCodeThirdNumber}) {
    for (const std::uint32_t set : {0U, 1U}) {
      for (std::uint32_t record = 1; record <= 12; ++record) {
        radio.File(platform::kRilSimReadRecord, code + 10 * set, record);
      }
    }
  }
}

// One change with its nth command gone wrong; 0: none does. The commands it sent.
std::vector<std::uint8_t> RunOnce(const Change& change, const std::string& image,
                                  const Entries& before, std::uint32_t command, Fault fault) {
  SoftCard card = SoftCard::FromText(image);
  FaultyChannel channel(card.Channel());
  SimResult result = SimResult::kOk;
  std::vector<SimClient::Notice> notices;
  std::vector<std::uint8_t> sent;
  {
    SimService service(channel);
    SimClient sim(service);
    RadioClient radio(service);
    EXPECT_EQ(radio.ReadEntries(1, 100).code, platform::kRilResultOk);
    if (!change.cold) ReadNumbers(radio);
    channel.Arm(command, fault);
    result = change.run(sim);
    notices = sim.Notices();
    sent = channel.Sent();
    EXPECT_EQ(channel.Fired(), command != 0);
  }
  channel.Disarm();

  const Entries after = ReadAll(channel);
  Entries expected = before;
  if (change.after.empty()) {
    expected.erase(change.index);
  } else {
    expected[change.index] = change.after;
  }
  if (command == 0) {
    EXPECT_EQ(result, SimResult::kOk);
  }
  if (result == SimResult::kOk) {
    EXPECT_EQ(after, expected) << "told to be done";
    EXPECT_EQ(notices.size(), 1U);
  } else if (StaysAway(fault)) {
    // Nobody could ask the card: either is true.
    EXPECT_TRUE(after == before || after == expected);
    const bool pulled = fault == Fault::kGoneBefore || fault == Fault::kGoneAfter;
    EXPECT_EQ(result, pulled ? SimResult::kNotInserted : SimResult::kRadioNotPresent);
    EXPECT_TRUE(notices.empty());
  } else {
    EXPECT_EQ(after, before) << "told to have failed";
    EXPECT_TRUE(notices.empty());
  }

  // What was left behind is no hindrance.
  SimService service(channel);
  SimClient sim(service);
  EXPECT_EQ(change.run(sim), SimResult::kOk);
  EXPECT_EQ(ReadAll(channel), expected);
  return sent;
}

class CardWriteFault : public testing::TestWithParam<std::size_t> {};

TEST_P(CardWriteFault, EveryCommandOfTheChangeMayFail) {
  constexpr std::uint8_t kUpdateRecord = 0xDC;
  const Change change = Changes()[GetParam()];
  SCOPED_TRACE(change.why);
  const std::string image = ImageText(change.sample, change.small);
  Entries before;
  {
    SoftCard card = SoftCard::FromText(image);
    before = ReadAll(card.Channel());
  }
  const auto sent = RunOnce(change, image, before, 0, Fault::kRefused);
  EXPECT_GE(std::count(sent.begin(), sent.end(), kUpdateRecord), 1);
  for (std::uint32_t command = 1; command <= sent.size() && !HasFailure(); ++command) {
    for (const Fault fault : kFaults) {
      const bool update = sent[command - 1] == kUpdateRecord;
      if (IsAfter(fault) && !update) continue;
      // The many reads of a cold start fail one like another.
      if (change.cold && !update && fault != Fault::kRefused && fault != Fault::kCutBefore)
        continue;
      SCOPED_TRACE("command " + std::to_string(command) + ", fault " +
                   std::to_string(static_cast<int>(fault)));
      RunOnce(change, image, before, command, fault);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Changes, CardWriteFault, testing::Range(std::size_t{0}, Changes().size()));

// The place of the last record update among the commands since Arm.
std::uint32_t LastUpdate(const FaultyChannel& channel) {
  const auto& sent = channel.Sent();
  const auto last = std::find(sent.rbegin(), sent.rend(), std::uint8_t{0xDC});
  return static_cast<std::uint32_t>(sent.rend() - last);
}

// An update that was answered too late is not sent again.
TEST(CardWriteDoubt, AnUpdateIsReadBackAndNeverSentTwice) {
  for (const Fault fault : {Fault::kLostAfter, Fault::kGarbledAfter, Fault::kCutAfter}) {
    SoftCard card("usim");
    FaultyChannel channel(card.Channel());
    SimService service(channel);
    SimClient sim(service);
    ASSERT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
    std::vector<std::string> updates;
    card.Channel().SetTrace([&updates](std::string_view line) {
      if (line.size() > 6 && line[0] == '>' && line.substr(4, 2) == "DC") {
        updates.emplace_back(line);
      }
    });
    // What is read once is known from the second time on.
    ASSERT_EQ(sim.Write(1, u"Bauer, Anna", u"3"), SimResult::kOk);
    updates.clear();
    channel.Arm(0, fault);
    EXPECT_EQ(sim.Write(1, u"Bauer, Anna", u"2"), SimResult::kOk);
    const std::uint32_t update = LastUpdate(channel);
    ASSERT_GT(update, 0U);
    EXPECT_EQ(std::exchange(updates, {}).size(), 1U);
    channel.Arm(update, fault);
    EXPECT_EQ(sim.Write(1, u"Bauer, Anna", u"1"), SimResult::kOk);
    EXPECT_TRUE(channel.Fired());
    card.Channel().SetTrace(nullptr);
    EXPECT_EQ(updates.size(), 1U);
    EXPECT_EQ(sim.Text(1), u"Bauer, Anna|1");
  }
}

// Commands of the radio interface tell the truth of an update as well.
TEST(CardWriteDoubt, ARadioUpdateIsReadBack) {
  const std::vector<std::uint8_t> group = {1, 2, 0};
  const struct {
    Fault fault;
    bool done;
  } cases[] = {{Fault::kLostBefore, false},  {Fault::kLostAfter, true},
               {Fault::kCutBefore, false},   {Fault::kCutAfter, true},
               {Fault::kResetBefore, false}, {Fault::kRefused, false}};
  for (const auto& [fault, done] : cases) {
    SCOPED_TRACE(static_cast<int>(fault));
    SoftCard card("usim");
    FaultyChannel channel(card.Channel());
    SimService service(channel);
    RadioClient radio(service);
    ASSERT_EQ(radio.File(platform::kRilSimReadRecord, 3, 1).code, platform::kRilResultOk);
    // What is read once is known from the second time on.
    for (const std::uint8_t before : {std::uint8_t{4}, std::uint8_t{3}}) {
      channel.Arm(0, fault);
      ASSERT_EQ(radio.File(platform::kRilSimUpdateRecord, 3, 249, {before, 0, 0}).code,
                platform::kRilResultOk);
    }
    const std::uint32_t update = LastUpdate(channel);
    ASSERT_GT(update, 0U);
    channel.Arm(update, fault);
    const auto result = radio.File(platform::kRilSimUpdateRecord, 3, 249, group);
    EXPECT_TRUE(channel.Fired());
    EXPECT_EQ(result.code, done ? platform::kRilResultOk : platform::kRilResultError);
    const auto held = RadioClient::Bytes(radio.File(platform::kRilSimReadRecord, 3, 249));
    EXPECT_EQ(held == group, done);
  }
}

}  // namespace
}  // namespace kelpin::device::card
