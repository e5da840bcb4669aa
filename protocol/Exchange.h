// One exchange with the printer as a record: the question, the answer, how
// long the printer took and what the answer means. The printer object hands
// every record to an ExchangeSink; the monitor window shows them as rows.
#pragma once

#include <string>
#include <string_view>

#include "sequence/Clock.h"

namespace tavena {

enum class ExchangeResult {
  kSent,       // a command that expects no answer went out whole
  kNotSent,    // the channel did not take the question
  kConfirmed,  // the printer answered (a status byte with "command interpreted")
  kRefused,    // a status byte saying the command was not interpreted
  kNoAnswer,   // nothing (or no valid status byte) came back in time
};

struct ExchangeRecord {
  LocalTime time;        // when the question had gone out
  std::string port;      // port name as the printer object holds it
  std::string question;  // bytes as sent (Mazovia)
  std::string answer;    // bytes as received (Mazovia); empty without one
  int response_ms = -1;  // end of the question to the last byte of the answer
  ExchangeResult result = ExchangeResult::kSent;
  std::string meaning;  // decoded answer, Windows-1250; empty when nothing to say
};

class ExchangeSink {
 public:
  virtual ~ExchangeSink() = default;
  virtual void Exchange(const ExchangeRecord& record) = 0;
};

// Upper-case hex pairs separated by single spaces ("1B 50 30 23").
std::string HexPairs(std::string_view bytes);

// The bytes converted from Mazovia to Windows-1250 with every control byte
// and DEL written as its name: "<ESC>P0#e89<ESC>\", "<ENQ>".
std::string NamedControlBytes(std::string_view bytes);

// "potwierdzone", "odrzucone", ... (by MessageLanguage, Windows-1250).
std::string ExchangeResultText(ExchangeResult result);
bool IsFailure(ExchangeResult result);

// What the answer to this question means, from the protocol's own readers:
// the ENQ/DLE bits in words, the identity, the clock, the status fields, the
// printer's error number with its text. Empty when there is nothing to say.
std::string ExchangeMeaning(std::string_view question, std::string_view answer);

}  // namespace tavena
