#include "device/registry/reg_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/device/scratch_folder.h"

namespace kelpin::device::registry {
namespace {

using platform::RegistryRoot;
using platform::RegistryType;
using ::testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

constexpr RegistryRoot kMachine = RegistryRoot::kLocalMachine;
constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;

std::string Machine(std::string_view lines) {
  return "KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\K]\n" + std::string(lines);
}

RegFile Parsed(std::string_view text) {
  RegFile file;
  RegError error;
  EXPECT_TRUE(RegFile::Parse(text, file, error)) << error.line << ": " << error.reason;
  return file;
}

void ExpectValue(const RegFile& file, std::u16string_view path, std::u16string_view name,
                 RegistryType type, const Bytes& data, RegistryRoot root = kMachine) {
  const RegValue* value = file.Find(root, path, name);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->type, type);
  EXPECT_EQ(value->data, data);
}

struct ValueLine {
  std::string_view why;
  std::string_view line;
  RegistryType type;
  Bytes data;
};

TEST(RegFileReading, AValueOfEveryFormHasTheBytesTheFormatSays) {
  const ValueLine lines[] = {
      {"a number is little-endian", R"("v"=dword:0000000a)", RegistryType::kDword, {10, 0, 0, 0}},
      {"capitals, all bits",
       R"("v"=dword:FEDCBA98)",
       RegistryType::kDword,
       {0x98, 0xBA, 0xDC, 0xFE}},
      {"few digits", R"("v"=dword:1)", RegistryType::kDword, {1, 0, 0, 0}},
      {"the word in capitals", R"("v"=DWORD:1)", RegistryType::kDword, {1, 0, 0, 0}},
      {"an empty text is its terminator", R"("v"="")", RegistryType::kString, {0, 0}},
      {"escapes", R"("v"="\\\"")", RegistryType::kString, {0x5C, 0, 0x22, 0, 0, 0}},
      {"beyond Latin", "\"v\"=\"\xE2\x82\xAC\"", RegistryType::kString, {0xAC, 0x20, 0, 0}},
      {"a surrogate pair",
       "\"v\"=\"\xF0\x9F\x93\x9E\"",
       RegistryType::kString,
       {0x3D, 0xD8, 0xDE, 0xDC, 0, 0}},
      {"a ; within a text is text",
       R"("v"="a;b")",
       RegistryType::kString,
       {0x61, 0, 0x3B, 0, 0x62, 0, 0, 0}},
      {"raw bytes", R"("v"=hex:01,ab,FF)", RegistryType::kBinary, {1, 0xAB, 0xFF}},
      {"no byte at all", R"("v"=hex:)", RegistryType::kBinary, {}},
      {"a type of its own",
       R"("v"=hex(2):25,00,00,00)",
       RegistryType::kExpandString,
       {0x25, 0, 0, 0}},
      {"an unusual type", R"("v"=hex(b):1)", static_cast<RegistryType>(11), {1}},
      {"a number as bytes", R"("v"=hex(4):01,00,00,00)", RegistryType::kDword, {1, 0, 0, 0}},
      {"bytes over three lines",
       "\"v\"=hex:01,\\\n  02,\\\r\n\t03",
       RegistryType::kBinary,
       {1, 2, 3}},
      {"bytes from the second line on", "\"v\"=hex:\\\n  02", RegistryType::kBinary, {2}},
      {"blanks around", " \t\"v\" =\t hex: 01 , 02 ", RegistryType::kBinary, {1, 2}},
      {"a comment behind", R"("v"=dword:1 ; why)", RegistryType::kDword, {1, 0, 0, 0}},
      {"a comment behind a text", R"("v"="a";x)", RegistryType::kString, {0x61, 0, 0, 0}},
  };
  for (const ValueLine& line : lines) {
    SCOPED_TRACE(line.why);
    ExpectValue(Parsed(Machine(line.line)), u"K", u"v", line.type, line.data);
  }
}

TEST(RegFileReading, TheDefaultValueHasAnEmptyName) {
  ExpectValue(Parsed(Machine("@=\"x\"\n")), u"K", u"", RegistryType::kString, {0x78, 0, 0, 0});
}

TEST(RegFileReading, BothRootsAndADeepKeyAreTold) {
  const RegFile file = Parsed(
      "KELPIN REGISTRY 1\n"
      "[HKEY_CURRENT_USER\\ControlPanel\\Sip]\n\"TurnOffAutoDeploy\"=dword:1\n"
      "[hkey_local_machine\\Drivers\\BuiltIn\\RIL]\n\"QRVmaskW1\"=dword:10000\n"
      "[HKEY_LOCAL_MACHINE]\n\"r\"=dword:3\n");
  ExpectValue(file, u"\\ControlPanel\\Sip", u"TurnOffAutoDeploy", RegistryType::kDword,
              {1, 0, 0, 0}, kUser);
  ExpectValue(file, u"drivers\\builtin\\ril", u"qrvMASKw1", RegistryType::kDword, {0, 0, 1, 0});
  ExpectValue(file, u"", u"r", RegistryType::kDword, {3, 0, 0, 0});
  EXPECT_EQ(file.Find(kUser, u"Drivers\\BuiltIn\\RIL", u"QRVmaskW1"), nullptr);
  EXPECT_TRUE(file.HasKey(kMachine, u"Drivers"));
  EXPECT_TRUE(file.HasKey(kMachine, u"\\Drivers\\BuiltIn\\"));
  EXPECT_FALSE(file.HasKey(kMachine, u"Driver"));
  EXPECT_FALSE(file.HasKey(kMachine, u"Drivers\\BuiltIn\\RIL\\x"));
}

TEST(RegFileReading, LettersBeyondAsciiCompareWithoutRegardToCase) {
  const RegFile file = Parsed("KELPIN REGISTRY 1\n[HKEY_CURRENT_USER\\ÄŁΩЖЁ]\n\"ŸŽ\"=dword:1\n");
  ExpectValue(file, u"äłωжё", u"ÿž", RegistryType::kDword, {1, 0, 0, 0}, kUser);
}

TEST(RegFileReading, KeysThatStandTwiceAreOneAndTheLastValueCounts) {
  const RegFile file =
      Parsed(Machine("\"a\"=dword:1\n\"b\"=dword:2\n\"A\"=dword:3\n"
                     "[HKEY_LOCAL_MACHINE\\Other]\n\"a\"=dword:9\n"
                     "[HKEY_LOCAL_MACHINE\\k]\n\"b\"=dword:4\n\"c\"=dword:5\n"));
  ExpectValue(file, u"K", u"a", RegistryType::kDword, {3, 0, 0, 0});
  ExpectValue(file, u"K", u"b", RegistryType::kDword, {4, 0, 0, 0});
  ExpectValue(file, u"K", u"c", RegistryType::kDword, {5, 0, 0, 0});
}

TEST(RegFileReading, AnyFormatNameThatEndsInAVersionNumberIsAHeader) {
  for (const char* header :
       {"KELPIN REGISTRY 1", "Some Registry Editor Version 5.00", "Format 2.1.3", "REGEDIT4",
        "regedit4 ", "\xEF\xBB\xBFKELPIN REGISTRY 1"}) {
    SCOPED_TRACE(header);
    const RegFile file =
        Parsed(std::string(header) + "\r\n\r\n[HKEY_LOCAL_MACHINE\\K]\r\n\"v\"=dword:7\r\n");
    ExpectValue(file, u"K", u"v", RegistryType::kDword, {7, 0, 0, 0});
  }
}

TEST(RegFileReading, Utf16WithItsMarkReadsAsUtf8Does) {
  const std::u16string text =
      u"\uFEFFEditor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\K]\r\n\"v\"=\"é\U0001F4DE\"\r\n";
  std::string bytes;
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  ExpectValue(Parsed(bytes), u"K", u"v", RegistryType::kString,
              {0xE9, 0, 0x3D, 0xD8, 0xDE, 0xDC, 0, 0});
  RegFile file;
  RegError error;
  EXPECT_FALSE(RegFile::Parse(bytes.substr(0, bytes.size() - 1), file, error));
  EXPECT_FALSE(RegFile::Parse("\xFE\xFF" + bytes.substr(2), file, error));
}

TEST(RegFileReading, HexTextsOfTheOlderFormatAreOneByteACharacter) {
  const std::string head = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\K]\n";
  ExpectValue(Parsed(head + "\"v\"=hex(2):61,62,00\n"), u"K", u"v", RegistryType::kExpandString,
              {0x61, 0, 0x62, 0, 0, 0});
  ExpectValue(Parsed(head + "\"v\"=hex:61,80\n"), u"K", u"v", RegistryType::kBinary, {0x61, 0x80});
  RegFile file;
  RegError error;
  EXPECT_FALSE(RegFile::Parse(head + "\"v\"=hex(2):61,80,00\n", file, error));
  EXPECT_THAT(error.reason, HasSubstr("code page"));
}

