#include "paths.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

#include "refusal.h"

void RequirePlainPath(const std::string& what, const std::string& path) {
  const auto plain = [](unsigned char c) {
    return c >= 0x80 || std::isalnum(c) != 0 || std::strchr("/._-+,=@%:", c) != nullptr;
  };
  if (!path.empty() && path[0] != '-' && std::all_of(path.begin(), path.end(), plain)) return;
  throw Refusal("The " + what + " \"" + path +
                "\" cannot be used: it is empty, starts with \"-\", or holds blanks or characters "
                "that mean something to the shell.\n");
}

void RequirePlainName(const std::string& what, const std::string& name) {
  RequirePlainPath(what, name);
  if (name != "." && name != ".." && name.find('/') == std::string::npos) return;
  throw Refusal("The " + what + " \"" + name + "\" cannot be used: it is no file name.\n");
}

std::string MediumPath(const std::string& medium) {
  RequirePlainPath("medium", medium);
  std::string path = std::filesystem::absolute(medium).lexically_normal();
  if (path.back() == '/') path.pop_back();
  RequirePlainPath("medium", path);
  return path;
}

std::string TargetPath(const std::string& target) {
  TEVUnicodeString path = target.c_str();
  TEVUnicodeString message;
  TEVInsSuppressSlashDir(&path);
  if (TEVInsCheckSyntaxDir(&path, &message) != 0) throw Refused(message);
  std::string accepted = path.ConvertToChar();
  if (accepted.size() > 1 && accepted.back() == '/') accepted.pop_back();
  RequirePlainPath("target directory", accepted);
  return accepted;
}
