#include "archive_writer.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "checksum.h"
#include "kwbatch/interruption.h"
#include "kwbatch/refusal.h"

namespace {

constexpr mode_t kModeBits = 07777;

std::string ManifestLine(mode_t mode, uint64_t size, uint32_t crc) {
  std::string octal;
  for (mode &= kModeBits; mode != 0; mode >>= 3) {
    octal.insert(octal.begin(), static_cast<char>('0' + (mode & 7)));
  }
  if (octal.empty()) octal = "0";
  return octal + " " + std::to_string(size) + " " + std::to_string(kwinst::FinishedCrc(crc, size)) +
         "\n";
}

/// A file that is open for reading.
struct OpenFile {
  explicit OpenFile(const std::string& path)
      : number(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    if (number < 0) throw Refusal(path + ": " + std::strerror(errno) + ".\n");
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { close(number); }
  const int number;
};

bool IsUnchanged(const struct stat& a, const struct stat& b) {
  return a.st_ino == b.st_ino && a.st_mode == b.st_mode && a.st_size == b.st_size &&
         a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

std::string TargetOf(const std::string& link) {
  std::error_code error;
  std::string target = std::filesystem::read_symlink(link, error);
  if (error) throw Refusal(link + ": " + error.message() + ".\n");
  return target;
}

}  // namespace

std::string ArchiveName(const std::string& component, Packing packing) {
  // Only what "compress" makes has a name of its own: tar knows the others by their content.
  return component + (packing == Packing::kCompress ? ".Z" : "");
}

void ArchiveWriter::FreeArchive::operator()(struct archive* archive) const {
  // What is not closed by now is of no use to anybody.
  archive_write_fail(archive);
  archive_write_free(archive);
}

ArchiveWriter::ArchiveWriter(std::string path, Packing packing, std::time_t latest)
    : path_(std::move(path)),
      file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)),
      latest_(latest),
      archive_(archive_write_new()) {
  if (file_ < 0) throw Refusal(path_ + ": " + std::strerror(errno) + ".\n");
  struct archive* archive = archive_.get();
  archive_write_set_format_ustar(archive);
  // It works beside this process; libarchive's own takes a fifth more time.
  if (packing == Packing::kCompress) archive_write_add_filter_program(archive, "compress -cf");
  if (packing == Packing::kZstd) archive_write_add_filter_zstd(archive);
  if (packing == Packing::kGzip) {
    archive_write_add_filter_gzip(archive);
    archive_write_set_filter_option(archive, "gzip", "timestamp", nullptr);
  }
  // Compressed archives must not be padded.
  archive_write_set_bytes_in_last_block(archive, 1);
  RequireDone(archive_write_open(archive, this, nullptr, Store, nullptr));
}

ArchiveWriter::~ArchiveWriter() {
  if (file_ >= 0) close(file_);
}

/// Notes the error: of a program that packs, libarchive would only say that it has failed.
ssize_t ArchiveWriter::Store(struct archive* /*writer*/, void* self, const void* data,
                             size_t size) {
  auto& own = *static_cast<ArchiveWriter*>(self);
  const char* rest = static_cast<const char*>(data);
  for (size_t left = size; left > 0;) {
    const ssize_t count = write(own.file_, rest, left);
    if (count < 0) {
      own.error_ = errno;
      return -1;
    }
    rest += count;
    left -= static_cast<size_t>(count);
  }
  return static_cast<ssize_t>(size);
}

/// Names the member if it is to blame, and else the archive.
void ArchiveWriter::RequireDone(int status, const std::string& member) const {
  if (status == ARCHIVE_OK) return;
  SafePointAfterFedProgram();
  if (error_ != 0) throw Refusal(path_ + ": " + std::strerror(error_) + ".\n");
  throw Refusal((status == ARCHIVE_FATAL ? path_ : member) + ": " +
                archive_error_string(archive_.get()) + ".\n");
}

void ArchiveWriter::AddHeader(const std::string& path, mode_t mode, int64_t size, std::time_t time,
                              const std::string& link) {
  const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                            archive_entry_free);
  archive_entry_set_pathname(entry.get(), path.c_str());
  archive_entry_set_mode(entry.get(), mode);
  archive_entry_set_size(entry.get(), size);
  archive_entry_set_mtime(entry.get(), std::min(time, latest_), 0);
  if (!link.empty()) archive_entry_set_symlink(entry.get(), link.c_str());
  RequireDone(archive_write_header(archive_.get(), entry.get()), path);
}

void ArchiveWriter::AddDirectories(const std::string& path) {
  for (size_t end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1)) {
    // The same mode in every archive: components share directories.
    const std::string dir = path.substr(0, end + 1);
    if (directories_.insert(dir).second) AddHeader(dir, S_IFDIR | 0755, 0, latest_);
  }
}

std::string ArchiveWriter::Add(const std::string& path, const Source& source) {
  SafePoint();
  const struct stat& info = source.info;
  if (S_ISDIR(info.st_mode)) {
    AddDirectories(path + "/");
    return "";
  }
  AddDirectories(path);
  if (S_ISLNK(info.st_mode)) {
    AddHeader(path, S_IFLNK | 0777, 0, info.st_mtime, TargetOf(source.origin));
    return "";
  }
  AddHeader(path, info.st_mode, info.st_size, info.st_mtime);
  return ManifestLine(info.st_mode, static_cast<uint64_t>(info.st_size), AddContent(source));
}

/// Returns the remainder of the content.
uint32_t ArchiveWriter::AddContent(const Source& source) {
  const OpenFile file(source.origin);
  uint32_t crc = 0;
  auto left = static_cast<size_t>(source.info.st_size);
  ssize_t count = 1;
  while (left > 0 && count > 0) {
    count = read(file.number, buffer_.data(), std::min(left, buffer_.size()));
    if (count < 0) throw Refusal(source.origin + ": " + std::strerror(errno) + ".\n");
    crc = kwinst::UpdateCrc(crc, buffer_.data(), static_cast<size_t>(count));
    WriteData(buffer_.data(), static_cast<size_t>(count));
    left -= static_cast<size_t>(count);
    SafePoint();
  }
  struct stat now {};
  if (left > 0 || fstat(file.number, &now) != 0 || !IsUnchanged(now, source.info)) {
    throw Refusal(source.origin + " has changed while the medium was made.\n");
  }
  return crc;
}

std::string ArchiveWriter::AddText(const std::string& path, const std::string& text) {
  AddDirectories(path);
  AddHeader(path, S_IFREG | 0644, static_cast<int64_t>(text.size()), latest_);
  const auto* data = reinterpret_cast<const unsigned char*>(text.data());
  WriteData(data, text.size());
  return ManifestLine(0644, text.size(), kwinst::UpdateCrc(0, data, text.size()));
}

void ArchiveWriter::WriteData(const unsigned char* data, size_t size) {
  const bool done = archive_write_data(archive_.get(), data, size) == static_cast<ssize_t>(size);
  RequireDone(done ? ARCHIVE_OK : ARCHIVE_FATAL);
}

void ArchiveWriter::Close() {
  RequireDone(archive_write_close(archive_.get()));
  const int closed = close(file_);
  file_ = -1;
  if (closed != 0) throw Refusal(path_ + ": " + std::strerror(errno) + ".\n");
}
