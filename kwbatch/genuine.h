#ifndef KWBATCH_GENUINE_H_
#define KWBATCH_GENUINE_H_

#include <string>

/// \file
/// Is a medium what the owner of a key has signed?

/// The keyring that is used when no option names another, if it exists.
constexpr char kUsualKeyring[] = "/etc/kwinstutil/keyring.gpg";

/// A copy of the medium in the current directory, which must be kwbatch's own: nobody can change it
/// after it was compared with the checksums that are signed. Throws a Refusal when the medium is
/// not signed, or with a key that `keyring` does not have or that is not valid any more, when a
/// file was changed or is missing, and when there are others than the signed ones. Texts name the
/// medium itself: see ShowAs.
std::string GenuineCopy(const std::string& medium, const std::string& keyring);

/// Refuses a medium whose files are not those of its list of checksums, whoever has signed it.
void RequireChecksums(const std::string& medium);

/// Says that a medium is trusted without a signature.
void TellUnverified(const std::string& medium);

#endif  // KWBATCH_GENUINE_H_
