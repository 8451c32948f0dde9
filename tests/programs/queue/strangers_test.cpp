// A name that clears a screen, forges a line and opens a tag, through all that programs print.
#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "feed/feed_book.h"
#include "feed/feed_config.h"
#include "platform/linux/temporary_folder.h"
#include "programs/monitor/receiver.h"
#include "programs/queue/reports.h"
#include "programs/status/reports.h"
#include "station/program_log.h"

namespace ostrel {
namespace {

using Json = nlohmann::ordered_json;
using Captured = std::function<void()>;

const std::string kTame = "TAME.TXT";
const std::string kHostile = "\x1b[2J\nFORGED<td>\xC2\x9B\xE2\x80\xAE\xFF";

std::string StandardOutput(const Captured& call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
}

Json Obstacle(const std::string& text) {
  return {{"folder", text}, {"name", text}, {"reason", text}, {"for", 1.0}, {"nextTry", nullptr}};
}

Json StatusWith(const std::string& text) {
  const Json folder = {{"files", 1}, {"more", false}, {"oldest", 1.0}, {"trouble", text}};
  const Json day = {{"files", 1},     {"packets", 1}, {"fills", 1},    {"discarded", 1},
                    {"unmatched", 1}, {"purged", 1},  {"replaced", 1}, {"errors", Json::object()}};
  return {{"version", "3"},
          {"now", "n"},
          {"started", "s"},
          {"state", "idle"},
          {"endsIn", 0},
          {"keyed", true},
          {"port", text},
          {"rate", 1200},
          {"sincePacket", 1.0},
          {"sinceArrival", 1.0},
          {"onAir", {{"file", text}, {"block", 1}, {"blocks", 2}, {"priority", 3}, {"outIn", 4.0}}},
          {"queues", Json::array()},
          {"sinceMidnight", day},
          {"sinceStart", day},
          {"compressionRatio", 1.0},
          {"nextIdentification", nullptr},
          {"freeBytes", nullptr},
          {"intakePaused", false},
          {"silentFor", nullptr},
          {"silentBecause", text},
          {"history", text},
          {"restored", {{"at", "t"}, {"text", text}}},
          {"unusable", {{{"name", text}, {"why", text}}}},
          {"intake",
           {{"ingest", folder},
            {"holding", folder},
            {"compression", folder},
            {"kept", folder},
            {"quarantine", folder},
            {"blocked", Obstacle(text)},
            {"refused", {Obstacle(text)}},
            {"refusedCount", 1}}}};
}

std::string Received(const std::string& name) {
  const TemporaryFolder folder;
  ProductStore store(folder.path());
  return StandardOutput([&] {
    Receiver receiver(store);
    receiver.Take({ReceivedPacket{name, 1, 2, "", "x"}, ReceivedPacket{name, 1, 1, "", "x"},
                   DamagedPacket{{{name, 1, 1, "", ""}, {name}}}});
  });
}

std::string Fed(const std::string& text) {
  const TemporaryFolder folder;
  return StandardOutput([&] {
    FeedBook book(folder / "log", true);
    const auto source = book.AddSource(text);
    book.SetState(source, text, true);
    for (const auto outcome : {FeedOutcome::kDelivered, FeedOutcome::kRepeat, FeedOutcome::kUnknown,
                               FeedOutcome::kTooLarge})
      book.Note(source, text, text, 1, outcome);
    book.SetTrouble(text);
    book.Log(text);
  });
}

std::string Explained(const std::string& text) {
  const BrokerAddress broker{.host = text, .topic = text};
  return Explain({.deliverTo = text,
                  .unknownFolder = text,
                  .names = {{.pattern = text, .name = text}},
                  .sources = {FolderSettings{.paths = {text}, .passedOver = {text}},
                              BrokerSettings{.address = broker, .session = text}},
                  .publish = broker});
}

std::vector<std::string> OutputsWith(const std::string& text) {
  const Json lists = {{"entries",
                       {{{"priority", 1},
                         {"onAir", true},
                         {"name", text},
                         {"bytes", 1},
                         {"waited", 1.0},
                         {"outIn", 1.0},
                         {"id", 1}}}},
                      {"held", {{{"priority", 1}, {"name", text}}}},
                      {"intakePaused", false}};
  const Json quarantine = {
      {{"name", text}, {"for", 1.0}, {"from", "/a/" + text + "/b"}, {"reason", text}}};
  PastProduct product;
  product.name = product.sentAs = product.hash = product.fate = text;
  const std::vector past = {product};
  return {QueueTable(lists),
          QuarantineTable(quarantine),
          JsonLines(lists),
          HistoryTable(past),
          HistoryCsv(past),
          HistoryJson(past),
          PageOf(StatusWith(text)),
          MetricsOf(StatusWith(text)),
          JsonText(StatusWith(text)) + "\n",
          Received(text),
          Fed(text),
          Explained(text),
          DescribeFailure(Failure(70, text, text)),
          LogLine({}, "Test", text)};
}

TEST(Strangers, WriteNothingIntoATerminalButPrintableSignsWithinTheirLine) {
  const auto tame = OutputsWith(kTame), hostile = OutputsWith(kHostile);
  for (std::size_t i = 0; i < tame.size(); ++i) {
    SCOPED_TRACE(hostile[i]);
    EXPECT_EQ(std::ranges::count(hostile[i], '\n'), std::ranges::count(tame[i], '\n')) << i;
    EXPECT_TRUE(std::ranges::all_of(hostile[i], [](unsigned char sign) {
      return (sign >= 0x20 && sign < 0x7F) || sign == '\n' || sign == '\r';
    })) << i;
  }
}

}  // namespace
}  // namespace ostrel
