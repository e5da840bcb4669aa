#include "sequence/Seqcompileclass.h"

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"

namespace tavena {
namespace {

using test::Hex;

// 5 March 2009, 07:04:33.
const LocalTime kInstant{2009, 3, 5, 7, 4, 33, 0};

struct Result {
  bool ok;
  std::string bytes;                  // hex
  std::vector<std::string> messages;  // UTF-8
};

// Compiles a UTF-8 source whose lines are separated by "\n".
Result CompileText(const std::string& source, int language = 1) {
  VirtualClock clock(kInstant);
  ScopedClock scoped(&clock);
  MessageLanguage = language;
  SeqCompileClass compiler;
  std::vector<std::string> messages;
  const auto lines = SeqCompileClass::SplitLines(Utf8ToCp1250(source));
  Result r{compiler.Compile(lines, &messages), Hex(compiler.output.ToString()), {}};
  for (const std::string& m : messages) r.messages.push_back(Cp1250ToUtf8(m));
  MessageLanguage = 0;
  return r;
}

struct BytesCase {
  const char* source;
  const char* hex;
};

void ExpectBytes(const std::vector<BytesCase>& cases) {
  for (const BytesCase& c : cases) {
    const Result r = CompileText(c.source);
    EXPECT_TRUE(r.ok) << c.source << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(r.bytes, c.hex) << c.source;
    ASSERT_EQ(r.messages.size(), 1u) << c.source;
    EXPECT_NE(r.messages[0].find(": End of compile. No errors."), std::string::npos);
  }
}

TEST(SeqCompileClass, EscapesGiveTheirBytes) {
  ExpectBytes({
      {R"(seq = \E\e\R\r\N\n\F\f\\\<end>)", "1B 1B 0D 0D 0A 0A FF FF 5C"},
      {R"(seq = \<ESC>\<esc>\<eSc>\<CR>\<Lf>\<FF>\<ff>\<SPC>\<end>)", "1B 1B 1B 0D 0A FF FF 20"},
      {R"(seq = \x41\x4a\xFf\x4Z\xG1\x 4\x-1\<end>)", "41 4A FF 04 00 00 00"},
      {"seq = \\x4\n'b'\\<end>", "62"},  // the pair took the line end: 04 still pending
      {R"(seq = \<256>\<65>\<300>\<0>\<12a>\<007>\<end>)", "00 41 2C 00 0C 07"},
      {R"(seq = \<D>.\<M>.\<Y> \<LY> \<H>:\<Min>\<MIN>\<end>)",
       "35 2E 33 2E 39 32 30 30 39 37 3A 37 37"},
      {R"(seq = \<ESC>P 1 2\<end>)", "1B 50 31 32"},
      {R"(seq = AB\<ESC>cd\<end>)", "41 42 1B 63 64"},
  });
}

TEST(SeqCompileClass, LiteralsPlainBytesAndSequenceWords) {
  ExpectBytes({
      {R"(seq = AB 'x y'\<end>)", "78 20 79"},
      {R"(seq = AB\<SPC>'x y'\<end>)", "41 42 78 20 79"},
      {"seq = AB\\<SPC>\n'x y'\\<end>", "41 42 20 78 20 79"},
      {R"(seq = 'ąę'\<end>)", "86 91"},
      {"seq = XąęY\t Z\x7f\x01W\\<end>", "58 59 5A 57"},
      {R"(seq = 'a\<end>b'\<end>)", "61 5C 3C 65 6E 64 3E 62"},
      {"seq = 'a\nb'\\<end>", "61 0D 62"},
      {R"(seq =A\<end>)", "41"},
      {R"(seq=A\<end>)", "3D 41"},
      {R"(sEQ   =   A\<END>)", "41"},
      {R"(Seq = B\<end> xseq = A\<end>)", "41"},
      {R"(sequence = B\<end> seq seq = A\<end> a\seq = C\<end>)", "41 43"},
      {R"(text \<ESC> seq = A\<end> more seq = B\<eNd>)", "41 42"},
      {"\\<comment> seq = A\\<end> \\<end_comment> seq = B\\<end>", "42"},
      {"\\<C> seq = A\\<end>\n\\<e> seq = B\\<end>", "42"},
      {"seq = A\\; \\q ignored \\<end>\nB\\<end>", "41 42"},
  });
}

TEST(SeqCompileClass, ControlSumIsTwoHexDigitsAndSpansSequences) {
  ExpectBytes({
      {R"(seq = \<check_start>AB\<check_insert>\<end>)", "41 42 46 43"},
      {R"(seq = \<check_start>A\<end> seq = B\<Check_Insert>\<end>)", "41 42 46 43"},
      {R"(seq = \<CHECK_START>'ą'\<check_insert>\<end>)", "86 37 39"},
      {R"(seq = \<check_start>\<D>\<check_insert>\<end>)", "35 43 41"},
      {R"(seq = \<check_start>A\<end>)", "41"},
  });
}

struct MessageCase {
  const char* source;
  const char* hex;
  std::vector<std::string> english;
  std::vector<std::string> polish;
};

TEST(SeqCompileClass, MessagesCarryLineCountsInBothLanguages) {
  const std::vector<MessageCase> cases = {
      {R"(seq = \q\<end>)",
       "",
       {"0: Failure character or sequence.", "1: There is 1 error."},
       {"0: Nierozpoznany znak lub sekwencja.", "1: Wykryto: 1 błędów."}},
      {"\n\n\n\nseq = \\<foo>\\<A65>\\<>\\<end>",
       "",
       {"4: Failure character or sequence.", "4: Failure character or sequence.",
        "4: Failure character or sequence.", "5: There is 3 errors."},
       {"4: Nierozpoznany znak lub sekwencja.", "4: Nierozpoznany znak lub sekwencja.",
        "4: Nierozpoznany znak lub sekwencja.", "5: Wykryto: 3 błędów."}},
      {"seq = A\\\n\\<end>",
       "41",
       {"1: Failure character or sequence.", "2: There is 1 error."},
       {"1: Nierozpoznany znak lub sekwencja.", "2: Wykryto: 1 błędów."}},
      {R"(seq = \<check_start>\<check_start>A\<check_insert>\<end>)",
       "41 42 45",
       {"0: Second open control sum sequence.", "1: There is 1 error."},
       {"0: Podwójne rozpoczęcie badania sumy kontrolnej", "1: Wykryto: 1 błędów."}},
      {"seq = A\n\\<check_insert>\\<end>",
       "41",
       {"1: Ending open control sum sequence before open.", "2: There is 1 error."},
       {"1: Zamknięcie sekwencji sumy bez jej rozpoczęcia.", "2: Wykryto: 1 błędów."}},
      {"seq = AB",
       "41 42",
       {"1: Absence of end mark.", "1: There is 1 error."},
       {"1: Brak znacznika końca.", "1: Wykryto: 1 błędów."}},
      {"seq = AB\n\n   \n",
       "41 42",
       {"3: Absence of end mark.", "3: There is 1 error."},
       {"3: Brak znacznika końca.", "3: Wykryto: 1 błędów."}},
      // A comment block inside a sequence swallows the rest, \<end> included.
      {"seq = A\\<c>B\\<e>C\\<end>\nseq = D\\<end>\\",
       "41",
       {"2: Absence of end mark.", "2: There is 1 error."},
       {"2: Brak znacznika końca.", "2: Wykryto: 1 błędów."}},
      {"seq = \\<comment>",
       "",
       {"1: Absence of end mark.", "1: There is 1 error."},
       {"1: Brak znacznika końca.", "1: Wykryto: 1 błędów."}},
      {"",
       "",
       {"0: Input file is empty.", "0: There is 1 error."},
       {"0: Input file is empty.", "0: Wykryto: 1 błędów."}},
      {R"(Seq =A\<end>)",
       "",
       {"1: Input file is empty.", "1: There is 1 error."},
       {"1: Input file is empty.", "1: Wykryto: 1 błędów."}},
      {"\\<comment> seq = A\\<end>",
       "",
       {"1: Input file is empty.", "1: There is 1 error."},
       {"1: Input file is empty.", "1: Wykryto: 1 błędów."}},
      {"seq = A\\<end>\nseq = B\\q\\w\\<end>",
       "41 42",
       {"1: Failure character or sequence.", "1: Failure character or sequence.",
        "2: There is 2 errors."},
       {"1: Nierozpoznany znak lub sekwencja.", "1: Nierozpoznany znak lub sekwencja.",
        "2: Wykryto: 2 błędów."}},
      {"seq = A\\; note\n'b\nc'\\q\\<end>",
       "41 62 0D 63",
       {"2: Failure character or sequence.", "3: There is 1 error."},
       {"2: Nierozpoznany znak lub sekwencja.", "3: Wykryto: 1 błędów."}},
      {"x\nseq = A\\<end>",
       "41",
       {"2: End of compile. No errors."},
       {"2: Koniec przetwarzania. Brak błędów."}},
  };
  for (const MessageCase& c : cases) {
    const Result en = CompileText(c.source, 1);
    EXPECT_EQ(en.ok, c.english.size() == 1) << c.source;
    EXPECT_EQ(en.bytes, c.hex) << c.source;
    EXPECT_EQ(en.messages, c.english) << c.source;
    EXPECT_EQ(CompileText(c.source, 0).messages, c.polish) << c.source;
  }
}

TEST(SeqCompileClass, StopsExaminingAfterFiftyMessages) {
  std::string bad;
  for (int i = 0; i < 60; ++i) bad += "\\q";
  const Result r = CompileText("seq = " + bad + "\\<end>\nseq = A\\<end>");
  ASSERT_EQ(r.messages.size(), 52u);
  EXPECT_EQ(r.messages[49], "0: Failure character or sequence.");
  EXPECT_EQ(r.messages[50], "0: Absence of end mark.");
  EXPECT_EQ(r.messages[51], "0: There is 51 errors.");
  EXPECT_EQ(CompileText("seq = " + bad + "\\<end>", 0).messages.back(), "0: Wykryto: 51 błędów.");
  EXPECT_FALSE(r.ok);
}

TEST(SeqCompileClass, RecompilesPreviousSourceWithFreshDateAndSilently) {
  SeqCompileClass compiler;
  VirtualClock first(kInstant);
  {
    ScopedClock scoped(&first);
    ASSERT_TRUE(compiler.Compile(std::vector<std::string>{"seq = \\<D>\\<end>"}, nullptr));
  }
  EXPECT_EQ(compiler.output.ToString(), "5");
  VirtualClock later(LocalTime{2026, 12, 24, 23, 59, 0, 0});
  ScopedClock scoped(&later);
  ASSERT_TRUE(compiler.Compile(nullptr, nullptr));
  EXPECT_EQ(compiler.output.ToString(), "24");
  EXPECT_FALSE(compiler.Compile(std::vector<std::string>{"seq = A\\q\\<end>"}, nullptr));
  EXPECT_EQ(compiler.output.ToString(), "A");  // bytes stay after a failure
}

TEST(SeqCompileClass, SourceFilesUseCrLfAndReadLoneLf) {
  test::TempDir dir;
  SeqCompileClass compiler;
  std::vector<std::string> lines = {"x"};
  EXPECT_FALSE(compiler.SaveSource(lines));  // no file name
  EXPECT_FALSE(compiler.LoadSource(lines));
  EXPECT_TRUE(lines.empty());

  compiler.source_file_name = dir.file("seq.txt");
  const std::vector<std::string> saved = {"seq = '\xBF'", "", "\\<end>"};
  ASSERT_TRUE(compiler.SaveSource(saved));
  EXPECT_EQ(test::ReadFile(compiler.source_file_name), "seq = '\xBF'\r\n\r\n\\<end>\r\n");
  ASSERT_TRUE(compiler.LoadSource(lines));
  EXPECT_EQ(lines, saved);

  const std::vector<std::pair<std::string, std::vector<std::string>>> files = {
      {"a\nb\n", {"a", "b"}},
      {"a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"a\r\r\n\nb\r\n\r\n", {"a", "", "", "b", ""}},
      {"\n", {""}},
  };
  for (const auto& [bytes, expected] : files) {
    test::WriteFile(compiler.source_file_name, bytes);
    EXPECT_TRUE(compiler.LoadSource(lines));
    EXPECT_EQ(lines, expected) << Hex(bytes);
  }
  test::WriteFile(compiler.source_file_name, "");
  EXPECT_FALSE(compiler.LoadSource(lines));
  EXPECT_TRUE(lines.empty());
}

TEST(SeqCompileClass, DescribesEveryEscapeInBothLanguages) {
  const char* escapes[] = {
      "\\E ",    "\\<ESC>",     "\\R ",    "\\<CR>",          "\\N ",
      "\\<LF>",  "\\F ",        "\\<FF>",  "\\<SPC>",         "\\\\ ",
      "\\xHH",   "\\<nnn>",     "\\<Y> ",  "\\<LY>",          "\\<M> ",
      "\\<D> ",  "\\<H> ",      "\\<MIN>", "\\<CHECK_START>", "\\<CHECK_INSERT>",
      "\\<C>",   "\\<COMMENT>", "\\<E>",   "\\<END_COMMENT>", "\\; ",
      "\\<END> "};
  std::vector<std::vector<std::string>> texts;
  for (const int language : {0, 1}) {
    MessageLanguage = language;
    std::vector<std::string> lines = {"kept"};
    SeqCompileClass::DescribeNotation(lines);
    EXPECT_EQ(lines.front(), "kept");
    std::string all;
    for (const std::string& line : lines) {
      EXPECT_EQ(line.find('\r'), std::string::npos);
      all += Cp1250ToUtf8(line) + "\n";
    }
    for (const char* e : escapes) EXPECT_NE(all.find(e), std::string::npos) << e;
    texts.push_back(lines);
  }
  MessageLanguage = 0;
  EXPECT_EQ(texts[0].size(), texts[1].size());
  EXPECT_EQ(Cp1250ToUtf8(texts[0][2]).find("Kompilowany jest tylko tekst między seg = a"), 0u);
  EXPECT_EQ(texts[1][2].find("Only text between seq = and"), 0u);
}

}  // namespace
}  // namespace tavena
