// The frame editor's notation and files. A line is the body of one command
// frame in readable form: bytes 0x20..0x7E as they are, every other byte as
// "[xHH]". Lines are kept as text (".sek", one line each) or as the frames
// themselves (".bin"). Plain C++; texts and files are 8-bit Windows-1250.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavena {

// Bytes 0x20..0x7E as they are, every other byte as "[x%02X]".
std::string EncodeReadable(std::string_view bytes);

// Each "[x", two hex digits and "]" becomes one byte; everything else is
// copied. A digit is worth its code minus 0x30 up to "9" and minus 0x37
// above, so a..f are taken but give other values ("[x1b]" is 0x3B).
std::string DecodeReadable(std::string_view line);

// A ".sek" file's lines: cut at LF (a CR before it dropped), up to the first
// empty line, which ends the reading.
std::vector<std::string> ReadSekText(std::string_view file);
// Every line followed by CR LF.
std::string WriteSekText(const std::vector<std::string>& lines);

// A ".bin" file's lines: the file is converted from Mazovia, then every
// ESC P ... ESC \ gives the readable form of its bytes without the last two
// (the sum, not checked). Bytes outside frames, and a frame without its end,
// give nothing.
std::vector<std::string> ReadFrameFile(std::string_view file);
// One frame per line (empty lines too): decoded, converted to Mazovia, the
// sum appended, between ESC P and ESC \.
std::string WriteFrameFile(const std::vector<std::string>& lines);

}  // namespace tavena
