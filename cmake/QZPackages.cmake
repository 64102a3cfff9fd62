# Debian packages, by `cpack` in a build's folder: what programs need to run, and what is needed to
# build them, the commands included. The run-time package has the major version in its name, so that
# programs built with another one keep theirs.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "The maintainers of QZFoundation")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqzfoundation${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Object library for C++ programs (run time)")
# Which packages the libraries need, as the system's own tool finds out.
find_program(QZ_DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(QZ_DPKG_SHLIBDEPS)
if(QZ_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_BINARY_DIR}/triggers")
file(WRITE "${PROJECT_BINARY_DIR}/triggers" "activate-noawait ldconfig\n")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqzfoundation-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Object library for C++ programs (development)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libqzfoundation${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
include(CPack)
