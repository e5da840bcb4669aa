// The monitor's exchange view: one row per exchange the printer object
// reports (time, port, direction, frame with named control bytes, hex,
// decoded meaning, response time, result), filtered by port and by "only
// failures", a row's hex to the clipboard, the whole table as CSV.
#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QWidget>
#include <deque>
#include <string>

#include "protocol/Exchange.h"

class QCheckBox;
class QComboBox;
class QPushButton;
class QTableView;

namespace tavena {

// Rows kept: the oldest tenth goes at once when the table would pass the
// cap plus a tenth, so trimming stays cheap for the filter above it.
inline constexpr int kExchangeRowCap = 20000;

class ExchangeModel : public QAbstractTableModel {
 public:
  enum Column { kTime, kPort, kDirection, kFrame, kHex, kMeaning, kResponse, kResult, kColumns };

  explicit ExchangeModel(int cap = kExchangeRowCap, QObject* parent = nullptr);

  void Append(const ExchangeRecord& record);
  void Clear();
  const ExchangeRecord& Record(int row) const { return rows_[static_cast<size_t>(row)]; }

  // The text of one cell, as shown and exported.
  static QString Cell(const ExchangeRecord& record, int column);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void Trim();

  std::deque<ExchangeRecord> rows_;
  int cap_;
};

class ExchangeFilter : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;
  // An empty port shows every port.
  void SetPort(const QString& port);
  void SetOnlyFailures(bool on);

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  std::string port_;
  bool only_failures_ = false;
};

class TExchangeView : public QWidget {
  Q_OBJECT

 public:
  explicit TExchangeView(QWidget* parent = nullptr);

  void Append(const ExchangeRecord& record);
  void Clear();
  ExchangeModel& Model() { return model_; }
  QTableView* Table() const { return table_; }

  // The current row's hex, also put on the clipboard (empty without a row).
  QString CopyHex();
  // Every row kept (filters ignored) with a heading line, ";" between
  // fields, CR LF after each line, UTF-8 with a byte-order mark.
  QByteArray Csv() const;

 private:
  void PortChosen(int index);

  ExchangeModel model_;
  ExchangeFilter filter_;
  QComboBox* port_ = nullptr;
  QCheckBox* failures_ = nullptr;
  QPushButton* copy_ = nullptr;
  QTableView* table_ = nullptr;
};

}  // namespace tavena
