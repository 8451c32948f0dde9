#include "bulletin/bulletin.h"

#include "bulletin/cap.h"
#include "bulletin/heading.h"
#include "bulletin/lines.h"
#include "bulletin/text_reader.h"

namespace ostrel {

Bulletin ReadBulletin(std::string_view text, UtcTime now) {
  const auto lines = BulletinLines(text.substr(0, kLongestBulletin));
  const auto heading = ReadHeading(lines);
  Bulletin bulletin;
  bulletin.heading = heading.line;
  bulletin.awips = heading.identifier;
  bulletin.kind = heading.kind;
  if (text.size() > kLongestBulletin)
    bulletin.isDamaged = true;
  else if (IsCap(text))
    ReadCap(text, bulletin);
  else
    TextReader(lines, heading).Read(bulletin, now);
  return bulletin;
}

}  // namespace ostrel
