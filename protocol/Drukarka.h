// Drukarka: the application's handle on a fiscal printer. Holds the port and
// speed, opens and closes its channel around each user operation, sends
// framed commands and control bytes, reads the identity, clock and status,
// fills the main window's status fields, searches for the printer, and
// offers one operation per printer command.
//
// Every exchange writes a line "<port><label1,label2> Question: ..." /
// "... Answer: ..." / "... No answer." (Polish or English by
// MessageLanguage) to the communication log while logging is on, and to the
// monitor sink whenever one is attached. Failures are results, never
// exceptions. All waits go through the injectable clock.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Answerparse.h"
#include "Exchange.h"
#include "Fiscalbiblio.h"
#include "Formsink.h"
#include "Runheader.h"
#include "transport/Fastcom.h"

namespace tavena {

inline constexpr uint8_t kENQ = 0x05;
inline constexpr uint8_t kDLE = 0x10;
inline constexpr uint8_t kBEL = 0x07;
inline constexpr uint8_t kESC = 0x1B;
inline constexpr uint8_t kCAN = 0x18;
inline constexpr uint8_t kSUB = 0x1A;

// The control sum of a body already in the printer's character set: 0xFF
// XOR every byte.
uint8_t ControlSum(std::string_view mazovia_body);

// ESC P, the body converted to Mazovia, the sum as two upper-case hex
// digits (when with_sum), ESC \.
std::string BuildFrame(std::string_view body_cp1250, bool with_sum);

// Result codes of FindPrinter.
enum FindResult {
  kFindPrinter = 1,       // a TAVENA printer answered and identified itself
  kFindUniqueNumber = 2,  // an electronic-journal copy device (unique number only)
  kFindUnidentified = 0,  // something answered a probe, but not as a printer
  kFindNothing = -1,      // nothing answered any probe
  kFindCannotOpen = -2,   // the port could not be opened
  kFindNotQuiet = -3,     // the port did not quiet down within 2000 ms
};

class Drukarka {
 public:
  Drukarka();
  ~Drukarka();
  Drukarka(const Drukarka&) = delete;
  Drukarka& operator=(const Drukarka&) = delete;

  // ---- Data model (plain fields) ----
  int32_t type_code = 0;  // from the identity: 1 LUMEN, 2 SOLIDA, 3 SOLIDA EJ, 4 QX-1,
                          // 6 QX-1TR, 7 TM410, 0 unknown
  int32_t subtype = 0;    // digit before "#R" for type codes 4 and 6
  std::string port_name;  // up to 127 characters ("com1", "/dev/ttyUSB0")
  int32_t speed = 9600;   // bits per second
  std::string answer;     // last answer or formatted result (Windows-1250)
  int32_t default_wait_ms = 2000;
  std::string label1;  // two labels of up to 19 characters shown in every log line
  std::string label2;
  MonitorSink* monitor = nullptr;     // not owned; gets every exchange line when set
  ExchangeSink* exchanges = nullptr;  // not owned; gets every exchange as a record when set
  // Called after each confirmed block of SendStreamConfirmed with the bytes
  // of the stream sent so far and the stream's length (none when empty).
  std::function<void(size_t done, size_t total)> stream_progress;
  FastCom com;  // the channel

  static constexpr size_t kPortNameLimit = 127;
  static constexpr size_t kLabelLimit = 19;

  // Restores the default wait, an empty port name and the speed 9600.
  void Reset();
  // Logging of exchange lines (and of the channel's own lines).
  void SetLogging(bool on);
  bool Logging() const { return logging_; }
  // Sets the two line labels (each cut to 19 characters).
  void SetLabels(const std::string& first, const std::string& second);

  // ---- Channel ----
  void SetPort(const std::string& name, int32_t bits_per_second);
  // Opens the channel on the port name at the speed; false with an empty name.
  bool Open();
  bool Close();

  // ---- Frames and control bytes ----
  bool SendFramed(std::string_view body);
  // Without the control sum (queries answered with a frame: "#v", "0#c", "#s").
  bool SendFramedNoSum(std::string_view body);
  // Reads until ESC \ or timeout_ms of silence. The bytes, converted to
  // Windows-1250, go into answer. True when the answer ends with ESC \.
  bool ReadAnswer(int timeout_ms);
  // Send ENQ / DLE and wait (300 x 5 ms / 80 x 10 ms). Result: the last byte
  // received as a signed byte (so 0x80 and above are negative), or -1.
  int QueryENQ();
  int QueryDLE();
  // Sends BEL, reads nothing back. True when it was sent.
  bool SendBEL();
  // Sends a stream of frames in blocks cut after an ESC \ once over
  // block_limit bytes, each followed by ENQ and confirmed by a status byte
  // 0x6? with bit 2 set. True when every block was confirmed.
  bool SendStreamConfirmed(const iBuffer& stream, int block_limit);

