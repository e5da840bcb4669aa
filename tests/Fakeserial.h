// A scripted serial device on the virtual clock: timed or answering arrivals, a
// transmit queue that drains at a set pace, writes that fail or report 0 like WINE.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sequence/Clock.h"
#include "transport/Serialdevice.h"

namespace tavena::test {

struct FakeSerialState {
  std::multimap<int64_t, std::string> arrivals;  // clock ms -> bytes that arrive then
  std::function<std::string(const std::string& written_now)> on_write;  // reply to a write
  int64_t accept_limit = -1;         // total bytes accepted before writes fail (-1: no limit)
  bool report_zero_written = false;  // a good write reports 0 bytes (as under WINE)
  int drain_ms_per_byte = 0;         // transmit queue empties at this pace (0: at once)
  int open_error = 0;                // non-zero: opening fails with this error
  // What the channel did:
  std::string written;                // every byte the device took
  std::vector<uint32_t> write_sizes;  // length asked by each write
  std::vector<int64_t> write_times;   // clock ms of each write
  std::vector<std::string> opened_names;
  LineSettings line;
  SerialTimeouts timeouts;
  uint32_t queue_size = 0;
  std::vector<uint32_t> escapes;
  std::vector<uint32_t> purges;
  int transmit_waits = 0;
  bool closed = false;
  std::string incoming;    // arrived, not yet read
  int64_t tx_pending = 0;  // bytes of the last write not yet "on the wire" at tx_since
  int64_t tx_since = 0;

  void Deliver() {
    const int64_t now = NowMs();
    while (!arrivals.empty() && arrivals.begin()->first <= now) {
      incoming += arrivals.begin()->second;
      arrivals.erase(arrivals.begin());
    }
  }
  uint32_t OutQueue() const {
    if (drain_ms_per_byte == 0) return 0;
    const int64_t sent = (NowMs() - tx_since) / drain_ms_per_byte;
    return static_cast<uint32_t>(std::max<int64_t>(0, tx_pending - sent));
  }
};

class FakeSerial : public SerialDevice {
 public:
  explicit FakeSerial(std::shared_ptr<FakeSerialState> state) : s_(std::move(state)) {}

  uint32_t SetupQueues(uint32_t in_size, uint32_t) override {
    s_->queue_size = in_size;
    return 0;
  }
  bool Escape(uint32_t code) override {
    s_->escapes.push_back(code);
    return true;
  }
  bool Purge(uint32_t flags) override {
    s_->purges.push_back(flags);
    s_->incoming.clear();
    return true;
  }
  bool ClearErrors(uint32_t& in_queue, uint32_t& out_queue) override {
    s_->Deliver();
    in_queue = static_cast<uint32_t>(s_->incoming.size());
    out_queue = s_->OutQueue();
    return true;
  }
  bool Configure(const LineSettings& line, const SerialTimeouts& timeouts) override {
    s_->line = line;
    s_->timeouts = timeouts;
    return true;
  }
  bool Read(uint8_t* dest, uint32_t max, uint32_t& got) override {
    s_->Deliver();
    got = static_cast<uint32_t>(std::min<size_t>(max, s_->incoming.size()));
    std::copy_n(s_->incoming.begin(), got, dest);
    s_->incoming.erase(0, got);
    return true;
  }
  bool Write(const uint8_t* bytes, uint32_t n, uint32_t& written) override {
    s_->write_sizes.push_back(n);
    s_->write_times.push_back(NowMs());
    const int64_t room = s_->accept_limit - static_cast<int64_t>(s_->written.size());
    const uint32_t take =
        s_->accept_limit < 0 ? n : static_cast<uint32_t>(std::clamp<int64_t>(room, 0, n));
    const std::string now(reinterpret_cast<const char*>(bytes), take);
    s_->written += now;
    s_->tx_pending = s_->OutQueue() + take;
    s_->tx_since = NowMs();
    if (s_->on_write) s_->incoming += s_->on_write(now);
    written = s_->report_zero_written ? 0 : take;
    return take == n;
  }
  bool WaitTransmitEmpty() override {
    ++s_->transmit_waits;
    return true;
  }
  void Close() override { s_->closed = true; }

 private:
  std::shared_ptr<FakeSerialState> s_;
};

// Every open in the scope gets a FakeSerial on one shared state (or fails with open_error).
class ScopedFakeSerial {
 public:
  ScopedFakeSerial() : state(std::make_shared<FakeSerialState>()) {
    SetSerialOpener([s = state](const std::string& name, int& error) {
      s->opened_names.push_back(name);
      error = s->open_error;
      if (error) return std::unique_ptr<SerialDevice>();
      s->closed = false;
      return std::unique_ptr<SerialDevice>(new FakeSerial(s));
    });
  }
  ~ScopedFakeSerial() { SetSerialOpener(nullptr); }

  std::shared_ptr<FakeSerialState> state;
};

// Pretends to run under WINE (or not) for a scope; create it before the FastCom.
class ScopedWine {
 public:
  explicit ScopedWine(bool under_wine) { SetWineOverride(under_wine); }
  ~ScopedWine() { SetWineOverride(std::nullopt); }
};

}  // namespace tavena::test
