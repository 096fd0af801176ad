#include "app/settings.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/call_text.h"
#include "tests/support/fake_registry.h"

namespace kelpin::app {
namespace {

using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryType;

constexpr std::u16string_view kProgram = u"Software\\OEM\\KELPIN";
constexpr std::u16string_view kDriver = u"Drivers\\BuiltIn\\RIL";

// The registry's names, written out once more: device makers' images hold them.
const std::vector<std::u16string> kFlagNames = {
    u"Mobile_Tel_Flag", u"Work_Tel_Flag",     u"Home_Tel_Flag",  u"Company_Tel_Flag",
    u"Work2_Tel_Flag",  u"Home2_Tel_Flag",    u"Radio_Tel_Flag", u"Pager_Flag",
    u"Car_Tel_Flag",    u"Assistant_Tel_Flag"};
const std::vector<std::u16string> kMarkNames = {
    u"Mobile_Tel_Mark", u"Work_Tel_Mark",     u"Home_Tel_Mark",  u"Company_Tel_Mark",
    u"Work2_Tel_Mark",  u"Home2_Tel_Mark",    u"Radio_Tel_Mark", u"Pager_Mark",
    u"Car_Tel_Mark",    u"Assistant_Tel_Mark"};

struct Option {
  const char16_t* name;
  std::uint32_t AppSettings::*member;
};

// In the order they are read; the one of the radio driver's key is left out.
const std::vector<Option> kOptions = {
    {u"Enable_SDN", &AppSettings::Enable_SDN},
    {u"Disable_SMS_Total_Item", &AppSettings::Disable_SMS_Total_Item},
    {u"ReadOnly_OwnNumber", &AppSettings::ReadOnly_OwnNumber},
    {u"CToSim_NotCheckAll", &AppSettings::CToSim_NotCheckAll},
    {u"Disable_EMAIL", &AppSettings::Disable_EMAIL},
    {u"Disable_ANR", &AppSettings::Disable_ANR},
    {u"Enable_PBCMsg", &AppSettings::Enable_PBCMsg},
    {u"Disable_OwnNumber", &AppSettings::Disable_OwnNumber},
    {u"Disable_Prompt_Contact_Exist", &AppSettings::Disable_Prompt_Contact_Exist},
    {u"Disable_ANRA", &AppSettings::Disable_ANRA},
    {u"CToSim_Type", &AppSettings::CToSim_Type},
    {u"QueryNewSIM", &AppSettings::QueryNewSIM},
    {u"Enable_SBMail", &AppSettings::Enable_SBMail},
    {u"Enable_AAS", &AppSettings::Enable_AAS},
    {u"Enable_GAS", &AppSettings::Enable_GAS},
    {u"Enable_SNE", &AppSettings::Enable_SNE},
    {u"Enable_ASCII", &AppSettings::Enable_ASCII},
    {u"SIM_Full_Detect", &AppSettings::SIM_Full_Detect},
    {u"Disable_SIMFullMsg", &AppSettings::Disable_SIMFullMsg},
    {u"Del_Contacts_Type", &AppSettings::Del_Contacts_Type},
    {u"Enable_Move_Func", &AppSettings::Enable_Move_Func},
    {u"Show_MaxPhoneNumber2", &AppSettings::Show_MaxPhoneNumber2},
    {u"Show_MaxEmail", &AppSettings::Show_MaxEmail},
    {u"Enable_CutName", &AppSettings::Enable_CutName},
    {u"Dismiss_NameScheme", &AppSettings::Dismiss_NameScheme},
    {u"Enable_Sort", &AppSettings::Enable_Sort},
    {u"Show_ProgressBar", &AppSettings::Show_ProgressBar},
    {u"Disable_DelContacts", &AppSettings::Disable_DelContacts},
};

class SettingsTest : public testing::Test {
 protected:
  void Put(std::u16string_view name, std::uint32_t value) {
    registry_.PutDword(RegistryRoot::kLocalMachine, kProgram, name, value);
  }
  void PutText(std::u16string_view name, std::u16string_view text) {
    registry_.PutString(RegistryRoot::kLocalMachine, kProgram, name, text);
  }
  void PutBytes(std::u16string_view name, RegistryType type, std::vector<std::uint8_t> data) {
    registry_.Put(RegistryRoot::kLocalMachine, kProgram, name, {type, std::move(data)});
  }
  void PutDriver(std::u16string_view name, std::uint32_t value) {
    registry_.PutDword(RegistryRoot::kLocalMachine, kDriver, name, value);
  }
  std::u16string Mark(PhoneType type) {
    return settings_.typeMarks[static_cast<std::size_t>(type)];
  }
  int Load() { return LoadSettings(registry_, settings_); }

