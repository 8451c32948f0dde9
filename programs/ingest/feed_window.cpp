#include "programs/ingest/feed_window.h"

#include <QDateTime>
#include <QHeaderView>
#include <QVBoxLayout>
#include <chrono>
#include <fmt/format.h>

#include "base/text.h"
#include "base/time.h"

namespace ostrel {
namespace {

using std::chrono::seconds;

constexpr seconds kRefresh{1};
constexpr QSize kSize{560, 420};

QTableWidget* MakeTable(QWidget* parent, const QString& name, const QStringList& columns) {
  auto* const table = new QTableWidget(0, static_cast<int>(columns.size()), parent);
  table->setObjectName(name);
  table->setAccessibleName(columns.front());
  table->setHorizontalHeaderLabels(columns);
  table->verticalHeader()->hide();
  table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
  table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  table->horizontalHeader()->setStretchLastSection(true);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setFocusPolicy(Qt::NoFocus);
  table->setFocusPolicy(Qt::NoFocus);
  table->setSelectionMode(QAbstractItemView::NoSelection);
  table->setShowGrid(false);
  return table;
}

void SetRow(QTableWidget* table, int row, const QStringList& texts) {
  for (int column = 0; column < texts.size(); ++column) {
    auto* item = table->item(row, column);
    if (item == nullptr) table->setItem(row, column, item = new QTableWidgetItem);
    if (item->text() != texts[column]) item->setText(texts[column]);
  }
}

QString Shown(const std::string& text) {
  return QString::fromStdString(Printable(text));
}

/// Empty while no rule passes anything over.
QString PassedOver(const FeedFigures& figures) {
  QStringList rules;
  for (const auto& [rule, count] : figures.passedOver)
    rules << QString("%1 by the rule for %2").arg(count).arg(Shown(rule));
  return rules.isEmpty() ? QString() : "\nPassed over: " + rules.join(", ");
}

QString Spell(FeedOutcome outcome) {
  switch (outcome) {
    case FeedOutcome::kDelivered:
      return "delivered";
    case FeedOutcome::kRepeat:
      return "came before";
    case FeedOutcome::kUnknown:
      return "unknown name, kept";
    case FeedOutcome::kTooLarge:
      return "too large, kept";
    case FeedOutcome::kPassedOver:
      return "passed over";
  }
  return {};
}

}  // namespace

FeedWindow::FeedWindow(const QString& title)
    : trouble_(new QLabel(this)),
      sources_(MakeTable(this, "sources", {"Source", "Products", "State"})),
      products_(MakeTable(this, "products", {"Last products", "Time", "Became", "Source"})),
      counts_(new QLabel(this)) {
  setWindowTitle(title);
  resize(kSize);
  trouble_->setObjectName("trouble");
  trouble_->setTextFormat(Qt::PlainText);
  trouble_->setWordWrap(true);
  trouble_->setStyleSheet("color: white; background: #b00020; padding: 4px;");
  trouble_->hide();
  counts_->setObjectName("counts");
  counts_->setTextFormat(Qt::PlainText);
  counts_->setWordWrap(true);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(trouble_);
  layout->addWidget(sources_, 1);
  layout->addWidget(products_, 3);
  layout->addWidget(counts_);
}

void FeedWindow::Follow(const Feed& feed) {
  connect(&refresh_, &QTimer::timeout, this, [this, &feed] { Refresh(feed); });
  refresh_.start(kRefresh);
  Refresh(feed);
}

void FeedWindow::Refresh(const Feed& feed) {
  const auto figures = feed.Figures();
  ShowSources(figures);
  ShowProducts(figures);
  counts_->setText(QString("%1 delivered, %2 came again, %3 of unknown name, %4 too large")
                       .arg(figures.delivered)
                       .arg(figures.repeats)
                       .arg(figures.unknown)
                       .arg(figures.tooLarge) +
                   PassedOver(figures));
  const auto silence = FeedFigures::Clock::now() - figures.lastCame;
  if (!figures.trouble.empty()) {
    ShowTrouble(Shown("Nothing is taken: " + figures.trouble));
  } else if (silence > feed.config().quiet) {
    ShowTrouble(
        QString::fromStdString(fmt::format("Nothing has come for {}.", SpellDuration(silence))));
  } else {
    ShowTrouble({});
  }
}

void FeedWindow::ShowFailure(const std::string& why) {
  ShowTrouble(Shown(why));
}

void FeedWindow::ShowTrouble(const QString& trouble) {
  trouble_->setVisible(!trouble.isEmpty());
  trouble_->setText(trouble);
}

void FeedWindow::ShowSources(const FeedFigures& figures) {
  sources_->setRowCount(static_cast<int>(figures.sources.size()));
  int row = 0;
  for (const auto& source : figures.sources) {
    SetRow(sources_, row,
           {Shown(source.name), QString::number(source.products), Shown(source.state)});
    sources_->item(row, 2)->setForeground(source.isWell ? palette().text()
                                                        : QBrush(QColor("#b00020")));
    ++row;
  }
}

void FeedWindow::ShowProducts(const FeedFigures& figures) {
  products_->setRowCount(static_cast<int>(figures.last.size()));
  int row = 0;
  for (const auto& product : figures.last) {
    const auto at = QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(product.at));
    SetRow(products_, row++,
           {Shown(product.name), at.toString("hh:mm:ss"), Spell(product.outcome),
            Shown(product.source)});
  }
}

}  // namespace ostrel
