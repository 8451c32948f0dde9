#include "station/forecast.h"

#include <algorithm>
#include <cmath>

#include "radio/transmitter.h"

namespace ostrel {

namespace {

using std::chrono::minutes;

constexpr seconds kCountdownSecond{30};  // of the minute
constexpr milliseconds kDrainStep{1}, kPauseStep{50};

/// `span` in whole steps, rounded up.
nanoseconds InSteps(nanoseconds span, nanoseconds step) {
  return span <= nanoseconds(0) ? nanoseconds(0) : (span + step - nanoseconds(1)) / step * step;
}

constexpr nanoseconds kHorizon = std::chrono::days(7);

/// The boundaries that must be crossed until there are more than `limit` of them; at most so many
/// that even minutes lead beyond the horizon, and their nanoseconds can be counted.
long long BoundariesBeyond(double limit) {
  return limit < 0 ? 0 : static_cast<long long>(std::min(limit, 1e6)) + 1;
}

}  // namespace

Forecast::Forecast(const Outlook& outlook)
    : outlook_(outlook),
      grid_(outlook.nextTick),
      turn_(outlook.nextTick),
      lineFree_(outlook.waiting),
      countdown_(outlook.countdown) {
  if (outlook.interval > 0) {
    const auto second = std::chrono::floor<minutes>(outlook.now) + kCountdownSecond;
    countsAt_ = SpanTo(second + (second <= outlook.now ? minutes(1) : minutes(0)));
    if (countdown_ == 0) countsAt_ = nanoseconds(0);
  }
  if (outlook.blockedFor > nanoseconds(0)) Block(outlook.blockedFor);
  if (outlook.upMinutes > 0) pauseAt_ = PauseAfter(outlook.txStart);
  if (outlook.isPausing) HaveTurnFirst();
}

std::optional<nanoseconds> Forecast::Send(std::int64_t blocks) {
  for (std::int64_t i = 0; i < blocks && turn_ <= kHorizon; ++i) {
    ReachTurn();
    lineFree_ = std::max(lineFree_, turn_) + outlook_.packet;
    turn_ += nanoseconds(1);
  }
  const auto out = lineFree_;
  ReachTurn();  // the one that retires the file sends nothing
  turn_ += nanoseconds(1);
  if (turn_ > kHorizon) return std::nullopt;
  return out;
}

void Forecast::ReachTurn() {
  do {
    turn_ = TickFrom(std::max(turn_, lineFree_ - outlook_.nearlyDrained));
  } while (turn_ <= kHorizon && MeetEvent());
}

/// A tick that was blocked is made up for at once, and the others keep their grid.
nanoseconds Forecast::TickFrom(nanoseconds moment) const {
  return moment <= outlook_.blockedFor ? outlook_.blockedFor
                                       : grid_ + InSteps(moment - grid_, kCyclePeriod);
}

/// What a tick before this turn, or the one that has it, does first. False when there is nothing.
bool Forecast::MeetEvent() {
  const auto isDue = [this](const std::optional<nanoseconds>& at) {
    return at && TickFrom(*at) <= turn_;
  };
  if (isDue(countsAt_) && (!isDue(pauseAt_) || *countsAt_ <= *pauseAt_)) {
    CountDown(TickFrom(*countsAt_));
  } else if (isDue(pauseAt_)) {
    Pause(TickFrom(*pauseAt_));
  } else {
    return false;
  }
  return true;
}

void Forecast::CountDown(nanoseconds tick) {
  const auto second = std::chrono::floor<minutes>(WallAt(tick)) + kCountdownSecond;
  countsAt_ = SpanTo(second + (second <= WallAt(tick) ? minutes(1) : minutes(0)));
  if (--countdown_ > 0) return;
  countdown_ = outlook_.interval;
  const auto drained = tick + InSteps(lineFree_ - tick, kDrainStep);
  Block(drained + outlook_.identification + outlook_.keyUp);
  grid_ = outlook_.blockedFor;  // the cycle is started anew
}

void Forecast::Pause(nanoseconds tick) {
  lineFree_ = std::max(lineFree_, tick) + outlook_.pauseText;
  const auto drained = tick + InSteps(lineFree_ - tick, kDrainStep);
  const auto boundary = std::chrono::floor<seconds>(WallAt(drained)) +
                        seconds(BoundariesBeyond(outlook_.downSeconds));
  const auto end = drained + InSteps(SpanTo(boundary) - drained, kPauseStep);
  pauseAt_ = PauseAfter(WallAt(end));
  Block(end + outlook_.keyUp);
  HaveTurnFirst();
}

/// The tick that paused has its turn before another one can pause.
void Forecast::HaveTurnFirst() {
  if (pauseAt_) pauseAt_ = std::max(*pauseAt_, outlook_.blockedFor + nanoseconds(1));
}

/// Nothing happens until then; a countdown whose whole second falls into it is missed.
void Forecast::Block(nanoseconds until) {
  outlook_.blockedFor = until;
  turn_ = std::max(turn_, until);
  while (countsAt_ && countdown_ > 0 && *countsAt_ + seconds(1) <= until) *countsAt_ += minutes(1);
}

nanoseconds Forecast::PauseAfter(LocalTime txStart) const {
  return SpanTo(std::chrono::floor<minutes>(txStart) +
                minutes(BoundariesBeyond(outlook_.upMinutes)));
}

LocalTime Forecast::WallAt(nanoseconds moment) const {
  return outlook_.now + std::chrono::floor<milliseconds>(moment);
}

}  // namespace ostrel
