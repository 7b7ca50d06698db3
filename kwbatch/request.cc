#include "request.h"

#include "paths.h"

Request RequestOf(const Options& options) {
  Request request;
  if (options.Has(word::kMedium)) request.medium = MediumPath(options.Word(word::kMedium));
  if (options.Has(word::kTarget)) request.target = TargetPath(options.Word(word::kTarget));
  request.code_tree = options.Text(option::kCode);
  request.os = options.Text(option::kOs);
  request.log = options.Text(option::kLog);
  request.languages = options.Text(option::kLanguages);
  request.fonts = options.Has(option::kFonts);
  request.satellite = options.Text(option::kSatellite);
  const std::string with_pack = options.Text(option::kWithPack);
  if (!with_pack.empty()) request.with_pack = MediumPath(with_pack);
  request.ports = PortWishesOf(options);
  return request;
}
