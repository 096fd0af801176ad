#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/hex.h"
#include "device/softcard/image_reader.h"
#include "device/softcard/image_writer.h"

namespace kelpin::device::softcard {
namespace {

const std::filesystem::path kCards = std::filesystem::path(KELPIN_SOURCE_DIR) / "res" / "cards";

std::string Text(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct ExpectedFile {
  const char* path;
  std::size_t length;  // of a record; 0: transparent
  std::size_t count;
  std::size_t used;  // records that are not free; 0 where it does not matter
};

struct Sample {
  const char* name;
  Protocol protocol;
  Classes classes;
  bool searchRecord;
  std::vector<ExpectedFile> files;
};

const std::vector<Sample>& Samples() {
  static const std::vector<Sample> samples = {
      {"sim-250",
       Protocol::kT0,
       Classes::kGsm,
       true,
       {{"3F00/7F10/6F3A", 30, 250, 120},
        {"3F00/7F10/6F4A", 13, 10, 0},
        {"3F00/7F10/6F40", 30, 4, 1},
        {"3F00/7F10/6F49", 30, 10, 6},
        {"3F00/7F10/6F4C", 13, 4, 1},
        {"3F00/7F10/6F3C", 176, 10, 3}}},
      {"usim",
       Protocol::kT0,
       Classes::kBoth,
       true,
       {{"3F00/2FE2", 0, 0, 0},
        {"3F00/2F00", 32, 4, 2},
        {"3F00/7F10/6F3A", 38, 250, 0},
        {"3F00/7F10/5F3A/4F30", 100, 4, 2},
        {"3F00/7F10/5F3A/4F3A", 38, 250, 0},
        {"3F00/7F10/5F3A/4F3B", 38, 250, 0},
        {"3F00/7F10/5F3A/4F60", 3, 250, 0},
        {"3F00/7F10/5F3A/4F40", 15, 250, 0},
        {"3F00/7F10/5F3A/4F48", 17, 40, 0},
        {"3F00/7F10/5F3A/4F50", 42, 100, 0},
        {"3F00/7F10/5F3A/4F58", 20, 50, 0},
        {"3F00/7F10/5F3A/4F68", 2, 250, 2},
        {"3F00/7F10/5F3A/4F70", 3, 250, 0},
        {"3F00/7F10/5F3A/4F78", 2, 250, 0},
        {"3F00/7F10/5F3A/4F80", 13, 20, 0},
        {"3F00/7F10/5F3A/4F81", 14, 10, 6},
        {"3F00/7F10/5F3A/4F82", 16, 10, 5},
        {"3F00/7F10/5F3A/4F83", 15, 5, 1},
        {"3F00/7F10/5F3A/4F22", 0, 0, 0},
        {"3F00/7F10/5F3A/4F23", 0, 0, 0},
        {"3F00/7F10/5F3A/4F24", 0, 0, 0},
        {"3F00/A0000000871002FF49FF0589/6F40", 30, 4, 1},
        {"3F00/A0000000871002FF49FF0589/6F49", 30, 10, 6},
        {"3F00/A0000000871002FF49FF0589/6F3C", 176, 20, 3},
        {"3F00/A0000000871002FF49FF0589/6F38", 0, 0, 0}}},
      {"usim-empty",
       Protocol::kT0,
       Classes::kBoth,
       true,
       {{"3F00/7F10/5F3A/4F30", 100, 4, 2}, {"3F00/7F10/5F3A/4F3A", 30, 250, 0}}},
      {"usim-full",
       Protocol::kT0,
       Classes::kFirst,
       true,
       {{"3F00/7F10/5F3A/4F30", 100, 4, 1},
        {"3F00/7F10/5F3A/4F3A", 32, 250, 250},
        {"3F00/7F10/5F3A/4F80", 13, 6, 4}}},
      {"usim-1000",
       Protocol::kT0,
       Classes::kBoth,
       true,
       {{"3F00/7F10/5F3A/4F30", 100, 4, 4},
        {"3F00/7F10/5F3A/4F3A", 30, 250, 240},
        {"3F00/7F10/5F3A/4F3B", 30, 250, 230},
        {"3F00/7F10/5F3A/4F3C", 30, 250, 220},
        {"3F00/7F10/5F3A/4F3D", 30, 250, 210}}},
      {"usim-local",
       Protocol::kT1,
       Classes::kUicc,
       false,
       {{"3F00/A0000000871002FF49FF0589/5F3A/4F30", 100, 4, 1},
        {"3F00/A0000000871002FF49FF0589/5F3A/4F3A", 29, 250, 81}}},
      {"damaged",
       Protocol::kT0,
       Classes::kBoth,
       true,
       {{"3F00/7F10/5F3A/4F30", 100, 4, 4}, {"3F00/7F10/5F3A/4F3A", 30, 250, 32}}},
  };
  return samples;
}

std::size_t Used(const FileContent& content) {
  std::size_t used = 0;
  for (std::size_t record = 1; record <= content.RecordCount(); ++record) {
    used += content.IsFree(record) ? 0 : 1;
  }
  return used;
}

void Load(const std::string& name, CardImage& image) {
  std::string error;
  ASSERT_TRUE(ReadImage(Text(kCards / (name + ".json")), image, error)) << name << error;
}

TEST(Samples, EveryCardHasTheFilesItIsThereFor) {
  for (const Sample& sample : Samples()) {
    SCOPED_TRACE(sample.name);
    CardImage image;
    Load(sample.name, image);
    EXPECT_EQ(image.protocol, sample.protocol);
    EXPECT_EQ(image.classes, sample.classes);
    EXPECT_EQ(image.searchRecord, sample.searchRecord);
    EXPECT_EQ(image.pin1.code, "1234");
    EXPECT_FALSE(image.pin1.enabled);
    for (const ExpectedFile& expected : sample.files) {
      SCOPED_TRACE(expected.path);
      const CardFile* file = image.Find(expected.path);
      ASSERT_NE(file, nullptr);
      ASSERT_NE(file->content, nullptr);
      EXPECT_EQ(file->content->recordLength, expected.length);
      EXPECT_EQ(file->content->RecordCount(), expected.count);
      if (expected.used != 0) {
        EXPECT_EQ(Used(*file->content), expected.used);
      }
    }
  }
}

TEST(Samples, EveryCardOfTheFolderIsKnownAndWrittenAsTheProgramWritesIt) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kCards)) {
    SCOPED_TRACE(entry.path().string());
    const std::string text = Text(entry.path());
    CardImage image;
    std::string error;
    ASSERT_TRUE(ReadImage(text, image, error)) << error;
    EXPECT_EQ(WriteImage(image), text);
    EXPECT_LT(text.size(), 250000u);
    ++count;
  }
  EXPECT_EQ(count, Samples().size());
}

