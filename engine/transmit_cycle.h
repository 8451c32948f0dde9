// The heartbeat: every 125 ms one tick runs the whole station once, in a fixed order. The cycle
// itself is the duty cycle, the displays, the statistics and the output; its neighbours are steps
// that it is given.
#pragma once

#include <functional>

#include "base/reporting.h"
#include "engine/clock_step_watch.h"
#include "engine/output_channels.h"
#include "engine/queue_service.h"
#include "platform/event_loop.h"

namespace ostrel {

/// The calls that the cycle makes into its neighbours.
struct CycleSteps {
  std::function<void(int newSecond)> identify;
  std::function<void()> processSchedule;
  std::function<void()> checkForNewFiles;
  std::function<void()> checkForNewPriFiles;
  std::function<void()> refreshCompressList;
  std::function<void()> compressBlock;
};

class TransmitCycle {
 public:
  struct Parts {
    Clock& clock;
    EventLoop& events;
    SerialPort& port;
    OutputChannels& output;
    QueueService& service;
    Reporting& reporting;
    MainWindow& mainWindow;
    const Setup& setup;
    Engine& engine;
    const ProgramValues& values;
  };
  TransmitCycle(const Parts& parts, CycleSteps steps)
      : parts_(parts), steps_(std::move(steps)), clockSteps_(parts.clock) {}

  /// One tick. A tick that falls into a wait of another one is skipped.
  void Tick();

 private:
  void RunTick();
  bool IsReady() const { return parts_.engine.portReady(); }
  int NewSecond(const CalendarTime& now);
  void ShowTimingReadout(int newSecond, int second);
  void RunDutyCycle();
  void Pause();
  void WaitForDrain();
  void WaitForPauseEnd();
  void BeginTxStart();
  void FollowClockStep();
  void ToggleActivityLight();
  void ShowRates();
  void CheckBlockCompression();
  void WriteStatistics();
  void ResetDailyCounters();
  template <typename Action>
  void Step(Action&& action);

  Parts parts_;
  CycleSteps steps_;
  ClockStepWatch clockSteps_;
  int lastSecond_ = 0;
  bool isInTick_ = false;
};

}  // namespace ostrel
