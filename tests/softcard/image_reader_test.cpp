#include "device/softcard/image_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "device/softcard/image_writer.h"
#include "tests/softcard/card_fixture.h"

namespace kelpin::device::softcard {
namespace {

// Why the text is refused; empty when it is taken.
std::string Refusal(const std::string& text) {
  CardImage image;
  std::string error;
  return ReadImage(text, image, error) ? "" : error;
}

// A card of one file in the master file.
std::string WithFile(const std::string& file) {
  return R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "1234"}}, "mf": {"files": [)" +
         file + "]}}";
}

std::string WithOption(const std::string& option) {
  return R"({"format": "kelpin card image 1", )" + option +
         R"(, "pins": {"pin1": {"code": "1234"}}, "mf": {"files": []}})";
}

std::string WithRecords(const std::string& length, const std::string& count,
                        const std::string& records) {
  return WithFile(R"({"id": "6F3A", "structure": "linearFixed", "recordLength": )" + length +
                  R"(, "recordCount": )" + count + R"(, "records": )" + records + "}");
}

TEST(ImageReader, TheSmallestCardHasAMasterFileAndAPin) {
  CardImage image;
  std::string error;
  ASSERT_TRUE(ReadImage(WithFile(""), image, error)) << error;
  EXPECT_EQ(image.mf->id, 0x3F00);
  EXPECT_TRUE(image.mf->children.empty());
  EXPECT_EQ(image.pin1.code, "1234");
  EXPECT_TRUE(image.pin1.enabled);
  EXPECT_EQ(image.pin1.tries, 3);
  EXPECT_FALSE(image.pin2);
  EXPECT_EQ(image.protocol, Protocol::kT0);
  EXPECT_EQ(image.classes, Classes::kBoth);
}

TEST(ImageReader, FreeRecordsTakeTheFill) {
  CardImage image;
  std::string error;
  ASSERT_TRUE(ReadImage(WithFile(R"({"id": "6F4A", "structure": "linearFixed", "recordLength": 3,
                                     "recordCount": 3, "fill": "00FFFF",
                                     "records": ["", {"hex": "010203", "note": "three"}]})"),
                        image, error))
      << error;
  const FileContent& content = *image.Find("3F00/6F4A")->content;
  EXPECT_EQ(ToHex(content.bytes), "00FFFF01020300FFFF");
  EXPECT_TRUE(content.IsFree(1));
  EXPECT_FALSE(content.IsFree(2));
  EXPECT_EQ(content.notes.at(2), "three");
}

TEST(ImageReader, SaysWhereAndWhatIsWrong) {
  EXPECT_EQ(Refusal(WithRecords("4", "2", R"(["01020304", "010203"])")),
            "/mf/files/0/records/1: 3 bytes, 4 are wanted");
  EXPECT_EQ(Refusal(WithRecords("4", "1", R"(["01020304", ""])")),
            "/mf/files/0/records/1: more records than recordCount says");
  EXPECT_EQ(Refusal(WithRecords("4", "1", R"(["0102030G"])")),
            "/mf/files/0/records/0: hexadecimal digits are wanted, two a byte");
  EXPECT_EQ(Refusal(WithRecords("4", "1", R"([7])")), "/mf/files/0/records/0: a text is wanted");
  EXPECT_EQ(Refusal(WithFile(R"({"id": "6F3A", "structur": "cyclic"})")),
            "/mf/files/0: unknown member \"structur\"");
  EXPECT_EQ(Refusal(WithFile(R"({"id": "6F3A", "structure": "tree"})")),
            "/mf/files/0/structure: one of transparent, linearFixed, cyclic is wanted");
  EXPECT_EQ(Refusal(WithOption(R"("delayMs": 60001)")),
            "/delayMs: a whole number from 0 to 60000 is wanted");
  EXPECT_EQ(Refusal(R"({"format": "another"})"), "/format: \"kelpin card image 1\" is wanted");
}

TEST(ImageReader, NumbersOutOfRangeAreRefused) {
  for (const char* number :
       {"-1", "256", "1.5", "1e300", "99999999999999999999", "\"4\"", "null"}) {
    EXPECT_NE(Refusal(WithRecords(number, "1", "[]")), "") << number;
  }
  EXPECT_NE(Refusal(WithRecords("0", "1", "[]")), "");
  EXPECT_NE(Refusal(WithRecords("1", "0", "[]")), "");
  EXPECT_NE(Refusal(WithRecords("1", "255", "[]")), "");
  EXPECT_EQ(Refusal(WithRecords("255", "254", "[]")), "");
  EXPECT_NE(Refusal(WithOption(R"("channels": 4)")), "");
  EXPECT_NE(Refusal(WithFile(R"({"id": "6F3A", "sfi": 31, "structure": "transparent",
                                 "data": "00"})")),
            "");
}

