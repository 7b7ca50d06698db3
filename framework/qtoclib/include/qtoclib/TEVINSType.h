#ifndef QTOCLIB_TEVINSTYPE_H_
#define QTOCLIB_TEVINSTYPE_H_

/// Content type of a package.
enum TEVINSType {
  code = 0,           ///< the product's code
  zeb2 = 1,           ///< the SDK; names of packages end in ".zeb2"
  documentation = 2,  ///< documentation
  unknownM = 3,       ///< reserved
  unknownQ = 4,       ///< reserved
  samples = 5,        ///< samples
};

/// Kind of a package.
enum TEVINSPkg {
  FWK = 0,  ///< framework
  GRP = 1,  ///< group
  PRD = 2,  ///< product
  PDO = 3,  ///< product option
  SLT = 4,  ///< solution
  FIX = 5,  ///< fix
  FSP = 6,  ///< fix package of a service pack
  SPK = 7,  ///< service pack
  HFX = 8,  ///< hot fix
  SMP = 9,  ///< samples
};

/// The index of the first kind in kTEVINSNames.
inline constexpr int kTEVINSFirstKind = 6;

/// The words for the types and kinds in every table of contents. The word for type `t` has the
/// index `t`, the word for kind `p` the index kTEVINSFirstKind + `p`.
inline constexpr const char* const kTEVINSNames[16] = {
    "code", "zeb2", "documentation", "unknownM", "unknownQ", "samples",  // types
    "FWK",  "GRP",  "PRD",           "PDO",      "SLT",      "FIX",
    "FSP",  "SPK",  "HFX",           "SMP",  // kinds
};

#endif  // QTOCLIB_TEVINSTYPE_H_
