#pragma once

#include "platform/card_lock.h"
#include "platform/card_use.h"
#include "platform/clock.h"
#include "platform/contacts_store.h"
#include "platform/devices.h"
#include "platform/kernel_objects.h"
#include "platform/log.h"
#include "platform/programs.h"
#include "platform/radio_interface.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/sim_interface.h"
#include "platform/telephone.h"
#include "ui/screen.h"

namespace kelpin::app {

// Everything the program asks of a device. All of it outlives the program.
struct Ports {
  platform::SimInterface& sim;
  platform::RadioInterface& radio;
  platform::Devices& devices;
  platform::Registry& registry;
  platform::KernelObjects& kernel;
  platform::Shell& shell;
  platform::Programs& programs;
  platform::Telephone& telephone;
  platform::ContactsStore& contacts;
  platform::Clock& clock;
  platform::Log& log;
  ui::Screen& screen;
  platform::CardLock* cardLock = nullptr;  // null: the device asks for no codes
  bool attended = true;                    // somebody is there to type one
  platform::CardUse* cardUse = nullptr;    // null: the device has one card for good
};

}  // namespace kelpin::app
