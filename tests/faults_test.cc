#include <dlfcn.h>
#include <kb0core/TEVMsgCatalog.h>
#include <kwinstutil/kwinstutil.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <sstream>
#include <utility>
#include <vector>

#include "faulty_run.h"
#include "fixture.h"

namespace fs = std::filesystem;

namespace {

[[maybe_unused]] const int kTmp = setenv("TMPDIR", "/tmp", 1);  // where packs are unpacked

/// The number of the allocation that fails, counted down; none when below 1.
int failing_allocation = 0;
bool AllocationFails() { return --failing_allocation == 0; }

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return AllocationFails() ? nullptr : ::operator new(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return AllocationFails() ? nullptr : ::operator new[](size);
}
// With noexcept only where the C library's has it.
extern "C" __attribute__((visibility("default"))) int putenv(char* entry) noexcept(
    noexcept(putenv(entry))) {
  static const auto system_putenv = reinterpret_cast<int (*)(char*)>(dlsym(RTLD_NEXT, "putenv"));
  return AllocationFails() ? -1 : system_putenv(entry);
}

namespace {

using Tree = std::map<std::string, std::string>;  // the content of each file

/// What a function reports and does. Lists are separated by '|'; files are NAME=CONTENT.
struct Operation {
  std::string name, success;
  std::string failures = "";  ///< empty if it reports none
  std::string before = "";    ///< files that may not be lost
  std::string after = "";     ///< what a success leaves; the file "*" is all of them together
  std::string input = "";     ///< files that it needs or writes over
  bool may_stop = false;      ///< a read error is treated as the end: a success
};

using Function = std::function<int(TEVUnicodeString*)>;

/// The status of a function, and the key of its message.
std::string Outcome(const Function& function) {
  TEVUnicodeString message;
  const int status = function(&message);
  const std::string text = message.ConvertToChar();
  return std::to_string(status) + " " + text.substr(0, text.find('|'));
}

/// The parts of a list; one without a '=' is both name and content.
Tree Listed(const std::string& list) {
  std::istringstream stream(list);
  Tree tree;
  for (std::string part; std::getline(stream, part, '|');)
    tree[part.substr(0, part.find('='))] = part.substr(part.find('=') + 1);
  return tree;
}

/// What is in the current directory, and was printed.
Tree Files() {
  Tree files;
  for (const auto& entry : fs::recursive_directory_iterator(".")) {
    const std::string name = entry.path().string().substr(2);
    files["*"] += files[name] = entry.is_directory() ? "(directory)" : Read(name);
  }
  return files;
}

bool Holds(const Tree& files, const std::string& expected) {
  for (const auto& [name, content] : Listed(expected)) {
    const std::string found = files.count(name) == 0 ? "(no file)" : files.at(name);
    if (name == "*" ? found.find(content) == std::string::npos : found != content) return false;
  }
  return true;
}

class FaultTest : public Fixture {
 protected:
  FaultTest() {
    for (const char* v : {"VRK_ODT_IN", "VRK_ODT_OUT", "VRK_ODT_TMP"}) SetEnv(v, ".");
    TEVMsgCatalog::BuildMessage("TEVInstUtil", "", nullptr, 0, "");  // it is read only once
    fs::current_path(dir_);
  }
  ~FaultTest() override { fs::remove_all(medium_); }
  void Lay(const std::string& files) const {
    for (const auto& [name, content] : Listed(files))
      fs::permissions(Write(name, content), fs::perms(0755));
  }
  void LayAnew(const std::string& files) const {
    for (const auto& entry : fs::directory_iterator(dir_)) fs::remove_all(entry);
    Lay(files);
  }
  /// Makes the archive `name` of these files on the medium.
  void Pack(const std::string& name, const std::string& files) const {
    LayAnew(files);
    const std::string tar = "mkdir -p " + medium_ + " && tar -cf " + medium_ + "/" + name + " *";
    EXPECT_EQ(std::system(tar.c_str()), 0);
  }