  // Everything filled, as if left over.
  void Soil() {
    for (std::uint32_t& flag : settings_.typeFlags) flag = 9;
    for (auto& mark : settings_.typeMarks) mark[0] = u'!';
    for (auto& record : settings_.ownNumberRecords) record[0] = u'!';
    for (const Option& option : kOptions) settings_.*option.member = 9;
    settings_.QRVmaskW1 = 9;
    settings_.CurLang = 1031;
  }
  void ExpectDefaults() {
    for (const std::uint32_t flag : settings_.typeFlags) EXPECT_EQ(flag, 0u);
    for (const auto& mark : settings_.typeMarks) EXPECT_EQ(std::u16string(mark), u"");
    for (const auto& record : settings_.ownNumberRecords) EXPECT_EQ(std::u16string(record), u"");
    for (const Option& option : kOptions) EXPECT_EQ(settings_.*option.member, 0u);
    EXPECT_EQ(settings_.QRVmaskW1, 0u);
    EXPECT_EQ(settings_.CurLang, 1031u);
  }

  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeRegistry registry_{journal_, failures_};
  AppSettings settings_;
};

TEST_F(SettingsTest, AnEmptyRegistryLeavesEveryDefaultAndCreatesNoValue) {
  Soil();
  EXPECT_EQ(Load(), 1);
  ExpectDefaults();
  EXPECT_EQ(registry_.ValueCount(RegistryRoot::kLocalMachine, kProgram), 0u);
  EXPECT_EQ(registry_.ValueCount(RegistryRoot::kLocalMachine, kDriver), 0u);
  EXPECT_EQ(journal_.Count("SetValue"), 0u);
}

TEST_F(SettingsTest, ValuesAreReadInTheOrderOfTheRecord) {
  Put(u"QueryNewSIM", 1);
  EXPECT_EQ(Load(), 1);
  std::vector<std::string> expected = {"CreateKey"};
  std::vector<std::u16string> names = kFlagNames;
  names.insert(names.end(), kMarkNames.begin(), kMarkNames.end());
  for (const char16_t digit : std::u16string_view(u"1234")) {
    names.push_back(std::u16string(u"OwnNo_Record") + digit);
  }
  for (const Option& option : kOptions) names.push_back(option.name);
  for (const std::u16string& name : names) expected.push_back("QueryValue " + test::Utf8(name));
  expected.insert(expected.end(), {"CloseKey", "CreateKey", "QueryValue QRVmaskW1", "CloseKey",
                                   "OpenKey", "QueryValue SIMChanged", "CloseKey"});

  std::vector<std::string> seen;
  for (const std::string& line : journal_.Entries()) {
    const std::string call = line.substr(0, line.find('('));
    const std::size_t comma = line.find(", ");
    seen.push_back(
        call == "QueryValue" ? call + " " + line.substr(comma + 2, line.size() - comma - 3) : call);
  }
  EXPECT_EQ(seen, expected);
  EXPECT_NE(journal_.Entries("CreateKey")[0].find("\\Software\\OEM\\KELPIN"), std::string::npos);
  EXPECT_NE(journal_.Entries("CreateKey")[1].find("\\Drivers\\BuiltIn\\RIL"), std::string::npos);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, WithoutTheProgramsKeyTheDefaultsStand) {
  Soil();
  Put(u"Enable_SDN", 1);
  registry_.SetOpenResult(RegistryRoot::kLocalMachine, kProgram, 0, RegistryResult::kAccessDenied);
  EXPECT_EQ(Load(), 0);
  ExpectDefaults();
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, WithoutTheDriversKeyTheLoadFails) {
  Put(u"Enable_SDN", 1);
  registry_.SetOpenResult(RegistryRoot::kLocalMachine, kDriver, 0, RegistryResult::kAccessDenied);
  EXPECT_EQ(Load(), 0);
  EXPECT_EQ(settings_.Enable_SDN, 1u);
  EXPECT_EQ(settings_.QRVmaskW1, 0u);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, TheLoadFailsWhenTheDriversKeyCannotBeOpenedForTheNewSim) {
  Put(u"QueryNewSIM", 1);
  PutDriver(u"QRVmaskW1", 0x00010000);
  registry_.SetOpenResult(RegistryRoot::kLocalMachine, kDriver, 2, RegistryResult::kAccessDenied);
  EXPECT_EQ(Load(), 0);
  EXPECT_EQ(settings_.QRVmaskW1, 0x00010000u);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, AValueOfAnotherTypeCountsAsMissing) {
  PutText(u"Enable_SDN", u"1");
  PutBytes(u"Disable_ANR", RegistryType::kBinary, {1, 0, 0, 0});
  PutText(u"Mobile_Tel_Flag", u"1");
  Put(u"Mobile_Tel_Mark", 0x00000041);  // the bytes of "A" with its terminator
  Put(u"OwnNo_Record1", 0x00000041);
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(settings_.Enable_SDN, 0u);
  EXPECT_EQ(settings_.Disable_ANR, 0u);
  EXPECT_EQ(settings_.typeFlags[0], 0u);
  EXPECT_EQ(Mark(PhoneType::kMobile), u"");
  EXPECT_EQ(std::u16string(settings_.ownNumberRecords[0]), u"");
}

TEST_F(SettingsTest, AnExpandableTextIsAccepted) {
  PutBytes(u"Work_Tel_Mark", RegistryType::kExpandString, {'/', 0, 'w', 0, 0, 0});
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(Mark(PhoneType::kWork), u"/w");
}

TEST_F(SettingsTest, ATextThatIsTooLongOddOrOpenCountsAsMissing) {
  PutText(u"Mobile_Tel_Mark", u"abcde");
  PutBytes(u"Work_Tel_Mark", RegistryType::kString, {'a', 0, 0, 0, 0});
  PutBytes(u"Home_Tel_Mark", RegistryType::kString, {'a', 0, 'b', 0});
  PutBytes(u"OwnNo_Record2", RegistryType::kString, std::vector<std::uint8_t>(128, 'a'));
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(Mark(PhoneType::kMobile), u"");
  EXPECT_EQ(Mark(PhoneType::kWork), u"");
  EXPECT_EQ(Mark(PhoneType::kHome), u"");
  EXPECT_EQ(std::u16string(settings_.ownNumberRecords[1]), u"");
}

TEST_F(SettingsTest, EachFlagAndMarkHasItsOwnValue) {
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    Put(kFlagNames[type], static_cast<std::uint32_t>(type) + 1);
    const char16_t letter = static_cast<char16_t>(u'a' + type);
    PutText(kMarkNames[type], std::u16string(u"/") + letter);
  }
  EXPECT_EQ(Load(), 1);
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    EXPECT_EQ(settings_.typeFlags[type], type + 1);
    const char16_t letter = static_cast<char16_t>(u'a' + type);
    EXPECT_EQ(std::u16string(settings_.typeMarks[type]), std::u16string(u"/") + letter);
  }
  EXPECT_EQ(Mark(PhoneType::kPager), u"/h");
  EXPECT_EQ(Mark(PhoneType::kAssistant), u"/j");
}

