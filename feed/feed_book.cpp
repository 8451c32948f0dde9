#include "feed/feed_book.h"

#include <fmt/format.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "base/text.h"

namespace ostrel {
namespace {

constexpr std::size_t kLargestLog = 1'000'000, kOldLogs = 4, kShown = 20;

std::string LineOf(std::string_view given, std::string_view called, int urgency,
                   FeedOutcome outcome, const std::string& rule) {
  const auto came = Printable(given), name = Printable(called);
  switch (outcome) {
    case FeedOutcome::kRepeat:
      return fmt::format("{} came again as {} and is dropped", name, came);
    case FeedOutcome::kUnknown:
      return fmt::format("{} has no name that a rule makes short; kept as {}", came, name);
    case FeedOutcome::kTooLarge:
      return fmt::format("{} is too large for the station; kept as {}", came, name);
    case FeedOutcome::kPassedOver:
      return fmt::format("{} is passed over by the rule for {}", name, rule);
    case FeedOutcome::kDelivered:
      break;
  }
  const auto urgent = urgency > 0 ? fmt::format(", urgency {}", urgency) : "";
  return given == called ? name + urgent : fmt::format("{} from {}{}", name, came, urgent);
}

}  // namespace

FeedBook::FeedBook(const std::string& path, bool isSpoken)
    : log_(std::make_shared<spdlog::logger>("feed")) {
  try {
    log_->sinks().push_back(
        std::make_shared<spdlog::sinks::rotating_file_sink_st>(path, kLargestLog, kOldLogs));
  } catch (const spdlog::spdlog_ex&) {
    isSpoken = true;
  }
  if (isSpoken) log_->sinks().push_back(std::make_shared<spdlog::sinks::stderr_sink_st>());
  log_->set_pattern("%Y-%m-%d %H:%M:%S %v");
  log_->set_error_handler([](const std::string&) {});
  log_->flush_on(spdlog::level::info);
}

FeedBook::~FeedBook() = default;

std::size_t FeedBook::AddSource(const std::string& name) {
  const std::lock_guard lock(mutex_);
  figures_.sources.push_back({.name = name, .state = "not yet begun"});
  return figures_.sources.size() - 1;
}

void FeedBook::SetState(std::size_t source, const std::string& state, bool isWell) {
  const std::lock_guard lock(mutex_);
  auto& figures = figures_.sources.at(source);
  if (figures.state == state) return;
  figures.state = state;
  figures.isWell = isWell;
  log_->info("{}: {}", Printable(figures.name), Printable(state));
}

void FeedBook::Note(std::size_t source, std::string_view given, const std::string& name,
                    int urgency, FeedOutcome outcome, const std::string& rule) {
  const std::lock_guard lock(mutex_);
  auto& figures = figures_.sources.at(source);
  auto& count = outcome == FeedOutcome::kRepeat       ? figures_.repeats
                : outcome == FeedOutcome::kUnknown    ? figures_.unknown
                : outcome == FeedOutcome::kTooLarge   ? figures_.tooLarge
                : outcome == FeedOutcome::kPassedOver ? figures_.passedOver[rule]
                                                      : figures_.delivered;
  ++count;
  ++figures.products;
  figures_.lastCame = FeedFigures::Clock::now();
  figures_.last.push_front({.at = std::chrono::system_clock::now(),
                            .name = name,
                            .source = figures.name,
                            .outcome = outcome});
  if (figures_.last.size() > kShown) figures_.last.pop_back();
  log_->info("{}: {}", Printable(figures.name), LineOf(given, name, urgency, outcome, rule));
}

void FeedBook::SetTrouble(const std::string& trouble) {
  const std::lock_guard lock(mutex_);
  if (figures_.trouble == trouble) return;
  figures_.trouble = trouble;
  log_->info(trouble.empty() ? "Products are taken again."
                             : fmt::format("Nothing is taken: {}", Printable(trouble)));
}

void FeedBook::Log(const std::string& text) {
  const std::lock_guard lock(mutex_);
  log_->info(Printable(text));
}

FeedFigures FeedBook::Figures() const {
  const std::lock_guard lock(mutex_);
  return figures_;
}

}  // namespace ostrel
