// What listeners have of this receiver: the page, and a command for what comes into force at home.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "listen/listeners_page.h"
#include "programs/monitor/warning_watch.h"
#include "web/web_server.h"

namespace ostrel {

struct AudienceOptions {
  std::string where;  // "[ADDRESS:]PORT"; no page when empty
  std::vector<std::string> names;
  Home home;
  std::string onWarning;
  bool IsWanted() const { return !where.empty() || !onWarning.empty(); }
};

/// Adds the options; they are of no use without `out`.
void DeclareAudience(CLI::App& app, AudienceOptions& options, CLI::Option* out);

class Audience {
 public:
  /// Of the products in `folder`. Throws std::runtime_error where nothing can be served.
  Audience(const AudienceOptions& options, const std::filesystem::path& folder);

  ListenersPage& page() { return page_; }

 private:
  void Attend(const std::stop_token& stop);

  ListenersPage page_;
  WebServer server_;
  std::optional<WarningWatch> warnings_;
  std::jthread thread_;  // looks at the clock for the others
};

}  // namespace ostrel
