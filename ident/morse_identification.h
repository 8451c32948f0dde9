// Identifies the station in Morse code by keying the transmitter on and off, at a set interval and
// on demand. No packet goes out meanwhile.
#pragma once

#include <string>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "radio/transmitter.h"
#include "state/main_fields.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

class MorseIdentification {
 public:
  struct Parts {
    Clock& clock;
    Transmitter& transmitter;
    Files& files;
    Dialogs& dialogs;
    Reporting& reporting;
    MainFields& mainFields;
    SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit MorseIdentification(const Parts& parts) : parts_(parts) {}

  /// The countdown, once a tick: goes down by one at second 30, and at 0 identifies when the
  /// interval is above 0. `newSecond` is the second that this tick newly saw, or 99. Throws Failure
  /// when the identification fails; the countdown has then begun again all the same. Without a port
  /// it stays due.
  void CountDown(int newSecond);

  /// The operator's demand. Nothing with an empty text; a message when no port is open or when the
  /// identification fails. Asked for while one waits for the port to drain, it goes first: the one
  /// that waited follows it.
  void SendOnDemand();

  /// How long one takes once the line is empty, the key-up delay left out: by the table as it was
  /// last read for these settings.
  milliseconds Length();

  /// Looks whether the table can be read; the log tells when it cannot.
  void LookAtTable();

  /// The interval field was edited or loaded.
  void RestartCountdown() { parts_.setup.TimeLeft.Set(parts_.setup.IDTime.Get()); }

 private:
  /// Sends one identification; blocks for its whole length. False, with nothing keyed, when the
  /// operator took the port away while it waited for the line. Throws Failure; the transmitter, the
  /// timer and the window are then as before.
  bool SendMorseId();
  void TellThatNoPortIsOpen();
  void Key(Transmitter::ManualKeying& keying, const std::string& elements, int factor);
  void ClearDisplay();
  std::string ReadElements(const std::string& text);
  /// The table's text. The status tells of one that is of no use. Throws Failure.
  std::string ReadTable();

  Parts parts_;
  std::string measured_;  // text and speed of the length
  milliseconds length_{0};
};

}  // namespace ostrel
