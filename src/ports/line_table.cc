#include "ports/line_table.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace kwinst {

namespace {

constexpr size_t kSpareSlots = 3;

}  // namespace

LineTable::LineTable(size_t lines)
    : size_((lines + kSpareSlots) * kSlotSize),
      text_(static_cast<char*>(::operator new(size_, std::nothrow))) {}

LineTable::~LineTable() { ::operator delete(text_); }

bool LineTable::Read(std::FILE* file, const std::vector<Replacement>& replacements) {
  if (fstat(fileno(file), &origin_) != 0 || std::fseek(file, 0, SEEK_SET) != 0) return false;
  bool fits = true;
  const bool read = ForEachPiece<kSlotSize>(file, [&](std::string_view piece) {
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
      CopyOwnerAndMode(origin_, stream) && std::fwrite(text_, 1, used_, stream) == used_;
  return TEVFClose(stream) == 0 && written;
}

bool LineTable::Add(std::string_view text) {
  if (text.size() >= kSlotSize || text.size() > size_ - used_) return false;
  std::memcpy(text_ + used_, text.data(), text.size());
  used_ += text.size();
  return true;
}

}  // namespace kwinst
