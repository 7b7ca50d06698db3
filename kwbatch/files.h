#ifndef KWBATCH_FILES_H_
#define KWBATCH_FILES_H_

#include <filesystem>
#include <string>
#include <vector>

#include "refusal.h"

/// \file
/// What kwbatch itself does to files.

/// Does the path lead to a file or a directory? A link that leads nowhere does not.
bool Exists(const std::string& path);

/// Is there an entry of this name? Links are not followed. Throws a Refusal when it cannot be
/// examined.
bool IsThere(const std::string& path);

/// Throws a Refusal when the file is there, as far as one can tell, but cannot be read.
void RequireReadable(const std::string& path);

/// Throws a Refusal unless the directory exists.
void RequireDirectory(const std::string& path);

/// The refusals for a file that cannot be read or written.
Refusal CannotRead(const std::string& path);
Refusal CannotWrite(const std::string& path);

/// Throws a Refusal unless the program is found where the shell looks for it.
void RequireProgram(const std::string& name);

/// Throws a Refusal for a pipe, a device or a directory, from which nothing might ever come.
void RequireRegular(const std::string& path);

/// Deletes a file, if it exists. Throws a Refusal when it stays.
void Delete(const std::string& path);

/// Deletes a directory with all that is in it, if it exists. Throws a Refusal when something stays.
void DeleteTree(const std::string& dir);

/// Gives a file another name. Throws a Refusal.
void Rename(const std::string& from, const std::string& to);

/// Makes a file of this text, in place of an earlier one. Throws a Refusal.
void Write(const std::string& path, const std::string& text);

/// Has a file and its directory written to the disk. Throws a Refusal.
void SyncFile(const std::string& path);

/// Replaces a file by one of this text. Whatever ends the process or the machine, the old file or
/// the whole new one is there. Throws a Refusal.
void WriteDurably(const std::string& path, const std::string& text);

/// Deletes what a WriteDurably of the file has left that was interrupted. Throws a Refusal.
void DeleteUnwritten(const std::string& path);

/// Waits until the disk has all that was written to the file system of `dir`. Throws a Refusal.
void SyncFileSystem(const std::string& dir);

/// Adds `text` to the end of a file, which is created if missing. False when it cannot be stored.
bool AppendToFile(const std::string& path, const std::string& text);

/// Makes a directory and those above it that do not exist. Throws a Refusal.
void MakeDirectories(const std::string& path);

/// Makes a file of this text and a newline, in place of earlier content. Throws a Refusal in the
/// library's words.
void WriteLine(std::string path, std::string text);

/// The content of a file; empty when it does not exist. Throws a Refusal when it cannot be read.
std::string TextOf(const std::string& path);

/// The lines of a file without their newlines; none when it does not exist. Throws a Refusal when
/// it cannot be read.
std::vector<std::string> LinesOf(const std::string& path);

/// Opens the directory of a file below `dir` without following a link there. -1 when it does not
/// exist. Throws a Refusal.
int OpenDirectoryOf(const std::string& dir, const std::filesystem::path& file);

/// A directory that lasts as long as the object, and that nobody else can enter. It is locked, so
/// that one which a killed kwbatch has left is known.
class TemporaryDirectory {
 public:
  /// Deletes those that this user's killed runs have left.
  static void DeleteLeftovers();

  /// Throws a Refusal.
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  int lock_;
};

#endif  // KWBATCH_FILES_H_
