#ifndef KWBATCH_ARCHIVE_READER_H_
#define KWBATCH_ARCHIVE_READER_H_

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <string>

struct archive;
struct archive_entry;

/// One member of an archive.
struct ArchiveMember {
  std::string path;  ///< that of a directory ends in a slash
  mode_t mode;       ///< with its type
  uint64_t size;
  std::string link;  ///< where a symbolic link or a hard link leads
};

/// Reads an archive from its beginning to its end, whatever it is compressed with. Every function
/// throws a Refusal when the archive is damaged or cut off.
class ArchiveReader {
 public:
  explicit ArchiveReader(std::string path);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  /// False at the end, when all was read and nothing is missing.
  bool Next(ArchiveMember& member);

  /// Reads the content of the member, and returns its remainder: see FinishedCrc. With a `text`,
  /// the content is appended to it.
  uint32_t ReadContent(std::string* text = nullptr);

  /// Unpacks the member below a directory, which has no links out of it.
  void Unpack(const std::string& dir);

  /// Was the archive made with compress?
  bool IsMadeByCompress() const;

 private:
  static ssize_t Feed(struct archive* reader, void* self, const void** data);
  void ReadRest();
  [[noreturn]] void Fail(struct archive* failed) const;

  std::string path_;
  struct archive* packed_;  ///< takes the compression off
  struct archive* tar_;
  struct archive_entry* entry_ = nullptr;
  std::string name_;              ///< the path of the member
  std::array<char, 512> last_{};  ///< the last bytes of the tar archive: all zero when it is whole
};

#endif  // KWBATCH_ARCHIVE_READER_H_
