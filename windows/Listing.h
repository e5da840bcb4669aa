// The exchange monitor "Monitor": a read-only pane the printer object
// writes its question and answer lines into; can be saved and cleared.
#pragma once

#include <memory>

#include "protocol/Exchange.h"
#include "protocol/Formsink.h"
#include "windows/Baseform.h"

namespace Ui {
class TListingForm;
}

namespace tavena {

class TExchangeView;

class TListingForm : public TBaseForm, public MonitorSink, public ExchangeSink {
  Q_OBJECT

 public:
  explicit TListingForm(QWidget* parent = nullptr);
  ~TListingForm() override;

  void AppendLine(const std::string& line) override;
  // The pane's text, one line per element (for saving and tests).
  QStringList Lines() const;
  // Writes the lines, Windows-1250, each ended by CR LF.
  static bool WriteLines(const QString& path, const QStringList& lines);

  // The exchange view on the tab "Wymiana": one row per reported exchange.
  void Exchange(const ExchangeRecord& record) override;
  TExchangeView* Exchanges() const { return exchanges_; }
  // Saves a picture of the window showing the exchange view (--screenshot).
  void SaveExchangesPicture(const QString& path);

 public slots:
  void Koniec1Click();
  void Zapisz1Click();
  void Wyczy1Click();
  // Saves the exchange table as CSV (UTF-8).
  void ZapiszCsv1Click();

 protected:
  void FormShow() override;

 private:
  void CannotWrite(const QString& path);
  static void RememberFolder(const QString& path);

  std::unique_ptr<Ui::TListingForm> ui;
  TExchangeView* exchanges_ = nullptr;
};

}  // namespace tavena