  /// Is the old or the new content whole in its place, or under the name of a backup or of a new
  /// file? Lines that are added may be there in part.
  static bool IsKept(const Operation& o, const std::string& name, bool killed) {
    Tree left = Files(), before = Listed(o.before), after = Listed(o.after);
    const std::string old = before[name], original = name.substr(0, name.find(".beforeSPK"));
    const bool in_part = killed || after.count(name) == 0;
    if (in_part && left.count(name) > 0 && left[name].compare(0, old.size(), old) == 0) return true;
    const std::string names[] = {name, original, name + ".beforeSPK", name + ".tmp"};
    return std::any_of(std::begin(names), std::end(names), [&](const std::string& n) {
      if (left.count(n) == 0) return false;
      return left[n] == old || (after.count(name) > 0 && left[n] == after[name]);
    });
  }

  /// Runs a function with a fault, looks at what it leaves, and completes that. False when the call
  /// was not reached.
  bool Try(const Operation& o, const Function& function, int call, int effect, bool in_program) {
    SCOPED_TRACE(o.name + (in_program ? ", call of a program " : ", call ") + std::to_string(call) +
                 ", effect " + std::to_string(effect));
    LayAnew(o.before + "|" + o.input);
    const auto operation = [&] { return Outcome(function); };
    const FaultyRun run(call, effect, in_program, operation);
    const bool killed = effect < 0 && run.told.empty();
    if (!killed) told_[run.told] = run.told;
    for (const auto& [name, content] : Listed(o.before))
      EXPECT_TRUE(IsKept(o, name, killed)) << name << ::testing::PrintToString(Files());
    if (Holds(Files(), o.after)) return run.reached;
    EXPECT_TRUE(run.told != o.success || o.failures.empty() || o.may_stop) << "no success";

    for (const auto& [name, content] : Listed(o.before))
      if (const std::string other = name + ".tmp"; Exists(other))
        if (!Exists(name) || Read(other) == content) fs::rename(other, name);
    Lay(o.input);
    const FaultyRun again(0, 0, false, operation);
    // Half a line is taken for a whole one, or stays beside it.
    const bool torn = killed && effect == FaultyRun::kTorn;
    EXPECT_TRUE(torn ? again.told[0] != '-' : again.told == o.success && Holds(Files(), o.after))
        << "again: " << again.told << ::testing::PrintToString(Files());
    return run.reached;
  }

  /// Lets every call of a function go wrong, and some calls, or all, of its programs.
  void Check(const Operation& o, const Function& function) {
    const auto look = [] { return std::to_string(access("/", 0)); };
    if (FaultyRun(1, EIO, false, look).told != "-1") GTEST_SKIP() << "nothing can be traced here";
    LayAnew(o.before + "|" + o.input);
    EXPECT_EQ(Outcome(function),
              o.success);  // and so a sanitizer needs no calls for its caches later
    const bool all = std::getenv("KWINSTUTIL_ALL_FAULTS") != nullptr;
    std::vector<int> effects = {EIO, EIO | FaultyRun::kForEver, ENOSPC | FaultyRun::kForEver,
                                FaultyRun::kKilled, FaultyRun::kTorn};
    if (all) effects.insert(effects.end(), {EACCES, EMFILE, ENOSPC});
    int faults = 0;
    for (const int effect : effects) {
      for (int call = 1; Try(o, function, call, effect, false); ++call) ++faults;
      for (int call = 1; Try(o, function, call, effect, true); call += all ? 1 : 40) ++faults;
    }
    EXPECT_EQ(std::exchange(told_, {}), Listed(o.success + "|" + o.failures)) << o.name;
    std::cout << o.name << ": " << faults << " faults\n";
  }

