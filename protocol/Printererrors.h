// Texts for what the printer reports: its error numbers (read by the error
// query) and the bits of the one-byte answers to ENQ and DLE.
#pragma once

#include <string>
#include <vector>

namespace tavena {

// The printer's text for an error number, in Windows-1250; lines are
// separated by "\n". Numbers without an entry (15, 52-82, 87-89, 97, and
// anything outside 0-99) give an empty text.
std::string PrinterErrorText(int number);

// True when a control-byte answer means "no communication": -1 (nothing
// came), 0, or a byte of 0x80 and above (negative when read as signed).
bool NoCommunication(int answer);

// The lines that describe an ENQ answer: fiscal mode, last command, state of
// transaction, last transaction. On no communication the one line
// "Brak komunikacji". Windows-1250 texts.
std::vector<std::string> EnqBitTexts(int answer);

// The lines that describe a DLE answer: on-line, paper, and a third line
// only when the mechanism bit is set. On no communication "Brak komunikacji".
std::vector<std::string> DleBitTexts(int answer);
// The window's reading of DLE: a mechanism fault overwrites the first line.
std::vector<std::string> DleLines(int answer);

}  // namespace tavena
