// A machine without hardware: everything but the files, the archives and the settings store, which
// its owner brings along.
#pragma once

#include "platform/platform.h"
#include "platform/virtual/virtual_clock.h"
#include "platform/virtual/virtual_desk.h"
#include "platform/virtual/virtual_history.h"
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
  VirtualHistory history;
  std::string hostName = "virtual";

  explicit VirtualMachine(UtcTime start, std::vector<ZoneRule> zone = {{UtcTime{}, seconds(0)}})
      : clock(start, std::move(zone)) {}

  /// The whole machine as a station gets it, its windows too unless others are given.
  Platform For(std::string programFolder, Files& files, Archives& archives, SettingsStores& stores,
               Dialogs* windows = nullptr) {
    return {.programFolder = std::move(programFolder),
            .hostName = hostName,
            .clock = clock,
            .events = loop,
            .cycleTimer = cycleTimer,
            .purgeTimer = purgeTimer,
            .port = line,
            .datagrams = datagrams,
            .files = files,
            .archives = archives,
            .stores = stores,
            .history = history,
            .dialogs = windows != nullptr ? *windows : dialogs,
            .desktop = desktop,
            .instance = instance};
  }
};

}  // namespace ostrel
