#include "listen/page.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

#include "bulletin/codes.h"
#include "listen/html.h"
#include "listen/map.h"
#include "listen/page_texts.h"

namespace ostrel {
namespace {

namespace texts = page_texts;

constexpr std::size_t kMostOfKind = 12, kMostPictures = 8;

std::string PartsOf(const char* id, std::string_view caption, std::string_view inside) {
  return fmt::format(
      R"(<section id="{0}" aria-labelledby="{0}-caption"><h2 id="{0}-caption">{1}</h2>)"
      "\n{2}</section>\n",
      id, caption, inside);
}

std::string Paragraph(std::string_view text) {
  return fmt::format("<p>{}</p>\n", text);
}

std::string TimesOf(const ShownEvent& event) {
  if (event.begins && event.until)
    return fmt::format(texts::kFromUntil, HtmlTime(*event.begins), HtmlTime(*event.until));
  if (event.begins) return fmt::format(texts::kFromFurtherNotice, HtmlTime(*event.begins));
  if (event.until) return fmt::format(texts::kUntil, HtmlTime(*event.until));
  return std::string(texts::kFurtherNotice);
}

std::string ProductPath(const std::string& name) {
  return "product/" + PathPart(name);
}

/// What stands in both lists: title, times, areas, headline.
std::string EventHtml(const ShownEvent& event, const std::string& more) {
  auto html = fmt::format(R"(<article class="{}" data-identity="{}"><h3>{}</h3>)"
                          R"(<p class="times">{}</p>)",
                          ClassOf(event), Html(event.identity), Html(event.title), TimesOf(event));
  if (!event.areas.empty()) html += fmt::format(R"(<p class="areas">{}</p>)", Html(event.areas));
  if (!event.headline.empty())
    html += fmt::format(R"(<p class="headline">{}</p>)", Html(event.headline));
  if (!event.isCertain) html += fmt::format(R"(<p class="doubt">{}</p>)", texts::kUncertain);
  html += fmt::format(R"(<p class="faint">{}</p>)",
                      fmt::format(texts::kIssued, HtmlTime(event.since), HtmlTime(event.heard)));
  return html + more + "</article>\n";
}

std::string WholeText(const std::string& text) {
  return fmt::format(R"(<details><summary>{}</summary><pre tabindex="0">{}</pre></details>)",
                     texts::kWholeText, HtmlLines(text));
}

std::string WayTo(const ShownEvent& event) {
  return fmt::format(R"(<p><a href="{}">{}<span class="unseen"> ({})</span></a></p>)",
                     ProductPath(event.product), texts::kWholeText, Html(event.title));
}

std::string HomeHtml(const ListenersView& view, bool isSilent) {
  if (!view.isHomeKnown) return Paragraph(texts::kHomeUnknown);
  if (view.home.empty() && isSilent)
    return fmt::format(R"(<p class="calm">{}</p>)", texts::kNothingKnown) +
           Paragraph(texts::kNothingKnownWhy);
  if (view.home.empty()) return fmt::format(R"(<p class="calm">{}</p>)", texts::kNothingAtHome);
  std::string html;
  for (const auto& [event, text] : view.home)
    html += EventHtml(event, text.empty() ? WayTo(event) : WholeText(text));
  return html;
}

std::string RegionHtml(const ListenersView& view) {
  if (view.region.empty()) return Paragraph(texts::kNothingInRegion);
  std::string html;
  for (const auto& event : view.region) html += EventHtml(event, WayTo(event));
  if (view.moreInRegion > 0) html += Paragraph(fmt::format(texts::kMore, view.moreInRegion));
  return html;
}

std::string MapHtml(const ListenersView& view) {
  std::vector<const ShownEvent*> events;
  for (const auto& one : view.home) events.push_back(&one.event);
  for (const auto& event : view.region) events.push_back(&event);
  auto svg = MapSvg(view.place, events);
  if (svg.empty()) return svg;
  std::string legend;
  for (const auto& [name, text] : {std::pair("warning", texts::kWarning),
                                   {"watch", texts::kWatch},
                                   {"advisory", texts::kAdvisory}})
    legend += fmt::format(R"(<li class="{}">{}</li>)", name, text);
  if (view.place) legend += fmt::format(R"(<li class="homes">{}</li>)", texts::kHome);
  return PartsOf("map", texts::kMap, svg + fmt::format("<ul class=\"legend\">{}</ul>\n", legend));
}

std::string ListedHtml(const KeptProduct& product) {
  auto html = fmt::format(R"(<li><a href="{}">{}</a> {} <span class="faint">{}</span>)",
                          ProductPath(product.name), Html(product.name), HtmlTime(product.received),
                          fmt::format(texts::kBytes, product.bytes));
  if (product.isDamaged) html += fmt::format(R"( <span class="doubt">{}</span>)", texts::kDamaged);
  return html + "</li>\n";
}

std::string PicturesHtml(const std::deque<KeptProduct>& latest) {
  std::string html;
  std::size_t count = 0;
  for (const auto& product : latest) {
    if (product.picture.empty() || ++count > kMostPictures) continue;
    const auto path = PathPart(product.name);
    html += fmt::format(
        R"(<figure><a href="picture/{0}"><img src="picture/{0}" alt="{1}" loading="lazy"></a>)"
        R"(<figcaption>{1} {2}</figcaption></figure>)"
        "\n",
        path, Html(product.name), HtmlTime(product.received));
  }
  if (html.empty()) return html;
  return fmt::format(R"(<h3>{}</h3><div class="pictures">{}</div>)", texts::kPictures, html);
}

/// A kind with its products, the newest first; the kinds in the order of their newest.
struct Kind {
  std::string name, newest, items;
  std::size_t count = 0;
};

std::vector<Kind> KindsOf(const std::deque<KeptProduct>& latest) {
  std::vector<Kind> kinds;
  std::map<std::string, std::size_t> places;
  for (const auto& product : latest) {
    if (!product.picture.empty()) continue;
    const auto name =
        product.kind.empty()
            ? std::string(texts::kOtherKinds)
            : std::string(MeaningOf(CodeTable::kKind, product.kind).value_or(product.kind));
    const auto place = places.try_emplace(name, kinds.size()).first->second;
    if (place == kinds.size()) kinds.push_back({name, HtmlTime(product.received), {}});
    auto& kind = kinds[place];
    if (++kind.count <= kMostOfKind) kind.items += ListedHtml(product);
  }
  return kinds;
}

std::string LatestHtml(const std::deque<KeptProduct>& latest) {
  if (latest.empty()) return Paragraph(texts::kNothingYet);
  auto html = PicturesHtml(latest) + "<div class=\"kinds\">\n";
  for (const auto& kind : KindsOf(latest)) {
    auto heard = kind.newest;
    if (kind.count > 1) heard += ", " + fmt::format(texts::kCount, kind.count);
    html += fmt::format(
        "<details><summary>{} <span class=\"faint\">{}</span></summary>\n"
        "<ul>{}</ul></details>\n",
        Html(kind.name), heard, kind.items);
  }
  return html + "</div>\n";
}

std::string Spell(std::chrono::seconds time) {
  return SpellDuration(time);
}

std::string HeadHtml(std::string_view title, std::string_view upwards) {
  return fmt::format(R"(<!doctype html>
<html lang="{}">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{}</title>
<link rel="stylesheet" href="{}page.css">
)",
                     texts::kLanguage, title, upwards);
}

}  // namespace