TEST_F(SettingsTest, EachSwitchHasItsOwnValue) {
  for (const Option& chosen : kOptions) {
    test::FakeRegistry registry(journal_, failures_);
    registry.PutDword(RegistryRoot::kLocalMachine, kProgram, chosen.name, 2);
    AppSettings settings;
    ASSERT_EQ(LoadSettings(registry, settings), 1);
    for (const Option& option : kOptions) {
      EXPECT_EQ(settings.*option.member, option.member == chosen.member ? 2u : 0u)
          << test::Utf8(option.name) << " with " << test::Utf8(chosen.name);
    }
  }
}

TEST_F(SettingsTest, AMarkOfThreeCharactersSurvivesARestart) {
  settings_.typeMarks[0][0] = u'/';
  settings_.typeMarks[0][1] = u'm';
  settings_.typeMarks[0][2] = u'1';
  ASSERT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 1);
  ASSERT_EQ(Load(), 1);
  EXPECT_EQ(Mark(PhoneType::kMobile), u"/m1");
}

TEST_F(SettingsTest, AMarkOfFourCharactersIsWrittenWholeAndIsEmptyAfterARestart) {
  for (std::size_t at = 0; at < 4; ++at) settings_.typeMarks[9][at] = u"/asi"[at];
  ASSERT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 1);
  const auto stored = registry_.Get(RegistryRoot::kLocalMachine, kProgram, u"Assistant_Tel_Mark");
  ASSERT_TRUE(stored.has_value());
  EXPECT_EQ(stored->data, (std::vector<std::uint8_t>{'/', 0, 'a', 0, 's', 0, 'i', 0, 0, 0}));
  ASSERT_EQ(Load(), 1);
  EXPECT_EQ(Mark(PhoneType::kAssistant), u"");
}

