# What the two libraries link, as pkg-config module names. One line here is all that a further
# dependency takes: the build, the exported CMake package and the .pc file all read this list.
# Each has its entry in docs/dependencies.md and its package in scripts/install-dependencies.
set(QZ_DEPENDENCIES
  icu-uc
  icu-i18n
  uuid
  pugixml
  zlib
)

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
include("${CMAKE_CURRENT_LIST_DIR}/QZPkgConfig.cmake")

# QZ_DEPENDENCY_TARGETS: the imported targets, in the order of the list.
set(QZ_DEPENDENCY_TARGETS "")
foreach(module IN LISTS QZ_DEPENDENCIES)
  qz_pkg_config_target(${module} target)
  list(APPEND QZ_DEPENDENCY_TARGETS ${target})
endforeach()