  /// Lets each allocation fail, from the `n`th. Nothing may have changed then.
  void CheckMemory(const Operation& o, const Function& function, int n = 1) {
    LayAnew(o.before);
    for (;; ++n) {
      failing_allocation = n;
      const std::string told = Outcome(function);
      const bool failed = failing_allocation <= 0;
      EXPECT_EQ(told, failed ? o.failures : o.success) << o.name << ", allocation " << n;
      if (!failed) break;
      EXPECT_TRUE(Holds(Files(), o.before)) << o.name;
    }
    failing_allocation = 0;
  }

  const std::string medium_ = dir_ + "-medium";
  Tree told_;
};

const Function kRenew = [](auto* m) { return UpdateNewPorts(1, 2, 3, CharPath("services"), m); };
const Function kDemon = [](auto* m) { return UpdateDemon(CharPath("/d"), m); };
const Function kRay = [](auto* m) { return SatUpdateInet(CharPath("/s"), *m); };
const std::string kServices = "services=x\nmorvelk7bb\nmorvelk7run\nTEVDeviceBroker";
const std::string kInetd = "inetd.conf=mi-ray\nx\nmorvelk7run\n";
const std::string kDone = "1 OKWriteServicesFile";

TEST_F(FaultTest, Services) {
  const std::string end = "#Brovik Communication ports\n", x = "inetd.conf=x";
  const std::string added = "services=x\nmorvelk7bb       1/tcp  " + end +
                            "morvelk7run      2/tcp  " + end + "TEVDeviceBroker 3/tcp  " + end;
  const std::string renewed = "services=x\nmorvelk7bb       1/tcp   " + end +
                              "morvelk7run      2/tcp   " + end + "TEVDeviceBroker 3/tcp     " +
                              end;
  const std::string demon = "\nmorvelk7run stream tcp nowait root /d  #TEVSysDemon\n";
  const std::string ray = "inetd.conf=mi-ray stream tcp nowait root /s/ray.sh ray.sh /s\n";
  const std::string slave = "services=x\nmi-ray          7001/tcp   # Rendering slave\n";
  const std::string failures = "-1 ErrWndOpenServicesFile|-1 ErrWndWriteServicesFile";
  const std::string ray_failures =
      "-2 ErrWndOpenServicesFile|-2 ErrWndWriteServicesFile|-2 ErrWndRenameServicesFile";
  Check({"UpdatePorts", kDone, failures, "services=x", added},
        [](auto* m) { return UpdatePorts(1, 2, 3, CharPath("services"), m); });
  Check({"UpdateNewPorts, adding", kDone, failures, "services=x", added}, kRenew);
  Check({"UpdateNewPorts", kDone, failures + "|1 KORenameServicesFile", kServices, renewed},
        kRenew);
  Check({"UpdateDemon, adding", kDone, failures, x, x + demon}, kDemon);
  Check({"UpdateDemon", kDone, failures + "|-1 ErrWndRenameServicesFile", kInetd,
         "inetd.conf=mi-ray\nx" + demon},
        kDemon);
  Check({"SatUpdateInet", kDone, ray_failures, kInetd, ray + "x\nmorvelk7run\n"}, kRay);
  Check({"SatUpdateService", "1 ", "-2 ", "services=x", slave},
        [](auto* m) { return SatUpdateService(*m); });
}

TEST_F(FaultTest, Files) {
  CharPath file("file"), from("from"), to("to"), text("text");
  const Function update = [&](auto* m) { return TEVInsUpdate(from, to, m); };
  const std::string pack = "code:PRD:A\ncode:SPK:SP1\ncode:PRD:B\n";
  const std::string not_updated = "-1 ErrCmdFailed|-1 ErrFileNotExist";
  Check({"TEVInsCreateFile", "1 CreateFile_OK", "-1 CreateFile_KO", "", "file=100%s\n",
         "file=longer"},
        [&](auto* m) { return TEVInsCreateFile(file, CharPath("100%s"), m); });
  Check({"TEVInsCreateNLSFile", "0 CreateFile_OK", "0 CreateFile_KO", "", "a/NLS.txt=French\n\n",
         "a/NLS.txt=German\n"},
        [&](auto* m) { return TEVInsCreateNLSFile(CharPath("."), "a", 2, *m); });
  Check({"TEVInsUpdate", "1 CmdSucessful", not_updated, "from=x\n|to=y\n", "to=y\nx\n"}, update);
  Check({"TEVInsUpdate, new", "1 CmdSucessful", not_updated, "from=x\n", "to=x\n"}, update);
  Check({"TEVInsCopyInstall", "1 CmdSuccessful", "-1 ErrCmdFailed", "from=x", "to=x", "to=older"},
        [&](auto* m) { return TEVInsCopyInstall(from, to, m); });
  Check({"TEVInsSuppressLine", "1 ", "-1 ", "file=a\ntext\nb", "file=a\nb", "", true},
        [&](auto* m) { return TEVInsSuppressLine(file, text, m, 1); });
  Check({"TEVInsAddLine", "1 ", "-1 ", "file=a\n", "file=a\ntext\n"},
        [&](auto* m) { return TEVInsAddLine(file, text, m); });
  Check({"FileCopy", "0 ", "-1 ", "from=a\n\nb", "to=a\n\nb\n", "to=older"},
        [&](auto*) { return TEVInsResetPresent::FileCopy(from, to); });
  Check({"Remove", "0 ", "-1 ", "from=" + pack, "to=code:PRD:A\ncode:PRD:B\n", "to=older"},
        [&](auto*) {
          TEVInsResetPresent reset;
          if (reset.InitSource(from) != 0 || reset.InitDest(to) != 0) return -1;
          return reset.Remove(CharPath("SP1"), code);
        });
  Check({"TEVInsCreateDirectory", "0 ", "-1 ", "", "a/b=(directory)"},
        [](auto*) { return TEVInsCreateDirectory(CharPath("a/b")); });
  Check({"TEVInsDeleteDir", "0 ", "-1 ", "other=x", "tree=(no file)", "tree/a/f=y|tree/g=z", true},
        [](auto*) { return TEVInsDeleteDir(CharPath("tree"), 1); });
  const std::string catalogs = "aix/resources/msgcatalog/";
  Check({"TEVInsRemoveLang", "1 ", "", catalogs + "One.msg=x", catalogs + "French=(no file)",
         catalogs + "French/One.msg=y"},
        [](auto*) {
          TEVInsRemoveLang(CharPath("."), "aix", CharPath("Modeler"), 125);
          return 1;
        });
}

TEST_F(FaultTest, Logs) {
  CharPath from("from"), here(".");
  TEVInstallLog log(CharPath("log"));
  Check({"TEVInstallLog", "1 ", "-1 ErrorOpenLog", "log=x\n|from=y\n", "*=text\n"}, [&](auto* m) {
    TEVUnicodeString line = "text\n";
    const int status = log.OpenPathLogFile(*m);
    log.CopyFile(from);
    log.WriteLogFile(line);
    log.CloseLogFile();
    return status;
  });
  const std::string side_log = "TEVInsErrorTransfer.log=x\n";
  Check({"WriteLogErrorTransfer", "1 ", "", side_log, "*=32838     1 from\n", "from=y\n"},
        [&](auto*) {
          WriteLogErrorTransfer(here, from);
          return 1;
        });
  Check({"TEVInsTransferLogInfo", "1 ", "", "log=y\n",
         "*=Filesystem information:\nx\n|TEVInsErrorTransfer.log=(no file)", side_log},
        [&](auto*) {
          log.OpenPathLogFile(message_);
          TEVInsTransferLogInfo(here, "", zeb2, &log);
          log.CloseLogFile();
          return 1;
        });
  Check({"TEVInsSPK", "0 ", "1 ", "log=x\n", "*=42\n",
         "control/CAFPost.list=a\n|code/bin/a_SP1=#!/bin/sh\necho $((6 * 7))\n", true},
        [&](auto*) { return std::min(TEVInsSPK(CharPath("SP1"), here, CharPath("log")), 1); });
}

TEST_F(FaultTest, Packs) {
  const std::string os = fs::path(dir_).filename(), content(20000, 'x');
  const std::string failures = "-1 ErrWndOpenControlFile.Text|-1 ErrWndRenameFile.Text";
  Pack("SP1", os + "/control/SP1=a 1\nb\n");
  Pack("One", "aix/control/One.toc=code:PRD:One\n|aix/file=" + content);
  CharPath name("SP1"), medium(medium_), tree("tree"), path(Path("tree"));
  Check({"TEVInsSaveFilesBeforeInstall", "0 ", failures + "|-1 ErrWndExtractTar.Text",
         "tree/a=a|tree/b=b",
         "tree/a=(no file)|tree/a.beforeSPK=a|tree/b=(no file)|tree/b.beforeSPK=b", "", true},
        [&](auto* m) {
          return TEVInsSaveFilesBeforeInstall(name, medium, tree, os.c_str(), code, *m);
        });
  Check({"TEVInsRestoreFiles", "0 ", failures, "tree/a=new|tree/a.beforeSPK=a|tree/b.beforeSPK=b",
         "tree/a=a|tree/a.beforeSPK=(no file)|tree/b=b|tree/b.beforeSPK=(no file)",
         "control/SP1=a\nb\n", true},
        [&](auto* m) { return TEVInsRestoreFiles(tree, name, os.c_str(), code, *m); });
  Check({"TEVInsTransferCAF", "0 ",
         "-100 ErrCommandInterrupted|-100 ErrCmdFailed|-100 ErrFileNotExist",
         "tree/aix/control/PRESENT=code:FWK:BASE\n",
         "tree/aix/control/PRESENT=code:FWK:BASE\ncode:PRD:One\n|tree/aix/file=" + content},
        [&](auto* m) { return TEVInsTransferCAF(CharPath("One"), medium, path, "aix", 127, *m); });
}

TEST_F(FaultTest, Memory) {
  CheckMemory({"UpdateNewPorts", kDone, "-1 ErrWndAllocServicesFile", kServices}, kRenew);
  CheckMemory({"UpdateDemon", kDone, "-1 ", kInetd}, kDemon);
  CheckMemory({"SatUpdateInet", kDone, "-2 ", kInetd}, kRay);
  CheckMemory({"TEVInsDeleteDir", "0 ", "-1 ", "tree/a/f=x"},
              [](auto*) { return TEVInsDeleteDir(CharPath("tree"), 1); });
  CheckMemory({"TEVInsGetAllProcess", "1 ", "0 "},
              [](auto*) { return TEVInsTaskList().TEVInsGetAllProcess() > 0 ? 1 : 0; });
  CharPath d(dir_), t("text");
  const Function kExports[] = {[&](auto* m) { return ExportDataDirectories(d, d, d, m); },
                               [&](auto* m) { return ExportJavaHome(d, m); },
                               [&](auto* m) { return ExportK6(1, d, 1, 1, d, m); },
                               [&](auto* m) { return ExportTCK(t, t, 1, 1, m, 1); },
                               [&](auto* m) { return ExportMorvelInfo(0, t, t, t, m); },
                               [&](auto* m) { return ExportMorvelInfo(1, t, t, t, m); },
                               [](auto* m) { return ExportServersTimeout(2, m); },
                               [](auto* m) { return TEVInsCheckMetasearch(nullptr, m); }};
  for (const Function& exports : kExports)
    CheckMemory({"export " + std::to_string(&exports - kExports), "1 ", "-1 "}, exports);
  const int port = GetFreePort(20000, &message_, 49151);
  CheckMemory({"TEVInsCheckOrbixValue", "1 ", "0 "},
              [&](auto* m) { return TEVInsCheckOrbixValue(port, port + 1, 50, 1, m); });
  MetaSearchData data{};
  data.port = data.snapshotsPort = port;
  CheckMemory({"TEVInsCheckMetasearch", "1 ", "-1 "}, [&](auto* m) {
    const int status = TEVInsCheckMetasearch(&data, m);
    return status == 1 || Env({"MetaSearchPort"}) == ";" ? status : -2;
  });
  CheckMemory({"TEVInsSPK", "0 ", "-1 ", "control/CAFPost.list=a"},
              [&](auto*) { return TEVInsSPK(t, CharPath("."), t); });
  SetEnv("PATH", (Path("bin:") + std::getenv("PATH")).c_str());
  CheckMemory({"TEVInsCheckTask", "1 ", "0 ", "bin/ps=#!/bin/sh\necho; echo u 2 1 0 s t t /t/x\n"},
              [](auto*) { return TEVInsTaskList().TEVInsCheckTask("/t", nullptr); });
  CheckMemory({"TEVInsCheckMediaHFX", "4 ErrorNoHFX", "0 "},
              [](auto* m) { return TEVInsCheckMediaHFX(nullptr, m); });
  // Where there are two lists, something is found in the second one.
  const std::string toc = "TOC=code:SLT:A\nsamples:SMP:B\nzeb2:SLT:A.zeb2\ncode:FSP:C|tree=#";
  const auto check = [&](const char* success, const char* failure, int n, auto function) {
    const Function asks = [function](auto* m) {
      TEVINSMediaToc medium("TOC");
      TEVINSInstToc tree("tree");
      return function(&medium, &tree, m);
    };
    CheckMemory({std::string("check ") + failure, success, failure, toc}, asks, n);
  };
  const char* const kAll = "0 ErrWndProductAllInstalled";
  check("0 ", "-1 ErrEmptyMediaToc", 2,
        [](auto* medium, auto*, auto* m) { return TEVInsCheckMedia(code, medium, m); });
  check("0 ", "-1 ErrEmptyMediaToc", 1,
        [](auto* medium, auto*, auto* m) { return TEVInsCheckMediaSMP(medium, m); });
  check("1 ", kAll, 2, [](auto* medium, auto* tree, auto* m) {
    return TEVInsCheckInstall(code, tree, medium, m);
  });
  check("1 ", "0 ErrWndSamplesAllInstalled", 1,
        [](auto* medium, auto* tree, auto* m) { return TEVInsCheckInstallSMP(tree, medium, m); });
  check("1 ", kAll, 2, [](auto* medium, auto* tree, auto* m) {
    TEVINSInstToc code_tree("TOC");
    return TEVInsCheckInstallZEB(tree, medium, &code_tree, m);
  });
  check("1 ", kAll, 1, [](auto* medium, auto* tree, auto* m) {
    return TEVInsCheckInstallSPK(code, tree, medium, m);
  });
  // The list of the code's packs is asked for first, that of the SDK's only without any of those.
  CheckMemory({"TEVInsCheckMediaSPK, code", "0 ", "4 ErrorNoSPK", "TOC=code:SPK:A"}, [](auto* m) {
    TEVINSMediaToc medium("TOC");
    return TEVInsCheckMediaSPK(&medium, m);
  });
  CheckMemory(
      {"TEVInsCheckMediaSPK", "4 ErrorNoSPK", "1 "},
      [](auto* m) { return TEVInsCheckMediaSPK(nullptr, m); }, 2);
  CheckMemory({"InitMediaToc", "1 ", "0 ", "TOC=code:SPK:A"}, [](auto* m) {
    TEVINSMediaToc* table = nullptr;
    const int status = InitMediaToc(CharPath("TOC"), &table, m);
    return std::unique_ptr<TEVINSMediaToc>(table) == nullptr ? status : 1;
  });
  CheckMemory({"InitInstallToc", "1 ", "0 ", "TOC=code:SPK:A"}, [](auto* m) {
    TEVINSInstToc* table = nullptr;
    const int status = InitInstallToc(CharPath("TOC"), &table, m);
    return std::unique_ptr<TEVINSInstToc>(table) == nullptr ? status : 1;
  });
}

}  // namespace
