// The transmitter: the serial port that feeds it, the two lines that key it, and the cycle's timer,
// which runs while there is a port to feed. Nobody else touches any of the three.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/serial_port.h"
#include "platform/timer.h"
#include "radio/output.h"
#include "state/main_fields.h"
#include "state/setup_fields.h"

namespace ostrel {

/// The transmit cycle's period.
inline constexpr milliseconds kCyclePeriod{125};

class Transmitter : public Output {
 public:
  struct Parts {
    SerialPort& port;
    Timer& cycleTimer;
    Clock& clock;
    EventLoop& events;
    Reporting& reporting;
    MainFields& mainFields;
    SetupFields& setup;
  };
  explicit Transmitter(const Parts& parts);

  /// Whether OpenComPort may do anything: a station that is half started does not go on the air.
  void SetMayOpen(bool mayOpen) { mayOpen_ = mayOpen; }

  /// Opens, or reopens, the port with the values in the port fields, keys the transmitter, serves
  /// the key-up delay and starts the cycle. With an empty field nothing is opened and the cycle
  /// stays stopped; a failed opening says so in both windows, and why in the main one's tool tip.
  void OpenComPort();
  /// Starts the cycle, with or without a port: the end of start-up.
  void StartCycle() { parts_.cycleTimer.Start(kCyclePeriod); }
  /// The end of the program: the cycle stands, both lines are down, the port is closed, whatever
  /// fails.
  void Release();

  /// How the serial port stands. The windows say so in lblDataRate and lblCommMesg.
  enum class State {
    kClosed,    // none is open, or one is being opened
    kOpen,      // open and keyed
    kFailed,    // the last opening failed
    kVanished,  // open, but the device is gone for now
  };
  State state() const { return state_; }
  /// For how long it has stood otherwise than open, in all.
  milliseconds OffAir() const;
  /// The port is open and the transmitter was keyed. The device may be gone for now.
  bool portReady() const { return state_ == State::kOpen || state_ == State::kVanished; }
  /// What both windows say of a port that is not on the air, or only one that it is.
  std::string PortText() const;
  /// Shows in lblDataRate how the port stands, or the rate at which it transmits.
  void ShowDataRate() { parts_.mainFields.lblDataRate.Set(DataRateText()); }
  /// Shows there that there is no port, however that came.
  void ShowNoPort();

  // While the port is ready
  /// Bytes that are not out on the wire yet.
  std::size_t BytesWaiting() { return parts_.port.BytesWaiting(); }
  /// How long `bytes` take on the line as it is set. Throws Failure 5 for a line that is none.
  std::chrono::nanoseconds TimeOf(std::size_t bytes) const;
  /// True while bytes leave the station.
  bool IsSending() { return state_ == State::kOpen && BytesWaiting() > 0; }
  /// Queues the bytes behind those that wait. Throws Failure 57.
  void Send(const std::string& bytes) override { parts_.port.Write(bytes); }
  /// Waits until every byte is out; the windows live meanwhile. Throws StopRequested.
  void Drain();
  /// The key-up delay as the operator has set it.
  milliseconds KeyUpDelay() const;
  /// Blocks for `duration` with the lines as they are. Throws StopRequested.
  void Hold(milliseconds duration) { parts_.clock.Sleep(duration); }
  /// Tells that nothing will be asked of the transmitter for `silence`.
  void Announce(milliseconds silence) { parts_.port.Announce(silence); }

  // The transmit pause
  /// KeyLine1 is up.
  bool IsKeyed() const { return parts_.port.KeyLine1(); }
  /// The text in front of it.
  static constexpr std::string_view kPauseText = "Transmit Timeout";
  /// Drops KeyLine1. Throws Failure 57 when the line does not follow.
  void Rest() { parts_.port.SetKeyLine1(false); }
  /// Raises KeyLine1. Throws Failure 57.
  void Rise() { parts_.port.SetKeyLine1(true); }

  /// Keying by hand, for an identification: the cycle stands while one lives. At its end both lines
  /// are up and the cycle goes on if it went before; not so without a port, nor when the program is
  /// asked to end.
  class ManualKeying {
   public:
    /// Failures at the end are reported under `procedure`.
    ManualKeying(Transmitter& transmitter, std::string_view procedure);
    ~ManualKeying();
    ManualKeying(const ManualKeying&) = delete;
    ManualKeying& operator=(const ManualKeying&) = delete;

    /// Switches both lines. Throws Failure 57.
    void Key(bool on);

   private:
    Transmitter& transmitter_;
    std::string_view procedure_;
    bool cycleWasRunning_;
  };

 private:
  bool HasEmptyField() const;
  void OpenAndKey();
  std::string PortSettings() const;
  std::string DataRateText() const;
  void SetState(State state);
  void ShowState(State state);
  void Hear(const PortNews& news);
  void NotePresence(bool isPresent);
  void Log(const std::string& what);

  Parts parts_;
  bool mayOpen_ = false;
  State state_ = State::kClosed;
  milliseconds stateSince_;  // monotonic
  milliseconds offAir_{0};   // before that
  bool isPresent_ = true;    // the open port's device
};

}  // namespace ostrel
