#include "app/settings.h"

#include <array>
#include <span>
#include <string_view>

#include "app/registry_key.h"

namespace kelpin::app {
namespace {

using platform::RegistryResult;
using platform::RegistryRoot;

constexpr std::u16string_view kProgramKey = u"\\Software\\OEM\\KELPIN";
constexpr std::u16string_view kRadioDriverKey = u"\\Drivers\\BuiltIn\\RIL";
constexpr std::u16string_view kRadioKey = u"\\Software\\OEM\\RIL";
constexpr std::u16string_view kLanguageKey = u"MUI";
constexpr std::u16string_view kInputPanelKey = u"\\ControlPanel\\Sip";

constexpr std::array<std::u16string_view, kPhoneTypeCount> kFlagNames = {
    u"Mobile_Tel_Flag", u"Work_Tel_Flag",     u"Home_Tel_Flag",  u"Company_Tel_Flag",
    u"Work2_Tel_Flag",  u"Home2_Tel_Flag",    u"Radio_Tel_Flag", u"Pager_Flag",
    u"Car_Tel_Flag",    u"Assistant_Tel_Flag"};
constexpr std::array<std::u16string_view, kPhoneTypeCount> kMarkNames = {
    u"Mobile_Tel_Mark", u"Work_Tel_Mark",     u"Home_Tel_Mark",  u"Company_Tel_Mark",
    u"Work2_Tel_Mark",  u"Home2_Tel_Mark",    u"Radio_Tel_Mark", u"Pager_Mark",
    u"Car_Tel_Mark",    u"Assistant_Tel_Mark"};
constexpr std::array<std::u16string_view, kOwnNumberRecordCount> kOwnNumberNames = {
    u"OwnNo_Record1", u"OwnNo_Record2", u"OwnNo_Record3", u"OwnNo_Record4"};

// Read with less room than a mark is edited and written to, so that one of four characters does
// not come back after a restart. Device makers' images rely on the three.
constexpr std::size_t kMarkRoom = 4;
constexpr std::size_t kOwnNumberRoom = 64;

struct Option {
  std::u16string_view name;
  std::uint32_t AppSettings::*member;
};

#define KELPIN_OPTION(name) \
  { u"" #name, &AppSettings::name }

constexpr Option kOptions[] = {
    KELPIN_OPTION(Enable_SDN),
    KELPIN_OPTION(Disable_SMS_Total_Item),
    KELPIN_OPTION(ReadOnly_OwnNumber),
    KELPIN_OPTION(CToSim_NotCheckAll),
    KELPIN_OPTION(Disable_EMAIL),
    KELPIN_OPTION(Disable_ANR),
    KELPIN_OPTION(Enable_PBCMsg),
    KELPIN_OPTION(Disable_OwnNumber),
    KELPIN_OPTION(Disable_Prompt_Contact_Exist),
    KELPIN_OPTION(Disable_ANRA),
    KELPIN_OPTION(CToSim_Type),
    KELPIN_OPTION(QueryNewSIM),
    KELPIN_OPTION(Enable_SBMail),
    KELPIN_OPTION(Enable_AAS),
    KELPIN_OPTION(Enable_GAS),
    KELPIN_OPTION(Enable_SNE),
    KELPIN_OPTION(Enable_ASCII),
    KELPIN_OPTION(SIM_Full_Detect),
    KELPIN_OPTION(Disable_SIMFullMsg),
    KELPIN_OPTION(Del_Contacts_Type),
    KELPIN_OPTION(Enable_Move_Func),
    KELPIN_OPTION(Show_MaxPhoneNumber2),
    KELPIN_OPTION(Show_MaxEmail),
    KELPIN_OPTION(Enable_CutName),
    KELPIN_OPTION(Dismiss_NameScheme),
    KELPIN_OPTION(Enable_Sort),
    KELPIN_OPTION(Show_ProgressBar),
    KELPIN_OPTION(Disable_DelContacts),
};

#undef KELPIN_OPTION

bool Ok(RegistryResult result) {
  return result == RegistryResult::kOk;
}

// A value that is not there, or not of the right type, is no failure: the default stays.
void ReadOptional(const RegistryKey& key, std::u16string_view name, std::uint32_t& value) {
  static_cast<void>(key.ReadDword(name, value));
}

void ReadOptional(const RegistryKey& key, std::u16string_view name, std::span<char16_t> text) {
  static_cast<void>(key.ReadString(name, text));
}

void ReadProgramValues(const RegistryKey& key, AppSettings& settings) {
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    ReadOptional(key, kFlagNames[type], settings.typeFlags[type]);
  }
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    ReadOptional(key, kMarkNames[type], std::span(settings.typeMarks[type]).first(kMarkRoom));
  }
  for (std::size_t record = 0; record < kOwnNumberRecordCount; ++record) {
    ReadOptional(key, kOwnNumberNames[record],
                 std::span(settings.ownNumberRecords[record]).first(kOwnNumberRoom));
  }
  for (const Option& option : kOptions) {
    ReadOptional(key, option.name, settings.*option.member);
  }
}

std::uint32_t ReadSingle(platform::Registry& registry, RegistryRoot root, std::u16string_view path,
                         std::u16string_view name) {
  RegistryKey key(registry);
  std::uint32_t value = 0;
  if (Ok(key.Open(root, path))) {
    ReadOptional(key, name, value);
  }
  return value;
}

}  // namespace

