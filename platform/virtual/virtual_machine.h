// A machine without hardware: everything but the files, the archives and the settings store, which
// its owner brings along.
#pragma once

#include "platform/platform.h"
#include "platform/virtual/virtual_clock.h"
#include "platform/virtual/virtual_desk.h"
#include "platform/virtual/virtual_line.h"
#include "platform/virtual/virtual_loop.h"

namespace ostrel {

struct VirtualMachine {
  VirtualClock clock;
  VirtualLoop loop{clock};
  VirtualTimer cycleTimer{loop};
  VirtualTimer purgeTimer{loop};
  VirtualLine line{clock};
  VirtualDatagrams datagrams;
  VirtualDialogs dialogs;
  VirtualDesktop desktop;
  VirtualInstanceLock instance;

  explicit VirtualMachine(UtcTime start, std::vector<ZoneRule> zone = {{UtcTime{}, seconds(0)}})
      : clock(start, std::move(zone)) {}

  /// The whole machine as a station gets it.
  Platform For(std::string programFolder, Files& files, Archives& archives,
               SettingsStores& stores) {
    return {std::move(programFolder),
            clock,
            loop,
            cycleTimer,
            purgeTimer,
            line,
            datagrams,
            files,
            archives,
            stores,
            dialogs,
            desktop,
            instance};
  }
};

}  // namespace ostrel
