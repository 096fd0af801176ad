#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "sim/ril_client.h"
#include "tests/sim/sim_bench.h"

namespace kelpin::sim {
namespace {

using platform::kRilResultError;
using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;
using Answer = test::FakeRadio::Answer;
using Answering = test::FakeRadio::Answering;

// Little-endian words, then zeroes, or `fill`, up to `size` bytes.
Bytes Block(const std::vector<std::uint32_t>& words, const Bytes& data, std::size_t size,
            std::uint8_t fill = 0) {
  Bytes block;
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) {
      block.push_back(static_cast<std::uint8_t>(word >> shift));
    }
  }
  block.insert(block.end(), data.begin(), data.end());
  block.resize(size, fill);
  return block;
}

class RilCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(client_.Open(0));
    bench_.journal.Clear();
  }

  void AnswerWith(const Bytes& data, std::uint32_t code = platform::kRilResultOk) {
    bench_.radio.SetResponder([data, code](const auto&) {
      return Answer{code, data, Answering::kResult};
    });
  }

  // The response to a get response: `bytes` are its bytes 0-14.
  void AnswerFileInfo(std::uint8_t sizeHigh, std::uint8_t sizeLow, std::uint8_t recordLength) {
    Bytes bytes(15, 0xEE);
    bytes[2] = sizeHigh;
    bytes[3] = sizeLow;
    bytes[14] = recordLength;
    AnswerWith(test::FakeRadio::SimResponse(bytes));
  }

  // The restricted command that was sent last.
  void ExpectSent(std::uint32_t simCommand, const std::vector<std::uint32_t>& parameters,
                  const Bytes& data) {
    const test::FakeRadio::Command sent = bench_.radio.LastCommand();
    EXPECT_EQ(sent.name, "RIL_SendRestrictedSimCmd");
    EXPECT_EQ(sent.simCommand, simCommand);
    EXPECT_EQ(sent.parameters.size, 24u);
    EXPECT_EQ(sent.parameters.params, 15u);
    EXPECT_EQ(sent.parameters.fileId, 0x6F40u);
    EXPECT_THAT(parameters, ElementsAre(sent.parameters.parameter1, sent.parameters.parameter2,
                                        sent.parameters.parameter3));
    EXPECT_EQ(sent.size, data.size());
    EXPECT_EQ(sent.data, data);
  }

  test::SimBench bench_;
  RilClient client_{bench_.radio, bench_.kernel, bench_.devices};
};

TEST(RecordBytes, AreWhatStandsBehindTheHeader) {
  Bytes response(18, 1);
  response[16] = 0xAA;
  response[17] = 0xBB;
  EXPECT_THAT(RecordBytes(response), ElementsAre(0xAA, 0xBB));
  EXPECT_TRUE(RecordBytes(std::span(response).first(16)).empty());
  EXPECT_TRUE(RecordBytes(std::span(response).first(3)).empty());
  EXPECT_TRUE(RecordBytes({}).empty());
}

TEST_F(RilCommandTest, FileInfoIsAskedWithAGetResponse) {
  AnswerFileInfo(0x01, 0x18, 28);
  EXPECT_TRUE(client_.GetFileInfo(0x6F40));
  ExpectSent(3, {0, 0, 0}, {});
}

TEST_F(RilCommandTest, FileInfoGivesTheFilesMeasures) {
  EXPECT_EQ(client_.RecordLength(), 0u);
  EXPECT_EQ(client_.RecordCount(), 0u);
  AnswerFileInfo(0x01, 0x18, 28);  // 280 bytes
  EXPECT_TRUE(client_.GetFileInfo(0x6F40));
  EXPECT_EQ(client_.RecordLength(), 28u);
  EXPECT_EQ(client_.RecordCount(), 10u);
  EXPECT_EQ(client_.MaxAlphaLength(), 14u);
  EXPECT_EQ(client_.MaxDigits(), 20u);
}

TEST_F(RilCommandTest, AFileWithoutRecordsHasACountOfZero) {
  AnswerFileInfo(0, 0, 28);
  EXPECT_TRUE(client_.GetFileInfo(0x6F40));
  EXPECT_EQ(client_.RecordCount(), 0u);
}