TEST(RegFileReading, AnEmptyFileHoldsNothing) {
  EXPECT_FALSE(Parsed("").HasKey(kMachine, u"Software"));
  EXPECT_FALSE(Parsed("KELPIN REGISTRY 1").HasKey(kMachine, u"Software"));
}

struct BadText {
  std::string text;
  std::size_t line;
  std::string_view reason;
};

TEST(RegFileReading, EveryMalformedFileIsRefusedWithItsLineAndReason) {
  const std::string key = Machine("");
  const BadText texts[] = {
      {"\n[HKEY_LOCAL_MACHINE\\K]\n", 1, "first line"},
      {"[HKEY_LOCAL_MACHINE\\K 1\n", 1, "first line"},
      {"; comment 1\n", 1, "first line"},
      {"\"v\"=dword: 1\n", 1, "first line"},
      {"KELPIN REGISTRY\n", 1, "first line"},
      {"KELPIN REGISTRY 1.\n", 1, "first line"},
      {"KELPIN REGISTRY .1\n", 1, "first line"},
      {"1\n", 1, "first line"},
      {"KELPIN REGISTRY 1\n\"v\"=dword:1\n", 2, "before any key"},
      {"KELPIN REGISTRY 1\nwords\n", 2, "neither a key"},
      {"KELPIN REGISTRY 1\n[HKEY_USERS\\K]\n", 2, "HKEY_LOCAL_MACHINE"},
      {"KELPIN REGISTRY 1\n[-HKEY_LOCAL_MACHINE\\K]\n", 2, "removing"},
      {"KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\K\n", 2, "]"},
      {"KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\K] x\n", 2, "]"},
      {"KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\\\K]\n", 2, "path"},
      {"KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\]\n", 2, "path"},
      {"KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\" + std::string(256, 'k') + "]\n", 2, "path"},
      {key + "\n\n\"v\"=\"open\n\"", 5, "closing"},
      {key + "\"v\"=\"a\\n\"\n", 3, "may follow a \\"},
      {key + "\"v\"=\"a\\", 3, "may follow a \\"},
      {key + "\"v\n", 3, "closing"},
      {key + "\"v\" dword:1\n", 3, "="},
      {key + "v=dword:1\n", 3, "neither a key"},
      {key + "\"v\"=1\n", 3, "dword: or hex:"},
      {key + "\"v\"=-\n", 3, "removing"},
      {key + "\"v\"=\n", 3, "dword: or hex:"},
      {key + "\"v\"=dword:\n", 3, "1 to 8"},
      {key + "\"v\"=dword:123456789\n", 3, "1 to 8"},
      {key + "\"v\"=dword:0x1\n", 3, "more text"},
      {key + "\"v\"=dword:1 x\n", 3, "more text"},
      {key + "\"v\"=\"a\" \"b\"\n", 3, "more text"},
      {key + "\"v\"=hex 01\n", 3, "followed by :"},
      {key + "\"v\"=hex():01\n", 3, "1 to 8"},
      {key + "\"v\"=hex(2:01\n", 3, "1 to 8"},
      {key + "\"v\"=hex:123\n", 3, "1 or 2"},
      {key + "\"v\"=hex:01,\n", 3, "1 or 2"},
      {key + "\"v\"=hex:,01\n", 3, "more text"},
      {key + "\"v\"=hex:01,02,\\", 3, "middle of a value"},
      {key + "\"v\"=hex:01\\\n,02\n", 3, "more text"},
      {key + "\"v\"=hex:01,\\ x\n02\n", 3, "nothing may follow"},
      {key + "\"v\"=hex:01,\\\n\n02\n", 4, "1 or 2"},
      {key + "\"" + std::string(256, 'n') + "\"=dword:1\n", 3, "too long"},
      {key + "\"a\tb\"=dword:1\n", 3, "control"},
      {key + "\"v\"=\"a\x01\"\n", 3, "control"},
      {key + "\"v\"=\"a\rb\"\n", 3, "control"},
      {key + std::string("; \0\n", 4), 3, "zero byte"},
      {key + "; \xC3\n", 3, "UTF-8"},
      {key + "\"v\"=\"\xC0\xAF\"\n", 3, "UTF-8"},
      {key + "\"v\"=\"\xED\xA0\x80\"\n", 3, "UTF-8"},
      {key + "\"v\"=\"\xF4\x90\x80\x80\"\n", 3, "UTF-8"},
      {key + ";" + std::string(kMaxLineBytes, 'x') + "\n", 3, "longer"},
  };
  for (const BadText& bad : texts) {
    SCOPED_TRACE(bad.text.substr(0, 80));
    RegFile file = Parsed(Machine("\"kept\"=dword:1\n"));
    RegError error;
    EXPECT_FALSE(RegFile::Parse(bad.text, file, error));
    EXPECT_EQ(error.line, bad.line);
    EXPECT_THAT(error.reason, HasSubstr(std::string(bad.reason)));
    ExpectValue(file, u"K", u"kept", RegistryType::kDword, {1, 0, 0, 0});
  }
}

