// The heartbeat: every 125 ms one tick runs the whole station once, in a fixed order. What the
// cycle does itself is the duty cycle, the displays and the statistics.
#pragma once

#include "base/reporting.h"
#include "engine/clock_step_watch.h"
#include "engine/queue_service.h"
#include "engine/silence_watch.h"
#include "ident/morse_identification.h"
#include "ident/schedule.h"
#include "intake/compression.h"
#include "intake/ingest_scan.h"
#include "intake/queue_intake.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "radio/outputs.h"
#include "radio/transmitter.h"
#include "state/main_fields.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

class TransmitCycle {
 public:
  struct Parts {
    Clock& clock;
    EventLoop& events;
    Transmitter& transmitter;
    MorseIdentification& morse;
    Schedule& schedule;
    IngestScan& scan;
    QueueIntake& intake;
    Compression& compression;
    QueueService& service;
    SilenceWatch& silence;
    Outputs& outputs;
    Reporting& reporting;
    MainFields& mainFields;
    const SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit TransmitCycle(const Parts& parts) : parts_(parts), clockSteps_(parts.clock) {}

  /// One tick. A tick that falls into a wait of another one is skipped.
  void Tick();

 private:
  void RunTick();
  bool IsReady() const { return parts_.transmitter.portReady(); }
  int NewSecond(const CalendarTime& now);
  void ShowTimingReadout(int newSecond, int second);
  void RunDutyCycle();
  void Pause();
  milliseconds PauseLength() const;
  void WaitForPauseEnd();
  void BeginTxStart();
  void FollowClockStep();
  void ToggleActivityLight();
  void ShowRates();
  void CheckBlockCompression();
  void SendPendingPacket();
  void WriteStatistics();
  void ResetDailyCounters();
  template <typename Action>
  void Step(Action&& action);

  Parts parts_;
  ClockStepWatch clockSteps_;
  int lastSecond_ = 0;
  bool isInTick_ = false;
};

}  // namespace ostrel