bool IsSilent(const Hearing::Figures& figures) {
  return !figures.sinceHeard || *figures.sinceHeard >= kSilence;
}

std::string HearingHtml(const Hearing::Figures& figures) {
  const auto lost = figures.lost == 0
                        ? std::string(texts::kNothingLost)
                        : fmt::format(texts::kLost, figures.lost, figures.lost + figures.heard);
  if (!figures.sinceHeard)
    return fmt::format(
        R"(<div id="hearing" class="silent"><p class="largest">{}</p><p>{} {}</p></div>)",
        texts::kNeverHeard, fmt::format(texts::kNeverHeardFor, Spell(figures.sinceStart)),
        texts::kSilentMeans);
  if (IsSilent(figures)) {
    const auto minutes = std::chrono::floor<std::chrono::minutes>(*figures.sinceHeard);
    return fmt::format(
        R"(<div id="hearing" class="silent"><p class="largest">{}</p><p>{} {}</p></div>)",
        fmt::format(texts::kSilent, Spell(minutes)), texts::kSilentMeans, lost);
  }
  return fmt::format(R"(<div id="hearing"><p>{} {}</p></div>)",
                     fmt::format(texts::kHeardAgo, Spell(*figures.sinceHeard)), lost);
}

std::string ContentHtml(const ListenersView& view, bool isSilent) {
  return PartsOf("home", texts::kAtHome, HomeHtml(view, isSilent)) +
         PartsOf("region", texts::kInRegion, RegionHtml(view)) + MapHtml(view) +
         PartsOf("latest", texts::kLatest, LatestHtml(view.latest));
}

std::string PageHtml(std::string_view hearing, std::string_view content, int version) {
  auto html = HeadHtml(texts::kTitle, "");
  html += R"(<noscript><meta http-equiv="refresh" content="30"></noscript>
<script src="page.js" defer></script>
</head>
)";
  html += fmt::format(R"(<body data-no-receiver="{}" data-meaning="{}">
<header><h1>{}</h1><button id="speak" type="button" aria-pressed="false" hidden>{}</button></header>
<div id="link" role="alert"></div>
<main id="main" data-version="{}">
{}
{}</main>
</body>
</html>
)",
                      texts::kNoReceiver, texts::kSilentMeans, texts::kTitle, texts::kSpeak,
                      version, hearing, content);
  return html;
}

std::string ProductHtml(std::string_view name, std::string_view text) {
  return HeadHtml(Html(name), "../") + fmt::format(R"(</head>
<body>
<header><h1>{}</h1><a href="../">{}</a></header>
<main><section><pre tabindex="0">{}</pre></section></main>
</body>
</html>
)",
                                                   Html(name), texts::kBack, HtmlLines(text));
}

}  // namespace ostrel
