#include "Seqcompileclass.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Clock.h"
#include "Codepage.h"
#include "Messagelanguage.h"

namespace tavena {

namespace {

constexpr char kCr = '\r';
constexpr char kLf = '\n';

// Bytes that are sent as written inside a sequence: 0x21..0x7E except the
// backslash and the apostrophe, which start escapes and literals.
constexpr std::array<bool, 256> MakePlainTable() {
  std::array<bool, 256> plain{};
  for (int b = 0x21; b <= 0x7E; ++b) plain[b] = b != '\\' && b != '\'';
  return plain;
}
constexpr std::array<bool, 256> kPlain = MakePlainTable();

bool IsPlain(int c) {
  return c >= 0 && kPlain[static_cast<uint8_t>(c)];
}

bool IsAsciiAlnum(int c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr char AsciiUpper(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

int HexDigit(int c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// The words of "\<...>", compared without regard to case.
enum class Word {
  kNone,
  kCheckStart,
  kCheckInsert,
  kEnd,
  kComment,
  kEndComment,
  kEsc,
  kYear2,
  kYear4,
  kMonth,
  kDay,
  kHour,
  kMinute,
  kCr,
  kLf,
  kFf,
  kSpc,
};

// A word of up to 12 bytes, upper-cased, packed with its length.
struct WordKey {
  uint64_t low = 0;
  uint64_t high = 0;
  bool operator==(const WordKey&) const = default;
};

constexpr size_t kLongestWord = 12;

constexpr WordKey KeyOf(std::string_view text) {
  WordKey key{0, static_cast<uint64_t>(text.size()) << 56};
  for (size_t i = 0; i < text.size(); ++i) {
    const uint64_t c = static_cast<uint8_t>(AsciiUpper(text[i]));
    if (i < 8)
      key.low |= c << (8 * i);
    else
      key.high |= c << (8 * (i - 8));
  }
  return key;
}

struct NamedWord {
  WordKey key;
  Word word;
};

constexpr NamedWord kWords[] = {
    {KeyOf("CHECK_START"), Word::kCheckStart},
    {KeyOf("CHECK_INSERT"), Word::kCheckInsert},
    {KeyOf("END"), Word::kEnd},
    {KeyOf("COMMENT"), Word::kComment},
    {KeyOf("END_COMMENT"), Word::kEndComment},
    {KeyOf("C"), Word::kComment},
    {KeyOf("E"), Word::kEndComment},
    {KeyOf("ESC"), Word::kEsc},
    {KeyOf("Y"), Word::kYear2},
    {KeyOf("LY"), Word::kYear4},
    {KeyOf("M"), Word::kMonth},
    {KeyOf("D"), Word::kDay},
    {KeyOf("H"), Word::kHour},
    {KeyOf("MIN"), Word::kMinute},
    {KeyOf("CR"), Word::kCr},
    {KeyOf("LF"), Word::kLf},
    {KeyOf("FF"), Word::kFf},
    {KeyOf("SPC"), Word::kSpc},
};

Word FindWord(std::string_view text) {
  if (text.size() > kLongestWord) return Word::kNone;
  const WordKey key = KeyOf(text);
  for (const NamedWord& w : kWords)
    if (w.key == key) return w.word;
  return Word::kNone;
}

std::string Summary(int errors) {
  const std::string n = std::to_string(errors);
  const std::string polish = "Wykryto: " + n + " błędów.";
  const std::string english = "There is " + n + (errors == 1 ? " error." : " errors.");
  return Msg(polish.c_str(), english.c_str());
}

}  // namespace

// ---- compile loop ---------------------------------------------------------

bool SeqCompileClass::Compile(const std::vector<std::string>* lines,
                              std::vector<std::string>* messages) {
  messages_ = messages;
  Reset();
  if (lines) AssembleSource(*lines);
  RunCompileLoop();
  const bool ok = Finish();
  messages_ = nullptr;
  return ok;
}

void SeqCompileClass::Reset() {
  pos_ = 0;
  line_count_ = 0;
  errors_ = 0;
  cur_ = 0;
  checksum_active_ = in_sequence_ = push_back_ = in_comment_block_ = false;
  checksum_ = 0xFF;
  token_.clear();
  output.Clear();
  ReadDateTexts();
}

void SeqCompileClass::AssembleSource(const std::vector<std::string>& lines) {
  size_t total = 0;
  for (const std::string& line : lines) total += line.size() + 1;
  source_.clear();
  source_.reserve(total);
  for (const std::string& line : lines) {
    source_ += line;
    source_ += kCr;
  }
}

void SeqCompileClass::ReadDateTexts() {
  const LocalTime now = CurrentClock().Local();
  year4_ = std::to_string(now.year);
  year2_ = std::to_string(now.year - 2000);
  month_ = std::to_string(now.month);
  day_ = std::to_string(now.day);
  hour_ = std::to_string(now.hour);
  minute_ = hour_;  // "\<MIN>" gives the hour
}

void SeqCompileClass::RunCompileLoop() {
  while (!Exhausted() && errors_ < kMessageLimit) {
    if (in_comment_block_) SkipCommentBlockInSequence();
    Act(Scan());
  }
}

// A comment block opened inside a sequence ends only where the current
// character is "<" after a token, which never happens: it runs to the end of
// the source, "\<end>" included.
void SeqCompileClass::SkipCommentBlockInSequence() {
  while (!Exhausted() && cur_ != '<') {
    push_back_ = true;
    if (Scan() == kCommentClose) in_comment_block_ = false;
  }
}

void SeqCompileClass::Act(int token) {
  switch (token) {
    case kEndOfInput:
    case kLineComment:
      break;
    case kEndOfSequence:
      in_sequence_ = false;
      break;
    case kStartOfSequence:
      in_sequence_ = true;
      break;
    case kCheckStart:
      CheckStart();
      break;
    case kCheckInsert:
      CheckInsert();
      break;
    case kCommentOpen:
      in_comment_block_ = true;
      break;
    case kCommentClose:
      in_comment_block_ = false;
      break;
    case kBytes:
      EmitToken();
      break;
    default:
      Report(Msg("Nierozpoznany znak lub sekwencja.", "Failure character or sequence."));
      break;
  }
}

void SeqCompileClass::CheckStart() {
  if (checksum_active_) {
    Report(
        Msg("Podwójne rozpoczęcie badania sumy kontrolnej", "Second open control sum sequence."));
    return;
  }
  checksum_active_ = true;
  checksum_ = 0xFF;
}

void SeqCompileClass::CheckInsert() {
  if (!checksum_active_) {
    Report(Msg("Zamknięcie sekwencji sumy bez jej rozpoczęcia.",
               "Ending open control sum sequence before open."));
    return;
  }
  checksum_active_ = false;
  output.AppendText(iBuffer::HexText(checksum_, 1).c_str());
}

void SeqCompileClass::EmitToken() {
  if (checksum_active_)
    for (const char b : token_) checksum_ ^= static_cast<uint8_t>(b);
  output.AppendBytes(token_.data(), static_cast<int32_t>(token_.size()));
}

bool SeqCompileClass::Finish() {
  if (in_sequence_) {
    Report(Msg("Brak znacznika końca.", "Absence of end mark."));
  } else if (errors_ == 0) {
    if (!output.Empty()) {
      Report(Msg("Koniec przetwarzania. Brak błędów.", "End of compile. No errors."));
      return true;
    }
    Report("Input file is empty.");
  }
  Report(Summary(errors_));
  return false;
}

void SeqCompileClass::Report(const std::string& text) {
  ++errors_;
  if (messages_) messages_->push_back(std::to_string(line_count_) + ": " + text);
}

// ---- reading --------------------------------------------------------------

inline int SeqCompileClass::Next() {
  if (push_back_) {
    push_back_ = false;
    return cur_;
  }
  if (pos_ >= source_.size()) return cur_ = kEnd;
  cur_ = static_cast<uint8_t>(source_[pos_++]);
  if (cur_ == kCr) ++line_count_;
  return cur_;
}

// Consumes bytes up to, not including, the next a or b (fast path of Next).
void SeqCompileClass::SkipOutsideUntil(char a, char b) {
  if (push_back_) return;
  const char* s = source_.data();
  const size_t n = source_.size();
  size_t p = pos_;
  int64_t crs = 0;
  while (p < n && s[p] != a && s[p] != b) crs += s[p++] == kCr;
  if (p == pos_) return;
  line_count_ += crs;
  cur_ = static_cast<uint8_t>(s[p - 1]);
  pos_ = p;
}

// Clears the token and reads into it up to the terminator or the end of
// input; the terminator is consumed and not kept.
void SeqCompileClass::ReadWordUntil(char terminator) {
  token_.clear();
  if (push_back_) {
    const int c = Next();
    if (c == kEnd || c == static_cast<uint8_t>(terminator)) return;
    token_ += static_cast<char>(c);
  }
  const char* s = source_.data();
  const char* from = s + pos_;
  const char* end = s + source_.size();
  const auto* hit = static_cast<const char*>(std::memchr(from, terminator, end - from));
  const char* stop = hit ? hit : end;
  token_.append(from, stop);
  line_count_ += std::count(from, stop, kCr);
  if (hit) {
    pos_ = static_cast<size_t>(hit + 1 - s);
    cur_ = static_cast<uint8_t>(terminator);
    if (terminator == kCr) ++line_count_;
  } else {
    pos_ = source_.size();
    cur_ = kEnd;
  }
}

// ---- outside a sequence ---------------------------------------------------

int SeqCompileClass::ScanOutside() {
  for (;;) {
    SkipOutsideUntil('\\', 's');
    const int c = Next();
    if (c == kEnd) return kEndOfInput;
    if (c == '\\') {
      if (ReadAngleWord() && FindWord(token_) == Word::kComment && !SkipOutsideCommentBlock())
        return kEndOfInput;
    } else if (c == 's') {
      push_back_ = true;
      if (ReadSeqWord() && EqualsSignFollows()) return kStartOfSequence;
    }
  }
}

// After a backslash: reads "<word>" into the token. A byte other than "<" is
// left to be examined again.
bool SeqCompileClass::ReadAngleWord() {
  if (Next() != '<') {
    push_back_ = true;
    return false;
  }
  ReadWordUntil('>');
  return true;
}

// Skips a comment block outside a sequence up to "\<end_comment>" or
// "\<e>"; false when the input ends first.
bool SeqCompileClass::SkipOutsideCommentBlock() {
  for (;;) {
    SkipOutsideUntil('\\', '\\');
    const int c = Next();
    if (c == kEnd) return false;
    if (c == '\\' && ReadAngleWord() && FindWord(token_) == Word::kEndComment) return true;
  }
}

// Reads a word of letters and digits after leading spaces; the byte that
// stops it is read again unless it is a space. True when the word is "seq".
bool SeqCompileClass::ReadSeqWord() {
  token_.clear();
  int c = Next();
  while (c == ' ') c = Next();
  char word[3] = {};
  size_t length = 0;
  for (; IsAsciiAlnum(c); c = Next(), ++length)
    if (length < 3) word[length] = AsciiUpper(static_cast<char>(c));
  if (c != ' ') push_back_ = true;
  return length == 3 && std::string_view(word, 3) == "SEQ";
}

// Skips spaces from the current character on; true when "=" follows, which
// is then consumed unless it is still pushed back ("seq=" sends the "=").
// Any other byte is examined again.
bool SeqCompileClass::EqualsSignFollows() {
  while (cur_ == ' ') Next();
  if (cur_ == '=') return true;
  push_back_ = true;
  return false;
}

// ---- inside a sequence ----------------------------------------------------

int SeqCompileClass::ScanInside() {
  token_.clear();
  for (;;) {
    const int c = Next();
    if (c == ' ') continue;
    if (IsPlain(c)) {
      token_ += static_cast<char>(c);
      AppendPlainRun();
      continue;
    }
    if (c == '\'') {
      ReadWordUntil('\'');
      ToMazovia(reinterpret_cast<uint8_t*>(token_.data()), token_.size());
      return kBytes;
    }
    if (c == '\\') {
      if (!token_.empty()) {
        push_back_ = true;
        return kBytes;
      }
      const int token = Escape();
      if (token != kGoOn) return token;
      continue;
    }
    // End of input, line ends, other control bytes, DEL and bytes from 0x80
    // hand out the pending bytes and are dropped.
    if (!token_.empty()) return kBytes;
    if (c == kEnd) return kEndOfInput;
  }
}

// Fast path of ScanInside for a run of plain bytes and spaces.
void SeqCompileClass::AppendPlainRun() {
  const char* s = source_.data();
  const size_t n = source_.size();
  size_t p = pos_;
  for (; p < n; ++p) {
    const auto b = static_cast<uint8_t>(s[p]);
    if (kPlain[b])
      token_ += static_cast<char>(b);
    else if (b != ' ')
      break;
  }
  if (p == pos_) return;
  cur_ = static_cast<uint8_t>(s[p - 1]);
  pos_ = p;
}

int SeqCompileClass::Escape() {
  switch (Next()) {
    case 'E':
    case 'e':
      token_ += '\x1B';
      return kGoOn;
    case 'R':
    case 'r':
      token_ += kCr;
      return kGoOn;
    case 'N':
    case 'n':
      token_ += kLf;
      return kGoOn;
    case 'F':
    case 'f':
      token_ += '\xFF';  // the form-feed escape gives 0xFF
      return kGoOn;
    case '\\':
      token_ += '\\';
      return kGoOn;
    case 'X':
    case 'x':
      ReadHexPair();
      return kGoOn;
    case ';':
      ReadWordUntil(kCr);
      return kLineComment;
    case '<':
      return AngleEscape();
    default:
      return kError;
  }
}

// The next two bytes, whatever they are, as hexadecimal: two digits give
// their value, one digit followed by another byte gives that digit, and a
// first byte that is not a digit gives 0.
void SeqCompileClass::ReadHexPair() {
  const int high = HexDigit(Next());
  const int low = HexDigit(Next());
  int value = 0;
  if (high >= 0) value = low >= 0 ? high * 16 + low : high;
  token_.assign(1, static_cast<char>(value));
}

int SeqCompileClass::AngleEscape() {
  ReadWordUntil('>');
  const auto put = [this](std::string_view bytes) {
    token_.clear();
    token_.append(bytes);
    return kGoOn;
  };
  switch (FindWord(token_)) {
    case Word::kCheckStart:
      return kCheckStart;
    case Word::kCheckInsert:
      return kCheckInsert;
    case Word::kEnd:
      return kEndOfSequence;
    case Word::kComment:
      return kCommentOpen;
    case Word::kEndComment:
      return kCommentClose;
    case Word::kEsc:
      return put("\x1B");
    case Word::kYear2:
      return put(year2_);
    case Word::kYear4:
      return put(year4_);
    case Word::kMonth:
      return put(month_);
    case Word::kDay:
      return put(day_);
    case Word::kHour:
      return put(hour_);
    case Word::kMinute:
      return put(minute_);
    case Word::kCr:
      return put("\r");
    case Word::kLf:
      return put("\n");
    case Word::kFf:
      return put("\xFF");
    case Word::kSpc:
      return put(" ");
    case Word::kNone:
      break;
  }
  if (token_.empty() || token_[0] < '0' || token_[0] > '9') return kError;
  const auto value = static_cast<uint8_t>(iBuffer::ParseDecimal(token_.c_str()));
  return put(std::string_view(reinterpret_cast<const char*>(&value), 1));
}

// ---- files and help -------------------------------------------------------

std::vector<std::string> SeqCompileClass::SplitLines(std::string_view bytes) {
  std::vector<std::string> lines;
  size_t p = 0;
  while (p < bytes.size()) {
    const size_t stop = bytes.find_first_of("\r\n", p);
    if (stop == std::string_view::npos) {
      lines.emplace_back(bytes.substr(p));
      break;
    }
    lines.emplace_back(bytes.substr(p, stop - p));
    p = stop + 1;
    if (bytes[stop] == kCr && p < bytes.size() && bytes[p] == kLf) ++p;
  }
  return lines;
}

bool SeqCompileClass::LoadSource(std::vector<std::string>& lines) const {
  lines.clear();
  iBuffer file;
  if (!file.LoadFromFile(source_file_name)) return false;
  lines = SplitLines(file.View());
  return true;
}

bool SeqCompileClass::SaveSource(const std::vector<std::string>& lines) const {
  if (source_file_name.empty()) return false;
  std::string text;
  for (const std::string& line : lines) (text += line) += "\r\n";
  return iBuffer(text).SaveToFile(source_file_name);
}

namespace {

const char kDescriptionPolish[] =
    "Zapis sekwencji dla drukarki\r"
    "Kompilowany jest tylko tekst między seg = a \\<END>; reszta pliku jest komentarzem.\r"
    "Sekwencję otwiera seg = (słowo musi zaczynać się małą literą s; zapis seg= bez spacji wysyła "
    "również znak =).\r"
    "Wewnątrz sekwencji:\r"
    "  litery, cyfry i znaki są wysyłane tak, jak je zapisano; spacje są pomijane;\r"
    "  tabulatory, inne znaki sterujące i polskie litery poza apostrofami są odrzucane.\r"
    "'tekst'                 tekst w apostrofach, wraz ze spacjami, zamieniany na stronę kodową "
    "Mazovia;\r"
    "                        znaki zapisane przed nim w tym samym wierszu przepadają\r"
    "\\E lub \\<ESC>           bajt 1B (ESC)\r"
    "\\R lub \\<CR>            bajt 0D (powrót karetki)\r"
    "\\N lub \\<LF>            bajt 0A (nowy wiersz)\r"
    "\\F lub \\<FF>            bajt FF\r"
    "\\<SPC>                  bajt 20 (spacja)\r"
    "\\\\                      bajt 5C (ukośnik wsteczny)\r"
    "\\xHH                    bajt o wartości podanej dwiema cyframi szesnastkowymi\r"
    "\\<nnn>                  bajt o wartości podanej liczbą dziesiętną (modulo 256)\r"
    "\\<Y>                    bieżący rok bez stulecia\r"
    "\\<LY>                   bieżący rok w pełnym zapisie\r"
    "\\<M>                    bieżący miesiąc\r"
    "\\<D>                    bieżący dzień miesiąca\r"
    "\\<H>                    bieżąca godzina\r"
    "\\<MIN>                  bieżąca godzina (tak samo jak \\<H>)\r"
    "\\<CHECK_START>          początek obszaru sumy kontrolnej\r"
    "\\<CHECK_INSERT>         wstawia sumę kontrolną jako dwie cyfry szesnastkowe\r"
    "\\<COMMENT> lub \\<C>     otwiera blok komentarza; w sekwencji trwa on do końca pliku\r"
    "\\<END_COMMENT> lub \\<E> zamyka blok komentarza otwarty poza sekwencją\r"
    "\\;                      komentarz do końca wiersza\r"
    "\\<END>                  kończy sekwencję\r"
    "Słowa w \\<...> można pisać małymi lub wielkimi literami.\r"
    "Liczby daty i czasu są wpisywane bez zer wiodących.\r";

const char kDescriptionEnglish[] =
    "Printer sequence notation\r"
    "Only text between seq = and \\<END> is compiled; the rest of the file is commentary.\r"
    "A sequence opens with seq = (the word must begin with a lower-case s; seq= without a space "
    "also sends the = sign).\r"
    "Inside a sequence:\r"
    "  letters, digits and signs are sent as written; spaces are skipped;\r"
    "  tabs, other control characters and Polish letters outside quotes are dropped.\r"
    "'text'                  quoted text, spaces included, in the Mazovia code page;\r"
    "                        characters written before it on the same line are dropped\r"
    "\\E or \\<ESC>            byte 1B (escape)\r"
    "\\R or \\<CR>             byte 0D (carriage return)\r"
    "\\N or \\<LF>             byte 0A (line feed)\r"
    "\\F or \\<FF>             byte FF\r"
    "\\<SPC>                  byte 20 (space)\r"
    "\\\\                      byte 5C (backslash)\r"
    "\\xHH                    byte given by two hexadecimal digits\r"
    "\\<nnn>                  byte given by a decimal number (modulo 256)\r"
    "\\<Y>                    current year without the century\r"
    "\\<LY>                   current year in full\r"
    "\\<M>                    current month\r"
    "\\<D>                    current day of the month\r"
    "\\<H>                    current hour\r"
    "\\<MIN>                  current hour (same as \\<H>)\r"
    "\\<CHECK_START>          starts the area of the control sum\r"
    "\\<CHECK_INSERT>         inserts the control sum as two hexadecimal digits\r"
    "\\<COMMENT> or \\<C>      opens a comment block; inside a sequence it runs to the end of the "
    "file\r"
    "\\<END_COMMENT> or \\<E>  closes a comment block opened outside a sequence\r"
    "\\;                      comment to the end of the line\r"
    "\\<END>                  ends the sequence\r"
    "Words in \\<...> may be written in upper or lower case.\r"
    "Date and time numbers are written without leading zeros.\r";

}  // namespace

void SeqCompileClass::DescribeNotation(std::vector<std::string>& lines) {
  const std::string text = Msg(kDescriptionPolish, kDescriptionEnglish);
  size_t p = 0;
  for (size_t stop; (stop = text.find(kCr, p)) != std::string::npos; p = stop + 1)
    lines.push_back(text.substr(p, stop - p));
  if (p < text.size()) lines.push_back(text.substr(p));
}

}  // namespace tavena
