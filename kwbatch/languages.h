#ifndef KWBATCH_LANGUAGES_H_
#define KWBATCH_LANGUAGES_H_

#include <optional>
#include <string>

#include "log.h"
#include "medium.h"
#include "request.h"

/// \file
/// The languages of an installation, as the bits of a language mask.

/// The languages that the user chose; no value if there was no choice. Throws a UsageError for an
/// unknown name.
std::optional<int> ChosenLanguages(const Request& request);

/// The languages that the target has for the system of the medium; all for an SDK, which keeps no
/// record of them.
int InstalledLanguages(const Medium& medium, std::string target);

/// Records the languages of the medium's system and returns them. Called before any transfer. An
/// earlier record is kept: the files of other languages are gone. Throws a Refusal.
int RecordLanguages(const Medium& medium, std::string target, std::optional<int> chosen, Log& log);

/// Removes what is left of languages that are not in the mask: the library's own removal reports no
/// failures. Throws a Refusal when one cannot be removed.
void RemoveOtherLanguages(const std::string& system_dir, int languages);

#endif  // KWBATCH_LANGUAGES_H_
