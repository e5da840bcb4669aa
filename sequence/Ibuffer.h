// iBuffer: the growable byte buffer shared by the whole program (compiled
// sequences, frames, replies). The allocation is always zero-filled and one
// zero byte more than the capacity is kept, so the bytes after Length() read
// as zero and Text() is always a valid zero-terminated string.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tavena {

class iBuffer {
 public:
  static constexpr int32_t kMinimumCapacity = 100;

  iBuffer();
  // Holds the text (up to its first zero byte); capacity 2·n, at least 100.
  explicit iBuffer(const char* text);
  // Holds the bytes; same capacity rule as a text.
  explicit iBuffer(std::string_view bytes);

  iBuffer(const iBuffer& other);
  iBuffer& operator=(const iBuffer& other);
  // A moved-from buffer is a new empty buffer.
  iBuffer(iBuffer&& other) noexcept;
  iBuffer& operator=(iBuffer&& other) noexcept;
  ~iBuffer() = default;

  int32_t Length() const { return length_; }
  int32_t Capacity() const { return capacity_; }
  bool Empty() const { return length_ == 0; }
  uint8_t* Data() { return data_.get(); }
  const uint8_t* Data() const { return data_.get(); }
  const char* Text() const { return reinterpret_cast<const char*>(data_.get()); }
  uint8_t operator[](int32_t i) const { return data_[i]; }
  std::string ToString() const { return std::string(Text(), static_cast<size_t>(length_)); }
  std::string_view View() const { return std::string_view(Text(), static_cast<size_t>(length_)); }

  // Zero-fills the whole allocation and sets the length to 0; keeps the capacity.
  void Clear();
  // Growth rule before adding k bytes: when length + k + 10 > capacity the
  // allocation becomes (capacity + k) * 2 + 10 bytes.
  void EnsureRoom(int32_t k);
  // Reallocates to exactly new_capacity bytes (never below the length).
  void Reallocate(int32_t new_capacity);

  void AppendByte(uint8_t byte);
  // Appends up to the first zero byte of text.
  void AppendText(const char* text);
  // Appends exactly other.Length() bytes; zero bytes survive.
  void AppendBuffer(const iBuffer& other);
  void AppendBytes(const void* bytes, int32_t count);

  // Direct filling (used by readers): free space after the last byte, then
  // CommitAppended to take n bytes written there into the length.
  uint8_t* FreeSpace() { return data_.get() + length_; }
  int32_t FreeSpaceSize() const { return capacity_ - length_; }
  void CommitAppended(int32_t n);
  // Shortens the buffer to n bytes (zero-filling what is cut off).
  void Truncate(int32_t n);

  // Binary read of a whole file; false and an empty buffer when the file is
  // missing, unreadable or empty. Capacity becomes size + size / 5.
  bool LoadFromFile(const std::string& path);
  // Binary write of exactly Length() bytes; false when it cannot be written.
  bool SaveToFile(const std::string& path) const;

  // In-place code-page conversion of all bytes.
  void ToMazovia();
  void FromMazovia();

  // Last 2·width hex digits of "%016llX" of value (width 1: two digits).
  static std::string HexText(uint64_t value, int width);
  // Spaces, optional sign, leading zeros, then decimal digits up to the
  // first non-digit.
  static int64_t ParseDecimal(const char* text);

 private:
  void Allocate(int32_t capacity);

  int32_t length_ = 0;
  int32_t capacity_ = 0;
  std::unique_ptr<uint8_t[]> data_;
};

}  // namespace tavena
