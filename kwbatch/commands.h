#ifndef KWBATCH_COMMANDS_H_
#define KWBATCH_COMMANDS_H_

class Options;

/// \file
/// The commands. Each is in the file of its name, but for "languages" (add_languages.cc) and
/// "files" (owner.cc), and throws a Refusal when it cannot be done.

/// "install": installs each package of the medium that the target does not have yet: products, SDK
/// packages or samples.
void Install(const Options& options);

/// "check": says whether a medium of any kind may be installed, and what it would change.
void Check(const Options& options);

/// "verify": reports each missing or damaged file of the target.
void Verify(const Options& options);

/// "repair": puts back the missing and damaged files of the target that a medium has.
void Repair(const Options& options);

/// "service-pack": sets aside the files that a service pack replaces, installs it and runs its
/// post-install programs. It is then pending.
void ServicePack(const Options& options);

/// "commit": ends the pending state of the target's service packs. They can no longer be undone.
void Commit(const Options& options);

/// "undo-service-pack": takes the latest service pack out of the target, which is then as it was
/// before. A second call completes an interrupted undo.
void UndoServicePack(const Options& options);

/// "hot-fix": installs a hot fix.
void HotFix(const Options& options);

/// "undo-hot-fix": takes the latest hot fix out of the target, unless a service pack follows it. A
/// second call completes an interrupted undo.
void UndoHotFix(const Options& options);

/// "tasks": lists the programs that run from the target, and stops them with --stop.
void Tasks(const Options& options);

/// "status": shows what a tree or a medium holds. Throws a NothingToDo when there is nothing.
void Status(const Options& options);

/// "register": registers the ports and daemons of an installed tree, also after it was moved.
void RegisterTree(const Options& options);

/// "languages": adds languages to an installed tree. A service pack that brings catalogs is to be
/// named by a second call.
void Languages(const Options& options);

/// "owner": shows which packages bring a file. Throws a Refusal for files of none.
void Owner(const Options& options);

/// "files": lists the files of a package.
void Files(const Options& options);

/// "uninstall": takes the product out of the target and its lines out of the system's files. A
/// second call completes an interrupted one.
void Uninstall(const Options& options);

/// "environment": prints the path of a configuration's environment file.
void Environment(const Options& options);

#endif  // KWBATCH_COMMANDS_H_
