# qz_pkg_config_target(module out): finds a pkg-config module and names its imported target.
# Installed beside the package file, so that the targets have the same names on both sides.
function(qz_pkg_config_target module out)
  string(MAKE_C_IDENTIFIER "QZ_${module}" prefix)
  if(NOT TARGET PkgConfig::${prefix})
    pkg_check_modules(${prefix} REQUIRED QUIET IMPORTED_TARGET GLOBAL ${module})
  endif()
  set(${out} PkgConfig::${prefix} PARENT_SCOPE)
endfunction()
