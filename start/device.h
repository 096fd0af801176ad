#pragma once

#include <memory>
#include <string>

#include "device/card/card_channel.h"
#include "device/desktop/run_folder.h"
#include "device/desktop/xdg.h"
#include "device/kernel/kernel.h"
#include "device/registry/text_registry.h"
#include "platform/contacts_store.h"
#include "start/adapters.h"
#include "start/options.h"

namespace kelpin::start {

// What the program needs of the device, but for the screen.
struct Device {
  device::desktop::ScratchFolder scratch;
  std::unique_ptr<device::kernel::Kernel> kernel;
  std::unique_ptr<device::registry::TextRegistry> registry;
  std::unique_ptr<device::card::CardChannel> channel;
  std::unique_ptr<platform::ContactsStore> contacts;
};

// Opens what the options name. False when something cannot be opened; `why` says why and what to
// do.
bool OpenDevice(const Options& options, const device::desktop::Folders& folders,
                const ContactsTrouble& trouble, Device& device, std::string& why);

}  // namespace kelpin::start
