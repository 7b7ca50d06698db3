#include "request.h"

#include "files.h"
#include "genuine.h"
#include "options.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// The value of an option; empty when it is not given, or the command does not take it.
std::string GivenText(const Options& options, OptionName name) {
  return options.Takes(name) ? options.Text(name) : "";
}

/// The seconds of --wait. Throws a UsageError.
int GivenWait(const Options& options) {
  const int seconds = options.Number(option::kWait, 0);
  if (seconds >= 0) return seconds;
  throw UsageError(
      Text("WaitNeedsSeconds", "--wait needs a number of seconds, not {1}", {seconds}));
}

/// With a keyring, all media are replaced by copies that are genuine.
void RequireGenuine(Request& request, const Options& options) {
  std::string keyring = GivenText(options, option::kKeyring);
  if (keyring.empty() && IsThere(kUsualKeyring)) keyring = kUsualKeyring;
  if (keyring.empty()) return;
  for (std::string* medium : {&request.medium, &request.with_pack, &request.satellite}) {
    if (!medium->empty()) *medium = GenuineCopy(*medium, keyring);
  }
  request.verified = true;
}

}  // namespace

Request RequestOf(const Options& options) {
  Request request;
  if (options.Has(word::kMedium)) request.medium = MediumPath(options.Word(word::kMedium));
  if (options.Has(word::kTarget)) request.target = TargetPath(options.Word(word::kTarget));
  request.code_tree = GivenText(options, option::kCode);
  request.os = GivenText(options, option::kOs);
  request.log = GivenText(options, option::kLog);
  request.languages = GivenText(options, option::kLanguages);
  request.only = GivenText(options, option::kOnly);
  request.fonts = !GivenText(options, option::kFonts).empty();
  request.satellite = GivenText(options, option::kSatellite);
  const std::string with_pack = GivenText(options, option::kWithPack);
  if (!with_pack.empty()) request.with_pack = MediumPath(with_pack);
  RequireGenuine(request, options);
  request.systemd = !GivenText(options, option::kSystemd).empty();
  if (options.Takes(option::kWait)) request.wait = GivenWait(options);
  if (options.Takes(option::kBbPort)) {
    request.ports = PortWishesOf(options);
  } else if (options.Takes(option::kNoServices)) {
    request.ports.registered = !options.Has(option::kNoServices);
  }
  return request;
}
