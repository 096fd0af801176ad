#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "device/softcard/card_image.h"
#include "device/softcard/command_apdu.h"
#include "device/softcard/status_word.h"

namespace kelpin::device::softcard {

// The card itself: answers commands over an image (TS 102 221 in class 00, TS 51.011 in class A0).
// It holds what a card holds while it has power: what is selected on each channel, which PINs were
// verified, an answer not fetched yet. Not thread-safe; one owner.
class ApduInterpreter {
 public:
  // Keeps the image after a change. False: it could not be kept; the change is then taken back and
  // the command answers a memory problem.
  using Persist = std::function<bool()>;

  // `image` must outlive this.
  ApduInterpreter(CardImage& image, Persist persist);

  // Power-off, power-on: the master file is selected, no PIN is verified, no channel is open.
  void Reset();

  // One short APDU; the answer ends with SW1 SW2. Any bytes are taken: what is no command answers
  // 6700.
  std::vector<std::uint8_t> Process(std::span<const std::uint8_t> command);

 private:
  struct Channel {
    bool open = false;
    CardFile* directory = nullptr;
    CardFile* file = nullptr;
    CardFile* application = nullptr;  // what 7FFF means here
    std::size_t record = 0;           // the record pointer; 0: undefined
  };
  struct Secret {
    Pin* pin = nullptr;
    bool* verified = nullptr;
  };
  static constexpr std::size_t kChannels = 4;

  // In what class and on what channel the command speaks; kOk when the card listens.
  Status Admit(const CommandApdu& command);
  CommandResult Dispatch(const CommandApdu& command);
  std::vector<std::uint8_t> Deliver(const CommandApdu& command, CommandResult result);
  std::vector<std::uint8_t> DeliverToCase4(const CommandApdu& command, CommandResult result);
  std::vector<std::uint8_t> DeliverToCase2(const CommandApdu& command, CommandResult result);
  bool LengthFits(const CommandApdu& command, std::size_t size) const;
  void Hold(std::vector<std::uint8_t> data);
  std::vector<std::uint8_t> FetchPending(const CommandApdu& command);

  // Selection: interpreter_select.cpp
  CommandResult Select(const CommandApdu& command);
  CommandResult SelectGsm(const CommandApdu& command);
  CommandResult SelectApplication(const CommandApdu& command);
  CommandResult Selected(CardFile& file, const CommandApdu& command);
  CardFile* Reachable(std::uint16_t id) const;
  CardFile* ByPath(std::span<const std::uint8_t> path, bool fromMasterFile) const;
  void MoveTo(CardFile& file);
  CommandResult TellStatus(const CommandApdu& command);
  CommandResult ManageChannel(const CommandApdu& command);
  CommandResult ChangeActivation(const CommandApdu& command);

  // Content: interpreter_records.cpp
  CommandResult ReadBinary(const CommandApdu& command);
  CommandResult UpdateBinary(const CommandApdu& command);
  CommandResult ReadRecord(const CommandApdu& command);
  CommandResult UpdateRecord(const CommandApdu& command);
  bool Write(FileContent& content, std::size_t offset, std::span<const std::uint8_t> data);
  bool WriteOldest(FileContent& content, std::span<const std::uint8_t> data);
  CommandResult SearchRecord(const CommandApdu& command);
  CommandResult Seek(const CommandApdu& command);
  Status UseFile(std::uint8_t shortId, bool ofRecords, Access CardFile::*rule);
  Status UseRecords(const CommandApdu& command, Access CardFile::*rule);
  Status LocateRecord(const CommandApdu& command, std::size_t& record) const;
  Status LocateOffset(const CommandApdu& command, std::uint8_t& shortId, std::size_t& offset) const;

  // PINs: interpreter_pins.cpp
  CommandResult VerifyPin(const CommandApdu& command);
  CommandResult ChangePin(const CommandApdu& command);
  CommandResult SwitchPin(const CommandApdu& command, bool enable);
  CommandResult UnblockPin(const CommandApdu& command);
  Secret FindPin(std::uint8_t reference, bool unblock);
  CommandResult Present(const Secret& secret, std::span<const std::uint8_t> code,
                        const std::function<void(Pin&)>& onSuccess);
  bool KeepPin(Pin& pin, const Pin& before);
  CommandResult TriesLeft(int tries) const;  // asked for
  CommandResult Refused(int tries) const;    // after a wrong code
  bool Fulfilled(Access access) const;

  CommandResult Answer(Status status) const;
  CommandResult WrongLength(std::size_t right) const;
  Channel& Current() { return channels_[channel_]; }
  const Channel& Current() const { return channels_[channel_]; }

  CardImage& image_;
  Persist persist_;
  std::array<Channel, kChannels> channels_{};
  std::size_t channel_ = 0;  // of the command in hand
  bool gsm_ = false;         // class of the command in hand
  bool modeFixed_ = false;   // by the first command, where the image says so
  bool modeGsm_ = false;
  bool pin1Verified_ = false;
  bool pin2Verified_ = false;
  bool admVerified_ = false;
  // An answer GET RESPONSE may fetch, in the class and on the channel of its command.
  std::vector<std::uint8_t> pending_;
  std::size_t pendingChannel_ = 0;
  bool pendingGsm_ = false;
};

}  // namespace kelpin::device::softcard