TEST_F(SettingsTest, AnOwnNumberTextHasRoomFor63Characters) {
  PutText(u"OwnNo_Record1", std::u16string(63, u'x'));
  PutText(u"OwnNo_Record4", std::u16string(64, u'x'));
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(std::u16string(settings_.ownNumberRecords[0]), std::u16string(63, u'x'));
  EXPECT_EQ(std::u16string(settings_.ownNumberRecords[3]), u"");
}

TEST_F(SettingsTest, OfTheDriversMaskOneBitIsKept) {
  PutDriver(u"QRVmaskW1", 0xFFFFFFFF);
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(settings_.QRVmaskW1, 0x00010000u);
  PutDriver(u"QRVmaskW1", 0x00020000);
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(settings_.QRVmaskW1, 0u);
}

TEST_F(SettingsTest, ANewSimIsAskedAboutWhenTheDriverSaysSo) {
  Put(u"QueryNewSIM", 1);
  PutDriver(u"SIMChanged", 1);
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(settings_.QueryNewSIM, 1u);
}

TEST_F(SettingsTest, TheSameSimIsNotAskedAbout) {
  Put(u"QueryNewSIM", 1);
  PutDriver(u"SIMChanged", 0);
  EXPECT_EQ(Load(), 1);
  EXPECT_EQ(settings_.QueryNewSIM, 0u);
}

TEST_F(SettingsTest, WithTheQuestionOffTheDriverIsNotAsked) {
  PutDriver(u"SIMChanged", 1);
  for (const std::uint32_t value : {0u, 2u}) {
    Put(u"QueryNewSIM", value);
    journal_.Clear();
    EXPECT_EQ(Load(), 1);
    EXPECT_EQ(settings_.QueryNewSIM, value);
    for (const std::string& line : journal_.Entries("QueryValue")) {
      EXPECT_EQ(line.find("SIMChanged"), std::string::npos);
    }
  }
}

