#ifndef KWBATCH_SETTINGS_H_
#define KWBATCH_SETTINGS_H_

class Options;

/// Exports the environment settings that the options give, for the programs that are started later.
/// Throws a Refusal in the library's words when one is refused.
void ExportSettings(const Options& options);

#endif  // KWBATCH_SETTINGS_H_
