include("${CMAKE_CURRENT_LIST_DIR}/KWINSTUTILTargets.cmake")