TEST(Samples, ThePhoneBookOfTwoSetsHoldsOneHundredEighty) {
  CardImage image;
  Load("usim", image);
  EXPECT_EQ(Used(*image.Find("3F00/7F10/5F3A/4F3A")->content) +
                Used(*image.Find("3F00/7F10/5F3A/4F3B")->content),
            180u);
  CardImage empty;
  Load("usim-empty", empty);
  EXPECT_EQ(Used(*empty.Find("3F00/7F10/5F3A/4F3A")->content), 0u);
  EXPECT_EQ(Used(*empty.Find("3F00/7F10/5F3A/4F3B")->content), 0u);
}

// One command after the other; the last answer.
std::string Say(ApduInterpreter& card, const std::vector<std::string>& commands) {
  std::string answer;
  for (const std::string& command : commands) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(FromHex(command, bytes));
    answer = ToHex(card.Process(bytes));
  }
  return answer;
}

TEST(Samples, TheSimTellsItsPhoneBookInTheOldForm) {
  CardImage image;
  Load("sim-250", image);
  ApduInterpreter card(image, [] { return true; });
  // 250 records of 30 bytes are 1D4C.
  EXPECT_EQ(Say(card, {"A0A40000027F10", "A0A40000026F3A", "A0C000000F"}),
            "00001D4C6F3A0400"
            "11F044"
            "01"
            "02"
            "011E"
            "9000");
  // The first entry: "Notruf", 112.
  EXPECT_EQ(Say(card, {"A0B201041E"}),
            "4E6F74727566FFFFFFFFFFFFFFFFFFFF"
            "038111F2FFFFFFFFFFFFFFFFFFFF"
            "9000");
}

