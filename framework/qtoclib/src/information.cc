#include "information.h"

#include "qtoclib/TEVINSToc.h"

namespace kwinst {

std::string& InformationText() {
  static std::string text;
  return text;
}

void LineProblems::Add(size_t line, const char* what) {
  if (reported_.size() == 20) {
    ++unreported_;
    return;
  }
  reported_.push_back(file_ + ", line " + std::to_string(line) + ": " + what);
}

std::vector<std::string> LineProblems::Report() const {
  std::vector<std::string> report = reported_;
  if (unreported_ > 0) {
    report.push_back(
        file_ + ": lines that cannot be understood besides these: " + std::to_string(unreported_));
  }
  return report;
}

}  // namespace kwinst

void TEVINSToc::sResetInfoMsg() { kwinst::InformationText().clear(); }

void TEVINSToc::sGetInfoMsg(char*& text) {
  std::string& information = kwinst::InformationText();
  if (!information.empty()) text = information.data();
}

void TEVINSToc::sClearInfoMsg() { kwinst::InformationText().clear(); }
