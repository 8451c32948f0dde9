// The window of a companion program: its sources and their state, the last products, counts, and a
// red line when nothing comes.
#pragma once

#include <QLabel>
#include <QTableWidget>
#include <QTimer>
#include <QWidget>

#include "feed/feed.h"

namespace ostrel {

class FeedWindow : public QWidget {
 public:
  explicit FeedWindow(const QString& title);

  /// Shows what `feed`, which outlives the window's being shown, does from now on.
  void Follow(const Feed& feed);
  /// Shows why there is no feed.
  void ShowFailure(const std::string& why);

 private:
  void Refresh(const Feed& feed);
  void ShowSources(const FeedFigures& figures);
  void ShowProducts(const FeedFigures& figures);
  void ShowTrouble(const QString& trouble);

  QLabel* trouble_;
  QTableWidget* sources_;
  QTableWidget* products_;
  QLabel* counts_;
  QTimer refresh_;
};

}  // namespace ostrel