TEST(RegFileReading, AFileOrValueBeyondTheLimitsIsRefused) {
  RegFile file;
  RegError error;
  std::string large = Machine("");
  while (large.size() <= kMaxFileBytes) large += ";" + std::string(1000, 'x') + "\n";
  EXPECT_FALSE(RegFile::Parse(large, file, error));
  EXPECT_THAT(error.reason, HasSubstr("4 MiB"));

  std::string bytes = "\"v\"=hex:00";
  for (std::size_t i = 1; i < kMaxValueBytes; ++i) bytes += i % 20 == 0 ? ",\\\n00" : ",00";
  ExpectValue(Parsed(Machine(bytes)), u"K", u"v", RegistryType::kBinary, Bytes(kMaxValueBytes, 0));
  EXPECT_FALSE(RegFile::Parse(Machine(bytes + ",00"), file, error));
  EXPECT_THAT(error.reason, HasSubstr("64 KiB"));
}

TEST(RegFileWriting, CommentsOrderAndUntouchedLinesStayAsTheyWere) {
  RegFile file = Parsed(
      "Other Editor 5.00\r\n"
      "; about the file\r\n"
      "\r\n"
      "[HKEY_LOCAL_MACHINE\\K]\r\n"
      "; what a does\r\n"
      "\"a\"=dword:1   ; on\r\n"
      "\"bytes\" = hex:01,\\\r\n   02\r\n"
      "\r\n"
      "; the next key\r\n"
      "[HKEY_CURRENT_USER\\M]\r\n"
      "\"t\"=\"x\"\r\n");
  file.Set(kMachine, u"K", u"A", RegistryType::kDword, Bytes{0x10, 0, 0, 0});
  file.Set(kMachine, u"K", u"new", RegistryType::kDword, Bytes{2, 0, 0, 0});
  file.Set(kUser, u"\\N\\O", u"", RegistryType::kString, Bytes{0x79, 0, 0, 0});
  EXPECT_EQ(file.Text(),
            "KELPIN REGISTRY 1\n"
            "; about the file\n"
            "\n"
            "[HKEY_LOCAL_MACHINE\\K]\n"
            "; what a does\n"
            "\"a\"=dword:00000010  ; on\n"
            "\"bytes\" = hex:01,\\\n   02\n"
            "\"new\"=dword:00000002\n"
            "\n"
            "; the next key\n"
            "[HKEY_CURRENT_USER\\M]\n"
            "\"t\"=\"x\"\n"
            "\n"
            "[HKEY_CURRENT_USER\\N\\O]\n"
            "@=\"y\"\n");
}

