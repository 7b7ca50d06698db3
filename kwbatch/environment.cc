#include <kwinstutil/kwinstutil.h>

#include "commands.h"
#include "console.h"
#include "formats.h"
#include "options.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

void Environment(const Options& options) {
  std::string target = TargetPath(options.Word(word::kSystem));
  std::string config = options.Word(word::kConfig);
  char path[kEnvironmentPathSize] = "";
  if (TEVInsEnvname(target.data(), config.data(), path) != 1) {
    throw Refusal(Text("NoEnvironmentFile",
                       "The configuration {1} in {2} names no environment file.\n",
                       {config, target}));
  }
  Show(path);
}
