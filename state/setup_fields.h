// What the setup dialog holds. Its fields are the station's live settings: an edit is in force for
// their readers at once, stored or not. What start-up reads before there are fields (the ingest
// path and program, the log's size, unzipping, the packet host, the showing of errors) is in
// state/program_values.h, and follows when the dialog is left.
#pragma once

#include <array>
#include <string>

#include "base/priority.h"
#include "state/element.h"
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
using RuleListFields = std::array<ListField, kRuleListCount>;

struct SetupFields {
  // Morse
  Field<std::string> CWidenty{"CWidenty", "DE EMWIN TEST"};  // the text that is keyed
  Field<std::string> IDTime{"IDTime", "10"};    // minutes from one identification to the next
  Field<std::string> CWSpeed{"CWSpeed", "25"};  // the higher, the faster
  Field<std::string> TimeLeft{"TimeLeft"};
  Field<std::string> LastId{"LastId"};

  // Port
  Field<std::string> lblOutPort{"lblOutPort", "1"};
  Field<std::string> lblOutBaud{"lblOutBaud", "1200"};
  Field<std::string> lblOutData{"lblOutData", "8"};
  Field<std::string> lblOutStop{"lblOutStop", "2"};
  Field<std::string> lblOutParity{"lblOutParity", "N"};
  Field<std::string> lblCommMesg{"lblCommMesg", "No Comm Port Enabled"};
  Field<std::string> txtTxDelay{"txtTxDelay", "300"};
  Field<std::string> totdown{"totdown", "9"};  // minutes to transmit
  Field<std::string> totup{"totup", "10"};     // seconds to pause

  // Rules, by list index, and the entry field of each
  RuleListFields SetupPriList = ElementArray<ListField, kRuleListCount>("SetupPriList");
  std::array<Field<std::string>, kRuleListCount> pri1inbox =
      ElementArray<Field<std::string>, kRuleListCount>("pri1inbox");
  PerPriority<Field<Check>> chkOverWrite{Element<Field<Check>>("chkOverWrite")};
  PerPriority<Field<Check>> chkSendComp{Element<Field<Check>>("chkSendComp")};
  Field<std::string> lblCopies{"lblCopies", "2"};

  // System
  Field<std::string> Diddle{"Diddle"};  // the fill file
  Field<std::string> NameAs{"NameAs"};  // where it is inserted: a holding folder and a name
  Field<std::string> txtIngestPath{"txtIngestPath"};
  Field<Check> chkBrask{"chkBrask"};
  Field<Check> chkByteBlaster{"chkByteBlaster"};
  Field<std::string> txtPurgeTime{"txtPurgeTime", "2.5"};
  Field<std::string> txtLogSize{"txtLogSize", "100000"};
  Field<Check> chkUnZipFiles{"chkUnZipFiles"};
  Field<Check> chkLogDaily{"chkLogDaily"};
  Field<Check> chkShowErrors{"chkShowErrors"};
  Field<Check> LogIt{"LogIt"};  // a line for each block sent
  Field<Check> chkPacketHost{"chkPacketHost"};

  // Compress
  Field<std::string> CompFiles{"CompFiles", "20"};
  Field<std::string> BlockPriority{"BlockPriority", "10"};
  ListField CompressList{"CompressList"};

  // Schedule
  Field<std::string> txtSchedule{"txtSchedule"};
  ListField lstSchedule{"lstSchedule"};
};

inline bool IsChecked(const Field<Check>& box) {
  return box.Get() == Check::kChecked;
}

}  // namespace ostrel
