#include "Textlines.h"

#include <QPlainTextEdit>

#include "app/Fonts.h"
#include "app/Texts.h"

namespace tavena {

std::vector<std::string> TextLines(const QPlainTextEdit& edit) {
  QStringList paragraphs = edit.toPlainText().split(QLatin1Char('\n'));
  if (paragraphs.back().isEmpty()) paragraphs.removeLast();
  std::vector<std::string> lines;
  for (const QString& paragraph : paragraphs) lines.push_back(ToCp1250(paragraph));
  return lines;
}

void SetTextLines(QPlainTextEdit& edit, const std::vector<std::string>& lines) {
  QStringList paragraphs;
  for (const std::string& line : lines) paragraphs << FromCp1250(line);
  edit.setPlainText(paragraphs.join(QLatin1Char('\n')));
}

void AppendTextLines(QPlainTextEdit& edit, const std::vector<std::string>& lines) {
  std::vector<std::string> all = TextLines(edit);
  all.insert(all.end(), lines.begin(), lines.end());
  SetTextLines(edit, all);
}

void ApplyEditorFont(QPlainTextEdit& edit) {
  FontObject font = Fonts().edit;
  font.font.setFamily(QStringLiteral("Courier New"));
  ApplyFont(&edit, font);
}

}  // namespace tavena
