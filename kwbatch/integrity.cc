#include "integrity.h"

#include <sstream>

Integrity CheckIntegrity(TEVINSInstToc* installed, std::string system_dir, bool sdk) {
  std::ostringstream report;
  TEVUnicodeString verdict;
  const int status =
      TEVInsCheckIntegrityGA(installed, system_dir.data(), report, &verdict, sdk ? 1 : 0);
  return {status, report.str(), verdict.ConvertToChar()};
}
