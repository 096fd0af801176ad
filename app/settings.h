#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/registry.h"

namespace kelpin::app {

inline constexpr std::size_t kPhoneTypeCount = 10;
inline constexpr std::size_t kOwnNumberRecordCount = 4;
inline constexpr std::size_t kMarkLimit = 4;                    // characters a mark is edited to
inline constexpr std::size_t kOwnNumberLimit = 64;              // characters
inline constexpr std::uint32_t kExtendedLoadMask = 0x00010000;  // the bit of QRVmaskW1 that counts

// The phone types, in the order of the flags and of the marks.
enum class PhoneType : std::size_t {
  kMobile,
  kWork,
  kHome,
  kCompany,
  kWork2,
  kHome2,
  kRadio,
  kPager,
  kCar,
  kAssistant,
};

// The program's configuration. Members that stand for a registry value have that value's name. The
// default of every member is 0 or empty.
struct AppSettings {
  std::uint32_t typeFlags[kPhoneTypeCount] = {};
  char16_t typeMarks[kPhoneTypeCount][kMarkLimit + 1] = {};
  char16_t ownNumberRecords[kOwnNumberRecordCount][kOwnNumberLimit + 1] = {};
  std::uint32_t CurLang = 0;

  std::uint32_t Enable_SDN = 0;
  std::uint32_t Disable_SMS_Total_Item = 0;
  std::uint32_t ReadOnly_OwnNumber = 0;
  std::uint32_t CToSim_NotCheckAll = 0;
  std::uint32_t Disable_EMAIL = 0;
  std::uint32_t Disable_ANR = 0;
  std::uint32_t Enable_PBCMsg = 0;
  std::uint32_t Disable_OwnNumber = 0;
  std::uint32_t Disable_Prompt_Contact_Exist = 0;
  std::uint32_t Disable_ANRA = 0;
  std::uint32_t CToSim_Type = 0;
  std::uint32_t QRVmaskW1 = 0;    // kExtendedLoadMask or 0
  std::uint32_t QueryNewSIM = 0;  // once loaded: 1 when a new SIM is to be asked about now
  std::uint32_t Enable_SBMail = 0;
  std::uint32_t Enable_AAS = 0;
  std::uint32_t Enable_GAS = 0;
  std::uint32_t Enable_SNE = 0;
  std::uint32_t Enable_ASCII = 0;
  std::uint32_t SIM_Full_Detect = 0;
  std::uint32_t Disable_SIMFullMsg = 0;
  std::uint32_t Del_Contacts_Type = 0;
  std::uint32_t Enable_Move_Func = 0;
  std::uint32_t Show_MaxPhoneNumber2 = 0;
  std::uint32_t Show_MaxEmail = 0;
  std::uint32_t Enable_CutName = 0;
  std::uint32_t Dismiss_NameScheme = 0;
  std::uint32_t Enable_Sort = 0;
  std::uint32_t Show_ProgressBar = 0;
  std::uint32_t Disable_DelContacts = 0;
};

// Sets everything but CurLang to its default, then reads what the registry has. A value that is
// missing, of another type or too long keeps its default; none is created. 1 on success, 0 when one
// of the two keys could neither be opened nor made.
int LoadSettings(platform::Registry& registry, AppSettings& settings);
// Reads CurLang. 1 on success, 0 when there is none, which leaves the member as it was.
int LoadLanguage(platform::Registry& registry, AppSettings& settings);
// Writes and flushes the ten flags and the ten marks. 1 when all of it was written, else 0.
int SaveTypeFlagsAndMarks(platform::Registry& registry, const AppSettings& settings);
// Writes and flushes the first flag alone. 1 on success, else 0.
int SaveMobileFlag(platform::Registry& registry, const AppSettings& settings);

// Single values, for before the settings are loaded. 0 when missing.
std::uint32_t ReadPhoneType(platform::Registry& registry);
std::uint32_t ReadSimType(platform::Registry& registry);
std::uint32_t ReadSipAutoDeployOff(platform::Registry& registry);

}  // namespace kelpin::app
