# qz_add_library(name export-name DIRECTORY directory [LINK library...])
#
# Makes the library from every .cpp file under the directory, and QZ::<export-name> as an alias.
# The files are compiled once, into an object library; the library itself and, when that is a
# shared one, the archive <name>Static (built only if something needs it) share the objects.
function(qz_add_library name export_name)
  cmake_parse_arguments(arg "" "DIRECTORY" "LINK" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${arg_DIRECTORY}/*.cpp")
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${arg_DIRECTORY}/*.h")

  add_library(${name}Objects OBJECT ${sources} ${headers})
  # What a shared library offers is what its public headers mark, and nothing else.
  set_target_properties(${name}Objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden)
  target_link_libraries(${name}Objects PRIVATE
    ${arg_LINK} ${QZ_DEPENDENCY_TARGETS} Threads::Threads)
  qz_public_includes(${name}Objects PRIVATE)
  qz_compile_options(${name}Objects)
  qz_precompile(${name}Objects)

  add_library(${name})
  qz_link_objects(${name} "" ${arg_LINK})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")

  if(BUILD_SHARED_LIBS)
    if(NOT QZ_SANITIZE AND NOT QZ_BUILD_FUZZ)
      target_link_options(${name} PRIVATE LINKER:-z,defs)
    endif()
    add_library(${name}Static STATIC EXCLUDE_FROM_ALL)
    qz_link_objects(${name}Static Static ${arg_LINK})
    set_target_properties(${name}Static PROPERTIES OUTPUT_NAME ${name})
  else()
    add_library(${name}Static ALIAS ${name})
  endif()

  set_target_properties(${name} PROPERTIES EXPORT_NAME ${export_name})
  add_library(QZ::${export_name} ALIAS ${name})
endfunction()

# Sources and tests write the path from the root: "Platform/Runtime/NSObject.h".
function(qz_public_includes target scope)
  target_include_directories(${target} ${scope}
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qzfoundation>)
endfunction()

# Gives a library the objects compiled for it, and the other libraries in the same form (suffix).
function(qz_link_objects target suffix)
  string(REGEX REPLACE "Static$" "" base ${target})
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${base}Objects>)
  list(TRANSFORM ARGN APPEND "${suffix}")
  target_link_libraries(${target}
    PUBLIC ${ARGN} Threads::Threads
    PRIVATE ${QZ_DEPENDENCY_TARGETS})
  qz_public_includes(${target} PUBLIC)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
endfunction()