  // ---- Identity and status ----
  // part 1: model name, part 2: software version; empty when nothing read.
  // Sets type_code and subtype.
  const std::string& ReadIdentity(int part);
  // "YYYY-MM-DD hh:mm", or "1980-01-01 00:00" when there is no answer.
  const std::string& ReadClock();
  // The status query "<parameter>#s", field by selector (0..11); parameter
  // 22 or a selector outside 0..11 give the raw answer; empty on failure.
  const std::string& ReadStatus(int parameter, int selector);
  // The record of the last successful status read.
  const StatusRecord& LastStatus() const { return status_; }
  // Whether the last identity, clock or status read got an answer.
  bool LastReadOk() const { return last_read_ok_; }
  // Since the last Open, a drain or a read found a line that never went
  // quiet (reported in the monitor and the log).
  bool LineNotQuiet() const { return line_not_quiet_; }
  // Opens the given port, reads every field the form has a control for,
  // writes the texts, closes.
  void FillStatusFields(FormFields& form, const std::string& port, int32_t bits_per_second);

  // ---- Printer search ----
  // Searches on a port (name, or "com" + number) at a speed (at least 9600).
  // expected_type 0 tries every probe; long_mode uses the long composite.
  // On success (1 or 2) port and speed hold where it answered, and so do
  // port_name and speed of the object. Returns a FindResult.
  int FindPrinter(std::string& port, int32_t& bits_per_second, int expected_type, bool long_mode);
  int FindPrinter(int port_number, int32_t& bits_per_second, int expected_type, bool long_mode);

  // ---- Printer commands (each frames its body with a control sum) ----
  bool SetClock(int year, int month, int day, int hour, int minute, int second);
  bool SetClockFromText(const std::string& text);
  // Rates A..G: percentage, kVatInactive (-1) or kVatExempt (-2); the
  // wire form follows subtype.
  bool SetVatRates(const std::array<double, 7>& rates);
  bool SetHeader(const std::vector<HeaderLine>& lines);
  bool Fiscalise(int p, const std::string& nip);
  bool PeriodicReport(const PrinterDate& from, const PrinterDate& to, int p);
  bool ReportByNumber(int p, const PrinterDate& date);
  bool CashCommand(int p, const std::string& text, uint8_t code);
  bool ParamCommandAmpC(int p);
  bool ParamCommandDollarH(int p);
  bool SaleLine(const SaleLineRecord& line);
  bool EndTransaction(const EndTransactionRecord& record);
  bool CancelTransaction(const std::string& a = {}, const std::string& b = {},
                         const std::string& c = {});
  bool SendText(std::string_view body);
  // The 1-grosz test receipt: "$h" with 0, one sale line "Towar testowy 1gr"
  // (1 x 0.01, rate A), closed with three footer lines, "NRS5555", 0.01, 0.01.
  bool TestReceipt();

 private:
  // Exchange lines.
  std::string LinePrefix() const;
  void WriteLine(const std::string& line);
  void LogQuestion(std::string_view frame_mazovia);
  void LogAnswerText(std::string_view answer_cp1250);
  void LogAnswerByte(int byte);
  void LogNoAnswer();
  void ReportNotQuiet(int limit_ms);
  void Progress(const std::string& text);

  // Exchange records: a question waits for its answer until the next
  // question, a read or Close; one without an answer read is kSent.
  void BeginExchange(std::string_view question, bool sent);
  // timed: the answer was read as it came, so its time is the response time.
  void FinishExchange(std::string_view answer, ExchangeResult result, bool timed = true);
  void FlushExchange();
  // The log's run header before this run's first line to the port's file,
  // and the printer's identity once its unique number is known.
  std::string RunKey() const;  // the port's log file
  RunHeader CurrentRunHeader() const;
  void WriteRunHeader();
  void WriteIdentityHeader();

  bool SendBytes(std::string_view bytes);
  bool SendFrame(std::string_view body, bool with_sum);
  int QueryControlByte(uint8_t byte, int polls, int poll_ms);
  int PollForByte(int polls, int poll_ms);
  std::string ReadWaiting();
  bool AwaitBlockConfirmation();
  bool SendBodyIf(const std::optional<std::string>& body);

  // Identity and status fill.
  void TakeIdentity(const IdentityAnswer& id);
  bool ReadFirstReportDate(std::string& text);

  // Search steps.
  bool Drain();
  std::string Collect(int total_ms, int poll_ms);
  std::string CollectAnswer(int total_ms);
  std::string CollectUntilSub(int total_ms, bool once);
  std::string TypedProbe(int expected_type, int& result);
  std::string UntypedProbes(int& result);
  int Identify(const std::string& reply);
  void SendComposite(bool long_mode);

  bool logging_ = false;
  bool opened_ = false;              // Open has been called
  bool logging_from_start_ = false;  // logging was on before the first Open
  std::optional<ExchangeRecord> pending_;
  int64_t question_end_ms_ = 0;
  std::string model_name_;  // from the last identity read
  std::string software_version_;
  bool last_read_ok_ = false;
  bool line_not_quiet_ = false;
  StatusRecord status_;
};

}  // namespace tavena
