// An editor's text as the lines the core works with (Windows-1250).
#pragma once

#include <string>
#include <vector>

class QPlainTextEdit;

namespace tavena {

// One line per paragraph; a text ending with a line break has no empty last
// line, and an empty text has no lines.
std::vector<std::string> TextLines(const QPlainTextEdit& edit);
// Replaces the text with the lines.
void SetTextLines(QPlainTextEdit& edit, const std::vector<std::string>& lines);
// Adds the lines after the existing ones.
void AppendTextLines(QPlainTextEdit& edit, const std::vector<std::string>& lines);

// The program's edit font (size, style, colour) in Courier New, so that the
// columns of a notation stay in line.
void ApplyEditorFont(QPlainTextEdit& edit);

}  // namespace tavena
