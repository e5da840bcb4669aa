#include "Seqhighlighter.h"

#include <QRegularExpression>

namespace tavena {

namespace {

// Words of "\<...>" that give bytes or mark a sum.
bool KnownWord(const QString& word) {
  static const QStringList kWords = {QStringLiteral("check_start"), QStringLiteral("check_insert"),
                                     QStringLiteral("esc"),         QStringLiteral("y"),
                                     QStringLiteral("ly"),          QStringLiteral("m"),
                                     QStringLiteral("d"),           QStringLiteral("h"),
                                     QStringLiteral("min"),         QStringLiteral("cr"),
                                     QStringLiteral("lf"),          QStringLiteral("ff"),
                                     QStringLiteral("spc"),         QStringLiteral("e"),
                                     QStringLiteral("end_comment")};
  return kWords.contains(word) || (!word.isEmpty() && word[0].isDigit());
}

bool OpensCommentBlock(const QString& word) {
  return word == QLatin1String("comment") || word == QLatin1String("c");
}

bool ClosesCommentBlock(const QString& word) {
  return word == QLatin1String("end_comment") || word == QLatin1String("e");
}

// "\<word>" at at: the word in lower case and the index after ">", or an
// end of -1 when the line has no ">".
std::pair<QString, int> AngleWordAt(const QString& text, int at) {
  const int close = static_cast<int>(text.indexOf(QLatin1Char('>'), at + 2));
  if (close < 0) return {QString(), -1};
  return {text.mid(at + 2, close - at - 2).toLower(), close + 1};
}

bool AngleAt(const QString& text, int at) {
  return text.mid(at, 2) == QLatin1String("\\<");
}

}  // namespace

SequenceHighlighter::SequenceHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {
  commentary_.setForeground(QColor(0x80, 0x80, 0x80));
  commentary_.setFontItalic(true);
  bounds_.setForeground(QColor(0x00, 0x00, 0xA0));
  bounds_.setFontWeight(QFont::Bold);
  escape_.setForeground(QColor(0x80, 0x00, 0x80));
  literal_.setForeground(QColor(0x00, 0x64, 0x00));
  error_.setForeground(QColor(0xD0, 0x00, 0x00));
  error_.setUnderlineStyle(QTextCharFormat::WaveUnderline);
}

void SequenceHighlighter::highlightBlock(const QString& text) {
  int state = std::max(previousBlockState(), 0);
  int at = 0;
  while (at < text.size()) {
    if (state & kCommentBlock)
      at = ScanCommentBlock(text, at, state);
    else if (state & kInside)
      at = ScanInside(text, at, state);
    else
      at = ScanOutside(text, at, state);
  }
  setCurrentBlockState(state);
}

// Everything up to and including "\<e>" or "\<end_comment>"; a block opened
// inside a sequence is never closed (the compiler swallows the rest).
int SequenceHighlighter::ScanCommentBlock(const QString& text, int at, int& state) {
  int end = static_cast<int>(text.size());
  const QLatin1String angle("\\<");
  for (qsizetype i = text.indexOf(angle, at); i >= 0 && !(state & kInside);
       i = text.indexOf(angle, i + 2)) {
    const auto [word, after] = AngleWordAt(text, static_cast<int>(i));
    if (after >= 0 && ClosesCommentBlock(word)) {
      end = after;
      state &= ~kCommentBlock;
      break;
    }
  }
  setFormat(at, end - at, commentary_);
  return end;
}

// Commentary up to a start "seq =" (lower-case s) or a comment block.
int SequenceHighlighter::ScanOutside(const QString& text, int at, int& state) {
  static const QRegularExpression kStart(QStringLiteral("\\Gs[eE][qQ](?![A-Za-z0-9])( *)="));
  for (int i = at; i < text.size(); ++i) {
    if (AngleAt(text, i)) {
      const auto [word, after] = AngleWordAt(text, i);
      if (after < 0 || !OpensCommentBlock(word)) continue;
      setFormat(at, after - at, commentary_);
      state |= kCommentBlock;
      return after;
    }
    if (text[i] != QLatin1Char('s')) continue;
    const QRegularExpressionMatch start = kStart.match(text, i);
    if (!start.hasMatch()) continue;
    setFormat(at, i - at, commentary_);
    // Without a blank the "=" is read again inside, as a byte of the sequence.
    const int length = start.capturedLength(1) > 0 ? static_cast<int>(start.capturedLength()) : 3;
    setFormat(i, length, bounds_);
    state |= kInside;
    return i + length;
  }
  setFormat(at, static_cast<int>(text.size()) - at, commentary_);
  return static_cast<int>(text.size());
}

int SequenceHighlighter::ScanInside(const QString& text, int at, int& state) {
  const QChar c = text[at];
  if (c == QLatin1Char('\'')) {
    const qsizetype close = text.indexOf(QLatin1Char('\''), at + 1);
    const int end = close < 0 ? static_cast<int>(text.size()) : static_cast<int>(close) + 1;
    setFormat(at, end - at, literal_);
    return end;
  }
  if (c == QLatin1Char('\\')) return ScanEscape(text, at, state);
  if (c.unicode() > 0x7E) setFormat(at, 1, error_);
  return at + 1;
}

int SequenceHighlighter::ScanEscape(const QString& text, int at, int& state) {
  const int size = static_cast<int>(text.size());
  if (at + 1 >= size) {
    setFormat(at, 1, error_);
    return size;
  }
  const QChar c = text[at + 1].toLower();
  if (c == QLatin1Char(';')) {
    setFormat(at, size - at, commentary_);
    return size;
  }
  if (c == QLatin1Char('<')) return ScanAngleWord(text, at, state);
  const int length = c == QLatin1Char('x') ? std::min(4, size - at) : 2;
  const bool known = QStringLiteral("ernfx\\").contains(c);
  setFormat(at, length, known ? escape_ : error_);
  return at + length;
}

int SequenceHighlighter::ScanAngleWord(const QString& text, int at, int& state) {
  const auto [word, after] = AngleWordAt(text, at);
  if (after < 0) {
    setFormat(at, static_cast<int>(text.size()) - at, error_);
    return static_cast<int>(text.size());
  }
  if (word == QLatin1String("end")) {
    setFormat(at, after - at, bounds_);
    state &= ~kInside;
  } else if (OpensCommentBlock(word)) {
    setFormat(at, after - at, error_);
    state |= kCommentBlock;
  } else {
    setFormat(at, after - at, KnownWord(word) ? escape_ : error_);
  }
  return after;
}

}  // namespace tavena
