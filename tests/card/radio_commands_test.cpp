// The radio interface's commands over sample cards, byte for byte.
#include <gtest/gtest.h>

#include "device/card/card_devices.h"
#include "device/card/card_layout.h"
#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using Paths = std::vector<std::string>;

constexpr std::uint32_t kRead = platform::kRilSimReadRecord;
constexpr std::uint32_t kInfo = platform::kRilSimGetResponse;
constexpr std::uint32_t kUpdate = platform::kRilSimUpdateRecord;

std::string ReadHex(const RadioClient::Result& result) {
  return result.code == platform::kRilResultOk ? ToHex(RadioClient::Bytes(result)) : "error";
}

// Record length and count as a program takes them from the answer: byte 14, bytes 2-3.
std::pair<int, int> Layout(const RadioClient::Result& result) {
  const auto bytes = RadioClient::Bytes(result);
  if (result.code != platform::kRilResultOk || bytes.size() < 15 || bytes[14] == 0) return {};
  return {bytes[14], (bytes[2] * 256 + bytes[3]) / bytes[14]};
}

TEST(RadioCommands, ABulkReadGivesUsedLocationsAscendingWithoutAPlus) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const auto result = radio.ReadEntries(16, 20);
  ASSERT_EQ(result.code, platform::kRilResultOk);
  const auto records = RadioClient::Records<platform::RilPhonebookEntry>(result);
  ASSERT_EQ(records.size(), 4U);  // 17 is free
  EXPECT_EQ(records[0].index, 16U);
  EXPECT_EQ(records[1].index, 18U);
  EXPECT_EQ(records[3].index, 20U);
  EXPECT_EQ(records[3].size, 1044U);
  EXPECT_EQ(std::u16string(records[3].text), u"Amy Byrne");
  EXPECT_EQ(std::u16string(records[3].address), u"447700900037");
  EXPECT_EQ(records[3].addressType, 1U);
  EXPECT_EQ(records[3].numPlan, 1U);
}

TEST(RadioCommands, ABulkReadOfFreeLocationsIsASuccessWithoutRecords) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  RadioClient radio(service);
  for (const auto& range : {std::pair(1, 10), std::pair(501, 510), std::pair(20, 10)}) {
    const auto result = radio.ReadEntries(static_cast<std::uint32_t>(range.first),
                                          static_cast<std::uint32_t>(range.second));
    EXPECT_EQ(result.code, platform::kRilResultOk);
    EXPECT_TRUE(result.data.empty());
  }
}

TEST(RadioCommands, TheExtendedBulkReadTellsHiddenEntries) {
  for (const bool search : {true, false}) {
    SCOPED_TRACE(search);
    SoftCard card("usim", [search](nlohmann::json& image) { image["searchRecord"] = search; });
    SimService service(card.Channel());
    RadioClient radio(service);
    const auto result = radio.ReadEntriesEx(1, 500);
    ASSERT_EQ(result.code, platform::kRilResultOk);
    std::vector<std::uint32_t> hidden;
    for (const auto& record : RadioClient::Records<platform::RilPhonebookEntryEx>(result)) {
      EXPECT_EQ(record.size, 1048U);
      EXPECT_NE(record.params & platform::kRilEntryHidden, 0U);
      if (record.hidden != 0) hidden.push_back(record.index);
    }
    EXPECT_EQ(hidden, (std::vector<std::uint32_t>{20, 60, 258}));
  }
}

TEST(RadioCommands, OwnNumbersAreReadFromTheApplication) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const auto info = radio.Restricted(kInfo, 0x6F40);
  EXPECT_EQ(RadioClient::Status(info), 0x9000);
  EXPECT_EQ(Layout(info), std::pair(30, 4));
  EXPECT_EQ(ReadHex(radio.Restricted(kRead, 0x6F40, 1, 30)),
            "4D79204E6F2EFFFFFFFFFFFFFFFFFFFF0791947121436587FFFFFFFFFFFF");
  EXPECT_EQ(ReadHex(radio.Restricted(kRead, 0x6F40, 2, 30)), std::string(60, 'F'));
  EXPECT_EQ(RadioClient::Status(radio.Restricted(kRead, 0x6F40, 5, 30)), 0x6A83);
  EXPECT_EQ(RadioClient::Status(radio.Restricted(kRead, 0x6F40, 1, 28)), 0x6700);
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F49)), std::pair(30, 10));
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F4C)), std::pair(13, 4));
  EXPECT_EQ(ReadHex(radio.Restricted(kRead, 0x6F4C, 1, 13)), "0202011CFFFFFFFFFFFFFFFFFF");
  // EF_EXT1 is not in the application: the one below DF TELECOM.
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F4A)), std::pair(13, 20));
  EXPECT_EQ(RadioClient::Status(radio.Restricted(kInfo, 0x6F07)), 0x6A82);
}