int LoadSettings(platform::Registry& registry, AppSettings& settings) {
  const std::uint32_t language = settings.CurLang;
  settings = AppSettings{};
  settings.CurLang = language;

  RegistryKey key(registry);
  if (!Ok(key.CreateOrOpen(RegistryRoot::kLocalMachine, kProgramKey))) {
    return 0;
  }
  ReadProgramValues(key, settings);

  if (!Ok(key.CreateOrOpen(RegistryRoot::kLocalMachine, kRadioDriverKey))) {
    return 0;
  }
  ReadOptional(key, u"QRVmaskW1", settings.QRVmaskW1);
  settings.QRVmaskW1 &= kExtendedLoadMask;
  key.Close();

  if (settings.QueryNewSIM == 1) {
    if (!Ok(key.Open(RegistryRoot::kLocalMachine, kRadioDriverKey))) {
      return 0;
    }
    ReadOptional(key, u"SIMChanged", settings.QueryNewSIM);
  }
  return 1;
}

int LoadLanguage(platform::Registry& registry, AppSettings& settings) {
  RegistryKey key(registry);
  if (!Ok(key.Open(RegistryRoot::kCurrentUser, kLanguageKey))) {
    return 0;
  }
  return Ok(key.ReadDword(u"CurLang", settings.CurLang)) ? 1 : 0;
}

int SaveTypeFlagsAndMarks(platform::Registry& registry, const AppSettings& settings) {
  RegistryKey key(registry);
  if (!Ok(key.CreateOrOpen(RegistryRoot::kLocalMachine, kProgramKey))) {
    return 0;
  }
  bool written = true;
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    written = Ok(key.WriteDword(kFlagNames[type], settings.typeFlags[type])) && written;
  }
  for (std::size_t type = 0; type < kPhoneTypeCount; ++type) {
    written = Ok(key.WriteString(kMarkNames[type], settings.typeMarks[type])) && written;
  }
  written = Ok(key.Flush()) && written;
  return written ? 1 : 0;
}

int SaveMobileFlag(platform::Registry& registry, const AppSettings& settings) {
  RegistryKey key(registry);
  if (!Ok(key.CreateOrOpen(RegistryRoot::kLocalMachine, kProgramKey))) {
    return 0;
  }
  bool written = Ok(key.WriteDword(kFlagNames[0], settings.typeFlags[0]));
  written = Ok(key.Flush()) && written;
  return written ? 1 : 0;
}

std::uint32_t ReadPhoneType(platform::Registry& registry) {
  return ReadSingle(registry, RegistryRoot::kLocalMachine, kProgramKey, u"PhoneType");
}

std::uint32_t ReadSimType(platform::Registry& registry) {
  return ReadSingle(registry, RegistryRoot::kLocalMachine, kRadioKey, u"SIMTYPE");
}

std::uint32_t ReadSipAutoDeployOff(platform::Registry& registry) {
  return ReadSingle(registry, RegistryRoot::kCurrentUser, kInputPanelKey, u"TurnOffAutoDeploy");
}

}  // namespace kelpin::app