TEST_F(RilCommandTest, RecordsTooShortForANumberHaveNoRoomForAName) {
  AnswerFileInfo(0, 26, 13);  // extension records
  EXPECT_TRUE(client_.GetFileInfo(0x6F4C));
  EXPECT_EQ(client_.RecordCount(), 2u);
  EXPECT_EQ(client_.MaxAlphaLength(), 0u);
}

TEST_F(RilCommandTest, FileInfoFailsOnAResponseThatEndsBeforeTheRecordLength) {
  for (const Bytes& bytes : {Bytes{}, Bytes(14, 1)}) {
    AnswerWith(test::FakeRadio::SimResponse(bytes));
    EXPECT_FALSE(client_.GetFileInfo(0x6F40)) << bytes.size();
  }
}

TEST_F(RilCommandTest, FileInfoFailsOnRecordsOfNoLength) {
  AnswerFileInfo(0x01, 0x18, 0);
  EXPECT_FALSE(client_.GetFileInfo(0x6F40));
}

TEST_F(RilCommandTest, AFailedFileInfoLeavesTheMeasures) {
  AnswerFileInfo(0x01, 0x18, 28);
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  AnswerWith({}, kRilResultError);
  EXPECT_FALSE(client_.GetFileInfo(0x6F49));
  EXPECT_EQ(client_.RecordLength(), 28u);
  EXPECT_EQ(client_.RecordCount(), 10u);
}

