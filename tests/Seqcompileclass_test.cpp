#include "sequence/Seqcompileclass.h"

#include <gtest/gtest.h>

#include <algorithm>

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
  std::string bytes;     // hex
  std::string messages;  // UTF-8, one line each
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
  for (const std::string& m : messages) r.messages += Cp1250ToUtf8(m) + "\n";
  MessageLanguage = 0;
  return r;
}

TEST(SeqCompileClass, CompiledBytes) {
  const std::pair<const char*, const char*> cases[] = {
      // Escapes.
      {R"(seq = \E\e\R\r\N\n\F\f\\\<end>)", "1B 1B 0D 0D 0A 0A FF FF 5C"},
      {R"(seq = \<ESC>\<esc>\<eSc>\<CR>\<Lf>\<FF>\<ff>\<SPC>\<end>)", "1B 1B 1B 0D 0A FF FF 20"},
      {R"(seq = \x41\x4a\xFf\x4Z\xG1\x 4\x-1\<end>)", "41 4A FF 04 00 00 00"},
      {"seq = \\x4\n'b'\\<end>", "62"},  // the pair took the line end: 04 still pending
      {R"(seq = \<256>\<65>\<300>\<0>\<12a>\<007>\<end>)", "00 41 2C 00 0C 07"},
      {R"(seq = \<D>.\<M>.\<Y> \<LY> \<H>:\<Min>\<MIN>\<end>)",
       "35 2E 33 2E 39 32 30 30 39 37 3A 37 37"},
      // Literals, dropped bytes, sequence words and comments.
      {R"(seq = AB 'x y'\<end>)", "78 20 79"},
      {R"(seq = AB\<SPC>'x y'\<end>)", "41 42 78 20 79"},
      {"seq = AB\\<SPC>\n'x y'\\<end>", "41 42 20 78 20 79"},
      {R"(seq = 'ąę'\<end>)", "86 91"},
      {"seq = XąęY\t Z\x7f\x01W\\<end>", "58 59 5A 57"},
      {R"(seq = 'a\<end>b'\<end>)", "61 5C 3C 65 6E 64 3E 62"},
      {"seq = 'a\nb'\\<end>", "61 0D 62"},
      {R"(seq=A\<end>)", "3D 41"},
      {R"(sEQ   =   A\<END>)", "41"},
      {R"(sequence = B\<end> seq seq = A\<end> a\seq = C\<end>)", "41 43"},
      {R"(text \<ESC> seq = A\<end> more seq = B\<eNd>)", "41 42"},
      {"\\<comment> seq = A\\<end> \\<end_comment> seq = B\\<end>", "42"},
      {"\\<C> seq = A\\<end>\n\\<e> seq = B\\<end>", "42"},
      {"seq = A\\; \\q ignored \\<end>\nB\\<end>", "41 42"},
      // The control sum: two hex digits, may span sequences.
      {R"(seq = \<check_start>AB\<check_insert>\<end>)", "41 42 46 43"},
      {R"(seq = \<check_start>A\<end> seq = B\<Check_Insert>\<end>)", "41 42 46 43"},
      {R"(seq = \<CHECK_START>'ą'\<check_insert>\<end>)", "86 37 39"},
      {R"(seq = \<check_start>A\<end>)", "41"},
  };
  for (const auto& [source, hex] : cases) {
    const Result r = CompileText(source);
    EXPECT_TRUE(r.ok) << source;
    EXPECT_EQ(r.bytes, hex) << source;
    EXPECT_TRUE(r.messages.ends_with(": End of compile. No errors.\n")) << r.messages;
    EXPECT_EQ(std::count(r.messages.begin(), r.messages.end(), '\n'), 1) << source;
  }
}

