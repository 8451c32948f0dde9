#include "programs/monitor/audience.h"

#include <csignal>
#include <fmt/format.h>

#include "programs/monitor/receiver.h"

namespace ostrel {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(500);
constexpr const char* kMemory = ".warnings";

/// Takes what `read` makes of an option's text.
template <typename Value, typename Read>
std::function<void(const std::string&)> Taking(Value& value, Read read) {
  return [&value, read](const std::string& text) {
    try {
      value = read(text);
    } catch (const std::runtime_error& error) {
      throw CLI::ValidationError(error.what());
    }
  };
}

}  // namespace

void DeclareAudience(CLI::App& app, AudienceOptions& options, CLI::Option* out) {
  auto* const serve = app.add_option("--serve", options.where,
                                     "Shows listeners over HTTP what is in force; on 127.0.0.1 "
                                     "unless an address is given")
                          ->type_name("[ADDRESS:]PORT")
                          ->needs(out);
  app.add_option("--name", options.names, "A name by which browsers ask for the page")
      ->type_name("HOST")
      ->needs(serve);
  app.add_option_function<std::string>("--home", Taking(options.home.place, ReadPlace),
                                       "Where the listener is, in degrees, as 42.03,-93.62")
      ->type_name("LAT,LON");
  app.add_option_function<std::string>("--areas", Taking(options.home.areas, ReadAreaCodes),
                                       "The listener's county and zones, as IAC169,IAZ048")
      ->type_name("CODES");
  app.add_option("--on-warning", options.onWarning,
                 "Run once for each event in force at home, and once at its end")
      ->type_name("COMMAND")
      ->needs(out);
}

Audience::Audience(const AudienceOptions& options, const std::filesystem::path& folder)
    : page_(folder, options.home), server_(options.names) {
  if (!options.onWarning.empty()) {
    std::signal(SIGCHLD, SIG_IGN);  // the command is not waited for
    warnings_.emplace(options.onWarning, folder / kMemory);
  }
  if (!options.where.empty()) {
    page_.Route(server_);
    ShowLine(fmt::format("listeners find it at {}", server_.Listen(options.where)));
  }
  thread_ = std::jthread([this](const std::stop_token& stop) { Attend(stop); });
}

void Audience::Attend(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    page_.Look();
    if (warnings_) warnings_->Take(page_.AtHome());
    server_.GiveUpLate();
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

}  // namespace ostrel
