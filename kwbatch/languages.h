#ifndef KWBATCH_LANGUAGES_H_
#define KWBATCH_LANGUAGES_H_

#include <optional>
#include <string>

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

/// The languages to install for the medium's system: those that an unfinished installation was
/// asked for, or else those that the target has, for the files of the others are gone, or else the
/// chosen ones, or else all. Throws a Refusal.
int LanguagesToInstall(const Medium& medium, const std::string& target, std::optional<int> chosen);

/// Records the languages of the medium's system, before anything is left out. Throws a Refusal.
void RecordLanguages(const Medium& medium, const std::string& target, int languages);

/// Removes what is left of languages that are not in the mask: the library's own removal reports no
/// failures. Throws a Refusal when one cannot be removed.
void RemoveOtherLanguages(const std::string& system_dir, int languages);

#endif  // KWBATCH_LANGUAGES_H_
