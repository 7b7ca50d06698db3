#ifndef KWMEDIUM_STAGING_H_
#define KWMEDIUM_STAGING_H_

#include <string>

/// A directory beside the medium that is to be made, where it grows until it is whole. Removed with
/// all that is in it, unless the medium got its name. Every function throws a Refusal.
class Staging {
 public:
  /// `medium` must not exist, or be an empty directory.
  explicit Staging(const std::string& medium);
  ~Staging();
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;

  /// Where the medium grows.
  std::string path() const { return dir_ + "/medium"; }

  /// A new directory for what is needed on the way.
  std::string MakeWorkDirectory(const std::string& name) const;

  /// Gives the medium its name.
  void Publish() const;

 private:
  std::string medium_;
  std::string dir_;
};

#endif  // KWMEDIUM_STAGING_H_
