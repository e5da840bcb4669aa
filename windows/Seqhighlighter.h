// Colours the sequence notation as the compiler reads it: text outside
// "seq =" ... "\<end>", comment blocks and "\;" comments as commentary;
// the sequence's start and end; escapes and "\<...>" words; quoted
// literals; and, in red, escapes the compiler refuses and characters it
// drops (8-bit characters outside quotes).
#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

namespace tavena {

class SequenceHighlighter : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  explicit SequenceHighlighter(QTextDocument* document);

 protected:
  void highlightBlock(const QString& text) override;

 private:
  // Block state bits: inside a sequence, inside a comment block.
  static constexpr int kInside = 1;
  static constexpr int kCommentBlock = 2;

  int ScanCommentBlock(const QString& text, int at, int& state);
  int ScanOutside(const QString& text, int at, int& state);
  int ScanInside(const QString& text, int at, int& state);
  int ScanEscape(const QString& text, int at, int& state);
  int ScanAngleWord(const QString& text, int at, int& state);

  QTextCharFormat commentary_;
  QTextCharFormat bounds_;
  QTextCharFormat escape_;
  QTextCharFormat literal_;
  QTextCharFormat error_;
};

}  // namespace tavena
