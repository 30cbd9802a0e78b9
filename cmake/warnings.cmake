# The warnings that our own targets are built with; what they include from elsewhere is not held to them.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wcast-qual -Wformat=2 -Werror)
