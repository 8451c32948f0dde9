// The whole machine, as the station gets it: the real one or a virtual one.
#pragma once

#include <string>

#include "platform/archives.h"
#include "platform/clock.h"
#include "platform/datagrams.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/history.h"
#include "platform/instance_lock.h"
#include "platform/serial_port.h"
#include "platform/settings_store.h"
#include "platform/timer.h"

namespace ostrel {

struct Platform {
  std::string programFolder;  // without a separator at its end
  std::string hostName;
  Clock& clock;
  EventLoop& events;
  Timer& cycleTimer;
  Timer& purgeTimer;
  SerialPort& port;
  Datagrams& datagrams;
  Files& files;
  Archives& archives;
  SettingsStores& stores;
  History& history;
  Dialogs& dialogs;
  Desktop& desktop;
  InstanceLock& instance;
};

}  // namespace ostrel
