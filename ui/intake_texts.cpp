#include "ui/intake_texts.h"

#include <QStringList>

#include "base/time.h"
#include "ui/bindings.h"

namespace ostrel::ui {
namespace {

QString ReasonText(const ObstacleFigures& obstacle, const QString& what) {
  const auto name = obstacle.name.empty() ? obstacle.folder : obstacle.name;
  return QString("%1 %2 for %3: %4")
      .arg(Shown(name), what, ToQt(SpellDuration(obstacle.lasts)), Shown(obstacle.reason));
}

}  // namespace

QString IngestText(const IntakeFigures& intake) {
  QStringList lines;
  if (const auto& ingest = intake.ingest; ingest.files > 0)
    lines << QString("%1%2 in the ingest folder")
                 .arg(ingest.files)
                 .arg(ingest.isMore ? " or more" : "");
  if (intake.blocking) lines << ReasonText(*intake.blocking, "holds it up");
  return lines.join('\n');
}

QString RefusedText(const IntakeFigures& intake, Priority p) {
  QStringList lines;
  for (const auto& obstacle : intake.refused) {
    if (obstacle.folder == "RtPri" + std::to_string(p.number()))
      lines << ReasonText(obstacle, "is refused");
  }
  return lines.join('\n');
}

}  // namespace ostrel::ui
