#include "Compilelist.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QScreen>
#include <QTextBlock>

#include "app/Fonts.h"
#include "app/Texts.h"
#include "sequence/Messagelanguage.h"
#include "ui_Compilelist.h"
#include "windows/Textlines.h"

namespace tavena {

TCompileListForm::TCompileListForm(QWidget* parent)
    : TBaseForm(parent), ui(new Ui::TCompileListForm) {
  ui->setupUi(this);
  ui->Ekran->viewport()->installEventFilter(this);
}

TCompileListForm::~TCompileListForm() = default;

void TCompileListForm::Clear() {
  ui->Ekran->clear();
}

void TCompileListForm::AddLines(const std::vector<std::string>& lines) {
  AppendTextLines(*ui->Ekran, lines);
}

QStringList TCompileListForm::Lines() const {
  QStringList lines;
  for (const std::string& line : TextLines(*ui->Ekran)) lines << FromCp1250(line);
  return lines;
}

// At the bottom left of the screen, under the editor.
void TCompileListForm::FormShow() {
  if (const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen())
    move(0, screen->geometry().height() - frameGeometry().height());
  ApplyFont(ui->Ekran, Fonts().wind);
  Clear();
  setWindowTitle(FromUtf8(MsgUtf8("Wynik kompilacji", "Compilation Messages")));
}

bool TCompileListForm::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonDblClick) {
    const QPoint at = static_cast<QMouseEvent*>(event)->position().toPoint();
    const int line = MessageLine(ui->Ekran->cursorForPosition(at).block().text());
    if (line >= 0) emit LineChosen(line);
    return true;
  }
  return TBaseForm::eventFilter(watched, event);
}

int MessageLine(const QString& message) {
  static const QRegularExpression kLine(QStringLiteral("^(\\d+): "));
  const QRegularExpressionMatch match = kLine.match(message);
  return match.hasMatch() ? match.captured(1).toInt() : -1;
}

}  // namespace tavena
