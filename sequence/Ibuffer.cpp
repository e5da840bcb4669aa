#include "Ibuffer.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "Codepage.h"

namespace tavena {

namespace {
int32_t TextCapacity(size_t n) {
  return std::max<int32_t>(iBuffer::kMinimumCapacity, static_cast<int32_t>(2 * n));
}
}  // namespace

void iBuffer::Allocate(int32_t capacity) {
  // One guard byte past the capacity keeps the text terminated when full.
  data_ = std::make_unique<uint8_t[]>(static_cast<size_t>(capacity) + 1);
  capacity_ = capacity;
  length_ = 0;
}

iBuffer::iBuffer() {
  Allocate(kMinimumCapacity);
}

iBuffer::iBuffer(const char* text) : iBuffer(std::string_view(text ? text : "")) {}

iBuffer::iBuffer(std::string_view bytes) {
  Allocate(TextCapacity(bytes.size()));
  AppendBytes(bytes.data(), static_cast<int32_t>(bytes.size()));
}

iBuffer::iBuffer(const iBuffer& other) {
  Allocate(other.capacity_);
  AppendBytes(other.Data(), other.length_);
}

iBuffer& iBuffer::operator=(const iBuffer& other) {
  if (this != &other) {
    iBuffer copy(other);
    *this = std::move(copy);
  }
  return *this;
}

iBuffer::iBuffer(iBuffer&& other) noexcept
    : length_(other.length_), capacity_(other.capacity_), data_(std::move(other.data_)) {
  other.Allocate(kMinimumCapacity);
}

iBuffer& iBuffer::operator=(iBuffer&& other) noexcept {
  if (this != &other) {
    data_ = std::move(other.data_);
    length_ = other.length_;
    capacity_ = other.capacity_;
    other.Allocate(kMinimumCapacity);
  }
  return *this;
}

void iBuffer::Clear() {
  std::memset(data_.get(), 0, static_cast<size_t>(capacity_) + 1);
  length_ = 0;
}

void iBuffer::Reallocate(int32_t new_capacity) {
  new_capacity = std::max(new_capacity, length_);
  auto fresh = std::make_unique<uint8_t[]>(static_cast<size_t>(new_capacity) + 1);
  std::memcpy(fresh.get(), data_.get(), static_cast<size_t>(length_));
  data_ = std::move(fresh);
  capacity_ = new_capacity;
}

void iBuffer::EnsureRoom(int32_t k) {
  if (length_ + k + 10 > capacity_) Reallocate((capacity_ + k) * 2 + 10);
}

void iBuffer::AppendBytes(const void* bytes, int32_t count) {
  if (count <= 0) return;
  EnsureRoom(count);
  std::memcpy(data_.get() + length_, bytes, static_cast<size_t>(count));
  length_ += count;
}

void iBuffer::AppendByte(uint8_t byte) {
  AppendBytes(&byte, 1);
}

void iBuffer::AppendText(const char* text) {
  if (text) AppendBytes(text, static_cast<int32_t>(std::strlen(text)));
}

void iBuffer::AppendBuffer(const iBuffer& other) {
  if (&other == this) {
    const iBuffer copy(other);
    AppendBytes(copy.Data(), copy.length_);
  } else {
    AppendBytes(other.Data(), other.length_);
  }
}

void iBuffer::CommitAppended(int32_t n) {
  length_ += std::clamp(n, 0, capacity_ - length_);
}

void iBuffer::Truncate(int32_t n) {
  if (n < 0 || n >= length_) return;
  std::memset(data_.get() + n, 0, static_cast<size_t>(length_ - n));
  length_ = n;
}

bool iBuffer::LoadFromFile(const std::string& path) {
  Clear();
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return false;
  long size = -1;
  if (std::fseek(f, 0, SEEK_END) == 0) size = std::ftell(f);
  std::rewind(f);
  if (size <= 0 || size > INT32_MAX / 2) {
    std::fclose(f);
    return false;
  }
  const auto n = static_cast<int32_t>(size);
  Allocate(n + n / 5);
  const size_t got = std::fread(data_.get(), 1, static_cast<size_t>(n), f);
  std::fclose(f);
  length_ = static_cast<int32_t>(got);
  if (length_ == 0) return false;
  return true;
}

bool iBuffer::SaveToFile(const std::string& path) const {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return false;
  const size_t put = std::fwrite(data_.get(), 1, static_cast<size_t>(length_), f);
  const bool closed = std::fclose(f) == 0;
  return closed && put == static_cast<size_t>(length_);
}

void iBuffer::ToMazovia() {
  tavena::ToMazovia(data_.get(), static_cast<size_t>(length_));
}

void iBuffer::FromMazovia() {
  tavena::FromMazovia(data_.get(), static_cast<size_t>(length_));
}

std::string iBuffer::HexText(uint64_t value, int width) {
  char text[17];
  std::snprintf(text, sizeof text, "%016" PRIX64, value);
  const int keep = std::clamp(2 * width, 0, 16);
  return std::string(text + 16 - keep);
}

int64_t iBuffer::ParseDecimal(const char* text) {
  if (!text) return 0;
  while (*text == ' ') ++text;
  bool negative = false;
  if (*text == '+' || *text == '-') negative = *text++ == '-';
  while (*text == '0') ++text;
  uint64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text)
    value = value * 10 + static_cast<uint64_t>(*text - '0');
  return static_cast<int64_t>(negative ? 0 - value : value);
}

}  // namespace tavena