TEST(Samples, TheUsimTellsItsPhoneBookInTheFcpAndByTheOldPath) {
  CardImage image;
  Load("usim", image);
  ApduInterpreter card(image, [] { return true; });
  // 250 (FA) records of 38 (26) bytes are 251C; short id 1.
  const std::string fcp =
      Say(card, {"00A4000C027F10", "00A4000C025F3A", "00A40004024F3A", "00C0000045"});
  EXPECT_NE(fcp.find("8205422100"
                     "26FA"
                     "83024F3A"),
            std::string::npos)
      << fcp;
  EXPECT_NE(fcp.find("8002251C"
                     "8801089000"),
            std::string::npos)
      << fcp;
  // Place 250 is "Notruf", 112, in either class.
  const std::string notruf =
      "4E6F74727566FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
      "038111F2FFFFFFFFFFFFFFFFFFFF"
      "9000";
  EXPECT_EQ(Say(card, {"00B2FA0426"}), notruf);
  EXPECT_EQ(Say(card, {"A0A40000023F00", "A0A40000027F10", "A0A40000026F3A", "A0B2FA0426"}),
            notruf);
  // The own number: +491712345678.
  EXPECT_EQ(Say(card, {"00A4040C0CA0000000871002FF49FF0589", "00A4000C026F40", "00B201041E"}),
            "4D79204E6F2EFFFFFFFFFFFFFFFFFFFF"
            "0791947121436587FFFFFFFFFFFF"
            "9000");
}

TEST(Samples, AnEntryIsLinkedThroughItsIapAndBack) {
  CardImage image;
  Load("usim", image);
  // Place 41: "Müller, Jörg" with number, office, e-mail and nickname.
  const auto record = [&image](const char* path, std::size_t number) {
    return ToHex(image.Find(path)->content->Record(number));
  };
  EXPECT_EQ(record("3F00/7F10/5F3A/4F3A", 41),
            "4D7E6C6C65722C204A7C7267FFFFFFFFFFFFFFFFFFFFFFFF"
            "0791947111325476FFFFFFFFFFFF");
  // EF_ANR A is of type 1: name 1 ("Office"), +49301234567.
  EXPECT_EQ(record("3F00/7F10/5F3A/4F40", 41),
            "01"
            "07919403214365F7FFFFFFFF"
            "FFFF");
  EXPECT_EQ(record("3F00/7F10/5F3A/4F81", 1), "4F6666696365FFFFFFFFFFFFFFFF");
  // EF_IAP: e-mail, ANR B, nickname, in the order of the reference file.
  const std::vector<std::uint8_t>& iap = image.Find("3F00/7F10/5F3A/4F60")->content->bytes;
  const std::size_t mail = iap[40 * 3];
  const std::size_t nickname = iap[40 * 3 + 2];
  EXPECT_EQ(iap[40 * 3 + 1], 0xFF);
  EXPECT_EQ(record("3F00/7F10/5F3A/4F50", mail).substr(0, 34),
            "6A6F657267006578616D706C652E6F7267");                    // joerg@example.org, @ is 00
  EXPECT_EQ(record("3F00/7F10/5F3A/4F50", mail).substr(80), "0129");  // set's short id, place 41
  EXPECT_EQ(record("3F00/7F10/5F3A/4F58", nickname),
            "4A6F6A6FFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
            "0129");
  EXPECT_EQ(record("3F00/7F10/5F3A/4F70", 41), "010200");  // Family, Work
}

TEST(Samples, TheCardWithoutSearchSaysSo) {
  CardImage image;
  Load("usim-local", image);
  ApduInterpreter card(image, [] { return true; });
  EXPECT_EQ(Say(card, {"00A4000C027F10"}), "6A82");
  EXPECT_EQ(
      Say(card, {"00A4040C07A0000000871002", "00A4000C025F3A", "00A4000C024F3A", "00A2010402FFFF"}),
      "6D00");
}

}  // namespace
}  // namespace kelpin::device::softcard
