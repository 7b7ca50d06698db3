#ifndef KWBATCH_JSON_H_
#define KWBATCH_JSON_H_

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// \file
/// What a command reports to a machine: with --json, one object is the whole standard output.
/// docs/kwbatch.schema.json describes it. Without --json these functions do nothing.

using FieldValue = std::variant<bool, int64_t, std::string, std::vector<std::string>>;

/// From now on messages are collected for the object of the command.
void BeginReport(const std::string& command);

bool IsReporting();

/// Sets a field, by its JSON pointer: "/systems/0/name". An object of a list may only be set when
/// those before it are there, and an empty list of texts also begins a list of objects.
void SetField(const std::string& pointer, const FieldValue& value);

/// The command has begun to change the target or the system.
void NoteChange();

/// The same, and says what it has done.
void NoteDone(const std::string& text);

/// Like Say, for what the command has done.
void SayDone(const std::string& text);

/// Ends the report. Returns the object; what is no UTF-8 in it is replaced.
std::string FinishReport(int status);

#endif  // KWBATCH_JSON_H_