TEST(RadioCommands, AGsmCardHasTheSameFilesBelowDfTelecom) {
  SoftCard card("sim-250");
  SimService service(card.Channel());
  RadioClient radio(service);
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F40)), std::pair(30, 4));
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F49)), std::pair(30, 10));
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F4A)), std::pair(13, 10));
  EXPECT_EQ(Layout(radio.Restricted(kInfo, 0x6F4C)), std::pair(13, 4));
  // No reference file: no extended phone book.
  EXPECT_EQ(radio.File(kRead, kCodePbr, 1).code, platform::kRilResultError);
  EXPECT_EQ(Layout(radio.File(kInfo, kCodeAdn, 0)), std::pair(30, 250));
}

TEST(RadioCommands, TheExtensionsOfServiceNumbersAreThoseBesideThem) {
  SoftCard card("usim", [](nlohmann::json& image) {
    // Service numbers below DF TELECOM alone, an EF_EXT3 in both places.
    auto& own = ImageFile(image, {kUsimAdf})["files"];
    auto& telecom = ImageFile(image, {"7F10"})["files"];
    for (std::size_t i = 0; i < own.size(); ++i) {
      if (own[i].value("id", "") == "6F49") {
        telecom.push_back(own[i]);
        own.erase(i);
        break;
      }
    }
    telecom.push_back({{"id", "6F4C"},
                       {"structure", "linearFixed"},
                       {"recordLength", 13},
                       {"recordCount", 1},
                       {"records", {"020177FFFFFFFFFFFFFFFFFFFF"}}});
  });
  SimService service(card.Channel());
  RadioClient radio(service);
  EXPECT_EQ(ReadHex(radio.Restricted(kRead, 0x6F4C, 1, 13)), "020177FFFFFFFFFFFFFFFFFFFF");
}

TEST(RadioCommands, AWrittenOwnNumberIsOnTheCardAndSessionsAreTold) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  RadioClient deaf(service, platform::kRilClassDeviceSpecific);
  const std::string record = "4F776EFFFFFFFFFFFFFFFFFFFFFFFFFF0381214365FFFFFFFFFFFFFFFFFF";
  EXPECT_EQ(
      RadioClient::Status(radio.Restricted(kUpdate, 0x6F40, 2, 30, Hex(record.substr(0, 60)))),
      0x9000);
  const auto notices = radio.Notices(1);
  ASSERT_EQ(notices.size(), 1U);
  EXPECT_EQ(notices[0].code, platform::kRilNotifyMiscellaneousSim);
  EXPECT_EQ(ToHex(notices[0].data), "FFFFFFFF");  // -1
  EXPECT_TRUE(deaf.Notices(0).empty());
  nlohmann::json image = card.Image();
  EXPECT_EQ(ImageRecord(image, {kUsimAdf, "6F40"}, 2), record.substr(0, 60));
  EXPECT_EQ(ReadHex(radio.Restricted(kRead, 0x6F40, 2, 30)), record.substr(0, 60));
}

TEST(RadioCommands, AServiceNumberMayNotBeWrittenAndTheCardsWordIsPassedOn) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const auto refused =
      radio.Restricted(kUpdate, 0x6F49, 1, 30, std::vector<std::uint8_t>(30, 0xFF));
  EXPECT_EQ(refused.code, platform::kRilResultError);
  EXPECT_EQ(RadioClient::Status(refused), 0x6982);
}