TEST(RegFileWriting, EachFormIsTheOneTheFormatHasForIt) {
  const ValueLine lines[] = {
      {"a number", "\"v\"=dword:fedcba98", RegistryType::kDword, {0x98, 0xBA, 0xDC, 0xFE}},
      {"a number of a wrong size", "\"v\"=hex(4):01,02", RegistryType::kDword, {1, 2}},
      {"a text", R"("v"="a\\\"")", RegistryType::kString, {0x61, 0, 0x5C, 0, 0x22, 0, 0, 0}},
      {"no terminator", "\"v\"=hex(1):61,00", RegistryType::kString, {0x61, 0}},
      {"a terminator within",
       "\"v\"=hex(1):61,00,00,00,62,00,00,00",
       RegistryType::kString,
       {0x61, 0, 0, 0, 0x62, 0, 0, 0}},
      {"a line end within", "\"v\"=hex(1):0a,00,00,00", RegistryType::kString, {0x0A, 0, 0, 0}},
      {"half a pair", "\"v\"=hex(1):3d,d8,00,00", RegistryType::kString, {0x3D, 0xD8, 0, 0}},
      {"an odd length", "\"v\"=hex(1):61", RegistryType::kString, {0x61}},
      {"no bytes", "\"v\"=hex(1):", RegistryType::kString, {}},
      {"raw", "\"v\"=hex:00,ff", RegistryType::kBinary, {0, 0xFF}},
      {"expandable", "\"v\"=hex(2):00,00", RegistryType::kExpandString, {0, 0}},
      {"none", "\"v\"=hex(0):01", RegistryType::kNone, {1}},
      {"wrapped within 79 columns",
       "\"v\"=hex:00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,00,\\\n  00",
       RegistryType::kBinary, Bytes(24, 0)},
  };
  for (const ValueLine& line : lines) {
    SCOPED_TRACE(line.why);
    RegFile file;
    file.Set(kMachine, u"K", u"v", line.type, line.data);
    const std::string text = file.Text();
    EXPECT_EQ(text,
              "KELPIN REGISTRY 1\n\n[HKEY_LOCAL_MACHINE\\K]\n" + std::string(line.line) + "\n");
    ExpectValue(Parsed(text), u"K", u"v", line.type, line.data);
  }
}