TEST(SeqCompileClass, MessagesCarryLineCountsInBothLanguages) {
  const std::string bad = "Failure character or sequence.\n";
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {R"(seq = \q\<end>)", "", "0: " + bad + "1: There is 1 error.\n"},
      {"\n\n\n\nseq = \\<foo>\\<A65>\\<>\\<end>", "",
       "4: " + bad + "4: " + bad + "4: " + bad + "5: There is 3 errors.\n"},
      {"seq = A\\\n\\<end>", "41", "1: " + bad + "2: There is 1 error.\n"},
      {R"(seq = \<check_start>\<check_start>A\<check_insert>\<end>)", "41 42 45",
       "0: Second open control sum sequence.\n1: There is 1 error.\n"},
      {"seq = A\n\\<check_insert>\\<end>", "41",
       "1: Ending open control sum sequence before open.\n2: There is 1 error.\n"},
      {"seq = AB", "41 42", "1: Absence of end mark.\n1: There is 1 error.\n"},
      // A comment block inside a sequence swallows the rest, \<end> included.
      {"seq = A\\<c>B\\<e>C\\<end>\nseq = D\\<end>\\", "41",
       "2: Absence of end mark.\n2: There is 1 error.\n"},
      {"", "", "0: Input file is empty.\n0: There is 1 error.\n"},
      {R"(Seq =A\<end>)", "", "1: Input file is empty.\n1: There is 1 error.\n"},
      {"seq = A\\; note\n'b\nc'\\q\\<end>", "41 62 0D 63", "2: " + bad + "3: There is 1 error.\n"},
      {"x\nseq = A\\<end>", "41", "2: End of compile. No errors.\n"},
  };
  for (const auto& [source, hex, english] : cases) {
    const Result en = CompileText(source, 1);
    EXPECT_EQ(en.ok, english.ends_with("No errors.\n")) << source;
    EXPECT_EQ(en.bytes, hex) << source;
    EXPECT_EQ(en.messages, english) << source;
  }
  const std::pair<std::string, std::string> polish[] = {
      {R"(seq = \<check_start>\<check_start>A\<check_insert>\<end>)",
       "0: Podwójne rozpoczęcie badania sumy kontrolnej\n1: Wykryto: 1 błędów.\n"},
      {"seq = A\n\\<check_insert>\\<end>",
       "1: Zamknięcie sekwencji sumy bez jej rozpoczęcia.\n2: Wykryto: 1 błędów.\n"},
      {"seq = AB", "1: Brak znacznika końca.\n1: Wykryto: 1 błędów.\n"},
  };
  for (const auto& [source, messages] : polish)
    EXPECT_EQ(CompileText(source, 0).messages, messages) << source;
  // After 50 messages the rest, \<end> included, is not examined.
  std::string sixty;
  for (int i = 0; i < 60; ++i) sixty += "\\q";
  const Result r = CompileText("seq = " + sixty + "\\<end>\nseq = A\\<end>");
  EXPECT_EQ(std::count(r.messages.begin(), r.messages.end(), '\n'), 52);
  EXPECT_TRUE(
      r.messages.ends_with("0: " + bad + "0: Absence of end mark.\n0: There is 51 errors.\n"));
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

// Saving in CR LF is checked through the sequence editor (tests/gui/Editors_test.cpp).
TEST(SeqCompileClass, SourceFilesReadEveryLineEnd) {
  test::TempDir dir;
  SeqCompileClass compiler;
  std::vector<std::string> lines = {"x"};
  EXPECT_FALSE(compiler.LoadSource(lines));  // no file name
  EXPECT_TRUE(lines.empty());
  compiler.source_file_name = dir.file("seq.txt");
  const std::vector<std::pair<std::string, std::vector<std::string>>> files = {
      {"a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"a\r\r\n\nb\r\n\r\n", {"a", "", "", "b", ""}},
      {"\n", {""}},
      {"", {}},
  };
  for (const auto& [bytes, expected] : files) {
    test::WriteFile(compiler.source_file_name, bytes);
    EXPECT_EQ(compiler.LoadSource(lines), !bytes.empty());
    EXPECT_EQ(lines, expected) << Hex(bytes);
  }
}

}  // namespace
}  // namespace tavena
