#pragma once

#include <cstddef>
#include <cstdint>

namespace kelpin::platform {

using RilHandle = std::uint32_t;  // 0 is no handle

inline constexpr std::uint32_t kRilPort = 1;
inline constexpr std::uint32_t kRilResultOk = 1;
inline constexpr std::uint32_t kRilResultError = 3;

// Notification classes (the upper 16 bits of a notification's code).
inline constexpr std::uint32_t kRilClassMiscellaneous = 0x00400000;
inline constexpr std::uint32_t kRilClassRadioState = 0x00800000;
inline constexpr std::uint32_t kRilClassDeviceSpecific = 0x80000000;

inline constexpr std::uint32_t kRilNotifyMiscellaneousSim = 0x00400008;
inline constexpr std::uint32_t kRilNotifyEquipmentState = 0x00800001;
inline constexpr std::uint32_t kRilNotifyPhonebookRewritten = 0x8000000B;

// Data of kRilNotifyEquipmentState.
struct RilEquipmentState {
  std::uint32_t size = 20;
  std::uint32_t params = 0;
  std::uint32_t radioSupport = 0;
  std::uint32_t equipmentState = 0;
  std::uint32_t readyState = 0;  // kRilReadyPhonebook …
};
static_assert(sizeof(RilEquipmentState) == 20 && offsetof(RilEquipmentState, readyState) == 16);
inline constexpr std::uint32_t kRilReadyPhonebook = 0x10;

// SIM commands of RIL_SendRestrictedSimCmd and of the file command.
inline constexpr std::uint32_t kRilSimReadRecord = 2;
inline constexpr std::uint32_t kRilSimGetResponse = 3;
inline constexpr std::uint32_t kRilSimUpdateRecord = 5;
inline constexpr std::uint32_t kRilSimAbsoluteMode = 4;

struct RilSimCmdParameters {
  std::uint32_t size = 24;
  std::uint32_t params = 15;  // file id, P1, P2, P3 valid
  std::uint32_t fileId = 0;
  std::uint32_t parameter1 = 0;
  std::uint32_t parameter2 = 0;
  std::uint32_t parameter3 = 0;
};
static_assert(sizeof(RilSimCmdParameters) == 24);

// Result data of every SIM command: this header, then the response bytes. The answer to
// kRilSimGetResponse is in the form of TS 51.011 9.2.1 (bytes 2-3 file size, byte 14 record
// length), whatever the card's own form. What the card refuses is answered with kRilResultError;
// the header, where there is one, then holds the card's status word.
struct RilSimResponse {
  std::uint32_t size = 16;
  std::uint32_t params = 0;
  std::uint32_t statusWord1 = 0;
  std::uint32_t statusWord2 = 0;
};
static_assert(sizeof(RilSimResponse) == 16);

// Commands of RIL_DevSpecific: the first word of the block.
inline constexpr std::uint32_t kRilDevSimFile = 128;
inline constexpr std::uint32_t kRilDevPhonebookChanged = 129;
inline constexpr std::uint32_t kRilDevReadPhonebook = 167;
inline constexpr std::uint32_t kRilDevFreeExtensionRecords = 4248;

// The block of kRilDevSimFile.
struct RilSimFileCommand {
  std::uint32_t command = kRilDevSimFile;
  std::uint32_t params = 15;
  std::uint32_t operation = 0;  // kRilSim…
  std::uint32_t fileCode = 0;
  std::uint32_t record = 0;  // 1-based, 0 for get response
  std::uint32_t mode = 0;    // kRilSimAbsoluteMode for read and update
  std::uint32_t length = 0;
  std::uint32_t dataLength = 0;
  std::uint8_t data[256] = {};
};
static_assert(sizeof(RilSimFileCommand) == 288);

inline constexpr std::size_t kRilTextLength = 256;

inline constexpr std::uint32_t kRilEntryHidden = 0x8;

// One entry of a bulk read: result data is an array of these, used locations only, ascending. The
// address holds no '+'; addressType says so. Both texts end in a zero unit.
struct RilPhonebookEntry {
  std::uint32_t size = 1044;
  std::uint32_t params = 0;
  std::uint32_t index = 0;  // 1-based location
  char16_t address[kRilTextLength] = {};
  std::uint32_t addressType = 0;  // 1 international
  std::uint32_t numPlan = 0;
  char16_t text[kRilTextLength] = {};
};
static_assert(sizeof(RilPhonebookEntry) == 1044);

// The same from kRilDevReadPhonebook. `hidden` counts only when params has kRilEntryHidden.
struct RilPhonebookEntryEx {
  std::uint32_t size = 1048;
  std::uint32_t params = 0;
  std::uint32_t index = 0;
  char16_t address[kRilTextLength] = {};
  std::uint32_t addressType = 0;
  std::uint32_t numPlan = 0;
  char16_t text[kRilTextLength] = {};
  std::uint32_t hidden = 0;
};
static_assert(sizeof(RilPhonebookEntryEx) == 1048);

// Called on the radio's thread. `data` lives until the call returns.
using RilResultCallback = void (*)(std::uint32_t code, std::int32_t commandId, const void* data,
                                   std::uint32_t size, void* parameter);
using RilNotifyCallback = void (*)(std::uint32_t code, const void* data, std::uint32_t size,
                                   void* parameter);

// The radio interface layer. Commands return at once: a positive command id, or a negative value
// when the command was not taken. The result comes once, on the radio's own thread, never from
// inside the call. Any thread, several sessions.
class RadioInterface {
 public:
  virtual ~RadioInterface() = default;

  // 0 is success. On failure `ril` becomes 0.
  virtual std::int32_t RIL_Initialize(std::uint32_t port, RilResultCallback result,
                                      RilNotifyCallback notify, std::uint32_t notificationClasses,
                                      void* parameter, RilHandle& ril) = 0;
  // 0 is success. Commands under way on the handle are answered with kRilResultError first; after
  // the return no callback runs for it (so it must not be called from a callback).
  virtual std::int32_t RIL_Deinitialize(RilHandle ril) = 0;
  // Result: RilPhonebookEntry records of the used locations first..last.
  virtual std::int32_t RIL_ReadPhonebookEntries(RilHandle ril, std::uint32_t first,
                                                std::uint32_t last) = 0;
  // Result: RilSimResponse and the response bytes. `parameters.fileId` names a file by its two
  // bytes (0x6F40 …); the driver knows where the card keeps it. `data` may be null.
  virtual std::int32_t RIL_SendRestrictedSimCmd(RilHandle ril, std::uint32_t command,
                                                const RilSimCmdParameters& parameters,
                                                const std::uint8_t* data, std::uint32_t size) = 0;
  // `block` starts with the command word. `size` is 288 for kRilDevSimFile and 4 for every other
  // command; kRilDevReadPhonebook has two more words (first, last location) behind the four bytes
  // that `size` tells of.
  // Results: kRilDevSimFile as RIL_SendRestrictedSimCmd; kRilDevPhonebookChanged one 32-bit word, 1
  // when the phone book was changed by somebody else since it was last asked;
  // kRilDevReadPhonebook RilPhonebookEntryEx records; kRilDevFreeExtensionRecords a 32-bit record
  // count, a 32-bit bitmap length, then the bitmap, most significant bit first, 1 = used.
  virtual std::int32_t RIL_DevSpecific(RilHandle ril, const void* block, std::uint32_t size) = 0;
};

}  // namespace kelpin::platform
