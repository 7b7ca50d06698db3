#include "ports/line_table.h"

#include <kb0core/TEVEnvironment.h>
#include <kb0core/TEVFile.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "support/tree_paths.h"

namespace kwinst {

namespace {

constexpr size_t kSpareSlots = 3;

/// Gives an open file the owner and the mode of another one.
bool KeepOwnerAndMode(int descriptor, const struct stat& origin) {
  struct stat now {};
  if (fstat(descriptor, &now) != 0) return false;
  const bool same_owner = now.st_uid == origin.st_uid && now.st_gid == origin.st_gid;
  if (!same_owner && fchown(descriptor, origin.st_uid, origin.st_gid) != 0) return false;
  return fchmod(descriptor, origin.st_mode & 07777) == 0;
}

/// EOF when it cannot be read.
int LastCharacter(std::FILE* file) {
  return std::fseek(file, -1, SEEK_END) == 0 ? std::getc(file) : EOF;
}

}  // namespace

std::optional<std::string> SystemFile(const std::string& name) {
  if (TEVGetEnv("VRK_ODT_IN") == nullptr || TEVGetEnv("VRK_ODT_OUT") == nullptr) {
    return JoinPath("/etc", name);
  }
  const char* scratch = TEVGetEnv("VRK_ODT_TMP");
  if (scratch == nullptr) return std::nullopt;
  return JoinPath(scratch, name);
}

InputFile OpenSystemFile(const std::string& path, const char* mode, std::string* error) {
  std::FILE* file = nullptr;
  const int number = IsPipeOrDevice(path.c_str()) ? ENOTSUP : TEVFOpen(path.c_str(), mode, &file);
  if (number != 0) *error = std::strerror(number);
  return InputFile(file);
}

void DropLink(const std::string& copy, const std::string& path) {
  struct stat other {};
  struct stat file {};
  if (lstat(copy.c_str(), &other) != 0 || stat(path.c_str(), &file) != 0) return;
  const bool same = other.st_dev == file.st_dev && other.st_ino == file.st_ino;
  if (same || S_ISLNK(other.st_mode)) TEVDeleteFile(copy.c_str());
}

bool BeginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool AppendAndClose(InputFile file, const std::string& path, const std::string& lines) {
  struct stat before {};
  if (fstat(fileno(file.get()), &before) != 0) return false;
  std::FILE* stream = file.release();
  bool stored = true;
  if (!lines.empty()) {
    const int last = before.st_size == 0 ? '\n' : LastCharacter(stream);
    const std::string text = (last == '\n' ? "" : "\n") + lines;
    stored = last != EOF && std::fseek(stream, 0, SEEK_END) == 0 &&
             std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  }
  stored = TEVFClose(stream) == 0 && stored;
  if (!stored) CutBack(path.c_str(), before.st_size);
  return stored;
}

LineTable::LineTable(size_t lines)
    : size_((lines + kSpareSlots) * kSlotSize),
      text_(static_cast<char*>(::operator new(size_, std::nothrow))) {}

LineTable::~LineTable() { ::operator delete(text_); }

bool LineTable::Read(std::FILE* file, const std::vector<Replacement>& replacements) {
  if (fstat(fileno(file), &origin_) != 0 || std::fseek(file, 0, SEEK_SET) != 0) return false;
  bool fits = true;
  const bool read = ForEachPiece(file, [&](std::string_view piece) {
    const auto match =
        std::find_if(replacements.begin(), replacements.end(),
                     [piece](const Replacement& r) { return BeginsWith(piece, r.name); });
    fits = Add(match == replacements.end() ? piece : match->line);
    return fits;
  });
  return read && fits;
}

bool LineTable::AddLine(std::string_view line) {
  if (used_ > 0 && text_[used_ - 1] != '\n' && !Add("\n")) return false;
  return Add(line);
}

bool LineTable::WriteAndClose(InputFile file) const {
  std::FILE* stream = file.release();
  const bool written =
      KeepOwnerAndMode(fileno(stream), origin_) && std::fwrite(text_, 1, used_, stream) == used_;
  return TEVFClose(stream) == 0 && written;
}

bool LineTable::Add(std::string_view text) {
  if (text.size() >= kSlotSize || text.size() > size_ - used_) return false;
  std::memcpy(text_ + used_, text.data(), text.size());
  used_ += text.size();
  return true;
}

}  // namespace kwinst
