// What waits outside the queues and what cannot go on, in words for tool tips.
#pragma once

#include <QString>

#include "base/priority.h"
#include "station/intake_figures.h"

namespace ostrel::ui {

/// Of the ingest folder; empty while nothing waits there.
QString IngestText(const IntakeFigures& intake);

/// The refused files of that priority's holding folder, a line each; empty when there are none.
QString RefusedText(const IntakeFigures& intake, Priority p);

}  // namespace ostrel::ui
