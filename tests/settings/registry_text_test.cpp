#include "settings/registry_text.h"

#include <gtest/gtest.h>

#include "base/failure.h"

namespace ostrel {
namespace {

const std::string kHead = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kOwnKey = "[HKEY_LOCAL_MACHINE\\Software\\Corvain\\Ostrel\\Settings]\r\n";
const std::string kOwnPath = "Software\\Corvain\\Ostrel\\Settings";

TEST(RegistryText, TakesTheFamilysTreeAndSaysWhatItLeavesOut) {
  const auto import = ParseRegistryText(
      "REGEDIT4\n\n; a remark\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Corvain\\Ostrel\\Settings]\n"
      "\"CWIDText\"=\"DE TEST\"\n"
      "\"FillFile\"=\"c:\\\\Ostrel\\\\FillFile.txt\"\n"
      "\"FillFilePriPath\"=\"d:/Ostrel\"\n"
      "\"Blob\"=hex:01,02,\\\n  03\n"
      "\"Face\"=hex(1):44,45,00\n"
      "\"Page\"=hex(1):e9,00\n"
      "\"CWSpeed\"=-\n"
      "[-HKEY_LOCAL_MACHINE\\Software\\Corvain\\Old]\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Corvainery]\n\"A\"=\"1\"\n"
      "[HKEY_CURRENT_USER\\Software\\Corvain]\n\"B\"=\"2\"\n"
      "[hkey_local_machine\\software\\corvain\\Pellum\\Shared]\n\"LogDaily\"=\"1\"");
  EXPECT_EQ(import.values,
            (std::vector<StoredValue>{{kOwnPath, "CWIDText", "DE TEST"},
                                      {kOwnPath, "Blob", "hex:01,02,03", true},
                                      {kOwnPath, "Face", "DE"},
                                      {"Software\\Corvain\\Pellum\\Shared", "LogDaily", "1"}}));
  EXPECT_EQ(import.leftOut,
            (std::vector<std::string>{
                kOwnPath + "\\FillFile = c:\\Ostrel\\FillFile.txt, a path of another system",
                kOwnPath + "\\FillFilePriPath = d:/Ostrel, a path of another system",
                kOwnPath + "\\Page, a text in a code page that the file does not name",
                "deletion of the value " + kOwnPath + "\\CWSpeed",
                "deletion of the key HKEY_LOCAL_MACHINE\\Software\\Corvain\\Old",
                "the key HKEY_LOCAL_MACHINE\\Software\\Corvainery of another tree",
                "the key HKEY_CURRENT_USER\\Software\\Corvain of another tree"}));
}

TEST(RegistryText, ATextThatIsNoUtf8ComesBackByteForByte) {
  const std::vector<StoredValue> values = {
      {kOwnPath, "Kept", "\"\\\xC3\xA9\" \xF0\x9F\x98\x80"},
      {kOwnPath, "FillFile", "/srv/\xE2\x82\xAC\xE9\xC3\xA9\xF0\x9F\x98\x80\xF0\x9F"},
      {kOwnPath, "", "default"},
      {kOwnPath, "Blob", "hex:01,02", true},
      {kOwnPath, "Overlong", "\xC0\x80 \xED\xA0\x80 \xF4\x90\x80\x80"}};
  const auto text = FormatRegistryText(values);
  EXPECT_NE(
      text.find("\"FillFile\"=hex(1):2f,00,73,00,72,00,76,00,2f,00,ac,20,e9,dc,e9,00,3d,d8,00,de,"
                "f0,dc,9f,dc,00,00\r\n"),
      std::string::npos)
      << text;
  EXPECT_NE(text.find("\r\n@=\"default\"\r\n"), std::string::npos) << text;
  EXPECT_EQ(ParseRegistryText(text).values, values);
}

TEST(RegistryText, ADamagedFileIsRefusedWholeWithItsLine) {
  const auto good = kHead + kOwnKey + "\"Good\"=\"1\"\r\n";
  std::string deep = "[HKEY_LOCAL_MACHINE\\Software\\Corvain";
  for (int level = 0; level < 510; ++level) deep += "\\a";
  const std::pair<std::string, int> cases[] = {
      {"Windows Registry Editor Version 6\r\n" + kOwnKey, 2},
      {kHead + "\"Early\"=\"1\"\r\n", 3},
      {good + "[HKEY_LOCAL_MACHINE\\Software\r\n", 6},
      {good + "\"NoEnd\"=\"1\\", 5},
      {good + "\"NoValue\"=", 5},
      {good + "\"More\"=\"1\" x\r\n", 6},
      {good + "\"Kind\"=12\r\n", 6},
      {good + "\"Kind\"=hex:0g\r\n", 6},
      {good + "\"Kind\"=dword:12\r\n", 6},
      {good + "\"Kind\"=hex(1):4,00,00,00\r\n", 6},
      {good + "\"CutOff\"=hex:01,\\\r\n", 6},
      {good + "\"Nul\"=\"" + '\0' + "\"\r\n", 5},
      {good + deep + "]\r\n", 6},
  };
  for (const auto& [text, line] : cases) {
    try {
      ParseRegistryText(text);
      ADD_FAILURE() << "accepted: " << text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.number(), failure_number::kTypeMismatch) << text;
      EXPECT_TRUE(failure.text().starts_with("line " + std::to_string(line) + ": "))
          << failure.text() << " for " << text;
    }
  }
}

}  // namespace
}  // namespace ostrel