TEST(RadioCommands, EveryFileCodeNamesItsFile) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const struct {
    std::uint32_t code;
    std::pair<int, int> layout;  // record length, count
  } codes[] = {{0, {100, 4}},   {50, {38, 250}}, {1, {3, 250}},  {11, {3, 250}}, {2, {42, 100}},
               {12, {42, 100}}, {3, {3, 250}},   {13, {3, 250}}, {6, {15, 250}}, {16, {15, 250}},
               {7, {17, 40}},   {17, {17, 40}},  {40, {20, 50}}, {41, {20, 50}}, {44, {13, 20}},
               {5, {14, 10}},   {4, {16, 10}}};
  for (const auto& [code, layout] : codes) {
    EXPECT_EQ(Layout(radio.File(kInfo, code, 0)), layout) << code;
  }
  for (const std::uint32_t none : {8U, 9U, 10U, 14U, 15U, 21U, 22U, 42U, 43U, 45U, 51U, 60U}) {
    const auto result = radio.File(kInfo, none, 0);
    EXPECT_EQ(result.code, platform::kRilResultError) << none;
    EXPECT_EQ(RadioClient::Status(result), 0x6A82) << none;
  }
  // The sets keep files of their own: e-mail is shared, second numbers are not.
  EXPECT_EQ(ReadHex(radio.File(kRead, 2, 1)), ReadHex(radio.File(kRead, 12, 1)));
  EXPECT_EQ(ReadHex(radio.File(kRead, 0, 1)).substr(0, 14), "A819C0034F3A01");
  EXPECT_EQ(ReadHex(radio.File(kRead, 0, 2)).substr(0, 14), "A819C0034F3B02");
  EXPECT_EQ(RadioClient::Status(radio.File(kRead, 0, 3)), 0x6A83);
}

TEST(RadioCommands, ALayoutIsNeverWrittenAndAnEntryNotBehindTheSimInterface) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const nlohmann::json before = card.Image();
  EXPECT_NE(radio.File(kUpdate, kCodePbr, 1, std::vector<std::uint8_t>(100, 0x00)).code,
            platform::kRilResultOk);
  EXPECT_NE(radio.File(kUpdate, kCodeAdn, 1, std::vector<std::uint8_t>(38, 0x41)).code,
            platform::kRilResultOk);
  EXPECT_EQ(card.Image(), before);
}

TEST(RadioCommands, AnUpdateReachesTheCardAndAWrongLengthDoesNot) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  const std::string group = "010200";
  EXPECT_EQ(radio.File(kUpdate, 13, 250, Hex(group)).code, platform::kRilResultOk);
  EXPECT_EQ(ReadHex(radio.File(kRead, 13, 250)), group);
  nlohmann::json image = card.Image();
  EXPECT_EQ(ImageRecord(image, {"7F10", "5F3A", "4F71"}, 250), group);
  EXPECT_EQ(RadioClient::Status(radio.File(kUpdate, 13, 250, Hex("0102"))), 0x6700);
  EXPECT_EQ(RadioClient::Status(radio.File(kUpdate, 13, 0, Hex(group))), 0x6A83);
  EXPECT_EQ(RadioClient::Status(radio.File(kUpdate, 13, 251, Hex(group))), 0x6A83);
  EXPECT_EQ(RadioClient::Status(radio.File(kRead, 13, 999)), 0x6A83);
}

TEST(RadioCommands, FreeRecordsOfAFileCostOneSearchForAllOfThem) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  RadioClient radio(service);
  ASSERT_EQ(radio.File(kInfo, 2, 0).code, platform::kRilResultOk);
  const auto before = card.Channel().CommandCount();
  for (std::uint32_t record = 1; record <= 60; ++record) {
    EXPECT_EQ(ReadHex(radio.File(kRead, 2, record)), std::string(84, 'F'));
  }
  EXPECT_LE(card.Channel().CommandCount() - before, 3U);  // select, search, fetch
}

TEST(RadioCommands, TheExtensionBitmapHasOneBitARecordFromTheTop) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  // 20 records, 1 to 4 in use; the last four bits stand for none and count as taken.
  const auto result = radio.Ask(platform::kRilDevFreeExtensionRecords);
  ASSERT_EQ(result.code, platform::kRilResultOk);
  EXPECT_EQ(ToHex(result.data),
            "14000000"
            "03000000"
            "F0000F");

  SimClient sim(service);
  ASSERT_EQ(sim.Delete(113), SimResult::kOk);  // gives record 1 back
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevFreeExtensionRecords).data),
            "14000000"
            "03000000"
            "70000F");
}