TEST(ImageReader, WrongTypesAreRefusedEverywhere) {
  for (const char* text :
       {"", "null", "7", "[]", "\"\"", "{}", R"({"format": 7})",
        R"({"format": "kelpin card image 1"})",
        R"({"format": "kelpin card image 1", "pins": [], "mf": {"files": []}})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {}}, "mf": {"files": []}})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "12"}},
            "mf": {"files": []}})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "12a4"}},
            "mf": {"files": []}})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "1234", "tries": 4}},
            "mf": {"files": []}})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "1234"}}, "mf": []})",
        R"({"format": "kelpin card image 1", "pins": {"pin1": {"code": "1234"}},
            "mf": {"files": {}}})"}) {
    EXPECT_NE(Refusal(text), "") << text;
  }
  for (const char* option : {R"("protocol": "T2")", R"("protocol": 0)", R"("classes": "A0A0")",
                             R"("atr": "3")", R"("searchRecord": 1)", R"("note": 5)"}) {
    EXPECT_NE(Refusal(WithOption(option)), "") << option;
  }
  for (const char* file :
       {"7", "{}", R"({"id": "6F"})", R"({"id": "3F00", "files": []})",
        R"({"id": "7FFF", "files": []})", R"({"id": "6F3A"})",
        R"({"id": "6F3A", "structure": "transparent"})",
        R"({"id": "6F3A", "structure": "transparent", "data": ""})",
        R"({"id": "6F3A", "structure": "transparent", "data": "00", "records": []})",
        R"({"id": "6F3A", "structure": "cyclic", "data": "00"})", R"({"id": "7F10", "files": 7})",
        R"({"id": "7F10", "files": [], "data": "00"})", R"({"aid": "A0000000871002"})",
        R"({"aid": "A0", "files": []})", R"({"aid": "A0000000871002", "id": "7F10", "files": []})",
        R"({"id": "7F10", "files": [{"aid": "A0000000871002", "files": []}]})",
        R"({"id": "6F3A", "access": {"read": "EVERYBODY"}, "structure": "transparent",
            "data": "00"})"}) {
    EXPECT_NE(Refusal(WithFile(file)), "") << file;
  }
}

TEST(ImageReader, TwoOfAKindAreRefused) {
  const std::string one = R"({"id": "6F3A", "structure": "transparent", "data": "00"})";
  EXPECT_EQ(Refusal(WithFile(one + ", " + one)),
            "/mf/files/1: a second file of this id in one directory");
  EXPECT_EQ(Refusal(WithFile(R"({"id": "6F3A", "sfi": 4, "structure": "transparent", "data": "00"},
                                {"id": "6F3B", "sfi": 4, "structure": "transparent",
                                 "data": "00"})")),
            "/mf/files/1: a second file of this sfi in one directory");
  EXPECT_EQ(Refusal(WithOption(R"("delayMs": 1, "delayMs": 2)")),
            "the member \"delayMs\" stands twice in one object");
}

TEST(ImageReader, LinksLeadToAFileWithContentOfItsOwn) {
  const auto linked = [](const std::string& path) {
    return WithFile(R"({"id": "6F3A", "structure": "transparent", "data": "00"},
                       {"id": "6F3B", "link": "3F00/6F3A"}, {"id": "6F3C", "link": ")" +
                    path + R"("}, {"id": "7F10", "files": []})");
  };
  EXPECT_EQ(Refusal(linked("3F00/6F3A")), "");
  for (const char* path : {"", "3F00", "6F3A", "3F00/6F3D", "3F00/6F3B", "3F00/6F3C", "3F00/7F10",
                           "3F00//6F3A", "3F00/6F3A/", "3F00/6F3A/0000", "3F00/XXXX", "3F006F3A"}) {
    EXPECT_NE(Refusal(linked(path)), "") << path;
  }
  EXPECT_NE(Refusal(WithFile(R"({"id": "6F3A", "link": "3F00/6F3B", "data": "00"})")), "");
}

TEST(ImageReader, BrokenTextIsRefusedWithItsPlace) {
  EXPECT_EQ(Refusal("{\"format\":\n  \x1B[31m\xFF"), "line 2, column 3: this is no JSON");
  EXPECT_EQ(Refusal("[1e999]"), "a number in it is too large");
  EXPECT_NE(Refusal("\xEF\xBB\xBF\xFF"), "");
  EXPECT_NE(Refusal(WithOption("\"note\": \"\xC3\x28\"")), "");  // no UTF-8
  EXPECT_NE(Refusal(WithFile("") + "{}"), "");
}

TEST(ImageReader, DeepNestingAndHugeSizesAreRefused) {
  const std::string deep(100000, '[');
  EXPECT_NE(Refusal(deep), "");
  EXPECT_EQ(Refusal(WithOption("\"note\": " + std::string(50, '[') + std::string(50, ']'))),
            "nested deeper than 32");
  std::string directories;
  for (int i = 0; i < 9; ++i) {
    directories += R"({"id": "7F1)" + std::to_string(i) + R"(", "files": [)";
  }
  for (int i = 0; i < 9; ++i) {
    directories += "]}";
  }
  EXPECT_NE(Refusal(WithFile(directories)).find("directories stand deeper than 6"),
            std::string::npos);
  EXPECT_EQ(Refusal(std::string((4u << 20) + 1, ' ')), "larger than 4194304 bytes");
  std::string files;
  for (int i = 0; i < 600; ++i) {
    const std::vector<std::uint8_t> id = {0x50, 0};
    std::vector<std::uint8_t> own = {static_cast<std::uint8_t>(0x50 + i / 256),
                                     static_cast<std::uint8_t>(i % 256)};
    files += (i == 0 ? "" : ", ") + (R"({"id": ")" + ToHex(own)) +
             R"(", "structure": "transparent", "data": "00"})";
  }
  EXPECT_NE(Refusal(WithFile(files)).find("more than 512 files"), std::string::npos);
  // 64,770 bytes each: the seventeenth is over one mebibyte.
  std::string large;
  for (int i = 0; i < 17; ++i) {
    large += (i == 0 ? "" : ", ") + (R"({"id": "6F)" + std::to_string(10 + i)) +
             R"(", "structure": "linearFixed", "recordLength": 255, "recordCount": 254,
                "records": []})";
  }
  EXPECT_NE(Refusal(WithFile(large)).find("hold more than 1048576 bytes"), std::string::npos);
}

