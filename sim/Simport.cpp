#include "Simport.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <map>

#include "sequence/Clock.h"

namespace tavena {

struct SimPortEntry {
  SimPrinter* printer = nullptr;  // null once the SimPort is gone
  bool open = false;
  int opens = 0;
  int baud = 0;
};

namespace {

std::map<std::string, std::shared_ptr<SimPortEntry>>& Registry() {
  static std::map<std::string, std::shared_ptr<SimPortEntry>> ports;
  return ports;
}

std::string Key(std::string name) {
  if (name.rfind("\\\\.\\", 0) == 0) name.erase(0, 4);
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return name;
}

std::unique_ptr<SerialDevice> OpenSimPort(const std::string& port_name, int& error) {
  const auto it = Registry().find(Key(port_name));
  if (it == Registry().end() || it->second->printer == nullptr) {
    error = ENOENT;
    return nullptr;
  }
  SimPortEntry& entry = *it->second;
  if (entry.open) {
    error = EBUSY;
    return nullptr;
  }
  if (entry.printer->LineClosed()) {
    error = EIO;
    return nullptr;
  }
  error = 0;
  return std::make_unique<SimSerialDevice>(it->second);
}

}  // namespace

SimSerialDevice::SimSerialDevice(std::shared_ptr<SimPortEntry> entry) : entry_(std::move(entry)) {
  entry_->open = true;
  ++entry_->opens;
}

SimSerialDevice::~SimSerialDevice() {
  Close();
}

SimPrinter* SimSerialDevice::Printer() const {
  if (closed_ || entry_->printer == nullptr || entry_->printer->LineClosed()) return nullptr;
  return entry_->printer;
}

bool SimSerialDevice::Gone() const {
  return !closed_ && Printer() == nullptr;
}

bool SimSerialDevice::Purge(uint32_t flags) {
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  if (flags & kPurgeRxClear) p->DropArrived(NowMs());
  return true;
}

bool SimSerialDevice::ClearErrors(uint32_t& in_queue, uint32_t& out_queue) {
  in_queue = out_queue = 0;
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  const int64_t now = NowMs();
  in_queue = static_cast<uint32_t>(p->Available(now));
  out_queue = static_cast<uint32_t>(p->PendingInput(now));
  return true;
}

bool SimSerialDevice::Configure(const LineSettings& line, const SerialTimeouts& timeouts) {
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  timeouts_ = timeouts;
  entry_->baud = line.baud_rate;
  p->SetClientBaud(line.baud_rate);
  return true;
}

// Returns what has arrived; when nothing has, waits on the current clock
// for the first byte, at most the total read time-out.
bool SimSerialDevice::Read(uint8_t* dest, uint32_t max, uint32_t& got) {
  got = 0;
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  if (max == 0) return true;
  const int64_t now = NowMs();
  if (p->Available(now) == 0) {
    const int64_t limit =
        int64_t{timeouts_.read_constant} + int64_t{timeouts_.read_multiplier} * max;
    const int64_t next = p->NextReadyMs();
    const int64_t wait =
        next >= 0 && next - now <= limit ? std::max<int64_t>(0, next - now) : limit;
    SleepMs(static_cast<int>(wait));
    if (Printer() == nullptr) return false;
  }
  const std::string bytes = p->Take(NowMs(), max);
  std::copy(bytes.begin(), bytes.end(), dest);
  got = static_cast<uint32_t>(bytes.size());
  return true;
}

bool SimSerialDevice::Write(const uint8_t* bytes, uint32_t n, uint32_t& written) {
  written = 0;
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  p->Receive(std::string_view(reinterpret_cast<const char*>(bytes), n), NowMs());
  written = n;
  return true;
}

bool SimSerialDevice::WaitTransmitEmpty() {
  SimPrinter* p = Printer();
  if (p == nullptr) return false;
  const int64_t wait = p->InputDoneMs() - NowMs();
  if (wait > 0) SleepMs(static_cast<int>(wait));
  return true;
}

void SimSerialDevice::Close() {
  if (closed_) return;
  closed_ = true;
  entry_->open = false;
}

SimPort::SimPort(std::string name, SimPrinter& printer)
    : name_(std::move(name)), entry_(std::make_shared<SimPortEntry>()) {
  entry_->printer = &printer;
  if (Registry().empty()) SetSerialOpener(OpenSimPort);
  Registry()[Key(name_)] = entry_;
}

SimPort::~SimPort() {
  entry_->printer = nullptr;
  const auto it = Registry().find(Key(name_));
  if (it != Registry().end() && it->second == entry_) Registry().erase(it);
  if (Registry().empty()) SetSerialOpener({});
}

bool SimPort::IsOpen() const {
  return entry_->open;
}

int SimPort::OpenCount() const {
  return entry_->opens;
}

int SimPort::LastBaud() const {
  return entry_->baud;
}

}  // namespace tavena
