// The printer's command interpreter: one decoded frame in, the error number
// and the answer out, with the state changed as a printer changes it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Simmodel.h"
#include "Simstate.h"

namespace tavena {

// Printer error numbers the simulator reports.
enum SimError {
  kErrNone = -1,
  kErrUnknownCommand = 0,
  kErrControlSum = 2,
  kErrParameterCount = 3,
  kErrData = 4,
  kErrDateBeforeRecord = 7,
  kErrNonZeroTotals = 8,
  kErrClockTwice = 10,
  kErrRates = 11,
  kErrHeader = 12,
  kErrAlreadyFiscal = 13,
  kErrNip = 14,
  kErrName = 16,
  kErrQuantity = 17,
  kErrRateLetter = 18,
  kErrPrice = 19,
  kErrValue = 20,
  kErrNoTransaction = 21,
  kErrLineCount = 23,
  kErrCodeOrLines = 25,
  kErrPayment = 26,
  kErrTotal = 27,
  kErrEndWithoutStart = 29,
  kErrAmounts = 34,
  kErrRateChanges = 84,
  kErrInTransaction = 95,
  kErrSequence = 99,
};

// A frame as the printer took it apart. Bytes are as received (Mazovia).
struct SimFrame {
  std::string body;         // everything between ESC P and ESC backslash
  std::vector<int> params;  // the numbers before the command
  bool params_ok = true;    // false when a parameter is not a number
  std::string command;      // "#v", "$p", "^", ...
  std::string fields;       // after the command, without the control sum
  bool has_sum = false;
  bool sum_ok = true;
};

// Splits a frame body. Queries ("#v", "#c", "#s", "#e", "^") may come with
// or without a control sum; every other command must end with one.
SimFrame DecodeFrame(std::string_view body);
// 0xFF XOR every byte, as two upper-case hex digits.
std::string ControlSumHex(std::string_view bytes);

struct SimAnswer {
  int error = kErrNone;
  bool has_answer = false;
  std::string text;      // answer body (between ESC P and the sum or ESC backslash)
  bool with_sum = true;  // a control sum follows the body
};

class SimCommands {
 public:
  SimCommands(SimState& state, SimPrinterClock& clock, const SimModelInfo& model)
      : s_(state), clock_(clock), model_(model) {}
  SimAnswer Execute(const SimFrame& frame);

  // Answer bodies of the queries, also used by the documentation tests.
  std::string IdentityText() const;
  std::string ClockText() const;
  std::string StatusText() const;
  std::string ErrorText() const;
  std::string FirstReportText() const;
  std::string KorvusText() const;

 private:
  int SetClock(const SimFrame& f);
  int SetRates(const SimFrame& f);
  int SetHeader(const SimFrame& f);
  int Fiscalise(const SimFrame& f);
  int PeriodicReport(const SimFrame& f);
  SimAnswer Report(const SimFrame& f);
  int DailyReport(const SimFrame& f);
  int BeginTransaction(const SimFrame& f);
  int SaleLine(const SimFrame& f);
  int EndOrCancel(const SimFrame& f);
  int EndTransaction(const SimFrame& f);
  int CashCommand(const SimFrame& f);
  SimDate Today() const;

  SimState& s_;
  SimPrinterClock& clock_;
  const SimModelInfo& model_;
};

}  // namespace tavena
