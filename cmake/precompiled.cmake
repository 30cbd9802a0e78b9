# Headers that most files include, read once a build instead of once a file (QV_PRECOMPILE). Builds without it notice
# a file that forgets an include.
set(QV_COMMON_HEADERS
  <algorithm> <array> <charconv> <filesystem> <fstream> <functional> <map> <memory> <optional> <set> <span> <sstream>
  <stdexcept> <string> <string_view> <system_error> <utility> <vector>)

# The C++ targets of the type in the directory and below it.
function(targets_below directory type result)
  get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
  set(found)
  foreach(target IN LISTS targets)
    get_target_property(is ${target} TYPE)
    if(is STREQUAL type)
      list(APPEND found ${target})
    endif()
  endforeach()
  get_property(below DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
  foreach(one IN LISTS below)
    targets_below(${one} ${type} more)
    list(APPEND found ${more})
  endforeach()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# Gives the headers that the target `from` holds to the other targets. All are libraries, or all programs: their code
# is of different kinds (-fPIC, -fPIE).
function(reuse_precompiled from)
  foreach(target IN LISTS ARGN)
    if(NOT target STREQUAL from)
      target_precompile_headers(${target} REUSE_FROM ${from})
    endif()
  endforeach()
endfunction()
