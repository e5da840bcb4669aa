// What the simulated printer remembers: clock, VAT rates, header, fiscal
// memory facts, the receipt in progress and the status bits.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "sequence/Clock.h"

namespace tavena {

// A calendar date.
struct SimDate {
  int year = 0;
  int month = 0;
  int day = 0;
  bool Valid() const { return year > 0; }
  int64_t DayNumber() const { return DaysFromCivil(year, month, day); }
  bool operator==(const SimDate&) const = default;
};

// The printer's clock: the host's local time plus an offset, or a fixed
// instant that only moves when it is set.
class SimPrinterClock {
 public:
  // host: the host's local time; by default CurrentClock().Local().
  explicit SimPrinterClock(std::function<LocalTime()> host = {});
  LocalTime Now() const;
  // Sets the printer's time (seconds resolution).
  void Set(const LocalTime& t);
  void Fix(const LocalTime& t);
  bool Fixed() const { return fixed_; }

 private:
  LocalTime Host() const;
  std::function<LocalTime()> host_;
  bool fixed_ = false;
  LocalTime fixed_time_;
  int64_t offset_ms_ = 0;
};

// Milliseconds since 1970 of a local time (no zone), and whether t is a real
// calendar instant.
int64_t EpochMsOf(const LocalTime& t);
bool ValidLocalTime(const LocalTime& t);

// Rate values: a percentage, or one of these.
inline constexpr double kSimRateInactive = -1;
inline constexpr double kSimRateExempt = -2;

struct SimState {
  // Status bits.
  bool fiscal = false;
  bool command_ok = true;        // ENQ bit 2
  bool transaction_ok = true;    // ENQ bit 0
  bool online = true;            // DLE bit 2
  bool paper_out = false;        // DLE bit 1
  bool mechanism_error = false;  // DLE bit 0
  int last_error = -1;           // number of the last refused command; -1 none yet

  std::array<double, 7> rates = {23, 8, 5, 0, kSimRateInactive, kSimRateInactive, kSimRateExempt};
  std::vector<std::string> header;  // Windows-1250 lines, blanks and SO/DC4 as sent
  std::string nip;
  int ram_resets = 1;
  char resets_mark = 0;  // '<' or '>' sent before the resets count when set
  SimDate last_record{2011, 1, 3};
  SimDate first_daily_report;  // not valid until the first report in fiscal mode
  int receipts = 0;            // since the last daily report
  std::array<double, 7> totals = {};
  double further_amount = 0;  // gross of the receipts since the last daily report
  std::string unique_number;

  // Counters read back through the status fields f2..f4 and by tests.
  int daily_reports = 0;
  int periodic_reports = 0;
  int header_changes = 0;
  int rate_changes = 0;
  bool clock_set_since_report = false;

  // The receipt in progress.
  bool in_transaction = false;
  int expected_lines = 0;  // from "$h"; 0 = any number
  int sale_lines = 0;
  std::array<double, 7> receipt_values = {};

  // Other commands, remembered for inspection.
  int cash_commands = 0;
  std::string display_text;  // the text of the last "1#b"
  int last_ampc = -1;        // parameter of the last "&c"
  int bells = 0;

  uint8_t EnqByte() const;
  uint8_t DleByte() const;
};

}  // namespace tavena