TEST(ImageReader, AFailureLeavesTheImageAsItWas) {
  CardImage image;
  std::string error;
  ASSERT_TRUE(ReadImage(SmallCard(), image, error));
  EXPECT_FALSE(ReadImage(WithFile("7"), image, error));
  EXPECT_NE(image.Find("3F00/7F10/6F3A"), nullptr);
}

TEST(ImageWriter, WhatItWritesReadsTheSame) {
  CardImage image;
  std::string error;
  ASSERT_TRUE(ReadImage(SmallCard(R"("note": "Łódź \"1\"\n", "delayMs": 3, )"), image, error));
  image.Find("3F00/2F02")->deactivated = true;
  image.pin1.tries = 1;
  const std::string once = WriteImage(image);
  CardImage again;
  ASSERT_TRUE(ReadImage(once, again, error)) << error;
  EXPECT_EQ(WriteImage(again), once);
  EXPECT_EQ(again.note, "Łódź \"1\"\n");
  EXPECT_EQ(again.delayMs, 3);
  EXPECT_TRUE(again.Find("3F00/2F02")->deactivated);
  EXPECT_EQ(again.pin1, image.pin1);
  EXPECT_EQ(again.pin2, image.pin2);
  const CardFile& linked = *again.Find("3F00/7F10/5F3A/4F30");
  EXPECT_EQ(linked.content, again.Find("3F00/7F10/6F3A")->content);
  EXPECT_EQ(linked.kind, FileKind::kLinearFixed);
  EXPECT_EQ(again.Find("3F00/7F10/6F49")->deactivate, Access::kPin1);
}

TEST(ImageWriter, AChangedRecordLosesItsNote) {
  CardImage image;
  std::string error;
  ASSERT_TRUE(ReadImage(WithRecords("2", "2", R"([{"hex": "0102", "note": "old"},
                                                  {"hex": "0304", "note": "kept"}])"),
                        image, error));
  image.pin1.enabled = false;
  ApduInterpreter card(image, [] { return true; });
  std::vector<std::uint8_t> command;
  ASSERT_TRUE(FromHex("00A4000C026F3A", command));
  EXPECT_EQ(ToHex(card.Process(command)), "9000");
  ASSERT_TRUE(FromHex("00DC0104020506", command));
  EXPECT_EQ(ToHex(card.Process(command)), "9000");
  EXPECT_EQ(WriteImage(image).find("old"), std::string::npos);
  EXPECT_NE(WriteImage(image).find("kept"), std::string::npos);
}

}  // namespace
}  // namespace kelpin::device::softcard
