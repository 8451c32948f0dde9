#include "settings/settings_table.h"

#include <fmt/format.h>

namespace ostrel {

std::string KeyPath(Section section) {
  switch (section) {
    case Section::kSettings:
      return "Software\\Corvain\\Ostrel\\Settings";
    case Section::kScreen:
      return "Software\\Corvain\\Ostrel\\Screen";
    case Section::kShared:
      return "Software\\Corvain\\Pellum\\Shared";
  }
  return {};
}

std::unique_ptr<SettingsStore> OpenAtRoot(SettingsStores& stores) {
  auto store = stores.Open();
  store->SetRootKey(kHkeyLocalMachine);
  return store;
}

std::vector<SettingRow> FieldSettings(Setup& setup, const std::string& programFolder) {
  constexpr auto kOwn = Section::kSettings;
  constexpr auto kShared = Section::kShared;
  std::vector<SettingRow> rows = {
      {"CWIDText", kOwn, "DE EMWIN TEST", &setup.CWidenty},
      {"CWIDTime", kOwn, "10", &setup.IDTime},
      {"CWSpeed", kOwn, "25", &setup.CWSpeed},
      {"ComPort", kOwn, "1", &setup.lblOutPort},
      {"ComBaud", kOwn, "1200", &setup.lblOutBaud},
      {"ComData", kOwn, "8", &setup.lblOutData},
      {"ComParity", kOwn, "N", &setup.lblOutParity},
      {"ComStopBit", kOwn, "2", &setup.lblOutStop},
      {"FillFile", kOwn, programFolder + "/FillFile.txt", &setup.Diddle},
      {"FillFilePriPath", kOwn, programFolder + "/KvData/RtPri10/FillFile.txt", &setup.NameAs},
      {"ShowErrors", kShared, "1", &setup.chkShowErrors},
      {"LogDaily", kShared, "0", &setup.chkLogDaily},
      {"LogProgram", kOwn, "0", &setup.LogIt},
      {"PurgeTime", kOwn, "2.5", &setup.txtPurgeTime},
      {"TxDelay", kOwn, "300", &setup.txtTxDelay},
      {"TxUpTime", kOwn, "9", &setup.totdown},
      {"TxDownTime", kOwn, "10", &setup.totup},
      {"CompressNbrFiles", kOwn, "20", &setup.CompFiles},
      {"CompressBlockPri", kOwn, "10", &setup.BlockPriority},
  };
  for (const Priority p : AllPriorities()) {
    rows.push_back({fmt::format("CompressPri{}", p.index()), kOwn, "0", &setup.chkSendComp[p]});
    rows.push_back({fmt::format("OverWrite{}", p.index()), kOwn, "0", &setup.chkOverWrite[p]});
  }
  return rows;
}

std::vector<SettingRow> StartupSettings(const std::string& programFolder) {
  constexpr auto kOwn = Section::kSettings;
  return {
      {"IngestPath", kOwn, programFolder + "/KvData/RxFiles", {}},
      {"Engine", kOwn, "0", {}},
      {"LogSize", kOwn, "100000", {}},
      {"UnZipFiles", kOwn, "0", {}},
      {"PacketHost", kOwn, "False", {}},
      {"UdpAddress", kOwn, "127.255.255.255", {}},
      {"UdpPort", kOwn, "9510", {}},
  };
}

std::vector<SettingRow> ScreenSettings() {
  std::vector<SettingRow> rows;
  for (const auto* key : {"MainLeft", "MainTop", "MainWidth", "MainHeight"})
    rows.push_back({key, Section::kScreen, "", {}});
  rows.push_back({"MainState", Section::kScreen, "0", {}});
  return rows;
}

}  // namespace ostrel
