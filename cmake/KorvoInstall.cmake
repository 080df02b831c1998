# What `cmake --install` gives: libraries, headers under their own paths, the CMake package
# Korvo_Kinematics, pkg-config files, the command line, the example machines and the JSON schemas.
include(CMakePackageConfigHelpers)

install(TARGETS Solidra OmbraKinematics Korvo_CollisionUtils Korvo_Kinematics KorvoToolkit
  EXPORT Korvo_Kinematics
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS korvo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The interface. The other headers are the libraries' own affair; tests/structure reads this list.
set(KORVO_INTERFACE
  adapter/NMachine.h adapter/machineFromDefinition.h
  geometry/GeometryFile.h geometry/ZrnFile.h geometry/ZrnGeom.h geometry/ZrnTriangles.h
  kinematics/Export.h kinematics/KMachine.h kinematics/KMachineElem.h kinematics/KMachineValue.h
  platform/ombra/Angle.h platform/ombra/Entity.h platform/ombra/EntityMesh.h platform/ombra/Export.h
  platform/ombra/Indices.h platform/ombra/Kinematic.h platform/ombra/Machine.h
  platform/ombra/MachineCompute.h platform/ombra/MachinePosition.h platform/ombra/Matrix43.h
  platform/ombra/Mesh.h platform/ombra/RotariesSolution.h platform/ombra/Vector3D.h
  platform/zgeo/Export.h platform/zgeo/UAlgo.h platform/zgeo/UMatrix.h platform/zgeo/UTools.h
  platform/zgeo/UTri.h platform/zgeo/UVec2d.h platform/zgeo/UVec3d.h
  toolkit/Describe.h toolkit/Export.h toolkit/Format.h toolkit/Language.h toolkit/Machine.h
  toolkit/Position.h
  toolkit/RotarySense.h toolkit/Text.h
  toolkit/answer/Answer.h toolkit/answer/Reach.h toolkit/answer/Served.h toolkit/check/Check.h toolkit/check/Diagnostic.h
  toolkit/check/Fixes.h toolkit/check/Hover.h
  toolkit/export/Bodies.h toolkit/export/WholeFile.h toolkit/export/Write.h
  toolkit/geometry/Measure.h
  toolkit/model/JointChain.h
  toolkit/path/Advice.h toolkit/path/Apt.h toolkit/path/NearestFirst.h toolkit/path/Toolpath.h
  toolkit/solve/Solver.h toolkit/solve/Target.h)
foreach(header ${KORVO_INTERFACE})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

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
