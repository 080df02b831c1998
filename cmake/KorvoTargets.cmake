# How every target of this project is compiled, in one place.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(APPLE)
  set(CMAKE_INSTALL_RPATH "@loader_path/../${CMAKE_INSTALL_LIBDIR}")
else()
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}:$ORIGIN")
endif()

find_program(KORVO_CCACHE ccache)
if(KORVO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${KORVO_CCACHE}")
endif()

# No silent fused operations: results must not depend on the compiler's choice of them. A host
# replaces a library as a whole, never single functions of one: calls inside may be inlined.
add_library(korvo_options INTERFACE)
target_compile_options(korvo_options INTERFACE
  -ffp-contract=off -fno-math-errno -fno-semantic-interposition -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  -Wno-sign-conversion $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond>
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>  # such symbols would keep a library from unloading
  # GCC 12 sees overlaps that are not there in std::string's operator+ (GCC bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-stringop-overflow>
  -Wno-ignored-qualifiers)  # `double* const get()` is part of the binary interface
if(KORVO_WERROR)
  target_compile_options(korvo_options INTERFACE -Werror)
endif()
if(KORVO_SANITIZE)
  target_compile_definitions(korvo_options INTERFACE KORVO_SANITIZED)
  target_compile_options(korvo_options INTERFACE
    -fsanitize=${KORVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(korvo_options INTERFACE -fsanitize=${KORVO_SANITIZE})
endif()
target_include_directories(korvo_options INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)

# Under sanitizers tests are compiled without optimisation, which is quicker, but libraries with it:
# the tests spend their time in meshes and scanners.
function(korvo_optimise_sanitized name)
  if(KORVO_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)
  endif()
endfunction()

# The headers that every source of a target pays for, compiled once. Builds without tests go without:
# what a source forgets to include is found there.
function(korvo_precompile name)
  if(KORVO_TESTS)
    target_precompile_headers(${name} PRIVATE ${ARGN})
  endif()
endfunction()

# korvo_static(name DIR): a static helper from all sources of its folder.
function(korvo_static name)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:korvo_options>)
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  korvo_optimise_sanitized(${name})
endfunction()

# korvo_shared(name EXPORT_DEFINE sources...): a shared library of its own ABI version.
function(korvo_shared name define)
  add_library(${name} SHARED ${ARGN})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:korvo_options>)
  korvo_optimise_sanitized(${name})
  korvo_precompile(${name} <algorithm> <filesystem> <functional> <map> <memory> <optional> <string> <vector>)
  target_compile_definitions(${name} PRIVATE ${define})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
