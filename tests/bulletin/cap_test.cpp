#include "bulletin/cap.h"

#include <gtest/gtest.h>

#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

std::string Parameter(const std::string& name, const std::string& value) {
  return "<parameter><valueName>" + name + "</valueName><value>" + value + "</value></parameter>";
}

const std::string kArea =
    "<area><areaDesc>Marshall; Story</areaDesc>"
    "<polygon>42.06,-93.36 42.24,-93.36 42.29,-92.79 42.06,-93.36</polygon>"
    "<geocode><valueName>SAME</valueName><value>019127</value></geocode>"
    "<geocode><valueName>UGC</valueName><value>IAC169</value></geocode>"
    "<geocode><valueName>UGC</valueName><value>IAC127</value></geocode></area>";
const std::string kCode = Parameter("VTEC", "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/");

std::string Info(const std::string& inside) {
  return "<info><language>en-US</language><event>Tornado "
         "Warning</event><urgency>Immediate</urgency>"
         "<severity>Extreme</severity><certainty>Observed</"
         "certainty><onset>2018-07-19T15:54:00-05:00</onset>"
         "<expires>2018-07-19T16:45:00-05:00</expires><headline>Tornado &amp; hail</headline>" +
         inside + "</info>";
}

std::string Alert(const std::string& inside, const std::string& type = "Alert",
                  const std::string& status = "Actual") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<alert "
         "xmlns=\"urn:oasis:names:tc:emergency:cap:1.2\">"
         "<identifier>urn:1</identifier><sender>w-nws.webmaster@noaa.gov</sender>"
         "<sent>2018-07-19T15:54:10-05:00</sent><status>" +
         status + "</status><msgType>" + type +
         "</msgType><references>a@b,urn:0,2018-07-19T15:00:00-05:00 a@b,urn:9,never</references>" +
         inside + "</alert>";
}

Bulletin ReadAlert(const std::string& text) {
  return ReadBulletin(text, At(2026, 11, 26));
}

const std::string kOutline = "42.06,-93.36 42.24,-93.36 42.29,-92.79 42.06,-93.36";

TEST(CapMessage, HasTheShapeOfABulletin) {
  const auto read = ReadAlert("\x01\r\r\n000 \r\r\nXOUS53 KDMX 192054\r\r\nCAPDMX\r\r\n" +
                              Alert(Info(kCode + kArea)) + "\r\r\n\x03");
  EXPECT_EQ(read.source, BulletinSource::kCap);
  EXPECT_EQ(read.heading + "|" + read.awips, "XOUS53 KDMX 192054|CAPDMX");
  EXPECT_EQ(
      Told(read),
      "IAC127 IAC169; 2018-07-19 21:45; NEW KDMX TO.W 43 2018-07-19 20:54 2018-07-19 21:45; " +
          kOutline + "\n");
  EXPECT_EQ(Told(read.issued), "2018-07-19 20:54");
  EXPECT_FALSE(read.isDamaged);
  const auto& message = read.message.value();
  EXPECT_EQ(message.identifier + message.sender + message.type,
            "urn:1w-nws.webmaster@noaa.govAlert");
  ASSERT_EQ(message.references.size(), 2U);
  EXPECT_EQ(message.references[0].identifier + Told(message.references[0].sent),
            "urn:02018-07-19 20:00");
  EXPECT_EQ(Told(message.references[1].sent), "-");
  EXPECT_EQ(read.segments[0].headlines.at(0), "Tornado & hail");
  EXPECT_EQ(read.segments[0].words->severity, "Extreme");
}

TEST(CapMessage, IsAnEventOfItsOwnWithoutEventCodes) {
  const auto ends = Parameter("eventEndingTime", "2018-07-19T22:00:00+00:00");
  const auto told = [&](const std::string& type, const std::string& status,
                        const std::string& code) {
    const auto kind = "<eventCode><valueName>NationalWeatherService</valueName><value>" + code +
                      "</value></eventCode>";
    const auto read = ReadAlert(Alert(Info(kind + ends + kArea), type, status));
    std::string text;
    for (const auto& event : read.segments.at(0).events) text += Told(event);
    return text;
  };
  const std::string times = " -1 2018-07-19 20:54 2018-07-19 22:00";
  EXPECT_EQ(told("Alert", "Actual", "TOW"), "NEW  TO.W" + times);
  EXPECT_EQ(told("Update", "Actual", "TOW"), "CON  TO.W" + times);
  EXPECT_EQ(told("Cancel", "Exercise", "TOW"), "CAN  TO.W" + times + " test");
  EXPECT_EQ(told("Alert", "Actual", "SPS"), "NEW  ." + times);
  EXPECT_EQ(told("Ack", "Actual", "TOW"), "");
  EXPECT_FALSE(ReadAlert(Alert(Info(kArea), "Alert", "Other")).segments[0].events[0].isTest);
  EXPECT_TRUE(
      ReadAlert(Alert(Info(kCode + kArea), "Alert", "Test")).segments[0].events[0].isTest.value());
}

