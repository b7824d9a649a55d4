# The programs tnc::tnc and tnc::tnc-deps, the header of extension libraries as tnc::extension, and tnc_add_program.
include(${CMAKE_CURRENT_LIST_DIR}/tncTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/tnc_add_program.cmake)
