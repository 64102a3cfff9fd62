# The library's own bundle, from resources/QZFoundation: put together beside the library, where the
# library finds it while it is not installed. Installed, it is share/QZFoundation.
set(QZ_RESOURCES "${CMAKE_CURRENT_BINARY_DIR}/resources/QZFoundation")
configure_file(resources/QZFoundation/Info.plist.in "${QZ_RESOURCES}/Info.plist" @ONLY)

# Tables that are gone from the sources must not stay in the copy.
file(GLOB tables CONFIGURE_DEPENDS RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}/resources/QZFoundation"
  "${CMAKE_CURRENT_SOURCE_DIR}/resources/QZFoundation/locale/*/*.strings")
file(REMOVE_RECURSE "${QZ_RESOURCES}/locale")
set(copies "${QZ_RESOURCES}/Info.plist")
foreach(table IN LISTS tables)
  configure_file("resources/QZFoundation/${table}" "${QZ_RESOURCES}/${table}" COPYONLY)
  list(APPEND copies "${QZ_RESOURCES}/${table}")
endforeach()

set(place "$<TARGET_FILE_DIR:QZFoundation>/QZFoundation.resources")
add_custom_command(OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/resources/copied"
  COMMAND "${CMAKE_COMMAND}" -E rm -rf "${place}"
  COMMAND "${CMAKE_COMMAND}" -E copy_directory "${QZ_RESOURCES}" "${place}"
  COMMAND "${CMAKE_COMMAND}" -E touch "${CMAKE_CURRENT_BINARY_DIR}/resources/copied"
  DEPENDS ${copies} VERBATIM)
add_custom_target(QZResources ALL DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/resources/copied")
# Before the objects, which every form of the library has.
add_dependencies(QZFoundationObjects QZResources)

# Where a program that links the archive finds the resources, wherever it lies itself.
set_source_files_properties(QZFoundation/detail/LibraryBundle.cpp PROPERTIES
  COMPILE_DEFINITIONS "QZ_INSTALLED_RESOURCES=\"${CMAKE_INSTALL_FULL_DATADIR}/QZFoundation\"")
