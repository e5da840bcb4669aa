// The printer object: channel, exchange lines, frames and control bytes.
#include "Drukarka.h"

#include "Printererrors.h"
#include "Runheader.h"
#include "sequence/Clock.h"
#include "sequence/Codepage.h"
#include "sequence/Messagelanguage.h"
#include "transport/Filelog.h"

namespace tavena {

namespace {

constexpr int kEnqPolls = 300;
constexpr int kEnqPollMs = 5;
constexpr int kDlePolls = 80;
constexpr int kDlePollMs = 10;
constexpr int kBlockAllowanceMs = 5000;
constexpr int kBlockFirstStepMs = 10;
constexpr size_t kReadChunk = 256;
constexpr size_t kReadWaitingLimit = 1 << 16;

// End of the block that starts at pos: cut directly after the ESC \ that
// takes the block over the limit, else at the end of the stream.
size_t BlockEnd(std::string_view stream, size_t pos, int limit) {
  size_t count = 0;
  while (pos < stream.size()) {
    if (stream[pos] == kESC && pos + 1 < stream.size() && stream[pos + 1] == '\\') {
      pos += 2;
      count += 2;
      if (count > static_cast<size_t>(limit)) break;
    } else {
      ++pos;
      ++count;
    }
  }
  return pos;
}

// A status byte that says "no communication" is no answer; ENQ's bit 2
// tells whether the last command was interpreted.
ExchangeResult ControlByteResult(uint8_t question, int got) {
  if (NoCommunication(got < 0 ? -1 : static_cast<int8_t>(got))) return ExchangeResult::kNoAnswer;
  if (question == kENQ && !(got & 0x04)) return ExchangeResult::kRefused;
  return ExchangeResult::kConfirmed;
}

}  // namespace

Drukarka::Drukarka() = default;

Drukarka::~Drukarka() {
  if (com.IsOpen()) com.Close();
}

void Drukarka::Reset() {
  default_wait_ms = 2000;
  port_name.clear();
  speed = 9600;
}

void Drukarka::SetLogging(bool on) {
  logging_ = on;
  com.SetLogging(on);
}

void Drukarka::SetLabels(const std::string& first, const std::string& second) {
  label1 = first.substr(0, kLabelLimit);
  label2 = second.substr(0, kLabelLimit);
}

void Drukarka::SetPort(const std::string& name, int32_t bits_per_second) {
  port_name = name.substr(0, kPortNameLimit);
  speed = bits_per_second;
}

bool Drukarka::Open() {
  line_not_quiet_ = false;
  if (port_name.empty()) return false;
  if (!opened_) logging_from_start_ = logging_;
  opened_ = true;
  if (logging_) WriteRunHeader();
  if (com.IsOpen()) com.Close();
  com.baud_rate = speed;
  return com.Open(port_name.c_str(), 1);
}

bool Drukarka::Close() {
  FlushExchange();
  return com.Close();
}

// ---- Exchange lines ----

std::string Drukarka::LinePrefix() const {
  return "<" + port_name + "><" + label1 + "," + label2 + "> ";
}

void Drukarka::WriteLine(const std::string& line) {
  if (logging_) LogToPortFile(line.c_str(), LogBaseNameOf(port_name).c_str());
  if (monitor) monitor->AppendLine(line);
}

void Drukarka::LogQuestion(std::string_view frame_mazovia) {
  if (frame_mazovia.empty()) return;
  WriteLine(LinePrefix() + Msg("Zapytanie: ", "Question: ") +
            FromMazovia(std::string(frame_mazovia)));
}

void Drukarka::LogAnswerText(std::string_view answer_cp1250) {
  if (answer_cp1250.empty()) return LogNoAnswer();
  WriteLine(LinePrefix() + Msg("Odpowiedź: ", "Answer: ") + std::string(answer_cp1250));
}

void Drukarka::LogAnswerByte(int byte) {
  WriteLine(LinePrefix() + Msg("Odpowiedź: ", "Answer: ") + TextF("0x%02X", byte & 0xFF));
}

void Drukarka::LogNoAnswer() {
  WriteLine(LinePrefix() + Msg("Brak odpowiedzi.", "No answer."));
}

void Drukarka::ReportNotQuiet(int limit_ms) {
  line_not_quiet_ = true;
  WriteLine(LinePrefix() +
            TextF(Msg("Port nie ucichł w ciągu %d ms.", "The port did not quiet down within %d ms.")
                      .c_str(),
                  limit_ms));
}

void Drukarka::Progress(const std::string& text) {
  WriteLine(text);
}

// ---- Run header ----

std::string Drukarka::RunKey() const {
  return LogFolder() + "/" + LogBaseNameOf(port_name);
}

RunHeader Drukarka::CurrentRunHeader() const {
  return {port_name,          speed, model_name_, software_version_, status_.unique_number,
          logging_from_start_};
}

void Drukarka::WriteRunHeader() {
  if (!FirstTimeInRun(RunKey())) return;
  LogToPortFile(RunHeaderLine(CurrentRunHeader()).c_str(), LogBaseNameOf(port_name).c_str());
  if (!status_.unique_number.empty()) FirstTimeInRun("id " + RunKey());
}

void Drukarka::WriteIdentityHeader() {
  if (!logging_ || status_.unique_number.empty() || !FirstTimeInRun("id " + RunKey())) return;
  LogToPortFile(IdentityHeaderLine(CurrentRunHeader()).c_str(), LogBaseNameOf(port_name).c_str());
}

// ---- Exchange records ----

void Drukarka::BeginExchange(std::string_view question, bool sent) {
  FlushExchange();
  question_end_ms_ = NowMs();
  ExchangeRecord record;
  record.time = CurrentClock().Local();
  record.port = port_name;
  record.question = std::string(question);
  pending_ = std::move(record);
  if (!sent) FinishExchange({}, ExchangeResult::kNotSent);
}

void Drukarka::FinishExchange(std::string_view answer, ExchangeResult result, bool timed) {
  if (!pending_) return;
  ExchangeRecord record = std::move(*pending_);
  pending_.reset();
  record.answer = std::string(answer);
  if (timed && !answer.empty()) record.response_ms = static_cast<int>(NowMs() - question_end_ms_);
  record.result = result;
  record.meaning = ExchangeMeaning(record.question, record.answer);
  if (exchanges) exchanges->Exchange(record);
}

void Drukarka::FlushExchange() {
  FinishExchange({}, ExchangeResult::kSent);
}

// ---- Frames ----

bool Drukarka::SendBytes(std::string_view bytes) {
  return com.Send(iBuffer(bytes));
}

bool Drukarka::SendFrame(std::string_view body, bool with_sum) {
  const std::string frame = BuildFrame(body, with_sum);
  LogQuestion(frame);
  const bool sent = SendBytes(frame);
  BeginExchange(frame, sent);
  return sent;
}

bool Drukarka::SendFramed(std::string_view body) {
  return SendFrame(body, true);
}

bool Drukarka::SendFramedNoSum(std::string_view body) {
  return SendFrame(body, false);
}

// A time-out before ESC \ is no answer; the bytes stay in answer.
bool Drukarka::ReadAnswer(int timeout_ms) {
  iBuffer reply;
  com.ReadUntil(reply, timeout_ms, "\x1b\\");
  answer = FromMazovia(reply.ToString());
  if (com.ReadCut()) ReportNotQuiet(ReadLimitMs(timeout_ms));
  const bool complete = answer.size() >= 2 && answer.compare(answer.size() - 2, 2, "\x1b\\") == 0;
  // An answer cut short keeps its bytes, but not a response time.
  FinishExchange(reply.View(), complete ? ExchangeResult::kConfirmed : ExchangeResult::kNoAnswer,
                 complete);
  if (complete)
    LogAnswerText(answer);
  else
    LogNoAnswer();
  return complete;
}

std::string Drukarka::ReadWaiting() {
  std::string got;
  uint8_t buffer[kReadChunk];
  uint32_t count = 0;
  while (got.size() < kReadWaitingLimit && com.ReadAvailable(buffer, kReadChunk, count) &&
         count > 0) {
    got.append(reinterpret_cast<const char*>(buffer), count);
  }
  return got;
}

// ---- Control bytes ----

int Drukarka::PollForByte(int polls, int poll_ms) {
  for (int i = 0; i < polls && !com.DeviceGone(); ++i) {
    SleepMs(poll_ms);
    const std::string got = ReadWaiting();
    if (!got.empty()) return static_cast<uint8_t>(got.back());
  }
  return -1;
}

int Drukarka::QueryControlByte(uint8_t byte, int polls, int poll_ms) {
  const std::string question(1, static_cast<char>(byte));
  LogQuestion(question);
  const bool sent = SendBytes(question);
  BeginExchange(question, sent);
  const int got = sent ? PollForByte(polls, poll_ms) : -1;
  FinishExchange(got < 0 ? std::string() : std::string(1, static_cast<char>(got)),
                 ControlByteResult(byte, got));
  if (got < 0) {
    LogNoAnswer();
    return -1;
  }
  LogAnswerByte(got);
  return static_cast<int8_t>(got);
}

int Drukarka::QueryENQ() {
  return QueryControlByte(kENQ, kEnqPolls, kEnqPollMs);
}

int Drukarka::QueryDLE() {
  return QueryControlByte(kDLE, kDlePolls, kDlePollMs);
}

bool Drukarka::SendBEL() {
  const std::string bell(1, static_cast<char>(kBEL));
  LogQuestion(bell);
  const bool sent = SendBytes(bell);
  BeginExchange(bell, sent);
  return sent;
}

// ---- Streams in confirmed blocks ----

bool Drukarka::AwaitBlockConfirmation() {
  int allowance = kBlockAllowanceMs;
  int step = kBlockFirstStepMs;
  const std::string enq(1, static_cast<char>(kENQ));
  for (;;) {
    const std::string got = ReadWaiting();
    if (!got.empty()) {
      const uint8_t last = static_cast<uint8_t>(got.back());
      LogAnswerByte(last);
      if ((last >> 4) == 6) {
        const bool confirmed = (last & 0x04) != 0;
        FinishExchange(got, confirmed ? ExchangeResult::kConfirmed : ExchangeResult::kRefused);
        return confirmed;
      }
      FinishExchange(got, ExchangeResult::kNoAnswer);
      LogQuestion(enq);
      BeginExchange(enq, SendBytes(enq));
    }
    if (allowance <= 0 || com.DeviceGone()) {
      LogNoAnswer();
      FinishExchange({}, ExchangeResult::kNoAnswer);
      return false;
    }
    PumpMessages();
    SleepMs(step);
    allowance -= step;
    step *= 2;
  }
}

bool Drukarka::SendStreamConfirmed(const iBuffer& stream, int block_limit) {
  const std::string_view bytes = stream.View();
  size_t pos = 0;
  while (bytes.size() - pos >= 2) {
    const size_t end = BlockEnd(bytes, pos, block_limit);
    std::string block(bytes.substr(pos, end - pos));
    pos = end;
    LogQuestion(block);
    block += static_cast<char>(kENQ);
    const bool sent = SendBytes(block);
    BeginExchange(block, sent);
    if (!sent) return false;
    if (!AwaitBlockConfirmation()) return false;
    if (stream_progress) stream_progress(pos, bytes.size());
  }
  return true;
}

}  // namespace tavena