TEST_F(RilCommandTest, ARecordIsReadInAbsoluteModeWithTheFilesRecordLength) {
  bench_.radio.SetFile(0x6F40, {28, {Bytes(28, 0x11), Bytes(28, 0x22)}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  Bytes response;
  EXPECT_TRUE(client_.ReadRecord(0x6F40, 2, response));
  ExpectSent(2, {2, 4, 28}, {});
  EXPECT_EQ(response.size(), 44u);
  EXPECT_EQ(Bytes(RecordBytes(response).begin(), RecordBytes(response).end()), Bytes(28, 0x22));
}

TEST_F(RilCommandTest, ARecordTheCardDoesNotHaveFails) {
  bench_.radio.SetFile(0x6F40, {28, {Bytes(28, 0x11)}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  Bytes response = {7};
  EXPECT_FALSE(client_.ReadRecord(0x6F40, 2, response));
  EXPECT_EQ(response, Bytes{7});
}

TEST_F(RilCommandTest, AnUpdateSendsTheRecordAndTellsTheDriver) {
  bench_.radio.SetFile(0x6F40, {3, {{1, 1, 1}, {2, 2, 2}}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  bench_.journal.Clear();
  const Bytes record = {7, 8, 9};
  EXPECT_TRUE(client_.UpdateRecord(0x6F40, 2, record));
  ExpectSent(5, {2, 4, 3}, record);
  EXPECT_EQ(bench_.radio.GetFile(0x6F40)->records[1], record);
  EXPECT_THAT(bench_.journal.Entries("OpenDevice"),
              ElementsAre("OpenDevice(RIL1:, 0xC0000000, 3, 3, 4)"));
  EXPECT_THAT(bench_.journal.Entries("DeviceControl"), ElementsAre("DeviceControl(1, 0x3000338)"));
  EXPECT_THAT(bench_.journal.Entries("CloseDevice"), ElementsAre("CloseDevice(1)"));
  EXPECT_EQ(bench_.devices.OpenHandles(), 0u);
}

TEST_F(RilCommandTest, AnUpdateIsDoneEvenWithoutTheDriver) {
  bench_.radio.SetFile(0x6F40, {3, {{1, 1, 1}}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  bench_.devices.SetPresent(false);
  const Bytes record = {7, 8, 9};
  EXPECT_TRUE(client_.UpdateRecord(0x6F40, 1, record));
  EXPECT_EQ(bench_.journal.Count("DeviceControl"), 0u);
  EXPECT_EQ(bench_.journal.Count("CloseDevice"), 0u);
  EXPECT_EQ(bench_.radio.GetFile(0x6F40)->records[0], record);
}

TEST_F(RilCommandTest, AnUpdateIsDoneEvenWhenTheDriverRefusesTheNews) {
  bench_.radio.SetFile(0x6F40, {3, {{1, 1, 1}}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  bench_.failures.FailCallOf("DeviceControl", 1);
  EXPECT_TRUE(client_.UpdateRecord(0x6F40, 1, Bytes{7, 8, 9}));
  EXPECT_EQ(bench_.devices.OpenHandles(), 0u);
}

TEST_F(RilCommandTest, AFailedUpdateTellsTheDriverNothing) {
  bench_.radio.SetFile(0x6F40, {3, {{1, 1, 1}}});
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  EXPECT_FALSE(client_.UpdateRecord(0x6F40, 2, Bytes{7, 8, 9}));
  EXPECT_EQ(bench_.journal.Count("OpenDevice"), 0u);
}

TEST_F(RilCommandTest, ARecordOfAnotherLengthIsNotSent) {
  bench_.radio.SetFile(0x6F40, {3, {{1, 1, 1}}});
  EXPECT_FALSE(client_.UpdateRecord(0x6F40, 1, Bytes{}));  // the length is not known
  ASSERT_TRUE(client_.GetFileInfo(0x6F40));
  EXPECT_FALSE(client_.UpdateRecord(0x6F40, 1, Bytes{7, 8}));
  EXPECT_FALSE(client_.UpdateRecord(0x6F40, 1, Bytes{7, 8, 9, 10}));
  EXPECT_EQ(bench_.radio.Commands().size(), 1u);
  EXPECT_EQ(bench_.radio.GetFile(0x6F40)->records[0], (Bytes{1, 1, 1}));
}

TEST_F(RilCommandTest, AFileCommandReadsARecord) {
  bench_.radio.SetCodedFile(12, {4, {{1, 2, 3, 4}, {5, 6, 7, 8}}});
  Bytes response;
  EXPECT_TRUE(client_.ReadExtRecord(12, 2, response));
  const test::FakeRadio::Command sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.name, "RIL_DevSpecific");
  EXPECT_EQ(sent.size, 288u);
  EXPECT_EQ(sent.block, Block({128, 15, 2, 12, 2, 4, 0, 0}, {}, 288));
  EXPECT_THAT(RecordBytes(response), ElementsAre(5, 6, 7, 8));
}

TEST_F(RilCommandTest, AFileCommandAsksForAFilesMeasures) {
  bench_.radio.SetCodedFile(44, {13, std::vector<Bytes>(20, Bytes(13, 0xFF))});
  Bytes response;
  EXPECT_TRUE(client_.GetExtResponse(44, response));
  const test::FakeRadio::Command sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.size, 288u);
  EXPECT_EQ(sent.block, Block({128, 15, 3, 44, 0, 0, 0, 0}, {}, 288));
  ASSERT_EQ(RecordBytes(response).size(), 15u);
  EXPECT_EQ(RecordBytes(response)[2], 0x01);  // 260 bytes
  EXPECT_EQ(RecordBytes(response)[3], 0x04);
  EXPECT_EQ(RecordBytes(response)[14], 13);
}

TEST_F(RilCommandTest, AFileCommandWritesARecordWithZeroesBehindIt) {
  bench_.radio.SetCodedFile(26, {4, std::vector<Bytes>(3, Bytes(4, 0xFF))});
  EXPECT_TRUE(client_.WriteExtRecord(26, 3, Bytes{9, 8, 7, 6}));
  const test::FakeRadio::Command sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.size, 288u);
  EXPECT_EQ(sent.block, Block({128, 15, 5, 26, 3, 4, 4, 4}, {9, 8, 7, 6}, 288));
  EXPECT_EQ(bench_.radio.GetCodedFile(26)->records[2], (Bytes{9, 8, 7, 6}));
}

TEST_F(RilCommandTest, AFileCommandWritesARecordWithAnotherFillBehindIt) {
  bench_.radio.SetCodedFile(11, {2, {{0, 0}}});
  EXPECT_TRUE(client_.WriteExtRecord(11, 1, Bytes{3, 255}, 0xFF));
  EXPECT_EQ(bench_.radio.LastCommand().block,
            Block({128, 15, 5, 11, 1, 4, 2, 2}, {3, 255}, 288, 0xFF));
}

TEST_F(RilCommandTest, ALongestRecordFillsTheBlock) {
  bench_.radio.SetCodedFile(2, {255, {Bytes(255, 0)}});
  EXPECT_TRUE(client_.WriteExtRecord(2, 1, Bytes(255, 5)));
  EXPECT_FALSE(client_.WriteExtRecord(2, 1, Bytes(257, 5)));
  EXPECT_EQ(bench_.radio.Commands().size(), 1u);
}

TEST_F(RilCommandTest, TheReferenceFileIsNeverWritten) {
  bench_.radio.SetCodedFile(0, {2, {{1, 2}}});
  EXPECT_FALSE(client_.WriteExtRecord(0, 1, Bytes{9, 9}));
  EXPECT_TRUE(bench_.radio.Commands().empty());
  Bytes response;
  EXPECT_TRUE(client_.ReadExtRecord(0, 1, response));
}

TEST_F(RilCommandTest, TheBulkReadGivesUsedLocationsInOrder) {
  bench_.radio.SetEntry(12, {u"Out", u"9", 0, 1, {}});
  bench_.radio.SetEntry(10, {u"Bo", u"4420", 1, 1, {}});
  bench_.radio.SetEntry(3, {u"Ada", u"123", 0, 1, {}});
  Bytes response;
  EXPECT_TRUE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_THAT(bench_.journal.Entries("RIL_"), ElementsAre("RIL_ReadPhonebookEntries(1, 1, 10)"));
  ASSERT_EQ(response.size(), 2 * sizeof(platform::RilPhonebookEntry));
  platform::RilPhonebookEntry entry;
  std::memcpy(&entry, response.data(), sizeof(entry));
  EXPECT_EQ(entry.index, 3u);
  EXPECT_EQ(std::u16string(entry.text), u"Ada");
  std::memcpy(&entry, response.data() + sizeof(entry), sizeof(entry));
  EXPECT_EQ(entry.index, 10u);
  EXPECT_EQ(std::u16string(entry.address), u"4420");
  EXPECT_EQ(entry.addressType, 1u);
}

TEST_F(RilCommandTest, TheExtendedBulkReadSendsThreeWordsAndTellsOfOne) {
  bench_.radio.SetEntry(3, {u"Ada", u"123", 0, 1, 1});
  Bytes response;
  EXPECT_TRUE(client_.ReadPhonebookEntriesEx(1, 10, response));
  const test::FakeRadio::Command sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.name, "RIL_DevSpecific");
  EXPECT_EQ(sent.size, 4u);
  EXPECT_EQ(sent.block, Block({167, 1, 10}, {}, 12));
  ASSERT_EQ(response.size(), sizeof(platform::RilPhonebookEntryEx));
  platform::RilPhonebookEntryEx entry;
  std::memcpy(&entry, response.data(), sizeof(entry));
  EXPECT_EQ(entry.index, 3u);
  EXPECT_EQ(entry.hidden, 1u);
  EXPECT_NE(entry.params & platform::kRilEntryHidden, 0u);
}

TEST_F(RilCommandTest, ARangeWithoutEntriesIsReadSuccessfully) {
  Bytes response = {7};
  EXPECT_TRUE(client_.ReadPhonebookEntries(1, 10, response));
  EXPECT_EQ(response, Bytes{});
}

TEST_F(RilCommandTest, ChangesOfThePhonebookAreAskedWithOneWord) {
  bench_.radio.SetPhonebookChanged(1);
  std::uint32_t changed = 9;
  EXPECT_TRUE(client_.PhonebookChanged(changed));
  EXPECT_EQ(changed, 1u);
  const test::FakeRadio::Command sent = bench_.radio.LastCommand();
  EXPECT_EQ(sent.size, 4u);
  EXPECT_EQ(sent.block, Block({129}, {}, 4));
  EXPECT_TRUE(client_.PhonebookChanged(changed));
  EXPECT_EQ(changed, 0u);
}

TEST_F(RilCommandTest, AnAnswerTooShortForAWordTellsNoChange) {
  AnswerWith({1, 0, 0});
  std::uint32_t changed = 9;
  EXPECT_FALSE(client_.PhonebookChanged(changed));
  EXPECT_EQ(changed, 9u);
}

}  // namespace
}  // namespace kelpin::sim
