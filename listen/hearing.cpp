#include "listen/hearing.h"

namespace ostrel {

using std::chrono::duration_cast;
using std::chrono::seconds;

void Hearing::Heard(Time now) {
  const std::lock_guard lock(mutex_);
  lastHeard_ = now;
  ++MinuteOf(now).heard;
}

void Hearing::Lost(int blocks, Time now) {
  const std::lock_guard lock(mutex_);
  MinuteOf(now).lost += blocks;
}

Hearing::Minute& Hearing::MinuteOf(Time now) {
  while (!minutes_.empty() && now - minutes_.front().begun > std::chrono::hours(1))
    minutes_.pop_front();
  if (minutes_.empty() || now - minutes_.back().begun >= std::chrono::minutes(1))
    minutes_.push_back({.begun = now});
  return minutes_.back();
}

Hearing::Figures Hearing::At(Time now) const {
  const std::lock_guard lock(mutex_);
  Figures figures;
  figures.sinceStart = duration_cast<seconds>(now - start_);
  if (lastHeard_) figures.sinceHeard = duration_cast<seconds>(now - *lastHeard_);
  for (const auto& minute : minutes_) {
    if (now - minute.begun > std::chrono::hours(1)) continue;
    figures.heard += minute.heard;
    figures.lost += minute.lost;
  }
  return figures;
}

}  // namespace ostrel
