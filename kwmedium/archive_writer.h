#ifndef KWMEDIUM_ARCHIVE_WRITER_H_
#define KWMEDIUM_ARCHIVE_WRITER_H_

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "sources.h"

struct archive;

enum class Packing { kPlain, kCompress, kGzip, kZstd };

/// The name of a component's archive.
std::string ArchiveName(const std::string& component, Packing packing);

/// Writes one archive. The same input gives the same bytes, whoever writes it and wherever it is:
/// owner 0, no names of users, times not above `latest`. Every function throws a Refusal.
class ArchiveWriter {
 public:
  ArchiveWriter(std::string path, Packing packing, std::time_t latest);
  ~ArchiveWriter();
  ArchiveWriter(const ArchiveWriter&) = delete;
  ArchiveWriter& operator=(const ArchiveWriter&) = delete;

  /// Adds a source under this path, and before it the directories above it. Returns its line in a
  /// manifest, "MODE SIZE CHECKSUM"; empty for what is no file.
  std::string Add(const std::string& path, const Source& source);

  /// Adds a file of this text, and returns the same.
  std::string AddText(const std::string& path, const std::string& text);

  void Close();

 private:
  struct FreeArchive {
    void operator()(struct archive* archive) const;
  };

  void AddDirectories(const std::string& path);
  void AddHeader(const std::string& path, mode_t mode, int64_t size, std::time_t time,
                 const std::string& link = "");
  uint32_t AddContent(const Source& source);
  void WriteData(const unsigned char* data, size_t size);
  static ssize_t Store(struct archive* writer, void* self, const void* data, size_t size);
  void RequireDone(int status, const std::string& member = "") const;

  std::string path_;
  int file_;
  int error_ = 0;  ///< the number of the first error when storing
  std::time_t latest_;
  std::unique_ptr<struct archive, FreeArchive> archive_;
  std::set<std::string> directories_;
  std::vector<unsigned char> buffer_ = std::vector<unsigned char>(1 << 18);
};

#endif  // KWMEDIUM_ARCHIVE_WRITER_H_
