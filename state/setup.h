// What the setup dialog holds. Its fields are the station's live settings: an edit is in force for
// its readers at once, whether or not it has been stored yet.
#pragma once

#include <array>
#include <string>

#include "base/priority.h"
#include "state/field.h"
#include "state/list_field.h"

namespace ostrel {

/// A check box, stored as its number.
enum class Check { kUnchecked = 0, kChecked = 1, kGrayed = 2 };

/// The rule lists by their index: 0 to 9 are the priorities 1 to 10.
inline constexpr std::size_t kRuleListCount = 13;
inline constexpr std::size_t kCompressList = 10;
inline constexpr std::size_t kDiscardList = 11;
inline constexpr std::size_t kCopiesList = 12;

struct Setup {
  // Morse
  Field<std::string> CWidenty{"DE EMWIN TEST"};
  Field<std::string> IDTime{"10"};
  Field<std::string> CWSpeed{"25"};
  Field<std::string> TimeLeft;
  Field<std::string> LastId;

  // Port
  Field<std::string> lblOutPort{"1"};
  Field<std::string> lblOutBaud{"1200"};
  Field<std::string> lblOutData{"8"};
  Field<std::string> lblOutStop{"2"};
  Field<std::string> lblOutParity{"N"};
  Field<std::string> lblCommMesg{"No Comm Port Enabled"};
  Field<std::string> txtTxDelay{"300"};
  Field<std::string> totdown{"9"};  // minutes to transmit
  Field<std::string> totup{"10"};   // seconds to pause

  // Rules, by list index, and the entry field of each
  std::array<ListField, kRuleListCount> SetupPriList;
  std::array<Field<std::string>, kRuleListCount> pri1inbox;
  PerPriority<Field<Check>> chkOverWrite;
  PerPriority<Field<Check>> chkSendComp;
  Field<std::string> lblCopies{"2"};

  // System
  Field<std::string> Diddle;
  Field<std::string> NameAs;
  Field<std::string> txtIngestPath;
  Field<Check> chkBrask;
  Field<Check> chkByteBlaster;
  Field<std::string> txtPurgeTime{"2.5"};
  Field<std::string> txtLogSize{"100000"};
  Field<Check> chkUnZipFiles;
  Field<Check> chkLogDaily;
  Field<Check> chkShowErrors;
  Field<Check> LogIt;
  Field<Check> chkPacketHost;

  // Compress
  Field<std::string> CompFiles{"20"};
  Field<std::string> BlockPriority{"10"};
  ListField CompressList;

  // Schedule
  Field<std::string> txtSchedule;
  ListField lstSchedule;
};

inline bool IsChecked(const Field<Check>& box) {
  return box.Get() == Check::kChecked;
}

}  // namespace ostrel
