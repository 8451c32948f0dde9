// The listener's page as HTML. It takes no decision but how to say things.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "listen/hearing.h"
#include "listen/kept_products.h"
#include "listen/shown_event.h"

namespace ostrel {

struct ListenersView {
  struct AtHome {
    ShownEvent event;
    std::string text;  // of its product, whole; where it is empty, a way there is shown
  };
  bool isHomeKnown = false;
  std::optional<Position> place;   // of home
  std::vector<AtHome> home;        // the newest first
  std::vector<ShownEvent> region;  // likewise, those at home aside
  std::size_t moreInRegion = 0;    // than these
  std::deque<KeptProduct> latest;  // likewise
};

/// So long without a packet is told as silence.
inline constexpr std::chrono::seconds kSilence{180};
bool IsSilent(const Hearing::Figures& figures);

/// How old what is shown is; silence in the largest words of the page.
std::string HearingHtml(const Hearing::Figures& figures);

/// What is in force, and what was heard last. While nothing is heard, that nothing is in force is
/// not said.
std::string ContentHtml(const ListenersView& view, bool isSilent);

/// The whole page around these two. `version` changes with what they say.
std::string PageHtml(std::string_view hearing, std::string_view content, int version);

/// A page with the whole text of a product.
std::string ProductHtml(std::string_view name, std::string_view text);

}  // namespace ostrel
