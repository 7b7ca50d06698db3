#ifndef QTOCLIB_CHECKSUM_H_
#define QTOCLIB_CHECKSUM_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kwinst {

/// The checksum that cksum(1) prints, of one file after another.
class FileChecksum {
 public:
  /// Computes the checksum of the file `path` of `size` bytes, which is no symbolic link. Bytes
  /// after `size` are not read, which saves a system call for each file. Returns 0, or the error
  /// number when the file cannot be read.
  int Compute(const std::string& path, uint64_t size, uint32_t& checksum);

 private:
  std::vector<unsigned char> buffer_ = std::vector<unsigned char>(1 << 16);
};

/// The remainder `crc` of a text, carried on over the next `size` bytes: as fast as the processor
/// can, and by tables alone. Both give the same.
uint32_t UpdateCrc(uint32_t crc, const unsigned char* data, size_t size);
uint32_t UpdateCrcByTable(uint32_t crc, const unsigned char* data, size_t size);

/// The checksum of a text with the remainder `crc`: the bytes of its length follow it, the lowest
/// first.
uint32_t FinishedCrc(uint32_t crc, uint64_t length);

}  // namespace kwinst

#endif  // QTOCLIB_CHECKSUM_H_