TEST(RegFileWriting, NamesAndPathsWithQuotesAndBracketsComeBack) {
  RegFile file;
  file.Set(kUser, u"a]b\\c d", u"n=\"\\;", RegistryType::kDword, Bytes{1, 0, 0, 0});
  ExpectValue(Parsed(file.Text()), u"A]B\\C D", u"N=\"\\;", RegistryType::kDword, {1, 0, 0, 0},
              kUser);
}

TEST(RegFileWriting, TextsOfTheOlderFormatAreWrittenInOurs) {
  const RegFile file = Parsed("REGEDIT4\n[HKEY_LOCAL_MACHINE\\K]\n\"v\"=hex(2):61,00\n");
  ExpectValue(Parsed(file.Text()), u"K", u"v", RegistryType::kExpandString, {0x61, 0, 0, 0});
}

TEST(RegFileWriting, TheLargestValueStaysReadable) {
  RegFile file;
  Bytes text;
  for (std::size_t i = 0; i + 2 < kMaxValueBytes; i += 2) text.insert(text.end(), {0xAC, 0x20});
  text.insert(text.end(), {0, 0});
  file.Set(kMachine, u"K", std::u16string(kMaxNameLength, u'€'), RegistryType::kString, text);
  ExpectValue(Parsed(file.Text()), u"K", std::u16string(kMaxNameLength, u'€'),
              RegistryType::kString, text);
}

TEST(RegNames, ControlCharactersHalfPairsAndLongNamesAreNotStorable) {
  EXPECT_TRUE(IsStorableName(u""));
  EXPECT_TRUE(IsStorableName(std::u16string(255, u'n')));
  EXPECT_FALSE(IsStorableName(std::u16string(256, u'n')));
  EXPECT_FALSE(IsStorableName(u"a\nb"));
  EXPECT_FALSE(IsStorableName(std::u16string(1, char16_t{0xD83D})));
  EXPECT_TRUE(IsStorablePath(u""));
  EXPECT_TRUE(IsStorablePath(u"a\\b"));
  EXPECT_FALSE(IsStorablePath(u"a\\\\b"));
  EXPECT_FALSE(IsStorablePath(u"\\a"));
  EXPECT_FALSE(IsStorablePath(u"a\\"));
}

