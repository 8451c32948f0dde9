// A name that clears a screen, forges a line and opens a tag, through all that programs print.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

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

/// Every text of `json`, apart from times and the state, becomes `text`.
void Rename(Json& json, const std::string& text) {
  static const std::set<std::string> ours{"version", "now", "started", "at", "state"};
  for (auto& [key, value] : json.items()) {
    if (value.is_structured()) Rename(value, text);
    if (value.is_string() && !ours.contains(key)) value = text;
  }
}

Json StatusWith(const std::string& text) {
  std::ifstream file(OSTREL_SOURCE_DIR "/tests/programs/status/status.json");
  auto status = Json::parse(file);
  status.update(Json::parse(R"({"history": "", "restored": {"at": "t", "text": ""},
      "unusable": [{"name": "", "why": ""}],
      "onAir": {"file": "", "block": 1, "blocks": 2, "priority": 3, "outIn": 4.0}})"));
  for (auto* const folder : {"ingest", "compression", "kept", "quarantine"})
    status["intake"][folder]["trouble"] = "";
  Rename(status, text);
  return status;
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
  const Json lists = {{"station", text},
                      {"entries",
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
          HistoryText(HistoryText::Form::kTable).Of(past),
          HistoryText(HistoryText::Form::kCsv).Of(past),
          HistoryText(HistoryText::Form::kJson).Of(past),
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
