// "Wynik kompilacji": the sequence compiler's messages, or the notation's
// description, one line each. Double-clicking a message names its line.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "windows/Baseform.h"

namespace Ui {
class TCompileListForm;
}

namespace tavena {

class TCompileListForm : public TBaseForm {
  Q_OBJECT

 public:
  explicit TCompileListForm(QWidget* parent = nullptr);
  ~TCompileListForm() override;

  void Clear();
  // Adds lines (Windows-1250).
  void AddLines(const std::vector<std::string>& lines);
  QStringList Lines() const;

 signals:
  // A message "<line>: <text>" was double-clicked.
  void LineChosen(int line);

 protected:
  void FormShow() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::unique_ptr<Ui::TCompileListForm> ui;
};

// The source line a message "<line>: <text>" names, or -1.
int MessageLine(const QString& message);

}  // namespace tavena
