// Schedule files, and the minute in which each of their lines may fire.
#include "ident/schedule.h"

#include "platform/virtual/virtual_desk.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  const auto input = AsText(data, size);
  Workshop shop;
  FileCopy copy(shop.files, shop.clock);
  VirtualDialogs dialogs;
  SilentReporting reporting;
  SetupFields setup;
  TransmitStatus status;
  Schedule schedule({shop.files, shop.clock, copy, dialogs, reporting, setup, status, shop.folder});

  const auto entry = ParseScheduleEntry(input);
  if (entry.time) {
    Demand(entry.time->hour >= 0 && entry.time->hour < 24, "an hour of the day");
    Demand(entry.time->minute >= 0 && entry.time->minute < 60, "a minute of the hour");
  }
  shop.files.WriteAll(shop.folder + "/RtSched.txt", input);
  schedule.LoadSchedule();
  schedule.ProcessSchedule();
  const std::vector<std::string> once(setup.lstSchedule.begin(), setup.lstSchedule.end());
  schedule.RemoveEntries({once.size()});  // nothing goes; the list is saved
  schedule.LoadSchedule();
  Demand(std::equal(setup.lstSchedule.begin(), setup.lstSchedule.end(), once.begin(), once.end()),
         "what was saved is what is loaded");
  setup.txtSchedule.Set(std::string(input));
  if (schedule.AddEntry()) schedule.ProcessSchedule();
  return 0;
}
