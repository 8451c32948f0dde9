#include "programs/watch/listener.h"

#include <nlohmann/json.hpp>
#include <poll.h>
#include <stdexcept>
#include <thread>

namespace ostrel {

namespace {

constexpr milliseconds kBetweenQuestions{1000};
constexpr milliseconds kConnecting{1000};

bool IsReadable(int descriptor) {
  pollfd waited{descriptor, POLLIN, 0};
  return poll(&waited, 1, 0) == 1;
}

}  // namespace

milliseconds SteadyNow() {
  return std::chrono::duration_cast<milliseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
}

void Listener::Listen(milliseconds limit) {
  try {
    Ask();
    pollfd waited[] = {{statusAsker_->Descriptor(), POLLIN, 0},
                       {silenceAsker_->Descriptor(), POLLIN, 0}};
    if (poll(waited, 2, static_cast<int>(limit.count())) > 0) Hear();
  } catch (const std::exception&) {
    Reset();  // it is not up yet, or has gone; the watchdog counts the time
    std::this_thread::sleep_for(limit);
  }
}

void Listener::Ask() {
  if (!statusAsker_) {
    silenceAsker_ = std::make_unique<StationClient>(path_, kConnecting);
    silenceAsker_->Send(R"({"ask":"silence"})");
    statusAsker_ = std::make_unique<StationClient>(path_, kConnecting);
  }
  if (isAsked_ || SteadyNow() < nextQuestion_) return;
  statusAsker_->Send(R"({"ask":"status"})");
  isAsked_ = true;
}

/// The announcement first: it came before the answer that it explains.
void Listener::Hear() {
  if (IsReadable(silenceAsker_->Descriptor())) {
    const auto answer = nlohmann::json::parse(silenceAsker_->ReadLine());
    const std::chrono::duration<double> length(answer.at("silent").get<double>());
    watchdog_.Silent(SteadyNow(), std::chrono::duration_cast<milliseconds>(length));
    silenceAsker_->Send(R"({"ask":"silence"})");
  }
  if (IsReadable(statusAsker_->Descriptor())) {
    status_ = statusAsker_->ReadLine();
    watchdog_.Answered(SteadyNow());
    isAsked_ = false;
    nextQuestion_ = SteadyNow() + kBetweenQuestions;
  }
}

void Listener::Reset() {
  statusAsker_.reset();
  silenceAsker_.reset();
  isAsked_ = false;
  nextQuestion_ = milliseconds(0);
}

}  // namespace ostrel
