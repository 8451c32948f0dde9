// All that the listener's page says in English: another language is another such file. Names of
// events, kinds and offices come from bulletin/codes.tsv, those of areas from its table.
#pragma once

#include <string_view>

namespace ostrel::page_texts {

using Text = std::string_view;

inline constexpr Text kLanguage = "en";
inline constexpr Text kTitle = "What is in force";
inline constexpr Text kAtHome = "At home";
inline constexpr Text kHomeUnknown = "Where home is was not told: all that is heard stands below.";
inline constexpr Text kNothingAtHome = "Nothing is in force at home, as far as was heard.";
inline constexpr Text kNothingKnown = "Nothing known.";
inline constexpr Text kNothingKnownWhy = "Too little was heard to say that nothing is in force.";
inline constexpr Text kInRegion = "In the region";
inline constexpr Text kNothingInRegion = "Nothing else is in force, as far as was heard.";
inline constexpr Text kMore = "And {} older ones.";
inline constexpr Text kUntil = "until {}";
inline constexpr Text kFromUntil = "from {} until {}";
inline constexpr Text kFurtherNotice = "until further notice";
inline constexpr Text kFromFurtherNotice = "from {} until further notice";
inline constexpr Text kIssued = "first issued {}, heard {}";
inline constexpr Text kUncertain = "Part of this product could not be read: it may say more.";
inline constexpr Text kWholeText = "Whole text";
inline constexpr Text kMap = "Map";
inline constexpr Text kMapMeans =
    "Map of what is in force around home; the lists above say the same in words";
inline constexpr Text kWarning = "Warning";
inline constexpr Text kWatch = "Watch";
inline constexpr Text kAdvisory = "Advisory or statement";
inline constexpr Text kHome = "Home";
inline constexpr Text kLatest = "Heard last";
inline constexpr Text kNothingYet = "No product has come yet.";
inline constexpr Text kOtherKinds = "Other products";
inline constexpr Text kCount = "{} heard";
inline constexpr Text kPictures = "Pictures";
inline constexpr Text kBytes = "{} bytes";
inline constexpr Text kDamaged = "not read for certain";
inline constexpr Text kUnnamedEvent = "Event";

inline constexpr Text kHeardAgo = "Last heard {} ago.";
inline constexpr Text kSilent = "Nothing heard for {}";
inline constexpr Text kNeverHeard = "Nothing heard yet";
inline constexpr Text kNeverHeardFor = "Listening for {}.";
inline constexpr Text kSilentMeans = "What follows may be out of date.";
inline constexpr Text kNothingLost = "Nothing was lost in the last hour.";
inline constexpr Text kLost = "{} of {} blocks were lost in the last hour.";

inline constexpr Text kSpeak = "Speak new warnings";
inline constexpr Text kNoReceiver = "This page has lost its receiver";
inline constexpr Text kBack = "Back";
inline constexpr Text kNoSuchProduct = "There is no such product.";
inline constexpr Text kNotShown = "This is neither text nor a picture that can be shown.";

}  // namespace ostrel::page_texts
