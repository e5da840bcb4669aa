// The one place where windows ask the user: message boxes, file dialogs,
// font and colour dialogs. Window handlers call Dialogs(); tests install a
// scripted fake with SetDialogs().
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <functional>
#include <optional>

class QWidget;

namespace tavena {

class TEditDateTimeForm;

enum class MessageButtons { kOk, kOkCancel };

// A file dialog as the system describes it: the filter in the
// "Name(*.ext)|*.ext|..." form, a title, an initial folder and file name.
struct FileDialogRequest {
  QString filter;
  QString title;
  QString folder;
  QString file_name;
};

// The date/time dialog: a prompt, a date-only mode and a pre-filled text.
struct DateTimeRequest {
  QString prompt;
  bool date_only = false;
  QString text;
};
// Decides, given the entered text, whether the dialog closes.
using DateTimeAccept = std::function<bool(const QString& text)>;

class DialogService {
 public:
  virtual ~DialogService() = default;
  // Shows text (lines may be separated by LF or CR) titled caption; answers
  // true for OK.
  virtual bool Message(QWidget* parent, const QString& text, const QString& caption,
                       MessageButtons buttons) = 0;
  // The chosen file's full name, or nothing when cancelled.
  virtual std::optional<QString> OpenFile(QWidget* parent, const FileDialogRequest& request) = 0;
  virtual std::optional<QString> SaveFile(QWidget* parent, const FileDialogRequest& request) = 0;
  // Edit font or colour in place; answer false (and leave it) on Cancel.
  virtual bool ChooseFont(QWidget* parent, QFont& font) = 0;
  virtual bool ChooseColour(QWidget* parent, QColor& colour) = 0;
  // Shows the date/time dialog modally. "Zapisz" hands the text to accept
  // (when set) and closes when it answers true; the answer is the text that
  // closed it, or nothing after "Przerwij".
  virtual std::optional<QString> EditDateTime(TEditDateTimeForm& dialog,
                                              const DateTimeRequest& request,
                                              const DateTimeAccept& accept) = 0;
};

DialogService& Dialogs();
// Installs a service (not owned); nullptr restores the Qt dialogs.
void SetDialogs(DialogService* service);

// "Logi(*.log)|*.log|Wszystkie pliki(*.*)|*.*" -> "Logi(*.log);;Wszystkie pliki(*.*)"
// ("Wszystkie pliki(*)" outside Windows, where names need not have a dot).
QString QtFileFilter(const QString& filter);

// Shorthand for an OK box.
inline void ShowMessage(QWidget* parent, const QString& text, const QString& caption) {
  Dialogs().Message(parent, text, caption, MessageButtons::kOk);
}

}  // namespace tavena
