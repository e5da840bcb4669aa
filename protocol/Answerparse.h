// Pure readers of the printer's answer frames: identity ("#v"), clock
// ("0#c"), status ("#s") and the date of the first daily report. They take
// the answer as received (already in Windows-1250), never read outside it,
// and accept any content.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Inputcheck.h"  // kVatInactive, kVatExempt, VatRates

namespace tavena {

// What the identity answer tells.
struct IdentityAnswer {
  bool has_command = false;  // "#R" found, not at the start: type and subtype are valid
  int32_t type_code = 0;
  int32_t subtype = 0;  // only for type codes 4 and 6
  std::string name;     // model name, trailing blanks stripped, at most 39 characters
  std::string version;  // software version, at most 39 characters
};

IdentityAnswer ParseIdentity(std::string_view answer);

// Type code for an identity answer by its model words (0 when none fits).
int32_t TypeCodeOf(std::string_view answer);

inline constexpr const char* kClockDefault = "1980-01-01 00:00";

// The printer's date and time as "%04d-%02d-%02d %02d:%02d"; kClockDefault
// when the answer holds no "#C".
std::string ParseClock(std::string_view answer);

// The status record, in the order of the answer.
struct StatusRecord {
  int32_t f0 = 0, f1 = 0, f2 = 0, f3 = 0, f4 = 0;
  int32_t resets = 0;                    // -1 when the answer marks it with "<" or ">"
  int32_t year = 0, month = 0, day = 0;  // date of the last record, four-digit year
  VatRates rates{};                      // A..G
  int32_t receipts = 0;
  std::array<double, 7> totals{};
  double further = 0.0;
  std::string unique_number;  // up to 11 characters
};

// Status selectors.
enum StatusSelector {
  kStatusF0 = 0,
  kStatusFiscal = 1,
  kStatusF2 = 2,
  kStatusF3 = 3,
  kStatusResets = 4,
  kStatusLastRecord = 5,
  kStatusRates = 6,
  kStatusReceipts = 7,
  kStatusTotals = 8,
  kStatusFurther = 9,
  kStatusUniqueNumber = 10,
  kStatusRaw = 11,
};

inline constexpr size_t kStatusRawSize = 184;

// Reads a status answer into record. False when the answer holds no "#X".
bool ParseStatus(std::string_view answer, StatusRecord& record);

// The text of one field (selector 0..11). Selector 11 gives the record as
// 184 bytes: int32 f0..f4, resets, year, month, day, 4 zero bytes, 7 doubles
// of rates, int32 receipts, 4 zero bytes, 7 doubles of totals, the further
// amount, the unique number zero-padded to 16 bytes (host byte order).
std::string FormatStatusField(const StatusRecord& record, int selector);

// Rates as "23.00;8.00;-1;zw;..." (seven items each ended by ";").
std::string FormatRates(const std::array<double, 7>& rates);

// Looks for the date of the first daily report in the answer to
// "2;0;0;1#r": "#R" followed by year;month;day (two-digit year read as the
// clock reads it), else the first "YYYY-MM-DD" or "DD-MM-YYYY" in a report
// text, with "-", "." or "/" between the parts. False when there is none.
bool FindReportDate(std::string_view text, int& year, int& month, int& day);

}  // namespace tavena
