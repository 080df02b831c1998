# Checks the files of an install prefix: what a host needs is there, and nothing in the packages'
# files names the tree that they were built from.
foreach(file
    include/adapter/NMachine.h include/adapter/machineFromDefinition.h
    include/platform/ombra/MachineCompute.h ${LIBDIR}/libOmbraKinematics.so.0
    include/geometry/GeometryFile.h include/geometry/ZrnFile.h include/geometry/ZrnGeom.h
    include/geometry/ZrnTriangles.h
    include/kinematics/KMachine.h include/kinematics/KMachineElem.h
    include/kinematics/KMachineValue.h include/platform/zgeo/UVec3d.h include/platform/zgeo/UMatrix.h
    ${LIBDIR}/libKorvo_Kinematics.so.0 ${LIBDIR}/libKorvo_CollisionUtils.so.0
    ${LIBDIR}/libKorvoToolkit.so.0 ${LIBDIR}/libSolidra.so.0 ${LIBDIR}/${MODULE}
    ${LIBDIR}/pkgconfig/Korvo_Kinematics.pc
    ${LIBDIR}/pkgconfig/KorvoToolkit.pc
    ${LIBDIR}/cmake/Korvo_Kinematics/Korvo_KinematicsConfig.cmake bin/korvo)
  if(NOT EXISTS ${PREFIX}/${file})
    message(SEND_ERROR "not installed: ${file}")
  endif()
endforeach()

file(GLOB machines ${PREFIX}/share/korvo/machines/*.def)
list(LENGTH machines count)
if(count LESS 10)
  message(SEND_ERROR "only ${count} example machines are installed")
endif()
file(GLOB bodies ${PREFIX}/share/korvo/machines/geometry/*/*.stl
  ${PREFIX}/share/korvo/machines/geometry/*/*.zrn)
list(LENGTH bodies count)
if(count LESS 20)
  message(SEND_ERROR "only ${count} bodies of the example machines are installed")
endif()
file(GLOB schemas ${PREFIX}/share/korvo/schemas/*.json)
if(NOT schemas)
  message(SEND_ERROR "no JSON schema is installed")
endif()

# The static helpers are inside the shared libraries; their headers and names stay inside too.
if(EXISTS ${PREFIX}/include/platform/text OR EXISTS ${PREFIX}/include/platform/solidra
    OR EXISTS ${PREFIX}/include/kinematics/ChainWalk.h)
  message(SEND_ERROR "an internal header is installed")
endif()
file(GLOB packages ${PREFIX}/${LIBDIR}/cmake/Korvo_Kinematics/*.cmake
  ${PREFIX}/${LIBDIR}/pkgconfig/*.pc)
foreach(file ${packages})
  file(READ ${file} text)
  foreach(tree ${SOURCE} ${BUILD})
    if(text MATCHES "(^|[^A-Za-z0-9_}])${tree}(/|[^A-Za-z0-9_])")  # not .../share${tree}
      message(SEND_ERROR "${file} names ${tree}")
    endif()
  endforeach()
  foreach(word korvo_options korvo_text korvo_os korvo_rotations)
    string(FIND "${text}" "${word}" place)
    if(NOT place EQUAL -1)
      message(SEND_ERROR "${file} names ${word}")
    endif()
  endforeach()
endforeach()
