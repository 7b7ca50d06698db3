#ifndef KWBATCH_REQUEST_H_
#define KWBATCH_REQUEST_H_

#include <string>

#include "ports.h"

class Options;

/// What a command is asked to do. A text is empty when the user did not give it.
struct Request {
  bool verified = false;  ///< the media are genuine; otherwise they are as trusted as their origin
  std::string medium;     ///< full path
  std::string target;     ///< as TargetPath returns it
  std::string code_tree;  ///< the code that an SDK belongs to
  std::string os;         ///< the only operating system; without it, all
  std::string log;        ///< path of the log; without it, the usual one
  std::string languages;  ///< list of languages; without it, what the target has, or all
  std::string only;       ///< list of packages to install; without it, all
  bool fonts = false;     ///< keep the language-indexed fonts
  std::string satellite;  ///< medium of the rendering satellite
  std::string with_pack;  ///< medium of the service pack that goes on again; full path
  bool systemd = false;   ///< register for systemd instead of inetd
  int wait = 0;           ///< seconds to wait for another kwbatch
  PortWishes ports;
};

/// Reads the options once, when a command begins. Throws a Refusal for a path that cannot be used.
Request RequestOf(const Options& options);

#endif  // KWBATCH_REQUEST_H_
