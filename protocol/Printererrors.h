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

// The four lines of the information window for an ENQ status byte: fiscal
// mode, last command, state of transaction, last transaction. On no
// communication "Brak komunikacji" and three empty lines. Windows-1250; the
// texts exist in Polish only, so MessageLanguage does not change them.
std::vector<std::string> EnqLines(int status);

// The four lines for a DLE status byte: on-line state, paper, two empty
// lines; a mechanism fault (bit 0) overwrites line 1. On no communication
// "Brak komunikacji" and three empty lines.
std::vector<std::string> DleLines(int status);

}  // namespace tavena
