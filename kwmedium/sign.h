#ifndef KWMEDIUM_SIGN_H_
#define KWMEDIUM_SIGN_H_

#include <string>

/// Writes the checksums of all files of a medium into it, and the signature of that list, which gpg
/// makes with the user's key. A medium that was signed before is signed anew. Throws a Refusal; the
/// medium then has the signature that it had.
void SignMedium(const std::string& medium, const std::string& key);

#endif  // KWMEDIUM_SIGN_H_
