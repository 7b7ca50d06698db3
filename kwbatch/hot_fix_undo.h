#ifndef KWBATCH_HOT_FIX_UNDO_H_
#define KWBATCH_HOT_FIX_UNDO_H_

#include <string>

#include "pack.h"

/// \file
/// The files that a hot fix has replaced stay in control/undo/NAME, with the journal of the hot
/// fix, so it can be undone later. Functions may be repeated, and throw a Refusal.

/// Keeps what the hot fix has set aside, before it is committed.
void KeepForUndo(const Pack& pack);

/// Can the hot fix of this name be undone?
bool CanBeUndone(const std::string& system_dir, const std::string& name);

/// Makes of a committed hot fix one that is pending, or does nothing when none is kept: its journal
/// is written, then the files are set aside again. Changes nothing while a file is missing.
void SetAsideAgain(Pack& pack);

/// Deletes what was kept for a hot fix that is taken back. Throws a Refusal when it stays.
void ForgetUndo(const Pack& pack);

#endif  // KWBATCH_HOT_FIX_UNDO_H_