TEST(RegistrySample, NamesEveryValueOnceEachWithACommentBefore) {
  const std::string text =
      test::ReadText(std::filesystem::path(KELPIN_SOURCE_DIR) / "res/registry-sample.reg");
  ASSERT_FALSE(text.empty());
  Parsed(text);
  std::size_t values = 0;
  std::string before;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    const std::string line = text.substr(at, end - at);
    if (line.starts_with('"')) {
      ++values;
      EXPECT_TRUE(before.starts_with("; ")) << line;
      const std::string name = line.substr(0, line.find('=') + 1);
      EXPECT_EQ(text.find("\n" + name), at - 1) << "twice: " << line;
    }
    before = line;
    at = end == std::string::npos ? text.size() : end + 1;
  }
  EXPECT_EQ(values, 59u);
}

TEST(RegistrySample, HoldsTheDefaultsWithTheTypesTheProgramReads) {
  const RegFile file =
      Parsed(test::ReadText(std::filesystem::path(KELPIN_SOURCE_DIR) / "res/registry-sample.reg"));
  const Bytes zero = {0, 0, 0, 0};
  const Bytes empty = {0, 0};
  const std::u16string_view kelpin = u"\\Software\\OEM\\KELPIN";
  for (const char16_t* phone :
       {u"Mobile_Tel", u"Work_Tel", u"Home_Tel", u"Company_Tel", u"Work2_Tel", u"Home2_Tel",
        u"Radio_Tel", u"Pager", u"Car_Tel", u"Assistant_Tel"}) {
    ExpectValue(file, kelpin, std::u16string(phone) + u"_Flag", RegistryType::kDword, zero);
    ExpectValue(file, kelpin, std::u16string(phone) + u"_Mark", RegistryType::kString, empty);
  }
  for (const char16_t* record :
       {u"OwnNo_Record1", u"OwnNo_Record2", u"OwnNo_Record3", u"OwnNo_Record4"}) {
    ExpectValue(file, kelpin, record, RegistryType::kString, empty);
  }
  for (const char16_t* name : {u"Enable_SDN",
                               u"Disable_SMS_Total_Item",
                               u"ReadOnly_OwnNumber",
                               u"CToSim_NotCheckAll",
                               u"Disable_EMAIL",
                               u"Disable_ANR",
                               u"Enable_PBCMsg",
                               u"Disable_OwnNumber",
                               u"Disable_Prompt_Contact_Exist",
                               u"Disable_ANRA",
                               u"CToSim_Type",
                               u"QueryNewSIM",
                               u"Enable_SBMail",
                               u"Enable_AAS",
                               u"Enable_GAS",
                               u"Enable_SNE",
                               u"Enable_ASCII",
                               u"SIM_Full_Detect",
                               u"Disable_SIMFullMsg",
                               u"Del_Contacts_Type",
                               u"Enable_Move_Func",
                               u"Show_MaxPhoneNumber2",
                               u"Show_MaxEmail",
                               u"Enable_CutName",
                               u"Dismiss_NameScheme",
                               u"Enable_Sort",
                               u"Show_ProgressBar",
                               u"Disable_DelContacts",
                               u"PhoneType"}) {
    ExpectValue(file, kelpin, name, RegistryType::kDword, zero);
  }
  ExpectValue(file, u"\\Drivers\\BuiltIn\\RIL", u"QRVmaskW1", RegistryType::kDword, zero);
  ExpectValue(file, u"\\Drivers\\BuiltIn\\RIL", u"SIMChanged", RegistryType::kDword, zero);
  ExpectValue(file, u"\\Software\\OEM\\RIL", u"SIMTYPE", RegistryType::kDword, zero);
  ExpectValue(file, u"System\\OEM_State", u"KELPIN_HW", RegistryType::kDword, zero);
  ExpectValue(file, u"MUI", u"CurLang", RegistryType::kDword, {0x09, 0x04, 0, 0}, kUser);
  ExpectValue(file, u"\\ControlPanel\\Sip", u"TurnOffAutoDeploy", RegistryType::kDword, zero,
              kUser);
}

}  // namespace
}  // namespace kelpin::device::registry
