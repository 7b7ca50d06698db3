#include "archive_reader.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

#include "checksum.h"
#include "files.h"
#include "interruption.h"
#include "refusal.h"
#include "texts.h"

ArchiveReader::ArchiveReader(std::string path)
    : path_(std::move(path)), packed_(archive_read_new()), tar_(archive_read_new()) {
  RequireRegular(path_);
  constexpr size_t kBlock = 1 << 16;
  archive_read_support_filter_compress(packed_);
  archive_read_support_filter_gzip(packed_);
  archive_read_support_filter_zstd(packed_);
  archive_read_support_format_raw(packed_);
  archive_read_support_format_tar(tar_);
  last_.fill(1);
  struct archive_entry* unused = nullptr;
  std::error_code error;
  if (std::filesystem::file_size(path_, error) == 0 && !error) {
    archive_set_error(packed_, 0, "%s", Text("ReasonEmpty", "The archive is empty").c_str());
    Fail(packed_);
  }
  if (archive_read_open_filename(packed_, path_.c_str(), kBlock) != ARCHIVE_OK ||
      archive_read_next_header(packed_, &unused) != ARCHIVE_OK) {
    Fail(packed_);
  }
  if (archive_read_open(tar_, this, nullptr, Feed, nullptr) != ARCHIVE_OK) Fail(tar_);
}

ArchiveReader::~ArchiveReader() {
  archive_read_free(tar_);
  archive_read_free(packed_);
}

/// The reasons that libarchive gives differ for one and the same damage.
void ArchiveReader::Fail(struct archive* failed) const {
  const char* reason = archive_error_string(failed);
  throw Refusal(Text("NoArchive", "{1}: damaged, cut off or no archive ({2}).\n",
                     {path_, reason != nullptr ? reason : Text("ReasonUnknown", "unknown")}));
}

/// Hands the tar archive on, block by block, and keeps its last bytes.
ssize_t ArchiveReader::Feed(struct archive* reader, void* self, const void** data) {
  auto& own = *static_cast<ArchiveReader*>(self);
  size_t size = 0;
  la_int64_t offset = 0;
  const int status = archive_read_data_block(own.packed_, data, &size, &offset);
  if (status == ARCHIVE_EOF) return 0;
  if (status != ARCHIVE_OK) {
    archive_set_error(reader, archive_errno(own.packed_), "%s", archive_error_string(own.packed_));
    return -1;
  }
  const size_t kept = std::min(size, own.last_.size());
  std::memmove(own.last_.data(), own.last_.data() + kept, own.last_.size() - kept);
  std::memcpy(own.last_.data() + own.last_.size() - kept,
              static_cast<const char*>(*data) + size - kept, kept);
  return static_cast<ssize_t>(size);
}

/// An archive that ends between two members looks whole, except that its empty last blocks are
/// missing.
void ArchiveReader::ReadRest() {
  const void* data = nullptr;
  ssize_t size = 0;
  while ((size = Feed(tar_, this, &data)) > 0) SafePoint();
  if (size < 0) Fail(tar_);
  if (std::all_of(last_.begin(), last_.end(), [](char c) { return c == '\0'; })) return;
  archive_set_error(tar_, 0, "%s", Text("ReasonNoEnd", "Its end is missing").c_str());
  Fail(tar_);
}

bool ArchiveReader::Next(ArchiveMember& member) {
  SafePoint();
  const int status = archive_read_next_header(tar_, &entry_);
  if (status == ARCHIVE_EOF) {
    ReadRest();
    return false;
  }
  // Some archives say that a name is UTF-8, which not every locale can express: a warning.
  if (status != ARCHIVE_OK && status != ARCHIVE_WARN) Fail(tar_);
  const char* path = archive_entry_pathname(entry_);
  if (path == nullptr) path = archive_entry_pathname_utf8(entry_);
  if (path == nullptr && status == ARCHIVE_WARN) Fail(tar_);
  const char* link = archive_entry_symlink(entry_);
  if (link == nullptr) link = archive_entry_hardlink(entry_);
  name_ = path != nullptr ? path : "";
  member.path = name_;
  member.link = link != nullptr ? link : "";
  member.mode = archive_entry_mode(entry_);
  member.size = static_cast<uint64_t>(archive_entry_size(entry_));
  return true;
}

uint32_t ArchiveReader::ReadContent(std::string* text) {
  uint32_t crc = 0;
  const void* data = nullptr;
  size_t size = 0;
  la_int64_t offset = 0;
  int status = ARCHIVE_OK;
  while ((status = archive_read_data_block(tar_, &data, &size, &offset)) == ARCHIVE_OK) {
    crc = kwinst::UpdateCrc(crc, static_cast<const unsigned char*>(data), size);
    if (text != nullptr) text->append(static_cast<const char*>(data), size);
    SafePoint();
  }
  if (status != ARCHIVE_EOF) Fail(tar_);
  return crc;
}

void ArchiveReader::Unpack(const std::string& dir) {
  archive_entry_set_pathname(entry_, (dir + "/" + name_).c_str());
  const char* link = archive_entry_hardlink(entry_);
  if (link != nullptr) {
    const std::string target = dir + "/" + link;
    archive_entry_set_hardlink(entry_, target.c_str());
  }
  // The bits for set-user-id and set-group-id are dropped when the owner is another one.
  archive_entry_set_uid(entry_, geteuid());
  archive_entry_set_gid(entry_, getegid());
  constexpr int kHow = ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME |
                       ARCHIVE_EXTRACT_SECURE_NODOTDOT | ARCHIVE_EXTRACT_SECURE_SYMLINKS;
  if (archive_read_extract(tar_, entry_, kHow) != ARCHIVE_OK) Fail(tar_);
}

bool ArchiveReader::IsMadeByCompress() const {
  return archive_filter_code(packed_, 0) == ARCHIVE_FILTER_COMPRESS;
}
