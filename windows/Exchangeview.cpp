#include "Exchangeview.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

#include "app/Texts.h"

namespace tavena {

namespace {

// Question and answer side by side.
QString Both(const std::string& question, const std::string& answer,
             std::string (*show)(std::string_view)) {
  QString text = FromCp1250(show(question));
  if (!answer.empty()) text += QStringLiteral(" | ") + FromCp1250(show(answer));
  return text;
}

QString Time(const LocalTime& t) {
  return QString::asprintf("%02d:%02d:%02d.%03d", t.hour, t.minute, t.second, t.millisecond);
}

QString CsvField(const QString& text) {
  if (!text.contains(QLatin1Char(';')) && !text.contains(QLatin1Char('"'))) return text;
  return QLatin1Char('"') + QString(text).replace(QLatin1Char('"'), QStringLiteral("\"\"")) +
         QLatin1Char('"');
}

}  // namespace

// ---- Rows ----

ExchangeModel::ExchangeModel(int cap, QObject* parent) : QAbstractTableModel(parent), cap_(cap) {}

void ExchangeModel::Append(const ExchangeRecord& record) {
  Trim();
  const int row = static_cast<int>(rows_.size());
  beginInsertRows({}, row, row);
  rows_.push_back(record);
  endInsertRows();
}

void ExchangeModel::Trim() {
  const int slack = std::max(1, cap_ / 10);
  if (static_cast<int>(rows_.size()) < cap_ + slack) return;
  beginRemoveRows({}, 0, slack - 1);
  rows_.erase(rows_.begin(), rows_.begin() + slack);
  endRemoveRows();
}

void ExchangeModel::Clear() {
  beginResetModel();
  rows_.clear();
  endResetModel();
}

QString ExchangeModel::Cell(const ExchangeRecord& r, int column) {
  switch (column) {
    case kTime:
      return Time(r.time);
    case kPort:
      return FromCp1250(r.port);
    case kDirection:
      return r.answer.empty() ? FromUtf8("→") : FromUtf8("⇄");
    case kFrame:
      return Both(r.question, r.answer, NamedControlBytes);
    case kHex:
      return Both(r.question, r.answer, HexPairs);
    case kMeaning:
      return FromCp1250(r.meaning);
    case kResponse:
      return r.response_ms < 0 ? QString() : QString::number(r.response_ms);
    case kResult:
      return FromCp1250(ExchangeResultText(r.result));
    default:
      return {};
  }
}

int ExchangeModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ExchangeModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QVariant ExchangeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const ExchangeRecord& r = Record(index.row());
  if (role == Qt::DisplayRole) return Cell(r, index.column());
  if (role == Qt::ForegroundRole && IsFailure(r.result)) return QColor(Qt::red);
  if (role == Qt::TextAlignmentRole && index.column() == kResponse)
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  return {};
}

QVariant ExchangeModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kNames[kColumns] = {"Czas", "Port",      "Kierunek",       "Ramka",
                                               "Hex",  "Znaczenie", "Odpowiedź [ms]", "Wynik"};
  return section >= 0 && section < kColumns ? FromUtf8(kNames[section]) : QVariant();
}

// ---- Filter ----

void ExchangeFilter::SetPort(const QString& port) {
  port_ = ToCp1250(port);
  invalidateFilter();
}

void ExchangeFilter::SetOnlyFailures(bool on) {
  only_failures_ = on;
  invalidateFilter();
}

bool ExchangeFilter::filterAcceptsRow(int row, const QModelIndex&) const {
  const ExchangeRecord& r = static_cast<const ExchangeModel*>(sourceModel())->Record(row);
  return (port_.empty() || r.port == port_) && (!only_failures_ || IsFailure(r.result));
}

// ---- View ----

TExchangeView::TExchangeView(QWidget* parent) : QWidget(parent), filter_(this) {
  filter_.setSourceModel(&model_);
  port_ = new QComboBox(this);
  port_->setObjectName(QStringLiteral("CPort"));
  port_->addItem(FromUtf8("Wszystkie porty"));
  port_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  failures_ = new QCheckBox(FromUtf8("Tylko błędy"), this);
  failures_->setObjectName(QStringLiteral("COnlyFailures"));
  copy_ = new QPushButton(FromUtf8("Kopiuj hex"), this);
  copy_->setObjectName(QStringLiteral("BCopyHex"));
  table_ = new QTableView(this);
  table_->setObjectName(QStringLiteral("TWymiana"));
  table_->setModel(&filter_);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setWordWrap(false);
  table_->verticalHeader()->setVisible(false);
  table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 4);
  table_->horizontalHeader()->setStretchLastSection(true);
  const int widths[] = {90, 90, 60, 230, 200, 330, 100};
  for (int c = 0; c < 7; ++c) table_->setColumnWidth(c, widths[c]);

  auto* bar = new QHBoxLayout;
  bar->addWidget(port_);
  bar->addWidget(failures_);
  bar->addWidget(copy_);
  bar->addStretch();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(bar);
  layout->addWidget(table_);

  connect(port_, &QComboBox::currentIndexChanged, this, &TExchangeView::PortChosen);
  connect(failures_, &QCheckBox::toggled, this, [this](bool on) { filter_.SetOnlyFailures(on); });
  connect(copy_, &QPushButton::clicked, this, &TExchangeView::CopyHex);
}

void TExchangeView::Append(const ExchangeRecord& record) {
  const QString port = FromCp1250(record.port);
  if (port_->findText(port) < 0) port_->addItem(port);
  QScrollBar* scroll = table_->verticalScrollBar();
  const bool at_end = scroll->value() == scroll->maximum();
  model_.Append(record);
  if (at_end && isVisible()) table_->scrollToBottom();
}

void TExchangeView::Clear() {
  model_.Clear();
}

void TExchangeView::PortChosen(int index) {
  filter_.SetPort(index <= 0 ? QString() : port_->itemText(index));
}

QString TExchangeView::CopyHex() {
  const QModelIndex current = table_->currentIndex();
  if (!current.isValid()) return {};
  const int row = filter_.mapToSource(current).row();
  const QString hex = ExchangeModel::Cell(model_.Record(row), ExchangeModel::kHex);
  QApplication::clipboard()->setText(hex);
  return hex;
}

QByteArray TExchangeView::Csv() const {
  QStringList lines;
  QStringList cells;
  for (int c = 0; c < ExchangeModel::kColumns; ++c)
    cells << model_.headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
  lines << cells.join(QLatin1Char(';'));
  for (int row = 0; row < model_.rowCount(); ++row) {
    cells.clear();
    for (int c = 0; c < ExchangeModel::kColumns; ++c)
      cells << CsvField(ExchangeModel::Cell(model_.Record(row), c));
    lines << cells.join(QLatin1Char(';'));
  }
  return QByteArray("\xEF\xBB\xBF") + (lines.join(QStringLiteral("\r\n")) + "\r\n").toUtf8();
}

}  // namespace tavena
