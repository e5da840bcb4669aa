#include "Dialogs.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFontDialog>
#include <QMessageBox>
#include <QStringList>

#include "windows/Editdatetime.h"

namespace tavena {

namespace {

// Message texts of the system separate lines with CR, LF or both.
QString DisplayLines(QString text) {
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return text;
}

QString StartPath(const FileDialogRequest& request) {
  if (request.folder.isEmpty()) return request.file_name;
  if (request.file_name.isEmpty()) return request.folder;
  return request.folder + QLatin1Char('/') + request.file_name;
}

class QtDialogService : public DialogService {
 public:
  bool Message(QWidget* parent, const QString& text, const QString& caption,
               MessageButtons buttons) override {
    if (buttons == MessageButtons::kOk) {
      QMessageBox::information(parent, caption, DisplayLines(text));
      return true;
    }
    return QMessageBox::question(parent, caption, DisplayLines(text),
                                 QMessageBox::Ok | QMessageBox::Cancel) == QMessageBox::Ok;
  }

  std::optional<QString> OpenFile(QWidget* parent, const FileDialogRequest& request) override {
    return Chosen(QFileDialog::getOpenFileName(parent, request.title, StartPath(request),
                                               QtFileFilter(request.filter)));
  }

  std::optional<QString> SaveFile(QWidget* parent, const FileDialogRequest& request) override {
    return Chosen(QFileDialog::getSaveFileName(parent, request.title, StartPath(request),
                                               QtFileFilter(request.filter)));
  }

  bool ChooseFont(QWidget* parent, QFont& font) override {
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, font, parent);
    if (ok) font = chosen;
    return ok;
  }

  bool ChooseColour(QWidget* parent, QColor& colour) override {
    const QColor chosen = QColorDialog::getColor(colour, parent);
    if (chosen.isValid()) colour = chosen;
    return chosen.isValid();
  }

  std::optional<QString> EditDateTime(TEditDateTimeForm& dialog, const DateTimeRequest& request,
                                      const DateTimeAccept& accept) override {
    return dialog.Execute(request, accept);
  }

 private:
  static std::optional<QString> Chosen(const QString& name) {
    if (name.isEmpty()) return std::nullopt;
    return name;
  }
};

QtDialogService& QtDialogs() {
  static QtDialogService service;
  return service;
}

DialogService* current = nullptr;

}  // namespace

DialogService& Dialogs() {
  return current ? *current : QtDialogs();
}

void SetDialogs(DialogService* service) {
  current = service;
}

QString QtFileFilter(const QString& filter) {
  const QStringList parts = filter.split(QLatin1Char('|'));
  QStringList names;
  for (qsizetype i = 0; i < parts.size(); i += 2) {
    QString name = parts[i];
#ifndef _WIN32
    // "*.*" is every file on Windows; elsewhere a file name need not have a dot.
    if (i + 1 < parts.size() && parts[i + 1] == QLatin1String("*.*"))
      name.replace(QLatin1String("(*.*)"), QLatin1String("(*)"));
#endif
    names << name;
  }
  return names.join(QLatin1String(";;"));
}

}  // namespace tavena
