#include "kwinstutil/checks.h"
#include "report/message.h"
#include "support/tree_paths.h"
#include "toc/name_list.h"

using kwinst::MessageFrame;
using kwinst::NameList;

int TEVInsCheckMedia(TEVINSType type, TEVINSMediaToc* media, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList products(media, PRD, type, 1);
  const NameList solutions(media, SLT, type, 1);
  if (!products.empty() || !solutions.empty()) return 0;

  if (message != nullptr) *message = frame.Build("ErrEmptyMediaToc");
  return -1;
}

int TEVInsCheckMediaSAT(char* mediaDir, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  for (const char* name : {kwinst::kSatelliteArchive, kwinst::kSatelliteSpace}) {
    const std::string path = kwinst::JoinPath(mediaDir, name);
    if (kwinst::Exists(path)) continue;
    if (message != nullptr) *message = frame.Build("ErrorNoFile", {path});
    return -2;
  }
  return 0;
}

int TEVInsCheckMediaSPK(TEVINSMediaToc* media, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList code_packs(media, SPK, code, 0);
  if (!code_packs.empty()) return 0;

  const NameList sdk_packs(media, SPK, zeb2, 0);
  // Deliberate: without memory for the second list the answer is 1.
  if (!sdk_packs.empty() || sdk_packs.absent()) return 1;

  if (message != nullptr) *message = frame.Build("ErrorNoSPK");
  return 4;
}

int TEVInsCheckMediaHFX(TEVINSMediaToc* media, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  const NameList hot_fixes(media, HFX, code, 0);
  // Deliberate: without memory for the list the answer is 0.
  if (!hot_fixes.empty() || hot_fixes.absent()) return 0;

  if (message != nullptr) *message = frame.Build("ErrorNoHFX", {}, "This is not a HFX media");
  return 4;
}

int TEVInsCheckMediaSMP(TEVINSMediaToc* media, TEVUnicodeString* message) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  const NameList sample_packages(media, SMP, samples, 1);
  if (!sample_packages.empty()) return 0;

  *message = frame.Build("ErrEmptyMediaToc");
  return -1;
}
