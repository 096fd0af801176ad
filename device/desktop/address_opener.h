#pragma once

#include <functional>
#include <memory>
#include <string>

namespace kelpin::device::desktop {

// The desktop's opener of addresses (xdg-open): it finds the program that is set for them.
class AddressOpener {
 public:
  // Told that nothing was opened although the opener was started, and the code it ended with:
  // 3 where no program is set for such addresses, 4 where that program failed. On a thread of its
  // own, never after the destructor, which waits for it.
  using Failed = std::function<void(const std::string& uri, int code)>;

  explicit AddressOpener(std::string program, Failed failed = nullptr);
  ~AddressOpener();
  AddressOpener(const AddressOpener&) = delete;
  AddressOpener& operator=(const AddressOpener&) = delete;

  const std::string& Program() const { return program_; }
  // True when the opener was started. Any thread.
  bool Open(const std::string& uri) const;

 private:
  struct Listener;

  const std::string program_;
  const std::shared_ptr<Listener> listener_;
};

}  // namespace kelpin::device::desktop
