#include "checksum.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace kwinst {
namespace {

constexpr uint32_t kPolynomial = 0x04C11DB7;

/// The remainder of `value` times x^bits.
constexpr uint32_t Shifted(uint32_t value, int bits) {
  for (int i = 0; i < bits; ++i) {
    value = (value << 1) ^ ((value & 0x80000000U) != 0 ? kPolynomial : 0);
  }
  return value;
}

using Tables = std::array<std::array<uint32_t, 256>, 8>;

/// Table `k` holds the remainder of each byte that has `k` bytes behind it.
constexpr Tables MakeTables() {
  Tables tables{};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    tables[0][byte] = Shifted(byte << 24, 8);
    for (size_t k = 1; k < tables.size(); ++k) {
      tables[k][byte] = Shifted(tables[k - 1][byte], 8);
    }
  }
  return tables;
}

constexpr Tables kTables = MakeTables();

#if defined(__x86_64__)

#define KWINST_FOLDING __attribute__((target("pclmul,ssse3")))

/// 16 bytes as a polynomial: the first byte has the highest powers.
KWINST_FOLDING __m128i Load(const unsigned char* data) {
  const __m128i reversed = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data)), reversed);
}

/// What `block` is worth `Bits` bits further on, in 128 bits: not reduced, but with the same
/// remainder.
template <int Bits>
KWINST_FOLDING __m128i MovedOn(__m128i block) {
  constexpr uint32_t kHigh = Shifted(1, Bits + 64);
  constexpr uint32_t kLow = Shifted(1, Bits);
  const __m128i factors = _mm_set_epi64x(kHigh, kLow);
  return _mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x11),
                       _mm_clmulepi64_si128(block, factors, 0x00));
}

/// UpdateCrc for at least 64 bytes, by carry-less multiplication.
KWINST_FOLDING uint32_t UpdateCrcByFolding(uint32_t crc, const unsigned char* data, size_t size) {
  // Four blocks side by side keep the multiplier busy.
  __m128i blocks[] = {Load(data), Load(data + 16), Load(data + 32), Load(data + 48)};
  blocks[0] = _mm_xor_si128(blocks[0], _mm_set_epi32(static_cast<int>(crc), 0, 0, 0));
  for (data += 64, size -= 64; size >= 64; data += 64, size -= 64) {
    for (size_t i = 0; i < 4; ++i) {
      blocks[i] = _mm_xor_si128(MovedOn<512>(blocks[i]), Load(data + 16 * i));
    }
  }
  __m128i block = blocks[0];
  for (size_t i = 1; i < 4; ++i) {
    block = _mm_xor_si128(MovedOn<128>(block), blocks[i]);
  }
  for (; size >= 16; data += 16, size -= 16) {
    block = _mm_xor_si128(MovedOn<128>(block), Load(data));
  }
  // What is left is 16 bytes with the remainder of all that was read, and the tail.
  std::array<unsigned char, 16> folded;
  _mm_storeu_si128(reinterpret_cast<__m128i*>(folded.data()), block);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(folded.data()), Load(folded.data()));
  return UpdateCrcByTable(UpdateCrcByTable(0, folded.data(), folded.size()), data, size);
}

#undef KWINST_FOLDING

#endif  // __x86_64__

struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number != -1) close(number);
  }
  const int number;
};

}  // namespace

uint32_t UpdateCrcByTable(uint32_t crc, const unsigned char* data, size_t size) {
  for (; size >= 8; data += 8, size -= 8) {
    crc = kTables[7][(crc >> 24) ^ data[0]] ^ kTables[6][((crc >> 16) & 0xFF) ^ data[1]] ^
          kTables[5][((crc >> 8) & 0xFF) ^ data[2]] ^ kTables[4][(crc & 0xFF) ^ data[3]] ^
          kTables[3][data[4]] ^ kTables[2][data[5]] ^ kTables[1][data[6]] ^ kTables[0][data[7]];
  }
  for (; size > 0; ++data, --size) crc = (crc << 8) ^ kTables[0][(crc >> 24) ^ *data];
  return crc;
}

uint32_t UpdateCrc(uint32_t crc, const unsigned char* data, size_t size) {
#if defined(__x86_64__)
  static const bool can_fold =
      __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("ssse3") != 0;
  if (can_fold && size >= 64) return UpdateCrcByFolding(crc, data, size);
#endif
  return UpdateCrcByTable(crc, data, size);
}

uint32_t FinishedCrc(uint32_t crc, uint64_t length) {
  for (; length != 0; length >>= 8) {
    const auto byte = static_cast<unsigned char>(length & 0xFF);
    crc = UpdateCrcByTable(crc, &byte, 1);
  }
  return ~crc;
}

int FileChecksum::Compute(const std::string& path, uint64_t size, uint32_t& checksum) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.number == -1) return errno;
  uint32_t crc = 0;
  uint64_t length = 0;
  ssize_t count = 0;
  while (length < size && (count = read(file.number, buffer_.data(), buffer_.size())) > 0) {
    crc = UpdateCrc(crc, buffer_.data(), static_cast<size_t>(count));
    length += static_cast<uint64_t>(count);
  }
  if (count < 0) return errno;
  checksum = FinishedCrc(crc, length);
  return 0;
}

}  // namespace kwinst