TEST_F(SettingsTest, TheLanguageIsReadOrLeftAsItWas) {
  settings_.CurLang = 1033;
  EXPECT_EQ(LoadLanguage(registry_, settings_), 0);
  EXPECT_EQ(settings_.CurLang, 1033u);
  registry_.PutDword(RegistryRoot::kCurrentUser, u"MUI", u"CurLang", 2052);
  EXPECT_EQ(LoadLanguage(registry_, settings_), 1);
  EXPECT_EQ(settings_.CurLang, 2052u);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, FlagsAndMarksAreWrittenAndFlushed) {
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    settings_.typeFlags[type] = static_cast<std::uint32_t>(type % 2);
    settings_.typeMarks[type][0] = static_cast<char16_t>(u'A' + type);
  }
  EXPECT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 1);
  EXPECT_EQ(registry_.ValueCount(RegistryRoot::kLocalMachine, kProgram), 20u);
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    EXPECT_EQ(registry_.Dword(RegistryRoot::kLocalMachine, kProgram, kFlagNames[type]), type % 2);
    EXPECT_EQ(registry_.String(RegistryRoot::kLocalMachine, kProgram, kMarkNames[type]),
              std::u16string(1, static_cast<char16_t>(u'A' + type)));
    EXPECT_TRUE(registry_.Flushed(RegistryRoot::kLocalMachine, kProgram, kMarkNames[type]));
  }
  ASSERT_GE(journal_.Entries().size(), 2u);
  EXPECT_TRUE(journal_.Entries().back().starts_with("CloseKey"));
  EXPECT_TRUE(journal_.Entries()[journal_.Entries().size() - 2].starts_with("FlushKey"));
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, AFailedWriteOrFlushIsTold) {
  failures_.FailCallOf("SetValue", 3);
  EXPECT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 0);
  EXPECT_EQ(registry_.ValueCount(RegistryRoot::kLocalMachine, kProgram), 19u);
  failures_.FailCallOf("FlushKey", 1);
  EXPECT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 0);
  failures_.FailCallOf("CreateKey", 1);
  EXPECT_EQ(SaveTypeFlagsAndMarks(registry_, settings_), 0);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, TheMobileFlagIsWrittenAlone) {
  for (std::uint32_t& flag : settings_.typeFlags) flag = 1;
  EXPECT_EQ(SaveMobileFlag(registry_, settings_), 1);
  EXPECT_EQ(registry_.ValueCount(RegistryRoot::kLocalMachine, kProgram), 1u);
  EXPECT_TRUE(registry_.Flushed(RegistryRoot::kLocalMachine, kProgram, u"Mobile_Tel_Flag"));
  EXPECT_EQ(registry_.Dword(RegistryRoot::kLocalMachine, kProgram, u"Mobile_Tel_Flag"), 1u);
  failures_.FailCallOf("FlushKey", 1);
  EXPECT_EQ(SaveMobileFlag(registry_, settings_), 0);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, SingleValuesAreZeroWhenMissing) {
  EXPECT_EQ(ReadPhoneType(registry_), 0u);
  EXPECT_EQ(ReadSimType(registry_), 0u);
  EXPECT_EQ(ReadSipAutoDeployOff(registry_), 0u);
  Put(u"PhoneType", 2);
  registry_.PutDword(RegistryRoot::kLocalMachine, u"Software\\OEM\\RIL", u"SIMTYPE", 3);
  registry_.PutDword(RegistryRoot::kCurrentUser, u"ControlPanel\\Sip", u"TurnOffAutoDeploy", 1);
  EXPECT_EQ(ReadPhoneType(registry_), 2u);
  EXPECT_EQ(ReadSimType(registry_), 3u);
  EXPECT_EQ(ReadSipAutoDeployOff(registry_), 1u);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(SettingsTest, EveryKeyIsOpenedForAllAccess) {
  Put(u"QueryNewSIM", 1);
  Load();
  LoadLanguage(registry_, settings_);
  SaveTypeFlagsAndMarks(registry_, settings_);
  SaveMobileFlag(registry_, settings_);
  ReadPhoneType(registry_);
  for (const char* call : {"OpenKey", "CreateKey"}) {
    for (const std::string& line : journal_.Entries(call)) {
      EXPECT_NE(line.find("0x2001F"), std::string::npos) << line;
    }
  }
}

// The record's order: flags, marks, own numbers, language, switches, each 32 bits wide.
TEST(AppSettingsRecord, MembersStandInTheirOrder) {
  static_assert(std::is_standard_layout_v<AppSettings>);
  static_assert(sizeof(AppSettings::typeFlags) == 10 * 4);
  static_assert(sizeof(AppSettings::typeMarks) == 10 * 5 * 2);
  static_assert(sizeof(AppSettings::ownNumberRecords) == 4 * 65 * 2);
  EXPECT_EQ(offsetof(AppSettings, typeFlags), 0u);
  EXPECT_EQ(offsetof(AppSettings, typeMarks), 40u);
  EXPECT_EQ(offsetof(AppSettings, ownNumberRecords), 140u);
  EXPECT_EQ(offsetof(AppSettings, CurLang), 660u);
  EXPECT_EQ(offsetof(AppSettings, Enable_SDN), 664u);
  EXPECT_EQ(offsetof(AppSettings, CToSim_Type), 704u);
  EXPECT_EQ(offsetof(AppSettings, QRVmaskW1), 708u);
  EXPECT_EQ(offsetof(AppSettings, QueryNewSIM), 712u);
  EXPECT_EQ(offsetof(AppSettings, Disable_DelContacts), 776u);
  EXPECT_EQ(sizeof(AppSettings), 780u);

  AppSettings settings;
  std::uint32_t* last = &settings.CurLang;
  for (const Option& option : kOptions) {
    EXPECT_GT(&(settings.*option.member), last) << test::Utf8(option.name);
    last = &(settings.*option.member);
  }
}

}  // namespace
}  // namespace kelpin::app
