#include "paths.h"

#include <kwinstutil/kwinstutil.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>

#include "formats.h"
#include "refusal.h"
#include "texts.h"

void RequirePlainPath(const std::string& what, const std::string& path) {
  const auto plain = [](unsigned char c) {
    return c >= 0x80 || std::isalnum(c) != 0 || std::strchr("/._-+,=@%:", c) != nullptr;
  };
  if (!path.empty() && path[0] != '-' && std::all_of(path.begin(), path.end(), plain)) return;
  throw Refusal(Text("PathNotPlain",
                     "The {1} \"{2}\" cannot be used: it is empty, starts with \"-\", or holds "
                     "blanks or characters that mean something to the shell.\n",
                     {what, path}));
}

void RequirePlainName(const std::string& what, const std::string& name) {
  RequirePlainPath(what, name);
  if (name != "." && name != ".." && name.find('/') == std::string::npos) return;
  throw Refusal(
      Text("NameNotPlain", "The {1} \"{2}\" cannot be used: it is no file name.\n", {what, name}));
}

void RequireMediumPath(const std::string& medium) {
  RequirePlainPath(Text("NounMedium", "medium"), medium);
}

void RequirePackageName(const std::string& name) {
  RequirePlainName(Text("NounPackage", "package name"), name);
}

void RequireSystemName(const std::string& name) {
  RequirePlainName(Text("NounSystem", "operating system"), name);
  if (name.size() <= kSystemNameLength) return;
  throw Refusal(Text("SystemNameTooLong",
                     "The operating system \"{1}\" has more than {2} characters.\n",
                     {name, kSystemNameLength}));
}

std::string MediumPath(const std::string& medium) {
  RequireMediumPath(medium);
  std::string path = std::filesystem::absolute(medium).lexically_normal();
  if (path.back() == '/') path.pop_back();
  RequireMediumPath(path);
  return path;
}

std::string TargetPath(const std::string& target) {
  TEVUnicodeString path = target.c_str();
  TEVUnicodeString message;
  TEVInsSuppressSlashDir(&path);
  if (TEVInsCheckSyntaxDir(&path, &message) != 0) throw Refused(message);
  std::string accepted = path.ConvertToChar();
  if (accepted.size() > 1 && accepted.back() == '/') accepted.pop_back();
  RequirePlainPath(Text("NounTarget", "target directory"), accepted);
  return accepted;
}
