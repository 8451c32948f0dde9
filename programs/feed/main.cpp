// ostrel-feed: from what a station can receive to its ingest folder, without a window. Under the
// names of the companion programs, which the station starts, it is the serial source or all others;
// where there is a display and the program with the window, that one goes on instead.
#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>
#include <unistd.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "feed/companion.h"
#include "feed/feed.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "programs/command_line.h"
#include "programs/feed/explain_files.h"
#include "programs/feed/trial.h"

namespace {

using namespace ostrel;

constexpr int kNothingToDo = 78;  // EX_CONFIG of sysexits.h: another try would end alike

struct Options {
  std::string station = ProgramFolder();
  bool check = false;
  std::string tree;
  std::vector<std::string> names;
  ExplainOptions explain;
};

/// Explains the configuration, or says what is wrong with it; tells what becomes of `names`.
void Check(const Options& options) {
  const auto config = ReadFeedConfig(FeedConfigPath(options.station), options.station);
  if (options.names.empty()) return fmt::print("{}", Explain(config));
  const NameRules rules(config.names);
  for (const auto& name : options.names) {
    const auto known = rules.NameOf(name);
    fmt::print(
        "{} {}\n", Printable(name),
        known ? fmt::format("becomes {}{}", Printable(known->name),
                            known->urgency > 0 ? fmt::format(", urgency {}", known->urgency) : "")
              : "is unknown");
  }
}

int Run(const Options& options, SourceKinds kinds, int count, char* arguments[]) {
  QCoreApplication application(count, arguments);
  ShareWithGroupOf(options.station);
  Feed feed(options.station, kinds, true);
  feed.Start();
  QCoreApplication::exec();
  // What must not be lost is on the disk; a try to reach a broker is not waited for.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main(int count, char* arguments[]) {
  FillStandardStreams();
  const std::string called(FileNameOf(arguments[0]));
  const auto kinds = KindsOf(called);
  if (kinds != SourceKinds::kAll) ShowWindowInstead(called, arguments);
  Options options;
  CLI::App app("Brings products from receivers, other stations and brokers to a station.");
  app.add_option("--station", options.station, "The station's folder")->capture_default_str();
  auto* const check =
      app.add_flag("--check", options.check, "Explains Feed.toml, or says what is wrong in it");
  app.add_option("--name", options.names, "With --check: what becomes of this name")->needs(check);
  app.add_option("--trial", options.tree,
                 "What the area rules would do to the files below this folder")
      ->type_name("TREE");
  std::string start;  // "KvStart", which the station gives to its companion programs
  if (kinds == SourceKinds::kAll)
    AddExplainOptions(app, options.explain);
  else
    app.add_option("START", start)->check(CLI::IsMember({kStartWord}));
  Describe(app, "ostrel-feed", "ostrel-feed --check");
  if (const auto status = Parse(app, count, arguments)) return *status;
  try {
    // What came is remembered by its path: one spelling of it.
    options.station = std::filesystem::canonical(options.station).string();
    if (options.explain.isWanted) return ExplainFiles(options.explain, options.station);
    if (!options.tree.empty()) {
      TryTree(options.tree, options.station);
      return EXIT_SUCCESS;
    }
    if (!options.check) return Run(options, kinds, count, arguments);
    Check(options);
    return EXIT_SUCCESS;
  } catch (const Failure& failure) {  // it may pass
    fmt::print(stderr, "{}: {}\n", called, Printable(failure.text()));
    return EXIT_FAILURE;
  } catch (const std::system_error& error) {  // so may this
    fmt::print(stderr, "{}: {}\n", called, Printable(error.what()));
    return EXIT_FAILURE;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}: {}\n", called, Printable(error.what()));
    return kNothingToDo;
  }
}