TEST(RadioCommands, ACardWithoutExtensionsHasAnEmptyBitmap) {
  SoftCard card("sim-250", [](nlohmann::json& image) {
    auto& files = ImageFile(image, {"7F10"})["files"];
    for (std::size_t i = 0; i < files.size(); ++i) {
      if (files[i].value("id", "") == "6F4A") {
        files.erase(i);
        break;
      }
    }
  });
  SimService service(card.Channel());
  RadioClient radio(service);
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevFreeExtensionRecords).data), "0000000000000000");
  SimClient sim(service);
  platform::SimCaps caps;
  ASSERT_EQ(sim.Caps(caps), SimResult::kOk);
  EXPECT_EQ(caps.maxAddressLength, 20U);
  EXPECT_EQ(sim.Write(101, u"x", std::u16string(21, u'1')), SimResult::kBadParameter);
  EXPECT_EQ(sim.Text(8), u"Two extensions|49302312512345678901");
}

TEST(RadioCommands, ChangesByOthersAreToldOnce) {
  SoftCard card("usim");
  SimService service(card.Channel());
  RadioClient radio(service);
  SimClient sim(service);
  EXPECT_EQ(sim.Text(1), u"Bauer, Anna|+12125550100");
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevPhonebookChanged).data), "00000000");
  ASSERT_TRUE(card.Channel().Reset());
  radio.Notices(2);
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevPhonebookChanged).data), "01000000");
  EXPECT_EQ(ToHex(radio.Ask(platform::kRilDevPhonebookChanged).data), "00000000");
}

TEST(RadioCommands, SetsBehindOneOfAnotherSizeHaveNoCodes) {
  SoftCard card("usim-1000", [](nlohmann::json& image) {
    auto& second = ImageFile(image, {"7F10", "5F3A", "4F3B"});
    second["recordCount"] = 200;
    while (second["records"].size() > 200) second["records"].erase(200);
  });
  SimService service(card.Channel());
  RadioClient radio(service);
  SimClient sim(service);
  std::uint32_t used = 0;
  std::uint32_t total = 0;
  ASSERT_EQ(sim.Status(used, total), SimResult::kOk);
  EXPECT_EQ(total, 950U);
  EXPECT_EQ(sim.Text(701), u"Hotel East|+14155550120");  // the fourth set's first
  EXPECT_EQ(radio.File(kInfo, 16, 0).code, platform::kRilResultOk);
  EXPECT_NE(radio.File(kInfo, 26, 0).code, platform::kRilResultOk);
  EXPECT_EQ(radio.File(kRead, kCodePbr, 2).code, platform::kRilResultOk);
  EXPECT_NE(radio.File(kRead, kCodePbr, 3).code, platform::kRilResultOk);
}

TEST(RadioCommands, BlocksOfTheWrongShapeAreNotTaken) {
  SoftCard card("usim-empty");
  SimService service(card.Channel());
  RadioClient radio(service);
  const std::uint32_t unknown = 130;
  EXPECT_LT(service.RIL_DevSpecific(radio.Handle(), &unknown, 4), 0);
  EXPECT_LT(service.RIL_DevSpecific(radio.Handle(), nullptr, 4), 0);
  EXPECT_LT(service.RIL_DevSpecific(radio.Handle(), &unknown, 3), 0);
  const platform::RilSimFileCommand command;
  EXPECT_LT(service.RIL_DevSpecific(radio.Handle(), &command, 284), 0);
  platform::RilSimCmdParameters parameters;
  parameters.size = 20;
  EXPECT_LT(service.RIL_SendRestrictedSimCmd(radio.Handle(), 3, parameters, nullptr, 0), 0);
}

TEST(CardDevices, TheRadioDriverTakesItsOneControlCode) {
  CardDevices devices;
  const auto device = devices.OpenDevice(u"RIL1:", platform::kGenericReadWrite,
                                         platform::kShareReadWrite, platform::kOpenExisting, 4);
  ASSERT_NE(device, 0U);
  EXPECT_EQ(devices.DeviceControl(device, 0x03000338), 1);
  EXPECT_EQ(devices.DeviceControl(device, 0x03000339), 0);
  devices.CloseDevice(device);
  EXPECT_EQ(devices.DeviceControl(device, 0x03000338), 0);
  EXPECT_EQ(devices.OpenDevice(u"RIL2:", platform::kGenericReadWrite, platform::kShareReadWrite,
                               platform::kOpenExisting, 4),
            0U);
}

}  // namespace
}  // namespace kelpin::device::card
