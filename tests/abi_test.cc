// What programs that were built before rely on: sizes and values, which no build may change.
// Compiled only.

#include <kb0core/TEVDirectory.h>
#include <kb0core/TEVFile.h>
#include <kb0core/TEVMsgCatalog.h>
#include <kwinstutil/kwinstutil.h>
#include <qtoclib/TEVINSStockName.h>
#include <qtoclib/TEVINSToc.h>

#include <string>
#include <vector>

namespace {

constexpr size_t kPointer = sizeof(void*);

static_assert(sizeof(TEVInstallLog) == 3 * kPointer);
static_assert(sizeof(TEVInsTaskList) == 544 + 106 * kPointer);
static_assert(sizeof(TEVInsResetPresent) == sizeof(std::ifstream) + sizeof(std::ofstream));
static_assert(sizeof(MetaSearchData) == (kPointer == 8 ? 224 : 180));
static_assert(sizeof(TEVINSToc) == kPointer && sizeof(TEVINSMediaToc) == kPointer);
static_assert(sizeof(TEVINSInstToc) == kPointer);
static_assert(sizeof(TEVINSStockNameInst) == sizeof(std::vector<std::string>));
static_assert(sizeof(TEVString) == sizeof(std::string) && sizeof(TEVUnicodeChar) == 1);
static_assert(sizeof(TEVUnicodeString) == sizeof(std::string) && sizeof(TEVMsgCatalog) == 1);
static_assert(sizeof(TEVDirectoryEntry) == 256);
static_assert(sizeof(TEVFileInfo) == alignof(TEVFileInfo) + 8);

static_assert(code == 0 && zeb2 == 1 && documentation == 2 && unknownM == 3 && unknownQ == 4);
static_assert(samples == 5 && sizeof(TEVINSType) == 4 && sizeof(TEVINSPkg) == 4);
static_assert(FWK == 0 && GRP == 1 && PRD == 2 && PDO == 3 && SLT == 4 && FIX == 5);
static_assert(FSP == 6 && SPK == 7 && HFX == 8 && SMP == 9);

/// Do all buffers have this size?
template <typename... Buffer>
constexpr bool HaveSize(size_t size, const Buffer&... /*buffers*/) {
  return ((sizeof(Buffer) == size) && ...);
}

static_assert(HaveSize(20, tev_to_install, drx_to_install) && HaveSize(32, EnvMorvelInfo));
static_assert(HaveSize(128, varTCKMode, varTCKServerName, varTCKServerPort, varTCKBoot,
                       TimeoutEnv));
static_assert(HaveSize(128, varOrbixPort, varOrbixBase, varOrbixRange, varOrbixBoot));
static_assert(HaveSize(256, EnvMorvelEnvName) && HaveSize(4, EnvJava, TCKBootInit));
static_assert(HaveSize(1024, EnvMSPath, EnvShWBPath, EnvPublishPath, EnvJavaHome, tev_cust,
                       drx_cust, tev_versionlib, EnvMorvelInfoPath, EnvMorvelInfoEnvPath));

}  // namespace
