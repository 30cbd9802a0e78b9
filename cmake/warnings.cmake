# The warnings that our own targets are built with; what they include from elsewhere is not held to them.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wcast-qual -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 warns of std::string's own operator+ when it optimises (GCC bug 105329).
  target_compile_options(qv_warnings INTERFACE -Wno-restrict)
else()
  target_compile_options(qv_warnings INTERFACE -Wreserved-identifier)
endif()