TEST(CapMessage, TellsEachAreaAndOneLanguage) {
  const std::string county = "<geocode><valueName>SAME</valueName><value>019127</value></geocode>";
  const std::string sea = "<geocode><valueName>SAME</valueName><value>075610</value></geocode>";
  const std::string nowhere = "<geocode><valueName>SAME</valueName><value>099001</value></geocode>";
  const std::string head = "; 2018-07-19 21:45; NEW KDMX TO.W 43 2018-07-19 20:54 2018-07-19 21:45";
  const auto spanish = "<info><language>es-US</language></info>";
  const struct {
    std::string infos, told;
    bool isDamaged;
  } cases[] = {
      {Info(kCode + kArea + "<area>" + sea + county + "</area>"),
       "IAC127 IAC169" + head + "; " + kOutline + "\nAMZ610 IAC127" + head + "\n", false},
      {spanish + Info(kCode + "<area>" + county + "</area>"), "IAC127" + head + "\n", false},
      {Info(kCode), head + "\n", false},
      {Info(kCode + "<area>" + county + nowhere + "</area>"), head + "\n", true},
      {Info(kCode + "<area><polygon>42.06,-93.36 42.24,-93.36</polygon></area>"), head + "\n",
       true},
      {Info(kCode + "<area><polygon>42.06,-93.36 42.24,-93.36 142.29,-92.79</polygon></area>"),
       head + "\n", true},
      {spanish, "; -; NEW  . -1 - -\n", false},
      {"", "", false},
  };
  for (const auto& row : cases) {
    const auto read = ReadAlert(Alert(row.infos));
    EXPECT_EQ(Told(read), row.told) << row.infos;
    EXPECT_EQ(read.isDamaged, row.isDamaged) << row.infos;
  }
  const auto headed = ReadAlert(Alert(Info(Parameter("AWIPSidentifier", "TORDMX") +
                                           Parameter("WMOidentifier", "WFUS53 KDMX 192054"))));
  EXPECT_EQ(headed.heading + "|" + headed.awips + "|" + headed.kind,
            "WFUS53 KDMX 192054|TORDMX|TOR");
}

TEST(CapMessage, IsReadWholeOrNotAtAll) {
  const auto whole = Alert(Info(kCode + kArea));
  const auto typed = [&](const std::string& type) {
    auto text = whole;
    return text.insert(text.find("<alert"), type);
  };
  auto entity = typed("<!DOCTYPE alert [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>");
  entity.replace(entity.find("&amp;"), 5, "&a;");
  auto unknown = whole;
  unknown.replace(unknown.find("&amp;"), 5, "&nbsp;");
  std::string deep, areas, codes;
  for (int i = 0; i < 200; ++i) deep += "<a>";
  for (int i = 0; i < 2000; ++i) areas += "<area/>";
  for (int i = 0; i < 200; ++i) codes += kCode;
  auto other = whole;
  other.replace(other.find(" encoding=\"UTF-8\""), 17, " encoding=\"UTF-7\"");
  EXPECT_FALSE(ReadAlert(other).isDamaged) << "it is UTF-8 whatever it says";
  for (const auto& text :
       {whole.substr(0, whole.size() - 9), whole.substr(0, 400), entity, unknown,
        typed("<!DOCTYPE alert>"), Alert(Info(deep)), Alert(Info("\xFF")), Alert(Info(areas)),
        Alert(Info(codes + kArea)),
        "<a xmlns:x=\"urn:oasis:names:tc:emergency:cap:1.2\"><alert/></a>" + std::string()}) {
    const auto read = ReadAlert(text);
    EXPECT_EQ(read.source, BulletinSource::kCap) << text;
    EXPECT_TRUE(read.isDamaged && read.segments.empty()) << text;
  }
  EXPECT_EQ(ReadAlert("SRUS53 KDMX 131710\nHMLDMX\n<?xml version=\"1.0\"?><site/>").source,
            BulletinSource::kBulletin);
}

}  // namespace
}  // namespace ostrel
