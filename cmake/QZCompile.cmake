# How every target of this project is compiled.
#
#   qz_compile_options(target)            language level, warnings, code generation
#   qz_precompile(target [header...])     the common standard headers, and those named

set(QZ_GCC FALSE)
set(QZ_CLANG FALSE)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(QZ_GCC TRUE)
elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(QZ_CLANG TRUE)
endif()

# ccache ------------------------------------------------------------------------------------------

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(QZ_CCACHE ccache)
  find_program(QZ_ENV env)
  mark_as_advanced(QZ_CCACHE QZ_ENV)
  if(QZ_CCACHE AND QZ_ENV)
    # Without these allowances ccache declines every file that uses a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
      "${QZ_ENV}" "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime"
      "${QZ_CCACHE}")
  endif()
endif()

# Instrumentation: for the whole build, because all of a program must agree on it -----------------

# QZ_INSTRUMENTATION is what a program outside this build needs in order to link with it.
set(QZ_INSTRUMENTATION "")
if(QZ_SANITIZE)
  list(APPEND QZ_INSTRUMENTATION
    "-fsanitize=${QZ_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
endif()
if(QZ_COVERAGE)
  list(APPEND QZ_INSTRUMENTATION --coverage -fprofile-update=atomic)
endif()
if(QZ_BUILD_FUZZ)
  if(NOT QZ_CLANG)
    message(FATAL_ERROR "QZ_BUILD_FUZZ needs clang: libFuzzer is part of it.")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
add_compile_options(${QZ_INSTRUMENTATION})
add_link_options(${QZ_INSTRUMENTATION})

# Targets -----------------------------------------------------------------------------------------

function(qz_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_STANDARD_REQUIRED ON)
  target_compile_definitions(${target} PRIVATE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
  if(NOT QZ_GCC AND NOT QZ_CLANG)
    return()
  endif()

  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(QZ_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(QZ_CLANG)
    # A borrowed pointer that outlives the temporary it came from is an error in every build.
    # Signed and unsigned mix as they do under g++, whose -Wconversion leaves them alone.
    target_compile_options(${target} PRIVATE
      -Wdangling -Werror=dangling -Wno-sign-conversion)
  else()
    # g++ 12 warns of overlaps inside std::string's own operator+ once it optimises.
    if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    # The sanitizers' own branches confuse the flow analysis behind this one.
    if(QZ_SANITIZE)
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
  endif()

  # Calls between the files of one library need neither the linkage table nor the detour that
  # lets another library replace them.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition -fno-plt)
endfunction()

function(qz_precompile target)
  if(NOT QZ_PCH)
    return()
  endif()
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <compare> <concepts>
    <condition_variable> <cstddef> <cstdint> <cstdlib> <cstring> <deque> <exception> <filesystem>
    <functional> <initializer_list> <iterator> <limits> <map> <memory> <mutex> <new> <numeric>
    <optional> <ostream> <set> <shared_mutex> <span> <sstream> <stdexcept> <string> <string_view>
    <thread> <tuple> <type_traits> <typeindex> <unordered_map> <unordered_set> <utility> <variant>
    <vector> ${ARGN})
  if(QZ_GCC)
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  elseif(QZ_CLANG)
    target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
  endif()
endfunction()
