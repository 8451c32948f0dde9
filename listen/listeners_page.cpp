#include "listen/listeners_page.h"

#include <algorithm>
#include <fmt/format.h>

#include "listen/page_files.h"
#include "listen/page_texts.h"
#include "listen/picture.h"

namespace ostrel {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kHtml = "text/html; charset=utf-8";
constexpr const char* kPlain = "text/plain; charset=utf-8";
constexpr const char* kPolicyHeader = "Content-Security-Policy";
constexpr const char* kPagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
/// For what came over the air: it runs nothing, loads nothing, and belongs to no site.
constexpr const char* kPicturePolicy = "default-src 'none'; sandbox";
/// Events end and begin by the minute.
constexpr auto kBetweenLooks = std::chrono::seconds(5);
/// What stands in the page itself; a text that is longer is cut off there.
constexpr std::size_t kMostInRegion = 200, kMostTexts = 20;
constexpr std::size_t kLongestInPage = 64 << 10;

UtcTime Now() {
  return std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

WebResponse PageAnswer(std::string content) {
  return {kHtml, std::move(content), 200, {{kPolicyHeader, kPagePolicy}}};
}

}  // namespace

ListenersPage::ListenersPage(std::filesystem::path folder, Home home)
    : home_(std::move(home)), hearing_(Clock::now()), products_(std::move(folder)) {
  Look();
}

void ListenersPage::Heard() {
  hearing_.Heard(Clock::now());
}

void ListenersPage::Lost(int blocks) {
  hearing_.Lost(blocks, Clock::now());
}

void ListenersPage::Add(const std::string& name, std::string_view data) {
  const std::lock_guard lock(mutex_);
  products_.Add(name, data, Now());
  isFresh_ = false;
}

void ListenersPage::Look() {
  const std::lock_guard lock(mutex_);
  if (isFresh_ && Clock::now() - lookedAt_ < kBetweenLooks) return;
  isFresh_ = true;
  lookedAt_ = Clock::now();
  const auto view = MakeView(Now());
  atHome_.clear();
  for (const auto& one : view.home) atHome_.push_back(one.event);
  auto content = ContentHtml(view, IsSilent(Figures()));
  if (content == content_) return;
  content_ = std::move(content);
  ++version_;
}

ListenersView ListenersPage::MakeView(UtcTime now) const {
  ListenersView view;
  view.isHomeKnown = home_.place || !home_.areas.empty();
  view.place = home_.place;
  view.latest = products_.listed();
  const auto& told = products_.eventful();
  const auto rows = FindInForce(told, now);
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
    auto event = Describe(*row, told[row->bulletin], now);
    event.product = products_.NameOf(row->bulletin);
    const auto& segment = told[row->bulletin].bulletin.segments[row->segment];
    if (!IsAtHome(home_, segment, row->areas)) {
      if (view.region.size() < kMostInRegion)
        view.region.push_back(std::move(event));
      else
        ++view.moreInRegion;
      continue;
    }
    std::string text;
    if (view.home.size() < kMostTexts)
      text = products_.ContentOf(event.product).value_or("").substr(0, kLongestInPage);
    view.home.push_back({std::move(event), std::move(text)});
  }
  return view;
}

std::vector<ShownEvent> ListenersPage::AtHome() const {
  const std::lock_guard lock(mutex_);
  return atHome_;
}

Hearing::Figures ListenersPage::Figures() const {
  return hearing_.At(Clock::now());
}

void ListenersPage::Route(WebServer& server) {
  server.Route("/", [this](const auto&) { return Page(); });
  server.Route("/page.css", [](const auto&) {
    return WebResponse{"text/css; charset=utf-8", kListenersCss};
  });
  server.Route("/page.js", [](const auto&) {
    return WebResponse{"text/javascript; charset=utf-8", kListenersJs};
  });
  server.Route("/news", [this](const auto&) { return News(); });
  server.Route("/product/", [this](const auto& path) { return Product(path); });
  server.Route("/picture/", [this](const auto& path) { return Picture(path); });
}

WebResponse ListenersPage::Page() const {
  const auto hearing = HearingHtml(Figures());
  const std::lock_guard lock(mutex_);
  return PageAnswer(PageHtml(hearing, content_, version_));
}

/// One message of each kind (server-sent events), and the connection ends: the browser asks again
/// by itself. Those that listened on would keep their places from others (WebLimits).
WebResponse ListenersPage::News() const {
  const std::lock_guard lock(mutex_);
  return {"text/event-stream",
          fmt::format("retry: 2000\nevent: hearing\ndata: {}\n\nevent: content\ndata: {}\n\n",
                      HearingHtml(Figures()), version_)};
}

/// Of "/product/NAME".
std::optional<std::string> ListenersPage::ContentAt(const std::string& path) const {
  return products_.ContentOf(path.substr(path.find('/', 1) + 1));
}

WebResponse ListenersPage::Product(const std::string& path) const {
  const auto content = ContentAt(path);
  if (!content) return {kPlain, fmt::format("{}\n", page_texts::kNoSuchProduct), 404};
  const auto name = path.substr(path.find('/', 1) + 1);
  if (!IsText(*content)) return PageAnswer(ProductHtml(name, page_texts::kNotShown));
  return PageAnswer(ProductHtml(name, *content));
}

WebResponse ListenersPage::Picture(const std::string& path) const {
  const auto content = ContentAt(path).value_or("");
  const auto type = PictureTypeOf(content);
  if (type.empty()) return {kPlain, fmt::format("{}\n", page_texts::kNoSuchProduct), 404};
  return {std::string(type), content, 200, {{kPolicyHeader, kPicturePolicy}}};
}

}  // namespace ostrel
