#include "device/softcard/soft_channel.h"

#include <chrono>
#include <cstddef>
#include <utility>

#include "device/softcard/command_apdu.h"
#include "device/softcard/hex.h"

namespace kelpin::device::softcard {

using card::TransportError;

namespace {

constexpr std::size_t kHeader = 5;  // CLA INS P1 P2 P3

}  // namespace

std::unique_ptr<SoftChannel> SoftChannel::Open(const std::string& path, std::string& error) {
  std::unique_ptr<ImageStore> store = ImageStore::Open(path, error);
  CardImage image;
  if (!store || !store->Load(image, error)) {
    return nullptr;
  }
  return std::unique_ptr<SoftChannel>(new SoftChannel(std::move(store), std::move(image)));
}

SoftChannel::SoftChannel(std::unique_ptr<ImageStore> store, CardImage image) {
  {
    const MutexLock hold(lock_);
    PutIn(std::move(store), std::move(image));
  }
  notifier_ = std::thread([this] { Notify(); });
}

SoftChannel::~SoftChannel() {
  {
    const MutexLock hold(lock_);
    closing_ = true;
    inserted_ = false;
    power_ = Power::kRemoved;
  }
  changed_.notify_all();
  notifier_.join();
}

void SoftChannel::PutIn(std::unique_ptr<ImageStore> store, CardImage image) {
  store_ = std::move(store);
  image_ = std::move(image);
  card_ = std::make_unique<ApduInterpreter>(image_, [this] { return Persist(); });
}

// Called by the card from within Transmit, which holds the lock.
bool SoftChannel::Persist() NO_THREAD_SAFETY_ANALYSIS {
  if (store_->ChangedOutside()) {
    overtaken_ = true;
    return false;
  }
  if (!store_->Save(image_, error_)) {
    saveFailed_ = true;
    if (trouble_) {
      trouble_(error_);
    }
    return false;
  }
  return true;
}

TransportError SoftChannel::NotReady() const {
  switch (power_) {
    case Power::kOn:
      return TransportError::kNone;
    case Power::kResetBehind:
      return TransportError::kReset;
    case Power::kRemoved:
      return TransportError::kRemoved;
    case Power::kOff:
      break;
  }
  return inserted_ ? TransportError::kReset : TransportError::kNoCard;
}

TransportError SoftChannel::Connect(std::vector<std::uint8_t>& atr) {
  const MutexLock hold(lock_);
  while (busy_) {
    changed_.wait(lock_);
  }
  if (!inserted_) {
    return TransportError::kNoCard;
  }
  if (store_->ChangedOutside()) {
    // Read into place: what the card points to is replaced with it.
    CardImage fresh;
    unreadable_ = !store_->Load(fresh, error_);
    if (unreadable_) {
      power_ = Power::kOff;
      return TransportError::kNoReader;
    }
    image_ = std::move(fresh);
    Post(Event::kTouched);
  }
  unreadable_ = false;
  card_->Reset();
  transactions_ = 0;
  power_ = Power::kOn;
  atr = image_.atr;
  return TransportError::kNone;
}

void SoftChannel::Disconnect() {
  const MutexLock hold(lock_);
  while (busy_) {
    changed_.wait(lock_);
  }
  transactions_ = 0;
  if (power_ == Power::kOn) {
    power_ = Power::kOff;
  }
}

TransportError SoftChannel::Transmit(std::span<const std::uint8_t> command,
                                     std::vector<std::uint8_t>& response) {
  const MutexLock hold(lock_);
  while (busy_) {
    changed_.wait(lock_);
  }
  TransportError error = NotReady();
  if (error != TransportError::kNone) {
    return error;
  }
  if (image_.delayMs > 0) {
    busy_ = true;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(image_.delayMs);
    while (power_ == Power::kOn && std::chrono::steady_clock::now() < end) {
      changed_.wait_until(lock_, end);
    }
    busy_ = false;
    changed_.notify_all();
    error = NotReady();
    if (error != TransportError::kNone) {
      return error;
    }
  }
  const bool secret = command.size() > kHeader && CarriesPin(command[1]);
  Emit('>', command, secret ? kHeader : command.size());
  saveFailed_ = false;
  overtaken_ = false;
  std::vector<std::uint8_t> answer = card_->Process(command);
  ++commands_;
  if (overtaken_) {
    power_ = Power::kResetBehind;
    transactions_ = 0;
    Post(Event::kTouched);
    return TransportError::kReset;
  }
  Emit('<', answer, answer.size());
  response = std::move(answer);
  return saveFailed_ ? TransportError::kStorage : TransportError::kNone;
}

TransportError SoftChannel::BeginTransaction() {
  const MutexLock hold(lock_);
  const TransportError error = NotReady();
  if (error == TransportError::kNone) {
    ++transactions_;
  }
  return error;
}

void SoftChannel::EndTransaction() {
  const MutexLock hold(lock_);
  if (transactions_ > 0) {
    --transactions_;
  }
}

void SoftChannel::SetListener(card::CardChannelListener* listener) {
  const MutexLock hold(listenerLock_);
  listener_ = listener;
}

std::string SoftChannel::Description() const {
  const MutexLock hold(lock_);
  return "software card " + store_->Path();
}

std::string SoftChannel::Trouble() const {
  const MutexLock hold(lock_);
  return unreadable_ && inserted_ ? error_ : std::string();
}

void SoftChannel::Remove() {
  const MutexLock hold(lock_);
  if (!inserted_) {
    return;
  }
  inserted_ = false;
  power_ = Power::kRemoved;
  transactions_ = 0;
  Post(Event::kRemoved);
}

void SoftChannel::Insert() {
  const MutexLock hold(lock_);
  if (!inserted_) {
    inserted_ = true;
    Post(Event::kInserted);
  }
}

bool SoftChannel::Insert(const std::string& path, std::string& error) {
  std::unique_ptr<ImageStore> store = ImageStore::Open(path, error);
  CardImage image;
  if (!store || !store->Load(image, error)) {
    return false;
  }
  const MutexLock hold(lock_);
  if (inserted_) {
    inserted_ = false;
    Post(Event::kRemoved);
  }
  power_ = Power::kRemoved;
  transactions_ = 0;
  changed_.notify_all();
  while (busy_) {
    changed_.wait(lock_);
  }
  PutIn(std::move(store), std::move(image));
  inserted_ = true;
  Post(Event::kInserted);
  return true;
}

bool SoftChannel::Reset() {
  const MutexLock hold(lock_);
  if (transactions_ > 0) {
    return false;
  }
  if (power_ == Power::kOn) {
    power_ = Power::kResetBehind;
    Post(Event::kReset);
  }
  return true;
}

std::uint64_t SoftChannel::CommandCount() const {
  const MutexLock hold(lock_);
  return commands_;
}

void SoftChannel::SetTrace(Trace trace) {
  const MutexLock hold(lock_);
  trace_ = std::move(trace);
}

void SoftChannel::SetTrouble(HearTrouble trouble) {
  const MutexLock hold(lock_);
  trouble_ = std::move(trouble);
}

std::string SoftChannel::LastError() const {
  const MutexLock hold(lock_);
  return error_;
}

void SoftChannel::Emit(char direction, std::span<const std::uint8_t> bytes, std::size_t clear) {
  if (!trace_) {
    return;
  }
  std::string line{direction, ' '};
  line += ToHex(bytes.first(clear));
  line.append((bytes.size() - clear) * 2, '*');
  trace_(line);
}

void SoftChannel::Post(Event event) {
  events_.push_back(event);
  changed_.notify_all();
}

void SoftChannel::Notify() {
  for (;;) {
    Event event;
    {
      const MutexLock hold(lock_);
      while (events_.empty() && !closing_) {
        changed_.wait(lock_);
      }
      if (closing_) {
        return;
      }
      event = events_.front();
      events_.pop_front();
    }
    const MutexLock hold(listenerLock_);
    if (listener_ == nullptr) {
      continue;
    }
    switch (event) {
      case Event::kInserted:
        listener_->CardInserted();
        break;
      case Event::kRemoved:
        listener_->CardRemoved();
        break;
      case Event::kReset:
        listener_->CardReset();
        break;
      case Event::kTouched:
        listener_->CardTouched();
        break;
    }
  }
}

}  // namespace kelpin::device::softcard
