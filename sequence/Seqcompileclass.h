// SeqCompileClass: compiles the sequence notation (plain text with escapes
// between "seq =" and "\<end>") into the raw bytes sent to the printer, and
// reads and writes sequence source files.
//
// All texts are 8-bit Windows-1250: source lines, messages and the
// description. Nothing throws; results are booleans.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sequence/Ibuffer.h"

namespace tavena {

class SeqCompileClass {
 public:
  // Token kinds handed from the scanner to the compile loop.
  enum Token : int {
    kError = -1,
    kEndOfInput = 0,
    kEndOfSequence = 1,
    kStartOfSequence = 2,
    kCheckStart = 3,
    kCheckInsert = 4,
    kCommentOpen = 5,
    kCommentClose = 6,
    kBytes = 10,
    kLineComment = 11,
  };
  // The compile loop stops examining the source after this many messages.
  static constexpr int kMessageLimit = 50;

  // Compiles lines (each one followed by a carriage return); with null lines
  // the previous source is compiled again. Diagnostics, the success message
  // and the summary go to messages ("<line>: <text>") when it is not null.
  // True only when there was no error and at least one byte came out; the
  // bytes are then in output.
  bool Compile(const std::vector<std::string>* lines, std::vector<std::string>* messages);
  bool Compile(const std::vector<std::string>& lines, std::vector<std::string>* messages) {
    return Compile(&lines, messages);
  }

  // Reads source_file_name into lines (replacing them). False, with no
  // lines, when the file is missing, unreadable or empty.
  bool LoadSource(std::vector<std::string>& lines) const;
  // Writes every line followed by CR LF to source_file_name. False when the
  // name is empty or the file cannot be written.
  bool SaveSource(const std::vector<std::string>& lines) const;
  // Appends the notation's help text in the message language, one line each.
  static void DescribeNotation(std::vector<std::string>& lines);

  // Cuts file bytes into lines: CR ends a line, LF after CR is dropped, a
  // lone LF ends a line too; a last line without an end is kept if not empty.
  static std::vector<std::string> SplitLines(std::string_view bytes);

  // The compiled bytes; valid until the next compilation.
  iBuffer output;
  // The path last read or saved by the editor; used by LoadSource/SaveSource.
  std::string source_file_name;

 private:
  // Marks end of input in cur_ (the notation reads it as the byte 0).
  static constexpr int kEnd = -1;
  // Escape result: bytes were put in the token, scanning goes on.
  static constexpr int kGoOn = 100;

  void Reset();
  void AssembleSource(const std::vector<std::string>& lines);
  void ReadDateTexts();
  void RunCompileLoop();
  void SkipCommentBlockInSequence();
  void Act(int token);
  bool Finish();

  bool Exhausted() const { return pos_ >= source_.size(); }
  int Next();
  int Scan() { return in_sequence_ ? ScanInside() : ScanOutside(); }
  int ScanOutside();
  int ScanInside();
  int Escape();
  int AngleEscape();
  void ReadHexPair();
  bool ReadAngleWord();
  bool SkipOutsideCommentBlock();
  bool ReadSeqWord();
  bool EqualsSignFollows();
  void ReadWordUntil(char terminator);
  void SkipOutsideUntil(char a, char b);
  void AppendPlainRun();

  void CheckStart();
  void CheckInsert();
  void EmitToken();
  void Report(const std::string& text);

  size_t pos_ = 0;
  int64_t line_count_ = 0;
  int errors_ = 0;
  std::string source_;
  int cur_ = 0;

  // Date texts, "%d" of the local time read once per compilation.
  std::string year4_, year2_, month_, day_, hour_, minute_;

  std::string token_;
  bool checksum_active_ = false;
  bool in_sequence_ = false;
  bool push_back_ = false;
  bool in_comment_block_ = false;
  uint8_t checksum_ = 0xFF;

  std::vector<std::string>* messages_ = nullptr;
};

}  // namespace tavena
