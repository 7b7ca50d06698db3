#include <algorithm>
#include <cstring>

#include "qtoclib/TEVINSStockName.h"

int TEVINSStockName::GetNbName() const { return count; }

char* TEVINSStockName::GetName(int i) { return i >= 0 && i < count ? names[i] : nullptr; }

bool TEVINSStockName::Add(const char* name) {
  if (name == nullptr || count < 0 || count >= kCapacity) return false;
  const size_t length = strnlen(name, kNameSize);
  if (length == kNameSize) return false;
  std::memcpy(names[count], name, length + 1);
  ++count;
  return true;
}

TEVINSStockNameInst::TEVINSStockNameInst(int nbEntries) {
  constexpr int kMost = 100'000;  // The room is a hint; one that is out of reason is not taken.
  names_.reserve(static_cast<size_t>(std::clamp(nbEntries, 0, kMost)));
}

int TEVINSStockNameInst::GetNbName() const { return static_cast<int>(names_.size()); }

const char* TEVINSStockNameInst::GetName(int i) const {
  return i >= 0 && i < GetNbName() ? names_[static_cast<size_t>(i)].c_str() : nullptr;
}

void TEVINSStockNameInst::Add(const char* name) {
  if (name != nullptr) names_.emplace_back(name);
}
