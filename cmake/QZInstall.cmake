# Installing: headers, libraries, resources, the CMake package, and the pkg-config files. What a
# program needs to run is the component "runtime", all else "development".
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)

foreach(library IN ITEMS QZPlatform QZFoundation)
  install(TARGETS ${library}
    EXPORT ${library}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endforeach()

install(DIRECTORY Platform QZFoundation
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qzfoundation
  FILES_MATCHING PATTERN "*.h")

install(DIRECTORY "${QZ_RESOURCES}/" DESTINATION "${CMAKE_INSTALL_DATADIR}/QZFoundation"
  COMPONENT runtime)

# gdb loads what lies here under the path of a library, together with that library.
if(BUILD_SHARED_LIBS)
  install(FILES resources/gdb/qzfoundation.py
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}"
    RENAME libQZPlatform.so.${PROJECT_VERSION}-gdb.py)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QZFoundation)
install(EXPORT QZPlatformTargets NAMESPACE QZ:: DESTINATION ${package_dir})
install(EXPORT QZFoundationTargets NAMESPACE QZ:: DESTINATION ${package_dir})
configure_package_config_file(cmake/QZFoundationConfig.cmake.in
  "${CMAKE_CURRENT_BINARY_DIR}/QZFoundationConfig.cmake"
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(
  "${CMAKE_CURRENT_BINARY_DIR}/QZFoundationConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/QZFoundationConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/QZFoundationConfigVersion.cmake"
  cmake/QZPkgConfig.cmake
  DESTINATION ${package_dir})

# pkg-config: whoever links the archives needs the dependencies too; whoever links the shared
# libraries does not.
set(QZ_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(QZ_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(QZ_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
else()
  # Relative to the file itself, so that an installed tree may be moved.
  file(RELATIVE_PATH up "/prefix/${QZ_PC_DIR}" "/prefix")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(QZ_PC_PREFIX "\${pcfiledir}/${up}")
  set(QZ_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(QZ_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/qzfoundation")
else()
  set(QZ_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}/qzfoundation")
endif()
list(JOIN QZ_DEPENDENCIES " " modules)
if(BUILD_SHARED_LIBS)
  set(QZ_PC_REQUIRES_KEY "Requires.private")
else()
  set(QZ_PC_REQUIRES_KEY "Requires")
endif()

# One .pc file for each library: name, description, library, what it requires.
function(qz_pc_file name description library requires_key requires)
  configure_file(cmake/library.pc.in "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc" DESTINATION ${QZ_PC_DIR})
endfunction()
qz_pc_file(qzplatform "The object library underneath QZFoundation"
  QZPlatform ${QZ_PC_REQUIRES_KEY} "${modules}")
qz_pc_file(qzfoundation "Permutation maps, map sorting and further operations on objects"
  QZFoundation Requires "qzplatform = ${PROJECT_VERSION}")
