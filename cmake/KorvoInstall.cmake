# What `cmake --install` gives: libraries, headers under their own paths, the CMake package
# Korvo_Kinematics, pkg-config files, the command line, the example machines and the JSON schemas.
include(CMakePackageConfigHelpers)

install(TARGETS Korvo_CollisionUtils Korvo_Kinematics KorvoToolkit EXPORT Korvo_Kinematics
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS korvo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The interface; the other headers of kinematics/ and platform/ are the library's own affair.
install(FILES
  kinematics/Export.h kinematics/KMachine.h kinematics/KMachineElem.h kinematics/KMachineValue.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kinematics)
file(GLOB KORVO_ZGEO_HEADERS CONFIGURE_DEPENDS platform/zgeo/*.h)
install(FILES ${KORVO_ZGEO_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/platform/zgeo)
file(GLOB KORVO_TOOLKIT_HEADERS CONFIGURE_DEPENDS toolkit/*.h)
install(FILES ${KORVO_TOOLKIT_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/toolkit)

install(DIRECTORY examples/machines/ DESTINATION ${CMAKE_INSTALL_DATADIR}/korvo/machines)
install(DIRECTORY tools/schemas/ DESTINATION ${CMAKE_INSTALL_DATADIR}/korvo/schemas)

set(KORVO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Korvo_Kinematics)
install(EXPORT Korvo_Kinematics NAMESPACE Korvo:: DESTINATION ${KORVO_PACKAGE_DIR}
  FILE Korvo_KinematicsTargets.cmake)
configure_package_config_file(cmake/Korvo_KinematicsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/Korvo_KinematicsConfig.cmake INSTALL_DESTINATION ${KORVO_PACKAGE_DIR}
  PATH_VARS CMAKE_INSTALL_DATADIR)
# Before 1.0 every minor version may change the binary interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Korvo_KinematicsConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/Korvo_KinematicsConfig.cmake
  ${PROJECT_BINARY_DIR}/Korvo_KinematicsConfigVersion.cmake DESTINATION ${KORVO_PACKAGE_DIR})

# The files find their prefix from where they lie, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE KORVO_PC_TO_PREFIX)
foreach(name Korvo_Kinematics KorvoToolkit)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
